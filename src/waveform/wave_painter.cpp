#include "waveform/wave_painter.h"

#include "wave/wave_summary.h"
#include "wave/wave_viewport.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <vector>

namespace kestrelon {

namespace {

// Labelled ticks at least this far apart, in pixels.
constexpr double kMinTickSpacing = 90.0;
// Below this many samples per column the trace is drawn sample by sample.
constexpr double kLinesBelowSamplesPerPixel = 2.0;
// From this many pixels per sample on, each sample is drawn as a point.
constexpr double kPointsFromPixelsPerSample = 4.0;

struct Tick {
    double step = 1.0;
    int decimals = 0;
};

// The smallest of 1, 2, 5 times a power of ten that keeps labelled ticks
// kMinTickSpacing apart, when one unit takes `pixelsPerUnit`.
Tick niceStep(double pixelsPerUnit, double smallestStep)
{
    for (int exponent = -6; exponent < 12; ++exponent) {
        for (const double mantissa : {1.0, 2.0, 5.0}) {
            const double step = mantissa * std::pow(10.0, exponent);
            if (step < smallestStep)
                continue;
            if (step * pixelsPerUnit >= kMinTickSpacing)
                return {step, std::max(0, -exponent)};
        }
    }
    return {1e12, 0};
}

double yOf(const QRect& area, double value)
{
    return area.center().y() + 0.5 - value * (area.height() / 2.0) / 32768.0;
}

void drawTimeRuler(QPainter& p, const QRect& ruler, const QRect& area, const WaveViewport& view, int rate,
                   bool inSeconds, const WaveColors& colors)
{
    const double pixelsPerSample = double(area.width()) / double(view.viewLength());
    const double unit = inSeconds ? double(rate) : 1.0; // samples per labelled unit
    const Tick tick = niceStep(pixelsPerSample * unit, inSeconds ? 1.0 / rate : 1.0);
    p.setPen(qColorFromRecord(colors.horzRule));
    const int baseline = inSeconds ? ruler.bottom() : ruler.top();
    p.drawLine(area.left(), baseline, area.right(), baseline);
    const double first = std::ceil(double(view.viewStart()) / unit / tick.step) * tick.step;
    for (double value = first; value * unit <= double(view.viewEnd()); value += tick.step) {
        const double x = area.left() + view.xOf(std::int64_t(std::llround(value * unit)));
        p.setPen(qColorFromRecord(colors.horzRule));
        p.drawLine(QPointF(x, baseline), QPointF(x, inSeconds ? baseline - 5 : baseline + 5));
        const QString label = inSeconds ? QString::number(value, 'f', tick.decimals) + QStringLiteral(" s")
                                        : QString::number(std::llround(value));
        p.setPen(qColorFromRecord(colors.text));
        p.drawText(QRectF(x + 3, ruler.top(), kMinTickSpacing - 6, ruler.height()), Qt::AlignLeft | Qt::AlignVCenter,
                   label);
    }
}

void drawAmplitudeRuler(QPainter& p, const QRect& ruler, const QRect& area, const WaveColors& colors)
{
    p.setPen(qColorFromRecord(colors.vertRule));
    p.drawLine(ruler.right(), area.top(), ruler.right(), area.bottom());
    for (const int value : {32767, 16384, 0, -16384, -32768}) {
        const double y = yOf(area, value);
        p.setPen(qColorFromRecord(colors.vertRule));
        p.drawLine(QPointF(ruler.right() - 4, y), QPointF(ruler.right(), y));
        p.setPen(qColorFromRecord(colors.text));
        p.drawText(QRectF(ruler.left(), y - 7, ruler.width() - 6, 14), Qt::AlignRight | Qt::AlignVCenter,
                   QString::number(value));
    }
}

void drawGrid(QPainter& p, const QRect& area, const WaveViewport& view, int rate, const WaveColors& colors)
{
    p.setPen(QPen(qColorFromRecord(colors.gridLine), 1, Qt::DotLine));
    for (const int value : {16384, -16384})
        p.drawLine(QPointF(area.left(), yOf(area, value)), QPointF(area.right(), yOf(area, value)));
    const Tick tick = niceStep(double(area.width()) / double(view.viewLength()) * rate, 1.0 / rate);
    const double first = std::ceil(double(view.viewStart()) / rate / tick.step) * tick.step;
    for (double s = first; s * rate <= double(view.viewEnd()); s += tick.step) {
        const double x = area.left() + view.xOf(std::int64_t(std::llround(s * rate)));
        p.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
    }
    p.setPen(qColorFromRecord(colors.boundaryLine));
    p.drawLine(QPointF(area.left(), yOf(area, 32767)), QPointF(area.right(), yOf(area, 32767)));
    p.drawLine(QPointF(area.left(), yOf(area, -32768)), QPointF(area.right(), yOf(area, -32768)));
    p.setPen(qColorFromRecord(colors.centerLine));
    p.drawLine(QPointF(area.left(), yOf(area, 0)), QPointF(area.right(), yOf(area, 0)));
}

void drawSummary(QPainter& p, const QRect& area, const WaveScene& scene)
{
    const WaveViewport& view = *scene.viewport;
    const std::vector<SampleRange> columns = scene.summary->columns(view.viewStart(), view.viewEnd(), area.width());
    p.setPen(qColorFromRecord(scene.colors.wave));
    SampleRange previous;
    for (int x = 0; x < int(columns.size()); ++x) {
        const SampleRange& r = columns[std::size_t(x)];
        if (r.empty)
            continue;
        // Each column reaches its neighbour's span, so the trace stays joined
        // where few samples fall on a column.
        std::int16_t low = r.min;
        std::int16_t high = r.max;
        if (!previous.empty) {
            low = std::min(low, previous.max);
            high = std::max(high, previous.min);
        }
        p.drawLine(QPointF(area.left() + x + 0.5, yOf(area, high)), QPointF(area.left() + x + 0.5, yOf(area, low)));
        previous = r;
    }
}

void drawSamples(QPainter& p, const QRect& area, const WaveScene& scene)
{
    const WaveViewport& view = *scene.viewport;
    const std::int64_t from = std::max<std::int64_t>(view.viewStart() - 1, 0);
    const std::int64_t to = std::min<std::int64_t>(view.viewEnd() + 1, std::int64_t(scene.samples.size()));
    if (from >= to)
        return;
    QPainterPath path;
    std::vector<QPointF> points;
    for (std::int64_t i = from; i < to; ++i) {
        const QPointF point(area.left() + view.xOf(i), yOf(area, scene.samples[std::size_t(i)]));
        if (i == from)
            path.moveTo(point);
        else
            path.lineTo(point);
        points.push_back(point);
    }
    p.setPen(qColorFromRecord(scene.colors.wave));
    p.drawPath(path);
    if (1.0 / view.samplesPerPixel() < kPointsFromPixelsPerSample)
        return;
    p.setPen(Qt::NoPen);
    p.setBrush(qColorFromRecord(scene.colors.point));
    for (const QPointF& point : points)
        p.drawRect(QRectF(point.x() - 1.5, point.y() - 1.5, 3, 3));
    p.setBrush(Qt::NoBrush);
}

void drawEvents(QPainter& p, const QRect& area, const WaveScene& scene)
{
    const WaveViewport& view = *scene.viewport;
    for (const SpeechEvent& event : *scene.events) {
        if (std::int64_t(event.samples) < view.viewStart() || std::int64_t(event.samples) > view.viewEnd())
            continue;
        const double x = area.left() + view.xOf(event.samples);
        p.setPen(QPen(qColorFromRecord(scene.colors.text), 1, Qt::DashLine));
        p.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        const QString id = QString::number(event.id);
        const QRectF box(x + 1, area.top() + 1, p.fontMetrics().horizontalAdvance(id) + 6, p.fontMetrics().height());
        p.fillRect(box, qColorFromRecord(scene.colors.text));
        p.setPen(qColorFromRecord(scene.colors.background));
        p.drawText(box, Qt::AlignCenter, id);
    }
}

void drawVertical(QPainter& p, const QRect& area, const WaveViewport& view, std::int64_t sample, std::uint32_t colour)
{
    if (sample < view.viewStart() || sample > view.viewEnd())
        return;
    const double x = area.left() + view.xOf(sample);
    p.setPen(qColorFromRecord(colour));
    p.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
}

} // namespace

QColor qColorFromRecord(std::uint32_t value)
{
    return QColor(int(value & 0xFF), int((value >> 8) & 0xFF), int((value >> 16) & 0xFF));
}

std::uint32_t recordFromQColor(const QColor& color)
{
    return std::uint32_t(color.red()) | std::uint32_t(color.green()) << 8 | std::uint32_t(color.blue()) << 16;
}

QRect waveArea(const QRect& full)
{
    return full.adjusted(kLeftRulerWidth, kTopRulerHeight, 0, -kBottomRulerHeight);
}

void paintWave(QPainter& p, const QRect& full, const WaveScene& scene)
{
    p.save();
    QFont font = p.font();
    font.setPixelSize(10);
    p.setFont(font);
    p.fillRect(full, qColorFromRecord(scene.colors.background));
    const QRect area = waveArea(full);
    if (!scene.viewport || !scene.summary || area.width() <= 0 || area.height() <= 0 ||
        scene.viewport->sampleCount() == 0) {
        p.restore();
        return;
    }
    const WaveViewport& view = *scene.viewport;
    const int rate = std::max(scene.sampleRate, 1);
    drawTimeRuler(p, QRect(area.left(), full.top(), area.width(), kTopRulerHeight), area, view, rate, true,
                  scene.colors);
    drawTimeRuler(p, QRect(area.left(), area.bottom() + 1, area.width(), kBottomRulerHeight), area, view, rate, false,
                  scene.colors);
    drawAmplitudeRuler(p, QRect(full.left(), area.top(), kLeftRulerWidth, area.height()), area, scene.colors);

    p.setClipRect(area);
    drawGrid(p, area, view, rate, scene.colors);
    if (view.hasSelection()) {
        const double a = area.left() + view.xOf(view.selectionStart());
        const double b = area.left() + view.xOf(view.selectionEnd());
        QColor shade = qColorFromRecord(scene.colors.cursor);
        shade.setAlpha(70);
        p.fillRect(QRectF(a, area.top(), std::max(b - a, 1.0), area.height()), shade);
    }
    if (view.samplesPerPixel() >= kLinesBelowSamplesPerPixel)
        drawSummary(p, area, scene);
    else
        drawSamples(p, area, scene);
    if (scene.events)
        drawEvents(p, area, scene);
    drawVertical(p, area, view, view.cursor(), scene.colors.cursor);
    if (scene.playPosition >= 0)
        drawVertical(p, area, view, scene.playPosition, scene.colors.playPos);
    p.restore();
}

} // namespace kestrelon
