#!/usr/bin/python3
"""The administrator step as people meet it: a real polkitd, a real pkexec, the installed helper, an ordinary user.

Everything happens on private mounts. Skipped (77) without root, without polkit, or where mounts are not allowed.
"""
import argparse
import json
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

POLKIT = Path(__file__).resolve().parents[2] / 'support/polkit/with-polkit.sh'
PROMPT = 'Ferrobank wants to add the ferrobank command to /usr/local/bin.'
LINK = '/usr/local/bin/ferrobank'

# Overlays keep the machine's own folders as they are.
PREPARE = '''#!/bin/bash
set -e
scratch=$1
overlay() {{
    local place=$scratch/overlay$(echo "$1" | tr / _)
    mkdir -p "$place/upper" "$place/work"
    mount -t overlay overlay -o "lowerdir=$1,upperdir=$place/upper,workdir=$place/work" "$1" || exit 77
}}
mount -t tmpfs -o mode=755 none /usr/local
overlay /usr/lib
overlay /usr/share/polkit-1/actions
if [ {installed} = True ]; then
    helpers={bundle}/Contents/Helpers
    mkdir -p "$helpers"
    install -m 755 {tool} "$helpers/ferrobank"
    install -m 755 {helper} "$helpers/ferrobank-link-helper"
    install -m 644 {policy} /usr/share/polkit-1/actions/
fi
{more}
'''


class RealPolkit(unittest.TestCase):
    options = None

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix='polkit-test.'))
        self.addCleanup(shutil.rmtree, self.folder)
        self.folder.chmod(0o755)
        self.log = self.folder / 'agent.log'

    def probe(self, agent, *, installed=True, more='', target=None, link=LINK, polkit=True):
        prepare = self.folder / 'prepare'
        prepare.write_text(PREPARE.format(installed=installed, more=more, **vars(self.options)))
        prepare.chmod(0o755)
        command = [POLKIT, '--user', 'nobody', '--agent', agent, '--log', self.log, '--prepare', prepare]
        if not polkit:
            command.append('--no-polkit')
        command += ['--', self.options.probe, target or self.tool(), link]
        done = subprocess.run(command, capture_output=True, text=True, timeout=60, cwd='/')
        if done.returncode == 77:
            self.skipTest('this machine allows no private mounts')
        self.assertEqual(done.returncode, 0, done.stderr)
        return json.loads(done.stdout)

    def tool(self):
        return self.options.bundle + '/Contents/Helpers/ferrobank'

    def shown(self):
        return [json.loads(line) for line in self.log.read_text().splitlines() if line.startswith('{')]

    def test_approved_prompt_makes_the_folder_and_the_link(self):
        self.assertEqual(self.probe('approve'), {'kind': 'done', 'message': '', 'link': self.tool()})

    def test_dialog_shows_our_sentence_exactly(self):
        self.probe('approve')
        [request] = self.shown()
        self.assertEqual(request['message'], PROMPT)
        self.assertEqual(request['action'], 'org.ferrobank.Ferrobank.install-command')
        self.assertEqual(request['icon'], 'org.ferrobank.Ferrobank')

    def test_dismissed_dialog_is_cancelled(self):
        self.assertEqual(self.probe('cancel'), {'kind': 'cancelled', 'message': '', 'link': ''})

    def test_refusal_has_the_systems_words(self):
        self.assertEqual(self.probe('deny'), {'kind': 'failed', 'message': 'Not authorized', 'link': ''})

    def test_missing_agent_has_the_systems_words(self):
        self.assertEqual(self.probe('none'),
                         {'kind': 'failed', 'message': 'No authentication agent found.', 'link': ''})

    def test_missing_polkit_has_the_systems_words(self):
        result = self.probe('none', polkit=False)
        self.assertEqual(result['kind'], 'failed')
        self.assertIn('Could not connect', result['message'])

    def test_stale_link_is_replaced(self):
        self.assertEqual(self.probe('approve', more=f'mkdir /usr/local/bin; ln -s /old {LINK}')['link'], self.tool())

    def test_file_in_the_place_is_left_alone(self):
        result = self.probe('approve', more=f'mkdir /usr/local/bin; echo precious >{LINK}')
        self.assertEqual(result, {'kind': 'failed', 'message': f'{LINK} already exists and is not a link', 'link': ''})

    def test_read_only_place_has_the_systems_words(self):
        result = self.probe('approve', more='mount -o remount,ro /usr/local')
        self.assertEqual(result['kind'], 'failed')
        self.assertIn('Read-only file system', result['message'])

    def test_helper_refuses_a_tool_that_others_can_change(self):
        for weaken in ('chmod 775 {0}', 'chown nobody {0}', 'chmod o+w {0}/..', 'chmod 777 {0}/ferrobank',
                       'rm {0}/ferrobank; ln -s /bin/true {0}/ferrobank'):
            with self.subTest(weaken):
                helpers = self.options.bundle + '/Contents/Helpers'
                result = self.probe('approve', more=weaken.format(helpers))
                self.assertEqual(result['kind'], 'failed')
                self.assertIn('only the administrator can change', result['message'])
                self.assertEqual(result['link'], '')

    def test_helper_refuses_a_place_that_others_can_change(self):
        for weaken in ('mkdir /usr/local/bin; chmod o+w /usr/local/bin', 'mkdir /usr/local/bin; chown nobody /usr/local/bin',
                       'chmod o+w /usr/local', 'mkdir -m 777 /usr/local/open; ln -s open /usr/local/bin',
                       'mkdir -p /usr/local/own/inner; chown nobody /usr/local/own; ln -s own/inner /usr/local/bin'):
            with self.subTest(weaken):
                result = self.probe('approve', more=weaken)
                self.assertEqual(result, {'kind': 'failed', 'link': '',
                                          'message': 'Others than the administrator can change /usr/local/bin.'})

    def test_place_of_the_administrators_choice_is_used(self):
        for arranged in ('mkdir /usr/local/sbin; ln -s sbin /usr/local/bin',
                         'mkdir /usr/local/bin; chown root:staff /usr/local/bin; chmod 2775 /usr/local/bin'):
            with self.subTest(arranged):
                self.assertEqual(self.probe('approve', more=arranged)['link'], self.tool())

    def test_bundle_in_another_folder_replaces_a_link_and_nothing_else(self):
        target = '/home/ann/Ferrobank.app/Contents/Helpers/ferrobank'
        stale = f'mkdir /usr/local/bin; ln -s /old {LINK}'
        self.assertEqual(self.probe('approve', installed=False, target=target, more=stale)['link'], target)
        precious = f'mkdir /usr/local/bin; echo precious >{LINK}'
        result = self.probe('approve', installed=False, target=target, more=precious)
        self.assertEqual((result['kind'], result['link']), ('failed', ''))

    def test_bundle_in_another_folder_asks_with_the_systems_own_sentence(self):
        target = '/home/ann/My "Apps"/Ferrobank.app/Contents/Helpers/ferrobank'
        result = self.probe('approve', installed=False, target=target)
        self.assertEqual(result, {'kind': 'done', 'message': '', 'link': target})
        self.assertEqual([request['action'] for request in self.shown()], ['org.freedesktop.policykit.exec'] * 2)

    def test_installed_helper_links_no_other_tool(self):
        target = '/home/mallory/ferrobank'
        self.assertEqual(self.probe('approve', target=target)['link'], target)
        self.assertEqual({request['action'] for request in self.shown()}, {'org.freedesktop.policykit.exec'})


class Helper(unittest.TestCase):
    options = None

    def run_helper(self, *arguments, **more):
        return subprocess.run([self.options.helper, *arguments], capture_output=True, text=True, **more)

    def test_helper_takes_no_arguments(self):
        done = self.run_helper('/tmp/evil')
        self.assertEqual((done.returncode, done.stdout), (2, ''))

    def test_helper_does_nothing_without_rights(self):
        done = self.run_helper(user='nobody')
        self.assertEqual((done.returncode, done.stderr), (2, 'This program needs administrator rights.\n'))

    def test_helper_does_nothing_where_others_could_change_it(self):
        with tempfile.TemporaryDirectory() as folder:
            place = Path(folder)
            place.chmod(0o755)
            shutil.copy(self.options.helper, place / 'helper')
            shutil.copy(self.options.tool, place / 'ferrobank')
            done = subprocess.run([place / 'helper'], capture_output=True, text=True)
            self.assertEqual(done.returncode, 2)  # the temporary folder's own folder is everybody's to write
            self.assertTrue(os.stat('/tmp').st_mode & stat.S_IWOTH)


def main():
    parser = argparse.ArgumentParser()
    for name in ('probe', 'helper', 'tool', 'policy', 'bundle'):
        parser.add_argument(f'--{name}', required=True)
    options, rest = parser.parse_known_args()
    if os.geteuid() != 0:
        print('skipped: needs root')
        return 77
    if not (shutil.which('pkexec') and Path('/usr/lib/polkit-1/polkitd').exists()):
        print('skipped: polkit is not installed')
        return 77
    RealPolkit.options = Helper.options = options
    result = unittest.main(argv=[sys.argv[0], *rest], verbosity=2, exit=False).result
    if not result.wasSuccessful():
        return 1
    return 77 if len(result.skipped) == result.testsRun else 0


if __name__ == '__main__':
    sys.exit(main())
