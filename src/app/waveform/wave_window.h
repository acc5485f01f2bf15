#pragma once
// A row's waveform window: the "Original" pane (the source wave with its
// speech events) and, when the row is decoded, the decoded pane. One pane is
// shown at a time, chosen by tabs; with the split view switched on, "Split
// View" shows both, one above the other, and zooming, scrolling and colour
// changes on one are repeated on the other (by time, as the two may differ in
// rate).
#include "common/observer.h"
#include "settings/wave_colors.h"

#include <QMainWindow>
#include <QPointer>
#include <QTemporaryDir>

#include <filesystem>
#include <string>

class QAction;
class QMenu;
class QSplitter;
class QTabBar;

namespace kestrelon {

class PlaybackController;
class Project;
class SpeechEventDialog;
class UserPort;
class WavePane;

class WaveWindow : public QMainWindow {
    Q_OBJECT
public:
    // `colors` is the program's shared record: the window starts with it, and
    // a change made in its colour dialog goes back into it.
    WaveWindow(const std::filesystem::path& source, WaveColors& colors, UserPort& port, PlaybackController* player,
               QWidget* parent = nullptr);
    ~WaveWindow() override;

    // The window shows the source `sourceId` of `project`: it closes when
    // that project closes, another one opens, or the source leaves its tree.
    void closeWith(Project& project, std::string sourceId);

    // False (nothing shown) when the source wave cannot be read.
    bool loaded() const { return m_loaded; }
    // Where a caller may unpack the decoded wave; it goes with the window.
    std::filesystem::path scratchFolder() const;
    // Adds the decoded pane.
    bool loadDecoded(const std::filesystem::path& decoded);

    WavePane* originalPane() const { return m_original; }
    WavePane* decodedPane() const { return m_decoded; }
    WavePane* activePane() const;
    bool split() const { return m_split; }
    void setSplit(bool on);
    QAction* action(const QString& text) const;
    SpeechEventDialog* eventDialog() const;

    // The commands, on the active pane (the events: on the original).
    void openEventDialog();
    void reloadEvents();
    void chooseColors();
    void applyColors(const WaveColors& colors);
    void saveAs();

private:
    Subscription m_projectHeard;
    void addCommands();
    void attachPane(WavePane& pane);
    void showPane(int index);
    void mirror(WavePane& from, WavePane& to);
    void updateCommands();

    WaveColors& m_colors;
    UserPort& m_port;
    PlaybackController* m_player;
    std::filesystem::path m_eventFile;
    bool m_loaded = false;
    bool m_split = false;
    bool m_mirroring = false;
    QTemporaryDir m_scratch;
    QTabBar* m_tabs;
    QSplitter* m_splitter;
    WavePane* m_original;
    WavePane* m_decoded = nullptr;
    WavePane* m_focused = nullptr;
    QMenu* m_menu = nullptr;
    QPointer<SpeechEventDialog> m_eventDialog;
};

} // namespace kestrelon
