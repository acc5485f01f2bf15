#include "common/file_io.h"
#include "common/recording_port.h"
#include "project/project_document.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;

namespace {

std::string lines(std::initializer_list<std::string_view> all)
{
    std::string out;
    for (std::string_view line : all)
        out.append(line).append(kNativeEol);
    return out;
}

// compressionRate and itemId are never written.
EditInfoRecord record(const std::string& tag, int multiSelect)
{
    return {.fileName = tag + ".wav",
            .bodyName = "Body " + tag,
            .algoName = "Algo" + tag,
            .bitRate = "16000",
            .encodeSize = "1234",
            .compressionRate = "12",
            .decodeSize = "56789",
            .encodeName = tag + "_e.tmp",
            .renameEncode = tag + "_export.bin",
            .decodeName = tag + "_d.dfn",
            .multiSelect = multiSelect,
            .itemId = 7};
}

RecordingPort keepMissing()
{
    return RecordingPort([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; });
}

} // namespace

TEST(ProjectFileWriter, WritesTheLayoutWithBothEditInfoForms)
{
    ProjectDocument doc;
    ProjectItem* group = doc.createItem("My Voices", 3, "My Voices");
    ProjectItem* source = doc.createItem("Files\\a.wav", 8, "a.wav");
    source->records().push_back(record("a", 1));
    group->appendChild(source);
    ProjectItem* loose = doc.createItem("Files\\b.wav", 9, "b.wav");
    ProjectItem* notTop = doc.createItem("Files\\c.wav", 8, "c.wav"); // listed, but not a top-level item
    ProjectItem* plain = doc.createItem("", 1, ""); // neither group nor source
    plain->appendChild(doc.createItem("Files\\d.wav", 8, "d.wav"));
    doc.files() = {group, loose, notTop, plain};

    // Flags with letters in hexadecimal: written in lower case, as the
    // program's readers elsewhere expect.
    ProjectItem* algo = doc.createItem("Algos\\x.dll", 0xa9, "x.dll");
    algo->records().push_back(record("x", -3));
    doc.algorithms() = {algo};

    EXPECT_EQ(doc.serialize(), lines({"# Begin Project",
                                      "",
                                      "# Begin Files",
                                      "# Begin Group \"My Voices\"",
                                      "ID=My Voices",
                                      "PARAM=3",
                                      "# Begin Source File",
                                      "SOURCE=Files\\a.wav",
                                      "ID=a.wav",
                                      "PARAM=8",
                                      "# Begin EditInfo",
                                      "AlgoName=Algoa",
                                      "BodyName=Body a",
                                      "EncodeName=a_e.tmp",
                                      "EncodeSize=1234",
                                      "RenameEncode=a_export.bin",
                                      "DecodeName=a_d.dfn",
                                      "DecodeSize=56789",
                                      "EncodeBitRate=16000",
                                      "MultiSelect=1",
                                      "# End EditInfo",
                                      "# End Source File",
                                      "# End Group",
                                      "# Begin Source File",
                                      "SOURCE=Files\\b.wav",
                                      "ID=b.wav",
                                      "PARAM=9",
                                      "# End Source File",
                                      "# Begin Source File",
                                      "SOURCE=Files\\d.wav",
                                      "ID=d.wav",
                                      "PARAM=8",
                                      "# End Source File",
                                      "# End Files",
                                      "",
                                      "# Begin Algorithms",
                                      "# Begin Source File",
                                      "SOURCE=Algos\\x.dll",
                                      "ID=x.dll",
                                      "PARAM=a9",
                                      "# Begin EditInfo",
                                      "FileName=x.wav",
                                      "BodyName=Body x",
                                      "EncodeName=x_e.tmp",
                                      "EncodeSize=1234",
                                      "RenameEncode=x_export.bin",
                                      "DecodeName=x_d.dfn",
                                      "DecodeSize=56789",
                                      "EncodeBitRate=16000",
                                      "MultiSelect=-3",
                                      "# End EditInfo",
                                      "# End Source File",
                                      "# End Algorithms",
                                      "",
                                      "# End Project"}));
}

TEST(ProjectFileWriter, RichTreeSurvivesWriteReadWriteByteForByte)
{
    test::TempDir dir;
    ProjectDocument doc;
    ProjectItem* voices = doc.createItem("Voices", 3, "Voices");
    ProjectItem* folder = doc.createItem("Numbers", 0x4002, "Numbers");
    ProjectItem* deeper = doc.createItem("Deeper \"quoted\"", 2, "deep-id");
    ProjectItem* one = doc.createItem("Files\\one.wav", 8, "one.wav");
    one->records() = {record("one", 0), record("one-b", 1)};
    ProjectItem* two = doc.createItem("Files\\two.wav", 0x10008, "two.wav"); // an unknown bit survives
    two->records() = {record("two", 2147483647)};
    ProjectItem* empty = doc.createItem("", 3, "");
    voices->appendChild(folder);
    folder->appendChild(deeper);
    deeper->appendChild(one);
    voices->appendChild(two);
    ProjectItem* top = doc.createItem("Files\\top.wav", 9, "top.wav");
    top->records() = {record("top", -2147483647 - 1)};
    doc.files() = {top, voices, empty};
    doc.setModified(true);

    const auto path = dir / "rich.ptp";
    ASSERT_TRUE(doc.save(path));
    EXPECT_FALSE(doc.isModified());
    const std::string first = test::readBytes(path);

    ProjectDocument again;
    RecordingPort port = keepMissing();
    ASSERT_TRUE(again.open(path, port));
    EXPECT_EQ(port.messages().size(), 3u); // none of the waves exist; every one is kept
    EXPECT_FALSE(again.isModified());

    // Read order is file order, every depth; unwritten fields come back as defaults.
    ASSERT_EQ(again.files().size(), 7u);
    EXPECT_EQ(again.files()[3]->parent()->parent(), again.files()[1]);
    const EditInfoRecord& rec = again.files()[4]->records().at(1);
    EXPECT_EQ(rec.fileName, "one.wav"); // the source's id, not the written-out name
    EXPECT_EQ(rec.compressionRate, "");
    EXPECT_EQ(rec.itemId, -1);
    again.rebuildFilesList();
    EXPECT_EQ(again.serialize(), first);
}

TEST(ProjectFileWriter, FailedSaveChangesNothing)
{
    test::TempDir dir;
    ProjectDocument doc;
    doc.files() = {doc.createItem("G", 3, "G")};
    ASSERT_TRUE(doc.save(dir / "kept.ptp"));
    doc.setModified(true);
    EXPECT_FALSE(doc.save(dir / "no such folder" / "x.ptp"));
    EXPECT_TRUE(doc.isModified());
    EXPECT_EQ(doc.path(), dir / "kept.ptp");
}
