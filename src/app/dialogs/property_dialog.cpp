#include "app/dialogs/property_dialog.h"

#include "app/dialogs/read_only_form.h"
#include "codec/temp_names.h"
#include "common/messages.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QVBoxLayout>

namespace kestrelon {

PropertyDialog::PropertyDialog(EditInfoRecord& record, UserPort& port, QWidget* parent)
    : QDialog(parent)
    , m_record(record)
    , m_port(port)
{
    setWindowTitle(tr("Property"));
    auto* form = new ReadOnlyForm;
    form->addField(tr("File Name:"), record.fileName);
    form->addField(tr("Body:"), record.bodyName);
    form->addField(tr("Algorithm:"), record.algoName);
    form->addField(tr("Bit Rate:"), record.bitRate);
    form->addField(tr("Encode Name:"), record.encodeName);
    form->addField(tr("Encode Size:"), record.encodeSize);
    form->addField(tr("Decode Name:"), record.decodeName);
    form->addField(tr("Decode Size:"), record.decodeSize);
    form->addField(tr("Compression Rate:"), record.compressionRate);
    form->addField(tr("Play List:"), record.multiSelect == 1 ? tr("Yes") : tr("No"));

    m_exportName = new QLineEdit(QString::fromStdString(record.renameEncode), this);
    m_exportName->setObjectName(tr("Export Name:"));
    m_exportName->setPlaceholderText(QString::fromStdString(record.encodeName));
    m_exportName->setMinimumWidth(280);
    form->addRow(tr("Export Name:"), m_exportName);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void PropertyDialog::accept()
{
    const std::string name = m_exportName->text().trimmed().toStdString();
    // The export writes this name into a folder the user chose: it must stay
    // a plain file name there.
    if (!name.empty() && !isPlainFileName(name)) {
        m_port.showMessage("\"" + name + "\"" + std::string(msg::kExportNameInvalidSuffix));
        return;
    }
    if (name != m_record.renameEncode) {
        m_record.renameEncode = name;
        m_changed = true;
    }
    QDialog::accept();
}

} // namespace kestrelon
