// Rows run several at once leave what rows run one by one leave: the same
// project, working files, measures and messages in the same order, with a
// codec that crashes in the middle and with a Stop part-way through.
#include "../project/folder_snapshot.h"
#include "codec/add_encode_data.h"
#include "codec/broken_codecs.h"
#include "codec/codec_pool.h"
#include "codec/codec_worker.h"
#include "codec/row_quality.h"
#include "engine_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>

namespace kestrelon::test {
namespace {

namespace fs = std::filesystem;

// All a run leaves behind, to be compared whole.
struct RunResult {
    std::vector<std::vector<RowOutcome>> batches;
    std::vector<std::pair<std::string, std::string>> messages; // text, reason
    std::vector<std::string> titles;
    std::vector<std::string> records;
    FolderSnapshot project;
    bool marked = false; // the crashing codec is marked as broken
};

// Working files are named from a counter of the process, as the system's
// unique names are; both runs share this process, so each name becomes its
// rank among the run's names before the runs are compared.
void numberWorkingNames(RunResult& run)
{
    const std::regex name("SAF([0-9A-F]+)");
    std::map<unsigned long, std::string> ranks;
    const auto gather = [&](const std::string& text) {
        for (std::sregex_iterator it(text.begin(), text.end(), name), end; it != end; ++it)
            ranks[std::stoul((*it)[1].str(), nullptr, 16)];
    };
    for (const std::string& record : run.records)
        gather(record);
    for (const auto& [path, contents] : run.project) {
        gather(path);
        gather(contents);
    }
    int rank = 0;
    for (auto& [number, renamed] : ranks)
        renamed = "WORK" + std::to_string(++rank);
    const auto renumber = [&](const std::string& text) {
        std::string out;
        std::size_t from = 0;
        for (std::sregex_iterator it(text.begin(), text.end(), name), end; it != end; ++it) {
            const auto found = ranks.find(std::stoul((*it)[1].str(), nullptr, 16));
            out += text.substr(from, std::size_t(it->position()) - from);
            out += found != ranks.end() ? found->second : it->str();
            from = std::size_t(it->position() + it->length());
        }
        return out + text.substr(from);
    };
    for (std::string& record : run.records)
        record = renumber(record);
    for (auto& [text, reason] : run.messages)
        text = renumber(text);
    FolderSnapshot renamed;
    for (const auto& [path, contents] : run.project)
        renamed[renumber(path)] = renumber(contents);
    run.project = std::move(renamed);
    // The quality file is in name order: compared as a set of lines.
    std::string& quality = run.project["Demo.quality"];
    std::vector<std::string> lines;
    std::istringstream text(quality);
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    quality.clear();
    for (const std::string& line : lines)
        quality += line + "\n";
}

class CodecPoolTest : public EngineTest {
protected:
    void TearDown() override
    {
        setEnv("KESTRELON_FAILING_CODEC", "");
        EngineTest::TearDown();
    }

    // The same project in `folder`, worked on through `codec`: added by Add
    // Encode Data, encoded and decoded with a crashing codec among the rows,
    // decoded again, and encoded again with a Stop asked part-way through the
    // fifth row.
    RunResult run(const std::string& folder, CodecRunner& codec)
    {
        fs::create_directories(temp / folder);
        session = std::make_unique<ProjectSession>(port, nullptr, nullptr, program());
        EXPECT_TRUE(session->newProject(utf8FromPath(temp / folder), "Demo"));
        registry.clear();
        port.clear();
        port.titles.clear();
        port.stop = nullptr;
        // Workers read the codec's misbehaviour when they start.
        setEnv("KESTRELON_FAILING_CODEC", "crash=hts2a");
        for (const std::string name : {"ImaAdpcm", "Codec2", "FailingCodec"})
            install(name);

        std::vector<ProjectItem*> sources;
        for (const std::string name : {"hts1a.wav", "hts2a.wav", "morig.wav", "mmt1.wav"})
            sources.push_back(addSource(kSpeech / name));
        // Events travel with the encode: the helper's copy must be the engine's.
        writeBytes(project() / "Files" / "hts2a.evt", "[SPEECH_EVNTS]\nCount=1\n[EVENT0]\nSamples=100\nID=1\n");

        QualityFile quality;
        quality.load(session->projectFile());
        BrokenCodecs broken({});
        const EngineEnvironment environment{*session, registry, bodies, codec, port, program(), &quality, &broken};
        RunResult result;
        const auto batch = [&](MainList list, bool encode, bool autoDecode) {
            list.selectAll();
            CodecEngine engine(environment);
            result.batches.push_back(
                (encode ? engine.encodeSelected(list, autoDecode) : engine.decodeSelected(list)).rows);
        };

        FixedEncodeSetting chooser(kBody, "ImaAdpcm", "24000");
        LastEncodeSetting last;
        const AddEncodeResult added = addEncodeData(environment, sources, chooser, last, true);
        for (const AddedSource& source : added.sources)
            result.batches.push_back({source.encode});

        for (ProjectItem* source : sources) {
            addRecord(source, "Codec2", "1200");
            addRecord(source, "FailingCodec", "16000");
        }
        batch(MainList::fromDocument(session->document()), true, true);
        result.marked = broken.has("FailingCodec");
        // The crash marked the codec: the next batch asks, and is told to go on.
        port.queue(Answer::Yes);
        batch(MainList::fromDocument(session->document()), false, false);
        const std::size_t titlesBefore = port.titles.size();
        // Part-way through the fifth row's frames: a helper has done the row
        // whole by then, and its replay has to stop where the codec would.
        port.stop = [&] { return port.titles.size() >= titlesBefore + 5 && port.position >= 40; };
        batch(MainList::fromDocument(session->document()), true, false);
        port.stop = nullptr;
        setEnv("KESTRELON_FAILING_CODEC", "");

        EXPECT_TRUE(quality.save());
        for (const ShownMessage& message : port.messages())
            result.messages.emplace_back(message.text, message.reason);
        result.titles = port.titles;
        for (ProjectItem* source : sources)
            for (const EditInfoRecord& r : source->records())
                result.records.push_back(r.fileName + "|" + r.algoName + "|" + r.bitRate + "|" + r.encodeName + "|" +
                                         r.encodeSize + "|" + r.decodeName + "|" + r.decodeSize + "|" + r.renameEncode +
                                         "|" + r.compressionRate);
        result.project = snapshot(project());
        numberWorkingNames(result);
        return result;
    }
};

TEST_F(CodecPoolTest, RowsRunThreeAtOnceLeaveWhatRowsRunOneByOneLeave)
{
    CodecWorker serial(KESTRELON_CODEC_WORKER, program(), port, mainWindow);
    const RunResult one = run("serial", serial);

    const auto helper = [this](UserPort& helperPort, MainHostWindow& window) {
        return std::make_unique<CodecWorker>(KESTRELON_CODEC_WORKER, program(), helperPort, window);
    };
    CodecPool pool(std::make_unique<CodecWorker>(KESTRELON_CODEC_WORKER, program(), port, mainWindow), port, helper, 3);
    const RunResult three = run("pool", pool);
    EXPECT_GT(pool.served(), 20) << "the helpers did the work, not the engine's own codec";

    // The run is what the test says it is: a crash failed its rows, the stop
    // cut the last batch short, and quality was measured.
    ASSERT_EQ(one.batches.size(), 7u);
    EXPECT_EQ(one.batches[4][5], RowOutcome::Failed) << "hts2a's FailingCodec row crashed";
    EXPECT_EQ(one.batches[6][4], RowOutcome::NotReached);
    EXPECT_EQ(one.batches[6][6], RowOutcome::NotReached);
    ASSERT_FALSE(one.messages.empty());
    EXPECT_EQ(one.messages[0].first, "FailingCodec stopped working while encoding hts2a.wav !");
    EXPECT_TRUE(one.marked) << "the crash marked the codec";
    EXPECT_EQ(one.messages[1].first, "FailingCodec stopped working in an earlier batch.\nUse it again ?");
    EXPECT_FALSE(readBytes(temp / "serial" / "Demo" / "Demo.quality").empty());

    EXPECT_EQ(three.batches, one.batches);
    EXPECT_EQ(three.messages, one.messages);
    EXPECT_EQ(three.titles, one.titles);
    EXPECT_EQ(three.records, one.records);
    EXPECT_EQ(three.marked, one.marked);
    // Every file, its working files in Temp included, byte for byte; nothing
    // of the helpers' scratch is left.
    EXPECT_EQ(three.project, one.project);
}

} // namespace
} // namespace kestrelon::test
