#pragma once
// "DLL Setting": the project's algorithms ("Algorithms DLL:", with "Remove")
// and the external sound editor ("External Editor:", with "..." opening a file
// chooser).
//
// "Remove" acts at once, after a Yes/No question, and is not undone by
// "Cancel": the algorithm's library and its ".bdy" file leave the project's
// Algos folder and its entry leaves the registry, which is written straight
// away so that the folder and "dllsetinfo.ini" never disagree. Rows that use
// the algorithm stay; the engine passes them over as an invalid combination.
//
// The editor path is kept in the settings (LastSetting/ExternalEditor) and
// changes only on "OK". On Windows the chooser offers "*.exe"; elsewhere any
// file, and the chosen one must be an executable program.
#include "host/algorithm_registry.h"

#include <QDialog>

#include <filesystem>
#include <string>
#include <vector>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace kestrelon {

class UserPort;

class DllSettingDialog : public QDialog {
    Q_OBJECT
public:
    // `registry` is the open project's algorithm list, `projectFolder` its
    // folder (empty when no project is open); `editorPath` is changed on OK.
    DllSettingDialog(std::vector<AlgoRegEntry>& registry, std::filesystem::path projectFolder, std::string& editorPath,
                     UserPort& port, QWidget* parent = nullptr);

    QComboBox* algorithmBox() const { return m_algorithms; }
    QPushButton* removeButton() const { return m_remove; }
    QLineEdit* editorEdit() const { return m_editor; }

    // What "Remove" does with the algorithm shown in the combo box. False when
    // nothing was removed (no choice, the answer No, or a file that would not go).
    bool removeCurrentAlgorithm();

    // The chooser's filter, "External Editor (*.exe)" on Windows.
    static QString editorFilter();
    // Whether `path` may be kept as the editor: empty (no editor), or an
    // existing file the system can run. Says why not through `port`.
    static bool acceptableEditor(const QString& path, UserPort& port);

    void accept() override;

signals:
    // After an algorithm left the project, so its tree and lists can follow.
    void algorithmRemoved(const QString& name);

private:
    void fillAlgorithms();
    void browseEditor();

    std::vector<AlgoRegEntry>& m_registry;
    std::filesystem::path m_projectFolder;
    std::string& m_editorPath;
    UserPort& m_port;

    QComboBox* m_algorithms;
    QPushButton* m_remove;
    QLineEdit* m_editor;
    QPushButton* m_browse;
};

} // namespace kestrelon
