#include "support/ima_adpcm.h"

#include "wave/wave_file.h"

#include "riff.h"
#include "speech.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using namespace kestrelon::support;

TEST(ImaAdpcm, StreamMatchesAnIndependentDecoderOfTheStandard)
{
    // A WAV IMA ADPCM block starts with the decoder state (predictor 0, index
    // 0: our initial state) and then holds codes two to a byte, low nibble
    // first, exactly our stream. libsndfile decodes such a block on its own; it
    // must hear what our decoder hears. A different nibble order, initial
    // state, step table or index table would not match.
    constexpr std::uint32_t kCodeBytes = 1000;
    const std::vector<std::int16_t> speech = test::speechAt("hts1a.wav", 8000);
    const std::vector<std::int16_t> part(speech.begin() + 4000, speech.begin() + 4000 + 2 * kCodeBytes);
    const std::string codes = imaAdpcmEncode(part);
    ASSERT_EQ(codes.size(), kCodeBytes);

    const std::uint32_t blockAlign = 4 + kCodeBytes;
    const std::uint32_t samplesPerBlock = 2 * kCodeBytes + 1;
    std::string fmt;
    test::putLe(fmt, 0x0011, 2); // IMA ADPCM
    test::putLe(fmt, 1, 2);
    test::putLe(fmt, 8000, 4);
    test::putLe(fmt, 8000 * blockAlign / samplesPerBlock, 4);
    test::putLe(fmt, blockAlign, 2);
    test::putLe(fmt, 4, 2);
    test::putLe(fmt, 2, 2); // extra bytes
    test::putLe(fmt, samplesPerBlock, 2);
    const std::string block = std::string(4, '\0') + codes;

    test::TempDir dir;
    test::writeBytes(dir / "ima.wav", test::riffWave(fmt, samplesPerBlock, block));
    WaveFile wave;
    ASSERT_TRUE(wave.load(dir / "ima.wav")) << wave.error();
    ASSERT_EQ(wave.frameCount(), samplesPerBlock);
    EXPECT_EQ(wave.bitsPerSample(), 4);
    const std::vector<std::int16_t> theirs(wave.samples().begin() + 1, wave.samples().end());
    EXPECT_EQ(theirs, imaAdpcmDecode(codes, part.size()));
}

TEST(ImaAdpcm, OddCountsShortStreamsAndFullScale)
{
    // An odd count fills the last byte's low nibble only.
    const std::vector<std::int16_t> three = {1000, 1200, 900};
    const std::string bytes = imaAdpcmEncode(three);
    ASSERT_EQ(bytes.size(), 2u);
    EXPECT_EQ(static_cast<unsigned char>(bytes[1]) >> 4, 0);
    EXPECT_EQ(imaAdpcmEncode({1000, 1200}).substr(0, 1), bytes.substr(0, 1));
    EXPECT_EQ(imaAdpcmDecode(bytes, 3).size(), 3u);
    EXPECT_EQ(imaAdpcmDecode(bytes, 3), imaAdpcmDecode(bytes + "\x77", 3));

    // Too few bytes for the count is damage, not a shorter sound.
    EXPECT_TRUE(imaAdpcmDecode(bytes, 5).empty());
    EXPECT_TRUE(imaAdpcmDecode("", 1).empty());
    EXPECT_TRUE(imaAdpcmEncode({}).empty());

    // Full-scale jumps saturate instead of wrapping around.
    std::vector<std::int16_t> square;
    for (int i = 0; i < 400; ++i)
        square.push_back(i / 100 % 2 == 0 ? 32767 : -32768);
    const std::vector<std::int16_t> decoded = imaAdpcmDecode(imaAdpcmEncode(square), square.size());
    ASSERT_EQ(decoded.size(), square.size());
    EXPECT_GT(decoded[99], 32000);
    EXPECT_LT(decoded[199], -32000);
    EXPECT_GT(decoded[299], 32000);
    for (size_t i = 1; i < 100; ++i)
        EXPECT_GE(decoded[i], decoded[i - 1]) << "rising edge turned back at " << i;
}
