#pragma once
// "New Project": a project name and the folder to create it in. OK runs the
// checks of checkNewProject; a refusal shows its text and keeps the dialog
// open (emptying the name box when the check says so).
#include <QDialog>

#include <filesystem>
#include <string>

class QLineEdit;
class QPushButton;

namespace kestrelon {

class FileChooser;
class UserPort;

class NewProjectDialog : public QDialog {
    Q_OBJECT
public:
    NewProjectDialog(UserPort& port, FileChooser& chooser, const std::filesystem::path& startLocation,
                     QWidget* parent = nullptr);

    std::string name() const;
    std::string location() const;
    // Set once OK's checks passed: LOCATION/NAME/NAME.ptp.
    const std::filesystem::path& projectFile() const { return m_projectFile; }

    QLineEdit* nameEdit() const { return m_name; }
    QLineEdit* pathEdit() const { return m_path; }
    QPushButton* browseButton() const { return m_browse; }

public slots:
    void accept() override;

private:
    void browse();

    UserPort& m_port;
    FileChooser& m_chooser;
    QLineEdit* m_name;
    QLineEdit* m_path;
    QPushButton* m_browse;
    std::filesystem::path m_projectFile;
};

} // namespace kestrelon
