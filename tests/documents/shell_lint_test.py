#!/usr/bin/python3
"""scripts/lint/shell finds what it is there for: each forbidden form, put into a small repository, fails it."""
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

FORBIDDEN = {
    "app/A.cpp": ["std::system(text);", "    ::system(text);", "popen(text, mode);", 'run("/bin/sh", list);', 'run(u"sh"_s);',
                  'run(u"-c"_s, text);', "QProcess::splitCommand(text);", "process.startCommand(text);"],  # fmt: skip
    "app/Deep/B.h": ["inline int f() { return system(text); }"],
    "drive/c.cpp": ["    return ::execvp(name, list);", "posix_spawnp(&process, name);", 'execl("/bin/bash", "bash");'],
    "scripts/tool.py": ["subprocess.run(text, shell=True)", "os.system(text)", "subprocess.getoutput(text)"],
    "tests/e2e/test.py": ["os.popen(text)"],
    "packaging/debian/prerm": ["eval $command"],
    "packaging/a.desktop": ["Exec=sh -c something"],
    "app/CMakeLists.txt": ["    COMMAND sh -c something"],
}
ALLOWED = {
    "app/A.cpp": ["QLocale::system().name();", "_system(System::make());", "file.shell();", "sd_bus_open_system(&bus);"],
    "drive/tests/a.cpp": ['runProgram({"/bin/sh", "-c", text});'],
    "scripts/tool.py": ["subprocess.run(words, check=True)"],
}


class ShellLint(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        lint = self.folder / "scripts/lint/shell"
        lint.parent.mkdir(parents=True)
        shutil.copy(ROOT / "scripts/lint/shell", lint)
        for name in ("bench/x", "drive/tests/system/x", "packaging/x", "tests/x", "run", "test"):
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / name).write_text("nothing\n")
        subprocess.run(["git", "init", "-q", self.folder], check=True)

    def lint(self, name, line):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(line + "\n")
        subprocess.run(["git", "add", "-A"], cwd=self.folder, check=True)
        done = subprocess.run([self.folder / "scripts/lint/shell"], capture_output=True, text=True, check=False)
        file.unlink()
        return done

    def test_every_forbidden_form_is_found(self):
        for name, lines in FORBIDDEN.items():
            for line in lines:
                with self.subTest(file=name, line=line):
                    done = self.lint(name, line)
                    self.assertEqual(done.returncode, 1, done.stderr)
                    self.assertIn(line.strip(), done.stdout)

    def test_what_only_looks_like_it_passes(self):
        for name, lines in ALLOWED.items():
            for line in lines:
                with self.subTest(file=name, line=line):
                    done = self.lint(name, line)
                    self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_this_repository_passes(self):
        done = subprocess.run([ROOT / "scripts/lint/shell"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


if __name__ == "__main__":
    if not shutil.which("shellcheck"):
        raise SystemExit(77)
    unittest.main(verbosity=2)
