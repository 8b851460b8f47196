#!/bin/bash
# A private, throw-away desktop for tests: user service manager, session bus, X server, window manager, panel
# with a tray, accessibility bus.
#
#   desktop.sh up   DIR [options]     start; writes DIR/env.sh (source it) and DIR/pids
#   desktop.sh exec DIR cmd args...   run a command inside
#   desktop.sh shot DIR file.png      screenshot of the whole screen
#   desktop.sh host-stop DIR          take the panel (tray host) away
#   desktop.sh host-start DIR         bring it back
#   desktop.sh down DIR               stop everything that "up" started (only that), keep DIR/log
#
# options of "up":
#   --display N      X display number (default: a free one)
#   --size WxH       screen size (default 1280x800)
#   --user NAME      run all of it as this user (needs root)
#   --home DIR       home folder (default DIR/home)
#   --no-systemd     plain dbus-daemon instead of a user service manager
#   --no-x           no X server (and nothing that needs one): bus and service manager only
#   --no-wm  --no-panel  --no-a11y
#   --with PID       end with this process, should it end without "down"
#   --wayland        headless sway + waybar instead of Xvfb + openbox + xfce4-panel
#                    (sway refuses to run as root: combine with --user)
#
# "up" ends with 77 where the machine cannot give what was asked for (no control group, no such program), with 1
# where something did not start. Only processes recorded in DIR/pids or living in the desktop's own control
# group are ever signalled; nothing is looked up by name.
set -u

kCannot=77

die() {
    echo "desktop.sh: $*" >&2
    exit 1
}

cannot() {
    echo "desktop.sh: $*" >&2
    exit $kCannot
}

usage() {
    sed -n '2,26s/^# \{0,1\}//p' "$0"
    exit 2
}

cmd=${1:-}
D=${2:-}
[ -n "$cmd" ] && [ -n "$D" ] || usage
shift 2

# --- processes ---------------------------------------------------------------------------------------------------

# Start time of a process; empty when it is gone or only waits to be reaped: what reaps here may be late.
start_time() { sed -E 's/^.*\) //' "/proc/$1/stat" 2>/dev/null | awk '$1 != "Z" && $1 != "X" { print $20 }'; }

# Replaces the shell by a command in the environment of the desktop, as its user.
inside() {
    local as=() more=()
    [ -n "$H_USER" ] && as=(setpriv --reuid "$H_USER" --regid "$(id -g "$H_USER")" --init-groups)
    [ "$H_A11Y" = 1 ] && more+=(QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1)
    [ -n "$H_DISPLAY" ] && more+=("DISPLAY=:$H_DISPLAY")
    [ -n "$H_WL" ] && more+=("WAYLAND_DISPLAY=$H_WL" "SWAYSOCK=$D/run/sway.sock")
    if [ "$H_WAYLAND" = 1 ]; then
        more+=(XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=sway)
    else
        more+=(XDG_SESSION_TYPE=x11 XDG_CURRENT_DESKTOP=XFCE)
    fi
    exec "${as[@]}" env -i PATH=/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin LANG=C.UTF-8 HOME="$H_HOME" \
        USER="${H_USER:-$(id -un)}" XDG_RUNTIME_DIR="$D/run" DBUS_SESSION_BUS_ADDRESS="unix:path=$D/run/bus" \
        "${more[@]}" "$@"
}

# spawn NAME cmd...: the sub-shell becomes the command, so its number stays; the start time tells it from a later
# process of the same number.
spawn() {
    local name=$1
    shift
    (inside "$@") >"$D/log/$name.log" 2>&1 </dev/null &
    record "$name" $!
}

record() {
    disown "$2"
    echo "$1 $2 $(start_time "$2")" >>"$D/pids"
}

pid_of() { awk -v name="$1" '$1 == name { pid = $2; time = $3 } END { print pid, time }' "$D/pids"; }

alive() { [ -n "${1:-}" ] && [ "$(start_time "$1")" = "$2" ]; }

stop_one() { # name [signal]
    local pid time
    read -r pid time <<<"$(pid_of "$1")"
    alive "$pid" "$time" || return 0
    kill -"${2:-TERM}" "$pid" 2>/dev/null
    for _ in $(seq 100); do
        alive "$pid" "$time" || return 0
        sleep 0.02
    done
    kill -KILL "$pid" 2>/dev/null
}

wait_for() { # seconds what cmd...
    local tries=$(($1 * 50)) what=$2
    shift 2
    for _ in $(seq $tries); do
        (inside "$@") >/dev/null 2>&1 && return 0
        sleep 0.02
    done
    tail -n 5 "$D"/log/*.log >&2
    die "timed out waiting for $what"
}

needs() {
    for program in "$@"; do
        command -v "$program" >/dev/null || cannot "$program is not installed"
    done
}

save() {
    for name in H_USER H_HOME H_DISPLAY H_A11Y H_CG H_WL H_WAYLAND; do
        echo "$name=$(printf %q "${!name}")"
    done >"$D/state"
}

# --- pieces ------------------------------------------------------------------------------------------------------

cgroups() {
    for hierarchy in /sys/fs/cgroup/systemd /sys/fs/cgroup/unified; do
        [ -f $hierarchy/cgroup.procs ] && echo "$hierarchy/$H_CG"
    done
    [ -f /sys/fs/cgroup/cgroup.controllers ] && echo "/sys/fs/cgroup/$H_CG"
}

# A service manager needs a control group of its own: without one it ends in silence, or takes the caller's.
start_manager() {
    local group pid
    needs systemctl busctl
    mkdir -p /run/systemd/system 2>/dev/null || cannot "/run/systemd/system cannot be made"
    H_CG=testdesktop-$$
    save
    [ -n "$(cgroups)" ] || cannot "there are no control groups here"
    for group in $(cgroups); do
        mkdir -p "$group" 2>/dev/null || cannot "control groups are not writable here"
        [ -n "$H_USER" ] && chown -R "$H_USER:" "$group"
    done
    (
        for group in $(cgroups); do echo "$BASHPID" >"$group/cgroup.procs" || exit 1; done
        inside /lib/systemd/systemd --user
    ) >"$D/log/systemd.log" 2>&1 </dev/null &
    pid=$!
    record systemd $pid
    # shellcheck disable=SC2016
    wait_for 20 "user service manager" sh -c \
        's=$(systemctl --user is-system-running); [ "$s" = running ] || [ "$s" = degraded ]'
}

stop_manager() {
    local pid time group process
    (inside systemctl --user exit) >/dev/null 2>&1
    read -r pid time <<<"$(pid_of systemd)"
    for _ in $(seq 250); do
        alive "$pid" "$time" || break
        sleep 0.02
    done
    stop_one systemd KILL
    # A unit whose file was deleted while it ran is not stopped by the manager.
    for group in $(cgroups); do
        [ -d "$group" ] || continue
        find "$group" -name cgroup.procs -exec cat {} + | while read -r process; do
            kill -KILL "$process" 2>/dev/null
        done
        for _ in $(seq 20); do
            find "$group" -depth -type d -exec rmdir {} + 2>/dev/null
            [ -d "$group" ] || break
            sleep 0.05
        done
    done
}

# Tells the bus and the manager what the programs that they start should see.
share_environment() {
    local where=()
    [ -n "$H_CG" ] && where=(--systemd)
    (inside dbus-update-activation-environment "${where[@]}" "$1" QT_LINUX_ACCESSIBILITY_ALWAYS_ON \
        XDG_CURRENT_DESKTOP) >/dev/null 2>&1
}

# Must be true before an application starts: Qt 6.4 does not notice a later change.
start_accessibility() {
    wait_for 20 "accessibility bus" busctl --user call org.a11y.Bus /org/a11y/bus org.a11y.Bus GetAddress
    (inside busctl --user set-property org.a11y.Bus /org/a11y/bus org.a11y.Status IsEnabled b true) >/dev/null 2>&1
}

start_wayland() { # size
    needs sway waybar
    printf 'output HEADLESS-1 resolution %s\nfocus_on_window_activation focus\n' "$1" >"$D/sway.cfg"
    cat >"$D/waybar.json" <<'X'
{"layer":"top","position":"top","height":28,"modules-left":["sway/workspaces"],"modules-right":["tray"],
 "tray":{"icon-size":20,"spacing":6}}
X
    spawn sway env SWAYSOCK="$D/run/sway.sock" WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 \
        WLR_RENDERER=pixman sway -c "$D/sway.cfg"
    for _ in $(seq 250); do
        H_WL=$(cd "$D/run" && find . -maxdepth 1 -name 'wayland-[0-9]*' ! -name '*.lock' -printf '%f\n' | head -n 1)
        [ -n "$H_WL" ] && [ -S "$D/run/sway.sock" ] && break
        sleep 0.02
    done
    [ -n "$H_WL" ] || die "sway did not start (log in $D/log/sway.log)"
    save
    share_environment WAYLAND_DISPLAY
}

start_x() { # size
    local number=()
    needs Xvfb xdpyinfo
    [ -d /tmp/.X11-unix ] || mkdir -m 1777 /tmp/.X11-unix 2>/dev/null
    : >"$D/display"
    [ -n "$H_USER" ] && chown "$H_USER:" "$D/display"
    [ -n "$H_DISPLAY" ] && number=(":$H_DISPLAY")
    # The server chooses a free number itself and tells it, so that two desktops never take the same. It stays as it is
    # when its last client leaves: who connects while it starts anew is turned away, the window manager for example.
    # shellcheck disable=SC2016
    spawn xvfb sh -c 'exec 5>"$1"; shift; exec Xvfb "$@"' sh "$D/display" "${number[@]}" -displayfd 5 \
        -screen 0 "${1}x24" -nolisten tcp -noreset -ac +extension GLX
    for _ in $(seq 500); do
        [ -s "$D/display" ] && break
        sleep 0.02
    done
    H_DISPLAY=$(cat "$D/display")
    [ -n "$H_DISPLAY" ] || die "Xvfb did not start (log in $D/log/xvfb.log)"
    save
    wait_for 20 "X server" xdpyinfo
    share_environment DISPLAY
}

start_window_manager() {
    needs openbox xprop
    spawn wm openbox
    wait_for 20 "window manager" sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 0x'
}

panel_config() {
    local folder="$H_HOME/.config/xfce4/xfconf/xfce-perchannel-xml"
    mkdir -p "$folder"
    cat >"$folder/xfce4-panel.xml" <<'X'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="32"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
        <value type="int" value="3"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="tasklist"/>
    <property name="plugin-2" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-3" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
X
    [ -n "$H_USER" ] && chown -R "$H_USER:" "$H_HOME/.config"
    return 0
}

host_start() {
    if [ "$H_WAYLAND" = 1 ]; then
        spawn panel waybar -c "$D/waybar.json"
    else
        needs xfce4-panel
        panel_config
        spawn panel xfce4-panel --disable-wm-check
    fi
    wait_for 20 "tray host" sh -c 'busctl --user get-property org.kde.StatusNotifierWatcher \
        /StatusNotifierWatcher org.kde.StatusNotifierWatcher IsStatusNotifierHostRegistered | grep -q true'
}

write_environment() {
    {
        echo "export XDG_RUNTIME_DIR='$D/run' HOME=$(printf %q "$H_HOME")"
        echo "export DBUS_SESSION_BUS_ADDRESS='unix:path=$D/run/bus'"
        if [ "$H_WAYLAND" = 1 ]; then
            echo "export XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=sway"
            echo "export WAYLAND_DISPLAY=$H_WL SWAYSOCK='$D/run/sway.sock'"
            echo "unset DISPLAY"
        else
            echo "export XDG_SESSION_TYPE=x11 XDG_CURRENT_DESKTOP=XFCE ${H_DISPLAY:+DISPLAY=:$H_DISPLAY}"
            echo "unset WAYLAND_DISPLAY"
        fi
        [ "$H_A11Y" = 1 ] && echo "export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"
    } >"$D/env.sh"
}

# Brings the desktop down once the process is gone; ends by itself when the desktop is.
follow() { # pid
    local time
    time=$(start_time "$1")
    while [ -f "$D/state" ]; do
        alive "$1" "$time" || exec "$0" down "$D"
        sleep 1
    done
}

clean_up_after() { # exit status of "up"
    [ "$1" = 0 ] || "$0" down "$D" >/dev/null 2>&1
    exit "$1"
}

# --- commands ----------------------------------------------------------------------------------------------------

up() {
    H_USER='' H_HOME='' H_DISPLAY='' H_A11Y=1 H_CG='' H_WL='' H_WAYLAND=0
    local size=1280x800 systemd=1 x=1 wm=1 panel=1 owner=''
    while [ $# -gt 0 ]; do
        case $1 in
        --display) H_DISPLAY=$2 && shift ;;
        --size) size=$2 && shift ;;
        --user) H_USER=$2 && shift ;;
        --home) H_HOME=$2 && shift ;;
        --no-systemd) systemd=0 ;;
        --no-x) x=0 ;;
        --no-wm) wm=0 ;;
        --no-panel) panel=0 ;;
        --no-a11y) H_A11Y=0 ;;
        --with) owner=$2 && shift ;;
        --wayland) H_WAYLAND=1 ;;
        *) die "unknown option $1" ;;
        esac
        shift
    done
    mkdir -p "$D/log" "$D/run"
    D=$(cd "$D" && pwd)
    : >"$D/pids"
    chmod 700 "$D/run"
    [ ${#D} -lt 80 ] || die "DIR is too long for a socket's path"
    case $D in
    *[!A-Za-z0-9/._-]*) die "DIR must be plain, for it becomes part of bus addresses; --home may be anything" ;;
    esac
    : "${H_HOME:=$D/home}"
    mkdir -p "$H_HOME"
    if [ -n "$H_USER" ]; then
        [ "$(id -u)" = 0 ] || cannot "--user needs root"
        chmod 755 "$D"
        chown -R "$H_USER:" "$D/run" "$H_HOME" "$D/log"
    fi
    save
    trap 'clean_up_after $?' EXIT

    if [ $systemd = 1 ]; then
        start_manager
    else
        needs dbus-daemon busctl
        spawn dbus dbus-daemon --session --nofork --nopidfile --address="unix:path=$D/run/bus"
    fi
    wait_for 20 "session bus" busctl --user call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus GetId

    if [ "$H_WAYLAND" = 1 ]; then
        start_wayland "$size"
    elif [ $x = 1 ]; then
        start_x "$size"
        [ $wm = 1 ] && start_window_manager
    fi
    if [ $x = 1 ] || [ "$H_WAYLAND" = 1 ]; then
        [ "$H_A11Y" = 1 ] && start_accessibility
        [ $panel = 1 ] && host_start
    fi
    save
    write_environment
    if [ -n "$owner" ]; then
        (follow "$owner") >/dev/null 2>&1 </dev/null &
        disown $!
    fi
    echo "up: $D ${H_DISPLAY:+display :$H_DISPLAY}${H_WL:+$H_WL}"
}

down() {
    for name in panel wm sway; do stop_one $name; done
    [ -n "$H_CG" ] && stop_manager
    stop_one dbus
    stop_one xvfb
    rm -rf "$D/run" "$D/pids" "$D/env.sh" "$D/state" "$D/display"
    echo "down: $D"
}

case $cmd in
up) up "$@" ;;
exec | shot | host-stop | host-start | down)
    D=$(cd "$D" && pwd) || exit 1
    # shellcheck source=/dev/null
    . "$D/state" || exit 1
    case $cmd in
    exec) inside "$@" ;;
    shot)
        if [ "$H_WAYLAND" = 1 ]; then
            (inside grim -) >"$1"
        else
            (inside import -silent -window root png:-) >"$1"
        fi
        ;;
    host-stop) stop_one panel ;;
    host-start) host_start ;;
    down) down ;;
    esac
    ;;
*) usage ;;
esac
