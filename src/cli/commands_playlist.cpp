#include "cli/commands.h"

#include "bodies/body_settings.h"
#include "cli/project_runner.h"
#include "codec/main_list.h"
#include "common/paths.h"
#include "host/board_player_host.h"
#include "host/pc_player_host.h"
#include "model/project.h"
#include "playback/board_items.h"
#include "playback/play_list_edit.h"
#include "playback/play_list_file.h"
#include "playback/playback_controller.h"
#include "playback/sentence.h"
#include "project/project_session.h"
#include "settings/settings_store.h"

#include <chrono>
#include <numeric>
#include <thread>

namespace kestrelon::cli {

namespace {

constexpr auto kFollowPeriod = std::chrono::milliseconds(5);
constexpr std::uint32_t kAllPlayed = 16;

Json playItemJson(const PlayItem& item)
{
    return Json{
        {"fileName", item.sourceKey}, {"bodyName", item.bodyName}, {"algoName", item.algorithmName},
        {"bitRate", item.bitRate},    {"itemId", item.itemId},
    };
}

// An entry as `playlist show` and the commands that change the list give it.
Json entryJson(const PlayItem& item)
{
    return Json{
        {"fileName", item.sourceKey}, {"body", item.bodyName}, {"algorithm", item.algorithmName},
        {"bitRate", item.bitRate},    {"itemId", item.itemId},
    };
}

Json entriesJson(const PlayList& list)
{
    Json entries = Json::array();
    for (const PlayItem& item : list)
        entries.push_back(entryJson(item));
    return entries;
}

Result runPlayListDump(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    PlayList list;
    if (!loadPlayList(pathFromUtf8(words[0]), list, context.port))
        return Result{false};
    Json items = Json::array();
    for (const PlayItem& item : list)
        items.push_back(playItemJson(item));
    return Result{true, Json{{"items", std::move(items)}}};
}

// (--rows N,... | --all) or (--entries N,... | --all), taken before the
// project is opened; resolved against the count once it is.
struct Chosen {
    std::vector<std::size_t> numbers;
    bool all = false;

    std::vector<std::size_t> of(std::size_t count) const
    {
        if (!all)
            return numbers;
        std::vector<std::size_t> every(count);
        std::iota(every.begin(), every.end(), std::size_t{0});
        return every;
    }
};

Chosen chosen(Context& context, std::string_view option)
{
    const std::optional<std::string> numbers = context.args.takeOption(option);
    const bool all = context.args.takeFlag("--all");
    if (numbers.has_value() == all)
        throw UsageError(std::string(option) + " N,... or --all is required");
    return Chosen{numbers ? parseRowNumbers(*numbers) : std::vector<std::size_t>{}, all};
}

// Opens the project, checks its play list as the dialog does on opening,
// runs `edit` and saves when the list or the rows changed.
// A number that names no row or entry fails the command with this text.
using Refusal = std::string;

Result onPlayList(Context& context, const std::function<bool(ProjectSession&, PlayList&, MainList&, Refusal&)>& edit)
{
    const std::vector<std::string> words = context.args.positionals();
    if (words.size() != 1)
        throw UsageError("expected PROJECT.ptp");
    Json entries = Json::array();
    Refusal refusal;
    Result result = runProjectOperation(context, words[0], [&](Project& project) {
        ProjectSession& session = project.session();
        MainList rows = project.rows();
        PlayList& list = project.playList();
        if (checkPlayList(list, rows, context.port))
            session.markModified();
        const bool ok = edit(session, list, rows, refusal);
        entries = entriesJson(list);
        return ok;
    });
    result.fields.erase("files");
    result.fields["entries"] = std::move(entries);
    return finishCommand(context, std::move(result), refusal,
                         std::to_string(result.fields["entries"].size()) + " entries on the play list");
}

Result runPlayListShow(Context& context)
{
    return onPlayList(context, [](ProjectSession&, PlayList&, MainList&, Refusal&) { return true; });
}

Result runPlayListAdd(Context& context)
{
    const Chosen rowsChosen = chosen(context, "--rows");
    return onPlayList(context, [&](ProjectSession& session, PlayList& list, MainList& rows, Refusal& refusal) {
        const std::vector<std::size_t> which = rowsChosen.of(rows.size());
        for (const std::size_t row : which)
            if (row >= rows.size()) {
                refusal = "no row " + std::to_string(row) + ": the project has " + std::to_string(rows.size());
                return false;
            }
        if (addRowsToPlayList(list, rows, which, false, context.port) > 0)
            session.markModified();
        return true;
    });
}

Result runPlayListRemove(Context& context)
{
    const Chosen entriesChosen = chosen(context, "--entries");
    return onPlayList(context, [&](ProjectSession& session, PlayList& list, MainList&, Refusal& refusal) {
        std::vector<std::size_t> which = entriesChosen.of(list.size());
        std::sort(which.rbegin(), which.rend());
        which.erase(std::unique(which.begin(), which.end()), which.end());
        if (!which.empty() && which.front() >= list.size()) {
            refusal =
                "no entry " + std::to_string(which.front()) + ": the play list has " + std::to_string(list.size());
            return false;
        }
        for (const std::size_t entry : which)
            list.erase(list.begin() + std::ptrdiff_t(entry));
        if (!which.empty())
            session.markModified();
        return true;
    });
}

// Plays the list: on the PC entry after entry (original or decoded), or on
// the board as one list (encoded).
Result runPlayListPlay(Context& context)
{
    const std::optional<std::string> mode = context.args.takeOption("--mode");
    if (!mode || (*mode != "original" && *mode != "encoded" && *mode != "decoded"))
        throw UsageError("--mode original|encoded|decoded is required");
    BodySettings bodies;
    if (!bodies.load(context.bodySettingsFile, context.programFolder, context.port))
        return Result{false};
    PcPlayerHost pc(context.port);
    BoardPlayerHost board(context.port);
    int played = 0;
    Result result = onPlayList(context, [&](ProjectSession& session, PlayList& list, MainList& rows, Refusal&) {
        if (*mode == "encoded") {
            SettingsStore settings;
            if (settings.load())
                exportBoardPorts(settings);
            if (!board.load(bodies.boardPlayDll()))
                return false;
            std::vector<const EditInfoRecord*> records;
            for (const PlayItem& entry : list) {
                const ListRow* row = rowOfEntry(entry, rows);
                if (!row)
                    return false;
                records.push_back(&row->record());
            }
            std::optional<std::vector<BoardItem>> items = boardItemsFor(session, records, bodies, context.port);
            if (!items || !board.play(0, std::uint32_t(bodies.baudRate()), std::move(*items)))
                return false;
            std::uint32_t last = 0;
            while (board.playing()) {
                std::this_thread::sleep_for(kFollowPeriod);
                for (const BoardReport& r : board.follow()) {
                    if (r.index >= 0)
                        played = std::max(played, r.index + 1);
                    if (r.index == -1)
                        last = r.status;
                }
            }
            return last == kAllPlayed;
        }
        if (!pc.load(bodies.pcPlayDll()))
            return false;
        PlaybackController controller(pc, context.port);
        std::vector<const EditInfoRecord*> records;
        for (const PlayItem& entry : list)
            if (const ListRow* row = rowOfEntry(entry, rows))
                records.push_back(&row->record());
        const PlayWhat what = *mode == "original" ? PlayWhat::Original : PlayWhat::Decoded;
        if (what == PlayWhat::Decoded && !everyEntryDecoded(session, records, context.port))
            return false;
        for (std::size_t i = 0; i < records.size(); ++i) {
            const EntryStart start =
                startSentenceEntry(controller, session, *records[i], what, i + 1 == records.size(), context.port);
            if (start == EntryStart::Ended)
                return false;
            if (start == EntryStart::Skipped)
                continue;
            while (controller.isActive()) {
                std::this_thread::sleep_for(kFollowPeriod);
                controller.follow();
            }
            ++played;
        }
        return true;
    });
    result.fields["played"] = played;
    return result;
}

} // namespace

void addPlayListCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"playlist", "dump"}, "playlist dump FILE.set", runPlayListDump, true});
    table.push_back({{"playlist", "show"}, "playlist show PROJECT.ptp", runPlayListShow, true});
    table.push_back({{"playlist", "add"}, "playlist add PROJECT.ptp (--rows N,... | --all)", runPlayListAdd, false});
    table.push_back(
        {{"playlist", "remove"}, "playlist remove PROJECT.ptp (--entries N,... | --all)", runPlayListRemove, false});
    table.push_back(
        {{"playlist", "play"}, "playlist play PROJECT.ptp --mode original|encoded|decoded", runPlayListPlay, false});
}

} // namespace kestrelon::cli
