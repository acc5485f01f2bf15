#pragma once
// The Action menu's playing commands and the list's play cells, on top of
// the play bridge: "&Play" plays the current row's original, "Play &Looped"
// repeats it until "&Stop", "Pa&use" holds and resumes, "P&C" and "Target
// &Board" choose where encoded data would play (kept as the play mode); a
// click on a cell's "▶" plays what that cell plays. The status bar says what
// plays and where it is.
#include "app/playback/play_bridge.h"

#include <QObject>

#include <filesystem>

class QStatusBar;

namespace kestrelon {

class BodySettings;
class MainView;
class ProjectSession;
class UserPort;
struct ListRow;

class PlayCommands : public QObject {
    Q_OBJECT
public:
    PlayCommands(UserPort& port, ProjectSession& session, MainView& view, QStatusBar& statusBar,
                 QObject* parent = nullptr);

    void loadPlayer(const std::filesystem::path& library) { m_bridge.loadPlayer(library); }
    // The board player and what board play needs of the bodies: the baud
    // rate and each body's current volume.
    void loadBoardPlayer(BodySettings& bodies);
    BoardPlayerHost& board() { return m_bridge.board(); }
    bool playerLoaded() const { return m_bridge.playerLoaded(); }
    bool playing() const { return m_bridge.status().state != PlayState::Idle || m_board.playing(); }
    bool paused() const { return m_bridge.status().state == PlayState::Paused || m_board.paused(); }
    PlaybackController& controller() { return m_bridge.controller(); }

    // The play mode as the settings keep it: 0 the PC, 1 the target board.
    int playMode() const { return m_onBoard ? 1 : 0; }
    void setPlayMode(int mode);

    // Runs a playing command of the table; false for any other command.
    bool run(int id);
    // Stops whatever plays: before a project closes or its rows go.
    void stop() { m_bridge.controller().stop(); }

signals:
    // Playing started, paused, moved on or ended: commands may change state.
    void stateChanged();

private:
    void playRow(const ListRow& row, int column, int loops);
    // The row's encoded data, without its header, on the target board.
    void playOnBoard(const ListRow& row);
    void follow();

    ProjectSession& m_session;
    MainView& m_view;
    QStatusBar& m_statusBar;
    PlayBridge m_bridge;
    BoardPlayerHost& m_board = m_bridge.board();
    BodySettings* m_bodies = nullptr;
    UserPort& m_port;
    bool m_onBoard = false; // "Target &Board" rather than "P&C"
};

} // namespace kestrelon
