#include "project/tree_selection.h"

#include "project/project_document.h"

#include <algorithm>

namespace kestrelon {

namespace {

// Parent before children, without recursion. `descend` says whether an item's
// children are walked.
template <typename Descend>
std::vector<ProjectItem*> preOrder(const ProjectDocument& document, Descend descend)
{
    std::vector<ProjectItem*> order;
    const std::vector<ProjectItem*> top = document.topLevelFiles();
    std::vector<ProjectItem*> pending(top.rbegin(), top.rend());
    while (!pending.empty()) {
        ProjectItem* item = pending.back();
        pending.pop_back();
        order.push_back(item);
        if (descend(item))
            pending.insert(pending.end(), item->children().rbegin(), item->children().rend());
    }
    return order;
}

} // namespace

std::vector<ProjectItem*> filesTreeOrder(const ProjectDocument& document)
{
    return preOrder(document, [](const ProjectItem*) { return true; });
}

void TreeSelection::setExpanded(ProjectItem* item, bool expanded)
{
    if (!live(item))
        return;
    if (expanded) {
        m_collapsed.erase(item);
        return;
    }
    m_collapsed.insert(item);
    const auto hidden = [item](const ProjectItem* other) { return other && item->isAncestorOf(other); };
    // Only items of the live tree are asked about their ancestors.
    for (const ProjectItem* other : filesTreeOrder(m_document))
        if (hidden(other))
            m_selected.erase(other);
    if (hidden(live(m_focus)))
        m_focus = item;
    if (hidden(live(m_anchor)))
        m_anchor = item;
}

bool TreeSelection::isExpanded(const ProjectItem* item) const
{
    return m_collapsed.count(item) == 0;
}

std::vector<ProjectItem*> TreeSelection::visibleOrder() const
{
    return preOrder(m_document, [this](const ProjectItem* item) { return isExpanded(item); });
}

bool TreeSelection::isShown(const ProjectItem* item) const
{
    if (!item)
        return false;
    const auto shown = visibleOrder();
    return std::find(shown.begin(), shown.end(), item) != shown.end();
}

ProjectItem* TreeSelection::live(const ProjectItem* item) const
{
    if (!item)
        return nullptr;
    for (ProjectItem* candidate : filesTreeOrder(m_document))
        if (candidate == item)
            return candidate;
    return nullptr;
}

void TreeSelection::click(ProjectItem* item)
{
    if (!isShown(item))
        return;
    m_selected = {item};
    m_focus = m_anchor = item;
}

void TreeSelection::ctrlClick(ProjectItem* item)
{
    if (!isShown(item))
        return;
    if (!m_selected.erase(item))
        m_selected.insert(item);
    m_focus = m_anchor = item;
}

void TreeSelection::shiftClick(ProjectItem* item)
{
    selectRange(item, false);
}

void TreeSelection::ctrlShiftClick(ProjectItem* item)
{
    selectRange(item, true);
}

void TreeSelection::selectRange(ProjectItem* item, bool keepOthers)
{
    if (!isShown(item))
        return;
    const auto shown = visibleOrder();
    const auto anchorAt = std::find(shown.begin(), shown.end(), m_anchor);
    if (anchorAt == shown.end()) {
        // No anchor yet (or it went away): the click starts a new range.
        if (keepOthers)
            ctrlClick(item);
        else
            click(item);
        return;
    }
    const auto itemAt = std::find(shown.begin(), shown.end(), item);
    const auto [first, last] = std::minmax(anchorAt, itemAt);
    if (!keepOthers)
        m_selected.clear();
    m_selected.insert(first, last + 1);
    m_focus = item;
}

void TreeSelection::selectAll()
{
    const auto shown = visibleOrder();
    m_selected = {shown.begin(), shown.end()};
    if (!live(m_focus))
        m_focus = m_anchor = shown.empty() ? nullptr : shown.front();
}

void TreeSelection::clear()
{
    m_selected.clear();
    m_focus = m_anchor = nullptr;
}

void TreeSelection::forgetItems()
{
    clear();
    m_collapsed.clear();
}

void TreeSelection::selectOnly(const std::vector<ProjectItem*>& items)
{
    clear();
    const auto tree = filesTreeOrder(m_document);
    for (ProjectItem* item : items) {
        if (std::find(tree.begin(), tree.end(), item) == tree.end())
            continue;
        m_selected.insert(item);
        m_focus = m_anchor = item;
    }
}

void TreeSelection::prune()
{
    const auto tree = filesTreeOrder(m_document);
    const std::unordered_set<const ProjectItem*> alive(tree.begin(), tree.end());
    std::erase_if(m_selected, [&](const ProjectItem* item) { return !alive.count(item); });
    std::erase_if(m_collapsed, [&](const ProjectItem* item) { return !alive.count(item); });
    if (!alive.count(m_focus))
        m_focus = nullptr;
    if (!alive.count(m_anchor))
        m_anchor = nullptr;
}

bool TreeSelection::isSelected(const ProjectItem* item) const
{
    return item && m_selected.count(item) != 0;
}

ProjectItem* TreeSelection::focus() const
{
    return live(m_focus);
}

ProjectItem* TreeSelection::anchor() const
{
    return live(m_anchor);
}

ProjectItem* TreeSelection::primary() const
{
    const auto selected = items();
    if (selected.empty())
        return nullptr;
    const auto focused = std::find(selected.begin(), selected.end(), m_focus);
    return focused != selected.end() ? *focused : selected.front();
}

std::vector<ProjectItem*> TreeSelection::items() const
{
    std::vector<ProjectItem*> selected;
    for (ProjectItem* item : filesTreeOrder(m_document))
        if (m_selected.count(item))
            selected.push_back(item);
    return selected;
}

std::vector<ProjectItem*> TreeSelection::sources() const
{
    auto selected = items();
    std::erase_if(selected, [](const ProjectItem* item) { return !item->isSource(); });
    return selected;
}

std::vector<ProjectItem*> TreeSelection::folders() const
{
    auto selected = items();
    std::erase_if(selected, [](const ProjectItem* item) { return !item->isGroup(); });
    return selected;
}

} // namespace kestrelon
