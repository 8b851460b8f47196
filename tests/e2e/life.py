#!/usr/bin/python3
"""How the program starts, shares a session, opens and closes its window, and ends."""
import subprocess
import time

import program
from program import wait_until

OPENINGS = 50
#: What 50 openings may leave behind, in KiB: the allocator's slack, far below one window's 20 MB.
SLACK = 3072


class Life(program.ProgramTest):
    def test_unfinished_setup_opens_the_window_at_launch(self):
        self.drive.says(installed=False, mounted=False)
        self.program.start()
        self.see("Welcome to Ferrobank")

    def test_finished_setup_starts_with_the_tray_item_alone(self):
        self.start_set_up()
        wait_until(lambda: self.drive.runs("status", "--json") >= 2, "two polls are over", 20)
        self.assertEqual(self.windows(), [])
        maps = (f"/proc/{self.program.process.pid}/maps")
        with open(maps, encoding="utf-8") as mapped:
            self.assertNotIn("libQt6Qml", mapped.read())

    def test_menu_opens_the_window_and_closing_it_ends_nothing(self):
        self.start_set_up()
        self.tray().choose("Open Ferrobank")
        self.see("Space saved")
        self.click("Close", "push button")
        self.wait_for_no_window()
        self.assertIsNone(self.program.process.poll())
        self.assertIn("Open Ferrobank", self.tray().lines())

    def test_open_window_is_brought_forward_not_doubled(self):
        self.start_set_up()
        item = self.tray()
        for _ in range(3):
            item.choose("Open Ferrobank")
            self.see("Space saved")
        self.assertEqual(len(self.windows()), 1)

    def test_second_start_raises_the_window_of_the_first(self):
        self.start_set_up()
        self.tray()
        second = self.program.begin()
        self.assertEqual(second.wait(timeout=20), 0)
        self.see("Space saved")
        self.assertEqual(len(self.windows()), 1)
        self.assertIsNone(self.program.process.poll())

    def test_two_starts_at_once_leave_one_program(self):
        self.drive.says()
        self.program.finish_setup()
        starts = [self.program.begin() for _ in range(6)]
        wait_until(lambda: sum(1 for start in starts if start.poll() == 0) == 5, "five have handed over", 30)
        left = [start for start in starts if start.poll() is None]
        self.assertEqual(len(left), 1)
        self.program.process = left[0]
        self.see("Space saved")

    def test_second_start_needs_no_display(self):
        self.start_set_up()
        self.tray()
        second = self.program.begin(DISPLAY=None, WAYLAND_DISPLAY=None)
        self.assertEqual(second.wait(timeout=20), 0)
        self.see("Space saved")

    def test_without_a_session_bus_a_second_start_raises_the_window_too(self):
        self.drive.says()
        runtime = self.desktop.folder / "elsewhere"
        runtime.mkdir(mode=0o700)
        alone = {"DBUS_SESSION_BUS_ADDRESS": None, "XDG_RUNTIME_DIR": str(runtime)}
        self.program.start(**alone)
        self.wait_for_window()
        self.key("Escape")
        self.assertEqual(self.program.begin(**alone).wait(timeout=20), 0)
        self.wait_for_window()
        self.assertIsNone(self.program.process.poll())

    def test_unknown_argument_starts_the_program(self):
        self.drive.says()
        self.program.finish_setup()
        self.program.start("-psn_0_12345")
        self.assertIn("Open Ferrobank", self.tray().lines())

    def test_signal_ends_the_program_at_once(self):
        self.start_set_up()
        self.tray()
        status, seconds = self.program.end()
        self.assertEqual(status, 0)
        self.assertLess(seconds, 5)

    def test_signal_ends_the_program_with_an_open_window_and_a_hanging_tool(self):
        self.drive.hangs()
        self.program.start()
        self.wait_for_window()
        status, seconds = self.program.end()
        self.assertEqual(status, 0)
        self.assertLess(seconds, 5)

    def test_background_moves_the_window_again_and_again(self):
        self.start_set_up()
        self.tray().choose("Open Ferrobank")
        self.see("Space saved")
        window = self.wait_for_window()[0]
        beside_the_words = self.middle("Space saved")[1]
        for by in (-100, 80, -60):
            before = self.corner(window)
            self.drag(before[0] + 300, before[1] + 12, by)
            wait_until(lambda: self.corner(window) != before, "the window has moved by its top edge")
            before = self.corner(window)
            self.drag(before[0] + 560, before[1] + beside_the_words, by)
            wait_until(lambda: self.corner(window) != before, "the window has moved by the rest of a line")

    def middle(self, name):
        """Of something shown, from the window's corner."""
        x, y = self.a11y().center(self.see(name))
        left, top = self.corner(self.windows()[0])
        return x - left, y - top

    def corner(self, window):
        told = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window], capture_output=True, text=True)
        facts = dict(line.split("=") for line in told.stdout.split())
        return int(facts["X"]), int(facts["Y"])

    def drag(self, x, y, by):
        """Sideways. A person's hand is slower than the window manager's."""
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "mousedown", "1"], check=True)
        for step in range(1, 11):
            time.sleep(0.03)
            subprocess.run(["xdotool", "mousemove", str(x + step * by // 10), str(y)], check=True)
        subprocess.run(["xdotool", "mouseup", "1"], check=True)
        time.sleep(0.3)

    def test_fifty_openings_leave_nothing_behind(self):
        self.start_set_up()
        item = self.tray()
        # The first ones load what stays loaded.
        for _ in range(5):
            self.open_and_close(item)
        before = self.program.figures()
        for _ in range(OPENINGS):
            self.open_and_close(item)
        after = self.program.figures()
        print(f"before {before}, after {OPENINGS} openings {after}")
        self.assertLessEqual(after["descriptors"], before["descriptors"])
        self.assertLess(after["memory"], before["memory"] + SLACK)
        wait_until(lambda: self.program.figures()["children"] == 0, "no child process is left")

    def test_drive_that_hangs_holds_nothing_else(self):
        self.drive.hangs()
        self.program.finish_setup()
        self.program.start()
        item = self.tray()
        began = time.monotonic()
        item.choose("Open Ferrobank")
        self.wait_for_window()
        self.assertLess(time.monotonic() - began, 10)

    def start_set_up(self):
        self.drive.says(volume_used=12_400_000_000, saved=8_100_000_000, store_bytes=4_300_000_000)
        self.program.finish_setup()
        self.program.start()

    def open_and_close(self, item):
        item.choose("Open Ferrobank")
        window = self.wait_for_window()[0]
        subprocess.run(["xdotool", "windowactivate", "--sync", window], check=True)
        # The window manager's own close.
        self.key("alt+F4")
        self.wait_for_no_window()


if __name__ == "__main__":
    program.main()
