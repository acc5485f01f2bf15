#pragma once
// One entry of the project's play list: a row of the main list, named by its
// source key, body, algorithm and bit rate (compared as exact text), with the
// row's other fields copied along when the entry is matched.
#include <cstddef>
#include <string>
#include <vector>

namespace kestrelon {

struct PlayItem {
    std::string sourceKey;
    std::string bodyName;
    std::string algorithmName;
    std::string bitRate;
    // Copied from the row; not stored in the play-list file.
    std::string encodeName;
    std::string encodeSize; // decimal text, as the row keeps sizes
    std::string decodeName;
    std::string decodeSize;
    int itemId = 0;
};

using PlayList = std::vector<PlayItem>;

inline constexpr std::size_t kMaxPlayItems = 256;

} // namespace kestrelon
