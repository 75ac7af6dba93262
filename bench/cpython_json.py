#!/usr/bin/env python3
"""Python's json module as a peer. It prints its answers as qrv_bench does: first an object, here without data, then for
each line of input the seconds of processor time that one round takes.

Usage: cpython_json.py read|write FILE.json
"""
import json
import pathlib
import statistics
import sys
import time


def turn(work):
    seconds = []
    while len(seconds) < 3 or sum(seconds) < 0.1:
        start = time.process_time()
        result = work()
        seconds.append(time.process_time() - start)
        del result
    return statistics.median(seconds)


def main():
    text = pathlib.Path(sys.argv[2]).read_text(encoding="utf-8")
    tree = json.loads(text)
    if json.loads(json.dumps(tree, indent=4)) != tree:
        sys.exit(f"{sys.argv[2]} is not the same after writing and reading")
    work = {"read": lambda: json.loads(text), "write": lambda: json.dumps(tree, indent=4)}[sys.argv[1]]
    print("{}", flush=True)
    for _ in sys.stdin:
        print(turn(work), flush=True)


if __name__ == "__main__":
    main()
