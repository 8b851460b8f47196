#!/usr/bin/python3
"""The package in a fresh Debian 12: installed, started for the first time, upgraded while it runs, removed and purged."""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest

import fresh_root
from fresh_root import USER

PACKAGES = fresh_root.CACHE / "packages"
BUNDLE = "/usr/lib/ferrobank/Ferrobank.app"
EXECUTABLE = f"{BUNDLE}/Contents/Linux/Ferrobank"
CANNOT = 77
# Runs inside, where the accessibility bus is.
PRESS = """
import sys, time
sys.path.insert(0, "/tests/desktop")
import a11y
end = time.monotonic() + 60
for name in sys.argv[1:]:
    while True:
        thing = a11y.find("Ferrobank", name)
        if thing is not None:
            break
        if time.monotonic() > end:
            sys.exit(f"{name!r} is not shown; there are {a11y.described('Ferrobank')}")
        time.sleep(0.1)
    if name != sys.argv[-1]:
        a11y.press(thing)
"""


def wait_until(condition, what, limit=30.0):
    end = time.monotonic() + limit
    while not (result := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"After {limit:g} s still waiting until {what}.")
        time.sleep(0.1)
    return result


def built_package():
    found = sorted((fresh_root.ROOT / "build/package").glob("ferrobank_*.deb"))
    if not found:
        raise unittest.SkipTest("there is no package; scripts/package builds it")
    return found[-1]


def field(package, name):
    return subprocess.run(["dpkg-deb", "-f", package, name], capture_output=True, text=True, check=True).stdout.strip()


def with_version(package, version):
    """The same package as a later version of itself."""
    folder = PACKAGES / "raised"
    shutil.rmtree(folder, ignore_errors=True)
    subprocess.run(["dpkg-deb", "-R", package, folder], check=True)
    control = folder / "DEBIAN/control"
    control.write_text(re.sub(r"(?m)^Version: .*$", f"Version: {version}", control.read_text()))
    properties = folder / BUNDLE[1:] / "Contents/Info.plist"
    text = re.sub(r"(<key>CFBundle(?:ShortVersionString|Version)</key>\s*<string>)[^<]*", rf"\g<1>{version}",
                  properties.read_text())  # fmt: skip
    properties.write_text(text)
    sums = folder / "DEBIAN/md5sums"
    digest = subprocess.run(["md5sum", properties], capture_output=True, text=True, check=True).stdout.split()[0]
    sums.write_text(re.sub(r"(?m)^\w+(?=  .*Info\.plist$)", digest, sums.read_text()))
    raised = PACKAGES / f"ferrobank_{version}.deb"
    subprocess.run(["dpkg-deb", "--root-owner-group", "-b", folder, raised], check=True, capture_output=True)
    shutil.rmtree(folder)
    return raised


class Contents(unittest.TestCase):
    def test_lintian_finds_no_error_and_no_warning(self):
        if not shutil.which("lintian"):
            self.skipTest("lintian is not installed")
        done = subprocess.run(["lintian", "--allow-root", "--fail-on", "error,warning", built_package()], capture_output=True,
                              text=True, check=False)  # fmt: skip
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)

    def test_what_is_loaded_by_name_is_named_too(self):
        """The packages of modules that pages import, which no library tells of."""
        imports = set()
        for page in (fresh_root.ROOT / "app").glob("**/*.qml"):
            imports.update(re.findall(r"(?m)^import (Qt[\w.]*)", page.read_text()))
        self.assertTrue(imports)
        depends = field(built_package(), "Depends")
        for module in imports - {"QtQml"}:
            package = "qml6-module-" + module.lower().replace(".", "-")
            self.assertIn(package, depends)
        for program in ("btrfs-progs", "udisks2", "libqt6svg6"):
            self.assertIn(program, depends)


class Package(unittest.TestCase):
    def setUp(self):
        package = built_package()
        PACKAGES.mkdir(parents=True, exist_ok=True)
        self.addCleanup(shutil.rmtree, PACKAGES, ignore_errors=True)
        shutil.copy(package, PACKAGES / "ferrobank_1.deb")
        with_version(package, "99.0.0")
        self.depends = field(package, "Depends")
        self.root = self.enterContext(fresh_root.FreshRoot())
        self.root.apt("update")

    def test_life_of_an_installation(self):
        self.root.apt("satisfy", self.depends)
        self.addCleanup(self._show)
        before = self.root.files()

        self.root.apt("install", "/packages/ferrobank_1.deb")
        self.assert_complete()
        self.set_up_desktop()
        self.first_run()
        self.upgrade_while_running()
        self.remove()

        self.root.run("/tests/desktop/desktop.sh", "down", "/tmp/desk")
        after = self.root.files()
        self.assertEqual([path for path in before if path not in after], [])
        left = [path for path, what in after.items() if before.get(path) != what]
        home = f"/home/{USER}"
        store = f"{home}/Library/Application Support/Ferrobank/store"
        parents = [str(one) for one in pathlib.PurePosixPath(store).parents]
        # The user's own: the drive's stored data, and what the private desktop of this test has written.
        desktop = (f"{home}/.config", f"{home}/.cache", f"{home}/.local", f"{home}/.dbus", "/root")
        ours = [
            path for path in left
            if not path.startswith(store) and path not in parents
            and (not path.startswith(desktop) or "ferrobank" in path.lower())
        ]  # fmt: skip
        self.assertEqual(ours, [])
        self.assertTrue((self.root.folder / store[1:]).is_dir(), "the store is the user's and stays")
        self.assertEqual(list((self.root.folder / "var/lib/dpkg/info").glob("ferrobank*")), [])

    def _show(self):
        log = self.root.folder / "tmp/program.log"
        if log.exists():
            print(log.read_text(), file=sys.stderr)

    def assert_complete(self):
        """Everything a desktop looks for is there, and every library is found with the package's own needs alone."""
        for name in ("usr/bin/Ferrobank", "usr/bin/ferrobank", "usr/share/applications/org.ferrobank.Ferrobank.desktop",
                     "usr/share/metainfo/org.ferrobank.Ferrobank.metainfo.xml",
                     "usr/share/dbus-1/services/org.ferrobank.Ferrobank.service",
                     "usr/share/icons/hicolor/symbolic/apps/org.ferrobank.Ferrobank-symbolic.svg",
                     "usr/share/icons/hicolor/256x256/apps/org.ferrobank.Ferrobank.png",
                     "usr/share/polkit-1/actions/org.ferrobank.Ferrobank.policy",
                     "usr/share/polkit-1/actions/org.ferrobank.Ferrobank.mounting.policy",
                     "usr/share/bash-completion/completions/ferrobank", "usr/share/zsh/vendor-completions/_ferrobank",
                     "usr/share/fish/vendor_completions.d/ferrobank.fish",
                     "usr/share/man/man1/Ferrobank.1.gz", "usr/share/man/man1/ferrobank.1.gz"):  # fmt: skip
            self.assertTrue((self.root.folder / name).exists(), name)
        contents = self.root.folder / BUNDLE[1:] / "Contents"
        self.assertEqual((contents / "Resources/install-kind").read_text().split("\n")[0], "package")
        for file in [*(contents / "Linux").iterdir(), *(contents / "Helpers").iterdir()]:
            libraries = self.root.run("ldd", f"{BUNDLE}/{file.relative_to(contents.parent)}").stdout
            self.assertNotIn("not found", libraries, file.name)
        for program in ("ferrobank", "Ferrobank"):
            self.assertTrue(os.readlink(self.root.folder / "usr/bin" / program).startswith("../lib/ferrobank/"))
        self.assertEqual(self.root.run("dpkg", "--verify", "ferrobank").stdout, "")
        self.assertIn("ferrobank", self.root.run("ferrobank", "--version", user=USER).stdout)

    def set_up_desktop(self):
        self.root.run("/tests/desktop/desktop.sh", "up", "/tmp/desk", "--no-systemd", "--user", USER,
                      "--home", f"/home/{USER}")  # fmt: skip

    def on_desktop(self, *command, check=True):
        return self.root.run("/tests/desktop/desktop.sh", "exec", "/tmp/desk", *command, check=check)

    def press(self, *names):
        """Presses what has these names, one after the other; the last is only waited for."""
        self.on_desktop("python3", "-B", "-c", PRESS, *names)

    def shoot(self, name):
        if folder := os.environ.get("FERROBANK_PICTURES"):
            self.root.run("/tests/desktop/desktop.sh", "shot", "/tmp/desk", "/tmp/shot.png")
            shutil.copy(self.root.folder / "tmp/shot.png", pathlib.Path(folder) / f"package-{name}.png")

    def start(self):
        with open(self.root.folder / "tmp/program.log", "a", encoding="utf-8") as log:
            return self.root.start("/tests/desktop/desktop.sh", "exec", "/tmp/desk", EXECUTABLE, stdout=log, stderr=log)

    def service_status(self):
        return json.loads(self.on_desktop("Ferrobank", "--service-status").stdout)

    def first_run(self):
        """As far as a machine without block devices of its own gets: everything but the mount."""
        self.program = self.start()
        self.press("Welcome to Ferrobank")
        self.shoot("welcome")
        self.press("Continue", "Allow and Set Up", "Set up your drive")
        wait_until(lambda: self.service_status()["agent"] == "enabled", "the drive's service is registered")
        wait_until(lambda: self.root.processes(f"{BUNDLE}/Contents/Helpers/ferrobank"), "the drive's service runs")
        store = self.root.home() / "Library/Application Support/Ferrobank/store"
        wait_until(lambda: (store / "drive.btrfs").exists(), "the drive tool has made the store")
        self.shoot("setup")
        messages = (self.root.folder / "tmp/program.log").read_text()
        self.assertNotIn("is not installed", messages)
        self.assertNotIn("QML", messages)

    def upgrade_while_running(self):
        running = self.root.processes(EXECUTABLE)
        self.assertEqual(len(running), 1)
        self.root.apt("install", "/packages/ferrobank_99.0.0.deb")
        self.assertEqual(self.root.run("dpkg-query", "-W", "-f", "${Version}", "ferrobank").stdout, "99.0.0")
        self.assertEqual(self.root.processes(EXECUTABLE), running, "the running program goes on")
        self.assertEqual(self.service_status()["agent"], "enabled")
        # A second start finds the first one, although its file has been replaced.
        self.assertEqual(self.on_desktop(EXECUTABLE).returncode, 0)
        self.press("Set up your drive")
        self.shoot("upgraded")

    def remove(self):
        self.root.apt("remove", "ferrobank")
        self.assertFalse((self.root.folder / BUNDLE[1:]).exists())
        wait_until(lambda: not self.root.processes("Helpers/ferrobank"), "the drive's service has ended")
        home = self.root.home()
        self.assertEqual(list((home / ".config").glob("autostart/*errobank*")), [])
        # What runs is not torn down; it ends as always when it is told to.
        for process in self.root.processes("Contents/Linux/Ferrobank"):
            os.kill(process, signal.SIGTERM)
        wait_until(lambda: not self.root.processes("Contents/Linux/Ferrobank"), "the program has ended")
        self.program.wait(timeout=10)
        self.root.apt("purge", "ferrobank")


if __name__ == "__main__":
    try:
        fresh_root.skip_unless_possible()
        fresh_root.keep_mounts_private()
        built_package()
    except unittest.SkipTest as reason:
        print(f"Skipped: {reason}")
        sys.exit(CANNOT)
    unittest.main(verbosity=2)
