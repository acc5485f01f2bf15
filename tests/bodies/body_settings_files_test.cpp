#include "bodies/body_settings_files.h"

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

const std::string kShipped = "[BODY]\nCOUNT=1\nBODY0=A\n[A]\nVOLUME_MAX=20\nCURRENT_VOL=3\nALGOCOUNT=1\n";

} // namespace

// The user's copy, once made, is what the program reads and writes; the
// shipped file keeps its bytes. Without a change nothing is written anywhere,
// so a run that only reads never makes a copy.
TEST(BodySettingsFiles, TheUsersCopyWinsOnceItExistsAndUnchangedVolumesWriteNothing)
{
    TempDir dir;
    writeBytes(dir / "program" / "KestrelonBodySetting.dat", kShipped);
    const auto files = BodySettingsFiles::forProgram(dir / "program", dir / "config");
    EXPECT_EQ(files.userCopy, dir / "config" / "Corvane" / "KestrelonBodySetting.dat");
    EXPECT_EQ(files.inUse(), files.shipped);

    ScriptedPort port;
    BodySettings bodies;
    ASSERT_TRUE(bodies.load(files.inUse(), dir / "program", port));
    const VolumesSaved unchanged = saveCurrentVolumes(bodies, files);
    EXPECT_TRUE(unchanged.ok);
    EXPECT_EQ(unchanged.file, files.shipped);
    EXPECT_FALSE(std::filesystem::exists(files.userCopy));

    writeBytes(files.userCopy, "[BODY]\nCOUNT=1\nBODY0=A\n[A]\nVOLUME_MAX=20\nCURRENT_VOL=7\nALGOCOUNT=1\n");
    EXPECT_EQ(files.inUse(), files.userCopy);
    ASSERT_TRUE(bodies.load(files.inUse(), dir / "program", port));
    EXPECT_EQ(bodies.findBody("A")->currentVolume, 7);
    bodies.findBody("A")->currentVolume = 9;
    const VolumesSaved saved = saveCurrentVolumes(bodies, files);
    EXPECT_TRUE(saved.ok);
    EXPECT_EQ(saved.file, files.userCopy);
    EXPECT_NE(readBytes(files.userCopy).find("CURRENT_VOL=9"), std::string::npos);
    EXPECT_EQ(readBytes(files.shipped), kShipped);
}

// A file that cannot be written, with no user's copy to fall back on, is a
// failure that names the file: the volumes are never dropped silently.
TEST(BodySettingsFiles, AFileThatCannotBeWrittenIsNamedInTheFailure)
{
    TempDir dir;
    ScriptedPort port;
    writeBytes(dir / "KestrelonBodySetting.dat", kShipped);
    BodySettings bodies;
    ASSERT_TRUE(bodies.load(dir / "KestrelonBodySetting.dat", dir.path(), port));
    bodies.findBody("A")->currentVolume = 4;
    std::filesystem::remove(dir / "KestrelonBodySetting.dat");
    const VolumesSaved saved = saveCurrentVolumes(bodies, BodySettingsFiles{dir / "KestrelonBodySetting.dat", {}});
    EXPECT_FALSE(saved.ok);
    EXPECT_NE(saved.error.find("KestrelonBodySetting.dat could not be written"), std::string::npos) << saved.error;
}
