#include "app/dialogs/add_folder_dialog.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QVBoxLayout>

namespace kestrelon {

AddFolderDialog::AddFolderDialog(QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Add Folder"));
    auto* frame = new QGroupBox(QStringLiteral(" Folder Name "), this);
    m_name = new QLineEdit(QStringLiteral("Folder"), frame);
    m_name->selectAll();
    auto* frameLayout = new QVBoxLayout(frame);
    frameLayout->addWidget(m_name);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &AddFolderDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &AddFolderDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addWidget(buttons);
    setMinimumWidth(300);
}

std::string AddFolderDialog::folderName() const
{
    return m_name->text().toStdString();
}

} // namespace kestrelon
