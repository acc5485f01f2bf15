#pragma once
// IMA ADPCM: 4 bits per sample, for speech at 16-bit quality in a quarter of
// the space.
//
// Stream layout (no header, no blocks): one 4-bit code per sample, two codes
// per byte, the earlier sample in the low nibble and the later one in the high
// nibble. An odd sample count leaves the last byte's high nibble zero. Encoder
// and decoder both start from predictor 0 and step index 0 and never reset, so
// the stream carries no state of its own: the sample count must travel beside
// it (the codec's own header keeps it).
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::support {

// (samples.size() + 1) / 2 bytes.
std::string imaAdpcmEncode(const std::vector<std::int16_t>& samples);

// Decodes the first sampleCount samples. Empty when the stream holds fewer
// than (sampleCount + 1) / 2 bytes: a short stream is damaged, and half a
// sound is not returned as if it were the whole.
std::vector<std::int16_t> imaAdpcmDecode(std::string_view bytes, std::size_t sampleCount);

} // namespace kestrelon::support
