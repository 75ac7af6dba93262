#!/usr/bin/env python3
"""Lists public functions of include/qrv/ whose block has no comment.

A block is a run of declarations without an empty line. Access labels also end it, and so do the braces of a class or
namespace that has several blocks. A comment above or in a block, or after one of its declarations, is for the whole
block, but a comment in a function's body is not. Public functions are free functions and public members of classes, except
those in private classes and in namespaces named `detail`.

These need no comment, since the declaration says what a caller must know:
  - default, copy and move constructors, copy and move assignments, destructors, and deleted functions;
  - overrides: the base's function has the comment;
  - const noexcept functions that return neither a pointer nor a handle: they cannot fail, return null or transfer
    ownership.

The headers of qrv::value are not checked here: check_api_docs.py has stricter rules for their comments.

Macros are not expanded: a header is split into declarations at its braces and semicolons.
Usage: check_comments.py [ROOT]. Silent and 0 if all have comments, else one line for each function and 1.
"""
import pathlib
import re
import sys

LITERAL = re.compile(r'"((?:\\.|[^"\\\n])*)"' r"|(?<!\w)'((?:\\.|[^'\\\n])+)'")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.MULTILINE)
# Divides the inside of a class or a namespace into blocks.
SEPARATOR = re.compile(r"\n[ \t]*\n|^[ \t]*(?:public|private|protected):", re.MULTILINE)
LABEL = re.compile(r"\s*(public|private|protected)\s*:(?!:)")
SCOPE = re.compile(r"(?:inline |typedef )*(namespace|class|struct|union|enum)\b\s*([\w:]*)")
NESTED = re.compile(r"<[^<>]*>|\{[^{}]*\}")
NO_FUNCTION = re.compile(r"(?:using|typedef|concept|static_assert|extern template|template class)\b|.*\bfriend\b")
# Words whose parentheses are not those of the parameters, and other parts that belong neither to the name nor to
# the type.
DECORATION = re.compile(r"\b(?:explicit|noexcept|requires|alignas|decltype|QRV_PRINTF) ?\(|\[(?=\[)|\bQRV_API\b")
NAME = re.compile(r"((?:\w+\s*::\s*)*(?:operator\s*(?:\(\s*\)|[^(]+)|~?\w+))\s*\((?!\s*\*)")
HANDLE = re.compile(r"\*|ref\b|\bcRef\b|_ptr\b")


def blanked(text, pattern):
    """The text with blanks in place of each match; line ends stay."""
    return pattern.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text)


def closing(text, at):
    """The position after the bracket that closes the one at `at`."""
    depth = 0
    for at in range(at, len(text)):
        depth += (text[at] in "([{") - (text[at] in ")]}")
        if depth == 0:
            return at + 1
    raise ValueError("a bracket is not closed")


def simplified(head):
    """A declaration on one line, without attributes and without what is in angle brackets and braces."""
    text = re.sub(r"operator\s*([-+*/%^&|~!=<>]+)", lambda found: "operator" + re.sub("[<>]", "_", found[1]), head)
    text = " ".join(text.replace("->", "--").split())
    while (shorter := NESTED.sub("", text)) != text:
        text = shorter
    while found := DECORATION.search(text):
        end = closing(text, found.end() - 1) if found[0][-1] in "([" else found.end()
        text = text[:found.start()] + text[end:]
    return re.sub(r"^(?:template )+", "", " ".join(text.split()))


class Function:
    def __init__(self, head, name, owner):
        self.name, self.owner = name, owner
        at = head.index("(", head.index(name) + len(name))
        self.returns = head[:head.index(name)]
        end = closing(head, at)
        self.parameters = head[at + 1:end - 1].strip()
        self.suffix = head[end:]

    def is_special(self):
        """A default, copy or move constructor, an assignment of the same class, a destructor."""
        same = re.fullmatch(rf"(?:const )?{self.owner}(?: const)? ?&&?(?: ?\w+)?", self.parameters)
        if self.name == self.owner:
            return not self.parameters or bool(same)
        return self.name.startswith("~") or (re.sub(r"\s", "", self.name) == "operator=" and bool(same))

    def needs_comment(self):
        if self.is_special() or re.search(r"\boverride\b|\bfinal\b|= ?(?:delete|default)$", self.suffix):
            return False
        return not (re.search(r"\bconst noexcept\b", self.suffix) and not HANDLE.search(self.returns))


class Header:
    """`functions` are the public ones, each with its first and last line; walk() fills them."""

    def __init__(self, source):
        plain = LITERAL.sub(lambda found: '"' + "_" * (len(found[0]) - 2) + '"', source)
        self.code = blanked(blanked(plain, COMMENT), DIRECTIVE)
        self.comments = [found.span() for found in COMMENT.finditer(plain)]
        self.source, self.bodies, self.borders, self.functions = source, [], set(), []
        self.walk(0, "", True, True)

    def line(self, position):
        return self.source.count("\n", 0, position) + 1

    def walk(self, at, owner, exported, visible):
        """Reads the declarations of one scope, which begins at `at`; returns the position of its end."""
        while (at := self.blank_end(at)) < len(self.code) and self.code[at] != "}":
            if label := LABEL.match(self.code, at) if owner else None:
                visible = label[1] == "public"
                self.borders.add(self.line(at))
                at = label.end()
            else:
                at = self.declaration(at, owner, exported and visible)
        return at

    def blank_end(self, at):
        while at < len(self.code) and self.code[at].isspace():
            at += 1
        return at

    def declaration(self, begin, owner, public):
        at = begin
        while self.code[at] != ";":
            if self.code[at] in "([":
                at = closing(self.code, at)
            elif self.code[at] != "{":
                at += 1
            elif inner := self.scope_at(begin, at):
                return self.enter(*inner, at, public)
            else:
                end = closing(self.code, at)
                self.bodies.append((at, end))
                following = self.code[self.blank_end(end):][:1]
                # These braces belong to the initialiser of a member, so the declaration continues.
                if following not in (",", "{", ";"):
                    self.add(begin, at, end, owner, public)
                    return end
                at = self.blank_end(end)
        self.add(begin, at, at + 1, owner, public)
        return at + 1

    def scope_at(self, begin, brace):
        """The kind and the name of the scope that the brace opens, if it does."""
        head = simplified(self.code[begin:brace])
        found = SCOPE.match(head)
        return (found[1], found[2]) if found and "(" not in head else None

    def enter(self, kind, name, brace, public):
        end = closing(self.code, brace)
        if kind != "enum":
            if SEPARATOR.search(self.source[brace:end]):
                self.borders |= {self.line(brace), self.line(end - 1)}
            hidden = kind == "namespace" and name.split("::")[-1] == "detail"
            self.walk(brace + 1, "" if kind == "namespace" else name.split("::")[-1], public and not hidden,
                      kind != "class")
        return end if kind == "namespace" else self.code.index(";", end) + 1

    def add(self, begin, head_end, end, owner, public):
        head = simplified(self.code[begin:head_end])
        found = NAME.search(head)
        if not public or not found or NO_FUNCTION.match(head) or "=" in head[:found.start()]:
            return
        if re.match(r"\w+\s*::", found[1]) or re.match(r"\w+\(.*\) ?--", head):
            return  # a definition of a member outside its class; a deduction guide
        self.functions.append((Function(head, found[1].strip(), owner), self.line(begin), self.line(end - 1)))

    def blocks_with_comment(self):
        """The lines of all blocks that have a comment."""
        lines = self.source.split("\n")
        in_body = {number for begin, end in self.bodies for number in range(self.line(begin) + 1, self.line(end - 1))}
        commented = {number for begin, end in self.comments if not any(b < begin < e for b, e in self.bodies)
                     for number in range(self.line(begin), self.line(end - 1) + 1)}
        block, result = set(), set()
        for number, line in enumerate([*lines, ""], 1):
            if (line.strip() or number in in_body) and number not in self.borders:
                block.add(number)
                continue
            if block & commented:
                result |= block
            block = set()
        return result


def findings(root):
    public = root / "include/qrv"
    for file in sorted(public.rglob("*.h")):
        if file.is_relative_to(public / "value"):
            continue
        header = Header(file.read_text(encoding="utf-8"))
        commented = header.blocks_with_comment()
        for function, first, last in header.functions:
            if function.needs_comment() and not commented & set(range(first, last + 1)):
                yield f"{file.relative_to(root)}:{first}: no comment in the block of {function.name}()"


def main(arguments):
    found = list(findings(pathlib.Path(arguments[0] if arguments else ".")))
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
