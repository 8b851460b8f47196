#!/usr/bin/python3
"""The catalogues: every text that can be shown stands in every language, with the same places for values, and none is left that
speaks of another system than the one it is shown on."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
LANGUAGES = re.search(r"FERROBANK_LANGUAGES ([^)]*)\)", (ROOT / "cmake/Words.cmake").read_text()).group(1).split()
LUPDATE = shutil.which("lupdate", path="/usr/lib/qt6/bin") or shutil.which("lupdate-qt6") or shutil.which("lupdate")
LEFT_OUT = "(left out)"
# Programs, places, prompts and habits of another system.
FOREIGN = re.compile(
    r"\bMac\b|macOS|Finder|访达|废纸篓|System Settings|Systemeinstellungen|Réglages Système|Ajustes del Sistema|システム設定|系统设置"
    r"|إعدادات النظام|\bTerminal can\b|“终端”|menu bar|Menüleiste|barre des menus|Don't Allow|8 T[Bo]\b|宗卷"
)
# Texts that are the same in some language, or in all of them.
SAME = {"Ferrobank", "Ferrobank %1", "Ferrobank · %1", "%1: %2", "%1 %", "OK", "%1 – %2", "%1 / %2"}


def catalogue(path):
    """Translation by source text; a text with a number has its forms joined by line breaks."""
    found = {}
    for message in ElementTree.parse(path).iter("message"):
        source = message.find("source").text
        translation = message.find("translation")
        forms = [form.text or "" for form in translation.findall("numerusform")]
        assert source not in found, f"{path.name} has “{source}” twice"
        assert translation.get("type") is None, f"{path.name}: “{source}” is not finished"
        found[source] = "\n".join(forms) if forms else translation.text or ""
    return found


def texts_in_the_sources():
    with tempfile.TemporaryDirectory() as scratch:
        made = pathlib.Path(scratch) / "all.ts"
        subprocess.run([LUPDATE, "-silent", "-locations", "none", "-recursive", ROOT / "app", "-ts", made], check=True,
                       stderr=subprocess.DEVNULL)  # fmt: skip
        return {message.find("source").text for message in ElementTree.parse(made).iter("message")}


def places(text):
    return sorted(set(re.findall(r"%(?:L?\d+|n)", text)))


@unittest.skipUnless(LUPDATE, "there is no lupdate here")
class Words(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.sources = texts_in_the_sources()
        cls.languages = {name: catalogue(ROOT / f"app/Ferrobank/Words/ferrobank_{name}.ts") for name in LANGUAGES}
        folder = ROOT / "app/Platform/linux/words"
        cls.systems = {name: catalogue(folder / f"system_{name}.ts") for name in [*LANGUAGES, "en"]}

    def shown(self, language, source):
        """What people read on this system."""
        given = source if language == "en" else self.languages[language].get(source, source)
        return self.systems[language].get(source, given)

    def test_the_sources_have_texts(self):
        self.assertGreater(len(self.sources), 150)

    def test_every_text_stands_in_every_language(self):
        for name, texts in self.languages.items():
            self.assertEqual(sorted(self.sources - set(texts)), [], f"missing in {name}")

    def test_no_catalogue_has_a_text_that_is_gone(self):
        for name, texts in [*self.languages.items(), *self.systems.items()]:
            self.assertEqual(sorted(set(texts) - self.sources), [], f"no longer in the sources: {name}")

    def test_every_catalogue_of_the_system_changes_the_same_texts(self):
        english = set(self.systems["en"])
        for name, texts in self.systems.items():
            self.assertEqual(sorted(english - set(texts)), [], f"missing in {name}")

    def test_nothing_is_empty_or_left_in_english_by_accident(self):
        for name, texts in self.languages.items():
            for source, text in texts.items():
                self.assertNotEqual(text.strip(), "", f"{name}: {source}")
                if source not in SAME:
                    self.assertNotEqual(text, source, f"{name} leaves “{source}” as it is")

    def test_places_for_values_are_the_same(self):
        for name, texts in [*self.languages.items(), *self.systems.items()]:
            for source, text in texts.items():
                if text != LEFT_OUT:
                    for form in text.split("\n"):
                        if "%n" in source and "%n" not in form:
                            form += "%n"  # a form for one or two may say the number in words
                        self.assertEqual(places(form), places(source), f"{name}: {source}")

    def test_ends_are_the_same(self):
        """A sentence ends as a sentence, a command that asks further with the ellipsis."""
        for name, texts in self.languages.items():
            for source, text in texts.items():
                self.assertEqual(text.rstrip().endswith("…"), source.rstrip().endswith("…"), f"{name}: {source}")
                if source.endswith("."):
                    self.assertRegex(text, r"[.。]$", f"{name}: {source}")

    def test_no_text_speaks_of_another_system(self):
        for language in [*LANGUAGES, "en"]:
            for source in self.sources:
                self.assertNotRegex(self.shown(language, source), FOREIGN, f"{language}: {source}")

    def test_programs_without_the_toolkit_have_the_same_sentences_in_every_language(self):
        english = None
        for name in LANGUAGES:
            lines = [line for line in (ROOT / f"base/words/sentences_{name}.txt").read_text().split("\n")
                     if line and not line.startswith("#")]  # fmt: skip
            pairs = list(zip(lines[::2], lines[1::2]))
            self.assertEqual(len(lines) % 2, 0, name)
            self.assertEqual(len({pattern for pattern, _ in pairs}), len(pairs), f"a sentence stands twice in {name}")
            english = english or [pattern for pattern, _ in pairs]
            self.assertEqual([pattern for pattern, _ in pairs], english, name)
            for pattern, words in pairs:
                self.assertEqual(words.count("{"), pattern.count("{"), f"{name}: {pattern}")
                self.assertNotEqual(words, pattern, name)
                self.assertNotRegex(words, FOREIGN, name)

    def test_every_title_and_advice_of_the_checks_has_its_words(self):
        checks = (ROOT / "drive/commands/Checks.cpp").read_text()
        titles = re.findall(r'^    \{"[a-z]+", "([^"]+)", \w+\},$', checks, re.MULTILINE)
        details = re.findall(r'row\.(?:failed|passed)\(\s*"((?:[^"\\]|\\.)*)"\s*[,)]', checks)
        self.assertGreater(len(titles), 6)
        self.assertGreater(len(details), 10)
        known = (ROOT / f"base/words/sentences_{LANGUAGES[0]}.txt").read_text().split("\n")
        self.assertEqual([text for text in titles + details if text not in known], [])

    def test_the_drive_tool_does_not_speak_of_another_system(self):
        for path in sorted((ROOT / "drive").rglob("*.cpp")):
            if "tests" not in path.parts:
                for text in re.findall(r'"((?:[^"\\\n]|\\.)*)"', path.read_text()):
                    self.assertNotRegex(text, FOREIGN, str(path))


if __name__ == "__main__":
    unittest.main()
