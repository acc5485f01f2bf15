#pragma once
// A save that commits as a whole. The project's work files (encodings,
// decoded waves, plug-ins) reuse their names, so a save replaces files the
// old project file names; the new project file and those files must change
// together. They do, with one commit point:
//
//   1. every work file is copied beside its target and flushed to the disk;
//   2. a journal beside the project file lists those copies and the digest
//      of the new project file;
//   3. the new project file is written whole and renamed into place: the
//      commit;
//   4. the copies are renamed over their targets and the journal goes.
//
// A run killed before 3 leaves the old project file; one killed after it
// leaves the new one. Opening the project finishes or undoes what the
// journal lists, according to which project file it finds, so the files
// always match the project file that names them.
#include "project/project_folder_ops.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

struct SaveCommitOutcome {
    bool ok = true;
    bool copyFailed = false; // a work file could not be staged (`failed` says which)
    FileCopy failed;
    std::string reason; // the system's reason for the failure
};

// Saves `projectText` to `projectFile` through `writeProjectFile` (the
// commit, which puts its failure's reason in its argument), with `work` put
// in place as one change. Nothing has changed when it fails before the commit.
SaveCommitOutcome commitSave(const std::filesystem::path& projectFile, std::string_view projectText,
                             const std::vector<FileCopy>& work,
                             const std::function<bool(std::string& why)>& writeProjectFile);

// At open, before anything else touches the folder: finishes a save the
// journal shows committed, or undoes one it shows not. False when there was
// nothing to do.
bool recoverInterruptedSave(const std::filesystem::path& projectFile);

} // namespace kestrelon
