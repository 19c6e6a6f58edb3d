# Bare roots of Debian releases, for script/package; sourced after script/lib.sh, not run. What is entered has mounts
# of its own (unshare), so that nothing stays mounted however it ends.

roots=${MORVANE_ROOTS:-$root/build/package/roots}

# The archive that this machine's own packages come from.
mirror() {
    apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' 'Label: Debian' 2>/dev/null |
        head -n 1
}

# bare_root RELEASE: a minimal system as $roots/RELEASE.tar, made once.
bare_root() {
    [ "$(id -u)" -eq 0 ] || fail "This needs root, for a root folder of its own."
    mkdir -p "$roots"
    [ -f "$roots/$1.tar" ] && return
    say "Making a bare $1"
    local from
    mapfile -t from < <(mirror)
    mmdebstrap --quiet --format=tar --variant=minbase "$1" "$roots/$1.tar.part" "${from[@]}"
    mv "$roots/$1.tar.part" "$roots/$1.tar"
}

unpack_root() {
    bare_root "$1"
    mkdir -p "$2"
    tar -xf "$roots/$1.tar" -C "$2" --exclude=./dev
    mkdir -p "$2/dev"
    cp /etc/hosts "$2/etc/hosts"
    # A root that lasts no longer than a power cut needs no waiting for the disk.
    echo force-unsafe-io >"$2/etc/dpkg/dpkg.cfg.d/unsafe-io"
}

# inside ROOT FOLDER… -- COMMAND…: runs a command with ROOT as its root, and with these folders of the outside at the
# same place.
inside() {
    unshare --mount --propagation private bash -euc '
        into=$1
        shift
        mount --bind "$into" "$into" # so that it has mounts of its own inside as well
        mount -t proc proc "$into/proc"
        mount --rbind /dev "$into/dev"
        for folder in /tmp /run; do mount -t tmpfs -o mode=1777 tmpfs "$into$folder"; done
        for folder; do
            shift
            [ "$folder" != -- ] || break
            mkdir -p "$into$folder"
            mount --bind "$folder" "$into$folder"
        done
        exec chroot "$into" env -i HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
            PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"' inside "$@"
}

# package_on RELEASE ARGUMENT…: script/package inside a RELEASE with what the build needs.
package_on() {
    local release=$1 cache=$roots/$1.ccache
    shift
    [ -d "$roots/$release" ] || unpack_root "$release" "$roots/$release"
    mkdir -p "$cache"
    # A worktree's history lies elsewhere.
    inside "$roots/$release" "$root" "$cache" "$(realpath "$(git rev-parse --git-common-dir)")" -- env \
        CCACHE_DIR="$cache" ${MORVANE_JOBS:+MORVANE_JOBS="$MORVANE_JOBS"} \
        GIT_CONFIG_COUNT=1 GIT_CONFIG_KEY_0=safe.directory GIT_CONFIG_VALUE_0='*' "$root/script/package" "$@"
}

# What is in a person's folder, and when it was written.
contents_of() { (cd "$1" && { find . -type f -printf '%p %T@\n'; find . -type f -exec sha256sum {} +; } | sort); }

# try_package DEB: a stranger's first day and last on a machine that has nothing yet.
try_package() {
    local deb release version
    deb=$(realpath "$1")
    version=$(dpkg-deb -f "$deb" Version)
    case $version in
    *~deb12) release=bookworm ;;
    *~deb13) release=trixie ;;
    *) fail "$1 was made for a release that script/package doesn't know: $version" ;;
    esac
    build dev morvane-model-server
    scratch=$(mktemp -d "${TMPDIR:-/tmp}/try-XXXXXX")
    started=()
    trap 'kill "${started[@]}" 2>/dev/null || true; rm -rf --one-file-system "$scratch"' EXIT
    unpack_root "$release" "$scratch/root"
    cp "$deb" "$scratch/root/root/morvane.deb"
    serve_practice
    open_display

    say "Installing $(basename "$deb") in a bare $release"
    inside "$scratch/root" -- bash -euc '
        { apt-get update && apt-get install -y --no-install-recommends /root/morvane.deb; } >/root/log 2>&1 ||
            { tail -n 20 /root/log >&2; exit 1; }
        useradd --create-home person
        dpkg -L morvane >/root/installed'
    say "Using it"
    inside "$scratch/root" /tmp/.X11-unix -- su person -c "env DISPLAY=:$display PRACTICE=$address bash -eu" \
        <script/package-try.sh || fail "The installed program could not be used."
    contents_of "$scratch/root/home/person" >"$scratch/before"
    say "Purging it"
    inside "$scratch/root" -- bash -euc '
        apt-get purge -y --autoremove morvane >/root/log 2>&1 || { tail -n 20 /root/log >&2; exit 1; }
        left=$(while read -r file; do [ -d "$file" ] || [ ! -e "$file" ] || echo "$file"; done </root/installed)
        [ -z "$left" ] || { echo "Left behind: $left" >&2; exit 1; }'
    contents_of "$scratch/root/home/person" | diff "$scratch/before" - ||
        fail "The purge touched what belongs to the person."
    grep -q 'Morvane\.store' "$scratch/before" || fail "The turn left no chat, so nothing was there to be kept."
    say "Installed, used and purged on $release; $(grep -c "^\./" "$scratch/before") files of the person's stayed as they were"
    kill "${started[@]}" 2>/dev/null || true
    rm -rf --one-file-system "$scratch"
    trap - EXIT
}

serve_practice() {
    : >"$scratch/address"
    build/dev/bin/morvane-model-server --port 0 >"$scratch/address" &
    started+=($!)
    for _ in $(seq 200); do
        address=$(sed -n 's/^listening on //p' "$scratch/address")
        [ -z "$address" ] || return 0
        sleep 0.05
    done
    fail "The practice server did not start."
}

open_display() {
    : >"$scratch/display"
    Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$scratch/display" 2>/dev/null &
    started+=($!)
    for _ in $(seq 200); do
        display=$(cat "$scratch/display")
        [ -z "$display" ] || return 0
        sleep 0.05
    done
    fail "Xvfb did not start."
}
