#include "app/dialogs/body_information_dialog.h"

#include "common/messages.h"
#include "common/user_port.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <limits>

namespace kestrelon {

namespace {

constexpr int kItemValueRole = Qt::UserRole;
constexpr int kNoVolume = -1; // a current volume with all bits set: never set

QString formatted(const char* format, int value)
{
    return QString::asprintf(format, value);
}

std::uint32_t itemValue(const QTreeWidgetItem* item)
{
    return item ? item->data(0, kItemValueRole).toUInt() : 0;
}

} // namespace

BodyInformationDialog::BodyInformationDialog(std::vector<BodyInfo>& bodies, UserPort& port, QWidget* parent)
    : QDialog(parent)
    , m_bodies(bodies)
    , m_port(port)
    , m_tree(new QTreeWidget(this))
    , m_file(new QLabel(this))
    , m_volumeGroup(new QGroupBox(this))
    , m_volumeLabel(new QLabel(tr("Volume:"), m_volumeGroup))
    , m_volumeEdit(new QLineEdit(m_volumeGroup))
    , m_apply(new QPushButton(tr("Apply"), m_volumeGroup))
    , m_slider(new QSlider(Qt::Horizontal, m_volumeGroup))
    , m_status(new QLabel(this))
    , m_version(new QPushButton(tr("Get Version"), this))
    , m_port0(new QComboBox(this))
{
    setWindowTitle(tr("Body Information"));
    m_tree->setHeaderHidden(true);
    m_tree->setColumnCount(1);
    m_tree->setMinimumSize(260, 300);

    m_volumeEdit->setMaximumWidth(80);
    m_slider->setMinimumWidth(200);
    m_slider->setTickPosition(QSlider::TicksBelow);
    auto* volume = new QGridLayout(m_volumeGroup);
    volume->addWidget(m_volumeLabel, 0, 0);
    volume->addWidget(m_volumeEdit, 0, 1);
    volume->addWidget(m_apply, 0, 2);
    volume->addWidget(m_slider, 1, 0, 1, 3);
    volume->setColumnStretch(3, 1);

    // Offered only once a board player can answer (setVersionQuery).
    m_version->setEnabled(false);
    m_version->setToolTip(tr("Needs the target board plug-in."));
    connect(m_version, &QPushButton::clicked, this, &BodyInformationDialog::getVersion);
    m_status->setMinimumWidth(260);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* right = new QVBoxLayout;
    right->addWidget(m_volumeGroup);
    right->addWidget(m_status);
    auto* board = new QHBoxLayout;
    board->addWidget(m_version);
    board->addWidget(new QLabel(tr("Board port:"), this));
    board->addWidget(m_port0, 1);
    m_port0->setEditable(true);
    m_port0->setEnabled(false);
    right->addLayout(board);
    right->addStretch();
    right->addWidget(buttons);
    auto* layout = new QHBoxLayout;
    layout->addWidget(m_tree, 1);
    layout->addLayout(right);
    m_file->setWordWrap(true);
    m_file->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_file->hide();
    auto* outer = new QVBoxLayout;
    outer->addLayout(layout, 1);
    outer->addWidget(m_file);
    setLayout(outer);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_apply, &QPushButton::clicked, this, &BodyInformationDialog::applyTypedVolume);
    connect(m_volumeEdit, &QLineEdit::returnPressed, this, &BodyInformationDialog::applyTypedVolume);
    connect(m_slider, &QSlider::valueChanged, this, &BodyInformationDialog::onSliderValueChanged);
    connect(m_tree, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* current, QTreeWidgetItem*) { onCurrentItemChanged(current); });

    fillTree();
    m_volumeGroup->setTitle(QString());
    for (QWidget* control : {static_cast<QWidget*>(m_volumeLabel), static_cast<QWidget*>(m_volumeEdit),
                             static_cast<QWidget*>(m_apply), static_cast<QWidget*>(m_slider)})
        control->setEnabled(false);
}

void BodyInformationDialog::setSettingsFile(const QString& path)
{
    m_file->setText(tr("Body settings file: %1").arg(path));
    m_file->setVisible(!path.isEmpty());
}

void BodyInformationDialog::fillTree()
{
    const std::size_t count = std::min<std::size_t>(m_bodies.size(), kIndexMask + 1);
    for (std::size_t i = 0; i < count; ++i) {
        const BodyInfo& body = m_bodies[i];
        auto* root = new QTreeWidgetItem(m_tree, {QString::fromStdString(body.name)});
        root->setData(0, kItemValueRole, static_cast<std::uint32_t>(i) | kBodyItem);
        const auto addValue = [root](const QString& text, std::uint32_t value) {
            auto* child = new QTreeWidgetItem(root, {text});
            child->setData(0, kItemValueRole, value);
        };
        if (body.sampleRateMax != 0 || body.sampleRateMin != 0) {
            addValue(formatted("SampleRateMax=%d", body.sampleRateMax), kValueItem);
            addValue(formatted("SampleRateMin=%d", body.sampleRateMin), kValueItem);
        }
        if (body.volumeMax != 0 || body.volumeMin != 0) {
            addValue(formatted("VolumeMax=%d", body.volumeMax), kValueItem);
            addValue(formatted("VolumeMin=%d", body.volumeMin), kValueItem);
            addValue(formatted("CurrentVolume=%d", body.currentVolume), kCurrentVolumeItem);
        }
    }
    m_tree->expandAll();
}

QTreeWidgetItem* BodyInformationDialog::bodyItem(int index) const
{
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = m_tree->topLevelItem(i);
        if ((itemValue(item) & kIndexMask) == static_cast<std::uint32_t>(index))
            return item;
    }
    return nullptr;
}

BodyInfo* BodyInformationDialog::selectedRecord()
{
    if (m_body < 0 || static_cast<std::size_t>(m_body) >= m_bodies.size())
        return nullptr;
    return &m_bodies[static_cast<std::size_t>(m_body)];
}

void BodyInformationDialog::selectBody(int index)
{
    if (QTreeWidgetItem* item = bodyItem(index))
        m_tree->setCurrentItem(item);
}

void BodyInformationDialog::onCurrentItemChanged(QTreeWidgetItem* current)
{
    // A value item stands for the body that holds it.
    while (current && (itemValue(current) & kBodyItem) == 0)
        current = current->parent();
    if (!current)
        return;
    const int index = static_cast<int>(itemValue(current) & kIndexMask);
    if (index == m_body)
        return;
    m_body = index;
    setUpVolumeControls();
}

void BodyInformationDialog::setUpVolumeControls()
{
    BodyInfo* body = selectedRecord();
    if (!body)
        return;
    m_volumeGroup->setTitle(QString::fromStdString(body->name));

    const bool hasVolume = body->volumeMin != 0 || body->volumeMax != 0;
    for (QWidget* control : {static_cast<QWidget*>(m_volumeLabel), static_cast<QWidget*>(m_volumeEdit),
                             static_cast<QWidget*>(m_apply), static_cast<QWidget*>(m_slider)})
        control->setEnabled(hasVolume);
    if (!hasVolume) {
        m_volumeEdit->clear();
        return;
    }

    m_settingUp = true;
    m_slider->setRange(body->volumeMin, std::max(body->volumeMin, body->volumeMax));
    const auto inRange = [body](int value) { return value >= body->volumeMin && value <= body->volumeMax; };
    if (body->currentVolume != kNoVolume && inRange(body->currentVolume)) {
        m_slider->setValue(body->currentVolume);
    } else if (body->currentVolume == kNoVolume && body->defaultVolume != 0 && inRange(body->defaultVolume)) {
        m_slider->setValue(body->defaultVolume);
        body->currentVolume = body->defaultVolume;
    }
    m_settingUp = false;
    showCurrentVolume(body->currentVolume);
}

void BodyInformationDialog::showCurrentVolume(int volume)
{
    m_volumeEdit->setText(formatted("%d", volume));
    QTreeWidgetItem* root = bodyItem(m_body);
    if (!root)
        return;
    for (int i = 0; i < root->childCount(); ++i) {
        QTreeWidgetItem* child = root->child(i);
        if ((itemValue(child) & kCurrentVolumeItem) != 0)
            child->setText(0, formatted("CurrentVolume=%d", volume));
    }
}

void BodyInformationDialog::onSliderValueChanged(int value)
{
    if (m_settingUp)
        return;
    m_volumeEdit->setText(formatted("%d", value));
    BodyInfo* body = selectedRecord();
    if (!body)
        return;
    body->currentVolume = value;
    showCurrentVolume(value);
}

int BodyInformationDialog::leadingInteger(const QString& text)
{
    qsizetype i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t'))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }
    long long value = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        value = value * 10 + (text[i].unicode() - u'0');
        // Beyond any volume: keep it out of int's reach but still "too large".
        if (value > std::numeric_limits<int>::max())
            value = static_cast<long long>(std::numeric_limits<int>::max()) + 1;
    }
    if (negative)
        value = -value;
    if (value > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    if (value < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

void BodyInformationDialog::applyTypedVolume()
{
    BodyInfo* body = selectedRecord();
    if (m_volumeEdit->text().isEmpty() || !body || !m_apply->isEnabled())
        return;
    const int typed = leadingInteger(m_volumeEdit->text());
    if (typed > body->volumeMax) {
        m_port.showMessage(msg::kVolumeAboveMaximum);
        m_volumeEdit->setText(formatted("%d", body->currentVolume));
        return;
    }
    if (typed < body->volumeMin) {
        m_port.showMessage(msg::kVolumeBelowMinimum);
        m_volumeEdit->setText(formatted("%d", body->currentVolume));
        return;
    }
    body->currentVolume = typed;
    m_settingUp = true;
    m_slider->setValue(typed);
    m_settingUp = false;
    showCurrentVolume(typed);
}

void BodyInformationDialog::accept()
{
    for (BodyInfo& body : m_bodies)
        body.confirmedVolume = body.currentVolume;
    QDialog::accept();
}

void BodyInformationDialog::reject()
{
    for (BodyInfo& body : m_bodies)
        body.currentVolume = body.confirmedVolume;
    QDialog::reject();
}

void BodyInformationDialog::setVersionQuery(std::function<BoardVersionQuery()> query)
{
    m_versionQuery = std::move(query);
    m_version->setEnabled(bool(m_versionQuery));
    m_version->setToolTip({});
}

void BodyInformationDialog::setBoardPort(const QString& device, const QStringList& devices,
                                         std::function<void(const QString&)> chosen)
{
    m_port0->clear();
    m_port0->addItems(devices);
    m_port0->setEditText(device);
    m_port0->setEnabled(true);
    connect(m_port0, &QComboBox::currentTextChanged, this, [chosen = std::move(chosen)](const QString& text) {
        if (chosen)
            chosen(text.trimmed());
    });
}

void BodyInformationDialog::getVersion()
{
    if (!m_versionQuery || m_body < 0)
        return;
    m_status->setText(tr("Connect to the host..."));
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const BoardVersionQuery query = m_versionQuery();
    QApplication::restoreOverrideCursor();
    m_status->setText(QString::fromStdString(query.status));
}

} // namespace kestrelon
