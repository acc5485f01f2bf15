#include "playback/sentence.h"

#include "codec/row_encoded_file.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "project/project_session.h"
#include "wave/wave_file.h"

#include <algorithm>

namespace kestrelon {

bool everyEntryDecoded(const ProjectSession& session, const std::vector<const EditInfoRecord*>& entries, UserPort& port)
{
    const bool all = std::all_of(entries.begin(), entries.end(), [&](const EditInfoRecord* entry) {
        return isPlainFileName(entry->decodeName) && !findInterimFile(session, entry->decodeName).empty();
    });
    if (!all)
        port.showMessage(msg::kNoDecodeFiles);
    return all;
}

EntryStart startSentenceEntry(PlaybackController& controller, const ProjectSession& session,
                              const EditInfoRecord& entry, PlayWhat what, bool last, UserPort& port)
{
    // Whether to go on after an entry that cannot play: the last one only says why.
    const auto goOn = [&](const std::string& reason, std::string_view question) {
        if (last) {
            port.showMessage(reason);
            return EntryStart::Ended;
        }
        return port.ask(reason + std::string(question), Buttons::YesNo) == Answer::Yes ? EntryStart::Skipped
                                                                                       : EntryStart::Ended;
    };
    if (what == PlayWhat::Original) {
        const std::filesystem::path source = session.filesFolder() / pathFromUtf8(entry.fileName);
        if (!isPlainFileName(entry.fileName) || !isRegularFile(source))
            return goOn(entry.fileName + std::string(msg::kSentenceSourceMissing), msg::kPlayNextQuestion);
        if (!WaveFile().load(source, WaveRead::FactsOnly))
            return goOn(std::string(msg::kSentenceCanNotOpen) + entry.fileName + "!", msg::kPlayNextShortQuestion);
    }
    return controller.playRow(session, entry, what) ? EntryStart::Playing : EntryStart::Ended;
}

} // namespace kestrelon
