#pragma once
// A play list played on the PC, entry after entry, as the workbench's "Play
// Sentence" dialog and the command line both play it. A source that is
// missing or cannot be opened asks whether to go on with the next entry (the
// last entry only says so); the decoded mode needs every entry decoded first.
#include "playback/playback_controller.h"

#include <vector>

namespace kestrelon {

class ProjectSession;
class UserPort;
struct EditInfoRecord;

enum class EntryStart { Playing, Skipped, Ended };

// "Not found decode file(s)!" and false when an entry has no decoded file.
bool everyEntryDecoded(const ProjectSession& session, const std::vector<const EditInfoRecord*>& entries,
                       UserPort& port);

// Starts one entry on the controller. Skipped: it could not play and the user
// chose the next one; Ended: the sentence ends here (its reason said).
EntryStart startSentenceEntry(PlaybackController& controller, const ProjectSession& session,
                              const EditInfoRecord& entry, PlayWhat what, bool last, UserPort& port);

} // namespace kestrelon
