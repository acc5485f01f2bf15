// "Compare Bit Rates" end to end: the selected rows' sources swept by the real
// kestrelon-cli and reference codecs while the project stays open, the curves
// and the table, a point chosen with the mouse, and that point added as rows.
#include "app/command_table.h"
#include "app/compare/compare_rates_dialog.h"
#include "app/compare/rate_chart.h"
#include "app/main_window.h"
#include "app/views/list_columns.h"
#include "app/views/main_view.h"
#include "app_support.h"
#include "bodies/body_settings.h"
#include "common/platform.h"
#include "support/files.h"

#include <QApplication>
#include <QCheckBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>

#include <chrono>
#include <thread>

#ifdef KESTRELON_PROGRAM_DIR
namespace kestrelon {

namespace fs = std::filesystem;

TEST(CompareBitRates, TheChosenPointOfASweepBecomesARowOfEachSource)
{
    const test::TempDir dir;
    const fs::path program = KESTRELON_PROGRAM_DIR;
    const auto cli = [&](std::vector<std::string> words) {
        words.insert(words.begin(), "--yes");
        return runProgram(program / "kestrelon-cli", words, dir / "out.txt", dir / "err.txt");
    };
    const std::string ptp = (dir / "Cmp" / "Cmp.ptp").string();
    ASSERT_EQ(cli({"project", "new", dir.path().string(), "Cmp"}), 0);
    ASSERT_EQ(cli({"project", "add-files", ptp, "/usr/share/codec2/wav/hts1a.wav", "/usr/share/codec2/wav/hts2a.wav"}),
              0);
    ASSERT_EQ(cli({"project", "add-encode", ptp, "--body", "KS-1 Voice", "--algo", "ImaAdpcm", "--rate", "32000"}), 0);

    test::ScriptedPort port;
    test::ScriptedChooser chooser;
    BodySettings bodies;
    ASSERT_TRUE(bodies.load(program / "KestrelonBodySetting.dat", program, port));
    MainWindow frame(FrameOptions{program, dir / "config", &port, &chooser}, &bodies);
    ASSERT_TRUE(frame.openProject(ptp));
    frame.mainView()->selectAll();
    frame.updateCommands();
    ASSERT_TRUE(frame.action(cmd::kCompareBitRates)->isEnabled());

    QStringList settings;
    int curves = 0;
    bool wasRunning = false;
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<CompareRatesDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return; // the dialog's own loop would not end: the test times out and says so
        for (const QString name : {"Pcm", "Codec2", "Speex"})
            dialog->algorithmBox(name)->setChecked(false);
        dialog->compare();
        wasRunning = dialog->running();
        while (dialog->running()) {
            QCoreApplication::processEvents();
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        for (int row = 0; row < dialog->table()->rowCount(); ++row)
            settings << dialog->table()->item(row, 0)->text() + " " + dialog->table()->item(row, 1)->text();
        // MuLaw's 48000 is its smaller setting: the first point of its curve.
        RateChart& chart = *dialog->chart();
        chart.resize(640, 360);
        const std::optional<QPointF> at = chart.pointPosition(1, 0);
        if (at) {
            QMouseEvent click(QEvent::MouseButtonPress, *at, chart.mapToGlobal(*at), Qt::LeftButton, Qt::LeftButton,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(&chart, &click);
        }
        curves = chart.chosen() ? 1 : 0;
        if (dialog->addButton()->isEnabled())
            dialog->addChosen();
        dialog->reject();
    });
    frame.runCommand(cmd::kCompareBitRates);

    EXPECT_TRUE(wasRunning);
    EXPECT_EQ(settings,
              QStringList({"ImaAdpcm 16000", "ImaAdpcm 24000", "ImaAdpcm 32000", "MuLaw 48000", "MuLaw 64000"}));
    EXPECT_EQ(curves, 1);
    // Each source got the chosen setting as a row of its own, encoded, and
    // decoded and measured as the automatic decode is on.
    QAbstractItemModel& rows = *frame.mainView()->table()->model();
    ASSERT_EQ(rows.rowCount(), 4);
    int added = 0;
    for (int row = 0; row < rows.rowCount(); ++row) {
        if (rows.index(row, int(ListColumn::Algorithm)).data().toString() != "MuLaw")
            continue;
        ++added;
        EXPECT_EQ(rows.index(row, int(ListColumn::BitRate)).data().toString(), "48000");
        EXPECT_FALSE(rows.index(row, int(ListColumn::EncodeSize)).data().toString().isEmpty());
        EXPECT_GT(rows.index(row, int(ListColumn::SegmentalSnr)).data().toString().toDouble(), 10.0);
    }
    EXPECT_EQ(added, 2);
    EXPECT_TRUE(port.texts().empty());
    port.queue(Answer::No); // the new rows are not kept
    frame.runCommand(cmd::kCloseProject);
}

} // namespace kestrelon
#endif
