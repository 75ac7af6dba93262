#!/usr/bin/env python3
"""Checks that files and folders exist if pages (*.md) or comments of code name them.

A word is looked up when it is
  - a path that begins with a folder at the top of the sources or with qrv/: core/cobj.cpp, text/scan/;
  - any other path with the suffix of a source or a page, so that one in a removed folder is found;
  - on pages a folder in backquotes, `scan/`, which may be in any folder;
  - the name of a file in backquotes, `cobj.cpp`, `read/cattrscan.h`, which may be in any folder.
A path is relative to the top or to the file that names it. *, {a,b} and <name> stand for several;
core/cobj stands for core/cobj.cpp too. Text in fences and strings of code is ignored.
Usage: check_paths.py [ROOT]. Silent and 0 on success, else one line for each mistake and 1.
"""
import itertools
import pathlib
import re
import subprocess
import sys

COMMENT = {".h": "//", ".cpp": "//", ".py": "#", ".sh": "#", ".txt": "#", ".cmake": "#", "": "#"}
PATH = re.compile(r"(?<![\w/.:$~\\<>@=-])((?:\.\./)*[\w.*-]+/[\w.*<>{},/-]*)")
SOURCE = re.compile(r"\.(?:h|cpp|py|sh|md|cmake|edges)$")
FOLDER = re.compile(r"`([\w.-]+(?:/[\w.-]+)*)/`")
QUOTED = re.compile(r"`([\w.*<>{},/-]+\.(?:h|cpp|py|sh|md|txt|cmake|json|edges))`")


def files_of(root):
    """The files that git knows; without a repository all files."""
    done = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=root, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    names = done.stdout.splitlines() or [str(file.relative_to(root)) for file in root.rglob("*")]
    return sorted(name for name in names if (root / name).is_file())


def page_lines(lines):
    """The lines of a page without fenced blocks, which are commands and their output."""
    fenced = False
    for number, line in enumerate(lines, 1):
        if line.lstrip().startswith("```"):
            fenced = not fenced
        elif not fenced:
            yield number, line


def comment_lines(lines, mark):
    for number, line in enumerate(lines, 1):
        found = re.search(rf"(?:^|\s){mark}(?=\s)(.*)", line)
        if found:
            yield number, found[1]


def docstring(lines):
    """The lines of the first string in three quotes."""
    inside = False
    for number, line in enumerate(lines, 1):
        if inside or line.startswith('"""'):
            yield number, line
            if line.endswith('"""') and (inside or len(line) > 3):
                return
            inside = True


def alternatives(name):
    """The alternatives of {a,b}."""
    parts = [part[1:-1].split(",") if part[:1] == "{" else [part] for part in re.split(r"(\{[^{}]*\})", name)]
    return ["".join(choice) for choice in itertools.product(*parts)]


def pattern(name):
    text = re.escape(name.rstrip("/"))
    text = re.sub(r"<[\w-]+>|(?:\\\*)+", lambda m: ".*" if m[0] == r"\*\*" else "[^/]*", text)
    return re.compile(text)


class Names:
    def __init__(self, files):
        self.all = set(files)
        for file in files:
            self.all.update(str(parent) for parent in pathlib.PurePosixPath(file).parents)
            self.all.add(file.rpartition(".")[0])  # core/cobj for core/cobj.cpp
        self.all -= {"", "."}
        self.all.update([name[len("include/"):] for name in self.all if name.startswith("include/")])
        self.tops = {name.split("/")[0] for name in self.all if "/" in name}

    def exist(self, name, anywhere):
        for one in alternatives(name):
            wanted = pattern(one)
            if not any(wanted.fullmatch(other) or anywhere and wanted.fullmatch(other.rpartition("/")[2])
                       or anywhere and other.endswith("/" + one) for other in self.all):
                return False
        return True

    def wrong_in(self, line, folder, is_page):
        for word in FOLDER.findall(line) if is_page else []:
            if not self.exist(word, True):
                yield word + "/"
        for word in QUOTED.findall(line):
            word = word.lstrip("./") if word.startswith("../") else word
            if not self.exist(word, True):
                yield word
        for word in PATH.findall(QUOTED.sub(" ", line)):
            word = re.sub(r"^(\.\./)+", "", word).rstrip(".,-")
            if not (word.split("/")[0] in self.tops or SOURCE.search(word)):
                continue
            if not self.exist(word, False) and not self.exist(folder + word, False):
                yield word


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    files = files_of(root)
    names = Names(files)
    wrong = []
    for name in files:
        suffix = pathlib.PurePosixPath(name).suffix
        try:
            lines = (root / name).read_text(encoding="utf-8").splitlines()
        except UnicodeDecodeError:
            continue
        if suffix == ".md":
            found = page_lines(lines)
        elif suffix in COMMENT and (suffix or lines[:1] and lines[0].startswith("#!")):
            found = [*comment_lines(lines, COMMENT[suffix]), *(docstring(lines) if suffix == ".py" else [])]
        else:
            continue
        folder = name[: name.rfind("/") + 1]
        for number, line in found:
            wrong += [f"{name}:{number}: error: '{word}' does not exist in the sources"
                      for word in names.wrong_in(line, folder, suffix == ".md")]
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
