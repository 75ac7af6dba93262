#!/usr/bin/env python3
"""Counts the instructions of the library's benchmark rows with callgrind, one process for each row.

Prints for each row the instructions of a round, and those for each entry or slot. Each work has rows at three
sizes, a factor of ten apart: the instructions for each entry must not grow with the size (bench_judge.py has the
limit). With --against FILE it also prints the change since --save FILE stored the counts. With --large it only
reads a flat map of up to 10,000,000 keys, in some minutes and 4 GB of memory. With --profile ROW it only prints
the functions that need most instructions of that row, in the form of bench/unmet.txt.
Usage: bench_count.py PROGRAM [--rows REGEX | --large] [--save FILE] [--against FILE]
       bench_count.py PROGRAM --profile ROW
Exits with 1 if a row needs over 1 % more than the stored count or its instructions for each entry grow, with 2 if
it could not count.
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
import tempfile

import bench_judge

MOST_PERCENT = 1.0
LARGE = {"work": "read", "sizes": ["100000", "1000000", "10000000"]}
PROFILED_PERCENT = 75  # a profile lists the functions that need this share of the instructions


def output_of(command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{command[0]} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def ladders(program):
    """The rows of each work, from the smallest size to the largest."""
    return [[f"{work['work']}/{size}" for size in work["sizes"]] for work in json.loads(output_of([program, "--works"]))]


def run(program, row, stored="/dev/null"):
    """The output of callgrind and the program for one round of the row."""
    return output_of(
        [shutil.which("valgrind") or "valgrind", "--tool=callgrind", "--instr-atstart=no", f"--callgrind-out-file={stored}",
         f"./{program.name}", row],
        # The lengths of the path and of the environment shift the stack, and some copies depend on its alignment.
        # Without LD_BIND_NOW the round would include the binding of symbols at their first call.
        cwd=program.parent, env={"LD_BIND_NOW": "1"},
    )


def count(program, row):
    """(instructions of one round of the row, its entries)."""
    said = run(program, row)
    collected = re.search(r"Collected : (\d+)", said)
    entries = re.search(r'^\{"entries":(\d+)\}$', said, re.M)
    if not collected or int(collected[1]) == 0 or not entries:
        raise RuntimeError(f"callgrind has not counted {row}:\n{said}")
    return int(collected[1]), int(entries[1])


def change(instructions, before):
    """The change as text, and whether it is too much."""
    if before is None:
        return "new", False
    return f"{100 * (instructions / before - 1):+.2f} %", instructions > before * (1 + MOST_PERCENT / 100)


def growth(ladder, each):
    """(name, the reason if the work grows too much, else None). `each` has the rows' instructions per entry."""
    times = each[ladder[-1]] / each[ladder[0]]
    too_much = f"{times:.2f} times the instructions of {ladder[0]} for each entry, more than {bench_judge.MUST_GROWTH}"
    return f"growth {ladder[-1]}", too_much if times > bench_judge.MUST_GROWTH else None


def profile(program, row):
    with tempfile.TemporaryDirectory() as folder:
        run(program, row, f"{folder}/out")
        text = output_of(["callgrind_annotate", f"--threshold={PROFILED_PERCENT}", f"{folder}/out"])
    print(row)
    for percent, function in re.findall(r"^\s*[\d,]+ \(\s*([\d.]+)%\)\s+\S*?:(.*?)(?: \[.*\])?$", text, re.M):
        print(f"   {float(percent):5.1f} %  {function}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("--rows", default=".", metavar="REGEX")
    parser.add_argument("--large", action="store_true")
    parser.add_argument("--save", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--against", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--profile", metavar="ROW")
    arguments = parser.parse_args()
    program = arguments.program.resolve()
    try:
        if arguments.profile:
            profile(program, arguments.profile)
            return 0
        before = json.loads(arguments.against.read_text(encoding="utf-8")) if arguments.against else {}
        unmet = {row: percents for row, percents in bench_judge.read_unmet().items() if row.startswith("growth ")}
        large = [[f"{LARGE['work']}/{size}" for size in LARGE["sizes"]]]
        usual = ladders(program)
        rows = [row for ladder in (large if arguments.large else usual) for row in ladder if re.search(arguments.rows, row)]
        if not rows:
            raise RuntimeError(f"no row of the library matches {arguments.rows}")
        if arguments.against and not set(rows) & set(before):
            raise RuntimeError(f"{arguments.against} has none of these rows")
        counts, each, worse = {}, {}, []
        print(f"{'row':24}{'instructions':>16}{'per entry':>14}{'change':>12}" if before else
              f"{'row':24}{'instructions':>16}{'per entry':>14}")
        with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
            for row, (instructions, entries) in zip(rows, pool.map(lambda row: count(program, row), rows)):
                counts[row], each[row] = instructions, instructions / entries
                text, too_much = change(instructions, before.get(row)) if before else ("", False)
                worse += [row] if too_much else []
                print(f"{row:24}{instructions:16,}{each[row]:14,.1f}{text:>12}".rstrip(), flush=True)
        if arguments.save:
            arguments.save.write_text(json.dumps(counts, indent=1) + "\n", encoding="utf-8")
    except (OSError, RuntimeError, ValueError) as error:
        print(f"bench_count: {error}", file=sys.stderr)
        return 2
    judged = dict(growth(ladder, each) for ladder in large + usual if set(ladder) <= set(each))
    known = {f"growth {ladder[-1]}" for ladder in large + usual}
    wrong = [f"{row} needs over {MOST_PERCENT:.0f} % more instructions than in {arguments.against}" for row in worse]
    wrong += bench_judge.complaints(judged, {row: unmet[row] for row in unmet if row in judged or row not in known})
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
