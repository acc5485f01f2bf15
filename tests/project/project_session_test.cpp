#include "common/messages.h"
#include "common/paths.h"
#include "folder_snapshot.h"
#include "project/project_folder_ops.h"
#include "project/project_session.h"
#include "project/recent_projects.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <unistd.h>

using namespace kestrelon;
using test::readBytes;
using test::snapshot;
using test::writeBytes;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";

std::string str(std::string_view text)
{
    return std::string(text);
}
std::string lib(const std::string& base)
{
    return base + std::string(librarySuffix());
}

// Files planted under their own name as content, and where an operation must
// have put each (paths relative to the two folders).
using Moves = std::vector<std::pair<std::string, std::string>>;

void plant(const fs::path& from, const Moves& moves)
{
    for (const auto& [source, target] : moves)
        writeBytes(from / source, source);
}

void expectMoved(const fs::path& to, const Moves& moves)
{
    for (const auto& [source, target] : moves)
        EXPECT_EQ(readBytes(to / target), source) << target;
}

// A project file with one top-level source per name.
std::string projectText(const std::vector<std::string>& sources)
{
    std::string text = "# Begin Project\n\n# Begin Files\n";
    for (const std::string& name : sources)
        text += "# Begin Source File\nSOURCE=Files\\" + name + "\nID=" + name + "\nPARAM=9\n# End Source File\n";
    return text + "# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n# End Project\n";
}

class ProjectSessionTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        session.setBusy(false);
        port.queue(Answer::No);
        session.closeProject();
        fs::current_path(start);
    }

    // <temp>/<name>/<name>.ptp holding the two sources, both real recordings.
    fs::path makeProject(const std::string& name)
    {
        const fs::path folder = temp / name;
        fs::create_directories(folder / "Files");
        fs::create_directories(folder / "Algos");
        fs::copy_file(kSpeech / "hts1a.wav", folder / "Files" / "a.wav");
        fs::copy_file(kSpeech / "cross.wav", folder / "Files" / "b.wav");
        writeBytes(folder / (name + ".ptp"), projectText({"a.wav", "b.wav"}));
        return folder / (name + ".ptp");
    }

    fs::path start = fs::current_path();
    test::TempDir temp;
    test::ScriptedPort port;
    RecentProjects recent;
    ProjectSession session{port, nullptr, &recent, start};
};

} // namespace

TEST_F(ProjectSessionTest, NewProjectNeverSavedIsRemovedOnCloseOneSavedIsKept)
{
    ASSERT_TRUE(session.newProject(temp.path().string() + "/", "Draft"));
    const fs::path draft = temp / "Draft";
    EXPECT_EQ(session.projectFile(), draft / "Draft.ptp");
    EXPECT_TRUE(fs::is_directory(draft / "Temp") && fs::is_directory(draft / "Files") &&
                fs::is_directory(draft / "Algos"));
    EXPECT_EQ(fs::current_path(), draft);
    fs::copy_file(kSpeech / "hts1a.wav", draft / "Files" / "a.wav"); // work done in it is not saved either
    ASSERT_TRUE(session.closeProject());
    EXPECT_FALSE(fs::exists(draft));
    EXPECT_FALSE(session.isOpen());
    EXPECT_EQ(fs::current_path(), start);

    // Creating over an existing folder is refused: closing it unsaved would delete it.
    fs::create_directories(temp / "Busy");
    EXPECT_FALSE(session.newProject(temp.path().string(), "Busy"));
    EXPECT_FALSE(session.newProject((temp / "nowhere").string(), "X"));

    ASSERT_TRUE(session.newProject(temp.path().string(), "Kept"));
    ASSERT_TRUE(session.saveProject());
    ASSERT_TRUE(session.closeProject());
    EXPECT_TRUE(fs::exists(temp / "Kept" / "Kept.ptp"));
    EXPECT_FALSE(fs::exists(temp / "Kept" / "Temp"));
    EXPECT_EQ(port.texts(),
              (std::vector<std::string>{str(msg::kCanNotCreatePrefix) + (temp / "Busy" / "Busy.ptp").string() +
                                            str(msg::kBecauseFolderExisted),
                                        str(msg::kProjectPathNotExisted)}));
    // The draft went with its folder.
    EXPECT_EQ(recent.entries(), std::vector<std::string>{(temp / "Kept" / "Kept.ptp").string()});
}

TEST_F(ProjectSessionTest, RefusalsLeaveTheFoldersAsTheyWere)
{
    const fs::path file = makeProject("Speech");
    writeBytes(temp / "Bad" / "Bad.ptp", "# End Project\n# Begin Project\n");
    writeBytes(temp / "Blocked" / "Blocked.ptp", projectText({}));
    writeBytes(temp / "Blocked" / "Files", "a file where the folder should be");
    writeBytes(temp / "FileInTheWay", "x");
    const test::FolderSnapshot untouched = snapshot(temp.path());

    EXPECT_FALSE(session.openProject(temp / "missing.ptp"));
    EXPECT_FALSE(session.openProject(temp / "Bad" / "Bad.ptp"));
    EXPECT_FALSE(session.openProject(temp / "Blocked" / "Blocked.ptp")); // Temp made, then taken away again
    EXPECT_FALSE(session.isOpen());
    EXPECT_EQ(snapshot(temp.path()), untouched);
    EXPECT_EQ(port.texts(), (std::vector<std::string>{str(msg::kProjectFileNotFound), str(msg::kOpenProjectFailed),
                                                      str(msg::kOpenProjectFailed)}));
    port.clear();

    ASSERT_TRUE(session.openProject(file));
    writeBytes(temp / "Speech" / "Temp" / "a.wav", "working copy");
    session.markModified();
    const test::FolderSnapshot open = snapshot(temp.path());

    // The open project, by another spelling of its path.
    EXPECT_FALSE(session.openProject(temp / "Speech" / "." / "Speech.ptp"));
    session.setBusy(true);
    EXPECT_FALSE(session.closeProject());
    EXPECT_FALSE(session.saveProject());
    EXPECT_FALSE(session.saveProjectAs(temp / "Other" / "Other.ptp"));
    session.setBusy(false);
    port.queue(Answer::Cancel);
    EXPECT_FALSE(session.closeProject());
    port.queue(Answer::Cancel); // the open project is closed first, and that is refused
    EXPECT_FALSE(session.openProject(temp / "Blocked" / "Blocked.ptp"));
    EXPECT_FALSE(session.saveProjectAs(temp / "FileInTheWay" / "New.ptp"));
    EXPECT_FALSE(session.saveProjectAs(temp / "Speech" / "Temp" / "Inside.ptp"));

    EXPECT_TRUE(session.isOpen());
    EXPECT_TRUE(session.document().isModified());
    EXPECT_EQ(session.projectFile(), file);
    EXPECT_EQ(snapshot(temp.path()), open);
    EXPECT_EQ(port.texts(), (std::vector<std::string>{str(msg::kProjectIsOpen), str(msg::kCannotCloseWait),
                                                      str(msg::kCannotSaveWait), str(msg::kCannotSaveWait),
                                                      str(msg::kSaveBeforeClose), str(msg::kSaveBeforeClose),
                                                      str(msg::kDirectoryAlreadyExisted), str(msg::kSaveAsIntoTemp)}));
}

TEST_F(ProjectSessionTest, CloseCopiesWorkingFilesBackByExtensionAndDeletesOnlyInsideTheProject)
{
    const fs::path file = makeProject("Speech");
    const fs::path folder = file.parent_path();
    writeBytes(temp / "outside" / "a.wav", "not the project's");
    writeBytes(temp / "outside" / "target.txt", "kept");
    ASSERT_TRUE(session.openProject(file));
    const fs::path work = session.tempFolder();
    const Moves workingFiles = {{"a.wav", "Files/a.wav"},
                                {"B.WAV", "Files/B.WAV"},
                                {"SAF1.tmp", "SAF1.tmp"},
                                {lib("Codec"), "Algos/" + lib("Codec")},
                                {"Codec.BDY", "Algos/Codec.BDY"},
                                {"a.evt", "Files/a.evt"},
                                {"evt/b.evt", "b.evt"}};
    plant(work, workingFiles);
    writeBytes(work / "notes.txt", "not a working file");
    fs::create_symlink(temp / "outside" / "target.txt", work / "link.wav");
    fs::create_directory_symlink(temp / "outside", work / "linkdir");
    session.deletionList() = {folder / "Files" / "b.wav", temp / "outside" / "a.wav",
                              folder / "Files" / ".." / ".." / "outside" / "target.txt", "gone.wav"};
    session.markModified();
    port.queue(Answer::No); // closed without saving: the working files still go back

    ASSERT_TRUE(session.closeProject());
    expectMoved(folder, workingFiles);
    EXPECT_FALSE(fs::exists(folder / "Files" / "link.wav")); // a link is no working file
    EXPECT_FALSE(fs::exists(folder / "Temp"));
    EXPECT_FALSE(fs::exists(folder / "Files" / "b.wav")); // listed for deletion
    EXPECT_EQ(readBytes(temp / "outside" / "a.wav"), "not the project's");
    EXPECT_EQ(readBytes(temp / "outside" / "target.txt"), "kept");
    EXPECT_EQ(port.texts(), std::vector<std::string>{str(msg::kSaveBeforeClose)});
}

TEST_F(ProjectSessionTest, ACopyBackThatFailsStopsBeforeAnythingIsDeleted)
{
    const fs::path file = makeProject("Speech");
    ASSERT_TRUE(session.openProject(file));
    fs::copy_file(kSpeech / "forig.wav", session.tempFolder() / "a.wav");
    fs::copy_file(kSpeech / "morig.wav", session.tempFolder() / "c.wav");
    fs::create_directory(session.filesFolder() / "c.wav"); // in the way of the copy
    session.deletionList().push_back(session.filesFolder() / "b.wav");
    const test::FolderSnapshot before = snapshot(temp.path());

    EXPECT_FALSE(session.closeProject());
    EXPECT_TRUE(session.isOpen());
    EXPECT_EQ(snapshot(temp.path()), before); // not even a.wav, which could be copied
    EXPECT_EQ(port.texts(),
              std::vector<std::string>{str(msg::kCanNotCopyPrefix) + (session.tempFolder() / "c.wav").string() +
                                       str(msg::kCopyTo) + (session.filesFolder() / "c.wav").string() +
                                       str(msg::kCopyBackFailedSuffix)});
    fs::remove(session.filesFolder() / "c.wav");
    EXPECT_TRUE(session.closeProject());
    EXPECT_EQ(readBytes(temp / "Speech" / "Files" / "c.wav"), readBytes(kSpeech / "morig.wav"));
}

TEST_F(ProjectSessionTest, SaveWritesTheProjectEmptiesTempAndNeverFollowsALinkOut)
{
    const fs::path file = makeProject("Speech");
    writeBytes(temp / "outside" / "precious.wav", "precious");
    ASSERT_TRUE(session.openProject(file));
    const fs::path work = session.tempFolder();
    writeBytes(work / "SAF1.tmp", "interim");
    writeBytes(work / "a.wav", "backup of the previous a.wav");
    writeBytes(work / "deep" / "deeper" / "x.wav", "x");
    fs::create_symlink(temp / "outside" / "precious.wav", work / "precious.wav");
    fs::create_directory_symlink(temp / "outside", work / "deep" / "out");
    session.deletionList().push_back("Files/b.wav");
    session.document().destroyItem(session.document().files().back());
    session.markModified();

    ASSERT_TRUE(session.saveProject());
    EXPECT_FALSE(session.document().isModified());
    EXPECT_TRUE(fs::is_directory(work));
    EXPECT_TRUE(fs::is_empty(work));
    EXPECT_EQ(readBytes(temp / "outside" / "precious.wav"), "precious");
    EXPECT_FALSE(fs::exists(temp / "Speech" / "Files" / "b.wav"));
    EXPECT_TRUE(session.deletionList().empty());
    EXPECT_EQ(readBytes(file), projectText({"a.wav"}));
    // The work done in Temp survives the purge; a backup of an overwritten wave
    // does not come back over the saved one.
    EXPECT_EQ(readBytes(temp / "Speech" / "SAF1.tmp"), "interim");
    EXPECT_EQ(readBytes(temp / "Speech" / "Files" / "a.wav"), readBytes(kSpeech / "hts1a.wav"));

    // A Temp that cannot be made again is reported after a bounded number of tries.
    fs::remove(work);
    writeBytes(work, "a file named Temp");
    session.setTempFolderRetry(3, std::chrono::milliseconds(1));
    EXPECT_TRUE(session.saveProject());
    EXPECT_EQ(port.texts(), (std::vector<std::string>{
                                str(msg::kCanNotDeletePrefix) + work.string() + str(msg::kCanNotDeleteSuffix),
                                str(msg::kCanNotCreatePrefix) + work.string() + str(msg::kCanNotCreateFolderSuffix)}));
    EXPECT_EQ(readBytes(work), "a file named Temp");
    fs::remove(work);
}

TEST_F(ProjectSessionTest, SaveAsCarriesEveryFileAndTheNewProjectStaysOpen)
{
    const fs::path file = makeProject("Speech");
    const fs::path old = file.parent_path();
    const Moves saved = {{"Algos/" + lib("Codec"), "Algos/" + lib("Codec")},
                         {"Algos/Codec.bdy", "Algos/Codec.bdy"},
                         {"Files/a.evt", "Files/a.evt"},
                         {"SAF0.tmp", "SAF0.tmp"},
                         {"SAF0.dfn", "SAF0.dfn"}};
    const Moves working = {{"Temp/a.wav", "Files/a.wav"},
                           {"Temp/SAF1.TMP", "SAF1.TMP"},
                           {"Temp/" + lib("Other"), "Algos/" + lib("Other")},
                           {"Temp/Other.bdy", "Algos/Other.bdy"},
                           {"Temp/b.evt", "Files/b.evt"},
                           {"Temp/evt/a.evt", "a.evt"},
                           {"Temp/SAF2.dfn", "SAF2.dfn"}};
    plant(old, saved);
    ASSERT_TRUE(session.openProject(file));
    plant(old, working);
    session.deletionList().push_back(old / "Files" / "b.wav");
    session.markModified();
    const test::FolderSnapshot oldFiles = snapshot(old / "Files");

    ASSERT_TRUE(session.saveProjectAs(temp / "Elsewhere" / "deeper" / "Copy"));
    const fs::path copy = temp / "Elsewhere" / "deeper";
    EXPECT_EQ(session.projectFile(), copy / "Copy.ptp");
    EXPECT_FALSE(session.document().isModified());
    EXPECT_EQ(readBytes(copy / "Copy.ptp"), projectText({"a.wav", "b.wav"}));
    expectMoved(copy, saved);
    expectMoved(copy, working); // a working copy wins over the saved file
    EXPECT_EQ(readBytes(copy / "Files" / "b.wav"), readBytes(kSpeech / "cross.wav"));
    EXPECT_TRUE(fs::is_directory(copy / "Temp") && fs::is_empty(copy / "Temp"));
    EXPECT_EQ(fs::current_path(), copy);
    // The old project keeps its saved state; only its working folder is gone.
    EXPECT_FALSE(fs::exists(old / "Temp"));
    EXPECT_EQ(snapshot(old / "Files"), oldFiles);
    EXPECT_EQ(session.deletionList(), std::vector<fs::path>{copy / "Files" / "b.wav"});
    EXPECT_EQ(recent.entries().front(), (copy / "Copy.ptp").string());

    // A new project saved under another name leaves no empty folder behind.
    ASSERT_TRUE(session.newProject(temp.path().string(), "Fresh"));
    writeBytes(temp / "Fresh" / "Temp" / "w.wav", "work");
    ASSERT_TRUE(session.saveProjectAs(temp / "Final" / "Final.ptp"));
    EXPECT_FALSE(fs::exists(temp / "Fresh"));
    EXPECT_EQ(recent.entries()[1], (copy / "Copy.ptp").string());
    EXPECT_EQ(readBytes(temp / "Final" / "Files" / "w.wav"), "work");
    ASSERT_TRUE(session.closeProject());
    EXPECT_TRUE(fs::exists(temp / "Final" / "Final.ptp"));
    // ...unless the new project's Files folder is that old folder.
    fs::create_directories(temp / "Nest");
    ASSERT_TRUE(session.newProject((temp / "Nest").string(), "Files"));
    writeBytes(temp / "Nest" / "Files" / "Temp" / "n.wav", "n");
    ASSERT_TRUE(session.saveProjectAs(temp / "Nest" / "Nest.ptp"));
    EXPECT_EQ(readBytes(temp / "Nest" / "Files" / "n.wav"), "n");
    EXPECT_TRUE(port.texts().empty());
}

TEST_F(ProjectSessionTest, AProjectHasOneWriterUntilItCloses)
{
    const fs::path file = makeProject("Speech");
    const fs::path other = makeProject("Other");
    ASSERT_TRUE(session.openProject(file));
    const std::string before = readBytes(file);

    test::ScriptedPort secondPort;
    ProjectSession second{secondPort, nullptr, nullptr, start};
    EXPECT_FALSE(second.openProject(file));
    EXPECT_FALSE(second.isOpen());
    ASSERT_EQ(secondPort.texts().size(), 1u);
    const std::string refusal = secondPort.texts()[0];
    EXPECT_EQ(refusal.rfind(str(msg::kProjectInUsePrefix), 0), 0u);
    EXPECT_NE(refusal.find("(process " + std::to_string(::getpid()) + " on "), std::string::npos) << refusal;
    EXPECT_NE(refusal.find(str(msg::kProjectInUseSuffix)), std::string::npos);

    // Saving as into a folder another program holds is refused too, and
    // the open project stays where it was.
    ASSERT_TRUE(second.openProject(other));
    session.markModified();
    EXPECT_FALSE(session.saveProjectAs(other.parent_path() / "Mine.ptp"));
    EXPECT_EQ(session.projectFile(), file);
    EXPECT_FALSE(fs::exists(other.parent_path() / "Mine.ptp"));
    EXPECT_EQ(readBytes(file), before);

    port.queue(Answer::No);
    ASSERT_TRUE(session.closeProject());
    EXPECT_FALSE(fs::exists(file.parent_path() / FolderLock::kFileName)); // nothing left behind

    // What a killed run left staged goes at the next open; a user's own ".part" stays.
    const fs::path folder = file.parent_path();
    for (const char* left :
         {"SAF1.tmp.kestrelon-copy-3.part", "Files/a.wav.kestrelon-7.part", "Speech.ptp.kestrelon-0.part"})
        writeBytes(folder / left, "half");
    writeBytes(folder / "Files" / "notes.part", "mine");
    EXPECT_TRUE(second.openProject(file));
    EXPECT_FALSE(fs::exists(folder / "SAF1.tmp.kestrelon-copy-3.part"));
    EXPECT_FALSE(fs::exists(folder / "Files" / "a.wav.kestrelon-7.part"));
    EXPECT_FALSE(fs::exists(folder / "Speech.ptp.kestrelon-0.part"));
    EXPECT_EQ(readBytes(folder / "Files" / "notes.part"), "mine");
    EXPECT_TRUE(second.closeProject());
}

TEST(ProjectFolderOps, NothingIsDeletedThroughALinkAndALaterCopyToOneTargetWins)
{
    test::TempDir temp;
    const fs::path project = temp / "project";
    writeBytes(temp / "outside" / "keep.wav", "keep");
    fs::create_directories(project);
    fs::create_directory_symlink(temp / "outside", project / "Files");
    EXPECT_FALSE(deleteFolderTree(temp / "outside", project));
    EXPECT_FALSE(deleteFolderTree(project / "Files" / "..", project / "Files"));
    EXPECT_EQ(deleteListedFiles({project / "Files" / "keep.wav"}, project), 0u);
    EXPECT_TRUE(deleteFolderTree(project, project));
    EXPECT_EQ(readBytes(temp / "outside" / "keep.wav"), "keep");

    writeBytes(temp / "from" / "1.wav", "one");
    writeBytes(temp / "from" / "2.WAV", "two");
    std::vector<FileCopy> plan;
    planCopiesByExtension(plan, temp / "from", ".wav", temp / "to");
    plan.push_back({temp / "from" / "2.WAV", temp / "to" / "1.wav"});
    EXPECT_TRUE(copyFilesStaged(plan).ok);
    EXPECT_EQ(readBytes(temp / "to" / "1.wav"), "two");
    EXPECT_EQ(readBytes(temp / "to" / "2.WAV"), "two");
}

// Views follow the session by what it publishes: each change once, after it
// is complete, and nothing for what was refused.
TEST_F(ProjectSessionTest, ViewsHearEveryChangeOnceAndNothingForARefusal)
{
    std::vector<std::pair<SessionChange, bool>> heard; // with whether a project was open then
    const Subscription listening =
        session.changed.subscribe([&](SessionChange change) { heard.emplace_back(change, session.isOpen()); });
    const auto take = [&] { return std::exchange(heard, {}); };
    using Heard = std::vector<std::pair<SessionChange, bool>>;

    ASSERT_TRUE(session.newProject(temp.path().string(), "First"));
    EXPECT_EQ(take(), (Heard{{SessionChange::Opened, true}}));

    session.setBusy(true);
    session.setBusy(true);
    EXPECT_FALSE(session.saveProject()) << "a busy project is not saved";
    port.clear();
    session.setBusy(false);
    EXPECT_EQ(take(), (Heard{{SessionChange::Busy, true}, {SessionChange::Busy, true}}));

    EXPECT_FALSE(session.openProject(temp / "missing.ptp"));
    EXPECT_TRUE(take().empty());
    port.clear();

    ASSERT_TRUE(session.saveProject());
    EXPECT_EQ(take(), (Heard{{SessionChange::Saved, true}}));
    ASSERT_TRUE(session.saveProjectAs(temp / "Second" / "Second.ptp"));
    EXPECT_EQ(take(), (Heard{{SessionChange::Opened, true}}));

    // Opening another project closes this one first: the views hear both.
    const fs::path other = makeProject("Other");
    ASSERT_TRUE(session.openProject(other));
    EXPECT_EQ(take(), (Heard{{SessionChange::Closed, false}, {SessionChange::Opened, true}}));
    session.markModified();
    port.queue(Answer::Yes); // save before closing
    ASSERT_TRUE(session.closeProject());
    EXPECT_EQ(take(), (Heard{{SessionChange::Saved, true}, {SessionChange::Closed, false}}));
}
