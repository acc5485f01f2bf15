// Add Encode Data and adding an algorithm to a project, on a real project
// with the real reference codecs.
#include "engine_fixture.h"

#include "codec/add_encode_data.h"
#include "codec/project_algorithms.h"
#include "common/messages.h"

#include <deque>

using namespace kestrelon;
using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

// Plays the "Encode Setting" dialog from a script of answers.
class ScriptedChooser : public EncodeSettingChooser {
public:
    EncodeSettingAnswer choose(const ProjectItem& source, const LastEncodeSetting& last) override
    {
        shownFor.push_back(source.id());
        shownWith.push_back(last.bodyName + "/" + last.algName + "/" + last.bitRate);
        if (answers.empty()) {
            ADD_FAILURE() << "unexpected dialog for " << source.id();
            return {};
        }
        EncodeSettingAnswer next = answers.front();
        answers.pop_front();
        return next;
    }

    static EncodeSettingAnswer ok(std::string algorithm, std::string rate, bool applyToAll)
    {
        return {true, std::string(kBody), std::move(algorithm), std::move(rate), applyToAll};
    }

    std::deque<EncodeSettingAnswer> answers;
    std::vector<std::string> shownFor;
    std::vector<std::string> shownWith;
};

std::vector<SourceOutcome> outcomes(const AddEncodeResult& result)
{
    std::vector<SourceOutcome> list;
    for (const AddedSource& source : result.sources)
        list.push_back(source.outcome);
    return list;
}

class AddEncodeDataTest : public EngineTest {
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        folder = session->document().createItem("Voices", ProjectItem::kGroup | ProjectItem::kTopLevel, "Voices");
        session->document().files().push_back(folder);
        a = addSource(kSpeech / "hts1a.wav", folder);
        b = addSource(kSpeech / "morig.wav");
        c = addSource(kSpeech / "cross.wav");
        session->document().setModified(false);
    }

    AddEncodeResult run(std::vector<ProjectItem*> selected, LastEncodeSetting& last)
    {
        return addEncodeData(env(), selected, chooser, last);
    }

    ScriptedChooser chooser;
    ProjectItem* folder = nullptr;
    ProjectItem* a = nullptr;
    ProjectItem* b = nullptr;
    ProjectItem* c = nullptr;
};

} // namespace

TEST_F(AddEncodeDataTest, OneChoiceForAllFilesAddsAndEncodesARowPerSourceAndBringsTheCodecIn)
{
    LastEncodeSetting last{"Small Body", "ImaAdpcm", "16000", false};
    chooser.answers = {ScriptedChooser::ok("ImaAdpcm", "32000", true)};
    const AddEncodeResult result = run({folder, a, b, c}, last);

    EXPECT_EQ(outcomes(result), (std::vector<SourceOutcome>(3, SourceOutcome::Added)));
    EXPECT_EQ(chooser.shownFor, std::vector<std::string>{"hts1a.wav"}); // once; the group is passed over
    EXPECT_EQ(chooser.shownWith, std::vector<std::string>{"Small Body/ImaAdpcm/16000"}); // opened on the kept choice
    EXPECT_EQ(last.bodyName + "/" + last.algName + "/" + last.bitRate, "Test Body/ImaAdpcm/32000");
    EXPECT_TRUE(last.applyAllFiles);
    // 4-bit ADPCM of 24,000, 16,028 and 24,000 samples, with the 48-byte header
    // and a 2-byte event block, against the sources' sizes on disk.
    const std::pair<ProjectItem*, std::string> sizes[] = {{a, "12050/25"}, {b, "8064/25"}, {c, "12050/50"}};
    for (const auto& [source, sizeAndRate] : sizes) {
        ASSERT_EQ(source->records().size(), 1u);
        const EditInfoRecord& record = source->records()[0];
        EXPECT_EQ(record.fileName, source->id());
        EXPECT_EQ(record.encodeSize + "/" + record.compressionRate, sizeAndRate) << source->id();
    }
    for (const AddedSource& source : result.sources)
        EXPECT_EQ(source.encode, RowOutcome::Done);
    // The plug-in is now the project's and registered.
    ASSERT_EQ(registry.size(), 1u);
    EXPECT_TRUE(fs::exists(project() / "Algos" / ("ImaAdpcm" + std::string(librarySuffix()))));
    EXPECT_TRUE(session->document().isModified());
    EXPECT_TRUE(port.texts().empty());
}

TEST_F(AddEncodeDataTest, CancelEndsAtOnceAndAnInvalidChoiceAddsNothing)
{
    // A choice per file: the second dialog is cancelled; the first row stays.
    LastEncodeSetting last{"", "", "", false};
    chooser.answers = {ScriptedChooser::ok("Pcm", "128000", false), EncodeSettingAnswer{}};
    AddEncodeResult result = run({a, b, c}, last);
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(outcomes(result), std::vector<SourceOutcome>{SourceOutcome::Added});
    EXPECT_EQ(a->records().size(), 1u);
    EXPECT_TRUE(b->records().empty());

    // OK with a list left unselected: "There is a error!", no row, and the
    // kept choice and check box stay as they were. With the check box off
    // the dialog comes again for the next file.
    port.clear();
    EncodeSettingAnswer incomplete = ScriptedChooser::ok("Pcm", "128000", true);
    incomplete.bitRate.reset();
    chooser.answers = {incomplete, ScriptedChooser::ok("Pcm", "128000", false)};
    result = run({b, c}, last);
    EXPECT_EQ(port.texts(), std::vector<std::string>{std::string(msg::kThereIsAError)});
    EXPECT_EQ(outcomes(result), (std::vector<SourceOutcome>{SourceOutcome::NoChoice, SourceOutcome::Added}));
    EXPECT_TRUE(b->records().empty());
    EXPECT_EQ(c->records().size(), 1u);

    // With "Apply to all files" in force from before, an invalid choice adds
    // nothing for any of the files and the dialog is not shown again.
    port.clear();
    last.applyAllFiles = true;
    const LastEncodeSetting kept = last;
    chooser.answers = {incomplete};
    chooser.shownFor.clear();
    result = run({a, b, c}, last);
    EXPECT_EQ(chooser.shownFor.size(), 1u);
    EXPECT_EQ(outcomes(result), std::vector<SourceOutcome>(3, SourceOutcome::NoChoice));
    EXPECT_EQ(last.bodyName + last.algName + last.bitRate, kept.bodyName + kept.algName + kept.bitRate);
    EXPECT_EQ(a->records().size() + b->records().size() + c->records().size(), 2u);
}

TEST_F(AddEncodeDataTest, ARowWithTheSameAlgorithmIsReplacedSkippedSkippedForAllOrStopsTheCommand)
{
    LastEncodeSetting last;
    chooser.answers = {ScriptedChooser::ok("Codec2", "3200", true)};
    run({a, b, c}, last);
    const std::string interimOfA = a->records()[0].encodeName;
    const std::string sizeOfA = a->records()[0].encodeSize;

    // Replace the first, skip the second, stop at the third.
    port.queue(Answer::Yes);
    port.queue(Answer::No);
    port.queue(Answer::Cancel);
    chooser.answers = {ScriptedChooser::ok("Codec2", "1200", true)};
    const AddEncodeResult result = run({a, b, c}, last);
    EXPECT_EQ(port.messages().at(0).text, "\"hts1a.wav\" Codec2 already existed!\nDo you want to replace it?");
    EXPECT_EQ(port.messages().size(), 3u);
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(outcomes(result), (std::vector<SourceOutcome>{SourceOutcome::Replaced, SourceOutcome::Skipped}));
    ASSERT_EQ(a->records().size(), 1u);
    EXPECT_EQ(a->records()[0].bitRate, "1200");
    EXPECT_EQ(a->records()[0].encodeName, interimOfA); // the interim file is reused
    EXPECT_NE(a->records()[0].encodeSize, sizeOfA); // with the new bit rate's data
    EXPECT_EQ(result.sources[0].encode, RowOutcome::Done);
    EXPECT_EQ(c->records()[0].bitRate, "3200");
    EXPECT_EQ(b->records()[0].bitRate, "3200");

    // Skip All is asked once, then every later clash is skipped; Stop at the
    // first question adds nothing at all.
    port.clear();
    port.queue(Answer::SkipAll);
    chooser.answers = {ScriptedChooser::ok("Codec2", "3200", true)};
    EXPECT_EQ(outcomes(run({a, b, c}, last)), std::vector<SourceOutcome>(3, SourceOutcome::Skipped));
    EXPECT_EQ(port.messages().size(), 1u);
    port.clear();
    port.queue(Answer::Cancel);
    chooser.answers = {ScriptedChooser::ok("Codec2", "3200", true)};
    const AddEncodeResult stopped = run({a, b, c}, last);
    EXPECT_TRUE(stopped.stopped);
    EXPECT_TRUE(stopped.sources.empty());
    EXPECT_EQ(port.messages().size(), 1u);
    for (ProjectItem* source : {a, b, c})
        EXPECT_EQ(source->records().size(), 1u);
    EXPECT_EQ(a->records()[0].bitRate, "1200");
}

TEST_F(AddEncodeDataTest, AReplaceWhoseEncodeFailsGivesTheRowBackAsItWas)
{
    LastEncodeSetting last;
    chooser.answers = {ScriptedChooser::ok("Codec2", "3200", false)};
    run({a}, last);
    const EditInfoRecord before = a->records()[0];
    ASSERT_FALSE(before.encodeSize.empty());

    // The source is damaged since: the new encode cannot read it.
    writeBytes(session->filesFolder() / "hts1a.wav", "RIFF but nothing more");
    port.clear();
    port.queue(Answer::Yes);
    chooser.answers = {ScriptedChooser::ok("Codec2", "1200", false)};
    const AddEncodeResult result = run({a}, last);
    ASSERT_EQ(result.sources.size(), 1u);
    EXPECT_EQ(result.sources[0].outcome, SourceOutcome::Replaced);
    EXPECT_NE(result.sources[0].encode, RowOutcome::Done);
    ASSERT_EQ(a->records().size(), 1u);
    EXPECT_EQ(a->records()[0], before);
}

TEST_F(AddEncodeDataTest, DuplicateOpensTheDialogOnEachSelectedRowsSettingOncePerFile)
{
    LastEncodeSetting last;
    chooser.answers = {ScriptedChooser::ok("Codec2", "3200", false), ScriptedChooser::ok("ImaAdpcm", "16000", false)};
    run({a, b}, last);
    chooser.answers = {ScriptedChooser::ok("Pcm", "128000", false)};
    run({a}, last);
    MainList list = MainList::fromDocument(session->document());
    ASSERT_EQ(list.size(), 3u); // a: Codec2, Pcm; b: ImaAdpcm

    // Two rows of the same file ask once, on the first row's setting; the
    // other file asks on its own row's setting, not on the kept choice.
    chooser.shownWith.clear();
    chooser.answers = {ScriptedChooser::ok("MuLaw", "64000", false), ScriptedChooser::ok("Speex", "8000", false)};
    list.selectAll();
    const AddEncodeResult result = duplicateRows(env(), list, chooser, last);
    EXPECT_EQ(chooser.shownWith, (std::vector<std::string>{"Test Body/Codec2/3200", "Test Body/ImaAdpcm/16000"}));
    EXPECT_EQ(outcomes(result), std::vector<SourceOutcome>(2, SourceOutcome::Added));
    ASSERT_EQ(a->records().size(), 3u);
    EXPECT_EQ(a->records()[2].algoName, "MuLaw");
    ASSERT_EQ(b->records().size(), 2u);
    EXPECT_EQ(b->records()[1].algoName, "Speex");
    EXPECT_NE(b->records()[1].encodeSize, "");
    EXPECT_EQ(last.algName, "Speex");
}

TEST_F(EngineTest, AddingAnAlgorithmCopiesItIntoAlgosChecksItAndRegistersIt)
{
    const std::string suffix(librarySuffix());
    const fs::path shipped = program() / "Algorithms" / ("MuLaw" + suffix);
    EXPECT_EQ(addAlgorithmToProject(*session, registry, *host, shipped, port), AddAlgorithmOutcome::Added);
    EXPECT_TRUE(readBytes(project() / "Algos" / ("MuLaw" + suffix)) == readBytes(shipped));
    EXPECT_TRUE(fs::exists(project() / "Algos" / "MuLaw.bdy"));
    ASSERT_EQ(registry.size(), 1u);
    EXPECT_EQ(registry[0].path, "Algos\\MuLaw" + suffix);
    EXPECT_TRUE(session->document().isModified());

    // The same file again: the system's overwrite question; No changes nothing.
    port.queue(Answer::No);
    EXPECT_EQ(addAlgorithmToProject(*session, registry, *host, shipped, port), AddAlgorithmOutcome::Declined);
    EXPECT_EQ(port.texts().back(),
              "The file \"MuLaw" + suffix + "\" already existed in this folder!\nDo you want to overwrite it?");
    port.queue(Answer::Yes);
    EXPECT_EQ(addAlgorithmToProject(*session, registry, *host, shipped, port), AddAlgorithmOutcome::Refreshed);
    EXPECT_EQ(registry.size(), 1u);

    // A codec that fails its own check, or has no body file, never reaches the project.
    port.clear();
    setEnv("KESTRELON_FAILING_CODEC", "check=0x8001;error-text=Not licensed");
    const fs::path failing = program() / "Algorithms" / ("FailingCodec" + suffix);
    EXPECT_EQ(addAlgorithmToProject(*session, registry, *host, failing, port), AddAlgorithmOutcome::Refused);
    EXPECT_EQ(port.texts().front(), "Not licensed");
    EXPECT_EQ(port.texts().back(), utf8FromPath(failing) + std::string(msg::kLoadedUnsuccessful));
    fs::remove(program() / "Algorithms" / "Pcm.bdy");
    EXPECT_EQ(addAlgorithmToProject(*session, registry, *host, program() / "Algorithms" / ("Pcm" + suffix), port),
              AddAlgorithmOutcome::Refused);
    EXPECT_FALSE(fs::exists(project() / "Algos" / ("FailingCodec" + suffix)));
    EXPECT_FALSE(fs::exists(project() / "Algos" / ("Pcm" + suffix)));
    EXPECT_EQ(registry.size(), 1u);
}
