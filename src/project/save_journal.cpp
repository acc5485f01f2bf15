#include "project/save_journal.h"

#include "common/file_io.h"
#include "common/paths.h"
#include "project/project_document.h"

#include <cstdint>
#include <sstream>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

fs::path journalPath(const fs::path& projectFile)
{
    fs::path journal = projectFile;
    journal += ".kestrelon-save";
    return journal;
}

// FNV-1a: enough to tell the new project file from the old one.
std::string digest(std::string_view bytes)
{
    std::uint64_t hash = 1469598103934665603ull;
    for (const unsigned char c : bytes) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    return std::to_string(bytes.size()) + "-" + std::to_string(hash);
}

// One staged copy a line: the staged file and its target, as names relative
// to the project folder, separated by a tab.
std::string journalText(std::string_view projectText, const std::vector<StagedCopy>& staged, const fs::path& folder)
{
    std::string text = digest(projectText) + "\n";
    for (const StagedCopy& copy : staged)
        text += utf8FromPath(copy.part.lexically_relative(folder)) + "\t" +
                utf8FromPath(copy.copy.to.lexically_relative(folder)) + "\n";
    return text;
}

} // namespace

SaveCommitOutcome commitSave(const fs::path& projectFile, std::string_view projectText,
                             const std::vector<FileCopy>& work,
                             const std::function<bool(std::string& why)>& writeProjectFile)
{
    const fs::path folder = projectFile.parent_path();
    const StageOutcome staged = stageCopies(work);
    if (!staged.ok)
        return {false, true, staged.failed, staged.reason};
    const fs::path journal = journalPath(projectFile);
    std::string why;
    if (!staged.staged.empty() &&
        !writeFileAtomically(journal, journalText(projectText, staged.staged, folder), &why)) {
        abandonStagedCopies(staged.staged, 0);
        return {false, false, {}, why};
    }
    if (!writeProjectFile(why)) {
        abandonStagedCopies(staged.staged, 0);
        removeQuietly(journal);
        return {false, false, {}, why};
    }
    // Committed. A copy that cannot be placed now is placed by the next open.
    if (placeStagedCopies(staged.staged).ok)
        removeQuietly(journal);
    return {};
}

bool recoverInterruptedSave(const fs::path& projectFile)
{
    const fs::path journal = journalPath(projectFile);
    const ReadResult read = readFile(journal);
    if (read.status != ReadStatus::Ok)
        return false;
    const fs::path folder = projectFile.parent_path();
    const ReadResult project = readFile(projectFile, kMaxProjectFileBytes);
    std::istringstream lines(read.bytes);
    std::string expected;
    std::getline(lines, expected);
    const bool committed = project.status == ReadStatus::Ok && digest(project.bytes) == expected;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t tab = line.find('\t');
        if (tab == std::string::npos)
            continue;
        const fs::path part = folder / pathFromUtf8(line.substr(0, tab));
        const fs::path target = folder / pathFromUtf8(line.substr(tab + 1));
        // Only names inside the project folder are ever touched.
        if (!isInsideFolder(part, folder, false) || !isInsideFolder(target, folder, false))
            continue;
        std::error_code ec;
        if (committed && isRegularFile(part))
            fs::rename(part, target, ec);
        else
            removeQuietly(part);
    }
    syncToDisk(folder);
    removeQuietly(journal);
    return true;
}

} // namespace kestrelon
