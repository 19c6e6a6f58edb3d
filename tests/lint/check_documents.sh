#!/usr/bin/env bash
# Whether the names on a page of the documents still exist: files by their paths, classes and functions by
# their words in the sources.
#
#   check_documents.sh TREE PAGE
set -euo pipefail

cd "${1:?usage: check_documents.sh TREE PAGE}"
page=${2:?usage: check_documents.sh TREE PAGE}

exists_as_file() {
    [[ -e $1 || -e src/$1 ]] || [[ -n $(find src tests tools script -path "*/$1" -print -quit) ]]
}

exists_as_name() {
    grep -rqw --include='*.h' --include='*.cpp' --include='*.qml' --include='*.cmake' -- "$1" src tools cmake
}

missing=0
while read -r name; do
    case $name in
    */* | *.cpp | *.h | *.qml | *.sh) exists_as_file "${name%/}" && continue ;;
    *)
        found=yes
        for word in ${name//[^A-Za-z0-9_]/ }; do exists_as_name "$word" || found=no; done
        [[ $found = yes ]] && continue
        ;;
    esac
    printf '%s: there is no %s\n' "$page" "$name"
    missing=1
done < <(grep -oE '`[^` ]+`' "$page" | tr -d '`' | sort -u)
exit $missing
