#!/usr/bin/python3
"""A drive's whole life with the real drive tool, as a person goes through it: set up, fill with clones and builds, look
at the space saved, check, repair, restart while in use, take up an update, and uninstall with a copy of all files.

  real_drive.py WithServiceManager        the drive is a unit of a user service manager
  real_drive.py WithoutServiceManager     an autostart entry and a process

With FERROBANK_LONG set, the clones and builds are of this repository too, not only of a small made-up one. Needs root, since
the drive is mounted directly then, and loop devices; the mounts are private to the test.
"""
import hashlib
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import unittest

import program
from program import LINK, wait_until

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent.parent
UNIT = "org.ferrobank.Ferrobank.agent.service"
UNITS = {"bytes": 1, "kB": 1e3, "KB": 1e3, "MB": 1e6, "GB": 1e9}
CHECKS = [
    "Ferrobank is running",
    "Drive is mounted and writable",
    "Starts at login",
    "Room on this computer",
    "The drive's store is sound",
    "Stored data is intact",
    "Repeated data is stored once",
]


def why_not():
    """What this machine lacks for a real drive."""
    if os.geteuid() != 0:
        return "mounting the drive directly needs root"
    if not os.path.exists("/dev/loop-control"):
        return "this machine has no loop devices"
    kernel = pathlib.Path("/proc/filesystems")
    if "btrfs" not in kernel.read_text().split() and shutil.which("modprobe"):
        subprocess.run(["modprobe", "btrfs"], capture_output=True, check=False)
    if "btrfs" not in kernel.read_text().split():
        return "this machine's kernel has no Btrfs"
    if not (pathlib.Path(os.environ["FERROBANK_BUNDLE"]) / "Contents/Helpers/ferrobank").exists():
        return "the bundle has no drive tool yet"
    return None


def run(*command, **how):
    how.setdefault("check", True)
    environment = dict(os.environ, GIT_CONFIG_GLOBAL="/dev/null", GIT_CONFIG_SYSTEM="/dev/null")
    words = [str(word) for word in command]
    return subprocess.run(words, capture_output=True, text=True, env=environment, **how)


def make_repository(folder):
    """A small C program of many files, with some data."""
    folder.mkdir()
    generator = random.Random(4711)
    words = [f"{generator.getrandbits(64):016x}" for _ in range(2000)]
    for number in range(30):
        comment = "\n".join("// " + " ".join(generator.choices(words, k=8)) for _ in range(60))
        (folder / f"part{number}.c").write_text(f"{comment}\nint part{number}(void) {{ return {number}; }}\n")
    declarations = "".join(f"int part{number}(void);\n" for number in range(30))
    calls = " + ".join(f"part{number}()" for number in range(30))
    (folder / "main.c").write_text(f"{declarations}int main(void) {{ return ({calls}) == 435 ? 0 : 1; }}\n")
    (folder / "Makefile").write_text("program: $(patsubst %.c,%.o,$(wildcard *.c))\n\t$(CC) -o $@ $^\n")
    # So much of it that the figures are not lost in what the drive's own books take.
    lines = "".join(" ".join(generator.choices(words, k=12)) + "\n" for _ in range(40_000))
    (folder / "words").write_text(lines * 8)
    run("git", "init", "-q", folder)
    run("git", "-C", folder, "add", ".")
    run("git", "-C", folder, "-c", "user.name=Test", "-c", "user.email=test@localhost", "commit", "-q", "-m", "All")


# What gives the volume its icon belongs to the drive, not to its user.
OUR_OWN = {".VolumeIcon.icns", ".VolumeIcon.png", ".directory", ".xdg-volume-info"}


def contents(folder):
    """Hash of every file of the user and target of every link, by path."""
    found = {}
    for place, folders, files in os.walk(folder):
        is_top = pathlib.Path(place) == folder
        if ".ferrobank" in folders and is_top:
            folders.remove(".ferrobank")
        for name in set(files) - (OUR_OWN if is_top else set()):
            path = pathlib.Path(place) / name
            text = os.readlink(path).encode() if path.is_symlink() else path.read_bytes()
            found[str(path.relative_to(folder))] = hashlib.sha256(text).hexdigest()
    return found


def held_by(process, drive):
    """Bytes of the files without a name that a process keeps open on the drive: the space guard is one."""
    held = 0
    for descriptor in pathlib.Path(f"/proc/{process}/fd").iterdir():
        try:
            status = descriptor.stat()
            if os.readlink(descriptor).startswith(f"{drive}/") and status.st_nlink == 0:
                held += status.st_blocks * 512
        except FileNotFoundError:
            pass  # closed meanwhile
    return held


def saved_by_the_file_system(drive, serving):
    """What the files would take less what they do take, from the file system's own books."""
    os.sync()
    inodes = {}
    for place, folders, files in os.walk(drive):
        if ".ferrobank" in folders:
            folders.remove(".ferrobank")
        for name in files:
            status = os.lstat(os.path.join(place, name))
            inodes[status.st_ino] = status.st_blocks * 512
    # One copy of the data, two of the rest; the space guard holds room that nobody uses.
    books = run("btrfs", "filesystem", "df", "--raw", drive).stdout
    in_use = 0
    for profile, used in re.findall(r"^(?:Data|System|Metadata), (\w+): total=\d+, used=(\d+)$", books, re.MULTILINE):
        in_use += int(used) * (2 if profile == "DUP" else 1)
    in_use -= sum(held_by(process, drive) for process in serving)
    return sum(inodes.values()) - in_use


class RealDrive(program.ProgramTest):
    tool = program.Tool.REAL

    @classmethod
    def setUpClass(cls):
        if reason := why_not():
            raise unittest.SkipTest(reason)
        super().setUpClass()

    def setUp(self):
        super().setUp()
        self.home = self.desktop.home
        self.mount = self.home / "Ferrobank"
        self.store = self.home / "Library" / "Application Support" / "Ferrobank" / "store"
        self.addCleanup(self.remove_drive)

    def remove_drive(self):
        """Whatever a failed test left of the drive, before its home is cleared."""
        result = run(self.program.tool, "uninstall", "--delete-store", check=False)
        if result.returncode != 0 and self.mount.is_mount():
            print(result.stderr, file=sys.stderr)
            for process in self.serving():
                os.kill(process, signal.SIGKILL)
            run("umount", "-l", self.mount)

    def test_from_the_first_run_to_the_last_file(self):
        self.set_up()
        self.fill_with_clones_and_builds()
        self.take_up_an_update_with_a_file_open()
        self.see_the_space_saved()
        self.see_all_checks_pass()
        self.stop_and_repair()
        self.restart_while_in_use()
        self.uninstall_with_a_copy()
        self.expect_nothing_left()

    # The steps, in their order.

    def set_up(self):
        self.program.start()
        self.click("Continue")
        self.click("Allow and Set Up")
        self.see("Mounted at ~/Ferrobank.", limit=120)
        wait_until(lambda: self.is_enabled("Continue"), "the setup is finished", 60)
        self.click("Continue")
        self.see("Checking your drive")
        wait_until(lambda: self.is_enabled("Continue"), "the first checks have passed", 60)
        self.click("Continue")
        self.click("Open Ferrobank")
        self.see("Space saved")
        self.assertTrue(self.mount.is_mount())
        self.assertEqual(LINK.resolve(), self.program.tool.resolve())

    def fill_with_clones_and_builds(self):
        origin = self.desktop.folder / "origin"
        self.addCleanup(program.remove, origin)
        make_repository(origin)
        origins = [origin, REPOSITORY] if os.environ.get("FERROBANK_LONG") else [origin]
        for origin in origins:
            clones = [self.mount / f"{origin.name}-{number}" for number in range(3)]
            for clone in clones:
                run("git", "clone", "-q", "--no-local", origin, clone)
            for clone in clones[:2]:
                self.build(clone)
        self.files = contents(self.mount)

    def build(self, clone):
        if (clone / "Makefile").exists():
            run("make", "-s", "-C", clone)
            run(clone / "program")
        else:
            run("cmake", "-S", clone / "drive", "-B", clone / "build", "-G", "Ninja", "-DFERROBANK_DRIVE_TESTS=OFF")
            run("ninja", "-C", clone / "build", "drive_sharing")

    def take_up_an_update_with_a_file_open(self):
        before = self.serving()
        with open(self.mount / "open", "w+") as file:
            file.write("kept")
            run(LINK, "restart", "--keep-mounted")
            file.seek(0)
            self.assertEqual(file.read(), "kept")
        (self.mount / "open").unlink()
        self.assertEqual(self.serving(), before)

    def see_the_space_saved(self):
        agreed = None

        def agrees():
            nonlocal agreed
            agreed = (self.shown_saving(), saved_by_the_file_system(self.mount, self.serving()))
            shown, counted = agreed
            return shown is not None and counted > 0 and abs(shown - counted) <= counted / 100

        try:
            wait_until(agrees, "the dashboard agrees with the file system", 120)
        finally:
            print(f"saved: {agreed[0]} shown, {agreed[1]} by the file system", file=sys.stderr)

    def shown_saving(self):
        """The figure below “Space saved”, in bytes."""
        lines = [name for _, name, _ in self.a11y().described("Ferrobank")]
        if "Nothing saved yet" in lines:
            return 0
        if "Space saved" not in lines:
            return None
        for line in lines[lines.index("Space saved") + 1 :]:
            if found := re.fullmatch(r"([\d.,]+) (\w+)", line):
                return float(found[1].replace(",", "")) * UNITS[found[2]]
        return None

    def see_all_checks_pass(self):
        self.tray().choose("Run Checks…")
        self.see("Ferrobank checks")
        wait_until(lambda: self.rows() == [f"{check}: passed" for check in CHECKS], "all checks have passed", 60)

    def stop_and_repair(self):
        self.stop_serving()
        self.assertFalse(self.mount.is_mount())
        self.click("Run Again")
        self.see("Ferrobank is running: failed", limit=60)
        wait_until(lambda: self.is_enabled("Run Again"), "the checks are done", 60)
        self.click("Restart Ferrobank")
        wait_until(lambda: self.rows() == [f"{check}: passed" for check in CHECKS], "the fix has helped", 90)
        self.assertEqual(contents(self.mount), self.files)
        self.click("Done")

    def restart_while_in_use(self):
        name = next(iter(self.files))
        with open(self.mount / name, "rb"):
            refused = run(LINK, "restart", check=False)
            self.assertEqual(refused.returncode, 1)
            self.assertIn(f"({os.getpid()}). Close it and try again.", refused.stderr)
            self.assertTrue(self.mount.is_mount())
        run(LINK, "restart")
        self.assertEqual(contents(self.mount), self.files)

    def uninstall_with_a_copy(self):
        self.tray().choose("Uninstall Ferrobank…")
        self.click("Delete the drive's data from this computer")
        self.see("Your files will be in the folder above.")
        self.click("Uninstall", "push button")
        self.see("Ferrobank is uninstalled", limit=180)
        self.assertEqual(contents(self.home / "Ferrobank Files"), self.files)
        self.click("Quit")
        self.assertEqual(self.program.process.wait(timeout=20), 0)

    def expect_nothing_left(self):
        self.assertFalse(os.path.lexists(self.mount))
        self.assertFalse(self.store.exists())
        self.assertEqual(self.serving(), [])
        self.assertNotIn(str(self.store), pathlib.Path("/proc/self/mountinfo").read_text())
        for device in pathlib.Path("/sys/block").glob("loop*/loop/backing_file"):
            self.assertNotIn(str(self.store), device.read_text())
        status = json.loads(run(self.program.tool, "status", "--json").stdout)
        self.assertEqual((status["installed"], status["mounted"]), (False, False))
        service = json.loads(run(self.program.executable, "--service-status").stdout)
        self.assertNotEqual(service["agent"], "enabled")

    # What they need.

    def is_enabled(self, name):
        thing = self.a11y().find("Ferrobank", name, "push button")
        return thing is not None and "dimmed" not in (thing.get_description() or "")

    def rows(self):
        return self.a11y().names("Ferrobank", "list item")

    def serving(self):
        """The processes that serve this test's drive."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                words = (process / "cmdline").read_bytes().split(b"\0")
            except OSError:
                continue
            if words[:2] == [os.fsencode(self.program.tool), b"serve"]:
                found.append(int(process.name))
        return found


class WithServiceManager(RealDrive):
    def stop_serving(self):
        run("systemctl", "--user", "stop", UNIT)
        wait_until(lambda: not self.serving(), "the server has ended", 30)


class WithoutServiceManager(RealDrive):
    desktop_options = ("--no-systemd",)

    def stop_serving(self):
        for process in self.serving():
            os.kill(process, signal.SIGTERM)
        wait_until(lambda: not self.serving(), "the server has ended", 30)


del RealDrive


if __name__ == "__main__":
    program.main()
