// A sentence played on the PC from the command line, through the real PC
// player over SDL's disk device: what cannot play asks whether to go on, the
// last entry only says why, and the decoded mode wants every entry decoded.
#include "cli_run.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";

class SentencePlay : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("SDL_AUDIODRIVER", "disk", 1);
        setenv("SDL_DISKAUDIOFILE", (temp / "device.raw").c_str(), 1);
        setenv("SDL_DISKAUDIODELAY", "0", 1);
        ASSERT_EQ(run({"project", "new", temp.path().string(), "Say"}).exitCode, 0);
        ASSERT_EQ(
            run({"project", "add-files", ptp(), (kSpeech / "hts1a.wav").string(), (kSpeech / "hts2a.wav").string()})
                .exitCode,
            0);
        ASSERT_EQ(
            run({"--yes", "project", "add-encode", ptp(), "--body", "KS-1 Voice", "--algo", "Pcm", "--rate", "128000"})
                .exitCode,
            0);
    }
    void TearDown() override { unsetenv("SDL_AUDIODRIVER"); }

    JsonRun run(const std::vector<std::string>& words) { return runJson(words, scratch.path()); }
    std::string ptp() const { return (temp / "Say" / "Say.ptp").string(); }
    fs::path source(const std::string& name) const { return temp / "Say" / "Files" / name; }

    TempDir scratch;
    TempDir temp;
};

} // namespace

TEST_F(SentencePlay, AnEntryThatCannotPlayAsksToGoOnAndTheLastOnlySaysWhy)
{
    // Rows 0 and 1: hts1a and hts2a with Pcm.
    ASSERT_EQ(run({"playlist", "add", ptp(), "--rows", "0,1,0"}).exitCode, 0);
    ASSERT_EQ(run({"project", "list", ptp()}).answer["rows"][1]["fileName"], "hts2a.wav");

    // A source that is no longer a wave: go on, and the sentence ends whole.
    const std::string kept = readBytes(source("hts2a.wav"));
    writeBytes(source("hts2a.wav"), "not a wave at all");
    JsonRun played = run({"--yes", "playlist", "play", ptp(), "--mode", "original"});
    EXPECT_EQ(played.exitCode, 0) << played.err;
    EXPECT_EQ(played.answer["played"], 2);
    ASSERT_EQ(played.answer["messages"].size(), 1u);
    EXPECT_EQ(played.text(0), "Can't open hts2a.wav! Do you want to play next?");

    // A missing source, answered No: the sentence ends there.
    fs::remove(source("hts2a.wav"));
    played = run({"--no", "playlist", "play", ptp(), "--mode", "original"});
    EXPECT_EQ(played.exitCode, 1);
    EXPECT_EQ(played.answer["played"], 1);
    EXPECT_EQ(played.answer["messages"].back()["text"],
              "hts2a.wav doesn't exist in project folder!\nDo you want to play next?");
    EXPECT_EQ(played.answer["messages"].back()["answer"], "no");

    // The last entry has no next: it says why and asks nothing.
    ASSERT_EQ(run({"playlist", "remove", ptp(), "--entries", "2"}).exitCode, 0);
    played = run({"--no", "playlist", "play", ptp(), "--mode", "original"});
    EXPECT_EQ(played.answer["played"], 1);
    EXPECT_EQ(played.answer["messages"].back()["text"], "hts2a.wav doesn't exist in project folder!");
    EXPECT_FALSE(played.answer["messages"].back().contains("answer"));
    writeBytes(source("hts2a.wav"), kept);

    // Nothing was decoded: the decoded mode plays nothing and says why.
    played = run({"playlist", "play", ptp(), "--mode", "decoded"});
    EXPECT_EQ(played.exitCode, 1);
    EXPECT_EQ(played.answer["played"], 0);
    EXPECT_EQ(played.text(0), "Not found decode file(s)!");
}
