#!/usr/bin/env python3
"""Runs bench.py with a fake benchmark program, and shows that the check of the chart can fail."""
import subprocess
import sys

from checks_test import SCRIPTS, Tree

# Each round takes the number of microseconds in the file of the row and the library.
PROGRAM = """#!/bin/sh
case $1 in
--works) echo '[{"work": "read", "timed": ["1M", "10M", "160000", "1Mv"], "libraries": ["qrv", "nlohmann"]},
  {"work": "write", "timed": ["1M"], "libraries": ["qrv", "nlohmann"]},
  {"work": "write_exact", "timed": ["1M"], "libraries": ["qrv", "nlohmann"]},
  {"work": "copy", "timed": ["1M"], "libraries": ["qrv", "nlohmann"]},
  {"work": "destroy", "timed": ["1M"], "libraries": ["qrv", "nlohmann"]}]' | tr -d '\\n'; echo ;;
--write) for name in 1M 10M 160000 1Mv; do echo '{}' >"$2/$name.json"; done ;;
*)
    [ ! -e "fails/$2" ] || exit 1
    echo '{"entries":1000,"bytes":'"$(cat "bytes/$2")"'}'
    while read -r _; do echo "$(cat "times/$1/$2")e-6"; done ;;
esac
"""
ROWS = ["read/1M", "read/10M", "read/160000", "read/1Mv", "write/1M", "write_exact/1M", "copy/1M", "destroy/1M"]
README = """# Title
<!-- numbers of bench/RESULTS.md -->
<!-- end of the numbers -->
More.
"""


class Bench(Tree):
    def setUp(self):
        super().setUp()
        for name in ("bench.py", "bench_chart.py", "bench_judge.py", "bench_results.py"):
            self.write(f"scripts/{name}", (SCRIPTS / name).read_text(encoding="utf-8"))
        self.write("scripts/bench_tool.py", "def names(): return []\n") # the tool's commands are not run here
        self.write("scripts/bench_include.py", "ROW = 'include'\ndef measure(folder, rounds): return []\n")
        self.write("bench/unmet.txt", "")
        self.write("bench/cpython_json.py", "import sys\nprint({}, flush=True)\nfor _ in sys.stdin: print(1e-6, flush=True)\n")
        self.write("bin/qrv_bench", PROGRAM).chmod(0o755)
        self.write("README.md", README)
        self.write("bytes/qrv", "200000")
        self.write("bytes/nlohmann", "100000")
        for row in ROWS:
            self.takes(row, 50)
            self.write(f"times/{row}/nlohmann", "100")

    def takes(self, row, microseconds):
        self.write(f"times/{row}/qrv", str(microseconds))

    def bench(self, status, *arguments):
        result = subprocess.run([sys.executable, "scripts/bench.py", "bin/qrv_bench", "--rounds", "5", *arguments],
                                cwd=self.root, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        self.assertEqual(result.returncode, status, result.stdout)
        return result.stdout

    def check_chart(self):
        return subprocess.run([sys.executable, "scripts/bench_chart.py", "--check"], cwd=self.root, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False).stdout

    def test_results_chart_and_numbers_agree_until_one_is_changed(self):
        self.bench(0)
        results = (self.root / "bench/RESULTS.md").read_text(encoding="utf-8")
        self.assertIn("| read/10M | 1,000 | 50.0 | 100.0 | nlohmann | 0.50 | 1.0 | new |", results)
        self.assertIn("| memory/1M | 1,000 | 200.0 | 100.0 | nlohmann | 2.00 | 230 bytes | new |", results)
        self.assertIn("| Read 1 MB | 50 ns | 100 ns | 0.50 |", (self.root / "README.md").read_text(encoding="utf-8"))
        self.assertEqual(self.check_chart(), "")
        for name in ("bench/chart.svg", "README.md"):
            text = (self.root / name).read_text(encoding="utf-8")
            self.write(name, text.replace("50", "49"))
            self.assertIn(name, self.check_chart())
            self.write(name, text)
        self.write("bench/RESULTS.md", results.replace("| read/1M |", "| other/1M |"))
        self.assertIn("the newest run has no row read/1M", self.check_chart())

    def test_the_change_and_the_run_before(self):
        self.bench(0)
        self.takes("copy/1M", 100)
        self.assertRegex(self.bench(0), r"copy/1M .* \+100 %\n")
        results = (self.root / "bench/RESULTS.md").read_text(encoding="utf-8")
        self.assertIn("| unknown | 0.50 | 200 |", results)
        self.assertEqual(results.count("| unknown |"), 1)  # one line for each commit

    def test_a_row_that_is_too_slow_must_be_listed_with_its_profile(self):
        self.takes("write_exact/1M", 251)
        self.assertIn("write_exact/1M: 2.51 times what nlohmann takes, more than 2.5", self.bench(1))
        self.write("bench/unmet.txt", "# why\nwrite_exact/1M\n    why\n    30.0 %  f()\n    20.0 %  g()\n")
        self.bench(0)
        self.write("bench/unmet.txt", "write_exact/1M\n    why\n    30.0 %  f()\n")
        self.assertIn("write_exact/1M needs the profile", self.bench(1))

    def test_memory_that_is_too_much(self):
        self.write("bytes/qrv", "231000")
        self.assertIn("memory/1M: 231 bytes for each entry, more than 230", self.bench(1))

    def test_a_list_that_is_out_of_date(self):
        self.write("bench/unmet.txt", "read/1M\n    60.0 %  f()\n")
        self.assertIn("read/1M is met: remove it", self.bench(1))
        self.write("bench/unmet.txt", "find/1\n    60.0 %  f()\n")
        self.assertIn("has the name find/1", self.bench(1))

    def test_a_list_of_another_form(self):
        for text, said in (("    60.0 %  f()\n", "a row comes first"), ("a/1\na/1\n", "a/1 is listed twice")):
            self.write("bench/unmet.txt", text)
            self.assertIn(said, self.bench(2))

    def test_a_library_whose_program_fails(self):
        self.write("fails/nlohmann", "")
        self.assertIn("ended with 1", self.bench(2))

    def test_chosen_rows_are_only_printed(self):
        said = self.bench(0, "--rows", "copy|write/")
        self.assertIn("copy/1M", said)
        self.assertNotIn("read/", said)
        self.assertFalse((self.root / "bench/RESULTS.md").exists())


if __name__ == "__main__":
    import unittest

    unittest.main()
