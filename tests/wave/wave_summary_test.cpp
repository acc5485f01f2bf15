#include "wave/wave_summary.h"
#include "wave/wave_viewport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace kestrelon;

namespace {

SampleRange scan(const std::vector<std::int16_t>& samples, std::int64_t from, std::int64_t to)
{
    SampleRange r;
    for (std::int64_t i = std::max<std::int64_t>(from, 0); i < std::min<std::int64_t>(to, samples.size()); ++i)
        r.add(samples[std::size_t(i)], samples[std::size_t(i)]);
    return r;
}

void expectSame(const SampleRange& got, const SampleRange& want, std::int64_t from, std::int64_t to)
{
    ASSERT_EQ(got.empty, want.empty) << from << ".." << to;
    if (want.empty)
        return;
    EXPECT_EQ(got.min, want.min) << from << ".." << to;
    EXPECT_EQ(got.max, want.max) << from << ".." << to;
}

} // namespace

TEST(WaveSummary, EveryRangeAndEveryBlockOfEveryLevelMatchesADirectScan)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> value(-32768, 32767);
    // Not a multiple of any block, so every level ends in a partial block.
    std::vector<std::int16_t> samples(100'003);
    for (std::int16_t& s : samples)
        s = std::int16_t(value(random));
    const WaveSummary summary(samples);
    ASSERT_GE(summary.levelCount(), 5);

    for (int level = 0; level < summary.levelCount(); ++level) {
        const std::int64_t size = summary.blockSize(level);
        for (std::int64_t from = 0; from < std::int64_t(samples.size()); from += size * 7 + size)
            expectSame(summary.range(from, from + size), scan(samples, from, from + size), from, from + size);
    }
    std::uniform_int_distribution<std::int64_t> position(-50, std::int64_t(samples.size()) + 50);
    for (int i = 0; i < 3000; ++i) {
        std::int64_t a = position(random);
        std::int64_t b = i % 3 == 0 ? a + i % 40 : position(random); // short ranges too
        if (b < a)
            std::swap(a, b);
        expectSame(summary.range(a, b), scan(samples, a, b), a, b);
    }
    EXPECT_TRUE(summary.range(10, 10).empty);
    EXPECT_TRUE(summary.range(200'000, 300'000).empty);

    // Columns split the view without gaps or overlaps.
    const std::vector<SampleRange> columns = summary.columns(1000, 1000 + 777 * 3 + 2, 777);
    ASSERT_EQ(columns.size(), 777u);
    for (int c = 0; c < 777; ++c) {
        const std::int64_t a = 1000 + (777 * 3 + 2) * std::int64_t(c) / 777;
        const std::int64_t b = 1000 + (777 * 3 + 2) * std::int64_t(c + 1) / 777;
        expectSame(columns[std::size_t(c)], scan(samples, a, b), a, b);
    }
    // Wide columns (edges rounded to blocks) still see every sample once: a
    // lone spike shows in the one column around it and in no other.
    std::vector<std::int16_t> quiet(3'000'017, 0);
    for (const std::int64_t spike : {std::int64_t(0), std::int64_t(1'234'567), std::int64_t(3'000'016)}) {
        quiet[std::size_t(spike)] = 9000;
        const WaveSummary wide(quiet);
        const std::vector<SampleRange> cols = wide.columns(0, std::int64_t(quiet.size()), 1552);
        int showing = 0;
        for (std::size_t c = 0; c < cols.size(); ++c) {
            if (cols[c].max != 9000)
                continue;
            ++showing;
            EXPECT_NEAR(double(c), double(spike) * 1552 / double(quiet.size()), 1.0) << spike;
        }
        EXPECT_EQ(showing, 1) << spike;
        quiet[std::size_t(spike)] = 0;
    }

    // The summary is a fraction of the samples it describes.
    EXPECT_LT(summary.bytes(), samples.size() * sizeof(std::int16_t) / 4);
}

TEST(WaveViewport, ColumnsMapToSamplesAtEveryZoomAndZoomingKeepsTheAnchorInPlace)
{
    WaveViewport view;
    view.setSampleCount(80'000);
    view.setWidth(1000);
    EXPECT_EQ(view.viewLength(), 80'000);
    EXPECT_EQ(view.sampleAt(0), 0);
    EXPECT_EQ(view.sampleAt(500), 40'000);
    EXPECT_EQ(view.sampleAt(1000), 80'000);
    EXPECT_EQ(view.sampleAt(5000), 80'000); // beyond the right edge: clamped

    for (const double factor : {1.5, 4.0, 30.0, 1000.0}) {
        view.zoomAll();
        view.zoomBy(factor, 20'000);
        const double column = 20'000.0 * 1000 / 80'000; // where the anchor was at "zoom all"
        EXPECT_NEAR(view.xOf(20'000), column, 1.0) << factor;
        for (const double x : {0.0, 123.0, 999.0}) {
            const std::int64_t s = view.sampleAt(x);
            EXPECT_NEAR(view.xOf(s), x, std::max(0.5, 0.5 / view.samplesPerPixel()) + 1e-9) << factor << " " << x;
        }
    }
    // The deepest zoom still shows several samples, and scrolling stops at the ends.
    view.zoomBy(1e9, 40'000);
    EXPECT_EQ(view.viewLength(), std::int64_t(std::ceil(1000 / WaveViewport::kMaxPixelsPerSample)));
    view.scrollTo(-5);
    EXPECT_EQ(view.viewStart(), 0);
    view.scrollTo(1'000'000);
    EXPECT_EQ(view.viewEnd(), 80'000);
    view.zoomTo(30'000, 30'000 + 2000);
    EXPECT_EQ(view.viewStart(), 30'000);
    EXPECT_EQ(view.viewLength(), 2000);

    // Shift-extension grows the selection from the anchor, either way.
    view.setCursor(500);
    view.setCursor(900, true);
    EXPECT_EQ(view.selectionStart(), 500);
    EXPECT_EQ(view.selectionEnd(), 900);
    view.setCursor(100, true);
    EXPECT_EQ(view.selectionStart(), 100);
    EXPECT_EQ(view.selectionEnd(), 500);
    view.setCursor(42);
    EXPECT_FALSE(view.hasSelection());
    view.select(-10, 90'000);
    EXPECT_EQ(view.selectionStart(), 0);
    EXPECT_EQ(view.selectionEnd(), 80'000);
}
