#!/bin/bash
# The tool under a real systemd user manager, with the unit that the application writes: started, killed, taken over
# and taken away. Needs root; ends with 77 where no manager can be started.
#
#   login-manager.sh TOOL
set -u
tool=$1
here=$(cd "$(dirname "$0")" && pwd)
skip() { echo "skipped: $1"; exit 77; }
[ "$(id -u)" = 0 ] || skip "this needs root"
[ -e /dev/loop-control ] || skip "this machine has no loop devices"
[ -x /lib/systemd/systemd ] || skip "systemd is not installed"
if [ "${2:-}" != --inner ]; then
    exec unshare -m --propagation slave "$0" "$tool" --inner
fi

T=$(mktemp -d /tmp/ferrobank-login.XXXXXX)
export HOME=$T/home XDG_RUNTIME_DIR=$T/run
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" /run/systemd/system
chmod 700 "$XDG_RUNTIME_DIR"
. "$here/expect.sh"

groups=()
for root in /sys/fs/cgroup/unified /sys/fs/cgroup/systemd /sys/fs/cgroup; do
    [ -e $root/cgroup.procs ] || continue
    mkdir "$root/ferrobank-login-$$" || skip "control groups cannot be made here"
    groups+=("$root/ferrobank-login-$$")
done
finish() {
    systemctl --user exit >/dev/null 2>&1
    wait "$manager" 2>/dev/null
    for group in "${groups[@]}"; do
        find "$group" -name cgroup.procs -exec cat {} + 2>/dev/null | while read -r process; do
            [ "$process" = $$ ] || kill -KILL "$process" 2>/dev/null
        done
    done
    for _ in $(seq 100); do umount "$HOME/Ferrobank" 2>/dev/null || break; sleep 0.05; done
    for group in "${groups[@]}"; do find "$group" -depth -type d -exec rmdir {} + 2>/dev/null; done
    rm -rf --one-file-system "$T"
}
trap finish EXIT
(
    for group in "${groups[@]}"; do echo "$BASHPID" >"$group/cgroup.procs"; done
    exec env -i HOME="$HOME" XDG_RUNTIME_DIR="$XDG_RUNTIME_DIR" PATH=/usr/bin:/bin /lib/systemd/systemd --user
) >"$T/manager.log" 2>&1 &
manager=$!
ready() { case $(systemctl --user is-system-running 2>/dev/null) in running | degraded) ;; *) false ;; esac }
for _ in $(seq 250); do ready && break; sleep 0.02; done
ready || skip "no user manager starts here: $(tail -n 2 "$T/manager.log")"

unit=org.ferrobank.Ferrobank.agent.service
mkdir -p "$HOME/.local/share/systemd/user"
cat >"$HOME/.local/share/systemd/user/$unit" <<UNIT
[Unit]
Description=Ferrobank drive
[Service]
Type=exec
NotifyAccess=main
ExecStart="$tool" serve
KillMode=mixed
FileDescriptorStoreMax=1
TimeoutStopSec=60
Restart=on-failure
RestartSec=1
[Install]
WantedBy=default.target
UNIT
systemctl --user daemon-reload

expectText "a unit that is not enabled does not start at login" '"id":"login","title":"Starts at login","state":"fail"' \
    "$tool" check --json
expect "the unit can be enabled" systemctl --user --quiet enable $unit
expectText "an enabled one does" '"id":"login","title":"Starts at login","state":"pass"' "$tool" check --json

process() { systemctl --user show -p MainPID --value $unit; }
expect "restart starts the unit" "$tool" restart
expect "it is active" test "$(systemctl --user is-active $unit)" = active
first=$(process)
echo kept >"$HOME/Ferrobank/file"
expect "takeover works" "$tool" restart --keep-mounted
expect "in the same process" test "$(process)" = "$first"
expect "restart works" "$tool" restart
expect "in the same process too" test "$(process)" = "$first"
expect "and it stays active" test "$(systemctl --user is-active $unit)" = active

# The space guard has no name; what the server has open of it is the only sign of it.
guard() {
    find "/proc/$1/fd" -lname '*/.ferrobank/space/*' -exec stat -Lc %i {} + 2>/dev/null
}
within 20 "the space guard is there" sh -c "find /proc/$(process)/fd -lname '*/.ferrobank/space/*' | grep -q ."
guarded=$(guard "$first")
expect "its number is known" test -n "$guarded"
# Made and handed to the manager are two steps: killed in between, the next server makes another one.
within 20 "the manager keeps it too" sh -c "
    [ \"\$(find /proc/$manager/fd -lname '*/.ferrobank/space/*' -exec stat -Lc %i {} +)\" = '$guarded' ]"
kill -KILL "$first"
within 10 "a killed server is started again" sh -c "
    new=\$(systemctl --user show -p MainPID --value $unit); [ \"\$new\" != 0 ] && [ \"\$new\" != $first ]"
within 10 "with the same space guard" sh -c "
    new=\$(systemctl --user show -p MainPID --value $unit)
    [ \"\$(find /proc/\$new/fd -lname '*/.ferrobank/space/*' -exec stat -Lc %i {} +)\" = '$guarded' ]"
within 10 "and adopts the drive" sh -c "'$tool' check --json | grep -q '\"id\":\"running\".*\"state\":\"pass\"'"
expect "with its file" test "$(cat "$HOME/Ferrobank/file")" = kept

expect "a second server beside the unit ends well" "$tool" serve
expect "stopping the unit unmounts" systemctl --user stop $unit
expect "nothing is mounted" sh -c '! mountpoint -q "$HOME/Ferrobank"'
expect "starting it mounts" systemctl --user start $unit
# Started is what has begun, in a unit of this type.
within 10 "the file is there again" grep -qx kept "$HOME/Ferrobank/file"

expect "uninstall" "$tool" uninstall --delete-store
expect "the unit is down" test "$(systemctl --user is-active $unit)" = inactive
expect "and gone" test ! -e "$HOME/.local/share/systemd/user/$unit"
expect "no link to it is left" test -z "$(find "$HOME/.config/systemd" -name "$unit" 2>/dev/null)"
expect "nothing is mounted any more" sh -c '! mountpoint -q "$HOME/Ferrobank"'
echo "user manager: all as expected"
