#include "app/command_table.h"
#include "app/main_window.h"
#include "app_support.h"

#include <QAction>
#include <QMenu>

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

using FrameTest = test::FrameFixture;

void collectMenuActions(const QMenu* menu, std::set<const QAction*>& out)
{
    for (const QAction* action : menu->actions()) {
        out.insert(action);
        if (action->menu())
            collectMenuActions(action->menu(), out);
    }
}

TEST_F(FrameTest, EveryRowOfTheTableIsAnActionWithItsTextAndKey)
{
    // The menu bar's menus and the trees' pop-up menus.
    std::set<const QAction*> inMenus;
    for (const QMenu* menu : m_frame->findChildren<QMenu*>())
        collectMenuActions(menu, inMenus);
    const QList<QAction*> onWindow = m_frame->actions();

    for (const Expected& row : kTable) {
        SCOPED_TRACE(row.id);
        const QAction* action = m_frame->action(row.id);
        ASSERT_NE(action, nullptr);
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

TEST_F(FrameTest, NoTwoCommandsShareAKeyAndPlayingWaitsForARowAndAPlayer)
{
    std::map<QString, int> seen;
    for (const QAction* action : m_frame->commands().actions()) {
        if (action->shortcut().isEmpty())
            continue;
        const QString key = action->shortcut().toString(QKeySequence::PortableText);
        EXPECT_TRUE(seen.emplace(key, CommandTable::idOf(action)).second) << key.toStdString();
    }
    // Ctrl+A and Ctrl+D belong to the keyed frame commands, not the menu entries showing them.
    EXPECT_EQ(seen[QStringLiteral("Ctrl+A")], cmd::kSelectAllKey);
    EXPECT_EQ(seen[QStringLiteral("Ctrl+D")], cmd::kDecodeKey);
    EXPECT_EQ(seen[QStringLiteral("Space")], cmd::kPlay);
    EXPECT_EQ(seen[QStringLiteral("M")], cmd::kPlaySentence);

    m_frame->updateCommands();
    for (int id : {cmd::kShowWaveform, cmd::kPlay, cmd::kStop, cmd::kPause, cmd::kPlayLooped, cmd::kPlaySentence})
        EXPECT_FALSE(m_frame->action(id)->isEnabled()) << id;
    // The play target is chosen at any time, one of the two, the PC first.
    EXPECT_TRUE(m_frame->action(cmd::kPc)->isChecked());
    m_frame->runCommand(cmd::kTargetBoard);
    EXPECT_FALSE(m_frame->action(cmd::kPc)->isChecked());
    EXPECT_TRUE(m_frame->action(cmd::kTargetBoard)->isChecked());

    FrameState state;
    state.projectOpen = state.listHasCurrentRow = true;
    EXPECT_FALSE(commandEnabled(cmd::kPlay, state)); // no player
    state.playerLoaded = true;
    EXPECT_TRUE(commandEnabled(cmd::kPlay, state));
    EXPECT_TRUE(commandEnabled(cmd::kPlayLooped, state));
    EXPECT_FALSE(commandEnabled(cmd::kStop, state));
    state.playing = true;
    EXPECT_TRUE(commandEnabled(cmd::kStop, state));
    EXPECT_TRUE(commandEnabled(cmd::kPause, state));
}

TEST(CommandText, PlainTextForButtonsAndTips)
{
    EXPECT_EQ(plainCommandText("Save  Project  &As ... \tCtrl+S"), "Save Project As");
    EXPECT_EQ(plainCommandText("Tom && Jerry"), "Tom & Jerry");
}

TEST(CommandRules, CommandsNeedAProjectSomethingOfTheirKindAndAClearBusyFlag)
{
    FrameState state;
    EXPECT_FALSE(commandEnabled(cmd::kSaveProjectAs, state));
    EXPECT_TRUE(commandEnabled(cmd::kNewProject, state));
    state.busy = true;
    EXPECT_FALSE(commandEnabled(cmd::kOpenProject, state));

    state = {};
    state.projectOpen = true;
    state.filesTreeEmpty = false;
    EXPECT_TRUE(commandEnabled(cmd::kSaveProjectAs, state));
    EXPECT_FALSE(commandEnabled(cmd::kAddFiles, state)) << "no target selected";
    EXPECT_TRUE(commandEnabled(cmd::kDeleteAll, state));
    state.hasTarget = true;
    state.selectedItems = 1;
    state.selectedFolders = 1;
    EXPECT_TRUE(commandEnabled(cmd::kDeleteFolder, state));
    EXPECT_FALSE(commandEnabled(cmd::kDeleteFiles, state)) << "a folder is no file";
    EXPECT_FALSE(commandEnabled(cmd::kDeleteFolderFiles, state)) << "the folder holds no file";
    state.selectedSources = 2;
    state.selectedItems = 3;
    state.bodiesLoaded = true;
    EXPECT_TRUE(commandEnabled(cmd::kDeleteFiles, state));
    EXPECT_TRUE(commandEnabled(cmd::kAddEncodeData, state));
    EXPECT_FALSE(commandEnabled(cmd::kShowProperty, state)) << "property of one item only";
    EXPECT_FALSE(commandEnabled(cmd::kSelectAllKey, state)) << "an empty list";
    EXPECT_FALSE(commandEnabled(cmd::kDecodeKey, state)) << "no row selected";
    state.listHasRows = state.listHasSelection = true;
    EXPECT_TRUE(commandEnabled(cmd::kSelectAllKey, state));
    EXPECT_TRUE(commandEnabled(cmd::kDecodeKey, state));

    state.busy = true;
    for (int id : {cmd::kSaveProjectAs, cmd::kAddFiles, cmd::kDeleteFiles, cmd::kDecode, cmd::kAddEncodeData})
        EXPECT_FALSE(commandEnabled(id, state)) << id;

    // Only the recent entries that exist.
    state = {};
    state.recentCount = 2;
    EXPECT_TRUE(commandEnabled(cmd::kRecentFirst + 1, state));
    EXPECT_FALSE(commandEnabled(cmd::kRecentFirst + 2, state));
}

TEST_F(FrameTest, SaveAndCloseFollowTheProjectAndTheBusyFlag)
{
    QAction* close = m_frame->action(cmd::kCloseProject);
    m_frame->updateCommands();
    EXPECT_FALSE(close->isEnabled());

    ASSERT_TRUE(m_frame->session().newProject(m_dir.path().string(), "Busy"));
    EXPECT_TRUE(close->isEnabled());

    // The project tells the frame when a batch starts; the frame follows.
    m_frame->session().setBusy(true);
    EXPECT_FALSE(close->isEnabled());
    // A disabled command does nothing even when called directly.
    m_frame->runCommand(cmd::kCloseProject);
    EXPECT_TRUE(m_frame->session().isOpen());

    m_frame->session().setBusy(false);
    EXPECT_TRUE(close->isEnabled());
    m_frame->session().markModified();
    m_frame->runCommand(cmd::kSaveProject);
    EXPECT_FALSE(m_frame->session().document().isModified());
    m_frame->runCommand(cmd::kCloseProject);
    EXPECT_FALSE(m_frame->session().isOpen());
    EXPECT_FALSE(close->isEnabled());
}

} // namespace
} // namespace kestrelon
