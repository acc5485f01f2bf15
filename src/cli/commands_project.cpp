#include "cli/commands.h"

#include "common/paths.h"
#include "project/project_document.h"

namespace kestrelon::cli {

namespace {

Json recordJson(const EditInfoRecord& record)
{
    return {
        {"fileName", record.fileName},
        {"bodyName", record.bodyName},
        {"algoName", record.algoName},
        {"bitRate", record.bitRate},
        {"encodeName", record.encodeName},
        {"encodeSize", record.encodeSize},
        {"renameEncode", record.renameEncode},
        {"decodeName", record.decodeName},
        {"decodeSize", record.decodeSize},
        {"multiSelect", record.multiSelect},
    };
}

// Group nesting is bounded by the reader, so this recursion stays shallow.
Json itemJson(const ProjectItem& item)
{
    Json records = Json::array();
    for (const EditInfoRecord& record : item.records())
        records.push_back(recordJson(record));
    Json children = Json::array();
    for (const ProjectItem* child : item.children())
        children.push_back(itemJson(*child));
    return {
        {"name", item.name()},
        {"id", item.id()},
        {"flags", item.flags()},
        {"records", std::move(records)},
        {"children", std::move(children)},
    };
}

// The missing-file question is answered Cancel (keep the item) unless the
// caller asked to drop missing sources.
Result projectDump(Context& ctx)
{
    const bool dropMissing = ctx.args.takeFlag("--drop-missing");
    const auto words = ctx.args.expect(1);
    const Answer answer = dropMissing ? Answer::Ok : Answer::Cancel;
    ctx.port.setPolicy([answer](std::string_view, Buttons buttons, std::string_view) { return answerFor(answer, buttons); });

    ProjectDocument project;
    const bool ok = project.open(pathFromUtf8(words[0]), ctx.port);
    Json files = Json::array();
    for (const ProjectItem* item : project.topLevelFiles())
        files.push_back(itemJson(*item));
    return {ok, {{"modified", project.isModified()}, {"files", std::move(files)}}};
}

Result projectRewrite(Context& ctx)
{
    const auto words = ctx.args.expect(2);
    ProjectDocument project;
    if (!project.open(pathFromUtf8(words[0]), ctx.port))
        return {false, {{"written", false}}};
    project.rebuildFilesList();
    const bool written = project.save(pathFromUtf8(words[1]));
    return {written, {{"written", written}}};
}

} // namespace

void addProjectCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"project", "dump"}, "project dump FILE.ptp [--drop-missing]", &projectDump, true});
    table.push_back({{"project", "rewrite"}, "project rewrite IN.ptp OUT.ptp", &projectRewrite, false});
}

} // namespace kestrelon::cli
