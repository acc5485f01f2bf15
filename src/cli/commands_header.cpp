#include "cli/commands.h"

namespace kestrelon::cli {

void addHeaderCommands(std::vector<CommandSpec>& table)
{
}

} // namespace kestrelon::cli
