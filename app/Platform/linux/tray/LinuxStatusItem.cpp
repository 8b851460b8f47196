#include "Platform/linux/tray/LinuxStatusItem.h"

#include <QtGui/QGuiApplication>

#include <chrono>

namespace ferrobank {

namespace {

using namespace Qt::StringLiterals;

/// A panel that starts with the session is there by then; an older one may well have been there all the time.
constexpr std::chrono::seconds kPatience(5);

} // namespace

LinuxStatusItem::LinuxStatusItem(SessionBus& bus, TrayIcon icon) : _icon(icon), _onBus(bus, icon)
{
    passOn(_onBus);
    connect(&_onBus, &StatusNotifierItem::takenChanged, this, [this](bool taken) {
        _taken = taken;
        if (taken) {
            _patience.stop();
            _classic.reset();
        } else {
            _patience.start();
        }
    });
    _patience.setSingleShot(true);
    _patience.setInterval(kPatience);
    connect(&_patience, &QTimer::timeout, this, &LinuxStatusItem::showClassic);
    if (QGuiApplication::platformName() == u"xcb"_s) {
        _patience.start();
    }
}

void LinuxStatusItem::setFace(const StatusItemFace& face)
{
    _face = face;
    _onBus.setFace(face);
    if (_classic) {
        _classic->setFace(face);
    }
}

void LinuxStatusItem::setMenu(const QList<MenuEntry>& entries)
{
    _entries = entries;
    _onBus.setMenu(entries);
    if (_classic) {
        _classic->setMenu(entries);
    }
}

void LinuxStatusItem::repeatMenu()
{
    _onBus.repeatMenu();
    if (_classic) {
        _classic->repeatMenu();
    }
}

bool LinuxStatusItem::isSeen() const
{
    return _taken || (_classic && _classic->isSeen());
}

void LinuxStatusItem::passOn(StatusItem& item)
{
    connect(&item, &StatusItem::activated, this, &StatusItem::activated);
    connect(&item, &StatusItem::chosen, this, &StatusItem::chosen);
    connect(&item, &StatusItem::aboutToShowMenu, this, &StatusItem::aboutToShowMenu);
}

void LinuxStatusItem::showClassic()
{
    _classic = std::make_unique<ClassicTrayItem>(_icon);
    passOn(*_classic);
    _classic->setFace(_face);
    _classic->setMenu(_entries);
}

} // namespace ferrobank
