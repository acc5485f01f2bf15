#include "bodies/body_settings.h"
#include "common/messages.h"
#include "common/paths.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::ScriptedPort;
using kestrelon::test::TempDir;
using kestrelon::test::writeBytes;

namespace {

const std::string kInvalid(msg::kInvalidData);

std::vector<std::string> namesOf(const BodySettings& settings)
{
    std::vector<std::string> names;
    for (const BodyInfo& body : settings.bodies())
        names.push_back(body.name);
    return names;
}

std::vector<int> numbersOf(const BodyInfo& b)
{
    return {b.bodyId,    b.algoCount,     b.sampleRateMax, b.sampleRateMin,  b.volumeMax,
            b.volumeMin, b.defaultVolume, b.currentVolume, b.confirmedVolume};
}

} // namespace

TEST(BodySettings, ReadsBodiesAndSkipsWhatIsEmptyOrIncomplete)
{
    TempDir dir;
    writeBytes(dir / "settings.dat",
               "[BODY]\n"
               "COUNT=4\n"
               "PCPLAYDLL=players\\PcPlay.so\n"
               "BOARDPLAYDLL=BoardPlay.so\n"
               "BAUDRATE=115200\n"
               "BODY0=Alpha\n"
               "BODY1=\n"
               "BODY2=Beta\n"
               "BODY4=Beyond the count\n"
               "[Alpha]\n"
               "BODYID=7\nSAMPLERATE_MAX=16000\nSAMPLERATE_MIN=8000\nVOLUME_MAX=15\nVOLUME_MIN=1\n"
               "DEFAULT_VOL=8\nCURRENT_VOL=-3\n"
               "ALGOCOUNT=3\n"
               "ALGO0=ImaAdpcm\nALGO0_SECTION=IMA\n"
               "ALGO1=\nALGO1_SECTION=Unused\n"
               "ALGO2=MuLaw\nALGO2_SECTION=MULAW\n"
               "[ima]\n"
               "DLLDIR=Algos\nPATHNAME=Algos\\ImaAdpcm.so\n"
               "BITRATECOUNT=3\nBITRATE0=16000\nBITRATE1=\nBITRATE2=32000\nCONFIG=+5\n"
               "[MULAW]\n"
               "DLLDIR=Algos\nPATHNAME=Algos\\MuLaw.so\nBITRATECOUNT=1\nBITRATE0=64000\n"
               "[Beta]\n"
               "BODYID=9\nSAMPLERATE_MAX=22050\nALGO0=Codec2\nALGO0_SECTION=C2\n");
    BodySettings settings;
    ScriptedPort port;
    const auto programFolder = dir.path() / "program";
    ASSERT_TRUE(settings.load(dir / "settings.dat", programFolder, port));
    EXPECT_TRUE(port.messages().empty());

    EXPECT_EQ(settings.pcPlayDll(), joinModel(programFolder, "players\\PcPlay.so"));
    EXPECT_EQ(settings.boardPlayDll(), programFolder / "BoardPlay.so");
    EXPECT_EQ(settings.baudRate(), 115200);
    // Empty and missing slots are skipped, and so is a slot beyond COUNT.
    ASSERT_EQ(namesOf(settings), (std::vector<std::string>{"Alpha", "Beta"}));

    const BodyInfo& alpha = settings.bodies()[0];
    // ALGOCOUNT 3 is kept as read, although one slot was empty.
    EXPECT_EQ(numbersOf(alpha), (std::vector<int>{7, 3, 16000, 8000, 15, 1, 8, -3, -3}));
    ASSERT_EQ(alpha.algorithms.size(), 2u);

    const BodyAlgoInfo& ima = alpha.algorithms[0];
    EXPECT_EQ((std::vector<std::string>{ima.name, ima.section, ima.dllDir, ima.pathName}),
              (std::vector<std::string>{"ImaAdpcm", "IMA", "Algos", "Algos\\ImaAdpcm.so"}));
    EXPECT_EQ(ima.bitRates, (std::vector<std::string>{"16000", "32000"}));
    EXPECT_EQ(ima.config, 5);

    // Without CONFIG the section adds nothing, although the rest is there.
    const BodyAlgoInfo& muLaw = alpha.algorithms[1];
    EXPECT_EQ((std::vector<std::string>{muLaw.name, muLaw.section, muLaw.dllDir, muLaw.pathName}),
              (std::vector<std::string>{"MuLaw", "MULAW", "", ""}));
    EXPECT_TRUE(muLaw.bitRates.empty());

    // Without ALGOCOUNT a body keeps only its name: no limits, no algorithms.
    EXPECT_EQ(numbersOf(settings.bodies()[1]), std::vector<int>(9, 0));
    EXPECT_TRUE(settings.bodies()[1].algorithms.empty());

    EXPECT_EQ(settings.findBody("Beta"), &settings.bodies()[1]);
    EXPECT_EQ(settings.findBody("beta"), nullptr); // names match exactly
}

TEST(BodySettings, FailsWithoutAUsableCount)
{
    TempDir dir;
    struct Case {
        const char* text;
        std::vector<std::string> messages;
    };
    for (const Case& c : {Case{"[BODY]\nCOUNT=two\nBODY0=A\n[A]\nALGOCOUNT=1\n", {kInvalid}},
                          Case{"[BODY]\nBODY0=A\n", {}}, Case{"[OTHER]\nCOUNT=1\n", {}}}) {
        writeBytes(dir / "settings.dat", c.text);
        BodySettings settings;
        ScriptedPort port;
        EXPECT_FALSE(settings.load(dir / "settings.dat", dir.path(), port)) << c.text;
        EXPECT_EQ(port.texts(), c.messages) << c.text;
        EXPECT_TRUE(settings.bodies().empty()) << c.text;
    }

    BodySettings settings;
    ScriptedPort port;
    std::filesystem::create_directory(dir / "folder.dat");
    EXPECT_FALSE(settings.load(dir / "folder.dat", dir.path(), port));
    EXPECT_EQ(settings.lastError(), msg::kUnableToOpenIni);
    EXPECT_TRUE(port.messages().empty());
}

TEST(BodySettings, MalformedNumbersAreReportedAndNotTaken)
{
    TempDir dir;
    writeBytes(dir / "settings.dat", "[BODY]\nCOUNT=3\nBAUDRATE=fast\nBODY0=A\nBODY1=B\nBODY2=C\n"
                                     "[A]\nBODYID=x7\nVOLUME_MAX=15\nALGOCOUNT=2\n"
                                     "ALGO0=One\nALGO0_SECTION=S1\nALGO1=Two\nALGO1_SECTION=S2\n"
                                     "[B]\nBODYID=3\nALGOCOUNT=2a\nALGO0=One\nALGO0_SECTION=S1\n"
                                     "[C]\nALGOCOUNT=1\nALGO0=Three\nALGO0_SECTION=s1\n"
                                     "[S1]\nDLLDIR=d\nPATHNAME=p\nBITRATECOUNT=1\nBITRATE0=8000\nCONFIG=0x1\n"
                                     "[S2]\nDLLDIR=d\nPATHNAME=p\nBITRATECOUNT=-\nBITRATE0=8000\nCONFIG=1\n");
    BodySettings settings;
    ScriptedPort port;
    ASSERT_TRUE(settings.load(dir / "settings.dat", dir.path(), port));
    // BAUDRATE, BODYID of A, ALGOCOUNT of B, CONFIG of S1 (read once for the
    // two entries naming it), BITRATECOUNT of S2.
    EXPECT_EQ(port.texts(), std::vector<std::string>(5, kInvalid));
    EXPECT_EQ(settings.baudRate(), 0);
    ASSERT_EQ(namesOf(settings), (std::vector<std::string>{"A", "B", "C"}));

    const BodyInfo& a = settings.bodies()[0];
    EXPECT_EQ(a.bodyId, 0);
    EXPECT_EQ(a.volumeMax, 15);
    ASSERT_EQ(a.algorithms.size(), 2u);
    for (const BodyAlgoInfo& algo : a.algorithms) {
        EXPECT_EQ(algo.dllDir, "") << algo.name;
        EXPECT_TRUE(algo.bitRates.empty()) << algo.name;
    }
    EXPECT_EQ(settings.bodies()[1].bodyId, 0); // dropped with the malformed ALGOCOUNT
    EXPECT_TRUE(settings.bodies()[1].algorithms.empty());
    ASSERT_EQ(settings.bodies()[2].algorithms.size(), 1u);
    EXPECT_EQ(settings.bodies()[2].algorithms[0].section, "s1");
    EXPECT_TRUE(settings.bodies()[2].algorithms[0].bitRates.empty());
}

TEST(BodySettings, HugeCountsReadOnlyTheSlotsPresent)
{
    TempDir dir;
    writeBytes(dir / "settings.dat",
               "[BODY]\nCOUNT=2147483647\nBODY0=A\nBODY70000=B\n"
               "[A]\nALGOCOUNT=2147483647\nALGO2000000000=Far\nALGO2000000000_SECTION=S\n"
               "[B]\nALGOCOUNT=-5\nALGO0=Never\nALGO0_SECTION=S\n"
               "[S]\nDLLDIR=d\nPATHNAME=p\nBITRATECOUNT=2147483647\nBITRATE99999=1200\nCONFIG=1\n");
    BodySettings settings;
    ScriptedPort port;
    ASSERT_TRUE(settings.load(dir / "settings.dat", dir.path(), port));
    ASSERT_EQ(namesOf(settings), (std::vector<std::string>{"A", "B"}));
    ASSERT_EQ(settings.bodies()[0].algorithms.size(), 1u);
    EXPECT_EQ(settings.bodies()[0].algorithms[0].bitRates, std::vector<std::string>{"1200"});
    EXPECT_EQ(settings.bodies()[1].algoCount, -5); // kept as read; no slot is walked
    EXPECT_TRUE(settings.bodies()[1].algorithms.empty());

    // 1000 slots naming one body whose section lists 1000 algorithms describe
    // a million copies: refused instead of read.
    std::string text = "[BODY]\nCOUNT=1000\n";
    for (int i = 0; i < 1000; ++i)
        text += "BODY" + std::to_string(i) + "=Shared\n";
    text += "[Shared]\nALGOCOUNT=1000\n";
    for (int j = 0; j < 1000; ++j)
        text += "ALGO" + std::to_string(j) + "=A\nALGO" + std::to_string(j) + "_SECTION=S\n";
    writeBytes(dir / "settings.dat", text);
    EXPECT_FALSE(settings.load(dir / "settings.dat", dir.path(), port));
    EXPECT_EQ(port.texts(), std::vector<std::string>{kInvalid});
    EXPECT_TRUE(settings.bodies().empty());
    EXPECT_TRUE(settings.pcPlayDll().empty());
}

TEST(BodySettings, SavingVolumesChangesOnlyThoseValues)
{
    TempDir dir;
    for (const std::string eol : {"\r\n", "\n"}) {
        const auto lines = [&](std::initializer_list<const char*> list) {
            std::string text;
            for (const char* line : list)
                text += std::string(line) + eol;
            return text;
        };
        const std::string head = lines({"; bodies", "[BODY]", "COUNT = 3", "BODY0=A", "BODY1=B", "BODY2=C", ""});
        const std::string tail = lines({"", "[C]", "ALGOCOUNT=1", "; end"});
        writeBytes(dir / "settings.dat",
                   head + lines({"[A]", "current_vol=5", "ALGOCOUNT=1", "[B]", "  current_vol =  2 ", "ALGOCOUNT=1"}) +
                       tail);

        BodySettings settings;
        ScriptedPort port;
        ASSERT_TRUE(settings.load(dir / "settings.dat", dir.path(), port));
        // A's changed value is rewritten, B's unchanged line stays as written,
        // and C, which has no CURRENT_VOL line, gets one at the end of its section.
        settings.findBody("A")->currentVolume = 12;
        ASSERT_TRUE(settings.saveCurrentVolumes(dir / "settings.dat"));
        EXPECT_EQ(readBytes(dir / "settings.dat"),
                  head + lines({"[A]", "CURRENT_VOL=12", "ALGOCOUNT=1", "[B]", "  current_vol =  2 ", "ALGOCOUNT=1", "",
                                "[C]", "ALGOCOUNT=1", "CURRENT_VOL=0", "; end"}));

        // Saved again with nothing changed, the file is not even rewritten:
        // an installed, read-only file must survive every exit.
        const std::string saved = readBytes(dir / "settings.dat");
        const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24);
        std::filesystem::last_write_time(dir / "settings.dat", longAgo);
        ASSERT_TRUE(settings.saveCurrentVolumes(dir / "settings.dat"));
        EXPECT_EQ(readBytes(dir / "settings.dat"), saved);
        EXPECT_EQ(std::filesystem::last_write_time(dir / "settings.dat"), longAgo);
    }
}
