// resampler: the program's own sample-rate converter against libsamplerate's
// sinc converters, on what a converter is for here: speech brought to a
// codec's rate. For each pair of rates it prints
// - pass: the SNR (dB) of a mix of tones up to 75 % of the lower Nyquist
//   frequency against the same tones computed exactly at the output's times;
// - edge: the same for one tone at 89 % of it, where speech still has
//   energy and a converter with a wide transition band starts to cut;
// - stop: how far (dB) a tone 5 % above the output's Nyquist frequency is
//   kept out of the output (aliasing; downsampling only); "> 90" when nothing
//   of it is left in the 16-bit output;
// - speed: millions of input samples a second, best of 5 runs over 60 s.
// Both sides take and give 16-bit samples, as the program's callers do.
// Usage: resampler.
#include "wave/resample.h"

#include <samplerate.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

namespace {

using Samples = std::vector<std::int16_t>;
using Converter = std::function<Samples(const Samples&, int, int)>;

Converter libsamplerate(int type)
{
    return [type](const Samples& in, int inRate, int outRate) {
        std::vector<float> input(in.size());
        src_short_to_float_array(in.data(), input.data(), int(in.size()));
        const double ratio = double(outRate) / inRate;
        std::vector<float> output(std::size_t(std::llround(double(in.size()) * ratio)) + 16);
        SRC_DATA data{};
        data.data_in = input.data();
        data.data_out = output.data();
        data.input_frames = long(input.size());
        data.output_frames = long(output.size());
        data.src_ratio = ratio;
        if (src_simple(&data, type, 1) != 0)
            return Samples();
        output.resize(std::size_t(data.output_frames_gen));
        Samples out(output.size());
        src_float_to_short_array(output.data(), out.data(), int(out.size()));
        return out;
    };
}

// Tones at these frequencies (Hz), each at `amplitude` of full scale, at `rate`.
Samples tones(const std::vector<double>& hz, double amplitude, int rate, double seconds, double delay = 0)
{
    Samples out(std::size_t(seconds * rate));
    for (std::size_t n = 0; n < out.size(); ++n) {
        double v = 0;
        for (double f : hz)
            v += std::sin(2 * std::numbers::pi * f * (double(n) / rate - delay));
        out[n] = std::int16_t(std::lround(32767.0 * amplitude * v / double(hz.size())));
    }
    return out;
}

// The SNR of `got` against `want` over their middle half, after the lag
// (within +-64 samples) that matches them best: converters may delay.
double snrDb(const Samples& got, const Samples& want)
{
    const std::size_t from = want.size() / 4, to = want.size() * 3 / 4;
    double best = -1e9;
    for (int lag = -64; lag <= 64; ++lag) {
        double signal = 0, noise = 0;
        for (std::size_t n = from; n < to; ++n) {
            const long long m = (long long)n + lag;
            if (m < 0 || m >= (long long)got.size())
                continue;
            const double d = double(got[std::size_t(m)]) - want[n];
            signal += double(want[n]) * want[n];
            noise += d * d;
        }
        best = std::max(best, 10 * std::log10(signal / std::max(noise, 1e-9)));
    }
    return best;
}

double rmsOfMiddle(const Samples& s)
{
    double sum = 0;
    const std::size_t from = s.size() / 4, to = s.size() * 3 / 4;
    for (std::size_t n = from; n < to; ++n)
        sum += double(s[n]) * s[n];
    return std::sqrt(sum / double(std::max<std::size_t>(1, to - from)));
}

} // namespace

int main()
{
    const std::vector<std::pair<std::string, Converter>> converters = {
        {"own (Kaiser sinc)", [](const Samples& in, int a, int b) { return kestrelon::resample(in, a, b); }},
        {"libsamplerate fastest", libsamplerate(SRC_SINC_FASTEST)},
        {"libsamplerate medium", libsamplerate(SRC_SINC_MEDIUM_QUALITY)},
        {"libsamplerate best", libsamplerate(SRC_SINC_BEST_QUALITY)},
    };
    const std::vector<std::pair<int, int>> pairs = {{44100, 8000}, {16000, 8000}, {22050, 6000}, {8000, 16000}};
    std::printf("resampler: pass = SNR of tones up to 0.75 of the lower Nyquist (dB), edge = of a tone at 0.89, "
                "stop = an alias kept out (dB), speed = Msamples/s of input\n");
    std::printf("%-22s %13s %7s %7s %7s %8s\n", "converter", "rates", "pass", "edge", "stop", "speed");
    for (const auto& [inRate, outRate] : pairs) {
        const double nyquist = std::min(inRate, outRate) / 2.0;
        const std::vector<double> passTones = {0.07 * nyquist, 0.31 * nyquist, 0.55 * nyquist, 0.75 * nyquist};
        const Samples passIn = tones(passTones, 0.5, inRate, 2.0);
        const Samples passWant = tones(passTones, 0.5, outRate, 2.0);
        const Samples edgeIn = tones({0.89 * nyquist}, 0.5, inRate, 2.0);
        const Samples edgeWant = tones({0.89 * nyquist}, 0.5, outRate, 2.0);
        // Just above the output's Nyquist frequency, where it would fold back.
        const double aliasHz = 1.05 * outRate / 2.0;
        const Samples aliasIn = tones({aliasHz}, 0.5, inRate, 2.0);
        const Samples speech = tones({300, 1100, 2300}, 0.3, inRate, 60.0);
        for (const auto& [name, convert] : converters) {
            const double pass = snrDb(convert(passIn, inRate, outRate), passWant);
            const double edge = snrDb(convert(edgeIn, inRate, outRate), edgeWant);
            std::string stop = "-";
            if (outRate < inRate && aliasHz < inRate / 2.0) {
                const double kept = rmsOfMiddle(convert(aliasIn, inRate, outRate));
                char text[16];
                std::snprintf(text, sizeof text, "%.1f", 20 * std::log10(rmsOfMiddle(aliasIn) / kept));
                stop = kept < 0.5 ? "> 90" : text;
            }
            double fastest = 1e9;
            for (int run = 0; run < 5; ++run) {
                const auto start = std::chrono::steady_clock::now();
                const Samples out = convert(speech, inRate, outRate);
                fastest =
                    std::min(fastest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
                if (out.empty())
                    return 1;
            }
            std::printf("%-22s %6d>%-6d %7.1f %7.1f %7s %8.1f\n", name.c_str(), inRate, outRate, pass, edge,
                        stop.c_str(), double(speech.size()) / fastest / 1e6);
        }
    }
    return 0;
}
