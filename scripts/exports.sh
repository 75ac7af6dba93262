#!/bin/bash
# Holds the strong exported symbols of the library (demangled, sorted) against cmake/exports.txt, so
# that none appears or goes unseen. Weak ones, that is inline functions and templates, are left out:
# they come and go with the optimiser.
# Usage: exports.sh [--write] LIBRARY [FILE]
set -euo pipefail
write=
[[ ${1:-} != --write ]] || { write=yes; shift; }
library=${1:?usage: exports.sh [--write] LIBRARY [FILE]}
file=${2:-$(dirname "$(dirname "$(readlink -f "$0")")")/cmake/exports.txt}

symbols() {
    nm -D --defined-only "$library" | awk '$2 ~ /^[TDBR]$/ && $3 !~ /^_(init|fini)$/ { print $3 }' |
        c++filt | LC_ALL=C sort -u
}

current=$(symbols)
[[ -n $current ]] || { echo "exports: $library exports nothing" >&2; exit 1; }
if [[ -n $write ]]; then
    mkdir -p "$(dirname "$file")"
    printf '%s\n' "$current" >"$file"
    echo "exports: wrote $(wc -l <"$file") names to $file" >&2
    exit 0
fi
[[ -f $file ]] || { echo "exports: $file is missing; ./dev exports writes it" >&2; exit 1; }
if ! difference=$(diff <(LC_ALL=C sort -u "$file") <(printf '%s\n' "$current")); then
    echo "exports: < only in the list, > only in the library; ./dev exports takes the library's" >&2
    printf '%s\n' "$difference" >&2
    exit 1
fi
