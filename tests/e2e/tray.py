#!/usr/bin/python3
"""The tray item and its menu on a real panel."""
import subprocess

import program
from program import wait_until

BUTTONS = ["Check for Updates…", "Run Checks…", "---", "[ ] Open Menu at Login"]
LAST = ["Uninstall Ferrobank…", "Quit Ferrobank Menu"]
INSTALL = "Install Command-Line Tool…"


class Tray(program.ProgramTest):
    def test_menu_before_the_first_status_begins_with_its_button(self):
        self.drive.hangs()
        self.program.start()
        self.assertEqual(self.tray().lines(), ["Set Up Ferrobank…", INSTALL, *BUTTONS, *LAST])

    def test_menu_of_a_mounted_drive_is_complete(self):
        self.drive.says(volume_used=12_400_000_000, saved=8_100_000_000)
        self.program.finish_setup()
        self.program.start()
        self.expect_menu(
            "Ferrobank · Mounted  (text)",
            "12.4 GB used · 8.1 GB saved  (text)",
            "---",
            "Open Ferrobank",
            INSTALL,
            *BUTTONS,
            "Show Log",
            *LAST,
        )

    def test_menu_of_a_starting_drive_has_no_usage(self):
        self.drive.says(mounted=False)
        self.program.finish_setup()
        self.program.start()
        self.expect_menu(
            "Ferrobank · Starting…  (text)", "---", "Open Ferrobank", INSTALL, *BUTTONS, "Show Log", *LAST
        )

    def test_drive_that_needs_attention_shows_it_in_shape_and_words(self):
        self.drive.says(mounted=False, attach_error="The store is damaged.")
        self.program.finish_setup()
        self.program.start()
        item = self.tray()
        wait_until(lambda: item.property("Status") == "NeedsAttention", "the item calls for attention")
        self.assertEqual(item.property("IconName"), "org.ferrobank.Ferrobank-attention-symbolic")
        self.assertEqual(item.property("Title"), "Ferrobank · Needs attention")
        self.assertEqual(item.property("ToolTip")[3], "The store is damaged.")
        self.assertEqual(item.lines()[0], "Ferrobank · Needs attention  (text)")

    def test_entries_come_and_go_with_the_status_while_nobody_opens_the_menu(self):
        self.drive.says(mounted=False)
        self.program.finish_setup()
        self.program.start()
        item = self.tray()
        wait_until(lambda: "Show Log" in item.lines(about_to_show=False), "the status is read")
        self.drive.says(volume_used=1_000_000_000)
        wait_until(
            lambda: "1 GB used · 0 bytes saved  (text)" in item.lines(about_to_show=False), "the usage is shown", 20
        )

    def test_changes_of_others_are_followed_without_a_poll(self):
        self.drive.hangs()
        self.program.finish_setup()
        self.program.start()
        item = self.tray()
        wait_until(lambda: "Open Ferrobank" in item.lines(about_to_show=False), "the menu is there")
        subprocess.run([str(self.program.executable), "--unregister"], check=True, capture_output=True)
        wait_until(lambda: "Set Up Ferrobank…" in item.lines(about_to_show=False), "the agent's end is seen")
        program.LINK.symlink_to(self.program.bundle / "Contents/Helpers/ferrobank")
        wait_until(lambda: INSTALL not in item.lines(about_to_show=False), "the link is seen")
        program.LINK.unlink()
        wait_until(lambda: INSTALL in item.lines(about_to_show=False), "the link's end is seen")

    def test_toggle_writes_and_removes_the_login_item(self):
        self.drive.says()
        self.program.start()
        item = self.tray()
        entry = self.desktop.home / ".config/autostart/org.ferrobank.Ferrobank.desktop"
        item.choose("Open Menu at Login")
        wait_until(entry.exists, "the login item is there")
        wait_until(lambda: "[x] Open Menu at Login" in item.lines(), "the mark is set")
        item.choose("Open Menu at Login")
        wait_until(lambda: not entry.exists(), "the login item is gone")
        wait_until(lambda: "[ ] Open Menu at Login" in item.lines(), "the mark is gone")

    def test_menu_carries_no_shortcuts(self):
        self.drive.says()
        self.program.start()
        self.assertEqual({entry["shortcut"] for entry in self.tray().entries()}, {None})

    def test_panel_that_comes_late_gets_the_item(self):
        self.drive.says()
        self.program.finish_setup()
        self.desktop.stop_panel()
        self.program.start()
        wait_until(lambda: self.drive.runs("status", "--json") > 0, "the program runs")
        self.desktop.start_panel()
        self.assertIn("Open Ferrobank", self.tray().lines())

    def test_panel_that_restarts_gets_the_item_each_time(self):
        self.drive.says()
        self.program.finish_setup()
        self.program.start()
        self.tray()
        for _ in range(3):
            self.desktop.stop_panel()
            self.desktop.start_panel()
            self.assertIn("Open Ferrobank", self.tray().lines())
        self.assertIsNone(self.program.process.poll())

    def test_click_on_the_icon_opens_the_window(self):
        self.drive.says()
        self.program.finish_setup()
        self.program.start()
        self.tray().activate()
        self.see("Space saved")

    def test_without_a_panel_a_second_start_opens_the_window(self):
        self.drive.says()
        self.program.finish_setup()
        self.desktop.stop_panel()
        self.addCleanup(self.desktop.start_panel)
        self.program.start()
        wait_until(lambda: self.drive.runs("status", "--json") > 0, "the program runs")
        self.assertEqual(self.windows(), [])
        self.assertEqual(self.program.begin().wait(timeout=20), 0)
        self.see("Space saved")

    def test_quit_ends_the_program(self):
        self.drive.says()
        self.program.start()
        self.tray().choose("Quit Ferrobank Menu")
        self.assertEqual(self.program.process.wait(timeout=20), 0)
        wait_until(self.tray_is_empty, "the item is gone")

    def test_run_checks_opens_the_window_and_runs_them(self):
        self.drive.pretend(mount_after=0, check_pause=10)
        self.program.finish_setup()
        self.program.start()
        self.tray().choose("Run Checks…")
        wait_until(lambda: self.drive.runs("check", "--json") > 0, "the checks run")
        self.wait_for_window()

    def test_uninstall_opens_its_form(self):
        self.drive.says()
        self.program.finish_setup()
        self.program.start()
        self.tray().choose("Uninstall Ferrobank…")
        self.see("Copy my files to a folder first")

    def expect_menu(self, *lines):
        item = self.tray()
        wait_until(lambda: item.lines() == list(lines), f"the menu reads {list(lines)}, not {item.lines()}")


if __name__ == "__main__":
    program.main()
