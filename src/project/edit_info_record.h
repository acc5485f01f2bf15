#pragma once
// One encode setting of one source wave file, and one row of the main list:
// which body, algorithm and bit rate the source is encoded with, and what
// encoding and decoding it produced. The project file keeps every field but the
// compression rate and the item id; sizes stay text, as they are stored.
#include <cstdint>
#include <string>
#include <string_view>

namespace kestrelon {

struct EditInfoRecord {
    std::string fileName; // source key: the id of the source item the record belongs to
    std::string bodyName; // target body; empty until chosen
    std::string algoName; // algorithm plug-in
    std::string bitRate; // bits per second, as text
    std::string encodeSize; // bytes of the packed encoded file, decimal text
    std::string compressionRate; // shown in the list, never stored in the project file
    std::string decodeSize; // bytes of the decoded wave, decimal text
    std::string encodeName; // interim encoded file in the project's Temp folder
    std::string renameEncode; // the name the encoded file is exported under
    std::string decodeName; // decoded wave (".dfn") in the project's Temp folder
    std::int32_t multiSelect = 0; // 1 while the row is on the play list
    std::int32_t itemId = -1; // -1 in a new record; carried into play lists

    // Two records are the same row when source key, body, algorithm and bit
    // rate are equal, compared case-sensitively.
    bool sameRow(const EditInfoRecord& other) const;
    // Every field equal: the same record, not just the same row.
    bool operator==(const EditInfoRecord&) const = default;

    std::int64_t encodeSizeValue() const;
    std::int64_t decodeSizeValue() const;
};

// A size kept as decimal text, as a number: the digits it begins with, 0 when
// it is empty or begins with none.
std::int64_t sizeFromText(std::string_view text);

} // namespace kestrelon
