#include "app/waveform/wave_pane.h"

#include "common/paths.h"
#include "common/user_port.h"
#include "playback/playback_controller.h"
#include "wave/wave_file.h"
#include "wave/wave_save.h"

#include <QLabel>
#include <QScrollBar>
#include <QVBoxLayout>

namespace kestrelon {

namespace {

QString seconds(std::int64_t samples, int rate)
{
    return QString::number(double(samples) / std::max(rate, 1), 'f', 3);
}

} // namespace

WavePane::WavePane(QString title, UserPort& port, PlaybackController* player, QWidget* parent)
    : QWidget(parent)
    , m_port(port)
    , m_player(player)
    , m_view(new WaveView(this))
    , m_scroll(new QScrollBar(Qt::Horizontal, this))
    , m_title(new QLabel(title, this))
    , m_info(new QLabel(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    auto* header = new QHBoxLayout;
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    header->addWidget(m_title);
    header->addStretch();
    header->addWidget(m_info);
    layout->addLayout(header);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_scroll);
    m_info->setTextInteractionFlags(Qt::TextSelectableByMouse);

    connect(m_view, &WaveView::viewChanged, this, [this] {
        updateScrollBar();
        updateInfo();
    });
    connect(m_view, &WaveView::cursorChanged, this, &WavePane::updateInfo);
    connect(m_scroll, &QScrollBar::valueChanged, this, [this](int value) { m_view->scrollTo(value); });
    if (m_player)
        m_following = m_player->changed.subscribe([this](const PlayStatus& status) { followPlayer(status); });
}

bool WavePane::load(const std::filesystem::path& wave)
{
    WaveFile file;
    if (!file.load(wave)) {
        m_port.showMessage(file.error());
        return false;
    }
    m_file = wave;
    const int rate = file.sampleRate();
    m_view->setSamples(file.takeSamples(), rate);
    return true;
}

void WavePane::updateScrollBar()
{
    const WaveViewport& v = m_view->viewport();
    const QSignalBlocker quiet(m_scroll);
    m_scroll->setRange(0, int(std::max<std::int64_t>(v.sampleCount() - v.viewLength(), 0)));
    m_scroll->setPageStep(int(std::max<std::int64_t>(v.viewLength(), 1)));
    m_scroll->setSingleStep(int(std::max<std::int64_t>(v.viewLength() / 16, 1)));
    m_scroll->setValue(int(v.viewStart()));
}

QString WavePane::infoText() const
{
    const WaveViewport& v = m_view->viewport();
    const int rate = m_view->sampleRate();
    const std::int64_t begin = v.hasSelection() ? v.selectionStart() : v.cursor();
    const std::int64_t length = v.selectionEnd() - v.selectionStart();
    return QStringLiteral("Sample Len: %1   Sample Rate: %2   Begin %3 (%4 s)   Length %5 (%6 s)   View %7 - %8")
        .arg(v.sampleCount())
        .arg(rate)
        .arg(begin)
        .arg(seconds(begin, rate))
        .arg(length)
        .arg(seconds(length, rate))
        .arg(v.viewStart())
        .arg(v.viewEnd());
}

void WavePane::updateInfo()
{
    m_info->setText(infoText());
}

void WavePane::play(bool looped)
{
    if (!m_player || m_file.empty())
        return;
    const WaveViewport& v = m_view->viewport();
    std::filesystem::path file = m_file;
    m_playedOffset = 0;
    if (v.hasSelection()) {
        // The player plays files: the selection goes to a scratch WAV first.
        file = pathFromUtf8(m_scratch.path().toStdString()) / "temp.wav";
        const std::vector<std::int16_t>& samples = m_view->samples();
        if (!m_scratch.isValid() ||
            !writeWav16(file,
                        std::span(samples).subspan(std::size_t(v.selectionStart()),
                                                   std::size_t(v.selectionEnd() - v.selectionStart())),
                        m_view->sampleRate()))
            file.clear();
        m_playedOffset = v.selectionStart();
    }
    m_playedFile = file;
    if (file.empty() || !m_player->playFile(file, true, looped ? 0 : 1))
        m_playedFile.clear();
}

void WavePane::stop()
{
    if (playing())
        m_player->stop();
}

void WavePane::pause()
{
    if (playing())
        m_player->pause();
}

bool WavePane::playing() const
{
    return m_player && m_player->isActive() && !m_playedFile.empty() && m_player->status().file == m_playedFile;
}

void WavePane::followPlayer(const PlayStatus& status)
{
    const bool mine = !m_playedFile.empty() && status.file == m_playedFile && status.state != PlayState::Idle;
    m_view->setPlayPosition(mine ? m_playedOffset + status.position : -1);
    emit playStateChanged();
}

bool WavePane::saveTo(const std::filesystem::path& target)
{
    const WaveViewport& v = m_view->viewport();
    const bool part = v.hasSelection();
    return saveWaveAs(target, m_view->samples(), m_view->sampleRate(), part ? v.selectionStart() : 0,
                      part ? v.selectionEnd() : v.sampleCount(), m_port);
}

} // namespace kestrelon
