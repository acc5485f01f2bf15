#include "app/playback/play_sentence_dialog.h"

#include "app/playback/play_commands.h"
#include "bodies/body_settings.h"
#include "playback/board_items.h"
#include "playback/play_list_edit.h"
#include "playback/sentence.h"
#include "project/project_session.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kestrelon {

namespace {

QTreeWidget* listWidget(QWidget* parent)
{
    auto* view = new QTreeWidget(parent);
    view->setHeaderLabels({QStringLiteral("File Name"), QStringLiteral("Body"), QStringLiteral("Algorithm"),
                           QStringLiteral("Bit Rate (bps)")});
    view->setRootIsDecorated(false);
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->header()->setStretchLastSection(false);
    view->setMinimumWidth(460);
    return view;
}

QStringList columns(const std::string& file, const std::string& body, const std::string& algorithm,
                    const std::string& rate)
{
    return {QString::fromStdString(file), QString::fromStdString(body), QString::fromStdString(algorithm),
            QString::fromStdString(rate)};
}

// Status words that end a play list on the board.
constexpr std::uint32_t kAllPlayed = 16;

} // namespace

PlaySentenceDialog::PlaySentenceDialog(ProjectSession& session, PlayList& list, PlayCommands& playing,
                                       BodySettings* bodies, UserPort& port, QWidget* parent)
    : QDialog(parent)
    , m_session(session)
    , m_playList(list)
    , m_playing(playing)
    , m_bodies(bodies)
    , m_port(port)
    , m_rowsList(MainList::fromDocument(session.document()))
    , m_rows(listWidget(this))
    , m_list(listWidget(this))
    , m_original(new QRadioButton(QStringLiteral("Original Play"), this))
    , m_encoded(new QRadioButton(QStringLiteral("Encode Play"), this))
    , m_decoded(new QRadioButton(QStringLiteral("Decode Play"), this))
    , m_progress(new QProgressBar(this))
    , m_line(new QLabel(this))
{
    setWindowTitle(QStringLiteral("Play Sentence"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Select List :"), this));
    layout->addWidget(m_rows);
    auto* edits = new QHBoxLayout;
    const auto button = [&](const char* text, auto slot) {
        auto* b = new QPushButton(QString::fromLatin1(text), this);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        edits->addWidget(b);
        return b;
    };
    button("Add", [this] { addSelected(); });
    button("Add All", [this] { addAll(); });
    button("Remove", [this] { removeSelected(); });
    button("Remove All", [this] { removeAll(); });
    edits->addStretch();
    layout->addLayout(edits);
    layout->addWidget(new QLabel(QStringLiteral("Play List :"), this));
    layout->addWidget(m_list);

    auto* control = new QGroupBox(QStringLiteral("Play Control"), this);
    auto* grid = new QGridLayout(control);
    grid->addWidget(m_original, 0, 0);
    grid->addWidget(m_encoded, 0, 1);
    grid->addWidget(m_decoded, 0, 2);
    auto* play = new QPushButton(QStringLiteral("Play"), control);
    auto* stopButton = new QPushButton(QStringLiteral("Stop"), control);
    connect(play, &QPushButton::clicked, this, &PlaySentenceDialog::play);
    connect(stopButton, &QPushButton::clicked, this, &PlaySentenceDialog::stop);
    grid->addWidget(play, 1, 0);
    grid->addWidget(stopButton, 1, 1);
    grid->addWidget(m_progress, 2, 0, 1, 3);
    grid->addWidget(m_line, 3, 0, 1, 3);
    layout->addWidget(control);
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(close, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(close);
    m_original->setChecked(true);

    for (const ListRow& row : m_rowsList.rows()) {
        const EditInfoRecord& r = row.record();
        m_rows->addTopLevelItem(new QTreeWidgetItem(columns(r.fileName, r.bodyName, r.algoName, r.bitRate)));
    }
    // Opening checks the list against the rows, as it stands now.
    if (checkPlayList(m_playList, m_rowsList, m_port))
        m_session.markModified();
    showList();
    connect(&m_playing, &PlayCommands::stateChanged, this, [this] {
        if (m_next >= 0 && !m_playing.playing())
            playNext();
        // On the board, the line follows the item the board reports.
        const BoardReport& last = m_playing.board().lastReport();
        if (m_encoded->isChecked() && last.index >= 0)
            showPlaying(last.index);
        if (m_encoded->isChecked() && last.index == -1 && last.status == kAllPlayed)
            showPlaying(int(m_playList.size()) - 1);
    });
}

void PlaySentenceDialog::showList()
{
    m_list->clear();
    for (const PlayItem& item : m_playList)
        m_list->addTopLevelItem(
            new QTreeWidgetItem(columns(item.sourceKey, item.bodyName, item.algorithmName, item.bitRate)));
}

void PlaySentenceDialog::add(const std::vector<std::size_t>& rows)
{
    if (addRowsToPlayList(m_playList, m_rowsList, rows, m_playing.board().playing(), m_port) > 0)
        m_session.markModified();
    showList();
}

void PlaySentenceDialog::addSelected()
{
    std::vector<std::size_t> rows;
    for (int i = 0; i < m_rows->topLevelItemCount(); ++i)
        if (m_rows->topLevelItem(i)->isSelected())
            rows.push_back(std::size_t(i));
    add(rows);
}

void PlaySentenceDialog::addAll()
{
    std::vector<std::size_t> rows(m_rowsList.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = i;
    add(rows);
}

void PlaySentenceDialog::removeSelected()
{
    for (int i = m_list->topLevelItemCount() - 1; i >= 0; --i)
        if (m_list->topLevelItem(i)->isSelected())
            m_playList.erase(m_playList.begin() + i);
    m_session.markModified();
    showList();
}

void PlaySentenceDialog::removeAll()
{
    m_playList.clear();
    m_session.markModified();
    showList();
}

void PlaySentenceDialog::setMode(Mode mode)
{
    (mode == Mode::Original ? m_original : mode == Mode::Encoded ? m_encoded : m_decoded)->setChecked(true);
}

void PlaySentenceDialog::showPlaying(int index)
{
    if (index < 0 || index >= int(m_playList.size()))
        return;
    m_progress->setRange(0, 100);
    m_progress->setValue(int((index + 1) * 100 / m_playList.size()));
    m_line->setText(QStringLiteral("%1 / %2 %3 is playing")
                        .arg(index + 1)
                        .arg(m_playList.size())
                        .arg(QString::fromStdString(m_playList[std::size_t(index)].sourceKey)));
}

std::vector<const EditInfoRecord*> PlaySentenceDialog::entryRecords() const
{
    // Every entry was matched with its row when the dialog opened.
    std::vector<const EditInfoRecord*> records;
    for (const PlayItem& entry : m_playList)
        if (const ListRow* row = rowOfEntry(entry, m_rowsList))
            records.push_back(&row->record());
    return records;
}

void PlaySentenceDialog::play()
{
    stop();
    if (m_playList.empty())
        return;
    const std::vector<const EditInfoRecord*> records = entryRecords();
    if (!m_encoded->isChecked()) {
        if (m_decoded->isChecked() && !everyEntryDecoded(m_session, records, m_port))
            return;
        m_next = 0;
        playNext();
        return;
    }
    // The board takes the whole list at once and reports the item it plays.
    if (!m_bodies || !m_playing.board().isLoaded())
        return;
    std::optional<std::vector<BoardItem>> items = boardItemsFor(m_session, records, *m_bodies, m_port);
    if (items && m_playing.board().play(0, std::uint32_t(m_bodies->baudRate()), std::move(*items)))
        showPlaying(0);
}

void PlaySentenceDialog::playNext()
{
    const std::vector<const EditInfoRecord*> records = entryRecords();
    const PlayWhat what = m_decoded->isChecked() ? PlayWhat::Decoded : PlayWhat::Original;
    while (m_next >= 0 && m_next < int(records.size())) {
        const int index = m_next++;
        showPlaying(index);
        const bool last = index + 1 == int(records.size());
        switch (
            startSentenceEntry(m_playing.controller(), m_session, *records[std::size_t(index)], what, last, m_port)) {
        case EntryStart::Playing: return;
        case EntryStart::Skipped: continue;
        case EntryStart::Ended: m_next = -1; return;
        }
    }
    m_next = -1;
}

void PlaySentenceDialog::stop()
{
    m_next = -1;
    m_playing.controller().stop();
    m_playing.board().stop();
}

} // namespace kestrelon
