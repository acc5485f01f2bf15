#pragma once
// The one open project and its whole life: New, Open, Save, Save As and Close,
// with the project folder's working folder (Temp) kept in step. The main frame
// and kestrelon-cli hold one session; every message and question goes through
// the UserPort, so it runs the same with a window, in a script or in a test.
//
// While a project is open its folder is locked: a second program (another
// workbench, a kestrelon-cli command) is told who has it and changes nothing.
//
// Folder layout of a project N: N/N.ptp (the project file), N/Files (source
// waves and their ".evt" files), N/Algos (plug-ins, ".bdy" files, the
// algorithm registry), N/Temp (working files) and N/Temp/evt.
#include "common/folder_lock.h"
#include "common/observer.h"
#include "project/project_document.h"
#include "project/project_state.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kestrelon {

class RecentProjects;
class UserPort;
struct FileCopy;

// Files that travel with a project besides the project file: the play list and
// the algorithm registry. Implemented above this layer (src/playback/project_companions).
class ProjectCompanions {
public:
    virtual ~ProjectCompanions() = default;
    // Open: the play list (a failure goes to the silent log) and the registry of <folder>/Algos.
    virtual void load(const std::filesystem::path& projectFile) = 0;
    // Save and Save As: the play list next to the project file (the project
    // path with the extension ".set") and the registry of that project's Algos.
    // False when the registry could not be written: the project's algorithms
    // would be lost with it, so the save fails, with the reason in `why`.
    virtual bool saveTo(const std::filesystem::path& projectFile, std::string& why) = 0;
    // Close.
    virtual void clear() = 0;
};

// What the owner of a session hears: a project opened (new, opened, or saved
// under another name), closed, saved, or a batch began or ended (busy).
enum class SessionChange { Opened, Closed, Saved, Busy };

class ProjectSession {
public:
    static constexpr int kTempFolderTries = 50;
    static constexpr std::chrono::milliseconds kTempFolderWait{100};

    // `companions` and `recent` may be null. `programFolder` becomes the
    // current folder again when a project closes.
    ProjectSession(UserPort& port, ProjectCompanions* companions, RecentProjects* recent,
                   std::filesystem::path programFolder);
    ~ProjectSession();
    ProjectSession(const ProjectSession&) = delete;
    ProjectSession& operator=(const ProjectSession&) = delete;

    bool isOpen() const { return !m_projectFile.empty(); }

    // Published after the change is complete, on the thread that made it.
    Publisher<SessionChange> changed;
    ProjectDocument& document() { return *m_document; }
    const ProjectDocument& document() const { return *m_document; }
    std::filesystem::path projectFile() const { return m_projectFile; } // empty when none
    std::filesystem::path projectFolder() const; // folder of the project file
    std::filesystem::path tempFolder() const; // <folder>/Temp
    std::filesystem::path filesFolder() const; // <folder>/Files
    std::filesystem::path algosFolder() const; // <folder>/Algos

    // The frame's busy flag: set while encoding, decoding or playing. Close,
    // Save and Save As are refused while it is set.
    bool busy() const { return m_busy; }
    void setBusy(bool busy)
    {
        if (std::exchange(m_busy, busy) != busy)
            changed.publish(SessionChange::Busy);
    }

    // Set by New Project, cleared by Save, Save As and Close. A project closed
    // while it is set was never saved, and its folder is deleted.
    bool isNewProject() const { return m_newProject; }

    // Files to delete at the next Save or Close (e.g. the wave of a removed
    // item). Only files inside the project folder are ever deleted; a relative
    // entry is relative to the project folder.
    std::vector<std::filesystem::path>& deletionList() { return m_deletionList; }
    // Wave files copied into Files since the project was last saved: a close
    // without saving removes them, as the saved project does not name them.
    std::vector<std::filesystem::path>& copiedIn() { return m_copiedIn; }
    // Files of the saved project that the open one no longer needs (the
    // results of a cleared row, the decoded wave of a re-encoded one):
    // deleted by the next Save or Save As, which writes a project file that
    // no longer names them, and kept by a Close without saving, whose project
    // file still does.
    void dropAtSave(const std::filesystem::path& file) { m_droppedAtSave.push_back(file); }
    // A working file in Temp that now holds data the saved project file does
    // not describe (a row encoded again under the name it had). A Close
    // without saving leaves it out of the copy-back, so the file beside the
    // project file keeps the data its record describes; Save and Save As
    // make it the project's.
    void workReplaced(const std::filesystem::path& workingFile) { m_unsavedWork.push_back(workingFile); }
    // The engine's temporary files, deleted on Close (inside the project folder only).
    void addTemporaryFile(const std::filesystem::path& file) { m_temporaryFiles.push_back(file); }
    const std::vector<std::filesystem::path>& temporaryFiles() const { return m_temporaryFiles; }
    void markModified() { m_document->setModified(true); }

    // Instead of deleting a working file in the project folder, a command that
    // an undo may take back moves it to Temp/undo (under its place in the
    // folder), where it stays until the next Save or Close removes Temp.
    // False, with the file left where it is, when it cannot be moved.
    bool setAside(const std::filesystem::path& file);

    // The project as Undo and Redo see it, and the way back to such a moment:
    // the document is read again from the text (every source kept, asked
    // nothing), the session's notes replaced, and files set aside since (or
    // copied in since) moved out of the way, those set aside no longer moved
    // back. The project is marked modified. Files that could not be moved are
    // returned, and stay where they are.
    ProjectState state() const;
    std::vector<std::filesystem::path> restore(const ProjectState& state);

    // New Project after the dialog's checks (checkNewProject): closes the open
    // project, makes LOCATION/NAME with Temp, Files and Algos, and starts an
    // empty, unsaved project there. The project file is written by the first Save.
    bool newProject(const std::string& location, const std::string& name);
    bool openProject(const std::filesystem::path& path);
    bool saveProject();
    // ".ptp" is appended when the name lacks it.
    bool saveProjectAs(const std::filesystem::path& path);
    // True when no project is open afterwards.
    bool closeProject();

    // How often and how patiently a purged Temp folder is made again.
    void setTempFolderRetry(int tries, std::chrono::milliseconds wait);

private:
    // Temp, Files and Algos in `folder`; the failing one and why in `why`.
    bool makeWorkingFolders(const std::filesystem::path& folder, std::vector<std::filesystem::path>* made,
                            std::string* why = nullptr);
    bool recreateTempFolder(const std::filesystem::path& folder);
    void deleteFolderReporting(const std::filesystem::path& folder, const std::filesystem::path& boundary);
    void enterFolder(const std::filesystem::path& folder);
    // Takes `folder`'s lock into `lock`; says who holds it when another program does.
    bool lockFolder(const std::filesystem::path& folder, FolderLock& lock);
    // At open: what a session that ended without closing left in Temp.
    void recoverAbandonedWork(const std::filesystem::path& folder);
    void addRecent(const std::filesystem::path& file);
    void forgetRecent(const std::filesystem::path& file);
    void discard();

    UserPort& m_port;
    ProjectCompanions* m_companions;
    RecentProjects* m_recent;
    std::filesystem::path m_programFolder;
    std::unique_ptr<ProjectDocument> m_document;
    std::filesystem::path m_projectFile;
    FolderLock m_lock; // one writer per project folder, from open to close
    bool m_busy = false;
    bool m_newProject = false;
    std::vector<std::filesystem::path> m_deletionList;
    std::vector<std::filesystem::path> m_copiedIn;
    std::vector<std::filesystem::path> m_temporaryFiles;
    std::vector<std::filesystem::path> m_droppedAtSave;
    std::vector<std::filesystem::path> m_unsavedWork;
    std::vector<std::filesystem::path> m_setAside;
    int m_tempTries = kTempFolderTries;
    std::chrono::milliseconds m_tempWait = kTempFolderWait;
};

// The session busy for a scope, and as it was afterwards: an operation that
// runs several batches stays busy from its first to its last.
class BusyScope {
public:
    explicit BusyScope(ProjectSession& session)
        : m_session(session)
        , m_was(session.busy())
    {
        session.setBusy(true);
    }
    ~BusyScope() { m_session.setBusy(m_was); }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    ProjectSession& m_session;
    bool m_was;
};

} // namespace kestrelon
