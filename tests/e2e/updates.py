#!/usr/bin/python3
"""The running program replaces itself: silently from the tray, only after the window has closed, and on request."""
import functools
import http.server
import json
import os
import pathlib
import re
import shutil
import signal
import ssl
import subprocess
import threading
import time
import unittest

import program
from program import wait_until

RELEASE = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "release"


class Server:
    """Serves a folder over https on this machine, with a certificate made on the spot."""

    def __init__(self, folder):
        self.folder = folder
        key, self.certificate = folder / "server.key", folder / "server.pem"
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
             "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
             "-keyout", str(key), "-out", str(self.certificate)],
            check=True, capture_output=True,
        )  # fmt: skip
        handler = functools.partial(Quiet, directory=str(folder / "public"))
        self._server = http.server.ThreadingHTTPServer(("localhost", 0), handler)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.certificate, key)
        self._server.socket = context.wrap_socket(self._server.socket, server_side=True)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def address(self, name):
        return f"https://localhost:{self._server.server_port}/{name}"

    def close(self):
        self._server.shutdown()
        self._server.server_close()


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        """Says nothing."""


def version_of(bundle):
    text = (bundle / "Contents/Info.plist").read_text()
    return re.search(r"<key>CFBundleVersion</key>\s*<string>([^<]*)", text).group(1)


def replace_text(file, text):
    """Beside it and renamed: the file may be the build's own, by a hard link."""
    beside = file.with_name(file.name + ".new")
    beside.write_text(text)
    beside.rename(file)


def running(executable):
    """The processes that run this executable, wherever an update has moved it meanwhile."""
    found = []
    for process in pathlib.Path("/proc").iterdir():
        try:
            if process.name.isdigit() and os.readlink(process / "exe") == str(executable):
                found.append(int(process.name))
        except OSError:
            continue
    return found


def running_below(folder, name):
    """The processes that run a file of this name in any copy below the folder, removed ones included."""
    found = []
    for process in pathlib.Path("/proc").iterdir():
        try:
            target = os.readlink(process / "exe") if process.name.isdigit() else ""
        except OSError:
            continue
        if target.startswith(f"{folder}/") and target.removesuffix(" (deleted)").endswith(f"/{name}"):
            found.append(int(process.name))
    return found


def end_everything_below(folder):
    # The worker first: it starts a version again that ends without a reason.
    for name in ("Helpers/ferrobank-update", "Linux/Ferrobank"):
        for process in running_below(folder, name):
            os.kill(process, signal.SIGKILL)


class Updates(program.ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.folder = cls.desktop.folder / "releases"
        (cls.folder / "public").mkdir(parents=True)
        cls.server = Server(cls.folder)
        cls.addClassCleanup(cls.server.close)
        cls.signing_key = cls.folder / "key"
        cls.public_key, cls.spare_key = (
            subprocess.run([str(RELEASE), "new-key", str(file)], check=True, capture_output=True, text=True).stdout.strip()
            for file in (cls.signing_key, cls.folder / "spare")
        )
        cls.published = False

    def setUp(self):
        super().setUp()
        self.mark(self.program.bundle, "1.0.0")
        if not Updates.published:
            self.publish("1.0.1")
            Updates.published = True
        self.drive.says()
        self.program.finish_setup()
        self.addCleanup(self.end_all)

    def end_all(self):
        end_everything_below(self.desktop.folder)
        for name in (".local", ".config"):
            shutil.rmtree(self.desktop.home / name / "state", ignore_errors=True)
        program.remove(self.staging)

    @property
    def staging(self):
        return self.program.bundle.with_name(f".{self.program.bundle.name}-update")

    def mark(self, bundle, version, automatic=True):
        """Makes a copy of the bundle one that updates itself from our server."""
        list_file = bundle / "Contents/Info.plist"
        text = re.sub(r"(<key>CFBundle(ShortVersionString|Version)</key>\s*<string>)[^<]*", rf"\g<1>{version}",
                      list_file.read_text())  # fmt: skip
        word = "true" if automatic else "false"
        ours = (f"<key>SUFeedURL</key><string>{self.server.address('feed.xml')}</string>"
                f"<key>SUPublicEDKeys</key><array><string>{self.public_key}</string>"
                f"<string>{self.spare_key}</string></array>"
                f"<key>SUEnableAutomaticChecks</key><{word}/><key>SUAutomaticallyUpdate</key><{word}/>")  # fmt: skip
        replace_text(list_file, text.replace("</dict>\n</plist>", ours + "</dict>\n</plist>"))
        replace_text(bundle / "Contents/Resources/install-kind", "folder\n")
        replace_text(bundle / "Contents/Resources/update-authority.pem", self.server.certificate.read_text())

    def publish(self, version):
        bundle = self.folder / "next" / "Ferrobank.app"
        program.copy_linked(self.program.bundle, bundle)
        self.mark(bundle, version)
        # Nothing that trusts our own certificate is published; the last version of a test needs none.
        (bundle / "Contents/Resources/update-authority.pem").unlink()
        notes = self.folder / "notes.md"
        notes.write_text("* The drive starts faster.\n* Two mistakes are corrected.\n")
        public = self.folder / "public"
        subprocess.run(
            [str(RELEASE), "publish", "--key", str(self.signing_key), "--spare-key", self.spare_key, "--bundle", str(bundle), "--out", str(public),
             "--feed", str(public / "feed.xml"), "--feed-url", self.server.address("feed.xml"),
             "--archive-url", self.server.address(f"Ferrobank_{version}.tar.zst"), "--notes", str(notes),
             "--page", "https://example.org/ferrobank"],
            check=True,
        )  # fmt: skip
        shutil.rmtree(self.folder / "next")

    def wait_for_new_version(self, old):
        """The new version is installed and runs as another process, which is returned."""
        wait_until(lambda: version_of(self.program.bundle) == "1.0.1", "the new version is installed", 90)
        processes = wait_until(
            lambda: [one for one in running(self.program.executable) if one != old], "the new version runs", 30
        )
        self.assertEqual(len(processes), 1)
        self.program.process.wait(timeout=30)
        return processes[0]

    def test_tray_program_updates_itself_without_a_window(self):
        self.program.start()
        self.tray()
        old = self.program.process.pid
        seen = []

        def is_installed():
            seen.extend(self.windows())
            return version_of(self.program.bundle) == "1.0.1"

        wait_until(is_installed, "the new version is installed", 90)
        new = self.wait_for_new_version(old)
        wait_until(lambda: "Open Ferrobank" in self.tray().lines(), "the new version's menu is there", 30)
        self.assertEqual(seen, [])
        arguments = pathlib.Path(f"/proc/{new}/cmdline").read_bytes().split(b"\0")
        self.assertEqual(arguments[1:3], [b"--relaunched-from", b"1.0.0"])
        wait_until(lambda: not (self.staging / "trial").exists(), "the new version has reported that it works", 40)
        self.assertEqual(running(self.program.executable), [new])
        self.assert_old_version_goes_with_its_last_process()

    def assert_old_version_goes_with_its_last_process(self):
        """The drive's server still runs from the old files; they stay exactly as long as it does."""
        self.assertTrue((self.staging / "next").exists())
        subprocess.run([str(self.program.executable), "--unregister"], check=True, capture_output=True)
        worker = self.program.bundle / "Contents/Helpers/ferrobank-update"
        request = json.dumps({"bundle": str(self.program.bundle)})

        def is_clean():
            subprocess.run([str(worker), "status"], input=request, text=True, check=True, capture_output=True)
            return sorted(os.listdir(self.staging)) == ["lock", "trial-lock"]

        wait_until(is_clean, "the old version is removed", 30)

    def test_update_waits_while_the_window_is_open_and_is_installed_when_it_closes(self):
        self.program.start()
        self.tray().choose("Open Ferrobank")
        self.see("Space saved")
        old = self.program.process.pid
        wait_until(lambda: (self.staging / "staged.json").exists(), "the update waits", 90)
        time.sleep(3)  # nothing is to happen, and that takes time to see
        self.assertEqual(version_of(self.program.bundle), "1.0.0")
        self.assertTrue(self.windows())
        self.click("Close", "push button")
        self.wait_for_new_version(old)

    def test_update_that_waits_is_installed_when_the_program_quits(self):
        self.program.start()
        self.tray().choose("Open Ferrobank")
        self.see("Space saved")
        wait_until(lambda: (self.staging / "staged.json").exists(), "the update waits", 90)
        # The record comes before the worker has told the program of it.
        children = pathlib.Path(f"/proc/{self.program.process.pid}/task/{self.program.process.pid}/children")
        wait_until(lambda: children.read_text().strip() == "", "the worker has ended", 30)
        self.see("Space saved")
        status, _ = self.program.end()
        self.assertEqual(status, 0)
        wait_until(lambda: version_of(self.program.bundle) == "1.0.1", "the new version is installed", 30)
        self.assertEqual(running(self.program.executable), [])

    def test_person_checks_reads_and_installs(self):
        self.mark_asked_only()
        self.program.start()
        old = self.program.process.pid
        self.tray().choose("Check for Updates…")
        self.see("A new version of Ferrobank is available", limit=30)
        self.see("Ferrobank 1.0.1 is now available; you have 1.0.0.")
        self.shoot("found")
        self.click("Install Update", "push button")
        self.see("Ready to install", limit=90)
        self.shoot("ready")
        self.key("Return")
        self.wait_for_new_version(old)

    def test_person_reads_that_nothing_is_newer(self):
        self.mark_asked_only("1.0.1")
        self.program.start()
        self.tray().choose("Check for Updates…")
        self.see("You’re up to date!", limit=30)
        self.shoot("up-to-date")
        self.key("Escape")
        wait_until(lambda: not self.sees("You’re up to date!"), "the window has closed")
        self.assertIsNone(self.program.process.poll())

    def test_copy_replaced_by_hand_while_it_runs_offers_the_relaunch(self):
        self.mark_asked_only()
        self.program.start()
        old = self.program.process.pid
        self.tray().choose("Open Ferrobank")
        self.see("Space saved")
        other = self.program.bundle.with_name("other")
        program.copy_linked(self.program.bundle, other)
        list_file = other / "Contents/Info.plist"
        replace_text(list_file, list_file.read_text().replace("<string>1.0.0</string>", "<string>1.0.5</string>"))
        program.remove(self.program.bundle)
        other.rename(self.program.bundle)
        # Every page still works: nothing of it is read from the bundle once the window is there.
        self.tray().choose("Check for Updates…")
        self.see("Ferrobank was updated", limit=30)
        self.see("Ferrobank 1.0.5 is installed; 1.0.0 is still running. Relaunch to finish the update.")
        self.shoot("replaced")
        self.key("Return")
        processes = wait_until(
            lambda: [one for one in running(self.program.executable) if one != old], "the new version runs", 30
        )
        self.program.process.wait(timeout=30)
        arguments = pathlib.Path(f"/proc/{processes[0]}/cmdline").read_bytes().split(b"\0")
        self.assertEqual(arguments[1:3], [b"--relaunched-from", b"1.0.0"])

    def test_version_that_cannot_start_is_taken_back(self):
        """As after an update whose new version crashes before it can show anything."""
        self.mark_asked_only()
        broken = self.program.bundle.with_name("broken")
        program.copy_linked(self.program.bundle, broken)
        self.staging.mkdir(mode=0o700)
        (self.staging / "next").mkdir()
        self.program.bundle.rename(self.staging / "next" / "Ferrobank.app")
        broken.rename(self.program.bundle)
        self.mark(self.program.bundle, "1.0.1")
        (self.program.bundle / "Contents/Linux/libferrobank-app.so").unlink()
        (self.staging / "trial").write_text("1.0.1\n1.0.0\n0\n")
        for _ in range(2):
            self.assertNotEqual(self.program.begin().wait(timeout=20), 0)
            self.assertEqual(version_of(self.program.bundle), "1.0.1")
        self.program.start()
        self.tray()
        self.assertEqual(version_of(self.program.bundle), "1.0.0")
        self.assertRegex((self.staging / "bad").read_text(), r"^1\.0\.1 1 \d+\n$")

    def mark_asked_only(self, version="1.0.0"):
        """The same copy, but one that never checks by itself."""
        list_file = self.program.bundle / "Contents/Info.plist"
        text = list_file.read_text().replace("SUEnableAutomaticChecks</key><true/>", "SUEnableAutomaticChecks</key><false/>")
        replace_text(list_file, re.sub(r"(<key>CFBundleVersion</key>\s*<string>)[^<]*", rf"\g<1>{version}", text))

    def shoot(self, name):
        if folder := os.environ.get("FERROBANK_PICTURES"):
            self.desktop.shoot(pathlib.Path(folder) / f"update-{name}.png")


if __name__ == "__main__":
    if not shutil.which("zstd"):
        raise unittest.SkipTest("zstd is missing")
    program.main()
