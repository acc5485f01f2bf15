#include "wave/wave_summary.h"

#include <algorithm>

namespace kestrelon {

void SampleRange::add(std::int16_t low, std::int16_t high)
{
    if (empty) {
        min = low;
        max = high;
        empty = false;
        return;
    }
    min = std::min(min, low);
    max = std::max(max, high);
}

WaveSummary::WaveSummary(std::span<const std::int16_t> samples)
    : m_samples(samples)
{
    const std::size_t count = samples.size();
    std::vector<Extremes> base((count + kBaseBlock - 1) / kBaseBlock);
    for (std::size_t b = 0; b < base.size(); ++b) {
        const auto [low, high] =
            std::minmax_element(samples.begin() + std::ptrdiff_t(b * kBaseBlock),
                                samples.begin() + std::ptrdiff_t(std::min(count, (b + 1) * kBaseBlock)));
        base[b] = {*low, *high};
    }
    m_levels.push_back(std::move(base));
    while (m_levels.back().size() > 1) {
        const std::vector<Extremes>& below = m_levels.back();
        std::vector<Extremes> level((below.size() + kFanOut - 1) / kFanOut, below.front());
        for (std::size_t i = 0; i < below.size(); ++i) {
            Extremes& into = level[i / kFanOut];
            if (i % kFanOut == 0)
                into = below[i];
            into.min = std::min(into.min, below[i].min);
            into.max = std::max(into.max, below[i].max);
        }
        m_levels.push_back(std::move(level));
    }
}

std::int64_t WaveSummary::blockSize(int level) const
{
    std::int64_t size = kBaseBlock;
    for (int i = 0; i < level; ++i)
        size *= kFanOut;
    return size;
}

std::size_t WaveSummary::bytes() const
{
    std::size_t total = 0;
    for (const std::vector<Extremes>& level : m_levels)
        total += level.size() * sizeof(Extremes);
    return total;
}

SampleRange WaveSummary::range(std::int64_t from, std::int64_t to) const
{
    SampleRange result;
    from = std::max<std::int64_t>(from, 0);
    to = std::min(to, sampleCount());
    // Greedy walk: at each position take the largest block that starts there
    // and fits, so a range costs at most a few blocks per level on each side.
    while (from < to) {
        int level = -1;
        std::int64_t size = 1;
        for (std::int64_t s = kBaseBlock; level + 1 < levelCount() && from % s == 0 && from + s <= to; s *= kFanOut) {
            ++level;
            size = s;
        }
        if (level < 0) {
            const std::int64_t end = std::min(to, (from / kBaseBlock + 1) * kBaseBlock);
            for (; from < end; ++from) {
                const std::int16_t s = m_samples[std::size_t(from)];
                result.add(s, s);
            }
            continue;
        }
        const Extremes& block = m_levels[std::size_t(level)][std::size_t(from / size)];
        result.add(block.min, block.max);
        from += size;
    }
    return result;
}

std::vector<SampleRange> WaveSummary::columns(std::int64_t from, std::int64_t to, int columns) const
{
    std::vector<SampleRange> out(std::size_t(std::max(columns, 0)));
    const std::int64_t span = to - from;
    // Wide columns have their edges rounded to a block of at most 1/16 of a
    // column: the picture cannot show it, and the walk then starts high in
    // the summary instead of in the samples, so a frame of a long sound costs
    // what one of a short sound does.
    std::int64_t grid = 1;
    if (columns > 0)
        for (std::int64_t s = kBaseBlock; s * 16 <= span / columns; s *= kFanOut)
            grid = s;
    const auto edge = [&](int i) {
        if (i == 0 || i == columns)
            return from + span * i / columns;
        return std::max(from, (from + span * i / columns) / grid * grid);
    };
    for (int i = 0; i < columns; ++i) {
        const std::int64_t a = edge(i);
        const std::int64_t b = edge(i + 1);
        out[std::size_t(i)] = range(a, std::max(b, a + 1));
    }
    return out;
}

} // namespace kestrelon
