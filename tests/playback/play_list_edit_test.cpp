#include "codec/main_list.h"
#include "common/messages.h"
#include "playback/play_list_edit.h"
#include "project/project_document.h"
#include "support/scripted_port.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace kestrelon;

namespace {

// One source with `rows` records, bit rates 1, 2, 3...
MainList rowsOf(ProjectDocument& document, int rows)
{
    ProjectItem* source =
        document.createItem("Files\\hello.wav", ProjectItem::kTopLevel | ProjectItem::kSource, "hello.wav");
    document.files().push_back(source);
    for (int i = 0; i < rows; ++i) {
        EditInfoRecord record;
        record.fileName = "hello.wav";
        record.bodyName = "KS-1 Voice";
        record.algoName = "ImaAdpcm";
        record.bitRate = std::to_string(i + 1);
        source->records().push_back(record);
    }
    return MainList::fromDocument(document);
}

} // namespace

TEST(PlayListEdit, AddsUpTo256RowsMarksThemAndDropsEntriesWhoseRowIsGone)
{
    ProjectDocument document;
    MainList rows = rowsOf(document, 300);
    test::ScriptedPort port;
    PlayList list;
    std::vector<std::size_t> all(rows.size());
    std::iota(all.begin(), all.end(), std::size_t{0});

    EXPECT_EQ(addRowsToPlayList(list, rows, all, true, port), 0u); // not while the board plays
    EXPECT_EQ(addRowsToPlayList(list, rows, all, false, port), 256u);
    ASSERT_EQ(list.size(), 256u);
    EXPECT_EQ(list[255].bitRate, "256"); // the first 256 in list order
    EXPECT_EQ(rows.rows()[255].record().multiSelect, 1);
    EXPECT_EQ(rows.rows()[256].record().multiSelect, 0);
    EXPECT_EQ(port.texts(),
              (std::vector<std::string>{std::string(msg::kBoardIsPlaying), std::string(msg::kPlayListFull)}));

    // The same row may stand twice; new entries get numbers of their own.
    list.clear();
    addRowsToPlayList(list, rows, {4, 4, 7}, false, port);
    EXPECT_EQ(list[0].itemId + 1, list[1].itemId);
    EXPECT_EQ(list[1].itemId + 1, list[2].itemId);

    // A row whose bit rate changed no longer matches: its entries go, said once.
    port.clear();
    rows.rows()[4].record().bitRate = "9999";
    rows.rows()[7].record().encodeName = "SAF7.tmp";
    EXPECT_TRUE(checkPlayList(list, rows, port));
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].bitRate, "8");
    EXPECT_EQ(list[0].encodeName, "SAF7.tmp"); // refreshed from its row
    EXPECT_EQ(port.texts(), std::vector<std::string>{std::string(msg::kPlayListItemsRemoved)});
    EXPECT_FALSE(checkPlayList(list, rows, port));
}
