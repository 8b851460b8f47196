#include "Platform/linux/tray/MenuMirror.h"

#include <QtCore/QSet>
#include <QtGui/QAction>

namespace ferrobank {

MenuMirror::MenuMirror(QObject* parent) : QObject(parent) {}

MenuMirror::~MenuMirror() = default;

void MenuMirror::setEntries(const QList<MenuEntry>& entries)
{
    if (entries == _entries) {
        return;
    }
    QSet<int> stays;
    for (const MenuEntry& entry : entries) {
        stays.insert(entry.id);
    }
    for (const MenuEntry& entry : std::as_const(_entries)) {
        if (!stays.contains(entry.id)) {
            delete _actions.take(entry.id);
        }
    }
    QAction* after = nullptr;
    for (qsizetype index = entries.size() - 1; index >= 0; --index) {
        const MenuEntry& entry = entries[index];
        QAction*& action = _actions[entry.id];
        if (action == nullptr) {
            action = new QAction(&_menu);
            connect(action, &QAction::triggered, this, [this, id = entry.id] { Q_EMIT chosen(id); });
        }
        show(*action, entry);
        const qsizetype place = _menu.actions().indexOf(action);
        const qsizetype wanted = after == nullptr ? _menu.actions().size() : _menu.actions().indexOf(after);
        if (place < 0 || place != wanted - 1) {
            _menu.insertAction(after, action);
        }
        after = action;
    }
    _entries = entries;
}

void MenuMirror::repeat()
{
    for (const MenuEntry& entry : std::as_const(_entries)) {
        show(*_actions.value(entry.id), entry);
    }
}

void MenuMirror::show(QAction& action, const MenuEntry& entry)
{
    QString text = entry.text;
    text.replace(u'&', QStringLiteral("&&"));
    action.setSeparator(entry.kind == MenuEntry::Kind::Divider);
    action.setText(text);
    action.setEnabled(entry.kind != MenuEntry::Kind::Text);
    action.setCheckable(entry.kind == MenuEntry::Kind::Toggle);
    action.setChecked(entry.checked);
}

} // namespace ferrobank
