#include "cli/commands.h"

#include "bodies/body_settings.h"
#include "cli/project_runner.h"
#include "codec/main_list.h"
#include "common/paths.h"
#include "host/pc_player_host.h"
#include "playback/playback_controller.h"
#include "project/project_session.h"

#include <chrono>
#include <thread>

namespace kestrelon::cli {

namespace {

// How often a headless run looks at the player: fine enough that the end is
// noticed at once, coarse enough to cost nothing.
constexpr auto kFollowPeriod = std::chrono::milliseconds(5);

// Plays a row's original or decoded wave through the PC player that the body
// settings name, and returns when it has ended (every pass of --loop-count).
Result play(Context& ctx)
{
    const auto rowNumber = ctx.args.takeNumber("--row", 0, 1'000'000'000);
    const auto whatText = ctx.args.takeOption("--what");
    const int loops = int(ctx.args.takeNumber("--loop-count", 1, 1'000'000'000).value_or(1));
    const auto words = ctx.args.expect(1);
    if (!rowNumber || !whatText)
        throw UsageError("--row N and --what original|decoded|encoded are required");
    if (*whatText != "original" && *whatText != "decoded" && *whatText != "encoded")
        throw UsageError("--what takes original, decoded or encoded: " + *whatText);
    const std::size_t row = std::size_t(*rowNumber);
    if (*whatText == "encoded")
        return playEncodedOnBoard(ctx, absolutePathArgument(words[0]).string(), row);

    BodySettings bodies;
    if (!bodies.load(ctx.bodySettingsFile, ctx.programFolder, ctx.port))
        return finishCommand(ctx, Result{false},
                             "the body settings file " + utf8FromPath(ctx.bodySettingsFile) + " cannot be read", {});
    PcPlayerHost player(ctx.port);
    if (!player.load(bodies.pcPlayDll()))
        return Result{false};
    PlaybackController controller(player, ctx.port);

    std::string error;
    PlayStatus played;
    Result result = runProjectOperation(ctx, words[0], [&](ProjectSession& session) {
        const MainList list = MainList::fromDocument(session.document());
        if (row >= list.size()) {
            error = "no row " + std::to_string(row) + ": the project has " + std::to_string(list.size()) + " row(s)";
            return false;
        }
        const PlayWhat what = *whatText == "original" ? PlayWhat::Original : PlayWhat::Decoded;
        if (!controller.playRow(session, list.rows()[row].record(), what, std::to_string(row), loops))
            return false;
        played = controller.status();
        const Subscription following = controller.changed.subscribe([&](const PlayStatus& status) { played = status; });
        while (controller.isActive()) {
            std::this_thread::sleep_for(kFollowPeriod);
            controller.follow();
        }
        return true;
    });
    result.fields.erase("files");
    result.fields["path"] = played.file.empty() ? Json(nullptr) : Json(utf8FromPath(played.file));
    result.fields["sampleRate"] = played.sampleRate;
    result.fields["samples"] = played.samplesPlayed;
    return finishCommand(ctx, std::move(result), error,
                         "played " + std::to_string(played.samplesPlayed) + " samples of " + utf8FromPath(played.file));
}

} // namespace

void addPlayCommands(std::vector<CommandSpec>& table)
{
    table.push_back(
        {{"play"}, "play PROJECT.ptp --row N --what original|decoded|encoded [--loop-count K]", &play, false});
}

} // namespace kestrelon::cli
