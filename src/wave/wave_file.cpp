#include "wave/wave_file.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"

#include <sndfile.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>

namespace kestrelon {

namespace {

// libsndfile reads through these callbacks rather than opening the path
// itself, so a path in any script opens the same way on every platform.
struct InputStream {
    std::ifstream in;
    sf_count_t length = 0;
};

sf_count_t streamLength(void* user)
{
    return static_cast<InputStream*>(user)->length;
}

sf_count_t streamSeek(sf_count_t offset, int whence, void* user)
{
    auto& in = static_cast<InputStream*>(user)->in;
    in.clear();
    const std::ios::seekdir dir = whence == SEEK_SET   ? std::ios::beg
                                  : whence == SEEK_CUR ? std::ios::cur
                                                       : std::ios::end;
    in.seekg(offset, dir);
    if (!in) {
        in.clear();
        return -1;
    }
    return static_cast<sf_count_t>(in.tellg());
}

sf_count_t streamRead(void* buffer, sf_count_t count, void* user)
{
    auto& in = static_cast<InputStream*>(user)->in;
    in.read(static_cast<char*>(buffer), static_cast<std::streamsize>(count));
    const auto got = static_cast<sf_count_t>(in.gcount());
    in.clear(); // a short read at the end is not an error for the next seek
    return got;
}

sf_count_t streamWrite(const void*, sf_count_t, void*)
{
    return 0;
}

sf_count_t streamTell(void* user)
{
    auto& in = static_cast<InputStream*>(user)->in;
    in.clear();
    return static_cast<sf_count_t>(in.tellg());
}

// libsndfile quietly shortens a data chunk that runs past the end of the
// file; the program refuses such a file instead, so it walks the RIFF chunks
// itself. False only when a data chunk claims more bytes than the file holds.
// Files of other shapes (RF64, placeholder sizes of streamed recordings) are
// left to libsndfile's judgement.
bool dataChunkFits(std::istream& in, std::uint64_t fileSize)
{
    auto readU32 = [&in](bool bigEndian, std::uint32_t& value) {
        unsigned char b[4];
        if (!in.read(reinterpret_cast<char*>(b), 4))
            return false;
        value = bigEndian ? (std::uint32_t{b[0]} << 24) | (b[1] << 16) | (b[2] << 8) | b[3]
                          : (std::uint32_t{b[3]} << 24) | (b[2] << 16) | (b[1] << 8) | b[0];
        return true;
    };
    char magic[4];
    if (!in.read(magic, 4))
        return true;
    const std::string_view riff(magic, 4);
    if (riff != "RIFF" && riff != "RIFX")
        return true;
    const bool bigEndian = riff == "RIFX";
    std::uint64_t offset = 12;
    while (offset + 4 <= fileSize) {
        in.seekg(static_cast<std::streamoff>(offset));
        char id[4];
        std::uint32_t size = 0;
        if (!in.read(id, 4))
            return true;
        const bool isData = std::string_view(id, 4) == "data";
        if (!readU32(bigEndian, size))
            return !isData; // a data chunk cut inside its own header
        if (isData)
            return size == 0xFFFFFFFFu || offset + 8 + size <= fileSize;
        offset += 8 + std::uint64_t{size} + (size & 1u);
    }
    return true;
}

struct SndfileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};

int storedBits(int subtype)
{
    switch (subtype) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW: return 8;
    case SF_FORMAT_PCM_16: return 16;
    case SF_FORMAT_PCM_24: return 24;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT: return 32;
    case SF_FORMAT_DOUBLE: return 64;
    case SF_FORMAT_IMA_ADPCM:
    case SF_FORMAT_MS_ADPCM:
    case SF_FORMAT_G721_32: return 4;
    case SF_FORMAT_G723_24: return 3;
    case SF_FORMAT_G723_40: return 5;
    default: return 0;
    }
}

WaveEncoding encodingOf(int subtype)
{
    switch (subtype) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_16:
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_PCM_32: return WaveEncoding::Pcm;
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE: return WaveEncoding::Float;
    case SF_FORMAT_ULAW: return WaveEncoding::MuLaw;
    case SF_FORMAT_ALAW: return WaveEncoding::ALaw;
    case SF_FORMAT_IMA_ADPCM:
    case SF_FORMAT_MS_ADPCM:
    case SF_FORMAT_G721_32:
    case SF_FORMAT_G723_24:
    case SF_FORMAT_G723_40: return WaveEncoding::Adpcm;
    default: return WaveEncoding::Other;
    }
}

std::string describe(int subtype)
{
    SF_FORMAT_INFO info{};
    info.format = subtype;
    if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 && info.name)
        return info.name;
    return "Unknown encoding";
}

// Average of the channels of one frame, rounded to the nearest integer.
std::int16_t mixFrame(const short* frame, int channels)
{
    std::int64_t sum = 0;
    for (int c = 0; c < channels; ++c)
        sum += frame[c];
    const std::int64_t half = channels / 2;
    const std::int64_t mixed = sum >= 0 ? (sum + half) / channels : -((-sum + half) / channels);
    return static_cast<std::int16_t>(mixed);
}

void putLe16(std::string& out, unsigned value)
{
    out.push_back(static_cast<char>(value & 0xFF));
    out.push_back(static_cast<char>((value >> 8) & 0xFF));
}

void putLe32(std::string& out, std::uint32_t value)
{
    putLe16(out, value & 0xFFFF);
    putLe16(out, value >> 16);
}

} // namespace

void WaveFile::clear()
{
    m_sampleRate = 0;
    m_channels = 0;
    m_bitsPerSample = 0;
    m_encoding = WaveEncoding::None;
    m_formatDescription.clear();
    m_fileSize = 0;
    m_frameCount = 0;
    m_samples.clear();
    m_samples.shrink_to_fit();
    m_error.clear();
}

bool WaveFile::fail(const std::filesystem::path& path, std::string_view reason)
{
    clear();
    m_error = utf8FromPath(path.filename()) + std::string(reason);
    return false;
}

bool WaveFile::load(const std::filesystem::path& path, WaveRead what)
{
    clear();
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec))
        return fail(path, std::filesystem::exists(path, ec) ? msg::kWaveNotReadable : msg::kWaveMissing);
    const std::uintmax_t size = std::filesystem::file_size(path, ec);
    if (ec)
        return fail(path, msg::kWaveNotReadable);

    InputStream stream;
    stream.in.open(path, std::ios::binary);
    if (!stream.in)
        return fail(path, msg::kWaveNotReadable);
    stream.length = static_cast<sf_count_t>(size);
    const bool dataFits = dataChunkFits(stream.in, size);
    stream.in.clear();
    stream.in.seekg(0);

    SF_VIRTUAL_IO io{streamLength, streamSeek, streamRead, streamWrite, streamTell};
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndfileCloser> file(sf_open_virtual(&io, SFM_READ, &info, &stream));
    if (!file)
        return fail(path, msg::kWaveNotReadable);

    const int container = info.format & SF_FORMAT_TYPEMASK;
    if (container != SF_FORMAT_WAV && container != SF_FORMAT_WAVEX && container != SF_FORMAT_RF64)
        return fail(path, msg::kWaveNotReadable);
    if (info.samplerate <= 0 || info.channels <= 0 || info.frames < 0)
        return fail(path, msg::kWaveNotReadable);
    if (!dataFits)
        return fail(path, msg::kWaveDamaged);
    if (info.frames > kMaxWaveFrames)
        return fail(path, msg::kWaveTooLong);
    const int subtype = info.format & SF_FORMAT_SUBMASK;
    m_sampleRate = info.samplerate;
    m_channels = info.channels;
    m_bitsPerSample = storedBits(subtype);
    m_encoding = encodingOf(subtype);
    m_formatDescription = describe(subtype);
    m_fileSize = size;
    m_frameCount = static_cast<std::int64_t>(info.frames);
    if (what == WaveRead::FactsOnly)
        return true;

    // Float data beyond full scale is clipped instead of wrapping around.
    sf_command(file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);

    const int channels = info.channels;
    std::vector<std::int16_t> samples(static_cast<size_t>(info.frames));
    sf_count_t read = 0;
    if (channels == 1) {
        // Mono, the usual case, goes straight into place.
        read = sf_readf_short(file.get(), samples.data(), info.frames);
    } else {
        const sf_count_t chunkFrames = std::max<sf_count_t>(1, 65536 / channels);
        std::vector<short> chunk(static_cast<size_t>(chunkFrames) * static_cast<size_t>(channels));
        for (sf_count_t got = 0; read < info.frames; read += got) {
            got = sf_readf_short(file.get(), chunk.data(), std::min(chunkFrames, info.frames - read));
            if (got <= 0)
                break;
            for (sf_count_t f = 0; f < got; ++f)
                samples[static_cast<size_t>(read + f)] = mixFrame(&chunk[static_cast<size_t>(f * channels)], channels);
        }
    }
    if (sf_error(file.get()) != SF_ERR_NO_ERROR || read != info.frames)
        return fail(path, msg::kWaveDamaged);

    m_samples = std::move(samples);
    return true;
}

std::int64_t WaveFile::lengthMs() const
{
    if (m_sampleRate <= 0)
        return 0;
    return (frameCount() * 1000 + m_sampleRate / 2) / m_sampleRate;
}

std::string packPcm16(std::span<const std::int16_t> samples)
{
    std::string bytes;
    bytes.reserve(samples.size() * 2);
    for (const std::int16_t sample : samples)
        putLe16(bytes, static_cast<std::uint16_t>(sample));
    return bytes;
}

bool unpackPcm16(std::string_view bytes, std::vector<std::int16_t>& samples)
{
    samples.clear();
    if (bytes.size() % 2 != 0)
        return false;
    samples.reserve(bytes.size() / 2);
    for (size_t i = 0; i < bytes.size(); i += 2) {
        const auto low = static_cast<std::uint8_t>(bytes[i]);
        const auto high = static_cast<std::uint8_t>(bytes[i + 1]);
        samples.push_back(static_cast<std::int16_t>(static_cast<std::uint16_t>(low | (high << 8))));
    }
    return true;
}

std::string wav16Bytes(std::span<const std::int16_t> samples, int sampleRate)
{
    constexpr std::uint64_t kHeaderAfterRiffSize = 36; // "WAVE" + fmt chunk + data chunk header
    const std::uint64_t dataBytes = std::uint64_t{samples.size()} * 2;
    if (sampleRate <= 0 || sampleRate > std::numeric_limits<std::int32_t>::max() / 2 ||
        dataBytes + kHeaderAfterRiffSize > std::numeric_limits<std::uint32_t>::max())
        return {};

    std::string bytes;
    bytes.reserve(44 + dataBytes);
    bytes += "RIFF";
    putLe32(bytes, static_cast<std::uint32_t>(kHeaderAfterRiffSize + dataBytes));
    bytes += "WAVE";
    bytes += "fmt ";
    putLe32(bytes, 16); // fmt chunk size
    putLe16(bytes, 1); // integer PCM
    putLe16(bytes, 1); // mono
    putLe32(bytes, static_cast<std::uint32_t>(sampleRate)); // frames per second
    putLe32(bytes, static_cast<std::uint32_t>(sampleRate) * 2); // bytes per second
    putLe16(bytes, 2); // bytes per frame
    putLe16(bytes, 16); // bits per sample
    bytes += "data";
    putLe32(bytes, static_cast<std::uint32_t>(dataBytes));
    bytes += packPcm16(samples);
    return bytes;
}

bool writeWav16(const std::filesystem::path& path, std::span<const std::int16_t> samples, int sampleRate)
{
    const std::string bytes = wav16Bytes(samples, sampleRate);
    if (bytes.empty())
        return false;
    return writeFileAtomically(path, bytes);
}

} // namespace kestrelon
