#include "cli/commands.h"

#include "cli/project_runner.h"
#include "codec/main_list.h"
#include "codec/row_quality.h"
#include "common/paths.h"
#include "project/project_session.h"

#include <algorithm>
#include <cmath>

namespace kestrelon::cli {

namespace {

// Two decimals are what a person compares; JSON keeps them as numbers.
double rounded(double value)
{
    return std::round(value * 100.0) / 100.0;
}

// Measures the decoded rows (--rows, or every row) against their sources and
// keeps the measures beside the project; rows measured before, whose decode
// has not changed since, are read back instead of measured again.
Result projectQuality(Context& ctx)
{
    const std::optional<std::string> rowsText = ctx.args.takeOption("--rows");
    const auto words = ctx.args.expect(1);
    const std::optional<std::vector<size_t>> chosen =
        rowsText ? std::optional(parseRowNumbers(*rowsText)) : std::nullopt;

    std::string error;
    Json rows = Json::array();
    QualityFile stored;
    Result result = runProjectOperation(ctx, words[0], [&](ProjectSession& session) {
        MainList list = MainList::fromDocument(session.document());
        if (chosen && !list.selectRows(*chosen)) {
            error = "no row " + std::to_string(*std::max_element(chosen->begin(), chosen->end())) +
                    ": the project has " + std::to_string(list.size()) + " row(s)";
            return false;
        }
        stored.load(session.projectFile());
        bool allMeasured = true; // every decoded row visited
        bool added = false;
        for (size_t i = 0; i < list.size(); ++i) {
            if (chosen && !list.isSelected(i))
                continue;
            const EditInfoRecord& record = list.rows()[i].record();
            Json row = {{"row", i},
                        {"fileName", record.fileName},
                        {"body", record.bodyName},
                        {"algorithm", record.algoName},
                        {"bitRate", record.bitRate}};
            std::optional<QualityMeasures> measures = stored.find(record);
            if (!measures && !record.decodeName.empty()) {
                measures = measureRowQuality(session, record, ctx.port);
                if (measures) {
                    stored.put(record, *measures);
                    added = true;
                }
            }
            if (measures) {
                row["segmentalSnrDb"] = rounded(measures->segmentalSnrDb);
                row["melDistanceDb"] = rounded(measures->melDistanceDb);
                row["durationRatio"] = rounded(measures->durationRatio);
                row["lagSamples"] = measures->lagSamples;
            } else {
                row["measured"] = false; // never decoded, or its reason is among the messages
                allMeasured = allMeasured && record.decodeName.empty();
            }
            rows.push_back(std::move(row));
        }
        if (added && !stored.save()) {
            error = utf8FromPath(stored.path()) + " could not be written";
            return false;
        }
        return allMeasured;
    });
    result.fields.erase("files");
    result.fields["qualityFile"] = utf8FromPath(stored.path());
    result.fields["rows"] = std::move(rows);
    return finishCommand(ctx, std::move(result), error,
                         "measured the decoded rows; kept in " + utf8FromPath(stored.path()));
}

} // namespace

void addQualityCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"project", "quality"}, "project quality PROJECT.ptp [--rows N,...]", &projectQuality, false});
}

} // namespace kestrelon::cli
