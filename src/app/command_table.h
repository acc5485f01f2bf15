#pragma once
// The frame's commands: one row per command id, shared by menu entry, toolbar
// button and shortcut, in the order the frame routes them. The table is plain
// data; CommandTable turns it into QActions (the id kept as the action's data)
// and commandEnabled() holds the enabling rules, apart from any widget so the
// rules can be tested on their own.
#include <QObject>

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class QAction;
class QWidget;

namespace kestrelon {

namespace cmd {
inline constexpr int kNewProject = 32771;
inline constexpr int kOpenProject = 32772;
inline constexpr int kSaveProject = 32773;
inline constexpr int kSaveProjectAs = 32774;
inline constexpr int kCloseProject = 32775;
inline constexpr int kDllSetting = 32781;
inline constexpr int kAddFolder = 32782;
inline constexpr int kAddFiles = 32783;
inline constexpr int kDeleteFolder = 32784;
inline constexpr int kDeleteFiles = 32785;
inline constexpr int kDeleteFolderFiles = 32787;
inline constexpr int kDeleteAll = 32788;
inline constexpr int kShowProperty = 32789;
inline constexpr int kWorkspace = 32802;
inline constexpr int kShowConfigurationUpdateOnly = 32806;
inline constexpr int kPc = 32809;
inline constexpr int kTargetBoard = 32810;
inline constexpr int kActionToolbar = 32819;
inline constexpr int kStandardToolbar = 32820;
inline constexpr int kSelectAllRows = 32828;
inline constexpr int kEncode = 32829;
inline constexpr int kDecode = 32830;
inline constexpr int kRowProperty = 32832;
inline constexpr int kShowWaveform = 32833;
inline constexpr int kExternalEditor = 32835;
inline constexpr int kBodyInformation = 32860;
inline constexpr int kClear = 32862;
inline constexpr int kEncodeInfo = 32863;
inline constexpr int kDuplicate = 32864;
inline constexpr int kRecentFirst = 32871; // 32871 .. 32875
inline constexpr int kRecentLast = 32875;
inline constexpr int kDeleteAllRows = 32885;
inline constexpr int kSplitterBarKey = 32890; // Ctrl+F9: the hidden "Show Splitter Bar" dialog
inline constexpr int kEncodeKey = 32916; // Ctrl+E: encode the selected rows
inline constexpr int kDecodeKey = 32917; // Ctrl+D: decode the selected rows
inline constexpr int kExportSelected = 32918;
inline constexpr int kExportAll = 32919;
inline constexpr int kShowConfiguration = 32920;
inline constexpr int kRefreshKey = 32922; // Ctrl+R: read the views again from the project
inline constexpr int kAddEncodeData = 32924;
inline constexpr int kAutoDecode = 32927;
inline constexpr int kSelectAllTree = 32931;
inline constexpr int kSelectAllKey = 32932; // Ctrl+A: select every row of the list
inline constexpr int kDeleteRows = 32933; // the list's Delete: the selected rows ("an algo" of a file each)
inline constexpr int kHelp = 57670;
inline constexpr int kCapsLock = 59137;

// Commands the frame shows beyond its own table: leaving the program and the
// main view's play commands. Ids of our own, outside the table's range.
inline constexpr int kExit = 57665;
inline constexpr int kPlay = 33001;
inline constexpr int kStop = 33002;
inline constexpr int kPause = 33003;
inline constexpr int kPlayLooped = 33004;
inline constexpr int kPlaySentence = 33005;
inline constexpr int kCompareBitRates = 33006;
inline constexpr int kAbout = 33007;
inline constexpr int kUndo = 33008;
inline constexpr int kRedo = 33009;
inline constexpr int kCodecWorkers = 33010;
} // namespace cmd

// Whether a command has an enabling rule of its own ("Upd"): Yes, No (always
// enabled), or UpdateOnly (a rule of the frame's, but run elsewhere: by the
// list view, or shown as a status bar pane).
enum class Upd { Yes, No, UpdateOnly };

struct CommandRow {
    int id = 0;
    // The menu text with "&" mnemonics; after a tab, the shortcut the menu
    // shows. Empty for commands reached only by their key.
    std::string_view text;
    // The key that runs the command (QKeySequence's portable text); empty for none.
    std::string_view key;
    Upd upd = Upd::Yes;
    std::string_view statusTip;
};

// The frame's table, in the order the frame routes its commands. The five
// recent-project rows carry no text: the menu shows the paths.
std::span<const CommandRow> frameCommandTable();
// The commands beyond the table (Exit and the play commands).
std::span<const CommandRow> extraCommands();
const CommandRow* findCommandRow(int id);

// A menu text as a toolbar button or tool tip shows it: the part before the
// tab, without mnemonics ("&&" stays one "&"), without a trailing "..." and
// with runs of blanks made one.
std::string plainCommandText(std::string_view text);

// What the enabling rules look at. Filled by the frame on every update.
struct FrameState {
    bool projectOpen = false;
    bool busy = false; // the session's busy flag (encoding, decoding, playing)
    bool editorRunning = false; // the external editor has not ended yet
    bool filesTreeEmpty = true;
    bool hasTarget = false; // a node of the Files tree (or its root) is selected
    int selectedItems = 0; // selected items of the Files tree (the root not counted)
    int selectedSources = 0;
    int selectedFolders = 0;
    bool primaryFolderHasFiles = false;
    int recentCount = 0; // entries of the recent-project list
    bool bodiesLoaded = false; // the body settings of the program folder
    // The main list's state.
    bool listHasRows = false;
    bool listHasSelection = false;
    bool listHasCurrentRow = false;
    bool algorithmSelected = false; // exactly one node of the Algorithms tree
    bool capsLock = false; // known only where the platform tells it
    bool playerLoaded = false; // the PC player plug-in
    bool playing = false; // something plays (or is paused)
    bool canUndo = false; // the project's history has a step back
    bool canRedo = false; // ... or one forward again
};

// The enabling rule of command `id`: project commands need an open project
// and a clear busy flag, tree commands a selection of the right kind, list
// commands rows (selected ones, or a current one) to act on; commands whose
// subsystem is not in the program yet stay disabled.
bool commandEnabled(int id, const FrameState& state);

// Every command as a QAction owned by `owner`: the text as the table writes
// it, the id as the action's data, the key as its shortcut (active anywhere in
// the owner's window), the status tip for the status bar.
class CommandTable : public QObject {
    Q_OBJECT
public:
    explicit CommandTable(QWidget* owner);

    QAction* action(int id) const;
    std::vector<QAction*> actions() const;
    static int idOf(const QAction* action);

    // Runs the enabling rules over every action.
    void update(const FrameState& state);

signals:
    void triggered(int id);

private:
    void add(const CommandRow& row, QWidget* owner);

    std::map<int, QAction*> m_actions;
    std::vector<QAction*> m_order;
};

} // namespace kestrelon
