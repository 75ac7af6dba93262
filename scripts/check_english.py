#!/usr/bin/env python3
"""Finds phrases that a reader has to read twice, and names the usual words for them.

It looks at comments, pages (*.md), the strings of the library and the tools, names of tests, and in the tests at
the strings after <<, which are messages; their other strings are mostly data. These are exempt:
  - the texts of diagnostics/cerr_codes.h, and those in scripts/fixed_texts.txt, one on a line, wherever they occur:
    programs that exist depend on these bytes;
  - fenced blocks of pages, which are commands and their output;
  - the .edges files, which quote what is expected.
A phrase may span two lines of one comment or paragraph.
Usage: check_english.py [ROOT] [PATH...]. With PATHs it looks only at files below them. Silent and 0 when there is
nothing to report, else one line for each phrase and 1.
"""
import pathlib
import re
import sys

from check_paths import files_of

# A regular expression and what to write instead.
PHRASES = [(re.compile(rf"\b(?:{phrase})\b", re.IGNORECASE), better) for phrase, better in (
    (r"told|untold|tells? (?:it|the|that|how|whether|of|nothing|what|a|an|so|success|failure)",
     "reports, prints, returns; notified"),
    (r"(?:stands?|standing|stood) (?:in|at|on|before|behind|there|above|below|after|under)|(?:came|comes|come) to stand",
     "is, is stored, is at"),
    (r"(?<!left )behind", "after; for concealed things: hidden"),
    (r"(?<!there )(?:is|are|was|were) no(?= (?!longer|more|less|different|other|later|earlier|matter)\w)",
     "is not a, does not exist, non-..."),
    (r"(?:is|are|was|were) (?:just )?none", "does not exist, there is no ..."),
    (r"(?:is|are|was|were) gone|goes on|go on|went on|lets? go", "is removed, is destroyed, continues, releases"),
    (r"whoever|whatever|what of", "the caller; any value that"),
    (r"(?:by|of) (?:its|their|one's) own", "its own, separate"),
    (r"held against", "compared with"),
    (r"(?:be|is|are) lost for", "loses data"),
    (r"(?:hands?|handed|handing) out|(?:gives?|gave|given|giving) (?:back|out)", "returns"),
    (r"a text(?! (?:editor|file|form)\b)", "a string in memory; text in a file"),
    (r"dying|dead nodes?|undead", "being destroyed, deleted"),
    (r"deleted marks?|erased cells?", "tombstone"),
    (r"reading back|readback", "verification"),
    (r"unheard", "silently ignored"),
    (r"survey(?:s|ed)?", "scan"),
    (r"foreign code", "user code (hooks, slots, destructors, handlers)"),
    (r"says nothing|say nothing", "produces no diagnostics, prints nothing"),
    (r"the (?:short|long) way", "the fast path, the general path"),
)]

MARKS = {".h": "//", ".cpp": "//", ".py": "#", ".sh": "#", ".cmake": "#", ".txt": "#", "": "#"}
STRING = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
TEST = re.compile(r"^[ \t]*(?:TYPED_)?TEST(?:_F|_P)?\(\w+,\s*(\w+)\)|^[ \t]*def test_(\w+)\(", re.MULTILINE)
# Adjacent string literals, and the << before them if there is one.
MESSAGE = re.compile(r"""'\\?"'|(<<\s*)?((?:"(?:[^"\\\n]|\\.)*"\s*)+)""")


class Text:
    """Consecutive lines joined by blanks, which knows the line of each character."""

    def __init__(self):
        self.text, self.starts = "", []

    def add(self, number, line):
        self.starts.append((len(self.text), number))
        self.text += line.strip() + " "

    def line_of(self, offset):
        return max(start for start in self.starts if start[0] <= offset)[1]


def paragraphs(numbered, begins_new):
    """Texts of consecutive lines; a line for which begins_new(line) is true begins a new text."""
    text, last = Text(), None
    for number, line in numbered:
        if last is not None and (number != last + 1 or begins_new(line)):
            yield text
            text = Text()
        text.add(number, line)
        last = number
    yield text


def comment_in(line, mark):
    """The line's comment, or None; strings do not begin one."""
    blanked = STRING.sub(lambda found: '"' + "_" * len(found[1]) + '"', line)
    found = re.search(rf"(?:^|\s){re.escape(mark)}(?=\s|$)", blanked)
    return None if not found else line[found.end():]


def comments(lines, mark):
    for number, line in enumerate(lines, 1):
        if mark == "#" and number == 1 and line.startswith("#!"):
            continue
        comment = comment_in(line, mark)
        if comment is not None:
            yield number, comment


def block_comments(lines):
    """Lines of /* */ comments."""
    inside = False
    for number, line in enumerate(lines, 1):
        begin = 0 if inside else line.find("/*") + 2
        if not inside and (begin == 1 or '"' in line[:begin]):
            continue
        end = line.find("*/", begin)
        inside = end < 0
        yield number, line[begin:end if end >= 0 else len(line)]


def docstrings(lines):
    """Lines of docstrings: strings in three quotes at the beginning of a line. Others are data."""
    inside = wanted = False
    for number, line in enumerate(lines, 1):
        quotes = line.count('"""')
        if quotes and not inside:
            wanted = line.lstrip().startswith('"""')
        if wanted and (inside or quotes):
            yield number, line.replace('"""', "")
        inside ^= bool(quotes % 2)


def page_lines(lines):
    fenced = False
    for number, line in enumerate(lines, 1):
        if line.lstrip().startswith(("```", "<!--")):
            fenced = not fenced if "```" in line else fenced
        elif not fenced:
            yield number, line


def code_of(lines, mark):
    """The lines without their comments, as one string."""
    remarks = ((line, comment_in(line, mark)) for line in lines)
    return "\n".join(line if remark is None else line[:len(line) - len(remark)] for line, remark in remarks)


def strings(lines, mark):
    """The string literals of a source, each as a text with its line."""
    for number, line in enumerate(code_of(lines, mark).split("\n"), 1):
        for found in STRING.finditer(line):
            yield number, found[1]


def names_of_tests(lines):
    source = "\n".join(lines)
    for found in TEST.finditer(source):
        name = found[1] or found[2]
        yield source.count("\n", 0, found.end()) + 1, name.replace("_", " ")


def messages(lines):
    source = code_of(lines, "//")
    for found in MESSAGE.finditer(source):
        if found[1]:
            literals = STRING.findall(found[2])
            yield source.count("\n", 0, found.start(2)) + 1, "".join(literals)


def texts_of(name, lines):
    """All texts of one file that are searched for phrases."""
    suffix = pathlib.PurePosixPath(name).suffix
    separate = re.compile(r"^\s*(?:$|[-*|]\s|\d+\.\s|#)").match
    if suffix == ".md":
        yield from paragraphs(page_lines(lines), separate)
        return
    mark = MARKS[suffix]
    yield from paragraphs(comments(lines, mark), lambda line: not line.strip())
    if suffix == ".py":
        yield from paragraphs(docstrings(lines), lambda line: not line.strip())
    if suffix in (".h", ".cpp"):
        yield from paragraphs(block_comments(lines), lambda line: not line.strip())
    in_code = []
    if name.startswith("tests/") and suffix in (".cpp", ".py"):
        in_code += names_of_tests(lines)
        in_code += messages(lines) if suffix == ".cpp" else ()
    elif suffix in (".h", ".cpp") and not name.startswith("bench/") or name == "dev":
        in_code += strings(lines, mark)
    for number, line in in_code:
        text = Text()
        text.add(number, line)
        yield text


def fixed_texts(root):
    """The fixed texts, which are never reworded."""
    fixed = set()
    codes = root / "diagnostics/cerr_codes.h"
    if codes.exists():
        fixed.update(STRING.findall(codes.read_text(encoding="utf-8")))
    listed = root / "scripts/fixed_texts.txt"
    if listed.exists():
        fixed.update(line for line in listed.read_text(encoding="utf-8").splitlines() if line[:1] != "#")
    return sorted((text for text in fixed if len(text) > 3), key=len, reverse=True)


def looked_at(name, paths):
    path = pathlib.PurePosixPath(name)
    return ((path.suffix in (*MARKS, ".md")) and (path.suffix or name in ("dev", ".ci/run"))
            and name not in ("scripts/check_english.py", "scripts/fixed_texts.txt", "bench/RESULTS.md")
            and "/data/" not in name
            and (not paths or any(name == p or name.startswith(p.rstrip("/") + "/") for p in paths)))


def check(root, paths):
    fixed = fixed_texts(root)
    for name in files_of(root):
        if not looked_at(name, paths):
            continue
        lines = (root / name).read_text(encoding="utf-8", errors="replace").splitlines()
        for text in texts_of(name, lines):
            shown = text.text
            for exempt in fixed:
                shown = shown.replace(exempt, "\0" * len(exempt))
            for phrase, better in PHRASES:
                for found in phrase.finditer(shown):
                    yield name, text.line_of(found.start()), f"'{found[0]}': write {better}"


def main(arguments):
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(".")
    found = [f"{name}:{line}: {what}" for name, line, what in sorted(set(check(root, arguments[1:])))]
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
