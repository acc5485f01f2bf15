#include "project/project_document.h"

#include "common/file_io.h"
#include "common/recording_port.h"
#include "project/project_file_reader.h"
#include "project/project_file_writer.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <unordered_set>

namespace kestrelon {

void ProjectDocument::setModified(bool modified)
{
    if (modified)
        m_flags |= kModified;
    else
        m_flags &= ~kModified;
}

void ProjectDocument::clear()
{
    m_path.clear();
    m_files.clear();
    m_algorithms.clear();
    m_items.clear();
}

ProjectItem* ProjectDocument::createItem(std::string name, std::uint32_t flags, std::string id)
{
    return adoptItem(std::make_unique<ProjectItem>(std::move(name), flags, std::move(id)));
}

ProjectItem* ProjectDocument::adoptItem(std::unique_ptr<ProjectItem> item)
{
    m_items.push_back(std::move(item));
    return m_items.back().get();
}

void ProjectDocument::destroyItem(ProjectItem* item)
{
    if (!item)
        return;
    item->detach();
    std::unordered_set<const ProjectItem*> doomed;
    std::vector<const ProjectItem*> pending{item};
    while (!pending.empty()) {
        const ProjectItem* next = pending.back();
        pending.pop_back();
        doomed.insert(next);
        pending.insert(pending.end(), next->children().begin(), next->children().end());
    }
    const auto isDoomed = [&](const ProjectItem* candidate) { return doomed.count(candidate) != 0; };
    std::erase_if(m_files, isDoomed);
    std::erase_if(m_algorithms, isDoomed);
    std::erase_if(m_items, [&](const std::unique_ptr<ProjectItem>& owned) { return isDoomed(owned.get()); });
}

std::vector<ProjectItem*> ProjectDocument::topLevelFiles() const
{
    std::vector<ProjectItem*> top;
    std::copy_if(m_files.begin(), m_files.end(), std::back_inserter(top),
                 [](const ProjectItem* item) { return item->parent() == nullptr; });
    return top;
}

bool ProjectDocument::open(const std::filesystem::path& path, UserPort& port, std::string* why)
{
    ReadResult file = readFile(path, kMaxProjectFileBytes);
    if (file.status != ReadStatus::Ok) {
        if (why)
            *why = file.reason;
        clear();
        m_flags = 0;
        return false;
    }
    return openBytes(file.bytes, path, port);
}

bool ProjectDocument::openBytes(std::string_view bytes, const std::filesystem::path& path, UserPort& port)
{
    clear();
    m_flags = 0;
    if (!readProjectFile(*this, textModeFromBytes(bytes), path, port))
        return false;
    m_path = path;
    return true;
}

void ProjectDocument::restore(std::string_view text)
{
    const std::filesystem::path path = m_path;
    const std::uint32_t flags = m_flags;
    RecordingPort keepEverySource([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; });
    clear();
    readProjectFile(*this, textModeFromBytes(text), path, keepEverySource);
    m_path = path;
    m_flags = flags;
}

bool ProjectDocument::save(const std::filesystem::path& path, std::string* why)
{
    const std::string bytes = serialize();
    if (bytes.size() > kMaxProjectFileBytes) {
        if (why)
            *why = std::generic_category().message(EFBIG);
        return false;
    }
    if (!writeFileAtomically(path, bytes, why))
        return false;
    m_path = path;
    setModified(false);
    return true;
}

std::string ProjectDocument::serialize() const
{
    return writeProjectFile(*this);
}

} // namespace kestrelon
