// What a waveform window costs on a short prompt and on a very long
// recording: building the min/max summary once per file, its size beside the
// samples, and drawing a 1600x200 frame at "zoom all" and at a one-second
// view. The frame time should not grow with the sound's length: the ratio of
// the long file's frame time to the short one's should stay near 1.
//
//     waveform [FRAMES]   (default 60 frames per view)
//
// The sounds are real WAV files (8 kHz, 16 bits) written to a scratch folder
// and loaded as the window loads them; the frames are drawn into an image by
// the drawing the window uses.
#include "wave/wave_file.h"
#include "wave/wave_summary.h"
#include "wave/wave_viewport.h"
#include "waveform/wave_painter.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <vector>

using namespace kestrelon;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kRate = 8000;

// Speech-like: bursts of a varying tone with noise, separated by quiet.
std::vector<std::int16_t> speechLike(std::int64_t count)
{
    std::vector<std::int16_t> out(std::size_t(count), 0);
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 600);
    for (std::int64_t i = 0; i < count; ++i) {
        const double syllable = std::sin(M_PI * double(i % 2400) / 2400.0);
        const double tone = std::sin(2 * M_PI * (150 + double((i / 2400) % 7) * 20) * double(i) / kRate);
        out[std::size_t(i)] = std::int16_t(std::clamp(12000 * syllable * tone + noise(random), -32768.0, 32767.0));
    }
    return out;
}

double percentile(std::vector<double> values, double p)
{
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, std::size_t(p * double(values.size())))];
}

struct Figures {
    double buildRate = 0; // samples per second
    double summaryShare = 0; // summary bytes / sample bytes
    double allP50 = 0, allP95 = 0, secondP50 = 0, secondP95 = 0; // milliseconds
    double queryP50 = 0; // the summary's part of a "zoom all" frame, in milliseconds
};

std::vector<double> drawFrames(const WaveScene& scene, WaveViewport& view, int frames, bool oneSecond)
{
    QImage image(1600, 200, QImage::Format_RGB32);
    view.setWidth(waveArea(image.rect()).width());
    std::mt19937 random(2);
    std::uniform_int_distribution<std::int64_t> start(0, std::max<std::int64_t>(view.sampleCount() - kRate, 0));
    std::vector<double> times;
    for (int i = 0; i < frames; ++i) {
        if (oneSecond) {
            const std::int64_t from = start(random);
            view.zoomTo(from, from + kRate);
        } else {
            view.zoomAll();
        }
        const auto begin = Clock::now();
        QPainter painter(&image);
        paintWave(painter, image.rect(), scene);
        painter.end();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
    return times;
}

Figures measure(const std::filesystem::path& folder, std::int64_t seconds, int frames)
{
    const std::filesystem::path file = folder / ("wave-" + std::to_string(seconds) + "s.wav");
    if (!writeWav16(file, speechLike(seconds * kRate), kRate)) {
        std::fprintf(stderr, "cannot write %s\n", file.c_str());
        std::exit(1);
    }
    WaveFile wave;
    if (!wave.load(file)) {
        std::fprintf(stderr, "%s\n", wave.error().c_str());
        std::exit(1);
    }
    std::filesystem::remove(file);
    const std::vector<std::int16_t> samples = wave.takeSamples();

    Figures f;
    const auto begin = Clock::now();
    const WaveSummary summary(samples);
    f.buildRate = double(samples.size()) / std::chrono::duration<double>(Clock::now() - begin).count();
    f.summaryShare = double(summary.bytes()) / double(samples.size() * sizeof(std::int16_t));

    WaveViewport view;
    view.setSampleCount(std::int64_t(samples.size()));
    WaveScene scene;
    scene.summary = &summary;
    scene.samples = samples;
    scene.sampleRate = kRate;
    scene.viewport = &view;
    const std::vector<double> all = drawFrames(scene, view, frames, false);
    const std::vector<double> second = drawFrames(scene, view, frames, true);
    std::vector<double> queries;
    for (int i = 0; i < frames; ++i) {
        const auto start = Clock::now();
        const std::vector<SampleRange> columns = summary.columns(0, std::int64_t(samples.size()), view.width());
        queries.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        if (columns.empty())
            std::exit(1);
    }
    f.queryP50 = percentile(queries, 0.5);
    f.allP50 = percentile(all, 0.5);
    f.allP95 = percentile(all, 0.95);
    f.secondP50 = percentile(second, 0.5);
    f.secondP95 = percentile(second, 0.95);
    return f;
}

void print(const char* name, const Figures& f)
{
    std::printf("%-9s summary build %7.1f Msamples/s  summary %5.1f %% of the samples  "
                "zoom all p50 %6.2f ms p95 %6.2f ms (summary %5.3f ms)  1 s view p50 %6.2f ms p95 %6.2f ms\n",
                name, f.buildRate / 1e6, 100 * f.summaryShare, f.allP50, f.allP95, f.queryP50, f.secondP50,
                f.secondP95);
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const int frames = argc > 1 ? std::max(5, std::atoi(argv[1])) : 60;
    const std::filesystem::path folder = std::filesystem::temp_directory_path();

    const Figures minute = measure(folder, 60, frames);
    print("1 minute", minute);
    const Figures hours = measure(folder, 4 * 3600, frames);
    print("4 hours", hours);
    std::printf("frame time 4 hours / 1 minute (p50): zoom all %.2f, 1 s view %.2f\n", hours.allP50 / minute.allP50,
                hours.secondP50 / minute.secondP50);
    return 0;
}
