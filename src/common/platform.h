#pragma once
// The few services the program needs from the operating system that the
// standard library lacks. This is the only place that calls them directly.
#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon {

// Folder of the running executable: the program folder, where the body
// settings file and the player plug-ins lie.
std::filesystem::path executableFolder();
// The running executable's file name ("kestrelon-cli"), for telling people
// which program holds something.
std::string programName();

// The user's own configuration folder (XDG_CONFIG_HOME or ~/.config, the
// roaming application data on Windows, Preferences on macOS): where a user's
// copy of a file the program folder will not let us write is kept. Empty when
// the environment names no home.
std::filesystem::path userConfigFolder();
// Where this program keeps its files in a configuration folder such as that one.
std::filesystem::path programConfigFolder(const std::filesystem::path& configFolder);

// Runs `program` with `arguments` (each passed as one argument, whatever it
// holds), its standard output into the file `output` and its standard error
// into `errors`, and waits for it. The program's exit status; -1 when it could
// not be run or did not end normally.
int runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& output, const std::filesystem::path& errors);

} // namespace kestrelon
