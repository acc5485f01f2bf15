#include "cli/commands.h"

namespace kestrelon::cli {

void addSettingsCommands(std::vector<CommandSpec>& table)
{
}

} // namespace kestrelon::cli
