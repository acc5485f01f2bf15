#include "app/compare/rate_chart.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kestrelon {

namespace {

// Colours that stay apart for the handful of algorithms a body offers.
const QColor kCurveColors[] = {QColor(0x1f, 0x77, 0xb4), QColor(0xd6, 0x27, 0x28), QColor(0x2c, 0xa0, 0x2c),
                               QColor(0x94, 0x67, 0xbd), QColor(0xff, 0x7f, 0x0e), QColor(0x8c, 0x56, 0x4b)};

QColor curveColor(std::size_t curve)
{
    return kCurveColors[curve % std::size(kCurveColors)];
}

// Sizes run from a few hundred bytes (parametric codecs) to hundreds of
// kilobytes (PCM): across, each power of ten takes the same room.
double logOf(double kilobytes)
{
    return std::log10(std::max(kilobytes, 1e-3));
}

// A step of 1, 2 or 5 times a power of ten that cuts `span` into about five.
double tickStep(double span)
{
    const double rough = span / 5;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= rough)
            return factor * power;
    return 10 * power;
}

constexpr double kPickRadius = 12;

} // namespace

RateChart::RateChart(QWidget* parent)
    : QWidget(parent)
{
    setMinimumSize(360, 240);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
}

void RateChart::setCurves(std::vector<RateCurve> curves)
{
    m_curves = std::move(curves);
    m_chosen.reset();
    update();
}

void RateChart::setMetric(Metric metric)
{
    m_metric = metric;
    update();
}

void RateChart::choose(std::optional<std::pair<std::size_t, std::size_t>> point)
{
    m_chosen = point;
    update();
    emit pointChosen();
}

const RatePoint* RateChart::chosen() const
{
    if (!m_chosen || m_chosen->first >= m_curves.size() || m_chosen->second >= m_curves[m_chosen->first].points.size())
        return nullptr;
    return &m_curves[m_chosen->first].points[m_chosen->second];
}

std::optional<double> RateChart::value(const RatePoint& point) const
{
    return m_metric == Metric::SegmentalSnr ? point.meanSegmentalSnrDb : point.meanMelDistanceDb;
}

QRectF RateChart::plotArea() const
{
    return QRectF(64, 16, std::max(10, width() - 64 - 20), std::max(10, height() - 16 - 52));
}

RateChart::Ranges RateChart::ranges() const
{
    Ranges r;
    bool any = false;
    for (const RateCurve& curve : m_curves)
        for (const RatePoint& point : curve.points) {
            const std::optional<double> v = value(point);
            if (!v)
                continue;
            const double kb = double(point.totalBytes) / 1000;
            r.xMin = any ? std::min(r.xMin, kb) : kb;
            r.xMax = any ? std::max(r.xMax, kb) : kb;
            r.yMin = any ? std::min(r.yMin, *v) : *v;
            r.yMax = any ? std::max(r.yMax, *v) : *v;
            any = true;
        }
    // Room above and below, and a floor at zero for quantities that start there.
    const double pad = std::max(0.5, (r.yMax - r.yMin) * 0.08);
    r.yMin = std::min(0.0, r.yMin - pad);
    r.yMax += pad;
    // Whole powers of ten at both ends, so the decades read at a glance.
    r.xMin = std::pow(10.0, std::floor(logOf(r.xMin)));
    r.xMax = std::pow(10.0, std::max(std::ceil(logOf(r.xMax)), logOf(r.xMin) + 1));
    return r;
}

std::optional<QPointF> RateChart::pointPosition(std::size_t curve, std::size_t point) const
{
    if (curve >= m_curves.size() || point >= m_curves[curve].points.size())
        return std::nullopt;
    const RatePoint& p = m_curves[curve].points[point];
    const std::optional<double> v = value(p);
    if (!v)
        return std::nullopt;
    const QRectF area = plotArea();
    const Ranges r = ranges();
    const double across = (logOf(double(p.totalBytes) / 1000) - logOf(r.xMin)) / (logOf(r.xMax) - logOf(r.xMin));
    return QPointF(area.left() + area.width() * across,
                   area.bottom() - area.height() * (*v - r.yMin) / (r.yMax - r.yMin));
}

void RateChart::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = plotArea();
    const Ranges r = ranges();
    const QColor ink = palette().color(QPalette::Text);
    const QColor grid = palette().color(QPalette::Mid);

    // Grid, ticks and the axes' names.
    painter.setFont(font());
    for (double decade = r.xMin; decade <= r.xMax * 1.0001; decade *= 10)
        for (const double factor : {1.0, 2.0, 5.0}) {
            const double x = decade * factor;
            if (x > r.xMax * 1.0001)
                break;
            const double at = area.left() + area.width() * (logOf(x) - logOf(r.xMin)) / (logOf(r.xMax) - logOf(r.xMin));
            painter.setPen(QPen(grid, 0, factor == 1.0 ? Qt::DashLine : Qt::DotLine));
            painter.drawLine(QPointF(at, area.top()), QPointF(at, area.bottom()));
            painter.setPen(ink);
            painter.drawText(QRectF(at - 40, area.bottom() + 4, 80, 16), Qt::AlignHCenter | Qt::AlignTop,
                             QString::number(x, 'g', 6));
        }
    const double yStep = tickStep(r.yMax - r.yMin);
    for (double y = std::ceil(r.yMin / yStep) * yStep; y <= r.yMax + 1e-9; y += yStep) {
        const double at = area.bottom() - area.height() * (y - r.yMin) / (r.yMax - r.yMin);
        painter.setPen(QPen(grid, 0, Qt::DotLine));
        painter.drawLine(QPointF(area.left(), at), QPointF(area.right(), at));
        painter.setPen(ink);
        painter.drawText(QRectF(0, at - 8, area.left() - 6, 16), Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(y, 'g', 4));
    }
    painter.setPen(ink);
    painter.drawRect(area);
    painter.drawText(QRectF(area.left(), area.bottom() + 22, area.width(), 18), Qt::AlignHCenter,
                     tr("Encoded size of the chosen sources (kB, logarithmic)"));
    painter.save();
    painter.translate(12, area.center().y());
    painter.rotate(-90);
    painter.drawText(QRectF(-area.height() / 2, -10, area.height(), 18), Qt::AlignHCenter,
                     m_metric == Metric::SegmentalSnr ? tr("Segmental SNR (dB), higher is better")
                                                      : tr("Mel distance (dB), lower is better"));
    painter.restore();

    // The curves, their points, and the legend.
    for (std::size_t c = 0; c < m_curves.size(); ++c) {
        const QColor color = curveColor(c);
        QPainterPath path;
        bool started = false;
        for (std::size_t p = 0; p < m_curves[c].points.size(); ++p) {
            const std::optional<QPointF> at = pointPosition(c, p);
            if (!at)
                continue;
            started ? path.lineTo(*at) : path.moveTo(*at);
            started = true;
        }
        painter.setPen(QPen(color, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(path);
        painter.setBrush(color);
        for (std::size_t p = 0; p < m_curves[c].points.size(); ++p)
            if (const std::optional<QPointF> at = pointPosition(c, p))
                painter.drawEllipse(*at, 4, 4);
        // Bottom right: large and poor is where no setting worth having lies.
        const QPointF legend(area.right() - 110, area.bottom() - 12 - 18 * double(m_curves.size() - 1 - c));
        painter.drawEllipse(legend, 4, 4);
        painter.setPen(ink);
        painter.drawText(legend + QPointF(10, 5), QString::fromStdString(m_curves[c].algorithm));
    }
    if (m_chosen)
        if (const std::optional<QPointF> at = pointPosition(m_chosen->first, m_chosen->second)) {
            painter.setPen(QPen(ink, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(*at, 8, 8);
            const RatePoint& p = *chosen();
            painter.drawText(*at + QPointF(10, -10),
                             QStringLiteral("%1 %2 bps")
                                 .arg(QString::fromStdString(p.algorithm), QString::fromStdString(p.bitRate)));
        }
}

void RateChart::mousePressEvent(QMouseEvent* event)
{
    std::optional<std::pair<std::size_t, std::size_t>> nearest;
    double best = kPickRadius;
    for (std::size_t c = 0; c < m_curves.size(); ++c)
        for (std::size_t p = 0; p < m_curves[c].points.size(); ++p)
            if (const std::optional<QPointF> at = pointPosition(c, p)) {
                const double distance = QLineF(*at, event->position()).length();
                if (distance <= best) {
                    best = distance;
                    nearest = std::pair(c, p);
                }
            }
    if (nearest)
        choose(nearest);
}

} // namespace kestrelon
