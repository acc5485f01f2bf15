#include "wave/segmental_snr.h"

#include <algorithm>
#include <cmath>

namespace kestrelon {

double segmentalSnrDb(const std::vector<std::int16_t>& reference, const std::vector<std::int16_t>& decoded)
{
    const size_t length = std::max(reference.size(), decoded.size());
    auto at = [](const std::vector<std::int16_t>& signal, size_t i) {
        return i < signal.size() ? static_cast<double>(signal[i]) : 0.0;
    };

    double total = 0.0;
    size_t frames = 0;
    for (size_t start = 0; start < length; start += kSnrFrameLength) {
        const size_t end = std::min(length, start + kSnrFrameLength);
        double signal = 0.0;
        double noise = 0.0;
        for (size_t i = start; i < end; ++i) {
            const double wanted = at(reference, i);
            const double error = wanted - at(decoded, i);
            signal += wanted * wanted;
            noise += error * error;
        }
        if (signal == 0.0)
            continue;
        const double snr = noise == 0.0 ? kSnrCeilingDb : 10.0 * std::log10(signal / noise);
        total += std::clamp(snr, kSnrFloorDb, kSnrCeilingDb);
        ++frames;
    }
    return frames == 0 ? 0.0 : total / static_cast<double>(frames);
}

} // namespace kestrelon
