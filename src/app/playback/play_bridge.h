#pragma once
// The workbench's side of playing: it owns the PC player host and the
// playback controller, loads the player once the frame is up, and brings the
// player's notifications (from its audio thread) to the user-interface thread
// as a queued call, where the controller follows the player. Views learn the
// play state from playStateChanged; nothing here blocks painting.
#include "host/board_player_host.h"
#include "host/pc_player_host.h"
#include "playback/playback_controller.h"

#include <QObject>

#include <filesystem>

namespace kestrelon {

class UserPort;

class PlayBridge : public QObject {
    Q_OBJECT
public:
    PlayBridge(UserPort& port, QObject* parent = nullptr);
    ~PlayBridge() override;

    // Loads the PC player library (its message when it is missing).
    void loadPlayer(const std::filesystem::path& library);
    bool playerLoaded() const { return m_host.isLoaded(); }

    PlaybackController& controller() { return m_controller; }
    // The board player: loaded like the PC player; its reports are followed
    // on the user-interface thread and announced by boardStateChanged.
    void loadBoardPlayer(const std::filesystem::path& library) { m_board.load(library); }
    BoardPlayerHost& board() { return m_board; }
    const PlayStatus& status() const { return m_controller.status(); }

signals:
    void playStateChanged();
    void boardStateChanged();

private:
    PcPlayerHost m_host;
    PlaybackController m_controller;
    BoardPlayerHost m_board;
    Subscription m_following;
};

// The status bar's words for what plays: "Playing hello.wav  1.2 / 3.0 s".
QString playStatusText(const PlayStatus& status);

} // namespace kestrelon
