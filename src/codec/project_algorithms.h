#pragma once
// A project's algorithm plug-ins: the libraries and ".bdy" files in its Algos
// folder, and the registry (dllsetinfo.ini) that names them. The codec host
// loads a project's codecs from Algos only, so everything that puts a codec
// into a project puts it there and keeps the registry in step; Save writes the
// registry and purges Temp, so nothing of a project's codecs lives in Temp.
#include "host/algorithm_registry.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

struct BodyAlgoInfo;
class BodySettings;
class CodecHost;
class ProjectSession;
class UserPort;

// The entry of that name, or null. Names compare exactly.
AlgoRegEntry* findRegistryEntry(std::vector<AlgoRegEntry>& registry, std::string_view name);
const AlgoRegEntry* findRegistryEntry(const std::vector<AlgoRegEntry>& registry, std::string_view name);

// A body algorithm's plug-in as the program ships it: program folder joined
// with its PATHNAME ("Algorithms\ImaAdpcm.so").
std::filesystem::path shippedLibraryPath(const std::filesystem::path& programFolder, const BodyAlgoInfo& algorithm);
// The registry name of a body algorithm: the base name of its PATHNAME's
// file, which is also the name the library has in Algos. Empty when the
// entry has no PATHNAME.
std::string libraryNameOf(const BodyAlgoInfo& algorithm);
// The registry entry written for a library file name: "Algos\<file>".
std::string registryPathFor(std::string_view libraryFileName);

// The body algorithm named `algorithm` in body `body` that offers `bitRate`,
// or null when the body settings hold no such combination.
const BodyAlgoInfo* offeredAlgorithm(const BodySettings& bodies, std::string_view body, std::string_view algorithm,
                                     std::string_view bitRate);

// Add Encode Data's preparation: makes sure the project holds the body
// algorithm's plug-in. A library or ".bdy" missing from Algos is copied there
// from the program's copy (an existing file is left as it is: the project
// keeps the codec it was made with); a missing registry entry is added. Marks
// the project modified when anything changed. False, after saying which copy
// failed, when the plug-in cannot be brought in.
bool bringAlgorithmIntoProject(ProjectSession& session, std::vector<AlgoRegEntry>& registry,
                               const std::filesystem::path& programFolder, const BodyAlgoInfo& algorithm,
                               UserPort& port);

enum class AddAlgorithmOutcome {
    Added, // new in Algos and in the registry
    Refreshed, // Algos files replaced (or already the same) and the entry refreshed
    Declined, // the person would not overwrite; nothing changed
    Refused, // it does not load, is not a codec or fails its own check; nothing changed
};

// `project add-algo`: the codec library at `library` and the ".bdy" beside
// it are first loaded and checked where they lie (the host's messages say why
// a codec is refused; check_algorithm's code is checked), then copied into
// Algos — asking "The file "NAME" already existed in this folder!\nDo you
// want to overwrite it?" when a file of that name is there — and the registry
// entry is added or its path refreshed. The project is marked modified.
AddAlgorithmOutcome addAlgorithmToProject(ProjectSession& session, std::vector<AlgoRegEntry>& registry, CodecHost& host,
                                          const std::filesystem::path& library, UserPort& port);

} // namespace kestrelon
