// open_project: how long the workbench takes to open a project and paint it,
// for projects of 100, 1,000 and 10,000 sources of three rows each (a product
// line's prompts in groups of 100). Each run opens the project in a real main
// window (offscreen unless QT_QPA_PLATFORM says otherwise) and stops the clock
// once the window has been drawn; the best of three runs is printed.
//
// Then, in the open project, one undoable edit (Delete Files of one source),
// its Undo, and for scale the window's own Refresh (Ctrl+R) of the same
// project: an edit keeps the project's state before and after it, so its cost
// is set beside what redrawing the views already costs.
//
//     open_project [N...]
#include "app/main_window.h"
#include "app/workspace_bar.h"
#include "bodies/body_settings.h"
#include "common/platform.h"
#include "common/recording_port.h"
#include "project/workspace_tree.h"
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
    if (!fs::exists(wave))
        writeWav16(wave, std::vector<std::int16_t>(800, 100), 8000);
    std::string text = "# Begin Project\n\n# Begin Files\n";
    for (int i = 0; i < sources; ++i) {
        if (i % kGroupSize == 0) {
            if (i > 0)
                text += "# End Group\n";
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
    if (sources > 0)
        text += "# End Group\n";
    text += "# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n# End Project\n";
    std::ofstream(folder / "P.ptp", std::ios::binary) << text;
    return folder / "P.ptp";
}

template <typename F>
double timed(F&& work)
{
    const auto start = Clock::now();
    work();
    QApplication::processEvents();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::max(1, std::atoi(argv[i])));
    if (sizes.empty())
        sizes = {100, 1000, 10000};

    const fs::path root = fs::temp_directory_path() / ("kestrelon-open-" + std::to_string(::getpid()));
    fs::create_directories(root);
    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::No; });
    const fs::path program = executableFolder().parent_path() / "bin";
    BodySettings bodies;
    bodies.load(program / "KestrelonBodySetting.dat", program, port);

    std::printf("%8s %12s %14s %12s %12s %12s %14s\n", "sources", "open+paint", "ms per source", "refresh", "delete 1",
                "undo", "delete/refresh");
    for (const int n : sizes) {
        const fs::path ptp = makeProject(root, n);
        double best = 1e9, refresh = 0, edit = 0, undo = 0;
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
            if (run == 0) {
                refresh = timed([&] { frame.runCommand(cmd::kRefreshKey); });
                frame.workspaceBar()->selectItems(frame.workspaceTree()->itemsWithId("p0.wav"));
                port.setPolicy([](std::string_view, Buttons, std::string_view) { return Answer::Yes; });
                edit = timed([&] { frame.runCommand(cmd::kDeleteFiles); });
                undo = timed([&] { frame.runCommand(cmd::kUndo); });
                port.setPolicy([](std::string_view, Buttons, std::string_view) { return Answer::No; });
            }
            frame.runCommand(cmd::kCloseProject);
        }
        std::printf("%8d %10.1f ms %14.4f %9.1f ms %9.1f ms %9.1f ms %14.2f\n", n, best, best / n, refresh, edit, undo,
                    edit / refresh);
    }
    fs::remove_all(root);
    return 0;
}
