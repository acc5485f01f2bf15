#pragma once
// What `kestrelon-cli --help`, `kestrelon-cli COMMAND --help` and the manual
// page say. One text per command, so the usage and the manual never disagree.
#include "cli/cli_command.h"

#include <ostream>
#include <string_view>

namespace kestrelon::cli {

// What the command does and what its options mean; empty for an unknown one.
std::string_view commandDescription(const CommandSpec& command);

// The program's whole usage: global options, then every command.
void printUsage(std::ostream& out);
// One command's usage and description.
void printCommandHelp(std::ostream& out, const CommandSpec& command);

} // namespace kestrelon::cli
