#pragma once
// The user's lasting preferences. They are read once when the main window is
// built and written once when it goes; in between the program works on this
// struct only, so nothing reaches the profile while the program runs.
//
// Where they live: QSettings("Corvane", "Kestrelon"), that is the registry
// under HKEY_CURRENT_USER\Software\Corvane\Kestrelon on Windows, a property
// list on macOS and ~/.config/Corvane/Kestrelon.conf on Linux. Given a config
// folder instead, they live in <folder>/Corvane/Kestrelon.conf, the Linux
// layout under that folder; tests and `kestrelon-cli --settings-dir` use this
// so that nobody's real profile is touched.
#include "settings/wave_colors.h"

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

// Section and value names as stored.
namespace settings_names {
inline constexpr std::string_view kColorSection = "MyColor";
inline constexpr std::string_view kPlayModeSection = "PlayMode";
inline constexpr std::string_view kPlayMode = "nPlayMode";
inline constexpr std::string_view kListSection = "ListProperty";
inline constexpr std::string_view kSortOrder = "SortOrder";
inline constexpr std::string_view kSortIndex = "SortIndex";
inline constexpr std::string_view kMultiple = "Multiple";
// The quality columns the user hid, as a bit each from the first.
inline constexpr std::string_view kHiddenQualityColumns = "HiddenQualityColumns";
inline constexpr std::string_view kAutoSection = "AutoEncodeDecode";
inline constexpr std::string_view kDecode = "Decode";
inline constexpr std::string_view kCodecSection = "Codec";
inline constexpr std::string_view kJobs = "Jobs";
inline constexpr std::string_view kLastSection = "LastSetting";
inline constexpr std::string_view kBodyName = "BodyName";
inline constexpr std::string_view kAlgName = "AlgName";
inline constexpr std::string_view kBitRate = "BitRate";
inline constexpr std::string_view kApplyAllFiles = "ApplyAllFiles";
inline constexpr std::string_view kProjectPath = "ProjectPath";
inline constexpr std::string_view kFilePath = "FilePath";
// The external sound editor chosen in the "DLL Setting" dialog.
inline constexpr std::string_view kExternalEditor = "ExternalEditor";
inline constexpr std::string_view kRecentSection = "Recent Project File List";
// Where the frame, its toolbars and its docks were, as Qt describes them (base64).
inline constexpr std::string_view kWindowSection = "Window";
inline constexpr std::string_view kGeometry = "Geometry";
inline constexpr std::string_view kLayout = "Layout";
// The serial device of each board port: Board/Port0, Board/Port1...
inline constexpr std::string_view kBoardSection = "Board";
inline constexpr std::string_view kBoardPortPrefix = "Port";
inline constexpr std::string_view kRecentKeyPrefix = "File"; // File1 .. File5
} // namespace settings_names

inline constexpr std::size_t kMaxRecentProjects = 5;
inline constexpr int kBoardPorts = 16;

struct SettingsStore {
    WaveColors colors = kDefaultWaveColors;
    int playMode = 0;
    int sortOrder = 0; // direction of the main list's sort
    int sortIndex = 1; // column the main list is sorted by
    float columnScale = 1.0f; // "Multiple": scale of the main list's column widths
    int hiddenQualityColumns = 0; // bit k: the k-th quality column is hidden
    int autoDecode = 1; // boolean: decode right after encoding
    int codecJobs = 0; // rows encoded or decoded at once; 0: one per core
    std::string lastBodyName;
    std::string lastAlgName;
    std::string lastBitRate; // as shown in the bit-rate list
    int applyAllFiles = 1; // boolean: the file setting dialog's "all files" box
    std::string lastProjectPath;
    std::string lastFilePath;
    std::string externalEditor; // full path of the editor program; empty when none chosen
    std::vector<std::string> recentProjects; // most recent first, at most 5
    std::array<std::string, kBoardPorts> boardPorts; // the device chosen for each board port; empty: the default
    std::string windowGeometry; // base64 of the frame's saved geometry; empty: the default size
    std::string windowLayout; // base64 of its toolbars' and docks' saved state

    // Every value found replaces the one held; a missing value keeps it. A
    // missing or empty "Multiple" gives exactly 1.0. Fails, changing nothing,
    // when the settings cannot be read (an unreadable or damaged file).
    bool load(const std::filesystem::path& configFolder = {});
    // Writes every value; fails when the settings cannot be written.
    bool save(const std::filesystem::path& configFolder = {}) const;

    bool operator==(const SettingsStore&) const = default;
};

// "Multiple" is kept as text with six decimals, as "%f" writes it, whatever
// the locale. Text that is empty, not a number, or not a positive finite
// number gives exactly 1.0.
std::string formatColumnScale(float scale);

// The board player learns its ports from the environment
// (KESTRELON_BOARD_PORT<n>); this names there each port the user chose a
// device for, unless the environment names it already.
void exportBoardPorts(const SettingsStore& settings);
float parseColumnScale(std::string_view text);

} // namespace kestrelon
