#include "common/recording_port.h"

namespace kestrelon {

std::string_view answerName(Answer answer)
{
    switch (answer) {
    case Answer::Ok: return "ok";
    case Answer::Cancel: return "cancel";
    case Answer::Yes: return "yes";
    case Answer::No: return "no";
    case Answer::SkipAll: return "skipall";
    }
    return "cancel";
}

RecordingPort::RecordingPort(Policy policy)
    : m_policy(std::move(policy))
{}

void RecordingPort::showMessage(std::string_view text)
{
    m_messages.push_back({std::string(text), {}, std::nullopt});
}

void RecordingPort::showFailure(std::string_view text, std::string_view reason)
{
    m_messages.push_back({std::string(text), {}, std::nullopt, std::string(reason)});
}

Answer RecordingPort::ask(std::string_view text, Buttons buttons, std::string_view caption)
{
    const Answer answer = m_policy(text, buttons, caption);
    m_messages.push_back({std::string(text), std::string(caption), answer});
    return answer;
}

Answer answerFor(Answer blanket, Buttons buttons)
{
    const bool yes = blanket == Answer::Yes || blanket == Answer::Ok;
    switch (buttons) {
    case Buttons::YesNo: return yes ? Answer::Yes : Answer::No;
    case Buttons::OkCancel: return yes ? Answer::Ok : Answer::Cancel;
    case Buttons::YesNoCancel:
        if (yes)
            return Answer::Yes;
        return blanket == Answer::No ? Answer::No : Answer::Cancel;
    case Buttons::ReplaceSkipSkipAllStop:
        if (yes)
            return Answer::Yes;
        if (blanket == Answer::No || blanket == Answer::SkipAll)
            return blanket;
        return Answer::Cancel;
    }
    return Answer::Cancel;
}

} // namespace kestrelon
