#include "wave/resample.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace kestrelon;

namespace {

std::vector<std::int16_t> tone(double frequency, int rate, size_t count, double amplitude = 12000)
{
    std::vector<std::int16_t> samples(count);
    for (size_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::int16_t>(
            std::lround(amplitude * std::sin(2 * std::numbers::pi * frequency * double(i) / rate + 0.3)));
    return samples;
}

// Energy of a, and of a - b, over [from, size - margin): the filter sees
// zeros beyond the ends, so the edges are left out.
double ratioDb(const std::vector<std::int16_t>& a, const std::vector<std::int16_t>& b, size_t margin)
{
    double signal = 0, noise = 0;
    for (size_t i = margin; i + margin < a.size(); ++i) {
        const double wanted = a[i];
        const double other = b.empty() ? 0.0 : b[i];
        signal += wanted * wanted;
        noise += (wanted - other) * (wanted - other);
    }
    return 10 * std::log10(signal / std::max(noise, 1e-9));
}

struct ToneCase {
    int from;
    int to;
    double frequency;
};

std::string describe(const ToneCase& c)
{
    return std::to_string(c.from) + " -> " + std::to_string(c.to) + " at " + std::to_string(c.frequency) + " Hz";
}

double rms(const std::vector<std::int16_t>& x, size_t margin)
{
    double sum = 0;
    size_t count = 0;
    for (size_t i = margin; i + margin < x.size(); ++i, ++count)
        sum += double(x[i]) * x[i];
    return std::sqrt(sum / double(count));
}

} // namespace

TEST(Resample, KeepsTheDurationExactly)
{
    const std::pair<int, int> rates[] = {{16000, 8000}, {8000, 16000}, {44100, 8000}, {8000, 6000},
                                         {22050, 4000}, {11025, 8000}, {8000, 44100}, {48000, 7999}};
    for (const auto& [from, to] : rates) {
        for (const size_t n : {size_t{0}, size_t{1}, size_t{2}, size_t{3}, size_t{159}, size_t{16001}}) {
            const std::vector<std::int16_t> in(n, 100);
            const auto expected = static_cast<size_t>(std::llround(double(n) * to / from));
            EXPECT_EQ(resample(in, from, to).size(), expected) << from << " -> " << to << ", " << n;
        }
    }

    // Equal rates change nothing; rates it cannot serve give nothing.
    const std::vector<std::int16_t> speech = tone(440, 8000, 800);
    EXPECT_EQ(resample(speech, 8000, 8000), speech);
    EXPECT_TRUE(resample(speech, 0, 8000).empty());
    EXPECT_TRUE(resample(speech, 8000, -1).empty());
    EXPECT_TRUE(resample(speech, 8000 * 65, 8000).empty());
    EXPECT_FALSE(canResample(8000 * 65, 8000));
    EXPECT_TRUE(canResample(8000 * 64, 8000));
}

TEST(Resample, TonesBelowTheLowerNyquistArriveIntactAndOnTime)
{
    // Up and down, integer and awkward ratios, up to 90% of the lower Nyquist.
    const ToneCase cases[] = {{16000, 8000, 1000}, {8000, 16000, 1000}, {44100, 8000, 440},
                              {8000, 44100, 3000}, {8000, 6000, 1700},  {22050, 4000, 1234},
                              {11025, 8000, 3300}, {16000, 8000, 3600}, {48000, 7999, 2500}};
    for (const ToneCase& c : cases) {
        SCOPED_TRACE(describe(c));
        const auto out = resample(tone(c.frequency, c.from, size_t(c.from) / 2), c.from, c.to);
        // Compared with the same tone made directly at the new rate, a delay or
        // a gain error shows up as noise.
        const auto ideal = tone(c.frequency, c.to, out.size());
        EXPECT_GT(ratioDb(ideal, out, 200), 60.0);
    }

    // There and back again.
    const auto original = tone(1000, 16000, 16000);
    const auto back = resample(resample(original, 16000, 8000), 8000, 16000);
    EXPECT_GT(ratioDb(original, back, 400), 60.0);
}

TEST(Resample, RemovesWhatTheNewRateCannotCarry)
{
    // A tone above the new Nyquist frequency would fold back as an audible
    // alias; the filter takes it out instead.
    const ToneCase cases[] = {{16000, 8000, 4300},  {16000, 8000, 7000}, {44100, 8000, 5000},
                              {44100, 8000, 12000}, {8000, 6000, 3500},  {22050, 4000, 2300}};
    for (const ToneCase& c : cases) {
        SCOPED_TRACE(describe(c));
        const auto in = tone(c.frequency, c.from, size_t(c.from) / 2);
        const auto out = resample(in, c.from, c.to);
        ASSERT_FALSE(out.empty());
        EXPECT_LT(rms(out, 200), rms(in, 200) / 1000.0) << "less than 60 dB of attenuation";
    }
}
