#include "cli/commands.h"

namespace kestrelon::cli {

void addRegistryCommands(std::vector<CommandSpec>& table)
{
}

} // namespace kestrelon::cli
