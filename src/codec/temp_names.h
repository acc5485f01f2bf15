#pragma once
// Unique working-file names in a project's Temp folder, made the way the
// system's unique-temporary-file service makes them: a three-letter prefix, a
// hexadecimal counter and ".tmp" ("SAF1A.tmp"). The file is created empty to
// reserve the name, so two callers never get the same one.
//
// Names of interim files outlive the Temp folder: Close copies Temp\*.tmp into
// the project folder, and the project file keeps them as encode names. So a
// name counts as taken not only when a file of that name stands in the folder
// but whenever the caller says so (a record still names it, a file with the
// same stem lies beside the project file): a fresh name never lands on a file
// that another row will look for later.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelon {

inline constexpr std::string_view kInterimPrefix = "SAF";
inline constexpr std::string_view kInterimExtension = ".tmp";
// The service's counter is 16 bits wide: a folder holds at most this many.
inline constexpr std::uint32_t kMaxUniqueTempNames = 0xFFFF;

// "SAF" + counter in upper-case hex without leading zeros + ".tmp".
std::string uniqueTempName(std::uint32_t counter, std::string_view prefix = kInterimPrefix,
                           std::string_view extension = kInterimExtension);

// Extra test for a candidate's stem ("SAF1A"): true when it must not be used.
using StemTaken = std::function<bool(std::string_view stem)>;

// Creates a new empty file named uniqueTempName(n) in `folder` for the next
// free counter value n (the counter is shared by the whole process and wraps
// within 1..0xFFFF). A candidate is free when `taken` does not claim its stem
// and no file or folder of that name exists; the file is created exclusively,
// so a name another process took in between is passed over too. nullopt when
// the folder does not exist or every value is taken.
std::optional<std::filesystem::path> createUniqueTempFile(const std::filesystem::path& folder,
                                                          const StemTaken& taken = {},
                                                          std::string_view prefix = kInterimPrefix,
                                                          std::string_view extension = kInterimExtension);

// True when `name` is a plain file name that stays inside the folder it is
// joined to: not empty, no folder separator, no drive, not "." or "..". Names
// read from a project file are checked with this before any file is touched.
bool isPlainFileName(std::string_view name);

} // namespace kestrelon
