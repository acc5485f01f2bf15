#include "cli/console_port.h"

namespace kestrelon::cli {

void ConsolePort::showMessage(std::string_view text)
{
    RecordingPort::showMessage(text);
    m_err << text << '\n';
}

void ConsolePort::showFailure(std::string_view text, std::string_view reason)
{
    RecordingPort::showFailure(text, reason);
    m_err << text << '\n';
    if (!reason.empty())
        m_err << "  " << reason << '\n';
}

Answer ConsolePort::ask(std::string_view text, Buttons buttons, std::string_view caption)
{
    const Answer answer = RecordingPort::ask(text, buttons, caption);
    m_err << text << " [" << answerName(answer) << "]\n";
    return answer;
}

} // namespace kestrelon::cli
