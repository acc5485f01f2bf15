#include "cli/commands.h"

namespace kestrelon::cli {

void addProjectCommands(std::vector<CommandSpec>& table)
{
}

} // namespace kestrelon::cli
