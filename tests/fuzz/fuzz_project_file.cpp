// Reads arbitrary bytes as a project file, saves what was read, and reads the
// saved file back. A crash, a hang, a failed re-read, or a saved file that does
// not reproduce itself is a finding.
#include "common/file_io.h"
#include "common/recording_port.h"
#include "project/project_document.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

using namespace kestrelon;

namespace {

const std::filesystem::path& workFolder()
{
    // Never destroyed, so the clean-up at exit can still name it.
    static const std::filesystem::path* folder = [] {
        auto* path = new std::filesystem::path(std::filesystem::temp_directory_path() /
                                               ("kestrelon-fuzz-project-" + std::to_string(std::random_device{}())));
        std::filesystem::create_directories(*path / "Files");
        // One wave that exists, so both branches of the missing-file check run.
        writeFileAtomically(*path / "Files" / "here.wav", "RIFF");
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(workFolder(), ignored);
        });
        return path;
    }();
    return *folder;
}

void check(bool condition)
{
    if (!condition)
        std::abort();
}

// Saves `doc` as the top-level tree a save flow would write, then reads it back.
std::string saveAndReopen(ProjectDocument& doc, ProjectDocument& reread, const std::filesystem::path& path)
{
    doc.rebuildFilesList();
    check(doc.save(path));
    RecordingPort keep([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; });
    check(reread.open(path, keep));
    const ReadResult saved = readFile(path);
    check(saved.status == ReadStatus::Ok);
    return saved.bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::filesystem::path& folder = workFolder();
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);

    int questions = 0;
    RecordingPort alternate([&questions](std::string_view, Buttons buttons, std::string_view) {
        return answerFor(questions++ % 2 == 0 ? Answer::Ok : Answer::Cancel, buttons);
    });
    ProjectDocument first;
    first.openBytes(bytes, folder / "input.ptp", alternate);

    // The first two rounds normalise what the input held (cut lines, items
    // whose flags keep them out of the file, CR before a line end); from then
    // on a save reproduces itself, except where a name keeps a ".\" prefix or
    // a value ends in CR, which each read takes one more layer off.
    ProjectDocument second, third, fourth;
    saveAndReopen(first, second, folder / "a.ptp");
    const std::string b = saveAndReopen(second, third, folder / "b.ptp");
    const std::string c = saveAndReopen(third, fourth, folder / "c.ptp");
    const std::string crEol = "\r" + std::string(kNativeEol);
    const std::string dotPrefix = std::string(kNativeEol) + "SOURCE=.\\";
    if (b.find(crEol) == std::string::npos && b.find(dotPrefix) == std::string::npos)
        check(b == c);
    return 0;
}
