#pragma once
// The waveform drawing widget: one sound, its summary, a viewport and the
// shared drawing. Mouse and keys work as in audio editors: click places the
// cursor, drag selects, shift-click extends, the wheel and +/- zoom around the
// cursor, Home/End jump to the ends, arrows move the cursor. Event marks show
// their descriptions as tool tips.
#include "settings/wave_colors.h"
#include "wave/speech_events.h"
#include "wave/wave_summary.h"
#include "wave/wave_viewport.h"

#include <QWidget>

#include <cstdint>
#include <memory>
#include <vector>

namespace kestrelon {

class WaveView : public QWidget {
    Q_OBJECT
public:
    explicit WaveView(QWidget* parent = nullptr);

    // The sound to show; the view keeps the samples.
    void setSamples(std::vector<std::int16_t> samples, int sampleRate);
    const std::vector<std::int16_t>& samples() const { return *m_samples; }
    int sampleRate() const { return m_sampleRate; }

    void setColors(const WaveColors& colors);
    const WaveColors& colors() const { return m_colors; }
    // Event marks; an empty list draws none.
    void setEvents(SpeechEventList events);
    const SpeechEventList& events() const { return m_events; }
    // -1 hides the play position line.
    void setPlayPosition(std::int64_t sample);
    std::int64_t playPosition() const { return m_playPosition; }

    const WaveViewport& viewport() const { return m_viewport; }
    void zoomIn();
    void zoomOut();
    void zoomAll();
    void zoomToSelection();
    void zoomTo(std::int64_t from, std::int64_t to);
    void scrollTo(std::int64_t start);
    void setCursorSample(std::int64_t sample, bool extend = false);
    void select(std::int64_t from, std::int64_t to);

    QSize sizeHint() const override { return {800, 220}; }

signals:
    // The visible range changed (zoom or scroll).
    void viewChanged();
    // The cursor or the selection changed.
    void cursorChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    std::int64_t sampleAtX(double x) const;
    void changedView();
    void changedCursor();

    std::shared_ptr<const std::vector<std::int16_t>> m_samples;
    int m_sampleRate = 8000;
    WaveSummary m_summary;
    WaveViewport m_viewport;
    WaveColors m_colors;
    SpeechEventList m_events;
    std::int64_t m_playPosition = -1;
};

// How far one wheel notch or key press zooms.
inline constexpr double kZoomStep = 1.5;

} // namespace kestrelon
