// `project export` end to end: a closed project as the workbench leaves it
// (interim files in the project folder, events beside the waves) is exported
// by the built kestrelon-cli.
#include "cli_run.h"
#include "codec/encoded_header.h"
#include "codec/interim_packer.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "project/folder_snapshot.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

using namespace kestrelon::test;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

namespace {

std::string record(const std::string& encodeName, const std::string& renameEncode, const std::string& bitRate)
{
    return "# Begin EditInfo\nAlgoName=adpcm\nBodyName=B1\nEncodeName=" + encodeName +
           "\nEncodeSize=10\nRenameEncode=" + renameEncode + "\nDecodeName=\nDecodeSize=\nEncodeBitRate=" + bitRate +
           "\nMultiSelect=0\n# End EditInfo\n";
}

std::string encodedFile(const std::string& data)
{
    const kestrelon::EncodedHeaderBytes header = kestrelon::makeEncodedHeader();
    return std::string(header.begin(), header.end()) + data;
}

std::string lines(const std::vector<std::string>& each)
{
    std::string text;
    for (const std::string& line : each)
        text += line + std::string(kestrelon::kNativeEol);
    return text;
}

class ExportCommand : public ::testing::Test {
protected:
    // Rows, in list order: hello.wav (encoded as hello1.bin, and a row never
    // encoded, hello2.bin) in the group Voices, then bye.wav (bye.bin).
    void SetUp() override
    {
        fs::create_directories(project / "Algos");
        writeBytes(project / "Files" / "hello.wav", "RIFF");
        writeBytes(project / "Files" / "bye.wav", "RIFF");
        writeBytes(project / "Files" / "hello.evt", events);
        writeBytes(project / "Demo.ptp",
                   "# Begin Project\n\n# Begin Files\n# Begin Group \"Voices\"\nID=Voices\nPARAM=3\n"
                   "# Begin Source File\nSOURCE=Files\\hello.wav\nID=hello.wav\nPARAM=8\n" +
                       record("SAF1.tmp", "hello1.bin", "16000") + record("", "hello2.bin", "32000") +
                       "# End Source File\n# End Group\n"
                       "# Begin Source File\nSOURCE=Files\\bye.wav\nID=bye.wav\nPARAM=9\n" +
                       record("SAF2.tmp", "bye.bin", "16000") +
                       "# End Source File\n# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n# End Project\n");
        writeBytes(project / "SAF1.tmp", *kestrelon::packInterim(encodedFile("hello data")));
        writeBytes(project / "SAF2.tmp", *kestrelon::packInterim(encodedFile("bye data")));
    }

    CliRun run(const std::vector<std::string>& words) { return runCli(words, scratch.path()); }

    TempDir scratch;
    TempDir temp;
    fs::path project = temp / "Demo";
    fs::path ptp = project / "Demo.ptp";
    fs::path out = temp / "out";
    const std::string events =
        "[TAG_LABEL]\nLabelName=Default Label\n[SPEECH_EVNTS]\nCount=1\n[EVENT0]\nSamples=1200\nID=1\n";
};

} // namespace

TEST_F(ExportCommand, ExportAllWritesTheDataTheEventsAndTheIndexAndLeavesTheProjectAlone)
{
    const FolderSnapshot before = snapshot(project);
    const CliRun all = run({"--json", "project", "export", ptp.string(), "--out", out.string()});
    ASSERT_EQ(all.exitCode, 0) << all.out << all.err;
    const Json answer = Json::parse(all.out);
    EXPECT_EQ(answer["messages"], Json::array());
    EXPECT_EQ(answer["exported"], Json::array({(out / "hello1.bin").string(), (out / "bye.bin").string()}));
    EXPECT_EQ(answer["events"], Json::array({(out / "hello1.tab").string()}));
    EXPECT_EQ(answer["index"], (out / "All_Export_FileName.txt").string());
    EXPECT_EQ(answer["files"][0]["children"][0]["records"].size(), 2u); // the tree as dump shows it
    EXPECT_EQ(readBytes(out / "bye.bin"), "bye data");
    EXPECT_EQ(snapshot(project), before); // not saved, nothing consumed, Temp gone again

    // Selected rows, with the header: an existing file is kept unless --yes.
    const CliRun declined = run({"project", "export", ptp.string(), "--out", out.string(), "--rows", "2", "--header"});
    EXPECT_EQ(declined.exitCode, 0);
    EXPECT_EQ(declined.err, "bye.bin already existed , replace it ? [no]\n");
    EXPECT_EQ(readBytes(out / "bye.bin"), "bye data");
    EXPECT_EQ(readBytes(out / "All_Export_FileName.txt"), lines({"bye.wav:", "bye.bin"}));
    const CliRun replaced =
        run({"--yes", "project", "export", ptp.string(), "--out", out.string(), "--rows", "2,0", "--header"});
    EXPECT_EQ(replaced.exitCode, 0) << replaced.err;
    EXPECT_EQ(replaced.out, "exported 2 file(s) to " + out.string() + "\n");
    EXPECT_EQ(readBytes(out / "bye.bin"), encodedFile("bye data"));
    EXPECT_EQ(readBytes(out / "hello1.bin"), encodedFile("hello data"));
}

TEST_F(ExportCommand, MistakesAreRefusedAndWriteNothing)
{
    const FolderSnapshot before = snapshot(temp.path());
    const CliRun deep = run({"--json", "project", "export", ptp.string(), "--out", (out / "a").string()});
    EXPECT_EQ(deep.exitCode, 1);
    const Json answer = Json::parse(deep.out);
    EXPECT_EQ(answer["messages"], Json::parse(R"([{"text": "It is a wrong path !"}])"));
    EXPECT_EQ(answer["index"], nullptr);

    const CliRun noRow = run({"project", "export", ptp.string(), "--out", out.string(), "--rows", "0,3"});
    EXPECT_EQ(noRow.exitCode, 1);
    EXPECT_NE(noRow.err.find("no row 3: the project has 3 row(s)"), std::string::npos) << noRow.err;
    EXPECT_EQ(run({"project", "export", ptp.string(), "--out", out.string(), "--rows", "1,x"}).exitCode, 2);
    EXPECT_EQ(run({"project", "export", ptp.string()}).exitCode, 2);
    EXPECT_EQ(snapshot(temp.path()), before);
}

// The firmware formats are written from what the export itself wrote, with
// each row's bit rate and its header's sample rate, and report their sizes.
TEST_F(ExportCommand, TheImageFormatCarriesTheExportedDataAndItsSettings)
{
    EXPECT_EQ(
        run({"project", "export", ptp.string(), "--out", out.string(), "--format", "image", "--align", "3"}).exitCode,
        2);
    const CliRun image = run({"--json", "project", "export", ptp.string(), "--out", out.string(), "--format", "image",
                              "--name", "prompts", "--align", "8"});
    ASSERT_EQ(image.exitCode, 0) << image.out << image.err;
    const Json answer = Json::parse(image.out);
    EXPECT_EQ(answer["firmware"], Json::array({(out / "prompts.bin").string()}));
    EXPECT_EQ(answer["summary"], Json::parse(R"({"items": 2, "dataBytes": 18, "totalBytes": 72})"));
    const std::string bin = readBytes(out / "prompts.bin");
    ASSERT_EQ(bin.size(), 72u);
    // hello data at 48 (after 16 + 2 x 16 bytes), bye data at the next multiple of 8.
    EXPECT_EQ(bin.substr(16, 16), std::string("\x30\0\0\0\x0a\0\0\0\x40\x1f\0\0\x80\x3e\0\0", 16));
    EXPECT_EQ(bin.substr(48, 10), "hello data");
    EXPECT_EQ(bin.substr(58, 6), std::string(6, '\xff'));
    EXPECT_EQ(bin.substr(64, 8), "bye data");
}
