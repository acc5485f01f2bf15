#include "cli/commands.h"

#include "common/paths.h"
#include "host/algorithm_registry.h"

namespace kestrelon::cli {

namespace {

Json entriesJson(const std::vector<AlgoRegEntry>& entries)
{
    Json list = Json::array();
    for (const AlgoRegEntry& entry : entries)
        list.push_back(Json{{"name", entry.name}, {"path", entry.path}});
    return list;
}

Result runRegistryDump(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    std::vector<AlgoRegEntry> entries;
    if (!loadAlgorithmRegistry(pathFromUtf8(words[0]), entries, context.port))
        return Result{false};
    return Result{true, Json{{"entries", entriesJson(entries)}}};
}

// Like the project's own save: a registry that cannot be read prunes to an
// empty one, which is then written.
Result runRegistryPrune(Context& context)
{
    const std::vector<std::string> words = context.args.expect(1);
    const std::filesystem::path project = pathFromUtf8(words[0]);
    std::vector<AlgoRegEntry> entries;
    loadAlgorithmRegistry(project, entries, context.port);
    const bool written = pruneAndSaveAlgorithmRegistry(project, entries);
    return Result{written, Json{{"entries", entriesJson(entries)}}};
}

} // namespace

void addRegistryCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"registry", "dump"}, "registry dump PROJECT-FOLDER", runRegistryDump, true});
    table.push_back({{"registry", "prune"}, "registry prune PROJECT-FOLDER", runRegistryPrune, true});
}

} // namespace kestrelon::cli
