#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"
#include "wave/speech_events.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::ScriptedPort;
using kestrelon::test::TempDir;
using kestrelon::test::writeBytes;

namespace {

using Flat = std::tuple<std::uint32_t, int, std::string>; // samples, id, description

std::vector<Flat> flat(const SpeechEventList& events)
{
    std::vector<Flat> out;
    for (const SpeechEvent& e : events) {
        EXPECT_FALSE(e.marked);
        out.emplace_back(e.samples, e.id, e.description);
    }
    return out;
}

} // namespace

TEST(SpeechEvents, ReadsEventsInPositionOrderWithDefaultsAndLowIdBits)
{
    TempDir dir;
    writeBytes(dir / "a.evt",
               "[TAG_LABEL]\nLabelName= Greeting \n"
               "[SPEECH_EVNTS]\nCount=7\n"
               "[EVENT0]\nSamples=900\nID=2\n"
               "[EVENT1]\nSamples=100\nID=300\nDescription=first\n"
               "[EVENT2]\nSamples=500\nID=3\nDescription=older\n"
               "[EVENT3]\nSamples=500\nID=-1\nDescription=newer\n"
               "[EVENT5]\nSamples=12x\nID=0x9\n"
               "[EVENT6]\nSamples=-1\nID=255\n"
               "[EVENT7]\nSamples=5\nID=5\n"); // beyond Count
    SpeechEventList events{SpeechEvent{}};
    std::string label = "stale";
    ScriptedPort port;
    ASSERT_TRUE(readSpeechEvents(dir / "a.evt", events, label, port));
    EXPECT_EQ(label, "Greeting");
    // EVENT4 has no section and EVENT5 only malformed numbers: both read as
    // the defaults; an event at an equal position goes in front of the earlier one.
    EXPECT_EQ(flat(events), (std::vector<Flat>{{1, 1, ""},
                                               {1, 1, ""},
                                               {100, 44, "first"},
                                               {500, 255, "newer"},
                                               {500, 3, "older"},
                                               {900, 2, ""},
                                               {4294967295u, 255, ""}}));
    EXPECT_EQ(port.texts(), std::vector<std::string>(2, std::string(msg::kInvalidData)));
}

TEST(SpeechEvents, ReadsAtMost256EventsAndTheLabelAlone)
{
    TempDir dir;
    std::string text = "[SPEECH_EVNTS]\nCount=1000\n";
    for (int n = 0; n < 1000; ++n)
        text += "[EVENT" + std::to_string(n) + "]\nSamples=" + std::to_string(100000 - n) + "\nID=7\n";
    writeBytes(dir / "many.evt", text);
    SpeechEventList events;
    std::string label;
    ScriptedPort port;
    ASSERT_TRUE(readSpeechEvents(dir / "many.evt", events, label, port));
    ASSERT_EQ(events.size(), 256u);
    EXPECT_EQ(events.front().samples, 100000u - 255u); // EVENT255 is the last one read
    EXPECT_EQ(events.back().samples, 100000u);

    writeBytes(dir / "huge.evt", "[SPEECH_EVNTS]\nCount=2147483647\n");
    ASSERT_TRUE(readSpeechEvents(dir / "huge.evt", events, label, port));
    EXPECT_EQ(events.size(), 256u);

    for (const char* file : {"[TAG_LABEL]\nLabelName=Only a label\n[EVENT0]\nSamples=5\n",
                             "[TAG_LABEL]\nLabelName=Only a label\n[SPEECH_EVNTS]\nCount=-4\n"}) {
        writeBytes(dir / "label.evt", file);
        ASSERT_TRUE(readSpeechEvents(dir / "label.evt", events, label, port)) << file;
        EXPECT_TRUE(events.empty()) << file;
        EXPECT_EQ(label, "Only a label") << file;
    }
    EXPECT_TRUE(port.messages().empty());
}

TEST(SpeechEvents, WrittenFileReadsBack)
{
    TempDir dir;
    const std::string eol(kNativeEol);
    const SpeechEventList written{{1200, 1, false, "start"}, {5400, 0, true, ""}, {3000000000u, 255, false, "end"}};
    ASSERT_TRUE(writeSpeechEvents(dir / "w.evt", written, false, "ignored"));
    EXPECT_EQ(readBytes(dir / "w.evt"), "[TAG_LABEL]" + eol + "LabelName=Default Label" + eol + "[SPEECH_EVNTS]" + eol +
                                            "Count=3" + eol + "[EVENT0]" + eol + "Samples=1200" + eol + "ID=1" + eol +
                                            "Description=start" + eol + "[EVENT1]" + eol + "Samples=5400" + eol +
                                            "ID=0" + eol + "[EVENT2]" + eol + "Samples=-1294967296" + eol + "ID=255" +
                                            eol + "Description=end" + eol);

    SpeechEventList read;
    std::string label;
    ScriptedPort port;
    ASSERT_TRUE(readSpeechEvents(dir / "w.evt", read, label, port));
    EXPECT_EQ(label, msg::kDefaultLabel);
    EXPECT_EQ(flat(read), (std::vector<Flat>{{1200, 1, "start"}, {5400, 0, ""}, {3000000000u, 255, "end"}}));

    EXPECT_TRUE(port.messages().empty());

    // All events are written, even past what the reader takes back.
    SpeechEventList many(300);
    for (size_t n = 0; n < many.size(); ++n)
        many[n].samples = static_cast<std::uint32_t>(n);
    ASSERT_TRUE(writeSpeechEvents(dir / "w.evt", many, true, "Mine"));
    const std::string text = readBytes(dir / "w.evt");
    EXPECT_EQ(text.substr(0, text.find("[EVENT0]")),
              "[TAG_LABEL]" + eol + "LabelName=Mine" + eol + "[SPEECH_EVNTS]" + eol + "Count=300" + eol);
    EXPECT_NE(text.find("[EVENT299]" + eol + "Samples=299"), std::string::npos);
}

TEST(SpeechEvents, MissingAndUnreadableFilesGiveNoEvents)
{
    TempDir dir;
    SpeechEventList events{SpeechEvent{}};
    std::string label = "stale";
    std::string error = "stale";
    ScriptedPort port;
    EXPECT_FALSE(readSpeechEvents(dir / "absent.evt", events, label, port, &error));
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(label, "");
    EXPECT_EQ(error, "");

    std::filesystem::create_directory(dir / "folder.evt");
    EXPECT_FALSE(readSpeechEvents(dir / "folder.evt", events, label, port, &error));
    EXPECT_EQ(error, msg::kUnableToOpenIni);
    EXPECT_TRUE(port.messages().empty());
}

TEST(SpeechEvents, EventFileLiesBesideItsSource)
{
    EXPECT_EQ(eventFilePath(nativeFromModel("Files\\voice.WAV")), nativeFromModel("Files\\voice.evt"));
    EXPECT_EQ(eventFilePath(nativeFromModel("Files\\hello.world.wav")), nativeFromModel("Files\\hello.world.evt"));
    EXPECT_EQ(eventFilePath(nativeFromModel("Files\\noext")), nativeFromModel("Files\\noext.evt"));
}
