#pragma once

#include "Ferrobank/CLI/CheckItem.h"

#include <QtCore/QAbstractListModel>
#include <QtCore/QHash>
#include <QtCore/QList>

#include <array>

namespace ferrobank {

/// Rows of checks or setup tasks for a list on the screen. Main thread; owned by the AppModel.
///
/// Changes are told row by row, so a row that stays keeps its delegate and a running spinner its phase. A
/// change to equal rows is silent. Rows are identified by their id; where an id occurs twice, the first row
/// counts. Putting one row costs the same however many there are.
class CheckItemModel : public QAbstractListModel {
    Q_OBJECT

public:
    /// The names in QML are those in the comments. Absent texts read as empty.
    enum Role {
        IdRole = Qt::UserRole + 1, ///< checkId: text
        TitleRole,                 ///< title: text
        StateRole,                 ///< checkState: CheckItem.State
        DetailRole,                ///< detail: text
        HasDetailRole,             ///< hasDetail: whether there is a detail to show, that is, not empty
        FixRole,                   ///< fix: text, advice in words
        HasFixRole,                ///< hasFix: whether there is advice to show
        ActionRole,                ///< action: FixActions.Action; only meaningful when hasAction
        HasActionRole,             ///< hasAction
    };

    explicit CheckItemModel(QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QList<CheckItem>& rows() const { return _rows; }

    /// The first row with the id, or null. Valid until the next change.
    [[nodiscard]] const CheckItem* find(const QString& id) const;

    [[nodiscard]] int countOf(CheckItem::State state) const;

    /// Each of these tells whether anything changed.
    bool replaceAll(const QList<CheckItem>& rows);
    bool put(const CheckItem& row); ///< replaces the first row with its id in place, or appends
    bool append(const CheckItem& row);

private:
    bool set(int index, const CheckItem& row);
    void insert(int index, const CheckItem& row);
    void move(int from, int to);
    void removeFrom(int index);
    [[nodiscard]] int indexOf(const QString& id, int from) const;
    void indexRows();
    void count(CheckItem::State state, int difference);

    QList<CheckItem> _rows;
    QHash<QString, int> _firstRow; ///< by id
    std::array<int, 6> _counts{};  ///< rows by state
};

} // namespace ferrobank
