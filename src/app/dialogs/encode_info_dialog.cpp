#include "app/dialogs/encode_info_dialog.h"

#include "app/dialogs/read_only_form.h"
#include "codec/row_encoded_file.h"
#include "common/paths.h"
#include "project/edit_info_record.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QVBoxLayout>

namespace kestrelon {

namespace {

QString bytes(std::uintmax_t count)
{
    return QString::number(count) + QStringLiteral(" byte");
}

QString hexByte(unsigned value)
{
    return QStringLiteral("0x") + QString::number(value, 16).toUpper().rightJustified(2, QLatin1Char('0'));
}

} // namespace

EncodeInfoDialog::EncodeInfoDialog(const EditInfoRecord& record, const RowEncodedFile& file, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Encode Info"));

    auto* row = new QGroupBox(tr("Encoded File"), this);
    auto* rowForm = new ReadOnlyForm;
    rowForm->addField(tr("File Name:"), record.fileName);
    rowForm->addField(tr("Algorithm:"), record.algoName);
    rowForm->addField(tr("Bit Rate:"),
                      record.bitRate.empty() ? QString() : QString::fromStdString(record.bitRate) + tr(" bps"));
    rowForm->addField(tr("Interim File:"), QString::fromStdString(utf8FromPath(file.interimFile)));
    rowForm->addField(tr("Packed Size:"), bytes(file.packedSize));
    rowForm->addField(tr("Encode Size:"), bytes(file.encoded.fileSize));
    rowForm->addField(tr("Speech Data:"), bytes(file.encoded.dataSize()));
    rowForm->addField(tr("Compression Rate:"), record.compressionRate.empty()
                                                   ? QString()
                                                   : QString::fromStdString(record.compressionRate) + " %");
    row->setLayout(rowForm);

    const EncodedHeaderFields& header = file.encoded.header;
    auto* headerBox = new QGroupBox(tr("Header"), this);
    auto* headerForm = new ReadOnlyForm;
    headerForm->addField(tr("Signature:"), header.signature);
    headerForm->addField(tr("Version:"), hexByte(header.version));
    headerForm->addField(tr("Format Code:"), QString::number(header.formatCode));
    headerForm->addField(tr("Sample Rate:"), QString::number(header.sampleRate) + tr(" Hz"));
    headerForm->addField(tr("Field 22:"), QString::number(header.field22));
    headerForm->addField(tr("Field 24:"), QString::number(header.field24));
    headerForm->addField(tr("Field 30:"), QString::number(header.field30));
    headerForm->addField(tr("Field 34:"), QString::number(header.field34));
    headerForm->addField(tr("Field 36:"), QString::number(header.field36));
    headerBox->setLayout(headerForm);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(row);
    layout->addWidget(headerBox);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

} // namespace kestrelon
