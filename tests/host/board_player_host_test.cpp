// The host takes a board player only with all four of its functions.
#include "common/messages.h"
#include "host/board_player_host.h"
#include "support/board_simulator.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

using namespace kestrelon;

TEST(BoardPlayerHost, APlayerMissingOneOfItsFourFunctionsIsNotLoadedAndNeverCalled)
{
    test::ScriptedPort port;
    BoardPlayerHost host(port);
    EXPECT_FALSE(host.load(KESTRELON_THREE_OF_FOUR_BOARD));
    EXPECT_FALSE(host.isLoaded());
    // Its play would abort the process; its scan would give a version.
    EXPECT_FALSE(host.play(0, 115200, {BoardItem{"data", 8000, 10, "a.wav"}}));
    const BoardVersionQuery query = host.queryVersions(0, 115200);
    EXPECT_EQ(query.status, "Failed! Please check the hardware!");
    EXPECT_FALSE(query.host);
    EXPECT_EQ(port.texts(), std::vector<std::string>(2, "BoardPlay dll did not load successfully !"));

    // The reference player has all four: the host takes it.
    port.clear();
    EXPECT_TRUE(host.load(KESTRELON_BOARD_PLAYER));
    EXPECT_TRUE(host.isLoaded());
    EXPECT_TRUE(port.texts().empty());
}

namespace {

// Follows the host until a report of `status` (index -1) comes, or a while passes.
bool reportCame(BoardPlayerHost& host, std::uint32_t status, std::vector<BoardReport>& seen)
{
    for (int i = 0; i < 2000; ++i) {
        for (const BoardReport& r : host.follow()) {
            seen.push_back(r);
            if (r.index == -1 && r.status == status)
                return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

} // namespace

// A held board receives nothing more until play goes on; held play can be
// stopped; let go, the item arrives whole.
TEST(BoardPlayerHost, PauseHoldsTheBoardAndPlayGoesOnOrStopsFromThere)
{
    const test::TempDir temp;
    const std::filesystem::path link = temp / "board0", record = temp / "record";
    const test::BoardSimulator board(KESTRELON_BOARD_SIM, link, record, {});
    setenv("KESTRELON_BOARD_PORT0", link.c_str(), 1);
    test::ScriptedPort port;
    BoardPlayerHost host(port);
    ASSERT_TRUE(host.load(KESTRELON_BOARD_PLAYER));
    ASSERT_TRUE(host.canPause());
    // Large enough that the pause lands while its data is still on the way.
    std::string speech(1 << 21, '\0');
    for (std::size_t i = 0; i < speech.size(); ++i)
        speech[i] = char(i * 7 + i / 256);
    std::vector<BoardReport> seen;

    ASSERT_TRUE(host.play(0, 115200, {BoardItem{speech, 8000, 10, "a.wav"}}));
    host.pause();
    ASSERT_TRUE(reportCame(host, KESTRELON_BOARD_PAUSED, seen));
    EXPECT_TRUE(host.playing()); // a held board still plays
    EXPECT_TRUE(host.paused());
    host.stop();
    EXPECT_FALSE(host.playing());
    EXPECT_FALSE(std::filesystem::exists(record / "item-0.bin"));

    seen.clear();
    ASSERT_TRUE(host.play(0, 115200, {BoardItem{speech, 8000, 10, "a.wav"}}));
    host.pause();
    ASSERT_TRUE(reportCame(host, KESTRELON_BOARD_PAUSED, seen));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(std::filesystem::exists(record / "item-0.bin")); // nothing moved while held
    host.pause();
    EXPECT_FALSE(host.paused());
    ASSERT_TRUE(reportCame(host, 16, seen));
    EXPECT_FALSE(host.playing());
    EXPECT_TRUE(test::readBytes(record / "item-0.bin") == speech); // whole and in order
    EXPECT_TRUE(port.texts().empty());
    unsetenv("KESTRELON_BOARD_PORT0");
}
