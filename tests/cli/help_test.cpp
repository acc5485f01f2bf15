#include "cli/cli_command.h"
#include "cli/command_help.h"
#include "cli_run.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using namespace kestrelon::cli;
using kestrelon::test::runCli;
using kestrelon::test::TempDir;

// The usage text is also the manual page, so a command without a description
// would be a command nobody can look up.
TEST(CliHelp, EveryCommandIsDescribedAndAnswersItsOwnHelp)
{
    TempDir dir;
    for (const CommandSpec& command : commandTable()) {
        EXPECT_FALSE(commandDescription(command).empty()) << command.usage;
        std::vector<std::string> words(command.words.begin(), command.words.end());
        words.push_back("--help");
        const auto run = runCli(words, dir.path());
        EXPECT_EQ(run.exitCode, 0) << command.usage;
        EXPECT_EQ(run.out.rfind("usage: kestrelon-cli [global options] " + std::string(command.usage) + "\n", 0), 0u)
            << run.out;
    }
    const auto all = runCli({"--help"}, dir.path());
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_NE(all.out.find("  project add-encode PROJECT.ptp --body B --algo A --rate R"), std::string::npos);
    const auto version = runCli({"--version"}, dir.path());
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out.rfind("kestrelon-cli ", 0), 0u);
}
