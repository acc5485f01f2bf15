// Not a test: draws the workbench's windows into PNG files so a person can
// look at them. app_screenshots OUTDIR PROJECT.ptp
#include "app/compare/compare_rates_dialog.h"
#include "app/dialogs/add_folder_dialog.h"
#include "app/dialogs/manual_window.h"
#include "app/dialogs/new_project_dialog.h"
#include "app/dialogs/progress_dialog.h"
#include "app/dialogs/splitter_bar_dialog.h"
#include "app/file_chooser.h"
#include "app/main_window.h"
#include "app/playback/play_sentence_dialog.h"
#include "app/views/main_view.h"
#include "app/waveform/speech_event_dialog.h"
#include "app/waveform/wave_pane.h"
#include "app/waveform/wave_window.h"
#include "app/workspace_bar.h"
#include "bodies/body_settings.h"
#include "common/platform.h"
#include "common/recording_port.h"
#include "project/workspace_tree.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>

#include <chrono>
#include <thread>

#include <iostream>

using namespace kestrelon;

namespace {

void save(QWidget* widget, const QString& folder, const QString& name)
{
    widget->grab().save(folder + QLatin1Char('/') + name);
    std::cout << (folder + QLatin1Char('/') + name).toStdString() << '\n';
}

void saveMenu(MainWindow& frame, const QString& title, const QString& folder, const QString& name)
{
    for (QAction* top : frame.menuBar()->actions()) {
        if (top->text() != title || !top->menu())
            continue;
        frame.updateCommands();
        top->menu()->popup(frame.mapToGlobal(QPoint(0, 0)));
        QApplication::processEvents();
        save(top->menu(), folder, name);
        top->menu()->hide();
    }
}

// Runs command `id` of the frame; the modal dialog it opens is saved and
// closed as Cancel would close it.
void saveCommandDialog(MainWindow& frame, int id, const QString& folder, const QString& name)
{
    bool saved = false;
    QTimer::singleShot(300, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            save(modal, folder, name);
            saved = true;
            modal->close();
        }
    });
    frame.runCommand(id);
    if (!saved)
        std::cout << name.toStdString() << ": command " << id << " opened no dialog\n";
}

void selectRows(MainWindow& frame, std::initializer_list<int> rows)
{
    QTableView* table = frame.mainView()->table();
    table->clearSelection();
    for (int row : rows)
        table->selectionModel()->select(table->model()->index(row, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
    table->selectionModel()->setCurrentIndex(table->model()->index(*rows.begin(), 0), QItemSelectionModel::NoUpdate);
    frame.updateCommands();
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc < 3) {
        std::cerr << "usage: app_screenshots OUTDIR PROJECT.ptp [PROGRAM-FOLDER]\n";
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; });
    FrameOptions options;
    // Absolute: opening a project moves the working folder.
    options.programFolder = argc > 3 ? std::filesystem::absolute(argv[3]) : executableFolder();
    options.configFolder = std::filesystem::path(argv[1]) / "config";
    options.bodySettingsFile = options.programFolder / std::string(kBodySettingsFileName);
    options.port = &port;
    BodySettings bodies;
    bodies.load(options.programFolder / std::string(kBodySettingsFileName), options.programFolder, port);
    MainWindow frame(options, &bodies);
    frame.resize(1280, 800);
    frame.show();
    frame.openProject(argv[2]);
    QApplication::processEvents();
    save(&frame, out, QStringLiteral("01-frame-open.png"));

    if (WorkspaceTree* tree = frame.workspaceTree()) {
        auto folders = tree->itemsWithId("Greetings");
        std::vector<ProjectItem*> pick;
        for (ProjectItem* item : folders)
            pick.push_back(item);
        for (const char* id : {"all.wav", "big_dog.wav"})
            for (ProjectItem* item : tree->itemsWithId(id))
                pick.push_back(item);
        frame.workspaceBar()->selectItems(pick);
        QApplication::processEvents();
        save(&frame, out, QStringLiteral("02-frame-selection.png"));
    }
    saveMenu(frame, QStringLiteral("&File"), out, QStringLiteral("03-menu-file.png"));
    saveMenu(frame, QStringLiteral("&Edit"), out, QStringLiteral("04-menu-edit.png"));
    saveMenu(frame, QStringLiteral("&View"), out, QStringLiteral("05-menu-view.png"));
    saveMenu(frame, QStringLiteral("&Action"), out, QStringLiteral("06-menu-action.png"));

    QtFileChooser chooser(&frame);
    NewProjectDialog newProject(port, chooser, "/home/user/projects", &frame);
    newProject.show();
    save(&newProject, out, QStringLiteral("07-new-project.png"));
    AddFolderDialog addFolder(&frame);
    addFolder.show();
    save(&addFolder, out, QStringLiteral("08-add-folder.png"));
    SplitterBarDialog splitter(false, port, &frame);
    splitter.show();
    save(&splitter, out, QStringLiteral("09-splitter-bar.png"));
    frame.workspaceBar()->tabs()->setCurrentIndex(1);
    QApplication::processEvents();
    save(&frame, out, QStringLiteral("10-algorithms.png"));
    if (QTreeWidgetItem* root = frame.workspaceBar()->algorithmsView()->topLevelItem(0); root && root->childCount()) {
        root->child(0)->setSelected(true);
        frame.updateCommands();
        saveCommandDialog(frame, cmd::kShowConfiguration, out, QStringLiteral("11-algorithm-configuration.png"));
    }
    frame.workspaceBar()->tabs()->setCurrentIndex(0);

    selectRows(frame, {0});
    saveCommandDialog(frame, cmd::kRowProperty, out, QStringLiteral("12-property.png"));
    saveCommandDialog(frame, cmd::kEncodeInfo, out, QStringLiteral("13-encode-info.png"));
    saveCommandDialog(frame, cmd::kShowConfigurationUpdateOnly, out, QStringLiteral("14-row-configuration.png"));
    saveCommandDialog(frame, cmd::kDuplicate, out, QStringLiteral("15-encode-setting.png"));
    saveCommandDialog(frame, cmd::kExportSelected, out, QStringLiteral("16-export.png"));
    saveCommandDialog(frame, cmd::kDllSetting, out, QStringLiteral("17-dll-setting.png"));
    saveCommandDialog(frame, cmd::kBodyInformation, out, QStringLiteral("18-body-information.png"));
    saveMenu(frame, QStringLiteral("&Edit"), out, QStringLiteral("19-menu-edit-row.png"));

    // A row's waveform window: a selection, the event dialog, then both panes split.
    selectRows(frame, {1});
    frame.runCommand(cmd::kShowWaveform);
    if (const auto windows = frame.findChildren<WaveWindow*>(); !windows.empty()) {
        WaveWindow* wave = windows.front();
        wave->resize(1100, 420);
        QApplication::processEvents();
        WaveView& view = wave->originalPane()->view();
        const std::int64_t n = view.viewport().sampleCount();
        view.select(n / 4, n / 3);
        QApplication::processEvents();
        save(wave, out, QStringLiteral("22-waveform.png"));
        // Three labelled events on a word, as a user places them.
        view.zoomTo(n / 5, n / 2);
        wave->openEventDialog();
        SpeechEventDialog* events = wave->eventDialog();
        events->customLabelButton()->click();
        events->labelField()->setText(QStringLiteral("Greeting"));
        for (const auto& [at, description] :
             {std::pair{n / 4, "word start"}, {n * 3 / 10, "stress"}, {n * 2 / 5, "word end"}}) {
            view.setCursorSample(at);
            events->descriptionField()->setText(QString::fromLatin1(description));
            events->add();
        }
        QApplication::processEvents();
        save(events, out, QStringLiteral("23-speech-event.png"));
        events->confirm();
        view.select(n / 4, n * 2 / 5);
        setSplitViewEnabled(true);
        wave->setSplit(true);
        wave->resize(1100, 640);
        QApplication::processEvents();
        save(wave, out, QStringLiteral("24-waveform-split.png"));
        setSplitViewEnabled(false);
        wave->close();
    }

    {
        PlaySentenceDialog sentence(frame.session(), frame.companions().playList(), *frame.playCommands(),
                                    frame.bodies(), port, &frame);
        sentence.rowsView()->topLevelItem(0)->setSelected(true);
        sentence.rowsView()->topLevelItem(3)->setSelected(true);
        sentence.addSelected();
        sentence.show();
        QApplication::processEvents();
        save(&sentence, out, QStringLiteral("25-play-sentence.png"));
    }

    // The user manual, as F1 opens it.
    frame.runCommand(cmd::kHelp);
    if (const auto manuals = frame.findChildren<ManualWindow*>(); !manuals.empty()) {
        QApplication::processEvents();
        save(manuals.front(), out, QStringLiteral("27-manual.png"));
        manuals.front()->close();
    }

    // Compare Bit Rates on two sources after a real sweep, a point chosen.
    selectRows(frame, {0, 3});
    QTimer::singleShot(0, [&] {
        auto* compare = qobject_cast<CompareRatesDialog*>(QApplication::activeModalWidget());
        if (!compare)
            return;
        compare->compare();
        while (compare->running()) {
            QApplication::processEvents();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        compare->table()->setCurrentCell(2, 0);
        QApplication::processEvents();
        save(compare, out, QStringLiteral("26-compare-bit-rates.png"));
        compare->reject();
    });
    frame.runCommand(cmd::kCompareBitRates);

    // The progress window while a batch runs.
    selectRows(frame, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    // It shows once the batch has run 300 ms.
    for (int at : {350, 500, 800})
        QTimer::singleShot(at, [&, at] {
            save(frame.mainView()->progressDialog(), out, QStringLiteral("20-progress-%1ms.png").arg(at));
        });
    frame.runCommand(cmd::kEncode);
    QApplication::processEvents();
    save(&frame, out, QStringLiteral("21-frame-after-batch.png"));
    frame.session().closeProject();
    return 0;
}
