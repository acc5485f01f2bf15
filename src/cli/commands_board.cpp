#include "cli/commands.h"

#include "bodies/body_settings.h"
#include "cli/project_runner.h"
#include "codec/main_list.h"
#include "common/messages.h"
#include "common/paths.h"
#include "host/board_player_host.h"
#include "playback/board_items.h"
#include "project/project_session.h"
#include "settings/settings_store.h"

#include <chrono>
#include <thread>

namespace kestrelon::cli {

namespace {

constexpr auto kFollowPeriod = std::chrono::milliseconds(5);
// Status words that end a play list as the player reports it.
constexpr std::uint32_t kAllPlayed = 16;

bool loadBoardPlayer(Context& ctx, BodySettings& bodies, BoardPlayerHost& board)
{
    // The ports the user chose in the workbench, unless the environment names them.
    SettingsStore settings;
    if (settings.load())
        exportBoardPorts(settings);
    if (!bodies.load(ctx.bodySettingsFile, ctx.programFolder, ctx.port))
        return false;
    return board.load(bodies.boardPlayDll());
}

// "board version": what Body Information's "Get Version" shows.
Result runBoardVersion(Context& ctx)
{
    const std::uint8_t port = std::uint8_t(ctx.args.takeNumber("--port", 0, 15).value_or(0));
    ctx.args.expect(0);
    BodySettings bodies;
    BoardPlayerHost board(ctx.port);
    if (!loadBoardPlayer(ctx, bodies, board))
        return Result{false, Json{{"status", nullptr}, {"host", nullptr}, {"driver", nullptr}}};
    const BoardVersionQuery query = board.queryVersions(port, std::uint32_t(bodies.baudRate()));
    const auto optional = [](const std::optional<int>& value) { return value ? Json(*value) : Json(nullptr); };
    printSummary(ctx, query.status);
    return Result{query.host && query.driver,
                  Json{{"status", query.status}, {"host", optional(query.host)}, {"driver", optional(query.driver)}}};
}

} // namespace

Result playEncodedOnBoard(Context& ctx, const std::string& ptp, std::size_t row)
{
    BodySettings bodies;
    BoardPlayerHost board(ctx.port);
    if (!loadBoardPlayer(ctx, bodies, board))
        return Result{false};
    std::size_t bytesSent = 0;
    Json reports = Json::array();
    std::string error;
    Result result = runProjectOperation(ctx, ptp, [&](ProjectSession& session) {
        const MainList list = MainList::fromDocument(session.document());
        if (row >= list.size()) {
            error = "no row " + std::to_string(row) + ": the project has " + std::to_string(list.size()) + " row(s)";
            return false;
        }
        const EditInfoRecord& record = list.rows()[row].record();
        std::optional<std::vector<BoardItem>> items = boardItemsFor(session, {&record}, bodies, ctx.port);
        if (!items)
            return false;
        const std::size_t size = items->front().data.size();
        if (!board.play(0, std::uint32_t(bodies.baudRate()), std::move(*items)))
            return false;
        std::uint32_t last = 0;
        while (board.playing()) {
            std::this_thread::sleep_for(kFollowPeriod);
            for (const BoardReport& r : board.follow()) {
                reports.push_back(Json{{"index", r.index}, {"status", r.status}});
                if (r.index == -1)
                    last = r.status;
            }
        }
        if (last != kAllPlayed)
            return false;
        bytesSent = size;
        return true;
    });
    result.fields.erase("files");
    result.fields["bytesSent"] = bytesSent;
    result.fields["reports"] = std::move(reports);
    return finishCommand(ctx, std::move(result), error, "sent " + std::to_string(bytesSent) + " bytes to the board");
}

void addBoardCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"board", "version"}, "board version [--port N]", &runBoardVersion, true});
}

} // namespace kestrelon::cli
