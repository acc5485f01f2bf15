#include "cli/commands.h"

#include "bodies/body_settings.h"
#include "common/paths.h"

namespace kestrelon::cli {

namespace {

Json algorithmJson(const BodyAlgoInfo& algo)
{
    return Json{
        {"name", algo.name},
        {"section", algo.section},
        {"dllDir", algo.dllDir},
        {"pathName", algo.pathName},
        {"bitRates", algo.bitRates},
        {"config", algo.config},
    };
}

Json bodyJson(const BodyInfo& body)
{
    Json algorithms = Json::array();
    for (const BodyAlgoInfo& algo : body.algorithms) algorithms.push_back(algorithmJson(algo));
    return Json{
        {"name", body.name},
        {"bodyId", body.bodyId},
        {"algoCount", body.algoCount},
        {"sampleRateMax", body.sampleRateMax},
        {"sampleRateMin", body.sampleRateMin},
        {"volumeMax", body.volumeMax},
        {"volumeMin", body.volumeMin},
        {"defaultVolume", body.defaultVolume},
        {"currentVolume", body.currentVolume},
        {"confirmedVolume", body.confirmedVolume},
        {"algorithms", std::move(algorithms)},
    };
}

// The file's own folder stands for the program folder, so the player
// plug-in paths come out as the program would use them beside that file.
Result runBodies(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    std::error_code ec;
    std::filesystem::path file = std::filesystem::absolute(pathFromUtf8(words[0]), ec);
    if (ec) file = pathFromUtf8(words[0]);
    BodySettings settings;
    if (!settings.load(file, file.parent_path(), context.port))
        return Result{false};
    Json bodies = Json::array();
    for (const BodyInfo& body : settings.bodies()) bodies.push_back(bodyJson(body));
    return Result{true, Json{
                            {"pcPlayDll", utf8FromPath(settings.pcPlayDll())},
                            {"boardPlayDll", utf8FromPath(settings.boardPlayDll())},
                            {"baudRate", settings.baudRate()},
                            {"bodies", std::move(bodies)},
                        }};
}

} // namespace

void addBodyCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"bodies"}, "bodies FILE", runBodies, true});
}

} // namespace kestrelon::cli
