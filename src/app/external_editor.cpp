#include "app/external_editor.h"

#include "app/file_chooser.h"

#include <QEventLoop>
#include <QProcess>
#include <QWidget>

namespace kestrelon {

bool runExternalEditor(const std::filesystem::path& editor, const std::filesystem::path& file, QWidget* window)
{
    QProcess process;
    QEventLoop loop;
    bool started = true;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, [&](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            started = false;
            loop.quit();
        }
    });
    process.setProgram(qtPath(editor));
    process.setArguments({qtPath(file)});
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start();
    // The loop keeps every window painting and answering until the editor ends.
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    if (window) {
        window->raise();
        window->activateWindow();
    }
    return started;
}

} // namespace kestrelon
