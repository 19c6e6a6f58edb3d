#!/usr/bin/env bash
# Asks the machine's own polkitd, by PROGRAM, what rules of the test make it answer. It runs on a bus of its own, and
# sees no rules and no actions but the test's. Asked from an account that polkit doesn't let pass unasked, as it does
# root. Ends with 77 where that can't be had.
#
#   real_polkit.sh PROGRAM
set -euo pipefail

skip() { echo "Skipped: $*"; exit 77; }

if [ -z "${MORVANE_OWN_MOUNTS:-}" ]; then
    [ "$(id -u)" -eq 0 ] || skip "only root can start a polkitd, which changes to an account of its own"
    [ -x /usr/lib/polkit-1/polkitd ] || skip "no polkitd is installed"
    exec env MORVANE_OWN_MOUNTS=yes unshare --mount --propagation private "$0" "$@" || skip "no mounts of its own"
fi

program=$1
action=$(dirname "$0")/../../packaging/ai.morvane.MorvaneGPT.policy
nobody=(setpriv --reuid nobody --regid nogroup --clear-groups)
"${nobody[@]}" test -x "$program" || skip "that account can't run $program"
work=$(mktemp -d)
started=()
trap 'kill "${started[@]}" 2>/dev/null || true; rm -rf "$work"' EXIT
mkdir "$work/actions" "$work/rules"
chmod -R a+rX "$work"
mount --bind "$work/actions" /usr/share/polkit-1/actions || skip "nothing can be mounted"
mount --bind "$work/rules" /etc/polkit-1/rules.d
mount --bind "$work/rules" /usr/share/polkit-1/rules.d 2>/dev/null || true
cat >"$work/bus.conf" <<'END'
<busconfig><listen>unix:tmpdir=/tmp</listen><auth>EXTERNAL</auth><policy context="default">
<allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/></policy></busconfig>
END

# has_polkit BUS: within a bounded time.
has_polkit() {
    for _ in $(seq 100); do
        ! dbus-send --bus="$1" --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetNameOwner \
            string:org.freedesktop.PolicyKit1 >/dev/null 2>&1 || return 0
        sleep 0.1
    done
    return 1
}

# expect RESULT ANSWER: what the program says under a rule with that result.
expect() {
    local bus said
    printf 'polkit.addRule(function(action, subject) {
        if (action.id == "ai.morvane.MorvaneGPT.unlock") return %s; });' "$1" >"$work/rules/10-test.rules"
    chmod a+r "$work/rules/10-test.rules"
    : >"$work/address"
    dbus-daemon --config-file="$work/bus.conf" --nofork --print-address >"$work/address" &
    started+=($!)
    for _ in $(seq 100); do [ ! -s "$work/address" ] || break; sleep 0.05; done
    bus=$(head -n 1 "$work/address")
    DBUS_SYSTEM_BUS_ADDRESS=$bus /usr/lib/polkit-1/polkitd --no-debug >"$work/log" 2>&1 &
    started+=($!)
    has_polkit "$bus" || skip "polkitd doesn't run here: $(cat "$work/log")"
    said=$(DBUS_SYSTEM_BUS_ADDRESS=$bus "${nobody[@]}" "$program")
    kill "${started[@]}" 2>/dev/null || true
    wait "${started[@]}" 2>/dev/null || true
    started=()
    [ "$said" = "$2" ] || { echo "$1: “$said” and not “$2”"; cat "$work/log"; exit 1; }
}

expect polkit.Result.YES "can't be asked, unavailable" # the action isn't installed
install -m 644 "$action" "$work/actions/"
expect polkit.Result.YES "can be asked, confirmed"
expect polkit.Result.NO "can't be asked, refused"
expect polkit.Result.AUTH_SELF "can't be asked, unavailable" # no session, so that no agent is there
