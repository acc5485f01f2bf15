#include "common/user_port.h"

namespace kestrelon {

void UserPort::showFailure(std::string_view text, std::string_view reason)
{
    if (reason.empty()) {
        showMessage(text);
        return;
    }
    std::string whole(text);
    whole.append("\n").append(reason);
    showMessage(whole);
}

Answer UserPort::askAboutFiles(std::string_view heading, const std::vector<std::string>& names,
                               std::string_view question)
{
    std::string text(heading);
    for (const std::string& name : names)
        text += "\n" + name;
    text += "\n";
    text += question;
    return ask(text, Buttons::YesNo);
}

} // namespace kestrelon
