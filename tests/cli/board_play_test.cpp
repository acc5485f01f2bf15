// Board play end to end: the built kestrelon-cli and BoardPlayer plug-in
// against kestrelon-board-sim on a pseudo-terminal.
#include "cli_run.h"
#include "common/messages.h"
#include "support/board_simulator.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sys/wait.h>
#include <unistd.h>

using namespace kestrelon;
using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";

class BoardPlay : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("KESTRELON_BOARD_PORT0", link.c_str(), 1);
        ASSERT_EQ(run({"project", "new", temp.path().string(), "Board"}).exitCode, 0);
        ASSERT_EQ(run({"project", "add-files", ptp(), (kSpeech / "hts1a.wav").string()}).exitCode, 0);
        for (const auto& [algorithm, rate] : std::vector<std::pair<std::string, std::string>>{
                 {"ImaAdpcm", "32000"}, {"MuLaw", "64000"}, {"Pcm", "128000"}, {"Codec2", "3200"}, {"Speex", "8000"}})
            ASSERT_EQ(run({"--yes", "project", "add-encode", ptp(), "--body", "KS-1 Voice", "--algo", algorithm,
                           "--rate", rate})
                          .exitCode,
                      0);
    }
    void TearDown() override { unsetenv("KESTRELON_BOARD_PORT0"); }

    JsonRun run(const std::vector<std::string>& words) { return runJson(words, scratch.path()); }
    std::string ptp() const { return (temp / "Board" / "Board.ptp").string(); }

    // What export writes for row `row` without a header: what the board must get.
    std::string exported(int row)
    {
        const fs::path out = temp / ("export" + std::to_string(row));
        fs::create_directories(out);
        EXPECT_EQ(run({"project", "export", ptp(), "--out", out.string(), "--rows", std::to_string(row)}).exitCode, 0);
        for (const auto& entry : fs::directory_iterator(out))
            if (entry.path().filename() != "All_Export_FileName.txt" && entry.path().extension() != ".tab")
                return readBytes(entry.path());
        return {};
    }

    TempDir scratch;
    TempDir temp;
    fs::path link = temp / "board0";
    fs::path record = temp / "record";
};

} // namespace

TEST_F(BoardPlay, EveryCodecsEncodedDataReachesTheBoardAsExportWritesIt)
{
    const BoardSimulator board(KESTRELON_BOARD_SIM, link, record, {"--host-version", "5", "--driver-version", "7"});
    const JsonRun version = run({"board", "version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.answer["status"], "Version   Host:5   Driver:7");
    EXPECT_EQ(version.answer["host"], 5);
    EXPECT_EQ(version.answer["driver"], 7);

    for (int row = 0; row < 5; ++row) {
        const std::string expected = exported(row);
        ASSERT_FALSE(expected.empty());
        const JsonRun played = run({"play", ptp(), "--row", std::to_string(row), "--what", "encoded"});
        ASSERT_EQ(played.exitCode, 0) << row << ": " << played.err;
        EXPECT_EQ(played.answer["bytesSent"], expected.size()) << row;
        EXPECT_EQ(readBytes(record / ("item-" + std::to_string(row) + ".bin")), expected) << row;
    }
}

TEST_F(BoardPlay, APlayListOfThreeRowsArrivesInOrder)
{
    const BoardSimulator board(KESTRELON_BOARD_SIM, link, record, {});
    const JsonRun added = run({"playlist", "add", ptp(), "--rows", "3,0,4"});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    ASSERT_EQ(added.answer["entries"].size(), 3u);
    EXPECT_EQ(added.answer["entries"][0]["algorithm"], "Codec2");
    EXPECT_EQ(run({"playlist", "show", ptp()}).answer["entries"], added.answer["entries"]); // saved with the project
    const JsonRun played = run({"playlist", "play", ptp(), "--mode", "encoded"});
    ASSERT_EQ(played.exitCode, 0) << played.err;
    EXPECT_EQ(played.answer["played"], 3);
    const std::vector<int> order = {3, 0, 4};
    for (std::size_t k = 0; k < order.size(); ++k)
        EXPECT_EQ(readBytes(record / ("item-" + std::to_string(k) + ".bin")), exported(order[k])) << k;

    const JsonRun removed = run({"playlist", "remove", ptp(), "--entries", "0,2"});
    ASSERT_EQ(removed.answer["entries"].size(), 1u);
    EXPECT_EQ(removed.answer["entries"][0]["algorithm"], "ImaAdpcm");
    EXPECT_EQ(run({"playlist", "remove", ptp(), "--entries", "5"}).exitCode, 1);
}

TEST_F(BoardPlay, ABoardThatFailsIsSaidSoAndNeverGetsWrongBytes)
{
    // No board on the port.
    const JsonRun nobody = run({"play", ptp(), "--row", "0", "--what", "encoded"});
    EXPECT_EQ(nobody.exitCode, 1);
    EXPECT_EQ(nobody.text(0), msg::kBoardPortError);
    EXPECT_EQ(run({"board", "version"}).answer["status"], msg::kBoardVersionFailed);
    {
        const BoardSimulator board(KESTRELON_BOARD_SIM, link, record, {"--driver-fails"});
        const JsonRun version = run({"board", "version"});
        EXPECT_EQ(version.exitCode, 1);
        EXPECT_EQ(version.answer["status"], "Version   Host:3   Driver:Failed");
        EXPECT_TRUE(version.answer["driver"].is_null());
    }
    {
        // A board that stops answering part-way: status 512 and its message.
        const BoardSimulator board(KESTRELON_BOARD_SIM, link, record, {"--stop-acking-after", "600"});
        const JsonRun cut = run({"play", ptp(), "--row", "0", "--what", "encoded"});
        EXPECT_EQ(cut.exitCode, 1);
        EXPECT_EQ(cut.text(0), msg::kBoardNoDataAck);
        EXPECT_EQ(cut.answer["reports"].back(), nlohmann::ordered_json::parse(R"({"index":-1,"status":512})"));
        EXPECT_FALSE(fs::exists(record / "item-0.bin"));
    }
    // A noisy line (one byte in a hundred damaged, either way): every item
    // arrives whole or play fails with a message. The small encodings keep
    // the resends few.
    fs::remove_all(record);
    const BoardSimulator board(KESTRELON_BOARD_SIM, link, record, {"--corrupt-rate", "0.01", "--seed", "7"});
    int arrived = 0;
    for (const int row : {3, 4}) {
        const std::string expected = exported(row);
        const JsonRun played = run({"play", ptp(), "--row", std::to_string(row), "--what", "encoded"});
        if (played.exitCode == 0) {
            EXPECT_EQ(readBytes(record / ("item-" + std::to_string(arrived) + ".bin")), expected) << row;
            ++arrived;
        } else {
            EXPECT_FALSE(played.answer["messages"].empty()) << row;
        }
    }
    int recorded = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(record))
        ++recorded;
    EXPECT_EQ(recorded, arrived); // nothing half-received was kept
}
