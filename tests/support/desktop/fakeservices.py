#!/usr/bin/python3
"""Stands in for parts of a desktop that the private one does not have. Runs until it is ended.

  fakeservices.py portal DELAY FILE    the settings portal: takes DELAY seconds to come up, then tells the settings in
                                       FILE (JSON: by group, then by key) and every change of the file
  fakeservices.py notifications FILE   the notification service: a line of JSON for each message
  fakeservices.py xsettings FILE       a settings daemon of an X display, with the settings in FILE (JSON), and every
                                       change of it
"""
import ctypes
import json
import pathlib
import struct
import sys
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

PORTAL = """<node><interface name="org.freedesktop.portal.Settings">
<method name="ReadAll"><arg type="as" direction="in"/><arg type="a{sa{sv}}" direction="out"/></method>
<signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""
NOTIFICATIONS = """<node><interface name="org.freedesktop.Notifications">
<method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
<arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/>
<arg type="i" direction="in"/><arg type="u" direction="out"/></method>
</interface></node>"""


def variant(value):
    kinds = {bool: "b", int: "u", float: "d", str: "s"}
    return GLib.Variant(kinds[type(value)], value)


def follow(file, changed):
    """Looks at the file ten times a second."""
    last = None

    def look():
        nonlocal last
        text = file.read_text()
        if text != last:
            last = text
            changed(json.loads(text))
        return True

    look()
    GLib.timeout_add(100, look)


def serve(name, path, description, call):
    """The bus and, once it is there, the object."""
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    interface = Gio.DBusNodeInfo.new_for_xml(description).interfaces[0]
    bus.register_object(path, interface, lambda *given: call(given[4], given[5], given[6]), None, None)
    Gio.bus_own_name_on_connection(bus, name, 0, None, None)
    return bus


def portal(delay, file):
    time.sleep(float(delay))
    settings = {}

    def call(_method, _arguments, invocation):
        answer = {group: {key: variant(value) for key, value in keys.items()} for group, keys in settings.items()}
        invocation.return_value(GLib.Variant("(a{sa{sv}})", (answer,)))

    path = "/org/freedesktop/portal/desktop"
    settings.update(json.loads(file.read_text()))
    bus = serve("org.freedesktop.portal.Desktop", path, PORTAL, call)

    def changed(now):
        for group, keys in now.items():
            for key, value in keys.items():
                if settings.get(group, {}).get(key) != value:
                    told = GLib.Variant("(ssv)", (group, key, variant(value)))
                    bus.emit_signal(None, path, "org.freedesktop.portal.Settings", "SettingChanged", told)
        settings.clear()
        settings.update(now)

    follow(file, changed)


def notifications(file):
    count = 0

    def call(_method, arguments, invocation):
        nonlocal count
        count += 1
        given = arguments.unpack()
        with file.open("a") as out:
            out.write(json.dumps({"title": given[3], "text": given[4]}) + "\n")
        invocation.return_value(GLib.Variant("(u)", (count,)))

    serve("org.freedesktop.Notifications", "/org/freedesktop/Notifications", NOTIFICATIONS, call)


def encoded(settings, serial):
    def padded(text):
        return text + b"\0" * (-len(text) % 4)

    body = b""
    for name, value in settings.items():
        is_text = isinstance(value, str)
        body += struct.pack("<BxH", 1 if is_text else 0, len(name)) + padded(name.encode()) + struct.pack("<I", serial)
        if is_text:
            body += struct.pack("<I", len(value.encode())) + padded(value.encode())
        else:
            body += struct.pack("<i", value)
    return struct.pack("<BxxxII", 0, serial, len(settings)) + body


class ClientMessage(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("serial", ctypes.c_ulong),
        ("send_event", ctypes.c_int),
        ("display", ctypes.c_void_p),
        ("window", ctypes.c_ulong),
        ("message_type", ctypes.c_ulong),
        ("format", ctypes.c_int),
        ("data", ctypes.c_long * 5),
        ("padding", ctypes.c_long * 24),
    ]


def xsettings(file):
    x11 = ctypes.CDLL("libX11.so.6")
    for function in ("XOpenDisplay",):
        getattr(x11, function).restype = ctypes.c_void_p
    for function in ("XInternAtom", "XDefaultRootWindow", "XCreateSimpleWindow"):
        getattr(x11, function).restype = ctypes.c_ulong
    display = ctypes.c_void_p(x11.XOpenDisplay(None))
    root = x11.XDefaultRootWindow(display)
    window = ctypes.c_ulong(x11.XCreateSimpleWindow(display, ctypes.c_ulong(root), 0, 0, 1, 1, 0, 0, 0))

    def atom(name):
        return ctypes.c_ulong(x11.XInternAtom(display, name.encode(), 0))

    selection, settings, manager = atom("_XSETTINGS_S0"), atom("_XSETTINGS_SETTINGS"), atom("MANAGER")
    serial = 0

    def changed(now):
        nonlocal serial
        serial += 1
        content = encoded(now, serial)
        x11.XChangeProperty(display, window, settings, settings, 8, 0, content, len(content))
        x11.XFlush(display)

    follow(file, changed)
    x11.XSetSelectionOwner(display, selection, window, ctypes.c_ulong(0))
    client_message, structure_notify = 33, 1 << 17
    told = ClientMessage(type=client_message, window=root, message_type=manager.value, format=32)
    told.data[1] = selection.value
    told.data[2] = window.value
    x11.XSendEvent(display, ctypes.c_ulong(root), 0, ctypes.c_long(structure_notify), ctypes.byref(told))
    x11.XFlush(display)


def main():
    role, *rest = sys.argv[1:]
    loop = GLib.MainLoop()
    if role == "portal":
        portal(rest[0], pathlib.Path(rest[1]))
    elif role == "notifications":
        notifications(pathlib.Path(rest[0]))
    else:
        xsettings(pathlib.Path(rest[0]))
    loop.run()


if __name__ == "__main__":
    main()
