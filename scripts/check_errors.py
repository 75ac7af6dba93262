#!/usr/bin/env python3
"""Compares all other lists and codes of errors with the one list in diagnostics/cerr_codes.h.

  - cat::ErrorKind has a kind for each error of the list, in its order, and additionally only `other`;
  - the tables of docs/errors.md have a row for each error of the list, with its kind, and no other row;
  - a code in a comment of a public header is in the list, and quoted text directly after it is the
    start of one of the errors with this code;
  - sources of the library contain neither a code as a number nor one of the texts (except very short
    ones): they use the list for both;
  - a code as a number in the tools, which use only public headers, is in the list.
Usage: check_errors.py [ROOT]. Silent and 0 on success, else one line for each mistake and 1.
"""
import pathlib
import re
import sys

LIST = "diagnostics/cerr_codes.h"
PAGE = "docs/errors.md"
KINDS = "include/qrv/diagnostics/cerrkind.h"
LIBRARY = ["base", "diagnostics", "core", "containers", "text", "modules", "util", "edit", "value", "start"]
PROGRAMS = ["tools"]
# The prefix of a message, without the position and the path in a file.
HEADS = {
    "none": "",
    "object": "Attr value, type '...': ",
    "attribute": "Setattr in object type '...', key '...': ",
    "place": "",
    "path": "",
}
ROW = re.compile(r'\bX\(\s*(\w+),\s*(0x[0-9A-F]{8}),\s*(\w+),\s*"((?:[^"\\]|\\.)*)"\s*\)')
PAGE_ROW = re.compile(r"^\| (0x[0-9A-F]{8}) \| ``(.*)`` \| `(\w+)` \|$", re.M)
ENUM = re.compile(r"enum class ErrorKind\b[^{]*\{(.*?)\}", re.S)
CODE = re.compile(r"\b0x[4-8][0-9A-Fa-f]{7}(?=[uU]?\b)")
# Any number in a context where only codes occur. This finds wrong ones such as 0x4000000 for 0x44000000, and 1.
ARGUMENT = re.compile(r"\b(?:cErr|eros|set_code)\s*\(\s*(0x[0-9A-Fa-f]+|[1-9]\d*)")
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
SHORTEST_TEXT = 12  # shorter texts of the list may by chance be the start of another text
COMMENT = re.compile(r"//(.*)")
COMMENT_CODE = re.compile(r'\b(0x[4-8][0-9A-Fa-f]{7}|cErr\(\d+\)|the error \d\b)(?:\s+"([^"]*)")?')


def code_of(text):
    digits = re.search(r"0x[0-9A-Fa-f]+|\d+", text)[0]
    return int(digits, 0)


def sources(root, folders):
    for folder in folders:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix in (".h", ".cpp") and file.is_file():
                yield file.relative_to(root).as_posix(), file.read_text(encoding="utf-8")


def rows_of(root):
    return ROW.findall((root / LIST).read_text(encoding="utf-8").replace("\\\n", "\n"))


def errors_of(root):
    """(code, message, kind) of each error: the start of the message, with ... for variable parts."""
    return [(int(code, 16), HEADS[head] + beginning.replace('\\"', '"'), kind)
            for kind, code, head, beginning in rows_of(root)]


def check_kinds(root, errors):
    enum = ENUM.search((root / KINDS).read_text(encoding="utf-8"))
    kinds = re.findall(r"\w+", COMMENT.sub("", enum[1])) if enum else []
    listed = ["other"] + [kind for *_, kind in errors]
    for kind in sorted(set(listed) - set(kinds)):
        yield f"{KINDS}: lacks {kind}"
    for kind in sorted(set(kinds) - set(listed)):
        yield f"{KINDS}: {kind} is not in {LIST}"
    if sorted(kinds) == sorted(listed) and kinds != listed:
        yield f"{KINDS}: the order is not that of {LIST}"


def check_page(root, errors):
    rows = [(int(code, 16), text, kind) for code, text, kind in PAGE_ROW.findall((root / PAGE).read_text(encoding="utf-8"))]
    for error in errors:
        if error not in rows:
            yield "{}: lacks 0x{:08X} `{}` of kind {}".format(PAGE, *error)
    for row in rows:
        if row not in errors:
            yield "{}: 0x{:08X} `{}` of kind {} is not in {}".format(PAGE, *row, LIST)
    for row in sorted(set(rows)):
        if rows.count(row) > errors.count(row) > 0:
            yield "{}: 0x{:08X} `{}` is there {} times".format(PAGE, *row[:2], rows.count(row))


def begins_alike(quoted, message):
    """Whether the quoted text of a comment, with ... for omitted parts, is the start of the message."""
    quoted = re.sub(r"\.\.\.|<\w+>", "\0", quoted).split("\0")
    message = message.split("...")
    # The fixed parts on both sides, up to the end of the shorter one.
    for ours, theirs in zip(quoted, message):
        shorter = min(len(ours), len(theirs))
        if ours[:shorter] != theirs[:shorter]:
            return False
        if len(ours) != len(theirs):
            return True
    return True


def check_comments(root, errors):
    for name, text in sources(root, ["include"]):
        for number, line in enumerate(text.splitlines(), 1):
            comment = COMMENT.search(line)
            for match in COMMENT_CODE.finditer(comment[1] if comment else ""):
                messages = [message for code, message, _ in errors if code == code_of(match[1])]
                if not messages:
                    yield f"{name}:{number}: {match[1]} is not in {LIST}"
                elif match[2] and not any(begins_alike(match[2], message) for message in messages):
                    yield f'{name}:{number}: no error {match[1]} in {LIST} begins with "{match[2]}"'


def without_comments(line):
    return re.sub(r'"(?:[^"\\]|\\.)*"|//.*', lambda m: "" if m[0].startswith("//") else '""', line)


def check_numbers(root, errors):
    known = {code for code, *_ in errors}
    for name, text in sources(root, LIBRARY + PROGRAMS):
        if name == LIST:
            continue
        in_library = name.split("/")[0] in LIBRARY
        for number, line in enumerate(text.splitlines(), 1):
            line = without_comments(line)
            found = {match[0] for match in CODE.finditer(line)} | {match[1] for match in ARGUMENT.finditer(line)}
            for code in sorted(found):
                if in_library:
                    yield f"{name}:{number}: {code} as a number: take it from {LIST}"
                elif int(code, 0) not in known:
                    yield f"{name}:{number}: {code} is not in {LIST}"


def check_texts(root):
    """Texts of the list that a source repeats."""
    texts = [text for *_, text in rows_of(root) if len(text) >= SHORTEST_TEXT]
    for name, source in sources(root, LIBRARY):
        if name == LIST:
            continue
        for number, line in enumerate(source.splitlines(), 1):
            for literal in LITERAL.findall(line.split("//")[0]):
                if any(literal.startswith(text) for text in texts):
                    yield f'{name}:{number}: "{literal}" is a text of {LIST}: take it from there'


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    errors = errors_of(root)
    wrong = [] if errors else [f"{LIST}: no error was found in it"]
    for check in (check_kinds, check_page, check_comments, check_numbers):
        wrong += check(root, errors)
    wrong += check_texts(root)
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
