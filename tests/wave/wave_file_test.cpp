#include "wave/wave_file.h"

#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace kestrelon;

namespace {

// Real speech from Debian's codec2-examples: 3 s, 8 kHz, 16-bit mono.
const std::filesystem::path kSpeech = "/usr/share/codec2/wav/hts1a.wav";

// Writes a file in another encoding with libsndfile itself, so the reader is
// checked against an independent writer. Frames are interleaved channels.
void writeWithSndfile(const std::filesystem::path& path, const std::vector<short>& frames, int rate, int channels,
                      int format)
{
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE* file = sf_open(path.string().c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    sf_writef_short(file, frames.data(), static_cast<sf_count_t>(frames.size() / channels));
    sf_close(file);
}

} // namespace

TEST(WaveFile, ReadsSpeechWithTheFactsThePanelShows)
{
    ASSERT_TRUE(std::filesystem::exists(kSpeech)) << "install Debian's codec2-examples";
    WaveFile wave;
    ASSERT_TRUE(wave.load(kSpeech)) << wave.error();
    EXPECT_EQ(wave.sampleRate(), 8000);
    EXPECT_EQ(wave.channels(), 1);
    EXPECT_EQ(wave.bitsPerSample(), 16);
    EXPECT_EQ(wave.encoding(), WaveEncoding::Pcm);
    EXPECT_EQ(wave.formatDescription(), "Signed 16 bit PCM");
    EXPECT_EQ(wave.frameCount(), 24000);
    EXPECT_EQ(wave.lengthMs(), 3000);
    EXPECT_EQ(wave.fileSize(), std::filesystem::file_size(kSpeech));

    // The samples are the data chunk's, in order: compare with the bytes after
    // the canonical 44-byte header.
    const std::string bytes = test::readBytes(kSpeech);
    std::vector<std::int16_t> expected;
    ASSERT_TRUE(unpackPcm16(std::string_view(bytes).substr(44), expected));
    EXPECT_EQ(wave.samples(), expected);
}

TEST(WaveFile, DecodesEveryStoredEncodingTo16BitMono)
{
    test::TempDir dir;
    WaveFile source;
    ASSERT_TRUE(source.load(kSpeech)) << source.error();
    const std::vector<std::int16_t> original = source.samples();
    const std::vector<short> mono(original.begin(), original.end());

    // Per-sample bounds hold for the memoryless encodings (the error grows
    // with the magnitude for the companded ones); ADPCM adapts over time, so it
    // is held to a floor on the signal-to-noise ratio of the whole file.
    struct Case {
        const char* name;
        int format;
        int bits;
        WaveEncoding encoding;
        int maxError; // for a sample of magnitude 0; -1: no per-sample bound
        int relative; // plus magnitude / relative (0: none)
        double minSnrDb;
    };
    const Case cases[] = {
        {"ulaw.wav", SF_FORMAT_WAV | SF_FORMAT_ULAW, 8, WaveEncoding::MuLaw, 16, 8, 30},
        {"alaw.wav", SF_FORMAT_WAV | SF_FORMAT_ALAW, 8, WaveEncoding::ALaw, 16, 8, 30},
        {"u8.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8, WaveEncoding::Pcm, 256, 0, 18},
        {"s24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 24, WaveEncoding::Pcm, 0, 0, 90},
        {"float.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 32, WaveEncoding::Float, 1, 0, 80},
        {"ima.wav", SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM, 4, WaveEncoding::Adpcm, -1, 0, 15},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        writeWithSndfile(dir / c.name, mono, 8000, 1, c.format);
        WaveFile wave;
        ASSERT_TRUE(wave.load(dir / c.name)) << wave.error();
        EXPECT_EQ(wave.bitsPerSample(), c.bits);
        EXPECT_EQ(wave.encoding(), c.encoding);
        // Decoded, not taken as raw 16-bit data: every sample is there (ADPCM
        // pads its last block) and lies close to the original.
        ASSERT_GE(wave.frameCount(), 24000);
        ASSERT_LT(wave.frameCount(), 24000 + 1024);
        EXPECT_EQ(wave.lengthMs(), (wave.frameCount() * 1000 + 4000) / 8000);
        double signal = 0, noise = 0;
        int outOfBound = 0;
        for (size_t i = 0; i < original.size(); ++i) {
            const int error = wave.samples()[i] - original[i];
            signal += double(original[i]) * original[i];
            noise += double(error) * error;
            const int allowed = c.maxError + (c.relative ? std::abs(original[i]) / c.relative : 0);
            if (c.maxError >= 0 && std::abs(error) > allowed)
                ++outOfBound;
        }
        EXPECT_EQ(outOfBound, 0) << "samples further from the original than the encoding allows";
        EXPECT_GT(10 * std::log10(signal / std::max(noise, 1.0)), c.minSnrDb);
    }

    // Channels are averaged: left the speech, right a third of it.
    std::vector<short> stereo;
    for (const short s : mono) {
        stereo.push_back(s);
        stereo.push_back(static_cast<short>(s / 3));
    }
    writeWithSndfile(dir / "stereo.wav", stereo, 16000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    WaveFile wave;
    ASSERT_TRUE(wave.load(dir / "stereo.wav")) << wave.error();
    EXPECT_EQ(wave.channels(), 2);
    EXPECT_EQ(wave.sampleRate(), 16000);
    EXPECT_EQ(wave.lengthMs(), 1500);
    ASSERT_EQ(wave.frameCount(), 24000);
    for (size_t i = 0; i < original.size(); ++i)
        ASSERT_NEAR(wave.samples()[i], (original[i] + original[i] / 3) / 2.0, 0.5001) << "frame " << i;
}

TEST(WaveFile, WritesACanonicalWavThatReadsBackIdentical)
{
    test::TempDir dir;
    std::vector<std::int16_t> samples = {0, 1, -1, 32767, -32768, 258, -259};
    for (int i = 0; i < 994; ++i)
        samples.push_back(static_cast<std::int16_t>(i * 61 - 30000));

    const auto path = dir / "out.wav";
    ASSERT_TRUE(writeWav16(path, samples, 6000));
    const std::string bytes = test::readBytes(path);
    ASSERT_EQ(bytes.size(), 44 + 2 * samples.size());
    const std::string header("RIFF\xF6\x07\x00\x00WAVEfmt \x10\x00\x00\x00\x01\x00\x01\x00"
                             "\x70\x17\x00\x00\xE0\x2E\x00\x00\x02\x00\x10\x00"
                             "data\xD2\x07\x00\x00",
                             44);
    EXPECT_EQ(bytes.substr(0, 44), header);
    EXPECT_EQ(bytes.substr(44, 10), std::string("\x00\x00\x01\x00\xFF\xFF\xFF\x7F\x00\x80", 10));

    WaveFile wave;
    ASSERT_TRUE(wave.load(path)) << wave.error();
    EXPECT_EQ(wave.samples(), samples);

    // The length is rounded to the nearest millisecond: 8004 frames at 8 kHz
    // are 1000.5 ms, 8003 are 1000.375 ms.
    for (const auto& [frames, ms] : {std::pair{8004, 1001}, std::pair{8003, 1000}}) {
        ASSERT_TRUE(writeWav16(dir / "length.wav", std::vector<std::int16_t>(std::size_t(frames)), 8000));
        ASSERT_TRUE(wave.load(dir / "length.wav"));
        EXPECT_EQ(wave.lengthMs(), ms) << frames;
    }

    // No sound is still a valid file; a rate that is not positive writes nothing.
    ASSERT_TRUE(writeWav16(dir / "empty.wav", {}, 8000));
    EXPECT_EQ(std::filesystem::file_size(dir / "empty.wav"), 44u);
    EXPECT_TRUE(wave.load(dir / "empty.wav")) << wave.error();
    EXPECT_EQ(wave.frameCount(), 0);
    EXPECT_FALSE(writeWav16(dir / "bad.wav", samples, 0));
    EXPECT_FALSE(std::filesystem::exists(dir / "bad.wav"));

    // PCM packing refuses half a sample rather than dropping it.
    std::vector<std::int16_t> unpacked = {5};
    EXPECT_FALSE(unpackPcm16(std::string("\x01\x02\x03", 3), unpacked));
    EXPECT_TRUE(unpacked.empty());
}

TEST(WaveFile, RefusesWhatIsNotACompleteWaveAndForgetsThePreviousFile)
{
    test::TempDir dir;
    const std::string speechBytes = test::readBytes(kSpeech);
    test::writeBytes(dir / "text.wav", "RIFF? no, just some words\n");
    test::writeBytes(dir / "truncated.wav", speechBytes.substr(0, 44 + 1000));
    std::vector<short> mono(800, 1000);
    writeWithSndfile(dir / "sound.aiff", mono, 8000, 1, SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    std::filesystem::create_directories(dir / "folder.wav");

    const std::pair<const char*, const char*> cases[] = {
        {"missing.wav", "missing.wav does not exist !"},
        {"text.wav", "text.wav is not a readable wave file !"},
        {"truncated.wav", "truncated.wav is damaged: it holds less sound than its header says !"},
        {"sound.aiff", "sound.aiff is not a readable wave file !"},
        {"folder.wav", "folder.wav is not a readable wave file !"},
    };
    for (const auto& [name, error] : cases) {
        SCOPED_TRACE(name);
        WaveFile wave;
        ASSERT_TRUE(wave.load(kSpeech));
        EXPECT_FALSE(wave.load(dir / name));
        EXPECT_EQ(wave.error(), error);
        EXPECT_FALSE(wave.isLoaded());
        EXPECT_EQ(wave.frameCount(), 0);
        EXPECT_EQ(wave.fileSize(), 0u);
    }

    // A chunk of odd size before "data" is followed by a pad byte: the data
    // chunk is found after it, whole or cut short.
    const std::string canonical = wav16Bytes(std::vector<std::int16_t>{100, -200, 300, -400}, 8000);
    std::string padded = canonical.substr(0, 36) +
                         std::string("JUNK\x03\x00\x00\x00"
                                     "abc"
                                     "\x00",
                                     12) +
                         canonical.substr(36);
    padded[4] = static_cast<char>(static_cast<unsigned char>(padded[4]) + 12); // the RIFF size grows by the chunk
    test::writeBytes(dir / "padded.wav", padded);
    {
        WaveFile wave;
        ASSERT_TRUE(wave.load(dir / "padded.wav")) << wave.error();
        EXPECT_EQ(wave.samples(), (std::vector<std::int16_t>{100, -200, 300, -400}));
    }
    test::writeBytes(dir / "padded-cut.wav", padded.substr(0, padded.size() - 2));
    EXPECT_FALSE(WaveFile().load(dir / "padded-cut.wav"));

    // A real file cut anywhere, in its header or its data, is refused: a
    // file cut short is never taken for a shorter sound.
    for (size_t cut = 0; cut < speechBytes.size(); cut += cut < 100 ? 1 : 4001) {
        test::writeBytes(dir / "cut.wav", speechBytes.substr(0, cut));
        WaveFile wave;
        EXPECT_FALSE(wave.load(dir / "cut.wav")) << "cut at " << cut;
    }
}
