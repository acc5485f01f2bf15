// `events add/delete` and `wave save/render` run by the built kestrelon-cli on
// real files.
#include "cli_run.h"
#include "common/messages.h"
#include "support/files.h"
#include "support/temp_dir.h"
#include "wave/wave_file.h"

#include <QImage>

#include <gtest/gtest.h>

#include <cmath>

using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

struct WaveCommands : ::testing::Test {
    TempDir scratch;
    fs::path evt = scratch / "hello.evt";
    fs::path wave = scratch / "hello.wav";
    JsonRun run(std::vector<std::string> words) { return runJson(std::move(words), scratch.path()); }

    void SetUp() override
    {
        std::vector<std::int16_t> samples(8000);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = std::int16_t(8000 * std::sin(0.02 * double(i)));
        ASSERT_TRUE(kestrelon::writeWav16(wave, samples, 8000));
    }
};

} // namespace

TEST_F(WaveCommands, EventsAreAddedReplacedOnYesKeptOnNoAndDeleted)
{
    JsonRun added = run({"events", "add", evt.string(), "--samples", "4000", "--id", "3", "--description", "word",
                         "--label", "Greeting"});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_EQ(run({"events", "add", evt.string(), "--samples", "1200", "--id", "5"}).exitCode, 0);

    const std::string before = readBytes(evt);
    const JsonRun declined = run({"--no", "events", "add", evt.string(), "--samples", "100", "--id", "3"});
    EXPECT_EQ(declined.exitCode, 1);
    EXPECT_EQ(declined.text(0), kestrelon::msg::kEventIdExists);
    EXPECT_EQ(readBytes(evt), before);

    const JsonRun replaced = run({"--yes", "events", "add", evt.string(), "--samples", "100", "--id", "3"});
    ASSERT_EQ(replaced.exitCode, 0);
    EXPECT_EQ(replaced.answer["label"], "Greeting");
    EXPECT_EQ(replaced.answer["events"], nlohmann::ordered_json::parse(R"([{"samples":100,"id":3,"description":""},
                                                                         {"samples":1200,"id":5,"description":""}])"));
    const JsonRun refused = run({"events", "add", evt.string(), "--samples", "100", "--id", "255"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.text(0), kestrelon::msg::kEventIdRange);
    EXPECT_EQ(run({"events", "add", evt.string(), "--samples", "x", "--id", "4"}).exitCode, 2);

    const JsonRun deleted = run({"events", "delete", evt.string(), "--id", "5"});
    ASSERT_EQ(deleted.exitCode, 0);
    EXPECT_EQ(deleted.answer["events"].size(), 1u);
    const JsonRun missing = run({"events", "delete", evt.string(), "--id", "5"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.text(0), std::string(kestrelon::msg::kEventNotFoundPrefix) + "5 !");
    EXPECT_EQ(run({"events", "add", evt.string(), "--samples", "7", "--id", "9", "--default-label"}).answer["label"],
              "Default Label");
}

TEST_F(WaveCommands, WaveSaveCutsARangeAndRenderDrawsInTheSettingsColours)
{
    const JsonRun saved =
        run({"wave", "save", wave.string(), (scratch / "cut.wav").string(), "--from", "1000", "--to", "1500"});
    ASSERT_EQ(saved.exitCode, 0) << saved.err;
    EXPECT_EQ(fs::file_size(scratch / "cut.wav"), 44u + 2 * 500);
    const JsonRun wrongName = run({"wave", "save", wave.string(), (scratch / "cut.raw").string()});
    EXPECT_EQ(wrongName.exitCode, 1);
    EXPECT_EQ(wrongName.text(0), kestrelon::msg::kWaveSaveExtension);
    EXPECT_EQ(run({"wave", "save", wave.string(), (scratch / "c.wav").string(), "--to", "9000"}).text(0),
              kestrelon::msg::kWaveRangeInvalid);

    // A background colour chosen by the user is the picture's.
    fs::create_directories(scratch / "settings" / "Corvane");
    writeBytes(scratch / "settings" / "Corvane" / "Kestrelon.conf",
               "[MyColor]\nBackgroundColor=2113632\n"); // 0x00204060
    const fs::path png = scratch / "wave.png";
    const JsonRun drawn = run({"wave", "render", wave.string(), "--png", png.string(), "--width", "640", "--height",
                               "120", "--settings-dir", (scratch / "settings").string()});
    ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
    const QImage picture(QString::fromStdString(png.string()));
    ASSERT_EQ(picture.size(), QSize(640, 120));
    EXPECT_EQ(picture.pixelColor(0, 0), QColor(0x60, 0x40, 0x20)); // the record keeps red in the low byte
    const JsonRun bad = run({"wave", "render", wave.string(), "--png", png.string(), "--from", "10", "--to", "5"});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.text(0), kestrelon::msg::kWaveRangeInvalid);
}
