#include "project/project_session.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/new_project.h"
#include "project/project_folder_ops.h"
#include "project/recent_projects.h"
#include "project/save_journal.h"

#include <algorithm>
#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kTempName = "Temp";
constexpr std::string_view kFilesName = "Files";
constexpr std::string_view kAlgosName = "Algos";

std::string text(std::string_view a, const fs::path& path, std::string_view b)
{
    return std::string(a) + utf8FromPath(path) + std::string(b);
}

// Where a listed file of the old project folder stands in the new one.
void rebase(std::vector<fs::path>& files, const fs::path& oldFolder, const fs::path& newFolder)
{
    for (fs::path& file : files)
        if (file.is_absolute() && isInsideFolder(file, oldFolder))
            file = newFolder / absoluteNormal(file).lexically_relative(oldFolder);
}

// Working files that are results of work in the project: interim encoded
// files and decoded waves go to the project folder, plug-ins and their body
// files to Algos.
void planWorkCopies(std::vector<FileCopy>& plan, const fs::path& temp, const fs::path& folder)
{
    planCopiesByExtension(plan, temp, ".tmp", folder);
    planCopiesByExtension(plan, temp, ".dfn", folder);
    planCopiesByExtension(plan, temp, librarySuffix(), folder / kAlgosName);
    planCopiesByExtension(plan, temp, ".bdy", folder / kAlgosName);
}

} // namespace

ProjectSession::ProjectSession(UserPort& port, ProjectCompanions* companions, RecentProjects* recent,
                               fs::path programFolder)
    : m_port(port)
    , m_companions(companions)
    , m_recent(recent)
    , m_programFolder(std::move(programFolder))
    , m_document(std::make_unique<ProjectDocument>())
{}

// Closing may ask a question, so it is the owner's to do before the session goes.
ProjectSession::~ProjectSession() = default;

fs::path ProjectSession::projectFolder() const
{
    return isOpen() ? m_projectFile.parent_path() : fs::path();
}
fs::path ProjectSession::tempFolder() const
{
    return isOpen() ? projectFolder() / kTempName : fs::path();
}
fs::path ProjectSession::filesFolder() const
{
    return isOpen() ? projectFolder() / kFilesName : fs::path();
}
fs::path ProjectSession::algosFolder() const
{
    return isOpen() ? projectFolder() / kAlgosName : fs::path();
}

void ProjectSession::setTempFolderRetry(int tries, std::chrono::milliseconds wait)
{
    m_tempTries = tries;
    m_tempWait = wait;
}

bool ProjectSession::newProject(const std::string& location, const std::string& name)
{
    const std::optional<fs::path> planned = newProjectFilePath(name, location);
    if (!planned) {
        m_port.showMessage(msg::kProjectPathNotExisted);
        return false;
    }
    const fs::path file = absoluteNormal(*planned);
    const fs::path folder = file.parent_path();
    std::error_code ec;
    if (!fs::is_directory(folder.parent_path(), ec)) {
        m_port.showMessage(msg::kProjectPathNotExisted);
        return false;
    }
    if (!closeProject())
        return false;
    if (entryExists(file)) {
        m_port.showMessage(text(msg::kTheProjectPrefix, file, msg::kAlreadyExistedSuffix));
        return false;
    }
    // Closing a never-saved project deletes its folder with everything in it,
    // so the session only ever starts one in a folder it made itself.
    if (entryExists(folder)) {
        m_port.showMessage(text(msg::kCanNotCreatePrefix, file, msg::kBecauseFolderExisted));
        return false;
    }
    fs::create_directories(folder, ec);
    if (!fs::is_directory(folder, ec)) {
        m_port.showMessage(text(msg::kCanNotCreatePrefix, folder, msg::kCanNotCreateFolderSuffix));
        return false;
    }
    FolderLock lock;
    if (!lockFolder(folder, lock)) {
        deleteFolderTree(folder, folder);
        return false;
    }
    m_lock = std::move(lock);
    m_document = std::make_unique<ProjectDocument>();
    m_projectFile = file;
    m_newProject = true;
    if (m_companions)
        m_companions->clear();
    enterFolder(folder);
    if (std::string why; !makeWorkingFolders(folder, nullptr, &why)) {
        enterFolder(m_programFolder);
        deleteFolderTree(folder, folder);
        m_port.showFailure(text(msg::kCanNotCreatePrefix, folder, msg::kCanNotCreateFolderSuffix), why);
        discard();
        return false;
    }
    addRecent(file);
    changed.publish(SessionChange::Opened);
    return true;
}

bool ProjectSession::openProject(const fs::path& path)
{
    const fs::path file = absoluteNormal(path);
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) {
        m_port.showMessage(msg::kProjectFileNotFound);
        return false;
    }
    if (isOpen() && samePath(file, m_projectFile)) {
        m_port.showMessage(msg::kProjectIsOpen);
        return false;
    }
    // Another program's project is refused before the open one is closed; a
    // project beside the open one is locked again once that one let go.
    FolderLock lock;
    const bool ownFolder = m_lock.held() && samePath(m_lock.folder(), file.parent_path());
    if (!ownFolder && !lockFolder(file.parent_path(), lock))
        return false;
    if (!closeProject())
        return false;
    if (ownFolder && !lockFolder(file.parent_path(), lock))
        return false;

    // A save cut short is finished or undone before anything reads the folder.
    recoverInterruptedSave(file);
    auto document = std::make_unique<ProjectDocument>();
    if (std::string why; !document->open(file, m_port, &why)) {
        m_port.showFailure(msg::kOpenProjectFailed, why);
        return false;
    }
    m_document = std::move(document);
    m_projectFile = file;
    if (m_companions)
        m_companions->load(file);

    // The further set-up: the working folder and the two folders every later
    // step writes into must be there. What this attempt made is taken away
    // again when it fails, so a project that does not open is left as it was.
    const fs::path folder = file.parent_path();
    enterFolder(folder);
    recoverAbandonedWork(folder);
    std::vector<fs::path> made;
    if (std::string why; !makeWorkingFolders(folder, &made, &why)) {
        for (auto it = made.rbegin(); it != made.rend(); ++it)
            fs::remove(*it, ec); // only empty folders it has just made
        m_port.showFailure(msg::kOpenProjectFailed, why);
        discard();
        return false;
    }
    m_newProject = false;
    m_lock = std::move(lock);
    // Only now, with the folder ours: a staged file may be another writer's work in progress.
    removeStaleParts(folder);
    addRecent(file);
    changed.publish(SessionChange::Opened);
    return true;
}

void ProjectSession::recoverAbandonedWork(const fs::path& folder)
{
    // With the folder locked, a Temp folder can only be the work of a session
    // that ended without closing. Its waves and event files are the saved
    // versions of files it overwrote, and go back; its encodings and plug-ins
    // belong to records that were never saved, and go.
    const fs::path temp = folder / kTempName;
    std::error_code ec;
    if (!fs::is_directory(fs::symlink_status(temp, ec)))
        return;
    std::vector<FileCopy> plan;
    planCopiesByExtension(plan, temp, ".wav", folder / kFilesName);
    planCopiesByExtension(plan, temp, ".evt", folder / kFilesName);
    if (const CopyOutcome copied = copyFilesStaged(plan); !copied.ok) {
        showCopyFailure(m_port, copied, msg::kCopyBackFailedSuffix);
        return;
    }
    deleteFolderTree(temp, folder);
    m_port.showMessage(msg::kAbandonedWorkDropped);
}

bool ProjectSession::lockFolder(const fs::path& folder, FolderLock& lock)
{
    if (lock.take(folder) != FolderLock::Outcome::HeldByOther)
        return true; // a folder that cannot hold a lock file cannot be written by anyone through us either
    m_port.showMessage(std::string(msg::kProjectInUsePrefix) + describeHolder(lock.holder()) +
                       std::string(msg::kProjectInUseSuffix));
    return false;
}

bool ProjectSession::saveProject()
{
    if (!isOpen())
        return false;
    if (m_busy) {
        m_port.showMessage(msg::kCannotSaveWait);
        return false;
    }
    m_document->rebuildFilesList();
    // The companions go first: a registry and a play list that know more
    // than the project file are harmless, the other way round they are not.
    if (std::string why; m_companions && !m_companions->saveTo(m_projectFile, why)) {
        m_port.showFailure(msg::kSaveProjectFailed, why);
        return false;
    }
    const fs::path folder = projectFolder();
    // Encoded and decoded data and added plug-ins are the project's work; the
    // purge below must not take them. Backups of overwritten waves are not
    // copied: saving keeps the new files. They take their places together
    // with the project file that describes them.
    std::vector<FileCopy> plan;
    planWorkCopies(plan, tempFolder(), folder);
    const SaveCommitOutcome saved = commitSave(m_projectFile, m_document->serialize(), plan,
                                               [&](std::string& why) { return m_document->save(m_projectFile, &why); });
    if (!saved.ok) {
        if (saved.copyFailed)
            showCopyFailure(m_port, {false, saved.failed, saved.reason}, msg::kCopyBackFailedSuffix);
        else
            m_port.showFailure(msg::kSaveProjectFailed, saved.reason);
        return false;
    }
    m_unsavedWork.clear();
    m_copiedIn.clear(); // the saved project names them now
    m_newProject = false;
    deleteListedFiles(m_deletionList, folder);
    m_deletionList.clear();
    deleteListedFiles(m_droppedAtSave, folder);
    m_droppedAtSave.clear();
    m_setAside.clear(); // with Temp
    deleteFolderReporting(tempFolder(), folder);
    recreateTempFolder(folder);
    changed.publish(SessionChange::Saved);
    return true;
}

bool ProjectSession::saveProjectAs(const fs::path& path)
{
    if (!isOpen())
        return false;
    if (m_busy) {
        m_port.showMessage(msg::kCannotSaveWait);
        return false;
    }
    const fs::path target = absoluteNormal(withProjectExtension(path));
    const fs::path oldFolder = projectFolder();
    const fs::path oldTemp = tempFolder();
    const fs::path newFolder = target.parent_path();
    // The old Temp folder is deleted below; a project inside it would go with it.
    if (isInsideFolder(newFolder, oldTemp, true)) {
        m_port.showMessage(msg::kSaveAsIntoTemp);
        return false;
    }
    std::error_code ec;
    fs::create_directories(newFolder, ec);
    if (!fs::is_directory(newFolder, ec)) {
        m_port.showMessage(msg::kDirectoryAlreadyExisted);
        return false;
    }

    FolderLock newLock;
    const bool sameFolder = samePath(newFolder, oldFolder);
    if (!sameFolder && !lockFolder(newFolder, newLock))
        return false;

    // The copies are staged before the project file and put in place with it,
    // through the save journal: if one fails, no project file names files
    // that are not there and the open project stays the old one; if the run
    // ends half way, the next open of the new project finishes or undoes it,
    // so a project the new one replaces is never left half old, half new.
    // Saved work first, then the newer work in Temp over it.
    std::vector<FileCopy> plan;
    planTreeCopy(plan, oldFolder / kAlgosName, newFolder / kAlgosName);
    planTreeCopy(plan, oldFolder / kFilesName, newFolder / kFilesName);
    planCopiesByExtension(plan, oldFolder, ".tmp", newFolder);
    planCopiesByExtension(plan, oldFolder, ".dfn", newFolder);
    planWorkCopies(plan, oldTemp, newFolder);
    planCopiesByExtension(plan, oldTemp, ".wav", newFolder / kFilesName);
    planCopiesByExtension(plan, oldTemp, ".evt", newFolder / kFilesName);
    planCopiesByExtension(plan, oldTemp / "evt", ".evt", newFolder);
    m_document->rebuildFilesList();
    // The companions before the project file, as a Save writes them.
    if (std::string why; m_companions && !m_companions->saveTo(target, why)) {
        m_port.showFailure(msg::kSaveProjectFailed, why);
        return false;
    }
    const SaveCommitOutcome saved = commitSave(target, m_document->serialize(), plan,
                                               [&](std::string& why) { return m_document->save(target, &why); });
    if (!saved.ok) {
        if (saved.copyFailed)
            showCopyFailure(m_port, {false, saved.failed, saved.reason}, msg::kSaveAsCopyFailedSuffix);
        else
            m_port.showFailure(msg::kSaveProjectFailed, saved.reason);
        return false;
    }
    m_unsavedWork.clear();
    m_copiedIn.clear(); // the project saved under its new name names them

    const fs::path oldFileName = m_projectFile.filename();
    m_projectFile = target;
    if (!sameFolder)
        m_lock = std::move(newLock);
    rebase(m_deletionList, oldFolder, newFolder);
    rebase(m_temporaryFiles, oldFolder, newFolder);
    rebase(m_droppedAtSave, oldFolder, newFolder);
    deleteListedFiles(m_droppedAtSave, newFolder);
    m_droppedAtSave.clear();
    m_setAside.clear(); // with the old Temp
    enterFolder(newFolder); // a current folder cannot be deleted everywhere
    deleteFolderReporting(oldTemp, oldFolder);
    // The old folder of a never-saved project goes, unless the new project,
    // or one of its folders, lies in it.
    const bool newLiesInOld = isInsideFolder(newFolder, oldFolder, true) ||
                              isInsideFolder(newFolder / kFilesName, oldFolder, true) ||
                              isInsideFolder(newFolder / kAlgosName, oldFolder, true);
    if (m_newProject && !newLiesInOld) {
        deleteFolderReporting(oldFolder, oldFolder);
        forgetRecent(oldFolder / oldFileName);
    }
    m_newProject = false;
    recreateTempFolder(newFolder);
    makeWorkingFolders(newFolder, nullptr);
    addRecent(target);
    changed.publish(SessionChange::Opened); // the same work under another name and folder
    return true;
}

bool ProjectSession::closeProject()
{
    if (!isOpen())
        return true;
    if (m_busy) {
        m_port.showMessage(msg::kCannotCloseWait);
        return false;
    }
    bool declined = false; // the changes are dropped
    if (m_document->isModified()) {
        const Answer answer = m_port.ask(msg::kSaveBeforeClose, Buttons::YesNoCancel);
        if (answer == Answer::Cancel)
            return false;
        // A save that fails keeps the project open: going on would drop the
        // changes the user asked to keep.
        if (answer == Answer::Yes && !saveProject())
            return false;
        declined = answer == Answer::No;
    }

    const fs::path folder = projectFolder();
    const fs::path temp = tempFolder();
    std::vector<FileCopy> plan;
    planWorkCopies(plan, temp, folder);
    // Data the saved project file does not describe stays out of it.
    std::erase_if(plan, [&](const FileCopy& copy) {
        return std::any_of(m_unsavedWork.begin(), m_unsavedWork.end(),
                           [&](const fs::path& work) { return samePath(work, copy.from); });
    });
    // Closing without saving brings the project's previous wave and event
    // files back from Temp, where overwriting them put them.
    planCopiesByExtension(plan, temp, ".wav", folder / kFilesName);
    planCopiesByExtension(plan, temp, ".evt", folder / kFilesName);
    planCopiesByExtension(plan, temp / "evt", ".evt", folder);
    if (const CopyOutcome copied = copyFilesStaged(plan); !copied.ok) {
        showCopyFailure(m_port, copied, msg::kCopyBackFailedSuffix);
        return false;
    }

    enterFolder(m_programFolder); // before the project's folders go
    deleteFolderReporting(temp, folder);
    if (m_newProject) {
        deleteFolderReporting(folder, folder);
        forgetRecent(m_projectFile);
        m_newProject = false;
    }
    deleteListedFiles(m_deletionList, folder);
    deleteListedFiles(m_temporaryFiles, folder);
    if (declined)
        deleteListedFiles(m_copiedIn, folder);
    discard();
    changed.publish(SessionChange::Closed);
    return true;
}

bool ProjectSession::makeWorkingFolders(const fs::path& folder, std::vector<fs::path>* made, std::string* why)
{
    for (const std::string_view name : {kTempName, kFilesName, kAlgosName}) {
        const fs::path sub = folder / name;
        std::error_code ec;
        if (fs::is_directory(sub, ec)) // a link to a folder serves as well
            continue;
        if (entryExists(sub) || !fs::create_directory(sub, ec) || ec) {
            if (why)
                *why = utf8FromPath(sub) + ": " + (ec ? ec.message() : std::generic_category().message(EEXIST));
            return false;
        }
        if (made)
            made->push_back(sub);
    }
    return true;
}

bool ProjectSession::recreateTempFolder(const fs::path& folder)
{
    const fs::path temp = folder / kTempName;
    if (createFolderWithRetry(temp, m_tempTries, m_tempWait))
        return true;
    m_port.showMessage(text(msg::kCanNotCreatePrefix, temp, msg::kCanNotCreateFolderSuffix));
    return false;
}

void ProjectSession::deleteFolderReporting(const fs::path& folder, const fs::path& boundary)
{
    if (!deleteFolderTree(folder, boundary))
        m_port.showMessage(text(msg::kCanNotDeletePrefix, folder, msg::kCanNotDeleteSuffix));
}

void ProjectSession::enterFolder(const fs::path& folder)
{
    if (folder.empty())
        return;
    std::error_code ignored; // a current folder that cannot be set changes nothing the session relies on
    fs::current_path(folder, ignored);
}

void ProjectSession::addRecent(const fs::path& file)
{
    if (m_recent)
        m_recent->add(file);
}

// A never-saved project whose folder is gone has no place in the menu.
void ProjectSession::forgetRecent(const fs::path& file)
{
    if (m_recent)
        m_recent->remove(utf8FromPath(file));
}

void ProjectSession::discard()
{
    m_lock.release();
    m_unsavedWork.clear();
    if (m_companions)
        m_companions->clear();
    m_document = std::make_unique<ProjectDocument>();
    m_projectFile.clear();
    m_newProject = false;
    m_deletionList.clear();
    m_copiedIn.clear();
    m_temporaryFiles.clear();
    m_droppedAtSave.clear();
    m_setAside.clear();
    enterFolder(m_programFolder);
}

} // namespace kestrelon
