#pragma once
// The few services the program needs from the operating system that the
// standard library lacks. This is the only place that calls them directly.
#include <filesystem>

namespace kestrelon {

// Folder of the running executable: the program folder, where the body
// settings file and the player plug-ins lie.
std::filesystem::path executableFolder();

} // namespace kestrelon
