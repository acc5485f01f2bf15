#include "app/application.h"

#include "app/file_chooser.h"
#include "app/main_window.h"
#include "app/qt_user_port.h"
#include "bodies/body_settings.h"
#include "bodies/body_settings_files.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/platform.h"
#include "common/version.h"

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
    if (folder.isEmpty())
        folder = QDir::tempPath();
    QDir().mkpath(folder);
    return QDir(folder).filePath(QStringLiteral("kestrelon-workbench.lock"));
}

} // namespace

int runWorkbench(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Corvane"));
    QApplication::setApplicationName(QStringLiteral("Kestrelon"));
    QApplication::setApplicationVersion(QString::fromUtf8(kProgramVersion.data(), qsizetype(kProgramVersion.size())));

    // --help and --version answer even while a workbench runs.
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "The Kestrelon workbench: encode speech for speech-playback chips, listen, compare and export."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption settingsDir(QStringLiteral("settings-dir"),
                                         QStringLiteral("Keep the settings in DIR instead of the user's profile."),
                                         QStringLiteral("DIR"));
    parser.addOption(settingsDir);
    parser.addPositionalArgument(QStringLiteral("project"), QStringLiteral("A project file (.ptp) to open."),
                                 QStringLiteral("[project]"));
    parser.process(application);

    QtUserPort startPort;
    QLockFile lock(lockFilePath());
    lock.setStaleLockTime(0);
    if (!lock.tryLock(0)) {
        startPort.showMessage(msg::kAlreadyRunning);
        return 1;
    }

    const std::filesystem::path programFolder = executableFolder();

    // Without its bodies the program cannot work: it ends. The reader has
    // already said "Invalid data!" when a number in the file was malformed.
    BodySettings bodies;
    // A --settings-dir keeps the user's copy of the body settings with the
    // other settings, so a run with it never touches the real profile.
    const std::filesystem::path configFolder =
        parser.isSet(settingsDir) ? stdPath(parser.value(settingsDir)) : userConfigFolder();
    const BodySettingsFiles bodiesFiles = BodySettingsFiles::forProgram(programFolder, configFolder);
    if (!bodies.load(bodiesFiles.inUse(), programFolder, startPort))
        return 1;

    FrameOptions options;
    options.programFolder = programFolder;
    options.bodySettingsFile = bodiesFiles.inUse();
    if (parser.isSet(settingsDir))
        options.configFolder = stdPath(parser.value(settingsDir));
    int exitCode = 0;
    {
        MainWindow frame(options, &bodies);
        // Without a window manager "maximised" means nothing: the frame then
        // covers the screen's free area itself.
        frame.setGeometry(frame.screen()->availableGeometry());
        frame.showMaximized();
        // The player plug-in comes after the frame is up, so its message has a window.
        frame.loadPlayers();
        if (const QStringList projects = parser.positionalArguments(); !projects.isEmpty()) {
            const std::filesystem::path project = stdPath(QDir::current().absoluteFilePath(projects.front()));
            QTimer::singleShot(0, &frame, [&frame, project] { frame.openProject(project); });
        }
        exitCode = QApplication::exec();
    } // the frame writes the settings as it goes

    // An installed program folder is read-only: the volumes then go to the
    // user's copy, and a failure to keep them is said rather than swallowed.
    if (const VolumesSaved saved = saveCurrentVolumes(bodies, bodiesFiles); !saved.ok)
        startPort.showMessage(std::string(msg::kVolumesNotKeptPrefix) + saved.error + " !");
    return exitCode;
}

} // namespace kestrelon
