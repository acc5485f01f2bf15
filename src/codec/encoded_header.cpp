#include "codec/encoded_header.h"

#include <algorithm>

namespace kestrelon {

namespace {

// Byte-wise little-endian access, so the layout is the same on every host.
class Writer {
public:
    explicit Writer(EncodedHeaderBytes& bytes)
        : m_bytes(bytes)
    {}
    void u8(std::size_t at, std::uint8_t value) { m_bytes[at] = value; }
    void u16(std::size_t at, std::uint16_t value)
    {
        for (std::size_t i = 0; i < 2; ++i)
            m_bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
    void u32(std::size_t at, std::uint32_t value)
    {
        for (std::size_t i = 0; i < 4; ++i)
            m_bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }

private:
    EncodedHeaderBytes& m_bytes;
};

std::uint16_t readU16(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<std::uint16_t>(bytes[at] | (bytes[at + 1] << 8));
}

std::uint32_t readU32(std::span<const std::uint8_t> bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<std::uint32_t>(bytes[at + i]) << (8 * i);
    return value;
}

constexpr std::size_t kSignatureAt = 4;
constexpr std::size_t kVersionAt = 20;
constexpr std::size_t kFormatCodeAt = 21;
constexpr std::size_t kField22At = 22;
constexpr std::size_t kField24At = 24;
// From here on the long (0xFF) form lies two bytes further on.
constexpr std::size_t kSampleRateAt = 26;
constexpr std::size_t kField30At = 30;
constexpr std::size_t kField34At = 34;
constexpr std::size_t kField36At = 36;
constexpr std::size_t kLongFormShift = 2;

} // namespace

EncodedHeaderBytes makeEncodedHeader(const EncodedHeaderFields& fields)
{
    EncodedHeaderBytes bytes{};
    Writer out(bytes);
    out.u32(0, kEncodedHeaderMagic);
    const std::size_t signatureLength = std::min(fields.signature.size(), kEncodedSignatureSize);
    for (std::size_t i = 0; i < signatureLength; ++i)
        out.u8(kSignatureAt + i, static_cast<std::uint8_t>(fields.signature[i]));

    const bool longForm = fields.version == kEncodedHeaderVersionLong;
    const std::size_t shift = longForm ? kLongFormShift : 0;
    out.u8(kVersionAt, longForm ? kEncodedHeaderVersionLong : kEncodedHeaderVersion);
    out.u8(kFormatCodeAt, kEncodedFormatCode);
    out.u16(kField22At, fields.field22);
    out.u16(kField24At, fields.field24);
    out.u32(kSampleRateAt + shift, fields.sampleRate);
    out.u32(kField30At + shift, fields.field30);
    out.u16(kField34At + shift, fields.field34);
    out.u8(kField36At + shift, fields.field36);
    return bytes;
}

std::optional<EncodedHeaderFields> parseEncodedHeader(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() < kEncodedHeaderSize || readU32(bytes, 0) != kEncodedHeaderMagic)
        return std::nullopt;
    const std::uint8_t version = bytes[kVersionAt];
    if (version != kEncodedHeaderVersion && version != kEncodedHeaderVersionLong)
        return std::nullopt;
    if (bytes[kFormatCodeAt] != kEncodedFormatCode)
        return std::nullopt;

    EncodedHeaderFields fields;
    fields.signature.clear();
    for (std::size_t i = 0; i < kEncodedSignatureSize && bytes[kSignatureAt + i] != 0; ++i)
        fields.signature.push_back(static_cast<char>(bytes[kSignatureAt + i]));
    fields.version = version;
    fields.formatCode = bytes[kFormatCodeAt];
    fields.field22 = readU16(bytes, kField22At);
    fields.field24 = readU16(bytes, kField24At);
    const std::size_t shift = version == kEncodedHeaderVersionLong ? kLongFormShift : 0;
    fields.sampleRate = readU32(bytes, kSampleRateAt + shift);
    fields.field30 = readU32(bytes, kField30At + shift);
    fields.field34 = readU16(bytes, kField34At + shift);
    fields.field36 = bytes[kField36At + shift];
    return fields;
}

std::optional<EncodedHeaderFields> parseEncodedHeader(std::string_view bytes)
{
    return parseEncodedHeader(
        std::span<const std::uint8_t>(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

bool hasEncodedMagic(std::string_view bytes)
{
    static constexpr std::string_view kMagicBytes{"\x00\xFF\x00\xFF", 4};
    return bytes.substr(0, kMagicBytes.size()) == kMagicBytes;
}

} // namespace kestrelon
