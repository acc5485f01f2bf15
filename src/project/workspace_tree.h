#pragma once
// The Files tree's commands without a widget: Add Folder, Add Files, the four
// delete commands and folder rename. They work on the open project's document
// and its folder on disk, talk to the person only through the UserPort, and
// after every change mark the project modified and call onChanged (where the
// workbench stops playback and refills the main list).
//
// Removed sources' files are not deleted at once: their paths go on the
// deletion list, which the project lifecycle empties on Save and on Close.
#include "project/tree_selection.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class ProjectDocument;
class UserPort;

// Where new items go: under a folder, or (folder null) directly under the root
// of the Files tree.
struct TreeTarget {
    ProjectItem* folder = nullptr;

    static TreeTarget topLevel() { return {}; }
    static TreeTarget under(ProjectItem* group) { return {group}; }
};

enum class AddFileOutcome {
    Added, // a new source item, with the file copied into Files
    Overwritten, // the project's copy replaced after Yes; the item kept
    Unchanged, // No to the overwrite question, or the chosen file already is the project's copy
    Refused, // the program said why (another folder, invalid or too long name)
    CopyFailed, // the file could not be copied; nothing was added
};

struct AddedFile {
    std::filesystem::path chosen;
    std::string fileName;
    AddFileOutcome outcome = AddFileOutcome::Unchanged;
    ProjectItem* item = nullptr; // the source item standing for the file, when there is one
};

enum class CommandOutcome {
    NothingToDo, // nothing selected, or nothing the command acts on
    Declined, // the person answered No
    Refused, // the program refused with a message
    Done,
};

class WorkspaceTree {
public:
    // Longest names the project file can hold in a line of its own and read
    // back whole (its reader keeps 255 characters of a line).
    static constexpr std::size_t kMaxFolderName = 239; // # Begin Group "NAME"
    static constexpr std::size_t kMaxFileName = 242; // SOURCE=Files\NAME

    WorkspaceTree(ProjectDocument& document, std::filesystem::path projectFolder,
                  std::vector<std::filesystem::path>& deletionList, UserPort& port);
    WorkspaceTree(const WorkspaceTree&) = delete;
    WorkspaceTree& operator=(const WorkspaceTree&) = delete;

    // Called after every change, once per command.
    std::function<void()> onChanged;
    // Where the copies Add Files makes into Files are noted, for a close
    // without saving to take away again; none keeps no note.
    void setCopyRecord(std::vector<std::filesystem::path>* copiedIn) { m_copiedIn = copiedIn; }

    TreeSelection& selection() { return m_selection; }
    const TreeSelection& selection() const { return m_selection; }

    const std::filesystem::path& projectFolder() const { return m_projectFolder; }
    std::filesystem::path filesFolder() const;
    std::filesystem::path tempFolder() const;
    // Where a source's wave file lies on disk.
    std::filesystem::path sourcePath(const ProjectItem& source) const;

    // The target of a command invoked on `given`, or without one on the
    // selected node: a folder stands for itself, a source for the folder that
    // holds it (the top level for a top-level source). None with neither.
    std::optional<TreeTarget> targetFor(ProjectItem* given) const;

    // A new folder as the target's last child; its name and id are `name`.
    // Null when refused (empty, invalid or too long name, too deep).
    ProjectItem* addFolder(TreeTarget parent, std::string_view name);

    // The chosen wave files, in the chooser's order, into the target folder.
    std::vector<AddedFile> addFiles(TreeTarget target, const std::vector<std::filesystem::path>& chosen);

    CommandOutcome deleteAll(); // every item of the Files tree
    CommandOutcome deleteFolderFiles(); // the sources directly in the selected folder
    CommandOutcome deleteFiles(); // the selected sources
    CommandOutcome deleteFolders(); // the selected folders with their contents

    // Gives a folder a new name; its id follows, as Add Folder makes them equal.
    CommandOutcome renameFolder(ProjectItem* folder, std::string_view newName);

    // Items whose id is `id`, in tree order (groups and sources alike).
    std::vector<ProjectItem*> itemsWithId(std::string_view id) const;

private:
    AddedFile addFile(ProjectItem* folder, const std::filesystem::path& chosen);
    bool copyIntoProject(const std::filesystem::path& chosen, const std::filesystem::path& target);
    bool backUpIntoTemp(const std::filesystem::path& projectCopy, std::string& why);
    void keepOffDeletionList(const std::filesystem::path& path);
    CommandOutcome removeItems(std::vector<ProjectItem*> doomed);
    bool askYes(std::string_view question);
    void changed();

    ProjectDocument& m_document;
    std::filesystem::path m_projectFolder;
    std::vector<std::filesystem::path>& m_deletionList;
    std::vector<std::filesystem::path>* m_copiedIn = nullptr;
    UserPort& m_port;
    TreeSelection m_selection;
};

// The same file name under the platform's rule: Windows names ignore case,
// other systems compare them exactly.
bool sameFileName(std::string_view a, std::string_view b);

} // namespace kestrelon
