#pragma once
// Codecs that crashed or stopped answering, by algorithm name, kept in the
// user's configuration folder from one run to the next, so that the next batch
// asks before it gives such a codec another row.
#include <filesystem>
#include <set>
#include <string>

namespace kestrelon {

class UserPort;

class BrokenCodecs {
public:
    // The file in `configFolder` (the user's own by default); an empty folder
    // keeps the list in memory only.
    explicit BrokenCodecs(std::filesystem::path configFolder);

    bool has(const std::string& algorithm) const { return m_names.count(algorithm) != 0; }
    void mark(const std::string& algorithm);
    void forgive(const std::string& algorithm);

    // Written whole when it changed; false with the reason in `why` when it
    // could not be. A file that does not read is an empty list.
    bool save(std::string* why = nullptr);
    const std::filesystem::path& file() const { return m_file; }

private:
    std::filesystem::path m_file;
    std::set<std::string> m_names;
    bool m_changed = false;
};

// Saves the list, saying so when it cannot.
void keepBrokenCodecs(BrokenCodecs& broken, UserPort& port);

} // namespace kestrelon
