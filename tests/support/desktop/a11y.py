#!/usr/bin/python3
"""Sees and uses an application's windows through the accessibility tree, as assistive technology does.

  a11y.py APP tree [--bounds]          role, name and states of everything shown
  a11y.py APP texts                    names of all labels and headings shown, in tree order
  a11y.py APP click  NAME [--role R]   a real pointer click in its middle (X11), as a person does
  a11y.py APP press  NAME [--role R]   its accessible action, as a screen reader does
  a11y.py APP state  NAME [--role R]   states of one object
  a11y.py APP wait   NAME [-t SEC]     waits until something of this name is shown
  a11y.py APP gone   [-t SEC]          waits until the application shows no window

Needs the accessibility bus, python3-gi and gir1.2-atspi-2.0. The tests use the functions directly.
"""
import argparse
import subprocess
import sys
import time
import warnings

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

warnings.simplefilter("ignore", DeprecationWarning)

STATES = [
    (Atspi.StateType.CHECKED, "checked"),
    (Atspi.StateType.FOCUSED, "focused"),
    (Atspi.StateType.ENABLED, "enabled"),
    (Atspi.StateType.CHECKABLE, "checkable"),
    (Atspi.StateType.EDITABLE, "editable"),
    (Atspi.StateType.ACTIVE, "active"),
    (Atspi.StateType.BUSY, "busy"),
]
TEXT_ROLES = ("label", "heading", "static", "text", "paragraph")
ACTIONS = ("Toggle", "Press", "toggle", "press", "click")


def application(name):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        try:
            found = desktop.get_child_at_index(index)
            if found is not None and found.get_name() == name:
                return found
        except GLib.Error:
            continue  # gone since it was counted
    return None


def has(thing, state):
    return thing.get_state_set().contains(state)


def walk(thing, depth=0):
    """Everything shown below a thing, with its depth."""
    try:
        count = thing.get_child_count()
    except GLib.Error:
        return
    for index in range(count):
        try:
            child = thing.get_child_at_index(index)
            if child is None or not has(child, Atspi.StateType.SHOWING):
                continue
            yield depth, child
        except GLib.Error:
            continue
        yield from walk(child, depth + 1)


def shown(name):
    """Everything that the application shows; nothing when it is not on the bus."""
    found = application(name)
    return [thing for _, thing in walk(found)] if found is not None else []


def described(app):
    """Role, name and the thing itself of everything shown; what goes away meanwhile is left out."""
    found = []
    for thing in shown(app):
        try:
            found.append((thing.get_role_name(), thing.get_name(), thing))
        except GLib.Error:
            continue
    return found


def find(app, name, role=None):
    for its_role, its_name, thing in described(app):
        if its_name == name and role in (None, its_role):
            return thing
    return None


def names(app, role):
    return [name for its_role, name, _ in described(app) if its_role == role]


def poll(condition, limit):
    """The condition's first true value, or its last one when the time is up."""
    end = time.monotonic() + limit
    while True:
        result = condition()
        if result or time.monotonic() > end:
            return result
        time.sleep(0.02)


def states(thing):
    return [word for state, word in STATES if has(thing, state)]


def center(thing):
    box = thing.get_extents(Atspi.CoordType.SCREEN)
    return box.x + box.width // 2, box.y + box.height // 2


def click(thing):
    x, y = center(thing)
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)


def press(thing):
    actions = [thing.get_action_name(index) for index in range(thing.get_n_actions())]
    for action in ACTIONS:
        if action in actions:
            return thing.do_action(actions.index(action))
    raise LookupError(f"{thing.get_name()!r} has no action to press, only {actions}")


def texts(app):
    return [name for role, name, _ in described(app) if role in TEXT_ROLES and name]


def line(depth, thing, bounds):
    text = f"{'  ' * depth}{thing.get_role_name()} {thing.get_name()!r} {states(thing)}"
    if thing.get_description():
        text += f" description={thing.get_description()!r}"
    if bounds:
        box = thing.get_extents(Atspi.CoordType.SCREEN)
        text += f" @{box.x},{box.y} {box.width}x{box.height}"
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("app")
    parser.add_argument("what", choices=["tree", "texts", "click", "press", "state", "wait", "gone"])
    parser.add_argument("name", nargs="?")
    parser.add_argument("--role")
    parser.add_argument("--bounds", action="store_true")
    parser.add_argument("-t", type=float, default=10)
    given = parser.parse_args()
    if given.what == "gone":
        return 0 if poll(lambda: not shown(given.app), given.t) else 2
    if not poll(lambda: application(given.app), given.t):
        print("There is no such application.", file=sys.stderr)
        return 2
    if given.what == "tree":
        for depth, thing in walk(application(given.app)):
            print(line(depth, thing, given.bounds))
        return 0
    if given.what == "texts":
        print("\n".join(texts(given.app)))
        return 0
    thing = poll(lambda: find(given.app, given.name, given.role), given.t)
    if not thing:
        print(f"Nothing named {given.name!r} is shown.", file=sys.stderr)
        return 3
    if given.what == "state":
        print(line(0, thing, given.bounds))
    elif given.what == "click":
        click(thing)
    elif given.what == "press":
        press(thing)
    return 0


if __name__ == "__main__":
    sys.exit(main())
