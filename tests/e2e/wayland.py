#!/usr/bin/python3
"""The window on a Wayland desktop: it opens, closes, comes back, and comes to the front when it is asked for."""
import json
import os
import pathlib
import pwd
import shutil
import subprocess
import sys
import time

import program
from program import wait_until

APP = "org.ferrobank.Ferrobank"
OTHER = "ferrobank-offline"
WIDTH = 520 + 2 * 32


def surfaces(node):
    """Every window of the desktop, from the compositor's tree."""
    if node.get("app_id"):
        yield node
    for child in node.get("nodes", []) + node.get("floating_nodes", []):
        yield from surfaces(child)


class Wayland(program.ProgramTest):
    desktop_options = ("--wayland", "--no-systemd")

    def test_window_opens_in_front_with_its_own_size_and_no_frame(self):
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Welcome to Ferrobank")
        window = wait_until(self.focused_window, "the window has the focus")
        self.assertEqual(window["rect"]["width"], WIDTH)
        self.assertEqual(window["deco_rect"]["height"], 0)
        self.assertEqual(window["type"], "floating_con")

    def test_rounded_corners_show_what_lies_behind(self):
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Welcome to Ferrobank")
        place = wait_until(self.focused_window, "the window has the focus")["rect"]
        behind = self.pixel(place["x"] - 20, place["y"] + 60)
        wait_until(lambda: self.pixel(place["x"] + 40, place["y"] + 60) != behind, "the window is drawn")
        self.assertEqual(self.pixel(place["x"], place["y"]), behind)

    def test_closing_ends_nothing_and_a_second_start_opens_it_again(self):
        self.start_set_up()
        self.assertEqual(self.windows(), [])
        for _ in range(3):
            self.assertEqual(self.program.begin().wait(timeout=20), 0)
            self.see("Space saved")
            wait_until(self.focused_window, "the window has the focus")
            self.press("Close")
            self.wait_for_no_window()
            self.assertIsNone(self.program.process.poll())

    def test_second_start_without_a_token_leaves_the_open_window_where_it_is(self):
        self.start_set_up()
        self.assertEqual(self.program.begin().wait(timeout=20), 0)
        before = wait_until(self.focused_window, "the window has the focus")
        other = subprocess.Popen([os.environ["FERROBANK_OFFLINE"], "--scene", "checks-passed"])
        self.addCleanup(lambda: (other.kill(), other.wait()))
        wait_until(lambda: self.has_focus_in(OTHER), "another program's window has the focus")
        self.assertEqual(self.program.begin(XDG_ACTIVATION_TOKEN=None).wait(timeout=20), 0)
        # Longer than it would take to appear anew.
        for _ in range(10):
            after = self.windows()
            self.assertEqual([each["id"] for each in after], [before["id"]])
            # Its height follows what the checks find meanwhile.
            self.assertEqual([after[0]["rect"][side] for side in "xy"], [before["rect"][side] for side in "xy"])
            time.sleep(0.1)
        self.see("Space saved")

    def test_there_is_no_control_for_what_the_desktop_does_not_have(self):
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Close", "push button")
        self.assertFalse(self.sees("Minimise", "push button"))

    def test_window_stays_inside_a_small_scaled_display(self):
        subprocess.run(["swaymsg", "output", "*", "scale", "2"], check=True, capture_output=True)
        self.addCleanup(lambda: subprocess.run(["swaymsg", "output", "*", "scale", "1"], capture_output=True))
        self.start_set_up()
        self.assertEqual(self.program.begin().wait(timeout=20), 0)
        self.see("Space saved")
        wait_until(self.focused_window, "the window has the focus")
        output = json.loads(
            subprocess.run(["swaymsg", "-t", "get_outputs"], capture_output=True, text=True, check=True).stdout
        )[0]["rect"]
        wait_until(lambda: self.windows()[0]["rect"]["height"] <= output["height"] - 40, "the window fits", 5)
        self.assertLessEqual(self.windows()[0]["rect"]["width"], output["width"])

    def test_growing_content_makes_the_window_grow(self):
        self.start_set_up()
        self.assertEqual(self.program.begin().wait(timeout=20), 0)
        self.see("Space saved")
        self.press("Uninstall Ferrobank…")
        self.see("Choose…")
        wait_until(lambda: self.width() == WIDTH, "the window is as wide as the page")
        self.assertEqual(len(self.windows()), 1)

    def test_tray_item_comes_back_with_its_host(self):
        self.start_set_up()
        self.assertIn("Open Ferrobank", self.tray().lines())
        self.desktop.stop_panel()
        wait_until(self.tray_is_empty, "the tray is gone")
        self.desktop.start_panel()
        self.tray().choose("Open Ferrobank")
        self.see("Space saved")

    def start_set_up(self):
        self.drive.says(volume_used=12_400_000_000, saved=8_100_000_000, store_bytes=4_300_000_000)
        self.program.finish_setup()
        self.program.start()
        wait_until(lambda: self.drive.runs("status", "--json") >= 1, "the status is read")

    def press(self, name):
        self.a11y().press(self.see(name, "push button"))

    def surfaces_of(self, app):
        tree = subprocess.run(["swaymsg", "-t", "get_tree"], capture_output=True, text=True, check=True)
        return [each for each in surfaces(json.loads(tree.stdout)) if each["app_id"] == app]

    def windows(self):
        return self.surfaces_of(APP)

    def focused_window(self):
        return next((each for each in self.windows() if each["focused"]), None)

    def has_focus_in(self, app):
        return any(each["focused"] for each in self.surfaces_of(app))

    def width(self):
        return self.windows()[0]["rect"]["width"]

    def pixel(self, x, y):
        picture = self.desktop.folder / "picture.png"
        self.desktop.shoot(picture)
        crop = f"1x1+{x}+{y}"
        return subprocess.run(["convert", str(picture), "-crop", crop, "txt:-"], capture_output=True, check=True).stdout


def become_somebody_else():
    """The compositor refuses to run as root. What the tests need must be there for somebody else, too."""
    account = pwd.getpwnam("nobody")
    os.setgroups([])
    os.setgid(account.pw_gid)
    os.setuid(account.pw_uid)
    needed = [os.environ[name] for name in ("FERROBANK_BUNDLE", "FERROBANK_SCRIPTED_TOOL", "FERROBANK_OFFLINE")]
    return all(os.access(pathlib.Path(each), os.R_OK | os.X_OK) for each in needed)


def main():
    if shutil.which("sway") is None or shutil.which("waybar") is None:
        print("Skipped: there is no Wayland compositor here.")
        sys.exit(program.CANNOT)
    if os.geteuid() == 0:
        if not program.hide_link_folder() or not become_somebody_else():
            print("Skipped: the tests cannot be run by somebody other than root here.")
            sys.exit(program.CANNOT)
    program.main()


if __name__ == "__main__":
    main()
