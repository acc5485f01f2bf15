#include "common/messages.h"
#include "project/project_document.h"
#include "project/project_file_reader.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

using namespace kestrelon;
using kestrelon::test::ScriptedPort;

namespace {

const char* const kHead = "# Begin Project\n\n# Begin Files\n";

// Reads `text` as the project file "p.ptp" of a folder with no waves in it;
// every missing-file question is answered Cancel, so every source is kept.
struct Read {
    explicit Read(const std::string& text)
        : port([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; })
    {
        ok = doc.openBytes(text, dir / "p.ptp", port);
    }
    // Each item, in read order, as "name flags-in-hex ^parent's-index" ("^-" at the top level).
    std::vector<std::string> shape() const
    {
        const auto& all = doc.files();
        std::vector<std::string> out;
        for (const ProjectItem* item : all) {
            const auto parent = std::find(all.begin(), all.end(), item->parent()) - all.begin();
            std::ostringstream line;
            line << item->name() << ' ' << std::hex << item->flags() << " ^"
                 << (item->parent() ? std::to_string(parent) : "-");
            out.push_back(line.str());
        }
        return out;
    }
    const ProjectItem& item(size_t i) const { return *doc.files().at(i); }

    test::TempDir dir;
    RecordingPort port;
    ProjectDocument doc;
    bool ok = false;
};

using Names = std::vector<std::string>;

} // namespace

TEST(ProjectFileReader, FindsProjectAndFilesByCaseInsensitivePrefix)
{
    Read lower("junk before\n# begin project\n# BEGIN FILES and more\n"
               "# begin group \"G\"\nid=gid\nparam=4003\n"
               "# BEGIN SOURCE FILE\nsource=Files\\a.wav\nid=a.wav\nparam=8\n# end source file\n"
               "# END GROUPING\n# begin source filex\nSource=b.wav\n# End Files\n");
    ASSERT_TRUE(lower.ok);
    // "# END GROUPING" closed the group; b.wav without a PARAM= line is a top-level source.
    EXPECT_EQ(lower.shape(), (Names{"G 4003 ^-", "Files\\a.wav 8 ^0", "b.wav 9 ^-"}));
    EXPECT_EQ(lower.item(0).id(), "gid");

    EXPECT_FALSE(Read("").ok);
    EXPECT_FALSE(Read("# End Project\n# Begin Project\n# Begin Files\n").ok);
    EXPECT_FALSE(Read("# Begin Project\n# End Files\n# Begin Files\n").ok);
    EXPECT_FALSE(Read("# Begin Project\n\n").ok);
    EXPECT_FALSE(Read("# Begin Projec\n# Begin Files\n").ok); // shorter than the keyword
    EXPECT_TRUE(Read("# Begin Project\n# Begin Files").ok); // no End Files: the file's end closes it
}

TEST(ProjectFileReader, GroupLineTakesItsNameAndExactlyTwoMoreLines)
{
    Read r(std::string(kHead) + "# Begin Group \"Voices\"\nID=v\nPARAM=4002\n"
                                "# Begin Group \"Voices\n" // no closing quote: still loses a character
                                "PARAM=7\n# Begin Source File\n" // its two lines: no ID= first, no PARAM= second
                                "SOURCE=Files\\swallowed.wav\n# End Source File\n"
                                "# Begin Group \"\"\n# End Group\n# End Group\n" // consumed as its two lines
                                "# Begin Group\n\n\n" // too short for a name
                                "# End Group\n# End Group\n# End Group\n# End Group\n# End Group\n"
                                "# Begin Source File\nSOURCE=Files\\top.wav\n# End Source File\n"
                                "# End Files\n");
    ASSERT_TRUE(r.ok);
    // The swallowed "# Begin Source File" leaves its SOURCE= line outside any block, where it means nothing.
    // The "# End Group" lines after "" were its two lines; surplus ones did no harm.
    EXPECT_EQ(r.shape(), (Names{"Voices 4002 ^-", "Voice 2 ^0", " 2 ^1", " 2 ^2", "Files\\top.wav 9 ^-"}));
    EXPECT_EQ(r.item(0).id(), "v");
    EXPECT_EQ(r.item(1).id(), "");
}

TEST(ProjectFileReader, SourceBlocksEndAtEndSourceEndGroupOrEndFiles)
{
    Read r(std::string(kHead) +
           "# Begin Group \"G\"\nID=G\nPARAM=3\n"
           "# Begin Source File\nPARAM=4\nID=early\nSOURCE=.\\Files\\a.wav\nID=a.wav\n"
           "# Begin EditInfo\nAlgoName=Adpcm\nFileName=ignored\nMultiSelect=-12abc\n# End EditInfo\n"
           "# Begin EditInfo\nMultiSelect=x\n# END EDITINFO\n"
           "# End Group\n" // ends the block and the group
           "# Begin Source File\nSOURCE=Files\\a.wav\nSOURCE=.\\.\\b.wav\nPARAM=ff\nPARAM=zz\n"
           "# End Files\n" // ends only the block
           "# Begin Group \"After\"\nID=\nPARAM=3\n# End Group\n"
           "# End Files\n"
           "# Begin Group \"Never\"\nID=\nPARAM=3\n# End Group\n");
    ASSERT_TRUE(r.ok);
    // PARAM= before SOURCE= belongs to no item; the last item made takes PARAM=, junk hex changes nothing.
    EXPECT_EQ(r.shape(), (Names{"G 3 ^-", "Files\\a.wav 8 ^0", "Files\\a.wav 9 ^-", ".\\b.wav ff ^-", "After 3 ^-"}));
    const ProjectItem& a = r.item(1);
    EXPECT_EQ(a.id(), "a.wav");
    ASSERT_EQ(a.records().size(), 2u);
    EXPECT_EQ(a.records()[0].fileName, "a.wav");
    EXPECT_EQ(a.records()[0].multiSelect, -12);
    EXPECT_EQ(a.records()[1].multiSelect, 0);
}

TEST(ProjectFileReader, OverLongLinesAreCutOrCarriedIntoTheNextEditInfoLine)
{
    const std::string longName(300, 'n');
    const std::string filler(255 - 11, 'e'); // fills the buffer after "EncodeName="
    Read r(std::string(kHead) + "# Begin Source File\nSOURCE=" + longName + "\nID=" + std::string(252, 'i') +
           "\n# Begin EditInfo\nEncodeName=" + filler + "DecodeName=tail\n" + "BodyName=" + std::string(400, 'b') +
           "\n# End EditInfo\n# End Source File\n# End Files\n");
    ASSERT_TRUE(r.ok);
    ASSERT_EQ(r.doc.files().size(), 1u);
    const ProjectItem& item = r.item(0);
    EXPECT_EQ(item.name(), std::string(248, 'n'));
    EXPECT_EQ(item.id(), std::string(252, 'i')); // a line of exactly 255 characters is whole
    ASSERT_EQ(item.records().size(), 1u);
    EXPECT_EQ(item.records()[0].encodeName, filler);
    EXPECT_EQ(item.records()[0].decodeName, "tail");
    EXPECT_EQ(item.records()[0].bodyName, std::string(246, 'b'));

    // The end of the file inside an over-long line: a failure before the Files
    // section, the end of a successful read inside it.
    EXPECT_FALSE(Read("# Begin Project\n" + std::string(255, 'x')).ok);
    Read inFiles(std::string(kHead) + "# Begin Group \"G\"\nID=\nPARAM=3\n" + std::string(600, 'x'));
    EXPECT_TRUE(inFiles.ok);
    EXPECT_EQ(inFiles.shape(), (Names{"G 3 ^-"}));

    // An EditInfo block the file ends in keeps its record.
    Read open(std::string(kHead) + "# Begin Source File\nSOURCE=s\n# Begin EditInfo\nBodyName=b");
    ASSERT_TRUE(open.ok);
    ASSERT_EQ(open.item(0).records().size(), 1u);
    EXPECT_EQ(open.item(0).records()[0].bodyName, "b");
}

TEST(ProjectFileReader, CrLfFilesReadLikeLfFiles)
{
    const std::string lf = std::string(kHead) +
                           "# Begin Group \"G\"\nID=G\nPARAM=3\n# Begin Source File\nSOURCE=Files\\a.wav\nID=a.wav\n"
                           "PARAM=8\n# Begin EditInfo\nBodyName=B\nMultiSelect=1\n# End EditInfo\n"
                           "# End Source File\n# End Group\n# End Files\n";
    std::string crlf;
    for (char c : lf)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    Read a(lf), b(crlf);
    ASSERT_TRUE(b.ok);
    EXPECT_EQ(b.shape(), (Names{"G 3 ^-", "Files\\a.wav 8 ^0"}));
    EXPECT_EQ(b.doc.serialize(), a.doc.serialize()); // ids, flags and records alike
}

TEST(ProjectFileReader, MissingSourcesAreAskedAboutOneByOne)
{
    test::TempDir dir;
    test::writeBytes(dir / "Files" / "here.wav", "RIFF");
    const auto path = dir / "p.ptp";
    test::writeBytes(path, std::string(kHead) +
                               "# Begin Source File\nSOURCE=.\\Files\\gone.wav\nID=gone.wav\n# End Source File\n"
                               "# Begin Source File\nSOURCE=Files\\here.wav\n# End Source File\n"
                               "# Begin Source File\nSOURCE=Files\\lost.wav\n# End Source File\n"
                               "# End Files\n");
    const auto question = [](std::string_view name) {
        return "Project file :\n" + std::string(name) +
               "\nis/are not existed! \nDo you want to delete the corresponding list item?";
    };

    ProjectDocument dropped;
    ScriptedPort port;
    port.queue(Answer::Ok);
    port.queue(Answer::Cancel);
    ASSERT_TRUE(dropped.open(path, port));
    ASSERT_EQ(port.messages().size(), 2u);
    EXPECT_EQ(port.messages()[0].text, question(".\\Files\\gone.wav"));
    EXPECT_EQ(port.messages()[0].caption, msg::kLoseFileCaption);
    EXPECT_EQ(port.messages()[1].text, question("Files\\lost.wav"));
    ASSERT_EQ(dropped.files().size(), 2u);
    EXPECT_EQ(dropped.files()[0]->name(), "Files\\here.wav");
    EXPECT_EQ(dropped.files()[1]->name(), "Files\\lost.wav");
    EXPECT_TRUE(dropped.isModified());

    ProjectDocument kept;
    ScriptedPort keep;
    keep.queue(Answer::Cancel);
    keep.queue(Answer::Cancel);
    ASSERT_TRUE(kept.open(path, keep));
    EXPECT_EQ(kept.files().size(), 3u);
    EXPECT_FALSE(kept.isModified());
}

TEST(ProjectFileReader, RefusesGroupsNestedBeyondTheLimit)
{
    std::string deep(kHead);
    for (size_t i = 0; i < kMaxGroupDepth; ++i)
        deep += "# Begin Group \"g\"\nID=\nPARAM=2\n";
    EXPECT_TRUE(Read(deep).ok);
    Read tooDeep(deep + "# Begin Group \"g\"\nID=\nPARAM=2\n");
    EXPECT_FALSE(tooDeep.ok);
    EXPECT_EQ(tooDeep.doc.files().size(), kMaxGroupDepth); // what was read is kept
}

// PARAM is hexadecimal as the C library reads it: either case, an optional
// 0x, a sign that negates modulo 2^32, saturation past 32 bits.
TEST(ProjectFileReader, ParamIsReadAsSignedHexadecimal)
{
    Read r(std::string(kHead) + "# Begin Source File\nSOURCE=Files\\a.wav\nPARAM=Ab\n# End Source File\n"
                                "# Begin Source File\nSOURCE=Files\\b.wav\nPARAM=-1\n# End Source File\n"
                                "# Begin Source File\nSOURCE=Files\\c.wav\nPARAM=0x1F9\n# End Source File\n"
                                "# Begin Source File\nSOURCE=Files\\d.wav\nPARAM=123456789\n# End Source File\n"
                                "# Begin Source File\nSOURCE=Files\\e.wav\nPARAM=-8\n# End Source File\n"
                                "# End Files\n");
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.shape(), (Names{"Files\\a.wav ab ^-", "Files\\b.wav ffffffff ^-", "Files\\c.wav 1f9 ^-",
                                "Files\\d.wav ffffffff ^-", "Files\\e.wav fffffff8 ^-"}));
}
