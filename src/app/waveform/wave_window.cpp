#include "app/waveform/wave_window.h"

#include "app/dialogs/splitter_bar_dialog.h"
#include "app/file_chooser.h"
#include "app/waveform/speech_event_dialog.h"
#include "app/waveform/wave_colors_dialog.h"
#include "app/waveform/wave_pane.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "model/project.h"
#include "playback/playback_controller.h"
#include "wave/speech_events.h"

#include <QApplication>
#include <QFileDialog>
#include <QMenu>
#include <QSplitter>
#include <QTabBar>
#include <QToolBar>
#include <QVBoxLayout>

namespace kestrelon {

WaveWindow::WaveWindow(const std::filesystem::path& source, WaveColors& colors, UserPort& port,
                       PlaybackController* player, QWidget* parent)
    : QMainWindow(parent)
    , m_colors(colors)
    , m_port(port)
    , m_player(player)
    , m_eventFile(eventFilePath(source))
    , m_tabs(new QTabBar(this))
    , m_splitter(new QSplitter(Qt::Vertical, this))
    , m_original(new WavePane(QStringLiteral("Original"), port, player, m_splitter))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QString::fromStdString(utf8FromPath(source.filename())) + QStringLiteral(" - Waveform"));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tabs);
    layout->addWidget(m_splitter, 1);
    setCentralWidget(central);
    m_tabs->addTab(QStringLiteral("Original"));
    connect(m_tabs, &QTabBar::currentChanged, this, &WaveWindow::showPane);

    m_loaded = m_original->load(source);
    m_original->view().setColors(m_colors);
    reloadEvents();
    m_focused = m_original;
    addCommands();
    resize(1000, 420);
}

WaveWindow::~WaveWindow()
{
    m_original->stop();
    if (m_decoded)
        m_decoded->stop();
}

void WaveWindow::closeWith(Project& project, std::string sourceId)
{
    m_projectHeard = project.changed.subscribe([this, &project, id = std::move(sourceId)](const ProjectChange& change) {
        using Kind = ProjectChange::Kind;
        const bool gone = change.kind == Kind::Opened || change.kind == Kind::Closed ||
                          (change.kind == Kind::Tree && (!project.tree() || project.tree()->itemsWithId(id).empty()));
        if (gone)
            close();
    });
}

std::filesystem::path WaveWindow::scratchFolder() const
{
    return pathFromUtf8(m_scratch.path().toStdString());
}

bool WaveWindow::loadDecoded(const std::filesystem::path& decoded)
{
    auto* pane = new WavePane(QStringLiteral("Decoded: ") + QString::fromStdString(utf8FromPath(decoded.filename())),
                              m_port, m_player, m_splitter);
    if (!pane->load(decoded)) {
        delete pane;
        return false;
    }
    m_decoded = pane;
    m_decoded->view().setColors(m_colors);
    m_tabs->addTab(QStringLiteral("Decoded"));
    connect(&m_original->view(), &WaveView::viewChanged, this, [this] { mirror(*m_original, *m_decoded); });
    connect(&m_decoded->view(), &WaveView::viewChanged, this, [this] { mirror(*m_decoded, *m_original); });
    attachPane(*m_decoded);
    showPane(m_tabs->currentIndex());
    updateCommands();
    return true;
}

WavePane* WaveWindow::activePane() const
{
    if (!m_decoded)
        return m_original;
    if (m_split)
        return m_focused;
    return m_tabs->currentIndex() == 1 ? m_decoded : m_original;
}

void WaveWindow::showPane(int index)
{
    if (!m_decoded)
        return;
    m_original->setVisible(m_split || index == 0);
    m_decoded->setVisible(m_split || index == 1);
    m_focused = index == 1 ? m_decoded : m_original;
}

void WaveWindow::setSplit(bool on)
{
    // The split view exists only behind its switch, and only with two panes.
    on = on && splitViewEnabled() && m_decoded;
    m_split = on;
    m_tabs->setVisible(!on);
    showPane(m_tabs->currentIndex());
    if (on)
        mirror(*activePane(), activePane() == m_original ? *m_decoded : *m_original);
    updateCommands();
}

void WaveWindow::mirror(WavePane& from, WavePane& to)
{
    if (!m_split || m_mirroring)
        return;
    m_mirroring = true;
    const WaveViewport& v = from.view().viewport();
    const double ratio = double(to.view().sampleRate()) / double(std::max(from.view().sampleRate(), 1));
    to.view().zoomTo(std::int64_t(double(v.viewStart()) * ratio), std::int64_t(double(v.viewEnd()) * ratio));
    m_mirroring = false;
}

void WaveWindow::reloadEvents()
{
    SpeechEventList events;
    std::string label;
    readSpeechEvents(m_eventFile, events, label, m_port);
    m_original->view().setEvents(std::move(events));
}

SpeechEventDialog* WaveWindow::eventDialog() const
{
    return m_eventDialog;
}

void WaveWindow::openEventDialog()
{
    if (m_eventDialog) {
        m_eventDialog->raise();
        m_eventDialog->activateWindow();
        return;
    }
    m_eventDialog = new SpeechEventDialog(m_eventFile, m_original, m_port, this);
    connect(m_eventDialog, &SpeechEventDialog::confirmed, this, &WaveWindow::reloadEvents);
    m_eventDialog->show();
}

void WaveWindow::applyColors(const WaveColors& colors)
{
    m_colors = colors;
    activePane()->view().setColors(colors);
    if (m_split && m_decoded)
        (activePane() == m_original ? m_decoded : m_original)->view().setColors(colors);
}

void WaveWindow::chooseColors()
{
    m_colors = activePane()->view().colors();
    WaveColorsDialog dialog(m_colors, this);
    if (dialog.exec() == QDialog::Accepted)
        applyColors(dialog.colors());
}

void WaveWindow::saveAs()
{
    WavePane* pane = activePane();
    const std::filesystem::path file = pane->file();
    const QString suggested =
        QString::fromStdString(utf8FromPath(file.parent_path() / (file.stem().string() + "_part.wav")));
    const QString chosen =
        QFileDialog::getSaveFileName(this, QStringLiteral("Save As"), suggested, qtFileFilter(kWaveFilter));
    if (!chosen.isEmpty())
        pane->saveTo(pathFromUtf8(chosen.toStdString()));
}

QAction* WaveWindow::action(const QString& text) const
{
    for (QAction* a : findChildren<QAction*>())
        if (a->text() == text)
            return a;
    return nullptr;
}

void WaveWindow::addCommands()
{
    QToolBar* bar = addToolBar(QStringLiteral("Waveform"));
    auto* menu = new QMenu(this);
    const auto add = [&](const QString& text, const QKeySequence& keys, auto slot) {
        auto* a = new QAction(text, this);
        a->setShortcut(keys);
        a->setShortcutContext(Qt::WindowShortcut);
        connect(a, &QAction::triggered, this, slot);
        bar->addAction(a);
        menu->addAction(a);
        addAction(a);
        return a;
    };
    add(QStringLiteral("&Play"), QKeySequence(Qt::Key_Space), [this] { activePane()->play(false); });
    add(QStringLiteral("&Stop"), QKeySequence(Qt::Key_Escape), [this] { activePane()->stop(); });
    add(QStringLiteral("Pa&use"), QKeySequence(Qt::Key_P), [this] { activePane()->pause(); });
    add(QStringLiteral("Play &Looped"), QKeySequence(Qt::Key_L), [this] { activePane()->play(true); });
    bar->addSeparator();
    menu->addSeparator();
    add(QStringLiteral("Zoom &In"), QKeySequence(Qt::CTRL | Qt::Key_Plus), [this] { activePane()->view().zoomIn(); });
    add(QStringLiteral("Zoom &Out"), QKeySequence(Qt::CTRL | Qt::Key_Minus),
        [this] { activePane()->view().zoomOut(); });
    add(QStringLiteral("Zoom to Se&lection"), QKeySequence(Qt::CTRL | Qt::Key_E),
        [this] { activePane()->view().zoomToSelection(); });
    add(QStringLiteral("Zoom &All"), QKeySequence(Qt::CTRL | Qt::Key_0), [this] { activePane()->view().zoomAll(); });
    bar->addSeparator();
    menu->addSeparator();
    add(QStringLiteral("Speech &Event..."), QKeySequence(Qt::CTRL | Qt::Key_T), [this] { openEventDialog(); });
    add(QStringLiteral("&Colors..."), QKeySequence(), [this] { chooseColors(); });
    add(QStringLiteral("Save &As..."), QKeySequence::SaveAs, [this] { saveAs(); });
    QAction* split = add(QStringLiteral("Split &View"), QKeySequence(), [this](bool on) { setSplit(on); });
    split->setCheckable(true);

    m_menu = menu;
    attachPane(*m_original);
    updateCommands();
}

void WaveWindow::attachPane(WavePane& pane)
{
    pane.view().setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&pane.view(), &QWidget::customContextMenuRequested, this, [this, &pane](const QPoint& at) {
        m_focused = &pane;
        m_menu->exec(pane.view().mapToGlobal(at));
    });
    connect(&pane.view(), &WaveView::cursorChanged, this, [this, &pane] { m_focused = &pane; });
    connect(&pane, &WavePane::playStateChanged, this, &WaveWindow::updateCommands);
}

void WaveWindow::updateCommands()
{
    const bool player = m_player != nullptr;
    const bool playing = activePane()->playing();
    if (QAction* a = action(QStringLiteral("&Play")))
        a->setEnabled(player && m_loaded);
    if (QAction* a = action(QStringLiteral("Play &Looped")))
        a->setEnabled(player && m_loaded);
    if (QAction* a = action(QStringLiteral("&Stop")))
        a->setEnabled(playing);
    if (QAction* a = action(QStringLiteral("Pa&use")))
        a->setEnabled(playing);
    if (QAction* a = action(QStringLiteral("Split &View"))) {
        a->setEnabled(splitViewEnabled() && m_decoded);
        a->setChecked(m_split);
    }
}

} // namespace kestrelon
