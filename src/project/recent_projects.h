#pragma once
// The recent-project list: the last projects opened, created or saved under a
// new name, most recent first. This is the list as a value; the workbench
// loads and stores it with the other settings (SettingsStore::recentProjects),
// so reading or changing it here never touches the user's profile.
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class RecentProjects {
public:
    static constexpr std::size_t kCapacity = 5;
    // Characters of a path shown in the menu.
    static constexpr std::size_t kDisplayWidth = 30;

    RecentProjects() = default;
    // Takes stored entries in order, dropping empty ones and repeats, keeping
    // at most kCapacity.
    explicit RecentProjects(const std::vector<std::string>& stored);

    // Puts `path` first; an entry equal to it (compared exactly, as text)
    // moves to the front instead of standing twice; the oldest entry beyond
    // kCapacity falls off.
    void add(const std::filesystem::path& path);
    void add(const std::string& path);
    // Takes an entry out, e.g. one whose project no longer opens.
    void remove(std::string_view path);

    const std::vector<std::string>& entries() const { return m_entries; }
    std::size_t size() const { return m_entries.size(); }

    // The menu text of entry `index`: see displayText(path).
    std::string displayText(std::size_t index) const;
    // A path of at most kDisplayWidth characters as it stands; a longer one as
    // "…" followed by its last kDisplayWidth - 1 characters, so the end of the
    // path, which tells projects apart, stays visible. Characters are UTF-8
    // code points; a byte that is no valid UTF-8 counts as one.
    static std::string displayText(std::string_view path);

private:
    std::vector<std::string> m_entries;
};

} // namespace kestrelon
