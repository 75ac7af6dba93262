#!/bin/bash
# Runs the benchmarks and writes bench/RESULTS.md from what they measured.
# Usage: bench.sh PROGRAM [its arguments]; with arguments of its own only the report is shown.
set -euo pipefail
program=$1
shift
cd "$(dirname "$(readlink -f "$0")")/.."
if [[ $# -gt 0 ]]; then
    exec "$program" "$@"
fi
raw=$(mktemp)
trap 'rm -f "$raw"' EXIT
"$program" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
    --benchmark_out="$raw" --benchmark_out_format=json
python3 scripts/bench_table.py "$raw" >bench/RESULTS.md
echo "dev: wrote bench/RESULTS.md" >&2
