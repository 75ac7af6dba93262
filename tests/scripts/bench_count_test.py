#!/usr/bin/env python3
"""Runs bench_count.py on a made-up benchmark program below a made-up callgrind."""
import os
import subprocess
import sys

from checks_test import SCRIPTS, Tree

PROGRAM = """#!/bin/sh
[ "$1" = --benchmark_list_tests=true ] && { printf 'find_qrv/10\\nfind_json/10\\nread_qrv/100\\n'; exit; }
case $2$1 in *find*) echo 'find_qrv/10/iterations:2 1 us' ;; *) echo 'read_qrv/100/iterations:1 1 us' ;; esac
"""
CALLGRIND = """#!/bin/sh
case $* in *find*) echo "==1== Collected : $(cat find)" ;; *) echo "==1== Collected : $(cat read)" ;; esac
while [ "${1#--}" != "$1" ]; do shift; done
"$@"
"""


class BenchCount(Tree):
    def setUp(self):
        super().setUp()
        self.write("qrv_bench", PROGRAM).chmod(0o755)
        self.write("bin/valgrind", CALLGRIND).chmod(0o755)
        self.counted(find=2000, read=5000)

    def counted(self, **counts):
        for row, count in counts.items():
            self.write(row, f"{count}\n")

    def run_count(self, *arguments):
        return subprocess.run(
            [sys.executable, str(SCRIPTS / "bench_count.py"), "qrv_bench", *arguments], cwd=self.root, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
            env={**os.environ, "PATH": f"{self.root}/bin:{os.environ['PATH']}"},
        )

    def compared(self, status):
        result = self.run_count("--against", "saved")
        self.assertEqual(result.returncode, status, result.stdout)
        return result.stdout

    def save(self):
        self.assertEqual(self.run_count("--save", "saved").returncode, 0)

    def test_each_row_of_the_library_by_round_and_by_entry(self):
        lines = self.run_count().stdout.splitlines()
        self.assertEqual([line.split() for line in lines[1:]],
                         [["find_qrv/10", "1,000", "100.0"], ["read_qrv/100", "5,000", "50.0"]])

    def test_one_percent_more_is_allowed(self):
        self.save()
        self.counted(read=5050, find=1000)
        said = self.compared(0)
        self.assertIn("+1.00 %", said)
        self.assertIn("-50.00 %", said)

    def test_over_one_percent_more_fails(self):
        self.save()
        self.counted(read=5051)
        self.assertIn("read_qrv/100 needs over 1 % more instructions than in saved", self.compared(1))

    def test_a_row_that_was_not_saved_is_new(self):
        self.write("saved", '{"find_qrv/10": 1000}')
        self.assertRegex(self.compared(0), r"read_qrv/100 .* new\n")

    def test_a_saved_file_without_these_rows(self):
        for text in ("{}", '{"other_qrv/1": 5}', "[]"):
            self.write("saved", text)
            self.assertIn("saved has none of these rows", self.compared(2))

    def test_a_saved_file_that_does_not_exist(self):
        self.assertIn("saved", self.compared(2))

    def test_a_row_without_a_count(self):
        self.counted(read=0)
        result = self.run_count()
        self.assertEqual(result.returncode, 2)
        self.assertIn("has not counted read_qrv/100", result.stdout)


if __name__ == "__main__":
    import unittest

    unittest.main()
