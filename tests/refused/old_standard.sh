#!/bin/bash
# A compiler for C++17 refuses each public header, included alone or through the header of the whole library,
# with one #error. The error comes first and the compiler stops there, so that no other message hides it.
# Usage: old_standard.sh ROOT COMPILER...   A compiler that is not installed is skipped.
set -u
cd "$1/include" || exit 2
shift

want='error: (#error )?"qrv needs C\+\+20: compile with -std=c\+\+20 or a later one"$'
failed=0 refused=0

judge() { # COMPILER HEADER REPORT
    local errors
    errors=$(grep 'error:' <<<"$3")
    [[ $(head -n 1 <<<"$errors") =~ $want ]] || { echo "$2, $1: not the first error: $errors"; return 1; }
    [[ $(grep -c '"qrv needs' <<<"$errors") == 1 ]] || { echo "$2, $1: more than one: $errors"; return 1; }
    tail -n +2 <<<"$errors" | grep -v 'fatal error: .*qrv/needs_cxx20' && { echo "$2, $1: buried"; return 1; }
    return 0
}

for compiler in "$@"; do
    command -v "$compiler" >/dev/null || continue
    while IFS= read -r header; do
        report=$(echo "#include \"$header\"" | LC_ALL=C "$compiler" -std=c++17 -fsyntax-only -I. -x c++ - 2>&1)
        judge "$compiler" "$header" "$report" && refused=$((refused + 1)) || failed=$((failed + 1))
    done < <(find qrv -name '*.h' | LC_ALL=C sort)
done
echo "$refused refused as they should be, $failed not"
[[ $failed -eq 0 && $refused -gt 0 ]]
