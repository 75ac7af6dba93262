#!/usr/bin/env python3
"""Measures the library and its peers, and checks the library's limits (bench_judge.py).

Each library has a separate process for each row; all run on one processor, in turn, so that the state of the
machine is the same for all. Results are medians of the processor time. Writes bench/RESULTS.md, the chart and
the README's numbers; with --rows it only prints.
Usage: bench.py PROGRAM [--rows REGEX] [--rounds N]
Exits with 1 if a row exceeds its limit and bench/unmet.txt doesn't list it, or if that list is wrong.
"""
import argparse
import datetime
import itertools
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys

import bench_chart
import bench_include
import bench_judge
import bench_results
import bench_tool
from bench_results import Row

ROOT = pathlib.Path(__file__).resolve().parent.parent
# The rows whose first round also measures memory, and the names of the rows that show it.
MEMORY = {"read/1M": "memory/1M", "map_ints/100000": "memory/map_ints"}
# Files that this program writes, so their changes don't mark the commit as changed.
WRITTEN = ["bench/RESULTS.md", "bench/chart.svg", "README.md"]
LEAST_ROUNDS = 5


def output_of(*command):
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, text=True, check=True, cwd=ROOT).stdout


def timed_rows(program):
    """(name, libraries) of each row."""
    for work in json.loads(output_of(program, "--works")):
        for size in work["timed"]:
            yield f"{work['work']}/{size}", work["libraries"]


class Side:
    """A library that runs the rounds of a row in a separate process. `first` is the output of the first round."""
    def __init__(self, *command):
        self.process = subprocess.Popen([str(part) for part in command], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)
        self.first = json.loads(self.answer())
        self.seconds = []

    def answer(self):
        line = self.process.stdout.readline()
        if not line:
            raise ValueError(f"{self.process.args} ended with {self.process.wait()}")
        return line

    def round(self):
        self.process.stdin.write("\n")
        self.process.stdin.flush()
        self.seconds.append(float(self.answer()))

    def end(self):
        self.process.communicate()


def sides_of(program, name, libraries, folder):
    sides = {library: Side(program, name, library) for library in libraries}
    work, size = name.split("/")
    if work in ("read", "write"):
        sides["CPython"] = Side(sys.executable, ROOT / "bench/cpython_json.py", work, folder / f"{size}.json")
    return sides


def measure(program, name, libraries, folder, rounds):
    """The row of the times, and for a row in MEMORY also the row of the memory."""
    sides = sides_of(program, name, libraries, folder)
    for _ in range(rounds):
        for side in sides.values():
            side.round()
    for side in sides.values():
        side.end()
    ours, which = libraries[:2]
    entries = sides[ours].first["entries"]
    times = {library: statistics.median(side.seconds) * 1e9 / entries for library, side in sides.items()}
    yield row_of(name, entries, which, times)
    if name in MEMORY:
        sizes = {library: side.first["bytes"] / entries for library, side in sides.items() if "bytes" in side.first}
        yield row_of(MEMORY[name], entries, which, sizes)


def row_of(name, entries, which, figures):
    further = {library: figures[library] for library in bench_results.FURTHER if library in figures}
    return Row(name, entries, figures["qrv"], figures[which], which, further)


def commit():
    try:
        name = output_of("git", "rev-parse", "--short", "HEAD").strip()
        changed = output_of("git", "status", "--porcelain", "--untracked-files=no", "--", ".",
                            *(f":!{file}" for file in WRITTEN))
        return name + "+" if changed else name
    except (OSError, subprocess.CalledProcessError):
        return "unknown"


def processor():
    clock = re.search(r"^cpu MHz\s*: (\d+)", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"), re.M)
    return f"a processor at {clock[1]} MHz" if clock else "one processor"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("--rows", default=".", metavar="REGEX")
    parser.add_argument("--rounds", type=int, default=7, metavar="N")
    arguments = parser.parse_args()
    if arguments.rounds < LEAST_ROUNDS:
        parser.error(f"a median needs at least {LEAST_ROUNDS} rounds")
    program = arguments.program.resolve()
    folder = program.parent / "data"
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    try:
        unmet = {row: profile for row, profile in bench_judge.read_unmet().items() if not row.startswith("growth ")}
        chosen = [row for row in timed_rows(program) if re.search(arguments.rows, row[0])]
        chosen_of_tool = [name for name in bench_tool.names() if re.search(arguments.rows, name)]
        includes = re.search(arguments.rows, bench_include.ROW)
        if not chosen and not chosen_of_tool and not includes:
            raise ValueError(f"no row matches {arguments.rows}")
        folder.mkdir(exist_ok=True)
        output_of(program, "--write", folder)
        before = {row.name: row.ratio for row in bench_results.newest()}
        rows = []
        print(f"{'row':18}{'qrv':>10}{'peer':>10}  {'which':10}{'qrv / peer':>10}{'must':>11}{'change':>8}")
        measured = [measure(program, name, libraries, folder, arguments.rounds) for name, libraries in chosen]
        if chosen_of_tool:
            measured.append(bench_tool.measure(bench_tool.tool_beside(program), folder, chosen_of_tool, arguments.rounds))
        if includes:
            measured.append(bench_include.measure(folder, arguments.rounds))
        for row in itertools.chain.from_iterable(measured):
            row.before = before.get(row.name)
            rows.append(row)
            name, _, ours, peer, which, ratio, must, change, *further = row.cells()
            further = "".join(f"   {library} {text}" for library, text in zip(bench_results.FURTHER, further) if text)
            print(f"{name:18}{ours:>10}{peer:>10}  {which:10}{ratio:>10}{must:>11}{change:>8}{further}", flush=True)
    except (OSError, ValueError, subprocess.CalledProcessError) as error:
        print(f"bench: {error}", file=sys.stderr)
        return 2
    judged = {row.name: row.missed() for row in rows if row.name in {**bench_judge.MUST, **bench_judge.MUST_BYTES}}
    if arguments.rows == ".":
        about = f"This run: {processor()}, release build, medians of {arguments.rounds} rounds."
        bench_results.write(rows, about, datetime.date.today().isoformat(), commit())
        bench_chart.write()
        print("bench: wrote " + ", ".join(WRITTEN), file=sys.stderr)
    else:
        unmet = {row: profile for row, profile in unmet.items() if row in judged}
    wrong = [*bench_judge.complaints(judged, unmet)]
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
