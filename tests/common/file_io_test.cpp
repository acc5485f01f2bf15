#include "common/file_io.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;

TEST(FileIo, AtomicWriteReplacesWholeFileAndLeavesNoScraps)
{
    kestrelon::test::TempDir dir;
    const auto target = dir / "project.ptp";
    kestrelon::test::writeBytes(target, "old contents that are longer");
    ASSERT_TRUE(writeFileAtomically(target, "new"));
    EXPECT_EQ(kestrelon::test::readBytes(target), "new");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);

    // The new bytes arrive under a new file that is renamed over the old
    // name: another name for the old file (a hard link, a reader holding it
    // open) still sees the old bytes whole, never a mix.
    std::filesystem::create_hard_link(target, dir / "link.ptp");
    ASSERT_TRUE(writeFileAtomically(target, "newer"));
    EXPECT_EQ(kestrelon::test::readBytes(target), "newer");
    EXPECT_EQ(kestrelon::test::readBytes(dir / "link.ptp"), "new");
    std::filesystem::remove(dir / "link.ptp");

    // A rename that fails (a folder stands at the target) leaves no part file.
    std::filesystem::create_directories(dir / "taken" / "inside");
    EXPECT_FALSE(writeFileAtomically(dir / "taken", "x"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2);

    // A folder that does not exist: nothing written, nothing left behind.
    EXPECT_FALSE(writeFileAtomically(dir / "no" / "such" / "file", "x"));
    EXPECT_FALSE(std::filesystem::exists(dir / "no"));
}

TEST(FileIo, ReadFileReportsMissingTooLargeAndContent)
{
    kestrelon::test::TempDir dir;
    EXPECT_EQ(readFile(dir / "absent").status, ReadStatus::Missing);
    kestrelon::test::writeBytes(dir / "f", std::string("a\0b", 3));
    const ReadResult ok = readFile(dir / "f");
    EXPECT_EQ(ok.status, ReadStatus::Ok);
    EXPECT_EQ(ok.bytes, std::string("a\0b", 3));
    EXPECT_EQ(readFile(dir / "f", 2).status, ReadStatus::Unreadable);
}

TEST(FileIo, TextModeTurnsOnlyCrLfPairsIntoLf)
{
    EXPECT_EQ(textModeFromBytes("a\r\nb\rc\n\r\r\n"), "a\nb\rc\n\r\n");
}
