#pragma once
// Firmware formats of an export: the encoded files an export wrote, turned
// into what a firmware build takes in directly, so nobody has to write the
// script that does it by hand. docs/export.md shows both formats.
//  - C: one header and one source file. Per item a static const byte array
//    under a storage-class macro the build may define (a flash section, say),
//    a length constant, an identifier made valid from the export name, the
//    settings as comments, an enum of the items in export order and a table of
//    {pointer, length, sample rate, bit rate}.
//  - Image: one binary ROM image with a table of contents, every item at a
//    chosen alignment, in a chosen byte order, gaps filled with a chosen byte.
#include "export/export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class UserPort;

enum class FirmwareFormat { Raw, C, Image };

std::optional<FirmwareFormat> firmwareFormatNamed(std::string_view name); // "raw", "c", "image"

struct FirmwareOptions {
    FirmwareFormat format = FirmwareFormat::Raw;
    std::string baseName = "speech_data"; // file names, and the prefix of every C name
    std::uint32_t alignment = 4; // image: a power of two, 1 to 65536
    bool bigEndian = false; // image: byte order of its numbers
    std::uint8_t padByte = 0xFF; // image: what fills the gaps (erased flash)
};

// Checks the options; an empty text when they are usable, else why not.
std::string firmwareOptionsError(const FirmwareOptions& options);

// The C identifiers of the items, in order: valid, unique (also when compared
// without case, as the enum's upper-case names must be), and each prefixed
// with the base name so that no keyword or generated name is hit.
std::vector<std::string> firmwareIdentifiers(const std::vector<ExportedFile>& files, std::string_view baseName);

std::string firmwareCHeader(const std::vector<ExportedFile>& files, const FirmwareOptions& options);
std::string firmwareCSource(const std::vector<ExportedFile>& files, const FirmwareOptions& options);

// The image's layout, in its byte order:
//   0  4  magic "KSPD"
//   4  2  version, 1
//   6  2  flags: bit 0 set when the items keep their 48-byte encoded header
//   8  4  item count
//  12  4  alignment
//  16     per item 16 bytes: offset from the image's start, length, sample
//         rate (Hz), bit rate (bit/s)
// then the items in order, each at a multiple of the alignment.
inline constexpr std::string_view kFirmwareImageMagic = "KSPD";
inline constexpr std::size_t kFirmwareImageHeaderSize = 16;
inline constexpr std::size_t kFirmwareImageEntrySize = 16;
std::string firmwareImage(const std::vector<ExportedFile>& files, bool headersKept, const FirmwareOptions& options);

// Where the image puts items of these lengths: each item's offset, then the
// image's size as the last element.
std::vector<std::uintmax_t> firmwareImageLayout(const std::vector<std::uintmax_t>& lengths, std::uint32_t alignment);

struct FirmwareOutcome {
    bool ok = true;
    std::vector<std::filesystem::path> written;
    std::uintmax_t dataBytes = 0; // the items' bytes
    std::uintmax_t totalBytes = 0; // what the format's files hold (raw: the data)
    std::string error; // why writing failed, when !ok
};

// Writes the format's files into `folder` (nothing for Raw, whose files the
// export itself wrote), each whole and renamed into place. An existing file is
// replaced only when `port` says Yes to the export's replace question.
FirmwareOutcome writeFirmwareFiles(const std::filesystem::path& folder, const std::vector<ExportedFile>& files,
                                   bool headersKept, const FirmwareOptions& options, UserPort& port);

} // namespace kestrelon
