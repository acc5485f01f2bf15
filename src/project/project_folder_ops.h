#pragma once
// File and folder operations on a project folder. A user's project folder is
// their work, so everything here is careful in the same ways: deletions never
// follow a symbolic link and never leave the folder they were given, and the
// copies that move working files into place change nothing until every one of
// them has been made.
#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class UserPort;

// The absolute, lexically normal form of `path` ("a/./b/../c" -> "<cwd>/a/c").
std::filesystem::path absoluteNormal(const std::filesystem::path& path);

// True when `candidate` is `folder` itself (only if `allowSame`) or lies below
// it, judged on the names, and no folder between the two is a symbolic link,
// so the candidate is really inside. `candidate` itself may be a link.
bool isInsideFolder(const std::filesystem::path& candidate, const std::filesystem::path& folder,
                    bool allowSame = false);

// True when the two paths name one existing file, or, when they cannot be
// compared on disk, when their normal forms are equal.
bool samePath(const std::filesystem::path& a, const std::filesystem::path& b);

// Deletes `folder` with everything in it. A symbolic link met anywhere,
// `folder` included, is removed as a link and its target is left alone.
// Refuses (false, nothing touched) unless `folder` is `boundary` or lies
// inside it. A folder that is not there is no error; a path that is not a
// folder is left alone and refused. Goes on past an entry it cannot delete
// and returns false at the end.
bool deleteFolderTree(const std::filesystem::path& folder, const std::filesystem::path& boundary);

// Deletes each listed file that exists and lies inside `boundary`; a relative
// entry is taken relative to `boundary`. Folders are never deleted this way,
// links are removed as links, entries outside `boundary` are passed over.
// Returns how many files were deleted.
std::size_t deleteListedFiles(const std::vector<std::filesystem::path>& files, const std::filesystem::path& boundary);

// Removes what a killed or failed write or copy left staged under `folder`
// (files named "<target>.kestrelon-...part"), never following a link out.
// The target of such a file still holds its earlier content, which is what
// the saved project describes. Returns how many went.
std::size_t removeStaleParts(const std::filesystem::path& folder);

// Makes `folder` (its parent must exist). Tries `tries` times, waiting `wait`
// between tries: a folder just deleted may stay pending for a moment on some
// systems, and creating it again fails until it is gone.
bool createFolderWithRetry(const std::filesystem::path& folder, int tries, std::chrono::milliseconds wait);

// One file to copy, overwriting the target.
struct FileCopy {
    std::filesystem::path from;
    std::filesystem::path to;
};

// Adds to `plan` every regular file directly in `fromFolder` whose extension
// equals `extension` (compared without case; ".wav"), to be copied under its
// own name into `toFolder`. Links are not working files and are passed over.
// A missing folder adds nothing.
void planCopiesByExtension(std::vector<FileCopy>& plan, const std::filesystem::path& fromFolder,
                           std::string_view extension, const std::filesystem::path& toFolder);
// Adds every regular file below `fromFolder`, sub-folders included, to be
// copied to the same place below `toFolder`. Links are passed over.
void planTreeCopy(std::vector<FileCopy>& plan, const std::filesystem::path& fromFolder,
                  const std::filesystem::path& toFolder);

struct CopyOutcome {
    bool ok = true;
    FileCopy failed; // the copy that could not be made, when !ok
    std::string reason; // the system's reason for it
};

// "Can not copy FROM to TO" and `suffix`, with the copy's reason.
void showCopyFailure(UserPort& port, const CopyOutcome& outcome, std::string_view suffix);

// Makes the planned copies in two steps: first every source is copied to a
// fresh file beside its target (target folders are made when missing); only
// when all of them exist are they renamed over their targets, in plan order,
// so a later copy to the same target wins. If any first-step copy fails, the
// files made so far are removed and no target has changed. A copy whose
// source and target are one file is passed over.
CopyOutcome copyFilesStaged(const std::vector<FileCopy>& plan);

// The two steps on their own, for a save that puts its copies in place only
// after its project file is written.
struct StagedCopy {
    std::filesystem::path part; // the fresh file beside the target
    FileCopy copy;
};
struct StageOutcome {
    bool ok = true;
    FileCopy failed; // when !ok; nothing is left staged then
    std::string reason; // the system's reason, when !ok
    std::vector<StagedCopy> staged; // when ok, in plan order, flushed to the disk
};
StageOutcome stageCopies(const std::vector<FileCopy>& plan);
// Renames the staged files over their targets in order; a rename that fails
// removes the staged files not yet placed.
CopyOutcome placeStagedCopies(const std::vector<StagedCopy>& staged);
// Removes staged files from `from` on.
void abandonStagedCopies(const std::vector<StagedCopy>& staged, std::size_t from);

} // namespace kestrelon
