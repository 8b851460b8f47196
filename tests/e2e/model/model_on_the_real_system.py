#!/usr/bin/python3
"""The model's long operations on a real user service manager, with the scripted drive tool in a copied bundle.

Ends with 77 where the machine cannot run a service manager of its own.
"""

import argparse
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

DESKTOP = Path(__file__).resolve().parents[2] / "support" / "desktop" / "desktop.sh"
UNIT = "org.ferrobank.Ferrobank.agent.service"
CANNOT = 77

options = argparse.Namespace()


class Session:
    """A private session with a bundle of its own; only the bus and the service manager, no display."""

    def __init__(self, drive):
        self.folder = Path(tempfile.mkdtemp(prefix="ferrobank-model-", dir="/tmp"))
        self.home = self.folder / "home of änna"
        self.bundle = self.folder / "a folder" / "Ferrobank.app"
        self.link = self.home / "bin" / "ferrobank"
        self.export = self.home / "Ferrobank Files"
        contents = self.bundle / "Contents"
        shutil.copytree(options.bundle, self.bundle, symlinks=True)
        (contents / "Helpers").mkdir(exist_ok=True)
        self.tool = contents / "Helpers" / "ferrobank"
        shutil.copy(options.tool, self.tool)
        self.console = contents / "Linux" / "model-console"
        shutil.copy(options.console, self.console)
        self.link.parent.mkdir(parents=True)
        self.runs = self.folder / "runs"
        scenario = {"record": str(self.runs), "drive": {"mount_after": 1, "check_pause": 20} | drive}
        Path(f"{self.tool}.scenario").write_text(json.dumps(scenario))

    def start(self):
        home = ["--home", str(self.home)]
        up = subprocess.run([DESKTOP, "up", self.folder / "d", "--no-x", *home], capture_output=True, text=True)
        if up.returncode == CANNOT:
            print(up.stderr, end="")
            sys.exit(CANNOT)
        if up.returncode != 0:
            raise RuntimeError(up.stderr)

    def stop(self):
        subprocess.run([DESKTOP, "down", self.folder / "d"], check=False, capture_output=True)
        shutil.rmtree(self.folder, ignore_errors=True)

    def inside(self, *command, check=True):
        done = subprocess.run(
            [DESKTOP, "exec", self.folder / "d", *map(str, command)],
            check=check, capture_output=True, text=True, timeout=120,
        )
        return done.stdout.splitlines()

    def perform(self, *operations):
        return self.inside(self.console, "--link", self.link, *operations)

    def arguments(self):
        """The argument lists that the tool was given, without those of the polls."""
        if not self.runs.exists():
            return []
        lists = [json.loads(line)["args"] for line in self.runs.read_text().splitlines()]
        return [args for args in lists if args != ["status", "--json"]]

    def unit_state(self):
        return self.inside("systemctl", "--user", "is-enabled", UNIT, check=False)


class ModelOnTheRealSystem(unittest.TestCase):
    def begin(self, **drive):
        self.session = Session(drive)
        self.addCleanup(self.session.stop)
        self.session.start()
        return self.session

    def show(self, lines):
        print("\n".join(["", self.id(), *lines, *(f"  tool: {args}" for args in self.session.arguments())]))

    def test_setup_registers_mounts_and_links(self):
        session = self.begin()
        lines = session.perform("setup")
        self.show(lines)
        self.assertIn("login|pass|Registered with macOS; it shows in System Settings › Login Items.|", lines)
        self.assertIn("mount|pass|Mounted at ~/Ferrobank.|", lines)
        self.assertIn("finder|pass|In Finder's sidebar under Locations, with its own icon.|", lines)
        self.assertEqual(lines[-2:], ["setup is done", "setup is recorded"])
        self.assertEqual(session.unit_state(), ["enabled"])
        self.assertEqual(os.readlink(session.link), str(session.tool))
        self.assertEqual(session.arguments(), [["serve"]])
        autostart = session.home / ".config" / "autostart" / "org.ferrobank.Ferrobank.desktop"
        self.assertTrue(autostart.exists())

    def test_setup_waits_for_a_masked_unit_and_goes_on_once_it_is_allowed(self):
        session = self.begin()
        session.perform("setup")
        session.inside("systemctl", "--user", "mask", "--now", UNIT)
        console = subprocess.Popen(
            [DESKTOP, "exec", session.folder / "d", session.console, "--link", session.link, "setup"],
            stdout=subprocess.PIPE, text=True,
        )
        self.addCleanup(console.stdout.close)
        try:
            for line in console.stdout:
                if line.startswith("login|fail|Ferrobank is switched off in Login Items.|"):
                    break
            session.inside("systemctl", "--user", "unmask", UNIT)
            session.inside("systemctl", "--user", "enable", "--now", UNIT)
            rest = console.stdout.read().splitlines()
            self.assertEqual(console.wait(60), 0)
        finally:
            if console.poll() is None:
                console.kill()
                console.wait()
        self.show(rest)
        self.assertEqual(rest[-2:], ["setup is done", "setup is recorded"])

    def test_setup_after_a_refused_mount_restarts_the_drive(self):
        session = self.begin(attach_error="operation not permitted", attach_error_times=1)
        refused = "mount|fail|The drive could not be attached: operation not permitted|"
        first = session.perform("setup")
        self.show(first)
        self.assertTrue(any(line.startswith(refused) for line in first))
        self.assertEqual(first[-2:], ["setup is not done", "setup is not recorded"])
        second = session.perform("setup")
        self.show(second)
        self.assertTrue(any(line.startswith(refused) for line in second), "the error from before the restart counts")
        self.assertEqual(session.arguments(), [["serve"], ["restart"]])
        third = session.perform("setup")
        self.show(third)
        self.assertEqual(third[-2:], ["setup is done", "setup is recorded"])

    def test_restart_fix_restarts_the_drive_and_checks_it(self):
        session = self.begin()
        session.perform("setup")
        lines = session.perform("restart")
        self.show(lines)
        self.assertIn("checks passed", lines)
        self.assertEqual(session.arguments(), [["serve"], ["restart"], ["check", "--json"]])

    def test_restart_fix_registers_an_agent_that_is_gone(self):
        session = self.begin()
        lines = session.perform("restart")
        self.show(lines)
        self.assertEqual(session.unit_state(), ["enabled"])
        self.assertEqual(session.arguments(), [["serve"], ["check", "--json"]])

    def test_uninstall_copies_the_files_and_clears_the_record(self):
        session = self.begin()
        session.perform("setup")
        lines = session.perform("export", session.export)
        self.show(lines)
        done = "uninstall|done|Your files are in ~/Ferrobank Files. The drive's data is deleted from this Mac."
        self.assertEqual(lines, ["uninstall|running", done, "setup is not recorded"])
        uninstall = ["uninstall", "--export", str(session.export), "--delete-store"]
        self.assertEqual(session.arguments(), [["serve"], uninstall])

    def test_failed_uninstall_keeps_the_record(self):
        session = self.begin(uninstall_error="volume busy")
        session.perform("setup")
        lines = session.perform("uninstall")
        self.show(lines)
        self.assertEqual(lines, ["uninstall|running", "uninstall|failed|volume busy", "setup is recorded"])


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--bundle", required=True)
    parser.add_argument("--console", required=True)
    parser.add_argument("--tool", required=True)
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest], verbosity=2)
