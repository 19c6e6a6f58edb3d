#!/usr/bin/env bash
# Proves that check_layers.py finds what it is for: each breach is planted alone in a small tree.
#
#   check_layers_test.sh SCRATCH
set -euo pipefail

here=$(dirname "$(readlink -f "$0")")
data=$here/../data/lint
scratch=${1:?usage: check_layers_test.sh SCRATCH}
failures=0

# A house of five layers: low <- middle <- high, and platform/desk and app above. In the file that describes it,
# "== PATH" stands above the lines of each of its own.
build_house() {
    rm -rf "$scratch"
    mkdir -p "$scratch"/src/{loose,low,network,middle/inner,high,platform/desk,app}
    awk -v root="$scratch" '$1 == "==" { path = root "/" $2; next } { print >path }' "$data/house.txt"
}

build_house
if ! clean=$("$here/check_layers.py" "$scratch"); then
    printf 'FAILED a clean house: %s\n' "$clean"
    failures=1
fi

while IFS=$'\t' read -r file line words; do
    build_house
    printf '%s\n' "$line" >>"$scratch/$file"
    status=0
    found=$("$here/check_layers.py" "$scratch") || status=$?
    if [[ $status -ne 1 || $(wc -l <<<"$found") -ne 1 || $found != "$file:"*"$words"* ]]; then
        printf 'FAILED %s: status %d, said: %s\n' "$line" "$status" "$found"
        failures=$((failures + 1))
    fi
done < <(grep -v '^# ' "$data/breaches.tsv")

rm -rf "$scratch"
exit $((failures > 0))
