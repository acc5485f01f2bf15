#pragma once
// kestrelon-board-sim on a pseudo-terminal for the length of a scope, its
// device linked where the test says, for board play end to end.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace kestrelon::test {

// A simulator for the length of a scope, its device linked at `link`.
class BoardSimulator {
public:
    BoardSimulator(const std::filesystem::path& simulator, const std::filesystem::path& link,
                   const std::filesystem::path& record, std::vector<std::string> options)
    {
        std::filesystem::create_directories(record);
        std::vector<std::string> words = {simulator.string(), "--fast",   "--link",
                                          link.string(),      "--record", record.string()};
        words.insert(words.end(), options.begin(), options.end());
        int ready[2];
        EXPECT_EQ(::pipe(ready), 0);
        m_pid = ::fork();
        if (m_pid == 0) {
            ::dup2(ready[1], STDOUT_FILENO);
            std::vector<char*> argv;
            for (std::string& word : words)
                argv.push_back(word.data());
            argv.push_back(nullptr);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        ::close(ready[1]);
        char line[256] = {};
        // The first line, the device, comes once the link is made.
        EXPECT_GT(::read(ready[0], line, sizeof line - 1), 0);
        ::close(ready[0]);
    }
    ~BoardSimulator()
    {
        ::kill(m_pid, SIGTERM);
        ::waitpid(m_pid, nullptr, 0);
    }

private:
    pid_t m_pid = -1;
};

} // namespace kestrelon::test
