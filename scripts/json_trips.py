#!/usr/bin/env python3
"""Converts JSON to files of the format and back, and compares both as Python reads them.

usage: json_trips.py [--tool PROGRAM] [--documents N] [--seed N] [FILE...]

from-json and to-json convert each FILE, N generated documents in arrays of a thousand, and some
documents with integers of any length. The JSON at the end must have the same values, the same keys in the same
order, and the same numbers; the sign of -0.0 counts, and a bool is not a number. Files with integers that
a double cannot represent must be rejected; with --big=string and --big=double these must become strings
and rounded numbers. The JSON at the end must convert to the same file again, and --compact and --integers must
give the same values.

N is $QRV_DOCUMENTS, or 500. The exit code is 1 if there is a difference; the first difference of each
conversion is printed with its path.
"""

import argparse
import json
import math
import os
import random
import struct
import subprocess
import sys

BATCH = 1000
INT = range(-2**31, 2**31)
PARTS = ["a", "Z_9", " ", "\n", "\r", "\t", '"', "\\", "'", "/", "//", "/*", "*/", "#", "=", ";", ",", "}", "{", "[", "<",
         "<<", "true", "false", "null", "#nil", "#cRef(/a)", "12", "-1.5", "1e5f", "0x1F", "\x01", "\b", "\f", "\x1f", "\x7f",
         "\x85", "\u00e9", "\u20ac", "\u2028", "\ufeff", "\ufffd", "\uffff", "\U0001f600", "\U0010ffff"]
ESCAPES = {'"': '\\"', "\\": "\\\\", "/": "\\/", "\b": "\\b", "\f": "\\f", "\n": "\\n", "\r": "\\r", "\t": "\\t"}


# ---------------------------------------------------------------- documents

class Generator:
    """Documents as JSON text, in which equal values have different spellings."""

    def __init__(self, seed, big=False):
        self.random = random.Random(seed)
        self.big = big

    def document(self):
        return self.value(self.random.randrange(1, 7))

    def deep(self, depth):
        """A document of the given depth."""
        text = self.scalar()
        for _ in range(depth):
            text = f"[{text}]" if self.random.random() < 0.5 else "{" + self.string() + ":" + text + "}"
        return text

    def value(self, depth):
        kind = self.random.random()
        if depth == 0 or kind < 0.4:
            return self.scalar()
        count = self.random.randrange(6)
        if kind < 0.7:
            return self.joined("[]", [self.value(depth - 1) for _ in range(count)])
        keys = {}
        while len(keys) < count:
            key = self.string()
            keys.setdefault(json.loads(key), key)
        return self.joined("{}", [f"{key}{self.blank()}:{self.blank()}{self.value(depth - 1)}" for key in keys.values()])

    def joined(self, brackets, parts):
        separator = f"{self.blank()},{self.blank()}"
        return brackets[0] + self.blank() + separator.join(parts) + self.blank() + brackets[1]

    def blank(self):
        return self.random.choice(["", "", "", " ", "\n  ", "\t", "\r\n"])

    def scalar(self):
        make = self.random.choice([self.whole, self.fraction, self.string, self.string, self.word])
        return make()

    def word(self):
        return self.random.choice(["null", "true", "false"])

    def whole(self):
        near = self.random.choice([0, 10, 2**16, 2**31, 2**32, 2**52, 2**53 - 4])
        kind = self.random.random()
        if kind < 0.5:
            number = near + self.random.randrange(-3, 4)
        elif self.big:
            number = self.random.getrandbits(self.random.randrange(54, 1000))
        elif kind < 0.8:
            number = self.random.randrange(2**self.random.randrange(1, 54))
        else:
            number = int(float(self.random.getrandbits(self.random.randrange(1, 200))))
        return str(self.random.choice([-1, 1]) * number)

    def fraction(self):
        kind = self.random.randrange(4)
        if kind == 0:
            return self.random.choice(["0.0", "-0.0", "0e5", "1.0", "-1.0", "1E5", "1e+05", "0.10", "1.0e-7", "5e-324",
                                       "2.2250738585072014e-308", "1.7976931348623157e308", "123456789012345680000.0"])
        if kind == 1:
            return f"{self.random.uniform(-180, 180):.{self.random.randrange(1, 18)}f}"
        if kind == 2:
            return repr(self.random.randrange(-80000, 80000) / 8)
        number = math.nan
        while not math.isfinite(number):
            number = struct.unpack("d", self.random.randbytes(8))[0]
        return repr(number)

    def string(self):
        pieces = []
        for _ in range(self.random.choice([0, 1, 1, 1, 2, 3, 8])):
            if self.random.random() < 0.8:
                pieces.append(self.random.choice(PARTS))
            else:
                code = self.random.choice([self.random.randrange(1, 0xD800), self.random.randrange(0xE000, 0x110000)])
                pieces.append(chr(code))
        return '"' + "".join(self.spelt(character) for character in "".join(pieces)) + '"'

    def spelt(self, character):
        must = character < " " or character in '"\\'
        kind = self.random.random()
        if character in ESCAPES and (must or kind < 0.3) and kind < 0.9:
            return ESCAPES[character]
        if must or kind > 0.95:
            return "".join(f"\\u{unit:04x}" if kind < 0.98 else f"\\u{unit:04X}" for unit in units(character))
        return character


def units(character):
    return struct.unpack(f">{len(character.encode('utf-16-be')) // 2}H", character.encode("utf-16-be"))


# ---------------------------------------------------------------- comparing

class Pairs(list):
    """An object: its keys and values in order."""


def parsed(text):
    return json.loads(text, object_pairs_hook=Pairs)


def fits(number):
    try:
        return number in INT or int(float(number)) == number
    except OverflowError:
        return False


def with_big(value, change):
    """The value, with `change` applied to each integer that fits neither int nor double."""
    if isinstance(value, Pairs):
        return Pairs((key, with_big(item, change)) for key, item in value)
    if isinstance(value, list):
        return [with_big(item, change) for item in value]
    if isinstance(value, int) and not isinstance(value, bool) and not fits(value):
        return change(value)
    return value


def kind_of(value):
    if isinstance(value, bool) or value is None:
        return repr(value)
    return "number" if isinstance(value, (int, float)) else type(value).__name__


def difference(before, after, path=""):
    """A description of the first difference, or None."""
    if kind_of(before) != kind_of(after):
        return f"{path or '/'}: {before!r:.80} became {after!r:.80}"
    if isinstance(before, Pairs):
        if [key for key, _ in before] != [key for key, _ in after]:
            return f"{path or '/'}: other keys, or in another order"
        items = [(key, one, other) for (key, one), (_, other) in zip(before, after)]
    elif isinstance(before, list):
        if len(before) != len(after):
            return f"{path or '/'}: {len(before)} items became {len(after)}"
        items = [(index, one, other) for index, (one, other) in enumerate(zip(before, after))]
    else:
        sign = isinstance(before, float) and math.copysign(1, before) != math.copysign(1, after)
        return f"{path or '/'}: {before!r:.80} became {after!r:.80}" if before != after or sign else None
    return next(filter(None, (difference(one, other, f"{path}/{key}") for key, one, other in items)), None)


# ---------------------------------------------------------------- trips

class Trips:
    def __init__(self, tool):
        self.tool = tool
        self.failures = 0

    def run(self, *words, given):
        return subprocess.run([self.tool, *words], input=given, capture_output=True, check=False)

    def complain(self, name, text):
        self.failures += 1
        print(f"{name}: {text}", file=sys.stderr)

    def convert(self, name, given, *words):
        done = self.run(*words, given=given)
        if done.returncode or done.stderr:
            self.complain(name, f"{' '.join(words)} fails: {done.stderr.decode(errors='replace')[:500].strip()}")
            return None
        return done.stdout

    def back(self, name, file, expected, *options):
        """Compares the output of to-json for the file with the expected value."""
        text = self.convert(name, file, "to-json", *options)
        if text is not None and (found := difference(expected, parsed(text))):
            self.complain(name, f"{' '.join(('to-json', *options))}: {found}")
        return text

    def trip(self, name, given, expected, *options):
        file = self.convert(name, given, "from-json", *options)
        if file is None:
            return
        text = self.back(name, file, expected)
        self.back(name, file, expected, "--strict", "--compact", "--integers")
        if text is not None and self.convert(name, text, "from-json") not in (None, file):
            self.complain(name, "the result converts to a different file")

    def refused(self, name, given):
        done = self.run("from-json", given=given)
        if done.returncode != 2 or done.stdout or b"--big=string" not in done.stderr:
            self.complain(name, "integers that fit neither int nor double are not rejected")

    def all_of(self, name, given):
        value = parsed(given)
        strings, rounded = with_big(value, str), with_big(value, float)
        if strings == value:
            self.trip(name, given, value)
            return
        self.refused(name, given)
        self.trip(name, given, strings, "--big=string")
        self.trip(name, given, rounded, "--big=double")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--tool", default="build/release/bin/qrv")
    parser.add_argument("--documents", type=int, default=int(os.environ.get("QRV_DOCUMENTS", "500")))
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("files", nargs="*")
    options = parser.parse_args()
    sys.setrecursionlimit(20000)
    trips = Trips(options.tool)
    for name in options.files:
        with open(name, "rb") as file:
            trips.all_of(name, file.read())
    for first in range(0, options.documents, BATCH):
        count = min(BATCH, options.documents - first)
        for big in (False, True):
            generator = Generator(f"{options.seed} {first} {big}", big)
            documents = [generator.document() for _ in range(count // 10 if big else count)]
            documents.append(generator.deep(700))
            trips.all_of(f"documents from {first}, seed {options.seed}", ("[" + ",\n".join(documents) + "]").encode())
    if not trips.failures:
        print(f"{options.documents} documents and {len(options.files)} files are unchanged after both conversions")
    return 1 if trips.failures else 0


if __name__ == "__main__":
    sys.exit(main())
