#include "common/messages.h"
#include "project/project_document.h"
#include "project/workspace_tree.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::writeBytes;
namespace fs = std::filesystem;

namespace {

const fs::path kSpeech = "/usr/share/codec2/wav";

std::string quotedText(std::string_view prefix, std::string_view name, std::string_view suffix)
{
    return std::string(prefix) + "\"" + std::string(name) + "\"" + std::string(suffix);
}

class WorkspaceTreeTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(project);
        tree.onChanged = [this] { ++changes; };
    }

    // A real recording put under `name` in a folder outside the project.
    fs::path speech(const std::string& name, const std::string& recording, const std::string& folder = "chosen")
    {
        const fs::path path = temp / folder / name;
        fs::create_directories(path.parent_path());
        fs::copy_file(kSpeech / recording, path, fs::copy_options::overwrite_existing);
        return path;
    }

    AddedFile addOne(TreeTarget target, const fs::path& chosen) { return tree.addFiles(target, {chosen}).front(); }

    test::TempDir temp;
    fs::path project = temp / "Proj";
    ProjectDocument document;
    std::vector<fs::path> deletions;
    test::ScriptedPort port;
    WorkspaceTree tree{document, project, deletions, port};
    int changes = 0;
};

} // namespace

TEST_F(WorkspaceTreeTest, AddFolderRefusesBadNamesAndMarksFoldersSoTheyAreWritten)
{
    EXPECT_FALSE(tree.targetFor(nullptr)); // no node given, none selected: nothing happens
    EXPECT_EQ(tree.addFolder(TreeTarget::topLevel(), ""), nullptr);
    EXPECT_EQ(tree.addFolder(TreeTarget::topLevel(), "two\nlines"), nullptr);
    EXPECT_EQ(tree.addFolder(TreeTarget::topLevel(), std::string(WorkspaceTree::kMaxFolderName + 1, 'x')), nullptr);
    EXPECT_EQ(port.texts(),
              (std::vector<std::string>{std::string(msg::kFolderNameEmpty), std::string(msg::kInvalidCharacters),
                                        std::string(msg::kFolderNameTooLong)}));
    EXPECT_EQ(document.itemCount(), 0u);
    EXPECT_FALSE(document.isModified());
    EXPECT_EQ(changes, 0);

    ProjectItem* voices = tree.addFolder(TreeTarget::topLevel(), "Voices");
    ProjectItem* later = tree.addFolder(TreeTarget::topLevel(), "Later");
    ASSERT_TRUE(voices && later);
    EXPECT_EQ(voices->flags(), 0x4003u);
    EXPECT_EQ(voices->id(), "Voices");
    EXPECT_TRUE(document.isModified());
    EXPECT_EQ(changes, 2);

    ProjectItem* source = addOne(TreeTarget::under(voices), speech("a.wav", "cross.wav")).item;
    tree.selection().click(source);
    const auto target = tree.targetFor(nullptr); // a selected source stands for its folder
    ASSERT_TRUE(target);
    ProjectItem* sub = tree.addFolder(*target, "Sub");
    ASSERT_EQ(sub->parent(), voices);
    EXPECT_EQ(sub->flags(), 0x4002u);
    EXPECT_EQ(voices->children().back(), sub);
    EXPECT_EQ(document.topLevelFiles(), (std::vector<ProjectItem*>{voices, later}));
}

TEST_F(WorkspaceTreeTest, AddFilesCopiesIntoFilesAndRefusesANameUsedInAnotherFolder)
{
    ProjectItem* voices = tree.addFolder(TreeTarget::topLevel(), "Voices");
    ProjectItem* deep = tree.addFolder(TreeTarget::under(voices), "Deep");
    changes = 0;
    const auto added =
        tree.addFiles(TreeTarget::under(deep), {speech("a.wav", "cross.wav"), speech("b.wav", "hts1a.wav")});
    ASSERT_EQ(added.size(), 2u);
    EXPECT_EQ(added[0].outcome, AddFileOutcome::Added);
    EXPECT_EQ(added[0].item->name(), "Files\\a.wav");
    EXPECT_EQ(added[0].item->id(), "a.wav");
    EXPECT_EQ(added[0].item->flags(), 8u);
    EXPECT_EQ(readBytes(project / "Files" / "b.wav"), readBytes(kSpeech / "hts1a.wav"));
    EXPECT_EQ(deep->children().size(), 2u);
    EXPECT_EQ(changes, 1); // once per command

    // Another folder at any depth holds a.wav: refused whatever the content.
    const auto refused = addOne(TreeTarget::topLevel(), speech("a.wav", "big_dog.wav", "other"));
    EXPECT_EQ(refused.outcome, AddFileOutcome::Refused);
    EXPECT_EQ(port.texts().back(), quotedText(msg::kCanNotAddFilePrefix, "a.wav", msg::kInOtherFolderSuffix));
    EXPECT_EQ(readBytes(project / "Files" / "a.wav"), readBytes(kSpeech / "cross.wav"));
    EXPECT_EQ(document.topLevelFiles().size(), 1u);

    // At the top level a source carries the top-level bit.
    const auto top = addOne(TreeTarget::topLevel(), speech("c.wav", "f2400.wav"));
    EXPECT_EQ(top.item->flags(), 9u);
    EXPECT_EQ(document.topLevelFiles().back(), top.item);

    // A file that cannot be read, or cannot be written into Files, adds no item.
    const std::size_t items = document.itemCount();
    EXPECT_EQ(addOne(TreeTarget::topLevel(), temp / "missing.wav").outcome, AddFileOutcome::CopyFailed);
    EXPECT_EQ(port.texts().back(), quotedText(msg::kCanNotAddFilePrefix, "missing.wav", msg::kCopyFailedSuffix));
    fs::create_directories(project / "Files" / "blocked.wav");
    EXPECT_EQ(addOne(TreeTarget::topLevel(), speech("blocked.wav", "cross.wav")).outcome, AddFileOutcome::CopyFailed);
    EXPECT_EQ(document.itemCount(), items);

    // Text renamed ".wav", and a recording cut short of what its header
    // promises: refused with the name and the reason, left where they were,
    // and nothing of them in Files.
    const fs::path text = temp / "chosen" / "notes.wav";
    writeBytes(text, "these are notes, not sound\n");
    const fs::path cut = temp / "chosen" / "cut.wav";
    const std::string whole = readBytes(kSpeech / "hts1a.wav");
    writeBytes(cut, whole.substr(0, whole.size() / 2));
    EXPECT_EQ(addOne(TreeTarget::topLevel(), text).outcome, AddFileOutcome::Refused);
    EXPECT_EQ(port.texts().back(), "Can not add the file \"notes.wav\"!\nnotes.wav is not a readable wave file !");
    EXPECT_EQ(addOne(TreeTarget::topLevel(), cut).outcome, AddFileOutcome::Refused);
    EXPECT_EQ(port.texts().back(),
              "Can not add the file \"cut.wav\"!\ncut.wav is damaged: it holds less sound than its header says !");
    EXPECT_EQ(readBytes(text), "these are notes, not sound\n");
    EXPECT_EQ(readBytes(cut), whole.substr(0, whole.size() / 2));
    EXPECT_FALSE(fs::exists(project / "Files" / "notes.wav"));
    EXPECT_FALSE(fs::exists(project / "Files" / "cut.wav"));
    EXPECT_EQ(document.itemCount(), items);
}

TEST_F(WorkspaceTreeTest, SameNameInTheFolderAsksAndYesKeepsThePreviousCopyInTemp)
{
    ProjectItem* voices = tree.addFolder(TreeTarget::under(nullptr), "Voices");
    addOne(TreeTarget::under(voices), speech("a.wav", "cross.wav"));
    writeBytes(project / "Files" / "a.evt", "[events]\n");
    document.setModified(false);
    const std::string question = quotedText(msg::kTheFilePrefix, "a.wav", msg::kOverwriteSuffix);

    port.queue(Answer::No);
    EXPECT_EQ(addOne(TreeTarget::under(voices), speech("a.wav", "hts1a.wav", "v2")).outcome, AddFileOutcome::Unchanged);
    EXPECT_EQ(port.messages().back().text, question);
    EXPECT_EQ(readBytes(project / "Files" / "a.wav"), readBytes(kSpeech / "cross.wav"));
    EXPECT_FALSE(fs::exists(project / "Temp"));
    EXPECT_FALSE(document.isModified());

    port.queue(Answer::Yes);
    const auto replaced = addOne(TreeTarget::under(voices), speech("a.wav", "hts1a.wav", "v2"));
    EXPECT_EQ(replaced.outcome, AddFileOutcome::Overwritten);
    EXPECT_EQ(voices->children().size(), 1u); // no second item
    EXPECT_EQ(readBytes(project / "Files" / "a.wav"), readBytes(kSpeech / "hts1a.wav"));
    EXPECT_EQ(readBytes(project / "Temp" / "a.wav"), readBytes(kSpeech / "cross.wav"));
    EXPECT_EQ(readBytes(project / "Temp" / "a.evt"), "[events]\n");
    EXPECT_TRUE(document.isModified());

    // A second overwrite before saving keeps the copy the saved project knows.
    port.queue(Answer::Yes);
    addOne(TreeTarget::under(voices), speech("a.wav", "f2400.wav", "v3"));
    EXPECT_EQ(readBytes(project / "Files" / "a.wav"), readBytes(kSpeech / "f2400.wav"));
    EXPECT_EQ(readBytes(project / "Temp" / "a.wav"), readBytes(kSpeech / "cross.wav"));
}

TEST_F(WorkspaceTreeTest, ReadOnlyTargetIsReplacedAndTheProjectsOwnCopyIsNotCopiedOntoItself)
{
    // A read-only leftover in Files is replaced by the chosen file and ends writable.
    writeBytes(project / "Files" / "r.wav", "old");
    fs::permissions(project / "Files" / "r.wav",
                    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    EXPECT_EQ(addOne(TreeTarget::topLevel(), speech("r.wav", "cross.wav")).outcome, AddFileOutcome::Added);
    EXPECT_EQ(readBytes(project / "Files" / "r.wav"), readBytes(kSpeech / "cross.wav"));
    EXPECT_NE(fs::status(project / "Files" / "r.wav").permissions() & fs::perms::owner_write, fs::perms::none);

    // Choosing the very file in Files: it gets an item but is not rewritten
    // (a rewrite would replace it and break the second link to it).
    fs::copy_file(kSpeech / "hts1a.wav", project / "Files" / "own.wav");
    const fs::path link = temp / "links" / "own.wav";
    fs::create_directories(link.parent_path());
    fs::create_hard_link(project / "Files" / "own.wav", link);
    const auto own = addOne(TreeTarget::topLevel(), project / "Files" / ".." / "Files" / "own.wav");
    EXPECT_EQ(own.outcome, AddFileOutcome::Added);
    EXPECT_EQ(fs::hard_link_count(link), 2u);
    // The same file chosen again through the other link: Yes has nothing to replace.
    port.queue(Answer::Yes);
    EXPECT_EQ(addOne(TreeTarget::topLevel(), link).outcome, AddFileOutcome::Unchanged);
    EXPECT_EQ(fs::hard_link_count(link), 2u);
    EXPECT_FALSE(fs::exists(project / "Temp" / "own.wav"));
}

TEST_F(WorkspaceTreeTest, DeleteFilesAsksSingularOrPluralAndListsTheFilesForDeletion)
{
    ProjectItem* voices = tree.addFolder(TreeTarget::topLevel(), "Voices");
    const auto added =
        tree.addFiles(TreeTarget::under(voices),
                      {speech("a.wav", "cross.wav"), speech("b.wav", "hts1a.wav"), speech("c.wav", "f2400.wav")});
    const auto encodedAs = [](std::string file, std::string interim) {
        EditInfoRecord record;
        record.fileName = std::move(file);
        record.encodeName = std::move(interim);
        return record;
    };
    added[0].item->records().push_back(encodedAs("a.wav", "SAF1.tmp"));
    added[1].item->records().push_back(encodedAs("b.wav", "..\\outside.tmp"));
    document.setModified(false);
    changes = 0;

    EXPECT_EQ(tree.deleteFiles(), CommandOutcome::NothingToDo); // nothing selected, nothing asked
    tree.selection().click(voices);
    EXPECT_EQ(tree.deleteFiles(), CommandOutcome::NothingToDo); // only sources are removed

    tree.selection().shiftClick(added[2].item); // the folder and its three sources
    port.queue(Answer::No);
    EXPECT_EQ(tree.deleteFiles(), CommandOutcome::Declined);
    EXPECT_EQ(port.messages().back().text, msg::kDeleteSelectedItems);
    EXPECT_EQ(voices->children().size(), 3u);
    EXPECT_FALSE(document.isModified());
    EXPECT_EQ(changes, 0);

    tree.selection().click(added[0].item);
    port.queue(Answer::Yes);
    EXPECT_EQ(tree.deleteFiles(), CommandOutcome::Done);
    EXPECT_EQ(port.messages().back().text, quotedText(msg::kDeleteItemPrefix, "a.wav", "?"));
    EXPECT_EQ(voices->children().size(), 2u);
    EXPECT_TRUE(document.isModified());
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(tree.selection().empty());
    EXPECT_EQ(deletions,
              (std::vector<fs::path>{project / "Files" / "a.wav", project / "Files" / "a.evt", project / "SAF1.tmp"}));
    EXPECT_TRUE(fs::exists(project / "Files" / "a.wav")); // deleted by Save or Close, not now

    // Added again before saving: the new copy must survive the next Save.
    addOne(TreeTarget::under(voices), speech("a.wav", "cross.wav"));
    EXPECT_EQ(deletions, (std::vector<fs::path>{project / "Files" / "a.evt", project / "SAF1.tmp"}));

    // A record name that leaves the project folder never reaches the list.
    tree.selection().click(added[1].item);
    port.queue(Answer::Yes);
    tree.deleteFiles();
    EXPECT_EQ(deletions.size(), 4u);
    EXPECT_EQ(deletions.back(), project / "Files" / "b.evt");
}

TEST_F(WorkspaceTreeTest, DeleteFoldersFolderFilesAndAllAskTheirQuestions)
{
    ProjectItem* voices = tree.addFolder(TreeTarget::topLevel(), "Voices");
    ProjectItem* sub = tree.addFolder(TreeTarget::under(voices), "Sub");
    ProjectItem* music = tree.addFolder(TreeTarget::topLevel(), "Music");
    addOne(TreeTarget::under(voices), speech("a.wav", "cross.wav"));
    addOne(TreeTarget::under(sub), speech("b.wav", "hts1a.wav"));
    addOne(TreeTarget::topLevel(), speech("c.wav", "f2400.wav"));

    // Folder files: the sources directly in the folder go, its sub-folder stays.
    tree.selection().click(voices);
    port.queue(Answer::Yes);
    EXPECT_EQ(tree.deleteFolderFiles(), CommandOutcome::Done);
    EXPECT_EQ(port.messages().back().text, msg::kDeleteAllItems);
    EXPECT_EQ(voices->children(), (std::vector<ProjectItem*>{sub}));

    tree.selection().click(sub);
    port.queue(Answer::No);
    EXPECT_EQ(tree.deleteFolders(), CommandOutcome::Declined);
    EXPECT_EQ(port.messages().back().text, quotedText(msg::kDeleteFolderPrefix, "Sub", "?"));

    // Two folders, one inside the other, and a third: the plural question.
    tree.selection().selectOnly({voices, sub, music});
    port.queue(Answer::Yes);
    EXPECT_EQ(tree.deleteFolders(), CommandOutcome::Done);
    EXPECT_EQ(port.messages().back().text, msg::kDeleteAllItems);
    ASSERT_EQ(document.topLevelFiles().size(), 1u);
    EXPECT_EQ(document.topLevelFiles()[0]->id(), "c.wav");
    EXPECT_EQ(document.itemCount(), 1u);

    port.queue(Answer::Yes);
    EXPECT_EQ(tree.deleteAll(), CommandOutcome::Done);
    EXPECT_EQ(document.itemCount(), 0u);
    EXPECT_EQ(deletions.size(), 6u); // three waves, three event files
    EXPECT_EQ(tree.deleteAll(), CommandOutcome::NothingToDo); // nothing left: nothing asked
    EXPECT_EQ(port.pendingAnswers(), 0u);
}

TEST_F(WorkspaceTreeTest, RenameFolderRefusesInvalidNamesAndKeepsNameAndIdInStep)
{
    ProjectItem* voices = tree.addFolder(TreeTarget::topLevel(), "Voices");
    document.setModified(false);
    for (const char* bad : {"a\\b", "a/b", "a:b", "a*b", "a?b", "a\"b", "a<b", "a>b", "a|b"}) {
        EXPECT_EQ(tree.renameFolder(voices, bad), CommandOutcome::Refused) << bad;
        EXPECT_EQ(port.texts().back(), msg::kInvalidCharacters);
    }
    EXPECT_EQ(tree.renameFolder(voices, ""), CommandOutcome::Refused);
    EXPECT_EQ(port.texts().back(), msg::kFolderNameEmptyRename);
    EXPECT_EQ(voices->name(), "Voices");
    EXPECT_FALSE(document.isModified());

    EXPECT_EQ(tree.renameFolder(voices, "Greetings"), CommandOutcome::Done);
    EXPECT_EQ(voices->name(), "Greetings");
    EXPECT_EQ(tree.itemsWithId("Greetings"), (std::vector<ProjectItem*>{voices}));
    EXPECT_TRUE(document.isModified());
}
