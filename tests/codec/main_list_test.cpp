// The main list's rows, deletions and Clear, a row's encoded file as Encode
// Info reads it, the results panel's texts and the engine's temporary names.
#include "engine_fixture.h"

#include "codec/main_list.h"
#include "codec/results.h"
#include "codec/row_encoded_file.h"
#include "codec/temp_names.h"
#include "common/messages.h"

using namespace kestrelon;
using namespace kestrelon::test;
namespace fs = std::filesystem;

TEST(CompressionRate, IsTheEncodedShareOfTheOriginalInWholePercent)
{
    EXPECT_EQ(compressionRateText("1234", "9876"), "12");
    EXPECT_EQ(compressionRateText("9876", "1234"), "800");
    EXPECT_EQ(compressionRateText("1", "200"), "0"); // 0.5 rounds as "%.0f" does: to even
    EXPECT_EQ(compressionRateText("3", "200"), "2"); // 1.5
    for (const auto& [size, original] : {std::pair{"0", "9876"}, {"1234", ""}, {"", ""}})
        EXPECT_EQ(compressionRateText(size, original), "") << size << "/" << original;
}

TEST(TempNames, AreSafHexNamesThatNeverLandOnATakenOne)
{
    EXPECT_EQ(uniqueTempName(0x1A2B), "SAF1A2B.tmp");
    EXPECT_EQ(uniqueTempName(1), "SAF1.tmp");

    TempDir dir;
    std::vector<std::string> made;
    // Short stems and the ones made before are taken: each file goes to a free one.
    for (int i = 0; i < 2; ++i) {
        const auto path = createUniqueTempFile(dir.path(), [&](std::string_view stem) {
            return std::find(made.begin(), made.end(), std::string(stem) + ".tmp") != made.end() || stem.size() < 5;
        });
        ASSERT_TRUE(path);
        EXPECT_EQ(fs::file_size(*path), 0u);
        made.push_back(utf8FromPath(path->filename()));
        EXPECT_EQ(made.back().rfind("SAF", 0), 0u);
        EXPECT_GE(made.back().size(), 9u); // SAF + at least two hex digits + .tmp
    }
    EXPECT_NE(made[0], made[1]);
    EXPECT_FALSE(createUniqueTempFile(dir / "missing"));
    EXPECT_FALSE(createUniqueTempFile(dir.path(), [](std::string_view) { return true; }));

    for (const std::string bad : {"", ".", "..", "a/b", "a\\b", "C:x", "../x.tmp"})
        EXPECT_FALSE(isPlainFileName(bad)) << bad;
    EXPECT_TRUE(isPlainFileName("SAF1.tmp"));
}

TEST_F(EngineTest, RowsFollowTheTreeAndDeletingAsksWithTheRightText)
{
    ProjectDocument& document = session->document();
    ProjectItem* top = addSource(kSpeech / "hts1a.wav");
    ProjectItem* group = document.createItem("G", ProjectItem::kGroup | ProjectItem::kTopLevel, "G");
    document.files().push_back(group);
    ProjectItem* inner = addSource(kSpeech / "morig.wav", group);
    addRecord(inner, "ImaAdpcm", "32000");
    addRecord(top, "ImaAdpcm", "32000");
    addRecord(top, "Pcm", "128000");
    addRecord(inner, "Pcm", "128000");

    MainList list = MainList::fromDocument(document);
    ASSERT_EQ(list.size(), 4u);
    EXPECT_EQ(list.rows()[0].source, top);
    EXPECT_EQ(list.rows()[1].record().algoName, "Pcm");
    EXPECT_EQ(list.rows()[2].source, inner);
    EXPECT_EQ(list.rows()[3].record().algoName, "Pcm");
    EXPECT_FALSE(list.selectRows({0, 4}));
    EXPECT_EQ(list.selectedCount(), 0u);

    // Nothing selected: nothing asked, nothing removed.
    document.setModified(false);
    EXPECT_FALSE(list.deleteSelected(port, *session));
    EXPECT_TRUE(port.messages().empty());

    ASSERT_TRUE(list.selectRows({1}));
    port.queue(Answer::No);
    EXPECT_FALSE(list.deleteSelected(port, *session));
    EXPECT_EQ(port.texts().back(), msg::kDeleteSelectedItem);
    EXPECT_EQ(list.size(), 4u);
    EXPECT_FALSE(document.isModified());

    ASSERT_TRUE(list.selectRows({0, 3}));
    port.queue(Answer::Yes);
    EXPECT_TRUE(list.deleteSelected(port, *session));
    EXPECT_EQ(port.texts().back(), msg::kDeleteSelectedItems);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(top->records()[0].algoName, "Pcm");
    EXPECT_EQ(inner->records()[0].algoName, "ImaAdpcm");
    EXPECT_EQ(list.selectedCount(), 0u);
    EXPECT_TRUE(document.isModified());

    // Delete All takes the rows' working event files with them.
    install("ImaAdpcm");
    writeBytes(project() / "Files" / "morig.evt", "[SPEECH_EVNTS]\nCount=0\n");
    ASSERT_TRUE(encodeRows({1}).allDone());
    const std::string stem = utf8FromPath(pathFromUtf8(inner->records()[0].encodeName).stem());
    ASSERT_TRUE(fs::exists(tempFolder() / "evt" / (stem + ".evt")));
    port.queue(Answer::Yes);
    EXPECT_TRUE(list.deleteAll(port, *session));
    EXPECT_EQ(port.texts().back(), msg::kDeleteAllListItems);
    EXPECT_TRUE(list.empty());
    EXPECT_FALSE(fs::exists(tempFolder() / "evt" / (stem + ".evt")));
    EXPECT_TRUE(fs::exists(project() / "Files" / "morig.evt")); // the user's own file stays
    const auto& doomed = session->deletionList();
    EXPECT_NE(std::find(doomed.begin(), doomed.end(), project() / (stem + ".evt")), doomed.end());
    port.clear();
    EXPECT_FALSE(list.deleteAll(port, *session)); // no rows: not even asked
    EXPECT_TRUE(port.messages().empty());
}

TEST_F(EngineTest, RatesAndFactsComeFromTheFilesThemselves)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    EditInfoRecord& record = addRecord(source, "ImaAdpcm", "32000");
    const std::uintmax_t size = fs::file_size(kSpeech / "hts1a.wav");
    const OriginalSizes sizes = originalSizesOf(session->document(), project() / "Files");
    ASSERT_EQ(sizes.size(), 1u);
    EXPECT_EQ(sizes.at("hts1a.wav"), std::to_string(size));

    MainList list = MainList::fromDocument(session->document());
    record.encodeSize = std::to_string(size / 4);
    updateCompressionRates(list, sizes);
    EXPECT_EQ(record.compressionRate, "25");
    // An unknown original empties a rate shown before.
    record.fileName = "HTS1A.wav";
    updateCompressionRates(list, sizes);
    EXPECT_EQ(record.compressionRate, "");

    const std::optional<WaveFacts> wave = waveFactsOf(project() / "Files" / "hts1a.wav");
    ASSERT_TRUE(wave);
    EXPECT_EQ(wave->name, "hts1a.wav");
    EXPECT_EQ(wave->sampleRate, "8000 Hz");
    EXPECT_EQ(wave->channels, "Mono");
    EXPECT_EQ(wave->resolution, "16 bit");
    EXPECT_EQ(wave->fileSize, std::to_string(size) + " byte");
    EXPECT_EQ(wave->time, std::to_string((size - 44) / 2 / 8) + " ms");
    std::string error;
    EXPECT_FALSE(waveFactsOf(temp / "missing.wav", &error));
    EXPECT_NE(error, "");

    const std::optional<AlgorithmFacts> algorithm =
        algorithmFactsOf(*host, program() / "Algorithms" / ("ImaAdpcm" + std::string(librarySuffix())));
    ASSERT_TRUE(algorithm);
    EXPECT_EQ(algorithm->name, "ImaAdpcm");
    EXPECT_EQ(algorithm->version, "1.0");
    EXPECT_EQ(algorithm->sampleRate, "8000 Hz");
    EXPECT_EQ(algorithm->resolution, "16 bit");
}

TEST_F(EngineTest, EncodeInfoReadsTheRowsEncodedFileAndClearTakesTheResultsAway)
{
    install("ImaAdpcm");
    ProjectItem* a = addSource(kSpeech / "hts1a.wav");
    ProjectItem* b = addSource(kSpeech / "morig.wav");
    addRecord(a, "ImaAdpcm", "32000");
    addRecord(b, "ImaAdpcm", "16000");
    writeBytes(project() / "Files" / "hts1a.evt", "[SPEECH_EVNTS]\nCount=0\n");
    ASSERT_TRUE(encodeRows({0, 1}, true).allDone());
    EditInfoRecord& first = a->records()[0];
    const EditInfoRecord kept = b->records()[0];

    const std::optional<RowEncodedFile> info = inspectRowEncodedFile(*session, first, port);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->interimFile, tempFolder() / first.encodeName);
    EXPECT_EQ(info->packedSize, fs::file_size(tempFolder() / first.encodeName));
    EXPECT_EQ(std::to_string(info->encoded.fileSize), first.encodeSize);
    EXPECT_EQ(info->encoded.header.sampleRate, 8000u);
    EXPECT_TRUE(port.messages().empty());

    // A damaged interim file is refused, never read in part.
    const std::string interimName = first.encodeName;
    const std::string packed = readBytes(tempFolder() / interimName);
    writeBytes(tempFolder() / interimName, packed.substr(0, packed.size() - 1));
    EXPECT_FALSE(inspectRowEncodedFile(*session, first, port));
    EXPECT_EQ(port.texts().back(), interimName + std::string(msg::kInterimCanNotUnpack));
    writeBytes(tempFolder() / interimName, packed);

    // Clear: the first row loses its results and its working files, the
    // second keeps everything.
    MainList list = MainList::fromDocument(session->document());
    const std::string stem = utf8FromPath(pathFromUtf8(interimName).stem());
    const std::string decodedName = first.decodeName;
    ASSERT_TRUE(fs::exists(tempFolder() / "evt" / (stem + ".evt")));
    ASSERT_TRUE(fs::exists(tempFolder() / decodedName));
    session->document().setModified(false);
    ASSERT_TRUE(list.selectRows({0}));
    EXPECT_EQ(list.clearSelectedResults(*session), 1u);
    EXPECT_TRUE(session->document().isModified());
    EXPECT_EQ(first.encodeName + first.encodeSize + first.compressionRate + first.decodeName + first.decodeSize, "");
    EXPECT_EQ(first.algoName + "/" + first.bitRate, "ImaAdpcm/32000");
    for (const fs::path& gone :
         {tempFolder() / interimName, tempFolder() / "evt" / (stem + ".evt"), tempFolder() / decodedName})
        EXPECT_FALSE(fs::exists(gone)) << gone;
    EXPECT_EQ(b->records()[0].encodeName, kept.encodeName);
    EXPECT_EQ(b->records()[0].decodeSize, kept.decodeSize);
    EXPECT_TRUE(fs::exists(tempFolder() / kept.encodeName));

    EXPECT_FALSE(inspectRowEncodedFile(*session, first, port));
    EXPECT_EQ(port.texts().back(), msg::kRowNotEncoded);
    session->document().setModified(false);
    EXPECT_EQ(list.clearSelectedResults(*session), 0u); // nothing left to clear
    EXPECT_FALSE(session->document().isModified());

    // A cleared row is encoded afresh and saved. Cleared again, its saved
    // copy stays while the saved project names it and goes with the next Save.
    ASSERT_TRUE(encodeRows({0}).allDone());
    EXPECT_EQ(first.encodeSize, "12050"); // 24,000 samples at 4 bits, the header and an empty event block
    ASSERT_TRUE(session->saveProject());
    const fs::path saved = project() / first.encodeName;
    ASSERT_TRUE(fs::exists(saved));
    ASSERT_TRUE(list.selectRows({0}));
    list.clearSelectedResults(*session);
    EXPECT_TRUE(fs::exists(saved));
    ASSERT_TRUE(session->saveProject());
    EXPECT_FALSE(fs::exists(saved));
    EXPECT_TRUE(fs::exists(project() / kept.encodeName));

    // An interim file that went missing is named.
    fs::remove(project() / kept.encodeName);
    EXPECT_FALSE(inspectRowEncodedFile(*session, b->records()[0], port));
    EXPECT_EQ(port.texts().back(), kept.encodeName + std::string(msg::kInterimMissing));
}
