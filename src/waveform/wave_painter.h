#pragma once
// Draws a waveform picture: rulers, grid, the wave from its summary (sample
// by sample when zoomed in far enough), the selection, speech-event marks, the
// cursor and the play position, all in the colour record's colours. The
// window's view and `kestrelon-cli wave render` draw with this one function,
// so a report's picture is what the user saw.
#include "settings/wave_colors.h"
#include "wave/speech_events.h"

#include <QColor>
#include <QRect>

#include <cstdint>
#include <span>

class QPainter;

namespace kestrelon {

class WaveSummary;
class WaveViewport;

struct WaveScene {
    const WaveSummary* summary = nullptr;
    std::span<const std::int16_t> samples;
    int sampleRate = 8000;
    const WaveViewport* viewport = nullptr;
    WaveColors colors;
    const SpeechEventList* events = nullptr; // null: no marks
    std::int64_t playPosition = -1; // -1: nothing playing
};

// The rulers' room around the wave: the time ruler in seconds above, in
// samples below, the amplitude ruler on the left.
inline constexpr int kTopRulerHeight = 18;
inline constexpr int kBottomRulerHeight = 18;
inline constexpr int kLeftRulerWidth = 48;

// Where the wave itself is drawn within `full`: the viewport's width is this
// rectangle's width.
QRect waveArea(const QRect& full);

void paintWave(QPainter& painter, const QRect& full, const WaveScene& scene);

// A colour record value (0x00BBGGRR) as a Qt colour, and back.
QColor qColorFromRecord(std::uint32_t value);
std::uint32_t recordFromQColor(const QColor& color);

} // namespace kestrelon
