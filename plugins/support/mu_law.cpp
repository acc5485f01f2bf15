#include "support/mu_law.h"

#include <algorithm>
#include <bit>

namespace kestrelon::support {

namespace {

// Added to the magnitude so that each segment starts at a power of two and the
// segment number is the position of the top bit.
constexpr int kBias = 0x84;
// Largest magnitude that still fits the top segment once the bias is added.
constexpr int kClip = 32635;

} // namespace

std::uint8_t muLawFromSample(std::int16_t sample)
{
    int value = sample;
    const int sign = value < 0 ? 0x80 : 0x00; // before the complement
    int magnitude = std::min(value < 0 ? -value : value, kClip) + kBias;
    // magnitude lies in [0x84, 0x7FFF]: its top bit is bit 7 (segment 0) to bit 14 (segment 7).
    const int segment = std::bit_width(static_cast<unsigned>(magnitude)) - 8;
    const int position = (magnitude >> (segment + 3)) & 0x0F;
    return static_cast<std::uint8_t>(~(sign | (segment << 4) | position) & 0xFF);
}

std::int16_t sampleFromMuLaw(std::uint8_t code)
{
    const int inverted = ~code & 0xFF;
    const int segment = (inverted >> 4) & 0x07;
    const int position = inverted & 0x0F;
    const int magnitude = (((position << 3) + kBias) << segment) - kBias;
    return static_cast<std::int16_t>((inverted & 0x80) ? -magnitude : magnitude);
}

std::string muLawEncode(const std::vector<std::int16_t>& samples)
{
    std::string bytes;
    bytes.reserve(samples.size());
    for (const std::int16_t sample : samples)
        bytes.push_back(static_cast<char>(muLawFromSample(sample)));
    return bytes;
}

std::vector<std::int16_t> muLawDecode(std::string_view bytes)
{
    std::vector<std::int16_t> samples;
    samples.reserve(bytes.size());
    for (const char byte : bytes)
        samples.push_back(sampleFromMuLaw(static_cast<std::uint8_t>(byte)));
    return samples;
}

} // namespace kestrelon::support
