#include "app/views/record_sort_proxy.h"

#include "app/views/list_columns.h"
#include "app/views/record_table_model.h"

namespace kestrelon {

RecordSortProxy::RecordSortProxy(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    setSortRole(RecordTableModel::kSortRole);
    // Records change under the model (encode, rates); a re-sort then would
    // move rows while the user looks at them. The view sorts when asked.
    setDynamicSortFilter(false);
}

bool RecordSortProxy::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QVariant a = left.data(RecordTableModel::kSortRole);
    const QVariant b = right.data(RecordTableModel::kSortRole);
    switch (sortKindOf(left.column())) {
    case SortKind::Text: {
        const int order = QString::compare(a.toString(), b.toString(), Qt::CaseInsensitive);
        if (order != 0)
            return order < 0;
        break;
    }
    case SortKind::Number:
        // An empty cell has no number and sorts before every number.
        if (a.isValid() != b.isValid())
            return !a.isValid();
        if (a.isValid() && a.toDouble() != b.toDouble())
            return a.toDouble() < b.toDouble();
        break;
    case SortKind::ListOrder: break;
    }
    return left.row() < right.row();
}

} // namespace kestrelon
