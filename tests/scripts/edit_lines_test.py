"""Tests of scripts/edit_lines.py, with tools that edit well and badly."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

TEXT = "{\n  // first\n  a = 1; // one\n  b = word;\n}\n"

# Finds the two scalars of TEXT, and sets one by the code that a test puts in for EDIT.
TOOL = """#!{python}
import re, sys
command, words = sys.argv[1], sys.argv[2:]
text = open(words[-2], newline="").read()
if command == "find":
    print("a = 1;\\nb = word;")
elif command == "set":
    path, value = words[-1].split(" = ")
    {edit}
    open(words[-2], "w", newline="").write(text)
else:
    print(re.search(words[-1] + r" = (.*?);", text)[1])
"""

GOOD = 'text = re.sub(rf"(?m)^  {path} = .*?;", f"  {path} = {value};", text)'


class EditLines(unittest.TestCase):
    def run_with(self, edit):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "f.attr").write_text(TEXT, encoding="utf-8")
            tool = folder / "tool"
            tool.write_text(TOOL.replace("{python}", sys.executable).replace("{edit}", edit), encoding="utf-8")
            tool.chmod(0o755)
            return subprocess.run(
                [sys.executable, ROOT / "scripts/edit_lines.py", "--tool", tool, folder / "f.attr"],
                capture_output=True, text=True, check=False)

    def fails(self, complaint, edit):
        result = self.run_with(edit)
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(complaint, result.stderr)

    def test_edits_of_one_line(self):
        result = self.run_with(GOOD)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.split()[-7:], ["f.attr", "2", "0", "2", "2", "0", "0"])

    def test_another_line_changes(self):
        self.fails("a: changed 2 lines instead of 1", GOOD + '; text = text.replace("}", "} ")')

    def test_a_comment_is_lost(self):
        self.fails("b: lost 1 comments", GOOD + '; text = text.replace(" // one", "")')

    def test_another_value_is_stored(self):
        self.fails("a: stores 7 instead of 2", 'value = "7" if path == "a" else value; ' + GOOD)

    def test_an_edit_is_refused(self):
        self.fails("a: refused: no", 'sys.exit("no")')


if __name__ == "__main__":
    unittest.main()
