#pragma once
// A sweep's table as a firmware engineer weighs it: for each setting (an
// algorithm at a bit rate) the flash bytes of all the chosen prompts together
// against their mean quality, and per algorithm its settings as one curve
// from the smallest to the largest.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrelon {

// One source at one setting, as the sweep reports it.
struct SweepRow {
    std::string fileName;
    std::string algorithm;
    std::string bitRate;
    std::uint64_t encodeSize = 0;
    std::optional<double> segmentalSnrDb; // absent when the decode could not be measured
    std::optional<double> melDistanceDb;
};

// One setting over every source.
struct RatePoint {
    std::string algorithm;
    std::string bitRate;
    std::uint64_t totalBytes = 0;
    int sources = 0;
    std::optional<double> meanSegmentalSnrDb; // over the sources that were measured
    std::optional<double> meanMelDistanceDb;
};

struct RateCurve {
    std::string algorithm;
    std::vector<RatePoint> points; // by total bytes, smallest first
};

// Curves in the order the algorithms first appear in `rows`.
std::vector<RateCurve> rateCurves(const std::vector<SweepRow>& rows);

} // namespace kestrelon
