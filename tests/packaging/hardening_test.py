#!/usr/bin/python3
"""How the programs of the built bundle are hardened, read from the files themselves."""
import json
import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CONTENTS = pathlib.Path(os.environ.get('FERROBANK_BUNDLE', ROOT / 'build/release/Ferrobank.app')) / 'Contents'
HELPERS = CONTENTS / 'Helpers'
# The largest of those that root runs too; the others are so small that they may hold nothing of what is looked for in it.
# Checked buffers do not show in a file where the compiler could see that all of them suffice.
DRIVE = HELPERS / 'ferrobank-drive'


def is_elf(path):
    if path.is_symlink() or not path.is_file():
        return False
    with path.open('rb') as file:
        return file.read(4) == b'\x7fELF'


def ours():
    """Every program and library of ours in the bundle."""
    return sorted(path for folder in (HELPERS, CONTENTS / 'Linux') for path in folder.rglob('*')
                  if is_elf(path) and 'ferrobank' in path.name.lower())


def told(path, *what):
    return subprocess.run(['readelf', '-W', *what, path], capture_output=True, text=True, check=True).stdout


def functions(path):
    """Names of the functions that the file takes from others, without their versions, or holds where it needs no others."""
    if 'NEEDED' in told(path, '-d'):
        return set(re.findall(r' UND (\w+)', told(path, '--dyn-syms')))
    return set(re.findall(r' FUNC .* (\w+)$', told(path, '-s'), re.MULTILINE))


class Hardening(unittest.TestCase):
    def test_there_are_programs_and_libraries_to_look_at(self):
        names = {path.name for path in ours()}
        self.assertGreaterEqual(names, {'Ferrobank', 'ferrobank', 'ferrobank-drive', 'ferrobank-link-helper',
                                        'ferrobank-mount-helper', 'ferrobank-update'})
        self.assertTrue(any(name.startswith('libferrobank') for name in names), names)

    def test_everything_lies_at_an_address_of_chance(self):
        for path in ours():
            with self.subTest(path.name):
                self.assertRegex(told(path, '-h'), r'Type:\s+DYN')
                if '.so' not in path.name:
                    self.assertRegex(told(path, '-d'), r'FLAGS_1.*\bPIE\b')

    def test_addresses_of_functions_are_found_at_start_and_closed_to_writing(self):
        for path in ours():
            with self.subTest(path.name):
                self.assertRegex(told(path, '-l'), r'GNU_RELRO')
                self.assertRegex(told(path, '-d'), r'BIND_NOW|\bNOW\b')

    def test_stack_is_not_executable(self):
        for path in ours():
            with self.subTest(path.name):
                self.assertRegex(told(path, '-l'), r'GNU_STACK(\s+0x\w+){5}\s+RW\s')

    def test_stack_is_guarded(self):
        for path in ours():
            with self.subTest(path.name):
                self.assertIn('__stack_chk_fail', functions(path))

    def test_standard_library_checks_its_callers_where_root_may_run_the_program(self):
        self.assertTrue([name for name in functions(DRIVE) if '__glibcxx_assert_fail' in name])

    def test_every_source_of_the_drive_tool_is_compiled_so(self):
        wanted = ('-fstack-protector-strong', '-D_FORTIFY_SOURCE=2', '-D_GLIBCXX_ASSERTIONS', '-fstack-clash-protection',
                  '-fPI')
        commands = self.commands_of(CONTENTS.parents[1] / 'drive/compile_commands.json', '/drive/')
        self.assertGreater(len(commands), 50)
        for source, command in commands:
            for flag in wanted:
                with self.subTest(source=source, flag=flag):
                    self.assertIn(flag, command)

    def test_every_source_of_the_link_helper_is_compiled_so(self):
        commands = self.commands_of(CONTENTS.parents[1] / 'compile_commands.json', '/app/Platform/linux/link/Link')
        self.assertEqual(len(commands), 2)
        for source, command in commands:
            for flag in ('-fstack-protector-strong', '-D_FORTIFY_SOURCE=2', '-D_GLIBCXX_ASSERTIONS'):
                with self.subTest(source=source, flag=flag):
                    self.assertIn(flag, command)

    def commands_of(self, database, folder):
        return [(entry['file'], entry['command']) for entry in json.loads(database.read_text())
                if folder in entry['file'] and '/tests/' not in entry['file']]


if __name__ == '__main__':
    unittest.main()
