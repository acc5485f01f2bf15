#include "cli/commands.h"

#include "common/messages.h"
#include "common/paths.h"
#include "settings/settings_store.h"

#include <charconv>
#include <string>

namespace kestrelon::cli {

namespace {

namespace names = settings_names;

std::string key(std::string_view name)
{
    return std::string(name);
}

// The scale as stored, six decimals, so 1.1 shows as 1.1 and not as the
// float's nearest double.
double storedScale(float scale)
{
    const std::string text = formatColumnScale(scale);
    double value = 1.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

Json settingsJson(const SettingsStore& store)
{
    Json colors = Json::object();
    for (const WaveColorSlot& slot : kWaveColorSlots)
        colors[key(slot.name)] = store.colors.*slot.member;

    Json recent = Json::object();
    for (std::size_t i = 0; i < store.recentProjects.size() && i < kMaxRecentProjects; ++i)
        recent[key(names::kRecentKeyPrefix) + std::to_string(i + 1)] = store.recentProjects[i];

    Json out = Json::object();
    out[key(names::kColorSection)] = std::move(colors);
    out[key(names::kPlayModeSection)] = {{key(names::kPlayMode), store.playMode}};
    out[key(names::kListSection)] = {
        {key(names::kSortOrder), store.sortOrder},
        {key(names::kSortIndex), store.sortIndex},
        {key(names::kMultiple), storedScale(store.columnScale)},
    };
    out[key(names::kAutoSection)] = {{key(names::kDecode), store.autoDecode}};
    out[key(names::kLastSection)] = {
        {key(names::kBodyName), store.lastBodyName},         {key(names::kAlgName), store.lastAlgName},
        {key(names::kBitRate), store.lastBitRate},           {key(names::kApplyAllFiles), store.applyAllFiles},
        {key(names::kProjectPath), store.lastProjectPath},   {key(names::kFilePath), store.lastFilePath},
        {key(names::kExternalEditor), store.externalEditor},
    };
    out[key(names::kRecentSection)] = std::move(recent);
    return out;
}

Result runSettingsDump(Context& context)
{
    const std::optional<std::string> folder = context.args.takeOption("--settings-dir");
    context.args.expect(0);
    SettingsStore store;
    const bool loaded = store.load(folder ? pathFromUtf8(*folder) : std::filesystem::path());
    if (!loaded)
        context.port.showMessage(msg::kSettingsUnreadable);
    return Result{loaded, settingsJson(store)};
}

} // namespace

void addSettingsCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"settings", "dump"}, "settings dump [--settings-dir DIR]", runSettingsDump, true});
}

} // namespace kestrelon::cli
