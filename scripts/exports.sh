#!/bin/bash
# Compares the strong exported symbols of the library (demangled, sorted) with cmake/exports.txt, so that
# changes are noticed. Weak symbols, that is inline functions and templates, are ignored, since they
# depend on the optimiser. Link-time optimisation makes all symbols strong: then only those are compared
# that are strong in ARCHIVE, the objects from which the library was linked.
# Usage: exports.sh [--write] [--objects ARCHIVE] LIBRARY [FILE]
set -euo pipefail
write='' objects=''
[[ ${1:-} != --write ]] || { write=yes; shift; }
[[ ${1:-} != --objects ]] || { objects=${2:?exports: --objects needs an archive}; shift 2; }
library=${1:?usage: exports.sh [--write] [--objects ARCHIVE] LIBRARY [FILE]}
file=${2:-$(dirname "$(dirname "$(readlink -f "$0")")")/cmake/exports.txt}

strong() {
    nm --defined-only "$@" | awk '$2 ~ /^[TDBR]$/ && $3 !~ /^_(init|fini)$/ { print $3 }' | LC_ALL=C sort -u
}
symbols() {
    if [[ -n $objects ]]; then
        LC_ALL=C comm -12 <(strong -D "$library") <(strong "$objects")
    else
        strong -D "$library"
    fi | c++filt | LC_ALL=C sort -u
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
