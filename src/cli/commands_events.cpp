#include "cli/commands.h"

namespace kestrelon::cli {

void addEventCommands(std::vector<CommandSpec>& table)
{
}

} // namespace kestrelon::cli
