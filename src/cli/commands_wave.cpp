#include "cli/commands.h"

#include "cli/project_runner.h"
#include "common/messages.h"
#include "common/paths.h"
#include "settings/settings_store.h"
#include "wave/speech_events.h"
#include "wave/wave_file.h"
#include "wave/wave_save.h"
#include "waveform/wave_image.h"

#include <QGuiApplication>

#include <memory>

namespace kestrelon::cli {

namespace {

// The largest picture `wave render` draws, in either direction.
constexpr long long kMaxPictureSide = 16384;

bool loadWave(Context& context, const std::string& word, WaveFile& wave)
{
    if (wave.load(absolutePathArgument(word)))
        return true;
    context.port.showMessage(wave.error());
    return false;
}

// [--from S --to S]: samples, end excluded; the whole wave by default.
std::pair<std::int64_t, std::int64_t> takeRange(Context& context)
{
    const auto from = context.args.takeNumber("--from", 0, kMaxWaveFrames);
    const auto to = context.args.takeNumber("--to", 0, kMaxWaveFrames);
    return {from.value_or(0), to.value_or(-1)};
}

Result runWaveSave(Context& context)
{
    auto [from, to] = takeRange(context);
    const std::vector<std::string> words = context.args.expect(2);
    WaveFile wave;
    if (!loadWave(context, words[0], wave))
        return Result{false};
    if (to < 0)
        to = std::int64_t(wave.samples().size());
    const std::filesystem::path target = absolutePathArgument(words[1]);
    if (!saveWaveAs(target, wave.samples(), wave.sampleRate(), from, to, context.port))
        return Result{false};
    printSummary(context, "saved " + std::to_string(to - from) + " samples to " + words[1]);
    return Result{true,
                  Json{{"path", utf8FromPath(target)}, {"samples", to - from}, {"sampleRate", wave.sampleRate()}}};
}

// Fonts need a GUI application; a command line has no screen, so it gets the
// off-screen platform unless the caller chose one.
std::unique_ptr<QGuiApplication> pictureApplication()
{
    if (QCoreApplication::instance())
        return nullptr;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "kestrelon-cli";
    static char* argv[] = {name, nullptr};
    return std::make_unique<QGuiApplication>(argc, argv);
}

Result runWaveRender(Context& context)
{
    const std::optional<std::string> png = context.args.takeOption("--png");
    const int width = int(context.args.takeNumber("--width", 100, kMaxPictureSide).value_or(1600));
    const int height = int(context.args.takeNumber("--height", 60, kMaxPictureSide).value_or(200));
    auto [from, to] = takeRange(context);
    const std::optional<std::string> eventsFile = context.args.takeOption("--events");
    const std::optional<std::string> settingsFolder = context.args.takeOption("--settings-dir");
    const std::vector<std::string> words = context.args.expect(1);
    if (!png)
        throw UsageError("--png OUT.png is required");

    WaveFile wave;
    if (!loadWave(context, words[0], wave))
        return Result{false};
    if (to < 0)
        to = std::int64_t(wave.samples().size());
    if (from >= to || to > std::int64_t(wave.samples().size())) {
        context.port.showMessage(msg::kWaveRangeInvalid);
        return Result{false};
    }
    SettingsStore settings;
    if (!settings.load(settingsFolder ? absolutePathArgument(*settingsFolder) : std::filesystem::path()))
        context.port.showMessage(msg::kSettingsUnreadable);
    SpeechEventList events;
    if (eventsFile) {
        std::string label;
        std::string error;
        const std::filesystem::path path = absolutePathArgument(*eventsFile);
        if (!readSpeechEvents(path, events, label, context.port, &error))
            return finishCommand(context, Result{false},
                                 utf8FromPath(path) + (error.empty() ? std::string(msg::kWaveMissing) : ": " + error),
                                 {});
    }

    const std::unique_ptr<QGuiApplication> application = pictureApplication();
    WaveImageRequest request;
    request.samples = wave.samples();
    request.sampleRate = wave.sampleRate();
    request.from = from;
    request.to = to;
    request.width = width;
    request.height = height;
    request.colors = settings.colors;
    request.events = eventsFile ? &events : nullptr;
    const std::filesystem::path target = absolutePathArgument(*png);
    if (!saveWaveImage(renderWaveImage(request), target))
        return finishCommand(context, Result{false}, "cannot write " + utf8FromPath(target), {});
    printSummary(context, "drew samples " + std::to_string(from) + " to " + std::to_string(to) + " in " + *png);
    return Result{
        true, Json{{"path", utf8FromPath(target)}, {"width", width}, {"height", height}, {"from", from}, {"to", to}}};
}

} // namespace

void addWaveCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"wave", "save"}, "wave save SOURCE.wav OUT.wav [--from S --to S]", runWaveSave, false});
    table.push_back({{"wave", "render"},
                     "wave render SOURCE.wav --png OUT.png [--width W --height H] [--from S --to S] "
                     "[--events FILE.evt] [--settings-dir DIR]",
                     runWaveRender,
                     false});
}

} // namespace kestrelon::cli
