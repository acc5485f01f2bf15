// The checks before encoded data goes to the board, met one at a time as a
// row is put right, and the sample-rate question for one file and for several.
#include "bodies/body_settings.h"
#include "codec/encoded_header.h"
#include "codec/interim_packer.h"
#include "playback/board_items.h"
#include "project/edit_info_record.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/sound.h"
#include "support/temp_dir.h"
#include "wave/wave_file.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using kestrelon::test::ScriptedPort;
using kestrelon::test::writeBytes;
namespace fs = std::filesystem;

namespace {

std::string encoded(const std::string& speech, std::uint32_t sampleRate)
{
    EncodedHeaderFields fields;
    fields.sampleRate = sampleRate;
    const EncodedHeaderBytes header = makeEncodedHeader(fields);
    return *packInterim(std::string(header.begin(), header.end()) + speech);
}

} // namespace

TEST(BoardItems, EachCheckSaysWhyInTurnAndTheSampleRateOnlyAsks)
{
    const test::TempDir temp;
    const fs::path project = temp / "Demo";
    fs::create_directories(project / "Files");
    writeBytes(project / "Demo.ptp",
               "# Begin Project\n\n# Begin Files\n# Begin Source File\nSOURCE=Files\\hello.wav\nID=hello.wav\n"
               "PARAM=9\n# Begin EditInfo\nAlgoName=Speex\nBodyName=\nEncodeName=\nEncodeSize=\n"
               "RenameEncode=\nDecodeName=\nDecodeSize=\nEncodeBitRate=8000\nMultiSelect=0\n"
               "# End EditInfo\n# End Source File\n# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n"
               "# End Project\n");
    ASSERT_TRUE(writeWav16(project / "Files" / "hello.wav", std::vector<std::int16_t>(400, 9), 11025));
    const fs::path start = fs::current_path();
    ScriptedPort port;
    ProjectSession session{port, nullptr, nullptr, start};
    ASSERT_TRUE(session.openProject(project / "Demo.ptp"));
    EditInfoRecord& row = session.document().files().front()->records().front();
    BodySettings bodies;
    BodyInfo body;
    body.name = "Chip";
    body.sampleRateMin = 8000;
    body.sampleRateMax = 16000;
    body.currentVolume = 12;
    body.algorithms.push_back(BodyAlgoInfo{"Pcm", "ALGO_PCM", {}, {}, {"128000"}, 0});
    bodies.bodies().push_back(body);
    const auto refusal = [&] {
        port.clear();
        EXPECT_FALSE(boardItemsFor(session, {&row}, bodies, port));
        return port.texts().size() == 1 ? port.texts().front() : std::string("(none)");
    };

    EXPECT_EQ(refusal(), "Do not have encode file !");
    row.encodeName = "SAF1.tmp";
    EXPECT_EQ(refusal(), "Do not have body !");
    row.bodyName = "Nobody";
    EXPECT_EQ(refusal(), "Do not have body !");
    row.bodyName = "Chip";
    EXPECT_EQ(refusal(), "Speex do not support !");
    row.algoName = "Pcm";
    fs::rename(project / "Files" / "hello.wav", project / "hello.wav");
    EXPECT_EQ(refusal(), "hello.wav do not exist in project folder !");
    fs::rename(project / "hello.wav", project / "Files" / "hello.wav");
    EXPECT_EQ(refusal(), "SAF1.tmp does not exist in the project folder !");
    writeBytes(project / "SAF1.tmp", *packInterim("no header at all, though long enough to hold one......"));
    EXPECT_EQ(refusal(), "hello.wav is not a correct encode file !");

    writeBytes(project / "SAF1.tmp", encoded("speech", 11025));
    port.clear();
    std::optional<std::vector<BoardItem>> items = boardItemsFor(session, {&row}, bodies, port);
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 1u);
    EXPECT_EQ(items->front().data, "speech");
    EXPECT_EQ(items->front().sampleRate, 11025u);
    EXPECT_EQ(items->front().volume, 12);
    EXPECT_TRUE(port.texts().empty());

    // Nothing goes to the board while the project is busy, and nothing is said.
    session.setBusy(true);
    EXPECT_EQ(refusal(), "(none)");
    session.setBusy(false);

    // Beyond the body's range: one file is asked about by name; No plays nothing.
    bodies.bodies().front().sampleRateMax = 11024;
    port.queue(Answer::No);
    EXPECT_EQ(refusal(), "The sample rate of \"hello.wav\" exceeds the range of the body setting of "
                         "Kestrelon!\nDo you still want to play?");
    port.queue(Answer::Yes);
    EXPECT_TRUE(boardItemsFor(session, {&row}, bodies, port));

    // Several files: one question, the files in a list under its heading.
    port.clear();
    port.queue(Answer::Yes);
    items = boardItemsFor(session, {&row, &row}, bodies, port);
    ASSERT_TRUE(items);
    EXPECT_EQ(items->size(), 2u);
    EXPECT_EQ(port.texts(), std::vector<std::string>{"The sample rate of the following file(s) exceed the range of "
                                                     "the body setting of Kestrelon!\nhello.wav\nhello.wav\n"
                                                     "Do you still want to play?"});
    session.closeProject();
    fs::current_path(start);
}
