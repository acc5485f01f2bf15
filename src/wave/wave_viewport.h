#pragma once
// Where a waveform picture looks: which samples its columns show, and the
// cursor and selection within the sound. Kept apart from any widget so that
// the window, the pictures the command line renders and the tests share one
// mapping between columns and samples.
#include <cstdint>

namespace kestrelon {

class WaveViewport {
public:
    // The most a view zooms in: this many columns to a sample.
    static constexpr double kMaxPixelsPerSample = 64.0;

    void setSampleCount(std::int64_t count);
    void setWidth(int columns);

    std::int64_t sampleCount() const { return m_count; }
    int width() const { return m_width; }
    // The first sample shown and how many samples the view spans.
    std::int64_t viewStart() const { return m_start; }
    std::int64_t viewLength() const { return m_length; }
    std::int64_t viewEnd() const { return m_start + m_length; }
    double samplesPerPixel() const { return m_width > 0 ? double(m_length) / m_width : 1.0; }

    // The sample under a column (clamped to the sound), and a sample's column.
    std::int64_t sampleAt(double x) const;
    double xOf(std::int64_t sample) const;

    // The whole sound.
    void zoomAll();
    // Shows [from, to), at least a few samples, clamped to the sound.
    void zoomTo(std::int64_t from, std::int64_t to);
    // Divides the span by `factor` (above 1 zooms in), keeping `anchor` at the
    // same column.
    void zoomBy(double factor, std::int64_t anchor);
    void scrollTo(std::int64_t start);

    // The cursor, and the selection [selectionStart, selectionEnd) between the
    // anchor and the cursor; empty when they coincide.
    std::int64_t cursor() const { return m_cursor; }
    std::int64_t selectionStart() const { return m_anchor < m_cursor ? m_anchor : m_cursor; }
    std::int64_t selectionEnd() const { return m_anchor < m_cursor ? m_cursor : m_anchor; }
    bool hasSelection() const { return m_anchor != m_cursor; }
    // Places the cursor; `extend` keeps the anchor so the selection grows
    // from it, otherwise the selection is dropped.
    void setCursor(std::int64_t sample, bool extend = false);
    void select(std::int64_t from, std::int64_t to);

private:
    std::int64_t clampSample(std::int64_t sample) const;
    std::int64_t minimumLength() const;
    void clampView();

    std::int64_t m_count = 0;
    int m_width = 1;
    std::int64_t m_start = 0;
    std::int64_t m_length = 0;
    std::int64_t m_cursor = 0;
    std::int64_t m_anchor = 0;
};

} // namespace kestrelon
