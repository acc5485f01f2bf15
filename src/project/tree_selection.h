#pragma once
// Which nodes of the Files tree are selected, kept apart from any widget so the
// workbench, kestrelon-cli and the tests share one set of rules: a click selects
// one node, Ctrl-click toggles one, Shift-click selects the range from the anchor
// in the order the nodes are shown, and collapsing a folder drops the selected
// nodes it hides.
//
// The selection only compares item pointers; it dereferences items it finds in
// the live tree. After items are destroyed, call prune() before anything new is
// created, so a new item can never inherit a destroyed one's selection.
#include "project/project_item.h"

#include <unordered_set>
#include <vector>

namespace kestrelon {

class ProjectDocument;

// Every item of the Files tree, parent before children, in tree order.
std::vector<ProjectItem*> filesTreeOrder(const ProjectDocument& document);

class TreeSelection {
public:
    explicit TreeSelection(const ProjectDocument& document)
        : m_document(document)
    {}

    // Folders start expanded; a collapsed folder hides its descendants.
    // Collapsing deselects the hidden nodes and moves the focus and the anchor
    // onto the collapsed folder when they were hidden.
    void setExpanded(ProjectItem* item, bool expanded);
    bool isExpanded(const ProjectItem* item) const;
    // The nodes as the tree shows them, top to bottom.
    std::vector<ProjectItem*> visibleOrder() const;

    // Mouse conventions. Each ignores a node that is not shown.
    void click(ProjectItem* item); // select only this node
    void ctrlClick(ProjectItem* item); // toggle this node
    void shiftClick(ProjectItem* item); // select only the range anchor..item
    void ctrlShiftClick(ProjectItem* item); // add the range anchor..item
    void selectAll(); // every shown node
    void clear();
    // Selects exactly these nodes (any that are in the tree, shown or not); the
    // last becomes the focus and the anchor. For scripted callers.
    void selectOnly(const std::vector<ProjectItem*>& items);
    // Forgets nodes that are no longer in the tree.
    void prune();
    // Forgets every node, collapsed ones too: for when all items are about
    // to be made anew (an undo), and a new item might take an old address.
    void forgetItems();

    bool isSelected(const ProjectItem* item) const;
    bool empty() const { return items().empty(); }
    // The node last clicked, selected or not; null when none.
    ProjectItem* focus() const;
    ProjectItem* anchor() const;
    // "The selected node" of single-node commands: the focus when it is
    // selected, else the first selected node in tree order, else null.
    ProjectItem* primary() const;

    // Selected nodes in tree order, and those of one kind, so commands can be
    // enabled only when the selection holds something they act on.
    std::vector<ProjectItem*> items() const;
    std::vector<ProjectItem*> sources() const;
    std::vector<ProjectItem*> folders() const;

private:
    bool isShown(const ProjectItem* item) const;
    void selectRange(ProjectItem* item, bool keepOthers);
    ProjectItem* live(const ProjectItem* item) const;

    const ProjectDocument& m_document;
    std::unordered_set<const ProjectItem*> m_selected;
    std::unordered_set<const ProjectItem*> m_collapsed;
    const ProjectItem* m_focus = nullptr;
    const ProjectItem* m_anchor = nullptr;
};

} // namespace kestrelon
