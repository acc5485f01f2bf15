#include "app/playback/play_commands.h"

#include "app/command_table.h"
#include "app/views/list_columns.h"
#include "app/views/main_view.h"
#include "bodies/body_settings.h"
#include "common/messages.h"
#include "common/user_port.h"
#include "playback/board_items.h"
#include "project/edit_info_record.h"
#include "project/project_session.h"

#include <QStatusBar>

namespace kestrelon {

PlayCommands::PlayCommands(UserPort& port, ProjectSession& session, MainView& view, QStatusBar& statusBar,
                           QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_view(view)
    , m_statusBar(statusBar)
    , m_bridge(port)
    , m_port(port)
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
    m_onBoard = mode == 1;
}

bool PlayCommands::run(int id)
{
    using namespace cmd;
    switch (id) {
    case kPc: setPlayMode(0); break;
    case kTargetBoard: setPlayMode(1); break;
    case kPlay:
    case kPlayLooped:
        // The board plays a row's encoded data; the PC its source.
        if (const auto row = m_view.currentListRow())
            playRow(*row, int(m_onBoard ? ListColumn::EncodePlay : ListColumn::OriginalPlay),
                    id == kPlayLooped ? 0 : 1);
        break;
    case kStop:
        stop();
        m_board.stop();
        break;
    case kPause:
        if (m_board.playing())
            m_board.pause();
        else
            m_bridge.controller().pause();
        break;
    default: return false;
    }
    emit stateChanged();
    return true;
}

void PlayCommands::playRow(const ListRow& row, int column, int loops)
{
    if (!m_session.isOpen())
        return;
    if (column == int(ListColumn::EncodePlay)) {
        playOnBoard(row);
        return;
    }
    const PlayWhat what = column == int(ListColumn::DecodePlay) ? PlayWhat::Decoded : PlayWhat::Original;
    m_bridge.controller().playRow(m_session, row.record(), what, rowKey(row) + "@" + std::to_string(column), loops);
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
    std::optional<std::vector<BoardItem>> items = boardItemsFor(m_session, {&record}, *m_bodies, m_port);
    if (items && m_board.play(0, std::uint32_t(m_bodies->baudRate()), std::move(*items)))
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
