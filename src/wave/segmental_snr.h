#pragma once
// A quality measure for lossy codecs that follows what a listener hears
// better than a plain signal-to-noise ratio: loud passages cannot hide the
// noise in quiet ones.
#include <cstdint>
#include <vector>

namespace kestrelon {

inline constexpr std::size_t kSnrFrameLength = 160; // 20 ms at 8 kHz
inline constexpr double kSnrFloorDb = -10.0;
inline constexpr double kSnrCeilingDb = 35.0;

// Segmental SNR of `decoded` against `reference`, in dB: both are cut into
// frames of kSnrFrameLength samples (the last one may be shorter), each frame's
// SNR is clamped to [kSnrFloorDb, kSnrCeilingDb], and the mean is taken over
// the frames whose reference is not digital silence. Samples missing from the
// shorter signal count as zeros, so a decoder that drops or adds sound is
// marked down. 0 when the reference is silent throughout.
double segmentalSnrDb(const std::vector<std::int16_t>& reference, const std::vector<std::int16_t>& decoded);

} // namespace kestrelon
