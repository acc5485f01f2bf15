#include "cli/commands.h"

#include "cli/project_runner.h"
#include "common/messages.h"
#include "common/paths.h"
#include "wave/event_editor.h"
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

Json eventsJson(const SpeechEventList& events, const std::string& label)
{
    Json list = Json::array();
    for (const SpeechEvent& event : events)
        list.push_back(eventJson(event));
    return Json{{"label", label}, {"events", std::move(list)}};
}

long long requiredNumber(Context& context, std::string_view name, long long low, long long high)
{
    const std::optional<long long> value = context.args.takeNumber(name, low, high);
    if (!value)
        throw UsageError(std::string(name) + " is required");
    return *value;
}

// What the file holds after a confirmed edit, as `events dump` prints it.
Result confirm(Context& context, const SpeechEventEditor& editor)
{
    if (!editor.write()) {
        context.port.showMessage(std::string(msg::kEventFileNotWrittenPrefix) + utf8FromPath(editor.eventFile()) +
                                 " !");
        return Result{false};
    }
    const std::string label = editor.customLabelChosen() ? editor.customLabel() : std::string(msg::kDefaultLabel);
    printSummary(context,
                 utf8FromPath(editor.eventFile()) + ": " + std::to_string(editor.events().size()) + " event(s)");
    return Result{true, eventsJson(editor.events(), label)};
}

Result runEventsDump(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    SpeechEventList events;
    std::string label;
    if (!readSpeechEvents(pathFromUtf8(words[0]), events, label, context.port))
        return Result{false};
    return Result{true, eventsJson(events, label)};
}

// The Speech Event dialog's Add followed by Ok; the same-ID question is
// answered by --yes (replace) or --no (add nothing).
Result runEventsAdd(Context& context)
{
    const long long samples = requiredNumber(context, "--samples", 0, 0xFFFFFFFFll);
    // The range 1..254 is the editor's rule, with its message; only a number is required here.
    const long long id = requiredNumber(context, "--id", -1000000, 1000000);
    const std::optional<std::string> description = context.args.takeOption("--description");
    const std::optional<std::string> label = context.args.takeOption("--label");
    const bool defaultLabel = context.args.takeFlag("--default-label");
    if (label && defaultLabel)
        throw UsageError("--label and --default-label exclude each other");
    const std::vector<std::string> words = context.args.expect(1);

    SpeechEventEditor editor(absolutePathArgument(words[0]), context.port);
    if (defaultLabel)
        editor.chooseDefaultLabel();
    if (label) {
        editor.chooseCustomLabel();
        editor.setCustomLabel(*label);
    }
    if (editor.add(std::uint32_t(samples), int(id), description.value_or(std::string())) < 0)
        return finishCommand(context, Result{false}, "no event was added; " + words[0] + " is unchanged", {});
    return confirm(context, editor);
}

Result runEventsDelete(Context& context)
{
    const long long id = requiredNumber(context, "--id", 0, 255);
    const std::vector<std::string> words = context.args.expect(1);
    SpeechEventEditor editor(absolutePathArgument(words[0]), context.port);
    if (!editor.removeAt(editor.indexOfId(int(id)))) {
        context.port.showMessage(std::string(msg::kEventNotFoundPrefix) + std::to_string(id) + " !");
        return Result{false};
    }
    return confirm(context, editor);
}

} // namespace

void addEventCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"events", "dump"}, "events dump FILE.evt", runEventsDump, true});
    table.push_back({{"events", "add"},
                     "events add FILE.evt --samples N --id K [--description D] [--label TEXT | --default-label]",
                     runEventsAdd,
                     false});
    table.push_back({{"events", "delete"}, "events delete FILE.evt --id K", runEventsDelete, false});
}

} // namespace kestrelon::cli
