#pragma once
// "Export": the folder the encoded files go to ("Path :", with "..." opening a
// folder chooser) and whether they keep their 48-byte encoded-file header.
// The dialog only gathers the two values; the folder checks and the export
// itself are exportRows' (settings/export.h).
#include "settings/export.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace kestrelon {

class ExportDialog : public QDialog {
    Q_OBJECT
public:
    explicit ExportDialog(const ExportOptions& initial, QWidget* parent = nullptr);

    ExportOptions options() const;

    QLineEdit* pathEdit() const { return m_path; }
    QCheckBox* headerBox() const { return m_header; }
    QPushButton* browseButton() const { return m_browse; }

private:
    void browse();

    QLineEdit* m_path;
    QPushButton* m_browse;
    QCheckBox* m_header;
};

} // namespace kestrelon
