// open_project: how long the workbench takes to open a project and paint it,
// for projects of 100, 1,000 and 10,000 sources of three rows each (a product
// line's prompts in groups of 100). Each run opens the project in a real main
// window (offscreen unless QT_QPA_PLATFORM says otherwise) and stops the clock
// once the window has been drawn; the best of three runs is printed.
//
//     open_project [N...]
#include "app/main_window.h"
#include "bodies/body_settings.h"
#include "common/platform.h"
#include "common/recording_port.h"
#include "wave/wave_file.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include <unistd.h>

using namespace kestrelon;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kGroupSize = 100;

// N sources in groups of 100, each with three rows, every wave a link to one file.
fs::path makeProject(const fs::path& root, int sources)
{
    const fs::path folder = root / ("P" + std::to_string(sources));
    fs::create_directories(folder / "Files");
    fs::create_directories(folder / "Algos");
    const fs::path wave = root / "prompt.wav";
    if (!fs::exists(wave)) writeWav16(wave, std::vector<std::int16_t>(800, 100), 8000);
    std::string text = "# Begin Project\n\n# Begin Files\n";
    for (int i = 0; i < sources; ++i) {
        if (i % kGroupSize == 0) {
            if (i > 0) text += "# End Group\n";
            text += "# Begin Group \"G" + std::to_string(i / kGroupSize) + "\"\nID=G" + std::to_string(i / kGroupSize) +
                    "\nPARAM=3\n";
        }
        const std::string name = "p" + std::to_string(i) + ".wav";
        fs::create_hard_link(wave, folder / "Files" / name);
        text += "# Begin Source File\nSOURCE=Files\\" + name + "\nID=" + name + "\nPARAM=8\n";
        for (const char* rate : {"32000", "24000", "16000"})
            text += std::string("# Begin EditInfo\nAlgoName=ImaAdpcm\nBodyName=KS-1 Voice\nEncodeName=\nEncodeSize=\n"
                                "RenameEncode=\nDecodeName=\nDecodeSize=\nEncodeBitRate=") +
                    rate + "\nMultiSelect=0\n# End EditInfo\n";
        text += "# End Source File\n";
    }
    if (sources > 0) text += "# End Group\n";
    text += "# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n# End Project\n";
    std::ofstream(folder / "P.ptp", std::ios::binary) << text;
    return folder / "P.ptp";
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i) sizes.push_back(std::max(1, std::atoi(argv[i])));
    if (sizes.empty()) sizes = {100, 1000, 10000};

    const fs::path root = fs::temp_directory_path() / ("kestrelon-open-" + std::to_string(::getpid()));
    fs::create_directories(root);
    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::No; });
    const fs::path program = executableFolder().parent_path() / "bin";
    BodySettings bodies;
    bodies.load(program / "KestrelonBodySetting.dat", program, port);

    std::printf("%8s %12s %14s\n", "sources", "open+paint", "ms per source");
    for (const int n : sizes) {
        const fs::path ptp = makeProject(root, n);
        double best = 1e9;
        for (int run = 0; run < 3; ++run) {
            MainWindow frame(FrameOptions{program, root / "config", &port, nullptr}, &bodies);
            frame.resize(1280, 800);
            frame.show();
            QApplication::processEvents();
            const auto start = Clock::now();
            if (!frame.openProject(ptp)) {
                std::fprintf(stderr, "cannot open %s\n", ptp.c_str());
                return 1;
            }
            QApplication::processEvents();
            frame.grab();
            best = std::min(best, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            frame.runCommand(cmd::kCloseProject);
        }
        std::printf("%8d %10.1f ms %14.4f\n", n, best, best / n);
    }
    fs::remove_all(root);
    return 0;
}
