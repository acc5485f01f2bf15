#include "project/workspace_tree.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/project_document.h"
#include "project/project_file_reader.h"
#include "wave/wave_file.h"

#include <algorithm>
#include <cerrno>
#include <unordered_set>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kFilesFolder = "Files";
constexpr std::string_view kTempFolder = "Temp";
constexpr std::string_view kEventExtension = ".evt";
// The characters a name on disk cannot hold; a folder rename refuses them.
constexpr std::string_view kInvalidNameCharacters = "\\/:*?\"<>|";
// A RIFF file cannot be larger; the copy holds the file in memory once.
constexpr std::uintmax_t kMaxWaveBytes = 0xFFFFFFFFull + 8;

std::string inQuotes(std::string_view text)
{
    std::string out = "\"";
    out.append(text).append("\"");
    return out;
}

// A line break would split the project file's line that holds the name.
bool hasControlCharacter(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7f;
    });
}

// The last part of a model path ("Files\a.wav" -> "a.wav").
std::string_view fileNamePart(std::string_view modelPath)
{
    const auto slash = modelPath.find_last_of("\\/");
    return slash == std::string_view::npos ? modelPath : modelPath.substr(slash + 1);
}

// The file name a source stands for; its id when its name has none.
std::string_view sourceFileName(const ProjectItem& source)
{
    const std::string_view part = fileNamePart(source.name());
    return part.empty() ? std::string_view(source.id()) : part;
}

// A record's encode and decode names are bare file names in the project
// folder; anything else (read from a damaged file) never reaches the disk.
bool isBareFileName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find_first_of("\\/:") == std::string_view::npos;
}

// Folders from `folder` up to the root, `folder` included.
std::size_t groupDepth(const ProjectItem* folder)
{
    std::size_t depth = 0;
    for (const ProjectItem* up = folder; up; up = up->parent())
        if (up->isGroup())
            ++depth;
    return depth;
}

bool sameListedPath(const fs::path& a, const fs::path& b)
{
#ifdef _WIN32
    return equalsNoCase(utf8FromPath(a.lexically_normal()), utf8FromPath(b.lexically_normal()));
#else
    return a.lexically_normal() == b.lexically_normal();
#endif
}

bool sameFileOnDisk(const fs::path& a, const fs::path& b)
{
    std::error_code ec;
    return fs::equivalent(a, b, ec) && !ec;
}

// False with the system's reason in `why` when the copy cannot be made.
bool copyWhole(const fs::path& from, const fs::path& to, std::string& why)
{
    ReadResult source = readFile(from, kMaxWaveBytes);
    if (source.status != ReadStatus::Ok) {
        why = source.reason;
        return false;
    }
    std::error_code ec;
    if (fs::exists(to, ec))
        // A read-only copy left by another tool would refuse to be replaced on Windows.
        fs::permissions(to, fs::perms::owner_write, fs::perm_options::add, ec);
    return writeFileAtomically(to, source.bytes, &why);
}

// Every source in the subtree of `root`, `root` included.
std::vector<const ProjectItem*> sourcesUnder(const ProjectItem* root)
{
    std::vector<const ProjectItem*> found;
    std::vector<const ProjectItem*> pending{root};
    while (!pending.empty()) {
        const ProjectItem* item = pending.back();
        pending.pop_back();
        if (item->isSource())
            found.push_back(item);
        pending.insert(pending.end(), item->children().begin(), item->children().end());
    }
    return found;
}

} // namespace

bool sameFileName(std::string_view a, std::string_view b)
{
#ifdef _WIN32
    return equalsNoCase(a, b);
#else
    return a == b;
#endif
}

WorkspaceTree::WorkspaceTree(ProjectDocument& document, fs::path projectFolder, std::vector<fs::path>& deletionList,
                             UserPort& port)
    : m_document(document)
    , m_projectFolder(std::move(projectFolder))
    , m_deletionList(deletionList)
    , m_port(port)
    , m_selection(document)
{}

fs::path WorkspaceTree::filesFolder() const
{
    return m_projectFolder / pathFromUtf8(kFilesFolder);
}

fs::path WorkspaceTree::tempFolder() const
{
    return m_projectFolder / pathFromUtf8(kTempFolder);
}

fs::path WorkspaceTree::sourcePath(const ProjectItem& source) const
{
    return joinModel(m_projectFolder, source.name());
}

namespace {

// A source as a target means the folder that holds it.
ProjectItem* folderOf(ProjectItem* node)
{
    while (node && !node->isGroup())
        node = node->parent();
    return node;
}

} // namespace

std::optional<TreeTarget> WorkspaceTree::targetFor(ProjectItem* given) const
{
    ProjectItem* node = given ? given : m_selection.primary();
    if (!node)
        return std::nullopt;
    return TreeTarget::under(folderOf(node));
}

ProjectItem* WorkspaceTree::addFolder(TreeTarget parent, std::string_view name)
{
    ProjectItem* folder = folderOf(parent.folder);
    if (name.empty()) {
        m_port.showMessage(msg::kFolderNameEmpty);
        return nullptr;
    }
    if (hasControlCharacter(name)) {
        m_port.showMessage(msg::kInvalidCharacters);
        return nullptr;
    }
    if (name.size() > kMaxFolderName) {
        m_port.showMessage(msg::kFolderNameTooLong);
        return nullptr;
    }
    if (groupDepth(folder) + 1 > kMaxGroupDepth) {
        m_port.showMessage(msg::kFolderTooDeep);
        return nullptr;
    }

    // The writer starts only from items with the top-level bit, so a folder
    // made at the root carries it.
    const std::uint32_t flags = ProjectItem::kGroup | ProjectItem::kFolderMark | (folder ? 0u : ProjectItem::kTopLevel);
    ProjectItem* added = m_document.createItem(std::string(name), flags, std::string(name));
    if (folder)
        folder->appendChild(added);
    else
        m_document.files().push_back(added);
    changed();
    return added;
}

std::vector<AddedFile> WorkspaceTree::addFiles(TreeTarget target, const std::vector<fs::path>& chosen)
{
    ProjectItem* folder = folderOf(target.folder);
    std::vector<AddedFile> results;
    bool anyChange = false;
    for (const fs::path& file : chosen) {
        results.push_back(addFile(folder, file));
        const AddFileOutcome outcome = results.back().outcome;
        anyChange = anyChange || outcome == AddFileOutcome::Added || outcome == AddFileOutcome::Overwritten;
    }
    if (anyChange)
        changed();
    return results;
}

AddedFile WorkspaceTree::addFile(ProjectItem* folder, const fs::path& chosen)
{
    AddedFile result{chosen, utf8FromPath(chosen.filename())};
    const std::string& name = result.fileName;
    std::string why; // the system's reason for a failed copy
    const auto refuse = [&](AddFileOutcome outcome, std::string_view text) {
        m_port.showFailure(text, why);
        result.outcome = outcome;
        return result;
    };
    const auto cannotAdd = [&](std::string_view suffix) {
        std::string text(msg::kCanNotAddFilePrefix);
        text.append(inQuotes(name.empty() ? utf8FromPath(chosen) : name)).append(suffix);
        return text;
    };

    std::error_code ec;
    if (name.empty() || !fs::is_regular_file(chosen, ec)) {
        why = std::generic_category().message(fs::is_directory(chosen, ec) ? EISDIR : ENOENT);
        return refuse(AddFileOutcome::CopyFailed, cannotAdd(msg::kCopyFailedSuffix));
    }
    // On systems where "\" may stand in a file name it would split the model path.
    if (hasControlCharacter(name) || name.find('\\') != std::string::npos)
        return refuse(AddFileOutcome::Refused, msg::kInvalidCharacters);
    if (name.size() > kMaxFileName)
        return refuse(AddFileOutcome::Refused, cannotAdd(msg::kFileNameTooLongSuffix));
    // A file that is no wave would make rows that never encode: it is refused
    // here, with the reason, before anything is copied.
    if (WaveFile wave; !wave.load(chosen, WaveRead::FactsOnly))
        return refuse(AddFileOutcome::Refused, cannotAdd("!\n" + wave.error()));

    ProjectItem* here = nullptr;
    bool elsewhere = false;
    for (ProjectItem* item : filesTreeOrder(m_document)) {
        if (!item->isSource() || !sameFileName(sourceFileName(*item), name))
            continue;
        if (item->parent() == folder)
            here = here ? here : item;
        else
            elsewhere = true;
    }

    if (here) {
        result.item = here;
        std::string question(msg::kTheFilePrefix);
        question.append(inQuotes(name)).append(msg::kOverwriteSuffix);
        if (!askYes(question))
            return result; // Unchanged
        const fs::path projectCopy = sourcePath(*here);
        if (sameFileOnDisk(chosen, projectCopy))
            return result; // Unchanged: nothing to replace
        if (fs::exists(projectCopy, ec) && !backUpIntoTemp(projectCopy, why))
            return refuse(AddFileOutcome::CopyFailed, cannotAdd(msg::kCopyFailedSuffix));
        fs::create_directories(projectCopy.parent_path(), ec);
        if (!copyWhole(chosen, projectCopy, why))
            return refuse(AddFileOutcome::CopyFailed, cannotAdd(msg::kCopyFailedSuffix));
        keepOffDeletionList(projectCopy);
        result.outcome = AddFileOutcome::Overwritten;
        return result;
    }
    if (elsewhere)
        return refuse(AddFileOutcome::Refused, cannotAdd(msg::kInOtherFolderSuffix));

    // The file first: an item never stands without its file.
    const fs::path target = filesFolder() / pathFromUtf8(name);
    if (!sameFileOnDisk(chosen, target)) {
        fs::create_directories(filesFolder(), ec);
        if (!copyWhole(chosen, target, why))
            return refuse(AddFileOutcome::CopyFailed, cannotAdd(msg::kCopyFailedSuffix));
        if (m_copiedIn)
            m_copiedIn->push_back(target);
    }
    keepOffDeletionList(target);

    std::string modelName(kFilesFolder);
    modelName.append("\\").append(name);
    const std::uint32_t flags = ProjectItem::kSource | (folder ? 0u : ProjectItem::kTopLevel);
    ProjectItem* added = m_document.createItem(std::move(modelName), flags, name);
    if (folder)
        folder->appendChild(added);
    else
        m_document.files().push_back(added);
    result.item = added;
    result.outcome = AddFileOutcome::Added;
    return result;
}

// The copy the project had until now goes into Temp, where Close puts it back
// into Files unless the project was saved (Save empties Temp). The first backup
// of a session is kept: it is the copy the saved project refers to.
bool WorkspaceTree::backUpIntoTemp(const fs::path& projectCopy, std::string& why)
{
    std::error_code ec;
    fs::create_directories(tempFolder(), ec);
    fs::path events = projectCopy;
    events.replace_extension(pathFromUtf8(kEventExtension));
    for (const fs::path& original : {projectCopy, events}) {
        if (!fs::exists(original, ec))
            continue;
        const fs::path backup = tempFolder() / original.filename();
        if (fs::exists(backup, ec))
            continue;
        if (!copyWhole(original, backup, why))
            return false;
    }
    return true;
}

// A file added again after its item was removed must survive the next Save.
void WorkspaceTree::keepOffDeletionList(const fs::path& path)
{
    std::erase_if(m_deletionList, [&](const fs::path& listed) { return sameListedPath(listed, path); });
}

namespace {

// The files on disk that belong to a source: its wave, its events, and the
// interim files its records name.
void appendFilesOf(const ProjectItem& source, const fs::path& wave, const fs::path& projectFolder,
                   std::vector<fs::path>& out)
{
    out.push_back(wave);
    fs::path events = wave;
    events.replace_extension(pathFromUtf8(kEventExtension));
    out.push_back(events);
    for (const EditInfoRecord& record : source.records()) {
        for (const std::string* name : {&record.encodeName, &record.decodeName})
            if (isBareFileName(*name))
                out.push_back(projectFolder / pathFromUtf8(*name));
    }
}

} // namespace

CommandOutcome WorkspaceTree::removeItems(std::vector<ProjectItem*> doomed)
{
    // A folder takes its contents with it; an item below another doomed one
    // is already gone when its turn would come.
    std::erase_if(doomed, [&](const ProjectItem* item) {
        return std::any_of(doomed.begin(), doomed.end(),
                           [item](const ProjectItem* other) { return other->isAncestorOf(item); });
    });

    std::vector<fs::path> released;
    for (const ProjectItem* item : doomed)
        for (const ProjectItem* source : sourcesUnder(item))
            appendFilesOf(*source, sourcePath(*source), m_projectFolder, released);

    for (ProjectItem* item : doomed)
        m_document.destroyItem(item);
    m_selection.prune();

    // A file that a remaining item still refers to stays (a project written by
    // hand may name one file twice).
    std::vector<fs::path> kept;
    for (const ProjectItem* item : filesTreeOrder(m_document))
        if (item->isSource())
            appendFilesOf(*item, sourcePath(*item), m_projectFolder, kept);
    for (const fs::path& path : released) {
        const auto matches = [&](const fs::path& other) { return sameListedPath(other, path); };
        if (std::none_of(kept.begin(), kept.end(), matches) &&
            std::none_of(m_deletionList.begin(), m_deletionList.end(), matches))
            m_deletionList.push_back(path);
    }
    changed();
    return CommandOutcome::Done;
}

CommandOutcome WorkspaceTree::deleteAll()
{
    std::vector<ProjectItem*> everything = m_document.topLevelFiles();
    if (everything.empty())
        return CommandOutcome::NothingToDo;
    if (!askYes(msg::kDeleteAllItems))
        return CommandOutcome::Declined;
    return removeItems(std::move(everything));
}

CommandOutcome WorkspaceTree::deleteFolderFiles()
{
    ProjectItem* folder = m_selection.primary();
    if (!folder || !folder->isGroup())
        return CommandOutcome::NothingToDo;
    std::vector<ProjectItem*> sources;
    std::copy_if(folder->children().begin(), folder->children().end(), std::back_inserter(sources),
                 [](const ProjectItem* child) { return child->isSource(); });
    if (sources.empty())
        return CommandOutcome::NothingToDo;
    if (!askYes(msg::kDeleteAllItems))
        return CommandOutcome::Declined;
    return removeItems(std::move(sources));
}

CommandOutcome WorkspaceTree::deleteFiles()
{
    std::vector<ProjectItem*> sources = m_selection.sources();
    if (sources.empty())
        return CommandOutcome::NothingToDo;
    std::string question;
    if (sources.size() == 1)
        question.append(msg::kDeleteItemPrefix).append(inQuotes(sources.front()->id())).append("?");
    else
        question = msg::kDeleteSelectedItems;
    if (!askYes(question))
        return CommandOutcome::Declined;
    return removeItems(std::move(sources));
}

CommandOutcome WorkspaceTree::deleteFolders()
{
    std::vector<ProjectItem*> folders = m_selection.folders();
    if (folders.empty())
        return CommandOutcome::NothingToDo;
    std::string question;
    if (folders.size() == 1)
        question.append(msg::kDeleteFolderPrefix).append(inQuotes(folders.front()->id())).append("?");
    else
        question = msg::kDeleteAllItems;
    if (!askYes(question))
        return CommandOutcome::Declined;
    return removeItems(std::move(folders));
}

CommandOutcome WorkspaceTree::renameFolder(ProjectItem* folder, std::string_view newName)
{
    if (!folder || !folder->isGroup())
        return CommandOutcome::NothingToDo;
    if (newName.empty()) {
        m_port.showMessage(msg::kFolderNameEmptyRename);
        return CommandOutcome::Refused;
    }
    if (hasControlCharacter(newName) || newName.find_first_of(kInvalidNameCharacters) != std::string_view::npos) {
        m_port.showMessage(msg::kInvalidCharacters);
        return CommandOutcome::Refused;
    }
    if (newName.size() > kMaxFolderName) {
        m_port.showMessage(msg::kFolderNameTooLong);
        return CommandOutcome::Refused;
    }
    if (folder->name() == newName && folder->id() == newName)
        return CommandOutcome::NothingToDo;
    folder->setName(std::string(newName));
    folder->setId(std::string(newName));
    changed();
    return CommandOutcome::Done;
}

std::vector<ProjectItem*> WorkspaceTree::itemsWithId(std::string_view id) const
{
    std::vector<ProjectItem*> found = filesTreeOrder(m_document);
    std::erase_if(found, [id](const ProjectItem* item) { return item->id() != id; });
    return found;
}

bool WorkspaceTree::askYes(std::string_view question)
{
    return m_port.ask(question, Buttons::YesNo) == Answer::Yes;
}

void WorkspaceTree::changed()
{
    m_document.setModified(true);
    if (onChanged)
        onChanged();
}

} // namespace kestrelon
