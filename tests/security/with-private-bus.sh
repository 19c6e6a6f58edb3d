#!/bin/sh
# with-private-bus.sh PROGRAM [ARGUMENT…]: runs a program on a session bus of its own, in a home of its own.
#
# The bus starts no services by itself: what is to answer on it, the program starts. It ends with the program,
# and a keyring daemon ends with its bus.
set -eu

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT INT TERM
mkdir "$scratch/home" "$scratch/run"
chmod 700 "$scratch/run"

cat > "$scratch/bus.conf" <<CONF
<busconfig>
  <type>session</type>
  <listen>unix:dir=$scratch/run</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*"/>
    <allow eavesdrop="true"/>
    <allow send_type="error" send_requested_reply="false"/>
    <allow own="*"/>
  </policy>
</busconfig>
CONF

export HOME="$scratch/home" XDG_RUNTIME_DIR="$scratch/run"
unset DBUS_SESSION_BUS_ADDRESS DISPLAY WAYLAND_DISPLAY XDG_DATA_HOME XDG_CONFIG_HOME || true
dbus-run-session --config-file="$scratch/bus.conf" -- "$@" < /dev/null
