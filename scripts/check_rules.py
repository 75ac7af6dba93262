#!/usr/bin/env python3
"""Checks the fixed rules that compilers do not check.

  - every file opens with a comment about its design, after `#pragma once` in a header. Instead of the
    comment, a source may begin with the include of the header of the same name, which has the comment, and
    a test with the include of its subject's header;
  - include/qrv/qrvdefs.h and docs/index.md say that one thread at a time may use the library;
  - sources have at most 650 lines, tests at most 1,000;
  - nothing is silenced: no suppressed warning, sanitizer or lint finding, no disabled test;
  - no file has a remark about remaining work, which belongs in an issue.
Usage: check_rules.py [ROOT]. Silent and 0 on success, else one line for each mistake and 1.
"""
import pathlib
import re
import sys

MOST_LINES = 650
MOST_TEST_LINES = 1000
FOLDERS = ["include", "base", "diagnostics", "core", "containers", "text", "modules", "util", "edit", "value", "start",
           "tools", "examples", "tests", "bench", "fuzz"]
SAY_ONE_THREAD = ["include/qrv/qrvdefs.h", "docs/index.md"]
# Concatenated from halves, so that a search for them finds only violations.
FORBIDDEN = [re.compile(p) for p in (
    r"\bNO" + r"LINT", r"\bGTEST_" + r"SKIP", r"\bDIS" + r"ABLED_", r"\bno_" + r"sanitize",
    r"\bTO" + r"DO\b", r"\bFIX" + r"ME\b", r"#\s*pragma\s+(GCC|clang)\s+diag" + r"nostic\s+ignored",
    r"(?<![\w-])-Wno" + r"-", r"\bsuppr" + r"essions?=",
)]


def first_comment(lines):
    """The comment at the top as one string, empty if the file begins otherwise."""
    text = []
    for line in lines:
        if not line.startswith("//"):
            break
        text.append(line.lstrip("/").strip())
    return " ".join(text)


def begins_with_own_header(name, lines):
    stem = re.sub(r"(_test)?\.cpp$", "", name.rsplit("/", 1)[-1])
    return name.endswith(".cpp") and bool(lines) and re.fullmatch(rf'#include "([\w/]*/)?{stem}\.h"', lines[0])


def check_source(name, lines):
    most = MOST_TEST_LINES if name.startswith("tests/") else MOST_LINES
    if len(lines) > most:
        yield f"{name}: {len(lines)} lines, more than {most}: divide it"
    if name.endswith(".h"):
        if not lines or lines[0] != "#pragma once":
            yield f"{name}:1: a header begins with #pragma once"
            return
        lines = lines[1:]
    comment = first_comment(lines)
    if not comment and not begins_with_own_header(name, lines):
        yield f"{name}:1: opens without a comment about its design"


def check_threads(root):
    for name in SAY_ONE_THREAD:
        file = root / name
        if not file.is_file() or "one thread at a time" not in file.read_text(encoding="utf-8").lower():
            yield f"{name}: does not say: one thread at a time"


def check_silenced(name, lines):
    for number, line in enumerate(lines, 1):
        for pattern in FORBIDDEN:
            match = pattern.search(line)
            if match:
                yield f"{name}:{number}: {match[0]} is not used here"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    wrong = [*check_threads(root)]
    for folder in FOLDERS:
        for file in sorted((root / folder).rglob("*")):
            if not file.is_file() or file.suffix not in (".h", ".cpp", ".txt"):
                continue
            name, lines = str(file.relative_to(root)), file.read_text(encoding="utf-8", errors="replace").splitlines()
            if file.suffix != ".txt":
                wrong += check_source(name, lines)
            wrong += check_silenced(name, lines)
    for file in ("CMakeLists.txt", "CMakePresets.json", "dev", ".ci/run", ".clang-tidy"):
        if (root / file).is_file():
            wrong += check_silenced(file, (root / file).read_text(encoding="utf-8").splitlines())
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
