#pragma once
// "Export": the folder the encoded files go to ("Path :", with "..." opening a
// folder chooser), whether they keep their 48-byte encoded-file header, and
// the firmware format added to them (C files or a ROM image) with its options.
// A summary line says how many bytes the chosen rows come to in each format.
// The dialog only gathers the values; the folder checks and the export itself
// are exportRows' and writeFirmwareFiles' (settings/).
#include "export/export.h"
#include "export/firmware_export.h"

#include <QDialog>

#include <cstdint>
#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace kestrelon {

class ExportDialog : public QDialog {
    Q_OBJECT
public:
    // `encodedSizes`: the encoded size (header included) of each row the
    // export would write, for the summary.
    ExportDialog(const ExportOptions& initial, const FirmwareOptions& firmware,
                 std::vector<std::uintmax_t> encodedSizes, QWidget* parent = nullptr);

    ExportOptions options() const;
    FirmwareOptions firmwareOptions() const;

    QLineEdit* pathEdit() const { return m_path; }
    QCheckBox* headerBox() const { return m_header; }
    QPushButton* browseButton() const { return m_browse; }
    QComboBox* formatBox() const { return m_format; }
    QComboBox* alignmentBox() const { return m_alignment; }
    QLabel* summaryLine() const { return m_summary; }

    void accept() override;

private:
    void browse();
    void updateFormatControls();
    // The "Pad" text as a byte: decimal, or hexadecimal with 0x; none when it is neither.
    std::optional<std::uint8_t> padByte() const;

    std::vector<std::uintmax_t> m_sizes;
    QLineEdit* m_path;
    QPushButton* m_browse;
    QCheckBox* m_header;
    QComboBox* m_format;
    QLineEdit* m_name;
    QComboBox* m_alignment;
    QComboBox* m_byteOrder;
    QLineEdit* m_pad;
    QLabel* m_summary;
};

} // namespace kestrelon
