#include "app/views/record_table_model.h"

#include "app/views/list_columns.h"

#include <charconv>
#include <system_error>

namespace kestrelon {

namespace {

// A play cell shows that there is something to play, or that it plays.
const QString kPlayGlyph = QStringLiteral("\u25B6");
const QString kPlayingGlyph = QStringLiteral("\u25A0");
const QString kPausedGlyph = QStringLiteral("\u275A\u275A");
const QString kOnPlayListGlyph = QStringLiteral("\u2713");

QString text(const std::string& value)
{
    return QString::fromStdString(value);
}

} // namespace

RecordTableModel::RecordTableModel(QObject* parent)
    : QAbstractTableModel(parent)
{}

void RecordTableModel::setList(MainList list)
{
    beginResetModel();
    m_list = std::move(list);
    m_playingRow = -1; // rows are told again by whoever knows what plays
    endResetModel();
}

const ListRow& RecordTableModel::listRow(int row) const
{
    return m_list.rows()[static_cast<std::size_t>(row)];
}

const EditInfoRecord& RecordTableModel::record(int row) const
{
    return listRow(row).record();
}

void RecordTableModel::recordsChanged()
{
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, kListColumnCount - 1));
}

int RecordTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_list.size());
}

int RecordTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kListColumnCount;
}

QString RecordTableModel::fileNameOf(const ListRow& row)
{
    const EditInfoRecord& record = row.record();
    return text(record.fileName.empty() ? row.source->id() : record.fileName);
}

QVariant RecordTableModel::sortNumber(const std::string& value)
{
    // from_chars, not strtod: the user's locale must not change how "5.3K" reads.
    const char* begin = value.data();
    const char* const last = value.data() + value.size();
    while (begin != last && (*begin == ' ' || *begin == '\t'))
        ++begin;
    double number = 0.0;
    const auto [end, error] = std::from_chars(begin, last, number);
    if (error != std::errc())
        return {};
    if (end != last && (*end == 'K' || *end == 'k'))
        return number * 1000.0;
    return number;
}

void RecordTableModel::setPlayingCell(int row, int column, bool paused)
{
    const int before = m_playingRow;
    const int beforeColumn = m_playingColumn;
    m_playingRow = row;
    m_playingColumn = column;
    m_playingPaused = paused;
    if (before >= 0 && before < rowCount())
        emit dataChanged(index(before, beforeColumn), index(before, beforeColumn));
    if (row >= 0 && row < rowCount())
        emit dataChanged(index(row, column), index(row, column));
}

QVariant RecordTableModel::display(const ListRow& row, int column) const
{
    const EditInfoRecord& record = row.record();
    switch (static_cast<ListColumn>(column)) {
    case ListColumn::Marker: return record.multiSelect == 1 ? kOnPlayListGlyph : QString();
    case ListColumn::FileName: return fileNameOf(row);
    case ListColumn::Body: return text(record.bodyName);
    case ListColumn::Algorithm: return text(record.algoName);
    case ListColumn::BitRate: return text(record.bitRate);
    case ListColumn::OriginalPlay: return kPlayGlyph;
    case ListColumn::EncodePlay: return record.encodeName.empty() ? QString() : kPlayGlyph;
    case ListColumn::EncodeSize: return text(record.encodeSize);
    case ListColumn::DecodePlay: return record.decodeName.empty() ? QString() : kPlayGlyph;
    case ListColumn::CompressionRate: return text(record.compressionRate);
    case ListColumn::DecodeSize: return text(record.decodeSize);
    case ListColumn::SegmentalSnr:
    case ListColumn::MelDistance:
    case ListColumn::DurationRatio:
        if (const std::optional<double> value = qualityValue(record, column))
            return QString::number(*value, 'f', 2);
        return QString();
    }
    return {};
}

std::optional<double> RecordTableModel::qualityValue(const EditInfoRecord& record, int column) const
{
    if (!m_quality || record.decodeName.empty())
        return std::nullopt;
    const std::optional<QualityMeasures> measures = m_quality->find(record);
    if (!measures)
        return std::nullopt;
    switch (static_cast<ListColumn>(column)) {
    case ListColumn::SegmentalSnr: return measures->segmentalSnrDb;
    case ListColumn::MelDistance: return measures->melDistanceDb;
    case ListColumn::DurationRatio: return measures->durationRatio;
    default: return std::nullopt;
    }
}

QVariant RecordTableModel::sortValue(const ListRow& row, int rowIndex, int column) const
{
    const EditInfoRecord& record = row.record();
    switch (sortKindOf(column)) {
    case SortKind::Text: return display(row, column);
    case SortKind::Number:
        switch (static_cast<ListColumn>(column)) {
        case ListColumn::BitRate: return sortNumber(record.bitRate);
        case ListColumn::EncodeSize: return sortNumber(record.encodeSize);
        case ListColumn::CompressionRate: return sortNumber(record.compressionRate);
        case ListColumn::DecodeSize: return sortNumber(record.decodeSize);
        default:
            if (const std::optional<double> value = qualityValue(record, column))
                return *value;
            return {};
        }
    case SortKind::ListOrder: return rowIndex;
    }
    return {};
}

QVariant RecordTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= kListColumnCount)
        return {};
    const ListRow& row = listRow(index.row());
    switch (role) {
    case Qt::DisplayRole:
        if (index.row() == m_playingRow && index.column() == m_playingColumn)
            return m_playingPaused ? kPausedGlyph : kPlayingGlyph;
        return display(row, index.column());
    case kSortRole: return sortValue(row, index.row(), index.column());
    case Qt::ToolTipRole:
        if (m_toolTip)
            if (const QString tip = m_toolTip(row); !tip.isEmpty())
                return tip;
        return {};
    case Qt::TextAlignmentRole: {
        const SortKind kind = sortKindOf(index.column());
        if (kind == SortKind::Number)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        if (kind == SortKind::ListOrder)
            return QVariant::fromValue(Qt::AlignCenter);
        return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
    }
    default: return {};
    }
}

QVariant RecordTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= kListColumnCount)
        return {};
    if (role == Qt::DisplayRole) {
        const std::string_view header = kListHeaders[static_cast<std::size_t>(section)];
        return QString::fromUtf8(header.data(), static_cast<qsizetype>(header.size()));
    }
    return {};
}

Qt::ItemFlags RecordTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

} // namespace kestrelon
