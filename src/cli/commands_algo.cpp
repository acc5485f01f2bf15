#include "cli/commands.h"

#include "common/paths.h"
#include "host/algorithm_info.h"
#include "host/codec_host.h"
#include "host/host_windows.h"

namespace kestrelon::cli {

namespace {

Json infoJson(const AlgorithmInfo& info)
{
    return Json{
        {"name", info.name},
        {"version", info.versionText},
        {"description", info.description},
        {"sampleRate", info.sampleRateText},
        {"resolution", info.resolutionText},
        {"channels", info.channelsText},
        {"sampleRates", info.sampleRatesText},
        {"bitRates", info.bitRatesText},
    };
}

// The Algorithm Information of one codec library; its ".bdy" file must lie
// beside it.
Result runAlgoInfo(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    MainHostWindow mainWindow;
    CodecHost host(context.programFolder, context.port, mainWindow);
    AlgorithmInfo info;
    if (!describeAlgorithm(host, pathFromUtf8(words[0]), info))
        return Result{false};
    return Result{true, infoJson(info)};
}

// Every codec library in a project's Algos folder; those that fail are
// reported in the messages and left out.
Result runAlgoList(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    MainHostWindow mainWindow;
    CodecHost host(context.programFolder, context.port, mainWindow);
    Json list = Json::array();
    for (const AlgorithmInfo& info : listAlgorithmInfo(host, pathFromUtf8(words[0])))
        list.push_back(infoJson(info));
    return Result{true, Json{{"algorithms", std::move(list)}}};
}

} // namespace

void addAlgoCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"algo", "info"}, "algo info PLUGIN", runAlgoInfo, true});
    table.push_back({{"algo", "list"}, "algo list PROJECT-FOLDER", runAlgoList, true});
}

} // namespace kestrelon::cli
