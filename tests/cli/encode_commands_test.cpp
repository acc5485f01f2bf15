// The road of one file through the built kestrelon-cli: a new project, real
// speech added, a row per reference codec encoded, decoded and listed, with
// the program's own program folder, body settings and codec plug-ins.
#include "cli_run.h"
#include "common/paths.h"
#include "project/folder_snapshot.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

using namespace kestrelon;
using namespace kestrelon::test;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeechFolder = "/usr/share/codec2/wav";

class EncodeCommandsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(runCli({"project", "new", temp.path().string(), "Road"}, scratch.path()).exitCode, 0);
        ASSERT_EQ(run({"project", "add-files", ptp(), (kSpeechFolder / "hts1a.wav").string(),
                       (kSpeechFolder / "morig.wav").string()})
                      .exitCode,
                  0);
    }

    using Run = JsonRun;
    Run run(const std::vector<std::string>& words) { return runJson(words, scratch.path()); }

    std::string ptp() const { return (temp / "Road" / "Road.ptp").string(); }
    fs::path folder() const { return temp / "Road"; }

    TempDir scratch;
    TempDir temp;
};

} // namespace

TEST_F(EncodeCommandsTest, EveryReferenceCodecEncodesDecodesAndListsItsSizesAndRate)
{
    // 3 s of 8 kHz speech, 24,000 samples: the waveform codecs' encodings are
    // 4, 8 and 16 bits a sample plus the 48-byte header and a 2-byte event
    // block; every decode is a 44-byte WAV header and 24,000 16-bit samples;
    // the rate is the encode size against the source's 48,044 bytes.
    struct Codec {
        std::string algorithm, rate, encodeSize, compressionRate;
    };
    const std::vector<Codec> codecs = {{"ImaAdpcm", "32000", "12050", "25"},
                                       {"MuLaw", "64000", "24050", "50"},
                                       {"Pcm", "128000", "48050", "100"},
                                       {"Codec2", "3200", "1258", "3"},
                                       {"Speex", "8000", "3070", "6"}};
    for (const auto& [algorithm, rate, size, compression] : codecs) {
        const Run added = run(
            {"project", "add-encode", ptp(), "--body", "KS-1 Voice", "--algo", algorithm, "--rate", rate, "hts1a.wav"});
        ASSERT_EQ(added.exitCode, 0) << added.err;
        EXPECT_EQ(added.answer["sources"][0]["outcome"], "added");
        EXPECT_EQ(added.answer["sources"][0]["encode"], "done");
    }
    const Run decoded = run({"project", "decode", ptp()});
    ASSERT_EQ(decoded.exitCode, 0) << decoded.err;

    const Run listed = run({"project", "list", ptp()});
    ASSERT_EQ(listed.exitCode, 0);
    const Json& rows = listed.answer["rows"];
    ASSERT_EQ(rows.size(), codecs.size());
    for (size_t i = 0; i < codecs.size(); ++i) {
        SCOPED_TRACE(codecs[i].algorithm);
        const Json& row = rows[i];
        EXPECT_EQ(row["algorithm"], codecs[i].algorithm);
        EXPECT_EQ(row["encodeSize"], codecs[i].encodeSize);
        EXPECT_EQ(row["decodeSize"], "48044");
        EXPECT_EQ(row["compressionRate"], codecs[i].compressionRate);
        // The folder is as Save and Close leave it: the interim file beside
        // the project file, Temp gone, the codec in Algos.
        EXPECT_TRUE(fs::is_regular_file(folder() / std::string(row["encodeName"])));
        EXPECT_TRUE(fs::is_regular_file(folder() / "Algos" / (codecs[i].algorithm + std::string(librarySuffix()))));
    }
    EXPECT_FALSE(fs::exists(folder() / "Temp"));
    // The project's own tree, as dump shows it, holds the same sizes.
    const Run dumped = run({"project", "dump", ptp()});
    EXPECT_EQ(dumped.answer["files"][0]["records"][2]["encodeSize"], "48050");
    EXPECT_EQ(dumped.answer["files"][0]["records"][2]["decodeSize"], "48044");
    const std::string registry = readBytes(folder() / "Algos" / "dllsetinfo.ini");
    EXPECT_NE(registry.find("Count=5"), std::string::npos);

    // Quality against the source: PCM is lossless, 8-bit mu-law beats 4-bit
    // ADPCM, and every decode lasts as long as its source. The measures stay
    // beside the project and are read back while the decodes stay.
    // Decoding measured each row while its wave was at hand.
    const std::string measuredByDecode = readBytes(folder() / "Road.quality");
    EXPECT_EQ(std::count(measuredByDecode.begin(), measuredByDecode.end(), '\n'), 6);
    const Run quality = run({"project", "quality", ptp()});
    ASSERT_EQ(quality.exitCode, 0) << quality.err;
    EXPECT_EQ(readBytes(folder() / "Road.quality"), measuredByDecode); // read back, not measured again
    const Json& measured = quality.answer["rows"];
    ASSERT_EQ(measured.size(), codecs.size());
    EXPECT_EQ(measured[2]["segmentalSnrDb"], 35.0);
    EXPECT_EQ(measured[2]["melDistanceDb"], 0.0);
    EXPECT_GT(double(measured[1]["segmentalSnrDb"]), double(measured[0]["segmentalSnrDb"]) + 6);
    for (const Json& row : measured)
        EXPECT_EQ(row["durationRatio"], 1.0) << row["algorithm"];
    const std::string kept = readBytes(folder() / "Road.quality");
    EXPECT_EQ(std::count(kept.begin(), kept.end(), '\n'), 6);
    EXPECT_EQ(run({"project", "quality", ptp(), "--rows", "2"}).answer["rows"][0]["segmentalSnrDb"], 35.0);

    // Encoding one row again reuses its interim file.
    const Run again = run({"project", "encode", ptp(), "--rows", "1"});
    ASSERT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.answer["rows"][1]["encodeName"], rows[1]["encodeName"]);
    EXPECT_EQ(again.answer["rows"][1]["outcome"], "done");
    EXPECT_FALSE(again.answer["rows"][0].contains("outcome"));
}

TEST_F(EncodeCommandsTest, ChoicesTheBodiesDoNotOfferAndRowsThatDoNotExistAreRefused)
{
    Run refused = run({"project", "add-encode", ptp(), "--body", "No Such Body", "--algo", "Pcm", "--rate", "128000"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(std::string(refused.answer["error"]).find("unknown body \"No Such Body\""), std::string::npos);
    refused = run({"project", "add-encode", ptp(), "--body", "KS-2 Lite", "--algo", "Pcm", "--rate", "128000"});
    EXPECT_NE(std::string(refused.answer["error"]).find("has no algorithm \"Pcm\""), std::string::npos);
    refused = run({"project", "add-encode", ptp(), "--body", "KS-2 Lite", "--algo", "Speex", "--rate", "2150"});
    EXPECT_NE(std::string(refused.answer["error"]).find("has no bit rate \"2150\""), std::string::npos);
    refused =
        run({"project", "add-encode", ptp(), "--body", "KS-2 Lite", "--algo", "Speex", "--rate", "3950", "nope.wav"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(run({"project", "list", ptp()}).answer["rows"].size(), 0u);

    // Every source at once, with decoding; a second time the question is answered "no": skipped.
    Run added =
        run({"project", "add-encode", ptp(), "--body", "KS-2 Lite", "--algo", "Speex", "--rate", "3950", "--decode"});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    ASSERT_EQ(added.answer["rows"].size(), 2u);
    EXPECT_NE(added.answer["rows"][1]["decodeSize"], "");
    added = run({"project", "add-encode", ptp(), "--body", "KS-2 Lite", "--algo", "Speex", "--rate", "5950"});
    EXPECT_EQ(added.answer["sources"][0]["outcome"], "skipped");
    EXPECT_EQ(added.answer["messages"][0]["answer"], "no");
    // --yes replaces, --cancel stops at the first question.
    added = run({"--yes", "project", "add-encode", ptp(), "--body", "KS-2 Lite", "--algo", "Speex", "--rate", "5950",
                 "morig.wav"});
    EXPECT_EQ(added.answer["sources"][0]["outcome"], "replaced");
    EXPECT_EQ(added.answer["rows"][1]["bitRate"], "5950");
    added =
        run({"--cancel", "project", "add-encode", ptp(), "--body", "KS-2 Lite", "--algo", "Speex", "--rate", "8000"});
    EXPECT_EQ(added.answer["stopped"], true);
    EXPECT_EQ(added.answer["sources"].size(), 0u);
    EXPECT_EQ(added.answer["messages"][0]["answer"], "cancel");

    const Run missing = run({"project", "encode", ptp(), "--rows", "0,2"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.answer["error"], "no row 2: the project has 2 row(s)");
    // No rows at all at once is a mistake in the command, not a slow run.
    const CliRun none = runCli({"project", "decode", ptp(), "--jobs", "0"}, scratch.path());
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_NE(none.err.find("--jobs takes a whole number from 1"), std::string::npos) << none.err;
}

TEST_F(EncodeCommandsTest, AnotherBodySettingsFileAndAnAddedAlgorithm)
{
    const std::string suffix(librarySuffix());
    writeBytes(temp / "bodies.dat", "[BODY]\nCOUNT=1\nBODY0=Bench\n[Bench]\nALGOCOUNT=1\nALGO0=ImaAdpcm\n"
                                    "ALGO0_SECTION=IMA\n[IMA]\nDLLDIR=Algorithms\nPATHNAME=Algorithms\\ImaAdpcm" +
                                        suffix + "\nBITRATECOUNT=1\nBITRATE0=16000\nCONFIG=0\n");
    const Run added = run({"--settings", (temp / "bodies.dat").string(), "project", "add-encode", ptp(), "--body",
                           "Bench", "--algo", "ImaAdpcm", "--rate", "16000", "morig.wav"});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_EQ(added.answer["rows"][0]["body"], "Bench");

    const fs::path program = fs::path(KESTRELON_CLI).parent_path();
    const Run algo = run({"project", "add-algo", ptp(), (program / "Algorithms" / ("MuLaw" + suffix)).string()});
    ASSERT_EQ(algo.exitCode, 0) << algo.err;
    EXPECT_EQ(algo.answer["outcome"], "added");
    EXPECT_EQ(algo.answer["algorithms"].size(), 2u);
    EXPECT_EQ(algo.answer["algorithms"][1]["path"], "Algos\\MuLaw" + suffix);
    const Run declined = run({"project", "add-algo", ptp(), (program / "Algorithms" / ("MuLaw" + suffix)).string()});
    EXPECT_EQ(declined.answer["outcome"], "declined");
}

// A sweep of one source across the waveform codecs' bit rates, on two jobs:
// every setting the body offers is there, in the body's order; the quality
// falls with the bit rate; the project itself is left exactly as it was.
TEST_F(EncodeCommandsTest, ASweepMeasuresEveryRateWithoutTouchingTheProject)
{
    const FolderSnapshot before = snapshot(folder());
    const Run swept = run({"project", "sweep", ptp(), "--body", "KS-1 Voice", "--algo", "ImaAdpcm", "--algo", "MuLaw",
                           "--jobs", "2", "--csv", (scratch / "sweep.csv").string(), "hts1a.wav"});
    ASSERT_EQ(swept.exitCode, 0) << swept.err;
    EXPECT_EQ(snapshot(folder()), before);
    const Json& rows = swept.answer["rows"];
    ASSERT_EQ(rows.size(), 5u);
    std::vector<std::string> settings;
    for (const Json& row : rows)
        settings.push_back(std::string(row["algorithm"]) + " " + std::string(row["bitRate"]));
    EXPECT_EQ(settings, (std::vector<std::string>{"ImaAdpcm 32000", "ImaAdpcm 24000", "ImaAdpcm 16000", "MuLaw 64000",
                                                  "MuLaw 48000"}));
    EXPECT_EQ(rows[0]["encodeSize"], "12050");
    for (std::size_t i : {0u, 1u, 3u})
        EXPECT_GT(double(rows[i]["segmentalSnrDb"]), double(rows[i + 1]["segmentalSnrDb"])) << settings[i];
    const std::string csv = readBytes(scratch / "sweep.csv");
    EXPECT_EQ(csv.rfind("fileName,algorithm,bitRate,encodeSize,compressionRate,segmentalSnrDb,melDistanceDb,"
                        "durationRatio\nhts1a.wav,ImaAdpcm,32000,12050,25,",
                        0),
              0u)
        << csv;

    // The same wave swept by path, with no project (as the workbench sweeps
    // while it holds the project), gives the same table.
    const Run byPath = run({"sweep", "--body", "KS-1 Voice", "--algo", "ImaAdpcm", "--algo", "MuLaw",
                            (folder() / "Files" / "hts1a.wav").string()});
    ASSERT_EQ(byPath.exitCode, 0) << byPath.err;
    EXPECT_EQ(byPath.answer["rows"], rows);
    EXPECT_EQ(run({"sweep", "--body", "KS-1 Voice", (folder() / "none.wav").string()}).exitCode, 1);
}
