#include "support/ima_adpcm.h"

#include <algorithm>
#include <array>

namespace kestrelon::support {

namespace {

// The standard IMA quantiser step sizes, about 10% apart.
constexpr std::array<int, 89> kStepSizes = {
    7,    8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,    25,   28,
    31,   34,    37,    41,    45,    50,    55,    60,    66,    73,    80,    88,    97,    107,  118,
    130,  143,   157,   173,   190,   209,   230,   253,   279,   307,   337,   371,   408,   449,  494,
    544,  598,   658,   724,   796,   876,   963,   1060,  1166,  1282,  1411,  1552,  1707,  1878, 2066,
    2272, 2499,  2749,  3024,  3327,  3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};

// How a code's magnitude (its low three bits) moves the step index.
constexpr std::array<int, 8> kIndexAdjust = {-1, -1, -1, -1, 2, 4, 6, 8};

// The state both sides keep; the encoder runs the decoder's update so the
// two never drift apart.
struct ImaState {
    int predictor = 0;
    int index = 0;

    std::int16_t apply(int code)
    {
        const int step = kStepSizes[static_cast<size_t>(index)];
        int difference = step >> 3;
        if (code & 4)
            difference += step;
        if (code & 2)
            difference += step >> 1;
        if (code & 1)
            difference += step >> 2;
        predictor += (code & 8) ? -difference : difference;
        predictor = std::clamp(predictor, -32768, 32767);
        index = std::clamp(index + kIndexAdjust[static_cast<size_t>(code & 7)], 0, 88);
        return static_cast<std::int16_t>(predictor);
    }

    int encode(int sample)
    {
        int step = kStepSizes[static_cast<size_t>(index)];
        int difference = sample - predictor;
        int code = 0;
        if (difference < 0) {
            code = 8;
            difference = -difference;
        }
        // Successive approximation of difference / step in three bits.
        for (int bit = 4; bit > 0; bit >>= 1) {
            if (difference >= step) {
                code |= bit;
                difference -= step;
            }
            step >>= 1;
        }
        apply(code);
        return code;
    }
};

} // namespace

std::string imaAdpcmEncode(const std::vector<std::int16_t>& samples)
{
    std::string bytes((samples.size() + 1) / 2, '\0');
    ImaState state;
    for (size_t i = 0; i < samples.size(); ++i) {
        const int code = state.encode(samples[i]);
        auto& byte = bytes[i / 2];
        byte = static_cast<char>(static_cast<unsigned char>(byte) | (i % 2 == 0 ? code : code << 4));
    }
    return bytes;
}

std::vector<std::int16_t> imaAdpcmDecode(std::string_view bytes, std::size_t sampleCount)
{
    if (bytes.size() < sampleCount / 2 + sampleCount % 2)
        return {};
    std::vector<std::int16_t> samples;
    samples.reserve(sampleCount);
    ImaState state;
    for (size_t i = 0; i < sampleCount; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i / 2]);
        samples.push_back(state.apply(i % 2 == 0 ? byte & 0x0F : byte >> 4));
    }
    return samples;
}

} // namespace kestrelon::support
