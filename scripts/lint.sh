#!/bin/bash
# All checks that do not run the program, one after the other; each prints its findings.
# Usage: lint.sh [JOBS], from the root, with build/lint configured (clang-tidy reads the commands
# there). It always runs all checks, and exits with 1 if one of them failed.
set -u
jobs=${1:-$(nproc)}
failed=()

step() {
    local name=$1 start=$SECONDS
    shift
    echo "lint: $name"
    "$@" || failed+=("$name")
    echo "lint: $name took $((SECONDS - start)) s"
}

listed() { git ls-files -co --exclude-standard -- "$@" | while IFS= read -r file; do [[ -f $file ]] && echo "$file"; done; }

layout() { listed '*.h' '*.cpp' | xargs -r clang-format --dry-run -Werror; }

tidy() {
    listed '*.cpp' | grep -E '^(base|diagnostics|core|containers|text|modules|util|edit|value|start|tools)/' |
        xargs -r scripts/tidy.py -j "$jobs" build/lint
}

step "layout" layout
step "includes" scripts/check_includes.py
step "rules" scripts/check_rules.py
step "error codes" scripts/check_errors.py
step "deliberate" scripts/check_deliberate.py
step "paths in text" scripts/check_paths.py
step "comments" scripts/check_comments.py
step "comments of qrv::value" scripts/check_api_docs.py
step "english" scripts/check_english.py
step "chart" scripts/bench_chart.py --check
step "edge cases" scripts/check_edges.py
step "run paths" scripts/check_run_paths.py build
step "headers alone" scripts/check_headers.sh -j "$jobs"
step "clang-tidy" tidy
step "the checks themselves" python3 -m unittest discover -q -s tests/scripts -p '*_test.py'

[[ ${#failed[@]} -eq 0 ]] && echo "lint: clean" && exit 0
printf 'lint: FAILED: %s\n' "${failed[@]}"
exit 1
