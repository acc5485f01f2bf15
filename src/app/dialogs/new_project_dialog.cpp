#include "app/dialogs/new_project_dialog.h"

#include "app/file_chooser.h"
#include "project/new_project.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrelon {

NewProjectDialog::NewProjectDialog(UserPort& port, FileChooser& chooser, const std::filesystem::path& startLocation,
                                   QWidget* parent)
    : QDialog(parent)
    , m_port(port)
    , m_chooser(chooser)
{
    setWindowTitle(QStringLiteral("New Project"));
    m_name = new QLineEdit(this);
    m_path = new QLineEdit(qtPath(startLocation), this);
    m_browse = new QPushButton(QStringLiteral("..."), this);
    m_browse->setAutoDefault(false);
    m_browse->setMaximumWidth(m_browse->fontMetrics().horizontalAdvance(QStringLiteral("....")) + 24);

    auto* nameLabel = new QLabel(QStringLiteral("Project Name:"), this);
    nameLabel->setBuddy(m_name);
    auto* pathLabel = new QLabel(QStringLiteral("Project Path:"), this);
    pathLabel->setBuddy(m_path);

    auto* grid = new QGridLayout;
    grid->addWidget(nameLabel, 0, 0);
    grid->addWidget(m_name, 0, 1, 1, 2);
    grid->addWidget(pathLabel, 1, 0);
    grid->addWidget(m_path, 1, 1);
    grid->addWidget(m_browse, 1, 2);
    grid->setColumnStretch(1, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &NewProjectDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &NewProjectDialog::reject);
    connect(m_browse, &QPushButton::clicked, this, &NewProjectDialog::browse);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(6);
    layout->addWidget(buttons);
    setMinimumWidth(440);
    m_name->setFocus();
}

std::string NewProjectDialog::name() const
{
    return m_name->text().toStdString();
}

std::string NewProjectDialog::location() const
{
    return m_path->text().toStdString();
}

void NewProjectDialog::accept()
{
    const NewProjectCheck check = checkNewProject(name(), location(), m_port);
    if (!check.ok) {
        if (check.clearName)
            m_name->clear();
        m_name->setFocus();
        return;
    }
    m_projectFile = check.projectFile;
    QDialog::accept();
}

void NewProjectDialog::browse()
{
    if (const auto chosen = m_chooser.folder(stdPath(m_path->text())))
        m_path->setText(qtPath(*chosen));
}

} // namespace kestrelon
