#pragma once
// The frame of every kestrelon-cli command that changes a project: open it,
// run the operation, save when the operation succeeded and changed something,
// close, and answer with the tree as `project dump` shows it. The project is
// the one the workbench holds, without a recent-project list: scripts must
// not reorder the user's menu.
#include "cli/cli_command.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kestrelon {
class Project;
class ProjectSession;
} // namespace kestrelon

namespace kestrelon::cli {

// A command-line path made absolute against the current folder now. Opening a
// project makes its folder the current one, so a command resolves its path
// arguments before it opens anything.
std::filesystem::path absolutePathArgument(const std::string& word);

// One line for a person on standard output; nothing with --json, where the
// JSON object is the answer.
void printSummary(const Context& context, const std::string& line);

// How a project command ends: a non-empty `error` makes the result fail, is
// kept as the "error" field and printed on standard error; otherwise a
// successful result prints `summary` (printSummary).
Result finishCommand(const Context& context, Result result, const std::string& error, const std::string& summary);

// "--rows 0,2,5": row numbers from 0 in list order. Anything but a
// comma-separated list of decimal numbers is a usage mistake (UsageError).
std::vector<size_t> parseRowNumbers(const std::string& text);

// Opens `ptpPath` (failure: ok false, "files" empty), runs `operation`, saves
// when it returned true and the project is modified, and closes. When the
// operation failed and left the project modified, the close asks whether to
// save, and the global --yes/--no/--cancel answers. ok: the operation, the
// save and the close all succeeded. Fields: "files", the Files tree after the
// operation, and "project", the project file it ended as.
Result runProjectOperation(Context& context, const std::string& ptpPath,
                           std::function<bool(ProjectSession&)> operation);

// The same for operations on the whole project (its rows through the engine,
// its play list and algorithm registry), which the workbench holds alike.
Result runProjectOperation(Context& context, const std::string& ptpPath, std::function<bool(Project&)> operation);

} // namespace kestrelon::cli
