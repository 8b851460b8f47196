#!/bin/bash
# The tool in a session that may not mount: run by with-udisks.sh --session remote or none.
set -u
tool=$1
. "$(dirname "$0")/expect.sh"

expectText "restart says who may mount" "This login session may not mount the drive" "$tool" restart
expectText "status says so too" "install the Ferrobank package" "$tool" status --json
expectText "check offers the way out" "Log in at this computer's own screen" "$tool" check
expectText "nothing is left attached" "" losetup -n -O NAME -j "$HOME/Library/Application Support/Ferrobank/store/drive.btrfs"
expect "uninstall works all the same" "$tool" uninstall --delete-store
echo "session without permission: all as expected"
