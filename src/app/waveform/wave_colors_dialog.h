#pragma once
// The colour dialog of the waveform windows: the eleven colours of the
// record, each on a swatch that opens a colour chooser, and "Reset All" back
// to the default palette. The caller applies the result.
#include "settings/wave_colors.h"

#include <QDialog>

#include <array>

class QPushButton;

namespace kestrelon {

class WaveColorsDialog : public QDialog {
    Q_OBJECT
public:
    explicit WaveColorsDialog(const WaveColors& colors, QWidget* parent = nullptr);

    const WaveColors& colors() const { return m_colors; }
    void setColor(std::size_t slot, std::uint32_t value);
    void resetAll();

private:
    void paintSwatches();

    WaveColors m_colors;
    std::array<QPushButton*, kWaveColorSlots.size()> m_swatches{};
};

} // namespace kestrelon
