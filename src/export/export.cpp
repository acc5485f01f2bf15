#include "export/export.h"

#include "codec/encoded_header.h"
#include "codec/interim_packer.h"
#include "codec/raw_extraction.h"
#include "codec/row_encoded_file.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/scratch_file.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "project/new_project.h"
#include "project/project_folder_ops.h"
#include "project/project_item.h"
#include "project/project_session.h"

#include <map>
#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

// How many other names are tried when the plain scratch name is taken.
constexpr int kScratchNameTries = 1000;

// The last part of a model path ("Files\sub\hello.wav" -> "hello.wav").
std::string_view lastPart(std::string_view modelPath)
{
    const size_t slash = modelPath.find_last_of("\\/");
    return slash == std::string_view::npos ? modelPath : modelPath.substr(slash + 1);
}

// The file name the list shows for the row's source: its id, which is the
// wave's name in Files.
std::string sourceFileNameOf(const ProjectItem& source)
{
    return source.id().empty() ? std::string(lastPart(source.name())) : source.id();
}

void showNotEncoded(UserPort& port, std::string_view name)
{
    port.showMessage("\"" + std::string(name) + "\"" + std::string(msg::kNotACorrectEncodedFile));
}

void showCanNotWrite(UserPort& port, const fs::path& target, std::string_view why)
{
    port.showFailure(std::string(msg::kExportCanNotWritePrefix) + utf8FromPath(target) +
                         std::string(msg::kExportCanNotWriteSuffix),
                     why);
}

// Step 2 of the dialog's OK: an existing folder is taken as it is; a missing
// one must have a root (on Windows a drive part, elsewhere an absolute path)
// and is then made: the whole chain for export-selected, the last level only
// for export-all.
bool prepareFolder(const std::string& folderText, ExportKind kind, UserPort& port, fs::path& folder)
{
    folder = pathFromUtf8(folderText);
    std::error_code ec;
    if (fs::is_directory(folder, ec))
        return true;
    if (!locationHasRoot(folderText)) {
        port.showMessage(msg::kWrongPath);
        return false;
    }
    if (kind == ExportKind::Selected)
        fs::create_directories(folder, ec);
    else
        fs::create_directory(folder, ec);
    if (!fs::is_directory(folder, ec)) {
        port.showMessage(msg::kWrongPath);
        return false;
    }
    return true;
}

// The scratch file for unpacking: Temp\<interim base name>.dfn. Decoded waves
// are ".dfn" files in Temp as well, named after a temporary file of their own,
// so the two names differ; should a project file say otherwise, or should
// anything already stand at that name, another name is taken, so that the
// scratch file, which is deleted afterwards, never replaces a file.
// The row's own target is avoided too, for an export into Temp itself.
fs::path chooseScratchFile(const fs::path& tempFolder, const std::string& interimName, const std::vector<ListRow>& rows,
                           const fs::path& target)
{
    std::error_code ec;
    fs::create_directories(tempFolder, ec); // a missing Temp never stops work
    const bool targetInTemp = fs::equivalent(target.parent_path(), tempFolder, ec);
    const std::string targetName = utf8FromPath(target.filename());
    const std::string base = fileStem(interimName);
    auto isFree = [&](const std::string& name) {
        if (targetInTemp && equalsNoCase(name, targetName))
            return false;
        for (const ListRow& row : rows)
            if (equalsNoCase(row.record().decodeName, name))
                return false;
        return !entryExists(tempFolder / pathFromUtf8(name));
    };
    std::string name = base + std::string(kExportScratchExtension);
    for (int n = 1; !isFree(name); ++n) {
        if (n > kScratchNameTries)
            return {};
        name = base + "~" + std::to_string(n) + std::string(kExportScratchExtension);
    }
    return tempFolder / pathFromUtf8(name);
}

// Deletes the scratch file however the row ends.

// The speech events that go with the row, and whether export may consume the
// file. Looked for in this order:
//  1. beside the interim file in Temp (Temp\<interim base>.evt): a stray
//     working file nobody else owns; it is removed once copied, else Close
//     would carry it into Files;
//  2. the engine's working copy of the events the row was encoded with,
//     Temp\evt\<interim base>.evt;
//  3. the engine's copy of it beside the project file (where Close and every
//     encode put it): <project>\<interim base>.evt, beside the kept interim;
//  4. the source's own event file, Files\<source base>.evt, for a row whose
//     encoding left no copy.
// Only the first is ever removed: the others belong to the engine or to the
// user and must give the same ".tab" at the next export.
struct EventSource {
    fs::path path;
    bool consume = false;
};

EventSource findEventFile(const ProjectSession& session, const ProjectItem& source, const std::string& interimName)
{
    const fs::path eventName = pathFromUtf8(fileStem(interimName) + ".evt");
    if (const fs::path beside = session.tempFolder() / eventName; isRegularFile(beside))
        return {beside, true};
    for (const fs::path& kept : {session.tempFolder() / "evt" / eventName, session.projectFolder() / eventName})
        if (isRegularFile(kept))
            return {kept, false};
    if (isPlainFileName(source.id())) {
        const std::string own = fileStem(source.id()) + ".evt";
        if (const fs::path path = session.filesFolder() / pathFromUtf8(own); isRegularFile(path))
            return {path, false};
    }
    return {};
}

enum class RowResult { Exported, Declined, Failed };

class Exporter {
public:
    Exporter(const ProjectSession& session, const std::vector<ListRow>& rows, const ExportOptions& options,
             ExportKind kind, fs::path folder, UserPort& port, ExportOutcome& outcome)
        : m_session(session)
        , m_rows(rows)
        , m_options(options)
        , m_kind(kind)
        , m_folder(std::move(folder))
        , m_port(port)
        , m_outcome(outcome)
    {}

    RowResult exportRow(const ListRow& row);

private:
    bool isWorkingFile(const std::string& exportName) const;
    bool askReplace(const fs::path& target, const std::string& name);
    bool writeEncodedData(const ScratchFile& scratch, const std::string& interimName, ExportedFile& file);
    bool copyEvents(const ListRow& row, const std::string& exportName, const fs::path& target);

    const ProjectSession& m_session;
    const std::vector<ListRow>& m_rows;
    const ExportOptions& m_options;
    ExportKind m_kind;
    fs::path m_folder;
    UserPort& m_port;
    ExportOutcome& m_outcome;
    // The ".tab" files written in this run, with what they hold: two export
    // names with one stem share a ".tab", which is fine only when the events agree.
    std::map<fs::path, std::string> m_tables;
};

// Exporting into the project folder or its Temp folder must not replace the
// interim or decoded file of a row: a row exported under its interim file's
// name would otherwise overwrite the very data it came from.
bool Exporter::isWorkingFile(const std::string& exportName) const
{
    std::error_code ec;
    const bool workingFolder =
        fs::equivalent(m_folder, m_session.projectFolder(), ec) || fs::equivalent(m_folder, m_session.tempFolder(), ec);
    if (!workingFolder)
        return false;
    for (const ListRow& row : m_rows)
        if (equalsNoCase(row.record().encodeName, exportName) || equalsNoCase(row.record().decodeName, exportName))
            return true;
    return false;
}

bool Exporter::askReplace(const fs::path& target, const std::string& name)
{
    if (!entryExists(target))
        return true;
    std::string question = name + std::string(msg::kReplaceItSuffix);
    if (m_kind == ExportKind::All)
        question = std::string(msg::kTheExportFilePrefix) + question;
    return m_port.ask(question, Buttons::YesNo) == Answer::Yes;
}

bool Exporter::writeEncodedData(const ScratchFile& scratch, const std::string& interimName, ExportedFile& file)
{
    const ReadResult unpacked = readFile(scratch.path(), kMaxEncodedFileBytes);
    if (unpacked.status != ReadStatus::Ok) {
        showNotEncoded(m_port, interimName);
        return false;
    }
    std::string_view bytes = unpacked.bytes;
    const auto header =
        parseEncodedHeader(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
    if (header)
        file.sampleRate = header->sampleRate;
    if (!m_options.addHeader) {
        // A file shorter than its header has no encoded data to speak of,
        // whatever its first bytes say.
        if (!hasEncodedMagic(bytes) || bytes.size() < kEncodedHeaderSize) {
            showNotEncoded(m_port, interimName);
            return false;
        }
        bytes.remove_prefix(kEncodedHeaderSize);
    }
    if (std::string why; !writeFileAtomically(file.path, bytes, &why)) {
        showCanNotWrite(m_port, file.path, why);
        return false;
    }
    file.bytes = bytes;
    return true;
}

bool Exporter::copyEvents(const ListRow& row, const std::string& exportName, const fs::path& target)
{
    const EventSource events = findEventFile(m_session, *row.source, row.record().encodeName);
    if (events.path.empty())
        return true;
    const fs::path table = m_folder / pathFromUtf8(fileStem(exportName) + std::string(kExportEventExtension));
    // An export name ending in ".tab" would have its events replace it.
    if (table == target)
        return true;
    const ReadResult text = readFile(events.path);
    const auto showCanNotCopy = [&](const std::string& reason) {
        showCopyFailure(m_port, {false, {events.path, table}, reason}, msg::kCanNotCopySuffix);
    };
    if (text.status != ReadStatus::Ok) {
        showCanNotCopy(text.reason);
        return false;
    }
    const auto written = m_tables.find(table);
    if (written != m_tables.end() && written->second != text.bytes) {
        m_port.showMessage(std::string(msg::kExportEventsClashPrefix) + exportName +
                           std::string(msg::kExportEventsClashMiddle) + utf8FromPath(table) +
                           std::string(msg::kExportCanNotWriteSuffix));
        return false;
    }
    if (written == m_tables.end()) {
        if (std::string why; !writeFileAtomically(table, text.bytes, &why)) {
            showCanNotCopy(why);
            return false;
        }
        m_outcome.eventFiles.push_back(table);
        m_tables.emplace(table, text.bytes);
    }
    if (events.consume)
        removeQuietly(events.path);
    return true;
}

RowResult Exporter::exportRow(const ListRow& row)
{
    const EditInfoRecord& record = row.record();
    const std::string exportName = exportNameOf(record);
    if (!isPlainFileName(exportName)) {
        m_port.showMessage("\"" + exportName + "\"" + std::string(msg::kExportNameInvalidSuffix));
        return RowResult::Failed;
    }
    // The index is written last and would replace the row's file.
    if (equalsNoCase(exportName, kExportIndexFileName)) {
        m_port.showMessage("\"" + exportName + "\"" + std::string(msg::kExportNameIsIndexSuffix));
        return RowResult::Failed;
    }
    const fs::path target = m_folder / pathFromUtf8(exportName);
    if (isWorkingFile(exportName)) {
        m_port.showMessage("\"" + exportName + "\"" + std::string(msg::kExportWorkingFileSuffix));
        return RowResult::Failed;
    }
    if (!askReplace(target, exportName))
        return RowResult::Declined;

    const std::string& interimName = record.encodeName;
    const fs::path interimFile = isPlainFileName(interimName) ? findInterimFile(m_session, interimName) : fs::path();
    const fs::path scratchPath =
        interimFile.empty() ? fs::path() : chooseScratchFile(m_session.tempFolder(), interimName, m_rows, target);
    if (scratchPath.empty()) {
        showNotEncoded(m_port, interimName);
        return RowResult::Failed;
    }
    const ScratchFile scratch(scratchPath);
    std::string writeError;
    if (!DecryptUnzip(interimFile, scratch.path(), &writeError)) {
        if (writeError.empty())
            showNotEncoded(m_port, interimName);
        else
            m_port.showMessage(interimFailureText(interimName, false, writeError));
        return RowResult::Failed;
    }
    ExportedFile file{target, exportName, record.bodyName, record.algoName, record.bitRate};
    if (!writeEncodedData(scratch, interimName, file))
        return RowResult::Failed;
    m_outcome.exported.push_back(target);
    m_outcome.files.push_back(std::move(file));
    return copyEvents(row, exportName, target) ? RowResult::Exported : RowResult::Failed;
}

} // namespace

std::string exportNameOf(const EditInfoRecord& record)
{
    return record.renameEncode.empty() ? record.encodeName : record.renameEncode;
}

std::string exportIndexText(const std::vector<ListRow>& visited)
{
    const std::string eol(kNativeEol);
    std::vector<bool> written(visited.size(), false);
    std::string text;
    for (size_t i = 0; i < visited.size(); ++i) {
        if (written[i])
            continue;
        // A row never encoded has no files, yet it is listed: the index says
        // what was visited, so its line (empty when the row has no export
        // name yet) shows the firmware build what is missing.
        const std::string source = sourceFileNameOf(*visited[i].source);
        text += source + ":" + eol;
        for (size_t j = i; j < visited.size(); ++j) {
            if (written[j] || sourceFileNameOf(*visited[j].source) != source)
                continue;
            written[j] = true;
            text += exportNameOf(visited[j].record()) + eol;
        }
    }
    return text;
}

ExportOutcome exportRows(const ProjectSession& session, const MainList& list, const ExportOptions& options,
                         ExportKind kind, UserPort& port)
{
    const std::vector<ListRow>& rows = list.rows();
    ExportOutcome outcome;
    fs::path folder;
    if (!prepareFolder(options.folder, kind, port, folder))
        return outcome;

    std::vector<ListRow> visited;
    for (size_t i = 0; i < rows.size(); ++i)
        if (kind == ExportKind::All || list.isSelected(i))
            visited.push_back(rows[i]);

    outcome.ok = true;
    Exporter exporter(session, rows, options, kind, folder, port, outcome);
    for (const ListRow& row : visited) {
        if (row.record().encodeName.empty()) // never encoded
            continue;
        if (exporter.exportRow(row) == RowResult::Failed)
            outcome.ok = false;
    }

    const fs::path index = folder / pathFromUtf8(kExportIndexFileName);
    if (std::string why; !writeFileAtomically(index, exportIndexText(visited), &why)) {
        port.showFailure(msg::kExportError, utf8FromPath(index) + ": " + why);
        outcome.ok = false;
        return outcome;
    }
    outcome.indexFile = index;
    return outcome;
}

} // namespace kestrelon
