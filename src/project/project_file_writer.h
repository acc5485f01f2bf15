#pragma once
#include <string>

namespace kestrelon {

class ProjectDocument;

// The whole project file for `project`, every line ending in the platform's
// line end. Only the listed items with the top-level bit start a subtree; the
// others are written through their parents.
std::string writeProjectFile(const ProjectDocument& project);

} // namespace kestrelon
