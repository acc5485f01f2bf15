#pragma once
// A multi-level min/max summary of a sound, built once per file, so that a
// picture of any stretch of it costs a few steps per pixel column whatever
// the sound's length. Level 0 holds the extremes of blocks of kBaseBlock
// samples; each level above merges kFanOut blocks of the one below.
//
// Answers are exact: the extremes of a range are those of its samples, not an
// approximation rounded to block edges.
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kestrelon {

struct SampleRange {
    std::int16_t min = 0;
    std::int16_t max = 0;
    bool empty = true;

    void add(std::int16_t low, std::int16_t high);
};

class WaveSummary {
public:
    static constexpr std::int64_t kBaseBlock = 16;
    static constexpr std::int64_t kFanOut = 4;

    WaveSummary() = default;
    // The samples must outlive the summary: ranges smaller than a block are
    // read from them directly.
    explicit WaveSummary(std::span<const std::int16_t> samples);

    std::int64_t sampleCount() const { return std::int64_t(m_samples.size()); }
    // Extremes of the samples [from, to), clipped to the sound; empty when
    // nothing is left.
    SampleRange range(std::int64_t from, std::int64_t to) const;
    // One range per column: column i covers [from + i*span/columns,
    // from + (i+1)*span/columns) with span = to - from, every sample in
    // exactly one column. Columns of over 256 samples have their edges
    // rounded down to a block of at most 1/16 of a column.
    std::vector<SampleRange> columns(std::int64_t from, std::int64_t to, int columns) const;

    int levelCount() const { return int(m_levels.size()); }
    // The block size of a level, in samples.
    std::int64_t blockSize(int level) const;
    // What the summary holds beside the samples, in bytes.
    std::size_t bytes() const;

private:
    std::span<const std::int16_t> m_samples;
    // A block is never empty, so a level stores just its two extremes.
    struct Extremes {
        std::int16_t min;
        std::int16_t max;
    };
    std::vector<std::vector<Extremes>> m_levels;
};

} // namespace kestrelon
