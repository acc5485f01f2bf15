#include "wave/event_editor.h"

#include "common/messages.h"
#include "common/user_port.h"

#include <algorithm>

namespace kestrelon {

SpeechEventEditor::SpeechEventEditor(std::filesystem::path eventFile, UserPort& port)
    : m_file(std::move(eventFile))
    , m_port(port)
{
    std::string label;
    m_loaded = readSpeechEvents(m_file, m_events, label, m_port);
    m_useCustom = !label.empty() && label != msg::kDefaultLabel;
    if (m_useCustom)
        m_customLabel = label;
}

void SpeechEventEditor::chooseDefaultLabel()
{
    m_useCustom = false;
    m_customLabel.clear();
}

void SpeechEventEditor::chooseCustomLabel()
{
    m_useCustom = true;
    m_customLabel.clear();
}

int SpeechEventEditor::indexOfId(int id) const
{
    const auto it = std::find_if(m_events.begin(), m_events.end(), [id](const SpeechEvent& e) { return e.id == id; });
    return it == m_events.end() ? -1 : int(it - m_events.begin());
}

int SpeechEventEditor::add(std::uint32_t position, int id, std::string description)
{
    if (id < kMinEventId || id > kMaxEventId) {
        m_port.showMessage(msg::kEventIdRange);
        return -1;
    }
    if (const int taken = indexOfId(id); taken >= 0) {
        if (m_port.ask(msg::kEventIdExists, Buttons::YesNo) != Answer::Yes)
            return -1;
        m_events.erase(m_events.begin() + taken);
    }
    SpeechEvent event;
    event.samples = position;
    event.id = std::uint8_t(id);
    event.description = std::move(description);
    insertByPosition(m_events, event);
    // insertByPosition puts the new event in front of any at the same place.
    const auto it = std::find_if(m_events.begin(), m_events.end(),
                                 [&](const SpeechEvent& e) { return e.samples == position && e.id == id; });
    return int(it - m_events.begin());
}

bool SpeechEventEditor::removeAt(int index)
{
    if (index < 0 || index >= int(m_events.size()))
        return false;
    m_events.erase(m_events.begin() + index);
    return true;
}

bool SpeechEventEditor::write() const
{
    return writeSpeechEvents(m_file, m_events, m_useCustom, m_customLabel);
}

namespace {

std::string padded(std::string text, std::size_t width)
{
    if (text.size() < width)
        text.append(2 * (width - text.size()), ' ');
    return text;
}

} // namespace

std::string eventRowText(const SpeechEvent& event)
{
    return padded("  " + std::to_string(event.samples), 16) + padded("ID" + std::to_string(event.id), 8);
}

} // namespace kestrelon
