#include "cli/commands.h"

namespace kestrelon::cli {

const std::vector<CommandSpec>& commandTable()
{
    static const std::vector<CommandSpec> table = [] {
        std::vector<CommandSpec> t;
        addProjectCommands(t);
        addBodyCommands(t);
        addRegistryCommands(t);
        addEventCommands(t);
        addWaveCommands(t);
        addBoardCommands(t);
        addPlayListCommands(t);
        addHeaderCommands(t);
        addSettingsCommands(t);
        addAlgoCommands(t);
        addExportCommands(t);
        addEncodeCommands(t);
        addPlayCommands(t);
        addQualityCommands(t);
        addSweepCommands(t);
        return t;
    }();
    return table;
}

} // namespace kestrelon::cli
