#!/bin/bash
# The tool where an administrator allows the mount helper: run by with-udisks.sh --session remote with the policy, the
# installed programs and an administrator who says yes, so that the real pkexec asks the real polkit.
set -u
tool=$1
helper=$2
. "$(dirname "$0")/expect.sh"
store="$HOME/Library/Application Support/Ferrobank/store"
mounted=/run/ferrobank/$(id -u)/Ferrobank
asRoot() { pkexec --disable-internal-agent "$@"; }

expectText "without an approval it may not mount" "may not mount" "$tool" restart
expectText "the advice names the helper by its full path" "or run: pkexec $helper allow" "$tool" restart
expectText "the helper does nothing for plain users" "needs administrator rights" "$helper" drive mount
expectText "nor for one whom nobody has allowed" "An administrator has to allow this first" asRoot "$helper" drive mount
for wish in retire-lines remove-all; do
    expectText "polkit lets nobody $wish" "No authentication agent found" asRoot "$helper" $wish
done
expectText "nor run the drive tool as root" "No authentication agent found" asRoot "$tool" status

expect "the administrator allows it" asRoot "$helper" allow
expect "a second time changes nothing" asRoot "$helper" allow
expect "nothing is written to fstab" sh -c '! grep -q Ferrobank /etc/fstab'
expect "restart mounts" "$tool" restart
expect "a link leads to the mount" test "$(readlink ~/Ferrobank)" = "$mounted"
expect "it is a mount point" mountpoint -q "$mounted"
for flag in nosuid nodev noatime; do
    expectText "the mount is $flag" ",$flag," sh -c "echo ,\$(findmnt -no VFS-OPTIONS $mounted),"
done
expectText "status says so" '"mounted":true' "$tool" status --json
expect "the image is read-only while attached" test "$(stat -c %a "$store/drive.btrfs")" = 400
expect "a file can be written" sh -c 'echo kept >~/Ferrobank/file'
expect "restart mounts anew" "$tool" restart
expect "the file is still there" test "$(cat ~/Ferrobank/file)" = kept
(cd ~/Ferrobank && exec sleep 30) &
busy=$!
expectText "a busy drive names the program" "in use by sleep ($busy)" "$tool" restart
kill $busy
wait $busy 2>/dev/null

serving=$(sed 's/.*"pid":\([0-9]*\).*/\1/' "$XDG_RUNTIME_DIR/ferrobank/state.json")
kill -KILL "$serving"
expectText "the mount survives its server" '"mounted":true' "$tool" status --json
expect "restart adopts it" "$tool" restart
expect "one device is attached" test "$(losetup -n -O NAME -j "$store/drive.btrfs" | wc -l)" = 1

expect "uninstall ends it" "$tool" uninstall
expect "nothing is mounted" sh -c "! mountpoint -q '$mounted'"
expect "the link is gone" test ! -L ~/Ferrobank
expect "nothing is left attached" test -z "$(losetup -n -O NAME -j "$store/drive.btrfs")"
expect "the approval is gone" test ! -e "/var/lib/ferrobank/mounting/$(id -u)"
expectText "and mounting needs a new one" "An administrator has to allow this first" asRoot "$helper" drive mount
echo "mount helper: all as expected"
