#!/bin/sh
# Two sides of a network, joined by a cable: this one, with the Avahi daemon that is asked, and the far one,
# whose Avahi daemon announces three computers. Run in namespaces of its own (network, mounts, processes), which
# end all of it with their first process.
#
# usage: avahi_network.sh FOLDER    leaves the near side's bus at FOLDER/near.sock, then heeds lines:
#   start | stop     the near daemon
#   leave HOST       what that far computer announces is taken back
# each answered by "done".
set -eu
PATH=$PATH:/usr/sbin:/sbin
script=$(realpath "$0")
cd "$1"

bus() { # SIDE
    cat >"$1.bus" <<END
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path=$PWD/$1.sock</listen>
  <policy context="default">
    <allow user="*"/><allow own="*"/>
    <allow send_type="method_call"/><allow send_type="signal"/>
    <allow send_requested_reply="true"/><allow receive_type="method_call"/>
    <allow receive_type="signal"/><allow receive_requested_reply="true"/>
  </policy>
</busconfig>
END
    # It leaves the foreground once it listens; its socket is there a moment earlier.
    dbus-daemon --config-file="$1.bus" --fork --nopidfile </dev/null >"$1.bus.log" 2>&1
}
daemon() { # SIDE
    printf '[server]\nhost-name=%s\nallow-interfaces=%s\nuse-ipv6=no\n[publish]\npublish-workstation=no\n' \
        "$1" "$1" >"$1.conf"
    DBUS_SYSTEM_BUS_ADDRESS=unix:path=$PWD/$1.sock exec avahi-daemon -f "$PWD/$1.conf" --no-drop-root --no-chroot \
        --no-rlimits </dev/null >>"$1.log" 2>&1
}
announce() { # HOST WORDS…: on behalf of that computer
    host=$1
    shift
    DBUS_SYSTEM_BUS_ADDRESS=unix:path=$PWD/far.sock avahi-publish "$@" </dev/null >>far.publish.log 2>&1 &
    echo $! >>"$host.pids"
}
far() {
    # The other end of the cable is put here from the near side.
    until ip link show far >/dev/null 2>&1; do sleep 0.02; done
    ip link set lo up
    ip address add 10.71.0.2/24 dev far
    ip link set far up
    bus far
    mount -t tmpfs tmpfs /run
    mkdir /run/avahi-daemon
    (daemon far) &
    until is_up far; do sleep 0.05; done
    for computer in desk:11 annas-rechner:12 third:13; do
        announce "${computer%:*}" -a -R "${computer%:*}.local" "10.71.0.${computer#*:}"
    done
    announce desk -s -H desk.local "Desk" _companion-link._tcp 1
    announce desk -s -H desk.local "Desk files" _smb._tcp 445
    announce desk -s -H desk.local "Desk" _ssh._tcp 22
    announce annas-rechner -s -H annas-rechner.local "Anna’s Rechner in der Küche" _ssh._tcp 22
    announce third -s -H third.local "the third" _rfb._tcp 5900
    wait
}
is_up() { # SIDE: its daemon takes orders
    DBUS_SYSTEM_BUS_ADDRESS=unix:path=$PWD/$1.sock dbus-send --system --print-reply --dest=org.freedesktop.Avahi / \
        org.freedesktop.Avahi.Server.GetState 2>/dev/null | grep -q 'int32 2'
}

if [ "${2:-}" = far ]; then
    far
    exit
fi
ip link set lo up
ip link add near type veth peer name far
unshare --net --mount sh "$script" "$1" far </dev/null >far.sh.log 2>&1 &
until [ "$(readlink /proc/$!/ns/net)" != "$(readlink /proc/self/ns/net)" ]; do sleep 0.02; done
ip link set far netns $!
ip address add 10.71.0.1/24 dev near
ip link set near up
bus near
mount -t tmpfs tmpfs /run
mkdir /run/avahi-daemon
echo ready
while read -r line; do
    case $line in
    start)
        (daemon near) &
        pid=$!
        until is_up near; do sleep 0.05; done
        ;;
    stop)
        kill "$pid"
        wait "$pid" || true
        ;;
    leave*)
        kill $(cat "${line#leave }.pids")
        ;;
    esac
    echo done
done
