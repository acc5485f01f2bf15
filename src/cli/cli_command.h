#pragma once
// What every kestrelon-cli command sees, and what it hands back. A command
// reports usage mistakes by throwing UsageError (exit 2); otherwise its result
// says whether the operation succeeded (exit 0) or failed as the program
// defines failure (exit 1).
#include "bodies/body_settings_files.h"
#include "common/recording_port.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kestrelon::cli {

using Json = nlohmann::ordered_json;

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The words after the command's own name: options are taken out by name,
// what is left are positional arguments.
class Arguments {
public:
    explicit Arguments(std::vector<std::string> words)
        : m_words(std::move(words))
    {}

    bool takeFlag(std::string_view name);
    std::optional<std::string> takeOption(std::string_view name);
    // A whole number in [low, high]; anything else is a UsageError.
    std::optional<long long> takeNumber(std::string_view name, long long low, long long high);
    // All positional words; throws UsageError if an unknown option is left.
    std::vector<std::string> positionals() const;
    // Exactly `count` positional words.
    std::vector<std::string> expect(size_t count) const;
    // The words not taken yet, options included.
    const std::vector<std::string>& remaining() const { return m_words; }

private:
    std::vector<std::string> m_words;
};

struct Context {
    Arguments& args;
    RecordingPort& port;
    Answer blanket; // --yes / --no / --cancel
    bool json = false; // --json
    std::filesystem::path programFolder; // folder of the executable
    // --settings FILE: the body settings file; by default the user's copy
    // when there is one, else <program folder>/KestrelonBodySetting.dat.
    std::filesystem::path bodySettingsFile;
    // Where volumes are written back: the file above, falling back to the
    // user's copy when the program folder's file cannot be written.
    BodySettingsFiles bodySettingsFiles;
    bool inProcess = false; // --in-process: codecs run in this process, not in a worker
};

class SpooledArray;

struct Result {
    bool ok = false;
    Json fields = Json::object(); // printed after "ok" and "messages"
    // Fields too large to hold as a tree, printed in their places (spooled_array.h).
    std::map<std::string, std::shared_ptr<SpooledArray>> spooled = {};
};

using CommandFunction = Result (*)(Context&);

struct CommandSpec {
    std::vector<std::string_view> words; // e.g. {"project", "dump"}
    std::string_view usage;
    CommandFunction run;
    bool printsJsonAlways; // inspection commands print JSON with or without --json
};

const std::vector<CommandSpec>& commandTable();

} // namespace kestrelon::cli
