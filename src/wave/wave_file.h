#pragma once
// A wave file as the program sees it: its stored format (shown to the user as
// it is on disk) and its sound as 16-bit mono samples (what the codecs, the
// waveform views and the player work on). Reading goes through libsndfile,
// which decodes every stored encoding (8-bit, mu-law, A-law, 24-bit, float,
// ADPCM) to 16 bits; stereo and wider files are mixed down to one channel.
//
// The same reader serves the host and the codec plug-ins, so a wave means the
// same samples to both.
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

// How the samples are stored in the file.
enum class WaveEncoding { None, Pcm, Float, MuLaw, ALaw, Adpcm, Other };

// What load() reads: the sound, or only the facts about it (a question of
// sample rate or length must not read a half-hour recording).
enum class WaveRead { Whole, FactsOnly };

class WaveFile {
public:
    // Reads the whole file. On failure the object is left empty, error()
    // says why, and the result is false: a file that is not a WAV file, is
    // damaged or truncated, or is implausibly large is refused, never half-read.
    // With FactsOnly the samples stay empty and frameCount() still tells.
    bool load(const std::filesystem::path& path, WaveRead what = WaveRead::Whole);

    bool isLoaded() const { return m_sampleRate > 0; }
    int sampleRate() const { return m_sampleRate; }
    int channels() const { return m_channels; }
    // Bits of one stored sample: 8 for 8-bit PCM, mu-law and A-law, 16, 24,
    // 32 for 32-bit PCM and float, 64 for double, 4 for ADPCM; 0 when the
    // encoding has no fixed sample size.
    int bitsPerSample() const { return m_bitsPerSample; }
    WaveEncoding encoding() const { return m_encoding; }
    // The stored encoding in words, e.g. "Signed 16 bit PCM" or "U-Law".
    const std::string& formatDescription() const { return m_formatDescription; }
    // Frames in the file (one frame holds one sample of every channel); equal
    // to samples().size() until the samples are taken.
    std::int64_t frameCount() const { return m_frameCount; }
    // Length rounded to the nearest millisecond.
    std::int64_t lengthMs() const;
    // Size of the file on disk, header included.
    std::uintmax_t fileSize() const { return m_fileSize; }
    // The sound, one 16-bit sample per frame; channels are averaged.
    const std::vector<std::int16_t>& samples() const { return m_samples; }
    // Takes the samples out, leaving the object's other facts (frame count and
    // length included) as they are.
    std::vector<std::int16_t> takeSamples() { return std::move(m_samples); }

    // Why the last load failed, with the file's name in front; empty after a
    // successful load.
    const std::string& error() const { return m_error; }

private:
    void clear();
    bool fail(const std::filesystem::path& path, std::string_view reason);

    int m_sampleRate = 0;
    int m_channels = 0;
    int m_bitsPerSample = 0;
    WaveEncoding m_encoding = WaveEncoding::None;
    std::string m_formatDescription;
    std::uintmax_t m_fileSize = 0;
    std::int64_t m_frameCount = 0;
    std::vector<std::int16_t> m_samples;
    std::string m_error;
};

// The longest sound load() accepts, in frames (about 9 hours at 8 kHz).
inline constexpr std::int64_t kMaxWaveFrames = std::int64_t{1} << 28;

// 16-bit little-endian PCM: the sample layout of a canonical WAV's data chunk
// and of the linear PCM codec.
std::string packPcm16(std::span<const std::int16_t> samples);
// False (and samples left empty) when the byte count is odd: half a sample
// means the data is damaged.
bool unpackPcm16(std::string_view bytes, std::vector<std::int16_t>& samples);

// A canonical mono 16-bit PCM WAV file: a 44-byte header followed by the
// samples. Empty when the rate is not positive or the data would not fit the
// format's 32-bit sizes.
std::string wav16Bytes(std::span<const std::int16_t> samples, int sampleRate);

// Writes wav16Bytes() whole through writeFileAtomically.
bool writeWav16(const std::filesystem::path& path, std::span<const std::int16_t> samples, int sampleRate);

} // namespace kestrelon
