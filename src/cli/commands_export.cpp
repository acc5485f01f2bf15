#include "cli/commands.h"

#include "cli/project_runner.h"
#include "codec/main_list.h"
#include "common/paths.h"
#include "export/export.h"
#include "export/firmware_export.h"
#include "model/project.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace kestrelon::cli {

namespace {

// --format and the options of the firmware formats.
FirmwareOptions firmwareOptionsFrom(Arguments& args)
{
    FirmwareOptions options;
    if (const auto format = args.takeOption("--format")) {
        const auto named = firmwareFormatNamed(*format);
        if (!named)
            throw UsageError("--format takes raw, c or image: " + *format);
        options.format = *named;
    }
    if (const auto name = args.takeOption("--name"))
        options.baseName = *name;
    if (const auto align = args.takeOption("--align")) {
        if (align->empty() || align->size() > 6 || align->find_first_not_of("0123456789") != std::string::npos)
            throw UsageError("--align takes a power of two from 1 to 65536: " + *align);
        options.alignment = static_cast<std::uint32_t>(std::stoul(*align));
    }
    if (const auto order = args.takeOption("--byte-order")) {
        if (*order != "little" && *order != "big")
            throw UsageError("--byte-order takes little or big: " + *order);
        options.bigEndian = *order == "big";
    }
    if (const auto pad = args.takeOption("--pad")) {
        std::size_t used = 0;
        unsigned long value = 256;
        try {
            value = std::stoul(*pad, &used, 0);
        } catch (const std::exception&) {}
        if (used != pad->size() || value > 255)
            throw UsageError("--pad takes a byte, e.g. 0xff or 0: " + *pad);
        options.padByte = static_cast<std::uint8_t>(value);
    }
    if (const std::string error = firmwareOptionsError(options); !error.empty())
        throw UsageError(error);
    return options;
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
    const FirmwareOptions firmware = firmwareOptionsFrom(ctx.args);
    const auto words = ctx.args.expect(1);
    if (!folder || folder->empty())
        throw UsageError("--out DIR is required");
    const std::string outFolder = utf8FromPath(absolutePathArgument(*folder));
    const std::optional<std::vector<size_t>> chosen =
        rowsText ? std::optional(parseRowNumbers(*rowsText)) : std::nullopt;

    ExportOutcome outcome;
    FirmwareOutcome firmwareOutcome;
    std::string error;
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        MainList list = project.rows();
        if (chosen && !list.selectRows(*chosen)) {
            const size_t bad = *std::max_element(chosen->begin(), chosen->end());
            error = "no row " + std::to_string(bad) + ": the project has " + std::to_string(list.size()) + " row(s)";
            return false;
        }
        const ExportResult written = project.exportRows(
            list, {outFolder, header}, chosen ? ExportKind::Selected : ExportKind::All, firmware, ctx.port);
        outcome = written.rows;
        firmwareOutcome = written.firmware;
        if (!firmwareOutcome.ok)
            error = firmwareOutcome.error;
        return outcome.ok && firmwareOutcome.ok;
    });

    result.fields["exported"] = pathsJson(outcome.exported);
    result.fields["events"] = pathsJson(outcome.eventFiles);
    result.fields["index"] = outcome.indexFile.empty() ? Json(nullptr) : Json(utf8FromPath(outcome.indexFile));
    static constexpr const char* kFormatNames[] = {"raw", "c", "image"};
    result.fields["format"] = kFormatNames[static_cast<int>(firmware.format)];
    result.fields["firmware"] = pathsJson(firmwareOutcome.written);
    result.fields["summary"] = {{"items", outcome.files.size()},
                                {"dataBytes", firmwareOutcome.dataBytes},
                                {"totalBytes", firmwareOutcome.totalBytes}};
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
    table.push_back(
        {{"project", "export"},
         "project export PROJECT.ptp --out DIR [--header] [--rows N,...] [--format raw|c|image] [--name BASE] "
         "[--align N] [--byte-order little|big] [--pad BYTE]",
         &projectExport,
         false});
}

} // namespace kestrelon::cli
