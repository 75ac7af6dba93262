#!/usr/bin/env python3
"""Checks that reference_observe works in each mode and prints the same transcripts each time.

  observe_test.py PROGRAM

Each mode must end without a failure, print the same twice, work differently for most seeds, and print
a line of each kind in the list below. A seed must give the same result alone and after other seeds.
No file may be left.
"""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

SEEDS = 120
MUST_SHOW = {
    "read": ["error ", "report ", "newobj ", "end of ", "#0 ", "plain ", "changed ", "thrown ", "read "],
    "write": ["xsputn ", "sync", "exact", "failed ", "write ", "file true"],
    "copy": ["clone ", "assign ", "detach ", "attrcopy ", "equal ", "less ", "newobj ", "end of "],
    "hash": ["hash ", "heq ", "mapitem ", "erase ", "rename ", "cursor ", "end of ", " hash used "],
    "scan": ["put back", "back to ", "flush", "rule ", "262 = "],
}


def run(program, *arguments):
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([program, *map(str, arguments)], cwd=folder, env={**os.environ, "TMPDIR": folder},
                              capture_output=True, text=True, errors="replace")
        left = os.listdir(folder)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, arguments))}: ended with {done.returncode}\n{done.stderr}")
    if left:
        sys.exit(f"{' '.join(map(str, arguments))}: left {', '.join(left)}")
    return done.stdout


def main():
    program = Path(sys.argv[1]).resolve()
    faults = []
    for mode, needles in MUST_SHOW.items():
        first = run(program, "--show", mode, 1, SEEDS)
        if run(program, "--show", mode, 1, SEEDS) != first:
            faults.append(f"{mode}: not the same the second time")
        faults += [f"{mode}: never shows '{needle}'" for needle in needles if needle not in first]
        prints = [line.split()[1] for line in run(program, mode, 1, SEEDS).splitlines()]
        if len(set(prints)) < SEEDS * 3 // 4:
            faults.append(f"{mode}: only {len(set(prints))} of {SEEDS} seeds do work of their own")
        alone = run(program, "--show", mode, SEEDS // 2, SEEDS // 2)
        if alone not in first:
            faults.append(f"{mode}: seed {SEEDS // 2} alone isn't what it is after others")
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
