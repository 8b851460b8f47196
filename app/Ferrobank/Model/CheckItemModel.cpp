#include "Ferrobank/Model/CheckItemModel.h"

namespace ferrobank {

CheckItemModel::CheckItemModel(QObject* parent) : QAbstractListModel(parent) {}

int CheckItemModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

QVariant CheckItemModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const CheckItem& row = _rows.at(index.row());
    switch (role) {
    case IdRole:
        return row.id;
    case Qt::DisplayRole:
    case TitleRole:
        return row.title;
    case StateRole:
        return QVariant::fromValue(row.state);
    case DetailRole:
        return row.detail.value_or(QString());
    case HasDetailRole:
        return row.detail && !row.detail->isEmpty();
    case FixRole:
        return row.fix.value_or(QString());
    case HasFixRole:
        return row.fix && !row.fix->isEmpty();
    case ActionRole:
        return QVariant::fromValue(row.action.value_or(FixAction::Restart));
    case HasActionRole:
        return row.action.has_value();
    default:
        return {};
    }
}

QHash<int, QByteArray> CheckItemModel::roleNames() const
{
    return {
        {IdRole, "checkId"},    {TitleRole, "title"},         {StateRole, "checkState"},
        {DetailRole, "detail"}, {HasDetailRole, "hasDetail"}, {FixRole, "fix"},
        {HasFixRole, "hasFix"}, {ActionRole, "action"},       {HasActionRole, "hasAction"},
    };
}

const CheckItem* CheckItemModel::find(const QString& id) const
{
    const auto found = _firstRow.constFind(id);
    return found == _firstRow.cend() ? nullptr : &_rows.at(*found);
}

int CheckItemModel::countOf(CheckItem::State state) const
{
    return _counts.at(static_cast<std::size_t>(state));
}

bool CheckItemModel::replaceAll(const QList<CheckItem>& rows)
{
    if (rows == _rows) {
        return false;
    }
    _firstRow.clear();
    // Each step brings one more row of the new list to its place: the row with that id if there is one
    // further down, else a new one. What is left over at the end goes.
    const int wanted = static_cast<int>(rows.size());
    for (int index = 0; index < wanted; ++index) {
        const CheckItem& row = rows.at(index);
        const int from = indexOf(row.id, index);
        if (from < 0) {
            insert(index, row);
            continue;
        }
        if (from > index) {
            move(from, index);
        }
        set(index, row);
    }
    removeFrom(wanted);
    indexRows();
    return true;
}

bool CheckItemModel::put(const CheckItem& row)
{
    const auto found = _firstRow.constFind(row.id);
    return found == _firstRow.cend() ? append(row) : set(*found, row);
}

bool CheckItemModel::append(const CheckItem& row)
{
    const int index = static_cast<int>(_rows.size());
    insert(index, row);
    if (!_firstRow.contains(row.id)) {
        _firstRow.insert(row.id, index);
    }
    return true;
}

bool CheckItemModel::set(int index, const CheckItem& row)
{
    if (_rows.at(index) == row) {
        return false;
    }
    count(_rows.at(index).state, -1);
    count(row.state, 1);
    _rows[index] = row;
    const QModelIndex changed = createIndex(index, 0);
    Q_EMIT dataChanged(changed, changed);
    return true;
}

void CheckItemModel::insert(int index, const CheckItem& row)
{
    beginInsertRows({}, index, index);
    _rows.insert(index, row);
    count(row.state, 1);
    endInsertRows();
}

void CheckItemModel::move(int from, int to)
{
    beginMoveRows({}, from, from, {}, to);
    _rows.move(from, to);
    endMoveRows();
}

void CheckItemModel::removeFrom(int index)
{
    const int last = static_cast<int>(_rows.size()) - 1;
    if (index > last) {
        return;
    }
    beginRemoveRows({}, index, last);
    for (int row = index; row <= last; ++row) {
        count(_rows.at(row).state, -1);
    }
    _rows.resize(index);
    endRemoveRows();
}

int CheckItemModel::indexOf(const QString& id, int from) const
{
    for (int index = from; index < static_cast<int>(_rows.size()); ++index) {
        if (_rows.at(index).id == id) {
            return index;
        }
    }
    return -1;
}

void CheckItemModel::indexRows()
{
    for (int index = static_cast<int>(_rows.size()) - 1; index >= 0; --index) {
        _firstRow.insert(_rows.at(index).id, index);
    }
}

void CheckItemModel::count(CheckItem::State state, int difference)
{
    _counts.at(static_cast<std::size_t>(state)) += difference;
}

} // namespace ferrobank
