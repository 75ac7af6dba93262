#!/usr/bin/env python3
"""Checks the include edges: each folder of the library is a layer, and includes only go down.

A public header is in the same layer as the sources of its folder: include/qrv/core/cobj.h belongs
to core. Files of one folder may include each other. Beyond that:
  - only start/startup.cpp includes <iostream>: the file that includes it determines when the
    standard streams are created;
  - only base/platform/ includes headers of the operating system; other folders include only those
    of the standard library;
  - public headers include public headers, qrv/qrv.h all of them, and all included files exist;
  - the tools include public headers and their own; the folders of tools/qrv are layers too, and
    main.cpp is above them.
Usage: check_includes.py [ROOT]. Silent and 0 on success, else one line for each mistake and 1.
"""
import pathlib
import re
import sys

# Low to high. "" has the headers directly in include/qrv/, except qrv.h, which includes all others, and
# value.h, which includes those of value.
LAYERS = [
    "",
    "base/platform",
    "base",
    "diagnostics",
    "core",
    "containers",
    "text/state",
    "text/scan",
    "text/write",
    "text/read",
    "text/path",
    "text/file",
    "modules",
    "util",
    "edit",
    "value",
    "start",
]
# The folders of tools/qrv, low to high.
TOOL_FOLDERS = ["output", "process", "verify", "rules", "reading", "search", "json", "editing", "commands"]
FOLDERS = sorted({layer.split("/")[0] for layer in LAYERS if layer})
STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine
csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque
exception execution filesystem format forward_list fstream functional future initializer_list
iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string
string_view syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map
unordered_set utility valarray variant vector version
""".split())
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
ODD_INCLUDE = re.compile(r"^\s*(/\*.*\*/\s*)?#\s*include\b")


def layer(path):
    """The layer of a file, by its path without include/qrv/; None for a folder that is not a layer."""
    if path == "qrv.h":
        return len(LAYERS)
    if path == "value.h":
        return LAYERS.index("value")
    folder = path.rpartition("/")[0]
    return LAYERS.index(folder) if folder in LAYERS else None


def includes(file):
    for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            yield number, match[1], match[2]
        elif ODD_INCLUDE.match(line):
            yield number, None, line.strip()


def judge_system(name, header):
    """What is wrong with `#include <header>` in the file `name`, or nothing."""
    if header == "iostream" and name != "start/startup.cpp":
        return (
            "only start/startup.cpp includes <iostream>; take <ostream>, <istream> or <sstream>, "
            "and cat::std_out() or cat::std_err() for the standard streams"
        )
    if header not in STANDARD and not name.startswith("base/platform/"):
        return f"<{header}> is not of the standard library; the operating system is called in base/platform/ only"
    return None


def judge_own(root, name, header, public):
    """What is wrong with `#include "header"` in the file `name`, or nothing."""
    is_public = header.startswith("qrv/")
    target = header[4:] if is_public else header
    if not (root / "include" / header if is_public else root / header).is_file():
        return f'"{header}" does not exist (public headers are "qrv/...", private ones go by their path from the root)'
    if public and not is_public:
        return f'a public header includes the private "{header}"'
    own, other = layer(name), layer(target)
    if other is None:
        return f'"{header}" is not in a folder of the library'
    if other > own:
        return f'"{header}" lies higher: {[*LAYERS, "qrv/qrv.h"][other]} above {LAYERS[own] or "include/qrv"}'
    return None


def check_library(root):
    files = [(f, str(f.relative_to(root / "include/qrv")), True) for f in (root / "include/qrv").rglob("*.h")]
    for folder in FOLDERS:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix in (".h", ".cpp"):
                files.append((file, str(file.relative_to(root)), False))
            elif file.is_file() and file.suffix != ".md":
                yield f"{file.relative_to(root)}: is neither .h nor .cpp, so its includes are not checked"
    for file, name, public in sorted(files):
        if layer(name) is None:
            yield f"{file.relative_to(root)}: its folder is not a layer; scripts/check_includes.py lists them"
            continue
        for line, kind, header in includes(file):
            if kind is None and name == "ccomp.h":
                continue  # includes a header that does not exist, to stop compilers of old standards
            if kind is None:
                wrong = f"write #include, a blank and the header, instead of: {header}"
            elif kind == "<":
                wrong = judge_system(name, header)
            else:
                wrong = judge_own(root, name, header, public)
            if wrong:
                yield f"{file.relative_to(root)}:{line}: {wrong}"


def check_all_header(root):
    everything = root / "include/qrv/qrv.h"
    if everything.is_file():
        included = {header for _, _, header in includes(everything)}
        for file in sorted((root / "include").rglob("*.h")):
            name = str(file.relative_to(root / "include"))
            if name not in included and file != everything:
                yield f'include/qrv/qrv.h: "{name}" is missing'


def tool_folder(path):
    """The number of the folder of a file of tools/qrv; None for a file elsewhere."""
    folders = path.split("/")
    if folders[:2] != ["tools", "qrv"]:
        return None
    return TOOL_FOLDERS.index(folders[2]) if folders[2] in TOOL_FOLDERS else len(TOOL_FOLDERS)


def judge_tool(name, header):
    """What is wrong with `#include "header"` in the file `name` of a tool, or nothing."""
    own, other = tool_folder(name), tool_folder(header)
    if own is None or other is None or other <= own:
        return None
    return f'"{header}" is in a higher folder: {[*TOOL_FOLDERS, "main.cpp"][other]} above {TOOL_FOLDERS[own]}'


def check_tools(root):
    for file in sorted((root / "tools").rglob("*")):
        if file.suffix not in (".h", ".cpp"):
            continue
        name = str(file.relative_to(root))
        if tool_folder(name) == len(TOOL_FOLDERS) and name != "tools/qrv/main.cpp":
            yield f"{name}: its folder is not a layer; scripts/check_includes.py lists them"
        for line, kind, header in includes(file):
            if kind == '"' and not header.startswith(("qrv/", "tools/")) and not (file.parent / header).is_file():
                yield f'{name}:{line}: tools use public headers only, not "{header}"'
            elif kind == '"' and (wrong := judge_tool(name, header)):
                yield f"{name}:{line}: {wrong}"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    wrong = [*check_library(root), *check_all_header(root), *check_tools(root)]
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
