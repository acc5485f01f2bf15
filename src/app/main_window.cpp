#include "app/main_window.h"
#include "app/caps_lock.h"
#include "app/compare/compare_rates_dialog.h"

#include "app/dialogs/add_folder_dialog.h"
#include "app/dialogs/body_information_dialog.h"
#include "app/dialogs/dll_setting_dialog.h"
#include "app/dialogs/manual_window.h"
#include "app/dialogs/new_project_dialog.h"
#include "app/dialogs/splitter_bar_dialog.h"
#include "app/external_editor.h"
#include "app/file_chooser.h"
#include "app/playback/play_commands.h"
#include "app/playback/play_sentence_dialog.h"
#include "app/qt_user_port.h"
#include "app/undo/project_undo.h"
#include "app/views/main_view.h"
#include "app/waveform/wave_window.h"
#include "app/workspace_bar.h"
#include "bodies/body_settings.h"
#include "codec/row_codec.h"
#include "codec/row_decoded_wave.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/platform.h"
#include "common/version.h"
#include "project/workspace_tree.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFormLayout>
#include <QFrame>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSerialPortInfo>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>

#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kProgramTitle = "Kestrelon";
// The user manual's first page, made from docs/ at build time.
constexpr std::string_view kManualIndex = "manual/index.html";
// Often enough that the pane follows the key as it is pressed.
constexpr int kCapsPollMilliseconds = 250;
// A menu text may not show a path's "&" as a mnemonic.
QString escapeMnemonics(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

// The property of a Files tree node: what it is and where its file lies.
void showItemProperty(QWidget* parent, const ProjectItem& item, const fs::path& onDisk)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Property"));
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Name:"), new QLabel(QString::fromStdString(item.name())));
    form->addRow(QStringLiteral("ID:"), new QLabel(QString::fromStdString(item.id())));
    form->addRow(QStringLiteral("Kind:"),
                 new QLabel(item.isGroup() ? QStringLiteral("Folder") : QStringLiteral("Source file")));
    if (item.isSource()) {
        std::error_code ec;
        const auto size = fs::file_size(onDisk, ec);
        form->addRow(QStringLiteral("Path:"), new QLabel(qtPath(onDisk)));
        form->addRow(QStringLiteral("Size (byte):"),
                     new QLabel(ec ? QStringLiteral("(missing)") : QString::number(qulonglong(size))));
        form->addRow(QStringLiteral("Encode settings:"), new QLabel(QString::number(item.records().size())));
    } else {
        form->addRow(QStringLiteral("Items:"), new QLabel(QString::number(item.children().size())));
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(form);
    layout->addWidget(buttons);
    dialog.exec();
}

} // namespace

MainWindow::MainWindow(FrameOptions options, BodySettings* bodies, QWidget* parent)
    : QMainWindow(parent)
    , m_options(std::move(options))
    , m_bodies(bodies)
    , m_ownPort(m_options.port ? nullptr : std::make_unique<QtUserPort>())
    , m_port(m_options.port ? m_options.port : m_ownPort.get())
    , m_ownChooser(m_options.chooser ? nullptr : std::make_unique<QtFileChooser>(this))
    , m_chooser(m_options.chooser ? m_options.chooser : m_ownChooser.get())
    , m_project(*m_port,
                {m_options.programFolder, m_options.configFolder.empty() ? userConfigFolder() : m_options.configFolder},
                &m_recent)
{
    m_project.setBodies(m_bodies);
    // The settings are read before any window of the frame exists.
    loadSettings();
    if (m_ownPort)
        m_ownPort->setParent(this);

    setObjectName(QStringLiteral("MainFrame"));
    setDockOptions(QMainWindow::AnimatedDocks | QMainWindow::AllowTabbedDocks);
    m_commands = new CommandTable(this);
    connect(m_commands, &CommandTable::triggered, this, &MainWindow::runCommand);

    m_undo = new ProjectUndo(m_project.session(), *m_port, this);
    m_view = new MainView(*m_port);
    m_view->setUndo(m_undo);
    // The frame hears first: a closed project's tree must be gone before a
    // view's own refresh asks the frame to update its commands.
    m_projectHeard = m_project.changed.subscribe([this](const ProjectChange& change) { heard(change); });
    m_view->setSettings(&m_settings);
    m_view->setProject(&m_project);
    setCentralWidget(m_view);
    connect(m_view, &MainView::selectionChanged, this, &MainWindow::updateCommands);
    connect(m_view, &MainView::compareBitRatesRequested, this, [this] { runCommand(cmd::kCompareBitRates); });
    connect(m_view, &MainView::startChosen, this, [this](const QString& link) {
        if (link == QLatin1String("new"))
            runCommand(cmd::kNewProject);
        else if (link == QLatin1String("open"))
            runCommand(cmd::kOpenProject);
        else if (link.startsWith(QLatin1String("recent:")))
            runCommand(cmd::kRecentFirst + link.mid(7).toInt());
    });
    connect(m_view, &MainView::finished, this, [this](const QString& what) { statusBar()->showMessage(what); });
    connect(m_view, &MainView::rowsChanged, this, [this] {
        updateTitle();
        updateCommands();
    });

    createWorkspace();
    createMenus();
    createToolBars();
    createStatusBar();
    m_playing = new PlayCommands(*m_port, m_project.session(), *m_view, *statusBar(), this);
    m_playing->setPlayMode(m_settings.playMode);
    connect(m_playing, &PlayCommands::stateChanged, this, &MainWindow::updateCommands);
    connectUndo();
    resize(1000, 700);
    restoreLayout();
    sessionChanged();
}

void MainWindow::heard(const ProjectChange& change)
{
    using Kind = ProjectChange::Kind;
    switch (change.kind) {
    case Kind::Opened:
    case Kind::Closed: sessionChanged(); break;
    case Kind::Saved:
        // The save deleted the files the project let go of: no step can bring them back.
        m_undo->forget();
        updateTitle();
        break;
    case Kind::Tree:
        // What plays may be a removed item's: it stops. The title and the
        // commands follow the list, which tells once it has its new rows.
        m_playing->stop();
        break;
    case Kind::Rows:
    case Kind::Algorithms: break;
    case Kind::Busy: updateCommands(); break;
    }
}

void MainWindow::loadPlayers()
{
    if (m_bodies) {
        m_playing->loadPlayer(m_bodies->pcPlayDll());
        exportBoardPorts(m_settings);
        m_playing->loadBoardPlayer(*m_bodies);
    }
    updateCommands();
}

MainWindow::~MainWindow()
{
    // The docks and views are destroyed after this frame is: what they signal
    // while going (the Files dock hides) must not reach it.
    for (QObject* child : {static_cast<QObject*>(m_workspace), static_cast<QObject*>(m_view)})
        if (child)
            child->disconnect(this);
    // The Files tree view must not outlive the tree it shows.
    if (m_workspace)
        m_workspace->setProject(nullptr, nullptr, {}, nullptr);
    saveSettings();
}

// ---- Settings

void MainWindow::loadSettings()
{
    if (!m_settings.load(m_options.configFolder))
        QTimer::singleShot(0, this, [this] { m_port->showMessage(msg::kSettingsUnreadable); });
    m_recent = RecentProjects(m_settings.recentProjects);
}

void MainWindow::restoreLayout()
{
    // Whatever the settings hold, a window that would not fit any screen now
    // is brought back by Qt itself.
    if (!m_settings.windowGeometry.empty())
        restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(m_settings.windowGeometry)));
    if (!m_settings.windowLayout.empty())
        restoreState(QByteArray::fromBase64(QByteArray::fromStdString(m_settings.windowLayout)));
}

void MainWindow::keepLayout()
{
    m_settings.windowGeometry = saveGeometry().toBase64().toStdString();
    m_settings.windowLayout = saveState().toBase64().toStdString();
}

void MainWindow::saveSettings()
{
    m_settings.recentProjects = m_recent.entries();
    if (m_playing)
        m_settings.playMode = m_playing->playMode();
    if (!m_settings.save(m_options.configFolder))
        m_port->showMessage(msg::kSettingsNotSaved);
}

// ---- Building the frame

void MainWindow::createWorkspace()
{
    m_workspace = new WorkspaceBar(this);
    m_workspace->follow(&m_project);
    addDockWidget(Qt::LeftDockWidgetArea, m_workspace);
    resizeDocks({m_workspace}, {170}, Qt::Horizontal);
    connect(m_workspace, &WorkspaceBar::selectionChanged, this, &MainWindow::updateCommands);
    connect(m_workspace, &WorkspaceBar::sourceActivated, this, [this] { runCommand(cmd::kShowProperty); });
    connect(m_workspace, &WorkspaceBar::filesDropped, this, &MainWindow::addDroppedFiles);
    connect(m_workspace, &QDockWidget::visibilityChanged, this,
            [this](bool) { action(cmd::kWorkspace)->setChecked(!m_workspace->isHidden()); });
}

void MainWindow::createMenus()
{
    const auto add = [this](QMenu* menu, std::initializer_list<int> ids) {
        for (int id : ids) {
            if (id == 0)
                menu->addSeparator();
            else
                menu->addAction(action(id));
        }
    };
    using namespace cmd;

    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    add(file, {kNewProject, kOpenProject, kCloseProject, 0, kSaveProject, kSaveProjectAs, 0, kExportAll, 0});
    for (int id = kRecentFirst; id <= kRecentLast; ++id)
        file->addAction(action(id));
    add(file, {0, kExit});

    QMenu* edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    add(edit, {kUndo, kRedo, 0, kAddFiles, kAddFolder, 0, kDeleteFiles, kDeleteFolder, kDeleteFolderFiles, kDeleteAll,
               0, kSelectAllTree, kShowProperty});

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    add(view, {kStandardToolbar, kActionToolbar, kWorkspace, 0, kBodyInformation, kEncodeInfo, kRowProperty,
               kShowWaveform, 0, kShowConfigurationUpdateOnly});

    QMenu* act = menuBar()->addMenu(QStringLiteral("&Action"));
    add(act, {kAddEncodeData,
              kEncode,
              kDecode,
              0,
              kSelectAllRows,
              kDeleteRows,
              kDeleteAllRows,
              kClear,
              kDuplicate,
              kCompareBitRates,
              0,
              kPc,
              kTargetBoard,
              kPlay,
              kStop,
              kPause,
              kPlayLooped,
              kPlaySentence,
              0,
              kExportSelected,
              0,
              kDllSetting,
              kAutoDecode,
              kCodecWorkers,
              kExternalEditor});

    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    add(help, {kHelp, kAbout});

    // The trees' pop-up menus.
    m_filesMenu = new QMenu(this);
    add(m_filesMenu, {kAddFiles, kAddFolder, 0, kAddEncodeData, 0, kDeleteFiles, kDeleteFolder, kDeleteFolderFiles,
                      kDeleteAll, 0, kSelectAllTree, kShowProperty, kExternalEditor});
    m_workspace->setFilesMenu(m_filesMenu);
    m_algorithmsMenu = new QMenu(this);
    add(m_algorithmsMenu, {kShowConfiguration, 0, kDllSetting});
    m_workspace->setAlgorithmsMenu(m_algorithmsMenu);

    action(kAutoDecode)->setChecked(m_settings.autoDecode != 0);
    for (QMenu* menu : {file, edit, view, act, help, m_filesMenu, m_algorithmsMenu})
        connect(menu, &QMenu::aboutToShow, this, &MainWindow::updateCommands);
}

void MainWindow::createToolBars()
{
    using namespace cmd;
    QStyle* look = style();
    action(kNewProject)->setIcon(look->standardIcon(QStyle::SP_FileIcon));
    action(kOpenProject)->setIcon(look->standardIcon(QStyle::SP_DialogOpenButton));
    action(kSaveProject)->setIcon(look->standardIcon(QStyle::SP_DialogSaveButton));
    action(kHelp)->setIcon(look->standardIcon(QStyle::SP_DialogHelpButton));
    action(kAddFolder)->setIcon(look->standardIcon(QStyle::SP_FileDialogNewFolder));
    action(kAddFiles)->setIcon(look->standardIcon(QStyle::SP_FileDialogStart));
    action(kPlay)->setIcon(look->standardIcon(QStyle::SP_MediaPlay));
    action(kStop)->setIcon(look->standardIcon(QStyle::SP_MediaStop));
    action(kPause)->setIcon(look->standardIcon(QStyle::SP_MediaPause));

    m_standardBar = addToolBar(QStringLiteral("Standard Toolbar"));
    m_standardBar->setObjectName(QStringLiteral("StandardToolbar"));
    for (int id : {kNewProject, kOpenProject, kSaveProject, 0, kHelp}) {
        if (id == 0)
            m_standardBar->addSeparator();
        else
            m_standardBar->addAction(action(id));
    }

    m_actionBar = addToolBar(QStringLiteral("Action Toolbar"));
    m_actionBar->setObjectName(QStringLiteral("ActionToolbar"));
    m_actionBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    for (int id : {kAddFiles, kAddFolder, 0, kAddEncodeData, kEncode, kDecode, 0, kPc, kTargetBoard, kPlay, kStop, 0,
                   kExportSelected}) {
        if (id == 0)
            m_actionBar->addSeparator();
        else
            m_actionBar->addAction(action(id));
    }

    for (auto [bar, id] : {std::pair{m_standardBar, kStandardToolbar}, std::pair{m_actionBar, kActionToolbar}}) {
        action(id)->setChecked(true);
        connect(bar, &QToolBar::visibilityChanged, action(id), &QAction::setChecked);
    }
}

void MainWindow::createStatusBar()
{
    // The caps-lock pane starts empty and then follows the key; the key's
    // state is polled, as no window system reports every change of it.
    m_capsIndicator = new QLabel;
    m_capsIndicator->setObjectName(QStringLiteral("CapsIndicator"));
    m_capsIndicator->setMinimumWidth(m_capsIndicator->fontMetrics().horizontalAdvance(QStringLiteral("CAP")) + 12);
    m_capsIndicator->setAlignment(Qt::AlignCenter);
    m_capsIndicator->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    m_capsIndicator->clear();
    statusBar()->addPermanentWidget(m_capsIndicator);
    auto* capsTimer = new QTimer(this);
    connect(capsTimer, &QTimer::timeout, this, &MainWindow::updateCapsIndicator);
    capsTimer->start(kCapsPollMilliseconds);
    statusBar()->showMessage(QStringLiteral("Ready"));
}

// ---- State

std::vector<ProjectItem*> MainWindow::selectedSources() const
{
    return m_project.tree() ? m_project.tree()->selection().sources() : std::vector<ProjectItem*>{};
}

FrameState MainWindow::frameState() const
{
    FrameState state;
    state.projectOpen = m_project.session().isOpen();
    state.busy = m_project.session().busy();
    state.editorRunning = m_editorRunning;
    state.recentCount = int(m_recent.size());
    if (m_project.tree()) {
        const TreeSelection& selection = m_project.tree()->selection();
        state.filesTreeEmpty = m_project.session().document().topLevelFiles().empty();
        state.hasTarget = m_workspace->target().has_value();
        state.selectedItems = int(selection.items().size());
        state.selectedSources = int(selection.sources().size());
        state.selectedFolders = int(selection.folders().size());
        if (ProjectItem* primary = selection.primary(); primary && primary->isGroup())
            for (const ProjectItem* child : primary->children())
                if (child->isSource())
                    state.primaryFolderHasFiles = true;
    }
    state.bodiesLoaded = m_bodies != nullptr;
    state.listHasRows = m_view->hasRows();
    state.listHasSelection = m_view->hasSelection();
    state.listHasCurrentRow = m_view->hasCurrentRow();
    state.algorithmSelected = m_project.tree() && !m_workspace->selectedAlgorithm().empty();
    state.capsLock = capsLockOn().value_or(false);
    state.playerLoaded = m_playing && m_playing->playerLoaded();
    state.playing = m_playing && m_playing->playing();
    state.canUndo = m_undo->canUndo();
    state.canRedo = m_undo->canRedo();
    return state;
}

void MainWindow::updateCommands()
{
    // Every command and view change passes here: the title's mark follows.
    updateTitle();
    m_commands->update(frameState());
    // Qt's convention: the menu names the step ("&Undo Delete Files").
    action(cmd::kUndo)->setText(m_undo->canUndo() ? tr("&Undo %1").arg(m_undo->undoText()) : tr("&Undo"));
    action(cmd::kRedo)->setText(m_undo->canRedo() ? tr("&Redo %1").arg(m_undo->redoText()) : tr("&Redo"));
    if (m_playing) {
        action(cmd::kPc)->setChecked(m_playing->playMode() == 0);
        action(cmd::kTargetBoard)->setChecked(m_playing->playMode() == 1);
    }
    m_capsIndicator->setText(action(cmd::kCapsLock)->isEnabled() ? action(cmd::kCapsLock)->text() : QString());
}

void MainWindow::updateCapsIndicator()
{
    const bool on = capsLockOn().value_or(false);
    if (on == action(cmd::kCapsLock)->isEnabled())
        return;
    action(cmd::kCapsLock)->setEnabled(on);
    m_capsIndicator->setText(on ? action(cmd::kCapsLock)->text() : QString());
}

void MainWindow::updateTitle()
{
    const QString program = QString::fromUtf8(kProgramTitle.data(), qsizetype(kProgramTitle.size()));
    if (!m_project.session().isOpen()) {
        setWindowTitle(program);
        setWindowModified(false);
        return;
    }
    // "[*]" is where Qt shows the unsaved-changes mark, as every desktop expects.
    setWindowTitle(qtPath(m_project.session().projectFile().filename()) + QStringLiteral("[*] - ") + program);
    setWindowModified(m_project.session().document().isModified());
}

void MainWindow::updateRecentMenu()
{
    for (int index = 0; index <= cmd::kRecentLast - cmd::kRecentFirst; ++index) {
        QAction* entry = action(cmd::kRecentFirst + index);
        const bool used = std::size_t(index) < m_recent.size();
        entry->setVisible(used || index == 0);
        entry->setText(used ? QStringLiteral("&%1 ").arg(index + 1) +
                                  escapeMnemonics(QString::fromStdString(m_recent.displayText(std::size_t(index))))
                            : QStringLiteral("Recent File"));
        entry->setToolTip(used ? QString::fromStdString(m_recent.entries()[std::size_t(index)]) : QString());
    }
    QStringList recent;
    for (std::size_t index = 0; index < m_recent.size(); ++index)
        recent << QString::fromStdString(m_recent.entries()[index]);
    m_view->showRecentProjects(recent);
}

void MainWindow::sessionChanged()
{
    // The project keeps the old tree until everyone has heard: the bar lets
    // go of it here (which updates the commands from the new one).
    m_workspace->setProject(nullptr, nullptr, {}, nullptr);
    if (WorkspaceTree* tree = m_project.tree()) {
        m_workspace->setProject(tree, &m_project.session().document(), qtPath(m_project.session().projectFile().stem()),
                                &m_project.companions().algorithms());
        // Add Files and Add Folder work at once: the project's root is where
        // they go until the user picks another node.
        m_workspace->selectItems({}, /*root=*/true);
    }
    m_undo->forget(); // its steps were another project's, or the one saved under the old name
    updateTitle();
    updateRecentMenu();
    updateCommands();
    emit projectChanged();
}

void MainWindow::connectUndo()
{
    m_workspace->setUndo(m_undo);
    connect(m_undo, &ProjectUndo::historyChanged, this, &MainWindow::updateCommands);
    // The project's items are made anew: nothing may keep pointing at the old ones.
    connect(m_undo, &ProjectUndo::aboutToRestore, this, [this] {
        m_playing->stop();
        if (m_project.tree())
            m_project.tree()->selection().forgetItems();
    });
    connect(m_undo, &ProjectUndo::restored, this, [this] {
        m_project.treeEdited();
        m_workspace->selectItems({}, /*root=*/true);
    });
}

void MainWindow::refreshViews()
{
    m_workspace->refreshFiles();
    m_workspace->refreshAlgorithms();
    m_view->refresh();
    updateCommands();
}

fs::path MainWindow::startFolder(const std::string& remembered) const
{
    std::error_code ec;
    const fs::path folder = pathFromUtf8(remembered);
    if (!remembered.empty() && fs::is_directory(folder, ec))
        return folder;
    if (m_project.session().isOpen())
        return m_project.session().projectFolder();
    // Never the program's own folder: a user's projects belong with their documents.
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (!documents.isEmpty() && fs::is_directory(stdPath(documents), ec))
        return stdPath(documents);
    return stdPath(QDir::homePath());
}

// ---- Commands

void MainWindow::runCommand(int id)
{
    // A command runs only when its rule allows it, whoever asks.
    if (!commandEnabled(id, frameState()))
        return;
    using namespace cmd;
    if (id >= kRecentFirst && id <= kRecentLast) {
        onRecentProject(id - kRecentFirst);
    } else if (!runListCommand(id) && !m_playing->run(id)) {
        switch (id) {
        case kWorkspace: m_workspace->setVisible(action(id)->isChecked()); break;
        case kStandardToolbar: m_standardBar->setVisible(action(id)->isChecked()); break;
        case kActionToolbar: m_actionBar->setVisible(action(id)->isChecked()); break;
        case kNewProject: onNewProject(); break;
        case kOpenProject: onOpenProject(); break;
        case kSaveProject: onSaveProject(); break;
        case kSaveProjectAs: onSaveProjectAs(); break;
        case kCloseProject: onCloseProject(); break;
        case kUndo: m_undo->undo(); break;
        case kRedo: m_undo->redo(); break;
        case kAddFiles: onAddFiles(); break;
        case kAddFolder: onAddFolder(); break;
        case kDeleteAll: onDeleteAll(); break;
        case kDeleteFolderFiles: onDeleteFolderFiles(); break;
        case kDeleteFiles: onDeleteFiles(); break;
        case kDeleteFolder: onDeleteFolders(); break;
        case kShowProperty: onShowProperty(); break;
        case kSelectAllTree: onSelectAllTree(); break;
        case kDllSetting: onDllSetting(); break;
        case kBodyInformation: onBodyInformation(); break;
        case kHelp: onHelp(); break;
        case kAbout: onAbout(); break;
        case kExternalEditor: onExternalEditor(); break;
        case kSplitterBarKey: onSplitterBar(); break;
        case kShowWaveform: onShowWaveform(); break;
        case kPlaySentence: onPlaySentence(); break;
        case kCompareBitRates: onCompareBitRates(); break;
        case kAutoDecode: onAutoDecode(); break;
        case kCodecWorkers: onCodecWorkers(); break;
        case kRefreshKey: refreshViews(); break;
        case kExit: close(); break;
        default: break;
        }
    }
    updateCommands();
}

// The list's commands, run by the main view. False for any other command.
bool MainWindow::runListCommand(int id)
{
    using namespace cmd;
    switch (id) {
    case kSelectAllRows:
    case kSelectAllKey: m_view->selectAll(); return true;
    case kDeleteRows: m_view->deleteSelected(); return true;
    case kDeleteAllRows: m_view->deleteAll(); return true;
    case kEncode:
    case kEncodeKey: m_view->encodeSelected(); return true;
    case kDecode:
    case kDecodeKey: m_view->decodeSelected(); return true;
    case kRowProperty: m_view->showProperty(); return true;
    case kEncodeInfo: m_view->showEncodeInfo(); return true;
    case kClear: m_view->clearSelected(); return true;
    case kDuplicate: m_view->duplicateSelected(); return true;
    case kShowConfigurationUpdateOnly: m_view->showConfiguration(); return true;
    case kShowConfiguration: m_view->showAlgorithmConfiguration(m_workspace->selectedAlgorithm()); return true;
    case kExportSelected: m_view->exportSelected(); return true;
    case kExportAll: m_view->exportAll(); return true;
    case kAddEncodeData:
        // Groups among the selected items are passed over by the view.
        if (m_project.tree())
            m_view->addEncodeData(m_project.tree()->selection().items());
        return true;
    default: return false;
    }
}

void MainWindow::onNewProject()
{
    NewProjectDialog dialog(*m_port, *m_chooser, startFolder(m_settings.lastProjectPath), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.lastProjectPath = dialog.location();
    m_project.session().newProject(dialog.location(), dialog.name());
}

void MainWindow::onOpenProject()
{
    const auto chosen = m_chooser->projectToOpen(startFolder(m_settings.lastProjectPath));
    if (!chosen)
        return;
    openProject(*chosen);
}

bool MainWindow::openProject(const fs::path& file)
{
    const bool opened = m_project.session().openProject(file);
    if (opened)
        m_settings.lastProjectPath = utf8FromPath(file.parent_path().parent_path());
    return opened;
}

void MainWindow::onSaveProject()
{
    if (m_project.session().saveProject())
        statusBar()->showMessage(tr("Saved %1").arg(qtPath(m_project.session().projectFile().filename())));
}

void MainWindow::onSaveProjectAs()
{
    const auto chosen = m_chooser->projectToSave(startFolder(m_settings.lastProjectPath));
    if (!chosen)
        return;
    if (!m_project.session().saveProjectAs(*chosen))
        return;
    statusBar()->showMessage(tr("Saved %1").arg(qtPath(m_project.session().projectFile().filename())));
}

void MainWindow::onCloseProject()
{
    m_playing->stop(); // its scratch copy lies in the Temp that closing removes
    m_project.session().closeProject();
}

void MainWindow::onRecentProject(int index)
{
    if (index < 0 || std::size_t(index) >= m_recent.size())
        return;
    const std::string path = m_recent.entries()[std::size_t(index)];
    std::error_code ec;
    const bool existed = fs::exists(pathFromUtf8(path), ec);
    openProject(pathFromUtf8(path));
    // A project that is gone leaves the list once its message has been shown.
    if (!existed) {
        m_recent.remove(path);
        updateRecentMenu();
    }
}

void MainWindow::onAddFiles()
{
    const auto target = m_workspace->target();
    if (!m_project.tree() || !target)
        return;
    const std::vector<fs::path> chosen = m_chooser->waveFiles(startFolder(m_settings.lastFilePath));
    if (chosen.empty())
        return;
    m_settings.lastFilePath = utf8FromPath(chosen.front().parent_path());
    addFilesRecorded(*target, chosen);
}

void MainWindow::addFilesRecorded(const TreeTarget& target, const std::vector<fs::path>& files)
{
    bool overwrote = false;
    m_undo->record(tr("Add Files"), [&] {
        for (const AddedFile& added : m_project.tree()->addFiles(target, files))
            overwrote = overwrote || added.outcome == AddFileOutcome::Overwritten;
    });
    // The overwritten wave's old samples are not the project's to give back.
    if (overwrote)
        m_undo->forget();
}

void MainWindow::addDroppedFiles(const TreeTarget& target, const std::vector<fs::path>& files)
{
    // As Add Files, with every check and question, but for what was dropped.
    if (!m_project.tree() || m_project.session().busy())
        return;
    m_settings.lastFilePath = utf8FromPath(files.front().parent_path());
    addFilesRecorded(target, files);
    updateCommands();
}

void MainWindow::onAddFolder()
{
    const auto target = m_workspace->target();
    if (!m_project.tree() || !target)
        return;
    AddFolderDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_undo->record(tr("Add Folder"), [&] { m_project.tree()->addFolder(*target, dialog.folderName()); });
}

void MainWindow::onDeleteAll()
{
    if (m_project.tree())
        m_undo->record(tr("Delete All"), [this] { m_project.tree()->deleteAll(); });
    m_workspace->filesView()->setFocus();
}

void MainWindow::onDeleteFolderFiles()
{
    if (m_project.tree())
        m_undo->record(tr("Delete Folder Files"), [this] { m_project.tree()->deleteFolderFiles(); });
    m_workspace->filesView()->setFocus();
}

void MainWindow::onDeleteFiles()
{
    if (m_project.tree())
        m_undo->record(tr("Delete Files"), [this] { m_project.tree()->deleteFiles(); });
    m_workspace->filesView()->setFocus();
}

void MainWindow::onDeleteFolders()
{
    if (m_project.tree())
        m_undo->record(tr("Delete Folder"), [this] { m_project.tree()->deleteFolders(); });
    m_workspace->filesView()->setFocus();
}

void MainWindow::onShowProperty()
{
    if (!m_project.tree())
        return;
    if (ProjectItem* item = m_project.tree()->selection().primary())
        showItemProperty(this, *item, item->isSource() ? m_project.tree()->sourcePath(*item) : fs::path());
}

void MainWindow::onSelectAllTree()
{
    if (!m_project.tree())
        return;
    m_project.tree()->selection().selectAll();
    m_workspace->selectItems(m_project.tree()->selection().items());
}

void MainWindow::onDllSetting()
{
    const fs::path folder = m_project.session().isOpen() ? m_project.session().projectFolder() : fs::path();
    DllSettingDialog dialog(m_project.companions().algorithms(), folder, m_settings.externalEditor, *m_port, this);
    // A removed algorithm leaves the registry at once: the tree and the list follow.
    connect(&dialog, &DllSettingDialog::algorithmRemoved, this, [this] { m_project.algorithmsEdited(); });
    dialog.exec();
    updateCommands();
}

void MainWindow::onBodyInformation()
{
    if (!m_bodies)
        return;
    BodyInformationDialog dialog(m_bodies->bodies(), *m_port, this);
    if (m_playing->board().isLoaded()) {
        const std::uint32_t baud = std::uint32_t(m_bodies->baudRate());
        dialog.setVersionQuery([this, baud] { return m_playing->board().queryVersions(0, baud); });
        QStringList devices;
        for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
            devices << info.systemLocation();
        const QByteArray current = qgetenv("KESTRELON_BOARD_PORT0");
        dialog.setBoardPort(current.isEmpty() ? QStringLiteral("/dev/ttyUSB0") : QString::fromLocal8Bit(current),
                            devices, [this](const QString& device) {
                                m_settings.boardPorts[0] = device.toStdString();
                                qputenv("KESTRELON_BOARD_PORT0", device.toLocal8Bit());
                            });
    }
    dialog.setSettingsFile(m_options.bodySettingsFile.empty() ? QString() : qtPath(m_options.bodySettingsFile));
    dialog.exec();
}

void MainWindow::onHelp()
{
    const fs::path manual = m_options.programFolder / pathFromUtf8(kManualIndex);
    std::error_code ec;
    if (!fs::is_regular_file(manual, ec)) {
        m_port->showMessage(std::string(msg::kHelpNotFoundPrefix) + utf8FromPath(manual) +
                            std::string(msg::kHelpNotFoundSuffix));
        return;
    }
    if (!m_manual)
        m_manual = new ManualWindow(manual, this);
    m_manual->show();
    m_manual->raise();
}

void MainWindow::onAbout()
{
    const QString text =
        tr("<h3>Kestrelon %1</h3>"
           "<p>A workbench for turning recorded speech into data for speech-playback chips.</p>"
           "<p>Program folder: <tt>%2</tt></p>"
           "<p>Built with Qt %3 (LGPL 3), libsndfile (LGPL 2.1), zstd (BSD), SDL 2 (zlib licence), "
           "Codec 2 (LGPL 2.1), Speex (BSD) and nlohmann/json (MIT). Their licences are installed with them "
           "in /usr/share/doc.</p>")
            .arg(QString::fromUtf8(kProgramVersion.data(), qsizetype(kProgramVersion.size())),
                 qtPath(m_options.programFolder).toHtmlEscaped(), QString::fromLatin1(qVersion()));
    QMessageBox::about(this, tr("About Kestrelon"), text);
}

void MainWindow::onExternalEditor()
{
    std::error_code ec;
    const fs::path editor = pathFromUtf8(m_settings.externalEditor);
    if (editor.empty() || !fs::is_regular_file(editor, ec)) {
        m_port->showMessage(msg::kExternalEditorMissing);
        return;
    }
    const std::vector<ProjectItem*> sources = selectedSources();
    if (!m_project.tree() || sources.empty())
        return;
    ProjectItem* primary = m_project.tree()->selection().primary();
    const ProjectItem* source = primary && primary->isSource() ? primary : sources.front();
    m_editorRunning = true;
    updateCommands();
    runExternalEditor(editor, m_project.tree()->sourcePath(*source), this);
    m_editorRunning = false;
}

void MainWindow::onCompareBitRates()
{
    const std::vector<ProjectItem*> sources = m_view->selectedSources();
    if (!m_bodies || sources.empty())
        return;
    std::vector<fs::path> waves;
    for (const ProjectItem* source : sources)
        waves.push_back(m_project.session().filesFolder() / pathFromUtf8(source->id()));
    // The body the user works with: the current row's, else the first there is.
    const std::optional<ListRow> current = m_view->currentListRow();
    std::string body = current ? current->record().bodyName : std::string();
    if (!m_bodies->findBody(body) && !m_bodies->bodies().empty())
        body = m_bodies->bodies().front().name;
    CompareRatesDialog dialog(
        {m_bodies->bodies(), body, std::move(waves), m_options.programFolder / "kestrelon-cli",
         m_options.bodySettingsFile},
        [this, &sources](const std::string& chosenBody, const std::string& algorithm, const std::string& rate) {
            m_view->addEncodeRows(sources, chosenBody, algorithm, rate);
        },
        *m_port, this);
    dialog.exec();
}

void MainWindow::onShowWaveform()
{
    const std::optional<ListRow> row = m_view->currentListRow();
    if (!row)
        return;
    const EditInfoRecord& record = row->record();
    auto* window = new WaveWindow(m_project.session().filesFolder() / pathFromUtf8(record.fileName), m_settings.colors,
                                  *m_port, &m_playing->controller(), this);
    window->setWindowFlag(Qt::Window);
    if (!window->loaded()) {
        delete window;
        return;
    }
    // The decoded pane is a bonus: a row not decoded shows its source alone.
    if (!record.decodeName.empty()) {
        const std::filesystem::path decoded =
            unpackDecodedWave(m_project.session(), record, window->scratchFolder(), *m_port);
        if (!decoded.empty())
            window->loadDecoded(decoded);
    }
    window->closeWith(m_project, record.fileName);
    window->show();
}

void MainWindow::onPlaySentence()
{
    PlaySentenceDialog dialog(m_project.session(), m_project.companions().playList(), *m_playing, m_bodies, *m_port,
                              this);
    dialog.exec();
    dialog.stop();
}

void MainWindow::onSplitterBar()
{
    SplitterBarDialog dialog(splitViewEnabled(), *m_port, this);
    if (dialog.exec() == QDialog::Accepted)
        setSplitViewEnabled(dialog.showChecked());
}

void MainWindow::onAutoDecode()
{
    m_settings.autoDecode = action(cmd::kAutoDecode)->isChecked() ? 1 : 0;
}

void MainWindow::onCodecWorkers()
{
    bool ok = false;
    const int jobs = QInputDialog::getInt(
        this, tr("Codec Workers"),
        tr("Rows encoded or decoded at once, each by a codec worker of its own\n(0: one per core, %1 on this "
           "machine):")
            .arg(defaultCodecJobs()),
        m_settings.codecJobs, 0, kMostCodecJobs, 1, &ok);
    if (ok)
        m_settings.codecJobs = jobs;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // Closing the window first closes the project, with its save question; a
    // refusal keeps the window open.
    m_playing->stop();
    if (m_project.session().isOpen() && !m_project.session().closeProject()) {
        event->ignore();
        return;
    }
    keepLayout();
    event->accept();
}

} // namespace kestrelon
