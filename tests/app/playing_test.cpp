// Playing from the workbench, through the real PC player over SDL's disk
// driver: what reached the "device" is what the row's cell plays.
#include "app/command_table.h"
#include "app/dialogs/body_information_dialog.h"
#include "app/main_window.h"
#include "app/playback/play_commands.h"
#include "app/playback/play_sentence_dialog.h"
#include "app/views/list_columns.h"
#include "app/views/main_view.h"
#include "app/waveform/wave_pane.h"
#include "app/waveform/wave_window.h"
#include "app_support.h"
#include "bodies/body_settings.h"
#include "codec/encoded_header.h"
#include "codec/interim_packer.h"
#include "support/board_simulator.h"
#include "support/files.h"
#include "support/sound.h"
#include "wave/wave_file.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QTreeWidget>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <thread>

#ifdef KESTRELON_PROGRAM_DIR
namespace kestrelon {

// A project of one source, "hello.wav", holding `sound`, open in a frame whose
// PC player writes to SDL's disk device.
class PlayingInTheWorkbench : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("SDL_AUDIODRIVER", "disk", 1);
        setenv("SDL_DISKAUDIOFILE", device.string().c_str(), 1);
        setenv("SDL_DISKAUDIODELAY", "0", 1);
        ASSERT_TRUE(bodies.load(program / "KestrelonBodySetting.dat", program, port));
    }

    void openProject(const std::vector<std::int16_t>& sound, const std::string& encodeName = {})
    {
        std::filesystem::create_directories(dir / "Demo" / "Files");
        ASSERT_TRUE(writeWav16(dir / "Demo" / "Files" / "hello.wav", sound, 8000));
        test::writeBytes(
            dir / "Demo" / "Demo.ptp",
            "# Begin Project\n\n# Begin Files\n# Begin Source File\nSOURCE=Files\\hello.wav\nID=hello.wav\n"
            "PARAM=9\n# Begin EditInfo\nAlgoName=Pcm\nBodyName=KS-1 Voice\nEncodeName=" +
                encodeName +
                "\nEncodeSize=\n"
                "RenameEncode=\nDecodeName=\nDecodeSize=\nEncodeBitRate=128000\nMultiSelect=0\n"
                "# End EditInfo\n# End Source File\n# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n"
                "# End Project\n");
        m_frame = std::make_unique<MainWindow>(FrameOptions{program, dir / "config", &port, &chooser}, &bodies);
        ASSERT_TRUE(m_frame->openProject(dir / "Demo" / "Demo.ptp"));
    }

    // What reached the device.
    std::vector<std::int16_t> heard() const
    {
        std::vector<std::int16_t> samples;
        EXPECT_TRUE(unpackPcm16(test::readBytes(device), samples));
        return samples;
    }

    test::TempDir dir;
    const std::filesystem::path device = dir / "device.raw";
    const std::filesystem::path program = KESTRELON_PROGRAM_DIR;
    test::ScriptedPort port;
    test::ScriptedChooser chooser;
    BodySettings bodies;
    std::unique_ptr<MainWindow> m_frame;
};

TEST_F(PlayingInTheWorkbench, AClickOnAPlayCellPlaysItsRowAndTheCellShowsIt)
{
    std::vector<std::int16_t> tone(4000);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<std::int16_t>(7000 * std::sin(0.3 * double(i)));
    ASSERT_NO_FATAL_FAILURE(openProject(tone));
    MainWindow& frame = *m_frame;
    EXPECT_FALSE(frame.action(cmd::kPlay)->isEnabled()); // no player yet
    frame.loadPlayers();
    EXPECT_TRUE(port.texts().empty());

    QTableView* table = frame.mainView()->table();
    const QModelIndex original = table->model()->index(0, int(ListColumn::OriginalPlay));
    const QModelIndex decoded = table->model()->index(0, int(ListColumn::DecodePlay));
    EXPECT_EQ(original.data().toString(), QStringLiteral("\u25B6"));
    EXPECT_EQ(decoded.data().toString(), QString()); // nothing decoded: nothing to click
    emit table->clicked(decoded);
    EXPECT_FALSE(frame.playCommands()->playing());

    emit table->clicked(original);
    EXPECT_EQ(original.data().toString(), QStringLiteral("\u25A0"));
    EXPECT_TRUE(frame.action(cmd::kStop)->isEnabled());
    for (int i = 0; i < 400 && frame.playCommands()->playing(); ++i) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_FALSE(frame.playCommands()->playing());
    EXPECT_EQ(original.data().toString(), QStringLiteral("\u25B6"));
    EXPECT_FALSE(frame.action(cmd::kStop)->isEnabled());
    EXPECT_TRUE(test::beginsWithSound(heard(), tone));
    EXPECT_TRUE(port.texts().empty());
}

TEST_F(PlayingInTheWorkbench, AWaveformWindowPlaysItsSelectionAndFollowsIt)
{
    std::vector<std::int16_t> ramp(6000);
    for (std::size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<std::int16_t>(i * 5 - 15000);
    ASSERT_NO_FATAL_FAILURE(openProject(ramp));
    MainWindow& frame = *m_frame;
    frame.loadPlayers();
    QTableView* table = frame.mainView()->table();
    table->setCurrentIndex(table->model()->index(0, 0));
    frame.updateCommands();
    ASSERT_TRUE(frame.action(cmd::kShowWaveform)->isEnabled());
    frame.runCommand(cmd::kShowWaveform);
    const auto windows = frame.findChildren<WaveWindow*>();
    ASSERT_EQ(windows.size(), 1);
    WaveWindow& window = *windows.front();
    EXPECT_EQ(window.decodedPane(), nullptr); // not decoded: the source alone
    WaveView& view = window.originalPane()->view();
    view.select(1000, 2500);

    std::vector<std::int64_t> positions;
    QObject::connect(window.originalPane(), &WavePane::playStateChanged, [&] {
        if (view.playPosition() >= 0)
            positions.push_back(view.playPosition());
    });
    window.action(QStringLiteral("&Play"))->trigger();
    EXPECT_TRUE(window.originalPane()->playing());
    for (int i = 0; i < 400 && window.originalPane()->playing(); ++i) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_FALSE(window.originalPane()->playing());
    EXPECT_EQ(view.playPosition(), -1); // the line goes with the sound
    EXPECT_TRUE(test::beginsWithSound(heard(), std::vector<std::int16_t>(ramp.begin() + 1000, ramp.begin() + 2500)));
    ASSERT_FALSE(positions.empty());
    for (const std::int64_t at : positions) {
        EXPECT_GE(at, 1000);
        EXPECT_LE(at, 2500);
    }
    EXPECT_TRUE(port.texts().empty());
    frame.runCommand(cmd::kCloseProject);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(frame.findChildren<WaveWindow*>().empty()); // the project's windows go with it
}

// A waveform window follows the project by itself: deleting its source from
// the Files tree closes it, and a No to the question leaves it open.
TEST_F(PlayingInTheWorkbench, AWaveformWindowClosesWhenItsSourceLeavesTheTree)
{
    ASSERT_NO_FATAL_FAILURE(openProject(std::vector<std::int16_t>(4000, 300)));
    MainWindow& frame = *m_frame;
    QTableView* table = frame.mainView()->table();
    table->setCurrentIndex(table->model()->index(0, 0));
    frame.runCommand(cmd::kShowWaveform);
    ASSERT_EQ(frame.findChildren<WaveWindow*>().size(), 1);

    WorkspaceTree& tree = *frame.workspaceTree();
    const auto deleteSource = [&](Answer answer) {
        tree.selection().selectOnly(tree.itemsWithId("hello.wav"));
        port.queue(answer);
        frame.runCommand(cmd::kDeleteFiles);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    deleteSource(Answer::No);
    EXPECT_EQ(frame.findChildren<WaveWindow*>().size(), 1);
    deleteSource(Answer::Yes);
    EXPECT_TRUE(frame.findChildren<WaveWindow*>().empty());
    EXPECT_EQ(table->model()->rowCount(), 0);
}

TEST_F(PlayingInTheWorkbench, TheBoardCellSendsTheRowsEncodingToTheBoard)
{
    const std::filesystem::path link = dir / "board0";
    const test::BoardSimulator board(program / "kestrelon-board-sim", link, dir / "record", {});
    setenv("KESTRELON_BOARD_PORT0", link.c_str(), 1);
    const EncodedHeaderBytes header = makeEncodedHeader();
    const std::string speech = "speech data the firmware plays";
    std::filesystem::create_directories(dir / "Demo");
    test::writeBytes(dir / "Demo" / "SAF1.tmp", *packInterim(std::string(header.begin(), header.end()) + speech));
    ASSERT_NO_FATAL_FAILURE(openProject(std::vector<std::int16_t>(800, 5), "SAF1.tmp"));
    MainWindow& frame = *m_frame;
    frame.loadPlayers();

    QTableView* table = frame.mainView()->table();
    emit table->clicked(table->model()->index(0, int(ListColumn::EncodePlay)));
    EXPECT_TRUE(frame.playCommands()->playing());
    for (int i = 0; i < 400 && frame.playCommands()->playing(); ++i) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_FALSE(frame.playCommands()->playing());
    EXPECT_EQ(test::readBytes(dir / "record" / "item-0.bin"), speech); // the data, without its header

    // With "Target Board" chosen, "&Play" sends the current row's encoding,
    // while the PC's cells still play on the PC.
    frame.runCommand(cmd::kTargetBoard);
    emit table->clicked(table->model()->index(0, int(ListColumn::OriginalPlay)));
    EXPECT_TRUE(frame.playCommands()->controller().isActive());
    frame.runCommand(cmd::kStop);
    table->setCurrentIndex(table->model()->index(0, 0));
    frame.runCommand(cmd::kPlay);
    for (int i = 0; i < 400 && frame.playCommands()->playing(); ++i) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(test::readBytes(dir / "record" / "item-1.bin"), speech);
    EXPECT_TRUE(port.texts().empty());
    unsetenv("KESTRELON_BOARD_PORT0");
}

TEST_F(PlayingInTheWorkbench, APlaySentencePlaysItsEntriesOnTheBoardInOrder)
{
    const std::filesystem::path link = dir / "board0";
    const test::BoardSimulator board(program / "kestrelon-board-sim", link, dir / "record", {});
    setenv("KESTRELON_BOARD_PORT0", link.c_str(), 1);
    const EncodedHeaderBytes header = makeEncodedHeader();
    const std::string speech = "a word of speech";
    std::filesystem::create_directories(dir / "Demo");
    test::writeBytes(dir / "Demo" / "SAF1.tmp", *packInterim(std::string(header.begin(), header.end()) + speech));
    ASSERT_NO_FATAL_FAILURE(openProject(std::vector<std::int16_t>(800, 5), "SAF1.tmp"));
    MainWindow& frame = *m_frame;
    frame.loadPlayers();

    PlayList& list = frame.companions().playList();
    PlaySentenceDialog dialog(frame.session(), list, *frame.playCommands(), frame.bodies(), port, &frame);
    dialog.addAll();
    dialog.addAll(); // the same row may stand twice
    dialog.rowsView()->topLevelItem(0)->setSelected(true);
    dialog.addSelected();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_TRUE(frame.session().document().isModified());
    dialog.listView()->topLevelItem(1)->setSelected(true);
    dialog.removeSelected();
    ASSERT_EQ(list.size(), 2u);

    dialog.setMode(PlaySentenceDialog::Mode::Encoded);
    dialog.play();
    for (int i = 0; i < 400 && frame.playCommands()->playing(); ++i) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(test::readBytes(dir / "record" / "item-0.bin"), speech);
    EXPECT_EQ(test::readBytes(dir / "record" / "item-1.bin"), speech);
    EXPECT_EQ(dialog.playingLine()->text(), QStringLiteral("2 / 2 hello.wav is playing"));
    EXPECT_TRUE(port.texts().empty());
    unsetenv("KESTRELON_BOARD_PORT0");
}

// A new user has no environment to name the board: the port is chosen in Body
// Information, proved with Get Version, and remembered for the next start,
// where the board cell plays through it.
TEST_F(PlayingInTheWorkbench, ANewUserChoosesTheBoardPortAndItIsRememberedForPlay)
{
    unsetenv("KESTRELON_BOARD_PORT0");
    const std::filesystem::path link = dir / "board0";
    const test::BoardSimulator board(program / "kestrelon-board-sim", link, dir / "record",
                                     {"--host-version", "7", "--driver-version", "5"});
    const EncodedHeaderBytes header = makeEncodedHeader();
    const std::string speech = "the chosen port carries this";
    std::filesystem::create_directories(dir / "Demo");
    test::writeBytes(dir / "Demo" / "SAF1.tmp", *packInterim(std::string(header.begin(), header.end()) + speech));
    ASSERT_NO_FATAL_FAILURE(openProject(std::vector<std::int16_t>(800, 5), "SAF1.tmp"));
    m_frame->loadPlayers();

    QString before, after;
    bool versionEnabled = false;
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<BodyInformationDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return; // the exec below would hang: the test times out and says so
        dialog->selectBody(0);
        versionEnabled = dialog->versionButton()->isEnabled();
        dialog->versionButton()->click(); // the default device, where no board is
        before = dialog->statusLine()->text();
        dialog->boardPortBox()->setEditText(QString::fromStdString(link.string()) + QStringLiteral(" "));
        dialog->versionButton()->click();
        after = dialog->statusLine()->text();
        dialog->accept();
    });
    m_frame->runCommand(cmd::kBodyInformation);
    EXPECT_TRUE(versionEnabled);
    EXPECT_EQ(before, QStringLiteral("Failed! Please check the hardware!"));
    EXPECT_EQ(after, QStringLiteral("Version   Host:7   Driver:5"));

    // A new start, with nothing in the environment: the setting names the port.
    m_frame->runCommand(cmd::kExit);
    m_frame.reset();
    unsetenv("KESTRELON_BOARD_PORT0");
    m_frame = std::make_unique<MainWindow>(FrameOptions{program, dir / "config", &port, &chooser}, &bodies);
    ASSERT_TRUE(m_frame->openProject(dir / "Demo" / "Demo.ptp"));
    m_frame->loadPlayers();
    QTableView* table = m_frame->mainView()->table();
    emit table->clicked(table->model()->index(0, int(ListColumn::EncodePlay)));
    for (int i = 0; i < 400 && m_frame->playCommands()->playing(); ++i) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(test::readBytes(dir / "record" / "item-0.bin"), speech);
    EXPECT_TRUE(port.texts().empty()) << port.texts().front();
    unsetenv("KESTRELON_BOARD_PORT0");
}

} // namespace kestrelon
#endif
