#pragma once
// A port for tests: it records every text shown and answers questions from a
// queue, so a test states the exact dialogue it expects. A question with no
// answer queued is a test failure.
#include "common/recording_port.h"

#include <gtest/gtest.h>

#include <deque>

namespace kestrelon::test {

class ScriptedPort : public RecordingPort {
public:
    ScriptedPort()
        : RecordingPort([this](std::string_view text, Buttons, std::string_view) {
            if (m_answers.empty()) {
                ADD_FAILURE() << "unexpected question: " << text;
                return Answer::Cancel;
            }
            const Answer next = m_answers.front();
            m_answers.pop_front();
            return next;
        })
    {}

    void queue(Answer answer) { m_answers.push_back(answer); }
    size_t pendingAnswers() const { return m_answers.size(); }

    std::vector<std::string> texts() const
    {
        std::vector<std::string> out;
        for (const ShownMessage& shown : messages())
            out.push_back(shown.text);
        return out;
    }

private:
    std::deque<Answer> m_answers;
};

} // namespace kestrelon::test
