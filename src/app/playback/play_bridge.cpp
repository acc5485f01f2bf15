#include "app/playback/play_bridge.h"

#include "app/file_chooser.h"

#include <QMetaObject>

namespace kestrelon {

PlayBridge::PlayBridge(UserPort& port, QObject* parent)
    : QObject(parent)
    , m_host(port)
    , m_controller(m_host, port)
    , m_board(port)
{
    m_board.onNotified = [this] {
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_board.follow();
                emit boardStateChanged();
            },
            Qt::QueuedConnection);
    };
    // Called on the player's thread: only a queued call crosses over.
    m_host.onNotified = [this] {
        QMetaObject::invokeMethod(
            this, [this] { m_controller.follow(); }, Qt::QueuedConnection);
    };
    m_following = m_controller.changed.subscribe([this](const PlayStatus&) { emit playStateChanged(); });
}

PlayBridge::~PlayBridge()
{
    m_following.reset();
    m_controller.stop();
    m_host.onNotified = nullptr;
    m_board.onNotified = nullptr;
    m_board.stop();
}

void PlayBridge::loadPlayer(const std::filesystem::path& library)
{
    m_host.load(library);
}

QString playStatusText(const PlayStatus& status)
{
    if (status.state == PlayState::Idle || status.sampleRate <= 0)
        return {};
    const QString name = qtPath(status.file.filename());
    const double rate = status.sampleRate;
    const QString where = QStringLiteral("%1 / %2 s")
                              .arg(double(status.position) / rate, 0, 'f', 1)
                              .arg(double(status.length) / rate, 0, 'f', 1);
    switch (status.state) {
    case PlayState::Paused: return QObject::tr("Paused %1  %2").arg(name, where);
    case PlayState::Looping: return QObject::tr("Playing %1 looped  %2").arg(name, where);
    default: return QObject::tr("Playing %1  %2").arg(name, where);
    }
}

} // namespace kestrelon
