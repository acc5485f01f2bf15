#pragma once
// The colour record of the waveform windows: eleven colours in a fixed order,
// each a 32-bit value 0x00BBGGRR (red in the low byte). The program keeps one
// shared record; the default palette below is what "Reset All" goes back to.
#include <array>
#include <cstdint>
#include <string_view>

namespace kestrelon {

struct WaveColors {
    std::uint32_t wave = 0x00ABF01C;
    std::uint32_t centerLine = 0x002626A4;
    std::uint32_t boundaryLine = 0x009F876F;
    std::uint32_t gridLine = 0x004F2C04;
    std::uint32_t horzRule = 0x004F2C04;
    std::uint32_t vertRule = 0x004F2C04;
    std::uint32_t text = 0x00ABF01C;
    std::uint32_t background = 0x00000000;
    std::uint32_t point = 0x00FF0000;
    std::uint32_t cursor = 0x0000FFFF;
    std::uint32_t playPos = 0x00FFFFFF;

    bool operator==(const WaveColors&) const = default;
};

inline constexpr WaveColors kDefaultWaveColors{};

// The record's colours in order, by the names under which they are stored.
struct WaveColorSlot {
    std::string_view name;
    std::uint32_t WaveColors::*member;
};

inline constexpr std::array<WaveColorSlot, 11> kWaveColorSlots{{
    {"WaveColor", &WaveColors::wave},
    {"CenterLineColor", &WaveColors::centerLine},
    {"BoundaryLineColor", &WaveColors::boundaryLine},
    {"GridLineColor", &WaveColors::gridLine},
    {"HorzRuleColor", &WaveColors::horzRule},
    {"VertRuleColor", &WaveColors::vertRule},
    {"TextColor", &WaveColors::text},
    {"BackgroundColor", &WaveColors::background},
    {"PointColor", &WaveColors::point},
    {"CursorColor", &WaveColors::cursor},
    {"PlayPosColor", &WaveColors::playPos},
}};

} // namespace kestrelon
