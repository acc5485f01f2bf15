#include "app/command_table.h"
#include "app/main_window.h"
#include "app_support.h"

#include "common/recording_port.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include "app/views/main_view.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace kestrelon {
namespace {

struct Expected {
    int id;
    const char* text;
    const char* key;
};

// The frame's command table as the program has always had it, written out
// here on its own so that a slip in the program's table shows.
const Expected kTable[] = {
    {32802, "&Workspace", ""},
    {32819, "Show or hide action toolbar ", ""},
    {32820, "Standard Toolbar", ""},
    {32771, "&New  Project ...\tCtrl+N", "Ctrl+N"},
    {32773, "&Save  Project\tCtrl+S", "Ctrl+S"},
    {32774, "Save  Project  &As ... ", ""},
    {32781, "Dll setting", ""},
    {32810, "Target &Board", ""},
    {32809, "P&C", ""},
    {32783, "Add F&iles\tCtrl+I", "Ctrl+I"},
    {32782, "Add &Folder\tCtrl+F", "Ctrl+F"},
    {32788, "D&elete All", ""},
    {32787, "Delete folder files", ""},
    {32785, "&Delete File(s)", ""},
    {32784, "Dele&te Folder", ""},
    {32789, "Show property", ""},
    {32775, "Close  &Project\tCtrl+P", "Ctrl+P"},
    {32772, "&Open  Project ...\tCtrl+O", "Ctrl+O"},
    {32828, "Select A&ll\tCtrl+A", ""},
    {32885, "Dele&te All", ""},
    {32860, "&Body Information", ""},
    {32863, "Encode &Info", ""},
    {32832, "&Property", ""},
    {32829, "Encode", ""},
    {32830, "&Decode\tCtrl+D", ""},
    {32833, "Show &Waveform", ""},
    {32835, "Call external editor", ""},
    {32862, "Clear", ""},
    {32864, "Duplicate", ""},
    {32890, "", "Ctrl+F9"},
    {57670, "&Help\tF1", "F1"},
    {32917, "", "Ctrl+D"},
    {32916, "", "Ctrl+E"},
    {32806, "Show configuration", ""},
    {32918, "E&xport", ""},
    {32919, "E&xport", ""},
    {32920, "Show configuration", ""},
    {32922, "", "Ctrl+R"},
    {32924, "Add Encode Data", ""},
    {59137, "CAP", ""},
    {32927, "Setting", ""},
    {32931, "Select all", ""},
    {32932, "", "Ctrl+A"},
    {32933, "Delete\tDelete", ""},
};

class FrameTest : public ::testing::Test {
protected:
    FrameTest()
    {
        FrameOptions options;
        options.programFolder = m_dir.path();
        options.configFolder = m_dir / "config";
        options.port = &m_port;
        options.chooser = &m_chooser;
        m_frame = std::make_unique<MainWindow>(options);
    }

    test::TempDir m_dir;
    test::ScriptedPort m_port;
    test::ScriptedChooser m_chooser;
    std::unique_ptr<MainWindow> m_frame;
};

void collectMenuActions(const QMenu* menu, std::set<const QAction*>& out)
{
    for (const QAction* action : menu->actions()) {
        out.insert(action);
        if (action->menu()) collectMenuActions(action->menu(), out);
    }
}

TEST_F(FrameTest, EveryRowOfTheTableIsAnActionWithItsTextAndKey)
{
    // The menu bar's menus and the trees' pop-up menus.
    std::set<const QAction*> inMenus;
    for (const QMenu* menu : m_frame->findChildren<QMenu*>()) collectMenuActions(menu, inMenus);
    const QList<QAction*> onWindow = m_frame->actions();

    for (const Expected& row : kTable) {
        SCOPED_TRACE(row.id);
        const QAction* action = m_frame->action(row.id);
        ASSERT_NE(action, nullptr);
        EXPECT_EQ(action->data().toInt(), row.id);
        EXPECT_EQ(action->text(), QString::fromUtf8(row.text));
        EXPECT_EQ(action->shortcut(), QKeySequence(QString::fromUtf8(row.key)));
        // A command with a text can be found in a menu; one with only a key
        // listens on the window. The caps-lock row is the status bar's.
        if (row.id != 59137 && *row.text) {
            EXPECT_TRUE(inMenus.count(action)) << "not in a menu: " << row.text;
        }
        if (*row.key) {
            EXPECT_TRUE(onWindow.contains(const_cast<QAction*>(action)));
        }
    }
    // The five recent-project entries stand in the File menu.
    for (int id = 32871; id <= 32875; ++id) {
        ASSERT_NE(m_frame->action(id), nullptr);
        EXPECT_TRUE(inMenus.count(m_frame->action(id)));
    }
    // Nothing beyond the table and the extras (Exit, the play commands).
    EXPECT_EQ(frameCommandTable().size(), std::size(kTable) + 5);
}

TEST_F(FrameTest, NoTwoCommandsShareAKey)
{
    std::map<QString, int> seen;
    for (const QAction* action : m_frame->commands().actions()) {
        if (action->shortcut().isEmpty()) continue;
        const QString key = action->shortcut().toString(QKeySequence::PortableText);
        EXPECT_TRUE(seen.emplace(key, CommandTable::idOf(action)).second)
            << key.toStdString() << " is used by " << seen[key] << " and " << CommandTable::idOf(action);
    }
    // The menu entries that show Ctrl+A and Ctrl+D leave the key to the keyed
    // frame commands, which run the same list command.
    EXPECT_EQ(seen[QStringLiteral("Ctrl+A")], cmd::kSelectAllKey);
    EXPECT_EQ(seen[QStringLiteral("Ctrl+D")], cmd::kDecodeKey);
    EXPECT_EQ(seen[QStringLiteral("Ctrl+F9")], cmd::kSplitterBarKey);
}

TEST_F(FrameTest, PlaybackAndWaveformCommandsArePresentAndDisabled)
{
    m_frame->updateCommands();
    for (int id : {cmd::kTargetBoard, cmd::kPc, cmd::kShowWaveform, cmd::kPlay, cmd::kStop, cmd::kPause,
                   cmd::kPlayLooped, cmd::kPlaySentence}) {
        SCOPED_TRACE(id);
        ASSERT_NE(m_frame->action(id), nullptr);
        EXPECT_FALSE(m_frame->action(id)->isEnabled());
    }
    EXPECT_EQ(m_frame->action(cmd::kPlay)->shortcut(), QKeySequence(Qt::Key_Space));
    EXPECT_EQ(m_frame->action(cmd::kPlaySentence)->shortcut(), QKeySequence(Qt::Key_M));
}

TEST(CommandText, PlainTextForButtonsAndTips)
{
    EXPECT_EQ(plainCommandText("&New  Project ...\tCtrl+N"), "New Project");
    EXPECT_EQ(plainCommandText("Save  Project  &As ... "), "Save Project As");
    EXPECT_EQ(plainCommandText("Show or hide action toolbar "), "Show or hide action toolbar");
    EXPECT_EQ(plainCommandText("Tom && Jerry"), "Tom & Jerry");
    EXPECT_EQ(plainCommandText("Delete\tDelete"), "Delete");
    EXPECT_EQ(plainCommandText(""), "");
}

TEST(CommandRules, SaveAndCloseNeedAnOpenProjectAndAClearBusyFlag)
{
    FrameState state;
    for (int id : {cmd::kSaveProject, cmd::kCloseProject, cmd::kSaveProjectAs}) {
        SCOPED_TRACE(id);
        state = {};
        EXPECT_FALSE(commandEnabled(id, state));
        state.projectOpen = true;
        EXPECT_TRUE(commandEnabled(id, state));
        state.busy = true;
        EXPECT_FALSE(commandEnabled(id, state));
    }
    // New and Open only wait for the busy flag.
    state = {};
    EXPECT_TRUE(commandEnabled(cmd::kNewProject, state));
    state.busy = true;
    EXPECT_FALSE(commandEnabled(cmd::kOpenProject, state));
}

TEST(CommandRules, TreeAndListCommandsNeedSomethingOfTheirKind)
{
    FrameState state;
    state.projectOpen = true;
    state.filesTreeEmpty = false;
    EXPECT_FALSE(commandEnabled(cmd::kAddFiles, state)) << "no target selected";
    EXPECT_FALSE(commandEnabled(cmd::kDeleteFiles, state));
    EXPECT_TRUE(commandEnabled(cmd::kDeleteAll, state));

    state.hasTarget = true;
    state.selectedItems = 1;
    state.selectedFolders = 1;
    EXPECT_TRUE(commandEnabled(cmd::kAddFolder, state));
    EXPECT_TRUE(commandEnabled(cmd::kDeleteFolder, state));
    EXPECT_FALSE(commandEnabled(cmd::kDeleteFiles, state)) << "a folder is no file";
    EXPECT_FALSE(commandEnabled(cmd::kDeleteFolderFiles, state)) << "the folder holds no file";
    EXPECT_FALSE(commandEnabled(cmd::kAddEncodeData, state));

    state.selectedSources = 2;
    state.selectedItems = 3;
    state.bodiesLoaded = true;
    EXPECT_TRUE(commandEnabled(cmd::kDeleteFiles, state));
    EXPECT_TRUE(commandEnabled(cmd::kAddEncodeData, state));
    EXPECT_FALSE(commandEnabled(cmd::kShowProperty, state)) << "property of one item only";

    EXPECT_FALSE(commandEnabled(cmd::kSelectAllKey, state)) << "an empty list";
    state.listHasRows = true;
    EXPECT_TRUE(commandEnabled(cmd::kSelectAllKey, state));
    EXPECT_FALSE(commandEnabled(cmd::kDecodeKey, state)) << "no row selected";
    state.listHasSelection = true;
    EXPECT_TRUE(commandEnabled(cmd::kDecodeKey, state));
    EXPECT_TRUE(commandEnabled(cmd::kDeleteRows, state));

    state.busy = true;
    for (int id : {cmd::kAddFiles, cmd::kDeleteFiles, cmd::kDecode, cmd::kExportAll, cmd::kAddEncodeData})
        EXPECT_FALSE(commandEnabled(id, state)) << id;

    // The recent entries that exist, and only while idle.
    state = {};
    state.recentCount = 2;
    EXPECT_TRUE(commandEnabled(cmd::kRecentFirst + 1, state));
    EXPECT_FALSE(commandEnabled(cmd::kRecentFirst + 2, state));
}

TEST_F(FrameTest, SaveAndCloseFollowTheProjectAndTheBusyFlag)
{
    QAction* save = m_frame->action(cmd::kSaveProject);
    QAction* close = m_frame->action(cmd::kCloseProject);
    m_frame->updateCommands();
    EXPECT_FALSE(save->isEnabled());
    EXPECT_FALSE(close->isEnabled());

    ASSERT_TRUE(m_frame->session().newProject(m_dir.path().string(), "Busy"));
    m_frame->sessionChanged();
    EXPECT_TRUE(save->isEnabled());
    EXPECT_TRUE(close->isEnabled());

    // The list view tells the frame when a batch starts; the frame follows.
    m_frame->session().setBusy(true);
    emit m_frame->mainView()->busyChanged();
    EXPECT_FALSE(save->isEnabled());
    EXPECT_FALSE(close->isEnabled());
    // A disabled command does nothing even when called directly.
    m_frame->runCommand(cmd::kCloseProject);
    EXPECT_TRUE(m_frame->session().isOpen());

    m_frame->session().setBusy(false);
    m_frame->updateCommands();
    EXPECT_TRUE(close->isEnabled());
    m_frame->runCommand(cmd::kCloseProject);
    EXPECT_FALSE(m_frame->session().isOpen());
    EXPECT_FALSE(close->isEnabled());
}

} // namespace
} // namespace kestrelon
