#pragma once
// Runs the built kestrelon-cli with the given words and keeps what it printed.
#include "support/files.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace kestrelon::test {

struct CliRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

inline std::string shellQuoted(const std::string& word)
{
#ifdef _WIN32
    return "\"" + word + "\""; // the tests' words hold no double quote
#else
    std::string quoted = "'";
    for (char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
#endif
}

// `scratch` receives the two output files.
inline CliRun runCli(const std::vector<std::string>& words, const std::filesystem::path& scratch)
{
    std::string command = shellQuoted(KESTRELON_CLI);
    for (const std::string& word : words)
        command += " " + shellQuoted(word);
    const std::filesystem::path out = scratch / "cli.out";
    const std::filesystem::path err = scratch / "cli.err";
    command += " >" + shellQuoted(out.string()) + " 2>" + shellQuoted(err.string());
    const int status = std::system(command.c_str());
    CliRun run;
#ifdef _WIN32
    run.exitCode = status;
#else
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
    run.out = readBytes(out);
    run.err = readBytes(err);
    std::filesystem::remove(out);
    std::filesystem::remove(err);
    return run;
}

// A run with --json put first, and the object it printed.
struct JsonRun {
    int exitCode = -1;
    nlohmann::ordered_json answer;
    std::string err;
    std::string text(std::size_t message) const { return answer["messages"].at(message)["text"]; }
};

inline JsonRun runJson(std::vector<std::string> words, const std::filesystem::path& scratch)
{
    words.insert(words.begin(), "--json");
    const CliRun done = runCli(words, scratch);
    return {done.exitCode, done.out.empty() ? nlohmann::ordered_json::object() : nlohmann::ordered_json::parse(done.out),
            done.err};
}

} // namespace kestrelon::test
