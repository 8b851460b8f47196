"""A fresh Debian 12 in a folder, to install packages in: made once with debootstrap and kept below build/packaging.

Each root is a layer over that one, with a /dev, /proc, /run and /tmp of its own, in a mount namespace that ends with this
process; nothing that is started in it outlives it. Needs root.
"""
import ctypes
import hashlib
import os
import pathlib
import shutil
import signal
import stat
import subprocess
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CACHE = ROOT / "build/packaging"
SUITE = "bookworm"
USER = "ann"
CLONE_NEWNS = 0x00020000
# What the tests themselves need in the root; the product's own needs are the business of its package.
TESTERS = [
    line
    for line in (ROOT / "scripts/packages/desktop").read_text().splitlines()
    if line and not line.startswith("#")
] + ["ca-certificates"]  # fmt: skip
# Filled anew by the package manager and by other packages' triggers, whoever comes and goes.
CACHES = (
    "/proc", "/sys", "/dev", "/run", "/tmp", "/tests", "/packages", "/var/cache", "/var/log", "/var/lib/apt",
    "/var/lib/dpkg", "/var/tmp",
)  # fmt: skip
WRITTEN_BY_TRIGGERS = ("icon-theme.cache", "mimeinfo.cache", "ld.so.cache", "gschemas.compiled")


def skip_unless_possible():
    for program in ("debootstrap", "chroot", "setpriv"):
        if not shutil.which(program):
            raise unittest.SkipTest(f"{program} is not installed")
    if os.geteuid() != 0:
        raise unittest.SkipTest("a fresh root needs root")


def keep_mounts_private():
    """From now on what this process mounts is seen by it and its children alone, and ends with them."""
    if ctypes.CDLL(None, use_errno=True).unshare(CLONE_NEWNS) != 0:
        raise unittest.SkipTest("mounts cannot be kept private here")
    subprocess.run(["mount", "--make-rprivate", "/"], check=True)


def mirror():
    """Where this machine itself gets its packages from."""
    sites = subprocess.run(
        ["apt-get", "indextargets", "--format", "$(CODENAME) $(SITE)"], capture_output=True, text=True, check=True
    ).stdout.split("\n")
    for line in sites:
        name, _, site = line.partition(" ")
        if name == SUITE:
            return site
    raise unittest.SkipTest(f"this machine has no source of {SUITE}")


class FreshRoot:
    def __init__(self):
        CACHE.mkdir(parents=True, exist_ok=True)
        self._layer = pathlib.Path(tempfile.mkdtemp(prefix="root-", dir=CACHE))
        self.folder = self._layer / "root"

    def __enter__(self):
        base = self._base()
        for name in ("root", "changes", "work"):
            (self._layer / name).mkdir(mode=0o755)
        self._layer.chmod(0o755)
        layers = f"lowerdir={base},upperdir={self._layer}/changes,workdir={self._layer}/work"
        done = subprocess.run(["mount", "-t", "overlay", "overlay", "-o", layers, self.folder], check=False)
        if done.returncode != 0:
            shutil.rmtree(self._layer)
            raise unittest.SkipTest("there are no layered file systems here")
        self._mount()
        return self

    def __exit__(self, *_):
        self._end_all()
        self._unmount()
        subprocess.run(["umount", "-l", self.folder], check=True)
        shutil.rmtree(self._layer)

    def run(self, *command, user=None, check=True, **how):
        """Runs a command inside and waits for it; its outputs are in the result."""
        done = subprocess.run(
            self._inside(command, user), capture_output=True, text=True, stdin=subprocess.DEVNULL, **how
        )
        if check and done.returncode != 0:
            raise AssertionError(f"{' '.join(map(str, command))}: {done.returncode}\n{done.stdout}{done.stderr}")
        return done

    def start(self, *command, user=None, **how):
        return subprocess.Popen(self._inside(command, user), stdin=subprocess.DEVNULL, **how)

    def apt(self, *arguments):
        return self.run(
            "env", "DEBIAN_FRONTEND=noninteractive", "apt-get", "-q", "-y", "-o", "Dpkg::Use-Pty=0",
            "--no-install-recommends", *arguments,
        )  # fmt: skip

    def home(self):
        return self.folder / "home" / USER

    def processes(self, name=""):
        """What runs inside, by number; only programs with this in their path."""
        found = []
        for process in pathlib.Path("/proc").iterdir():
            try:
                if not process.name.isdigit() or os.readlink(process / "root") != str(self.folder):
                    continue
                if name in os.readlink(process / "exe"):
                    found.append(int(process.name))
            except OSError:
                continue
        return found

    def files(self):
        """Every path inside and what it is, without caches."""
        found = {}
        for where, folders, names in os.walk(self.folder):
            inside = "/" + os.path.relpath(where, self.folder)
            folders[:] = [one for one in folders if os.path.join(inside, one).replace("/./", "/") not in CACHES]
            for name in folders + names:
                if name in WRITTEN_BY_TRIGGERS:
                    continue
                path = os.path.join(where, name)
                mode = os.lstat(path).st_mode
                found[os.path.join(inside, name).replace("/./", "/")] = (
                    stat.S_IFMT(mode), stat.S_IMODE(mode), os.readlink(path) if stat.S_ISLNK(mode) else "",
                )  # fmt: skip
        return found

    def _inside(self, command, user):
        who = ["setpriv", "--reuid", user, "--regid", user, "--init-groups"] if user else []
        home = f"/home/{user}" if user else "/root"
        return ["chroot", str(self.folder), *who, "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LANG=C.UTF-8",
                f"HOME={home}", *map(str, command)]  # fmt: skip

    def _mount(self):
        def mount(*arguments):
            subprocess.run(["mount", *map(str, arguments)], check=True)

        archives = CACHE / "archives"
        (archives / "partial").mkdir(parents=True, exist_ok=True)
        for name in ("tests", "packages"):
            (self.folder / name).mkdir(exist_ok=True)
        mount("-t", "proc", "proc", self.folder / "proc")
        mount("-t", "tmpfs", "tmpfs", self.folder / "run")
        mount("-t", "tmpfs", "-o", "mode=1777", "tmpfs", self.folder / "tmp")
        mount("-t", "tmpfs", "-o", "mode=755", "tmpfs", self.folder / "dev")
        for name, number in {"null": 3, "zero": 5, "full": 7, "random": 8, "urandom": 9}.items():
            device = self.folder / "dev" / name
            os.mknod(device, stat.S_IFCHR | 0o666, os.makedev(1, number))
            device.chmod(0o666)
        (self.folder / "dev/pts").mkdir()
        (self.folder / "dev/shm").mkdir(mode=0o777)
        mount("-t", "devpts", "-o", "newinstance,ptmxmode=0666", "devpts", self.folder / "dev/pts")
        (self.folder / "dev/ptmx").symlink_to("pts/ptmx")
        (self.folder / "dev/fd").symlink_to("/proc/self/fd")
        mount("--bind", archives, self.folder / "var/cache/apt/archives")
        mount("--bind", "-o", "ro", ROOT / "tests/support", self.folder / "tests")
        (CACHE / "packages").mkdir(exist_ok=True)
        mount("--bind", CACHE / "packages", self.folder / "packages")
        for name in ("resolv.conf", "hosts"):
            shutil.copyfile(f"/etc/{name}", self.folder / "etc" / name)

    def _end_all(self):
        for wanted in (signal.SIGTERM, signal.SIGKILL):
            for process in self.processes():
                try:
                    os.kill(process, wanted)
                except ProcessLookupError:
                    continue
            end = time.monotonic() + 5
            while self.processes() and time.monotonic() < end:
                time.sleep(0.05)

    def _unmount(self):
        for name in ("tests", "packages", "var/cache/apt/archives", "dev/pts", "dev", "run", "tmp", "proc"):
            subprocess.run(["umount", "-l", self.folder / name], capture_output=True, check=False)

    def _base(self):
        """A root with the tests' own needs in it, made when there is none."""
        recipe = hashlib.sha256("\n".join([SUITE, *TESTERS]).encode()).hexdigest()[:12]
        base = CACHE / f"base-{SUITE}-{recipe}"
        if base.exists():
            return base
        fresh = base.with_suffix(".new")
        if fresh.exists():
            shutil.rmtree(fresh)
        subprocess.run(["debootstrap", "--variant=minbase", SUITE, fresh, mirror()], check=True,
                       stdout=subprocess.DEVNULL)  # fmt: skip
        # No service is started inside.
        policy = fresh / "usr/sbin/policy-rc.d"
        policy.write_text("#!/bin/sh\nexit 101\n")
        policy.chmod(0o755)
        final, self.folder = self.folder, fresh
        self._mount()
        self.apt("install", *TESTERS)
        self.run("useradd", "--create-home", "--shell", "/bin/bash", USER)
        self._unmount()
        self.folder = final
        fresh.rename(base)
        return base
