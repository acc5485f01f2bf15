#include "cli_run.h"
#include "project/folder_snapshot.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

using namespace kestrelon::test;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";

class ProjectCommands : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(work); }

    CliRun run(const std::vector<std::string>& words) { return runCli(words, scratch.path()); }

    TempDir scratch; // the runs' output, kept apart from the folders they work on
    TempDir temp;
    fs::path work = temp / "work";
};

} // namespace

TEST_F(ProjectCommands, NewCreatesASavedProjectThatDumpAndSaveAsShowAlike)
{
    const CliRun created = run({"project", "new", work.string() + "/", "Demo"});
    ASSERT_EQ(created.exitCode, 0) << created.err;
    const fs::path project = work / "Demo" / "Demo.ptp";
    EXPECT_EQ(created.out, "created " + project.string() + "\n");
    EXPECT_EQ(created.err, "");
    EXPECT_FALSE(fs::exists(work / "Demo" / "Temp")); // closed, and kept because it was saved

    const Json dumped = Json::parse(run({"project", "dump", project.string()}).out);
    EXPECT_EQ(dumped["ok"], true);
    EXPECT_EQ(dumped["files"], Json::array());

    // Give it a tree, then carry it elsewhere: the answer holds the tree in
    // the shape `project dump` prints, beside the project's companion files.
    fs::copy_file(kSpeech / "hts1a.wav", work / "Demo" / "Files" / "hts1a.wav");
    writeBytes(project, "# Begin Project\n# Begin Files\n# Begin Group \"Voices\"\nID=Voices\nPARAM=3\n"
                        "# Begin Source File\nSOURCE=Files\\hts1a.wav\nID=hts1a.wav\nPARAM=8\n"
                        "# End Source File\n# End Group\n# End Files\n# End Project\n");
    const CliRun saved = run({"--json", "project", "save-as", project.string(), (work / "Copy" / "Copy").string()});
    ASSERT_EQ(saved.exitCode, 0) << saved.err;
    const Json answer = Json::parse(saved.out);
    EXPECT_EQ(answer["messages"], Json::array());
    EXPECT_EQ(answer["project"], (work / "Copy" / "Copy.ptp").string());
    const Json copyDump = Json::parse(run({"project", "dump", (work / "Copy" / "Copy.ptp").string()}).out);
    EXPECT_EQ(answer["files"], copyDump["files"]);
    ASSERT_EQ(answer["files"].size(), 1u);
    EXPECT_EQ(answer["files"][0]["children"][0]["id"], "hts1a.wav");
    EXPECT_TRUE(fs::exists(work / "Copy" / "Copy.set"));
    EXPECT_TRUE(fs::exists(work / "Copy" / "Algos" / "dllsetinfo.ini"));

    // An existing target is replaced only on --yes.
    const FolderSnapshot before = snapshot(work);
    const CliRun refused = run({"project", "save-as", project.string(), (work / "Copy" / "Copy.ptp").string()});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(snapshot(work), before);
    EXPECT_NE(refused.err.find((work / "Copy" / "Copy.ptp").string() + " already existed , replace it ? [no]"),
              std::string::npos)
        << refused.err;
    EXPECT_EQ(run({"--yes", "project", "save-as", project.string(), (work / "Copy" / "Copy.ptp").string()}).exitCode,
              0);
}

TEST_F(ProjectCommands, NewRefusesWithTheDialogsTextAndTouchesNothing)
{
    const FolderSnapshot before = snapshot(temp.path());
    const CliRun blank = run({"project", "new", work.string(), "Demo "});
    EXPECT_EQ(blank.exitCode, 1);
    EXPECT_EQ(blank.out, "");
    EXPECT_EQ(blank.err, "Invalid characters in the filename have been detected !\n"
                         "kestrelon-cli: project new LOCATION NAME: failed\n");

    const Json empty = Json::parse(run({"--json", "project", "new", "", "Demo"}).out);
    EXPECT_EQ(empty["ok"], false);
    EXPECT_EQ(empty["messages"], Json::parse(R"([{"text": "It is a wrong path !"}])"));
    // A relative location is taken from the folder the command runs in.
    const Json relative = Json::parse(run({"--json", "project", "new", "no-such-folder", "Demo"}).out);
    EXPECT_EQ(relative["messages"], Json::parse(R"([{"text": "Path is not existed!"}])"));
    EXPECT_EQ(snapshot(temp.path()), before);

    const CliRun missing = run({"project", "save-as", (work / "none.ptp").string(), (work / "x.ptp").string()});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.err.substr(0, missing.err.find('\n')), "Project file not found !!");
    EXPECT_EQ(snapshot(temp.path()), before);

    const fs::path start = fs::current_path();
    fs::current_path(work);
    const CliRun here = run({"project", "new", ".", "Here"});
    fs::current_path(start);
    EXPECT_EQ(here.exitCode, 0) << here.err;
    EXPECT_TRUE(fs::is_regular_file(work / "Here" / "Here.ptp"));
}
