// The dialogs of the list and the frame: what each list offers, which limits
// hold, what OK and Cancel leave behind, and the progress window's Stop.
#include "view_fixture.h"

#include "app/dialogs/body_information_dialog.h"
#include "app/dialogs/dll_setting_dialog.h"
#include "app/dialogs/encode_setting_dialog.h"
#include "app/dialogs/progress_dialog.h"
#include "app/dialogs/property_dialog.h"
#include "app/dialogs/read_only_form.h"
#include "bodies/body_settings.h"
#include "common/messages.h"
#include "common/paths.h"
#include "host/algorithm_registry.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QTableView>
#include <QTreeWidget>

using namespace kestrelon;
using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

std::vector<QString> entries(const QComboBox* box)
{
    std::vector<QString> texts;
    for (int i = 0; i < box->count(); ++i)
        texts.push_back(box->itemText(i));
    return texts;
}

BodyAlgoInfo algorithm(std::string name, std::vector<std::string> rates)
{
    BodyAlgoInfo info;
    info.name = std::move(name);
    info.bitRates = std::move(rates);
    return info;
}

BodyInfo body(std::string name, std::vector<BodyAlgoInfo> algorithms, int algoCount = -1)
{
    const int count = algoCount < 0 ? static_cast<int>(algorithms.size()) : algoCount;
    return {.name = std::move(name), .algoCount = count, .algorithms = std::move(algorithms)};
}

BodyInfo volumeBody(std::string name, int low, int high, int current, int byDefault = 0)
{
    return {.name = std::move(name),
            .sampleRateMax = 16000,
            .sampleRateMin = 8000,
            .volumeMax = high,
            .volumeMin = low,
            .defaultVolume = byDefault,
            .currentVolume = current,
            .confirmedVolume = current,
            .algorithms = {}};
}

std::vector<QString> childTexts(const QTreeWidgetItem* item)
{
    std::vector<QString> texts;
    for (int i = 0; i < item->childCount(); ++i)
        texts.push_back(item->child(i)->text(0));
    return texts;
}

} // namespace

TEST(EncodeSettingDialog, ListsFollowEachOtherFromTheLastChoice)
{
    const std::vector<BodyInfo> bodies = {
        // ALGOCOUNT 2 of three entries: the third is not offered.
        body("B1", {algorithm("X", {"8000", "16000"}), algorithm("Y", {"32000"}), algorithm("Z", {"1"})}, 2),
        body("B2", {algorithm("Y", {"24000", "32000"})}),
        body("Empty", {}),
    };
    EncodeSettingDialog dialog(bodies, LastEncodeSetting{"B2", "Y", "32000", false});
    EXPECT_EQ(entries(dialog.bodyBox()), (std::vector<QString>{"B1", "B2", "Empty"}));
    EXPECT_EQ(dialog.bodyBox()->currentText(), "B2");
    EXPECT_EQ(entries(dialog.nameBox()), (std::vector<QString>{"Y"}));
    EXPECT_EQ(entries(dialog.bitRateBox()), (std::vector<QString>{"24000", "32000"}));
    EXPECT_EQ(dialog.bitRateBox()->currentText(), "32000");
    EXPECT_FALSE(dialog.applyToAllBox()->isChecked());

    // Another body keeps the algorithm and the rate where it offers them.
    dialog.bodyBox()->setCurrentIndex(0);
    EXPECT_EQ(entries(dialog.nameBox()), (std::vector<QString>{"X", "Y"}));
    EXPECT_EQ(dialog.nameBox()->currentText(), "Y");
    EXPECT_EQ(entries(dialog.bitRateBox()), (std::vector<QString>{"32000"}));
    dialog.nameBox()->setCurrentIndex(0);
    EXPECT_EQ(entries(dialog.bitRateBox()), (std::vector<QString>{"8000", "16000"}));
    EXPECT_EQ(dialog.bitRateBox()->currentText(), "8000");

    dialog.accept();
    EncodeSettingAnswer answer = dialog.answer();
    EXPECT_TRUE(answer.confirmed);
    EXPECT_EQ(answer.bodyName, "B1");
    EXPECT_EQ(answer.algName, "X");
    EXPECT_EQ(answer.bitRate, "8000");

    // A body without algorithms leaves two lists empty: OK still closes.
    dialog.bodyBox()->setCurrentIndex(2);
    EXPECT_TRUE(entries(dialog.nameBox()).empty());
    EXPECT_TRUE(entries(dialog.bitRateBox()).empty());
    dialog.accept();
    answer = dialog.answer();
    EXPECT_TRUE(answer.confirmed);
    EXPECT_EQ(answer.bodyName, "Empty");
    EXPECT_FALSE(answer.algName || answer.bitRate);

    // With the last choice gone from the settings, the lists open on their first entries.
    EncodeSettingDialog fresh(bodies, LastEncodeSetting{"Gone", "Y", "32000", true});
    EXPECT_EQ(fresh.bodyBox()->currentText(), "B1");
    EXPECT_EQ(fresh.nameBox()->currentText(), "Y");
    EXPECT_TRUE(fresh.applyToAllBox()->isChecked());
}

TEST_F(ViewTest, AddEncodeDataWithAnIncompleteChoiceSaysSoAndAddsNothing)
{
    open({{"a.wav", "B1", "X", "8000", "", "", "", "", ""}});
    BodySettings bodies;
    bodies.bodies() = {body("B1", {algorithm("X", {"8000"})}), body("Empty", {})};
    settings.lastBodyName = "B1";
    settings.lastAlgName = "X";
    settings.lastBitRate = "8000";
    settings.applyAllFiles = 1;
    MainView view(port);
    model.setBodies(&bodies);
    attach(view);
    ProjectItem* source = session.document().topLevelFiles().front();

    whenModal<EncodeSettingDialog>([](EncodeSettingDialog* dialog) {
        EXPECT_EQ(dialog->bodyBox()->currentText(), "B1");
        dialog->bodyBox()->setCurrentIndex(1);
        dialog->applyToAllBox()->setChecked(false);
        dialog->accept();
    });
    view.addEncodeData({source});
    EXPECT_EQ(port.texts(), std::vector<std::string>{str(msg::kThereIsAError)});
    EXPECT_EQ(source->records().size(), 1u);
    // The kept choice stays as it was.
    EXPECT_EQ(settings.lastBodyName, "B1");
    EXPECT_EQ(settings.applyAllFiles, 1);

    port.clear();
    whenModal<EncodeSettingDialog>([](EncodeSettingDialog* dialog) { dialog->reject(); });
    view.addEncodeData({source});
    EXPECT_TRUE(port.texts().empty());
    EXPECT_EQ(source->records().size(), 1u);
}

TEST(BodyInformationDialog, TreeVolumesLimitsAndCancel)
{
    ScriptedPort port;
    std::vector<BodyInfo> bodies = {volumeBody("Loud", 0, 15, 5), volumeBody("Soft", 1, 10, -1, 8),
                                    volumeBody("Mute", 0, 0, 0)};
    bodies[2].sampleRateMax = bodies[2].sampleRateMin = 0;
    BodyInformationDialog dialog(bodies, port);

    QTreeWidget* tree = dialog.tree();
    ASSERT_EQ(tree->topLevelItemCount(), 3);
    EXPECT_EQ(childTexts(tree->topLevelItem(0)),
              (std::vector<QString>{"SampleRateMax=16000", "SampleRateMin=8000", "VolumeMax=15", "VolumeMin=0",
                                    "CurrentVolume=5"}));
    EXPECT_TRUE(childTexts(tree->topLevelItem(2)).empty());

    // A value item selects the body that holds it.
    tree->setCurrentItem(tree->topLevelItem(0)->child(1));
    EXPECT_EQ(dialog.selectedBody(), 0);
    EXPECT_EQ(dialog.volumeEdit()->text(), "5");

    // The limits are inclusive; one more is refused and the edit goes back.
    dialog.volumeEdit()->setText("15");
    dialog.applyButton()->click();
    EXPECT_EQ(dialog.volumeSlider()->value(), 15);
    EXPECT_EQ(tree->topLevelItem(0)->child(4)->text(0), "CurrentVolume=15");
    dialog.volumeEdit()->setText("16");
    dialog.applyButton()->click();
    EXPECT_EQ(port.texts(), std::vector<std::string>{str(msg::kVolumeAboveMaximum)});
    EXPECT_EQ(dialog.volumeEdit()->text(), "15");
    EXPECT_EQ(bodies[0].currentVolume, 15);
    dialog.volumeEdit()->setText("0abc"); // leading digits: 0, the minimum
    dialog.applyButton()->click();
    EXPECT_EQ(bodies[0].currentVolume, 0);

    // Never set: the default volume, which becomes the current one.
    dialog.selectBody(1);
    EXPECT_EQ(dialog.volumeSlider()->value(), 8);
    EXPECT_EQ(bodies[1].currentVolume, 8);
    port.clear();
    dialog.volumeEdit()->setText("x"); // no digits: 0, below this body's minimum
    dialog.applyButton()->click();
    EXPECT_EQ(port.texts(), std::vector<std::string>{str(msg::kVolumeBelowMinimum)});
    EXPECT_EQ(dialog.volumeEdit()->text(), "8");
    dialog.volumeSlider()->setValue(3);
    EXPECT_EQ(bodies[1].currentVolume, 3);

    // No volume limits: nothing to set.
    dialog.selectBody(2);
    EXPECT_FALSE(dialog.applyButton()->isEnabled());

    // Cancel puts both changed bodies back.
    dialog.reject();
    EXPECT_EQ(bodies[0].currentVolume, 5);
    EXPECT_EQ(bodies[1].currentVolume, -1);

    // OK confirms what was set.
    BodyInformationDialog again(bodies, port);
    again.selectBody(0);
    again.volumeSlider()->setValue(7);
    again.accept();
    EXPECT_EQ(bodies[0].currentVolume, 7);
    EXPECT_EQ(bodies[0].confirmedVolume, 7);
    EXPECT_EQ(bodies[1].confirmedVolume, -1);
}

TEST(DllSettingDialog, RemoveKeepsAlgosAndRegistryInStepAndTheEditorMustRun)
{
    TempDir temp;
    const fs::path project = temp.path();
    const std::string suffix(librarySuffix());
    writeBytes(algorithmLibraryPath(project, "X"), "lib");
    writeBytes(project / "Algos" / "X.bdy", "bdy");
    writeBytes(algorithmLibraryPath(project, "Y"), "lib");
    std::vector<AlgoRegEntry> registry = {{"X", "Algos\\X" + suffix}, {"Y", "Algos\\Y" + suffix}};
    ASSERT_TRUE(saveAlgorithmRegistry(project, registry));
    ScriptedPort port;
    std::string editor = "kept";
    DllSettingDialog dialog(registry, project, editor, port);
    EXPECT_EQ(entries(dialog.algorithmBox()), (std::vector<QString>{"X", "Y"}));

    port.queue(Answer::No);
    EXPECT_FALSE(dialog.removeCurrentAlgorithm());
    EXPECT_EQ(port.texts(),
              std::vector<std::string>{str(msg::kRemoveAlgorithmPrefix) + "X" + str(msg::kRemoveAlgorithmSuffix)});
    EXPECT_TRUE(fs::exists(algorithmLibraryPath(project, "X")));

    QString removed;
    QObject::connect(&dialog, &DllSettingDialog::algorithmRemoved, [&](const QString& name) { removed = name; });
    port.queue(Answer::Yes);
    EXPECT_TRUE(dialog.removeCurrentAlgorithm());
    EXPECT_EQ(removed, "X");
    EXPECT_FALSE(fs::exists(algorithmLibraryPath(project, "X")));
    EXPECT_FALSE(fs::exists(project / "Algos" / "X.bdy"));
    EXPECT_TRUE(fs::exists(algorithmLibraryPath(project, "Y")));
    EXPECT_EQ(entries(dialog.algorithmBox()), (std::vector<QString>{"Y"}));
    std::vector<AlgoRegEntry> onDisk;
    ASSERT_TRUE(loadAlgorithmRegistry(project, onDisk, port));
    EXPECT_TRUE(onDisk.size() == 1 && onDisk[0].name == "Y");

    // The editor: a missing file and a file that cannot run are refused, the
    // dialog stays open and the kept path stays.
    port.clear();
    dialog.editorEdit()->setText(QString::fromStdString((temp / "none").string()));
    dialog.accept();
    EXPECT_EQ(port.texts(), std::vector<std::string>{str(msg::kExternalEditorNotExisted)});
    const fs::path program = temp / "edit";
    writeBytes(program, "#!/bin/sh\n");
    dialog.editorEdit()->setText(QString::fromStdString(program.string()));
#ifndef _WIN32
    fs::permissions(program, fs::perms::owner_read | fs::perms::owner_write);
    port.clear();
    dialog.accept();
    EXPECT_EQ(port.texts(), std::vector<std::string>{program.string() + str(msg::kEditorNotExecutable)});
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(editor, "kept");
    fs::permissions(program, fs::perms::owner_all);
#endif
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(editor, program.string());
}

TEST(ProgressDialog, ShowsALongBatchAndStopHoldsUntilTheNextBatch)
{
    ProgressDialog dialog;
    ScriptedPort inner;
    std::optional<ProgressPort> port(std::in_place, inner, dialog);
    port->beginProgress("ImaAdpcm Encoding ......");
    port->setBatchItem("Encoding 2 of 4: hts1a.wav");
    EXPECT_FALSE(dialog.isVisible()); // work that ends soon never flashes a window
    EXPECT_EQ(dialog.windowTitle(), "ImaAdpcm Encoding ......");
    EXPECT_EQ(dialog.batchLine()->text(), "Encoding 2 of 4: hts1a.wav");
    port->setProgressRange(0, 50);
    // Work that goes on shows the window at a progress report.
    for (int i = 0; i < 500 && !dialog.isVisible(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        port->setProgressPosition(i % 50);
    }
    EXPECT_TRUE(dialog.isVisible());
    port->setProgressPosition(25);
    EXPECT_EQ(dialog.bar()->value(), 25);
    EXPECT_FALSE(port->stopRequested());

    dialog.stopButton()->click();
    EXPECT_TRUE(port->stopRequested());
    EXPECT_FALSE(dialog.stopButton()->isEnabled());
    // Closing the window during a batch asks it to stop instead of hiding it.
    dialog.close();
    EXPECT_TRUE(dialog.isVisible());
    port->endProgress();
    EXPECT_TRUE(dialog.isVisible()); // between rows the window stays
    EXPECT_TRUE(port->stopRequested()); // the engine reads it after the row's progress ends
    // Messages pass through to the inner port.
    inner.queue(Answer::Yes);
    EXPECT_EQ(port->ask("sure?", Buttons::YesNo), Answer::Yes);
    EXPECT_EQ(inner.texts(), std::vector<std::string>{"sure?"});
    port.reset();
    EXPECT_FALSE(dialog.isVisible()); // the batch is over

    // The next batch starts without the stop, and with no row named yet.
    ProgressPort next(inner, dialog);
    EXPECT_FALSE(next.stopRequested());
    EXPECT_TRUE(dialog.batchLine()->text().isEmpty());
    dialog.requestStop(); // no row running: nothing to stop
    EXPECT_FALSE(next.stopRequested());
    next.beginProgress("ImaAdpcm Decoding ......");
    EXPECT_FALSE(next.stopRequested());
    EXPECT_EQ(dialog.bar()->value(), 0);
    next.endProgress();
}

TEST(PropertyDialog, OnlyThePlainExportNameChangesTheRecord)
{
    ScriptedPort port;
    EditInfoRecord record;
    record.fileName = "hello.wav";
    record.encodeName = "SAF1.tmp";
    record.encodeSize = "1234";
    PropertyDialog dialog(record, port);
    EXPECT_EQ(fieldText(dialog, "Encode Size:"), "1234");

    dialog.exportNameEdit()->setText("sub/hello.bin");
    dialog.accept();
    EXPECT_EQ(port.texts(), std::vector<std::string>{"\"sub/hello.bin\"" + str(msg::kExportNameInvalidSuffix)});
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(record.renameEncode, "");

    dialog.exportNameEdit()->setText(" hello.bin ");
    dialog.accept();
    EXPECT_EQ(record.renameEncode, "hello.bin");
    EXPECT_TRUE(dialog.changed());
}
