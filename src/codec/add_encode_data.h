#pragma once
// "Add Encode Data": a new row for each selected source of the Files tree,
// with a body, an algorithm and a bit rate chosen in the "Encode Setting"
// dialog, encoded at once. The dialog itself is the caller's (the workbench
// shows it, kestrelon-cli answers with its fixed choice); the rules around it
// are here.
#include "codec/engine.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kestrelon {

class ProjectItem;

// The choice the dialog keeps between uses (persisted as LastSetting:
// BodyName, AlgName, BitRate, ApplyAllFiles).
struct LastEncodeSetting {
    std::string bodyName;
    std::string algName;
    std::string bitRate;
    bool applyAllFiles = true;
};

// What the person did with the dialog.
struct EncodeSettingAnswer {
    bool confirmed = false; // OK; false is Cancel
    // The texts chosen in the three lists; nullopt for a list left without a selection.
    std::optional<std::string> bodyName;
    std::optional<std::string> algName;
    std::optional<std::string> bitRate;
    bool applyToAll = false; // the "Apply to all files" check box
};

class EncodeSettingChooser {
public:
    virtual ~EncodeSettingChooser() = default;
    // Shows the "Encode Setting" dialog for `source`, opened on `last`.
    virtual EncodeSettingAnswer choose(const ProjectItem& source, const LastEncodeSetting& last) = 0;
};

// Always answers OK with one choice and "Apply to all files" checked.
class FixedEncodeSetting : public EncodeSettingChooser {
public:
    FixedEncodeSetting(std::string body, std::string algorithm, std::string bitRate);
    EncodeSettingAnswer choose(const ProjectItem& source, const LastEncodeSetting& last) override;
    int timesShown() const { return m_shown; }

private:
    std::string m_body;
    std::string m_algorithm;
    std::string m_bitRate;
    int m_shown = 0;
};

// What happened to one source.
enum class SourceOutcome {
    Added, // a new row, encoded (see `encode`)
    Replaced, // the row with the same algorithm took the new choice and was encoded again
    Skipped, // Skip or Skip All at the replace question
    NoChoice, // the dialog's choice was invalid ("There is a error!") or not offered by the body settings
};

struct AddedSource {
    ProjectItem* source = nullptr;
    SourceOutcome outcome = SourceOutcome::NoChoice;
    std::size_t recordIndex = 0; // the row's record, for Added and Replaced
    RowOutcome encode = RowOutcome::NotReached; // for Added and Replaced
};

struct AddEncodeResult {
    std::vector<AddedSource> sources; // in tree order, up to where the command ended
    bool cancelled = false; // Cancel in the dialog
    bool stopped = false; // Stop at the replace question, or a stop request
};

// `selected` are the selected items of the Files tree in tree order; groups
// are passed over. `last` is the dialog's kept choice, updated by each valid
// OK. Every change marks the project modified.
AddEncodeResult addEncodeData(const EngineEnvironment& environment, const std::vector<ProjectItem*>& selected,
                              EncodeSettingChooser& chooser, LastEncodeSetting& last, bool autoDecode = false);

// "Duplicate": another row for the source file of each selected row of
// `list`, with the rules of addEncodeData (sources in list order, each once).
// The dialog opens on the setting of the source's first selected row rather
// than on the kept choice, so the user changes just what differs; the same
// algorithm again leads to the replace question.
AddEncodeResult duplicateRows(const EngineEnvironment& environment, const MainList& list, EncodeSettingChooser& chooser,
                              LastEncodeSetting& last, bool autoDecode = false);

// The replace question for `source` and `algorithm`:
// "\"hello.wav\" ImaAdpcm already existed!\nDo you want to replace it?"
std::string replaceQuestion(const ProjectItem& source, std::string_view algorithm);

} // namespace kestrelon
