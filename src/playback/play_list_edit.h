#pragma once
// Editing the project's play list as the "Play Sentence" dialog does: rows
// added in list order up to 256 entries (each marked multi-select), entries
// removed, and the check when the dialog opens that drops entries whose row
// is gone. The dialog and `kestrelon-cli playlist` share it.
#include "playback/play_item.h"

#include <cstddef>
#include <vector>

namespace kestrelon {

class MainList;
class UserPort;

// Appends the rows given (list order), each as a new entry; stops with
// "Can't add more!" at 256 entries, and adds nothing ("The board is
// playing!") while the board plays. Returns how many were added.
std::size_t addRowsToPlayList(PlayList& list, const MainList& rows, const std::vector<std::size_t>& which,
                              bool boardPlaying, UserPort& port);

// Refreshes every entry from its row (matched on source, body, algorithm and
// bit rate) and removes those without one, saying so once. True when any went.
bool checkPlayList(PlayList& list, const MainList& rows, UserPort& port);

// The row an entry plays, or none.
const struct ListRow* rowOfEntry(const PlayItem& item, const MainList& rows);

} // namespace kestrelon
