#include "cli/commands.h"

#include "bodies/body_settings.h"
#include "cli/project_runner.h"
#include "codec/row_codec.h"
#include "common/file_io.h"
#include "common/paths.h"
#include "common/platform.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "project/workspace_tree.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

namespace kestrelon::cli {

namespace fs = std::filesystem;

namespace {

struct Setting {
    std::string algorithm;
    std::string bitRate;
};

// One setting of the sweep: its own scratch project (a source takes one row
// per algorithm, so each setting needs a project of its own), made and worked
// by this same program run as child processes, so that nothing of the user's
// project changes and the settings run side by side, one per core.
struct Share {
    fs::path folder;
    Setting setting;
    std::string error;
    Json list;
    Json quality;
};

Json runChild(const fs::path& cli, const fs::path& settingsFile, const Share& share, std::vector<std::string> words,
              std::string& error)
{
    words.insert(words.begin(), {"--json", "--yes", "--settings", utf8FromPath(settingsFile)});
    const fs::path out = share.folder / "child.out";
    const fs::path err = share.folder / "child.err";
    const int status = runProgram(cli, words, out, err);
    const ReadResult printed = readFile(out);
    Json answer = Json::parse(printed.bytes, nullptr, false);
    if (status != 0 || answer.is_discarded()) {
        error = words[4] + " " + words[5] + " failed: " + readFile(err).bytes;
        return Json();
    }
    return answer;
}

void runShare(const fs::path& cli, const fs::path& settingsFile, const std::string& body,
              const std::vector<fs::path>& waves, Share& share)
{
    std::error_code ec;
    fs::create_directories(share.folder, ec);
    const std::string ptp = utf8FromPath(share.folder / "Sweep" / "Sweep.ptp");
    std::vector<std::string> add = {"project", "add-files", ptp};
    for (const fs::path& wave : waves)
        add.push_back(utf8FromPath(wave));
    if (runChild(cli, settingsFile, share, {"project", "new", utf8FromPath(share.folder), "Sweep"}, share.error)
            .is_null() ||
        runChild(cli, settingsFile, share, add, share.error).is_null())
        return;
    if (runChild(cli, settingsFile, share,
                 {"project", "add-encode", ptp, "--body", body, "--algo", share.setting.algorithm, "--rate",
                  share.setting.bitRate, "--decode", "--jobs", "1"},
                 share.error)
            .is_null())
        return;
    share.list = runChild(cli, settingsFile, share, {"project", "list", ptp}, share.error);
    if (!share.list.is_null())
        share.quality = runChild(cli, settingsFile, share, {"project", "quality", ptp}, share.error);
}

std::string csvField(const Json& value)
{
    std::string text = value.is_string() ? value.get<std::string>() : value.is_null() ? "" : value.dump();
    if (text.find_first_of(",\"\n") == std::string::npos)
        return text;
    std::string quotedText = "\"";
    for (char c : text)
        quotedText += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quotedText + "\"";
}

// What a sweep is asked: the body, its algorithms (all when none are named),
// where the table goes and how many workers run.
struct SweepRequest {
    std::string body;
    std::vector<std::string> algorithms;
    fs::path csv;
    unsigned jobs = 1;
};

SweepRequest takeSweepOptions(Context& ctx)
{
    SweepRequest request;
    const std::optional<std::string> body = ctx.args.takeOption("--body");
    if (!body)
        throw UsageError("--body B is required");
    request.body = *body;
    while (const auto algorithm = ctx.args.takeOption("--algo"))
        request.algorithms.push_back(*algorithm);
    if (const std::optional<std::string> csv = ctx.args.takeOption("--csv"))
        request.csv = absolutePathArgument(*csv);
    request.jobs = unsigned(ctx.args.takeNumber("--jobs", 1, kMostCodecJobs).value_or(defaultCodecJobs()));
    return request;
}

// Encodes and decodes `waves` at every bit rate the body offers for each of
// the algorithms asked, in scratch projects of their own, and reports per
// source and setting the encode size, compression rate and quality.
Result sweepWaves(Context& ctx, const SweepRequest& request, const std::vector<fs::path>& waves, Result result)
{
    BodySettings bodies;
    if (!bodies.load(ctx.bodySettingsFile, ctx.programFolder, ctx.port))
        return finishCommand(ctx, Result{false},
                             "the body settings file " + utf8FromPath(ctx.bodySettingsFile) + " cannot be read", {});
    const BodyInfo* chosenBody = bodies.findBody(request.body);
    if (!chosenBody)
        return finishCommand(ctx, Result{false}, "unknown body \"" + request.body + "\"", {});
    const std::vector<std::string>& algorithms = request.algorithms;
    std::vector<Setting> settings;
    for (const BodyAlgoInfo& algorithm : chosenBody->algorithms)
        if (algorithms.empty() || std::find(algorithms.begin(), algorithms.end(), algorithm.name) != algorithms.end())
            for (const std::string& rate : algorithm.bitRates)
                settings.push_back({algorithm.name, rate});
    if (settings.empty())
        return finishCommand(ctx, Result{false}, "the body \"" + request.body + "\" offers none of these algorithms",
                             {});

    // Every setting in a scratch project of its own; `jobs` workers take them in turn.
    std::string error;
    const fs::path scratch = fs::temp_directory_path() / ("kestrelon-sweep-" + std::to_string(std::random_device{}()));
    std::vector<Share> shares(settings.size());
    for (std::size_t i = 0; i < settings.size(); ++i) {
        shares[i].folder = scratch / std::to_string(i);
        shares[i].setting = settings[i];
    }
    const fs::path cli = ctx.programFolder / pathFromUtf8("kestrelon-cli");
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> workers;
    for (unsigned j = 0; j < std::min<std::size_t>(request.jobs, shares.size()); ++j)
        workers.emplace_back([&] {
            for (std::size_t i = next++; i < shares.size(); i = next++)
                runShare(cli, ctx.bodySettingsFile, request.body, waves, shares[i]);
        });
    for (std::thread& worker : workers)
        worker.join();
    std::error_code ec;
    fs::remove_all(scratch, ec);

    Json rows = Json::array();
    for (const Share& share : shares) {
        if (!share.error.empty()) {
            error = share.error;
            continue;
        }
        for (std::size_t i = 0; i < share.list["rows"].size(); ++i) {
            const Json& listed = share.list["rows"][i];
            const Json& measured = share.quality["rows"][i];
            rows.push_back({{"fileName", listed["fileName"]},
                            {"algorithm", listed["algorithm"]},
                            {"bitRate", listed["bitRate"]},
                            {"encodeSize", listed["encodeSize"]},
                            {"compressionRate", listed["compressionRate"]},
                            {"segmentalSnrDb", measured.value("segmentalSnrDb", Json())},
                            {"melDistanceDb", measured.value("melDistanceDb", Json())},
                            {"durationRatio", measured.value("durationRatio", Json())}});
        }
    }
    // Per source, then algorithm and bit rate as the body lists them.
    const auto place = [&](const Json& row) {
        const auto source = std::find_if(waves.begin(), waves.end(), [&](const fs::path& wave) {
            return utf8FromPath(wave.filename()) == row["fileName"].get<std::string>();
        });
        const auto setting = std::find_if(settings.begin(), settings.end(), [&](const Setting& s) {
            return s.algorithm == row["algorithm"] && s.bitRate == row["bitRate"];
        });
        return std::pair(source - waves.begin(), setting - settings.begin());
    };
    std::stable_sort(rows.begin(), rows.end(), [&](const Json& a, const Json& b) { return place(a) < place(b); });

    if (!request.csv.empty()) {
        std::string text = "fileName,algorithm,bitRate,encodeSize,compressionRate,segmentalSnrDb,melDistanceDb,"
                           "durationRatio" +
                           std::string(kNativeEol);
        for (const Json& row : rows) {
            std::string line;
            for (const char* key : {"fileName", "algorithm", "bitRate", "encodeSize", "compressionRate",
                                    "segmentalSnrDb", "melDistanceDb", "durationRatio"})
                line += (line.empty() ? "" : ",") + csvField(row[key]);
            text += line + std::string(kNativeEol);
        }
        if (!writeFileAtomically(request.csv, text))
            error = utf8FromPath(request.csv) + " could not be written";
    }
    result.ok = error.empty();
    result.fields["jobs"] = workers.size();
    result.fields["rows"] = std::move(rows);
    return finishCommand(ctx, std::move(result), error,
                         "swept " + std::to_string(waves.size()) + " source(s) at " + std::to_string(settings.size()) +
                             " setting(s)" + (request.csv.empty() ? "" : "; table in " + utf8FromPath(request.csv)));
}

// The project's sources given by ID (every source by default), swept in
// scratch projects that leave the user's project as it was.
Result projectSweep(Context& ctx)
{
    const SweepRequest request = takeSweepOptions(ctx);
    const auto words = ctx.args.positionals();
    if (words.empty())
        throw UsageError("expected PROJECT.ptp");
    const std::vector<std::string> ids(words.begin() + 1, words.end());
    std::string error;
    std::vector<fs::path> waves;
    Result result = runProjectOperation(ctx, words[0], [&](ProjectSession& session) {
        for (const ProjectItem* item : filesTreeOrder(session.document()))
            if (item->isSource() && (ids.empty() || std::find(ids.begin(), ids.end(), item->id()) != ids.end()))
                waves.push_back(session.filesFolder() / pathFromUtf8(item->id()));
        if (waves.empty())
            error = "no source file to sweep";
        return waves.size() > 0;
    });
    result.fields.erase("files");
    if (!error.empty() || !result.ok)
        return finishCommand(ctx, std::move(result), error, {});
    return sweepWaves(ctx, request, waves, std::move(result));
}

// Wave files swept as they are, with no project: what the workbench's
// comparison runs while its project stays open.
Result wavesSweep(Context& ctx)
{
    const SweepRequest request = takeSweepOptions(ctx);
    std::vector<fs::path> waves;
    for (const std::string& word : ctx.args.positionals())
        waves.push_back(absolutePathArgument(word));
    if (waves.empty())
        throw UsageError("expected WAVE...");
    for (const fs::path& wave : waves)
        if (!isRegularFile(wave))
            return finishCommand(ctx, Result{false}, utf8FromPath(wave) + " does not exist", {});
    return sweepWaves(ctx, request, waves, Result{true});
}

} // namespace

void addSweepCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"project", "sweep"},
                     "project sweep PROJECT.ptp --body B [--algo A ...] [--csv FILE] [--jobs N] [ID...]",
                     &projectSweep,
                     false});
    table.push_back({{"sweep"}, "sweep --body B [--algo A ...] [--csv FILE] [--jobs N] WAVE...", &wavesSweep, false});
}

} // namespace kestrelon::cli
