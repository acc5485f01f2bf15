#include "app/waveform/speech_event_dialog.h"

#include "app/waveform/wave_pane.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>

namespace kestrelon {

namespace {

// "Auto Zoom In" shows this much of the sound on each side of the event.
constexpr double kAutoZoomSeconds = 0.05;

} // namespace

SpeechEventDialog::SpeechEventDialog(const std::filesystem::path& eventFile, WavePane* pane, UserPort& port,
                                     QWidget* parent)
    : QDialog(parent)
    , m_editor(eventFile, port)
    , m_pane(pane)
    , m_port(port)
    , m_list(new QListWidget(this))
    , m_label(new QLineEdit(this))
    , m_defaultLabel(new QRadioButton(QStringLiteral("Use default label"), this))
    , m_customLabel(new QRadioButton(QStringLiteral("Use custom label"), this))
    , m_description(new QLineEdit(this))
    , m_id(new QLineEdit(this))
    , m_autoZoom(new QCheckBox(QStringLiteral("Auto Zoom In"), this))
{
    setWindowTitle(QStringLiteral("Speech Event "));
    setAttribute(Qt::WA_DeleteOnClose);
    setModal(false);

    auto* grid = new QGridLayout(this);
    auto* headings = new QHBoxLayout;
    headings->addWidget(new QLabel(QStringLiteral("Position :"), this), 2);
    headings->addWidget(new QLabel(QStringLiteral("ID :"), this), 1);
    headings->addWidget(new QLabel(QStringLiteral("Description :"), this), 2);
    grid->addLayout(headings, 0, 0, 1, 3);
    grid->addWidget(m_list, 1, 0, 1, 3);

    grid->addWidget(new QLabel(QStringLiteral("Tag Label"), this), 2, 0);
    grid->addWidget(m_label, 2, 1, 1, 2);
    grid->addWidget(m_defaultLabel, 3, 0);
    grid->addWidget(m_customLabel, 3, 1);
    grid->addWidget(new QLabel(QStringLiteral("Description"), this), 4, 0);
    grid->addWidget(m_description, 4, 1, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("ID"), this), 5, 0);
    grid->addWidget(m_id, 5, 1);
    grid->addWidget(new QLabel(QStringLiteral("(1~254)"), this), 5, 2);
    grid->addWidget(m_autoZoom, 6, 0);

    auto* buttons = new QHBoxLayout;
    const auto button = [&](const char* text, auto slot) {
        auto* b = new QPushButton(QString::fromLatin1(text), this);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
    };
    button("Play", [this] {
        if (m_pane)
            m_pane->play(false);
    });
    button("Stop", [this] {
        if (m_pane)
            m_pane->stop();
    });
    button("Add", [this] { add(); });
    button("Del", [this] { deleteSelected(); });
    button("Ok", [this] { confirm(); });
    button("Cancel", [this] { reject(); });
    grid->addLayout(buttons, 7, 0, 1, 3);

    m_id->setMaxLength(3);
    m_defaultLabel->setChecked(!m_editor.customLabelChosen());
    m_customLabel->setChecked(m_editor.customLabelChosen());
    m_label->setEnabled(m_editor.customLabelChosen());
    m_label->setText(QString::fromStdString(m_editor.customLabel()));
    connect(m_defaultLabel, &QRadioButton::clicked, this, [this] {
        m_editor.chooseDefaultLabel();
        m_label->clear();
        m_label->setEnabled(false);
    });
    connect(m_customLabel, &QRadioButton::clicked, this, [this] {
        m_editor.chooseCustomLabel();
        m_label->clear();
        m_label->setEnabled(true);
    });
    connect(m_label, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_editor.setCustomLabel(text.toStdString()); });
    connect(m_list, &QListWidget::currentRowChanged, this, &SpeechEventDialog::showEvent);
    fillList();
    suggestId();
}

void SpeechEventDialog::fillList()
{
    m_list->clear();
    for (const SpeechEvent& event : m_editor.events()) {
        auto* item = new QListWidgetItem(QString::fromStdString(eventRowText(event)), m_list);
        item->setToolTip(QString::fromStdString(event.description));
    }
}

// The lowest ID not yet taken, so that "Add" works without typing one.
void SpeechEventDialog::suggestId()
{
    for (int id = kMinEventId; id <= kMaxEventId; ++id) {
        if (m_editor.indexOfId(id) < 0) {
            m_id->setText(QString::number(id));
            return;
        }
    }
}

void SpeechEventDialog::add()
{
    if (!m_pane)
        return;
    bool number = false;
    const int id = m_id->text().trimmed().toInt(&number);
    const std::int64_t cursor = m_pane->view().viewport().cursor();
    const int index = m_editor.add(std::uint32_t(cursor), number ? id : -1, m_description->text().toStdString());
    if (index < 0)
        return;
    fillList();
    const QSignalBlocker quiet(m_list);
    m_list->setCurrentRow(index);
    m_description->clear();
    suggestId();
}

void SpeechEventDialog::deleteSelected()
{
    if (!m_editor.removeAt(m_list->currentRow()))
        return;
    const int row = m_list->currentRow();
    fillList();
    m_list->setCurrentRow(std::min(row, m_list->count() - 1));
}

void SpeechEventDialog::showEvent(int row)
{
    if (!m_pane || row < 0 || row >= int(m_editor.events().size()))
        return;
    const std::int64_t at = m_editor.events()[std::size_t(row)].samples;
    WaveView& view = m_pane->view();
    view.setCursorSample(at);
    if (m_autoZoom->isChecked()) {
        const auto reach = std::int64_t(kAutoZoomSeconds * view.sampleRate());
        view.zoomTo(at - reach, at + reach);
    } else if (at < view.viewport().viewStart() || at > view.viewport().viewEnd()) {
        view.scrollTo(at - view.viewport().viewLength() / 2);
    }
}

void SpeechEventDialog::confirm()
{
    if (m_pane)
        m_pane->stop();
    if (!m_editor.write()) {
        m_port.showMessage(std::string(msg::kEventFileNotWrittenPrefix) + utf8FromPath(m_editor.eventFile()) + " !");
        return;
    }
    emit confirmed();
    accept();
}

} // namespace kestrelon
