#include "wave/segmental_snr.h"

#include <gtest/gtest.h>

using namespace kestrelon;

namespace {

// A square wave of +-amplitude: every frame holds the same energy.
std::vector<std::int16_t> square(size_t count, int amplitude)
{
    std::vector<std::int16_t> samples(count);
    for (size_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::int16_t>(i % 2 ? amplitude : -amplitude);
    return samples;
}

} // namespace

TEST(SegmentalSnr, AveragesClampedFrameRatiosOverFramesWithSound)
{
    const auto reference = square(1600, 1000);
    EXPECT_DOUBLE_EQ(segmentalSnrDb(reference, reference), kSnrCeilingDb);
    // Noise a tenth of the amplitude in every frame: 20 dB.
    EXPECT_NEAR(segmentalSnrDb(reference, square(1600, 1100)), 20.0, 1e-9);
    // Silence decoded for sound: 0 dB; the inverted sound, louder (-12 dB):
    // clamped to the floor.
    EXPECT_NEAR(segmentalSnrDb(reference, std::vector<std::int16_t>(1600, 0)), 0.0, 1e-9);
    EXPECT_DOUBLE_EQ(segmentalSnrDb(reference, square(1600, -3000)), kSnrFloorDb);

    // Frames of digital silence in the reference are left out of the mean,
    // whatever the decoder made of them.
    std::vector<std::int16_t> withPause(320, 0);
    const auto sound = square(800, 1000);
    withPause.insert(withPause.end(), sound.begin(), sound.end());
    std::vector<std::int16_t> noisyPause(320, 50);
    const auto noisySound = square(800, 1100);
    noisyPause.insert(noisyPause.end(), noisySound.begin(), noisySound.end());
    EXPECT_NEAR(segmentalSnrDb(withPause, noisyPause), 20.0, 1e-9);

    // A decoder that drops the second half is marked down for it (those
    // frames count as silence decoded for sound), and one that adds sound
    // after the end is not rewarded either.
    const std::vector<std::int16_t> firstHalf(reference.begin(), reference.begin() + 800);
    EXPECT_NEAR(segmentalSnrDb(reference, firstHalf), kSnrCeilingDb / 2, 1e-9);
    EXPECT_NEAR(segmentalSnrDb(firstHalf, reference), kSnrCeilingDb, 1e-9);

    // A last partial frame counts like any other; a silent reference gives 0.
    EXPECT_NEAR(segmentalSnrDb(square(170, 1000), square(170, 1100)), 20.0, 1e-9);
    EXPECT_DOUBLE_EQ(segmentalSnrDb(std::vector<std::int16_t>(500, 0), square(500, 7)), 0.0);
    EXPECT_DOUBLE_EQ(segmentalSnrDb({}, {}), 0.0);
}
