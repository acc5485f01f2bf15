#pragma once
// What goes to the board for rows of the main list. Every check that stands
// before board play is made here, in the order a user meets them, so the
// workbench's cell, its play list and the command line refuse alike:
//   no encode name, no body, an algorithm the body does not run, a missing
//   source wave, unpacked data without a valid header, and last the source's
//   sample rate against the body's range, which only asks: one file by name,
//   several in one list.
// Nothing plays while the project is busy (an encode or decode running).
#include "host/board_player_host.h"

#include <optional>
#include <vector>

namespace kestrelon {

class BodySettings;
class ProjectSession;
class UserPort;
struct EditInfoRecord;

// The items to send, in the rows' order; nullopt when a check failed (its
// message shown), the user chose not to play, or the project is busy.
std::optional<std::vector<BoardItem>> boardItemsFor(const ProjectSession& session,
                                                    const std::vector<const EditInfoRecord*>& rows,
                                                    const BodySettings& bodies, UserPort& port);

} // namespace kestrelon
