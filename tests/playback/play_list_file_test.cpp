#include "common/file_io.h"
#include "common/messages.h"
#include "playback/play_list_file.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::ScriptedPort;
using kestrelon::test::TempDir;
using kestrelon::test::writeBytes;

namespace {

std::vector<std::string> keysOf(const PlayList& list)
{
    std::vector<std::string> keys;
    for (const PlayItem& item : list)
        keys.push_back(item.sourceKey);
    return keys;
}

PlayItem item(std::string key, std::string body, std::string algo, std::string rate, int id)
{
    return {.sourceKey = std::move(key),
            .bodyName = std::move(body),
            .algorithmName = std::move(algo),
            .bitRate = std::move(rate),
            .encodeName = "not stored",
            .itemId = id};
}

} // namespace

TEST(PlayListFile, SavedListReadsBackInPlayOrder)
{
    TempDir dir;
    const std::string eol(kNativeEol);
    const PlayList written{item("Greetings\\hello.wav", "Alpha", "ImaAdpcm", "16000", 3),
                           item("bye.wav", "Beta", "", "", -2),
                           item("Greetings\\hello.wav", "Alpha", "ImaAdpcm", "16000", 4)};
    ASSERT_TRUE(savePlayList(dir / "p.set", written));
    EXPECT_EQ(readBytes(dir / "p.set"),
              "[SelectedItems]" + eol + "Count=3" + eol + "[Item0]" + eol + "FileName=Greetings\\hello.wav" + eol +
                  "BodyName=Alpha" + eol + "AlgoName=ImaAdpcm" + eol + "BitRate=16000" + eol + "ItemID=3" + eol +
                  "[Item1]" + eol + "FileName=bye.wav" + eol + "BodyName=Beta" + eol + "AlgoName=" + eol +
                  "BitRate=" + eol + "ItemID=-2" + eol + "[Item2]" + eol + "FileName=Greetings\\hello.wav" + eol +
                  "BodyName=Alpha" + eol + "AlgoName=ImaAdpcm" + eol + "BitRate=16000" + eol + "ItemID=4" + eol);

    // Read back and written again: every stored field, in the same order.
    PlayList read;
    ScriptedPort port;
    ASSERT_TRUE(loadPlayList(dir / "p.set", read, port));
    ASSERT_TRUE(savePlayList(dir / "again.set", read));
    EXPECT_EQ(readBytes(dir / "again.set"), readBytes(dir / "p.set"));
    EXPECT_TRUE(port.messages().empty());
}

TEST(PlayListFile, DropsEntriesWithoutSourceOrBodyAndTakesAtMost256)
{
    TempDir dir;
    PlayList list{item("stale", "x", "", "", 0)};
    ScriptedPort port;
    EXPECT_FALSE(loadPlayList(dir / "absent.set", list, port));
    EXPECT_TRUE(list.empty());

    writeBytes(dir / "p.set", "[SelectedItems]\nCount=6\n"
                              "[Item0]\nFileName=a.wav\nBodyName=Alpha\nItemID=oops\n"
                              "[Item1]\nFileName=\nBodyName=Alpha\n"
                              "[Item2]\nFileName=c.wav\nAlgoName=Ima\n"
                              "[Item4]\nFileName=e.wav\nBodyName=Beta\nItemID=9\n"
                              "[Item5]\nfilename=f.wav\nBODYNAME=Beta\n"
                              "[Item6]\nFileName=beyond.wav\nBodyName=Beta\n");
    ASSERT_TRUE(loadPlayList(dir / "p.set", list, port));
    EXPECT_EQ(keysOf(list), (std::vector<std::string>{"a.wav", "e.wav", "f.wav"}));
    EXPECT_EQ(list[0].itemId, 0);
    EXPECT_EQ(list[1].itemId, 9);
    EXPECT_EQ(port.texts(), std::vector<std::string>{std::string(msg::kInvalidData)});

    writeBytes(dir / "p.set", "[SelectedItems]\nCount=0\n[Item0]\nFileName=a.wav\nBodyName=Alpha\n");
    ASSERT_TRUE(loadPlayList(dir / "p.set", list, port));
    EXPECT_TRUE(list.empty());

    // A huge Count walks only the sections present, and the list stops at 256.
    std::string text = "[SelectedItems]\nCount=2147483647\n[Item0]\nFileName=\nBodyName=dropped\n";
    for (int n = 1; n <= 300; ++n)
        text += "[Item" + std::to_string(n) + "]\nFileName=" + std::to_string(n) + ".wav\nBodyName=Alpha\n";
    writeBytes(dir / "p.set", text);
    ASSERT_TRUE(loadPlayList(dir / "p.set", list, port));
    ASSERT_EQ(list.size(), kMaxPlayItems);
    EXPECT_EQ(list.front().sourceKey, "1.wav");
    EXPECT_EQ(list.back().sourceKey, "256.wav");
}
