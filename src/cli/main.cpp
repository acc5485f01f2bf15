// kestrelon-cli: the workbench's operations without a window, for scripts and
// firmware builds. Prints one JSON object on standard output; messages also go
// to standard error as they are shown. Exit 0: done; 1: failed; 2: usage.
#include "bodies/body_settings.h"
#include "cli/cli_command.h"
#include "cli/command_help.h"
#include "cli/console_port.h"
#include "cli/spooled_array.h"
#include "common/fault_points.h"
#include "common/paths.h"
#include "common/platform.h"
#include "common/version.h"

#include <iostream>

using namespace kestrelon;
using namespace kestrelon::cli;

namespace {

const CommandSpec* findCommand(const std::vector<std::string>& words, size_t& used)
{
    const CommandSpec* best = nullptr;
    for (const CommandSpec& command : commandTable()) {
        if (command.words.size() > words.size() || (best && command.words.size() <= best->words.size()))
            continue;
        bool match = true;
        for (size_t i = 0; i < command.words.size() && match; ++i)
            match = words[i] == command.words[i];
        if (match)
            best = &command;
    }
    used = best ? best->words.size() : 0;
    return best;
}

Json messagesJson(const RecordingPort& port)
{
    Json list = Json::array();
    for (const ShownMessage& shown : port.messages()) {
        Json item = {{"text", shown.text}};
        if (!shown.reason.empty())
            item["reason"] = shown.reason;
        if (shown.answer)
            item["answer"] = std::string(answerName(*shown.answer));
        list.push_back(std::move(item));
    }
    return list;
}

} // namespace

int main(int argc, char** argv)
{
    enableFaultPoints();
    Arguments global(std::vector<std::string>(argv + 1, argv + argc));
    try {
        const bool help = global.takeFlag("--help") || global.takeFlag("-h");
        if (global.takeFlag("--version")) {
            std::cout << "kestrelon-cli " << kProgramVersion << '\n';
            return 0;
        }
        const bool json = global.takeFlag("--json");
        Answer blanket = Answer::No; // a script never destroys by accident
        int answerFlags = 0;
        if (global.takeFlag("--yes")) {
            blanket = Answer::Yes;
            ++answerFlags;
        }
        if (global.takeFlag("--no")) {
            blanket = Answer::No;
            ++answerFlags;
        }
        if (global.takeFlag("--cancel")) {
            blanket = Answer::Cancel;
            ++answerFlags;
        }
        if (answerFlags > 1)
            throw UsageError("--yes, --no and --cancel exclude each other");
        const std::optional<std::string> settings = global.takeOption("--settings");
        const bool inProcess = global.takeFlag("--in-process");

        const std::vector<std::string> words = global.remaining();
        size_t used = 0;
        const CommandSpec* command = findCommand(words, used);
        if (help) {
            command ? printCommandHelp(std::cout, *command) : printUsage(std::cout);
            return 0;
        }
        if (!command)
            throw UsageError(words.empty() ? "no command given" : "unknown command: " + words.front());

        Arguments args(std::vector<std::string>(words.begin() + static_cast<std::ptrdiff_t>(used), words.end()));
        ConsolePort port(
            [blanket](std::string_view, Buttons buttons, std::string_view) { return answerFor(blanket, buttons); },
            std::cerr);
        const std::filesystem::path programFolder = executableFolder();
        // A file named by --settings is used as it is, without a user's copy.
        const BodySettingsFiles bodyFiles =
            settings ? BodySettingsFiles{std::filesystem::absolute(pathFromUtf8(*settings)), {}}
                     : BodySettingsFiles::forProgram(programFolder, userConfigFolder());
        Context context{args, port, blanket, json, programFolder, bodyFiles.inUse(), bodyFiles, inProcess};
        Result result = command->run(context);

        if (json || command->printsJsonAlways) {
            Json out = {{"ok", result.ok}, {"messages", messagesJson(port)}};
            for (auto& [key, value] : result.fields.items())
                out[key] = value;
            printAnswer(std::cout, out, result);
        } else if (!result.ok) {
            std::cerr << "kestrelon-cli: " << command->usage << ": failed\n";
        }
        return result.ok ? 0 : 1;
    } catch (const UsageError& error) {
        std::cerr << "kestrelon-cli: " << error.what() << "\n\n";
        printUsage(std::cerr);
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "kestrelon-cli: " << error.what() << '\n';
        return 1;
    }
}
