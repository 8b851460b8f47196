#!/usr/bin/python3
"""scripts/release: keys, archives that come out the same twice, feeds that the worker accepts, and what it refuses."""
import hashlib
import io
import json
import pathlib
import shutil
import subprocess
import tarfile
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "release"


def run(*arguments):
    return subprocess.run([str(SCRIPT), *map(str, arguments)], capture_output=True, text=True, check=False)


class Release(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.key = self.folder / "key"
        self.public = run("new-key", self.key).stdout.strip()
        self.bundle = self.folder / "Ferrobank.app"
        self.feed = self.folder / "feed.xml"
        self.make_bundle("1.0.1")

    def make_bundle(self, version, kind="folder", key=None):
        files = {
            "Info.plist": f"<plist><dict><key>CFBundleVersion</key><string>{version}</string><key>SUFeedURL</key>"
            f"<string>https://e.org/f.xml</string><key>SUPublicEDKeys</key><array><string>{key or self.public}"
            "</string></array></dict></plist>",
            "Resources/install-kind": kind + "\n",
            "Linux/Ferrobank": "program",
            "Linux/libferrobank-app.so": "library",
            "Helpers/ferrobank-update": "worker",
            "Helpers/ferrobank": "tool",
            "Helpers/ferrobank-drive": "drive",
        }
        shutil.rmtree(self.bundle, ignore_errors=True)
        for name, text in files.items():
            file = self.bundle / "Contents" / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
        (self.bundle / "Contents/Linux/Ferrobank").chmod(0o755)
        (self.bundle / "Contents/Linux/alias").symlink_to("Ferrobank")

    def publish(self, *more, out="out"):
        return run("publish", "--key", self.key, "--bundle", self.bundle, "--out", self.folder / out, "--feed", self.feed,
                   "--feed-url", "https://e.org/f.xml", "--archive-url", "https://e.org/a.tar.zst", *more)  # fmt: skip

    def members(self, out="out"):
        raw = subprocess.run(["zstd", "-dc", self.folder / out / "a.tar.zst"], capture_output=True, check=True).stdout
        with tarfile.open(fileobj=io.BytesIO(raw)) as tar:
            return [(one.name, one.mode, one.linkname, tar.extractfile(one).read() if one.isfile() else b"") for one in tar]

    def test_key_is_private_and_never_overwritten(self):
        self.assertEqual(self.key.stat().st_mode & 0o777, 0o600)
        self.assertEqual(run("public-key", self.key).stdout.strip(), self.public)
        before = self.key.read_bytes()
        self.assertIn("never overwritten", run("new-key", self.key).stderr)
        self.assertEqual(self.key.read_bytes(), before)

    def test_key_that_others_can_read_is_refused(self):
        self.key.chmod(0o640)
        self.assertIn("read by others", self.publish().stderr)

    def test_manifest_comes_first_and_describes_every_file(self):
        self.assertEqual(self.publish().returncode, 0)
        members = self.members()
        self.assertEqual(members[0][0], "Ferrobank.app/Contents/Resources/update-manifest.json")
        entries = {one["path"]: one for one in json.loads(members[0][3])["entries"]}
        self.assertEqual(len(entries), len(members) - 1)
        for name, mode, link, content in members[1:]:
            entry = entries[name.removeprefix("Ferrobank.app/")]
            if link:
                self.assertEqual(entry["target"], link)
            else:
                self.assertEqual(entry["sha256"], hashlib.sha256(content).hexdigest())
                self.assertEqual(mode, 0o755 if entry["executable"] else 0o644)

    def test_same_bundle_gives_the_same_archive(self):
        self.publish(out="one")
        self.feed.unlink()
        self.publish(out="two")
        self.assertEqual((self.folder / "one/a.tar.zst").read_bytes(), (self.folder / "two/a.tar.zst").read_bytes())

    def test_feed_ends_with_a_block_over_everything_before_it(self):
        self.publish()
        content, _, block = self.feed.read_bytes().rpartition(b"<!-- sparkle-signatures:\n")
        self.assertIn(b"length: %d\n-->" % len(content), block)
        self.assertIn(b'sparkle:os="linux-', content)
        self.assertIn(b"fb:validUntil", content)

    def test_later_releases_go_on_top_and_old_ones_stay(self):
        self.publish("--critical", "--channel", "beta", "--phased-hours", "24", "--major-below", "1.0")
        self.make_bundle("1.0.2")
        self.assertEqual(self.publish().returncode, 0)
        text = self.feed.read_text()
        self.assertLess(text.index("<sparkle:version>1.0.2"), text.index("<sparkle:version>1.0.1"))
        for part in ("<sparkle:criticalUpdate/>", "<sparkle:channel>beta<", "Interval>86400<", "AutoupdateVersion>1.0<"):
            self.assertEqual(text.count(part), 1)
        self.assertEqual(text.count("sparkle-signatures"), 1)

    def test_published_version_is_never_replaced(self):
        self.publish()
        before = self.feed.read_bytes()
        self.assertIn("in the feed already", self.publish().stderr)
        self.assertEqual(self.feed.read_bytes(), before)

    def test_bundles_that_would_strand_their_users_are_refused(self):
        self.make_bundle("1.0.1", kind="package")
        self.assertIn("marked as", self.publish().stderr)
        self.make_bundle("1.0.1", key="A" * 43 + "=")
        self.assertIn("does not trust", self.publish().stderr)
        for name in ("ferrobank", "ferrobank-drive"):
            self.make_bundle("1.0.1")
            (self.bundle / "Contents/Helpers" / name).unlink()
            self.assertIn(f"{name} is missing", self.publish().stderr)
        self.assertFalse(self.feed.exists())

    def test_addresses_must_be_secure(self):
        result = self.publish("--archive-url", "http://e.org/a.tar.zst")
        self.assertIn("https", result.stderr)

    def test_notes_cannot_break_the_feed(self):
        notes = self.folder / "notes.md"
        notes.write_text("</description></item> & ]]> <b>")
        self.assertEqual(self.publish("--notes", notes).returncode, 0)
        self.assertEqual(self.feed.read_text().count("</item>"), 1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
