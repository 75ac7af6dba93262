#!/usr/bin/env python3
"""Checks that each comment marked DELIBERATE names an existing test, so that nobody repairs intended behaviour.

The form is `DELIBERATE: what and why.   Pinned: test_name`, with further names after commas; the names end
the comment. A name is that of a test in tests/, or process/<name> for tests/process/<name>.cpp.
Usage: check_deliberate.py [ROOT]. Silent and 0 on success, else one line for each mistake and 1.
"""
import pathlib
import re
import sys

FOLDERS = ["include", "base", "diagnostics", "core", "containers", "text", "modules", "util", "edit", "value",
           "start", "tools"]
MARK = "DELIBERATE"
TEST = re.compile(r"^\s*(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\s*\(\s*\w+\s*,\s*(\w+)\s*\)", re.M)
PINNED = re.compile(r"Pinned: ((?:process/)?\w+(?:, (?:process/)?\w+)*)$")


def tests_in(root):
    names = {f"process/{file.stem}" for file in (root / "tests/process").glob("*.cpp")}
    for file in (root / "tests").rglob("*_test.cpp"):
        names.update(TEST.findall(file.read_text(encoding="utf-8")))
    return names


def marks(lines):
    """(line number, text) of each mark, its text up to the next mark or the end of the comment."""
    number = text = None
    for at, line in enumerate([*lines, ""], 1):
        comment = line.partition("//")[2].strip() if "//" in line else None
        if text is not None and comment and MARK not in comment and line.lstrip().startswith("//"):
            text += " " + comment
            continue
        if text is not None:
            yield number, text
            text = None
        if comment and MARK in comment:
            number, text = at, comment[comment.index(MARK):]


def check(name, lines, tests):
    for number, text in marks(lines):
        pinned = PINNED.search(text)
        if not pinned:
            yield f"{name}:{number}: error: no test is named: end the comment with 'Pinned: test_name'"
            continue
        for test in pinned[1].split(", "):
            if test not in tests:
                yield f"{name}:{number}: error: no test '{test}' in tests/"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    tests = tests_in(root)
    wrong = []
    for folder in FOLDERS:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix in (".h", ".cpp"):
                wrong += check(file.relative_to(root), file.read_text(encoding="utf-8").splitlines(), tests)
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
