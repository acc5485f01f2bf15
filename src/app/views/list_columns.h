#pragma once
// The eleven columns of the main list, in order, with their header texts and
// how each one sorts.
#include <array>
#include <string_view>

namespace kestrelon {

enum class ListColumn : int {
    Marker = 0,          // row marker: on the play list or not
    FileName = 1,
    Body = 2,
    Algorithm = 3,
    BitRate = 4,
    OriginalPlay = 5,    // play cell (PC)
    EncodePlay = 6,      // play cell (board)
    EncodeSize = 7,
    DecodePlay = 8,      // play cell (PC)
    CompressionRate = 9,
    DecodeSize = 10,
};

inline constexpr int kListColumnCount = 11;

inline constexpr std::array<std::string_view, kListColumnCount> kListHeaders = {
    "",
    "File Name",
    "Body",
    "Algorithm",
    "Bit Rate (bps)",
    "Original Play (PC)",
    "Encode Play (Board)",
    "Encode File Size (byte)",
    "Decode Play (PC)",
    "Compression Rate (%)",
    "Decode File Size (byte)",
};

// Column widths in pixels at a scale ("Multiple") of 1.0.
inline constexpr std::array<int, kListColumnCount> kListBaseWidths = {
    24, 160, 90, 110, 100, 120, 130, 150, 110, 140, 150,
};

enum class SortKind { Text, Number, ListOrder };

constexpr SortKind sortKindOf(int column)
{
    switch (static_cast<ListColumn>(column)) {
    case ListColumn::FileName:
    case ListColumn::Body:
    case ListColumn::Algorithm:
        return SortKind::Text;
    case ListColumn::BitRate:
    case ListColumn::EncodeSize:
    case ListColumn::CompressionRate:
    case ListColumn::DecodeSize:
        return SortKind::Number;
    default:
        return SortKind::ListOrder; // the marker and the play cells keep the project's order
    }
}

} // namespace kestrelon
