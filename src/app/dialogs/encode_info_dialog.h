#pragma once
// "Encode Info": what the firmware build gets from a row, read from the row's
// encoded file itself rather than from the project's record of it: where the
// packed file lies, its sizes, and the fields of the encoded-file header.
#include <QDialog>

namespace kestrelon {

struct EditInfoRecord;
struct RowEncodedFile;

class EncodeInfoDialog : public QDialog {
    Q_OBJECT
public:
    EncodeInfoDialog(const EditInfoRecord& record, const RowEncodedFile& file, QWidget* parent = nullptr);
};

} // namespace kestrelon
