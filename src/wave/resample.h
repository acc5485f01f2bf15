#pragma once
// Sample-rate conversion for the codecs, which each work at one fixed rate.
#include <cstdint>
#include <vector>

namespace kestrelon {

// Highest rate resample() accepts, on either side.
inline constexpr int kMaxResampleRate = 1'000'000;
// Largest factor by which resample() lowers a rate (the filter grows with it).
inline constexpr int kMaxDownsampling = 64;

// Converts 16-bit mono samples from inRate to outRate with a band-limited
// (Kaiser-windowed sinc) filter whose cut-off lies just below the lower of the
// two Nyquist frequencies, so downsampling removes what the new rate cannot
// carry instead of folding it back as aliases.
//
// The output keeps the duration: it holds round(in.size() * outRate / inRate)
// samples, and output sample m lies at the time of input position
// m * inRate / outRate (the filter is centred there; it adds no delay).
// Equal rates return the input unchanged. A rate that is not positive or is
// above kMaxResampleRate, or an outRate more than kMaxDownsampling times below
// inRate, gives an empty result.
// Whether resample() accepts the pair of rates.
bool canResample(int inRate, int outRate);

std::vector<std::int16_t> resample(const std::vector<std::int16_t>& in, int inRate, int outRate);

} // namespace kestrelon
