#!/usr/bin/env python3
"""Doxygen's view of a public header: prints it with its plain comments turned into Doxygen's.

The headers are written for people who read them: a comment of // lines above a paragraph of
declarations belongs to every declaration of that paragraph, a comment after a declaration only to
that one. Here the first becomes a group with one text for all its members, the second a trailing
text, and the comment at the top of the file the text of the file. All declarations of a file join
the group of its layer (docs/groups.dox). The number of lines stays, so that warnings have the right
line numbers.
"""

import re
import sys

ONLY_COMMENT = re.compile(r'^(?P<indent>\s*)//(?P<text>.*)$')
NO_MEMBER = re.compile(r'^\s*(template <[^>]*>\s*)?(class|struct|enum|namespace|union|#|public:|private:|protected:)')


# Characters that Doxygen or Markdown would interpret as a command, a link or markup, and their
# replacements. They are not interpreted between double quotes and backticks.
PLAIN = str.maketrans({
    '\\': '\\\\', '@': '\\@', '&': '\\&', '#': '\\#', '<': '\\<', '>': '\\>', '%': '\\%', '$': '\\$', '|': '\\|',
    '*': '&lowast;', '~': '&tilde;',
})
LITERAL = re.compile(r'("[^"]*(?:"|$)|`[^`]*`)')


def escaped(text):
    """The text of a comment's lines, escaped so that it is shown unchanged, except indented lines."""
    parts = LITERAL.split(text)
    for i, part in enumerate(parts[::2]):
        parts[2 * i] = '\n'.join(
            line if line.startswith('    ') else line.translate(PLAIN) for line in part.split('\n'))
    return ''.join(parts)


def split_comment(line):
    """Splits a line of code and the comment after it: the code, the text and the comment's column."""
    quoted = False
    for i, char in enumerate(line):
        if char == '"' and (i == 0 or line[i - 1] != '\\'):
            quoted = not quoted
        if not quoted and line.startswith('//', i):
            return line[:i].rstrip(), line[i + 2:].strip(), i
    return line, None, -1


class Filter:
    """Walks the lines once; `depth` counts braces, `opened` the depth of the open group."""

    def __init__(self, lines, group):
        self.lines = lines
        self.group = group
        self.out = []
        self.depth = 0
        self.opened = None
        self.column = -1  # the column of the last comment after code

    def run(self):
        at = self.head()
        joined = not self.lines[at]
        if joined:
            self.out.append(f'/** \\addtogroup {self.group} */ /**@{{*/')
            at += 1
        while at < len(self.lines):
            at = self.step(at)
        if joined:
            self.out[-1] += '/**@}*/'
        return self.out

    def head(self):
        at = self.lines.index('#pragma once') + 1
        self.out += self.lines[:at]
        begin = at
        while self.lines[at].startswith('//'):
            at += 1
        self.put(begin, at, '///')
        self.out[begin] = '/** \\file */ ' + self.out[begin]
        return at

    def put(self, begin, end, mark):
        """Adds these lines of comment, escaped for Doxygen, after this mark."""
        lines = [ONLY_COMMENT.match(line).groups() for line in self.lines[begin:end]]
        texts = escaped('\n'.join(text.removeprefix(' ') for _, text in lines)).split('\n')
        self.out += [f'{indent}{mark} {text}' for (indent, _), text in zip(lines, texts)]

    def step(self, at):
        line = self.lines[at]
        if ONLY_COMMENT.match(line):
            return self.comment(at)
        code, text, column = split_comment(line)
        ends = self.opened is not None and self.depth + code.count('{') - code.count('}') < self.opened
        if self.opened is not None and (ends or (not code.strip() and self.depth == self.opened)):
            code = '/**@}*/' + code
            self.opened = None
        self.depth += code.count('{') - code.count('}') - code.count('@{') + code.count('@}')
        self.column = column
        self.out.append(code if text is None else
                        f'{code} ///< {escaped(text)}' if self.declares(code) else line)
        return at + 1

    @staticmethod
    def declares(code):
        return not code.lstrip().startswith('#') and code.strip() not in ('{', '}', '};')

    def comment(self, at):
        match = ONLY_COMMENT.match(self.lines[at])
        if len(match['indent']) == self.column:  # continues a comment after code
            self.out.append(f"{match['indent']}///< {escaped(match['text'].strip())}")
            return at + 1
        end = at
        while ONLY_COMMENT.match(self.lines[end]):
            end += 1
        members = self.members(end)
        self.put(at, end, '///' if members else '//')
        closes = self.opened is not None and self.depth == self.opened
        if closes:
            self.opened = None
        if members > 1:
            self.out[at] = self.out[at].replace('///', '/**@{*/ ///', 1)
            self.opened = self.depth
        if closes:
            self.out[at] = '/**@}*/' + self.out[at]
        self.column = -1
        return end

    def members(self, at):
        """How many things the paragraph at this line declares for the comment above it."""
        if not self.lines[at].strip():
            return 0
        if NO_MEMBER.match(self.lines[at]):
            return 1
        count = 0
        depth = 0
        while at < len(self.lines) and (self.lines[at].strip() or depth > 0):
            if ONLY_COMMENT.match(self.lines[at]) and depth == 0:
                break
            if NO_MEMBER.match(self.lines[at]) and depth == 0:
                break
            code = split_comment(self.lines[at])[0]
            count += depth == 0 and code.endswith((';', '{', '}'))
            depth += code.count('{') - code.count('}')
            if depth < 0:
                break
            at += 1
        return count


if __name__ == '__main__':
    with open(sys.argv[1], encoding='utf-8') as file:
        group = 'values' if 'qrv/value' in sys.argv[1] else 'objects'
        print('\n'.join(Filter(file.read().split('\n'), group).run()))
