# Shared by the scripts in this folder; sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

say() { printf '\033[1m» %s\033[0m\n' "$*" >&2; }
fail() { printf '%s\n' "$*" >&2; exit 1; }

# The compiler cache stays small and shared between checkouts unless the environment says otherwise.
export CCACHE_MAXSIZE=${CCACHE_MAXSIZE:-5G}
# Checkouts share what they compile alike, precompiled headers included.
export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$root} CCACHE_NOHASHDIR=1
# What it costs to compile, and nothing of what comes out.
export CCACHE_IGNOREOPTIONS=--param=ggc-*
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime

# build PRESET [TARGET…]
build() {
    local preset=$1
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring ($preset)"
        cmake --preset "$preset" >/dev/null
    fi
    say "Building ($preset)"
    local targets=()
    for target in "$@"; do targets+=(--target "$target"); done
    cmake --build --preset "$preset" "${targets[@]}"
}
