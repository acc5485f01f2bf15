#pragma once
// The workbench's main frame: menus, the two toolbars, the status bar, the
// docked Workspace bar and the main list view in the middle. It owns the one
// open project (a ProjectSession with its play list and algorithm registry),
// reads the settings when it is built and writes them when it goes, and routes
// every command of the command table: project and Files tree commands to the
// project layer, list commands to the main view.
//
// The main view (app/views/main_view.h) is the central widget; the list
// commands run its slots, and its state (rows, selection, current row) feeds
// the enabling rules. The busy flag is the session's: whoever sets or clears
// it (the engine, playback) calls updateCommands() afterwards.
#include "app/command_table.h"
#include "model/project.h"
#include "project/recent_projects.h"
#include "project/workspace_tree.h"
#include "settings/settings_store.h"

#include <QMainWindow>
#include <QPointer>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QLabel;
class QMenu;
class QToolBar;

namespace kestrelon {

class BodySettings;
class FileChooser;
class MainView;
class PlayCommands;
class ProjectUndo;
class QtUserPort;
class WorkspaceBar;
class ManualWindow;
class WorkspaceTree;

struct FrameOptions {
    // Where the program's data files lie (help file, body settings); closing a
    // project returns the current folder to it.
    std::filesystem::path programFolder;
    // Settings folder; empty for the user's own profile (QSettings("Corvane", "Kestrelon")).
    std::filesystem::path configFolder;
    // Tests give their own port and choosers; null means the frame's Qt ones.
    UserPort* port = nullptr;
    FileChooser* chooser = nullptr;
    // The body settings file in use: the program folder's, or the user's copy.
    std::filesystem::path bodySettingsFile = {};
};

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    // `bodies` (may be null) are the body settings loaded at start-up.
    explicit MainWindow(FrameOptions options, BodySettings* bodies = nullptr, QWidget* parent = nullptr);
    // Writes the settings.
    ~MainWindow() override;

    Project& project() { return m_project; }
    ProjectSession& session() { return m_project.session(); }
    ProjectCompanionFiles& companions() { return m_project.companions(); }
    SettingsStore& settings() { return m_settings; }
    const RecentProjects& recentProjects() const { return m_recent; }
    BodySettings* bodies() const { return m_bodies; }
    UserPort& port() { return *m_port; }
    const FrameOptions& options() const { return m_options; }
    CommandTable& commands() { return *m_commands; }
    QAction* action(int id) const { return m_commands->action(id); }
    WorkspaceBar* workspaceBar() const { return m_workspace; }
    // The Files tree's commands on the open project; null when none is open.
    WorkspaceTree* workspaceTree() { return m_project.tree(); }
    MainView* mainView() const { return m_view; }
    PlayCommands* playCommands() const { return m_playing; }
    // Loads the PC player the body settings name: once the frame is shown.
    void loadPlayers();
    QToolBar* standardToolBar() const { return m_standardBar; }
    QToolBar* actionToolBar() const { return m_actionBar; }
    QLabel* capsIndicator() const { return m_capsIndicator; }

    // Selected sources of the Files tree, in tree order (Add Encode Data, the
    // external editor).
    std::vector<ProjectItem*> selectedSources() const;

    // The state the enabling rules look at, as it stands.
    FrameState frameState() const;

    // Opens a project as the Open command does once a file is chosen.
    bool openProject(const std::filesystem::path& file);

public slots:
    // Runs a command of the table as its menu entry, button or key would.
    void runCommand(int id);
    // Runs every enabling rule again; the view calls it when its own state changes.
    void updateCommands();
    // Re-reads the trees and the list from the project.
    void refreshViews();
    // After the session opened, created or closed a project without the
    // frame's commands (a script, a test): the trees, title and list follow.
    void sessionChanged();
    // What the session published: the views follow it.
    void heard(const ProjectChange& change);

    void onNewProject();
    void onOpenProject();
    void onSaveProject();
    void onSaveProjectAs();
    void onCloseProject();
    void onRecentProject(int index);
    void onAddFiles();
    void onAddFolder();
    void onDeleteAll();
    void onDeleteFolderFiles();
    void onDeleteFiles();
    void onDeleteFolders();
    void onShowProperty();
    void onSelectAllTree();
    void onDllSetting();
    void onBodyInformation();
    void onHelp();
    void onExternalEditor();
    void onSplitterBar();
    void onShowWaveform();
    void onCompareBitRates();
    void onAbout();
    void addDroppedFiles(const TreeTarget& target, const std::vector<std::filesystem::path>& files);
    void onPlaySentence();
    void onAutoDecode();
    void onCodecWorkers();

signals:
    // The open project changed (opened, created, saved as, closed).
    void projectChanged();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createMenus();
    void createToolBars();
    void createStatusBar();
    void createWorkspace();
    void loadSettings();
    void saveSettings();
    // The frame's size, place, toolbars and docks, as the settings keep them.
    void restoreLayout();
    void keepLayout();
    void connectUndo();
    // Add Files and a drop: one step of the history, unless a wave was overwritten.
    void addFilesRecorded(const TreeTarget& target, const std::vector<std::filesystem::path>& files);
    void updateTitle();
    void updateRecentMenu();
    void updateCapsIndicator();
    bool runListCommand(int id);
    std::filesystem::path startFolder(const std::string& remembered) const;

    FrameOptions m_options;
    BodySettings* m_bodies;
    SettingsStore m_settings;
    RecentProjects m_recent;
    std::unique_ptr<QtUserPort> m_ownPort;
    QPointer<ManualWindow> m_manual; // the user manual, once F1 opened it
    UserPort* m_port;
    std::unique_ptr<FileChooser> m_ownChooser;
    FileChooser* m_chooser;
    Project m_project;
    Subscription m_projectHeard; // after the project: it goes first
    bool m_editorRunning = false;

    CommandTable* m_commands = nullptr;
    WorkspaceBar* m_workspace = nullptr;
    QToolBar* m_standardBar = nullptr;
    QToolBar* m_actionBar = nullptr;
    QLabel* m_capsIndicator = nullptr;
    MainView* m_view = nullptr;
    PlayCommands* m_playing = nullptr;
    ProjectUndo* m_undo = nullptr;
    QMenu* m_filesMenu = nullptr;
    QMenu* m_algorithmsMenu = nullptr;
};

} // namespace kestrelon
