#!/usr/bin/env python3
"""Runs the commands that a page of the documentation shows and compares what they print.

Every block marked `console` holds commands, each behind "$ ", and below it the whole of what it
prints. All are run in one folder that has the examples in it; a block is one shell, so that later
commands see what earlier ones set. `./dev run` stands for the built tool, and build/dev/bin for the
folder that it lies in. Every block marked `cpp` is a piece of a program in examples/, letter by letter.
Usage, from the root: check_page.py PAGE TOOL. 0 when all is as shown, 1 with a diff where it isn't.
"""
import difflib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```console\n(.*?)^```", re.M | re.S)
PROGRAM = re.compile(r"^```cpp\n(.*?)^```", re.M | re.S)


def commands(block):
    """(command, shown output) of each command in a block; a command may go on behind a backslash."""
    found = []
    for line in block.splitlines(keepends=True):
        if found and found[-1][0].endswith("\\\n"):
            found[-1][0] += line
        elif line.startswith("$ "):
            found.append([line[2:], ""])
        elif found:
            found[-1][1] += line
        else:
            raise SystemExit(f"a block begins with no command: {line}")
    return [(command.rstrip("\n"), shown) for command, shown in found]


def real_command(command, tool):
    stands_for = {"./dev run": f"'{tool}'", "build/dev/bin/": f"{tool.parent}/"}
    return re.sub(r"(?<![\w/])(?:\./dev run\b|build/dev/bin/)", lambda match: stands_for[match[0]], command)


def unknown_programs(text, examples):
    """The first lines of the cpp blocks that stand in no example."""
    sources = [file.read_text(encoding="utf-8") for file in sorted(examples.rglob("*.cpp"))]
    for block in PROGRAM.findall(text):
        if not any("\n" + block in "\n" + source for source in sources):
            yield block.split("\n", 1)[0]


def run_block(block, tool, folder):
    """Runs a block in one shell; yields (command, shown, printed)."""
    steps = commands(block)
    mark = "-=-=- end of a command -=-=-"
    script = "".join(
        f"{real_command(command, tool)}\nstatus=$?\nprintf '%s\\n' '{mark}'\n(exit $status)\n" for command, _ in steps
    )
    result = subprocess.run(
        ["bash", "-c", script], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, timeout=120, check=False,
    )
    outputs = result.stdout.decode("utf-8", "replace").split(mark + "\n")
    for (command, shown), printed in zip(steps, outputs):
        yield command, shown, printed


def main():
    page, tool = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    examples = pathlib.Path("examples").resolve()
    text = page.read_text(encoding="utf-8")
    blocks = BLOCK.findall(text)
    if not blocks:
        print(f"{page.name} shows no command")
        return 1
    unknown = list(unknown_programs(text, examples))
    for line in unknown:
        print(f"in no program of examples/: {line}")
    wrong = count = 0
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(examples, pathlib.Path(folder) / "examples")
        for block in blocks:
            for command, shown, printed in run_block(block, tool, folder):
                count += 1
                if shown == printed:
                    continue
                wrong += 1
                print(f"$ {command}")
                sys.stdout.writelines(
                    line if line.endswith("\n") else line + "\n"
                    for line in difflib.unified_diff(
                        shown.splitlines(True), printed.splitlines(True), "as shown", "as printed")
                )
    print(f"{count} commands of {page.name}, {wrong} print something else than shown")
    return 1 if wrong or unknown else 0


if __name__ == "__main__":
    sys.exit(main())
