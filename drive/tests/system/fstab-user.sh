#!/bin/bash
# The tool where an administrator allows a line in fstab: run by with-udisks.sh --session remote with the policy
# and the installed program, so that the real pkexec asks the real polkit.
set -u
tool=$1
. "$(dirname "$0")/expect.sh"

expectText "without the line it may not mount" "may not mount" "$tool" restart
expectText "the helper takes no orders from plain users" "pkexec" "$tool" helper-fstab add
expectText "polkit allows no other command" "No authentication agent found" pkexec --disable-internal-agent "$tool" status
expect "the administrator allows the line" pkexec --disable-internal-agent "$tool" helper-fstab add
expect "a second time changes nothing" pkexec --disable-internal-agent "$tool" helper-fstab add
expect "the line is there once" test "$(grep -c subvol=u/files /etc/fstab)" = 1
expect "restart mounts by the line" "$tool" restart
expect "the drive is a mount point" mountpoint -q ~/Ferrobank
expect "a file can be written" sh -c 'echo kept >~/Ferrobank/file'
expect "restart mounts anew" "$tool" restart
expect "the file is still there" test "$(cat ~/Ferrobank/file)" = kept
(cd ~/Ferrobank && exec sleep 30) &
busy=$!
expectText "a busy drive names the program" "in use by sleep ($busy)" "$tool" restart
kill $busy
wait $busy 2>/dev/null
expect "uninstall ends it" "$tool" uninstall
expect "nothing is mounted" sh -c '! mountpoint -q ~/Ferrobank'
expect "the line is gone" sh -c '! grep -q Ferrobank /etc/fstab'
echo "fstab: all as expected"
