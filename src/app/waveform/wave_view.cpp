#include "app/waveform/wave_view.h"

#include "waveform/wave_painter.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <cmath>

namespace kestrelon {

namespace {

// How near (in pixels) the mouse must be to an event mark for its tool tip.
constexpr double kMarkReach = 4.0;

} // namespace

WaveView::WaveView(QWidget* parent)
    : QWidget(parent)
    , m_samples(std::make_shared<const std::vector<std::int16_t>>())
{
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(kLeftRulerWidth + 40, kTopRulerHeight + kBottomRulerHeight + 40);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void WaveView::setSamples(std::vector<std::int16_t> samples, int sampleRate)
{
    m_samples = std::make_shared<const std::vector<std::int16_t>>(std::move(samples));
    m_sampleRate = sampleRate;
    m_summary = WaveSummary(*m_samples);
    m_viewport.setSampleCount(std::int64_t(m_samples->size()));
    m_viewport.setWidth(waveArea(rect()).width());
    m_viewport.zoomAll();
    m_viewport.setCursor(0);
    changedView();
    changedCursor();
}

void WaveView::setColors(const WaveColors& colors)
{
    m_colors = colors;
    update();
}

void WaveView::setEvents(SpeechEventList events)
{
    m_events = std::move(events);
    update();
}

void WaveView::setPlayPosition(std::int64_t sample)
{
    if (sample == m_playPosition)
        return;
    m_playPosition = sample;
    update();
}

void WaveView::changedView()
{
    update();
    emit viewChanged();
}

void WaveView::changedCursor()
{
    update();
    emit cursorChanged();
}

void WaveView::zoomIn()
{
    m_viewport.zoomBy(kZoomStep, m_viewport.cursor());
    changedView();
}

void WaveView::zoomOut()
{
    m_viewport.zoomBy(1.0 / kZoomStep, m_viewport.cursor());
    changedView();
}

void WaveView::zoomAll()
{
    m_viewport.zoomAll();
    changedView();
}

void WaveView::zoomToSelection()
{
    if (!m_viewport.hasSelection())
        return;
    zoomTo(m_viewport.selectionStart(), m_viewport.selectionEnd());
}

void WaveView::zoomTo(std::int64_t from, std::int64_t to)
{
    m_viewport.zoomTo(from, to);
    changedView();
}

void WaveView::scrollTo(std::int64_t start)
{
    if (start == m_viewport.viewStart())
        return;
    m_viewport.scrollTo(start);
    changedView();
}

void WaveView::setCursorSample(std::int64_t sample, bool extend)
{
    m_viewport.setCursor(sample, extend);
    changedCursor();
}

void WaveView::select(std::int64_t from, std::int64_t to)
{
    m_viewport.select(from, to);
    changedCursor();
}

std::int64_t WaveView::sampleAtX(double x) const
{
    return m_viewport.sampleAt(x - waveArea(rect()).left());
}

void WaveView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    WaveScene scene;
    scene.summary = &m_summary;
    scene.samples = *m_samples;
    scene.sampleRate = m_sampleRate;
    scene.viewport = &m_viewport;
    scene.colors = m_colors;
    scene.events = &m_events;
    scene.playPosition = m_playPosition;
    paintWave(painter, rect(), scene);
    if (hasFocus()) {
        painter.setPen(QPen(qColorFromRecord(m_colors.boundaryLine), 1, Qt::DotLine));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void WaveView::resizeEvent(QResizeEvent*)
{
    m_viewport.setWidth(waveArea(rect()).width());
    emit viewChanged();
}

void WaveView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    setCursorSample(sampleAtX(event->position().x()), event->modifiers() & Qt::ShiftModifier);
}

void WaveView::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        setCursorSample(sampleAtX(event->position().x()), true);
}

void WaveView::wheelEvent(QWheelEvent* event)
{
    const double notches = event->angleDelta().y() / 120.0;
    if (notches == 0)
        return;
    if (event->modifiers() & Qt::ShiftModifier) {
        scrollTo(m_viewport.viewStart() - std::int64_t(notches * double(m_viewport.viewLength()) / 8));
    } else {
        m_viewport.zoomBy(std::pow(kZoomStep, notches), m_viewport.cursor());
        changedView();
    }
    event->accept();
}

void WaveView::keyPressEvent(QKeyEvent* event)
{
    const bool extend = event->modifiers() & Qt::ShiftModifier;
    // One key press moves the cursor by a column, at least a sample.
    const std::int64_t step = std::max<std::int64_t>(1, std::llround(m_viewport.samplesPerPixel()));
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_Up: zoomIn(); break;
    case Qt::Key_Minus:
    case Qt::Key_Down: zoomOut(); break;
    case Qt::Key_Home:
        setCursorSample(0, extend);
        scrollTo(0);
        break;
    case Qt::Key_End:
        setCursorSample(m_viewport.sampleCount(), extend);
        scrollTo(m_viewport.sampleCount());
        break;
    case Qt::Key_Left: setCursorSample(m_viewport.cursor() - step, extend); break;
    case Qt::Key_Right: setCursorSample(m_viewport.cursor() + step, extend); break;
    default: QWidget::keyPressEvent(event); return;
    }
    // Keep the cursor in sight after moving it with keys.
    if (m_viewport.cursor() < m_viewport.viewStart() || m_viewport.cursor() > m_viewport.viewEnd())
        scrollTo(m_viewport.cursor() - m_viewport.viewLength() / 2);
}

bool WaveView::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const double x = help->pos().x() - waveArea(rect()).left();
    for (const SpeechEvent& mark : m_events) {
        if (std::abs(m_viewport.xOf(mark.samples) - x) <= kMarkReach) {
            const QString text =
                QStringLiteral("ID %1 at %2").arg(mark.id).arg(mark.samples) +
                (mark.description.empty() ? QString()
                                          : QStringLiteral(": ") + QString::fromStdString(mark.description));
            QToolTip::showText(help->globalPos(), text, this);
            return true;
        }
    }
    QToolTip::hideText();
    event->ignore();
    return true;
}

} // namespace kestrelon
