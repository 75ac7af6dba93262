#!/usr/bin/env python3
"""What edits by the tool do to files that people wrote: changed lines, lost comments.

usage: edit_lines.py [--tool PROGRAM] [--option=OPTION ...] [--every N] FILE...

A FILE whose name ends in .json is first made a file of the format by from-json. For each scalar of
a file a copy is edited by one `set -i`, and compared with the original:

    changed   the lines of the value, and no others
    comments  all that were there, in the same order
    value     `get` prints the new one

Prints a table. The exit code is 1 if an edit changed another line, lost a comment, was refused or
stored another value; each such edit is listed on standard error.
"""

import argparse
import difflib
import os
import re
import subprocess
import sys
import tempfile

TOKENS = re.compile(
    rb'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])*\'|(?P<comment>//[^\n]*|/\*.*?\*/)', re.DOTALL)
STATEMENT = re.compile(r"^(?P<path>.*?) (?P<operator>=|&=) (?P<value>.*);$", re.DOTALL)
PATH = re.compile(r'(?:"(?:\\.|[^"\\])*"|[^"])*? (?==|&=)')


def run(*words):
    return subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, check=False)


def comments(text):
    return [m["comment"].rstrip() for m in TOKENS.finditer(text) if m["comment"]]


def scalars(tool, name):
    """Path and value in written form of each scalar, in the order of the file."""
    found = run(tool, "find", name, "{*?,}")
    if found.returncode:
        sys.exit(f"{name}: the tool finds nothing in it: {found.stderr.decode()}")
    for line in found.stdout.decode().split(";\n"):
        head = PATH.match(line)
        if not head:
            continue
        path = head[0].rstrip()
        value = line[head.end():].split(" ", 1)[1]
        if not re.match(r"[\[{<]|[A-Za-z_]\w*[\[({<]", value):
            yield path, value


def another(value):
    """A value of the same type, and the operator that stores it."""
    if value == "#nil":
        return "&=", "7"
    if value.startswith("#"):
        return "&=", "#false" if value == "#true" else "#true"
    if value in ("true", "false"):
        return "=", "false" if value == "true" else "true"
    if re.fullmatch(r"[-+]?\d+", value):
        return "=", str(int(value) + (1 if int(value) < 2147483647 else -1))
    if re.fullmatch(r"[-+]?[\d.]+(e[-+]?\d+)?f?", value):
        return "=", "0.125f" if value.endswith("f") else "0.125"
    return "=", '"changed by the sweep"'


def same(stored, new):
    number = re.fullmatch(r"([\d.]+)(f?)", stored)
    return stored == new or (number and float(number[1]) == 0.125 and new == "0.125" + number[2])


def changed_lines(before, after):
    """How many lines an edit took away or put in, the larger of both for each place."""
    old, new = before.splitlines(True), after.splitlines(True)
    matcher = difflib.SequenceMatcher(None, old, new, autojunk=False)
    return sum(max(e - b, f - c) for kind, b, e, c, f in matcher.get_opcodes() if kind != "equal")


def lost(before, after):
    """How many comments are gone."""
    left = comments(after)
    gone = 0
    for comment in comments(before):
        if comment in left:
            left.remove(comment)
        else:
            gone += 1
    return gone


class Row:
    def __init__(self):
        self.edits = self.refused = self.meant = self.changed = self.lost = self.wrong = 0


def sweep(tool, options, name, every, complain):
    row = Row()
    with open(name, "rb") as file:
        before = file.read()
    order = comments(before)
    with tempfile.TemporaryDirectory() as folder:
        copy = os.path.join(folder, "copy.attr")
        for number, (path, value) in enumerate(scalars(tool, name)):
            if number % every:
                continue
            operator, new = another(value)
            with open(copy, "wb") as file:
                file.write(before)
            row.edits += 1
            done = run(tool, "set", "-i", *options, copy, f"{path} {operator} {new}")
            if done.returncode:
                row.refused += 1
                complain(f"{name}: {path}: refused: {done.stderr.decode().strip()}")
                continue
            with open(copy, "rb") as file:
                after = file.read()
            meant = value.count("\n") + 1
            changed = changed_lines(before, after)
            gone = lost(before, after)
            row.meant += meant
            row.changed += changed
            row.lost += gone
            if changed != meant:
                complain(f"{name}: {path}: changed {changed} lines instead of {meant}")
            if gone or comments(after) != order:
                complain(f"{name}: {path}: lost {gone} comments, or moved some")
            stored = run(tool, "get", "--text", copy, path).stdout.decode().rstrip("\n")
            if not same(stored, new):
                row.wrong += 1
                complain(f"{name}: {path}: stores {stored} instead of {new}")
    return row


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--tool", default="build/release/bin/qrv")
    parser.add_argument("--option", action="append", default=[], help="for set, such as --force")
    parser.add_argument("--every", type=int, default=1, help="only each Nth scalar")
    parser.add_argument("files", nargs="+")
    options = parser.parse_args()
    failures = []

    def complain(text):
        failures.append(text)
        print(text, file=sys.stderr)

    print(f"{'file':<32} {'edits':>6} {'refused':>8} {'lines meant':>12} {'lines changed':>14} "
          f"{'comments lost':>14} {'wrong values':>13}")
    for name in options.files:
        with tempfile.TemporaryDirectory() as folder:
            file = name
            if name.endswith(".json"):
                file = os.path.join(folder, os.path.basename(name)[:-5] + ".attr")
                made = run(options.tool, "from-json", name, "-o", file)
                if made.returncode:
                    sys.exit(f"{name}: {made.stderr.decode()}")
            row = sweep(options.tool, options.option, file, options.every, complain)
        print(f"{os.path.basename(file):<32} {row.edits:>6} {row.refused:>8} {row.meant:>12} "
              f"{row.changed:>14} {row.lost:>14} {row.wrong:>13}", flush=True)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
