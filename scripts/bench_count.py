#!/usr/bin/env python3
"""Counts the instructions of the library's benchmark rows with callgrind, one process for each row.

Prints for each row: instructions of a round, instructions for each entry or slot. With --against FILE also
the change to the counts that --save FILE has stored. The other libraries' rows are left out.
Usage: bench_count.py PROGRAM [--benchmark_filter=REGEX] [--save FILE] [--against FILE]
Exits with 1 when a row needs over 1 % more than the stored count, with 2 when it could not count.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

MOST_PERCENT = 1.0


def output_of(command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{command[0]} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def rows_of(program, pattern):
    names = output_of([program, "--benchmark_list_tests=true", f"--benchmark_filter={pattern}"]).split()
    return [name for name in names if "_qrv/" in name]


def count(program, row):
    """Instructions of one round of the row."""
    said = output_of(
        [shutil.which("valgrind") or "valgrind", "--tool=callgrind", "--collect-atstart=no", "--callgrind-out-file=/dev/null",
         f"./{program.name}", f"--benchmark_filter=^{row}(/|$)"],
        # The lengths of the path and of the environment move the stack, and some copies depend on its alignment.
        # A symbol that is bound at its first call would count in that round.
        cwd=program.parent, env={"LD_BIND_NOW": "1"},
    )
    collected = re.search(r"Collected : (\d+)", said)
    rounds = re.search(rf"^{row}/iterations:(\d+) ", said, re.M)
    if not collected or int(collected[1]) == 0 or not rounds:
        raise RuntimeError(f"callgrind has not counted {row}:\n{said}")
    return int(collected[1]) / int(rounds[1])


def change(instructions, before):
    """The change as text, and whether it is too much."""
    if before is None:
        return "new", False
    return f"{100 * (instructions / before - 1):+.2f} %", instructions > before * (1 + MOST_PERCENT / 100)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("--benchmark_filter", default=".", metavar="REGEX")
    parser.add_argument("--save", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--against", type=pathlib.Path, metavar="FILE")
    arguments = parser.parse_args()
    program = arguments.program.resolve()
    try:
        before = json.loads(arguments.against.read_text(encoding="utf-8")) if arguments.against else {}
        rows = rows_of(program, arguments.benchmark_filter)
        if not rows:
            raise RuntimeError(f"no row of the library matches {arguments.benchmark_filter}")
        if arguments.against and not set(rows) & set(before):
            raise RuntimeError(f"{arguments.against} has none of these rows")
        counts, worse = {}, []
        print(f"{'row':24}{'instructions':>16}{'per entry':>14}{'change':>12}" if before else
              f"{'row':24}{'instructions':>16}{'per entry':>14}")
        with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
            for row, instructions in zip(rows, pool.map(lambda row: count(program, row), rows)):
                counts[row] = instructions
                entries = int(row.split("/")[1])
                text, too_much = change(instructions, before.get(row)) if before else ("", False)
                worse += [row] if too_much else []
                print(f"{row:24}{instructions:16,.0f}{instructions / entries:14,.1f}{text:>12}".rstrip(), flush=True)
        if arguments.save:
            arguments.save.write_text(json.dumps(counts, indent=1) + "\n", encoding="utf-8")
    except (OSError, RuntimeError, ValueError) as error:
        print(f"bench_count: {error}", file=sys.stderr)
        return 2
    for row in worse:
        print(f"{row} needs over {MOST_PERCENT:.0f} % more instructions than in {arguments.against}")
    return 1 if worse else 0


if __name__ == "__main__":
    sys.exit(main())
