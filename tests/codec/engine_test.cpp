// The encode/decode engine on a real project with the real reference codecs
// and real speech, and the failing test codec for the paths a good codec
// never takes.
#include "engine_fixture.h"

#include "codec/encoded_header.h"
#include "codec/results.h"
#include "common/messages.h"
#include "wave/wave_file.h"

#include <algorithm>

using namespace kestrelon;
using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

std::vector<std::string> tempFiles(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.is_regular_file())
            names.push_back(utf8FromPath(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

TEST_F(EngineTest, EveryReferenceCodecEncodesAndDecodesRealSpeechThroughTheEngine)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    WaveFile sourceWave;
    ASSERT_TRUE(sourceWave.load(kSpeech / "hts1a.wav"));
    const std::vector<std::pair<std::string, std::string>> codecs = {
        {"ImaAdpcm", "24000"}, {"MuLaw", "64000"}, {"Pcm", "128000"}, {"Codec2", "1200"}, {"Speex", "8000"}};
    for (const auto& [name, rate] : codecs) {
        install(name);
        addRecord(source, name, rate);
    }
    session->document().setModified(false);

    const BatchResult encoded = encodeRows({0, 1, 2, 3, 4}, /*autoDecode=*/true);
    EXPECT_TRUE(encoded.allDone());
    EXPECT_EQ(port.texts(), std::vector<std::string>{});
    EXPECT_TRUE(session->document().isModified());
    EXPECT_FALSE(session->busy());
    ASSERT_EQ(port.titles.size(), 10u); // an encode and a decode per row
    EXPECT_EQ(port.titles[0], "ImaAdpcm Encoding ......");
    EXPECT_EQ(port.titles[1], "ImaAdpcm Decoding ......");
    EXPECT_EQ(port.ended, 10);

    std::vector<std::string> interimBytes;
    for (size_t i = 0; i < codecs.size(); ++i) {
        SCOPED_TRACE(codecs[i].first);
        const EditInfoRecord& record = source->records()[i];
        EXPECT_EQ(record.encodeName.rfind("SAF", 0), 0u);
        EXPECT_TRUE(endsWithNoCase(record.encodeName, ".tmp"));
        // The size is the codec's output, header included: what the chip gets.
        const std::string raw = unpacked(record.encodeName);
        ASSERT_TRUE(hasEncodedMagic(raw));
        EXPECT_EQ(record.encodeSize, std::to_string(raw.size()));
        EXPECT_EQ(record.renameEncode.rfind("hts1a_Test Body_" + codecs[i].first + "_" + codecs[i].second + ".", 0), 0u)
            << record.renameEncode;

        EXPECT_TRUE(endsWithNoCase(record.decodeName, ".dfn"));
        const std::string decoded = unpacked(record.decodeName);
        EXPECT_EQ(record.decodeSize, std::to_string(decoded.size()));
        writeBytes(temp / "decoded.wav", decoded);
        WaveFile decodedWave;
        ASSERT_TRUE(decodedWave.load(temp / "decoded.wav")) << decodedWave.error();
        EXPECT_NEAR(double(decodedWave.lengthMs()), double(sourceWave.lengthMs()), 1.0);
        interimBytes.push_back(readBytes(tempFolder() / record.encodeName));
    }
    // Nothing but the interim and decoded files is left behind in Temp.
    EXPECT_EQ(tempFiles(tempFolder()).size(), 2 * codecs.size());

    // Encoding again reuses each row's interim file and gives the same bytes.
    std::vector<std::string> names;
    for (const EditInfoRecord& record : source->records())
        names.push_back(record.encodeName);
    EXPECT_TRUE(encodeRows({0, 1, 2, 3, 4}).allDone());
    for (size_t i = 0; i < codecs.size(); ++i) {
        EXPECT_EQ(source->records()[i].encodeName, names[i]);
        EXPECT_TRUE(readBytes(tempFolder() / names[i]) == interimBytes[i]) << codecs[i].first;
        // The old decoded wave no longer belongs to the row.
        EXPECT_EQ(source->records()[i].decodeName, "");
    }
    EXPECT_EQ(tempFiles(tempFolder()).size(), codecs.size());
}

TEST_F(EngineTest, ABatchWithoutSelectedRowsOrValidCombinationsTouchesNothing)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    install("ImaAdpcm");
    addRecord(source, "ImaAdpcm", "32000");
    addRecord(source, "ImaAdpcm", "12345"); // not one of the body's bit rates
    addRecord(source, "ImaAdpcm", "32000", "No Body"); // no such body
    addRecord(source, "MuLaw", "64000"); // offered, but not in the project's registry
    addRecord(source, "Pcm", "128000", "Small Body"); // offered by another body only
    session->document().setModified(false);

    EXPECT_TRUE(encodeRows({}).allDone());
    EXPECT_TRUE(port.titles.empty());
    EXPECT_FALSE(session->document().isModified());

    const BatchResult result = encodeRows({1, 2, 3, 4});
    EXPECT_EQ(result.count(RowOutcome::Invalid), 4u);
    EXPECT_TRUE(port.titles.empty());
    EXPECT_TRUE(port.texts().empty()); // passed over without a word
    EXPECT_FALSE(session->document().isModified());
    for (const EditInfoRecord& record : source->records())
        EXPECT_EQ(record.encodeName + record.encodeSize + record.renameEncode, "");
    EXPECT_TRUE(tempFiles(tempFolder()).empty());

    // Decoding a row never encoded does nothing either.
    EXPECT_EQ(decodeRows({0}).rows[0], RowOutcome::Unreadable);
    EXPECT_TRUE(tempFiles(tempFolder()).empty());
}

TEST_F(EngineTest, SpeechEventsReachTheCodecBeforeItEncodes)
{
    ProjectItem* withEvents = addSource(kSpeech / "hts1a.wav");
    ProjectItem* without = addSource(kSpeech / "morig.wav");
    install("FailingCodec");
    install("ImaAdpcm");
    addRecord(without, "FailingCodec", "16000");
    ASSERT_TRUE(encodeRows({0}).allDone());
    EXPECT_FALSE(fs::exists(tempFolder() / "evt")); // no event file, no folder
    const std::vector<std::string> calls = codecCalls();
    const auto eventCall = std::find(calls.begin(), calls.end(), "set_event_file\t");
    const auto encodeCall =
        std::find_if(calls.begin(), calls.end(), [](const std::string& c) { return c.rfind("encode\t", 0) == 0; });
    ASSERT_NE(eventCall, calls.end()) << "an empty event file is handed over";
    EXPECT_LT(eventCall, encodeCall);

    writeBytes(project() / "Files" / "hts1a.evt",
               "[TAG_LABEL]\nLabelName=Default Label\n[SPEECH_EVNTS]\nCount=2\n[EVENT0]\nSamples=8000\nID=3\n"
               "[EVENT1]\nSamples=16000\nID=9\n");
    addRecord(withEvents, "ImaAdpcm", "32000");
    addRecord(withEvents, "FailingCodec", "16000");
    // Rows: hts1a ImaAdpcm, hts1a FailingCodec, morig FailingCodec.
    ASSERT_TRUE(encodeRows({0, 1}).allDone());
    const EditInfoRecord& ima = withEvents->records()[0];
    const fs::path copy = tempFolder() / "evt" / (utf8FromPath(pathFromUtf8(ima.encodeName).stem()) + ".evt");
    EXPECT_EQ(readBytes(copy), readBytes(project() / "Files" / "hts1a.evt"));
    // The codec carried both events: a count of 2 right after the header.
    const std::string raw = unpacked(ima.encodeName);
    ASSERT_GT(raw.size(), kEncodedHeaderSize + 2);
    EXPECT_EQ(raw[kEncodedHeaderSize], 2);
    EXPECT_EQ(raw[kEncodedHeaderSize + 1], 0);

    const std::string failingStem = utf8FromPath(pathFromUtf8(withEvents->records()[1].encodeName).stem());
    const std::vector<std::string> later = codecCalls();
    const std::string expected = "set_event_file\t" + utf8FromPath(tempFolder() / "evt" / (failingStem + ".evt"));
    EXPECT_NE(std::find(later.begin(), later.end(), expected), later.end());

    // Events edited since are carried the next time; removed events are dropped.
    writeBytes(project() / "Files" / "hts1a.evt", "[SPEECH_EVNTS]\nCount=1\n[EVENT0]\nSamples=100\nID=1\n");
    ASSERT_TRUE(encodeRows({0}).allDone());
    EXPECT_EQ(unpacked(ima.encodeName)[kEncodedHeaderSize], 1);
    fs::remove(project() / "Files" / "hts1a.evt");
    ASSERT_TRUE(encodeRows({0}).allDone());
    EXPECT_EQ(unpacked(ima.encodeName)[kEncodedHeaderSize], 0);
    EXPECT_FALSE(fs::exists(copy));
}

TEST_F(EngineTest, AFailingCodecLeavesTheRowAsItWasAndNoFileBehind)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    install("FailingCodec");
    addRecord(source, "FailingCodec", "16000");
    addRecord(source, "FailingCodec", "16000");
    ASSERT_TRUE(encodeRows({0}).allDone());
    const EditInfoRecord before = source->records()[0];
    const std::string interim = readBytes(tempFolder() / before.encodeName);
    const std::vector<std::string> filesBefore = tempFiles(tempFolder());

    setEnv("KESTRELON_FAILING_CODEC", "encode=0x8001;error-text=The codec gave up");
    const BatchResult failed = encodeRows({0, 1});
    EXPECT_EQ(failed.rows, (std::vector<RowOutcome>{RowOutcome::Failed, RowOutcome::Failed}));
    EXPECT_EQ(port.texts(), (std::vector<std::string>{"The codec gave up", "The codec gave up"}));
    EXPECT_EQ(port.ended, 3); // every progress that began has ended
    // The encoded row keeps its results and its interim file; the new one got none.
    EXPECT_EQ(source->records()[0].encodeName, before.encodeName);
    EXPECT_EQ(source->records()[0].encodeSize, before.encodeSize);
    EXPECT_TRUE(readBytes(tempFolder() / before.encodeName) == interim);
    EXPECT_EQ(source->records()[1].encodeName, "");
    EXPECT_EQ(tempFiles(tempFolder()), filesBefore);

    // A code without a text shows the code; a decode that fails keeps the row too.
    port.clear();
    setEnv("KESTRELON_FAILING_CODEC", "encode=0x8001;error-text=");
    encodeRows({1});
    setEnv("KESTRELON_FAILING_CODEC", "decode=0x8001;error-text=");
    EXPECT_EQ(decodeRows({0}).rows[0], RowOutcome::Failed);
    EXPECT_EQ(port.texts(), (std::vector<std::string>{"8001", "8001"}));
    EXPECT_EQ(source->records()[0].decodeName, "");
    EXPECT_EQ(tempFiles(tempFolder()), filesBefore);

    // A codec that claims success but writes 7 bytes of no encoding: the
    // row fails as one whose data has no header, and keeps what it had.
    port.clear();
    setEnv("KESTRELON_FAILING_CODEC", "garbage");
    EXPECT_EQ(encodeRows({0}).rows[0], RowOutcome::Failed);
    ASSERT_EQ(port.texts().size(), 1u);
    EXPECT_EQ(port.texts()[0].rfind("SAF", 0), 0u) << port.texts()[0]; // the codec's output, by name
    EXPECT_TRUE(port.texts()[0].ends_with(".tmp is not a correct encoded file !")) << port.texts()[0];
    EXPECT_EQ(source->records()[0].encodeName, before.encodeName);
    EXPECT_EQ(source->records()[0].encodeSize, before.encodeSize);
    EXPECT_EQ(tempFiles(tempFolder()), filesBefore);

    // A decode that claims success but writes no wave fails its row alike.
    port.clear();
    EXPECT_EQ(decodeRows({0}).rows[0], RowOutcome::Failed);
    EXPECT_EQ(port.texts(), std::vector<std::string>{"FailingCodec did not decode to a wave file !"});
    EXPECT_EQ(source->records()[0].decodeName, "");
    EXPECT_EQ(tempFiles(tempFolder()), filesBefore);
}

TEST_F(EngineTest, AStopRequestEndsTheBatchBeforeTheNextRow)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    install("ImaAdpcm");
    for (const std::string rate : {"32000", "24000", "16000"})
        addRecord(source, "ImaAdpcm", rate);
    port.stop = [this] { return port.ended >= 1; }; // asked once the first row has finished
    const BatchResult result = encodeRows({0, 1, 2});
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(result.rows, (std::vector<RowOutcome>{RowOutcome::Done, RowOutcome::NotReached, RowOutcome::NotReached}));
    EXPECT_NE(source->records()[0].encodeName, "");
    EXPECT_EQ(source->records()[1].encodeName, "");
    EXPECT_EQ(port.titles.size(), 1u);
    EXPECT_FALSE(session->busy());
}

// Stop asked part-way through a codec's frames: each frame-wise reference
// codec stops there, writes nothing, and its row keeps what it had.
TEST_F(EngineTest, AStopPartWayThroughTheFramesEndsTheCodecAndKeepsTheRowAsItWas)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    const std::vector<std::pair<std::string, std::string>> codecs = {
        {"Codec2", "3200"}, {"Speex", "8000"}, {"MuLaw", "64000"}};
    for (const auto& [name, rate] : codecs) {
        install(name);
        addRecord(source, name, rate);
    }
    ASSERT_TRUE(encodeRows({0, 1, 2}).allDone());
    std::vector<EditInfoRecord> before = source->records();
    const auto filesBefore = tempFiles(tempFolder());
    for (std::size_t row = 0; row < codecs.size(); ++row) {
        SCOPED_TRACE(codecs[row].first);
        port.furthest = 0;
        port.stop = [this] { return port.furthest >= 40; };
        const BatchResult result = encodeRows({row});
        EXPECT_TRUE(result.stopped);
        EXPECT_EQ(result.rows[row], RowOutcome::NotReached);
        EXPECT_LT(port.furthest, 90); // it stopped, it did not run to the end
        EXPECT_EQ(source->records()[row].encodeName, before[row].encodeName);
        EXPECT_EQ(source->records()[row].encodeSize, before[row].encodeSize);
        EXPECT_EQ(tempFiles(tempFolder()), filesBefore);
    }
    EXPECT_TRUE(port.texts().empty());
}

TEST_F(EngineTest, AnInterimFileLostFromTempIsBroughtBackFromBesideTheProjectFile)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    install("Codec2");
    addRecord(source, "Codec2", "3200");
    ASSERT_TRUE(encodeRows({0}).allDone());
    // Save purges Temp; the row still decodes.
    ASSERT_TRUE(session->saveProject());
    const std::string name = source->records()[0].encodeName;
    EXPECT_FALSE(fs::exists(tempFolder() / name));
    EXPECT_TRUE(decodeRows({0}).allDone());
    EXPECT_TRUE(fs::exists(tempFolder() / name));

    // A decoded wave the row no longer names leaves beside the project file too.
    ASSERT_TRUE(session->saveProject());
    const std::string firstDecoded = source->records()[0].decodeName;
    ASSERT_TRUE(fs::exists(project() / firstDecoded));
    EXPECT_TRUE(decodeRows({0}).allDone());
    EXPECT_NE(source->records()[0].decodeName, firstDecoded);
    // Not before: a Close without saving applies the deletion list and keeps
    // the saved project file, which still names it.
    EXPECT_TRUE(session->deletionList().empty());
    ASSERT_TRUE(session->saveProject());
    EXPECT_FALSE(fs::exists(project() / firstDecoded));
    EXPECT_TRUE(fs::exists(project() / source->records()[0].decodeName));

    // Gone from both places: said so, and the row keeps what it had.
    fs::remove(tempFolder() / name);
    fs::remove(project() / name);
    const std::string decodeName = source->records()[0].decodeName;
    EXPECT_EQ(decodeRows({0}).rows[0], RowOutcome::Failed);
    EXPECT_EQ(port.texts().back(), name + std::string(msg::kInterimMissing));
    EXPECT_EQ(source->records()[0].decodeName, decodeName);

    // A damaged interim file is refused, never half-read.
    writeBytes(tempFolder() / name, "not a packed file");
    EXPECT_EQ(decodeRows({0}).rows[0], RowOutcome::Failed);
    EXPECT_EQ(port.texts().back(), name + std::string(msg::kInterimCanNotUnpack));
}

// A row encoded again reuses its interim file's name; until a save, the data
// under that name in Temp is not what the saved project describes, and
// neither a Close without saving nor a session killed before saving lets it
// replace the saved file.
TEST_F(EngineTest, AReEncodeNobodySavedNeverReachesTheSavedProject)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    install("Codec2");
    addRecord(source, "Codec2", "3200");
    ASSERT_TRUE(encodeRows({0}).allDone());
    ASSERT_TRUE(session->saveProject());
    const fs::path file = session->projectFile();
    const EditInfoRecord saved = source->records()[0];
    const std::string savedData = readBytes(project() / saved.encodeName);

    source->records()[0].bitRate = "1200";
    ASSERT_TRUE(encodeRows({0}).allDone());
    ASSERT_EQ(source->records()[0].encodeName, saved.encodeName);
    ASSERT_NE(readBytes(tempFolder() / saved.encodeName), savedData);
    const fs::path folder = project();
    port.queue(Answer::No);
    ASSERT_TRUE(session->closeProject());
    EXPECT_EQ(readBytes(folder / saved.encodeName), savedData);

    // Killed after a re-encode, with a source overwritten and its saved
    // version kept in Temp: the next open puts the project back as saved.
    ASSERT_TRUE(session->openProject(file));
    ProjectItem* reopened = session->document().files().front();
    reopened->records()[0].bitRate = "1200";
    ASSERT_TRUE(encodeRows({0}).allDone());
    const std::string savedWave = readBytes(session->filesFolder() / "hts1a.wav");
    writeBytes(tempFolder() / "hts1a.wav", savedWave);
    writeBytes(session->filesFolder() / "hts1a.wav", "a newer recording, never saved");
    session = std::make_unique<ProjectSession>(port, nullptr, nullptr, program()); // the old one just ends
    port.clear();
    ASSERT_TRUE(session->openProject(file));
    EXPECT_EQ(port.texts(), std::vector<std::string>{std::string(msg::kAbandonedWorkDropped)});
    const EditInfoRecord& back = session->document().files().front()->records()[0];
    EXPECT_EQ(back.bitRate + " " + back.encodeName + " " + back.encodeSize,
              saved.bitRate + " " + saved.encodeName + " " + saved.encodeSize);
    EXPECT_EQ(readBytes(folder / saved.encodeName), savedData);
    EXPECT_EQ(readBytes(folder / "Files" / "hts1a.wav"), savedWave);
    EXPECT_TRUE(fs::is_empty(tempFolder()));
    port.queue(Answer::No);
    EXPECT_TRUE(session->closeProject());
    EXPECT_EQ(readBytes(folder / saved.encodeName), savedData);
}

TEST_F(EngineTest, NamesReadFromTheProjectFileNeverLeaveTheProject)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    install("Pcm");
    EditInfoRecord& record = addRecord(source, "Pcm", "128000");
    record.encodeName = "../../outside.tmp";
    ASSERT_TRUE(encodeRows({0}).allDone());
    EXPECT_FALSE(fs::exists(temp / "outside.tmp"));
    EXPECT_EQ(source->records()[0].encodeName.rfind("SAF", 0), 0u);
    EXPECT_EQ(CodecEngine::exportName(source->records()[0], "a/b"), "hts1a_Test Body_Pcm_128000.a_b");
}

// The export name drops the source's ".wav" in any case, and nothing else.
TEST(ExportName, DropsTheWaveExtensionInAnyCaseAndMakesTheNameSafe)
{
    EditInfoRecord record{.fileName = "HELLO.WAV", .bodyName = "KS-1", .algoName = "ImaAdpcm", .bitRate = "32000"};
    EXPECT_EQ(CodecEngine::exportName(record, "adp"), "HELLO_KS-1_ImaAdpcm_32000.adp");
    record.fileName = "a*b.wav.Wav";
    EXPECT_EQ(CodecEngine::exportName(record, ""), "a_b.wav_KS-1_ImaAdpcm_32000");
}
