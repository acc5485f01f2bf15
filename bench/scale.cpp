// scale: what a row costs as a project grows. For projects of N sources (by
// default 100, 1,000 and 10,000 copies of a 0.1 s prompt), the built
// kestrelon-cli runs Add Encode Data (IMA ADPCM), Encode and Decode over every
// row, and the CPU time of each whole command (user + system, from the
// system's accounting of the child) is divided by N. A cost that does not grow
// with the project gives a ratio largest/smallest near 1. The rows run one at
// a time here (--jobs 1), so that the ratio measures the engine alone.
//
// Then the same batch of real speech (100 copies of a 3 s recording, Codec2
// with decoding and its measures) is encoded with --jobs 1 and --jobs 2, and
// the wall times and their ratio are printed: the speed-up of rows run at once.
//
// Last, the whole road of those 100 recordings (a new project, the files
// added, encoded, decoded with their quality measures, exported) against the
// codec alone: the same plug-in loaded in this process, encoding and decoding
// each file on plain files.
//
//     scale [N...]
//
// The projects lie in the system's temporary folder (TMPDIR) and are removed.
#include "common/paths.h"
#include "common/recording_port.h"
#include "host/codec_host.h"
#include "host/host_windows.h"
#include "wave/wave_file.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const fs::path kCli = KESTRELON_CLI;

// Runs the CLI with `words`, its output thrown away; the child's CPU seconds.
double cpuOf(const std::vector<std::string>& words)
{
    const pid_t child = ::fork();
    if (child == 0) {
        std::vector<char*> argv{const_cast<char*>(kCli.c_str())};
        for (const std::string& word : words)
            argv.push_back(const_cast<char*>(word.c_str()));
        argv.push_back(nullptr);
        if (std::freopen("/dev/null", "w", stdout) == nullptr || std::freopen("/dev/null", "w", stderr) == nullptr)
            ::_exit(127);
        ::execv(kCli.c_str(), argv.data());
        ::_exit(127);
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "kestrelon-cli %s ... failed\n", words.empty() ? "" : words[0].c_str());
        std::exit(1);
    }
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Wall seconds of a run.
double wallOf(const std::vector<std::string>& words)
{
    const auto start = std::chrono::steady_clock::now();
    cpuOf(words);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

constexpr int kSpeechRows = 100;

// Encodes and decodes each wave with the Codec2 plug-in at 1200 bit/s, loaded
// for each call as the engine loads it; the wall seconds.
double codecAlone(const std::vector<fs::path>& waves, const fs::path& scratch)
{
    const fs::path program = KESTRELON_PROGRAM_DIR;
    const fs::path library = program / "Algorithms" / ("Codec2" + std::string(kestrelon::librarySuffix()));
    kestrelon::RecordingPort port(
        [](std::string_view, kestrelon::Buttons, std::string_view) { return kestrelon::Answer::No; });
    kestrelon::MainHostWindow window;
    kestrelon::CodecHost host(program, port, window);
    kestrelon::ProgressBarWindow bar(port);
    kestrelon::ProgressTextWindow text(port);
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < waves.size(); ++i) {
        const fs::path encoded = scratch / ("d" + std::to_string(i) + ".c2");
        const fs::path decoded = scratch / ("d" + std::to_string(i) + ".wav");
        bool ok = host.loadAlgorithmPath(library, "1200") && host.setEventFile({}) &&
                  host.encode(waves[i], encoded, bar.window(), text.window());
        host.releaseAlgorithm();
        ok =
            ok && host.loadAlgorithmPath(library, "1200") && host.decode(encoded, decoded, bar.window(), text.window());
        host.releaseAlgorithm();
        if (!ok) {
            std::fprintf(stderr, "the codec alone failed on %s\n", waves[i].c_str());
            std::exit(1);
        }
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The whole road through kestrelon-cli, in wall seconds.
double road(const fs::path& folder, const std::vector<fs::path>& waves, int jobs)
{
    const auto start = std::chrono::steady_clock::now();
    const std::string ptp = (folder / "Road" / "Road.ptp").string();
    const std::string jobsText = std::to_string(jobs);
    fs::create_directories(folder / "out");
    cpuOf({"project", "new", folder.string(), "Road"});
    std::vector<std::string> add = {"project", "add-files", ptp};
    for (const fs::path& wave : waves)
        add.push_back(wave.string());
    cpuOf(add);
    cpuOf({"project", "add-encode", ptp, "--body", "KS-1 Voice", "--algo", "Codec2", "--rate", "1200", "--jobs",
           jobsText});
    cpuOf({"project", "decode", ptp, "--jobs", jobsText});
    cpuOf({"project", "export", ptp, "--out", (folder / "out").string()});
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::max(1, std::atoi(argv[i])));
    if (sizes.empty())
        sizes = {100, 1000, 10000};

    const fs::path root = fs::temp_directory_path() / ("kestrelon-scale-" + std::to_string(::getpid()));
    fs::create_directories(root / "waves");
    std::vector<std::int16_t> prompt(800);
    for (std::size_t i = 0; i < prompt.size(); ++i)
        prompt[i] = std::int16_t(6000 * std::sin(0.2 * double(i)));

    std::map<std::string, std::map<int, double>> perRow; // step -> N -> ms per row
    for (const int n : sizes) {
        std::vector<std::string> add = {"project", "add-files",
                                        (root / std::to_string(n) / "Scale" / "Scale.ptp").string()};
        for (int i = 0; i < n; ++i) {
            const fs::path wave = root / "waves" / ("p" + std::to_string(i) + ".wav");
            if (!fs::exists(wave) && !kestrelon::writeWav16(wave, prompt, 8000))
                return 1;
            add.push_back(wave.string());
        }
        const std::string ptp = add[2];
        fs::create_directories(root / std::to_string(n));
        cpuOf({"project", "new", (root / std::to_string(n)).string(), "Scale"});
        cpuOf(add);
        perRow["add-encode"][n] = 1000 *
                                  cpuOf({"project", "add-encode", ptp, "--body", "KS-1 Voice", "--algo", "ImaAdpcm",
                                         "--rate", "32000", "--jobs", "1"}) /
                                  n;
        perRow["encode"][n] = 1000 * cpuOf({"project", "encode", ptp, "--jobs", "1"}) / n;
        perRow["decode"][n] = 1000 * cpuOf({"project", "decode", ptp, "--jobs", "1"}) / n;
        fs::remove_all(root / std::to_string(n));
    }

    // Rows at once: the same speech batch with one job and with two.
    const fs::path speech = "/usr/share/codec2/wav/hts1a.wav";
    std::vector<std::string> add = {"project", "add-files", (root / "jobs" / "Jobs" / "Jobs.ptp").string()};
    for (int i = 0; i < kSpeechRows; ++i) {
        const fs::path copy = root / "speech" / ("s" + std::to_string(i) + ".wav");
        fs::create_directories(copy.parent_path());
        fs::copy_file(speech, copy, fs::copy_options::overwrite_existing);
        add.push_back(copy.string());
    }
    const std::string jobsPtp = add[2];
    fs::create_directories(root / "jobs");
    cpuOf({"project", "new", (root / "jobs").string(), "Jobs"});
    cpuOf(add);
    cpuOf({"project", "add-encode", jobsPtp, "--body", "KS-1 Voice", "--algo", "Codec2", "--rate", "1200", "--jobs",
           "1"});
    std::map<int, double> wall;
    for (int round = 0; round < 2; ++round)
        for (const int jobs : {1, 2}) {
            const double seconds = wallOf({"project", "encode", jobsPtp, "--decode", "--jobs", std::to_string(jobs)});
            wall[jobs] = round == 0 ? seconds : std::min(wall[jobs], seconds);
        }

    // The whole road against the codec alone, best of two each.
    const std::vector<fs::path> speechWaves(add.begin() + 3, add.end());
    std::map<int, double> roads;
    double alone = 0;
    for (int round = 0; round < 2; ++round) {
        for (const int jobs : {1, 2}) {
            const fs::path folder = root / ("road" + std::to_string(round) + "-" + std::to_string(jobs));
            const double seconds = road(folder, speechWaves, jobs);
            roads[jobs] = round == 0 ? seconds : std::min(roads[jobs], seconds);
            fs::remove_all(folder);
        }
        fs::create_directories(root / "alone");
        const double seconds = codecAlone(speechWaves, root / "alone");
        alone = round == 0 ? seconds : std::min(alone, seconds);
        fs::remove_all(root / "alone");
    }
    fs::remove_all(root);

    std::printf("%-11s", "CPU ms/row");
    for (const int n : sizes)
        std::printf(" %10d", n);
    std::printf("   largest/smallest\n");
    for (const auto& [step, byN] : perRow) {
        std::printf("%-11s", step.c_str());
        for (const int n : sizes)
            std::printf(" %10.3f", byN.at(n));
        std::printf("   %6.2f\n", byN.at(sizes.back()) / byN.at(sizes.front()));
    }
    std::printf("\nencode --decode of %d rows of 3 s speech (Codec2 1200), best of two, wall seconds:\n", kSpeechRows);
    std::printf("--jobs 1 %8.2f\n--jobs 2 %8.2f   speed-up %.2f\n", wall[1], wall[2], wall[1] / wall[2]);
    std::printf("\nthe whole road (new, add, add-encode, decode with quality, export) of the same %d files,\n"
                "against Codec2 1200 encoding and decoding them alone in one process, best of two, wall seconds:\n",
                kSpeechRows);
    std::printf("codec alone      %8.2f\n", alone);
    for (const int jobs : {1, 2})
        std::printf("road, --jobs %d  %8.2f   ratio %.2f\n", jobs, roads[jobs], roads[jobs] / alone);
    return 0;
}
