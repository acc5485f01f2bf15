#pragma once
// A node of the Files or Algorithms tree: a group (folder) or a source wave file.
// Items are owned by their ProjectDocument; a child list and the parent pointer
// only refer to them, so moving a node never copies it and destroying a deep
// tree never recurses.
#include "project/edit_info_record.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kestrelon {

class ProjectItem {
public:
    // Bits of the flags word. A file keeps the whole word, so bits the program
    // does not know survive a read and a write unchanged.
    static constexpr std::uint32_t kTopLevel = 0x1; // directly under the root of its tree
    static constexpr std::uint32_t kGroup = 0x2; // a group (folder)
    static constexpr std::uint32_t kSource = 0x8; // a source wave file
    static constexpr std::uint32_t kFolderMark = 0x4000; // a folder made by Add Folder

    ProjectItem() = default;
    ProjectItem(std::string name, std::uint32_t flags, std::string id = {});
    ProjectItem(const ProjectItem&) = delete;
    ProjectItem& operator=(const ProjectItem&) = delete;

    // Group: its display name. Source: its path relative to the folder of the
    // project file, with "\" between parts ("Files\a.wav").
    const std::string& name() const { return m_name; }
    void setName(std::string name) { m_name = std::move(name); }

    std::uint32_t flags() const { return m_flags; }
    void setFlags(std::uint32_t flags) { m_flags = flags; }
    bool isTopLevel() const { return (m_flags & kTopLevel) != 0; }
    bool isGroup() const { return (m_flags & kGroup) != 0; }
    // A group bit wins over the source bit: such an item is written as a group.
    bool isSource() const { return (m_flags & kSource) != 0 && !isGroup(); }

    // A source's id is its file name; each of its records carries it as source key.
    const std::string& id() const { return m_id; }
    void setId(std::string id) { m_id = std::move(id); }

    std::vector<EditInfoRecord>& records() { return m_records; }
    const std::vector<EditInfoRecord>& records() const { return m_records; }

    ProjectItem* parent() const { return m_parent; }
    const std::vector<ProjectItem*>& children() const { return m_children; }

    // Puts `child` at `index` (clamped to the end) of this item's children,
    // taking it from its previous parent. Refuses (false) to make a cycle.
    bool insertChild(std::size_t index, ProjectItem* child);
    bool appendChild(ProjectItem* child) { return insertChild(m_children.size(), child); }
    // Takes this item out of its parent's children; it keeps its own subtree.
    void detach();

    bool isAncestorOf(const ProjectItem* other) const;

private:
    std::string m_name;
    std::uint32_t m_flags = 0;
    std::string m_id;
    std::vector<EditInfoRecord> m_records;
    std::vector<ProjectItem*> m_children;
    ProjectItem* m_parent = nullptr;
};

} // namespace kestrelon
