#pragma once
// The project's play-list file (".set"): the play list in play order.
#include "playback/play_item.h"

#include <filesystem>

namespace kestrelon {

class UserPort;

// Empties `list`, then reads the file. False when the file is missing (the
// list stays empty; that is no error) or cannot be read. Entries without a
// source key or body name are dropped; at most kMaxPlayItems are taken. A
// malformed number shows "Invalid data!" through `port` and reads as 0.
bool loadPlayList(const std::filesystem::path& path, PlayList& list, UserPort& port);

// Writes the whole file: Count, then one section per entry from Item0.
bool savePlayList(const std::filesystem::path& path, const PlayList& list);

} // namespace kestrelon
