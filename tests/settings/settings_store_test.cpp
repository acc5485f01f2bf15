// Every test keeps its settings in a folder of its own: nobody's real profile
// is read or written.
#include "settings/settings_store.h"

#include "support/files.h"
#include "support/temp_dir.h"

#include <QByteArray>
#include <QtGlobal>

#include <gtest/gtest.h>

using namespace kestrelon;
using namespace kestrelon::test;

namespace {

std::filesystem::path settingsFile(const TempDir& dir)
{
    return dir.path() / "Corvane" / "Kestrelon.conf";
}

SettingsStore everyValueChanged()
{
    SettingsStore store;
    std::uint32_t colour = 0x00010203;
    for (const WaveColorSlot& slot : kWaveColorSlots) {
        store.colors.*slot.member = colour;
        colour += 0x00111111;
    }
    store.colors.playPos = 0xFFFFFFFFu; // all 32 bits survive
    store.playMode = 2;
    store.sortOrder = 1;
    store.sortIndex = 4;
    store.columnScale = 1.25f;
    store.autoDecode = 0;
    store.codecJobs = 3;
    store.lastBodyName = "Body A";
    store.lastAlgName = "adpcm";
    store.lastBitRate = "16000"; // a text that looks like a number stays text
    store.applyAllFiles = 0;
    store.lastProjectPath = "C:\\Work\\a, b=c; [d]";
    store.lastFilePath = "/home/\xC3\xA9t\xC3\xA9/sons";
    store.externalEditor = "/opt/sound editor/bin/edit";
    store.boardPorts[0] = "/dev/ttyUSB3";
    store.boardPorts[15] = "/tmp/board link";
    store.recentProjects = {"C:\\p1\\p1.ptp", "/p2/p2.ptp", "p3,x.ptp", "@p4.ptp", "p5.ptp"};
    return store;
}

} // namespace

TEST(SettingsStore, DefaultsWhenNothingIsStored)
{
    TempDir dir;
    SettingsStore store;
    ASSERT_TRUE(store.load(dir.path()));
    EXPECT_EQ(store, SettingsStore{});
    EXPECT_FALSE(std::filesystem::exists(settingsFile(dir))); // reading creates nothing

    // Saved defaults: integers as integers, the scale as "%f" text.
    ASSERT_TRUE(store.save(dir.path()));
    const std::string text = readBytes(settingsFile(dir));
    for (const char* line : {"[MyColor]", "WaveColor=11268124", "PointColor=16711680", "PlayPosColor=16777215",
                             "BackgroundColor=0", "[ListProperty]", "SortIndex=1", "SortOrder=0", "Multiple=1.000000",
                             "[AutoEncodeDecode]", "Decode=1", "[PlayMode]", "nPlayMode=0", "ApplyAllFiles=1"})
        EXPECT_NE(text.find(std::string(line) + "\n"), std::string::npos) << line;
}

TEST(SettingsStore, ReadsWhatIsStoredAndKeepsTheRest)
{
    TempDir dir;
    writeBytes(settingsFile(dir), "[ListProperty]\nMultiple=1.500000\nSortIndex=abc\nSortOrder=1\n"
                                  "[MyColor]\nWaveColor=255\nGridLineColor=-1x\n"
                                  "[LastSetting]\nBodyName=B1\nProjectPath=/my, projects\n");
    SettingsStore store;
    store.playMode = 3; // not stored: kept
    store.lastAlgName = "kept";
    store.recentProjects = {"kept.ptp"};
    store.columnScale = 2.0f; // "Multiple" is always read: stored text wins
    ASSERT_TRUE(store.load(dir.path()));
    EXPECT_EQ(store.columnScale, 1.5f);
    EXPECT_EQ(store.sortIndex, 1); // not a number: kept
    EXPECT_EQ(store.sortOrder, 1);
    EXPECT_EQ(store.colors.wave, 255u);
    EXPECT_EQ(store.colors.gridLine, kDefaultWaveColors.gridLine); // not a number: kept
    EXPECT_EQ(store.lastBodyName, "B1");
    EXPECT_EQ(store.lastProjectPath, "/my, projects");
    EXPECT_EQ(store.lastAlgName, "kept");
    EXPECT_EQ(store.playMode, 3);
    EXPECT_EQ(store.recentProjects, std::vector<std::string>{"kept.ptp"});

    // An empty or missing "Multiple" is exactly 1.0, whatever was held.
    writeBytes(settingsFile(dir), "[ListProperty]\nMultiple=\n");
    store.columnScale = 2.0f;
    ASSERT_TRUE(store.load(dir.path()));
    EXPECT_EQ(store.columnScale, 1.0f);

    // A damaged file changes nothing.
    const SettingsStore before = store;
    writeBytes(settingsFile(dir), "[ListProperty]\nSortIndex=7\n[MyColor\nWaveColor=1\n");
    EXPECT_FALSE(store.load(dir.path()));
    EXPECT_EQ(store, before);
}

TEST(SettingsStore, SaveThenLoadKeepsEveryValue)
{
    TempDir dir;
    const SettingsStore saved = everyValueChanged();
    ASSERT_TRUE(saved.save(dir.path()));
    SettingsStore loaded;
    ASSERT_TRUE(loaded.load(dir.path()));
    EXPECT_EQ(loaded, saved);

    // A shorter list leaves no entry of the longer one behind; more than five
    // are cut to five; empty stored entries are left out.
    SettingsStore shorter = saved;
    shorter.recentProjects = {"only.ptp"};
    ASSERT_TRUE(shorter.save(dir.path()));
    ASSERT_TRUE(loaded.load(dir.path()));
    EXPECT_EQ(loaded.recentProjects, std::vector<std::string>{"only.ptp"});

    shorter.recentProjects = {"1", "2", "3", "4", "5", "6"};
    ASSERT_TRUE(shorter.save(dir.path()));
    ASSERT_TRUE(loaded.load(dir.path()));
    EXPECT_EQ(loaded.recentProjects, (std::vector<std::string>{"1", "2", "3", "4", "5"}));

    writeBytes(settingsFile(dir), "[Recent%20Project%20File%20List]\nFile1=a.ptp\nFile2=\nFile4=d.ptp\nFile6=f.ptp\n");
    loaded.recentProjects = {"old.ptp"};
    ASSERT_TRUE(loaded.load(dir.path()));
    EXPECT_EQ(loaded.recentProjects, (std::vector<std::string>{"a.ptp", "d.ptp"}));
}

TEST(SettingsStore, ColumnScaleText)
{
    EXPECT_EQ(formatColumnScale(0.1f), "0.100000");
    EXPECT_EQ(formatColumnScale(12.3456789f), "12.345679");
    EXPECT_EQ(parseColumnScale(" 0.75 "), 0.75f);
    EXPECT_EQ(parseColumnScale(formatColumnScale(1.1f)), 1.1f);
    for (const char* bad : {"", "abc", "1,5", "1.5x", "nan", "inf", "0", "-2"})
        EXPECT_EQ(parseColumnScale(bad), 1.0f) << bad;
}

TEST(SettingsStore, BoardPortsReachTheBoardPlayerUnlessTheEnvironmentNamesThem)
{
    SettingsStore store;
    store.boardPorts[0] = "/dev/ttyUSB3";
    store.boardPorts[1] = "/dev/ttyACM0";
    qputenv("KESTRELON_BOARD_PORT0", "/tmp/mine");
    qunsetenv("KESTRELON_BOARD_PORT1");
    qunsetenv("KESTRELON_BOARD_PORT2");
    exportBoardPorts(store);
    EXPECT_EQ(qgetenv("KESTRELON_BOARD_PORT0"), "/tmp/mine");
    EXPECT_EQ(qgetenv("KESTRELON_BOARD_PORT1"), "/dev/ttyACM0");
    EXPECT_TRUE(qEnvironmentVariableIsEmpty("KESTRELON_BOARD_PORT2"));
    qunsetenv("KESTRELON_BOARD_PORT0");
    qunsetenv("KESTRELON_BOARD_PORT1");
}

// Found by fuzzing: a damaged file kept its read error on the settings after
// a write that replaced it, so every later save was reported as failed.
TEST(SettingsStore, ASaveOverADamagedFileSucceedsAndReadsBack)
{
    TempDir dir;
    writeBytes(settingsFile(dir), "\xCC");
    SettingsStore store;
    store.load(dir.path());
    store.sortIndex = 3;
    ASSERT_TRUE(store.save(dir.path()));
    SettingsStore again;
    ASSERT_TRUE(again.load(dir.path()));
    EXPECT_EQ(again, store);
    // A folder that cannot hold the file is a real failure.
    writeBytes(dir / "blocked", "a file where the folder should be");
    EXPECT_FALSE(store.save(dir / "blocked"));
}
