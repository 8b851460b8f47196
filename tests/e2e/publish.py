#!/usr/bin/python3
"""Two releases as docs/releasing.md tells: built, packed, signed, put on a server; an installed copy of the first then
finds the second and becomes it."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import program
import updates
from program import wait_until

ROOT = pathlib.Path(__file__).resolve().parents[2]


def copy_of_the_sources(folder):
    """What would be committed now, so that raising the version leaves this checkout alone."""
    names = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT, capture_output=True, check=True
    ).stdout.decode()
    for name in filter(None, names.split("\0")):
        if (ROOT / name).exists():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, folder / name)
    return folder


class Publish(program.ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="fb-publish-")))
        cls.sources = copy_of_the_sources(cls.folder / "sources")
        cls.public = cls.folder / "public"
        cls.public.mkdir()
        cls.server = updates.Server(cls.folder)
        cls.addClassCleanup(cls.server.close)

    def release(self, *arguments):
        done = subprocess.run([str(self.sources / "scripts/release"), *map(str, arguments)], capture_output=True, text=True,
                              check=False, cwd=self.sources)  # fmt: skip
        self.assertEqual(done.returncode, 0, done.stdout[-2000:] + done.stderr[-4000:])
        return done.stdout.strip()

    def publish(self, version):
        """As a maintainer does it: the version is raised, notes are written, one command."""
        lists = self.sources / "CMakeLists.txt"
        lists.write_text(re.sub(r"(project\(Ferrobank VERSION )[\d.]+", rf"\g<1>{version}", lists.read_text()))
        notes = self.folder / "notes.md"
        notes.write_text(f"* This is {version}.\n")
        self.release("publish", "--key", self.folder / "release.key", "--spare-key", self.spare_key,
                     "--feed-url", self.server.address("linux.xml"),
                     "--archive-url", self.server.address(f"Ferrobank_{version}.tar.zst"),
                     "--feed", self.public / "linux.xml", "--out", self.public, "--notes", notes)  # fmt: skip

    def install(self, version):
        """Unpacks what was published, as a person does; the certificate of this server is no public one, and the drive is
        a pretended one."""
        archive = self.public / f"Ferrobank_{version}.tar.zst"
        program.remove(self.program.bundle)
        subprocess.run(["tar", "--zstd", "-xf", archive, "-C", self.program.bundle.parent], check=True)
        contents = self.program.bundle / "Contents"
        shutil.copy(self.server.certificate, contents / "Resources/update-authority.pem")
        (contents / "Helpers/ferrobank").unlink()
        shutil.copy2(os.environ["FERROBANK_SCRIPTED_TOOL"], contents / "Helpers/ferrobank")

    def test_installed_release_finds_the_next_one_and_becomes_it(self):
        self.release("new-key", self.folder / "release.key")
        self.spare_key = self.release("new-key", self.folder / "spare.key")
        self.publish("1.0.0")
        self.install("1.0.0")
        self.assertEqual(updates.version_of(self.program.bundle), "1.0.0")
        self.publish("1.0.1")
        self.assertEqual((self.public / "linux.xml").read_text().count("<item>"), 2)

        self.drive.says()
        self.program.finish_setup()
        self.addCleanup(self.end_all)
        self.program.start()
        old = self.program.process.pid
        self.tray()
        wait_until(lambda: updates.version_of(self.program.bundle) == "1.0.1", "the new version is installed", 120)
        new = wait_until(
            lambda: [one for one in updates.running(self.program.executable) if one != old], "the new version runs", 60
        )
        self.assertEqual(len(new), 1)
        self.program.process.wait(timeout=30)
        staging = self.program.bundle.with_name(f".{self.program.bundle.name}-update")
        wait_until(lambda: not (staging / "trial").exists(), "the new version has reported that it works", 60)

    def end_all(self):
        updates.end_everything_below(self.desktop.folder)


if __name__ == "__main__":
    if not shutil.which("zstd"):
        raise unittest.SkipTest("zstd is missing")
    program.main()
