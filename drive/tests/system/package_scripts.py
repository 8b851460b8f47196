#!/usr/bin/python3
"""The package's own scripts, with a user whom a directory service knows but does not list: run as root by with-udisks.sh
--as root, with the mount helper at its installed place.

    package_scripts.py FOLDER-OF-SCRIPTS HELPER
"""
import os
import pathlib
import subprocess
import sys
import unittest

SCRIPTS, HELPER = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
# By number; the second is in no list.
USERS = {64321: "ferrotest", 64322: "ferrother"}
APPROVALS = pathlib.Path("/var/lib/ferrobank/mounting")
FSTAB = pathlib.Path("/etc/fstab")
LOGS = pathlib.Path(os.environ["LOGS"])
UNIT = ".local/share/systemd/user/org.ferrobank.Ferrobank.agent.service"
SETTINGS = ".config/org.ferrobank.Ferrobank.conf"
LINK = pathlib.Path("/usr/local/bin/ferrobank")
GETENT = """#!/bin/sh
# A directory service that answers for one user and lists none.
if [ "$1" = passwd ] && [ -z "${2:-}" ]; then
    /usr/bin/getent passwd | grep -v ferrother
else
    exec /usr/bin/getent "$@"
fi
"""


def mount(*arguments):
    subprocess.run(["mount", *map(str, arguments)], check=True)


def old_block(user, home):
    return (
        f"# Ferrobank drive of user {user}: begin\n{home}/Library/Application\\040Support/Ferrobank/store/drive.btrfs "
        f"{home}/Ferrobank btrfs loop,user,noauto,exec 0 0\n# Ferrobank drive of user {user}: end\n"
    )


class Scripts(unittest.TestCase):
    def setUp(self):
        for folder in ("/home", "/usr/local/bin"):
            mount("-t", "tmpfs", "-o", "mode=755", "none", folder)
            self.addCleanup(subprocess.run, ["umount", folder], check=True)
        passwd = pathlib.Path("/etc/passwd")
        kept = [line for line in passwd.read_text().splitlines() if "ferrot" not in line]
        kept += [f"{name}:x:{number}:{number}::/home/{name}:/bin/sh" for number, name in USERS.items()]
        passwd.write_text("\n".join(kept) + "\n")
        for number, name in USERS.items():
            for file in (UNIT, SETTINGS):
                path = pathlib.Path("/home", name, file)
                path.parent.mkdir(parents=True)
                path.write_text("")
            for folder, _, files in os.walk(f"/home/{name}"):
                for one in (folder, *(os.path.join(folder, file) for file in files)):
                    os.chown(one, number, number)
        self.tools = LOGS / "tools"
        self.tools.mkdir(exist_ok=True)
        (self.tools / "getent").write_text(GETENT)
        (self.tools / "getent").chmod(0o755)
        self.told = LOGS / "unregistered"
        self.told.write_text("")
        self.told.chmod(0o666)
        program = HELPER.parents[1] / "Linux/Ferrobank"
        program.parent.mkdir(exist_ok=True)
        # It would swallow the names of those who come after, if it got them as its input.
        program.write_text(f"#!/bin/sh\ncat\n[ $# = 1 ] && [ $1 = --unregister ] && id -un >>{self.told}\n")
        program.chmod(0o755)
        LINK.symlink_to("/usr/lib/ferrobank/Ferrobank.app/Contents/Helpers/ferrobank")
        self.mine = "# mine\n/dev/none /nowhere ext4 noauto 0 0\n"
        FSTAB.write_text(old_block(64321, "/home/ferrotest") + self.mine)

    def run_script(self, name, *arguments):
        path = f"{self.tools}:/usr/sbin:/usr/bin:/sbin:/bin"
        done = subprocess.run([SCRIPTS / name, *arguments], env={"PATH": path}, capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)

    def test_removal_reaches_users_whom_no_list_names(self):
        subprocess.run([HELPER, "allow", "ferrother"], check=True)
        self.run_script("prerm", "remove")
        self.assertEqual(sorted(self.told.read_text().split()), ["ferrotest", "ferrother"])
        self.assertEqual(FSTAB.read_text(), self.mine, "no line is left")
        self.assertFalse(APPROVALS.exists())
        self.assertFalse(LINK.is_symlink())

    def test_upgrade_takes_nothing_away_but_the_lines_of_former_versions(self):
        self.run_script("prerm", "upgrade", "99")
        self.assertEqual(self.told.read_text(), "")
        self.assertTrue(LINK.is_symlink())
        self.run_script("postinst", "configure", "1")
        self.assertEqual(FSTAB.read_text(), self.mine)
        self.assertEqual([one.name for one in APPROVALS.iterdir()], ["64321"])

    def test_purge_reaches_users_whom_no_list_names(self):
        self.run_script("postinst", "configure", "1")
        self.run_script("postrm", "purge")
        for name in USERS.values():
            self.assertFalse(pathlib.Path("/home", name, SETTINGS).exists(), name)
            self.assertTrue(pathlib.Path("/home", name).is_dir())
        self.assertFalse(APPROVALS.parent.exists())


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
