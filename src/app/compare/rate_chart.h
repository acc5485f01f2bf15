#pragma once
// Size against quality for a sweep: one curve per algorithm, a point per bit
// rate, the flash bytes of the chosen prompts across and the mean quality up.
// A click on a point chooses it.
#include "codec/rate_comparison.h"

#include <QWidget>

#include <optional>

namespace kestrelon {

class RateChart : public QWidget {
    Q_OBJECT
public:
    enum class Metric { SegmentalSnr, MelDistance };

    explicit RateChart(QWidget* parent = nullptr);

    void setCurves(std::vector<RateCurve> curves);
    void setMetric(Metric metric);
    // The chosen point, by its curve and place on it; none clears the choice.
    void choose(std::optional<std::pair<std::size_t, std::size_t>> point);
    const RatePoint* chosen() const;
    // Where a point is drawn, for a click to find it (and tests to click it).
    std::optional<QPointF> pointPosition(std::size_t curve, std::size_t point) const;

    QSize sizeHint() const override { return {640, 360}; }

signals:
    void pointChosen();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    std::optional<double> value(const RatePoint& point) const;
    QRectF plotArea() const;
    // The axes' ranges over every point that has a value.
    struct Ranges {
        double xMin = 0.1, xMax = 1, yMin = 0, yMax = 1; // kB across, the metric up
    };
    Ranges ranges() const;

    std::vector<RateCurve> m_curves;
    Metric m_metric = Metric::SegmentalSnr;
    std::optional<std::pair<std::size_t, std::size_t>> m_chosen;
};

} // namespace kestrelon
