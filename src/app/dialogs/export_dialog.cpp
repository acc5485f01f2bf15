#include "app/dialogs/export_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrelon {

ExportDialog::ExportDialog(const ExportOptions& initial, QWidget* parent)
    : QDialog(parent)
    , m_path(new QLineEdit(QString::fromStdString(initial.folder), this))
    , m_browse(new QPushButton(tr("..."), this))
    , m_header(new QCheckBox(tr("Add Encode File Header"), this))
{
    setWindowTitle(tr("Export"));
    m_path->setMinimumWidth(320);
    m_browse->setFixedWidth(m_browse->fontMetrics().horizontalAdvance(QStringLiteral("....")) + 24);
    m_header->setChecked(initial.addHeader);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel(tr("Path :"), this), 0, 0);
    grid->addWidget(m_path, 0, 1);
    grid->addWidget(m_browse, 0, 2);
    grid->addWidget(m_header, 1, 1, 1, 2);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(buttons);

    connect(m_browse, &QPushButton::clicked, this, &ExportDialog::browse);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

ExportOptions ExportDialog::options() const
{
    return ExportOptions{m_path->text().toStdString(), m_header->isChecked()};
}

void ExportDialog::browse()
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Export"), m_path->text());
    if (!folder.isEmpty())
        m_path->setText(QDir::toNativeSeparators(folder));
}

} // namespace kestrelon
