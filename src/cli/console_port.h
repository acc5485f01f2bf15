#pragma once
// kestrelon-cli's port: every message goes to standard error as it is shown,
// and is kept for the JSON answer.
#include "common/recording_port.h"

#include <ostream>

namespace kestrelon::cli {

class ConsolePort : public RecordingPort {
public:
    ConsolePort(Policy policy, std::ostream& err)
        : RecordingPort(std::move(policy))
        , m_err(err)
    {}

    void showMessage(std::string_view text) override;
    void showFailure(std::string_view text, std::string_view reason) override;
    Answer ask(std::string_view text, Buttons buttons, std::string_view caption = {}) override;

private:
    std::ostream& m_err;
};

} // namespace kestrelon::cli
