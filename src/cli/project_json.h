#pragma once
// The project tree as kestrelon-cli prints it. `project dump` and every
// command that changes a project print the same shape, so a script reads
// them all alike.
#include "cli/cli_command.h"

namespace kestrelon {
struct EditInfoRecord;
class ProjectItem;
class ProjectDocument;
} // namespace kestrelon

namespace kestrelon::cli {

Json recordJson(const EditInfoRecord& record);
// The item with its records and, recursively, its children.
Json itemJson(const ProjectItem& item);
// The Files tree: its top-level items in list order, as "files" holds it,
// written out item by item.
std::shared_ptr<SpooledArray> filesJson(const ProjectDocument& project);

} // namespace kestrelon::cli
