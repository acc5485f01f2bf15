#include "wave/wave_viewport.h"

#include <algorithm>
#include <cmath>

namespace kestrelon {

void WaveViewport::setSampleCount(std::int64_t count)
{
    m_count = std::max<std::int64_t>(count, 0);
    m_cursor = clampSample(m_cursor);
    m_anchor = clampSample(m_anchor);
    zoomAll();
}

void WaveViewport::setWidth(int columns)
{
    m_width = std::max(columns, 1);
    clampView();
}

std::int64_t WaveViewport::clampSample(std::int64_t sample) const
{
    return std::clamp<std::int64_t>(sample, 0, m_count);
}

std::int64_t WaveViewport::minimumLength() const
{
    const auto least = std::int64_t(std::ceil(m_width / kMaxPixelsPerSample));
    return std::min(std::max<std::int64_t>(least, 2), std::max<std::int64_t>(m_count, 1));
}

void WaveViewport::clampView()
{
    m_length = std::clamp(m_length, minimumLength(), std::max<std::int64_t>(m_count, 1));
    m_start = std::clamp<std::int64_t>(m_start, 0, std::max<std::int64_t>(m_count - m_length, 0));
}

std::int64_t WaveViewport::sampleAt(double x) const
{
    return clampSample(m_start + std::int64_t(std::floor(x * double(m_length) / m_width + 0.5)));
}

double WaveViewport::xOf(std::int64_t sample) const
{
    return double(sample - m_start) * m_width / double(m_length);
}

void WaveViewport::zoomAll()
{
    m_start = 0;
    m_length = std::max<std::int64_t>(m_count, 1);
    clampView();
}

void WaveViewport::zoomTo(std::int64_t from, std::int64_t to)
{
    from = clampSample(from);
    to = clampSample(to);
    if (to < from)
        std::swap(from, to);
    m_length = std::max(to - from, minimumLength());
    // A span widened to the minimum grows around the middle of what was asked.
    m_start = from - (m_length - (to - from)) / 2;
    clampView();
}

void WaveViewport::zoomBy(double factor, std::int64_t anchor)
{
    if (!(factor > 0))
        return;
    const double column = xOf(anchor);
    m_length = std::int64_t(std::llround(double(m_length) / factor));
    clampView();
    m_start = anchor - std::int64_t(std::llround(column * double(m_length) / m_width));
    clampView();
}

void WaveViewport::scrollTo(std::int64_t start)
{
    m_start = start;
    clampView();
}

void WaveViewport::setCursor(std::int64_t sample, bool extend)
{
    m_cursor = clampSample(sample);
    if (!extend)
        m_anchor = m_cursor;
}

void WaveViewport::select(std::int64_t from, std::int64_t to)
{
    m_anchor = clampSample(from);
    m_cursor = clampSample(to);
}

} // namespace kestrelon
