// Not a test: draws the workbench's windows into PNG files so a person can
// look at them. app_screenshots OUTDIR PROJECT.ptp
#include "app/dialogs/add_folder_dialog.h"
#include "app/dialogs/new_project_dialog.h"
#include "app/dialogs/splitter_bar_dialog.h"
#include "app/file_chooser.h"
#include "app/main_window.h"
#include "app/workspace_bar.h"
#include "bodies/body_settings.h"
#include "common/platform.h"
#include "common/recording_port.h"
#include "project/workspace_tree.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>

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
        if (top->text() != title || !top->menu()) continue;
        frame.updateCommands();
        top->menu()->popup(frame.mapToGlobal(QPoint(0, 0)));
        QApplication::processEvents();
        save(top->menu(), folder, name);
        top->menu()->hide();
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc < 3) {
        std::cerr << "usage: app_screenshots OUTDIR PROJECT.ptp [PROGRAM-FOLDER]\n";
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; });
    FrameOptions options;
    options.programFolder = argc > 3 ? std::filesystem::path(argv[3]) : executableFolder();
    options.configFolder = std::filesystem::path(argv[1]) / "config";
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
        for (ProjectItem* item : folders) pick.push_back(item);
        for (const char* id : {"all.wav", "big_dog.wav"})
            for (ProjectItem* item : tree->itemsWithId(id)) pick.push_back(item);
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
    frame.session().closeProject();
    return 0;
}
