#pragma once
// The few services the program needs from the operating system that the
// standard library lacks. This is the only place that calls them directly.
#include <filesystem>

namespace kestrelon {

// Folder of the running executable: the program folder, where the body
// settings file and the player plug-ins lie.
std::filesystem::path executableFolder();

// The user's own configuration folder (XDG_CONFIG_HOME or ~/.config, the
// roaming application data on Windows, Preferences on macOS): where a user's
// copy of a file the program folder will not let us write is kept. Empty when
// the environment names no home.
std::filesystem::path userConfigFolder();

} // namespace kestrelon
