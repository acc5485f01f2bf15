#pragma once
// The checks of the New Project dialog, shared by the workbench's dialog and
// `kestrelon-cli project new`. The creating itself is ProjectSession::newProject.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelon {

class UserPort;

inline constexpr std::string_view kProjectExtension = ".ptp";

// The characters a project name may not hold.
inline constexpr std::string_view kInvalidNameCharacters = "\\/:*?\"<>|";

struct NewProjectCheck {
    bool ok = false; // the dialog may close; projectFile is set
    bool clearName = false; // refused, and the name box is to be emptied
    std::filesystem::path projectFile;
};

// Whether `location` names a place to create a project at: on Windows it must
// have a drive part ("C:"), elsewhere it must be an absolute path.
bool locationHasRoot(std::string_view location);

// LOCATION/NAME/NAME.ptp, with the location's trailing separators removed
// ("/" gives "/NAME/NAME.ptp") and ".ptp" only when the name does not already
// hold it (compared without case). Empty when the location has no root.
std::optional<std::filesystem::path> newProjectFilePath(std::string_view name, std::string_view location);

// The dialog's nine checks, in order; a refusal shows its text through `port`.
NewProjectCheck checkNewProject(std::string name, std::string location, UserPort& port);

// `path` with ".ptp" appended unless its extension already is ".ptp" (any case).
std::filesystem::path withProjectExtension(const std::filesystem::path& path);

} // namespace kestrelon
