#pragma once

#include "Platform/MenuEntry.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtWidgets/QMenu>

namespace ferrobank {

/// Shows entries in a QMenu with as few changes as possible: an entry that stays keeps its action. Main
/// thread.
class MenuMirror : public QObject {
    Q_OBJECT

public:
    explicit MenuMirror(QObject* parent = nullptr);
    ~MenuMirror() override;

    [[nodiscard]] QMenu& menu() { return _menu; }

    void setEntries(const QList<MenuEntry>& entries);

    /// Marks toggles as the entries say, whatever a click made of them.
    void repeat();

Q_SIGNALS:
    void chosen(int entry);

private:
    void show(QAction& action, const MenuEntry& entry);

    QMenu _menu;
    QList<MenuEntry> _entries;
    QHash<int, QAction*> _actions; ///< by the entry's id
};

} // namespace ferrobank
