#pragma once
// Speech events: markers at sample positions of a source WAV file, each with a
// small identifier and an optional description, kept with one label text in
// the ".evt" file beside the source.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class UserPort;

struct SpeechEvent {
    std::uint32_t samples = 1; // position, in samples from the first sample of the WAV data
    std::uint8_t id = 1;
    bool marked = false; // the view's own flag; never stored
    std::string description;
};

// In ascending order of position once read from a file.
using SpeechEventList = std::vector<SpeechEvent>;

// The reader reads EVENT0 ... EVENT255 at most, whatever Count says; the
// writer writes every event it is given.
inline constexpr int kMaxReadSpeechEvents = 256;

// The event file of a source file: its path up to the last "." plus ".evt".
std::filesystem::path eventFilePath(const std::filesystem::path& sourcePath);

// Inserts by position: before the first event at the same or a later
// position, so the list stays sorted and a new event goes in front of events
// at an equal position.
void insertByPosition(SpeechEventList& events, SpeechEvent event);

// Reads an event file into `events` and `label` (both emptied first). False
// when the file does not exist (no error text) or cannot be read (`error`, if
// given, gets the reader's text). A malformed number shows "Invalid data!"
// through `port` and leaves that field at its default.
bool readSpeechEvents(const std::filesystem::path& path, SpeechEventList& events, std::string& label, UserPort& port,
                      std::string* error = nullptr);

// Writes the whole file anew: the label is `customLabel` when `useCustomLabel`
// is set, otherwise "Default Label"; events are written in the list's order.
bool writeSpeechEvents(const std::filesystem::path& path, const SpeechEventList& events, bool useCustomLabel,
                       std::string_view customLabel);

} // namespace kestrelon
