// The Files tree's commands of the built kestrelon-cli on a real project
// folder: each opens the project, works, saves and closes.
#include "cli_run.h"
#include "common/folder_lock.h"
#include "common/messages.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace kestrelon;
using namespace kestrelon::test;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";

class WorkspaceCommandsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(runCli({"project", "new", temp.path().string(), "Demo"}, scratch.path()).exitCode, 0);
        fs::create_directories(temp / "chosen");
        fs::create_directories(temp / "other");
        fs::copy_file(kSpeech / "hts1a.wav", temp / "chosen" / "a.wav");
        fs::copy_file(kSpeech / "cross.wav", temp / "chosen" / "b.wav");
        fs::copy_file(kSpeech / "f2400.wav", temp / "other" / "a.wav");
    }

    // One command line with --json; `answer` is the global --yes, --no or --cancel.
    JsonRun run(std::vector<std::string> words, const std::string& answer = "--no")
    {
        words.insert(words.begin(), answer);
        return runJson(words, scratch.path());
    }

    std::string ptp() const { return (temp / "Demo" / "Demo.ptp").string(); }
    fs::path files() const { return temp / "Demo" / "Files"; }

    TempDir scratch;
    TempDir temp;
};

} // namespace

TEST_F(WorkspaceCommandsTest, AddFolderAndFilesAreSavedAndDuplicatesFollowTheTwoRules)
{
    ASSERT_EQ(run({"project", "add-folder", ptp(), "Voices"}).exitCode, 0);
    ASSERT_EQ(run({"project", "add-folder", ptp(), "Sub", "--parent", "Voices"}).exitCode, 0);
    const JsonRun added = run({"project", "add-files", ptp(), "--folder", "Sub", (temp / "chosen" / "a.wav").string(),
                               (temp / "chosen" / "b.wav").string()});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    const Json& voices = added.answer["files"][0];
    EXPECT_EQ(voices["flags"], 0x4003);
    EXPECT_EQ(voices["children"][0]["children"][1]["name"], "Files\\b.wav");
    const std::string saved = readBytes(ptp());
    EXPECT_NE(saved.find("SOURCE=Files\\b.wav"), std::string::npos);

    const JsonRun elsewhere = run({"project", "add-files", ptp(), (temp / "other" / "a.wav").string()});
    EXPECT_EQ(elsewhere.exitCode, 1);
    EXPECT_EQ(elsewhere.answer["added"][0]["outcome"], "refused");
    EXPECT_EQ(readBytes(ptp()), saved);

    const std::vector<std::string> overwrite = {"project",  "add-files", ptp(),
                                                "--folder", "Sub",       (temp / "other" / "a.wav").string()};
    const JsonRun no = run(overwrite);
    EXPECT_EQ(no.exitCode, 0);
    EXPECT_EQ(no.answer["messages"][0]["answer"], "no");
    EXPECT_EQ(readBytes(files() / "a.wav"), readBytes(kSpeech / "hts1a.wav"));
    const JsonRun yes = run(overwrite, "--yes");
    EXPECT_EQ(yes.answer["added"][0]["outcome"], "overwritten");
    EXPECT_EQ(readBytes(files() / "a.wav"), readBytes(kSpeech / "f2400.wav")); // saved: the new copy stays
    EXPECT_EQ(readBytes(ptp()), saved); // still one item

    const JsonRun empty = run({"project", "add-folder", ptp(), ""});
    EXPECT_EQ(empty.exitCode, 1);
    EXPECT_EQ(run({"project", "add-files", ptp(), "notes.txt"}).exitCode, 2);
}

TEST_F(WorkspaceCommandsTest, DeleteAndRenameNameItemsByIdAndRefuseUnknownIds)
{
    run({"project", "add-folder", ptp(), "Voices"});
    run({"project", "add-files", ptp(), "--folder", "Voices", (temp / "chosen" / "a.wav").string(),
         (temp / "chosen" / "b.wav").string()});
    const std::string saved = readBytes(ptp());

    const JsonRun unknown = run({"project", "delete-files", ptp(), "a.wav", "nothing.wav"}, "--yes");
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.answer["error"], "no item with id nothing.wav");
    EXPECT_NE(unknown.err.find("no item with id nothing.wav"), std::string::npos);
    EXPECT_TRUE(unknown.answer["messages"].empty());
    EXPECT_EQ(run({"project", "delete-files", ptp(), "Voices"}, "--yes").answer["error"], "Voices is not a file");
    EXPECT_EQ(readBytes(ptp()), saved);

    const JsonRun declined = run({"project", "delete-files", ptp(), "a.wav", "b.wav"});
    EXPECT_EQ(declined.exitCode, 0);
    EXPECT_EQ(declined.text(0), msg::kDeleteSelectedItems); // both ids were selected
    EXPECT_EQ(declined.answer["outcome"], "declined");
    EXPECT_EQ(readBytes(ptp()), saved);

    const JsonRun deleted = run({"project", "delete-files", ptp(), "a.wav"}, "--yes");
    EXPECT_EQ(deleted.text(0), std::string(msg::kDeleteItemPrefix) + "\"a.wav\"?");
    EXPECT_FALSE(fs::exists(files() / "a.wav")); // the Save emptied the deletion list
    EXPECT_TRUE(fs::exists(files() / "b.wav"));

    const JsonRun renamed = run({"project", "rename-folder", ptp(), "Voices", "Greetings"});
    EXPECT_EQ(renamed.exitCode, 0);
    EXPECT_EQ(renamed.answer["files"][0]["id"], "Greetings");
    const JsonRun invalid = run({"project", "rename-folder", ptp(), "Greetings", "a|b"});
    EXPECT_EQ(invalid.exitCode, 1);

    const JsonRun folder = run({"project", "delete-folder", ptp(), "Greetings"}, "--yes");
    EXPECT_TRUE(folder.answer["files"].empty());
    EXPECT_FALSE(fs::exists(files() / "b.wav"));
    EXPECT_EQ(run({"project", "delete-all", ptp()}, "--yes").answer["outcome"], "nothing");
}

TEST_F(WorkspaceCommandsTest, AProjectAnotherProgramHoldsIsRefusedAndLeftAlone)
{
    const std::string before = readBytes(ptp());
    FolderLock other;
    ASSERT_EQ(other.take(temp / "Demo"), FolderLock::Outcome::Taken);
    const JsonRun refused = run({"project", "add-folder", ptp(), "Voices"});
    EXPECT_EQ(refused.exitCode, 1);
    ASSERT_FALSE(refused.answer["messages"].empty());
    char host[256] = {};
    ::gethostname(host, sizeof host - 1);
    EXPECT_EQ(refused.text(0), std::string(msg::kProjectInUsePrefix) + "tests_cli (process " +
                                   std::to_string(::getpid()) + " on " + host + ")" +
                                   std::string(msg::kProjectInUseSuffix));
    EXPECT_EQ(readBytes(ptp()), before);
    EXPECT_FALSE(fs::exists(temp / "Demo" / "Temp"));

    other.release();
    EXPECT_EQ(run({"project", "add-folder", ptp(), "Voices"}).exitCode, 0);
}
