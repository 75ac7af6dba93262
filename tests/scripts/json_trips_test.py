"""Tests of scripts/json_trips.py, with tools that convert correctly and incorrectly."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Its files are JSON. A test inserts the change that the text undergoes when it is converted back.
TOOL = """#!{python}
import json, re, sys
text = sys.stdin.read()
BIG = r'(?<!")\\b(\\d{17,})\\b(?!")'
if sys.argv[1] == "from-json":
    big = re.search(BIG, text)
    if big and "--big=string" in sys.argv:
        text = re.sub(BIG, r'"\\1"', text)
    elif big and "--big=double" in sys.argv:
        text = re.sub(BIG, lambda found: repr(float(found[1])), text)
    elif big and {refuses}:
        sys.stderr.write("use --big=string")
        sys.exit(2)
    text = json.dumps(json.loads(text))
else:
    {back}
sys.stdout.write(text)
"""

TEXT = '{"#a": [1, 2.5, -0.0, true, null], "b": {"c": "x"}, "d": 1}'


class JsonTrips(unittest.TestCase):
    def run_with(self, back="pass", text=TEXT, refuses="True"):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "f.json").write_text(text, encoding="utf-8")
            tool = folder / "tool"
            source = TOOL.replace("{python}", sys.executable).replace("{back}", back)
            tool.write_text(source.replace("{refuses}", refuses), encoding="utf-8")
            tool.chmod(0o755)
            return subprocess.run([sys.executable, ROOT / "scripts/json_trips.py", "--tool", tool, "--documents", "0",
                                   folder / "f.json"], capture_output=True, text=True, check=False)

    def passes(self, **how):
        result = self.run_with(**how)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout, "0 documents and 1 files are unchanged after both conversions\n")

    def fails(self, complaint, **how):
        result = self.run_with(**how)
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(complaint, result.stderr)

    def test_equal_documents_are_accepted(self):
        self.passes()
        self.passes(back=r'text = text.replace("x", chr(92) + "u0078")')

    def test_differences_are_reported(self):
        self.fails("/#a/1: 2.5 became 2.25", back='text = text.replace("2.5", "2.25")')
        self.fails("/#a/2: -0.0 became 0.0", back='text = text.replace("-0.0", "0.0")')
        self.fails("/#a/3: True became 1", back='text = text.replace("true", "1")')
        self.fails("/#a: 5 items became 4", back='text = text.replace(", null", "")')
        self.fails("/b: other keys, or in another order", back='text = text.replace(chr(34) + "c", chr(34) + "C")')
        self.fails("/: other keys, or in another order",
                   back='pairs = list(json.loads(text).items()); text = json.dumps(dict(reversed(pairs)))')
        self.fails("/b/c: 'x' became 'y'", back='text = text.replace("x", "y")')

    def test_a_whole_number_becomes_a_double(self):
        self.fails("the result converts to a different file", back='text = text.replace("1,", "1.0,")')

    def test_a_failing_tool_is_reported(self):
        self.fails("to-json fails: no", back='sys.exit("no")')

    def test_big_numbers(self):
        text = '{"id": 12345678901234567891, "n": 2}'
        self.passes(text=text)
        self.fails("are not rejected", text=text, refuses="False")


if __name__ == "__main__":
    unittest.main()
