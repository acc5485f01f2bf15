#include "common/file_io.h"
#include "common/messages.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"
#include "wave/event_editor.h"
#include "wave/wave_file.h"
#include "wave/wave_save.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::ScriptedPort;
using kestrelon::test::TempDir;
using kestrelon::test::writeBytes;

namespace {

std::vector<std::pair<std::uint32_t, int>> positions(const SpeechEventList& events)
{
    std::vector<std::pair<std::uint32_t, int>> out;
    for (const SpeechEvent& e : events)
        out.emplace_back(e.samples, e.id);
    return out;
}

} // namespace

TEST(SpeechEventEditor, AddsReplacesDeletesAndWritesOnlyWhenConfirmed)
{
    TempDir dir;
    const auto file = dir / "hello.evt";
    const std::string before = "[TAG_LABEL]\nLabelName=Greeting\n[SPEECH_EVNTS]\nCount=2\n"
                               "[EVENT0]\nSamples=9000\nID=7\n[EVENT1]\nSamples=1200\nID=1\nDescription=start\n";
    writeBytes(file, before);
    ScriptedPort port;
    {
        SpeechEventEditor editor(file, port);
        EXPECT_TRUE(editor.customLabelChosen());
        EXPECT_EQ(editor.customLabel(), "Greeting");
        EXPECT_EQ(editor.add(5400, 2, "middle"), 1);
        EXPECT_EQ(positions(editor.events()),
                  (std::vector<std::pair<std::uint32_t, int>>{{1200, 1}, {5400, 2}, {9000, 7}}));

        port.queue(Answer::No); // ID 7 is taken: keep it, add nothing
        EXPECT_EQ(editor.add(100, 7, {}), -1);
        port.queue(Answer::Yes); // replace: one ID 7, at the new place
        EXPECT_EQ(editor.add(100, 7, {}), 0);
        EXPECT_EQ(positions(editor.events()),
                  (std::vector<std::pair<std::uint32_t, int>>{{100, 7}, {1200, 1}, {5400, 2}}));

        for (const int bad : {0, 255, -3})
            EXPECT_EQ(editor.add(300, bad, {}), -1);
        EXPECT_TRUE(editor.removeAt(1));
        EXPECT_FALSE(editor.removeAt(7));
        // Edited but never confirmed: what Cancel leaves behind.
    }
    EXPECT_EQ(readBytes(file), before);
    EXPECT_EQ(port.texts(),
              (std::vector<std::string>{std::string(msg::kEventIdExists), std::string(msg::kEventIdExists),
                                        std::string(msg::kEventIdRange), std::string(msg::kEventIdRange),
                                        std::string(msg::kEventIdRange)}));

    SpeechEventEditor editor(file, port);
    editor.add(4000, 3, "word");
    editor.chooseCustomLabel();
    EXPECT_EQ(editor.customLabel(), ""); // the custom label starts empty
    editor.chooseDefaultLabel();
    ASSERT_TRUE(editor.write());
    SpeechEventList events;
    std::string label;
    ASSERT_TRUE(readSpeechEvents(file, events, label, port));
    EXPECT_EQ(label, "Default Label");
    EXPECT_EQ(positions(events), (std::vector<std::pair<std::uint32_t, int>>{{1200, 1}, {4000, 3}, {9000, 7}}));
    EXPECT_EQ(events[1].description, "word");
}

TEST(SpeechEventEditor, RowTextPadsWithTwoBlanksPerMissingCharacter)
{
    SpeechEvent event;
    event.samples = 1200; // "  1200": six characters, ten short of 16
    event.id = 5; // "ID5": three characters, five short of 8
    event.description = "not shown";
    EXPECT_EQ(eventRowText(event), "  1200" + std::string(20, ' ') + "ID5" + std::string(10, ' '));
    event.samples = 4294967295u; // "  4294967295": twelve characters
    event.id = 254;
    EXPECT_EQ(eventRowText(event), "  4294967295" + std::string(8, ' ') + "ID254" + std::string(6, ' '));
}

TEST(SaveWaveAs, WritesACanonicalMonoFileOfTheRangeOrSaysWhyNot)
{
    TempDir dir;
    ScriptedPort port;
    std::vector<std::int16_t> samples(1000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = std::int16_t(i * 31 - 9000);

    ASSERT_TRUE(saveWaveAs(dir / "part.WAV", samples, 11025, 100, 357, port));
    const std::string bytes = readBytes(dir / "part.WAV");
    ASSERT_EQ(bytes.size(), 44u + 2 * 257);
    EXPECT_EQ(bytes.substr(0, 4), "RIFF");
    EXPECT_EQ(bytes[22], 1); // channels
    EXPECT_EQ(bytes[34], 16); // bits per sample
    WaveFile back;
    ASSERT_TRUE(back.load(dir / "part.WAV"));
    EXPECT_EQ(back.sampleRate(), 11025);
    EXPECT_EQ(back.samples(), std::vector<std::int16_t>(samples.begin() + 100, samples.begin() + 357));

    EXPECT_FALSE(saveWaveAs(dir / "part.txt", samples, 8000, 0, 10, port));
    EXPECT_FALSE(saveWaveAs(dir / "part.wav", samples, 8000, 10, 1001, port));
    EXPECT_FALSE(saveWaveAs(dir / "part.wav", samples, 0, 0, 10, port));
    EXPECT_FALSE(saveWaveAs(dir / "missing" / "part.wav", samples, 8000, 0, 10, port));
    EXPECT_EQ(port.texts(),
              (std::vector<std::string>{std::string(msg::kWaveSaveExtension), std::string(msg::kWaveRangeInvalid),
                                        std::string(msg::kWaveWriteError), std::string(msg::kWaveSaveFailed)}));
    EXPECT_FALSE(entryExists(dir / "part.wav"));
}
