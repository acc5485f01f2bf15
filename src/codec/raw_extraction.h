#pragma once
// Encoded files on disk, as the packer hands them back: a 48-byte header, then
// the raw encoded speech that the board and the firmware build take.
#include "codec/encoded_header.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace kestrelon {

class UserPort;

// An encoded file is extracted in memory in one piece, because the target is
// written whole through writeFileAtomically. Data for a speech chip is a few
// megabytes at most; anything larger than this is not an encoded file.
inline constexpr std::uintmax_t kMaxEncodedFileBytes = 256u * 1024u * 1024u;

// Writes everything after the 48-byte header of `unpackedPath` to
// `targetPath`, replacing it. Only the magic is checked. A file that is
// missing, unreadable, over the size limit, shorter than the header or without
// the magic shows its file name followed by " is not a correct encoded file !"
// and fails with no target written. A target that cannot be written fails with
// no message: the caller knows what the target is for and says so.
bool extractRawEncodedData(const std::filesystem::path& unpackedPath, const std::filesystem::path& targetPath,
                           UserPort& port);

struct EncodedFileInfo {
    EncodedHeaderFields header;
    std::uintmax_t fileSize = 0; // at least kEncodedHeaderSize
    std::uintmax_t dataSize() const { return fileSize - kEncodedHeaderSize; }
};

// Reads only the header of an encoded file. A file whose header does not parse
// (wrong magic, version or format code, or too short), or that cannot be read,
// shows the same message as extraction and gives nullopt.
std::optional<EncodedFileInfo> inspectEncodedFile(const std::filesystem::path& path, UserPort& port);

} // namespace kestrelon
