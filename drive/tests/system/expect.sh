# shellcheck shell=bash
# Small assertions for the shell tests: each says what it expected and ends the script with 1.

fail() {
    echo "FAILED: $1" >&2
    tail -n 15 "$HOME/Library/Application Support/Ferrobank/log/ferrobank.log" >&2 2>/dev/null
    exit 1
}

# expect TEXT COMMAND...: the command succeeds.
expect() {
    local words=$1
    shift
    "$@" || fail "$words"
}

# expectText TEXT PART COMMAND...: its output, both streams, has the part.
expectText() {
    local words=$1 part=$2 output
    shift 2
    output=$("$@" 2>&1)
    case $output in
    *"$part"*) ;;
    *) fail "$words: no "$part" in: $output" ;;
    esac
}

# within SECONDS TEXT COMMAND...: it succeeds at last.
within() {
    local limit=$(($(date +%s) + $1)) words=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        [ "$(date +%s)" -lt "$limit" ] || fail "$words"
        sleep 0.05
    done
}
