#include "cli/commands.h"

namespace kestrelon::cli {

void addPlayListCommands(std::vector<CommandSpec>& table)
{
}

} // namespace kestrelon::cli
