#!/bin/bash
# Compiles each public header alone, with both compilers: a header must include all that it needs.
# Usage: check_headers.sh [-j JOBS] [ROOT]
set -u
jobs=$(nproc)
[[ ${1:-} == -j ]] && { jobs=$2; shift 2; }
cd "${1:-.}" || exit 2

alone() {
    local compiler=$1 header=$2
    echo "#include \"$header\"" | "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Wshadow -Wconversion \
        -Wnon-virtual-dtor -Woverloaded-virtual -Werror -Iinclude -x c++ - ||
        { echo "$header does not compile alone with $compiler"; return 1; }
}
export -f alone

cd include || exit 2
find qrv -name '*.h' | LC_ALL=C sort | (cd .. && while IFS= read -r header; do
    printf 'g++ %s\nclang++ %s\n' "$header" "$header"
done | xargs -P "$jobs" -L 1 bash -c 'alone "$@"' alone)
