#!/usr/bin/env python3
"""Checks the symbol references of the library: like includes, they only go down.

A pair is a source and a symbol that the source uses and a source of a higher layer defines (nm's T, D,
B or R). Weak symbols don't count: inline functions and templates are defined in each
object that uses them. The layers are those of check_includes.py.
scripts/upward_symbols.txt lists the permitted pairs, at most 12, each with its reason. A listed pair that
does not exist any more is a mistake too.
Usage: check_symbols.py [--list FILE] OBJECT..., the library's object files, whose paths name the source
after "qrv_objects.dir/". Silent and 0 on success, else one line for each mistake and 1.
"""
import argparse
import pathlib
import subprocess
import sys

from check_includes import layer

MOST = 12


def symbols(file):
    """(symbol, kind) of each symbol of an object file."""
    output = subprocess.run(["nm", "-P", str(file)], check=True, capture_output=True, text=True).stdout
    return [line.split()[:2] for line in output.splitlines()]


def upward_pairs(objects):
    """{(source, symbol): the source that defines the symbol} of each upward pair."""
    defined, used = {}, []
    for file in objects:
        source = str(pathlib.PurePath(file.removesuffix(".o").rpartition("qrv_objects.dir/")[2]))
        if layer(source) is None:
            raise SystemExit(f"{source}: its folder is not a layer; scripts/check_includes.py lists them")
        for symbol, kind in symbols(file):
            if kind in "TDBR":
                defined[symbol] = source
            elif kind == "U":
                used.append((source, symbol))
    return {
        (source, symbol): defined[symbol]
        for source, symbol in used
        if symbol in defined and layer(defined[symbol]) > layer(source)
    }


def readable(names):
    names = list(names)
    result = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True, text=True)
    return dict(zip(names, result.stdout.splitlines()))


def read_list(file):
    """{(source, symbol): line number} of the permitted pairs: lines of source, symbol and reason, separated by tabs."""
    wanted = {}
    for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        parts = [part.strip() for part in line.split("\t")]
        if len(parts) != 3 or not all(parts):
            raise SystemExit(f"{file}:{number}: not of the form source<TAB>symbol<TAB>reason")
        wanted[parts[0], parts[1]] = number
    return wanted


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--list", type=pathlib.Path, default=pathlib.Path(__file__).with_name("upward_symbols.txt"))
    parser.add_argument("objects", nargs="+")
    arguments = parser.parse_args()
    pairs = upward_pairs(arguments.objects)
    names = readable({symbol for _, symbol in pairs})
    found = {(source, names[symbol]): place for (source, symbol), place in pairs.items()}
    wanted = read_list(arguments.list)
    wrong = [
        f"{source}: uses '{name}' of {place}, which is higher: move one of them, or let {place} install it"
        for (source, name), place in sorted(found.items())
        if (source, name) not in wanted
    ]
    wrong += [
        f"{arguments.list.name}:{number}: {source} no longer uses '{name}' of a higher layer: remove the line"
        for (source, name), number in wanted.items()
        if (source, name) not in found
    ]
    if len(wanted) > MOST:
        wrong.append(f"{arguments.list.name}: {len(wanted)} pairs, more than {MOST}")
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
