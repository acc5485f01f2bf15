#include "cli/commands.h"

#include "cli/project_runner.h"
#include "codec/main_list.h"
#include "common/paths.h"
#include "project/project_session.h"
#include "settings/export.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace kestrelon::cli {

namespace {

// "--rows 0,2,5": row numbers from 0 in list order. Anything but a
// comma-separated list of decimal numbers is a usage mistake.
std::vector<size_t> parseRowNumbers(const std::string& text)
{
    std::vector<size_t> numbers;
    size_t start = 0;
    while (true) {
        const size_t comma = text.find(',', start);
        const std::string word = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (word.empty() || word.size() > 9 || word.find_first_not_of("0123456789") != std::string::npos)
            throw UsageError("--rows takes row numbers from 0, separated by commas: " + text);
        numbers.push_back(static_cast<size_t>(std::stoul(word)));
        if (comma == std::string::npos)
            return numbers;
        start = comma + 1;
    }
}

Json pathsJson(const std::vector<std::filesystem::path>& paths)
{
    Json list = Json::array();
    for (const std::filesystem::path& path : paths)
        list.push_back(utf8FromPath(path));
    return list;
}

// Export-all, or export-selected with the rows of --rows selected. DIR is
// taken from the folder the command was started in, like every path argument:
// opening the project changes the current folder, and a relative DIR must not
// land inside the project. An existing file is replaced only on --yes.
Result projectExport(Context& ctx)
{
    const bool header = ctx.args.takeFlag("--header");
    const std::optional<std::string> folder = ctx.args.takeOption("--out");
    const std::optional<std::string> rowsText = ctx.args.takeOption("--rows");
    const auto words = ctx.args.expect(1);
    if (!folder || folder->empty())
        throw UsageError("--out DIR is required");
    const std::string outFolder = utf8FromPath(absolutePathArgument(*folder));
    const std::optional<std::vector<size_t>> chosen =
        rowsText ? std::optional(parseRowNumbers(*rowsText)) : std::nullopt;

    ExportOutcome outcome;
    std::string error;
    Result result = runProjectOperation(ctx, words[0], [&](ProjectSession& session) {
        MainList list = MainList::fromDocument(session.document());
        if (chosen && !list.selectRows(*chosen)) {
            const size_t bad = *std::max_element(chosen->begin(), chosen->end());
            error = "no row " + std::to_string(bad) + ": the project has " + std::to_string(list.size()) + " row(s)";
            return false;
        }
        outcome = exportRows(session, list.rows(), list.selection, {outFolder, header},
                             chosen ? ExportKind::Selected : ExportKind::All, ctx.port);
        return outcome.ok;
    });

    result.fields["exported"] = pathsJson(outcome.exported);
    result.fields["events"] = pathsJson(outcome.eventFiles);
    result.fields["index"] = outcome.indexFile.empty() ? Json(nullptr) : Json(utf8FromPath(outcome.indexFile));
    if (!error.empty()) {
        result.ok = false;
        result.fields["error"] = error;
        std::cerr << "kestrelon-cli: " << error << '\n';
    } else if (!outcome.indexFile.empty()) {
        printSummary(ctx, "exported " + std::to_string(outcome.exported.size()) + " file(s) to " +
                              utf8FromPath(outcome.indexFile.parent_path()));
    }
    return result;
}

} // namespace

void addExportCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"project", "export"}, "project export PROJECT.ptp --out DIR [--header] [--rows N,...]",
                     &projectExport, false});
}

} // namespace kestrelon::cli
