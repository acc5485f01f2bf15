#pragma once
// The project's algorithm registry, "dllsetinfo.ini" in the project's Algos
// folder: in order, the name and library path of each algorithm plug-in the
// project holds.
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class UserPort;

struct AlgoRegEntry {
    std::string name; // the plug-in library's base name
    std::string path; // the library's path, as stored
};

inline constexpr std::string_view kAlgorithmRegistryFileName = "dllsetinfo.ini";

// <project>/Algos/dllsetinfo.ini
std::filesystem::path algorithmRegistryPath(const std::filesystem::path& projectFolder);
// <project>/Algos/<name><library suffix>: where an entry's plug-in must lie.
std::filesystem::path algorithmLibraryPath(const std::filesystem::path& projectFolder, std::string_view name);

// Reads the registry into `entries`. False, with `entries` empty, when the
// file is missing or cannot be read; a malformed Count shows "Invalid data!"
// through `port` and reads as 0.
bool loadAlgorithmRegistry(const std::filesystem::path& projectFolder, std::vector<AlgoRegEntry>& entries,
                           UserPort& port);
// Writes `entries` as the whole file; the system's reason in `why` when it cannot.
bool saveAlgorithmRegistry(const std::filesystem::path& projectFolder, const std::vector<AlgoRegEntry>& entries,
                           std::string* why = nullptr);
// Drops the entries whose library is missing from the Algos folder, then
// writes the file.
bool pruneAndSaveAlgorithmRegistry(const std::filesystem::path& projectFolder, std::vector<AlgoRegEntry>& entries);

} // namespace kestrelon
