#include "cli/commands.h"

namespace kestrelon::cli {

void addBodyCommands(std::vector<CommandSpec>& table)
{
}

} // namespace kestrelon::cli
