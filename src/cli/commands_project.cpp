#include "cli/commands.h"

#include "cli/project_json.h"
#include "cli/project_runner.h"
#include "cli/spooled_array.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/platform.h"
#include "model/project.h"
#include "project/new_project.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "project/workspace_tree.h"

#include <iostream>
#include <system_error>

namespace kestrelon::cli {

namespace {

// The missing-file question is answered Cancel (keep the item) unless the
// caller asked to drop missing sources.
Result projectDump(Context& ctx)
{
    const bool dropMissing = ctx.args.takeFlag("--drop-missing");
    const auto words = ctx.args.expect(1);
    const Answer answer = dropMissing ? Answer::Ok : Answer::Cancel;
    ctx.port.setPolicy(
        [answer](std::string_view, Buttons buttons, std::string_view) { return answerFor(answer, buttons); });

    ProjectDocument project;
    Result result{project.open(pathFromUtf8(words[0]), ctx.port), {{"modified", project.isModified()}}};
    setSpooledField(result, "files", filesJson(project));
    return result;
}

Result projectRewrite(Context& ctx)
{
    const auto words = ctx.args.expect(2);
    ProjectDocument project;
    if (!project.open(pathFromUtf8(words[0]), ctx.port))
        return {false, {{"written", false}}};
    project.rebuildFilesList();
    const bool written = project.save(pathFromUtf8(words[1]));
    return {written, {{"written", written}}};
}

// The New Project dialog's checks, the creating, a first Save (so that the
// project stands on disk and is no longer a new project, which Close would
// delete) and Close. A relative LOCATION is taken from the folder the command
// runs in, as a shell user means it; the dialog's checks then see a full path.
Result projectNew(Context& ctx)
{
    const auto words = ctx.args.expect(2);
    const std::string location = words[0].empty() ? words[0] : utf8FromPath(absolutePathArgument(words[0]));
    const std::string& name = words[1];
    if (!checkNewProject(name, location, ctx.port).ok)
        return {false, {{"files", Json::array()}}};

    std::error_code ec;
    Project project(ctx.port, {ctx.programFolder, userConfigFolder(), std::filesystem::current_path(ec)});
    ProjectSession& session = project.session();
    bool ok = session.newProject(location, name) && session.saveProject();
    const std::filesystem::path file = session.projectFile();
    std::shared_ptr<SpooledArray> files = filesJson(session.document());
    ok = session.closeProject() && ok;
    if (ok)
        printSummary(ctx, "created " + utf8FromPath(file));
    Result result{ok};
    setSpooledField(result, "files", std::move(files));
    result.fields["project"] = utf8FromPath(file);
    return result;
}

// Open, Save As with all its copies, close. An existing target is replaced
// only when the question is answered yes (--yes).
Result projectSaveAs(Context& ctx)
{
    const auto words = ctx.args.expect(2);
    const std::filesystem::path target = withProjectExtension(absolutePathArgument(words[1]));
    Result result = runProjectOperation(ctx, words[0], [&](ProjectSession& session) {
        std::error_code ec;
        if (std::filesystem::exists(std::filesystem::symlink_status(target, ec)) &&
            ctx.port.ask(utf8FromPath(target) + std::string(msg::kReplaceItSuffix), Buttons::YesNo) != Answer::Yes)
            return false;
        return session.saveProjectAs(target);
    });
    if (result.ok)
        printSummary(ctx, "saved " + words[0] + " as " + utf8FromPath(target));
    return result;
}

// ---- The Files tree's commands: each runs on the open project as the
// workbench would and leaves the folder as Save and Close leave it.

std::string_view outcomeName(CommandOutcome outcome)
{
    switch (outcome) {
    case CommandOutcome::NothingToDo: return "nothing";
    case CommandOutcome::Declined: return "declined";
    case CommandOutcome::Refused: return "refused";
    case CommandOutcome::Done: return "done";
    }
    return "nothing";
}

std::string deletionSummary(CommandOutcome outcome)
{
    switch (outcome) {
    case CommandOutcome::Done: return "deleted";
    case CommandOutcome::Declined: return "nothing deleted: the answer was no";
    default: return "nothing to delete";
    }
}

std::string_view outcomeName(AddFileOutcome outcome)
{
    switch (outcome) {
    case AddFileOutcome::Added: return "added";
    case AddFileOutcome::Overwritten: return "overwritten";
    case AddFileOutcome::Unchanged: return "unchanged";
    case AddFileOutcome::Refused: return "refused";
    case AddFileOutcome::CopyFailed: return "copy-failed";
    }
    return "unchanged";
}

enum class ItemKind { Folder, File };

// The one item an id on the command line names. An id that names nothing,
// names several items or an item of the wrong kind is the caller's mistake,
// reported in `error` (not a text of the program's own).
ProjectItem* itemForId(const WorkspaceTree& tree, const std::string& id, ItemKind kind, std::string& error)
{
    const std::vector<ProjectItem*> found = tree.itemsWithId(id);
    if (found.empty())
        error = "no item with id " + id;
    else if (found.size() > 1)
        error = "more than one item has the id " + id;
    else if (kind == ItemKind::Folder && !found.front()->isGroup())
        error = id + " is not a folder";
    else if (kind == ItemKind::File && !found.front()->isSource())
        error = id + " is not a file";
    return error.empty() ? found.front() : nullptr;
}

bool itemsForIds(const WorkspaceTree& tree, const std::vector<std::string>& ids, ItemKind kind,
                 std::vector<ProjectItem*>& items, std::string& error)
{
    for (const std::string& id : ids) {
        ProjectItem* item = itemForId(tree, id, kind, error);
        if (!item)
            return false;
        items.push_back(item);
    }
    return true;
}

Result projectAddFolder(Context& ctx)
{
    const std::optional<std::string> parentId = ctx.args.takeOption("--parent");
    const auto words = ctx.args.expect(2);
    std::string error;
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        WorkspaceTree& tree = *project.tree();
        TreeTarget target = TreeTarget::topLevel();
        if (parentId) {
            target.folder = itemForId(tree, *parentId, ItemKind::Folder, error);
            if (!target.folder)
                return false;
        }
        return tree.addFolder(target, words[1]) != nullptr;
    });
    return finishCommand(ctx, std::move(result), error, "added folder " + words[1]);
}

// Files that could be added are added and saved; ok is false when any chosen
// file was refused or could not be copied.
Result projectAddFiles(Context& ctx)
{
    const std::optional<std::string> folderId = ctx.args.takeOption("--folder");
    const auto words = ctx.args.positionals();
    if (words.size() < 2)
        throw UsageError("expected PROJECT.ptp and at least one WAV file");
    std::vector<std::filesystem::path> chosen;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        if (!endsWithNoCase(*word, ".wav"))
            throw UsageError("not a .wav file: " + *word);
        chosen.push_back(absolutePathArgument(*word));
    }

    std::string error;
    bool allAdded = true;
    Json added = Json::array();
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        WorkspaceTree& tree = *project.tree();
        TreeTarget target = TreeTarget::topLevel();
        if (folderId) {
            target.folder = itemForId(tree, *folderId, ItemKind::Folder, error);
            if (!target.folder)
                return false;
        }
        for (const AddedFile& file : tree.addFiles(target, chosen)) {
            allAdded =
                allAdded && file.outcome != AddFileOutcome::Refused && file.outcome != AddFileOutcome::CopyFailed;
            added.push_back({{"file", utf8FromPath(file.chosen)}, {"outcome", outcomeName(file.outcome)}});
        }
        return true;
    });
    result.ok = result.ok && allAdded;
    std::string summary;
    for (const Json& file : added)
        summary +=
            (summary.empty() ? "" : "\n") + file["outcome"].get<std::string>() + " " + file["file"].get<std::string>();
    result.fields["added"] = std::move(added);
    return finishCommand(ctx, std::move(result), error, summary);
}

// delete-files and delete-folder: the named items are the selection.
Result deleteSelected(Context& ctx, ItemKind kind)
{
    const auto words = ctx.args.positionals();
    if (words.size() < 2)
        throw UsageError("expected PROJECT.ptp and at least one ID");
    const std::vector<std::string> ids(words.begin() + 1, words.end());
    std::string error;
    CommandOutcome outcome = CommandOutcome::NothingToDo;
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        WorkspaceTree& tree = *project.tree();
        std::vector<ProjectItem*> items;
        if (!itemsForIds(tree, ids, kind, items, error))
            return false;
        tree.selection().selectOnly(items);
        outcome = kind == ItemKind::File ? tree.deleteFiles() : tree.deleteFolders();
        return true;
    });
    result.fields["outcome"] = outcomeName(outcome);
    return finishCommand(ctx, std::move(result), error, deletionSummary(outcome));
}

Result projectDeleteFiles(Context& ctx)
{
    return deleteSelected(ctx, ItemKind::File);
}

Result projectDeleteFolder(Context& ctx)
{
    return deleteSelected(ctx, ItemKind::Folder);
}

Result projectDeleteAll(Context& ctx)
{
    const auto words = ctx.args.expect(1);
    CommandOutcome outcome = CommandOutcome::NothingToDo;
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        outcome = project.tree()->deleteAll();
        return true;
    });
    result.fields["outcome"] = outcomeName(outcome);
    return finishCommand(ctx, std::move(result), {}, deletionSummary(outcome));
}

Result projectRenameFolder(Context& ctx)
{
    const auto words = ctx.args.expect(3);
    std::string error;
    CommandOutcome outcome = CommandOutcome::NothingToDo;
    Result result = runProjectOperation(ctx, words[0], [&](Project& project) {
        WorkspaceTree& tree = *project.tree();
        ProjectItem* folder = itemForId(tree, words[1], ItemKind::Folder, error);
        if (!folder)
            return false;
        outcome = tree.renameFolder(folder, words[2]);
        return outcome != CommandOutcome::Refused;
    });
    result.fields["outcome"] = outcomeName(outcome);
    return finishCommand(ctx, std::move(result), error, "renamed " + words[1] + " to " + words[2]);
}

} // namespace

void addProjectCommands(std::vector<CommandSpec>& table)
{
    table.push_back({{"project", "dump"}, "project dump FILE.ptp [--drop-missing]", &projectDump, true});
    table.push_back({{"project", "rewrite"}, "project rewrite IN.ptp OUT.ptp", &projectRewrite, false});
    table.push_back({{"project", "new"}, "project new LOCATION NAME", &projectNew, false});
    table.push_back({{"project", "save-as"}, "project save-as PROJECT.ptp NEW.ptp", &projectSaveAs, false});
    table.push_back(
        {{"project", "add-folder"}, "project add-folder PROJECT.ptp NAME [--parent ID]", &projectAddFolder, false});
    table.push_back(
        {{"project", "add-files"}, "project add-files PROJECT.ptp [--folder ID] WAV...", &projectAddFiles, false});
    table.push_back(
        {{"project", "delete-files"}, "project delete-files PROJECT.ptp ID...", &projectDeleteFiles, false});
    table.push_back(
        {{"project", "delete-folder"}, "project delete-folder PROJECT.ptp ID...", &projectDeleteFolder, false});
    table.push_back({{"project", "delete-all"}, "project delete-all PROJECT.ptp", &projectDeleteAll, false});
    table.push_back(
        {{"project", "rename-folder"}, "project rename-folder PROJECT.ptp ID NEWNAME", &projectRenameFolder, false});
}

} // namespace kestrelon::cli
