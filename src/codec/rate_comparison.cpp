#include "codec/rate_comparison.h"

#include <algorithm>

namespace kestrelon {

namespace {

// Sums of one setting while the rows are gathered.
struct Tally {
    RatePoint point;
    double snr = 0, mel = 0;
    int snrCount = 0, melCount = 0;
};

} // namespace

std::vector<RateCurve> rateCurves(const std::vector<SweepRow>& rows)
{
    std::vector<RateCurve> curves;
    std::vector<std::vector<Tally>> tallies; // beside curves
    for (const SweepRow& row : rows) {
        auto curve = std::find_if(curves.begin(), curves.end(),
                                  [&](const RateCurve& c) { return c.algorithm == row.algorithm; });
        if (curve == curves.end()) {
            curves.push_back({row.algorithm, {}});
            tallies.emplace_back();
            curve = curves.end() - 1;
        }
        std::vector<Tally>& settings = tallies[std::size_t(curve - curves.begin())];
        auto tally = std::find_if(settings.begin(), settings.end(),
                                  [&](const Tally& t) { return t.point.bitRate == row.bitRate; });
        if (tally == settings.end()) {
            settings.push_back({RatePoint{row.algorithm, row.bitRate}});
            tally = settings.end() - 1;
        }
        tally->point.totalBytes += row.encodeSize;
        ++tally->point.sources;
        if (row.segmentalSnrDb) {
            tally->snr += *row.segmentalSnrDb;
            ++tally->snrCount;
        }
        if (row.melDistanceDb) {
            tally->mel += *row.melDistanceDb;
            ++tally->melCount;
        }
    }
    for (std::size_t i = 0; i < curves.size(); ++i) {
        for (Tally& tally : tallies[i]) {
            if (tally.snrCount > 0)
                tally.point.meanSegmentalSnrDb = tally.snr / tally.snrCount;
            if (tally.melCount > 0)
                tally.point.meanMelDistanceDb = tally.mel / tally.melCount;
            curves[i].points.push_back(tally.point);
        }
        std::stable_sort(curves[i].points.begin(), curves[i].points.end(),
                         [](const RatePoint& a, const RatePoint& b) { return a.totalBytes < b.totalBytes; });
    }
    return curves;
}

} // namespace kestrelon
