// The waveform window on real wave files: what the mouse selects, the split
// panes following each other, colours, and the Speech Event dialog writing
// (or, on Cancel, not writing) the event file the window draws.
#include "app/dialogs/splitter_bar_dialog.h"
#include "app/waveform/speech_event_dialog.h"
#include "app/waveform/wave_colors_dialog.h"
#include "app/waveform/wave_pane.h"
#include "app/waveform/wave_window.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"
#include "wave/wave_file.h"
#include "waveform/wave_painter.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QRadioButton>

#include <gtest/gtest.h>

#include <cmath>

namespace kestrelon {

namespace {

std::vector<std::int16_t> tone(std::size_t count, double step)
{
    std::vector<std::int16_t> out(count);
    for (std::size_t i = 0; i < count; ++i)
        out[i] = std::int16_t(9000 * std::sin(step * double(i)));
    return out;
}

void mouse(QWidget& widget, QEvent::Type type, int x, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QPointF at(x, widget.height() / 2);
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, widget.mapToGlobal(at), Qt::LeftButton, held, modifiers);
    QApplication::sendEvent(&widget, &event);
}

// The sample a click at widget column `x` should hit: the ruler is left of the wave.
std::int64_t sampleUnder(const WaveView& view, int x)
{
    const WaveViewport& v = view.viewport();
    return v.viewStart() + std::llround(double(x - kLeftRulerWidth) * double(v.viewLength()) / v.width());
}

struct Files {
    test::TempDir dir;
    std::filesystem::path source = dir / "hello.wav";
    std::filesystem::path decoded = dir / "hello_decoded.wav";
    Files()
    {
        EXPECT_TRUE(writeWav16(source, tone(16000, 0.05), 8000));
        EXPECT_TRUE(writeWav16(decoded, tone(32000, 0.025), 16000)); // the same second, twice the rate
    }
};

} // namespace

TEST(WaveformWindow, TheMouseSelectsTheSamplesUnderItAtEveryZoom)
{
    Files files;
    test::ScriptedPort port;
    WaveColors colors;
    WaveWindow window(files.source, colors, port, nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.resize(900, 400);
    window.show();
    QApplication::processEvents();
    WaveView& view = window.originalPane()->view();
    ASSERT_EQ(view.viewport().sampleCount(), 16000);

    for (int zoom = 0; zoom < 4; ++zoom) {
        mouse(view, QEvent::MouseButtonPress, 150);
        mouse(view, QEvent::MouseMove, 420);
        mouse(view, QEvent::MouseButtonRelease, 420);
        EXPECT_EQ(view.viewport().selectionStart(), sampleUnder(view, 150)) << zoom;
        EXPECT_EQ(view.viewport().selectionEnd(), sampleUnder(view, 420)) << zoom;
        mouse(view, QEvent::MouseButtonPress, 100, Qt::ShiftModifier); // extends from the anchor
        mouse(view, QEvent::MouseButtonRelease, 100, Qt::ShiftModifier);
        EXPECT_EQ(view.viewport().selectionStart(), sampleUnder(view, 100)) << zoom;
        EXPECT_EQ(view.viewport().selectionEnd(), sampleUnder(view, 150)) << zoom;
        view.zoomIn();
        view.zoomIn();
        view.scrollTo(3000 * zoom);
    }
    // Zoomed to the selection, its ends are the view's.
    view.select(5000, 6000);
    view.zoomToSelection();
    EXPECT_EQ(view.viewport().viewStart(), 5000);
    EXPECT_EQ(view.viewport().viewEnd(), 6000);
    EXPECT_NE(window.originalPane()->infoText().indexOf(QStringLiteral("Begin 5000")), -1);
    EXPECT_NE(window.originalPane()->infoText().indexOf(QStringLiteral("Length 1000")), -1);
    EXPECT_TRUE(port.texts().empty());
}

TEST(WaveformWindow, SplitPanesFollowEachOtherByTimeAndShareTheirColours)
{
    Files files;
    test::ScriptedPort port;
    WaveColors shared;
    WaveWindow window(files.source, shared, port, nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    ASSERT_TRUE(window.loadDecoded(files.decoded));
    window.resize(900, 600);
    window.show();
    QApplication::processEvents();

    setSplitViewEnabled(false);
    window.setSplit(true);
    EXPECT_FALSE(window.split()); // behind the hidden switch only
    window.originalPane()->view().zoomTo(4000, 6000);
    EXPECT_EQ(window.decodedPane()->view().viewport().viewLength(), 32000); // not split: not followed

    setSplitViewEnabled(true);
    window.setSplit(true);
    ASSERT_TRUE(window.split());
    window.originalPane()->view().zoomTo(8000, 12000);
    EXPECT_EQ(window.decodedPane()->view().viewport().viewStart(), 16000);
    EXPECT_EQ(window.decodedPane()->view().viewport().viewEnd(), 24000);
    window.decodedPane()->view().scrollTo(0);
    EXPECT_EQ(window.originalPane()->view().viewport().viewStart(), 0);

    WaveColors changed = kDefaultWaveColors;
    changed.background = 0x00102030;
    window.applyColors(changed);
    EXPECT_EQ(window.originalPane()->view().colors().background, 0x00102030u);
    EXPECT_EQ(window.decodedPane()->view().colors().background, 0x00102030u);
    EXPECT_EQ(shared.background, 0x00102030u); // windows opened later start with it
    setSplitViewEnabled(false);

    WaveColorsDialog dialog(shared);
    dialog.setColor(7, 0x00FFFFFF);
    EXPECT_EQ(dialog.colors().background, 0x00FFFFFFu);
    dialog.resetAll();
    EXPECT_EQ(dialog.colors(), kDefaultWaveColors);
}

TEST(WaveformWindow, TheEventDialogWritesOnOkAndTheWindowRedrawsItsMarks)
{
    Files files;
    const std::filesystem::path evt = files.dir / "hello.evt";
    test::ScriptedPort port;
    WaveColors colors;
    WaveWindow window(files.source, colors, port, nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    WaveView& view = window.originalPane()->view();
    EXPECT_TRUE(view.events().empty());

    window.openEventDialog();
    SpeechEventDialog* dialog = window.eventDialog();
    ASSERT_NE(dialog, nullptr);
    view.setCursorSample(4000);
    dialog->idField()->setText(QStringLiteral("3"));
    dialog->descriptionField()->setText(QStringLiteral("hello"));
    dialog->add();
    view.setCursorSample(1200);
    dialog->idField()->setText(QStringLiteral("5"));
    dialog->add();
    ASSERT_EQ(dialog->list()->count(), 2);
    EXPECT_EQ(dialog->list()->item(0)->text().toStdString(),
              "  1200" + std::string(20, ' ') + "ID5" + std::string(10, ' '));
    view.setCursorSample(9000);
    dialog->idField()->setText(QStringLiteral("3"));
    port.queue(Answer::Yes);
    dialog->add(); // the ID is taken: replaced, at the new place
    dialog->customLabelButton()->click();
    dialog->labelField()->setText(QStringLiteral("Greeting"));
    dialog->list()->setCurrentRow(1); // selecting a row moves the cursor to its event
    EXPECT_EQ(view.viewport().cursor(), 9000);
    EXPECT_FALSE(entryExists(evt)); // nothing written before Ok
    dialog->confirm();
    QApplication::processEvents();

    ASSERT_EQ(view.events().size(), 2u);
    EXPECT_EQ(view.events()[0].samples, 1200u);
    EXPECT_EQ(view.events()[1].samples, 9000u);
    EXPECT_EQ(view.events()[1].id, 3);
    EXPECT_EQ(view.events()[1].description, ""); // the description belonged to the replaced event
    const std::string written = test::readBytes(evt);
    EXPECT_NE(written.find("LabelName=Greeting"), std::string::npos);

    window.openEventDialog();
    view.setCursorSample(100);
    window.eventDialog()->idField()->setText(QStringLiteral("9"));
    window.eventDialog()->add();
    window.eventDialog()->idField()->setText(QStringLiteral("300"));
    window.eventDialog()->add();
    window.eventDialog()->reject();
    QApplication::processEvents();
    EXPECT_EQ(test::readBytes(evt), written); // Cancel touches nothing
    EXPECT_EQ(view.events().size(), 2u);
    EXPECT_EQ(port.texts(),
              (std::vector<std::string>{std::string(msg::kEventIdExists), std::string(msg::kEventIdRange)}));
}

} // namespace kestrelon
