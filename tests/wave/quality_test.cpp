#include "wave/quality.h"
#include "wave/resample.h"
#include "wave/segmental_snr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace kestrelon;

namespace {

// A vowel-like sound: a few harmonics of 150 Hz under a slow swell, 1 s at 8 kHz.
std::vector<std::int16_t> voiced(double gain = 1.0)
{
    std::vector<std::int16_t> out(8000);
    for (std::size_t n = 0; n < out.size(); ++n) {
        const double t = double(n) / 8000;
        double v = 0;
        for (int h = 1; h <= 6; ++h)
            v += std::sin(2 * M_PI * 150 * h * t) / h;
        out[n] = static_cast<std::int16_t>(std::lround(gain * 6000 * v * (0.6 + 0.4 * std::sin(2 * M_PI * 3 * t))));
    }
    return out;
}

// Steady broadband sound: every mel band carries energy, every frame the same level.
std::vector<std::int16_t> hiss(double gain, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0.0, 4000.0);
    std::vector<std::int16_t> out(8000);
    for (std::int16_t& s : out)
        s = static_cast<std::int16_t>(std::lround(gain * std::clamp(normal(random), -8000.0, 8000.0)));
    return out;
}

} // namespace

TEST(Quality, HandComputableCasesComeOutAsComputedByHand)
{
    const std::vector<std::int16_t> source = voiced();

    // The same signal: nothing lost.
    QualityMeasures same = measureQuality(source, 8000, source, 8000);
    EXPECT_DOUBLE_EQ(same.segmentalSnrDb, kSnrCeilingDb);
    EXPECT_NEAR(same.melDistanceDb, 0.0, 1e-9);
    EXPECT_DOUBLE_EQ(same.durationRatio, 1.0);
    EXPECT_EQ(same.lagSamples, 0);

    // Half the amplitude of a broadband sound: every band 6.02 dB down, and
    // the error is half the signal, so the SNR is 20 log10(2) too.
    const QualityMeasures half = measureQuality(hiss(1.0, 3), 8000, hiss(0.5, 3), 8000);
    EXPECT_NEAR(half.melDistanceDb, 20 * std::log10(2.0), 0.05);
    EXPECT_NEAR(half.segmentalSnrDb, 20 * std::log10(2.0), 0.05);

    // Independent noise a tenth of the signal's amplitude: 20 dB.
    const std::vector<std::int16_t> steady = hiss(1.0, 3);
    const std::vector<std::int16_t> error = hiss(0.1, 4);
    std::vector<std::int16_t> noisy(steady.size());
    for (std::size_t n = 0; n < steady.size(); ++n)
        noisy[n] = static_cast<std::int16_t>(steady[n] + error[n]);
    EXPECT_NEAR(measureQuality(steady, 8000, noisy, 8000).segmentalSnrDb, 20.0, 0.5);

    // Delayed by one sample, as a codec's filter delays: the alignment takes
    // it out for the spectral distance; the samples themselves no longer match.
    std::vector<std::int16_t> late(source.size());
    std::copy(source.begin(), source.end() - 1, late.begin() + 1);
    const QualityMeasures shifted = measureQuality(source, 8000, late, 8000);
    EXPECT_EQ(shifted.lagSamples, 1);
    EXPECT_LT(shifted.melDistanceDb, 0.05);
    EXPECT_LT(shifted.segmentalSnrDb, same.segmentalSnrDb - 10);

    // A decode a quarter shorter, and a silent source.
    const std::vector<std::int16_t> shorter(source.begin(), source.begin() + 6000);
    EXPECT_DOUBLE_EQ(measureQuality(source, 8000, shorter, 8000).durationRatio, 0.75);
    const std::vector<std::int16_t> silence(8000, 0);
    EXPECT_EQ(melSpectralDistanceDb(silence, source, 8000), 0.0);
    EXPECT_EQ(segmentalSnrDb(silence, source), 0.0);

    // A decode at half a wideband source's rate is heard at the source's rate:
    // speech that lies below the lower rate's band loses little, while a
    // sound whose energy reaches the top loses its upper half, and both
    // measures say so. Durations compare in seconds.
    const std::vector<std::int16_t> wideVoice = resample(source, 8000, 16000);
    const QualityMeasures narrowVoice = measureQuality(wideVoice, 16000, resample(wideVoice, 16000, 8000), 8000);
    EXPECT_DOUBLE_EQ(narrowVoice.durationRatio, 1.0);
    EXPECT_LT(narrowVoice.melDistanceDb, 1.0);
    EXPECT_GT(narrowVoice.segmentalSnrDb, 20.0);
    std::vector<std::int16_t> wideHiss = hiss(1.0, 5);
    const std::vector<std::int16_t> more = hiss(1.0, 6);
    wideHiss.insert(wideHiss.end(), more.begin(), more.end()); // 1 s at 16 kHz
    const QualityMeasures narrowHiss = measureQuality(wideHiss, 16000, resample(wideHiss, 16000, 8000), 8000);
    EXPECT_GT(narrowHiss.melDistanceDb, 5.0);
    EXPECT_LT(narrowHiss.segmentalSnrDb, 6.0);
}
