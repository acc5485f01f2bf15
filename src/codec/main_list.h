#pragma once
// The rows of the main list: one per edit-info record of the open project, in
// list order, with the list's selection. Sources come in tree order (depth
// first, parent before children) and each source's records in their order.
//
// A row refers to its record by source item and index rather than by
// pointer, so adding a record to a source never leaves a row dangling; after
// records are added or removed, build the list again with fromDocument().
//
// The workbench's list view, the encode/decode engine, export and
// kestrelon-cli all work on this one model; docs/engine.md says how.
#include "project/edit_info_record.h"
#include "project/project_item.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kestrelon {

class ProjectDocument;
class ProjectSession;
class UserPort;

struct ListRow {
    ProjectItem* source = nullptr;
    std::size_t recordIndex = 0;

    EditInfoRecord& record() const { return source->records()[recordIndex]; }
};

// A name for the row that stays while the row does: its source and encode
// setting, and how many earlier records of its source share them (a
// duplicated row). Unlike a place in the list, it survives a rebuild, a sort
// and an undo, which makes the items anew.
std::string rowKey(const ListRow& row);

class MainList {
public:
    MainList() = default;
    static MainList fromDocument(ProjectDocument& document);

    const std::vector<ListRow>& rows() const { return m_rows; }
    std::size_t size() const { return m_rows.size(); }
    bool empty() const { return m_rows.empty(); }
    // A row at the end, with its selection: a list shown in another order is
    // made row by row, so a row and its selection never part.
    void addRow(const ListRow& row, bool selected = false);
    void reserve(std::size_t rows);

    bool isSelected(std::size_t row) const { return row < m_selected.size() && m_selected[row]; }
    std::size_t selectedCount() const;
    void selectAll();
    void clearSelection();
    // Selects exactly the rows given (counted from 0 in list order); false,
    // with the selection unchanged, when any of them is not a row.
    bool selectRows(const std::vector<std::size_t>& rows);

    // The row showing record `recordIndex` of `source`.
    // The keys of the selected rows, in list order.
    std::vector<std::string> selectedKeys() const;

    std::optional<std::size_t> rowOf(const ProjectItem* source, std::size_t recordIndex) const;

    // "Delete": with no row selected nothing happens; otherwise asks "Are you
    // sure to delete the selected item?" (one row) or "Are you sure to delete
    // selected items?" (several). Yes removes the selected records from their
    // sources, marks the project modified and builds the rows again (nothing
    // selected). True when rows were removed.
    bool deleteSelected(UserPort& port, ProjectSession& session);
    // "Delete All": with no rows nothing happens; otherwise asks "Are you sure
    // to delete all items ?" and on Yes removes every record together with the
    // rows' working event files (Temp\evt\<interim>.evt now, its copy beside
    // the project file at the next Save or Close).
    bool deleteAll(UserPort& port, ProjectSession& session);

    // "Clear": the selected rows lose their results (encode and decode
    // sizes, rate, interim and decoded file names) and can be encoded afresh;
    // their body, algorithm, bit rate and export name stay. The working copies
    // in Temp go now; the copies a Save put beside the project file go with
    // the next Save, as a Close without saving keeps the saved project whole.
    // Returns how many rows had results; the project is marked modified when
    // any did.
    std::size_t clearSelectedResults(ProjectSession& session);

private:
    // Per row: whether it is selected. Always as long as m_rows.
    std::vector<bool> m_selected;

    void removeRows(const std::vector<std::size_t>& doomed, ProjectSession& session, bool withEventFiles);

    std::vector<ListRow> m_rows;
};

} // namespace kestrelon
