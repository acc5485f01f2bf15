#include "common/messages.h"
#include "playback/play_list_file.h"
#include "playback/project_companions.h"
#include "project/project_session.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using test::readBytes;
using test::writeBytes;
namespace fs = std::filesystem;

namespace {

const std::string kEmptyProject = "# Begin Project\n\n# Begin Files\n# End Files\n\n# End Project\n";

PlayItem entry(std::string key, std::string body, int id)
{
    return {.sourceKey = std::move(key),
            .bodyName = std::move(body),
            .algorithmName = "Adpcm",
            .bitRate = "32000",
            .itemId = id};
}

} // namespace

TEST(ProjectCompanions, TravelWithTheProjectThroughOpenSaveAsAndClose)
{
    test::TempDir temp;
    const fs::path start = fs::current_path();
    const fs::path file = temp / "Speech" / "Speech.ptp";
    writeBytes(file, kEmptyProject);
    ASSERT_TRUE(savePlayList(temp / "Speech" / "Speech.set", {entry("a.wav", "B1", 4), entry("b.wav", "", 5)}));
    fs::create_directories(temp / "Speech" / "Algos");
    ASSERT_TRUE(saveAlgorithmRegistry(temp / "Speech", {{"Adpcm", "Algos\\Adpcm.dll"}}));

    test::ScriptedPort port;
    ProjectCompanionFiles companions(port);
    std::vector<std::string> log;
    companions.setErrorLog([&log](std::string_view text) { log.emplace_back(text); });
    ProjectSession session(port, &companions, nullptr, start);
    ASSERT_TRUE(session.openProject(file));

    // Opened with the project, both files are written beside its new name.
    companions.playList().push_back(entry("c.wav", "B2", 6));
    ASSERT_TRUE(session.saveProjectAs(temp / "Copy" / "Copy.ptp"));
    PlayList written;
    ASSERT_TRUE(loadPlayList(temp / "Copy" / "Copy.set", written, port));
    EXPECT_EQ(written.size(), 2u); // a.wav (b.wav has no body) and c.wav
    std::vector<AlgoRegEntry> registry;
    ASSERT_TRUE(loadAlgorithmRegistry(temp / "Copy", registry, port));
    ASSERT_EQ(registry.size(), 1u);
    EXPECT_EQ(registry[0].path, "Algos\\Adpcm.dll");
    EXPECT_TRUE(log.empty());

    // Failures of the play list reach only the silent log, with the text of the step.
    fs::remove(temp / "Copy" / "Copy.set");
    fs::create_directory(temp / "Copy" / "Copy.set");
    ASSERT_TRUE(session.saveProject());
    fs::create_directories(temp / "Third" / "Third.set");
    ASSERT_TRUE(session.saveProjectAs(temp / "Third" / "Third.ptp"));
    ASSERT_TRUE(session.closeProject());
    EXPECT_TRUE(companions.playList().empty());
    EXPECT_TRUE(companions.algorithms().empty());
    ASSERT_TRUE(session.openProject(temp / "Copy" / "Copy.ptp"));
    EXPECT_TRUE(companions.playList().empty());
    EXPECT_EQ(companions.algorithms().size(), 1u);
    ASSERT_TRUE(session.closeProject());
    EXPECT_EQ(log, (std::vector<std::string>{std::string(msg::kLogSaveProjectFileError),
                                             std::string(msg::kLogSaveSetFileError),
                                             std::string(msg::kLogOpenProjectFileError)}));
    EXPECT_TRUE(port.texts().empty());
    fs::current_path(start);
}
