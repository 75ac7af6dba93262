#!/usr/bin/env python3
"""Checks where the built programs and shared objects search for libraries.

An element of a run path must be absolute or begin with $ORIGIN/, and no other user may be able to put a
file there: the loader executes what it finds. An empty element means the current folder.
It reads every ELF file below the folders, and the link options of every build.ninja.
Usage: check_run_paths.py FOLDER... Exits with 1 after a line for each faulty element, and if it finds nothing
to check.
"""
import os
import pathlib
import re
import stat
import subprocess
import sys

OPTION = re.compile(r"-rpath,(\"[^\"]*\"|\S*)")
DYNAMIC = re.compile(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]")


def open_to_others(folder):
    """Whether another user can create files in a folder, or create the folder itself."""
    while not folder.exists():
        folder = folder.parent
    return bool(folder.stat().st_mode & stat.S_IWOTH)


def fault(element, origin):
    """What is wrong with an element, or None. `origin` may be None, as long as it is unknown."""
    if not element:
        return "is empty"
    if element == "$ORIGIN" or element.startswith("$ORIGIN/"):
        if origin is None:
            return None
        element = str(origin) + element.removeprefix("$ORIGIN")
    if not element.startswith("/"):
        return "is relative"
    return "is writable by others" if open_to_others(pathlib.Path(os.path.normpath(element))) else None


def is_elf(file):
    if file.is_symlink() or not file.is_file() or file.suffix in (".o", ".a"):
        return False
    with file.open("rb") as stream:
        return stream.read(4) == b"\x7fELF"


def linked(file):
    """(run path, origin) of a program or a shared object."""
    dynamic = subprocess.run(["readelf", "-d", "-W", file], stdout=subprocess.PIPE, text=True, check=True).stdout
    for path in DYNAMIC.findall(dynamic):
        yield path, file.resolve().parent


def to_be_linked(file):
    """(run path, None) of each target that a build.ninja links."""
    for option in sorted(set(OPTION.findall(file.read_text(encoding="utf-8")))):
        yield option.strip('"').replace("\\$$", "$").replace("$$", "$").replace("$:", ":"), None


def main():
    looked = wrong = 0
    for folder in map(pathlib.Path, sys.argv[1:]):
        for file in sorted(folder.rglob("*")):
            is_build = file.name == "build.ninja"
            if not is_build and not is_elf(file):
                continue
            looked += 1
            for path, origin in to_be_linked(file) if is_build else linked(file):
                for element in path.split(":"):
                    if (what := fault(element, origin)) is not None:
                        wrong += 1
                        print(f"{file}: run path [{path}]: element '{element}' {what}")
    if looked == 0:
        print(f"nothing to check below {' '.join(sys.argv[1:])}")
    return 1 if wrong or looked == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
