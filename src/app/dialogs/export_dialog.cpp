#include "app/dialogs/export_dialog.h"

#include "codec/encoded_header.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrelon {

namespace {

constexpr std::uint32_t kAlignments[] = {1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096};

} // namespace

ExportDialog::ExportDialog(const ExportOptions& initial, const FirmwareOptions& firmware,
                           std::vector<std::uintmax_t> encodedSizes, QWidget* parent)
    : QDialog(parent)
    , m_sizes(std::move(encodedSizes))
    , m_path(new QLineEdit(QString::fromStdString(initial.folder), this))
    , m_browse(new QPushButton(tr("..."), this))
    , m_header(new QCheckBox(tr("Add Encode File Header"), this))
    , m_format(new QComboBox(this))
    , m_name(new QLineEdit(QString::fromStdString(firmware.baseName), this))
    , m_alignment(new QComboBox(this))
    , m_byteOrder(new QComboBox(this))
    , m_pad(new QLineEdit(QStringLiteral("0x%1").arg(firmware.padByte, 2, 16, QLatin1Char('0')), this))
    , m_summary(new QLabel(this))
{
    setWindowTitle(tr("Export"));
    m_path->setMinimumWidth(320);
    m_browse->setFixedWidth(m_browse->fontMetrics().horizontalAdvance(QStringLiteral("....")) + 24);
    m_header->setChecked(initial.addHeader);
    m_format->addItem(tr("Encoded files only"), int(FirmwareFormat::Raw));
    m_format->addItem(tr("Encoded files and C source (.h, .c)"), int(FirmwareFormat::C));
    m_format->addItem(tr("Encoded files and ROM image (.bin)"), int(FirmwareFormat::Image));
    m_format->setCurrentIndex(m_format->findData(int(firmware.format)));
    m_name->setToolTip(tr("Names the files and prefixes every C name: a lower-case C identifier."));
    for (std::uint32_t alignment : kAlignments)
        m_alignment->addItem(QString::number(alignment), alignment);
    m_alignment->setCurrentIndex(std::max(0, m_alignment->findData(firmware.alignment)));
    m_byteOrder->addItem(tr("Little endian"), false);
    m_byteOrder->addItem(tr("Big endian"), true);
    m_byteOrder->setCurrentIndex(firmware.bigEndian ? 1 : 0);
    m_pad->setMaximumWidth(60);
    m_pad->setToolTip(tr("The byte that fills the gaps between aligned items."));
    m_summary->setWordWrap(true);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel(tr("Path :"), this), 0, 0);
    grid->addWidget(m_path, 0, 1);
    grid->addWidget(m_browse, 0, 2);
    grid->addWidget(m_header, 1, 1, 1, 2);
    grid->addWidget(new QLabel(tr("Format :"), this), 2, 0);
    grid->addWidget(m_format, 2, 1, 1, 2);
    grid->addWidget(new QLabel(tr("Name :"), this), 3, 0);
    grid->addWidget(m_name, 3, 1, 1, 2);
    auto* image = new QHBoxLayout;
    image->addWidget(new QLabel(tr("Alignment"), this));
    image->addWidget(m_alignment);
    image->addWidget(m_byteOrder);
    image->addWidget(new QLabel(tr("Pad"), this));
    image->addWidget(m_pad);
    image->addStretch();
    grid->addLayout(image, 4, 1, 1, 2);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(m_summary);
    layout->addWidget(buttons);

    connect(m_browse, &QPushButton::clicked, this, &ExportDialog::browse);
    connect(buttons, &QDialogButtonBox::accepted, this, &ExportDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_format, &QComboBox::currentIndexChanged, this, &ExportDialog::updateFormatControls);
    connect(m_alignment, &QComboBox::currentIndexChanged, this, &ExportDialog::updateFormatControls);
    connect(m_header, &QCheckBox::toggled, this, &ExportDialog::updateFormatControls);
    updateFormatControls();
}

ExportOptions ExportDialog::options() const
{
    return ExportOptions{m_path->text().toStdString(), m_header->isChecked()};
}

FirmwareOptions ExportDialog::firmwareOptions() const
{
    FirmwareOptions options;
    options.format = static_cast<FirmwareFormat>(m_format->currentData().toInt());
    options.baseName = m_name->text().toStdString();
    options.alignment = m_alignment->currentData().toUInt();
    options.bigEndian = m_byteOrder->currentData().toBool();
    options.padByte = padByte().value_or(options.padByte);
    return options;
}

std::optional<std::uint8_t> ExportDialog::padByte() const
{
    bool ok = false;
    const uint pad = m_pad->text().trimmed().toUInt(&ok, 0);
    return ok && pad <= 0xFF ? std::optional(static_cast<std::uint8_t>(pad)) : std::nullopt;
}

// Firmware options that cannot work are said here, before anything is written.
void ExportDialog::accept()
{
    const FirmwareOptions firmware = firmwareOptions();
    QString problem;
    if (firmware.format == FirmwareFormat::Image && !padByte())
        problem = tr("The pad byte must be a number from 0 to 255, e.g. 0xff.");
    else if (firmware.format != FirmwareFormat::Raw)
        problem = QString::fromStdString(firmwareOptionsError(firmware));
    if (!problem.isEmpty()) {
        QMessageBox::warning(this, windowTitle(), problem);
        return;
    }
    QDialog::accept();
}

void ExportDialog::updateFormatControls()
{
    const auto format = static_cast<FirmwareFormat>(m_format->currentData().toInt());
    m_name->setEnabled(format != FirmwareFormat::Raw);
    for (QWidget* control :
         {static_cast<QWidget*>(m_alignment), static_cast<QWidget*>(m_byteOrder), static_cast<QWidget*>(m_pad)})
        control->setEnabled(format == FirmwareFormat::Image);

    std::vector<std::uintmax_t> lengths;
    std::uintmax_t data = 0;
    for (std::uintmax_t size : m_sizes) {
        const std::uintmax_t kept =
            m_header->isChecked() || size < kEncodedHeaderSize ? size : size - kEncodedHeaderSize;
        lengths.push_back(kept);
        data += kept;
    }
    const std::uintmax_t image = firmwareImageLayout(lengths, m_alignment->currentData().toUInt()).back();
    m_summary->setText(tr("%n row(s): %1 bytes of encoded data, %2 bytes as a ROM image.", nullptr, int(m_sizes.size()))
                           .arg(data)
                           .arg(image));
}

void ExportDialog::browse()
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Export"), m_path->text());
    if (!folder.isEmpty())
        m_path->setText(QDir::toNativeSeparators(folder));
}

} // namespace kestrelon
