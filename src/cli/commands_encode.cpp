#include "cli/commands.h"

#include "bodies/body_settings.h"
#include "cli/project_runner.h"
#include "cli/spooled_array.h"
#include "codec/add_encode_data.h"
#include "codec/engine.h"
#include "codec/main_list.h"
#include "codec/project_algorithms.h"
#include "codec/results.h"
#include "codec/row_codec.h"
#include "common/paths.h"
#include "common/platform.h"
#include "common/user_port.h"
#include "host/codec_host.h"
#include "host/host_windows.h"
#include "model/project.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "project/tree_selection.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace kestrelon::cli {

namespace fs = std::filesystem;

namespace {

// --jobs N: rows run N at a time (the cores by default); --in-process runs one.
RowCodecChoice takeRowCodecChoice(Context& ctx)
{
    const long long jobs = ctx.args.takeNumber("--jobs", 1, kMostCodecJobs).value_or(defaultCodecJobs());
    return {ctx.inProcess, ctx.inProcess ? 1 : int(jobs)};
}

// The measures of what a batch decoded, beside the project: a failure to
// write them is said, but takes nothing from the decodes themselves.

std::string_view outcomeName(RowOutcome outcome)
{
    switch (outcome) {
    case RowOutcome::NotSelected: return "not-selected";
    case RowOutcome::Done: return "done";
    case RowOutcome::Invalid: return "invalid";
    case RowOutcome::Unreadable: return "unreadable";
    case RowOutcome::Failed: return "failed";
    case RowOutcome::NotReached: return "not-reached";
    }
    return "failed";
}

std::string_view outcomeName(SourceOutcome outcome)
{
    switch (outcome) {
    case SourceOutcome::Added: return "added";
    case SourceOutcome::Replaced: return "replaced";
    case SourceOutcome::Skipped: return "skipped";
    case SourceOutcome::NoChoice: return "no-choice";
    }
    return "no-choice";
}

std::string_view outcomeName(AddAlgorithmOutcome outcome)
{
    switch (outcome) {
    case AddAlgorithmOutcome::Added: return "added";
    case AddAlgorithmOutcome::Refreshed: return "refreshed";
    case AddAlgorithmOutcome::Declined: return "declined";
    case AddAlgorithmOutcome::Refused: return "refused";
    }
    return "refused";
}

Json rowJson(std::size_t index, const ListRow& row)
{
    const EditInfoRecord& record = row.record();
    return {
        {"row", index},
        {"fileName", row.source->id()},
        {"body", record.bodyName},
        {"algorithm", record.algoName},
        {"bitRate", record.bitRate},
        {"encodeSize", record.encodeSize},
        {"compressionRate", record.compressionRate},
        {"decodeSize", record.decodeSize},
        {"encodeName", record.encodeName},
        {"decodeName", record.decodeName},
        {"renameEncode", record.renameEncode},
    };
}

// The rows of the open project with their compression rates, as the list shows them.
std::shared_ptr<SpooledArray> rowsJson(ProjectSession& session, const BatchResult* batch = nullptr)
{
    MainList list = MainList::fromDocument(session.document());
    updateCompressionRates(list, originalSizesOf(session.document(), session.filesFolder()));
    auto rows = std::make_shared<SpooledArray>();
    for (std::size_t index = 0; index < list.size(); ++index) {
        Json row = rowJson(index, list.rows()[index]);
        if (batch && index < batch->rows.size() && batch->rows[index] != RowOutcome::NotSelected)
            row["outcome"] = outcomeName(batch->rows[index]);
        rows->add(row);
    }
    return rows;
}

// "--rows 0,2,5": row numbers from 0 in list order.
std::vector<std::size_t> parseRows(const std::string& text)
{
    std::vector<std::size_t> numbers;
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = text.find(',', start);
        const std::string word = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (word.empty() || word.size() > 9 || word.find_first_not_of("0123456789") != std::string::npos)
            throw UsageError("--rows takes row numbers from 0, separated by commas: " + text);
        numbers.push_back(static_cast<std::size_t>(std::stoul(word)));
        if (comma == std::string::npos)
            return numbers;
        start = comma + 1;
    }
}

// The body settings named by --settings (or the program's own). The reader's
// own messages ("Invalid data!") are in the port already.
bool loadBodies(Context& ctx, BodySettings& bodies, std::string& error)
{
    if (bodies.load(ctx.bodySettingsFile, ctx.programFolder, ctx.port))
        return true;
    error = "the body settings file " + utf8FromPath(ctx.bodySettingsFile) + " cannot be read";
    return false;
}

// The error for a body / algorithm / bit rate the body settings do not offer
// together, naming what is offered; empty when they are offered.
std::string choiceError(const BodySettings& bodies, const std::string& body, const std::string& algorithm,
                        const std::string& bitRate)
{
    const BodyInfo* info = bodies.findBody(body);
    if (info == nullptr) {
        std::string known;
        for (const BodyInfo& b : bodies.bodies())
            known += (known.empty() ? "" : ", ") + b.name;
        return "unknown body \"" + body + "\" (the body settings offer: " + known + ")";
    }
    const auto algo = std::find_if(info->algorithms.begin(), info->algorithms.end(),
                                   [&](const BodyAlgoInfo& a) { return a.name == algorithm; });
    if (algo == info->algorithms.end()) {
        std::string known;
        for (const BodyAlgoInfo& a : info->algorithms)
            known += (known.empty() ? "" : ", ") + a.name;
        return "body \"" + body + "\" has no algorithm \"" + algorithm + "\" (it offers: " + known + ")";
    }
    if (offeredAlgorithm(bodies, body, algorithm, bitRate) == nullptr) {
        std::string known;
        for (const std::string& rate : algo->bitRates)
            known += (known.empty() ? "" : ", ") + rate;
        return "algorithm \"" + algorithm + "\" of body \"" + body + "\" has no bit rate \"" + bitRate +
               "\" (it offers: " + known + ")";
    }
    return {};
}

Json registryJson(const std::vector<AlgoRegEntry>& registry)
{
    Json list = Json::array();
    for (const AlgoRegEntry& entry : registry)
        list.push_back({{"algorithm", entry.name}, {"path", entry.path}});
    return list;
}

Result projectAddAlgo(Context& ctx)
{
    const auto words = ctx.args.expect(2);
    const fs::path library = absolutePathArgument(words[1]);
    AddAlgorithmOutcome outcome = AddAlgorithmOutcome::Refused;
    Json registry = Json::array();
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        MainHostWindow mainWindow;
        CodecHost host(ctx.programFolder, ctx.port, mainWindow);
        outcome = addAlgorithmToProject(project.session(), project.algorithms(), host, library, ctx.port);
        registry = registryJson(project.algorithms());
        return outcome != AddAlgorithmOutcome::Refused;
    });
    result.fields["outcome"] = outcomeName(outcome);
    result.fields["algorithms"] = std::move(registry);
    return finishCommand(ctx, std::move(result), {}, std::string(outcomeName(outcome)) + " " + utf8FromPath(library));
}

Result projectAddEncode(Context& ctx)
{
    const RowCodecChoice codecChoice = takeRowCodecChoice(ctx);
    const std::optional<std::string> body = ctx.args.takeOption("--body");
    const std::optional<std::string> algorithm = ctx.args.takeOption("--algo");
    const std::optional<std::string> bitRate = ctx.args.takeOption("--rate");
    const bool decode = ctx.args.takeFlag("--decode");
    const auto words = ctx.args.positionals();
    if (words.empty())
        throw UsageError("expected PROJECT.ptp");
    if (!body || !algorithm || !bitRate)
        throw UsageError("--body, --algo and --rate are required");
    const std::vector<std::string> ids(words.begin() + 1, words.end());

    std::string error;
    BodySettings bodies;
    if (!loadBodies(ctx, bodies, error) || !(error = choiceError(bodies, *body, *algorithm, *bitRate)).empty())
        return finishCommand(ctx, Result{false}, error, {});

    AddEncodeResult added;
    bool allEncoded = true;
    Json sources = Json::array();
    std::shared_ptr<SpooledArray> rows = std::make_shared<SpooledArray>();
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        ProjectSession& session = project.session();
        // The named sources (or all of them) as a selection of the Files tree, in tree order.
        const std::vector<ProjectItem*> order = filesTreeOrder(session.document());
        std::vector<ProjectItem*> selected;
        for (const std::string& id : ids) {
            const auto found = std::find_if(order.begin(), order.end(), [&](const ProjectItem* item) {
                return item->isSource() && item->id() == id;
            });
            if (found == order.end()) {
                error = "no source file with id " + id;
                return false;
            }
        }
        for (ProjectItem* item : order)
            if (item->isSource() && (ids.empty() || std::find(ids.begin(), ids.end(), item->id()) != ids.end()))
                selected.push_back(item);

        project.setBodies(&bodies);
        project.setCodec(codecChoice);
        FixedEncodeSetting chooser(*body, *algorithm, *bitRate);
        LastEncodeSetting last{*body, *algorithm, *bitRate, true};
        added = project.addEncodeData(selected, chooser, last, decode, ctx.port);
        // The items live only as long as the open project.
        for (const AddedSource& source : added.sources) {
            Json item = {{"id", source.source->id()}, {"outcome", outcomeName(source.outcome)}};
            if (source.outcome == SourceOutcome::Added || source.outcome == SourceOutcome::Replaced) {
                item["encode"] = outcomeName(source.encode);
                allEncoded = allEncoded && source.encode == RowOutcome::Done;
            }
            if (source.outcome == SourceOutcome::NoChoice)
                allEncoded = false;
            sources.push_back(std::move(item));
        }
        rows = rowsJson(session);
        return true;
    });

    result.ok = result.ok && allEncoded;
    result.fields["sources"] = std::move(sources);
    result.fields["stopped"] = added.stopped;
    setSpooledField(result, "rows", std::move(rows));
    std::size_t counts[4] = {};
    for (const AddedSource& source : added.sources)
        ++counts[static_cast<int>(source.outcome)];
    return finishCommand(ctx, std::move(result), error,
                         *body + " / " + *algorithm + " / " + *bitRate + ": " + std::to_string(counts[0]) + " added, " +
                             std::to_string(counts[1]) + " replaced, " + std::to_string(counts[2]) + " skipped" +
                             (added.stopped ? ", stopped" : ""));
}

// encode and decode: the rows of --rows (all rows without it) are the selection.
Result runBatchCommand(Context& ctx, bool encoding)
{
    const RowCodecChoice codecChoice = takeRowCodecChoice(ctx);
    const std::optional<std::string> rowsText = ctx.args.takeOption("--rows");
    const bool decodeToo = encoding && ctx.args.takeFlag("--decode");
    const auto words = ctx.args.expect(1);
    const std::optional<std::vector<std::size_t>> chosen =
        rowsText ? std::optional(parseRows(*rowsText)) : std::nullopt;

    std::string error;
    BodySettings bodies;
    if (!loadBodies(ctx, bodies, error))
        return finishCommand(ctx, Result{false}, error, {});

    BatchResult batch;
    std::shared_ptr<SpooledArray> rows = std::make_shared<SpooledArray>();
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        MainList list = project.rows();
        if (chosen) {
            for (const std::size_t number : *chosen)
                if (number >= list.size()) {
                    error = "no row " + std::to_string(number) + ": the project has " + std::to_string(list.size()) +
                            " row(s)";
                    return false;
                }
            list.selectRows(*chosen);
        } else {
            list.selectAll();
        }
        project.setBodies(&bodies);
        project.setCodec(codecChoice);
        batch = encoding ? project.encode(list, decodeToo, ctx.port) : project.decode(list, ctx.port);
        rows = rowsJson(project.session(), &batch);
        // The rows' results are saved whatever became of the others.
        return true;
    });
    result.ok = result.ok && batch.allDone();
    setSpooledField(result, "rows", std::move(rows));
    const std::size_t done = batch.count(RowOutcome::Done);
    return finishCommand(ctx, std::move(result), error,
                         (encoding ? "encoded " : "decoded ") + std::to_string(done) + " row(s)");
}

Result projectEncode(Context& ctx)
{
    return runBatchCommand(ctx, true);
}
Result projectDecode(Context& ctx)
{
    return runBatchCommand(ctx, false);
}

Result projectList(Context& ctx)
{
    const auto words = ctx.args.expect(1);
    std::shared_ptr<SpooledArray> rows = std::make_shared<SpooledArray>();
    Result result = runProjectOperation(ctx, words[0], [&](ProjectSession& session) {
        rows = rowsJson(session);
        return true;
    });
    setSpooledField(result, "rows", std::move(rows));
    return result;
}

} // namespace

void addEncodeCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"project", "add-algo"}, "project add-algo PROJECT.ptp PLUGIN", &projectAddAlgo, false});
    table.push_back({{"project", "add-encode"},
                     "project add-encode PROJECT.ptp --body B --algo A --rate R [--decode] [--jobs N] [ID...]",
                     &projectAddEncode,
                     false});
    table.push_back({{"project", "encode"},
                     "project encode PROJECT.ptp [--rows N,...] [--decode] [--jobs N]",
                     &projectEncode,
                     false});
    table.push_back(
        {{"project", "decode"}, "project decode PROJECT.ptp [--rows N,...] [--jobs N]", &projectDecode, false});
    table.push_back({{"project", "list"}, "project list PROJECT.ptp", &projectList, true});
}

} // namespace kestrelon::cli
