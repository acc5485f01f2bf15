#include "playback/play_list_edit.h"

#include "codec/main_list.h"
#include "common/messages.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"

#include <algorithm>

namespace kestrelon {

namespace {

bool matches(const PlayItem& item, const EditInfoRecord& record)
{
    return item.sourceKey == record.fileName && item.bodyName == record.bodyName &&
           item.algorithmName == record.algoName && item.bitRate == record.bitRate;
}

void refresh(PlayItem& item, const EditInfoRecord& record)
{
    item.encodeName = record.encodeName;
    item.encodeSize = record.encodeSize;
    item.decodeName = record.decodeName;
    item.decodeSize = record.decodeSize;
}

} // namespace

const ListRow* rowOfEntry(const PlayItem& item, const MainList& rows)
{
    const auto it = std::find_if(rows.rows().begin(), rows.rows().end(),
                                 [&](const ListRow& row) { return matches(item, row.record()); });
    return it == rows.rows().end() ? nullptr : &*it;
}

std::size_t addRowsToPlayList(PlayList& list, const MainList& rows, const std::vector<std::size_t>& which,
                              bool boardPlaying, UserPort& port)
{
    if (boardPlaying) {
        port.showMessage(msg::kBoardIsPlaying);
        return 0;
    }
    // New entries are numbered after the highest number in use.
    int nextId = 0;
    for (const PlayItem& item : list)
        nextId = std::max(nextId, item.itemId + 1);
    std::size_t added = 0;
    for (const std::size_t index : which) {
        if (index >= rows.size())
            continue;
        if (list.size() >= kMaxPlayItems) {
            port.showMessage(msg::kPlayListFull);
            break;
        }
        EditInfoRecord& record = rows.rows()[index].record();
        record.multiSelect = 1;
        PlayItem item{record.fileName, record.bodyName, record.algoName, record.bitRate};
        refresh(item, record);
        item.itemId = nextId++;
        list.push_back(std::move(item));
        ++added;
    }
    return added;
}

bool checkPlayList(PlayList& list, const MainList& rows, UserPort& port)
{
    const std::size_t before = list.size();
    std::erase_if(list, [&](PlayItem& item) {
        const ListRow* row = rowOfEntry(item, rows);
        if (row)
            refresh(item, row->record());
        return row == nullptr;
    });
    if (list.size() == before)
        return false;
    port.showMessage(msg::kPlayListItemsRemoved);
    return true;
}

} // namespace kestrelon
