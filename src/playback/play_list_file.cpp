#include "playback/play_list_file.h"

#include "common/ini_document.h"

namespace kestrelon {

namespace {

std::string itemSection(size_t index)
{
    return "Item" + std::to_string(index);
}

} // namespace

bool loadPlayList(const std::filesystem::path& path, PlayList& list, UserPort& port)
{
    list.clear();
    IniDocument doc;
    if (!doc.load(path))
        return false;
    const int count = doc.getInt("SelectedItems", "Count", 0, port).value_or(0);
    // A number below Count without a section would give an entry with no
    // source key, which is dropped: walking only the sections present reads
    // the same, however large Count is.
    for (const int n : doc.numberedSections("Item", count)) {
        if (list.size() == kMaxPlayItems)
            break;
        const std::string section = itemSection(static_cast<size_t>(n));
        PlayItem item;
        item.sourceKey = doc.getString(section, "FileName");
        item.bodyName = doc.getString(section, "BodyName");
        item.algorithmName = doc.getString(section, "AlgoName");
        item.bitRate = doc.getString(section, "BitRate");
        item.itemId = doc.getInt(section, "ItemID", 0, port).value_or(0);
        if (item.sourceKey.empty() || item.bodyName.empty())
            continue;
        list.push_back(std::move(item));
    }
    return true;
}

bool savePlayList(const std::filesystem::path& path, const PlayList& list)
{
    IniDocument doc;
    doc.setInt("SelectedItems", "Count", static_cast<long long>(list.size()));
    for (size_t i = 0; i < list.size(); ++i) {
        const PlayItem& item = list[i];
        const std::string section = itemSection(i);
        doc.setString(section, "FileName", item.sourceKey);
        doc.setString(section, "BodyName", item.bodyName);
        doc.setString(section, "AlgoName", item.algorithmName);
        doc.setString(section, "BitRate", item.bitRate);
        doc.setInt(section, "ItemID", item.itemId);
    }
    return doc.save(path);
}

} // namespace kestrelon
