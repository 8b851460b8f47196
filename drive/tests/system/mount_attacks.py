#!/usr/bin/python3
"""Attacks on the mount helper by the users whom it serves: run as root by with-udisks.sh --as root, beside the real
polkit, with the tool and the helper at their installed places. What users do is done as them, through the real pkexec.

    mount_attacks.py HELPER [TEST...]
"""
import contextlib
import fcntl
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import stat
import subprocess
import sys
import threading
import time
import unittest

HELPER = sys.argv[1]
TOOL = str(pathlib.Path(HELPER).with_name("ferrobank"))
USER, OTHER = 64321, 64322
HOMES = {USER: pathlib.Path(os.environ["FERRO_HOME"]), OTHER: pathlib.Path(os.environ["FERRO_OTHER_HOME"])}
NAMES = {USER: "ferrotest", OTHER: "ferrother"}
STORE = "Library/Application Support/Ferrobank/store"
FSTAB = pathlib.Path("/etc/fstab")
REFUSED, MISUSED, BUSY, NOT_ALLOWED = 1, 2, 3, 4
ROUNDS = 12


def root(*command, check=True, **how):
    done = subprocess.run([str(word) for word in command], check=False, capture_output=True, text=True, **how)
    if check and done.returncode != 0:
        raise AssertionError(f"{command}: {done.returncode} {done.stderr}")
    return done


def as_user(user, *command):
    return ["setpriv", "--reuid", str(user), "--regid", str(user), "--clear-groups", "--reset-env", *map(str, command)]


def helper(user, *words, **how):
    """The helper as this user starts it; its outcome."""
    command = as_user(user, "pkexec", "--disable-internal-agent", HELPER, *words)
    return subprocess.run(command, check=False, capture_output=True, text=True, **how)


def place(user):
    return pathlib.Path(f"/run/ferrobank/{user}/Ferrobank")


def image(user):
    return HOMES[user] / STORE / "drive.btrfs"


def approval(user):
    return pathlib.Path(f"/var/lib/ferrobank/mounting/{user}")


def loops():
    """Device name to inode of its file, below this test's own folder."""
    listed = json.loads(root("losetup", "-J", "-l", "-O", "NAME,BACK-INO,BACK-FILE").stdout or '{"loopdevices": []}')
    ours = str(HOMES[USER].parent)
    # One that lets go just now has no file any more.
    mine = [one for one in listed["loopdevices"] if (one["back-file"] or "").startswith(ours) and one["back-ino"]]
    return {one["name"]: int(one["back-ino"]) for one in mine}


def mounts():
    """Every Btrfs on one of those: (device, where)."""
    ours = loops()
    found = []
    for line in pathlib.Path("/proc/self/mountinfo").read_text().splitlines():
        left, _, right = line.partition(" - ")
        kind, device = right.split()[:2]
        if kind == "btrfs" and device in ours:
            found.append((device, left.split()[4]))
    return found


def wait_until(condition, what):
    end = time.monotonic() + 60
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"still waiting until {what}")
        time.sleep(0.01)


def make_image(path, user, *more):
    """A new image as the drive tool makes it: its top level has the folder u, the user's own."""
    skeleton = path.parent / "skeleton"
    (skeleton / "u").mkdir(parents=True)
    os.chown(skeleton / "u", user, user)
    with open(path, "wb") as file:
        file.truncate(256 << 20)
    root("mkfs.btrfs", "-q", "-f", "-L", "Ferrobank", "--rootdir", skeleton, path, *more)
    shutil.rmtree(skeleton)
    os.chown(path, user, user)
    path.chmod(0o600)


def old_block(user, home):
    return (
        f"# Ferrobank drive of user {user}: begin\n"
        f"{home}/Library/Application\\040Support/Ferrobank/store/drive.btrfs {home}/Ferrobank btrfs loop,user,noauto,exec,"
        "noatime,compress=zstd:1,discard=sync,subvol=u/files,user_subvol_rm_allowed,x-gvfs-show,x-gvfs-name=Ferrobank 0 0\n"
        f"# Ferrobank drive of user {user}: end\n"
    )


@contextlib.contextmanager
def repeating(action):
    """Does something over and over in a thread of its own, as fast as it goes."""
    over = threading.Event()
    failures = []

    def go():
        try:
            while not over.is_set():
                action()
        except Exception as error:  # pylint: disable=broad-except
            failures.append(error)

    thread = threading.Thread(target=go)
    thread.start()
    try:
        yield
    finally:
        over.set()
        thread.join()
    if failures:
        raise failures[0]


class Attacks(unittest.TestCase):
    def setUp(self):
        self.roots = HOMES[USER].parent / "roots"
        self.roots.mkdir()
        self.addCleanup(self._clean)
        for user, home in HOMES.items():
            store = home / STORE
            store.mkdir(parents=True)
            for folder in [store, *store.parents]:
                if folder == home:
                    break
                os.chown(folder, user, user)
            make_image(image(user), user)
        FSTAB.write_text("# mine\n/dev/none /nowhere ext4 noauto 0 0\n")
        (self.roots / "passwd").write_text("root's\n")
        self.secret = self.roots / "secret"
        shutil.copyfile(image(OTHER), self.secret)
        self.secret.chmod(0o600)

    def _clean(self):
        for user in HOMES:
            helper(user, "drive", "unmount")
        for _, where in mounts():
            root("umount", "-l", where, check=False)
        forgotten = root(HELPER, "remove-all", check=False)
        for folder in (*HOMES.values(), self.roots):
            for one in folder.iterdir():
                if one.is_dir() and not one.is_symlink():
                    shutil.rmtree(one)
                else:
                    one.unlink()
        self.roots.rmdir()
        wait_until(lambda: not loops(), "no loop device is left")
        self.assertEqual((forgotten.returncode, forgotten.stderr), (0, ""))

    def allow(self, *users):
        for user in users:
            root(HELPER, "allow", NAMES[user])

    def prepare(self, *users):
        self.allow(*users)
        for user in users:
            self.do(user, "prepare")

    def do(self, user, wish):
        done = helper(user, "drive", wish)
        self.assertEqual((done.returncode, done.stderr), (0, ""), wish)

    def assert_nothing_mounted(self):
        self.assertEqual(mounts(), [])
        wait_until(lambda: not loops(), "the loop device is gone")

    def test_flags_of_the_real_mount_take_setuid_and_devices_their_power(self):
        self.prepare(USER)
        top = self.roots / "top"
        top.mkdir()
        # What a user can put into an image by hand, without any right: root makes it here because it is easier.
        root("mount", "-o", "loop,subvol=u/files", image(USER), top)
        shutil.copyfile("/usr/bin/id", top / "id")
        (top / "id").chmod(0o4755)
        os.mknod(top / "disk", stat.S_IFCHR | 0o666, os.makedev(1, 5))
        root("umount", top)
        top.rmdir()
        wait_until(lambda: not loops(), "the loop device is gone")

        self.do(USER, "mount")
        options = root("findmnt", "-no", "VFS-OPTIONS", place(USER)).stdout.strip().split(",")
        for flag in ("nosuid", "nodev", "noatime", "rw"):
            self.assertIn(flag, options)
        self.assertIn(f"uid={USER}", root(*as_user(USER, place(USER) / "id")).stdout)
        self.assertNotIn("euid=0", root(*as_user(USER, place(USER) / "id")).stdout)
        self.assertNotEqual(root(*as_user(USER, "head", "-c1", place(USER) / "disk"), check=False).returncode, 0)
        self.assertEqual(stat.S_IMODE(place(USER).stat().st_mode), 0o700)
        self.assertEqual(place(USER).parent.stat().st_uid, 0)

    def test_link_at_the_drives_own_place_at_every_moment_of_a_mount(self):
        """~/Ferrobank may lead to a folder of root's at any moment: nothing is ever mounted there."""
        self.prepare(USER)
        drive = HOMES[USER] / "Ferrobank"
        fresh = HOMES[USER] / "fresh"
        turns = iter(range(10**9))

        def swap():
            turn = next(turns) % 3
            if turn == 0:
                fresh.mkdir()
                drive.unlink(missing_ok=True)
            elif turn == 1:
                fresh.symlink_to(self.roots)
                drive.rmdir()
            else:
                fresh.symlink_to(place(USER))
                drive.unlink()
            os.rename(fresh, drive)

        with repeating(swap):
            for _ in range(ROUNDS):
                self.do(USER, "mount")
                self.assertEqual([where for _, where in mounts()], [str(place(USER))])
                self.assertEqual((self.roots / "passwd").read_text(), "root's\n")
                self.do(USER, "unmount")
                self.assert_nothing_mounted()

    def test_link_in_place_of_the_image_at_every_moment_of_a_mount(self):
        """The image may be a link to root's own or to another user's file at any moment: neither is ever attached."""
        self.prepare(USER, OTHER)
        away, link = image(USER).with_name("away"), image(USER).with_name("link")
        targets = [self.secret, image(OTHER)]
        own = image(USER).stat().st_ino
        turns = iter(range(10**9))
        os.link(image(USER), away)

        def swap():
            link.symlink_to(targets[next(turns) % 2])
            os.rename(link, image(USER))
            os.link(away, link)
            os.rename(link, image(USER))

        outcomes = set()
        with repeating(swap):
            for turn in range(25 * ROUNDS):
                if turn > 2 * ROUNDS and {0, REFUSED} <= outcomes:
                    break
                outcomes.add(helper(USER, "drive", "mount").returncode)
                attached = set(loops().values())
                self.assertLessEqual(attached, {own})
                # By its own name again, so that whatever is mounted is found.
                helper(USER, "drive", "unmount")
        self.do(USER, "unmount")
        self.assert_nothing_mounted()
        self.assertLessEqual(outcomes, {0, REFUSED})
        self.assertLessEqual({0, REFUSED}, outcomes, "the link lay there always or never; the test has seen nothing")

    def test_links_that_stay_are_refused(self):
        self.prepare(USER)
        for path in (image(USER), HOMES[USER] / STORE, HOMES[USER] / "Library"):
            with self.subTest(path=path):
                moved = path.with_name("moved")
                os.rename(path, moved)
                path.symlink_to(moved)
                self.assertEqual(helper(USER, "drive", "mount").returncode, REFUSED)
                self.assert_nothing_mounted()
                path.unlink()
                os.rename(moved, path)
        self.do(USER, "mount")

    def test_image_of_another_user_is_refused(self):
        self.prepare(USER, OTHER)
        image(USER).unlink()
        os.link(image(OTHER), image(USER))
        done = helper(USER, "drive", "mount")
        self.assertEqual((done.returncode, done.stderr), (REFUSED, "The drive's store is not the user's own.\n"))
        self.assert_nothing_mounted()
        self.do(OTHER, "mount")
        self.assertEqual(helper(USER, "drive", "mount").returncode, REFUSED)
        self.assertEqual(helper(USER, "drive", "unmount").returncode, REFUSED)
        self.assertEqual([where for _, where in mounts()], [str(place(OTHER))])
        self.assertEqual(len(loops()), 1, "it is not attached twice")

    def test_two_users_at_once_each_get_their_own(self):
        self.prepare(USER, OTHER)
        for _ in range(3):
            at_work = [threading.Thread(target=self.do, args=(user, "mount")) for user in HOMES for _ in range(3)]
            for one in at_work:
                one.start()
            for one in at_work:
                one.join()
            self.assertEqual(sorted(where for _, where in mounts()), [str(place(USER)), str(place(OTHER))])
            self.assertEqual(sorted(loops().values()), sorted(image(user).stat().st_ino for user in HOMES))
            for user in HOMES:
                inside = dict((where, device) for device, where in mounts())[str(place(user))]
                self.assertEqual(loops()[inside], image(user).stat().st_ino)
                self.assertEqual(place(user).stat().st_uid, user)
            self.assertNotEqual(root(*as_user(OTHER, "ls", place(USER)), check=False).returncode, 0)
            for user in HOMES:
                self.do(user, "unmount")
            self.assert_nothing_mounted()

    def test_only_the_user_who_was_allowed_mounts(self):
        self.prepare(USER)
        done = helper(OTHER, "drive", "mount")
        self.assertEqual((done.returncode, done.stderr), (NOT_ALLOWED, "An administrator has to allow this first.\n"))
        self.assertEqual(helper(OTHER, "drive", "prepare").returncode, NOT_ALLOWED)
        self.assertEqual(helper(OTHER, "drive", "forget").returncode, 0)
        self.do(USER, "mount")
        self.assertEqual(helper(OTHER, "drive", "unmount").returncode, 0)
        self.assertEqual(len(mounts()), 1, "another user's drive stays")
        # Nobody answers the prompt here, so nobody is allowed.
        self.assertNotEqual(helper(OTHER, "allow").returncode, 0)
        self.assertFalse(approval(OTHER).exists())
        for words in (["drive"], ["drive", "mount", "more"], ["drive", "remove-all"], ["drive", "allow"],
                      ["drive", ""]):  # fmt: skip
            self.assertEqual(helper(USER, *words).returncode, MISUSED, words)

    def test_approval_holds_for_later_mounts_and_ends_when_taken_back(self):
        self.prepare(USER)
        for _ in range(2):
            self.do(USER, "mount")
            self.do(USER, "unmount")
        self.do(USER, "forget")
        self.assertEqual(helper(USER, "drive", "mount").returncode, NOT_ALLOWED)

    def test_further_disks_that_an_image_names_are_not_brought_in(self):
        """A file system of two parts, of which the user's image is one and somebody's disk the other."""
        self.allow(USER)
        disk = self.roots / "ferrobank-disk"
        with open(disk, "wb") as file:
            file.truncate(256 << 20)
        image(USER).unlink()
        with open(image(USER), "wb") as file:
            file.truncate(256 << 20)
        parts = [root("losetup", "-f", "--show", one).stdout.strip() for one in (image(USER), disk)]
        root("mkfs.btrfs", "-q", "-f", "-d", "single", "-m", "raid1", *parts)
        top = self.roots / "top"
        top.mkdir()
        root("mount", parts[0], top)
        (top / "u").mkdir()
        root("btrfs", "subvolume", "create", top / "u/files")
        for one in (top / "u", top / "u/files"):
            os.chown(one, USER, USER)
        root("umount", top)
        top.rmdir()
        root("losetup", "-d", parts[0])
        os.chown(image(USER), USER, USER)
        image(USER).chmod(0o600)
        root("btrfs", "device", "scan", parts[1])
        try:
            done = helper(USER, "drive", "mount")
            self.assertEqual(done.returncode, REFUSED, done.stderr)
            self.assertIn("names other disks", done.stderr)
            self.assertEqual(mounts(), [])
        finally:
            root("losetup", "-d", parts[1])

    def test_files_of_another_user_in_the_image_are_not_mounted(self):
        self.prepare(USER)
        top = self.roots / "top"
        top.mkdir()
        root("mount", "-o", "loop,subvol=u/files", image(USER), top)
        os.chown(top, 0, 0)
        root("umount", top)
        top.rmdir()
        wait_until(lambda: not loops(), "the loop device is gone")
        self.assertIn("belong to another user", helper(USER, "drive", "mount").stderr)
        self.assert_nothing_mounted()

    def test_helper_killed_at_any_moment_leaves_the_drive_mounted_or_nothing(self):
        self.prepare(USER)
        seen = set()
        for step in range(500):
            if step > 3 * ROUNDS and seen == {False, True}:
                break
            process = subprocess.Popen([HELPER, "drive", "mount"], env={"PKEXEC_UID": str(USER)})
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(step * 0.002)
            process.send_signal(signal.SIGKILL)
            process.wait()
            mounted = [where for _, where in mounts()]
            self.assertIn(mounted, ([], [str(place(USER))]))
            seen.add(bool(mounted))
            wait_until(lambda: len(loops()) == len(mounts()), "the loop device of an unplaced mount is gone")
            if step % 3 == 0:
                self.do(USER, "mount")
            self.do(USER, "unmount")
        self.assertEqual(seen, {False, True}, "the moments were all before or all after the mount")

    def test_store_stays_locked_while_a_helper_works_whose_caller_was_killed(self):
        self.prepare(USER)
        store_lock = image(USER).with_name("lock")

        def at_work():
            return [one for one in pathlib.Path("/proc").glob("[0-9]*/exe") if runs_helper(one)]

        def runs_helper(program):
            try:
                return os.readlink(program) == HELPER
            except OSError:
                return False

        with open(f"/run/ferrobank/lock-{USER}", "w", encoding="utf-8") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            server = subprocess.Popen(as_user(USER, TOOL, "serve"), stderr=subprocess.DEVNULL)
            wait_until(at_work, "the server has started the helper")
            server.kill()
            server.wait()
            with open(store_lock, encoding="utf-8") as lock:
                with self.assertRaises(BlockingIOError):
                    fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        wait_until(lambda: not at_work(), "the helper has ended")
        self.assertEqual([where for _, where in mounts()], [str(place(USER))])
        with open(store_lock, encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)

    def test_keys_of_the_callers_terminal_do_not_end_it_half_way(self):
        self.prepare(USER)
        with open(f"/run/ferrobank/lock-{USER}", "w", encoding="utf-8") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            process = subprocess.Popen([HELPER, "drive", "mount"], env={"PKEXEC_UID": str(USER)})
            facts = pathlib.Path(f"/proc/{process.pid}/status")
            wait_until(lambda: re.search(r"SigBlk:\s*f", facts.read_text()), "the helper listens to no signal")
            for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP, signal.SIGTSTP, signal.SIGTERM):
                process.send_signal(number)
        self.assertEqual(process.wait(), 0)
        self.assertEqual(len(mounts()), 1)

    def test_callers_limits_and_missing_descriptors_do_no_harm(self):
        self.prepare(USER)
        FSTAB.write_text("# mine\n" + old_block(USER, HOMES[USER]))

        def narrow():
            # The soft limits: root in a container may not be able to raise the others.
            resource.setrlimit(resource.RLIMIT_FSIZE, (3, 1 << 20))
            resource.setrlimit(resource.RLIMIT_CPU, (1, 1000))

        done = helper(USER, "drive", "mount", preexec_fn=narrow)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(FSTAB.read_text(), "# mine\n")
        closed = subprocess.run(["sh", "-c", f"exec {HELPER} drive unmount <&- >&- 2>&-"], check=False,
                                env={"PKEXEC_UID": str(USER)})  # fmt: skip
        self.assertEqual(closed.returncode, 0)
        self.assert_nothing_mounted()

    def test_lines_of_former_versions_become_approvals_and_go(self):
        mine = FSTAB.read_text()
        FSTAB.write_text(mine + old_block(USER, HOMES[USER]) + "# between\n" + old_block(OTHER, HOMES[OTHER]))
        self.do(USER, "prepare")
        self.assertEqual(FSTAB.read_text(), mine + "# between\n")
        self.do(USER, "mount")
        self.assertEqual(approval(OTHER).read_text(), "ferrother\n")

    def test_line_that_names_another_users_image_is_no_approval(self):
        mine = FSTAB.read_text()
        FSTAB.write_text(mine + old_block(USER, HOMES[OTHER]))
        self.assertEqual(helper(USER, "drive", "mount").returncode, NOT_ALLOWED)
        self.assertEqual(FSTAB.read_text(), mine)
        self.assertFalse(approval(OTHER).exists())

    def test_uninstall_leaves_no_line_even_where_its_marks_are_lost(self):
        mine = FSTAB.read_text()
        self.allow(USER)
        FSTAB.write_text(mine + old_block(USER, HOMES[USER]).splitlines(keepends=True)[1])
        root(*as_user(USER, TOOL, "uninstall"))
        self.assertEqual(FSTAB.read_text(), mine)
        self.assertFalse(approval(USER).exists())

    def test_drive_that_a_line_had_mounted_is_unmounted(self):
        self.prepare(USER)
        drive = HOMES[USER] / "Ferrobank"
        drive.mkdir()
        root("mount", "-t", "btrfs", "-o", "loop,subvol=u/files", image(USER), drive)
        with open(drive / "file", "w", encoding="utf-8"):
            self.assertEqual(helper(USER, "drive", "unmount").returncode, BUSY)
        self.do(USER, "unmount")
        self.assert_nothing_mounted()

    def test_unmounting_by_the_drives_name_hits_no_foreign_mount(self):
        self.prepare(USER)
        drive = HOMES[USER] / "Ferrobank"
        drive.mkdir()
        root("mount", "-t", "tmpfs", "none", drive)
        self.do(USER, "unmount")
        self.assertTrue(os.path.ismount(drive))
        root("umount", drive)

    def test_busy_drive_stays_mounted(self):
        self.prepare(USER)
        self.do(USER, "mount")
        with open(place(USER) / "file", "w", encoding="utf-8"):
            self.assertEqual(helper(USER, "drive", "unmount").returncode, BUSY)
        self.assertEqual(len(mounts()), 1)

    def test_helper_that_others_can_change_refuses(self):
        copy = HOMES[USER] / "ferrobank-mount-helper"
        shutil.copy(HELPER, copy)
        for owner, mode, folder in ((USER, 0o755, HOMES[USER]), (0, 0o755, HOMES[USER]), (0, 0o775, self.roots)):
            place_of_copy = folder / copy.name
            if folder != copy.parent:
                shutil.copy(HELPER, place_of_copy)
            os.chown(place_of_copy, owner, owner)
            place_of_copy.chmod(mode)
            done = root(place_of_copy, "allow", NAMES[USER], check=False)
            self.assertEqual(done.returncode, MISUSED)
            self.assertIn("only the administrator can change it", done.stderr)
        self.assertFalse(approval(USER).exists())

    def test_remove_all_leaves_no_line_and_no_approval(self):
        mine = FSTAB.read_text()
        self.allow(USER, OTHER)
        FSTAB.write_text(old_block(USER, HOMES[USER]) + mine + old_block(99999, "/gone"))
        root(HELPER, "remove-all")
        self.assertEqual(FSTAB.read_text(), mine)
        self.assertFalse(approval(USER).parent.exists())

    def test_package_upgrade_retires_every_line(self):
        mine = FSTAB.read_text()
        FSTAB.write_text(old_block(USER, HOMES[USER]) + mine + old_block(99999, "/gone"))
        root(HELPER, "retire-lines")
        self.assertEqual(FSTAB.read_text(), mine)
        self.assertEqual([one.name for one in approval(USER).parent.iterdir()], [str(USER)])

    def test_helper_is_hardened(self):
        facts = root("readelf", "-W", "-h", "-l", "-d", "--dyn-syms", HELPER).stdout
        for sign in ("DYN (Position-Independent", "GNU_RELRO", "BIND_NOW", "PIE", "__stack_chk_fail"):
            self.assertIn(sign, facts)
        self.assertNotIn("RWE", facts, "a stack that can be run")

    def test_helper_links_no_library_of_its_own(self):
        needed = set(re.findall(r"NEEDED.*\[(\S+)\]", root("readelf", "-d", HELPER).stdout))
        self.assertLessEqual(needed, {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6"})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[2:]])
