#!/bin/bash
# Runs a command as an ordinary user beside a real udisks2, polkit and udev on a private system bus, in mount and
# network namespaces of its own, so that nothing of the machine is touched. Needs root.
#
#   with-udisks.sh [--session active|remote|none] [--policy FILE] [--allow ACTION] [--install SOURCE=TARGET]...
#                  [--as user|root] -- COMMAND...
#
# `--policy` installs an action file; `--allow` stands for the administrator who says yes to this one action and to
# nothing else; `--install` puts a program at the place that the action names, all in one folder.
#
# The user is "ferrotest" (uid 64321), home and runtime folder are $FERRO_HOME and $XDG_RUNTIME_DIR; there is a second
# one, "ferrother" (uid 64322) with the home $FERRO_OTHER_HOME, without a session. `--session` says what kind of login
# session the first seems to have; `--as root` runs the command as root, without one. Ends with the command's status,
# or 77 with a reason where the machine lacks something.
set -u
skip() { echo "skipped: $1"; exit 77; }
[ "$(id -u)" = 0 ] || skip "this needs root"
for program in dbus-daemon unshare setpriv /lib/systemd/systemd-udevd /usr/libexec/udisks2/udisksd \
    /usr/lib/polkit-1/polkitd busctl; do
    command -v "$program" >/dev/null || skip "$program is not installed"
done
[ -e /dev/loop-control ] || skip "this machine has no loop devices"

if [ "${1:-}" != --inner ]; then
    T=$(mktemp -d /tmp/ferrobank-udisks.XXXXXX)
    chmod 755 "$T"
    unshare -m -n --propagation slave "$0" --inner "$T" "$@"
    result=$?
    rm -rf --one-file-system "$T"
    exit $result
fi
T=$2
shift 2
session=active policy='' allow='' as=user
installs=()
while [ "$1" != -- ]; do
    case $1 in
    --session) session=$2 ;;
    --policy) policy=$2 ;;
    --allow) allow=$2 ;;
    --install) installs+=("$2") ;;
    --as) as=$2 ;;
    *) echo "unknown option $1" >&2; exit 2 ;;
    esac
    shift 2
done
shift

uid=64321
children=() cgroups=()
finish() {
    for process in "${children[@]}"; do kill "$process" 2>/dev/null; done
    wait 2>/dev/null
    for cgroup in "${cgroups[@]}"; do
        while read -r process; do kill -KILL "$process" 2>/dev/null; done <"$cgroup/cgroup.procs"
    done
    sleep 0.1
    for cgroup in "${cgroups[@]}"; do rmdir -p --ignore-fail-on-non-empty "$cgroup" 2>/dev/null; done
}
trap finish EXIT

# A layer over a folder of the machine, into which everything goes that is made there.
layer() {
    local name=$T/layer${1//\//-}
    mkdir -p "$name/upper" "$name/work"
    mount -t overlay overlay -o "lowerdir=$1,upperdir=$name/upper,workdir=$name/work" "$1" ||
        skip "overlay mounts cannot be made here"
}
private() { mkdir -p "$1" && mount -t tmpfs -o mode=755 none "$1"; }
for folder in /etc /run /usr/lib /var/lib; do layer $folder; done
for folder in /run/dbus /run/udev /run/udisks2 /run/systemd /media /run/mount /dev/disk; do private "$folder"; done
private /run/media
private /var/lib/udisks2

echo "ferrotest:x:$uid:$uid::$T/home:/bin/sh" >>/etc/passwd
echo "ferrotest:x:$uid:" >>/etc/group
echo "ferrother:x:$((uid + 1)):$((uid + 1))::$T/other:/bin/sh" >>/etc/passwd
echo "ferrother:x:$((uid + 1)):" >>/etc/group
touch /etc/fstab
mkdir -p "$T/home" "$T/other" "$T/runtime"
chown $uid:$uid "$T/home" "$T/runtime"
chown $((uid + 1)):$((uid + 1)) "$T/other"
chmod 700 "$T/runtime"

# Only the rules that make a loop device known to udisks2; the others would touch foreign devices.
mkdir -p "$T/rules"
for rule in 60-block 60-persistent-storage 64-btrfs 80-udisks2 99-systemd; do
    cp "/lib/udev/rules.d/$rule.rules" "$T/rules/" 2>/dev/null
done
mount --bind "$T/rules" /lib/udev/rules.d
if [ -n "$policy" ]; then
    mkdir "$T/actions"
    cp -a /usr/share/polkit-1/actions/. "$T/actions/"
    install -o root -g root -m 644 "$policy" "$T/actions/"
    mount --bind "$T/actions" /usr/share/polkit-1/actions
fi
if [ -n "$allow" ]; then
    printf 'polkit.addRule(function(action) { if (action.id == "%s") return polkit.Result.YES; });\n' "$allow" \
        >/etc/polkit-1/rules.d/10-ferrobank-test.rules
    chmod 755 /etc/polkit-1/rules.d
fi
for install in "${installs[@]}"; do
    target=${install#*=}
    mkdir -p "$(dirname "$target")"
    install -o root -g root -m 755 "${install%%=*}" "$target"
done

# polkit asks the files of systemd-logind which session a process of the user's manager belongs to.
mkdir -p /run/systemd/users /run/systemd/sessions /run/systemd/seats
if [ "$session" != none ]; then
    active=1 remote=0 seat=SEAT=seat0
    if [ "$session" = remote ]; then remote=1 seat=''; fi
    printf 'NAME=ferrotest\nSTATE=active\nRUNTIME=%s\nSESSIONS=c1\nACTIVE_SESSIONS=c1\nSEATS=seat0\nDISPLAY=c1\nACTIVE_SEATS=seat0\nONLINE_SESSIONS=c1\n' \
        "$T/runtime" >/run/systemd/users/$uid
    printf 'UID=%s\nUSER=ferrotest\nACTIVE=%s\nIS_DISPLAY=1\nSTATE=active\nREMOTE=%s\nTYPE=x11\nCLASS=user\nLEADER=%s\n%s\n' \
        $uid $active $remote $$ "$seat" >/run/systemd/sessions/c1
fi
# With both kinds of control groups mounted, systemd's library looks into the unified one.
# Of this run alone: its end kills what is left in it, and another tree may run the same test.
for root in /sys/fs/cgroup/unified /sys/fs/cgroup/systemd /sys/fs/cgroup; do
    [ -e $root/cgroup.procs ] || continue
    cgroup=$root/user.slice/user-$uid.slice/user@$uid.service/app.slice/ferrobank-$$.service
    mkdir -p "$cgroup" || skip "control groups cannot be made here"
    cgroups+=("$cgroup")
done

dbus-daemon --system --nofork --nopidfile >"$T/bus.log" 2>&1 &
children+=($!)
for _ in $(seq 250); do [ -S /run/dbus/system_bus_socket ] && break; sleep 0.02; done
/lib/systemd/systemd-udevd >"$T/udevd.log" 2>&1 &
children+=($!)
/usr/lib/polkit-1/polkitd --no-debug >"$T/polkitd.log" 2>&1 &
children+=($!)
for _ in $(seq 250); do [ -S /run/udev/control ] && break; sleep 0.02; done
/usr/libexec/udisks2/udisksd >"$T/udisksd.log" 2>&1 &
children+=($!)
for _ in $(seq 500); do busctl --system status org.freedesktop.UDisks2 >/dev/null 2>&1 && break; sleep 0.02; done
busctl --system status org.freedesktop.UDisks2 >/dev/null 2>&1 || { cat "$T/udisksd.log"; skip "udisksd does not start"; }

export FERRO_HOME=$T/home FERRO_OTHER_HOME=$T/other LOGS=$T
if [ "$as" = root ]; then
    "$@"
    result=$?
    [ $result = 0 ] || tail -n 20 "$T"/*.log
    exit $result
fi
(
    for cgroup in "${cgroups[@]}"; do echo "$BASHPID" >"$cgroup/cgroup.procs"; done
    exec setpriv --reuid $uid --regid $uid --init-groups --reset-env env HOME="$T/home" FERRO_HOME="$T/home" \
        XDG_RUNTIME_DIR="$T/runtime" PATH=/usr/bin:/bin:/usr/sbin:/sbin LOGS="$T" "$@"
)
result=$?
[ $result = 0 ] || tail -n 20 "$T"/*.log
exit $result
