#!/usr/bin/env python3
"""Runs the commands that a page of the documentation shows and compares their output.

Every block marked `console` has commands, each after "$ ", followed by its complete output. All run in
one folder that contains the examples; a block is one shell, so that later commands see the variables of
earlier ones. `./dev run` stands for the built tool, `./dev watchdog` and `./dev example NAME` for the
programs next to it, and build/dev/bin for their folder. A program may be called by its path only after the
command that builds it, and no command may leave a file outside build/. Every block marked `cpp` must be an
exact part of a program in examples/, but may be indented less.
Usage, from the root: check_page.py PAGE TOOL. 0 on success, 1 with a diff of the differences.
"""
import difflib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap

BLOCK = re.compile(r"^```console\n(.*?)^```", re.M | re.S)
PROGRAM = re.compile(r"^```cpp\n(.*?)^```", re.M | re.S)


def commands(block):
    """(command, shown output) of each command in a block; a backslash continues a command on the next line."""
    found = []
    for line in block.splitlines(keepends=True):
        if found and found[-1][0].endswith("\\\n"):
            found[-1][0] += line
        elif line.startswith("$ "):
            found.append([line[2:], ""])
        elif found:
            found[-1][1] += line
        else:
            raise SystemExit(f"a block does not begin with a command: {line}")
    return [(command.rstrip("\n"), shown) for command, shown in found]


def real_command(command, tool):
    command = re.sub(r"(?<![\w/])\./dev run\b", f"'{tool}'", command)
    command = re.sub(r"(?<![\w/])\./dev watchdog\b", f"'{tool.parent}/qrv-watchdog'", command)
    command = re.sub(r"(?<![\w/])\./dev example (\w+)", rf"'{tool.parent}/\1'", command)
    return re.sub(r"(?<![\w/])build/dev/bin/", f"{tool.parent}/", command)


def built_by(command):
    """The programs that a command builds, as paths below build/dev/bin."""
    if re.search(r"\./dev run\b", command):
        yield from ("qrv", "modules/colour")
    yield from re.findall(r"\./dev example (\w+)", command)


def unbuilt_programs(commands_shown):
    """The paths below build/dev/bin that are used before a command builds them."""
    built = set()
    for command in commands_shown:
        built.update(built_by(command))
        yield from (name for name in re.findall(r"build/dev/bin/([\w/-]+)", command) if name not in built)


def files(folder):
    return {path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file()}


def unknown_programs(text, examples):
    """The first lines of the cpp blocks that are not in an example."""
    sources = [file.read_text(encoding="utf-8") for file in sorted(examples.rglob("*.cpp"))]
    for block in PROGRAM.findall(text):
        indented = (textwrap.indent(block, " " * columns) for columns in (0, 4, 8))
        if not any("\n" + piece in "\n" + source for piece in indented for source in sources):
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
    faults = [f"in no program of examples/: {line}" for line in unknown_programs(text, examples)]
    shown_commands = [command for block in blocks for command, _ in commands(block)]
    faults += [f"no command before has built it: {name}" for name in unbuilt_programs(shown_commands)]
    wrong = count = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for files_shown in ("examples", "tests/tool/data/hand"):
            if pathlib.Path(files_shown).is_dir():
                shutil.copytree(files_shown, folder / files_shown)
        (folder / "build").mkdir()
        before = files(folder)
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
        left = (file for file in sorted(files(folder) - before) if not file.startswith("build/"))
        faults += [f"left behind: {file}" for file in left]
    print("".join(f"{fault}\n" for fault in faults), end="")
    print(f"{count} commands of {page.name}, {wrong} print something else than shown")
    return 1 if wrong or faults else 0


if __name__ == "__main__":
    sys.exit(main())
