#!/usr/bin/python3
"""What the window looks like on the desktop, and that it follows the desktop while it is open."""
import json
import re
import subprocess
import sys
import time

import program
from program import wait_until

COLD_STARTS = 15
FAKES = program.SUPPORT / "fakeservices.py"
LIGHT, DARK = "light", "dark"
SCHEME = "org.freedesktop.appearance"


class Looks(program.ProgramTest):
    desktop_options = ("--no-systemd", "--no-panel")

    def setUp(self):
        super().setUp()
        self.settings = self.desktop.folder / "settings.json"
        self.services = self.desktop.folder / "run" / "dbus-1" / "services"
        self.addCleanup(lambda: [file.unlink() for file in self.services.glob("*.service")])

    def test_checks_that_fail_at_once_get_a_window_of_their_height(self):
        ids = ["running", "drive", "login", "space", "store", "integrity", "sharing"]
        lines = ""
        for name in ids:
            row = {"id": name, "title": f"The {name} check", "state": "running"}
            lines += json.dumps(row) + "\n"
            row.update(state="fail", detail="It does not answer.", fix="Look after it.", action="restart")
            lines += json.dumps(row) + "\n"
        self.drive.says()
        scenario = json.loads(self.drive._scenario.read_text())
        scenario["runs"].append({"args": ["check", "--json"], "play": [{"out": lines}]})
        self.drive._write(scenario)
        self.program.finish_setup()
        heights = []
        for _ in range(COLD_STARTS):
            self.program.start("--action", "run-checks")
            self.see("Done", "push button")
            heights.append(self.still_height())
            self.verify_rows_apart(ids)
            self.program.end()
        self.assertEqual(len(set(heights)), 1, heights)

    def test_portal_that_nobody_has_started_is_asked_before_the_first_picture(self):
        self.activatable("org.freedesktop.portal.Desktop", "portal", "0.3", self.settings)
        self.tell({SCHEME: {"color-scheme": 1}})
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.wait_for_window()
        seen = {self.shade() for _ in range(5)}
        self.assertEqual(seen - {None}, {DARK})
        self.see("Welcome to Ferrobank")
        self.assertEqual(wait_until(self.shade, "the window is drawn"), DARK)
        self.tell({SCHEME: {"color-scheme": 2}})
        wait_until(lambda: self.shade() == LIGHT, "the window has become light")
        self.tell({SCHEME: {"color-scheme": 1, "contrast": 1}})
        wait_until(lambda: self.shade() == "black", "the window has become black")

    def test_portal_that_cannot_start_holds_nothing_up(self):
        self.activatable("org.freedesktop.portal.Desktop", "portal", "60", self.settings)
        self.tell({})
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Welcome to Ferrobank", limit=12)

    def test_dark_theme_of_a_settings_daemon_is_followed(self):
        self.tell({"Net/ThemeName": "Adwaita-dark"})
        self.fake("xsettings", self.settings)
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Welcome to Ferrobank")
        wait_until(lambda: self.shade() == DARK, "the window is dark")
        before = self.still_height()
        self.tell({"Net/ThemeName": "Adwaita", "Gtk/FontName": "DejaVu Sans 18"})
        wait_until(lambda: self.shade() == LIGHT, "the window has become light")
        wait_until(lambda: self.still_height() > before + 40, "the window has grown with its font")

    def test_settings_daemon_that_comes_late_is_followed(self):
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Welcome to Ferrobank")
        wait_until(lambda: self.shade() == LIGHT, "the window is light")
        self.tell({"Net/ThemeName": "BlackMATE"})
        self.fake("xsettings", self.settings)
        wait_until(lambda: self.shade() == DARK, "the window has become dark")

    def test_window_scaling_of_a_settings_daemon_is_followed(self):
        self.drive.says(installed=False, mounted=False)
        self.tell({"Gdk/WindowScalingFactor": 2})
        self.fake("xsettings", self.settings)
        self.program.start()
        self.see("Welcome to Ferrobank")
        self.assertEqual(self.geometry()[2], 2 * (520 + 2 * 32))

    def test_window_is_matched_to_its_desktop_file(self):
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Welcome to Ferrobank")
        told = subprocess.run(["xprop", "-id", self.windows()[0], "WM_CLASS"], capture_output=True, text=True).stdout
        self.assertIn('"org.ferrobank.Ferrobank", "org.ferrobank.Ferrobank"', told)

    def test_closing_without_a_tray_tells_once_that_it_goes_on(self):
        notes = self.desktop.folder / "notes"
        notes.unlink(missing_ok=True)
        self.fake("notifications", notes)
        self.drive.says()
        self.program.finish_setup()
        self.program.start()
        wait_until(lambda: self.drive.runs("status", "--json") >= 1, "the status is read")
        for _ in range(2):
            self.assertEqual(self.program.begin().wait(timeout=20), 0)
            self.see("Run Checks")
            self.click("Close", "push button")
            self.wait_for_no_window()
        wait_until(notes.exists, "the notification is there")
        told = [json.loads(line) for line in notes.read_text().splitlines()]
        self.assertEqual([each["title"] for each in told], ["Ferrobank goes on in the background"])
        self.assertIsNone(self.program.process.poll())

    def test_launcher_actions_reach_the_running_program(self):
        self.drive.says()
        self.program.finish_setup()
        self.program.start()
        wait_until(lambda: self.drive.runs("status", "--json") >= 1, "the status is read")
        self.assertEqual(self.program.begin("--action", "run-checks").wait(timeout=20), 0)
        self.see("Ferrobank checks")
        self.assertEqual(self.program.begin("--action", "open").wait(timeout=20), 0)
        self.see("Show Log")
        self.assertEqual(self.program.begin("--action", "quit").wait(timeout=20), 0)
        self.assertEqual(self.program.process.wait(timeout=20), 0)

    def test_message_lies_over_the_middle_of_its_dimmed_window(self):
        program.LINK.write_text("something of the user's")
        self.drive.says()
        self.program.finish_setup()
        self.program.start("--action", "open")
        self.see("Install…")
        x, y, width, height = self.geometry()
        undimmed = self.colour(x + 12, y + height // 2)
        self.click("Install…", "push button")
        self.see("OK", "push button")
        wait_until(lambda: len(self.windows()) == 2, "the message is there")
        message = next(each for each in self.windows() if self.geometry(each)[2] != width)
        mx, my, mwidth, mheight = self.geometry(message)
        self.assertLessEqual(abs(mx + mwidth // 2 - x - width // 2), 6)
        self.assertLessEqual(abs(my + mheight // 2 - y - height // 2), 6)
        self.assertLess(sum(self.colour(x + 12, y + height // 2)), 0.8 * sum(undimmed))
        subprocess.run(["xdotool", "key", "Return"], check=True)
        wait_until(lambda: len(self.windows()) == 1, "the message is gone")
        wait_until(lambda: self.colour(x + 12, y + height // 2) == undimmed, "the window is as before")

    def test_unknown_first_words_start_the_program(self):
        self.drive.says(installed=False, mounted=False)
        self.program.start("--action")
        self.see("Welcome to Ferrobank")

    def tell(self, settings):
        partial = self.settings.with_suffix(".partial")
        partial.write_text(json.dumps(settings))
        partial.rename(self.settings)

    def fake(self, *arguments):
        fake = subprocess.Popen([sys.executable, str(FAKES), *map(str, arguments)])
        self.addCleanup(lambda: (fake.kill(), fake.wait()))
        time.sleep(0.5)

    def activatable(self, name, *arguments):
        """The bus starts it when somebody asks for the name."""
        self.services.mkdir(parents=True, exist_ok=True)
        pid = self.desktop.folder / "started"
        words = " ".join([sys.executable, str(FAKES), *map(str, arguments)])
        script = self.desktop.folder / "start"
        script.write_text(f"#!/bin/sh\necho $$ > {pid}\nexec {words}\n")
        script.chmod(0o755)
        (self.services / f"{name}.service").write_text(f"[D-BUS Service]\nName={name}\nExec={script}\n")
        bus = "org.freedesktop.DBus"
        subprocess.run(["busctl", "--user", "call", bus, "/org/freedesktop/DBus", bus, "ReloadConfig"], check=True)
        self.addCleanup(lambda: pid.exists() and subprocess.run(["kill", pid.read_text().strip()], check=False))

    def geometry(self, window=None):
        words = subprocess.run(
            ["xdotool", "getwindowgeometry", "--shell", window or self.windows()[0]],
            capture_output=True,
            text=True,
            check=True,
        ).stdout
        numbers = dict(re.findall(r"(\w+)=(\d+)", words))
        return tuple(int(numbers[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def still_height(self):
        """Once it has been the same for half a second."""
        before, since = None, time.monotonic()
        while time.monotonic() - since < 0.5:
            now = self.geometry()[3]
            if now != before:
                before, since = now, time.monotonic()
            time.sleep(0.05)
        return before

    def verify_rows_apart(self, ids):
        places = [self.a11y().center(self.see(f"The {name} check", "label"))[1] for name in ids]
        gaps = {below - above for above, below in zip(places, places[1:])}
        self.assertTrue(all(gap > 40 for gap in gaps) and max(gaps) - min(gaps) <= 1, places)

    def shade(self):
        """Of the window's middle left, where nothing is drawn; None without a window."""
        if not self.windows():
            return None
        x, y, _, height = self.geometry()
        known = {(252, 252, 253): LIGHT, (31, 31, 34): DARK, (0, 0, 0): "black"}
        return known.get(self.colour(x + 12, y + height // 2))

    def colour(self, x, y):
        picture = self.desktop.folder / "picture.png"
        self.desktop.shoot(picture)
        told = subprocess.run(
            ["convert", str(picture), "-crop", f"1x1+{x}+{y}", "+repage", "-depth", "8", "rgb:-"],
            capture_output=True,
            check=True,
        ).stdout
        return tuple(told[:3])


if __name__ == "__main__":
    program.main()
