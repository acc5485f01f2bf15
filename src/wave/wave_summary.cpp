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

void SampleRange::add(const SampleRange& other)
{
    if (!other.empty) add(other.min, other.max);
}

WaveSummary::WaveSummary(std::span<const std::int16_t> samples) : m_samples(samples)
{
    const std::int64_t count = std::int64_t(samples.size());
    std::vector<SampleRange> base(std::size_t((count + kBaseBlock - 1) / kBaseBlock));
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int16_t s = samples[std::size_t(i)];
        base[std::size_t(i / kBaseBlock)].add(s, s);
    }
    m_levels.push_back(std::move(base));
    while (m_levels.back().size() > 1) {
        const std::vector<SampleRange>& below = m_levels.back();
        std::vector<SampleRange> level((below.size() + kFanOut - 1) / kFanOut);
        for (std::size_t i = 0; i < below.size(); ++i) level[i / kFanOut].add(below[i]);
        m_levels.push_back(std::move(level));
    }
}

std::int64_t WaveSummary::blockSize(int level) const
{
    std::int64_t size = kBaseBlock;
    for (int i = 0; i < level; ++i) size *= kFanOut;
    return size;
}

std::size_t WaveSummary::bytes() const
{
    std::size_t total = 0;
    for (const std::vector<SampleRange>& level : m_levels) total += level.size() * sizeof(SampleRange);
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
        for (int l = 0; l < levelCount(); ++l) {
            const std::int64_t s = blockSize(l);
            if (from % s != 0 || from + s > to) break;
            level = l;
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
        result.add(m_levels[std::size_t(level)][std::size_t(from / size)]);
        from += size;
    }
    return result;
}

std::vector<SampleRange> WaveSummary::columns(std::int64_t from, std::int64_t to, int columns) const
{
    std::vector<SampleRange> out(std::size_t(std::max(columns, 0)));
    const std::int64_t span = to - from;
    for (int i = 0; i < columns; ++i) {
        const std::int64_t a = from + span * i / columns;
        const std::int64_t b = from + span * (i + 1) / columns;
        out[std::size_t(i)] = range(a, std::max(b, a + 1));
    }
    return out;
}

} // namespace kestrelon
