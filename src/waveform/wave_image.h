#pragma once
// A waveform picture as an image file: what `kestrelon-cli wave render` makes
// for documentation and reports, drawn exactly as a window would draw it.
#include "settings/wave_colors.h"
#include "wave/speech_events.h"

#include <QImage>

#include <cstdint>
#include <filesystem>
#include <span>

namespace kestrelon {

struct WaveImageRequest {
    std::span<const std::int16_t> samples;
    int sampleRate = 8000;
    std::int64_t from = 0; // the samples shown: [from, to)
    std::int64_t to = 0;
    int width = 1600;
    int height = 200;
    WaveColors colors;
    const SpeechEventList* events = nullptr;
};

QImage renderWaveImage(const WaveImageRequest& request);

// Writes the image as PNG, whole and then renamed into place.
bool saveWaveImage(const QImage& image, const std::filesystem::path& target);

} // namespace kestrelon
