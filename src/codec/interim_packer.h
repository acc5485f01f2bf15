#pragma once
// Interim files: the encoder's raw output and the decoded wave are kept packed
// between the steps of the encode/decode engine. A packed file is a small
// container (magic, version, sizes) around one zstd frame, whose own content
// size and checksum guard the data; docs/interim-files.md gives the layout. Unpacking checks the whole
// container before anything is written, so a damaged file is refused, never
// half-unpacked.
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelon {

inline constexpr std::string_view kInterimMagic = "KSTRLNIF";
inline constexpr std::uint16_t kInterimVersion = 2;
// Files of version 1 carry a CRC-32 of their data as well; they are read as
// version 2 files are, the zstd frame's checksum standing for it.
inline constexpr std::uint16_t kInterimFirstVersion = 1;
inline constexpr std::size_t kInterimHeaderBytes = 32;
// Packing and unpacking work on whole buffers in memory; larger data is refused.
inline constexpr std::uint64_t kMaxInterimOriginalBytes = std::uint64_t(1) << 30;

// Packs the file `source` into the interim file `target`; true on success.
// The target is written whole or not at all: an existing target is replaced
// only on success. source == target packs in place.
// `writeError`, when given, gets the system's reason when it was the writing
// of `target` that failed (a full disk, no permission); it stays empty when
// the source could not be read.
bool EncryptZip(const std::filesystem::path& source, const std::filesystem::path& target,
                std::string* writeError = nullptr);

// Unpacks the interim file `source` into `target`; true on success. A file that
// is damaged in any way (wrong magic, unknown version, sizes that disagree,
// checksum mismatch, truncation, trailing bytes) is refused and nothing is
// written. source == target unpacks in place.
bool DecryptUnzip(const std::filesystem::path& source, const std::filesystem::path& target,
                  std::string* writeError = nullptr);

// What a user is told when packing (or unpacking) the interim file `name`
// failed: that it could not be packed (or is damaged), or, when writing was
// what failed, that it could not be written and why.
std::string interimFailureText(const std::string& name, bool packing, const std::string& writeError);

// The same on bytes in memory; nullopt when refused.
std::optional<std::string> packInterim(std::string_view original);
std::optional<std::string> unpackInterim(std::string_view packed);

} // namespace kestrelon
