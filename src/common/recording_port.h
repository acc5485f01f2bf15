#pragma once
// A port with no screen: it keeps every text shown, in order, with the answer
// given to each question, and takes answers from a policy function.
#include "common/user_port.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kestrelon {

struct ShownMessage {
    std::string text;
    std::string caption;
    std::optional<Answer> answer; // set for questions only
    std::string reason; // the system's reason, for failures that know one
};

class RecordingPort : public UserPort {
public:
    using Policy = std::function<Answer(std::string_view text, Buttons buttons, std::string_view caption)>;

    explicit RecordingPort(Policy policy);

    void showMessage(std::string_view text) override;
    void showFailure(std::string_view text, std::string_view reason) override;
    Answer ask(std::string_view text, Buttons buttons, std::string_view caption = {}) override;

    const std::vector<ShownMessage>& messages() const { return m_messages; }
    void clear() { m_messages.clear(); }
    void setPolicy(Policy policy) { m_policy = std::move(policy); }
    const Policy& policy() const { return m_policy; }

private:
    Policy m_policy;
    std::vector<ShownMessage> m_messages;
};

// The answer a blanket choice gives to a question with these buttons: "yes" is
// Yes or OK, "no" is No (Cancel where there is no No), "cancel" is Cancel (No
// where there is no Cancel). For the Replace/Skip/Skip All/Stop question, yes
// replaces, no skips (skip-all is kept as it is) and cancel stops.
Answer answerFor(Answer blanket, Buttons buttons);

} // namespace kestrelon
