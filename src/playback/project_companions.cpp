#include "playback/project_companions.h"

#include "common/messages.h"
#include "common/paths.h"
#include "playback/play_list_file.h"

#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

fs::path playListPathFor(const fs::path& projectFile)
{
    fs::path path = projectFile;
    path.replace_extension(".set");
    return path;
}

ProjectCompanionFiles::ProjectCompanionFiles(UserPort& port)
    : m_port(port)
{}

void ProjectCompanionFiles::load(const fs::path& projectFile)
{
    clear();
    m_projectFile = projectFile;
    const fs::path setFile = playListPathFor(projectFile);
    std::error_code ec;
    if (fs::exists(fs::symlink_status(setFile, ec)) && !loadPlayList(setFile, m_playList, m_port)) {
        m_playList.clear();
        log(msg::kLogOpenProjectFileError);
    }
    loadAlgorithmRegistry(projectFile.parent_path(), m_algorithms, m_port);
}

bool ProjectCompanionFiles::saveTo(const fs::path& projectFile, std::string& why)
{
    const bool savingAs = projectFile != m_projectFile;
    if (!savePlayList(playListPathFor(projectFile), m_playList))
        log(savingAs ? msg::kLogSaveSetFileError : msg::kLogSaveProjectFileError);
    const fs::path folder = projectFile.parent_path();
    std::error_code ec;
    fs::create_directories(algorithmRegistryPath(folder).parent_path(), ec);
    const fs::path registry = algorithmRegistryPath(folder);
    const bool registryWritten = saveAlgorithmRegistry(folder, m_algorithms, &why);
    if (!registryWritten)
        why = utf8FromPath(registry) + ": " + why;
    m_projectFile = projectFile;
    return registryWritten;
}

void ProjectCompanionFiles::clear()
{
    m_projectFile.clear();
    m_playList.clear();
    m_algorithms.clear();
}

void ProjectCompanionFiles::log(std::string_view text) const
{
    if (m_log)
        m_log(text);
}

} // namespace kestrelon
