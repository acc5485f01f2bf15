// A failure says what failed and, apart from it in the JSON answer, why: the
// program's own text stays as it is, the system's reason comes in "reason".
#include "cli_run.h"
#include "project/folder_snapshot.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <unistd.h>

using namespace kestrelon::test;
using kestrelon::runProgram;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";

class FailureReasons : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!fs::exists(kSpeech / "hts1a.wav"))
            GTEST_SKIP() << "the codec2 sample waves are not installed";
        ASSERT_EQ(runCli({"project", "new", temp.path().string(), "Demo"}, scratch.path()).exitCode, 0);
        ASSERT_EQ(runCli({"project", "add-files", project.string(), (kSpeech / "hts1a.wav").string()}, scratch.path())
                      .exitCode,
                  0);
    }

    TempDir scratch;
    TempDir temp;
    fs::path folder = temp / "Demo";
    fs::path project = folder / "Demo.ptp";
};

TEST_F(FailureReasons, AReadOnlyProjectSaysWhyItDoesNotOpen)
{
    // The folder made read-only: by its permissions for an ordinary user, by a
    // read-only mount in a namespace of its own for root, whom permissions do
    // not stop.
    std::vector<std::string> words{"--json", "project", "list", project.string()};
    fs::path program = KESTRELON_CLI;
    if (::geteuid() != 0) {
        for (const fs::path& entry : {folder / "Files", folder / "Algos", folder})
            fs::permissions(entry, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                            fs::perm_options::remove);
    } else {
        if (runProgram("/usr/bin/unshare", {"-rm", "true"}, scratch / "probe.out", scratch / "probe.err") != 0)
            GTEST_SKIP() << "no user namespaces here to mount the project read-only";
        std::string line = "mount --bind '" + folder.string() + "' '" + folder.string() +
                           "' && mount -o remount,ro,bind '" + folder.string() + "' '" + folder.string() +
                           "' && exec '" + std::string(KESTRELON_CLI) + "'";
        for (const std::string& word : words)
            line += " '" + word + "'";
        words = {"-rm", "sh", "-c", line};
        program = "/usr/bin/unshare";
    }
    const FolderSnapshot before = snapshot(folder);
    const fs::path out = scratch / "run.out";
    const int exitCode = runProgram(program, words, out, scratch / "run.err");
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add);

    EXPECT_EQ(exitCode, 1);
    const auto answer = nlohmann::json::parse(readBytes(out));
    ASSERT_EQ(answer["messages"].size(), 1u) << answer.dump();
    EXPECT_EQ(answer["messages"][0]["text"], "Open project failed !");
    const std::string reason = answer["messages"][0].value("reason", "");
    EXPECT_NE(reason.find((folder / "Temp").string()), std::string::npos) << reason;
    EXPECT_TRUE(reason.find("Read-only file system") != std::string::npos ||
                reason.find("Permission denied") != std::string::npos)
        << reason;
    EXPECT_EQ(snapshot(folder), before);
}

TEST_F(FailureReasons, ASourceThatCannotBeReadIsNamedWithTheReason)
{
    writeBytes(folder / "Files" / "hts1a.wav", "not a wave at all");
    const JsonRun run = runJson(
        {"project", "add-encode", project.string(), "--body", "KS-1 Voice", "--algo", "ImaAdpcm", "--rate", "32000"},
        scratch.path());
    EXPECT_EQ(run.exitCode, 1);
    ASSERT_EQ(run.answer["messages"].size(), 1u) << run.answer.dump();
    EXPECT_EQ(run.text(0), (folder / "Files" / "hts1a.wav").string() + " could not be read, so it was not encoded !");
    EXPECT_NE(run.answer["messages"][0].value("reason", "").find("not a readable wave file"), std::string::npos);
    EXPECT_EQ(run.answer["sources"][0]["encode"], "unreadable");
}

} // namespace
