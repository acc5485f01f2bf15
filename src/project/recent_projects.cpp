#include "project/recent_projects.h"

#include "common/paths.h"

#include <algorithm>

namespace kestrelon {

namespace {

bool isContinuationByte(unsigned char c)
{
    return (c & 0xC0) == 0x80;
}

// Where each character starts: a lead byte takes the continuation bytes that
// follow it, up to three; anything else is a character of one byte.
std::vector<std::size_t> characterStarts(std::string_view text)
{
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < text.size();) {
        starts.push_back(i);
        const unsigned char lead = static_cast<unsigned char>(text[i]);
        const std::size_t expected = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        std::size_t next = i + 1;
        while (next < text.size() && next - i <= expected && isContinuationByte(static_cast<unsigned char>(text[next])))
            ++next;
        i = next;
    }
    return starts;
}

} // namespace

RecentProjects::RecentProjects(const std::vector<std::string>& stored)
{
    for (const std::string& entry : stored) {
        if (m_entries.size() == kCapacity)
            break;
        if (!entry.empty() && std::find(m_entries.begin(), m_entries.end(), entry) == m_entries.end())
            m_entries.push_back(entry);
    }
}

void RecentProjects::add(const std::filesystem::path& path)
{
    add(utf8FromPath(path));
}

void RecentProjects::add(const std::string& path)
{
    if (path.empty())
        return;
    remove(path);
    m_entries.insert(m_entries.begin(), path);
    if (m_entries.size() > kCapacity)
        m_entries.resize(kCapacity);
}

void RecentProjects::remove(std::string_view path)
{
    std::erase_if(m_entries, [path](const std::string& entry) { return entry == path; });
}

std::string RecentProjects::displayText(std::size_t index) const
{
    return index < m_entries.size() ? displayText(m_entries[index]) : std::string();
}

std::string RecentProjects::displayText(std::string_view path)
{
    const std::vector<std::size_t> starts = characterStarts(path);
    if (starts.size() <= kDisplayWidth)
        return std::string(path);
    return "\xE2\x80\xA6" + std::string(path.substr(starts[starts.size() - (kDisplayWidth - 1)]));
}

} // namespace kestrelon
