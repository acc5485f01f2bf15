#pragma once
// One pane of a waveform window: a title ("Original" or the decoded file),
// the information panel (length, rate, selection, visible range), the wave
// view and its scroll bar. It plays its wave, or the selection, through the
// PC player and follows the play position while its sound plays.
#include "app/waveform/wave_view.h"
#include "common/observer.h"

#include <QTemporaryDir>
#include <QWidget>

#include <filesystem>
#include <optional>

class QLabel;
class QScrollBar;

namespace kestrelon {

class PlaybackController;
struct PlayStatus;
class UserPort;

class WavePane : public QWidget {
    Q_OBJECT
public:
    WavePane(QString title, UserPort& port, PlaybackController* player, QWidget* parent = nullptr);

    // Loads the wave file; its error is shown through the port.
    bool load(const std::filesystem::path& wave);
    const std::filesystem::path& file() const { return m_file; }
    WaveView& view() { return *m_view; }

    // Plays the selection, or the whole wave when nothing is selected.
    void play(bool looped);
    void stop();
    void pause();
    bool playing() const;

    // "Save As": the selection, or the whole wave, as a WAV file.
    bool saveTo(const std::filesystem::path& target);

    // The information panel's texts, as shown.
    QString infoText() const;

signals:
    void playStateChanged();

private:
    void updateInfo();
    void updateScrollBar();
    void followPlayer(const PlayStatus& status);

    UserPort& m_port;
    PlaybackController* m_player;
    std::filesystem::path m_file;
    WaveView* m_view;
    QScrollBar* m_scroll;
    QLabel* m_title;
    QLabel* m_info;
    QTemporaryDir m_scratch; // the selection's sound while it plays
    std::filesystem::path m_playedFile; // what this pane handed the player
    std::int64_t m_playedOffset = 0; // where in the wave that file begins
    Subscription m_following;
};

} // namespace kestrelon
