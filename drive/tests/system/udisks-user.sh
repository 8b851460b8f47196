#!/bin/bash
# The tool as an ordinary user at the computer's own screen, with the real udisks2: run by with-udisks.sh.
set -u
tool=$1
. "$(dirname "$0")/expect.sh"
store="$HOME/Library/Application Support/Ferrobank/store"

expect "restart makes and mounts the drive" "$tool" restart
expect "a link leads to the mount" test "$(readlink ~/Ferrobank)" = /media/ferrotest/Ferrobank
for flag in nosuid nodev noatime; do
    expectText "the mount is $flag" ",$flag," sh -c "echo ,\$(findmnt -no VFS-OPTIONS /media/ferrotest/Ferrobank),"
done
expectText "status says mounted" '"mounted":true' "$tool" status --json
expect "a file can be written" sh -c 'echo kept >~/Ferrobank/file'
expect "the volume belongs to the user" test "$(stat -c '%U %a' ~/Ferrobank/)" = "ferrotest 700"

# The worst danger: the same image attached a second time.
expect "the image is read-only while attached" test "$(stat -c %a "$store/drive.btrfs")" = 400
expectText "udisks2 does not attach it again" "Permission denied" udisksctl loop-setup -f "$store/drive.btrfs"

expect "restart mounts anew" "$tool" restart
expect "the file is still there" test "$(cat ~/Ferrobank/file)" = kept
expect "takeover keeps the drive" "$tool" restart --keep-mounted

(cd ~/Ferrobank && exec sleep 30) &
busy=$!
expectText "a busy drive names the program" "in use by sleep ($busy)" "$tool" restart
kill $busy
wait $busy 2>/dev/null

# The server has the space guard open on the drive, so without force it is in use.
within 60 "the drive can be ejected by force" udisksctl unmount --force -b "$(losetup -n -O NAME -j "$store/drive.btrfs" | tr -d ' ')"
within 10 "an ejected drive is reported" sh -c "'$tool' status --json | grep -q 'was ejected'"
expect "the link dangles" test ! -e ~/Ferrobank
expect "restart brings it back" "$tool" restart
expect "with its file" test "$(cat ~/Ferrobank/file)" = kept

serving=$(sed 's/.*"pid":\([0-9]*\).*/\1/' "$XDG_RUNTIME_DIR/ferrobank/state.json")
kill -KILL "$serving"
expectText "the mount survives its server" '"mounted":true' "$tool" status --json
expect "restart adopts it" "$tool" restart
expect "one device is attached" test "$(losetup -n -O NAME -j "$store/drive.btrfs" | wc -l)" = 1

# A foreign folder in udisks2's place makes it choose another name.
expect "uninstall keeps the store" "$tool" uninstall
expect "the link is gone" test ! -L ~/Ferrobank
expect "the image is writable again" test "$(stat -c %a "$store/drive.btrfs")" = 600
expect "export and deletion" sh -c "'$tool' uninstall --export ~/Copy --delete-store"
expect "the copy is there" test "$(cat ~/Copy/file)" = kept
expect "the store is gone" test ! -e "$store"
echo "udisks2: all as expected"
