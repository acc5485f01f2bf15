#include "app/command_table.h"

#include <QAction>
#include <QKeySequence>
#include <QWidget>

#include <array>

namespace kestrelon {

namespace {

using namespace cmd;

// Texts are the program's own: double blanks, trailing blanks and the tab
// before a shortcut are kept as they stand.
constexpr std::array kFrameTable = {
    CommandRow{kWorkspace, "&Workspace", "", Upd::Yes, "Show or hide the workspace"},
    CommandRow{kActionToolbar, "Show or hide action toolbar ", "", Upd::Yes, "Show or hide the action toolbar"},
    CommandRow{kStandardToolbar, "Standard Toolbar", "", Upd::Yes, "Show or hide the standard toolbar"},
    CommandRow{kNewProject, "&New  Project ...\tCtrl+N", "Ctrl+N", Upd::Yes, "Create a new project"},
    CommandRow{kSaveProject, "&Save  Project\tCtrl+S", "Ctrl+S", Upd::Yes, "Save the project"},
    CommandRow{kSaveProjectAs, "Save  Project  &As ... ", "", Upd::Yes, "Save the project under a new name"},
    CommandRow{kDllSetting, "Dll setting", "", Upd::Yes, "Set the algorithm plug-ins and the external editor"},
    CommandRow{kTargetBoard, "Target &Board", "", Upd::Yes, "Play encoded data on the target board"},
    CommandRow{kPc, "P&C", "", Upd::Yes, "Play on the PC"},
    CommandRow{kAddFiles, "Add F&iles\tCtrl+I", "Ctrl+I", Upd::Yes, "Add wave files to the selected folder"},
    CommandRow{kAddFolder, "Add &Folder\tCtrl+F", "Ctrl+F", Upd::Yes, "Add a folder to the selected folder"},
    CommandRow{kDeleteAll, "D&elete All", "", Upd::Yes, "Delete every item of the Files tree"},
    CommandRow{kDeleteFolderFiles, "Delete folder files", "", Upd::Yes, "Delete the files of the selected folder"},
    CommandRow{kDeleteFiles, "&Delete File(s)", "", Upd::Yes, "Delete the selected files"},
    CommandRow{kDeleteFolder, "Dele&te Folder", "", Upd::Yes, "Delete the selected folders with their contents"},
    CommandRow{kShowProperty, "Show property", "", Upd::Yes, "Show the property of the selected item"},
    CommandRow{kCloseProject, "Close  &Project\tCtrl+P", "Ctrl+P", Upd::Yes, "Close the project"},
    CommandRow{kOpenProject, "&Open  Project ...\tCtrl+O", "Ctrl+O", Upd::Yes, "Open a project"},
    CommandRow{kSelectAllRows, "Select A&ll\tCtrl+A", "", Upd::Yes, "Select all list items"},
    CommandRow{kDeleteAllRows, "Dele&te All", "", Upd::Yes, "Delete all list items"},
    CommandRow{kBodyInformation, "&Body Information", "", Upd::Yes, "Show the information of all bodys"},
    CommandRow{kEncodeInfo, "Encode &Info", "", Upd::Yes, "Show the encoded file information"},
    CommandRow{kRowProperty, "&Property", "", Upd::Yes, "Show the property of the selected list item"},
    CommandRow{kEncode, "Encode", "", Upd::Yes, "Encode the selected rows"},
    CommandRow{kDecode, "&Decode\tCtrl+D", "", Upd::Yes, "Decode the selected rows"},
    CommandRow{kShowWaveform, "Show &Waveform", "", Upd::Yes, "Show the waveform of the selected item"},
    CommandRow{kExternalEditor, "Call external editor", "", Upd::Yes,
               "Edit the selected wave file in the external editor"},
    CommandRow{kClear, "Clear", "", Upd::Yes, "Clear"},
    CommandRow{kDuplicate, "Duplicate", "", Upd::Yes, "Duplicate"},
    CommandRow{kSplitterBarKey, "", "Ctrl+F9", Upd::No, ""},
    CommandRow{kHelp, "&Help\tF1", "F1", Upd::Yes, "Open the help file"},
    CommandRow{kDecodeKey, "", "Ctrl+D", Upd::Yes, ""},
    CommandRow{kEncodeKey, "", "Ctrl+E", Upd::Yes, ""},
    CommandRow{kShowConfigurationUpdateOnly, "Show configuration", "", Upd::UpdateOnly, "Show the configuration"},
    CommandRow{kExportSelected, "E&xport", "", Upd::Yes, "Export the encoded files of the selected rows"},
    CommandRow{kExportAll, "E&xport", "", Upd::Yes, "Export the encoded files of all rows"},
    CommandRow{kShowConfiguration, "Show configuration", "", Upd::Yes,
               "Show the configuration of the selected algorithm"},
    CommandRow{kRefreshKey, "", "Ctrl+R", Upd::Yes, ""},
    CommandRow{kAddEncodeData, "Add Encode Data", "", Upd::Yes, "Add encode settings to the selected files"},
    CommandRow{kCapsLock, "CAP", "", Upd::UpdateOnly, ""},
    CommandRow{kAutoDecode, "Setting", "", Upd::No, "Set auto decode"},
    CommandRow{kSelectAllTree, "Select all", "", Upd::No, "Select every item of the Files tree"},
    CommandRow{kSelectAllKey, "", "Ctrl+A", Upd::No, ""},
    CommandRow{kDeleteRows, "Delete\tDelete", "", Upd::Yes, "Delete an algo"},
    CommandRow{kRecentFirst, "", "", Upd::Yes, "Open this project"},
    CommandRow{kRecentFirst + 1, "", "", Upd::Yes, "Open this project"},
    CommandRow{kRecentFirst + 2, "", "", Upd::Yes, "Open this project"},
    CommandRow{kRecentFirst + 3, "", "", Upd::Yes, "Open this project"},
    CommandRow{kRecentLast, "", "", Upd::Yes, "Open this project"},
};

constexpr std::array kExtraTable = {
    CommandRow{kExit, "E&xit", "", Upd::No, "Quit the program"},
    CommandRow{kPlay, "&Play", "Space", Upd::Yes, "Play"},
    CommandRow{kStop, "&Stop", "Q", Upd::Yes, "Stop playing"},
    CommandRow{kPause, "Pa&use", "W", Upd::Yes, "Pause"},
    CommandRow{kPlayLooped, "Play &Looped", "E", Upd::Yes, "Play repeatedly"},
    CommandRow{kPlaySentence, "Play Sentence", "M", Upd::Yes, "Play the play list as a sentence"},
    CommandRow{kCompareBitRates, "Compare &Bit Rates...", "", Upd::Yes,
               "Weigh the size of the selected sources against their quality at every bit rate"},
    CommandRow{kAbout, "&About Kestrelon", "", Upd::No, "The program's version, its libraries and where it lives"},
    CommandRow{kUndo, "&Undo", "Ctrl+Z", Upd::Yes, "Take back the last edit of the project"},
    CommandRow{kRedo, "&Redo", "Ctrl+Shift+Z", Upd::Yes, "Make the edit taken back again"},
    CommandRow{kCodecWorkers, "Codec &Workers...", "", Upd::Yes, "How many rows are encoded or decoded at once"},
};

bool isToggle(int id)
{
    return id == kWorkspace || id == kActionToolbar || id == kStandardToolbar || id == kPc || id == kTargetBoard ||
           id == kAutoDecode || id == kCapsLock;
}

} // namespace

std::span<const CommandRow> frameCommandTable()
{
    return kFrameTable;
}
std::span<const CommandRow> extraCommands()
{
    return kExtraTable;
}

const CommandRow* findCommandRow(int id)
{
    for (const CommandRow& row : kFrameTable)
        if (row.id == id)
            return &row;
    for (const CommandRow& row : kExtraTable)
        if (row.id == id)
            return &row;
    return nullptr;
}

std::string plainCommandText(std::string_view text)
{
    text = text.substr(0, text.find('\t'));
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '&') {
            if (i + 1 < text.size() && text[i + 1] == '&') {
                out += '&';
                ++i;
            }
            continue;
        }
        if (c == ' ' && (out.empty() || out.back() == ' '))
            continue;
        out += c;
    }
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    if (out.size() >= 3 && out.compare(out.size() - 3, 3, "...") == 0)
        out.erase(out.size() - 3);
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    return out;
}

bool commandEnabled(int id, const FrameState& s)
{
    using namespace cmd;
    const bool idle = !s.busy;
    const bool projectIdle = s.projectOpen && idle;

    if (id >= kRecentFirst && id <= kRecentLast)
        return idle && id - kRecentFirst < s.recentCount;
    switch (id) {
    case kWorkspace:
    case kActionToolbar:
    case kStandardToolbar:
    case kHelp:
    case kAbout:
    case kSplitterBarKey:
    case kAutoDecode:
    case kExit: return true;
    case kNewProject:
    case kOpenProject:
    case kCodecWorkers:
    case kDllSetting: // the external editor can be chosen without a project
        return idle;
    case kBodyInformation: return idle && s.bodiesLoaded;
    case kSaveProject:
    case kSaveProjectAs:
    case kCloseProject: return projectIdle;
    case kAddFiles:
    case kAddFolder: return projectIdle && s.hasTarget;
    case kUndo: return projectIdle && s.canUndo;
    case kRedo: return projectIdle && s.canRedo;
    case kDeleteAll: return projectIdle && !s.filesTreeEmpty;
    case kDeleteFolderFiles: return projectIdle && s.primaryFolderHasFiles;
    case kDeleteFiles: return projectIdle && s.selectedSources > 0;
    case kDeleteFolder: return projectIdle && s.selectedFolders > 0;
    case kShowProperty: return s.projectOpen && s.selectedItems == 1;
    case kSelectAllTree: return s.projectOpen && !s.filesTreeEmpty;
    case kRefreshKey: return s.projectOpen;
    case kExternalEditor: return projectIdle && s.selectedSources > 0 && !s.editorRunning;
    case kAddEncodeData: return projectIdle && s.selectedSources > 0 && s.bodiesLoaded;
    case kSelectAllRows:
    case kSelectAllKey:
    case kDeleteAllRows:
    case kExportAll: return projectIdle && s.listHasRows;
    case kDeleteRows: // the list's Delete: the selected rows (encode settings)
    case kEncode:
    case kEncodeKey:
    case kDecode:
    case kDecodeKey:
    case kExportSelected:
    case kClear: return projectIdle && s.listHasSelection;
    case kDuplicate:
    case kCompareBitRates: return projectIdle && s.listHasSelection && s.bodiesLoaded;
    case kEncodeInfo:
    case kShowWaveform:
    case kRowProperty:
    case kShowConfigurationUpdateOnly: return projectIdle && s.listHasCurrentRow;
    case kShowConfiguration: return projectIdle && s.algorithmSelected;
    case kCapsLock: return s.capsLock;
    case kPc:
    case kTargetBoard: return true;
    case kPlay:
    case kPlayLooped: return s.projectOpen && s.listHasCurrentRow && s.playerLoaded;
    case kStop:
    case kPause: return s.playing;
    case kPlaySentence: return projectIdle && s.listHasRows;
    default: return false;
    }
}

CommandTable::CommandTable(QWidget* owner)
    : QObject(owner)
{
    for (const CommandRow& row : kFrameTable)
        add(row, owner);
    for (const CommandRow& row : kExtraTable)
        add(row, owner);
}

void CommandTable::add(const CommandRow& row, QWidget* owner)
{
    auto* action = new QAction(QString::fromUtf8(row.text.data(), qsizetype(row.text.size())), owner);
    action->setData(row.id);
    action->setObjectName(QStringLiteral("command_%1").arg(row.id));
    if (!row.key.empty()) {
        action->setShortcut(
            QKeySequence(QString::fromUtf8(row.key.data(), qsizetype(row.key.size())), QKeySequence::PortableText));
        action->setShortcutContext(Qt::WindowShortcut);
    }
    const std::string plain = plainCommandText(row.text);
    if (!plain.empty()) {
        action->setIconText(QString::fromStdString(plain));
        action->setToolTip(QString::fromStdString(plain));
    }
    if (!row.statusTip.empty())
        action->setStatusTip(QString::fromUtf8(row.statusTip.data(), qsizetype(row.statusTip.size())));
    action->setCheckable(isToggle(row.id));
    // A command reached only by its key still needs a widget of the window to
    // listen for it.
    owner->addAction(action);
    const int id = row.id;
    connect(action, &QAction::triggered, this, [this, id] { emit triggered(id); });
    m_actions[id] = action;
    m_order.push_back(action);
}

QAction* CommandTable::action(int id) const
{
    const auto found = m_actions.find(id);
    return found == m_actions.end() ? nullptr : found->second;
}

std::vector<QAction*> CommandTable::actions() const
{
    return m_order;
}

int CommandTable::idOf(const QAction* action)
{
    return action ? action->data().toInt() : 0;
}

void CommandTable::update(const FrameState& state)
{
    for (QAction* action : m_order)
        action->setEnabled(commandEnabled(idOf(action), state));
}

} // namespace kestrelon
