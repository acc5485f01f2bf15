#include "wave/speech_events.h"

#include "common/ini_document.h"
#include "common/messages.h"
#include "common/paths.h"

#include <algorithm>

namespace kestrelon {

namespace {

std::string eventSection(size_t index)
{
    return "EVENT" + std::to_string(index);
}

} // namespace

std::filesystem::path eventFilePath(const std::filesystem::path& sourcePath)
{
    std::string text = utf8FromPath(sourcePath);
    const size_t dot = text.rfind('.');
    if (dot != std::string::npos)
        text.erase(dot);
    return pathFromUtf8(text + ".evt");
}

void insertByPosition(SpeechEventList& events, SpeechEvent event)
{
    // The walk the list has always been built with; on a sorted list it stops
    // at the first event whose position is not below the new one.
    const size_t count = events.size();
    size_t at = count;
    for (size_t j = 0; j < count; ++j) {
        if (j == 0 && events[0].samples >= event.samples) {
            at = 0;
            break;
        }
        if (events[j].samples < event.samples && (j + 1 == count || events[j + 1].samples >= event.samples)) {
            at = j + 1;
            break;
        }
    }
    events.insert(events.begin() + static_cast<std::ptrdiff_t>(at), std::move(event));
}

bool readSpeechEvents(const std::filesystem::path& path, SpeechEventList& events, std::string& label, UserPort& port,
                      std::string* error)
{
    events.clear();
    label.clear();
    if (error)
        error->clear();
    IniDocument doc;
    if (!doc.load(path)) {
        if (error)
            *error = doc.lastError();
        return false;
    }
    label = doc.getString("TAG_LABEL", "LabelName");
    const int count = doc.getInt("SPEECH_EVNTS", "Count", 0, port).value_or(0);
    const int readable = std::min(count, kMaxReadSpeechEvents);
    for (int n = 0; n < readable; ++n) {
        const std::string section = eventSection(static_cast<size_t>(n));
        SpeechEvent event;
        // Positions are stored as "%d": a value past 2^31 comes back negative
        // and is taken modulo 2^32, as it was written.
        if (const auto samples = doc.getInt(section, "Samples", 1, port))
            event.samples = static_cast<std::uint32_t>(*samples);
        if (const auto id = doc.getInt(section, "ID", 1, port))
            event.id = static_cast<std::uint8_t>(static_cast<unsigned>(*id) & 0xFFu);
        event.description = doc.getString(section, "Description");
        insertByPosition(events, std::move(event));
    }
    return true;
}

bool writeSpeechEvents(const std::filesystem::path& path, const SpeechEventList& events, bool useCustomLabel,
                       std::string_view customLabel)
{
    IniDocument doc;
    doc.setString("TAG_LABEL", "LabelName", useCustomLabel ? customLabel : msg::kDefaultLabel);
    doc.setInt("SPEECH_EVNTS", "Count", static_cast<long long>(events.size()));
    for (size_t n = 0; n < events.size(); ++n) {
        const SpeechEvent& event = events[n];
        const std::string section = eventSection(n);
        doc.setInt(section, "Samples", static_cast<std::int32_t>(event.samples));
        doc.setInt(section, "ID", event.id);
        if (!event.description.empty())
            doc.setString(section, "Description", event.description);
    }
    return doc.save(path);
}

} // namespace kestrelon
