#!/usr/bin/python3
"""What the program finds when it starts, and hands on: a moved bundle, a service manager that does not answer, the
arguments and the environment of its start."""
import contextlib
import os
import pathlib
import signal
import time

import program
from program import wait_until

MANAGER_LIMIT = 4  # seconds that one question may take while the manager is silent


class Start(program.ProgramTest):
    def set_up(self):
        self.drive.says(volume_used=12_400_000_000, saved=8_100_000_000, store_bytes=4_300_000_000)
        self.program.finish_setup()

    def test_bundle_that_was_moved_since_is_still_set_up(self):
        self.set_up()
        self.program.move_to("elsewhere/Ferrobank.app")
        self.program.start()
        tray = self.tray()
        wait_until(lambda: "Open Ferrobank" in tray.lines(), "the tray knows of the setup")
        wait_until(lambda: self.service_status()["agent"] == "enabled", "the agent is registered from the new place", 30)
        wait_until(lambda: self.drive.runs("status", "--json") >= 2, "two polls are over", 20)
        self.assertEqual(self.windows(), [])
        self.assertIn("Open Ferrobank", tray.lines())

    def test_second_copy_of_the_bundle_displaces_nothing(self):
        self.set_up()
        other = program.Program(self.desktop, name="Copy.app")
        self.addCleanup(lambda: program.remove(other.bundle))
        self.addCleanup(other.close)
        other.start()
        self.assertEqual(self.service_status()["agent"], "enabled")
        wait_until(lambda: self.drive.runs("status", "--json") >= 2, "two polls are over", 20)
        self.assertEqual(self.service_status()["agent"], "enabled")

    def test_service_manager_that_is_silent_at_the_start_opens_no_window(self):
        self.set_up()
        with self.silent_manager():
            self.program.start()
            tray = self.tray()
            self.assertIn("Open Ferrobank", tray.lines())
            self.assertNotIn("Set Up Ferrobank…", tray.lines())
            # Every question of the start has been given up by then, and was asked again.
            until = time.monotonic() + 3 * MANAGER_LIMIT
            wait_until(lambda: time.monotonic() > until or self.windows(), "the questions are over", 5 * MANAGER_LIMIT)
            self.assertEqual(self.windows(), [])
            self.assertIn("Open Ferrobank", tray.lines())
        wait_until(lambda: self.service_status()["agent"] == "enabled", "the manager answers again", 30)
        self.assertEqual(self.windows(), [])
        self.assertIn("Open Ferrobank", tray.lines())

    def test_silent_service_manager_freezes_neither_the_tray_nor_the_window(self):
        self.set_up()
        with self.silent_manager():
            began = time.monotonic()
            self.program.start()
            tray = self.tray()
            shown = time.monotonic() - began
            tray.choose("Open Ferrobank")
            self.see("Space saved")
            self.assertLess(shown, MANAGER_LIMIT)

    def test_missing_agent_after_a_silence_opens_the_setup(self):
        self.set_up()
        self.program.unregister()
        with self.silent_manager():
            self.program.start()
            wait_until(lambda: self.drive.runs("status", "--json") >= 1, "the first poll is over", 20)
            self.assertEqual(self.windows(), [])
        self.see("Welcome to Ferrobank", limit=40)

    def test_first_argument_that_the_toolkit_knows_starts_the_program(self):
        self.set_up()
        self.program.start("-platform", "nonexistent")
        self.assertIn("Open Ferrobank", self.tray().lines())
        self.assertIsNone(self.program.process.poll())

    def test_tool_inherits_the_environment_of_the_start(self):
        self.set_up()
        self.drive.hangs_in("check", "--json")
        self.program.start(
            DESKTOP_STARTUP_ID="start-7_TIME1234", XDG_ACTIVATION_TOKEN="token-1", FERROBANK_TEST="in herited"
        )
        given = pathlib.Path(f"/proc/{self.program.process.pid}/environ")
        self.tray()
        before = variables(given.read_bytes())  # what the kernel was given, whatever the program does to its copy
        # A window that is opened by another start brings a token of its own.
        self.assertEqual(self.program.begin(XDG_ACTIVATION_TOKEN="token-2").wait(timeout=20), 0)
        self.see("Space saved")
        self.tray().choose("Run Checks…")
        child = wait_until(lambda: self.child_with("check"), "the checks run")
        inherited = variables((pathlib.Path("/proc") / child / "environ").read_bytes())
        self.assertEqual(inherited, before)
        self.assertIn(b"DESKTOP_STARTUP_ID=start-7_TIME1234", inherited)

    @contextlib.contextmanager
    def silent_manager(self):
        """The user's service manager, stopped: it is there and says nothing."""
        pids = [line.split() for line in (self.desktop.folder / "pids").read_text().splitlines()]
        manager = next((int(pid) for name, pid, _ in reversed(pids) if name == "systemd"), None)
        if manager is None:
            self.skipTest("there is no service manager here")
        os.kill(manager, signal.SIGSTOP)
        try:
            yield
        finally:
            os.kill(manager, signal.SIGCONT)

    def service_status(self):
        return self.program.service_status()

    def child_with(self, word):
        process = pathlib.Path("/proc") / str(self.program.process.pid)
        for child in (process / "task" / str(self.program.process.pid) / "children").read_text().split():
            with contextlib.suppress(OSError):
                if word.encode() in (pathlib.Path("/proc") / child / "cmdline").read_bytes().split(b"\0"):
                    return child
        return None


def variables(environment):
    return sorted(filter(None, environment.split(b"\0")))


if __name__ == "__main__":
    program.main()
