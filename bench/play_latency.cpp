// How long from a play command to the first sample reaching the audio device,
// through the real PC player plug-in over SDL's audio. The device is SDL's
// "disk" driver unless SDL_AUDIODRIVER says otherwise, so the figure is the
// program's and the plug-in's own cost (loading the file, opening the device,
// the first callback), not a sound card's.
//
//     play_latency [RUNS]   (default 30)
//
// Prints the median and 95th percentile in milliseconds, and their ratio to
// the period of one device buffer (1024 samples at 8 kHz, 128 ms): below 1
// means the first sound leaves before one buffer's worth of time has passed.
#include "common/recording_port.h"
#include "host/pc_player_host.h"
#include "wave/wave_file.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

using namespace kestrelon;
using Clock = std::chrono::steady_clock;

int main(int argc, char** argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
    setenv("SDL_AUDIODRIVER", "disk", 0);
    const auto folder = std::filesystem::temp_directory_path() / "kestrelon-play-latency";
    std::filesystem::create_directories(folder);
    setenv("SDL_DISKAUDIOFILE", (folder / "device.raw").string().c_str(), 0);

    // One second of a tone, as a short prompt would be.
    std::vector<std::int16_t> samples(8000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(8000 * std::sin(2 * M_PI * 440 * double(i) / 8000));
    const auto wave = folder / "prompt.wav";
    if (!writeWav16(wave, samples, 8000))
        return 1;

    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; });
    PcPlayerHost host(port);
    if (!host.load(KESTRELON_PC_PLAYER))
        return 1;
    std::atomic<bool> heard{false};
    host.onNotified = [&] { heard = true; };

    std::vector<double> ms;
    for (int run = 0; run < runs; ++run) {
        heard = false;
        const auto start = Clock::now();
        // From a view, the player reports the very first buffer it hands out.
        if (!host.play(wave, true))
            return 1;
        while (!heard)
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        host.stop();
    }
    std::sort(ms.begin(), ms.end());
    const double median = ms[ms.size() / 2];
    const double p95 = ms[std::min(ms.size() - 1, ms.size() * 95 / 100)];
    const double period = 1024.0 / 8000.0 * 1000.0;
    std::printf("play to first sample at the device, %d runs: median %.2f ms, p95 %.2f ms\n", runs, median, p95);
    std::printf("ratio to one device buffer (%.0f ms): median %.3f, p95 %.3f\n", period, median / period, p95 / period);
    std::filesystem::remove_all(folder);
    return 0;
}
