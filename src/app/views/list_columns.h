#pragma once
// The columns of the main list, in order, with their header texts and how
// each one sorts: the eleven of a row's record, then the quality of its
// decode, which the user may hide.
#include <array>
#include <string_view>

namespace kestrelon {

enum class ListColumn : int {
    Marker = 0, // row marker: on the play list or not
    FileName = 1,
    Body = 2,
    Algorithm = 3,
    BitRate = 4,
    OriginalPlay = 5, // play cell (PC)
    EncodePlay = 6, // play cell (board)
    EncodeSize = 7,
    DecodePlay = 8, // play cell (PC)
    CompressionRate = 9,
    DecodeSize = 10,
    SegmentalSnr = 11, // quality of the decode against its source
    MelDistance = 12,
    DurationRatio = 13,
};

inline constexpr int kRecordColumnCount = 11;
inline constexpr int kListColumnCount = 14;
inline constexpr int kFirstQualityColumn = kRecordColumnCount;

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
    "Seg. SNR (dB)",
    "Mel Distance (dB)",
    "Duration Ratio",
};

// Column widths in pixels at a scale ("Multiple") of 1.0.
inline constexpr std::array<int, kListColumnCount> kListBaseWidths = {
    24, 160, 90, 110, 100, 120, 130, 150, 110, 140, 150, 100, 120, 100,
};

enum class SortKind { Text, Number, ListOrder };

constexpr SortKind sortKindOf(int column)
{
    switch (static_cast<ListColumn>(column)) {
    case ListColumn::FileName:
    case ListColumn::Body:
    case ListColumn::Algorithm: return SortKind::Text;
    case ListColumn::BitRate:
    case ListColumn::EncodeSize:
    case ListColumn::CompressionRate:
    case ListColumn::DecodeSize:
    case ListColumn::SegmentalSnr:
    case ListColumn::MelDistance:
    case ListColumn::DurationRatio: return SortKind::Number;
    default: return SortKind::ListOrder; // the marker and the play cells keep the project's order
    }
}

} // namespace kestrelon
