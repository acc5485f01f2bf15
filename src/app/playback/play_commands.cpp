#include "app/playback/play_commands.h"

#include "app/command_table.h"
#include "app/views/list_columns.h"
#include "app/views/main_view.h"
#include "bodies/body_settings.h"
#include "codec/row_encoded_file.h"
#include "common/messages.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "project/project_session.h"

#include <QStatusBar>

namespace kestrelon {

PlayCommands::PlayCommands(UserPort& port, ProjectSession& session, MainView& view, QStatusBar& statusBar,
                           QObject* parent)
    : QObject(parent), m_session(session), m_view(view), m_statusBar(statusBar), m_bridge(port), m_port(port)
{
    connect(&m_bridge, &PlayBridge::playStateChanged, this, &PlayCommands::follow);
    connect(&m_bridge, &PlayBridge::boardStateChanged, this, [this] {
        if (!m_board.playing())
            m_statusBar.clearMessage();
        emit stateChanged();
    });
    connect(&m_view, &MainView::playCellClicked, this,
            [this](const ListRow& row, int column) { playRow(row, column, 1); });
}

void PlayCommands::setPlayMode(int mode)
{
    m_bridge.controller().setTarget(mode == 1 ? PlayTarget::Board : PlayTarget::Pc);
}

bool PlayCommands::run(int id)
{
    using namespace cmd;
    switch (id) {
    case kPc: setPlayMode(0); break;
    case kTargetBoard: setPlayMode(1); break;
    case kPlay:
    case kPlayLooped:
        if (const auto row = m_view.currentListRow())
            playRow(*row, int(ListColumn::OriginalPlay), id == kPlayLooped ? 0 : 1);
        break;
    case kStop:
        stop();
        m_board.stop();
        break;
    case kPause: m_bridge.controller().pause(); break;
    default: return false;
    }
    emit stateChanged();
    return true;
}

void PlayCommands::playRow(const ListRow& row, int column, int loops)
{
    if (!m_session.isOpen())
        return;
    // The board's cell, and the original on the board target, are for the
    // board player; the controller says why nothing plays there yet.
    if (column == int(ListColumn::EncodePlay)) {
        playOnBoard(row);
        return;
    }
    PlaybackController& controller = m_bridge.controller();
    const PlayTarget chosen = controller.target();
    const PlayWhat what = column == int(ListColumn::DecodePlay) ? PlayWhat::Decoded : PlayWhat::Original;
    controller.playRow(m_session, row.record(), what, MainView::rowKey(row) + "@" + std::to_string(column), loops);
    controller.setTarget(chosen);
}

void PlayCommands::loadBoardPlayer(BodySettings& bodies)
{
    m_bodies = &bodies;
    m_bridge.loadBoardPlayer(bodies.boardPlayDll());
}

void PlayCommands::playOnBoard(const ListRow& row)
{
    if (!m_bodies || !m_board.isLoaded()) {
        m_port.showMessage(msg::kBoardPlayDllNotLoaded);
        return;
    }
    const EditInfoRecord& record = row.record();
    std::optional<RowEncodedFile> encoded = inspectRowEncodedFile(m_session, record, m_port);
    if (!encoded)
        return;
    const BodyInfo* body = m_bodies->findBody(record.bodyName);
    BoardItem item{std::move(encoded->speech), encoded->encoded.header.sampleRate, body ? body->currentVolume : 0,
                   record.fileName};
    if (m_board.play(0, std::uint32_t(m_bodies->baudRate()), {std::move(item)}))
        m_statusBar.showMessage(tr("Playing %1 on the target board").arg(QString::fromStdString(record.fileName)));
    emit stateChanged();
}

void PlayCommands::follow()
{
    const PlayStatus& status = m_bridge.status();
    const std::size_t at = status.rowKey.rfind('@');
    if (status.state == PlayState::Idle || at == std::string::npos) {
        m_view.showPlaying({}, -1, false);
        m_statusBar.clearMessage();
    } else {
        m_view.showPlaying(status.rowKey.substr(0, at), std::stoi(status.rowKey.substr(at + 1)),
                           status.state == PlayState::Paused);
        m_statusBar.showMessage(playStatusText(status));
    }
    emit stateChanged();
}

} // namespace kestrelon
