#include "project/project_folder_ops.h"

#include "common/fault_points.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string>
#include <system_error>
#include <thread>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

// Far deeper than any real folder tree; a deeper one is refused rather than
// followed down.
constexpr int kMaxFolderDepth = 1024;

fs::file_status entryStatus(const fs::path& path)
{
    std::error_code ec;
    return fs::symlink_status(path, ec);
}

bool removeTree(const fs::path& folder, int depth)
{
    if (depth > kMaxFolderDepth)
        return false;
    // Listed first, deleted after: removing entries while a listing is open
    // may make it skip some.
    std::vector<fs::path> entries;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec))
        entries.push_back(it->path());
    bool ok = !ec;
    for (const fs::path& entry : entries) {
        const fs::file_status status = entryStatus(entry);
        if (fs::is_directory(status)) { // a link to a folder is not a directory here
            ok = removeTree(entry, depth + 1) && ok;
        } else {
            std::error_code removeError;
            fs::remove(entry, removeError); // a link goes as a link
            ok = ok && !removeError;
        }
    }
    std::error_code removeError;
    fs::remove(folder, removeError);
    return ok && !removeError;
}

bool isRegularFileEntry(const fs::path& path)
{
    return fs::is_regular_file(entryStatus(path));
}

} // namespace

fs::path absoluteNormal(const fs::path& path)
{
    std::error_code ec;
    fs::path out = fs::absolute(path, ec);
    if (ec)
        out = path;
    out = out.lexically_normal();
    // "/a/b/" names the same folder as "/a/b"; keep the root itself.
    while (!out.has_filename() && out.has_relative_path())
        out = out.parent_path();
    return out;
}

bool isInsideFolder(const fs::path& candidate, const fs::path& folder, bool allowSame)
{
    const fs::path inner = absoluteNormal(candidate);
    const fs::path outer = absoluteNormal(folder);
    auto innerIt = inner.begin();
    for (auto outerIt = outer.begin(); outerIt != outer.end(); ++outerIt, ++innerIt) {
        if (innerIt == inner.end() || *innerIt != *outerIt)
            return false;
    }
    if (innerIt == inner.end())
        return allowSame;
    // Every folder between the two must be a real folder: through a link the
    // candidate would lie somewhere else entirely.
    fs::path walk = outer;
    for (auto next = std::next(innerIt); next != inner.end(); ++innerIt, ++next) {
        walk /= *innerIt;
        if (fs::is_symlink(entryStatus(walk)))
            return false;
    }
    return true;
}

bool samePath(const fs::path& a, const fs::path& b)
{
    std::error_code ec;
    if (fs::exists(a, ec) && fs::exists(b, ec)) {
        const bool same = fs::equivalent(a, b, ec);
        if (!ec)
            return same;
    }
    return absoluteNormal(a) == absoluteNormal(b);
}

bool deleteFolderTree(const fs::path& folder, const fs::path& boundary)
{
    const fs::path target = absoluteNormal(folder);
    if (!isInsideFolder(target, boundary, true))
        return false;
    const fs::file_status status = entryStatus(target);
    if (!fs::exists(status)) // a link, dangling or not, counts as there
        return true;
    if (fs::is_symlink(status)) {
        std::error_code ec;
        fs::remove(target, ec);
        return !ec;
    }
    if (!fs::is_directory(status))
        return false;
    return removeTree(target, 0);
}

std::size_t deleteListedFiles(const std::vector<fs::path>& files, const fs::path& boundary)
{
    std::size_t deleted = 0;
    for (const fs::path& listed : files) {
        const fs::path file = listed.is_relative() ? boundary / listed : listed;
        if (!isInsideFolder(file, boundary))
            continue;
        const fs::file_status status = entryStatus(file);
        if (fs::is_directory(status) || (!fs::exists(status) && !fs::is_symlink(status)))
            continue;
        std::error_code ec;
        if (fs::remove(file, ec) && !ec)
            ++deleted;
    }
    return deleted;
}

bool createFolderWithRetry(const fs::path& folder, int tries, std::chrono::milliseconds wait)
{
    for (int attempt = 0; attempt < std::max(tries, 1); ++attempt) {
        if (attempt > 0)
            std::this_thread::sleep_for(wait);
        std::error_code ec;
        fs::create_directory(folder, ec);
        if (fs::is_directory(entryStatus(folder)))
            return true;
    }
    return false;
}

void planCopiesByExtension(std::vector<FileCopy>& plan, const fs::path& fromFolder, std::string_view extension,
                           const fs::path& toFolder)
{
    std::vector<FileCopy> found;
    std::error_code ec;
    for (fs::directory_iterator it(fromFolder, ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path& file = it->path();
        if (isRegularFileEntry(file) && equalsNoCase(utf8FromPath(file.extension()), extension))
            found.push_back({file, toFolder / file.filename()});
    }
    // Listing order differs between systems; a fixed order makes a failure
    // report the same file everywhere.
    std::sort(found.begin(), found.end(), [](const FileCopy& a, const FileCopy& b) { return a.from < b.from; });
    plan.insert(plan.end(), found.begin(), found.end());
}

void planTreeCopy(std::vector<FileCopy>& plan, const fs::path& fromFolder, const fs::path& toFolder)
{
    std::vector<FileCopy> found;
    std::error_code ec;
    // The default options do not follow links to folders.
    for (fs::recursive_directory_iterator it(fromFolder, ec), end; !ec && it != end; it.increment(ec)) {
        if (it.depth() > kMaxFolderDepth) {
            it.disable_recursion_pending();
            continue;
        }
        const fs::path& file = it->path();
        if (isRegularFileEntry(file))
            found.push_back({file, toFolder / file.lexically_relative(fromFolder)});
    }
    std::sort(found.begin(), found.end(), [](const FileCopy& a, const FileCopy& b) { return a.from < b.from; });
    plan.insert(plan.end(), found.begin(), found.end());
}

namespace {

// Why `copy` cannot be staged at all, or empty when it can be tried.
std::string whyNotCopyable(const FileCopy& copy, const fs::file_status& target)
{
    if (!isRegularFileEntry(copy.from))
        return std::generic_category().message(ENOENT);
    if (fs::is_directory(target))
        return std::generic_category().message(EISDIR);
    std::error_code ec;
    fs::create_directories(copy.to.parent_path(), ec);
    if (!fs::is_directory(copy.to.parent_path()))
        return ec ? ec.message() : std::generic_category().message(ENOTDIR);
    return {};
}

// Copies `from` to `part` and flushes it; the system's reason when it fails.
std::string copyAndSync(const FileCopy& copy, const fs::path& part)
{
    std::error_code ec;
    fs::copy_file(copy.from, part, fs::copy_options::overwrite_existing, ec);
    if (ec)
        return ec.message();
    if (injectedFault(FaultPoint::Write, copy.to))
        return std::generic_category().message(ENOSPC);
    if (!syncToDisk(part))
        return std::generic_category().message(errno);
    return {};
}

} // namespace

StageOutcome stageCopies(const std::vector<FileCopy>& plan)
{
    static std::atomic<unsigned> counter{0};
    StageOutcome outcome;
    for (const FileCopy& copy : plan) {
        const fs::file_status target = entryStatus(copy.to);
        if (fs::exists(target) && samePath(copy.from, copy.to))
            continue;
        fs::path part = copy.to;
        part += ".kestrelon-copy-" + std::to_string(counter++) + ".part";
        std::string reason = whyNotCopyable(copy, target);
        if (reason.empty())
            reason = copyAndSync(copy, part);
        if (!reason.empty()) {
            removeQuietly(part);
            abandonStagedCopies(outcome.staged, 0);
            return {false, copy, reason, {}};
        }
        outcome.staged.push_back({part, copy});
    }
    return outcome;
}

CopyOutcome placeStagedCopies(const std::vector<StagedCopy>& staged)
{
    for (std::size_t i = 0; i < staged.size(); ++i) {
        std::error_code ec;
        injectedFault(FaultPoint::Rename, staged[i].copy.to);
        fs::rename(staged[i].part, staged[i].copy.to, ec);
        if (ec) {
            abandonStagedCopies(staged, i);
            return {false, staged[i].copy, ec.message()};
        }
    }
    for (const StagedCopy& copy : staged)
        syncToDisk(copy.copy.to.parent_path());
    return {};
}

void abandonStagedCopies(const std::vector<StagedCopy>& staged, std::size_t from)
{
    for (std::size_t i = from; i < staged.size(); ++i) {
        std::error_code ignored;
        fs::remove(staged[i].part, ignored);
    }
}

CopyOutcome copyFilesStaged(const std::vector<FileCopy>& plan)
{
    const StageOutcome staged = stageCopies(plan);
    if (!staged.ok)
        return {false, staged.failed, staged.reason};
    return placeStagedCopies(staged.staged);
}

void showCopyFailure(UserPort& port, const CopyOutcome& outcome, std::string_view suffix)
{
    port.showFailure(std::string(msg::kCanNotCopyPrefix) + utf8FromPath(outcome.failed.from) +
                         std::string(msg::kCopyTo) + utf8FromPath(outcome.failed.to) + std::string(suffix),
                     outcome.reason);
}

std::size_t removeStaleParts(const fs::path& folder)
{
    std::size_t removed = 0;
    std::error_code ec;
    fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec);
    for (const fs::recursive_directory_iterator end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        const bool staged = name.size() > 5 && name.ends_with(".part") && name.find(".kestrelon-") != std::string::npos;
        std::error_code statusError;
        if (staged && it->is_regular_file(statusError) && !it->is_symlink(statusError) &&
            fs::remove(it->path(), statusError))
            ++removed;
    }
    return removed;
}

} // namespace kestrelon
