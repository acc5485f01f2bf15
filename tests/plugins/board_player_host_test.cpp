// The host takes a board player only with all four of its functions.
#include "common/messages.h"
#include "plugins/board_player_host.h"
#include "support/scripted_port.h"

#include <gtest/gtest.h>

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
