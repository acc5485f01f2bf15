#include "cli/project_runner.h"

#include "cli/project_json.h"
#include "cli/spooled_array.h"
#include "common/paths.h"
#include "common/platform.h"
#include "model/project.h"
#include "project/project_folder_ops.h"
#include "project/project_session.h"

#include <iostream>
#include <system_error>

namespace kestrelon::cli {

namespace fs = std::filesystem;

fs::path absolutePathArgument(const std::string& word)
{
    return absoluteNormal(pathFromUtf8(word));
}

void printSummary(const Context& context, const std::string& line)
{
    if (!context.json)
        std::cout << line << '\n';
}

Result finishCommand(const Context& context, Result result, const std::string& error, const std::string& summary)
{
    if (!error.empty()) {
        result.ok = false;
        result.fields["error"] = error;
        std::cerr << "kestrelon-cli: " << error << '\n';
    } else if (result.ok) {
        printSummary(context, summary);
    }
    return result;
}

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

Result runProjectOperation(Context& context, const std::string& ptpPath, std::function<bool(ProjectSession&)> operation)
{
    return runProjectOperation(context, ptpPath,
                               [&](Project& project) { return operation ? operation(project.session()) : true; });
}

Result runProjectOperation(Context& context, const std::string& ptpPath, std::function<bool(Project&)> operation)
{
    std::error_code ec;
    const fs::path file = absolutePathArgument(ptpPath);
    // Closing returns to the folder the command was started in.
    Project project(context.port, {context.programFolder, userConfigFolder(), fs::current_path(ec)});
    ProjectSession& session = project.session();
    if (!session.openProject(file))
        return {false, {{"files", Json::array()}, {"project", utf8FromPath(file)}}};

    bool ok = operation ? operation(project) : true;
    if (ok && session.document().isModified())
        ok = session.saveProject();
    std::shared_ptr<SpooledArray> files = filesJson(session.document());
    const fs::path endedAs = session.projectFile();
    Result result{session.closeProject() && ok};
    setSpooledField(result, "files", std::move(files));
    result.fields["project"] = utf8FromPath(endedAs);
    return result;
}

} // namespace kestrelon::cli
