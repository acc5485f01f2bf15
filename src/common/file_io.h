#pragma once
// Whole-file reading and writing. Every file the program writes goes through
// writeFileAtomically: the bytes land in a temporary file beside the target,
// which is flushed to the disk and renamed over it only once it is complete,
// so a crash or a full disk never leaves a half-written file.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelon {

// The platform's line end for text files the program creates.
#ifdef _WIN32
inline constexpr std::string_view kNativeEol = "\r\n";
#else
inline constexpr std::string_view kNativeEol = "\n";
#endif

// Files larger than this are refused by the readers of the program's text files.
inline constexpr std::uintmax_t kMaxTextFileBytes = 64u * 1024u * 1024u;

enum class ReadStatus { Ok, Missing, Unreadable };

struct ReadResult {
    ReadStatus status = ReadStatus::Missing;
    std::string bytes;
    std::string reason; // the system's reason when the file could not be read
};

ReadResult readFile(const std::filesystem::path& path, std::uintmax_t maxBytes = kMaxTextFileBytes);

// The file and its folder are flushed to the disk before this returns true.
// On failure the target is as it was, nothing is left beside it, and `why`
// (when given) gets the system's reason ("No space left on device").
bool writeFileAtomically(const std::filesystem::path& path, std::string_view bytes, std::string* why = nullptr);

// Flushes a file, or a folder's names, to the disk; false when it cannot.
bool syncToDisk(const std::filesystem::path& path);

// Questions about the disk that never throw: an entry that cannot be examined
// answers false.
bool isRegularFile(const std::filesystem::path& path); // follows a link
bool entryExists(const std::filesystem::path& path); // the entry itself: a dangling link exists
// Removes a file (or an empty folder) if it is there; a failure is ignored, for
// scratch files whose removal nothing depends on.
void removeQuietly(const std::filesystem::path& path);

// Text mode as Windows reads it: every CR LF pair becomes LF.
std::string textModeFromBytes(std::string_view bytes);

} // namespace kestrelon
