#include "common/messages.h"
#include "folder_snapshot.h"
#include "project/new_project.h"
#include "project/recent_projects.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
namespace fs = std::filesystem;

namespace {

std::string str(std::string_view text)
{
    return std::string(text);
}

} // namespace

TEST(NewProjectCheck, RefusesInTheDialogsOrderAndEmptiesTheNameOnlyForBadCharacters)
{
    test::TempDir temp;
    const std::string location = temp.path().string();
    test::writeBytes(temp / "Taken" / "Taken.ptp", "x");
    fs::create_directories(temp / "Folder");
    const test::FolderSnapshot before = test::snapshot(temp.path());

    struct Case {
        std::string name, location, text;
        bool clearName;
    };
    const std::vector<Case> cases = {
        {"", "relative", str(msg::kFileNameIsNull), false}, // the name is checked before the location
        {" abc", location, str(msg::kInvalidCharacters), true},
        {"abc ", location, str(msg::kInvalidCharacters), true},
        {"a|b", "relative", str(msg::kInvalidCharacters), true},
        {"abc", "relative/folder", str(msg::kWrongPath), false},
        {"abc", "C:\\", str(msg::kWrongPath), false}, // no root on this system
        {"Taken", location,
         str(msg::kCanNotCreatePrefix) + (temp / "Taken" / "Taken.ptp").string() + str(msg::kBecauseFileExisted),
         false},
        {"Folder", location + "/",
         str(msg::kCanNotCreatePrefix) + (temp / "Folder" / "Folder.ptp").string() + str(msg::kBecauseFolderExisted),
         false},
        {"abc", location + "/missing", str(msg::kPathNotExisted), false},
    };
    for (const Case& c : cases) {
        test::ScriptedPort port;
        const NewProjectCheck check = checkNewProject(c.name, c.location, port);
        EXPECT_FALSE(check.ok) << c.name;
        EXPECT_EQ(check.clearName, c.clearName) << c.name;
        EXPECT_EQ(port.texts(), std::vector<std::string>{c.text}) << "[" << c.name << "] at " << c.location;
    }
    for (char bad : std::string_view(kInvalidNameCharacters)) {
        test::ScriptedPort port;
        EXPECT_TRUE(checkNewProject(std::string("a") + bad + "b", location, port).clearName) << bad;
    }
    EXPECT_EQ(test::snapshot(temp.path()), before);

    test::ScriptedPort port;
    const NewProjectCheck ok = checkNewProject("Speech", location + "///", port);
    EXPECT_TRUE(ok.ok);
    EXPECT_TRUE(port.texts().empty());
    EXPECT_EQ(ok.projectFile, temp / "Speech" / "Speech.ptp");
}

TEST(NewProjectCheck, ProjectFilePathKeepsAGivenExtensionAndTheRoot)
{
    EXPECT_EQ(newProjectFilePath("Demo", "/"), fs::path("/Demo/Demo.ptp"));
    EXPECT_EQ(newProjectFilePath("Demo.PTP", "/work/"), fs::path("/work/Demo.PTP/Demo.PTP"));
    // "Holds", not "ends with": the name already names the file.
    EXPECT_EQ(newProjectFilePath("a.ptp.old", "/w"), fs::path("/w/a.ptp.old/a.ptp.old"));
    EXPECT_FALSE(newProjectFilePath("Demo", "work").has_value());

    EXPECT_EQ(withProjectExtension("/a/b"), fs::path("/a/b.ptp"));
    EXPECT_EQ(withProjectExtension("/a/b.PTP"), fs::path("/a/b.PTP"));
}

TEST(RecentProjects, KeepsFiveMostRecentFirstWithoutRepeatsAndCutsLongPathsAtTheFront)
{
    RecentProjects recent({"/p/1.ptp", "", "/p/1.ptp", "/p/2.ptp"});
    EXPECT_EQ(recent.entries(), (std::vector<std::string>{"/p/1.ptp", "/p/2.ptp"}));
    for (const char* p : {"/p/3.ptp", "/p/4.ptp", "/p/5.ptp", "/p/6.ptp"})
        recent.add(std::string(p));
    EXPECT_EQ(recent.entries(), (std::vector<std::string>{"/p/6.ptp", "/p/5.ptp", "/p/4.ptp", "/p/3.ptp", "/p/1.ptp"}));
    recent.add(fs::path("/p/3.ptp"));
    recent.add(std::string("/P/5.ptp")); // compared exactly: another entry
    EXPECT_EQ(recent.entries(), (std::vector<std::string>{"/P/5.ptp", "/p/3.ptp", "/p/6.ptp", "/p/5.ptp", "/p/4.ptp"}));

    const std::string exact(30, 'x');
    EXPECT_EQ(RecentProjects::displayText(exact), exact);
    EXPECT_EQ(RecentProjects::displayText(exact + "y"), "\xE2\x80\xA6" + std::string(28, 'x') + "y");
    const std::string longPath = "/home/someone/projects/speech/Announcements.ptp";
    EXPECT_EQ(RecentProjects::displayText(longPath), "\xE2\x80\xA6" + longPath.substr(longPath.size() - 29));
    // Characters, not bytes: a cut never splits one.
    std::string accented;
    for (int i = 0; i < 40; ++i)
        accented += "\xC3\xA9"; // é
    EXPECT_EQ(RecentProjects::displayText(accented), "\xE2\x80\xA6" + accented.substr(accented.size() - 58));
}
