#include "cli/project_json.h"

#include "cli/spooled_array.h"

#include "project/project_document.h"

namespace kestrelon::cli {

Json recordJson(const EditInfoRecord& record)
{
    return {
        {"fileName", record.fileName},         {"bodyName", record.bodyName},     {"algoName", record.algoName},
        {"bitRate", record.bitRate},           {"encodeName", record.encodeName}, {"encodeSize", record.encodeSize},
        {"renameEncode", record.renameEncode}, {"decodeName", record.decodeName}, {"decodeSize", record.decodeSize},
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

std::shared_ptr<SpooledArray> filesJson(const ProjectDocument& project)
{
    auto files = std::make_shared<SpooledArray>();
    for (const ProjectItem* item : project.topLevelFiles())
        files->add(itemJson(*item));
    return files;
}

} // namespace kestrelon::cli
