#!/usr/bin/python3
"""What a package tells a desktop is valid: desktop entry, description for software centres, manual pages, one version."""
import pathlib
import re
import shutil
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGING = ROOT / "packaging"


def version():
    return re.search(r"project\(Ferrobank VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)


def needs(program):
    return unittest.skipUnless(shutil.which(program), f"{program} is not installed")


class Papers(unittest.TestCase):
    def assert_silent(self, *command):
        done = subprocess.run(list(map(str, command)), capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""))

    @needs("desktop-file-validate")
    def test_desktop_entry_is_valid(self):
        self.assert_silent("desktop-file-validate", PACKAGING / "org.ferrobank.Ferrobank.desktop")

    @needs("appstreamcli")
    def test_description_for_software_centres_is_valid(self):
        done = subprocess.run(
            ["appstreamcli", "validate", "--no-net", "--strict", str(PACKAGING / "org.ferrobank.Ferrobank.metainfo.xml")],
            capture_output=True, text=True, check=False,
        )  # fmt: skip
        self.assertEqual(done.returncode, 0, done.stdout)

    @needs("man")
    def test_manual_pages_format_without_a_warning(self):
        for page in sorted((PACKAGING / "man").glob("*.1")):
            done = subprocess.run(
                ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(page)],
                capture_output=True, text=True, check=False, env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"},
            )  # fmt: skip
            self.assertEqual((done.returncode, done.stderr), (0, ""), page.name)
            self.assertIn("ferrobank", done.stdout.lower())

    def test_manual_pages_name_every_word_of_the_command_line(self):
        application = (PACKAGING / "man/Ferrobank.1").read_text().replace("\\", "")
        for word in ("--register", "--unregister", "--service-status"):
            self.assertIn(word, application)
        tool = (PACKAGING / "man/ferrobank.1").read_text().replace("\\", "")
        for word in ("serve", "status", "check", "restart", "--keep-mounted", "uninstall", "--export", "--delete-store"):
            self.assertIn(word, tool)

    def test_every_paper_names_the_version_that_is_built(self):
        for page in (PACKAGING / "man").glob("*.1"):
            self.assertRegex(page.read_text(), rf'(?m)^\.TH FERROBANK 1 .* "[Ff]errobank {re.escape(version())}"')
        self.assertTrue((PACKAGING / "debian/changelog").read_text().startswith(f"ferrobank ({version()})"))
        metainfo = (PACKAGING / "org.ferrobank.Ferrobank.metainfo.xml").read_text()
        self.assertEqual(re.search(r'<release version="([\d.]+)"', metainfo).group(1), version())

    def test_entry_service_and_launchable_name_one_program(self):
        desktop = (PACKAGING / "org.ferrobank.Ferrobank.desktop").read_text()
        service = (PACKAGING / "org.ferrobank.Ferrobank.service").read_text()
        lines = [line for text in (desktop, service) for line in text.splitlines() if line.startswith("Exec=")]
        started = {line.removeprefix("Exec=").split()[0] for line in lines}
        self.assertEqual(len(started), 1)
        self.assertIn("TryExec=" + started.pop(), desktop)

    def test_screenshots_exist_in_this_repository(self):
        metainfo = (PACKAGING / "org.ferrobank.Ferrobank.metainfo.xml").read_text()
        pictures = re.findall(r"<image>[^<]*/screenshots/([^<]+)</image>", metainfo)
        self.assertTrue(pictures)
        for picture in pictures:
            self.assertTrue((ROOT / "docs/screenshots" / picture).exists(), picture)


if __name__ == "__main__":
    unittest.main(verbosity=2)
