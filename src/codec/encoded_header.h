#pragma once
// The 48-byte header at the start of every unpacked encoded file. All numbers
// are little-endian; the encoded speech follows at offset 48.
//
//   0  4   magic 0xFF00FF00 (bytes 00 FF 00 FF)
//   4  16  signature "CORVANE SPEECH", padded with zero bytes
//   20 1   version: 0xFE; readers also take 0xFF, whose header carries two
//          extra bytes at 26 that push every later field two bytes on
//   21 1   format code, always 2
//   22 2   field22           24 2  field24
//   26 4   sampleRate        30 4  field30
//   34 2   field34           36 1  field36
//   37 11  zero
//
// Only the magic, version and format code are checked; the other fields are
// the codec's business and are carried as they are.
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kestrelon {

inline constexpr std::size_t kEncodedHeaderSize = 48;
inline constexpr std::uint32_t kEncodedHeaderMagic = 0xFF00FF00u;
inline constexpr std::size_t kEncodedSignatureSize = 16;
inline constexpr std::string_view kEncodedSignature = "CORVANE SPEECH";
inline constexpr std::uint8_t kEncodedHeaderVersion = 0xFE;
// The older form with two extra bytes at offset 26.
inline constexpr std::uint8_t kEncodedHeaderVersionLong = 0xFF;
inline constexpr std::uint8_t kEncodedFormatCode = 2;

struct EncodedHeaderFields {
    // Read: the text up to the first zero byte (at most 16 bytes). Written: cut
    // to 16 bytes and padded with zeros.
    std::string signature{kEncodedSignature};
    // Read: the byte as found, 0xFE or 0xFF. Written: 0xFF gives the long form,
    // anything else the normal 0xFE form.
    std::uint8_t version = kEncodedHeaderVersion;
    std::uint8_t formatCode = kEncodedFormatCode; // always written as 2
    std::uint16_t field22 = 0;
    std::uint16_t field24 = 16;
    std::uint32_t sampleRate = 8000; // the codec's sample rate
    std::uint32_t field30 = 0;
    std::uint16_t field34 = 0;
    std::uint8_t field36 = 0;

    bool operator==(const EncodedHeaderFields&) const = default;
};

using EncodedHeaderBytes = std::array<std::uint8_t, kEncodedHeaderSize>;

EncodedHeaderBytes makeEncodedHeader(const EncodedHeaderFields& fields = {});

// Reads the header from the start of `bytes` (anything after the first 48
// bytes is ignored). Refuses input shorter than 48 bytes, a wrong magic, a
// version other than 0xFE/0xFF and a format code other than 2.
std::optional<EncodedHeaderFields> parseEncodedHeader(std::span<const std::uint8_t> bytes);
std::optional<EncodedHeaderFields> parseEncodedHeader(std::string_view bytes);

// True when `bytes` begins with the four magic bytes.
bool hasEncodedMagic(std::string_view bytes);

} // namespace kestrelon
