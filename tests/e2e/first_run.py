#!/usr/bin/python3
"""From the welcome page to the dashboard, as a person goes there, with a real service manager."""
import json
import subprocess

import program
from program import wait_until


class FirstRun(program.ProgramTest):
    def setUp(self):
        super().setUp()
        self.drive.pretend(mount_after=1, check_pause=50)

    def test_with_the_mouse(self):
        self.program.start()
        self.click("Continue")
        self.click("Allow and Set Up")
        self.see("Mounted at ~/Ferrobank.", limit=60)
        self.wait_for_finished_setup()
        self.click("Continue")
        self.see("Checking your drive")
        wait_until(lambda: self.is_enabled("Continue"), "the checks have passed", 30)
        self.click("Continue")
        self.click("Open Ferrobank")
        self.see("Space saved")
        self.assert_set_up()

    def test_with_the_keyboard_only(self):
        self.program.start()
        self.see("Welcome to Ferrobank")
        self.press_return_until("Allow and Set Up")
        self.press_return_until("Set up your drive")
        self.wait_for_finished_setup()
        self.press_return_until("Checking your drive")
        wait_until(lambda: self.is_enabled("Continue"), "the checks have passed", 30)
        self.press_return_until("Open Ferrobank")
        self.press_return_until("Space saved")
        self.assert_set_up()

    def press_return_until(self, name):
        """One Return, and what it leads to."""
        self.key("Return")
        self.see(name)

    def is_enabled(self, name):
        thing = self.a11y().find("Ferrobank", name, "push button")
        return thing is not None and "dimmed" not in (thing.get_description() or "")

    def wait_for_finished_setup(self):
        def is_finished():
            rows = self.a11y().names("Ferrobank", "list item")
            return len(rows) == 4 and all(row.endswith((": passed", ": failed", ": skipped")) for row in rows)

        wait_until(is_finished, "every row of the setup is finished", 60)

    def assert_set_up(self):
        status = subprocess.run(
            [str(self.program.executable), "--service-status"], capture_output=True, text=True, check=True
        )
        self.assertEqual(json.loads(status.stdout), {"login_item": "enabled", "agent": "enabled"})
        active = subprocess.run(
            ["systemctl", "--user", "is-active", "org.ferrobank.Ferrobank.agent.service"], capture_output=True, text=True
        )
        self.assertEqual(active.stdout.strip(), "active")
        settings = (self.desktop.home / ".config" / "org.ferrobank.Ferrobank.conf").read_text()
        self.assertIn("setupComplete=true", settings)
        self.assertEqual(self.drive.runs("check", "--json"), 1)
        entries = self.tray().lines()
        self.assertEqual(entries[0], "Ferrobank · Mounted  (text)")
        self.assertIn("Open Ferrobank", entries)
        self.assertNotIn("Set Up Ferrobank…", entries)
        self.assertIn("[x] Open Menu at Login", entries)


if __name__ == "__main__":
    program.main()
