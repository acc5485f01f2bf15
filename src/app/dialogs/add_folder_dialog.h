#pragma once
// "Add Folder": the name of a new folder of the Files tree, offered as
// "Folder". The dialog only asks; the Files tree's Add Folder judges the name.
#include <QDialog>

#include <string>

class QLineEdit;

namespace kestrelon {

class AddFolderDialog : public QDialog {
    Q_OBJECT
public:
    explicit AddFolderDialog(QWidget* parent = nullptr);

    std::string folderName() const;
    QLineEdit* nameEdit() const { return m_name; }

private:
    QLineEdit* m_name;
};

} // namespace kestrelon
