#include "project/project_item.h"

#include <algorithm>

namespace kestrelon {

ProjectItem::ProjectItem(std::string name, std::uint32_t flags, std::string id)
    : m_name(std::move(name))
    , m_flags(flags)
    , m_id(std::move(id))
{}

bool ProjectItem::isAncestorOf(const ProjectItem* other) const
{
    for (const ProjectItem* up = other ? other->m_parent : nullptr; up; up = up->m_parent)
        if (up == this)
            return true;
    return false;
}

bool ProjectItem::insertChild(std::size_t index, ProjectItem* child)
{
    if (!child || child == this || child->isAncestorOf(this))
        return false;
    child->detach();
    index = std::min(index, m_children.size());
    m_children.insert(m_children.begin() + static_cast<std::ptrdiff_t>(index), child);
    child->m_parent = this;
    return true;
}

void ProjectItem::detach()
{
    if (!m_parent)
        return;
    auto& siblings = m_parent->m_children;
    siblings.erase(std::find(siblings.begin(), siblings.end(), this));
    m_parent = nullptr;
}

} // namespace kestrelon
