#include "cli/commands.h"

#include "common/paths.h"
#include "playback/play_list_file.h"

namespace kestrelon::cli {

namespace {

Json playItemJson(const PlayItem& item)
{
    return Json{
        {"fileName", item.sourceKey},
        {"bodyName", item.bodyName},
        {"algoName", item.algorithmName},
        {"bitRate", item.bitRate},
        {"itemId", item.itemId},
    };
}

Result runPlayListDump(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    PlayList list;
    if (!loadPlayList(pathFromUtf8(words[0]), list, context.port))
        return Result{false};
    Json items = Json::array();
    for (const PlayItem& item : list) items.push_back(playItemJson(item));
    return Result{true, Json{{"items", std::move(items)}}};
}

} // namespace

void addPlayListCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"playlist", "dump"}, "playlist dump FILE.set", runPlayListDump, true});
}

} // namespace kestrelon::cli
