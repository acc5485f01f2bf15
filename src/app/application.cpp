#include "app/application.h"

#include "app/file_chooser.h"
#include "app/main_window.h"
#include "app/qt_user_port.h"
#include "bodies/body_settings.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/platform.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLockFile>
#include <QScreen>
#include <QStandardPaths>
#include <QTimer>

namespace kestrelon {

namespace {

// The lock that keeps a second copy from starting: a file in the user's
// runtime folder, freed by the system if the program dies.
QString lockFilePath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty()) folder = QDir::tempPath();
    QDir().mkpath(folder);
    return QDir(folder).filePath(QStringLiteral("kestrelon-workbench.lock"));
}

} // namespace

int runWorkbench(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Corvane"));
    QApplication::setApplicationName(QStringLiteral("Kestrelon"));

    QtUserPort startPort;
    QLockFile lock(lockFilePath());
    lock.setStaleLockTime(0);
    if (!lock.tryLock(0)) {
        startPort.showMessage(msg::kAlreadyRunning);
        return 1;
    }

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption settingsDir(QStringLiteral("settings-dir"),
                                         QStringLiteral("Keep the settings in DIR instead of the user's profile."),
                                         QStringLiteral("DIR"));
    parser.addOption(settingsDir);
    parser.addPositionalArgument(QStringLiteral("project"), QStringLiteral("A project file (.ptp) to open."),
                                 QStringLiteral("[project]"));
    parser.process(application);

    const std::filesystem::path programFolder = executableFolder();

    // Without its bodies the program cannot work: it ends. The reader has
    // already said "Invalid data!" when a number in the file was malformed.
    BodySettings bodies;
    const std::filesystem::path bodiesFile = programFolder / std::string(kBodySettingsFileName);
    if (!bodies.load(bodiesFile, programFolder, startPort)) return 1;

    FrameOptions options;
    options.programFolder = programFolder;
    if (parser.isSet(settingsDir)) options.configFolder = stdPath(parser.value(settingsDir));
    int exitCode = 0;
    {
        MainWindow frame(options, &bodies);
        // Without a window manager "maximised" means nothing: the frame then
        // covers the screen's free area itself.
        frame.setGeometry(frame.screen()->availableGeometry());
        frame.showMaximized();
        // Player plug-ins are loaded here once playback is part of the program.
        if (const QStringList projects = parser.positionalArguments(); !projects.isEmpty()) {
            const std::filesystem::path project = stdPath(QDir::current().absoluteFilePath(projects.front()));
            QTimer::singleShot(0, &frame, [&frame, project] { frame.openProject(project); });
        }
        exitCode = QApplication::exec();
    } // the frame writes the settings as it goes

    bodies.saveCurrentVolumes(bodiesFile);
    return exitCode;
}

} // namespace kestrelon
