#pragma once
// The files that travel with a project besides its project file: the play
// list ("<project>.set", beside the project file) and the algorithm registry
// ("Algos/dllsetinfo.ini"). The project session loads them on open, writes
// them on Save and Save As, and clears them on close.
#include "host/algorithm_registry.h"
#include "playback/play_item.h"
#include "project/project_session.h"

#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

namespace kestrelon {

class UserPort;

// The project file's path with the extension ".set".
std::filesystem::path playListPathFor(const std::filesystem::path& projectFile);

class ProjectCompanionFiles : public ProjectCompanions {
public:
    // Where the texts of the silent error log go: play-list failures that the
    // program records but shows to no one. By default they are dropped.
    using ErrorLog = std::function<void(std::string_view text)>;

    explicit ProjectCompanionFiles(UserPort& port);

    void setErrorLog(ErrorLog log) { m_log = std::move(log); }

    // The play list is emptied, then read when the ".set" file exists (a file
    // that cannot be read goes to the log as "Open project file error!" and
    // leaves the list empty); the registry of the Algos folder is read, a
    // missing one giving an empty list.
    void load(const std::filesystem::path& projectFile) override;
    // Writes the play list (a failure goes to the log: "Save project file
    // error" when saving the project it was loaded for or last saved to,
    // "Error in save set file!" when saving under a new name) and the
    // registry, making the Algos folder when it is missing.
    bool saveTo(const std::filesystem::path& projectFile, std::string& why) override;
    void clear() override;

    PlayList& playList() { return m_playList; }
    const PlayList& playList() const { return m_playList; }
    std::vector<AlgoRegEntry>& algorithms() { return m_algorithms; }
    const std::vector<AlgoRegEntry>& algorithms() const { return m_algorithms; }

private:
    void log(std::string_view text) const;

    UserPort& m_port;
    ErrorLog m_log;
    std::filesystem::path m_projectFile; // the project the lists belong to
    PlayList m_playList;
    std::vector<AlgoRegEntry> m_algorithms;
};

} // namespace kestrelon
