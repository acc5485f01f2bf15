#pragma once
// "Property" of a row: every field of its edit-info record, read-only, and
// the name its encoded file is exported under, which the user may change.
// An empty export name means the interim file's own name (shown greyed as a
// hint).
#include <QDialog>

#include <string>

class QLineEdit;

namespace kestrelon {

class UserPort;
struct EditInfoRecord;

class PropertyDialog : public QDialog {
    Q_OBJECT
public:
    // `record` is changed on "OK" only (its export name).
    PropertyDialog(EditInfoRecord& record, UserPort& port, QWidget* parent = nullptr);

    QLineEdit* exportNameEdit() const { return m_exportName; }
    // True when OK changed the record.
    bool changed() const { return m_changed; }

    void accept() override;

private:
    EditInfoRecord& m_record;
    UserPort& m_port;
    QLineEdit* m_exportName = nullptr;
    bool m_changed = false;
};

} // namespace kestrelon
