// Sweep rows gathered into curves: bytes add up over the sources, quality is
// the mean of those measured, and each curve runs from the smallest setting.
#include "codec/rate_comparison.h"

#include <gtest/gtest.h>

using namespace kestrelon;

TEST(RateCurves, SettingsAddTheirSourcesBytesAndAverageOnlyWhatWasMeasured)
{
    const std::vector<SweepRow> rows = {
        {"a.wav", "Adpcm", "32000", 1000, 22.0, 3.0},
        {"a.wav", "Adpcm", "16000", 500, 12.0, 5.0},
        {"a.wav", "Law", "64000", 2000, 30.0, 1.0},
        {"b.wav", "Adpcm", "32000", 3000, 20.0, 2.0},
        {"b.wav", "Adpcm", "16000", 1500, std::nullopt, std::nullopt}, // its decode was not measured
        {"b.wav", "Law", "64000", 6000, 28.0, 1.5},
    };
    const std::vector<RateCurve> curves = rateCurves(rows);
    ASSERT_EQ(curves.size(), 2u);
    EXPECT_EQ(curves[0].algorithm, "Adpcm");
    ASSERT_EQ(curves[0].points.size(), 2u);
    const RatePoint& small = curves[0].points[0];
    EXPECT_EQ(small.bitRate, "16000"); // the smaller setting first, though swept second
    EXPECT_EQ(small.totalBytes, 2000u);
    EXPECT_EQ(small.sources, 2);
    EXPECT_DOUBLE_EQ(*small.meanSegmentalSnrDb, 12.0);
    EXPECT_DOUBLE_EQ(*small.meanMelDistanceDb, 5.0);
    const RatePoint& large = curves[0].points[1];
    EXPECT_EQ(large.totalBytes, 4000u);
    EXPECT_DOUBLE_EQ(*large.meanSegmentalSnrDb, 21.0);
    EXPECT_DOUBLE_EQ(*large.meanMelDistanceDb, 2.5);
    EXPECT_EQ(curves[1].points.front().totalBytes, 8000u);

    // A setting no source could be measured at has no quality, not a zero.
    const std::vector<RateCurve> unmeasured = rateCurves({{"a.wav", "X", "1", 10, std::nullopt, std::nullopt}});
    EXPECT_FALSE(unmeasured[0].points[0].meanSegmentalSnrDb);
    EXPECT_TRUE(rateCurves({}).empty());
}
