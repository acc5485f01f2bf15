// Playing on the PC end to end: the real player plug-in over SDL's "disk"
// audio driver, which writes exactly the samples that reach the device into
// a file, so the tests check what a listener would have heard.
#include "codec/interim_packer.h"
#include "common/dynamic_library.h"
#include "common/messages.h"
#include "playback/playback_controller.h"
#include "project/edit_info_record.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/sound.h"
#include "support/temp_dir.h"
#include "wave/wave_file.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::ScriptedPort;
using kestrelon::test::TempDir;
using kestrelon::test::writeBytes;
namespace fs = std::filesystem;

namespace {

std::vector<std::int16_t> tone(std::size_t count, double hz, int rate)
{
    std::vector<std::int16_t> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::int16_t>(9000 * std::sin(2 * M_PI * hz * double(i) / rate));
    return samples;
}

std::vector<std::int16_t> withoutSilence(std::vector<std::int16_t> samples)
{
    std::erase(samples, std::int16_t{0});
    return samples;
}

class PcPlayback : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("SDL_AUDIODRIVER", "disk", 1);
        setenv("SDL_DISKAUDIOFILE", device.string().c_str(), 1);
        setenv("SDL_DISKAUDIODELAY", "0", 1); // as fast as the callback can go; pacing tests set it back
        fs::create_directories(project / "Files");
        ASSERT_TRUE(writeWav16(project / "Files" / "hello.wav", original, 11025));
        writeBytes(project / "SAF1.dfn", *packInterim(wav16Bytes(decoded, 8000)));
        writeBytes(project / "Demo.ptp",
                   "# Begin Project\n\n# Begin Files\n# Begin Source File\nSOURCE=Files\\hello.wav\nID=hello.wav\n"
                   "PARAM=9\n# Begin EditInfo\nAlgoName=Pcm\nBodyName=B\nEncodeName=SAF1.tmp\nEncodeSize=\n"
                   "RenameEncode=\nDecodeName=SAF1.dfn\nDecodeSize=\nEncodeBitRate=128000\nMultiSelect=0\n"
                   "# End EditInfo\n# End Source File\n# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n"
                   "# End Project\n");
        ASSERT_TRUE(session.openProject(project / "Demo.ptp"));
        ASSERT_TRUE(host.load(KESTRELON_PC_PLAYER));
    }
    void TearDown() override
    {
        session.closeProject();
        fs::current_path(start);
    }

    EditInfoRecord& record() { return session.document().files().front()->records().front(); }

    // Follows the controller as the workbench's timer would, until it is idle.
    void followToTheEnd(PlaybackController& controller)
    {
        for (int i = 0; i < 2000 && controller.isActive(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            controller.follow();
        }
        ASSERT_FALSE(controller.isActive());
    }

    std::vector<std::int16_t> heard()
    {
        std::vector<std::int16_t> samples;
        EXPECT_TRUE(unpackPcm16(readBytes(device), samples));
        return samples;
    }

    fs::path start = fs::current_path();
    TempDir temp;
    fs::path project = temp / "Demo";
    fs::path device = temp / "device.raw";
    const std::vector<std::int16_t> original = tone(5000, 440, 11025);
    const std::vector<std::int16_t> decoded = tone(3000, 300, 8000);
    ScriptedPort port;
    ProjectSession session{port, nullptr, nullptr, start};
    PcPlayerHost host{port};
};

} // namespace

TEST_F(PcPlayback, EachCellPlaysExactlyItsWaveAtTheFilesRate)
{
    PlaybackController controller(host, port);
    std::vector<PlayState> states;
    const Subscription watching =
        controller.changed.subscribe([&](const PlayStatus& status) { states.push_back(status.state); });

    ASSERT_TRUE(controller.playRow(session, record(), PlayWhat::Original, "row 0"));
    EXPECT_EQ(controller.status().sampleRate, 11025);
    followToTheEnd(controller);
    std::vector<std::int16_t> samples = test::fromFirstSound(heard());
    EXPECT_TRUE(test::beginsWithSound(samples, original));
    const std::vector<std::int16_t> sound = test::fromFirstSound(original);
    ASSERT_GE(samples.size(), sound.size());
    EXPECT_EQ(withoutSilence({samples.begin() + std::ptrdiff_t(sound.size()), samples.end()}).size(), 0u);
    EXPECT_EQ(controller.status().samplesPlayed, 5000);
    EXPECT_EQ(states.front(), PlayState::Playing);
    EXPECT_EQ(states.back(), PlayState::Idle);

    // The decoded wave plays from a copy in Temp that goes when it has played.
    ASSERT_TRUE(controller.playRow(session, record(), PlayWhat::Decoded, "row 0", 2));
    const fs::path copy = controller.status().file;
    EXPECT_EQ(copy.parent_path().parent_path(), session.tempFolder());
    EXPECT_EQ(controller.status().sampleRate, 8000);
    EXPECT_EQ(controller.status().state, PlayState::Looping);
    followToTheEnd(controller);
    EXPECT_TRUE(test::beginsWithSound(heard(), decoded)); // the last pass
    EXPECT_EQ(controller.status().samplesPlayed, 6000);
    EXPECT_EQ(controller.status().passes, 2);
    EXPECT_FALSE(fs::exists(copy));
    EXPECT_TRUE(port.texts().empty());

    // What cannot play says why, and nothing plays.
    fs::remove(project / "SAF1.dfn");
    EXPECT_FALSE(controller.playRow(session, record(), PlayWhat::Decoded));
    fs::remove(project / "Files" / "hello.wav");
    EXPECT_FALSE(controller.playRow(session, record(), PlayWhat::Original));
    EXPECT_EQ(port.texts(), (std::vector<std::string>{"The decoded temporary file is not found!",
                                                      "hello.wav do not exist in project folder !"}));
    EXPECT_FALSE(controller.isActive());
}

// At the device's real pace: a stop ends the stream part-way, a pause holds
// it (no sound reaches the device while paused) and the resumed sound goes on
// from where it was.
TEST_F(PcPlayback, StopEndsAndPauseHoldsTheStream)
{
    unsetenv("SDL_DISKAUDIODELAY");
    const std::vector<std::int16_t> long_ = tone(16000, 200, 8000); // 2 s
    ASSERT_TRUE(writeWav16(project / "Files" / "hello.wav", long_, 8000));
    PlaybackController controller(host, port);

    ASSERT_TRUE(controller.playRow(session, record(), PlayWhat::Original));
    while (controller.status().position == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(5)), controller.follow();
    controller.stop();
    EXPECT_FALSE(controller.isActive());
    const std::vector<std::int16_t> stopped = withoutSilence(heard());
    EXPECT_GT(stopped.size(), 0u);
    EXPECT_LT(stopped.size(), withoutSilence(long_).size());

    ASSERT_TRUE(controller.playRow(session, record(), PlayWhat::Original));
    while (controller.status().position == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(5)), controller.follow();
    controller.pause();
    EXPECT_EQ(controller.status().state, PlayState::Paused);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::int64_t held = host.position();
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    EXPECT_EQ(host.position(), held);
    controller.pause();
    EXPECT_EQ(controller.status().state, PlayState::Playing);
    followToTheEnd(controller);
    EXPECT_EQ(withoutSilence(heard()), withoutSilence(long_)); // all of it, in order, silence aside
    EXPECT_EQ(controller.status().samplesPlayed, 16000);
}

// Every sound gets a fresh player, the previous one destroyed first; a
// missing library is said once and playing then simply does not happen.
TEST(PcPlayerHost, AFreshPlayerPerSoundAndAMissingLibrarySaidOnce)
{
    ScriptedPort port;
    {
        PcPlayerHost host(port);
        ASSERT_TRUE(host.load(KESTRELON_ORDER_PLAYER));
        EXPECT_TRUE(host.play("first.wav"));
        EXPECT_FALSE(host.play("missing.wav"));
        EXPECT_TRUE(host.play("third.wav"));
        EXPECT_EQ(host.position(), 10);
        DynamicLibrary library;
        ASSERT_TRUE(library.load(KESTRELON_ORDER_PLAYER));
        const auto log = library.function<const char* (*)()>("order_player_log");
        ASSERT_NE(log, nullptr);
        EXPECT_STREQ(log(), "make1 open1 play1 destroy1 make2 refuse2 destroy2 make3 open3 play3 ");
    }
    PcPlayerHost missing(port);
    EXPECT_FALSE(missing.load("no-such-player.so"));
    EXPECT_FALSE(missing.play("first.wav"));
    EXPECT_EQ(port.texts(), std::vector<std::string>{"Body PcPlay DLL not found!!"});
}
