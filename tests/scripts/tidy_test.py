#!/usr/bin/env python3
"""Runs scripts/tidy.py on small folders of sources; needs clang-tidy."""
import json
import shutil
import unittest

from checks_test import SCRIPTS, Tree

FINE = "int {name}(int number) {{ return number + 1; }}\n"
POINTER = "int *{name}() {{ return 0; }}\n"


class Tidy(Tree):
    def setUp(self):
        super().setUp()
        shutil.copy(SCRIPTS.parent / ".clang-tidy", self.root)
        for number in range(20):
            self.source(f"fine{number}", FINE)

    def source(self, name, text):
        self.write(f"base/{name}.cpp", text.format(name=name))

    def tidy(self):
        """The sources with findings, and the number of groups that were written."""
        files = sorted(self.root.glob("base/*.cpp"))
        self.write("build/compile_commands.json", json.dumps(
            [{"directory": str(self.root), "file": str(file), "command": f"clang++ -std=c++20 -o a.o -c {file}"}
             for file in files]))
        result = self.run_script("tidy.py", "-j", "2", "build", *files)
        found = {file.stem for file in files if f"{file}:" in result.stdout}
        self.assertEqual(result.returncode, 1 if found else 0, result.stdout)
        return found, len(list(self.root.glob("build/tidy/*")))

    def test_clean_sources_are_checked_in_two_groups(self):
        self.assertEqual(self.tidy(), (set(), 2))

    def test_the_sources_with_findings_are_named(self):
        self.source("a", POINTER)
        self.source("z", "#include <string>\nbool {name}(std::string const &text) {{ return text.size() == 0; }}\n")
        self.assertEqual(self.tidy()[0], {"a", "z"})

    def test_names_that_two_sources_have_are_not_reported(self):
        for name in "ab":
            self.source(name, "static int twice(int number) {{ return 2 * number; }}\n"
                        "int {name}() {{ return twice(1); }}\n")
        self.assertEqual(self.tidy()[0], set())

    def test_a_finding_beside_names_that_two_sources_have(self):
        for name in "ab":
            self.source(name, "static int *twice() {{ return 0; }}\nint *{name}() {{ return twice(); }}\n")
        self.assertEqual(self.tidy()[0], {"a", "b"})

    def test_a_using_declaration_that_only_another_source_needs(self):
        self.write("base/n.h", "#pragma once\nnamespace n { struct Value {}; }\n")
        self.source("a", '#include "n.h"\nusing n::Value;\n')
        self.source("b", '#include "n.h"\nusing n::Value;\nValue {name}() {{ return Value(); }}\n')
        self.assertEqual(self.tidy()[0], {"a"})

    def test_a_source_that_does_not_compile(self):
        self.source("a", "int {name}() {{ return missing; }}\n")
        self.assertEqual(self.tidy()[0], {"a"})

    def test_a_source_that_no_build_has(self):
        self.write("base/fine0.cpp", "int *fine0() { return 0; }\n")
        files = [self.root / "base/fine0.cpp"]
        self.write("build/compile_commands.json", "[]")
        self.assertEqual(self.run_script("tidy.py", "build", *files).returncode, 1)


if __name__ == "__main__":
    unittest.main()
