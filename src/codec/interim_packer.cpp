#include "codec/interim_packer.h"

#include "common/messages.h"

#include "common/file_io.h"

#include <zstd.h>

#include <memory>

namespace kestrelon {

namespace {

// Header field offsets; every field is little-endian.
constexpr std::size_t kVersionAt = 8;
constexpr std::size_t kFlagsAt = 10;
constexpr std::size_t kOriginalSizeAt = 12;
constexpr std::size_t kPackedSizeAt = 20;
// Version 1 kept a CRC-32 of the data here; version 2 keeps it zero.
constexpr std::size_t kReservedAt = 28;
static_assert(kReservedAt + 4 == kInterimHeaderBytes);

// A fast level: interim files are packed and unpacked on every encode and
// decode, and higher levels saved little on coded speech but cost more than
// the fast codecs themselves.
constexpr int kZstdLevel = 1;

// A zstd block yields at most 128 KiB and costs at least 4 bytes of payload
// (3-byte block header plus one byte), so no frame expands by more than this.
// Checking it first keeps a forged header from asking for a huge buffer.
constexpr std::uint64_t kMaxExpansion = 128 * 1024 / 4;

// Bit 2 of a zstd frame's header descriptor: the frame ends in a checksum of
// its content, which the decompressor verifies.
constexpr unsigned char kZstdChecksumFlag = 0x04;

void putLe(std::string& out, std::size_t at, std::uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out[at + std::size_t(i)] = char((value >> (8 * i)) & 0xFFu);
}

std::uint64_t getLe(std::string_view in, std::size_t at, int bytes)
{
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i)
        value |= std::uint64_t(static_cast<unsigned char>(in[at + std::size_t(i)])) << (8 * i);
    return value;
}

struct CCtxFree {
    void operator()(ZSTD_CCtx* context) const { ZSTD_freeCCtx(context); }
};

// Largest interim file DecryptUnzip will read: a full-size original that did
// not compress at all.
std::uintmax_t maxPackedFileBytes()
{
    return kInterimHeaderBytes + ZSTD_compressBound(std::size_t(kMaxInterimOriginalBytes));
}

} // namespace

std::optional<std::string> packInterim(std::string_view original)
{
    if (original.size() > kMaxInterimOriginalBytes)
        return std::nullopt;
    const std::unique_ptr<ZSTD_CCtx, CCtxFree> context(ZSTD_createCCtx());
    if (!context)
        return std::nullopt;
    // The frame records its content size and a content checksum: the reader
    // checks the size against the header, and zstd checks the content.
    if (ZSTD_isError(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, kZstdLevel)) ||
        ZSTD_isError(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1)) ||
        ZSTD_isError(ZSTD_CCtx_setParameter(context.get(), ZSTD_c_contentSizeFlag, 1)))
        return std::nullopt;

    const std::size_t bound = ZSTD_compressBound(original.size());
    std::string out(kInterimHeaderBytes + bound, '\0');
    const std::size_t packed =
        ZSTD_compress2(context.get(), out.data() + kInterimHeaderBytes, bound, original.data(), original.size());
    if (ZSTD_isError(packed))
        return std::nullopt;
    out.resize(kInterimHeaderBytes + packed);

    out.replace(0, kInterimMagic.size(), kInterimMagic);
    putLe(out, kVersionAt, kInterimVersion, 2);
    putLe(out, kFlagsAt, 0, 2);
    putLe(out, kOriginalSizeAt, original.size(), 8);
    putLe(out, kPackedSizeAt, packed, 8);
    putLe(out, kReservedAt, 0, 4);
    return out;
}

std::optional<std::string> unpackInterim(std::string_view file)
{
    if (file.size() < kInterimHeaderBytes || file.substr(0, kInterimMagic.size()) != kInterimMagic)
        return std::nullopt;
    const std::uint64_t version = getLe(file, kVersionAt, 2);
    if ((version != kInterimVersion && version != kInterimFirstVersion) || getLe(file, kFlagsAt, 2) != 0)
        return std::nullopt;
    if (version == kInterimVersion && getLe(file, kReservedAt, 4) != 0)
        return std::nullopt;
    const std::uint64_t originalSize = getLe(file, kOriginalSizeAt, 8);
    const std::uint64_t packedSize = getLe(file, kPackedSizeAt, 8);

    // The payload is exactly the rest of the file: truncation and trailing
    // bytes both show up here.
    const std::string_view payload = file.substr(kInterimHeaderBytes);
    if (packedSize != payload.size())
        return std::nullopt;
    if (originalSize > kMaxInterimOriginalBytes || originalSize > packedSize * kMaxExpansion)
        return std::nullopt;

    // One zstd frame, carrying its checksum and the same content size, and
    // nothing after it.
    if (payload.size() < 5 || getLe(payload, 0, 4) != ZSTD_MAGICNUMBER ||
        (static_cast<unsigned char>(payload[4]) & kZstdChecksumFlag) == 0)
        return std::nullopt;
    if (ZSTD_getFrameContentSize(payload.data(), payload.size()) != originalSize)
        return std::nullopt;
    const std::size_t frameBytes = ZSTD_findFrameCompressedSize(payload.data(), payload.size());
    if (ZSTD_isError(frameBytes) || frameBytes != payload.size())
        return std::nullopt;

    // zstd verifies the frame's content checksum as it decompresses.
    std::string original(std::size_t(originalSize), '\0');
    const std::size_t produced = ZSTD_decompress(original.data(), original.size(), payload.data(), payload.size());
    if (ZSTD_isError(produced) || produced != originalSize)
        return std::nullopt;
    return original;
}

bool EncryptZip(const std::filesystem::path& source, const std::filesystem::path& target, std::string* writeError)
{
    // Read whole before writing, so source == target works.
    const ReadResult in = readFile(source, kMaxInterimOriginalBytes);
    if (in.status != ReadStatus::Ok)
        return false;
    const std::optional<std::string> packed = packInterim(in.bytes);
    return packed && writeFileAtomically(target, *packed, writeError);
}

bool DecryptUnzip(const std::filesystem::path& source, const std::filesystem::path& target, std::string* writeError)
{
    const ReadResult in = readFile(source, maxPackedFileBytes());
    if (in.status != ReadStatus::Ok)
        return false;
    const std::optional<std::string> original = unpackInterim(in.bytes);
    return original && writeFileAtomically(target, *original, writeError);
}

std::string interimFailureText(const std::string& name, bool packing, const std::string& writeError)
{
    if (!writeError.empty())
        return name + std::string(msg::kInterimNotWrittenMiddle) + writeError + " !";
    return name + std::string(packing ? msg::kInterimCanNotPack : msg::kInterimCanNotUnpack);
}

} // namespace kestrelon
