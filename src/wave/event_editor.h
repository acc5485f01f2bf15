#pragma once
// The Speech Event dialog without its window: a working copy of one source
// file's events and label, edited by Add and Del, written to the event file
// only on confirmation. The workbench's dialog and `kestrelon-cli events`
// share it, so both follow the same rules (IDs 1 to 254, one event per ID,
// the replace question).
#include "wave/speech_events.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace kestrelon {

class UserPort;

inline constexpr int kMinEventId = 1;
inline constexpr int kMaxEventId = 254;

class SpeechEventEditor {
public:
    // Starts from what the event file holds now (nothing when it is missing).
    // A label other than the default one opens as the custom label.
    SpeechEventEditor(std::filesystem::path eventFile, UserPort& port);

    const std::filesystem::path& eventFile() const { return m_file; }
    const SpeechEventList& events() const { return m_events; }
    bool loaded() const { return m_loaded; }

    bool customLabelChosen() const { return m_useCustom; }
    const std::string& customLabel() const { return m_customLabel; }
    // The default label empties and locks the custom text; choosing the custom
    // label starts it empty.
    void chooseDefaultLabel();
    void chooseCustomLabel();
    void setCustomLabel(std::string text) { m_customLabel = std::move(text); }

    // Adds an event at `position`. An ID outside 1..254 is refused with a
    // message. When the ID is taken the user is asked whether to replace that
    // event; "No" adds nothing. Returns the new event's index, or -1.
    int add(std::uint32_t position, int id, std::string description);
    // Removes the event at `index`; false when there is none.
    bool removeAt(int index);
    // The index of the event with `id`, or -1.
    int indexOfId(int id) const;

    // Writes the whole event file: the confirmation.
    bool write() const;

private:
    std::filesystem::path m_file;
    UserPort& m_port;
    SpeechEventList m_events;
    bool m_loaded = false;
    bool m_useCustom = false;
    std::string m_customLabel;
};

// The dialog's row for an event: "  %d" of the position padded with two
// blanks per character short of 16, then "ID%d" padded with two blanks per
// character short of 8. The doubled blanks line the rows up in the dialog's
// proportional font and are part of what users see.
std::string eventRowText(const SpeechEvent& event);

} // namespace kestrelon
