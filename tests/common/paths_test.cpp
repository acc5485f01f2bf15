#include "common/paths.h"

#include <gtest/gtest.h>

using namespace kestrelon;

TEST(Paths, ModelPathsUseBackslashesUntilTheDisk)
{
    const auto joined = joinModel("/project", "Files\\group\\a.wav");
#ifdef _WIN32
    EXPECT_EQ(joined, std::filesystem::path("/project/Files\\group\\a.wav"));
#else
    EXPECT_EQ(joined, std::filesystem::path("/project/Files/group/a.wav"));
#endif
    EXPECT_EQ(utf8FromPath(pathFromUtf8("Stimme \xC3\xA4.wav")), "Stimme \xC3\xA4.wav");
}

TEST(Paths, CaseInsensitiveHelpers)
{
    EXPECT_TRUE(endsWithNoCase("demo.PTP", ".ptp"));
    EXPECT_FALSE(endsWithNoCase("ptp", ".ptp"));
    EXPECT_TRUE(startsWithNoCase("# begin project", "# Begin Project"));
    EXPECT_EQ(toUpperAscii("a.ptp"), "A.PTP");
}

TEST(Paths, FileStemCutsAtTheLastDotOnly)
{
    EXPECT_EQ(fileStem("a.b.wav"), "a.b");
    EXPECT_EQ(fileStem("SAF1A"), "SAF1A");
    EXPECT_EQ(fileStem(".evt"), ".evt");
}
