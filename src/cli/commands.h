#pragma once
// Each area of the program adds its commands to the table.
#include "cli/cli_command.h"

namespace kestrelon::cli {

void addProjectCommands(std::vector<CommandSpec>& table);
void addBodyCommands(std::vector<CommandSpec>& table);
void addRegistryCommands(std::vector<CommandSpec>& table);
void addEventCommands(std::vector<CommandSpec>& table);
void addPlayListCommands(std::vector<CommandSpec>& table);
void addHeaderCommands(std::vector<CommandSpec>& table);
void addSettingsCommands(std::vector<CommandSpec>& table);
void addAlgoCommands(std::vector<CommandSpec>& table);
void addExportCommands(std::vector<CommandSpec>& table);
void addEncodeCommands(std::vector<CommandSpec>& table);
void addPlayCommands(std::vector<CommandSpec>& table);
void addQualityCommands(std::vector<CommandSpec>& table);
void addSweepCommands(std::vector<CommandSpec>& table);
void addWaveCommands(std::vector<CommandSpec>& table);
void addBoardCommands(std::vector<CommandSpec>& table);
// `play --what encoded`: the row's encoded data on the target board.
Result playEncodedOnBoard(Context& context, const std::string& ptp, std::size_t row);

} // namespace kestrelon::cli
