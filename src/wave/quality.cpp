#include "wave/quality.h"

#include "wave/resample.h"
#include "wave/segmental_snr.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace kestrelon {

namespace {

constexpr int kMelBands = 24;
constexpr double kFrameSeconds = 0.032;
constexpr double kSilenceBelowLoudestDb = 60.0;
constexpr double kAlignSeconds = 0.05;
// The lag is the codec's delay, the same all through: the first seconds tell it.
constexpr double kAlignOverSeconds = 20.0;
constexpr double kEnergyFloor = 1e-3; // keeps the log of an empty band finite

// In-place radix-2 FFT; `data.size()` is a power of two.
void fft(std::vector<std::complex<double>>& data)
{
    const std::size_t n = data.size();
    for (std::size_t i = 1, j = 0; i < n; ++i) {
        std::size_t bit = n >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(data[i], data[j]);
    }
    for (std::size_t length = 2; length <= n; length <<= 1) {
        const std::complex<double> step = std::polar(1.0, -2 * std::numbers::pi / double(length));
        for (std::size_t start = 0; start < n; start += length) {
            std::complex<double> w = 1;
            for (std::size_t k = 0; k < length / 2; ++k, w *= step) {
                const std::complex<double> even = data[start + k];
                const std::complex<double> odd = w * data[start + k + length / 2];
                data[start + k] = even + odd;
                data[start + k + length / 2] = even - odd;
            }
        }
    }
}

double mel(double hz)
{
    return 2595.0 * std::log10(1.0 + hz / 700.0);
}

// Per frame, the energy of each mel band of the power spectrum.
std::vector<std::vector<double>> melEnergies(const std::vector<std::int16_t>& signal, std::size_t frame,
                                             std::size_t frames, int sampleRate)
{
    const std::size_t bins = frame / 2 + 1;
    // Band b spans mel points b .. b+2, peaking at b+1.
    std::vector<double> edges(kMelBands + 2);
    for (int i = 0; i < kMelBands + 2; ++i) {
        const double m = mel(sampleRate / 2.0) * i / (kMelBands + 1);
        edges[std::size_t(i)] = 700.0 * (std::pow(10.0, m / 2595.0) - 1.0);
    }
    // Each bin's bands and weights, and the window, worked out once: a bin
    // falls in at most two bands, and every frame asks the same.
    struct Share {
        int band;
        double weight;
    };
    std::vector<std::vector<Share>> shares(bins);
    for (std::size_t k = 0; k < bins; ++k) {
        const double hz = double(k) * sampleRate / double(frame);
        for (int b = 0; b < kMelBands; ++b) {
            const double low = edges[std::size_t(b)], peak = edges[std::size_t(b) + 1],
                         high = edges[std::size_t(b) + 2];
            if (hz <= low || hz >= high)
                continue;
            shares[k].push_back({b, hz < peak ? (hz - low) / (peak - low) : (high - hz) / (high - peak)});
        }
    }
    std::vector<double> window(frame);
    for (std::size_t i = 0; i < frame; ++i)
        window[i] = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * double(i) / double(frame));

    std::vector<std::vector<double>> out(frames, std::vector<double>(kMelBands, 0.0));
    std::vector<std::complex<double>> buffer(frame);
    for (std::size_t f = 0; f < frames; ++f) {
        const std::size_t start = f * frame / 2;
        for (std::size_t i = 0; i < frame; ++i) {
            const double sample = start + i < signal.size() ? signal[start + i] : 0.0;
            buffer[i] = sample * window[i];
        }
        fft(buffer);
        for (std::size_t k = 0; k < bins; ++k) {
            const double power = std::norm(buffer[k]);
            for (const Share& share : shares[k])
                out[f][std::size_t(share.band)] += share.weight * power;
        }
    }
    return out;
}

} // namespace

int bestLag(const std::vector<std::int16_t>& reference, const std::vector<std::int16_t>& decoded, int maxLag)
{
    // Whole-number sums are exact, so the energies of any stretch come from
    // running totals, and only the cross products are summed per lag.
    const auto runningEnergy = [](const std::vector<std::int16_t>& signal) {
        std::vector<std::int64_t> total(signal.size() + 1, 0);
        for (std::size_t n = 0; n < signal.size(); ++n)
            total[n + 1] = total[n] + std::int64_t(signal[n]) * signal[n];
        return total;
    };
    const std::vector<std::int64_t> energyOfA = runningEnergy(reference);
    const std::vector<std::int64_t> energyOfB = runningEnergy(decoded);
    int best = 0;
    double bestScore = -2.0;
    const long long references = static_cast<long long>(reference.size());
    const long long decodes = static_cast<long long>(decoded.size());
    for (int lag = -maxLag; lag <= maxLag; ++lag) {
        const long long from = std::max(0LL, -static_cast<long long>(lag));
        const long long to = std::min(references, decodes - lag);
        std::int64_t cross = 0, energyA = 0, energyB = 0;
        if (from < to) {
            const std::int16_t* a = reference.data() + from;
            const std::int16_t* b = decoded.data() + from + lag;
            for (long long n = 0; n < to - from; ++n)
                cross += std::int32_t(a[n]) * std::int32_t(b[n]);
            energyA = energyOfA[std::size_t(to)] - energyOfA[std::size_t(from)];
            energyB = energyOfB[std::size_t(to + lag)] - energyOfB[std::size_t(from + lag)];
        }
        const double score =
            energyA > 0 && energyB > 0 ? double(cross) / std::sqrt(double(energyA) * double(energyB)) : -1.0;
        // Ties go to the smallest shift.
        if (score > bestScore + 1e-12 || (std::abs(score - bestScore) <= 1e-12 && std::abs(lag) < std::abs(best))) {
            bestScore = score;
            best = lag;
        }
    }
    return best;
}

double melSpectralDistanceDb(const std::vector<std::int16_t>& reference, const std::vector<std::int16_t>& decoded,
                             int sampleRate)
{
    if (sampleRate <= 0 || reference.empty())
        return 0.0;
    std::size_t frame = 1;
    while (frame < std::size_t(sampleRate * kFrameSeconds))
        frame <<= 1;
    const std::size_t frames = reference.size() <= frame ? 1 : (reference.size() - frame) / (frame / 2) + 1;
    const auto ref = melEnergies(reference, frame, frames, sampleRate);
    const auto dec = melEnergies(decoded, frame, frames, sampleRate);

    std::vector<double> loudness(frames);
    for (std::size_t f = 0; f < frames; ++f)
        for (double e : ref[f])
            loudness[f] += e;
    const double loudest = *std::max_element(loudness.begin(), loudness.end());
    if (loudest <= 0)
        return 0.0;
    double total = 0;
    std::size_t counted = 0;
    for (std::size_t f = 0; f < frames; ++f) {
        if (loudness[f] <= 0 || 10 * std::log10(loudest / loudness[f]) > kSilenceBelowLoudestDb)
            continue;
        double sum = 0;
        for (int b = 0; b < kMelBands; ++b) {
            const double d =
                10 * std::log10((ref[f][std::size_t(b)] + kEnergyFloor) / (dec[f][std::size_t(b)] + kEnergyFloor));
            sum += d * d;
        }
        total += std::sqrt(sum / kMelBands);
        ++counted;
    }
    return counted ? total / double(counted) : 0.0;
}

QualityMeasures measureQuality(const std::vector<std::int16_t>& source, int sourceRate,
                               const std::vector<std::int16_t>& decoded, int decodedRate)
{
    QualityMeasures measures;
    if (sourceRate <= 0 || decodedRate <= 0)
        return measures;
    // Heard at the source's rate: what a lower rate cannot carry counts as lost.
    const std::vector<std::int16_t>& reference = source;
    const std::vector<std::int16_t> heard =
        decodedRate == sourceRate ? decoded : resample(decoded, decodedRate, sourceRate);
    const int rate = sourceRate;
    measures.segmentalSnrDb = segmentalSnrDb(reference, heard);
    measures.durationRatio =
        source.empty() ? 0.0 : (double(decoded.size()) / decodedRate) / (double(source.size()) / sourceRate);
    const auto head = [&](const std::vector<std::int16_t>& signal) {
        const std::size_t count = std::min(signal.size(), std::size_t(rate * kAlignOverSeconds));
        return std::vector<std::int16_t>(signal.begin(), signal.begin() + std::ptrdiff_t(count));
    };
    measures.lagSamples = bestLag(head(reference), head(heard), int(std::lround(rate * kAlignSeconds)));
    std::vector<std::int16_t> aligned(reference.size(), 0);
    for (std::size_t n = 0; n < aligned.size(); ++n) {
        const long long m = static_cast<long long>(n) + measures.lagSamples;
        if (m >= 0 && m < static_cast<long long>(heard.size()))
            aligned[n] = heard[std::size_t(m)];
    }
    measures.melDistanceDb = melSpectralDistanceDb(reference, aligned, rate);
    return measures;
}

} // namespace kestrelon
