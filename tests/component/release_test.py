#!/usr/bin/python3
"""scripts/release: keys, archives that come out the same twice, feeds that the worker accepts, and what it refuses."""
import base64
import email.utils
import hashlib
import io
import json
import pathlib
import plistlib
import re
import shutil
import subprocess
import tarfile
import tempfile
import time
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "release"


def run(*arguments):
    return subprocess.run([str(SCRIPT), *map(str, arguments)], capture_output=True, text=True, check=False)


class Release(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.key = self.folder / "key"
        self.public = run("new-key", self.key).stdout.strip()
        self.spare = run("new-key", self.folder / "spare").stdout.strip()
        self.bundle = self.folder / "Ferrobank.app"
        self.feed = self.folder / "feed.xml"
        self.make_bundle("1.0.1")

    def make_bundle(self, version, kind="folder", keys=None, feed="https://e.org/f.xml"):
        files = {
            "Resources/install-kind": kind + "\n",
            "Linux/Ferrobank": "program",
            "Linux/libferrobank-app.so": "library",
            "Helpers/ferrobank-update": "worker",
            "Helpers/ferrobank": "tool",
            "Helpers/ferrobank-drive": "drive",
            "Helpers/ferrobank-more": "another tool, of a later version",
        }
        shutil.rmtree(self.bundle, ignore_errors=True)
        for name, text in files.items():
            file = self.bundle / "Contents" / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
        facts = {"CFBundleVersion": version, "SUFeedURL": feed,
                 "SUPublicEDKeys": [self.public, self.spare] if keys is None else keys}  # fmt: skip
        (self.bundle / "Contents/Info.plist").write_bytes(plistlib.dumps(facts))
        (self.bundle / "Contents/Linux/Ferrobank").chmod(0o755)
        (self.bundle / "Contents/Linux/alias").symlink_to("Ferrobank")

    def publish(self, *more, out="out"):
        return run("publish", "--key", self.key, "--spare-key", self.spare, "--bundle", self.bundle,
                   "--out", self.folder / out, "--feed", self.feed,
                   "--feed-url", "https://e.org/f.xml", "--archive-url", "https://e.org/a.tar.zst", *more)  # fmt: skip

    def sign_feed(self, *more):
        return run("sign-feed", "--key", self.key, "--feed", self.feed, *more)

    def valid_until(self):
        text = re.search(r"<fb:validUntil>(.*?)<", self.feed.read_text()).group(1)
        return email.utils.parsedate_to_datetime(text).timestamp()

    def assert_refused(self, done, words):
        """In words, and with the feed as it was."""
        self.assertNotEqual(done.returncode, 0, done.stdout)
        self.assertIn(words, done.stderr)
        self.assertNotIn("Traceback", done.stderr)

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
        self.assert_refused(self.publish(), "marked as")
        for name in ("ferrobank", "ferrobank-drive"):
            self.make_bundle("1.0.1")
            (self.bundle / "Contents/Helpers" / name).unlink()
            self.assert_refused(self.publish(), f"{name} is missing")
        self.assertFalse(self.feed.exists())

    def test_bundle_that_trusts_other_keys_only_is_refused(self):
        stranger = run("new-key", self.folder / "stranger").stdout.strip()
        self.make_bundle("1.0.1", keys=[stranger, self.spare])
        self.assert_refused(self.publish(), "does not trust")
        self.make_bundle("1.0.1", keys=[self.spare])
        self.assert_refused(self.publish(), "does not trust")
        self.assertFalse(self.feed.exists())

    def test_bundle_with_one_key_alone_is_refused(self):
        for keys in ([self.public], [self.public, self.public]):
            self.make_bundle("1.0.1", keys=keys)
            self.assert_refused(self.publish(), "one key only")
        self.assertFalse(self.feed.exists())

    def test_key_with_a_typing_error_beside_a_good_one_is_refused(self):
        good = [self.public, self.spare]
        for rubbish in ("", "rubbish", self.spare[:-1], self.spare + " ", self.spare[:20] + "!" + self.spare[21:],
                        base64.b64encode(bytes(31)).decode(), base64.b64encode(bytes(33)).decode(), 7):  # fmt: skip
            self.make_bundle("1.0.1", keys=[*good, rubbish])
            self.assert_refused(self.publish(), "is not a public key")
            self.make_bundle("1.0.1")
            if isinstance(rubbish, str):
                self.assert_refused(self.publish(f"--spare-key={rubbish}"), "is not a public key")
        self.assertFalse(self.feed.exists())

    def test_bundle_without_a_host_for_its_feed_is_refused(self):
        for address in ("https://", "https:///f.xml", "https://:443/f.xml", "https://me@e.org/f.xml", "https://e.org/f .xml",
                        "http://e.org/f.xml", "https://[e/f.xml"):  # fmt: skip
            self.make_bundle("1.0.1", feed=address)
            self.assert_refused(self.publish("--feed-url", address), "not an https address")
        self.make_bundle("1.0.1", feed="https://other.org/f.xml")
        self.assert_refused(self.publish(), "another one")
        self.assertFalse(self.feed.exists())

    def test_bundle_with_an_authority_made_for_tests_is_refused(self):
        (self.bundle / "Contents/Resources/update-authority.pem").write_text("certificate")
        self.assert_refused(self.publish(), "made for tests")
        self.assertFalse(self.feed.exists())

    def test_link_that_copies_refuse_is_refused(self):
        for target in ("/etc/passwd", "../../../x", "Ferrobank/../alias", "a//b"):
            link = self.bundle / "Contents/Linux/alias"
            link.unlink()
            link.symlink_to(target)
            self.assert_refused(self.publish(), "which copies refuse")

    def test_addresses_must_be_secure(self):
        self.assert_refused(self.publish("--archive-url", "http://e.org/a.tar.zst"), "https")

    def test_versions_are_compared_as_numbers(self):
        for version in ("1.0.9", "1.0.10", "1.1"):
            self.make_bundle(version)
            self.assertEqual(self.publish().returncode, 0)
        before = self.feed.read_bytes()
        for version, words in (("1.0.9", "already"), ("1.1.0", "already"), ("1.1.0.0", "already"), ("1.0.11", "older"),
                               ("1.0", "older"), ("1.2rc", "no version"), ("", "no version"), ("2", "no version"),
                               ("../3.0", "no version")):  # fmt: skip
            self.make_bundle(version)
            self.assert_refused(self.publish(), words)
        self.assertEqual(self.feed.read_bytes(), before)

    def test_what_a_system_needs_stands_in_the_feed(self):
        (self.bundle / "Contents/Linux/libferrobank-app.so").write_bytes(pathlib.Path("/bin/true").read_bytes())
        self.assertEqual(self.publish("--qt", "6.5", "--minimum-update", "1.0").returncode, 0)
        text = self.feed.read_text()
        needed = json.loads(self.members()[0][3])["requires"]
        self.assertRegex(needed["glibc"], r"^2\.\d+$")
        self.assertIn(f"<sparkle:minimumSystemVersion>{needed['glibc']}</", text)
        self.assertEqual(needed["qt"], "6.5")
        self.assertIn("<fb:minimumQtVersion>6.5</", text)
        self.assertIn("<sparkle:minimumUpdateVersion>1.0</", text)

    def test_feed_that_no_known_key_has_signed_is_not_merged(self):
        self.assertEqual(self.publish().returncode, 0)
        genuine = self.feed.read_bytes()
        stranger = self.folder / "stranger"
        run("new-key", stranger)
        evil = genuine.replace(b"https://e.org/a.tar.zst", b"https://evil.org/a.tar.gz")
        content = genuine[: genuine.rindex(b"<!-- sparkle-sig")]
        for forged in (evil, content, genuine + b"<item></item>", genuine.replace(b"length: ", b"length: 1"), b"", b"<rss/>"):
            self.feed.write_bytes(forged)
            self.make_bundle("1.0.2")
            self.assert_refused(self.publish(), "is not signed by")
            self.assert_refused(self.sign_feed(), "is not signed by")
            self.assertEqual(self.feed.read_bytes(), forged)
        self.feed.write_bytes(genuine)
        self.assert_refused(run("sign-feed", "--key", stranger, "--feed", self.feed), "is not signed by")
        self.assertEqual(self.publish().returncode, 0)
        self.assertEqual(self.feed.read_text().count("<item>"), 2)

    def test_feed_is_renewed_without_a_release(self):
        self.assertEqual(self.publish("--valid-days", "10").returncode, 0)
        items = re.findall("<item>.*?</item>", self.feed.read_text(), re.DOTALL)
        before = self.valid_until()
        self.assertEqual(self.sign_feed("--valid-days", "60").returncode, 0)
        self.assertAlmostEqual(self.valid_until() - time.time(), 60 * 86400, delta=120)
        self.assertGreater(self.valid_until(), before)
        self.assertEqual(re.findall("<item>.*?</item>", self.feed.read_text(), re.DOTALL), items)
        self.make_bundle("1.0.2")
        self.assertEqual(self.publish().returncode, 0)  # what was renewed is genuine

    def test_feed_never_ends_before_the_one_it_follows(self):
        self.assertEqual(self.publish("--valid-days", "300").returncode, 0)
        before = self.valid_until()
        self.assertEqual(self.sign_feed("--valid-days", "1").returncode, 0)
        self.assertGreater(self.valid_until(), before)

    def test_feed_without_an_end_or_with_one_too_far_is_never_made(self):
        for days in ("0", "-1", "401", "99999"):
            self.assert_refused(self.publish("--valid-days", days), "valid for 1 to 400")
            self.assertFalse(self.feed.exists())

    def test_missing_feed_is_not_renewed(self):
        self.assert_refused(self.sign_feed(), "is missing")

    def test_two_keys_sign_side_by_side_while_one_replaces_the_other(self):
        self.assertEqual(self.publish().returncode, 0)
        new = self.folder / "new"
        public = run("new-key", new).stdout.strip()
        self.make_bundle("1.0.2", keys=[public, self.spare])
        self.assert_refused(self.publish(), "does not trust")
        self.assertEqual(self.publish("--key", new).returncode, 0)
        self.assertEqual(self.feed.read_text().count("edSignature: "), 2)
        signatures = re.search('sparkle:edSignature="([^"]*)"', self.feed.read_text()).group(1).split(" ")
        self.assertEqual([len(base64.b64decode(one)) for one in signatures], [64, 64])
        # From now on the new one alone is enough, since it has signed the feed so far.
        self.assertEqual(run("sign-feed", "--key", new, "--feed", self.feed).returncode, 0)

    def test_notes_cannot_break_the_feed(self):
        notes = self.folder / "notes.md"
        notes.write_text("</description></item> & ]]> <b>")
        self.assertEqual(self.publish("--notes", notes).returncode, 0)
        self.assertEqual(self.feed.read_text().count("</item>"), 1)


class Build(unittest.TestCase):
    """What the build refuses to write into a copy."""

    GOOD = ["rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs=", "A" * 43 + "="]

    def configure(self, keys, feed="https://e.org/f.xml"):
        module = SCRIPT.parents[1] / "cmake" / "Updates.cmake"
        done = subprocess.run(["cmake", f"-DFERROBANK_UPDATE_FEED={feed}", f"-DFERROBANK_UPDATE_KEYS={';'.join(keys)}",
                               "-P", str(module)], capture_output=True, text=True, check=False)  # fmt: skip
        return " ".join(done.stderr.split()) if done.returncode else ""

    def test_two_keys_and_a_host_are_accepted(self):
        self.assertEqual(self.configure(self.GOOD), "")
        self.assertEqual(self.configure(self.GOOD, "https://localhost:8443/a/b.xml"), "")

    def test_malformed_missing_and_single_keys_are_refused(self):
        good = self.GOOD[0]
        for keys in ([], [good], [good, good]):
            self.assertIn("needs two public keys", self.configure(keys))
        for rubbish in ("rubbish", good[:-1], good + "=", good[1:], good[:42] + "t=", " " + good):
            self.assertIn("is no public key", self.configure([*self.GOOD, rubbish]), rubbish)

    def test_feed_without_a_host_is_refused(self):
        for feed in ("https://", "https:///f.xml", "http://e.org/f.xml", "https://me@e.org/f", "https://e.org/f .xml"):
            self.assertIn("no https address", self.configure(self.GOOD, feed), feed)


if __name__ == "__main__":
    unittest.main(verbosity=2)
