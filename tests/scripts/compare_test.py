#!/usr/bin/env python3
"""Runs compare.py on two fake states. Their libraries are scripts, which a fake compiler copies instead of linking."""
import os
import shutil
import subprocess
import sys

from checks_test import SCRIPTS, Tree

COMPILER = """#!/bin/sh
while [ $# -gt 0 ]; do
    case $1 in
    -o) program=$2 ;;
    -L*) library=${1#-L}/libqrv.so ;;
    esac
    shift
done
[ -z "$library" ] && touch "$program" || cp "$library" "$program"
"""
PROGRAM = """#!/bin/sh
[ "$1" != --show ] || { show=yes; shift; }
for seed in $(seq "$2" "$3"); do
    result=done
    case $1-$seed in
    SPECIAL
    esac
    [ -z "$show" ] && echo "$seed $result" || printf '==== %s %s\\n%s\\n' "$1" "$seed" "$result"
done
"""


class Compare(Tree):
    def setUp(self):
        super().setUp()
        self.write("compiler", COMPILER).chmod(0o755)
        self.write("tests/reference/world.h", "")
        self.write("tests/reference/observe.cpp", "")
        (self.root / "scripts").mkdir()
        self.script = shutil.copy(SCRIPTS / "compare.py", self.root / "scripts")
        self.state("before")
        self.state("now")

    def state(self, name, special=""):
        """A state that prints the same for all seeds except the special one, which is a `case` of the shell."""
        self.write(f"{name}/include/qrv/qrv.h", "")
        self.write(f"{name}/build/release/lib/libqrv.so", PROGRAM.replace("SPECIAL", special)).chmod(0o755)

    def compared(self, status, *arguments):
        done = subprocess.run(
            [sys.executable, self.script, "--with", "before", "--now", "now", "--seeds=1-20", *arguments],
            cwd=self.root, env={**os.environ, "CXX": str(self.root / "compiler")}, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
        )
        self.assertEqual(done.returncode, status, done.stdout)
        return done.stdout

    def test_equal_states_are_accepted(self):
        printed = self.compared(0)
        for mode in ("read", "write", "copy", "hash", "scan"):
            self.assertIn(f"{mode}: 20 seeds are the same\n", printed)

    def test_one_seed_that_differs_is_reported(self):
        self.state("now", 'read-7) result="done otherwise" ;;')
        printed = self.compared(1)
        self.assertIn("read: 1 of 20 seeds differ; seed 7:\n", printed)
        self.assertIn("  -done\n  +done otherwise\n", printed)
        self.assertRegex(printed, r"(?m)^  again: .*/before-release/reference_observe --show read 7 7$")
        self.assertIn("write: 20 seeds are the same\n", printed)

    def test_the_last_seed_of_the_last_mode_is_compared(self):
        self.state("before", 'scan-1001) result="done otherwise" ;;')
        printed = self.compared(1, "--seeds=1-1001", "--modes=read,scan")
        self.assertIn("scan: 1 of 1001 seeds differ; seed 1001:\n", printed)

    def test_several_seeds_that_differ_are_reported(self):
        self.state("now", "copy-3|copy-5) result=otherwise ;;")
        printed = self.compared(1, "--modes=copy")
        self.assertIn("copy: 2 of 20 seeds differ; seed 3:\n  all: 3 5\n", printed)

    def test_a_state_that_ends_early_is_reported(self):
        self.state("now", "write-4) exit 3 ;;")
        printed = self.compared(1, "--modes=write")
        self.assertIn("write: 1 of 20 seeds differ; seed 4:\n", printed)
        self.assertIn("  +ends with 3\n", printed)

    def test_states_that_both_end_early_are_reported(self):
        for name in ("before", "now"):
            self.state(name, "write-4) exit 3 ;;")
        self.assertIn("write 4 ends with 3 in both states\n", self.compared(0, "--modes=write"))

    def test_an_expected_difference_is_accepted(self):
        self.state("now", 'read-7) result="done otherwise" ;;')
        self.compared(1, "--modes=read", "--ignore=other")
        self.compared(0, "--modes=read", "--ignore= otherwise")


if __name__ == "__main__":
    import unittest

    unittest.main()
