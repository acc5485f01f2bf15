// Export on real project folders: a project file with encoded rows is opened
// in a session, its interim files are made with the packer, and the folder the
// export writes is read back byte for byte.
#include "export/export.h"

#include "codec/encoded_header.h"
#include "codec/interim_packer.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kestrelon;
using test::readBytes;
using test::writeBytes;
namespace fs = std::filesystem;

namespace {

std::string str(std::string_view text)
{
    return std::string(text);
}

struct Row {
    std::string source; // file name in Files
    std::string encodeName;
    std::string renameEncode;
    std::string decodeName;
};

// One top-level source per run of rows with the same source, with their records.
std::string projectText(const std::vector<Row>& rows)
{
    std::string text = "# Begin Project\n\n# Begin Files\n";
    for (size_t i = 0; i < rows.size(); ++i) {
        const Row& row = rows[i];
        if (i == 0 || row.source != rows[i - 1].source)
            text += std::string(i ? "# End Source File\n" : "") + "# Begin Source File\nSOURCE=Files\\" + row.source +
                    "\nID=" + row.source + "\nPARAM=9\n";
        text += "# Begin EditInfo\nAlgoName=adpcm\nBodyName=B1\nEncodeName=" + row.encodeName +
                "\nEncodeSize=10\nRenameEncode=" + row.renameEncode + "\nDecodeName=" + row.decodeName +
                "\nDecodeSize=\nEncodeBitRate=16000\nMultiSelect=0\n# End EditInfo\n";
    }
    return text + "# End Source File\n# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n# End Project\n";
}

// An unpacked encoded file: the header and `data`.
std::string encodedFile(const std::string& data)
{
    const EncodedHeaderBytes header = makeEncodedHeader();
    return std::string(header.begin(), header.end()) + data;
}

std::string lines(const std::vector<std::string>& each)
{
    std::string text;
    for (const std::string& line : each)
        text += line + std::string(kNativeEol);
    return text;
}

class ExportTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        session.closeProject();
        fs::current_path(start);
    }

    // Writes and opens the project; interim files are planted afterwards,
    // since opening makes the Temp folder.
    void open(const std::vector<Row>& rows)
    {
        fs::create_directories(project / "Files");
        for (const Row& row : rows)
            writeBytes(project / "Files" / row.source, "RIFF");
        writeBytes(project / "Demo.ptp", projectText(rows));
        ASSERT_TRUE(session.openProject(project / "Demo.ptp"));
        listRows = MainList::fromDocument(session.document()).rows();
    }

    void plantInterim(const fs::path& folder, const std::string& name, const std::string& unpacked)
    {
        writeBytes(folder / name, *packInterim(unpacked));
    }

    ExportOutcome run(ExportKind kind, const fs::path& folder, bool header, std::vector<bool> selection = {})
    {
        MainList shown;
        for (std::size_t i = 0; i < listRows.size(); ++i)
            shown.addRow(listRows[i], i < selection.size() && selection[i]);
        return exportRows(session, shown, {folder.string(), header}, kind, port);
    }

    fs::path start = fs::current_path();
    test::TempDir temp;
    fs::path project = temp / "Demo";
    fs::path out = temp / "out";
    test::ScriptedPort port;
    ProjectSession session{port, nullptr, nullptr, start};
    std::vector<ListRow> listRows;
};

} // namespace

TEST_F(ExportTest, HeaderIsKeptOrStrippedAndTheIndexGroupsRowsBySource)
{
    // In this list bye.wav's row lies between hello.wav's two, the second of
    // which was never encoded; quiet.wav's row, never encoded and never named,
    // is listed all the same, with an empty name. SAF1's
    // decoded wave bears the name its scratch file would have: it must survive.
    open({{"hello.wav", "SAF1.tmp", "hello1.bin", "SAF1.dfn"},
          {"hello.wav", "", "hello2.bin", ""},
          {"bye.wav", "SAF2.tmp", "bye.bin", ""},
          {"quiet.wav", "", "", ""}});
    listRows = {listRows[0], listRows[2], listRows[1], listRows[3]};
    const std::string hello1 = encodedFile("first hello");
    plantInterim(session.tempFolder(), "SAF1.tmp", hello1);
    plantInterim(project, "SAF2.tmp", encodedFile("bye")); // where Close leaves it
    writeBytes(session.tempFolder() / "SAF1.dfn", "decoded wave");

    const ExportOutcome kept = run(ExportKind::All, out, true);
    EXPECT_TRUE(kept.ok);
    EXPECT_EQ(port.texts(), std::vector<std::string>{});
    EXPECT_EQ(readBytes(out / "hello1.bin"), hello1);
    EXPECT_EQ(kept.exported, (std::vector<fs::path>{out / "hello1.bin", out / "bye.bin"}));
    EXPECT_EQ(readBytes(out / str(kExportIndexFileName)),
              lines({"hello.wav:", "hello1.bin", "hello2.bin", "bye.wav:", "bye.bin", "quiet.wav:", ""}));

    // Stripped: exactly the bytes after the header. A row given no export
    // name goes out under its interim file's name.
    listRows[1].record().renameEncode.clear();
    const fs::path bare = temp / "bare";
    EXPECT_TRUE(run(ExportKind::Selected, bare, false, {true, true, false, false}).ok);
    EXPECT_EQ(readBytes(bare / "hello1.bin"), "first hello");
    EXPECT_EQ(readBytes(bare / "SAF2.tmp"), "bye");
    EXPECT_EQ(readBytes(bare / str(kExportIndexFileName)), lines({"hello.wav:", "hello1.bin", "bye.wav:", "SAF2.tmp"}));

    // Existing targets are asked about one by one; No skips only that row,
    // and the index still names every visited row.
    port.queue(Answer::No);
    port.queue(Answer::Yes);
    EXPECT_TRUE(run(ExportKind::All, bare, true).ok); // declining is no failure
    EXPECT_EQ(port.texts(), (std::vector<std::string>{"The export file hello1.bin already existed , replace it ?",
                                                      "The export file SAF2.tmp already existed , replace it ?"}));
    EXPECT_EQ(readBytes(bare / "hello1.bin"), "first hello");
    EXPECT_EQ(readBytes(bare / "SAF2.tmp"), encodedFile("bye"));
    EXPECT_EQ(readBytes(bare / str(kExportIndexFileName)),
              lines({"hello.wav:", "hello1.bin", "hello2.bin", "bye.wav:", "SAF2.tmp", "quiet.wav:", ""}));

    // The scratch files are gone; the decoded wave and the interim file stay.
    EXPECT_EQ(std::distance(fs::directory_iterator(session.tempFolder()), {}), 2);
    EXPECT_TRUE(fs::exists(session.tempFolder() / "SAF1.tmp"));
    EXPECT_EQ(readBytes(session.tempFolder() / "SAF1.dfn"), "decoded wave");
}

TEST_F(ExportTest, DataWithoutTheMagicOrDamagedIsRefusedAndItsScratchFileRemoved)
{
    open({{"hello.wav", "SAF1.tmp", "hello1.bin", ""},
          {"bye.wav", "SAF2.tmp", "bye.bin", ""},
          {"odd.wav", "SAF3.tmp", "odd.bin", ""},
          {"gone.wav", "SAF4.tmp", "gone.bin", ""}});
    std::string noMagic = encodedFile("data");
    noMagic[1] = 0;
    plantInterim(session.tempFolder(), "SAF1.tmp", noMagic);
    writeBytes(session.tempFolder() / "SAF2.tmp", "not packed at all");
    plantInterim(session.tempFolder(), "SAF3.tmp", encodedFile("").substr(0, 20)); // magic, but no whole header

    const ExportOutcome outcome = run(ExportKind::All, out, false);
    EXPECT_FALSE(outcome.ok);
    const std::string suffix(msg::kNotACorrectEncodedFile);
    EXPECT_EQ(port.texts(), (std::vector<std::string>{"\"SAF1.tmp\"" + suffix, "\"SAF2.tmp\"" + suffix,
                                                      "\"SAF3.tmp\"" + suffix, "\"SAF4.tmp\"" + suffix}));
    EXPECT_TRUE(outcome.exported.empty());
    for (const char* name : {"hello1.bin", "bye.bin", "odd.bin", "gone.bin"})
        EXPECT_FALSE(fs::exists(out / name));
    for (const char* name : {"SAF1.dfn", "SAF2.dfn", "SAF3.dfn", "SAF4.dfn"})
        EXPECT_FALSE(fs::exists(session.tempFolder() / name));
    EXPECT_TRUE(fs::exists(out / str(kExportIndexFileName)));

    // The magic is only tested when the header is stripped.
    port.clear();
    const fs::path kept = temp / "kept";
    EXPECT_EQ(run(ExportKind::Selected, kept, true, {true}).exported, std::vector<fs::path>{kept / "hello1.bin"});
    EXPECT_EQ(readBytes(kept / "hello1.bin"), noMagic);
}

TEST_F(ExportTest, FolderChecksAndHowMuchOfAMissingFolderIsMade)
{
    open({{"hello.wav", "SAF1.tmp", "hello1.bin", ""}});
    plantInterim(session.tempFolder(), "SAF1.tmp", encodedFile("hello"));

    // No root: refused before anything is made, whichever command.
    for (ExportKind kind : {ExportKind::All, ExportKind::Selected})
        EXPECT_FALSE(run(kind, "relative/out", false, {true}).ok);
    EXPECT_FALSE(fs::exists(project / "relative"));

    // Export-all makes the last level only; export-selected the whole chain.
    const fs::path deep = temp / "a" / "b";
    EXPECT_FALSE(run(ExportKind::All, deep, false).ok);
    EXPECT_FALSE(fs::exists(temp / "a"));
    EXPECT_TRUE(run(ExportKind::All, temp / "a", false).ok);
    EXPECT_EQ(readBytes(temp / "a" / "hello1.bin"), "hello");
    const fs::path deeper = temp / "c" / "d" / "e";
    EXPECT_TRUE(run(ExportKind::Selected, deeper, false, {true}).ok);
    EXPECT_EQ(readBytes(deeper / "hello1.bin"), "hello");

    // A file standing where the folder should be.
    writeBytes(temp / "plain", "x");
    EXPECT_FALSE(run(ExportKind::Selected, temp / "plain", false, {true}).ok);
    EXPECT_EQ(readBytes(temp / "plain"), "x");

    const std::string wrong(msg::kWrongPath);
    EXPECT_EQ(port.texts(), (std::vector<std::string>{wrong, wrong, wrong, wrong}));
}

TEST_F(ExportTest, EventsGoBesideTheExportAsTabFilesAndTheUsersFileStays)
{
    open({{"hello.wav", "SAF1.tmp", "hello1.bin", ""},
          {"bye.wav", "SAF2.tmp", "bye.bin", ""},
          {"mute.wav", "SAF3.tmp", "mute.dat", ""},
          {"work.wav", "SAF4.tmp", "work.bin", ""},
          {"kept.wav", "SAF5.tmp", "kept.bin", ""}});
    for (const char* name : {"SAF1.tmp", "SAF2.tmp", "SAF3.tmp", "SAF4.tmp"})
        plantInterim(session.tempFolder(), name, encodedFile(name));
    plantInterim(project, "SAF5.tmp", encodedFile("SAF5.tmp"));
    const std::string beside = "[TAG_LABEL]\nLabelName=Default Label\n[SPEECH_EVNTS]\nCount=0\n";
    const std::string users = "[TAG_LABEL]\nLabelName=mine\n[SPEECH_EVNTS]\nCount=1\n[EVENT0]\nSamples=1200\nID=1\n";
    const std::string working = "[TAG_LABEL]\nLabelName=work\n";
    const std::string kept = "[TAG_LABEL]\nLabelName=kept\n";
    writeBytes(session.tempFolder() / "SAF1.evt", beside); // beside the interim file
    writeBytes(project / "Files" / "bye.evt", users); // only the user's own file
    writeBytes(session.tempFolder() / "evt" / "SAF4.evt", working); // the engine's working copy ...
    writeBytes(project / "Files" / "work.evt", "edited since"); // ... wins over the source's file
    writeBytes(project / "SAF5.evt", kept); // the engine's copy beside the kept interim

    const ExportOutcome outcome = run(ExportKind::All, out, false);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(port.texts(), std::vector<std::string>{});
    EXPECT_EQ(outcome.eventFiles,
              (std::vector<fs::path>{out / "hello1.tab", out / "bye.tab", out / "work.tab", out / "kept.tab"}));
    EXPECT_EQ(readBytes(out / "hello1.tab"), beside);
    EXPECT_FALSE(fs::exists(session.tempFolder() / "SAF1.evt")); // consumed
    EXPECT_EQ(readBytes(out / "bye.tab"), users);
    EXPECT_EQ(readBytes(project / "Files" / "bye.evt"), users);
    EXPECT_FALSE(fs::exists(out / "mute.tab"));
    EXPECT_EQ(readBytes(out / "work.tab"), working);
    EXPECT_EQ(readBytes(session.tempFolder() / "evt" / "SAF4.evt"), working);
    EXPECT_EQ(readBytes(out / "kept.tab"), kept);
    EXPECT_EQ(readBytes(project / "SAF5.evt"), kept);

    // A second export overwrites the ".tab" without asking; with the file
    // beside the interim consumed, hello's events come from the user's file.
    writeBytes(project / "Files" / "hello.evt", users);
    port.queue(Answer::Yes);
    EXPECT_TRUE(run(ExportKind::Selected, out, false, {true}).ok);
    EXPECT_EQ(port.texts(), std::vector<std::string>{"hello1.bin already existed , replace it ?"});
    EXPECT_EQ(readBytes(out / "hello1.tab"), users);
}

TEST_F(ExportTest, AnUnwritableIndexOrAnUnsafeNameIsReportedAndWrittenFilesStay)
{
    open({{"hello.wav", "SAF1.tmp", "hello1.bin", ""}, {"bye.wav", "SAF2.tmp", "..\\bye.bin", ""}});
    plantInterim(session.tempFolder(), "SAF1.tmp", encodedFile("hello"));
    plantInterim(session.tempFolder(), "SAF2.tmp", encodedFile("bye"));
    fs::create_directories(out / str(kExportIndexFileName) / "inside");

    const ExportOutcome outcome = run(ExportKind::All, out, false);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(port.texts(), (std::vector<std::string>{"\"..\\bye.bin\"" + str(msg::kExportNameInvalidSuffix),
                                                      str(msg::kExportError)}));
    EXPECT_EQ(readBytes(out / "hello1.bin"), "hello");
    EXPECT_TRUE(outcome.indexFile.empty());
    EXPECT_FALSE(fs::exists(temp / "bye.bin"));
    EXPECT_FALSE(fs::exists(out / "..\\bye.bin"));

    // Exported into the project folder under its interim file's name, a row
    // would replace the data it comes from.
    port.clear();
    listRows[0].record().renameEncode.clear();
    writeBytes(project / "SAF1.tmp", *packInterim(encodedFile("kept")));
    const std::string kept = readBytes(project / "SAF1.tmp");
    EXPECT_FALSE(run(ExportKind::Selected, project, false, {true}).ok);
    EXPECT_EQ(port.texts(), std::vector<std::string>{"\"SAF1.tmp\"" + str(msg::kExportWorkingFileSuffix)});
    EXPECT_EQ(readBytes(project / "SAF1.tmp"), kept);

    // So would a row exported under another row's decoded wave's name.
    port.clear();
    listRows[0].record().decodeName = "SAF9.dfn";
    listRows[1].record().renameEncode = "saf9.DFN";
    writeBytes(project / "SAF9.dfn", "decoded wave");
    EXPECT_FALSE(run(ExportKind::Selected, project, false, {false, true}).ok);
    EXPECT_EQ(port.texts(), std::vector<std::string>{"\"saf9.DFN\"" + str(msg::kExportWorkingFileSuffix)});
    EXPECT_EQ(readBytes(project / "SAF9.dfn"), "decoded wave");
}

TEST_F(ExportTest, NamesThatWouldMeetTheIndexOrAnotherRowsEventsAreRefused)
{
    open({{"a.wav", "SAF1.tmp", "hello.adp", ""},
          {"b.wav", "SAF2.tmp", "hello.bin", ""},
          {"c.wav", "SAF3.tmp", "all_export_filename.TXT", ""},
          {"d.wav", "SAF4.tmp", "same.adp", ""},
          {"d.wav", "SAF5.tmp", "same.bin", ""}});
    for (const char* name : {"SAF1.tmp", "SAF2.tmp", "SAF3.tmp", "SAF4.tmp", "SAF5.tmp"})
        plantInterim(session.tempFolder(), name, encodedFile(name));
    for (const char* source : {"a", "b", "d"})
        writeBytes(project / "Files" / (std::string(source) + ".evt"), std::string("[TAG_LABEL]\nLabelName=") + source);

    const ExportOutcome outcome = run(ExportKind::All, out, false);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(port.texts(),
              (std::vector<std::string>{str(msg::kExportEventsClashPrefix) + "hello.bin" +
                                            str(msg::kExportEventsClashMiddle) + (out / "hello.tab").string() + " !",
                                        "\"all_export_filename.TXT\"" + str(msg::kExportNameIsIndexSuffix)}));
    // The first row's events stay; rows of one source share theirs.
    EXPECT_EQ(readBytes(out / "hello.tab"), "[TAG_LABEL]\nLabelName=a");
    EXPECT_EQ(readBytes(out / "hello.bin"), "SAF2.tmp");
    EXPECT_EQ(outcome.eventFiles, (std::vector<fs::path>{out / "hello.tab", out / "same.tab"}));
    EXPECT_EQ(readBytes(out / "same.tab"), "[TAG_LABEL]\nLabelName=d");
    EXPECT_NE(readBytes(outcome.indexFile).find("c.wav:"), std::string::npos);
}
