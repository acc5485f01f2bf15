#include "codec/main_list.h"

#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "project/tree_selection.h"

#include <algorithm>
#include <map>
#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

std::string rowKey(const ListRow& row)
{
    const std::vector<EditInfoRecord>& records = row.source->records();
    const EditInfoRecord& record = records[row.recordIndex];
    std::size_t twin = 0;
    for (std::size_t i = 0; i < row.recordIndex; ++i)
        twin += records[i].sameRow(record) ? 1 : 0;
    // Fields are joined by a character no name or number holds.
    std::string key = row.source->name();
    for (const std::string* part : {&record.bodyName, &record.algoName, &record.bitRate})
        (key += '\x1f') += *part;
    return twin == 0 ? key : key + '\x1f' + std::to_string(twin);
}

std::vector<std::string> MainList::selectedKeys() const
{
    std::vector<std::string> keys;
    for (std::size_t row = 0; row < m_rows.size(); ++row)
        if (m_selected[row])
            keys.push_back(rowKey(m_rows[row]));
    return keys;
}

MainList MainList::fromDocument(ProjectDocument& document)
{
    MainList list;
    for (ProjectItem* item : filesTreeOrder(document)) {
        if (!item->isSource())
            continue;
        for (std::size_t index = 0; index < item->records().size(); ++index)
            list.m_rows.push_back({item, index});
    }
    list.m_selected.assign(list.m_rows.size(), false);
    return list;
}

void MainList::addRow(const ListRow& row, bool selected)
{
    m_rows.push_back(row);
    m_selected.push_back(selected);
}

void MainList::reserve(std::size_t rows)
{
    m_rows.reserve(rows);
    m_selected.reserve(rows);
}

std::size_t MainList::selectedCount() const
{
    std::size_t count = 0;
    for (std::size_t row = 0; row < m_rows.size(); ++row)
        count += isSelected(row) ? 1 : 0;
    return count;
}

void MainList::selectAll()
{
    m_selected.assign(m_rows.size(), true);
}

void MainList::clearSelection()
{
    m_selected.assign(m_rows.size(), false);
}

bool MainList::selectRows(const std::vector<std::size_t>& rows)
{
    for (const std::size_t row : rows)
        if (row >= m_rows.size())
            return false;
    clearSelection();
    for (const std::size_t row : rows)
        m_selected[row] = true;
    return true;
}

std::optional<std::size_t> MainList::rowOf(const ProjectItem* source, std::size_t recordIndex) const
{
    for (std::size_t row = 0; row < m_rows.size(); ++row)
        if (m_rows[row].source == source && m_rows[row].recordIndex == recordIndex)
            return row;
    return std::nullopt;
}

bool MainList::deleteSelected(UserPort& port, ProjectSession& session)
{
    std::vector<std::size_t> doomed;
    for (std::size_t row = 0; row < m_rows.size(); ++row)
        if (isSelected(row))
            doomed.push_back(row);
    if (doomed.empty())
        return false;
    const std::string_view question = doomed.size() == 1 ? msg::kDeleteSelectedItem : msg::kDeleteSelectedItems;
    if (port.ask(question, Buttons::YesNo) != Answer::Yes)
        return false;
    removeRows(doomed, session, false);
    return true;
}

bool MainList::deleteAll(UserPort& port, ProjectSession& session)
{
    if (m_rows.empty())
        return false;
    if (port.ask(msg::kDeleteAllListItems, Buttons::YesNo) != Answer::Yes)
        return false;
    std::vector<std::size_t> doomed(m_rows.size());
    for (std::size_t row = 0; row < doomed.size(); ++row)
        doomed[row] = row;
    removeRows(doomed, session, true);
    return true;
}

std::size_t MainList::clearSelectedResults(ProjectSession& session)
{
    const fs::path temp = session.tempFolder();
    const fs::path project = session.projectFolder();
    // The working copy goes now (set aside, for an undo to bring back); the
    // copy a Save put beside the project file goes with the next Save, since
    // the saved project file still names it.
    const auto drop = [&](const fs::path& name) {
        if (!session.setAside(temp / name))
            removeQuietly(temp / name);
        session.dropAtSave(project / name.filename());
    };
    std::size_t cleared = 0;
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        EditInfoRecord& record = m_rows[row].record();
        const bool hasResults = !record.encodeName.empty() || !record.decodeName.empty() ||
                                !record.encodeSize.empty() || !record.decodeSize.empty();
        if (!isSelected(row) || !hasResults)
            continue;
        // Names come from the project file: only plain ones are touched.
        if (isPlainFileName(record.encodeName)) {
            const fs::path interim = pathFromUtf8(record.encodeName);
            drop(interim);
            drop(fs::path("evt") / pathFromUtf8(utf8FromPath(interim.stem()) + ".evt"));
        }
        if (isPlainFileName(record.decodeName))
            drop(pathFromUtf8(record.decodeName));
        record.encodeName.clear();
        record.encodeSize.clear();
        record.compressionRate.clear();
        record.decodeName.clear();
        record.decodeSize.clear();
        ++cleared;
    }
    if (cleared > 0)
        session.markModified();
    return cleared;
}

void MainList::removeRows(const std::vector<std::size_t>& doomed, ProjectSession& session, bool withEventFiles)
{
    // Per source, the record indexes to remove, taken out from the back so
    // the indexes still to come stay valid.
    std::map<ProjectItem*, std::vector<std::size_t>> bySource;
    for (const std::size_t row : doomed)
        bySource[m_rows[row].source].push_back(m_rows[row].recordIndex);

    for (auto& [source, indexes] : bySource) {
        std::sort(indexes.rbegin(), indexes.rend());
        for (const std::size_t index : indexes) {
            if (index >= source->records().size())
                continue;
            const EditInfoRecord& record = source->records()[index];
            // The row's working event file: the copy in Temp\evt goes now;
            // the one Close left beside the project file goes with the next
            // Save or Close, like every other file the project lets go of.
            if (withEventFiles && session.isOpen() && isPlainFileName(record.encodeName)) {
                const std::string eventName = utf8FromPath(pathFromUtf8(record.encodeName).stem()) + ".evt";
                const fs::path working = session.tempFolder() / "evt" / pathFromUtf8(eventName);
                if (!session.setAside(working))
                    removeQuietly(working);
                std::error_code ec;
                const fs::path besideProject = session.projectFolder() / pathFromUtf8(eventName);
                if (fs::exists(fs::symlink_status(besideProject, ec)))
                    session.deletionList().push_back(besideProject);
            }
            source->records().erase(source->records().begin() + static_cast<std::ptrdiff_t>(index));
        }
    }
    session.markModified();
    *this = fromDocument(session.document());
}

} // namespace kestrelon
