#pragma once
// The open project as data: the project file's path, the items of the Files and
// Algorithms trees, and the modified flag. It reads and writes the project file
// (".ptp"); the folder around it (Files, Algos, Temp) is kept elsewhere.
#include "project/project_item.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class UserPort;

// The largest project file the program writes, and so reads: far above what
// a product line's prompts need (some 3 KB a source), and the same number on
// both sides so that a project that could be saved can be opened.
inline constexpr std::uintmax_t kMaxProjectFileBytes = std::uintmax_t{1} << 30;

class ProjectDocument {
public:
    static constexpr std::uint32_t kModified = 0x1; // bit of flags()

    ProjectDocument() = default;
    ProjectDocument(const ProjectDocument&) = delete;
    ProjectDocument& operator=(const ProjectDocument&) = delete;

    // The project file last read or written successfully; empty when none.
    const std::filesystem::path& path() const { return m_path; }

    // After a read: every item of the Files tree, groups and sources at any
    // depth, in file order. Before a save: the top-level items in tree order
    // (rebuildFilesList). The tree itself is the items' child lists.
    std::vector<ProjectItem*>& files() { return m_files; }
    const std::vector<ProjectItem*>& files() const { return m_files; }
    // The top-level items of the Algorithms tree; written, never read back.
    std::vector<ProjectItem*>& algorithms() { return m_algorithms; }
    const std::vector<ProjectItem*>& algorithms() const { return m_algorithms; }

    std::uint32_t flags() const { return m_flags; }
    bool isModified() const { return (m_flags & kModified) != 0; }
    void setModified(bool modified);

    // Empties the path and both lists and destroys every item. Flags stay.
    void clear();

    // A new item owned by the project, in no list and under no parent yet.
    ProjectItem* createItem(std::string name, std::uint32_t flags, std::string id = {});
    ProjectItem* adoptItem(std::unique_ptr<ProjectItem> item);
    // Destroys `item` with its whole subtree: detached from its parent and
    // taken out of both lists.
    void destroyItem(ProjectItem* item);
    std::size_t itemCount() const { return m_items.size(); }

    // Items of the Files list that have no parent, in list order.
    std::vector<ProjectItem*> topLevelFiles() const;
    // Makes the Files list hold only the top-level items, as a save expects.
    void rebuildFilesList() { m_files = topLevelFiles(); }

    // Replaces the content with the Files tree of the project file at `path`.
    // A source whose wave file is missing is asked about through `port`.
    // Success stores `path`; failure keeps what was read so far.
    // `why` (when given) gets the system's reason when the file cannot be read.
    bool open(const std::filesystem::path& path, UserPort& port, std::string* why = nullptr);
    // The same from the file's bytes in memory; `path` still names the project
    // file, whose folder the sources are looked for in.
    bool openBytes(std::string_view bytes, const std::filesystem::path& path, UserPort& port);

    // The content again from text serialize() gave, path kept: what Undo and
    // Redo put back. No source is dropped for a missing wave file, and nothing
    // is asked: the text described this project a moment ago.
    void restore(std::string_view text);

    // Writes the whole file. Success stores `path` and clears the modified flag;
    // failure (the file cannot be written, or would be too large to read back)
    // changes nothing and puts the reason in `why` when given.
    bool save(const std::filesystem::path& path, std::string* why = nullptr);
    // The bytes save() writes.
    std::string serialize() const;

private:
    std::filesystem::path m_path;
    std::vector<ProjectItem*> m_files;
    std::vector<ProjectItem*> m_algorithms;
    std::uint32_t m_flags = 0;
    std::vector<std::unique_ptr<ProjectItem>> m_items;
};

} // namespace kestrelon
