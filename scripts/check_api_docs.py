#!/usr/bin/env python3
"""Finds public functions of qrv::value's headers whose comments leave a question open.

The comment of a function is the one above its paragraph, the one after it on its line, the lines of its
section (`// --- ...`, to the next section or the end of the class), and the comment of its class. The
signature decides which questions there are, and a word in the comment answers them:

  null       of a pointer, an objref, an optional or a std::function: null, nil, empty, absent, nothing, without
  failure    of a function that is not noexcept: an exception's name, throws, never, fails, false, noexcept
  ownership  of a function that takes or returns values, objects, pointers or views:
             shares, copies, clones, owns, borrows, keeps, lives, new object, belongs
  cost       of a function that is not noexcept: O(...)

"As value::set()", "as for load()", "as those of the value" and "the same" answer all questions.
It skips destructors, defaulted and deleted functions, constructors of exceptions, and the namespace detail.
Usage: check_api_docs.py [FILE...]; without files include/qrv/value.h and include/qrv/value/*.h.
Prints a line for each function, with the questions; exits with 1 if there is one.
"""
import pathlib
import re
import sys

WORDS = {
    "null": r"\bnull\b|\bnil\b|\bempt(y|ies)\b|\babsent\b|\bnothing\b|\bwithout\b",
    "failure": r"\w+_error\b|\berror\b|\bsave_conflict\b|\bthrows?\b|\bnever\b|\bfails?\b|\bfalse\b|\bfailbit\b"
               r"|std::invalid_argument",
    "ownership": r"\bshare[sd]?\b|\bcop(y|ies|ied)\b|\bclones?\b|\bowns?\b|\bowners?\b|\bborrow(s|ed)?\b|\bkeeps?\b"
                 r"|\blives?\b|\bnew object\b|\bbelongs?\b|\boutlives?\b",
    "cost": r"\bO\([^)]+\)",
}
REFERS = re.compile(r"\bas (for )?(\w+::)*\w+\(|\bas those of\b|\bthe same\b", re.IGNORECASE)
HOLDS = re.compile(r"\b(value|objref|cObj|cTypeObj|cRef|reference|connection|type|map|document|string_view const"
                   r"|\w+_range|\w+_iterator)\b|\*")
MAY_BE_NULL = re.compile(r"\*|\bobjref\b|\bcRef\b|std::optional|std::function")
# A requires clause, in parentheses or up to the declaration.
CONDITION = r"\brequires ?\((?:[^()]|\([^()]*\))*\)|\brequires [\w:]+<.*?>(?= ?(static|friend|auto|explicit|value)\b)"
EXCEPTION = re.compile(r":\s*public\s+(std::\w+|\w*error)\b")


def split_comment(line):
    """The code and the comment of a line, which may be None, and the column of the comment."""
    quoted = False
    for at, char in enumerate(line):
        if char == '"' and (at == 0 or line[at - 1] != "\\"):
            quoted = not quoted
        if not quoted and line.startswith("//", at):
            return line[:at].rstrip(), line[at + 2:].strip(), at
    return line.rstrip(), None, -1


def without_angles(code):
    """The code without template parameters and arguments, so that `(` begins the parameters."""
    code = re.sub(r"operator(<=>|<<|<|>>|>)", "operator", code)
    code = code.replace("->", " ")
    while True:
        shorter = re.sub(r"<[^<>]*>", "", code)
        if shorter == code:
            return code
        code = shorter


def depth_change(code, opening, closing):
    return code.count(opening) - code.count(closing)


def declaration_of(code):
    """The code without its body and the initialisers of a constructor."""
    depth = 0
    for at, char in enumerate(code):
        depth += (char == "(") - (char == ")")
        if depth == 0 and (char == "{" or code.startswith(" : ", at)):
            return code[:at].strip()
    return code


class Scope:
    def __init__(self, kind, name="", comment="", is_public=True, is_exception=False):
        self.kind, self.name, self.comment = kind, name, comment
        self.is_public, self.is_exception = is_public, is_exception
        self.section = ""


class Header:
    """Reads declarations one by one; `found` has (line, signature, questions)."""

    def __init__(self, text):
        self.lines = text.split("\n")
        self.scopes = [Scope("file")]
        self.comment, self.column, self.at = "", -1, 0
        self.last = None  # the previous declaration, whose comment may follow it
        self.functions = []  # [line, signature, comment]

    def read(self):
        while self.at < len(self.lines):
            self.step()
        return [(line, signature, open_questions(signature, comment))
                for line, signature, comment in self.functions]

    def step(self):
        line = self.lines[self.at]
        code, comment, column = split_comment(line)
        if not code.strip():
            if comment is None:
                self.comment = ""
                self.last = None
                self.at += 1
            elif column == self.column and self.last:
                self.last[2] += " " + comment
                self.at += 1
            else:
                self.read_comment()
            return
        self.column = -1
        if code.lstrip().startswith("#"):
            while self.lines[self.at].endswith("\\"):
                self.at += 1
            self.at += 1
            return
        if code.strip() in ("public:", "private:", "protected:"):
            self.scopes[-1].is_public = code.strip() == "public:"
            self.at += 1
            return
        self.read_declaration()

    def read_comment(self):
        texts = []
        while self.at < len(self.lines) and self.lines[self.at].lstrip().startswith("//"):
            texts.append(self.lines[self.at].strip()[2:].strip())
            self.at += 1
        text = " ".join(texts)
        if text.startswith("---"):
            self.scopes[-1].section = text
            text = ""
        self.comment = text
        self.last = None

    def read_declaration(self):
        begin, code, trailing = self.at, "", ""
        while True:
            part, comment, column = split_comment(self.lines[self.at])
            code += " " + part.strip()
            self.at += 1
            if comment is not None:
                trailing += " " + comment
                self.column = column
            is_whole = depth_change(code, "(", ")") == 0 and code.rstrip().endswith((";", "{", "}"))
            if is_whole or self.at == len(self.lines):
                break
        code = code.strip()
        while code.startswith("}"):
            if len(self.scopes) > 1:
                self.scopes.pop()
            code = code[1:].lstrip(" ;")
        if not code:
            self.comment = ""
            return
        self.classify(begin, code, trailing)

    def classify(self, begin, code, trailing):
        plain = without_angles(re.sub(CONDITION, "", code))
        is_open = depth_change(code, "{", "}") > 0
        kind = re.match(r"(?:template )?(?:inline )?(namespace|class|struct|enum)\b(?: class)?(?: QRV_API)? ?([\w:]*)", plain)
        if kind and is_open:
            if kind[1] == "enum":
                return self.skip_body(code)
            name = kind[2]
            is_hidden = re.match(r"(qrv::)?detail\b", name)
            self.scopes.append(Scope("hidden" if is_hidden else kind[1], name, self.comment,
                                     kind[1] != "class", bool(EXCEPTION.search(code))))
            self.comment = ""
            return
        if is_open:
            self.skip_body(code)
        signature = declaration_of(code)
        if self.is_asked_about(code, plain):
            context = [s.comment + " " + s.section for s in self.scopes if s.kind in ("class", "struct")]
            self.last = [begin + 1, signature, " ".join([self.comment, trailing, *context])]
            self.functions.append(self.last)

    def skip_body(self, code):
        depth = depth_change(code, "{", "}")
        while depth > 0 and self.at < len(self.lines):
            depth += depth_change(split_comment(self.lines[self.at])[0], "{", "}")
            self.at += 1

    def is_asked_about(self, code, plain):
        if any(scope.kind == "hidden" or not scope.is_public for scope in self.scopes):
            return False
        if re.search(r"= (default|delete);$", code) or re.match(r"(using|typedef|static_assert|friend (class|struct))\b", plain):
            return False
        declarator = re.match(r"[^(]*?((?:\w+::)*)(~?\w+|operator\S*) *\(", plain)
        if not declarator or declarator[1] or declarator[2].startswith("~"):
            return False
        scope = self.scopes[-1]
        return not (scope.is_exception and declarator[2] == scope.name)


def open_questions(signature, comment):
    if REFERS.search(comment):
        return []
    asked = []
    if MAY_BE_NULL.search(signature):
        asked.append("null")
    if "noexcept" not in signature:
        asked += ["failure", "cost"]
    if HOLDS.search(re.sub(r"\b[\w:]+::|operator\S+", "", signature)):
        asked.append("ownership")
    return [question for question in asked if not re.search(WORDS[question], comment, re.IGNORECASE)]


def main(arguments):
    root = pathlib.Path(__file__).resolve().parent.parent / "include/qrv"
    files = [pathlib.Path(name) for name in arguments[1:]] or [root / "value.h", *sorted(root.glob("value/*.h"))]
    found, functions = [], 0
    for file in files:
        for line, signature, questions in Header(file.read_text(encoding="utf-8")).read():
            functions += 1
            if questions:
                found.append(f"{file}:{line}: the comment does not answer {', '.join(questions)}: {signature}")
    if functions == 0:
        print("check_api_docs: no functions found", file=sys.stderr)
        return 1
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
