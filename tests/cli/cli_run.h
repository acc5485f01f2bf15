#pragma once
// Runs the built kestrelon-cli with the given words and keeps what it printed.
#include "common/platform.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon::test {

struct CliRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// kestrelon-cli reads and writes the user's configuration (a copy of the body
// settings, the codecs that broke): the tests give it a folder of their own,
// so the machine's user never meets the tests' and the other way round.
inline void keepUserConfigurationApart()
{
    static const TempDir folder;
    static const bool set = [] { return ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1) == 0; }();
    (void)set;
}

// `scratch` receives the two output files.
inline CliRun runCli(const std::vector<std::string>& words, const std::filesystem::path& scratch)
{
    keepUserConfigurationApart();
    const std::filesystem::path out = scratch / "cli.out";
    const std::filesystem::path err = scratch / "cli.err";
    CliRun run;
    run.exitCode = runProgram(KESTRELON_CLI, words, out, err);
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
    return {done.exitCode,
            done.out.empty() ? nlohmann::ordered_json::object() : nlohmann::ordered_json::parse(done.out), done.err};
}

} // namespace kestrelon::test
