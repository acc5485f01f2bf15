#include "wave/resample.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace kestrelon {

namespace {

// Filter half-width in samples of the lower of the two rates. With the Kaiser
// window below this gives a transition band about 4% of the lower rate wide.
constexpr int kHalfWidth = 64;
// Kaiser window shape for about 80 dB of stop-band attenuation.
constexpr double kKaiserBeta = 7.857;
// Cut-off as a fraction of the lower Nyquist frequency, placed so that the
// transition band ends at that Nyquist frequency.
constexpr double kCutoff = 0.96;
// Most filter phases kept; rate pairs with more phases (unusual rates) have
// their output positions rounded to the nearest of these.
constexpr std::int64_t kMaxPhases = 4096;
// Most coefficients kept in the table, whatever the rates.
constexpr std::int64_t kMaxTableSize = std::int64_t{1} << 21;

// Modified Bessel function of the first kind, order 0, by its power series.
double besselI0(double x)
{
    double sum = 1.0;
    double term = 1.0;
    const double quarterSquare = x * x / 4.0;
    for (int k = 1; k < 200; ++k) {
        term *= quarterSquare / (static_cast<double>(k) * k);
        sum += term;
        if (term < sum * 1e-14)
            break;
    }
    return sum;
}

double sinc(double x)
{
    if (std::abs(x) < 1e-12)
        return 1.0;
    const double px = std::numbers::pi * x;
    return std::sin(px) / px;
}

// Filter coefficients by phase: row p holds the taps for an output lying
// p/phases of an input sample after input sample `base`; tap j multiplies input
// sample base - halfTaps + 1 + j. Rows are made when first needed, so a short
// sound at an awkward pair of rates does not pay for every phase. Each row is
// scaled to sum to one, so every phase has the same gain at DC.
class PhaseTable {
public:
    PhaseTable(std::int64_t phases, int halfTaps, double cutoffPerInputSample)
        : m_phases(phases)
        , m_halfTaps(halfTaps)
        , m_cutoff(cutoffPerInputSample)
        , m_i0Beta(besselI0(kKaiserBeta))
        , m_table(static_cast<size_t>(phases * 2 * halfTaps))
        , m_made(static_cast<size_t>(phases), false)
    {}

    int taps() const { return 2 * m_halfTaps; }

    const float* row(std::int64_t phase)
    {
        float* row = m_table.data() + phase * taps();
        if (!m_made[static_cast<size_t>(phase)]) {
            make(phase, row);
            m_made[static_cast<size_t>(phase)] = true;
        }
        return row;
    }

private:
    void make(std::int64_t phase, float* row) const
    {
        const double offset = static_cast<double>(phase) / static_cast<double>(m_phases);
        std::vector<double> values(static_cast<size_t>(taps()));
        double sum = 0.0;
        for (int j = 0; j < taps(); ++j) {
            const double distance = offset + (m_halfTaps - 1 - j); // output time minus tap time
            const double x = distance / m_halfTaps;
            double value = 0.0;
            if (std::abs(x) < 1.0) {
                const double window = besselI0(kKaiserBeta * std::sqrt(1.0 - x * x)) / m_i0Beta;
                value = 2.0 * m_cutoff * sinc(2.0 * m_cutoff * distance) * window;
            }
            values[static_cast<size_t>(j)] = value;
            sum += value;
        }
        for (int j = 0; j < taps(); ++j)
            row[j] = static_cast<float>(values[static_cast<size_t>(j)] / sum);
    }

    std::int64_t m_phases;
    int m_halfTaps;
    double m_cutoff;
    double m_i0Beta;
    std::vector<float> m_table;
    std::vector<bool> m_made;
};

float dot(const float* samples, const float* coefficients, int count)
{
    // Four partial sums let the compiler keep several multiplications in flight.
    float a = 0.f, b = 0.f, c = 0.f, d = 0.f;
    int j = 0;
    for (; j + 4 <= count; j += 4) {
        a += samples[j] * coefficients[j];
        b += samples[j + 1] * coefficients[j + 1];
        c += samples[j + 2] * coefficients[j + 2];
        d += samples[j + 3] * coefficients[j + 3];
    }
    for (; j < count; ++j)
        a += samples[j] * coefficients[j];
    return (a + b) + (c + d);
}

std::int16_t toSample(float value)
{
    const float rounded = std::nearbyint(value);
    return static_cast<std::int16_t>(std::clamp(rounded, -32768.f, 32767.f));
}

} // namespace

bool canResample(int inRate, int outRate)
{
    return inRate > 0 && outRate > 0 && inRate <= kMaxResampleRate && outRate <= kMaxResampleRate &&
           inRate <= outRate * kMaxDownsampling;
}

std::vector<std::int16_t> resample(const std::vector<std::int16_t>& in, int inRate, int outRate)
{
    if (!canResample(inRate, outRate))
        return {};
    if (inRate == outRate)
        return in;

    const auto n = static_cast<std::int64_t>(in.size());
    const std::int64_t outCount = (n * outRate + inRate / 2) / inRate;
    if (outCount == 0)
        return {};

    // Output m lies at input position m * step / phasesExact, in whole and
    // fractional input samples.
    const std::int64_t divisor = std::gcd(inRate, outRate);
    const std::int64_t phasesExact = outRate / divisor;
    const std::int64_t step = inRate / divisor;

    const double ratio = static_cast<double>(inRate) / outRate;
    const int halfTaps = static_cast<int>(std::ceil(kHalfWidth * std::max(1.0, ratio)));
    const int taps = 2 * halfTaps;
    const double cutoffPerInputSample = 0.5 * kCutoff * std::min(1.0, 1.0 / ratio);
    const std::int64_t phases = std::min({phasesExact, kMaxPhases, std::max<std::int64_t>(256, kMaxTableSize / taps)});
    PhaseTable table(phases, halfTaps, cutoffPerInputSample);

    // The input with halfTaps zeros before and after it, so that every output
    // reads a full window without bounds checks.
    std::vector<float> padded(static_cast<size_t>(n + 2 * halfTaps + 2), 0.f);
    std::copy(in.begin(), in.end(), padded.begin() + halfTaps);

    std::vector<std::int16_t> out(static_cast<size_t>(outCount));
    for (std::int64_t m = 0; m < outCount; ++m) {
        const std::int64_t position = m * step;
        std::int64_t base = position / phasesExact;
        std::int64_t phase = position % phasesExact;
        if (phases != phasesExact) {
            phase = (phase * phases + phasesExact / 2) / phasesExact;
            if (phase == phases) {
                phase = 0;
                ++base;
            }
        }
        // Tap 0 is input sample base - halfTaps + 1, i.e. padded index base + 1.
        const float* window = padded.data() + base + 1;
        const float* coefficients = table.row(phase);
        out[static_cast<size_t>(m)] = toSample(dot(window, coefficients, taps));
    }
    return out;
}

} // namespace kestrelon
