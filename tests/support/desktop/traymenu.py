#!/usr/bin/python3
"""Reads and uses the tray item of an application and its menu, as a panel does.

  traymenu.py items                      registered items: service, id, title, status
  traymenu.py show  [-i ID]              the menu as a panel would show it now
  traymenu.py click [-i ID] LABEL        chooses the entry with this label
  traymenu.py activate [-i ID]           a click on the icon itself
  traymenu.py wait  [-i ID] [-t SEC]     waits until the item is registered

Needs a panel on the session bus and python3-gi. The tests use the functions directly.
"""
import argparse
import sys
import time

from gi.repository import Gio, GLib

ITEM = "org.kde.StatusNotifierItem"
WATCHER = "org.kde.StatusNotifierWatcher"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"
OURS = "org.ferrobank.Ferrobank"
LIMIT = 5000


def bus():
    return Gio.bus_get_sync(Gio.BusType.SESSION)


def call(service, path, interface, method, arguments=None):
    reply = bus().call_sync(service, path, interface, method, arguments, None, Gio.DBusCallFlags.NO_AUTO_START, LIMIT)
    return reply.unpack()


def get(service, path, interface, name):
    try:
        return call(service, path, PROPERTIES, "Get", GLib.Variant("(ss)", (interface, name)))[0]
    except GLib.Error:
        return None


class Item:
    """One registered tray item."""

    def __init__(self, registered):
        self.service, _, path = registered.partition("/")
        self.path = "/" + (path or "StatusNotifierItem")

    def property(self, name):
        return get(self.service, self.path, ITEM, name)

    def activate(self):
        call(self.service, self.path, ITEM, "Activate", GLib.Variant("(ii)", (0, 0)))

    def entries(self, about_to_show=True):
        """The entries as dictionaries, in their order. Panels announce that they are about to show the menu."""
        menu = self.property("Menu")
        if about_to_show:
            call(self.service, menu, MENU, "AboutToShow", GLib.Variant("(i)", (0,)))
        _, root = call(self.service, menu, MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        found = []
        for number, properties, _ in root[2]:
            # One underscore marks a letter, two are one.
            label = properties.get("label", "").replace("__", "\0").replace("_", "").replace("\0", "_")
            found.append(
                {
                    "id": number,
                    "label": label,
                    "divider": properties.get("type") == "separator",
                    "enabled": properties.get("enabled", True),
                    "toggle": properties.get("toggle-type", "") == "checkmark",
                    "checked": properties.get("toggle-state", -1) == 1,
                    "shortcut": properties.get("shortcut"),
                }
            )
        return found

    def lines(self, about_to_show=True):
        """The entries as one would read them aloud."""
        return [look(entry) for entry in self.entries(about_to_show)]

    def choose(self, label):
        """Raises LookupError for an entry that a person could not choose."""
        for entry in self.entries():
            if entry["label"] == label and entry["enabled"]:
                event = GLib.Variant("(isvu)", (entry["id"], "clicked", GLib.Variant("s", ""), 0))
                call(self.service, self.property("Menu"), MENU, "Event", event)
                return
        raise LookupError(f"There is no entry {label!r} to choose.")


def look(entry):
    if entry["divider"]:
        return "---"
    mark = ("[x] " if entry["checked"] else "[ ] ") if entry["toggle"] else ""
    return mark + entry["label"] + ("" if entry["enabled"] else "  (text)")


def items():
    registered = get(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems") or []
    return [Item(name) for name in registered]


def find(ident=OURS):
    for item in items():
        if item.property("Id") == ident:
            return item
    return None


def wait(ident=OURS, limit=10.0):
    end = time.monotonic() + limit
    while True:
        item = find(ident)
        if item is not None or time.monotonic() > end:
            return item
        time.sleep(0.02)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=["items", "show", "click", "activate", "wait"])
    parser.add_argument("label", nargs="?")
    parser.add_argument("-i", "--id", default=OURS)
    parser.add_argument("-t", type=float, default=10)
    given = parser.parse_args()
    if given.what == "items":
        for item in items():
            print(item.service, *(repr(item.property(name)) for name in ("Id", "Title", "Status")))
        return 0
    item = wait(given.id, given.t if given.what == "wait" else 0)
    if item is None:
        print("There is no such tray item.", file=sys.stderr)
        return 2
    if given.what == "show":
        print("\n".join(item.lines()))
    elif given.what == "click":
        item.choose(given.label)
    elif given.what == "activate":
        item.activate()
    return 0


if __name__ == "__main__":
    sys.exit(main())
