#!/usr/bin/env bash
# Runs a command beside a real polkitd, on a private system bus, in a private mount namespace, so that nothing of the
# machine is touched. Needs root.
#
#   with-polkit.sh [--user NAME] [--agent cancel|approve|deny|ignore|none] [--log FILE] [--prepare SCRIPT] [--no-polkit]
#                  -- command args...
#
# --prepare  run as root inside the namespace beforehand, with a scratch folder as its argument
# --log      the agent's JSON lines: action, message shown, details, identities
#
# The agent serves the process of the command itself, which must be the direct parent of pkexec. The exit status is the
# command's; 77 where the machine allows no private mounts.
set -u
here=$(cd "$(dirname "$0")" && pwd)
if [ "${1:-}" != --inner ]; then
    unshare -m --propagation private true 2>/dev/null || exit 77
    scratch=$(mktemp -d /tmp/with-polkit.XXXXXX)
    chmod 755 "$scratch"
    unshare -m --propagation private "$0" --inner "$scratch" "$@"
    status=$?
    rm -rf "$scratch"
    exit $status
fi
scratch=$2
shift 2
user=$(id -un) agent=none log=$scratch/agent.log prepare='' polkit=yes
while [ $# -gt 0 ]; do
    case $1 in
    --user) user=$2 && shift ;;
    --agent) agent=$2 && shift ;;
    --log) log=$2 && shift ;;
    --prepare) prepare=$2 && shift ;;
    --no-polkit) polkit=no ;;
    --) shift && break ;;
    *) echo "unknown option $1" >&2 && exit 2 ;;
    esac
    shift
done

# Waits until the command succeeds, for five seconds at most.
until_works() {
    local left=250
    while [ $((left--)) -gt 0 ]; do
        "$@" >/dev/null 2>&1 && return
        sleep 0.02
    done
    echo "gave up waiting for: $*" >&2
    exit 1
}

runs_as() {
    [ "$(stat -c %U "/proc/$1")" = "$2" ]
}

bus='' daemon='' helper='' command=''
end_all() {
    local process
    for process in $command $helper $daemon $bus; do
        kill "$process" 2>/dev/null
    done
    wait 2>/dev/null
}
trap end_all EXIT

mkdir -p /run/dbus && mount -t tmpfs none /run/dbus || exit 77
if [ -n "$prepare" ]; then
    "$prepare" "$scratch" || exit $?
fi
if [ $polkit = yes ]; then
    dbus-daemon --system --nofork --nopidfile >"$scratch/bus.log" 2>&1 &
    bus=$!
    until_works test -S /run/dbus/system_bus_socket
    /usr/lib/polkit-1/polkitd --no-debug >"$scratch/polkitd.log" 2>&1 &
    daemon=$!
    until_works busctl --system status org.freedesktop.PolicyKit1
fi

mkfifo -m 666 "$scratch/go"
as=()
if [ "$user" != "$(id -un)" ]; then
    as=(setpriv --reuid "$user" --regid "$(id -g "$user")" --init-groups)
fi
# shellcheck disable=SC2016 # the inner shell expands them
"${as[@]}" sh -c 'f=$1; shift; read -r _ <"$f"; exec "$@"' sh "$scratch/go" "$@" <&0 &
command=$!
if [ "$agent" != none ]; then
    until_works runs_as "$command" "$user"
    : >"$log" # what an earlier agent said there must not be taken for this one's word
    "$here/polkit-agent.py" "$command" "$agent" >"$log" 2>&1 &
    helper=$!
    until_works grep -q registered "$log"
fi
echo go >"$scratch/go"
wait "$command"
status=$?
command=''
exit $status
