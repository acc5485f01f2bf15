#include "cli/commands.h"

#include "common/paths.h"
#include "wave/speech_events.h"

namespace kestrelon::cli {

namespace {

Json eventJson(const SpeechEvent& event)
{
    return Json{
        {"samples", event.samples},
        {"id", event.id},
        {"description", event.description},
    };
}

Result runEventsDump(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    SpeechEventList events;
    std::string label;
    if (!readSpeechEvents(pathFromUtf8(words[0]), events, label, context.port))
        return Result{false};
    Json list = Json::array();
    for (const SpeechEvent& event : events) list.push_back(eventJson(event));
    return Result{true, Json{{"label", label}, {"events", std::move(list)}}};
}

} // namespace

void addEventCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"events", "dump"}, "events dump FILE.evt", runEventsDump, true});
}

} // namespace kestrelon::cli
