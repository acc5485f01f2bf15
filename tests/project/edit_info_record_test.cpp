#include "project/edit_info_record.h"

#include <gtest/gtest.h>

using namespace kestrelon;

TEST(EditInfoRecord, RowsMatchOnTheFourIdentifyingFieldsCaseSensitively)
{
    EditInfoRecord a;
    a.fileName = "a.wav";
    a.bodyName = "B1";
    a.algoName = "Adpcm";
    a.bitRate = "16000";

    EditInfoRecord b = a;
    b.encodeSize = "99"; // results and play-list marks do not make another row
    b.multiSelect = 1;
    b.itemId = 4;
    EXPECT_TRUE(a.sameRow(b));

    for (auto field :
         {&EditInfoRecord::fileName, &EditInfoRecord::bodyName, &EditInfoRecord::algoName, &EditInfoRecord::bitRate}) {
        EditInfoRecord other = a;
        other.*field = "x";
        EXPECT_FALSE(a.sameRow(other));
    }
    EditInfoRecord upper = a;
    upper.algoName = "ADPCM";
    EXPECT_FALSE(a.sameRow(upper));
}

TEST(EditInfoRecord, SizesReadTheDecimalDigitsTheyBeginWith)
{
    EditInfoRecord r;
    r.encodeSize = "4096";
    r.decodeSize = "  12kB";
    EXPECT_EQ(r.encodeSizeValue(), 4096);
    EXPECT_EQ(r.decodeSizeValue(), 12);
    EXPECT_EQ(sizeFromText(""), 0);
    EXPECT_EQ(sizeFromText("abc"), 0);
    EXPECT_EQ(sizeFromText("-7"), -7);
    EXPECT_EQ(sizeFromText("5000000000"), 5000000000LL);
    EXPECT_EQ(sizeFromText("99999999999999999999999"), INT64_MAX);
}
