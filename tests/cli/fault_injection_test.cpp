// Kills and full disks at every point where a kestrelon-cli command changes a
// file, for each command that saves a project. After each faulted run the
// project must open, be entirely as before or entirely as after, name only
// files that exist and hold what their records say, and keep its waves;
// nothing staged may outlive the next open, and a failure must be said.
#include "cli_run.h"
#include "codec/interim_packer.h"
#include "codec/main_list.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "project/folder_snapshot.h"
#include "project/project_session.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

using namespace kestrelon;
using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";
constexpr int kKilled = 137;

struct Operation {
    std::string name;
    // The command's words; PTP and OUT stand for the project file and a
    // folder outside the project.
    std::vector<std::string> words;
};

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> all = {
        {"add-files", {"project", "add-files", "PTP", (kSpeech / "cross.wav").string()}},
        {"add-encode",
         {"project", "add-encode", "PTP", "--body", "KS-1 Voice", "--algo", "Codec2", "--rate", "3200", "--decode"}},
        {"add-encode replacing",
         {"--yes", "project", "add-encode", "PTP", "--body", "KS-1 Voice", "--algo", "ImaAdpcm", "--rate", "16000"}},
        {"encode", {"project", "encode", "PTP", "--decode"}},
        {"decode", {"project", "decode", "PTP"}},
        {"delete-files", {"--yes", "project", "delete-files", "PTP", "morig.wav"}},
        {"save-as", {"project", "save-as", "PTP", "OUT/Copy/Copy.ptp"}},
        {"export", {"project", "export", "PTP", "--out", "OUT"}},
    };
    return all;
}

class FaultInjection : public ::testing::Test {
protected:
    // A saved project of two sources, encoded with IMA ADPCM and decoded.
    static void SetUpTestSuite()
    {
        s_template = new TempDir;
        const fs::path scratch = *s_template / "runs";
        fs::create_directories(scratch);
        const std::string ptp = (*s_template / "Base" / "Base.ptp").string();
        ASSERT_EQ(runCli({"project", "new", s_template->path().string(), "Base"}, scratch).exitCode, 0);
        ASSERT_EQ(
            runCli({"project", "add-files", ptp, (kSpeech / "hts1a.wav").string(), (kSpeech / "morig.wav").string()},
                   scratch)
                .exitCode,
            0);
        ASSERT_EQ(runCli({"project", "add-encode", ptp, "--body", "KS-1 Voice", "--algo", "ImaAdpcm", "--rate", "32000",
                          "--decode"},
                         scratch)
                      .exitCode,
                  0);
    }
    static void TearDownTestSuite()
    {
        delete s_template;
        s_template = nullptr;
    }

    // A fresh copy of the base project in `root`.
    static fs::path freshProject(const fs::path& root)
    {
        fs::create_directories(root / "out");
        fs::copy(*s_template / "Base", root / "Base", fs::copy_options::recursive);
        return root / "Base" / "Base.ptp";
    }

    static std::vector<std::string> words(const Operation& op, const fs::path& ptp, const fs::path& out)
    {
        std::vector<std::string> filled;
        for (std::string word : op.words) {
            if (word == "PTP")
                word = ptp.string();
            if (word.rfind("OUT", 0) == 0)
                word = out.string() + word.substr(3);
            filled.push_back(word);
        }
        return filled;
    }

    // Runs the operation with KESTRELON_FAULT set to `fault` (none when empty).
    CliRun runWith(const std::string& fault, const std::vector<std::string>& command)
    {
        if (fault.empty())
            unsetenv("KESTRELON_FAULT");
        else
            setenv("KESTRELON_FAULT", fault.c_str(), 1);
        CliRun run = runCli(command, scratch.path());
        unsetenv("KESTRELON_FAULT");
        return run;
    }

    // What must hold of a project after any run: it opens, its file is one of
    // the two states, every file a record names is there and holds what the
    // record says, its waves are intact and nothing staged is left.
    void expectWhole(const fs::path& ptp, const std::set<std::string>& states, const std::string& context)
    {
        SCOPED_TRACE(context);
        ScriptedPort port;
        ProjectSession session(port, nullptr, nullptr, fs::current_path());
        ASSERT_TRUE(session.openProject(ptp)) << ::testing::PrintToString(port.texts());
        for (const std::string& text : port.texts())
            EXPECT_EQ(text, msg::kAbandonedWorkDropped);
        EXPECT_TRUE(states.count(readBytes(ptp)) == 1) << "the project file is neither the old nor the new one";
        const fs::path folder = ptp.parent_path();
        const MainList list = MainList::fromDocument(session.document());
        for (const ListRow& row : list.rows()) {
            const EditInfoRecord& record = row.record();
            EXPECT_EQ(readBytes(folder / "Files" / record.fileName), readBytes(kSpeech / record.fileName))
                << record.fileName;
            for (const auto& [name, size] :
                 {std::pair{record.encodeName, record.encodeSize}, std::pair{record.decodeName, record.decodeSize}}) {
                if (name.empty())
                    continue;
                const std::optional<std::string> data = unpackInterim(readBytes(folder / name));
                ASSERT_TRUE(data.has_value()) << name << " of " << record.fileName << " is missing or damaged";
                EXPECT_EQ(std::to_string(data->size()), size) << name << " of " << record.fileName;
            }
        }
        for (const auto& entry : fs::recursive_directory_iterator(folder))
            EXPECT_FALSE(entry.path().extension() == ".part") << entry.path();
        port.queue(Answer::No);
        EXPECT_TRUE(session.closeProject());
    }

    TempDir scratch;
    TempDir work;
    static TempDir* s_template;
};

TempDir* FaultInjection::s_template = nullptr;

} // namespace

TEST_F(FaultInjection, EverySavingCommandSurvivesAKillOrAFullDiskAtEveryWrite)
{
    std::map<std::string, int> points;
    int runs = 0;
    for (const Operation& op : operations()) {
        // The state after an undisturbed run, and the points it passes ("write"
        // or "rename", in order), as the run itself lists them.
        const fs::path clean = work / (op.name + " clean");
        const fs::path cleanPtp = freshProject(clean);
        const std::string before = readBytes(cleanPtp);
        const CliRun done = runWith("trace", words(op, cleanPtp, clean / "out"));
        ASSERT_EQ(done.exitCode, 0) << op.name << ": " << done.err;
        const std::set<std::string> states = {before, readBytes(cleanPtp)};
        std::vector<bool> isWrite;
        std::istringstream trace(done.err);
        for (std::string line; std::getline(trace, line);)
            if (line.rfind("fault point ", 0) == 0)
                isWrite.push_back(line.find(": write ") != std::string::npos);
        points[op.name] = int(isWrite.size());

        for (int n = 1; n <= int(isWrite.size()); ++n) {
            const fs::path root = work / (op.name + " kill " + std::to_string(n));
            const fs::path ptp = freshProject(root);
            const CliRun killed = runWith("kill@" + std::to_string(n), words(op, ptp, root / "out"));
            ++runs;
            EXPECT_EQ(killed.exitCode, kKilled) << op.name << " did not reach point " << n;
            expectWhole(ptp, states, op.name + ", killed at point " + std::to_string(n));
            if (op.name == "save-as" && fs::exists(root / "out" / "Copy" / "Copy.ptp"))
                expectWhole(root / "out" / "Copy" / "Copy.ptp", states,
                            op.name + " (the copy), killed at point " + std::to_string(n));
            fs::remove_all(root);
        }

        for (int n = 1; n <= int(isWrite.size()); ++n) {
            const fs::path root = work / (op.name + " full " + std::to_string(n));
            const fs::path ptp = freshProject(root);
            const CliRun full = runWith("full@" + std::to_string(n), words(op, ptp, root / "out"));
            ++runs;
            // With a write left to fail, the failure is said, with a non-zero exit.
            if (std::find(isWrite.begin() + n - 1, isWrite.end(), true) != isWrite.end()) {
                EXPECT_NE(full.exitCode, 0) << op.name << ", disk full from point " << n;
                EXPECT_FALSE(full.err.empty()) << op.name << ", disk full from point " << n << ": nothing said";
                // Every file is intact: a full disk is never called damage, and it is named.
                EXPECT_EQ(full.err.find("damaged"), std::string::npos)
                    << op.name << ", point " << n << ": " << full.err;
                EXPECT_NE(full.err.find(std::generic_category().message(ENOSPC)), std::string::npos)
                    << op.name << ", point " << n << ": the reason is not said: " << full.err;
            } else {
                EXPECT_EQ(full.exitCode, 0) << op.name << ", disk full from point " << n << ": " << full.err;
            }
            expectWhole(ptp, states, op.name + ", disk full from point " + std::to_string(n));
            fs::remove_all(root);
        }
    }
    for (const auto& [name, count] : points) {
        EXPECT_GT(count, 0) << name << " changes no file?";
        std::cout << "[ points   ] " << name << ": " << count << "\n";
    }
    std::cout << "[ runs     ] " << runs << "\n";
}
