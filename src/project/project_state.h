#pragma once
// The open project at one moment, as Undo and Redo put it back: the project
// file's text and the session's notes about files (what a Save or Close deletes, what the session copied
// in, what it set aside). Files themselves are never copied: a file a command
// removes is set aside in Temp and moved back by an undo.
#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon {

struct ProjectState {
    std::string text;
    std::vector<std::filesystem::path> deletionList;
    std::vector<std::filesystem::path> copiedIn;
    std::vector<std::filesystem::path> droppedAtSave;
    std::vector<std::filesystem::path> setAside;

    bool operator==(const ProjectState&) const = default;
};

} // namespace kestrelon
