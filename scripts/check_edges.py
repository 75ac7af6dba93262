#!/usr/bin/env python3
"""Checks the lists of edge cases against the tests, and counts the cases by subject.

tests/<folder>/<subject>.edges has a line for each case: `Suite.test<TAB>the words of the case`. A
case that needs a separate process is `process/<name>`, for tests/process/<name>.cpp. Lines that
begin with # are comments.
  - each listed test exists in the sources of the list's folder;
  - each test in a suite whose name ends in Edge is listed, once.
Usage: check_edges.py [-q] [ROOT]. 0 on success, else one line for each mistake and 1.
"""
import pathlib
import re
import sys

TEST = re.compile(r"^\s*(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\s*\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.M)


def tests_of(folder):
    """Name of each test in the folder's sources, with its file."""
    found = {}
    for file in sorted(folder.glob("*_test.cpp")):
        for suite, name in TEST.findall(file.read_text(encoding="utf-8")):
            found[f"{suite}.{name}"] = file
    return found


def read_list(file):
    """(line number, test, words) of each case; the test of a line with another form: None."""
    for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
        if line.strip() == "" or line.startswith("#"):
            continue
        test, tab, words = line.partition("\t")
        good = tab and words.strip() and re.fullmatch(r"\w+\.\w+|process/\w+", test)
        yield number, test if good else None, words


def check_folder(root, folder, counts):
    tests = tests_of(folder)
    listed = {}
    for file in sorted(folder.glob("*.edges")):
        counts[str(file.relative_to(root / "tests"))[: -len(".edges")]] = 0
        for number, test, _ in read_list(file):
            place = f"{file.relative_to(root)}:{number}"
            if test is None:
                yield f"{place}: not of the form Suite.test<TAB>words"
                continue
            counts[str(file.relative_to(root / "tests"))[: -len(".edges")]] += 1
            if test in listed and not test.startswith("process/"):
                yield f"{place}: {test} is listed already in {listed[test]}"
            listed.setdefault(test, place)
            if test.startswith("process/"):
                if not (root / "tests" / f"{test}.cpp").is_file():
                    yield f"{place}: there is no tests/{test}.cpp"
            elif test not in tests:
                yield f"{place}: no test {test} in {folder.relative_to(root)}"
    for test, file in tests.items():
        if test.split(".")[0].endswith("Edge") and test not in listed:
            yield f"{file.relative_to(root)}: {test} is in no list of edge cases"


def main():
    arguments = [a for a in sys.argv[1:] if a != "-q"]
    root = pathlib.Path(arguments[0] if arguments else ".").resolve()
    counts, wrong = {}, []
    folders = sorted({f.parent for f in (root / "tests").rglob("*") if f.suffix in (".edges", ".cpp")})
    for folder in folders:
        wrong += check_folder(root, folder, counts)
    if "-q" not in sys.argv:
        for subject, count in counts.items():
            print(f"{count:5} {subject}")
        print(f"{sum(counts.values()):5} edge cases")
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
