// The board protocol over a noisy line: a play list of about 10,000 data
// frames sent with the board player's own sender to kestrelon-board-sim on a
// pseudo-terminal, which flips bits in both directions. Counts the frames
// sent, those sent again, and the items the board kept wrongly or not at all.
// Only the last two must be 0; resends are what noise costs.
//
//     board_line [FRAME_DAMAGE=0.01] [DATA_FRAMES=10000] [SEED=1]
//
// FRAME_DAMAGE is the chance that a full data frame is hit: each byte is hit
// with the chance that gives it. The simulator runs unpaced (--fast).
#include "protocol.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using namespace kestrelon::board;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kItemBytes = 250 * kDataChunk; // 250 data frames an item
constexpr double kDataFrameBytes = 2 + 1 + 1 + 2 + 6 + kDataChunk + 2;

pid_t startSimulator(const std::vector<std::string>& words)
{
    int ready[2];
    if (::pipe(ready) != 0)
        return -1;
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(ready[1], STDOUT_FILENO);
        std::vector<char*> argv;
        for (const std::string& word : words)
            argv.push_back(const_cast<char*>(word.c_str()));
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(ready[1]);
    char line[256];
    const bool started = ::read(ready[0], line, sizeof line) > 0; // the device, once the link is made
    ::close(ready[0]);
    return started ? pid : -1;
}

std::string readAll(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace

int main(int argc, char** argv)
{
    const double frameDamage = argc > 1 ? std::atof(argv[1]) : 0.01;
    const long dataFrames = argc > 2 ? std::atol(argv[2]) : 10000;
    const std::string seed = argc > 3 ? argv[3] : "1";
    const double byteDamage = 1 - std::pow(1 - frameDamage, 1 / kDataFrameBytes);

    const fs::path folder = fs::temp_directory_path() / ("kestrelon-board-line-" + std::to_string(::getpid()));
    fs::create_directories(folder / "record");
    const fs::path link = folder / "board";
    const pid_t simulator =
        startSimulator({KESTRELON_BOARD_SIM, "--fast", "--link", link.string(), "--record",
                        (folder / "record").string(), "--corrupt-rate", std::to_string(byteDamage), "--seed", seed});
    if (simulator < 0) {
        std::fprintf(stderr, "board_line: the simulator did not start\n");
        return 1;
    }

    std::vector<ListItem> items(std::size_t((dataFrames + 249) / 250));
    unsigned state = 12345;
    for (ListItem& item : items) {
        item.sampleRate = 8000;
        item.data.resize(kItemBytes);
        for (char& c : item.data)
            c = char((state = state * 1103515245u + 12345u) >> 16);
    }

    const int fd = openSerialPort(link.string(), 115200);
    if (fd < 0) {
        std::fprintf(stderr, "board_line: cannot open %s\n", link.c_str());
        return 1;
    }
    Line line(fd);
    HostLink host(line);
    const auto start = std::chrono::steady_clock::now();
    const SendEnd end = sendPlayList(
        host, items, SendHooks{[] { return false; }, [] { return false; }, [](std::int16_t, std::uint32_t) {}});
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ::close(fd);
    ::kill(simulator, SIGTERM);
    ::waitpid(simulator, nullptr, 0);

    int wrong = 0, missing = 0;
    for (std::size_t k = 0; k < items.size(); ++k) {
        const fs::path kept = folder / "record" / ("item-" + std::to_string(k) + ".bin");
        if (!fs::exists(kept))
            ++missing;
        else if (readAll(kept) != items[k].data)
            ++wrong;
    }
    std::printf("line noise: %.4f%% of bytes (%.2f%% of data frames), both directions\n", byteDamage * 100,
                frameDamage * 100);
    std::printf("items %zu, data frames %ld, frames sent %llu, sent again %llu (%.2f%%)\n", items.size(),
                long(items.size()) * 250, (unsigned long long)host.sent(), (unsigned long long)host.resent(),
                100.0 * double(host.resent()) / double(host.sent()));
    std::printf("ended %s in %.2f s; items kept wrongly %d, not kept %d\n",
                end == SendEnd::AllSent ? "with every item sent" : "without an acknowledgement", seconds, wrong,
                missing);
    fs::remove_all(folder);
    return wrong == 0 && (end != SendEnd::AllSent || missing == 0) ? 0 : 1;
}
