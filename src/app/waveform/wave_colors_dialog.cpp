#include "app/waveform/wave_colors_dialog.h"

#include "waveform/wave_painter.h"

#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrelon {

namespace {

// What each colour of the record paints, in the record's order.
constexpr std::array<const char*, kWaveColorSlots.size()> kSlotTitles = {
    "Wave", "Center line", "Boundary lines", "Grid lines", "Horizontal ruler", "Vertical ruler",
    "Text", "Background",  "Sample points",  "Cursor",     "Play position",
};

} // namespace

WaveColorsDialog::WaveColorsDialog(const WaveColors& colors, QWidget* parent)
    : QDialog(parent)
    , m_colors(colors)
{
    setWindowTitle(QStringLiteral("Colors"));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    for (std::size_t i = 0; i < kWaveColorSlots.size(); ++i) {
        auto* swatch = new QPushButton(this);
        swatch->setFixedSize(64, 20);
        swatch->setAutoDefault(false);
        connect(swatch, &QPushButton::clicked, this, [this, i] {
            const QColor chosen = QColorDialog::getColor(qColorFromRecord(m_colors.*kWaveColorSlots[i].member), this,
                                                         QString::fromLatin1(kSlotTitles[i]));
            if (chosen.isValid())
                setColor(i, recordFromQColor(chosen));
        });
        m_swatches[i] = swatch;
        form->addRow(QString::fromLatin1(kSlotTitles[i]), swatch);
    }
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* reset = buttons->addButton(QStringLiteral("Reset All"), QDialogButtonBox::ResetRole);
    connect(reset, &QPushButton::clicked, this, &WaveColorsDialog::resetAll);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    paintSwatches();
}

void WaveColorsDialog::setColor(std::size_t slot, std::uint32_t value)
{
    if (slot >= kWaveColorSlots.size())
        return;
    m_colors.*kWaveColorSlots[slot].member = value;
    paintSwatches();
}

void WaveColorsDialog::resetAll()
{
    m_colors = kDefaultWaveColors;
    paintSwatches();
}

void WaveColorsDialog::paintSwatches()
{
    for (std::size_t i = 0; i < m_swatches.size(); ++i)
        m_swatches[i]->setStyleSheet(QStringLiteral("background-color: %1; border: 1px solid gray;")
                                         .arg(qColorFromRecord(m_colors.*kWaveColorSlots[i].member).name()));
}

} // namespace kestrelon
