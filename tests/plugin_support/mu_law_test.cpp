#include "support/mu_law.h"

#include "wave/wave_file.h"

#include "riff.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace kestrelon;
using namespace kestrelon::support;

TEST(MuLaw, EveryCodeDecodesAsAnIndependentG711DecoderHearsIt)
{
    // A WAV file of format 7 holds G.711 mu-law bytes; libsndfile decodes them
    // with its own tables.
    std::string fmt;
    test::putLe(fmt, 0x0007, 2);
    test::putLe(fmt, 1, 2);
    test::putLe(fmt, 8000, 4);
    test::putLe(fmt, 8000, 4);
    test::putLe(fmt, 1, 2);
    test::putLe(fmt, 8, 2);
    test::putLe(fmt, 0, 2);
    std::string codes;
    for (int code = 0; code < 256; ++code)
        codes.push_back(static_cast<char>(code));

    test::TempDir dir;
    test::writeBytes(dir / "ulaw.wav", test::riffWave(fmt, 256, codes));
    WaveFile wave;
    ASSERT_TRUE(wave.load(dir / "ulaw.wav")) << wave.error();
    EXPECT_EQ(wave.encoding(), WaveEncoding::MuLaw);
    EXPECT_EQ(wave.bitsPerSample(), 8);
    EXPECT_EQ(wave.samples(), muLawDecode(codes));
}

TEST(MuLaw, EncodingPicksTheNearestStepForEverySample)
{
    EXPECT_EQ(muLawEncode({0, -1, 32767, -32768}), std::string("\xFF\x7F\x80\x00", 4));

    // Every code but negative zero (0x7F) survives decoding and encoding.
    for (int code = 0; code < 256; ++code) {
        if (code != 0x7F) {
            EXPECT_EQ(muLawFromSample(sampleFromMuLaw(static_cast<std::uint8_t>(code))), code) << code;
        }
    }

    // Every sample: the error is at most half a step of its segment (the
    // step doubles from 8 in segment 0 to 1024 in segment 7), and a louder
    // sample never decodes softer.
    int previous = -32768;
    for (int sample = -32768; sample <= 32767; ++sample) {
        const std::uint8_t code = muLawFromSample(static_cast<std::int16_t>(sample));
        const int decoded = sampleFromMuLaw(code);
        const int segment = ((~code) >> 4) & 7;
        if (std::abs(sample) <= 32635) {
            ASSERT_LE(std::abs(decoded - sample), 4 << segment) << sample;
        }
        ASSERT_GE(decoded, previous) << sample;
        previous = decoded;
    }
}
