#include "app/dialogs/property_dialog.h"

#include "codec/temp_names.h"
#include "common/messages.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "settings/export.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace kestrelon {

PropertyDialog::PropertyDialog(EditInfoRecord& record, UserPort& port, Mode mode, QWidget* parent)
    : QDialog(parent), m_record(record), m_port(port)
{
    setWindowTitle(mode == Mode::ReadOnly ? tr("Encode Info") : tr("Property"));
    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    const auto addField = [this, form](const QString& label, const std::string& value) {
        // Read-only fields are plain selectable text, unlike the one that can change.
        auto* text = new QLabel(QString::fromStdString(value), this);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        text->setObjectName(label);
        text->setMinimumWidth(280);
        form->addRow(label, text);
    };
    addField(tr("File Name:"), record.fileName);
    addField(tr("Body:"), record.bodyName);
    addField(tr("Algorithm:"), record.algoName);
    addField(tr("Bit Rate:"), record.bitRate);
    addField(tr("Encode Name:"), record.encodeName);
    addField(tr("Encode Size:"), record.encodeSize);
    addField(tr("Decode Name:"), record.decodeName);
    addField(tr("Decode Size:"), record.decodeSize);
    addField(tr("Compression Rate:"), record.compressionRate);
    addField(tr("Play List:"), record.multiSelect == 1 ? std::string("Yes") : std::string("No"));

    if (mode == Mode::EditExportName) {
        m_exportName = new QLineEdit(QString::fromStdString(record.renameEncode), this);
        m_exportName->setObjectName(tr("Export Name:"));
        m_exportName->setPlaceholderText(QString::fromStdString(record.encodeName));
        m_exportName->setMinimumWidth(280);
        form->addRow(tr("Export Name:"), m_exportName);
    } else {
        addField(tr("Export Name:"), exportNameOf(record));
    }

    auto* buttons = new QDialogButtonBox(
        mode == Mode::ReadOnly ? QDialogButtonBox::Ok : QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QString PropertyDialog::fieldText(const QString& label) const
{
    if (const auto* text = findChild<QLabel*>(label))
        return text->text();
    const auto* edit = findChild<QLineEdit*>(label);
    return edit ? edit->text() : QString();
}

void PropertyDialog::accept()
{
    if (m_exportName) {
        const std::string name = m_exportName->text().trimmed().toStdString();
        // The export writes this name into a folder the user chose: it must
        // stay a plain file name there.
        if (!name.empty() && !isPlainFileName(name)) {
            m_port.showMessage("\"" + name + "\"" + std::string(msg::kExportNameInvalidSuffix));
            return;
        }
        if (name != m_record.renameEncode) {
            m_record.renameEncode = name;
            m_changed = true;
        }
    }
    QDialog::accept();
}

} // namespace kestrelon
