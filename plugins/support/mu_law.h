#pragma once
// mu-law companding as in G.711: 8 bits per sample, fine steps near silence
// and coarse ones for loud sounds.
//
// A byte is the bitwise complement of: sign (bit 7, set for negative), a 3-bit
// segment (bits 6-4) and a 4-bit position in the segment (bits 3-0). 0xFF and
// 0x7F both stand for silence; 0x80 is the loudest positive value, 0x00 the
// loudest negative one. Magnitudes above 32635 are clipped to the top step.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::support {

std::uint8_t muLawFromSample(std::int16_t sample);
std::int16_t sampleFromMuLaw(std::uint8_t code);

// One byte per sample.
std::string muLawEncode(const std::vector<std::int16_t>& samples);
std::vector<std::int16_t> muLawDecode(std::string_view bytes);

} // namespace kestrelon::support
