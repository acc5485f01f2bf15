#include "support/speech_input.h"

#include "wave/resample.h"
#include "wave/wave_file.h"

#include "speech.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using namespace kestrelon::support;

TEST(SpeechInput, LoadsAtTheCodecRateOrSaysWhyNot)
{
    // The same samples the host reads, converted to the codec's rate.
    WaveFile wave;
    ASSERT_TRUE(wave.load(test::kSpeechFolder / "wia_16kHz.wav")) << wave.error();
    std::vector<std::int16_t> samples;
    ASSERT_TRUE(loadSpeechAtRate(test::kSpeechFolder / "wia_16kHz.wav", 8000, samples));
    EXPECT_EQ(samples, resample(wave.samples(), 16000, 8000));
    const std::vector<std::int16_t> own = wave.takeSamples();
    ASSERT_TRUE(loadSpeechAtRate(test::kSpeechFolder / "wia_16kHz.wav", 16000, samples));
    EXPECT_EQ(samples, own);

    // A rate the resampler cannot reach from the file's own.
    test::TempDir dir;
    ASSERT_TRUE(writeWav16(dir / "fast.wav", std::vector<std::int16_t>(1000, 7), 768000));
    std::string error;
    samples = {1, 2, 3};
    EXPECT_FALSE(loadSpeechAtRate(dir / "fast.wav", 8000, samples, &error));
    EXPECT_EQ(error, "fast.wav has a sample rate that cannot be converted to the codec's rate !");
    EXPECT_TRUE(samples.empty());
    EXPECT_TRUE(loadSpeechAtRate(dir / "fast.wav", 48000, samples));
    EXPECT_EQ(samples.size(), 63u);
}
