#include "cli/commands.h"

#include "bodies/body_settings.h"
#include "cli/project_runner.h"
#include "common/messages.h"
#include "common/paths.h"

#include <charconv>

namespace kestrelon::cli {

namespace {

Json algorithmJson(const BodyAlgoInfo& algo)
{
    return Json{
        {"name", algo.name},         {"section", algo.section},   {"dllDir", algo.dllDir},
        {"pathName", algo.pathName}, {"bitRates", algo.bitRates}, {"config", algo.config},
    };
}

Json bodyJson(const BodyInfo& body)
{
    Json algorithms = Json::array();
    for (const BodyAlgoInfo& algo : body.algorithms)
        algorithms.push_back(algorithmJson(algo));
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

// A named FILE is read on its own, its folder standing for the program
// folder so that the player plug-in paths come out as the program would use
// them beside that file. Without FILE: the body settings the program uses.
Result runBodies(Context& context)
{
    const std::vector<std::string> words = context.args.positionals();
    if (words.size() > 1)
        throw UsageError("expected at most 1 argument(s), got " + std::to_string(words.size()));
    std::filesystem::path file = context.bodySettingsFile;
    std::filesystem::path programFolder = context.programFolder;
    if (!words.empty()) {
        std::error_code ec;
        file = std::filesystem::absolute(pathFromUtf8(words[0]), ec);
        if (ec)
            file = pathFromUtf8(words[0]);
        programFolder = file.parent_path();
    }
    BodySettings settings;
    if (!settings.load(file, programFolder, context.port))
        return Result{false, Json{{"file", utf8FromPath(file)}}};
    Json bodies = Json::array();
    for (const BodyInfo& body : settings.bodies())
        bodies.push_back(bodyJson(body));
    return Result{true, Json{
                            {"file", utf8FromPath(file)},
                            {"pcPlayDll", utf8FromPath(settings.pcPlayDll())},
                            {"boardPlayDll", utf8FromPath(settings.boardPlayDll())},
                            {"baudRate", settings.baudRate()},
                            {"bodies", std::move(bodies)},
                        }};
}

// What OK in Body Information and the exit do: the current volume of one
// body, within its limits, written back where the program keeps volumes.
Result runSetVolume(Context& context)
{
    const std::vector<std::string> words = context.args.expect(2);
    int volume = 0;
    const auto [end, error] = std::from_chars(words[1].data(), words[1].data() + words[1].size(), volume);
    if (error != std::errc() || end != words[1].data() + words[1].size())
        throw UsageError("VOLUME must be a whole number: " + words[1]);

    BodySettings settings;
    if (!settings.load(context.bodySettingsFile, context.programFolder, context.port))
        return finishCommand(context, Result{false},
                             "the body settings file " + utf8FromPath(context.bodySettingsFile) + " cannot be read",
                             {});
    BodyInfo* body = settings.findBody(words[0]);
    if (!body)
        return finishCommand(context, Result{false}, "no body is named " + words[0], {});
    if (volume > body->volumeMax || volume < body->volumeMin) {
        context.port.showMessage(volume > body->volumeMax ? msg::kVolumeAboveMaximum : msg::kVolumeBelowMinimum);
        return Result{false, Json{{"file", utf8FromPath(context.bodySettingsFile)}}};
    }
    body->currentVolume = volume;
    body->confirmedVolume = volume;
    const VolumesSaved saved = saveCurrentVolumes(settings, context.bodySettingsFiles);
    Result result{saved.ok, Json{{"file", utf8FromPath(saved.file)}, {"currentVolume", volume}}};
    return finishCommand(context, std::move(result), saved.error,
                         words[0] + ": volume " + words[1] + " kept in " + utf8FromPath(saved.file));
}

} // namespace

void addBodyCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"bodies"}, "bodies [FILE]", runBodies, true});
    table.push_back({{"bodies", "set-volume"}, "bodies set-volume BODY VOLUME", runSetVolume, false});
}

} // namespace kestrelon::cli
