#pragma once
// Sorting of the main list by a clicked header: names in text order (case
// ignored), sizes, rates and bit rates in numeric order with empty cells
// first, the marker and play columns in the project's own order. Rows that
// compare equal keep the project's order, so a sort is stable.
#include <QSortFilterProxyModel>

namespace kestrelon {

class RecordSortProxy : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit RecordSortProxy(QObject* parent = nullptr);

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

} // namespace kestrelon
