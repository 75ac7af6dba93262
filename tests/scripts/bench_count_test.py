#!/usr/bin/env python3
"""Runs bench_count.py with a fake benchmark program and a fake callgrind."""
import os
import shutil
import subprocess
import sys

from checks_test import SCRIPTS, Tree

PROGRAM = """#!/bin/sh
case $1 in
--works) echo '[{"work": "find", "sizes": ["1", "10", "100"]}, {"work": "read", "sizes": ["1k", "10k", "100k"]}]' ;;
find/*) echo '{"entries":'"${1#find/}"'}' ;;
*) echo '{"entries":100}' ;;
esac
"""
CALLGRIND = """#!/bin/sh
for row; do :; done
echo "==1== Collected : $(cat "counts/$row")"
./qrv_bench "$row"
"""


class BenchCount(Tree):
    def setUp(self):
        super().setUp()
        self.write("qrv_bench", PROGRAM).chmod(0o755)
        self.write("bin/valgrind", CALLGRIND).chmod(0o755)
        self.write("bench/unmet.txt", "")
        self.scripts = [shutil.copy(SCRIPTS / name, self.root / "bench") for name in ("bench_count.py", "bench_judge.py")]
        self.counted({"find/1": 20, "find/10": 200, "find/100": 2000, "read/1k": 5000, "read/10k": 5000, "read/100k": 5000})

    def counted(self, counts):
        for row, count in counts.items():
            self.write(f"counts/{row}", f"{count}\n")

    def run_count(self, *arguments):
        return subprocess.run(
            [sys.executable, self.scripts[0], "qrv_bench", *arguments], cwd=self.root, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
            env={**os.environ, "PATH": f"{self.root}/bin:{os.environ['PATH']}"},
        )

    def compared(self, status):
        result = self.run_count("--against", "saved")
        self.assertEqual(result.returncode, status, result.stdout)
        return result.stdout

    def save(self):
        self.assertEqual(self.run_count("--save", "saved").returncode, 0)

    def test_prints_the_instructions_of_a_round_and_those_for_each_entry(self):
        result = self.run_count("--rows", "10+$")
        self.assertEqual([line.split() for line in result.stdout.splitlines()[1:]],
                         [["find/10", "200", "20.0"], ["find/100", "2,000", "20.0"]])
        self.assertEqual(result.returncode, 0)

    def test_one_percent_more_is_allowed(self):
        self.save()
        self.counted({"read/100k": 5050, "find/1": 10, "find/10": 100, "find/100": 1000})
        said = self.compared(0)
        self.assertIn("+1.00 %", said)
        self.assertIn("-50.00 %", said)

    def test_over_one_percent_more_fails(self):
        self.save()
        self.counted({"read/100k": 5051})
        self.assertIn("read/100k needs over 1 % more instructions than in saved", self.compared(1))

    def test_a_row_that_was_not_saved_is_new(self):
        self.write("saved", '{"find/10": 1000}')
        self.assertRegex(self.compared(0), r"read/100k .* new\n")

    def test_instructions_for_each_entry_may_grow_by_two_fifths(self):
        self.counted({"read/100k": 7000})
        self.assertEqual(self.run_count().returncode, 0)
        self.counted({"read/100k": 7001})
        result = self.run_count()
        self.assertEqual(result.returncode, 1)
        self.assertIn("growth read/100k: 1.40 times the instructions of read/1k for each entry", result.stdout)

    def test_growth_that_is_listed_with_its_profile(self):
        self.counted({"read/100k": 9000})
        self.write("bench/unmet.txt", "growth read/100k\n    60.0 %  f()\n")
        self.assertEqual(self.run_count().returncode, 0)
        self.write("bench/unmet.txt", "growth read/100k\n    why\n")
        self.assertIn("growth read/100k needs the profile", self.run_count().stdout)

    def test_a_list_that_is_out_of_date(self):
        self.write("bench/unmet.txt", "growth read/100k\n    60.0 %  f()\n")
        self.assertIn("growth read/100k is met: remove it", self.run_count().stdout)
        self.write("bench/unmet.txt", "growth other/1\n    60.0 %  f()\n")
        self.assertIn("has the name growth other/1", self.run_count().stdout)

    def test_large_sizes_leave_the_list_of_the_usual_ones_alone(self):
        self.counted({"read/100000": 5000, "read/1000000": 5000, "read/10000000": 5000})
        self.write("bench/unmet.txt", "growth read/100k\n    60.0 %  f()\n")
        result = self.run_count("--large")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual([line.split()[0] for line in result.stdout.splitlines()[1:]],
                         ["read/100000", "read/1000000", "read/10000000"])
        self.counted({"read/10000000": 7001})
        self.assertIn("growth read/10000000: 1.40 times", self.run_count("--large").stdout)

    def test_a_saved_file_without_these_rows(self):
        for text in ("{}", '{"other_qrv/1": 5}', "[]"):
            self.write("saved", text)
            self.assertIn("saved has none of these rows", self.compared(2))

    def test_a_saved_file_that_does_not_exist(self):
        self.assertIn("saved", self.compared(2))

    def test_a_row_without_a_count(self):
        self.counted({"read/100k": 0})
        result = self.run_count()
        self.assertEqual(result.returncode, 2)
        self.assertIn("has not counted read/100k", result.stdout)


if __name__ == "__main__":
    import unittest

    unittest.main()
