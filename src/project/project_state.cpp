// Undo and Redo's side of the session: what one moment of the project is, and
// the way back to it.
#include "project/project_session.h"

#include "project/project_folder_ops.h"

#include <string>
#include <system_error>
#include <unordered_set>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

// The entries of `from` that `others` lacks: linear in both, as the lists of
// a big project run to thousands of files.
std::vector<fs::path> missingFrom(const std::vector<fs::path>& from, const std::vector<fs::path>& others)
{
    std::unordered_set<std::string> known;
    for (const fs::path& path : others)
        known.insert(path.lexically_normal().string());
    std::vector<fs::path> missing;
    for (const fs::path& path : from)
        if (!known.count(path.lexically_normal().string()))
            missing.push_back(path);
    return missing;
}

bool moveFile(const fs::path& from, const fs::path& to)
{
    std::error_code ec;
    fs::create_directories(to.parent_path(), ec);
    fs::rename(from, to, ec);
    return !ec;
}

// Where a file set aside waits: Temp/undo, then its path inside the project
// folder, so two files of one name in different folders never meet.
fs::path asidePath(const ProjectSession& session, const fs::path& file)
{
    return session.tempFolder() / "undo" / file.lexically_relative(session.projectFolder());
}

} // namespace

bool ProjectSession::setAside(const fs::path& file)
{
    if (!isOpen() || !isInsideFolder(file, projectFolder(), false))
        return false;
    std::error_code ec;
    if (!fs::exists(fs::symlink_status(file, ec)))
        return true; // nothing to keep: an undo finds nothing to move back either
    if (!moveFile(file, asidePath(*this, file)))
        return false;
    m_setAside.push_back(file);
    return true;
}

ProjectState ProjectSession::state() const
{
    return ProjectState{m_document->serialize(), m_deletionList, m_copiedIn, m_droppedAtSave, m_setAside};
}

std::vector<fs::path> ProjectSession::restore(const ProjectState& state)
{
    std::vector<fs::path> unmoved;
    std::error_code ec;
    // Copies made since were made for sources the restored project does not
    // hold; copies it holds again come back. Files set aside since come
    // back; files it had set aside go again.
    for (const fs::path& file : missingFrom(m_copiedIn, state.copiedIn))
        if (fs::exists(fs::symlink_status(file, ec)) && !moveFile(file, asidePath(*this, file)))
            unmoved.push_back(file);
    for (const fs::path& file : missingFrom(state.setAside, m_setAside))
        if (fs::exists(fs::symlink_status(file, ec)) && !moveFile(file, asidePath(*this, file)))
            unmoved.push_back(file);
    const auto bringBack = [&](const fs::path& file) {
        const fs::path aside = asidePath(*this, file);
        if (!fs::exists(fs::symlink_status(aside, ec)))
            return;
        // A file made under the same name since is the newer work: it stays.
        if (fs::exists(fs::symlink_status(file, ec)) || !moveFile(aside, file))
            unmoved.push_back(file);
    };
    for (const fs::path& file : missingFrom(state.copiedIn, m_copiedIn))
        bringBack(file);
    for (const fs::path& file : missingFrom(m_setAside, state.setAside))
        bringBack(file);

    m_document->restore(state.text);
    // Even back at the saved text the project stays marked: what the state
    // does not hold (the play list) may have changed since.
    m_document->setModified(true);
    m_deletionList = state.deletionList;
    m_copiedIn = state.copiedIn;
    m_droppedAtSave = state.droppedAtSave;
    m_setAside = state.setAside;
    return unmoved;
}

} // namespace kestrelon
