#!/usr/bin/python3
"""The folder's archive, as somebody without administrator's rights uses it: unpack in the home folder, start, register,
put the next version beside it, unregister, throw away."""
import json
import os
import pathlib
import shutil
import stat
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/e2e"))

import program  # noqa: E402
from program import wait_until  # noqa: E402


class FolderArchive(program.ProgramTest):
    def setUp(self):
        super().setUp()
        archives = sorted((ROOT / "build/package").glob("ferrobank-*.tar.zst"))
        if not archives:
            raise unittest.SkipTest("there is no archive; scripts/package builds it")
        self.place = self.desktop.home / ".local/opt"
        self.place.mkdir(parents=True)
        subprocess.run(["tar", "--zstd", "-xf", archives[-1], "-C", self.place], check=True)
        self.top = self.place / "ferrobank"
        self.version = os.readlink(self.top / "current").removeprefix("versions/")
        self.bundle = self.top / "versions" / self.version / "Ferrobank.app"
        # The drive is a pretended one; all else is what was unpacked.
        tool = self.bundle / "Contents/Helpers/ferrobank"
        tool.unlink()
        shutil.copy2(os.environ["FERROBANK_SCRIPTED_TOOL"], tool)
        self.program.executable = self.top / "Ferrobank"
        self.drive.pretend(mount_after=1)

    def run_word(self, word):
        done = subprocess.run([str(self.program.executable), word], capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return json.loads(done.stdout)

    def unit(self):
        return self.desktop.home / ".local/share/systemd/user/org.ferrobank.Ferrobank.agent.service"

    def test_archive_holds_one_folder_that_may_update_itself(self):
        self.assertEqual(os.listdir(self.place), ["ferrobank"])
        self.assertEqual(sorted(os.listdir(self.top)), ["Ferrobank", "current", "versions"])
        marker = (self.bundle / "Contents/Resources/install-kind").read_text()
        self.assertEqual(marker.split("\n")[0], "folder")
        for where, folders, files in os.walk(self.top):
            for name in folders + files:
                mode = os.lstat(os.path.join(where, name)).st_mode
                if not stat.S_ISLNK(mode):
                    self.assertEqual(mode & 0o022, 0, name)
        worker = self.bundle / "Contents/Helpers/ferrobank-update"
        request = json.dumps({"bundle": str(self.bundle)})
        status = subprocess.run([str(worker), "status"], input=request, capture_output=True, text=True, check=True)
        self.assertTrue(json.loads(status.stdout)["place"]["mayReplace"], status.stdout)

    def test_it_starts_with_the_welcome_page_and_sets_up(self):
        self.program.start()
        self.click("Continue")
        self.click("Allow and Set Up")
        self.see("Mounted at ~/Ferrobank.", limit=60)
        self.assertEqual(self.run_word("--service-status")["agent"], "enabled")

    def test_entries_name_the_path_that_the_next_version_keeps(self):
        self.assertEqual(self.run_word("--register")["agent"], "enabled")
        text = self.unit().read_text()
        self.assertIn(f"{self.top}/current/Ferrobank.app/Contents/Helpers/ferrobank", text)
        self.assertNotIn("/versions/", text)

        next_version = self.top / "versions/99.0.0"
        shutil.copytree(self.bundle.parent, next_version)
        link = self.top / "current.new"
        link.symlink_to("versions/99.0.0")
        link.rename(self.top / "current")
        shutil.rmtree(self.bundle.parent)
        self.assertEqual(self.run_word("--service-status")["agent"], "enabled")
        self.assertEqual(self.unit().read_text(), text)

    def test_nothing_is_left_once_it_is_unregistered_and_thrown_away(self):
        before = self.files_of_home()
        self.run_word("--register")
        self.assertTrue(self.unit().exists())
        self.assertEqual(self.run_word("--unregister"), {"login_item": "not-registered", "agent": "not-registered"})
        self.assertEqual(self.files_of_home() - before, set())
        wait_until(lambda: not self.running(), "nothing runs from the folder any more")

    def running(self):
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if os.readlink(process / "exe").startswith(str(self.top)):
                    found.append(process.name)
            except OSError:
                continue
        return found

    def files_of_home(self):
        """Files and links, without what the scripted tool notes for itself."""
        return {
            os.path.join(where, name)
            for where, _, names in os.walk(self.desktop.home)
            for name in names
            if name not in ("runs", ".ferrobank-scenario", "pretend-drive.json", "ferrobank.log")
        }


if __name__ == "__main__":
    program.main()
