"""A private desktop with a copy of the built bundle on it, for tests of the running program.

The drive tool of the copy is the scripted one, unless a test asks for the real one; its status is what a test writes
into a file. Everything lives in a temporary folder, and the folder of the command link is a private one, so that nothing of the machine is touched.
"""
import ctypes
import enum
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

SUPPORT = pathlib.Path(__file__).resolve().parent.parent / "support" / "desktop"
sys.path.insert(0, str(SUPPORT))

CANNOT = 77
CLONE_NEWNS = 0x00020000
MS_REC = 0x4000
MS_PRIVATE = 0x40000
LINK = pathlib.Path("/usr/local/bin/ferrobank")


def wait_until(condition, what, limit=15.0):
    """The condition's first true value; fails the test when it does not come."""
    end = time.monotonic() + limit
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"After {limit:g} s still waiting until {what}.")
        time.sleep(0.02)


def hide_link_folder():
    """Gives this process and its children a folder of their own in the command link's place. False where the
    machine does not allow it."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNS) != 0:
        return False
    none = ctypes.c_char_p(None)
    return (
        libc.mount(b"none", b"/", none, MS_REC | MS_PRIVATE, none) == 0
        and libc.mount(b"tmpfs", b"/usr/local/bin", b"tmpfs", 0, none) == 0
    )


def processor_clock(pid):
    """The clock of all processor time that another process has had, its threads that have ended included."""
    per_process = 2
    return (~pid << 3) | per_process


class Desktop:
    """Brought up by the first use of `with`; ends everything that it has started."""

    def __init__(self, *options):
        self._options = options
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="fb-", dir="/tmp"))
        self.home = self.folder / "home"

    def __enter__(self):
        result = self._command("up", *self._options, capture_output=True, text=True)
        if result.returncode != 0:
            shutil.rmtree(self.folder, ignore_errors=True)
        if result.returncode == CANNOT:
            raise unittest.SkipTest(result.stderr.strip())
        if result.returncode != 0:
            raise AssertionError(f"The desktop did not come up: {result.stderr}")
        settings = subprocess.run(
            ["bash", "-c", f". '{self.folder}/env.sh'; env -0"], capture_output=True, check=True
        ).stdout.decode()
        for pair in filter(None, settings.split("\0")):
            name, _, value = pair.partition("=")
            os.environ[name] = value
        return self

    def __exit__(self, *_):
        self._command("down", capture_output=True)
        shutil.rmtree(self.folder, ignore_errors=True)

    def stop_panel(self):
        self._command("host-stop", check=True)

    def start_panel(self):
        self._command("host-start", check=True)

    def shoot(self, file):
        self._command("shot", str(file), check=True)

    def _command(self, what, *rest, **how):
        return subprocess.run([str(SUPPORT / "desktop.sh"), what, str(self.folder), *rest], **how)


class Drive:
    """What the scripted drive tool says, and what it was asked."""

    def __init__(self, home):
        self.home = home
        self._scenario = home / ".ferrobank-scenario"
        self._status = home / "status.json"
        self._runs = home / "runs"
        self.mountpoint = home / "Ferrobank"
        self.log = home / "ferrobank.log"

    def pretend(self, **drive):
        """A drive that behaves as a real one would: serves, mounts, grows, restarts."""
        self._write({"record": str(self._runs), "drive": drive})

    def says(self, **status):
        """From now on `status --json` prints this."""
        document = {"installed": True, "mounted": True, "mountpoint": str(self.mountpoint), "log": str(self.log)}
        document.update(status)
        partial = self._status.with_suffix(".partial")
        partial.write_text(json.dumps(document))
        partial.rename(self._status)
        if not self._scenario.exists():
            self._write(
                {
                    "record": str(self._runs),
                    "runs": [
                        {"args": ["status", "--json"], "play": [{"file": str(self._status)}]},
                        {"args": ["serve", "*"], "play": [{"hang": True}]},
                    ],
                }
            )

    def hangs(self):
        """Every run of the tool hangs, until the program that started it has gone."""
        self._write({"record": str(self._runs), "runs": [{"play": [{"hang_while_read": True}]}]})

    def hangs_in(self, *arguments):
        """Runs with these arguments hang; the status is still what the test says."""
        scenario = json.loads(self._scenario.read_text())
        scenario["runs"].insert(0, {"args": list(arguments), "play": [{"hang_while_read": True}]})
        self._write(scenario)

    def runs(self, *arguments):
        """How often the tool was run with these arguments."""
        if not self._runs.exists():
            return 0
        lines = self._runs.read_text().splitlines()
        return sum(1 for line in lines if json.loads(line)["args"] == list(arguments))

    def _write(self, scenario):
        self._scenario.write_text(json.dumps(scenario))


class Tool(enum.Enum):
    """Which drive tool is in the copy of the bundle."""

    SCRIPTED = enum.auto()
    REAL = enum.auto()


class Program:
    """The copy of the bundle and the process started from it."""

    def __init__(self, desktop, name="Ferrobank.app", tool=Tool.SCRIPTED):
        self.desktop = desktop
        self.bundle = desktop.folder / name
        copy_linked(pathlib.Path(os.environ["FERROBANK_BUNDLE"]), self.bundle)
        self.tool = self.bundle / "Contents/Helpers/ferrobank"
        if tool is Tool.SCRIPTED:
            self.tool.unlink(missing_ok=True)
            shutil.copy2(os.environ["FERROBANK_SCRIPTED_TOOL"], self.tool)
        self.process = None
        self._begun = []
        # Where it is seen when a test fails.
        self._log = sys.stderr.fileno()

    @property
    def executable(self):
        return self.bundle / "Contents/Linux/Ferrobank"

    def move_to(self, name):
        """The bundle, to another place below the desktop's folder."""
        place = self.desktop.folder / name
        place.parent.mkdir(parents=True, exist_ok=True)
        self.bundle.rename(place)
        self.bundle = place

    def unregister(self):
        subprocess.run([str(self.executable), "--unregister"], check=True, capture_output=True)

    def service_status(self):
        done = subprocess.run([str(self.executable), "--service-status"], capture_output=True, text=True, check=True)
        return json.loads(done.stdout)

    def start(self, *arguments, **environment):
        self.process = self.begin(*arguments, **environment)
        return self.process

    def begin(self, *arguments, **environment):
        """One more start, beside the running one."""
        everything = {**os.environ, **environment}
        given = {name: value for name, value in everything.items() if value is not None}
        process = subprocess.Popen(
            [str(self.executable), *arguments],
            env=given,
            stdin=subprocess.DEVNULL,
            stdout=self._log,
            stderr=self._log,
            cwd=self.desktop.home,
        )
        self._begun.append(process)
        return process

    def finish_setup(self):
        """As a person has done it before: recorded, and the agent registered."""
        subprocess.run([str(self.executable), "--register"], check=True, capture_output=True)
        settings = self.desktop.home / ".config" / "org.ferrobank.Ferrobank.conf"
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text("[General]\nsetupComplete=true\n")

    def end(self):
        """Asks it to end; its exit status and the seconds it took."""
        began = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        status = self.process.wait(timeout=20)
        return status, time.monotonic() - began

    def figures(self):
        """Memory of its own making in KiB (files that are mapped count where they are shared differently each
        time), open descriptors and child processes of the running program."""
        process = pathlib.Path("/proc") / str(self.process.pid)
        rollup = (process / "smaps_rollup").read_text().splitlines()
        memory = next(int(line.split()[1]) for line in rollup if line.startswith("Anonymous:"))
        children = (process / "task" / str(self.process.pid) / "children").read_text().split()
        return {"memory": memory, "descriptors": len(list((process / "fd").iterdir())), "children": len(children)}

    def close(self):
        """Ends whatever runs on, so that no test meets the programs of another."""
        for process in self._begun:
            if process.poll() is None:
                process.kill()
                process.wait()


def remove(path):
    if path.is_dir() and not path.is_symlink():
        shutil.rmtree(path, ignore_errors=True)
    else:
        path.unlink(missing_ok=True)


def copy_linked(source, target):
    """A copy without the bytes where the file system can do that."""

    def place(one, other):
        try:
            os.link(one, other)
        except OSError:
            shutil.copy2(one, other)
        return other

    shutil.copytree(source, target, copy_function=place)


class ProgramTest(unittest.TestCase):
    """One desktop for the tests of a file, since the libraries keep their connection to its bus; for each test a
    fresh home folder, drive and program."""

    desktop_options = ()
    tool = Tool.SCRIPTED

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.enterClassContext(Desktop(*cls.desktop_options))

    def setUp(self):
        self.drive = Drive(self.desktop.home)
        self.program = Program(self.desktop, tool=self.tool)
        self.addCleanup(self._clean)

    def _clean(self):
        self._show_failure()
        self.program.close()
        subprocess.run([str(self.program.executable), "--unregister"], capture_output=True, check=False)
        for entry in self.desktop.home.iterdir():
            if entry.name != ".config":
                remove(entry)
        for entry in (self.desktop.home / ".config").iterdir():
            if entry.name != "xfce4":
                remove(entry)
        remove(self.program.bundle)
        remove(LINK)

    def _show_failure(self):
        """What was on the screen when the test failed: in words, and as a picture where a folder for it is named."""
        result = self._outcome.result
        if not any(test is self for test, _ in result.failures + result.errors):
            return
        print("\n".join(f"  {role} {name!r}" for role, name, _ in self.a11y().described("Ferrobank")), file=sys.stderr)
        if folder := os.environ.get("FERROBANK_PICTURES"):
            self.desktop.shoot(pathlib.Path(folder) / f"{self.id().rpartition('.')[2]}.png")

    # What a person sees and does. Imported late: the libraries read the environment when they are loaded.

    @staticmethod
    def a11y():
        import a11y

        return a11y

    @staticmethod
    def tray():
        import traymenu

        return wait_until(traymenu.find, "the tray has the item")

    @staticmethod
    def tray_is_empty():
        import traymenu

        return traymenu.find() is None

    def see(self, name, role=None, limit=15.0):
        return wait_until(lambda: self.a11y().find("Ferrobank", name, role), f"{name!r} is shown", limit)

    def sees(self, name, role=None):
        return self.a11y().find("Ferrobank", name, role) is not None

    def click(self, name, role=None):
        """A real click in the middle of something, once it has stopped moving."""
        thing = self.see(name, role)
        before = None

        def is_still():
            nonlocal before
            now = self.a11y().center(thing)
            was, before = before, now
            time.sleep(0.1)
            return was == now and self.windows()

        wait_until(is_still, f"{name!r} stands still")
        self.a11y().click(thing)

    def windows(self):
        found = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--pid", str(self.program.process.pid), "--name", "^Ferrobank$"],
            capture_output=True,
            text=True,
        )
        return found.stdout.split()

    def wait_for_window(self):
        return wait_until(self.windows, "a window is on the screen")

    def wait_for_no_window(self):
        wait_until(lambda: not self.windows(), "no window is on the screen")

    def has_focus(self):
        active = subprocess.run(["xdotool", "getactivewindow"], capture_output=True, text=True)
        return active.stdout.strip() in self.windows()

    def key(self, *keys):
        """Real keys, once the window has the focus."""
        wait_until(self.has_focus, "the window has the focus")
        subprocess.run(["xdotool", "key", *keys], check=True)


def main():
    if os.geteuid() == 0 and not hide_link_folder():
        print("Skipped: the folder of the command link cannot be hidden here.")
        sys.exit(CANNOT)
    outcome = unittest.main(module="__main__", exit=False, verbosity=2, failfast=False)
    if not outcome.result.wasSuccessful():
        sys.exit(1)
    ran = outcome.result.testsRun - len(outcome.result.skipped)
    sys.exit(0 if ran > 0 else CANNOT)
