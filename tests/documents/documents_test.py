#!/usr/bin/python3
"""What the papers say can be done: every command in them exists and knows its options, every link and picture is there, and
every claim about security names a test that exists."""
import json
import os
import pathlib
import re
import shlex
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("FERROBANK_BUNDLE", ROOT / "build/release/Ferrobank.app")).parent
PAPERS = [ROOT / name for name in ("README.md", "ARCHITECTURE.md", "CONTRIBUTING.md")] + sorted((ROOT / "docs").glob("*.md"))
OURS = ("./run", "./test", "scripts/", "bench/", "build/", "ferrobank", "Ferrobank")
# Called by other programs, not by people.
WITHOUT_HELP = ("scripts/hooks/", "scripts/packages/")


def logical_lines(block):
    """The lines of a block of commands, with those that go on joined to one, and without comments."""
    lines = re.sub(r"\\\n\s*", " ", block).splitlines()
    return [re.sub(r"\s+#\s.*$", "", line).strip() for line in lines]


def blocks(text):
    """Fenced and indented blocks."""
    for found in re.finditer(r"^( *)```[a-z]*\n(.*?)^ *```", text, re.MULTILINE | re.DOTALL):
        yield found.group(2)
    for found in re.finditer(r"(?:(?<=\n\n)|^)((?: {4}\S.*\n)+)", text, re.MULTILINE):
        yield found.group(1)


def commands(paper):
    """(words, where) of everything in a paper that is one of our commands."""
    text = paper.read_text()
    lines = [line for block in blocks(text) for line in logical_lines(block)]
    lines += [found for found in re.findall(r"(?<!`)`([^`\n]+)`(?!`)", text) if " " in found or found.startswith("./")]
    for line in lines:
        try:
            words = shlex.split(line.removeprefix("pkexec "))
        except ValueError:
            continue
        if words and (words[0] in ("./run", "./test", "ferrobank", "Ferrobank") or words[0].startswith(OURS[2:5])):
            yield words, paper.name


def all_commands():
    return [(words, where) for paper in PAPERS for words, where in commands(paper)]


def executables():
    """Everything that people may start in this repository."""
    names = subprocess.run(["git", "ls-files", "run", "test", "scripts", "bench"], cwd=ROOT, capture_output=True, text=True,
                           check=True).stdout.split()  # fmt: skip
    return [name for name in names if os.access(ROOT / name, os.X_OK) and not name.startswith(WITHOUT_HELP)]


def help_of(*command):
    environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen"}
    done = subprocess.run([*map(str, command), "--help"], cwd=ROOT, capture_output=True, text=True, timeout=30, check=False,
                          stdin=subprocess.DEVNULL, env=environment)  # fmt: skip
    return done.returncode, done.stdout + done.stderr


def names_of_tests():
    """The names that ctest knows, in the sanitizer build those of the fuzz targets, and Class::function for every function of
    a test class."""
    names = set()
    for build in (BUILD, BUILD / "drive"):
        told = subprocess.run(["ctest", "-N", "--test-dir", str(build)], capture_output=True, text=True, check=False).stdout
        names.update(re.findall(r"(?m)^ *Test +#\d+: (\S+)", told))
    names.update(f"asan.fuzz.{target.stem}" for target in (ROOT / "tests/fuzz").glob("*Fuzz.cpp"))
    for test in ROOT.glob("drive/tests/*.cpp"):
        found = re.findall(r"TEST(?:_F|_P)?\((\w+), (\w+)\)", test.read_text())
        names.update(f"{suite}::{function}" for suite, function in found)
    for test in ROOT.glob("tests/**/*Test.cpp"):
        names.update(f"{test.stem}::{function}" for function in re.findall(r"(?m)^    void (\w+)\(\)", test.read_text()))
    for test in [*ROOT.glob("tests/**/*.py"), *ROOT.glob("drive/tests/**/*.py")]:
        names.update(f"{test.stem}::{function}" for function in re.findall(r"def (test_\w+)", test.read_text()))
    return names


def table_rows(text, last_title):
    """The cells of all rows of those tables whose last column has this title."""
    rows = []
    for table in re.findall(r"(?m)(?:^\|.*\n)+", text):
        lines = [[cell.strip() for cell in line.strip().strip("|").split("|")] for line in table.splitlines()]
        if lines[0][-1] == last_title:
            rows += lines[2:]
    return rows


def claims_about_security():
    """(claim, tests) of every row and every rule of the page."""
    text = (ROOT / "docs/security.md").read_text()
    claims = [(cells[0], re.findall(r"`([^`]+)`", cells[-1])) for cells in table_rows(text, "Held by")]
    for rule in re.findall(r"(?m)^- (?:.*\n(?:  .*\n)*)", text.partition("## What is not defended")[0]):
        claims.append((rule[:60], re.findall(r"`([^`]+)`", rule.rpartition("Held by")[2] if "Held by" in rule else "")))
    return claims


class Documents(unittest.TestCase):
    def test_papers_have_commands_at_all(self):
        self.assertGreater(len(all_commands()), 15)

    def test_every_command_named_is_there_and_can_be_run(self):
        for words, where in all_commands():
            with self.subTest(where=where, command=words[0]):
                if words[0].startswith("build/"):
                    presets = {one["name"] for one in json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}
                    self.assertIn(words[0].split("/")[1], presets | {"package", "publish", "release-files", "fuzz"})
                elif words[0] not in ("ferrobank", "Ferrobank"):
                    self.assertTrue(os.access(ROOT / words[0], os.X_OK), words[0])

    def test_tests_named_in_commands_exist(self):
        names = names_of_tests()
        for paper in PAPERS:
            for line in (line for block in blocks(paper.read_text()) for line in logical_lines(block)):
                words = line.split()
                with self.subTest(paper=paper.name, line=line):
                    if words[:1] == ["ctest"] and "-R" in words:
                        self.assertIn(words[words.index("-R") + 1], names)
                    elif words and re.fullmatch(r"build/\w+/tests/\w+-tests", words[0]):
                        self.assertIn("::".join(words[1:3]), names)

    def test_every_option_named_is_one_that_the_command_tells_of(self):
        texts = {}
        for words, where in all_commands():
            options = [word.split("=")[0] for word in words[1:] if re.match(r"--?[a-zA-Z]", word)]
            if words[0].startswith("build/"):
                continue
            for option in options:
                with self.subTest(where=where, command=" ".join(words[:2]), option=option):
                    self.assertIn(option, self.text_about(words, texts))

    def text_about(self, words, texts):
        if words[0] == "Ferrobank":
            return (ROOT / "packaging/man/Ferrobank.1").read_text().replace("\\", "")
        program = self.drive_tool() if words[0] == "ferrobank" else ROOT / words[0]
        key = words[0]
        if key not in texts:
            texts[key] = help_of(program)[1]
        text = texts[key]
        # A word that the command itself calls one of its own has a help of its own.
        if len(words) > 1 and re.search(rf"(?m)(^|[\s{{,]){re.escape(words[1])}\b", text) and key in ("ferrobank", "scripts/release"):
            text += help_of(program, words[1])[1]
        return text

    def drive_tool(self):
        tool = BUILD / "Ferrobank.app/Contents/Helpers/ferrobank"
        if not tool.exists():
            self.skipTest("the drive tool is not built")
        return tool

    def test_words_of_the_drive_tool_are_its_own(self):
        text = help_of(self.drive_tool())[1]
        for words, where in all_commands():
            if words[0] == "ferrobank" and len(words) > 1 and re.fullmatch(r"[a-z-]+", words[1]):
                with self.subTest(where=where, word=words[1]):
                    self.assertIn(words[1].removeprefix("--"), text)

    def test_everything_that_people_start_explains_itself(self):
        found = executables()
        self.assertGreater(len(found), 15)
        for name in found:
            with self.subTest(program=name):
                status, text = help_of(ROOT / name)
                self.assertEqual(status, 0, text)
                self.assertGreater(len(text.split()), 5)

    def test_links_and_pictures_lead_somewhere(self):
        for paper in PAPERS:
            for target in re.findall(r"\]\(([^)\s]+)\)", paper.read_text()):
                with self.subTest(paper=paper.name, target=target):
                    if re.match(r"[a-z]+:", target):
                        self.assertTrue(target.startswith("https://"), target)
                    else:
                        self.assertTrue((paper.parent / target.split("#")[0]).exists())

    def test_files_that_papers_name_are_there(self):
        folders = ("app/", "bench/", "cmake/", "docs/", "drive/", "packaging/", "scripts/", "tests/")
        for paper in PAPERS:
            for name in re.findall(r"`((?:\w+/)[\w./*<>-]*)`", paper.read_text()):
                if name.startswith(folders) and not re.search(r"[*<>]", name):
                    with self.subTest(paper=paper.name, file=name):
                        self.assertTrue((ROOT / name).exists())

    def test_every_claim_about_security_names_tests_that_exist(self):
        names = names_of_tests()
        self.assertGreater(len(names), 100)
        claims = claims_about_security()
        self.assertGreater(len(claims), 15)
        for claim, held in claims:
            with self.subTest(claim=claim):
                self.assertTrue(held, "no test is named")
                self.assertEqual([name for name in held if name not in names], [])

    def test_every_attack_on_updates_names_tests_that_exist(self):
        names = names_of_tests()
        rows = table_rows((ROOT / "docs/updates.md").read_text(), "Held by")
        self.assertGreater(len(rows), 20)
        for cells in rows:
            held = re.findall(r"`([^`]+)`", cells[-1])
            with self.subTest(attack=cells[0]):
                self.assertTrue(held, "no test is named")
                self.assertEqual([name for name in held if name not in names], [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
