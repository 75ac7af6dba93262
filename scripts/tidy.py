#!/usr/bin/env python3
"""Runs clang-tidy on sources, many of a folder at once.

A run needs most of its time for the headers, so one run checks up to GROUP sources of a folder. If
clang-tidy has findings in a group, or cannot compile it since two sources define the same name, each half
is checked again, down to single sources: a finding is always one in a source alone. Sources with a using
declaration or a namespace alias are checked alone from the start: in a group, another source could use
the name, which hides that this one does not.
Usage: tidy.py [-j JOBS] FOLDER FILE..., from the root. FOLDER has compile_commands.json, and tidy.py
writes the groups there. Exits with 1 if a source has findings, which it prints.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

GROUP = 16
# What a source defines, mostly: definitions begin in the first column. Sources that define the same name are
# not put into one group.
DEFINED = re.compile(
    r"^(?:class|struct|union|enum(?: class)?|using) (\w+)|^(?![\s#/}]|using|namespace|template)[^\n(=;]*[ &*](\w+)(?:[({;[]| [={])",
    re.MULTILINE)
HIDES_UNUSED = re.compile(r"^\s*(using\s+[\w:]+\s*;|namespace\s+\w+\s*=)", re.MULTILINE)


def flags_of(entry):
    """The compiler and its options, without the names of files."""
    words = shlex.split(entry["command"])
    words = words[: words.index("-o")]
    return tuple(word for word in words if word != "-c")


def groups_of(files, commands):
    """Lists of files, one for each run."""
    alone, groups = [], {}
    for file in files:
        text = pathlib.Path(file).read_text()
        if file not in commands or HIDES_UNUSED.search(text):
            alone.append([file])
            continue
        names = {first or second for first, second in DEFINED.findall(text)}
        same = groups.setdefault((os.path.dirname(file), commands[file]), [])
        for members, defined in same:
            if len(members) < GROUP and not names & defined:
                members.append(file)
                defined |= names
                break
        else:
            same.append(([file], names))
    parts = [members for same in groups.values() for members, _ in same]
    return sorted(parts, key=len, reverse=True) + alone


class Tidy:
    def __init__(self, folder, commands):
        self.folder, self.commands = folder, commands

    def run(self, database, file):
        done = subprocess.run(["clang-tidy", "--quiet", "-p", str(database), str(file)], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True)
        return "" if done.returncode == 0 else done.stdout or f"{file}: clang-tidy failed\n"

    def check(self, files):
        """The findings in these files, as clang-tidy prints them."""
        if files[0] not in self.commands:
            return f"{files[0]}: no command compiles it\n"
        if len(files) == 1:
            return self.run(self.folder, files[0])
        folder = self.folder / "tidy" / files[0].replace("/", "_")
        folder.mkdir(parents=True, exist_ok=True)
        together = folder / "together.cpp"
        together.write_text("".join(f'#include "{file}"\n' for file in files))
        entry = {"directory": os.path.dirname(files[0]), "file": str(together),
                 "arguments": [*self.commands[files[0]], "-c", str(together)]}
        (folder / "compile_commands.json").write_text(json.dumps([entry]))
        if not self.run(folder, together):
            return ""
        half = len(files) // 2
        return self.check(files[:half]) + self.check(files[half:])


def main(arguments):
    jobs = os.cpu_count()
    if arguments[:1] == ["-j"]:
        jobs, arguments = int(arguments[1]), arguments[2:]
    if len(arguments) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    folder = pathlib.Path(arguments[0]).resolve()
    entries = json.loads((folder / "compile_commands.json").read_text())
    tidy = Tidy(folder, {entry["file"]: flags_of(entry) for entry in entries})
    files = [os.path.abspath(file) for file in arguments[1:]]
    failed = False
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for findings in pool.map(tidy.check, groups_of(files, tidy.commands)):
            print(findings, end="", flush=True)
            failed = failed or findings != ""
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
