#pragma once
// The "Play Sentence" dialog: the project's rows above, its play list below,
// entries added (up to 256) and removed, and the list played in order as a
// sentence — each entry's original or decoded wave on the PC, or all their
// encoded data on the target board. The list's rules are the shared play-list
// editor's; opening the dialog checks the list against the rows.
#include "codec/main_list.h"
#include "playback/play_item.h"

#include <QDialog>

class QLabel;
class QProgressBar;
class QRadioButton;
class QTreeWidget;

namespace kestrelon {

class BodySettings;
class PlayCommands;
class ProjectSession;
class UserPort;

class PlaySentenceDialog : public QDialog {
    Q_OBJECT
public:
    PlaySentenceDialog(ProjectSession& session, PlayList& list, PlayCommands& playing, BodySettings* bodies,
                       UserPort& port, QWidget* parent = nullptr);

    QTreeWidget* rowsView() const { return m_rows; }
    QTreeWidget* listView() const { return m_list; }
    QLabel* playingLine() const { return m_line; }

    void addSelected();
    void addAll();
    void removeSelected();
    void removeAll();
    enum class Mode { Original, Encoded, Decoded };
    void setMode(Mode mode);
    void play();
    void stop();

private:
    void add(const std::vector<std::size_t>& rows);
    void showList();
    void playNext();
    std::vector<const EditInfoRecord*> entryRecords() const;
    void showPlaying(int index);

    ProjectSession& m_session;
    PlayList& m_playList;
    PlayCommands& m_playing;
    BodySettings* m_bodies;
    UserPort& m_port;
    MainList m_rowsList;
    QTreeWidget* m_rows;
    QTreeWidget* m_list;
    QRadioButton* m_original;
    QRadioButton* m_encoded;
    QRadioButton* m_decoded;
    QProgressBar* m_progress;
    QLabel* m_line;
    int m_next = -1; // the next entry to play on the PC; -1 when not playing
};

} // namespace kestrelon
