// The engine with its codecs in kestrelon-codec-worker: the same bytes and
// messages as in this process, and a plug-in that crashes or hangs costs its
// row and a message, never the batch.
#include "codec/broken_codecs.h"
#include "codec/codec_worker.h"
#include "engine_fixture.h"
#include "wave/wave_file.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kestrelon::test {
namespace {

namespace fs = std::filesystem;

class WorkerTest : public EngineTest {
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        worker = std::make_unique<CodecWorker>(KESTRELON_CODEC_WORKER, program(), port, mainWindow);
        runner = worker.get();
    }
    void TearDown() override
    {
        runner = nullptr;
        worker.reset();
        setEnv("KESTRELON_CODEC_TIME_FLOOR", "");
        setEnv("ASAN_OPTIONS", "");
        setEnv("TSAN_OPTIONS", "");
        EngineTest::TearDown();
    }

    // A source of a twentieth of a second, so a hang's time limit is short.
    ProjectItem* addShortSource(const std::string& name)
    {
        std::vector<std::int16_t> samples(400);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = std::int16_t(3000 * std::sin(double(i) / 5));
        const fs::path wave = temp / name;
        writeWav16(wave, samples, 8000);
        return addSource(wave);
    }

    // The test codec reads its misbehaviour from the environment, which a
    // worker takes when it starts: a new worker for each new setting.
    void misbehave(const std::string& mode)
    {
        setEnv("KESTRELON_FAILING_CODEC", mode);
        worker = std::make_unique<CodecWorker>(KESTRELON_CODEC_WORKER, program(), port, mainWindow);
        runner = worker.get();
    }

    // Speech and a short source, each with a row of the failing codec and one
    // of ImaAdpcm: rows 0 and 1, 2 and 3.
    std::pair<ProjectItem*, ProjectItem*> failingAndGoodRows()
    {
        ProjectItem* first = addSource(kSpeech / "hts1a.wav");
        ProjectItem* second = addShortSource("short.wav");
        install("FailingCodec");
        install("ImaAdpcm");
        for (ProjectItem* source : {first, second}) {
            addRecord(source, "FailingCodec", "16000");
            addRecord(source, "ImaAdpcm", "32000");
        }
        return {first, second};
    }

    std::unique_ptr<CodecWorker> worker;
};

TEST_F(WorkerTest, EveryReferenceCodecGivesTheSameBytesAsInThisProcess)
{
    ProjectItem* source = addSource(kSpeech / "hts1a.wav");
    const std::vector<std::pair<std::string, std::string>> settings = {
        {"ImaAdpcm", "24000"}, {"MuLaw", "64000"}, {"Pcm", "128000"}, {"Codec2", "1200"}, {"Speex", "8000"}};
    for (const auto& [algorithm, rate] : settings)
        install(algorithm);
    for (int pass = 0; pass < 2; ++pass)
        for (const auto& [algorithm, rate] : settings)
            addRecord(source, algorithm, rate);

    ASSERT_TRUE(encodeRows({0, 1, 2, 3, 4}, /*autoDecode=*/true).allDone());
    ASSERT_TRUE(worker->process().has_value()) << "the rows ran in a worker";
    const std::vector<std::string> workerMessages = port.texts();
    runner = nullptr;
    ASSERT_TRUE(encodeRows({5, 6, 7, 8, 9}, /*autoDecode=*/true).allDone());
    EXPECT_EQ(port.texts(), workerMessages);

    for (std::size_t i = 0; i < settings.size(); ++i) {
        const EditInfoRecord& apart = source->records()[i];
        const EditInfoRecord& here = source->records()[i + settings.size()];
        SCOPED_TRACE(apart.algoName);
        EXPECT_EQ(unpacked(apart.encodeName), unpacked(here.encodeName));
        EXPECT_EQ(unpacked(apart.decodeName), unpacked(here.decodeName));
        EXPECT_EQ(apart.encodeSize, here.encodeSize);
        EXPECT_EQ(apart.decodeSize, here.decodeSize);
        EXPECT_EQ(apart.renameEncode.substr(apart.renameEncode.find('_')),
                  here.renameEncode.substr(here.renameEncode.find('_')));
    }
}

TEST_F(WorkerTest, ACodecThatCrashesOrHangsCostsItsRowAndTheBatchGoesOn)
{
    const auto [first, second] = failingAndGoodRows();
    ASSERT_TRUE(encodeRows({0}).allDone());
    const EditInfoRecord before = first->records()[0];

    // A crash in the first row: its message names the codec and the file;
    // the row keeps what it had, and the rows after it are encoded by a new worker.
    // A worker built with a sanitizer dies of the signal too, as a user's would.
    setEnv("ASAN_OPTIONS", "handle_segv=0");
    setEnv("TSAN_OPTIONS", "handle_segv=0");
    misbehave("crash=hts1a");
    ASSERT_EQ(encodeRows({1}).rows[1], RowOutcome::Done);
    const pid_t firstWorker = *worker->process();
    BatchResult batch = encodeRows({0, 1, 2});
    EXPECT_EQ(batch.rows, (std::vector<RowOutcome>{RowOutcome::Failed, RowOutcome::Done, RowOutcome::Done,
                                                   RowOutcome::NotSelected}));
    ASSERT_EQ(port.messages().size(), 1u);
    EXPECT_EQ(port.messages()[0].text, "FailingCodec stopped working while encoding hts1a.wav !");
    EXPECT_NE(port.messages()[0].reason.find("Segmentation fault"), std::string::npos) << port.messages()[0].reason;
    EXPECT_EQ(first->records()[0].encodeName, before.encodeName);
    EXPECT_EQ(first->records()[0].encodeSize, before.encodeSize);
    EXPECT_NE(*worker->process(), firstWorker);
    EXPECT_EQ(port.ended, int(port.titles.size())) << "every progress that began has ended";

    // A hang: the worker is ended once the row's time is up.
    port.clear();
    setEnv("KESTRELON_CODEC_TIME_FLOOR", "1");
    misbehave("hang=short");
    batch = encodeRows({1, 2, 3});
    EXPECT_EQ(batch.rows, (std::vector<RowOutcome>{RowOutcome::NotSelected, RowOutcome::Done, RowOutcome::Failed,
                                                   RowOutcome::Done}));
    ASSERT_EQ(port.messages().size(), 1u);
    EXPECT_EQ(port.messages()[0].text, "FailingCodec stopped answering while encoding short.wav !");
    EXPECT_EQ(port.messages()[0].reason, "no answer in 1 s");
    EXPECT_FALSE(second->records()[0].encodeName.empty()) << "the earlier encoding stays";

    // A decode that crashes fails its row the same way; the codec's own
    // failures still come through with their texts.
    port.clear();
    misbehave("crash");
    EXPECT_EQ(decodeRows({0}).rows[0], RowOutcome::Failed);
    ASSERT_EQ(port.texts().size(), 1u);
    EXPECT_EQ(port.texts()[0].rfind("FailingCodec stopped working while decoding ", 0), 0u) << port.texts()[0];
    port.clear();
    misbehave("encode=0x8001;error-text=The codec gave up");
    EXPECT_EQ(encodeRows({0}).rows[0], RowOutcome::Failed);
    EXPECT_EQ(port.texts(), std::vector<std::string>{"The codec gave up"});
}

// A codec that crashed is remembered from one run to the next, and the next
// batch asks once before it gives that codec a row again.
TEST_F(WorkerTest, ACodecThatBrokeIsAskedAboutBeforeItsNextRows)
{
    failingAndGoodRows();
    const fs::path config = temp / "config";
    const auto batch = [&](BrokenCodecs& broken, const std::vector<size_t>& rows) {
        MainList list = MainList::fromDocument(session->document());
        EXPECT_TRUE(list.selectRows(rows));
        EngineEnvironment environment = env();
        environment.broken = &broken;
        return CodecEngine(environment).encodeSelected(list).rows;
    };

    misbehave("crash=hts1a");
    {
        BrokenCodecs broken(config);
        EXPECT_EQ(batch(broken, {0, 1}), (std::vector<RowOutcome>{RowOutcome::Failed, RowOutcome::Done,
                                                                  RowOutcome::NotSelected, RowOutcome::NotSelected}));
        EXPECT_TRUE(broken.has("FailingCodec"));
        EXPECT_FALSE(broken.has("ImaAdpcm"));
        ASSERT_TRUE(broken.save());
    }

    // The next run: one question for both of its rows, answered No; neither
    // row reaches the codec, the other codec's row runs.
    port.clear();
    misbehave("");
    const std::size_t callsBefore = codecCalls().size();
    BrokenCodecs later(config);
    ASSERT_TRUE(later.has("FailingCodec"));
    port.queue(Answer::No);
    EXPECT_EQ(batch(later, {0, 1, 2}), (std::vector<RowOutcome>{RowOutcome::Failed, RowOutcome::Done,
                                                                RowOutcome::Failed, RowOutcome::NotSelected}));
    ASSERT_EQ(port.messages().size(), 1u);
    EXPECT_EQ(port.messages()[0].text, "FailingCodec stopped working in an earlier batch.\nUse it again ?");
    for (std::size_t i = callsBefore; i < codecCalls().size(); ++i)
        EXPECT_EQ(codecCalls()[i].find("encode"), std::string::npos) << codecCalls()[i];

    // Yes forgives it: its rows run, and the list no longer names it.
    port.clear();
    port.queue(Answer::Yes);
    EXPECT_EQ(batch(later, {0, 2}), (std::vector<RowOutcome>{RowOutcome::Done, RowOutcome::NotSelected,
                                                             RowOutcome::Done, RowOutcome::NotSelected}));
    EXPECT_EQ(port.pendingAnswers(), 0u);
    ASSERT_TRUE(later.save());
    EXPECT_FALSE(BrokenCodecs(config).has("FailingCodec"));
}

} // namespace
} // namespace kestrelon::test
