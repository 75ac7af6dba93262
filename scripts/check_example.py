#!/usr/bin/env python3
"""Runs an example and compares its output with the file next to its source, byte for byte.

The program runs in an empty temporary folder, so it may write files there. It must end with status 0
and write nothing to standard error, where a sanitizer would report its findings.
Usage: check_example.py PROGRAM EXPECTED [ARGUMENTS...]. 0 on success, else 1 and the differences.
"""
import difflib
import pathlib
import subprocess
import sys
import tempfile


def shown(text):
    """The lines for a diff, with unprintable characters as escape sequences."""
    lines = text.decode("utf-8", "backslashreplace").split("\n")
    ends = ["\n"] * (len(lines) - 1) + ["\n\\ no line end here\n"]
    visible = ("".join(c if c.isprintable() or c == "\t" else ascii(c)[1:-1] for c in line) for line in lines)
    return [line + end for line, end in zip(visible, ends if lines[-1] else ends[:-1])]


def main():
    program, expected = (pathlib.Path(name).resolve() for name in sys.argv[1:3])
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run(
            [program, *sys.argv[3:]], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
            timeout=60, check=False,
        )
    wrong = False
    if result.returncode != 0:
        wrong = True
        print(f"{program.name} ended with {result.returncode}")
    if result.stderr:
        wrong = True
        print(f"{program.name} wrote to standard error:")
        sys.stdout.writelines(shown(result.stderr))
    if not expected.is_file():
        print(f"{expected.name} is missing; {program.name} prints:")
        sys.stdout.writelines(shown(result.stdout))
        return 1
    wanted = expected.read_bytes()
    if wanted != result.stdout:
        wrong = True
        sys.stdout.writelines(difflib.unified_diff(
            shown(wanted), shown(result.stdout), f"examples/{expected.name}", "as printed"))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
