#pragma once
// The main list as a Qt table model: one row per edit-info record of the open
// project, the eleven columns of its record and three of its decode's quality. The model holds the list's rows (a source item and
// a record index each) and reads every cell from the record itself, so a
// record changed by the engine shows its new values as soon as its row is
// told to repaint; nothing is copied.
#include "codec/main_list.h"
#include "codec/row_quality.h"

#include <QAbstractTableModel>

#include <functional>

namespace kestrelon {

class RecordTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // Sorting reads this role: a number for size and rate columns (nothing for
    // an empty cell), a text for name columns, the row's place in the project
    // for the others.
    static constexpr int kSortRole = Qt::UserRole + 1;

    explicit RecordTableModel(QObject* parent = nullptr);

    // Replaces the rows (a model reset).
    void setList(MainList list);
    const MainList& list() const { return m_list; }
    MainList& list() { return m_list; }

    // The row's record; the row must exist.
    const EditInfoRecord& record(int row) const;
    const ListRow& listRow(int row) const;
    // The cell that is playing, shown by its own glyph: the row (-1: none),
    // the play column, and whether it is paused.
    void setPlayingCell(int row, int column, bool paused);

    // A row's tool tip, from whoever knows its recording and codec.
    void setToolTips(std::function<QString(const ListRow&)> toolTip) { m_toolTip = std::move(toolTip); }
    // Where the quality columns read their measures; none shows empty cells.
    void setQuality(const QualityFile* quality) { m_quality = quality; }

    // Repaints every cell: after the engine or the rates changed records.
    void recordsChanged();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The number a size, rate or bit-rate text sorts by: its leading decimal
    // number, times 1000 when a "K" follows ("5.3K"); nothing when the text
    // holds no number.
    static QVariant sortNumber(const std::string& text);
    // The file name column of a row: the record's source key, or the source's
    // own name when the key is empty.
    static QString fileNameOf(const ListRow& row);

private:
    QVariant display(const ListRow& row, int column) const;
    QVariant sortValue(const ListRow& row, int rowIndex, int column) const;

    std::optional<double> qualityValue(const EditInfoRecord& record, int column) const;

    MainList m_list;
    const QualityFile* m_quality = nullptr;
    std::function<QString(const ListRow&)> m_toolTip;
    int m_playingRow = -1;
    int m_playingColumn = -1;
    bool m_playingPaused = false;
};

} // namespace kestrelon
