#!/usr/bin/env python3
"""Shows that each check in scripts/ can fail: every rule is violated once in a small tree.

Each test creates a valid tree first, for which the check passes, so that a later failure is caused
by the change that the test makes.
"""
import importlib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"
HEADER = "#pragma once\n// A thing. One thread at a time.\n"


class Tree(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.root)

    def write(self, name, text):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
        return file

    def run_script(self, name, *arguments):
        script = SCRIPTS / name
        start = [sys.executable, str(script)] if script.suffix == ".py" else ["bash", str(script)]
        return subprocess.run(
            start + [str(a) for a in arguments], cwd=self.root, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, check=False,
        )

    def passes(self, name, *arguments):
        result = self.run_script(name, *arguments)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def fails(self, text, name, *arguments):
        result = self.run_script(name, *arguments)
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(text, result.stdout)


class Includes(Tree):
    def setUp(self):
        super().setUp()
        self.write("include/qrv/ccomp.h", HEADER)
        self.write("include/qrv/base/cref.h", HEADER + '#include "qrv/ccomp.h"\n#include <vector>\n')
        self.write("include/qrv/core/cobj.h", HEADER + '#include "qrv/base/cref.h"\n#include "qrv/core/cattrhash.h"\n')
        self.write("include/qrv/core/cattrhash.h", HEADER + '#include "qrv/base/cref.h"\n')
        self.write("include/qrv/base/csignal.h", HEADER)
        self.write("include/qrv/text/write/cwriter.h", HEADER + '#include "qrv/core/cobj.h"\n')
        self.write("include/qrv/diagnostics/cerr.h", HEADER + '#include "qrv/base/csignal.h"\n')
        self.write("include/qrv/base/cfilename.h", HEADER)
        self.write("include/qrv/util/cundo.h", HEADER + '#include "qrv/text/write/cwriter.h"\n')
        self.write("text/state/cwriter_state.h", HEADER)
        self.write("text/write/cwriter.cpp", '// W.\n#include "qrv/text/write/cwriter.h"\n#include "text/state/cwriter_state.h"\n')
        self.write("base/platform/cplatform.cpp", '// P.\n#include <unistd.h>\n')
        self.write("start/startup.cpp", '// S.\n#include <iostream>\n#include "qrv/util/cundo.h"\n')
        self.write("tools/qrv/main.cpp", '// M.\n#include "tools/qrv/json/a.h"\n#include <CLI/CLI.hpp>\n')
        self.write("tools/qrv/json/a.h", HEADER + '#include "qrv/text/write/cwriter.h"\n#include "tools/qrv/output/b.h"\n')
        self.passes("check_includes.py", self.root)

    def breaks(self, text, name, content):
        self.write(name, content)
        self.fails(text, "check_includes.py", self.root)

    def test_an_include_in_an_unusual_form_is_reported(self):
        for line in ('# include /**/ "qrv/core/cobj.h"', '/* */ #include "qrv/core/cobj.h"', "#include HEADER"):
            self.breaks("base/csignal.cpp:2: write #include", "base/csignal.cpp", f"// S.\n{line}\n")

    def test_a_file_that_is_neither_header_nor_source_is_reported(self):
        self.breaks("base/csignal.inc: is neither .h nor .cpp", "base/csignal.inc", '#include "qrv/core/cobj.h"\n')

    def test_a_core_source_that_includes_text_is_reported(self):
        self.breaks("core/cobj.cpp:2: \"qrv/text/write/cwriter.h\" lies higher", "core/cobj.cpp", '// C.\n#include "qrv/text/write/cwriter.h"\n')

    def test_a_signal_that_includes_diagnostics_is_reported(self):
        self.breaks("lies higher", "base/csignal.cpp", '// S.\n#include "qrv/diagnostics/cerr.h"\n')

    def test_a_handle_that_includes_an_object_is_reported(self):
        self.breaks("lies higher", "base/cref.cpp", '// R.\n#include "qrv/core/cobj.h"\n')

    def test_a_source_of_text_that_includes_a_utility_is_reported(self):
        self.breaks("lies higher", "text/read/a.cpp", '// T.\n#include "qrv/util/cundo.h"\n')

    def test_a_public_header_that_includes_a_higher_one_is_reported(self):
        self.breaks("include/qrv/diagnostics/ccout.h:3", "include/qrv/diagnostics/ccout.h", HEADER + '#include "qrv/core/cobj.h"\n')

    def test_a_public_header_that_includes_a_private_one_is_reported(self):
        self.breaks("includes the private", "include/qrv/text/read/b.h", HEADER + '#include "text/state/cwriter_state.h"\n')

    def test_iostream_is_allowed_only_in_some_files(self):
        self.breaks("only start/startup.cpp", "text/read/a.cpp", "// T.\n#include <iostream>\n")

    def test_system_headers_are_allowed_only_in_the_platform(self):
        self.breaks("platform/ only", "text/read/a.cpp", "// T.\n#include <sys/stat.h>\n")

    def test_a_missing_header_is_reported(self):
        self.breaks("does not exist", "text/read/a.cpp", '// T.\n#include "qrv/text/none.h"\n')

    def test_a_public_header_that_qrv_h_does_not_include_is_reported(self):
        headers = sorted(str(f.relative_to(self.root / "include")) for f in (self.root / "include").rglob("*.h"))
        self.write("include/qrv/qrv.h", HEADER + "".join(f'#include "{name}"\n' for name in headers))
        self.passes("check_includes.py", self.root)
        self.breaks('"qrv/text/read/new.h" is missing', "include/qrv/text/read/new.h", HEADER)

    def test_a_tool_that_includes_internals_is_reported(self):
        self.breaks("public headers only", "tools/qrv/json/a.cpp", '// T.\n#include "text/state/cwriter_state.h"\n')

    def test_a_folder_of_the_tool_that_includes_a_higher_one_is_reported(self):
        self.breaks(
            'output/a.cpp:2: "tools/qrv/json/a.h" is in a higher folder: json above output',
            "tools/qrv/output/a.cpp",
            '// T.\n#include "tools/qrv/json/a.h"\n',
        )

    def test_a_source_of_the_tool_outside_its_folders_is_reported(self):
        self.breaks("tools/qrv/more/a.h: its folder is not a layer", "tools/qrv/more/a.h", HEADER)
        self.breaks("tools/qrv/a.cpp: its folder is not a layer", "tools/qrv/a.cpp", "// T.\n")


class Folders(unittest.TestCase):
    def test_each_list_of_folders_has_all_folders_of_the_library(self):
        sys.path.insert(0, str(SCRIPTS))
        self.addCleanup(sys.path.remove, str(SCRIPTS))
        library = importlib.import_module("check_includes").FOLDERS
        listed = {
            "check_rules.py": importlib.import_module("check_rules").FOLDERS,
            "check_deliberate.py": importlib.import_module("check_deliberate").FOLDERS,
            "check_errors.py": importlib.import_module("check_errors").LIBRARY,
            "dev": re.findall(r"(\w+)/[|']", re.search("gcovr .*--filter '(.*')", (SCRIPTS.parent / "dev").read_text())[1]),
            "lint.sh": re.search(r"'\^\((.*)\)/'", (SCRIPTS / "lint.sh").read_text())[1].split("|"),
        }
        for name, folders in listed.items():
            with self.subTest(name):
                self.assertEqual(set(library) - set(folders), set())


class Edges(Tree):
    def setUp(self):
        super().setUp()
        self.write("tests/text/a_test.cpp", "TEST(ReaderEdge, one) {}\nTEST_F(Reader, plain) {}\n")
        self.write("tests/text/reader.edges", "# cases\nReaderEdge.one\tthe first case\nReader.plain\tthe second\n")
        self.write("tests/process/exit.cpp", "int main() {}\n")

    def test_cases_are_counted_by_subject(self):
        self.assertEqual(self.passes("check_edges.py", self.root), "    2 text/reader\n    2 edge cases\n")

    def test_a_listed_test_that_does_not_exist_is_reported(self):
        self.write("tests/text/b.edges", "ReaderEdge.two\tanother\n")
        self.fails("no test ReaderEdge.two", "check_edges.py", self.root)

    def test_an_edge_test_that_is_not_listed_is_reported(self):
        self.write("tests/text/b_test.cpp", "TEST_F(WriterEdge, one) {}\n")
        self.fails("WriterEdge.one is in no list", "check_edges.py", self.root)

    def test_a_line_without_words_is_reported(self):
        self.write("tests/text/b.edges", "Reader.plain\t \n")
        self.fails("not of the form", "check_edges.py", self.root)

    def test_a_line_without_tab_is_reported(self):
        self.write("tests/text/b.edges", "Reader.plain words\n")
        self.fails("not of the form", "check_edges.py", self.root)

    def test_a_test_listed_twice_is_reported(self):
        self.write("tests/text/b.edges", "Reader.plain\tagain\n")
        self.fails("is listed already", "check_edges.py", self.root)

    def test_a_missing_process_test_is_reported(self):
        self.write("tests/text/b.edges", "process/exit\tends clean\n")
        self.passes("check_edges.py", self.root)
        self.write("tests/text/b.edges", "process/start\tbegins clean\n")
        self.fails("there is no tests/process/start.cpp", "check_edges.py", self.root)


class Rules(Tree):
    def setUp(self):
        super().setUp()
        self.write("include/qrv/qrvdefs.h", HEADER)
        self.write("docs/index.md", "# D\n**One thread at a time** may use it.\n")
        self.write("include/qrv/a.h", "#pragma once\n// A.\n")
        self.write("core/a.cpp", "// What it is.\nint a;\n")
        self.passes("check_rules.py", self.root)

    def breaks(self, text, name, content):
        self.write(name, content)
        self.fails(text, "check_rules.py", self.root)

    def test_a_source_without_a_comment_is_reported(self):
        self.breaks("core/b.cpp:1: opens without", "core/b.cpp", "int b;\n")

    def test_a_source_that_does_not_begin_with_its_own_header_is_reported(self):
        self.write("core/b.cpp", '#include "qrv/core/b.h"\nint b;\n')
        self.write("tests/core/b_test.cpp", '#include "qrv/core/b.h"\nint b;\n')
        self.passes("check_rules.py", self.root)
        self.breaks("core/c.cpp:1: opens without", "core/c.cpp", '#include "qrv/core/b.h"\nint b;\n')

    def test_a_header_without_pragma_once_is_reported(self):
        self.breaks("begins with #pragma once", "core/b.h", "// B.\n")

    def test_a_header_that_does_not_mention_threads_is_reported(self):
        self.breaks("qrvdefs.h: does not say: one thread", "include/qrv/qrvdefs.h", "#pragma once\n// B.\n")

    def test_a_page_that_does_not_mention_threads_is_reported(self):
        self.breaks("index.md: does not say: one thread", "docs/index.md", "# D\n")

    def test_a_missing_page_is_reported(self):
        (self.root / "docs/index.md").unlink()
        self.fails("index.md: does not say: one thread", "check_rules.py", self.root)

    def test_a_long_source_is_reported(self):
        self.breaks("651 lines", "core/b.cpp", "// B.\n" * 651)

    def test_all_folders_are_looked_at(self):
        for folder in ("edit", "value", "examples/objects"):
            self.breaks(f"{folder}/b.cpp:1: opens without", f"{folder}/b.cpp", "int b;\n")

    def test_each_way_to_silence_a_check_is_reported(self):
        for silencer in ("NO" + "LINT", "GTEST_" + "SKIP()", "DIS" + "ABLED_a", "no_" + "sanitize", "TO" + "DO: later",
                         "#pragma GCC diag" + "nostic ignored \"-Wall\"", "-Wno" + "-shadow"):
            with self.subTest(silencer):
                self.breaks("is not used here", "tests/b_test.cpp", f"// B.\n// {silencer}\n" if "#" not in silencer else f"// B.\n{silencer}\n")


class Errors(Tree):
    def setUp(self):
        super().setUp()
        self.write("diagnostics/cerr_codes.h", HEADER + "#define QRV_ERRORS(X) \\\n"
                   '    X(taken, 0x00000001, none, "Name taken: ") \\\n'
                   '    X(const, 0x41400000, object, "Object is const") \\\n'
                   '    X(cycle, 0x40020000, \\\n        attribute, " In a \\"cycle\\"")\n')
        self.page = ("# Errors\n\n| Code | Text | Kind |\n|---|---|---|\n| 0x00000001 | ``Name taken: `` | `taken` |\n"
                     "| 0x41400000 | ``Attr value, type '...': Object is const`` | `const` |\n"
                     "| 0x40020000 | ``Setattr in object type '...', key '...':  In a \"cycle\"`` | `cycle` |\n")
        self.write("docs/errors.md", self.page)
        self.kinds = "enum class ErrorKind : int {\n    other, // a program's\n    // The registry\n    taken,\n    const,\n    cycle\n};\n"
        self.write("include/qrv/diagnostics/cerrkind.h", HEADER + self.kinds)
        self.write("include/qrv/core/cobj.h", HEADER + "// Throws cErr(1). The code 0x41400000, or\n"
                   "//   0x40020000 \"Setattr in object type '...'\" ...\n"
                   "int const id = 0x48000000; // not in a comment\n")
        self.write("core/cobj.cpp", "// O. 0x40000009 in a comment.\nint f() { return err_const.code; }\n"
                   'char const *text = "0x40000009";\nint const masks[] = {0x90000000, 0x3FFFFFFF};\n')
        self.write("tools/qrv/main.cpp", "// T.\nint const is_const = 0x41400000u;\n")
        self.passes("check_errors.py", self.root)

    def breaks(self, text, name, content):
        self.write(name, content)
        self.fails(text, "check_errors.py", self.root)

    def test_an_error_missing_on_the_page_is_reported(self):
        self.breaks("docs/errors.md: lacks 0x00000001 `Name taken: `", "docs/errors.md",
                    self.page.replace("| 0x00000001 | ``Name taken: `` | `taken` |\n", ""))

    def test_an_error_only_on_the_page_is_reported(self):
        self.breaks("0x00000002 `Name taken: ` of kind taken is not in", "docs/errors.md", self.page + "| 0x00000002 | ``Name taken: `` | `taken` |\n")

    def test_an_error_with_another_beginning_on_the_page_is_reported(self):
        self.breaks("lacks 0x41400000", "docs/errors.md", self.page.replace("Object is", "Object was"))

    def test_a_repeated_row_is_reported(self):
        self.breaks("is there 2 times", "docs/errors.md", self.page + "| 0x00000001 | ``Name taken: `` | `taken` |\n")

    def test_an_error_of_another_kind_on_the_page_is_reported(self):
        self.breaks("lacks 0x00000001 `Name taken: ` of kind taken", "docs/errors.md", self.page.replace("`taken`", "`cycle`"))

    def test_kinds_that_differ_from_the_list_are_reported(self):
        name = "include/qrv/diagnostics/cerrkind.h"
        self.breaks("cerrkind.h: lacks taken", name, HEADER + self.kinds.replace("    taken,\n", ""))
        self.breaks("cerrkind.h: new is not in", name, HEADER + self.kinds.replace("cycle", "cycle, new"))
        self.breaks("cerrkind.h: the order is not", name, HEADER + self.kinds.replace("taken,\n    const", "const,\n    taken"))
        self.breaks("cerrkind.h: lacks other", name, HEADER)

    def test_a_comment_with_an_unknown_code_is_reported(self):
        self.breaks("cref.h:3: 0x41800000 is not in", "include/qrv/base/cref.h", HEADER + "// Code 0x41800000.\n")
        self.breaks("cref.h:3: cErr(2) is not in", "include/qrv/base/cref.h", HEADER + "// Throws cErr(2).\n")

    def test_a_comment_with_another_text_is_reported(self):
        self.breaks('begins with "Object is const"', "include/qrv/base/cref.h", HEADER + '// 0x41400000 "Object is const"\n')

    def test_an_error_code_in_a_source_of_the_library_is_reported(self):
        for line in ("err.set_code(0x41400000);", "eros(0x1400000, obj);", "throw cErr(1, text);",
                     "constexpr auto code = 0x40000001u;"):
            self.breaks("cset.cpp:2: ", "containers/cset.cpp", f"// S.\n{line}\n")

    def test_all_folders_of_the_library_are_looked_at(self):
        for folder in ("edit", "value"):
            self.breaks(f"{folder}/a.cpp:2: ", f"{folder}/a.cpp", "// A.\nthrow cErr(1, text);\n")

    def test_an_error_message_in_a_source_of_the_library_is_reported(self):
        self.breaks('"Name taken: x" is a text of', "containers/cset.cpp", '// S.\nfail("Name taken: x");\n')

    def test_an_unlisted_error_code_in_a_tool_is_reported(self):
        self.breaks("main.cpp:2: 0x41800000 is not in", "tools/qrv/main.cpp", "// T.\nint const code = 0x41800000;\n")

    def test_an_empty_list_is_reported(self):
        self.breaks("no error was found", "diagnostics/cerr_codes.h", HEADER)


class Deliberate(Tree):
    def setUp(self):
        super().setUp()
        self.write("tests/core/a_test.cpp", "TEST(A, one) {}\nTEST_F(B, two) {}\n")
        self.write("tests/process/exit.cpp", "int main() {}\n")
        self.write("core/a.cpp", "// DELIBERATE: odd.   Pinned: one\nint a;\n")
        self.passes("check_deliberate.py", self.root)

    def breaks(self, text, content, name="core/b.cpp"):
        self.write(name, content)
        self.fails(text, "check_deliberate.py", self.root)

    def test_names_may_be_on_the_next_lines(self):
        self.write("tools/qrv/b.h", "int b; // odd. DELIBERATE: it is. Pinned:\n       // one, two, process/exit\nint c;\n")
        self.passes("check_deliberate.py", self.root)

    def test_a_mark_that_names_no_test_is_reported(self):
        self.breaks("core/b.cpp:2: error: no test is named", "// B.\n// DELIBERATE: odd.\n\n// Pinned: one\n")

    def test_a_test_of_the_next_mark_does_not_count(self):
        self.breaks("core/b.cpp:1: error: no test is named", "// DELIBERATE: odd.\n// DELIBERATE: even. Pinned: one\n")

    def test_a_test_that_does_not_exist_is_reported(self):
        self.breaks("core/b.cpp:1: error: no test 'three' in tests/", "// DELIBERATE: odd. Pinned: one,\n// three\n")

    def test_public_headers_and_tools_are_checked(self):
        for name in ("include/qrv/core/b.h", "tools/watchdog/b.cpp"):
            self.breaks(f"{name}:1: error: no test 'three'", "// DELIBERATE: odd. Pinned: three\n", name)


class Paths(Tree):
    def setUp(self):
        super().setUp()
        self.write("core/cobj.cpp", "int a;\n")
        self.write("core/data/x.txt", "x\n")
        self.write("include/qrv/core/cobj.h", "int a;\n")
        self.write("README.md", "`cobj.cpp` core/cobj.cpp, qrv/core/cobj.h, core/{cobj,c*}.cpp. (core/data/) core/<name>.cpp\n")
        self.passes("check_paths.py", self.root)

    def breaks(self, word, name, content, line=1):
        self.write(name, content)
        self.fails(f"{name}:{line}: error: '{word}' does not exist in the sources\n", "check_paths.py", self.root)

    def test_each_form_of_a_name_in_a_page_is_checked(self):
        for word in ("core/cref.cpp", "qrv/core/cref.h", "core/d*.cpp", "core/{cobj,cref}.cpp", "core/none/"):
            with self.subTest(word):
                self.breaks(word, "docs/a.md", f"# A\n\nSee {word} there.\n", 3)

    def test_a_missing_file_in_backquotes_is_reported(self):
        self.breaks("cref.h", "core/README.md", "Suspect `cref.h` first.\n")
        self.breaks("data/none.txt", "core/README.md", "Suspect `data/none.txt` first.\n")

    def test_a_removed_folder_is_reported(self):
        self.breaks("former/cobj.cpp", "util/b.cpp", "int b; // see former/cobj.cpp\n")
        self.breaks("former/", "docs/a.md", "| `former/` | objects |\n")

    def test_a_name_may_be_relative_to_its_file(self):
        self.write("data/y.txt", "y\n")
        self.write("core/b.cpp", "int b; // as data/x.txt has it\n")
        self.passes("check_paths.py", self.root)
        self.breaks("data/x.txt", "util/b.cpp", "int b; // as data/x.txt has it\n")

    def test_comments_of_each_kind_of_file_are_checked(self):
        for name, mark in (("core/b.h", "//"), ("scripts/b.py", "#"), ("scripts/b.sh", "#"), ("core/CMakeLists.txt", "#")):
            with self.subTest(name):
                self.breaks("core/none.cpp", name, f"x = 1\n{mark} see core/none.cpp\n", 2)
                (self.root / name).unlink()
        self.breaks("core/none.cpp", "scripts/b.py", '"""B.\nSee core/none.cpp.\n"""\n', 2)

    def test_a_script_without_a_suffix_is_checked(self):
        self.breaks("core/none.cpp", "dev", "#!/bin/bash\n# see core/none.cpp\n", 2)

    def test_other_names_are_ignored(self):
        self.write("docs/a.md", "and/or build/x https://a.org/core/none.cpp /usr/core/none $HOME/core/none\n"
                                "```sh\ncat core/none.cpp\n```\n")
        self.write("core/b.cpp", 'char const *b = "core/none.cpp";\n')
        self.passes("check_paths.py", self.root)


class Headers(Tree):
    def test_a_header_that_needs_another_is_reported(self):
        self.write("include/qrv/a.h", HEADER + "#include <string>\ninline std::string a() { return {}; }\n")
        self.passes("check_headers.sh", self.root)
        self.write("include/qrv/b.h", HEADER + "inline std::string b() { return {}; }\n")
        result = self.run_script("check_headers.sh", self.root)
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("qrv/b.h does not compile alone with g++", result.stdout)
        self.assertIn("qrv/b.h does not compile alone with clang++", result.stdout)
        self.assertNotIn("qrv/a.h does not", result.stdout)


class Symbols(Tree):
    def compile(self, output, text, *flags):
        file = self.write("a.cpp", text)
        (self.root / output).parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(["g++", "-std=c++20", "-fPIC", *flags, str(file), "-o", str(self.root / output)], check=True)
        return self.root / output

    def test_an_initialiser_outside_startup_is_reported(self):
        dynamic = "int f(); int x = f();"
        startup = self.compile("start/startup.cpp.o", dynamic, "-c")
        plain = self.compile("core/plain.cpp.o", "constinit int x = 1;", "-c")
        other = self.compile("core/other.cpp.o", dynamic, "-c")
        self.passes("check_initialisers.sh", startup, plain)
        self.fails("other.cpp.o has a dynamic initialiser", "check_initialisers.sh", startup, plain, other)
        self.fails("is this check still looking", "check_initialisers.sh", plain)

    def objects(self, core):
        low = self.compile("qrv_objects.dir/core/low.cpp.o", core, "-c")
        high = self.compile("qrv_objects.dir/util/high.cpp.o", "int high() { return 1; } int value; "
                            "inline int weak() { return 2; } int (*used)() = weak;", "-c")
        return low, high

    def test_a_reference_to_a_higher_layer_is_reported(self):
        listed = self.write("upward.txt", "# none\n")
        check = ["check_symbols.py", "--list", listed]
        self.passes(*check, *self.objects("inline int weak() { return 2; } int (*used_here)() = weak;"))
        self.fails("core/low.cpp: uses 'value' of util/high.cpp", *check, *self.objects("extern int value; int f() { return value; }"))
        objects = self.objects("int high(); int f() { return high(); }")
        self.fails("core/low.cpp: uses 'high()' of util/high.cpp", *check, *objects)
        self.write("upward.txt", "core/low.cpp\thigh()\ta reason\n")
        self.passes(*check, *objects)
        self.fails("upward.txt:1: core/low.cpp no longer uses 'high()'", *check, *self.objects("int f();"))

    def test_a_too_long_or_invalid_list_of_upward_references_is_reported(self):
        names = [f"up{i}()" for i in range(13)]
        low = self.compile("qrv_objects.dir/core/low.cpp.o", "".join(f"int {n}; int f{n} {{ return {n}; }} " for n in names), "-c")
        high = self.compile("qrv_objects.dir/util/high.cpp.o", "".join(f"int {n} {{ return 1; }} " for n in names), "-c")
        listed = self.write("upward.txt", "".join(f"core/low.cpp\t{n}\ta reason\n" for n in names))
        self.fails("13 pairs, more than 12", "check_symbols.py", "--list", listed, low, high)
        self.write("upward.txt", "core/low.cpp\tup0()\n")
        self.fails("upward.txt:1: not of the form", "check_symbols.py", "--list", listed, low, high)

    def test_an_object_outside_the_layers_is_reported(self):
        other = self.compile("qrv_objects.dir/other/a.cpp.o", "int f();", "-c")
        self.fails("other/a.cpp: its folder is not a layer", "check_symbols.py", other)

    def test_an_added_or_removed_symbol_is_reported(self):
        library = self.compile("lib.so", "int a() { return 1; } inline int b() { return 2; } int (*c)() = b;", "-shared")
        self.passes("exports.sh", "--write", library, "list.txt")
        self.assertEqual((self.root / "list.txt").read_text(), "a()\nc\n")
        self.passes("exports.sh", library, "list.txt")
        self.write("list.txt", "a()\nc\nd()\n")
        self.fails("< d()", "exports.sh", library, "list.txt")
        self.write("list.txt", "c\n")
        self.fails("> a()", "exports.sh", library, "list.txt")
        self.fails("is missing", "exports.sh", library, "none.txt")
        objects = self.root / "weak.a" # an archive without objects, so no symbol is strong in it
        subprocess.run(["ar", "rc", str(objects)], check=True)
        self.fails("exports nothing", "exports.sh", "--objects", objects, library, "list.txt")


class RunPaths(Tree):
    def link(self, *paths):
        source = self.write("a.c", "int main(void) { return 0; }\n")
        options = [f"-Wl,-rpath,{path}" for path in paths]
        subprocess.run(["cc", str(source), "-o", str(self.root / "built/a"), *options], check=True)

    def setUp(self):
        super().setUp()
        self.own = self.root / "own"
        for folder in (self.own, self.root / "built"):
            folder.mkdir()
            folder.chmod(0o755)

    def test_paths_that_only_the_owner_can_write_to_are_accepted(self):
        self.link("$ORIGIN", "$ORIGIN/../lib", self.own)
        self.passes("check_run_paths.py", "built")

    def test_a_program_without_a_run_path_is_accepted(self):
        self.link()
        self.passes("check_run_paths.py", "built")

    def test_an_empty_element_is_reported(self):
        self.link(f"{self.own}:")
        self.fails("element '' is empty\n", "check_run_paths.py", "built")

    def test_a_relative_element_is_reported(self):
        self.link("lib")
        self.fails("element 'lib' is relative\n", "check_run_paths.py", "built")

    def test_an_element_that_others_can_write_to_is_reported(self):
        self.own.chmod(0o777)
        for path in (self.own, f"{self.own}/not/there", "$ORIGIN/../own"):
            with self.subTest(path):
                self.link(path)
                self.fails(f"element '{path}' is writable by others\n", "check_run_paths.py", "built")

    def test_the_options_of_a_build_file_are_checked(self):
        line = '  LINK_LIBRARIES = -Wl,-rpath,"\\$$ORIGIN/..{}"  libqrv.so\n'
        self.write("built/build.ninja", line.format(""))
        self.passes("check_run_paths.py", "built")
        self.write("built/build.ninja", line.format(":"))
        self.fails("element '' is empty\n", "check_run_paths.py", "built")

    def test_nothing_to_check_is_an_error(self):
        self.fails("nothing to check below built\n", "check_run_paths.py", "built")


class Page(Tree):
    def setUp(self):
        super().setUp()
        self.write("examples/a.attr", "{ }\n")
        self.tool = self.write("tool", "#!/bin/sh\necho \"$@\"; exit 3\n")
        self.tool.chmod(0o755)

    def test_outputs_as_shown_are_accepted(self):
        self.write("README.md", "# R\n```console\n$ ./dev run a\na\n$ echo $?\n3\n$ ls examples\na.attr\n```\n```sh\nnot run\n```\n")
        self.assertIn("3 commands of README.md, 0 print", self.passes("check_page.py", "README.md", "tool"))

    def test_another_output_is_reported(self):
        self.write("README.md", "```console\n$ ./dev run a\nb\n```\n")
        self.fails("-b\n+a\n", "check_page.py", "README.md", "tool")

    def test_programs_beside_the_tool_are_found(self):
        for name in ("other", "qrv-watchdog"):
            shutil.copy(self.tool, self.root / name)
        self.write("README.md", "```console\n$ ./dev example other a\na\n$ build/dev/bin/other b\nb\n"
                                "$ ./dev watchdog c\nc\n```\n")
        self.passes("check_page.py", "README.md", "tool")

    def test_a_program_that_no_command_builds_is_reported(self):
        shutil.copy(self.tool, self.root / "other")
        self.write("README.md", "```console\n$ build/dev/bin/other b\nb\n$ ./dev example other a\na\n```\n")
        self.fails("no command before has built it: other\n", "check_page.py", "README.md", "tool")

    def test_a_leftover_file_is_reported(self):
        self.write("README.md", "```console\n$ echo a > build/a.attr; ./dev run b\nb\n```\n")
        self.passes("check_page.py", "README.md", "tool")
        self.write("README.md", "```console\n$ echo a > a.attr; ./dev run b\nb\n```\n")
        self.fails("left behind: a.attr\n", "check_page.py", "README.md", "tool")

    def test_a_program_that_is_not_an_example_is_reported(self):
        self.write("examples/a.cpp", "// A.\nint a;\nint b;\n")
        self.write("README.md", "```console\n$ ./dev run a\na\n```\n```cpp\nint a;\n```\n")
        self.passes("check_page.py", "README.md", "tool")
        self.write("README.md", "```console\n$ ./dev run a\na\n```\n```cpp\nint c;\n```\n")
        self.fails("in no program of examples/: int c;", "check_page.py", "README.md", "tool")

    def test_a_part_of_a_function_is_found_with_less_indent(self):
        self.write("examples/a.cpp", "// A.\nvoid a() {\n    int b;\n\n    int c;\n}\n")
        self.write("README.md", "```console\n$ ./dev run a\na\n```\n```cpp\nint b;\n\nint c;\n```\n")
        self.passes("check_page.py", "README.md", "tool")
        self.write("README.md", "```console\n$ ./dev run a\na\n```\n```cpp\nint b;\nint c;\n```\n")
        self.fails("in no program of examples/: int b;", "check_page.py", "README.md", "tool")

    def test_a_page_of_another_folder_can_be_checked(self):
        self.write("docs/p.md", "```console\n$ ls examples\na.attr\n```\n")
        self.assertIn("1 commands of p.md, 0 print", self.passes("check_page.py", "docs/p.md", "tool"))

    def test_a_page_without_commands_is_reported(self):
        self.write("README.md", "# R\n")
        self.fails("shows no command", "check_page.py", "README.md", "tool")


class DoxygenComments(Tree):
    """The comments of a header as the reference manual shows them."""

    def seen(self, text):
        file = self.write("a.h", "#pragma once\n// Of the file. One thread at a time.\n\n" + text)
        result = subprocess.run(
            [sys.executable, SCRIPTS.parent / "docs/doxygen_comments.py", file], stdout=subprocess.PIPE, text=True,
            check=True,
        )
        lines = result.stdout.split("\n")[:-1]
        self.assertEqual(len(lines), len(file.read_text(encoding="utf-8").split("\n")))
        self.assertEqual(lines[:3], ["#pragma once", "/** \\file */ /// Of the file. One thread at a time.",
                                     "/** \\addtogroup objects */ /**@{*/"])
        self.assertTrue(lines[-1].endswith("/**@}*/"), lines[-1])
        return "\n".join(lines[3:]).removesuffix("/**@}*/")

    def test_the_layer_of_values_has_a_group(self):
        file = self.write("qrv/value/a.h", "#pragma once\n// Of the file.\n\nint a;\n")
        result = subprocess.run([sys.executable, SCRIPTS.parent / "docs/doxygen_comments.py", file],
                                stdout=subprocess.PIPE, text=True, check=True)
        self.assertIn("/** \\addtogroup values */ /**@{*/\nint a;\n", result.stdout)

    def test_several_declarations_in_a_paragraph_are_a_group(self):
        self.assertEqual(self.seen("// Both.\nint a();\nint b();\n\nint c();\n"),
                         "/**@{*/ /// Both.\nint a();\nint b();\n/**@}*/\nint c();\n")

    def test_a_class_ends_the_group_before_it_closes(self):
        self.assertEqual(self.seen("// A.\nclass A {\n    // Both.\n    int a;\n    int b;\n};\n"),
                         "/// A.\nclass A {\n    /**@{*/ /// Both.\n    int a;\n    int b;\n/**@}*/};\n")

    def test_a_comment_after_code_continues_on_the_next_line(self):
        self.assertEqual(self.seen("int a; // one\n       // more\nint b;\n"),
                         "int a; ///< one\n       ///< more\nint b;\n")

    def test_text_that_looks_like_a_command_is_escaped(self):
        self.assertEqual(self.seen("// #a <b> \"#c\" `#d`\nint a;\n"), "/// \\#a \\<b\\> \"#c\" `#d`\nint a;\n")

    def test_a_separate_comment_stays_separate(self):
        self.assertEqual(self.seen("// Alone.\n\nint a;\n"), "// Alone.\n\nint a;\n")


class Example(Tree):
    def program(self, script):
        self.write("a", "#!/bin/bash\n" + script).chmod(0o755)

    def test_expected_output_is_accepted(self):
        self.program('echo "$(ls | wc -l) $*"')
        self.write("a.out", "0 x y\n")
        self.assertEqual(self.passes("check_example.py", "a", "a.out", "x", "y"), "")

    def test_another_output_is_reported(self):
        self.program("echo one; echo two")
        self.write("a.out", "one\nthree\n")
        self.fails(" one\n-three\n+two\n", "check_example.py", "a", "a.out")

    def test_a_missing_line_end_is_reported(self):
        self.program("printf one")
        self.write("a.out", "one\n")
        self.fails("no line end here", "check_example.py", "a", "a.out")

    def test_another_line_end_is_reported(self):
        self.program("printf 'one\\r\\n'")
        self.write("a.out", "one\n")
        self.fails("+one\\r", "check_example.py", "a", "a.out")

    def test_missing_expected_output_is_reported(self):
        self.program("echo one")
        self.fails("a.out is missing; a prints:\none\n", "check_example.py", "a", "a.out")

    def test_a_failure_status_is_reported(self):
        self.program("exit 3")
        self.write("a.out", "")
        self.fails("a ended with 3", "check_example.py", "a", "a.out")

    def test_output_on_standard_error_is_reported(self):
        self.program("echo runtime error >&2")
        self.write("a.out", "")
        self.fails("wrote to standard error:\nruntime error\n", "check_example.py", "a", "a.out")


class English(Tree):
    def setUp(self):
        super().setUp()
        self.write("core/a.cpp", "// A counted thing. It reports failures.\nint a;\n")
        self.write("docs/a.md", "# A page\n\nThe caller owns it.\n\n```console\n$ echo a text behind it\n```\n")
        self.write("tests/core/a_test.cpp", "// Tests.\nTEST(A, returns_the_value) {}\n")
        self.passes("check_english.py")

    def test_a_phrase_in_a_comment_is_reported(self):
        self.write("core/b.cpp", "int b; // what was left is told\n")
        self.fails("core/b.cpp:1: 'told': write ", "check_english.py")

    def test_none_is_reported_after_there_too(self):
        self.write("core/b.cpp", "int b; // null if there is none\n")
        self.fails("core/b.cpp:1: 'is none'", "check_english.py")

    def test_a_phrase_that_spans_two_lines_of_a_comment_is_reported(self):
        self.write("core/b.cpp", "// It stands\n// behind the value.\n")
        self.fails("core/b.cpp:1: 'stands behind'", "check_english.py")

    def test_a_phrase_in_a_block_comment_or_a_docstring_is_reported(self):
        self.write("core/b.h", "/* Runs foreign\n   code. */\n")
        self.write("scripts/b.py", '"""Names keys.\n\nKeys that are no strings."""\n')
        self.fails("core/b.h:1: 'foreign code'", "check_english.py")
        self.fails("scripts/b.py:3: 'are no'", "check_english.py")

    def test_strings_that_are_data_are_not_docstrings(self):
        self.write("scripts/b.py", '"""Names."""\nDATA = """\na text\n""".split()\nif DATA is None:\n    pass\n')
        self.passes("check_english.py")

    def test_a_phrase_on_a_page_is_reported_but_not_in_its_commands(self):
        self.write("docs/b.md", "The value is\ngone.\n")
        self.fails("docs/b.md:1: 'is gone'", "check_english.py")

    def test_a_phrase_in_the_name_of_a_test_is_reported(self):
        self.write("tests/core/b_test.cpp", "// Tests.\nTEST(B, a_file_that_is_gone) {}\n")
        self.fails("tests/core/b_test.cpp:2: 'is gone'", "check_english.py")

    def test_a_phrase_in_a_string_is_reported_in_the_library_but_not_in_a_test(self):
        self.write("tests/core/b_test.cpp", '// Tests.\nchar const *b = "whoever";\n')
        self.passes("check_english.py")
        self.write("core/b.cpp", '// A string.\nchar const *b = "whoever";\n')
        self.fails("core/b.cpp:2: 'whoever'", "check_english.py")

    def test_a_phrase_in_the_name_of_a_test_on_its_second_line_is_reported(self):
        self.write("tests/core/b_test.cpp", "// Tests.\nTEST_F(B,\n       a_file_that_is_gone) {}\n")
        self.fails("tests/core/b_test.cpp:3: 'is gone'", "check_english.py")
        self.write("tests/core/b_test.cpp", "// Tests.\nTYPED_TEST(B, a_file_that_is_gone) {}\n")
        self.fails("tests/core/b_test.cpp:2: 'is gone'", "check_english.py")

    def test_a_phrase_in_the_name_of_a_test_of_a_script_is_reported(self):
        self.write("tests/scripts/b_test.py", "class B:\n    def test_a_file_that_is_gone(self):\n        pass\n")
        self.fails("tests/scripts/b_test.py:2: 'is gone'", "check_english.py")

    def test_a_phrase_in_a_message_of_a_test_is_reported(self):
        self.write("tests/core/b_test.cpp", '// Tests.\nEXPECT_EQ(a, "<< ") << a << "it is "\n    "gone" << \'"\';\n')
        self.fails("tests/core/b_test.cpp:2: 'is gone'", "check_english.py")
        self.write("tests/core/b_test.cpp", '// Tests.\nEXPECT_EQ("a << ", b, "is gone", \'"\') << "is";\n')
        self.passes("check_english.py")

    def test_fixed_texts_are_ignored(self):
        self.write("core/b.cpp", '// Strings.\nchar const *b = "whoever asks", *c = "Behind you: 1";\n')
        self.fails("'whoever'", "check_english.py")
        self.write("scripts/fixed_texts.txt", "# Texts.\nwhoever asks\n")
        self.write("diagnostics/cerr_codes.h", '// Texts.\nX(a, 0x1, none, "Behind you: ")\n')
        self.passes("check_english.py")

    def test_words_that_only_look_alike_are_ignored(self):
        self.write("core/b.cpp", "// There is no file; it is no longer open. The value is none_of(x). Textual.\n"
                   "// Null if there is no other. A lock that was left behind is removed. A text file is read.\n")
        self.passes("check_english.py")

    def test_only_files_below_the_given_paths_are_checked(self):
        self.write("core/b.cpp", "// It is gone.\n")
        self.passes("check_english.py", ".", "docs", "tests/core")
        self.fails("core/b.cpp:1: ", "check_english.py", ".", "core")


class Comments(Tree):
    """Each header is a list of declarations; the functions whose names begin with `bad` must be reported, no others."""

    def reports(self, text):
        self.write("include/qrv/core/a.h", "#pragma once\n// A header.\n\n" + text)
        result = self.run_script("check_comments.py", self.root)
        expected = [f"include/qrv/core/a.h:{number}: no comment in the block of bad" for number, line
                    in enumerate(("\n\n\n" + text).split("\n"), 1) if "bad" in line.partition("//")[0]]
        self.assertEqual([line[:len(start)] for line, start in zip(result.stdout.splitlines(), expected)], expected)
        self.assertEqual(len(result.stdout.splitlines()), len(expected), result.stdout)
        self.assertEqual(result.returncode, 1 if expected else 0)

    def test_a_comment_anywhere_in_a_block_applies_to_all_of_it(self):
        self.reports("// Both.\nint *a();\nint *b();\n\nint *c();\nint *d(); // null\n\nint *bad();\n")

    def test_a_free_function_without_a_comment_is_reported(self):
        self.reports("QRV_API void bad(int const &value);\n\nnamespace cat {\n\nbool bad_too();\n\n// C.\nint c();\n}\n")

    def test_only_public_members_are_checked(self):
        self.reports("// A.\nclass QRV_API A {\n  public:\n    void bad();\n\n  protected:\n    void a();\n\n"
                     "  private:\n    void b();\n    struct B {\n        void c();\n    };\n};\n\n"
                     "// B.\nstruct B {\n    int *p;\n\n    void bad();\n};\n\nclass C {\n    void a();\n\n    int b_;\n};\n")

    def test_a_label_ends_a_block(self):
        self.reports("class A {\n    int a_; // the value\n  public:\n    int *bad();\n};\n")

    def test_the_comment_of_a_class_with_one_block_applies_to_its_members(self):
        self.reports("// An order.\nstruct A {\n    bool operator()(int a, int b) const;\n};\n\n"
                     "// Methods.\nnamespace cTomA {\nint *a();\n} // namespace cTomA\n")

    def test_a_comment_in_a_body_does_not_apply_to_the_block(self):
        self.reports("inline int *bad() {\n    // the first\n\n    return first; // null\n}\n")

    def test_an_empty_line_in_a_body_does_not_end_the_block(self):
        self.reports("// Both.\ninline int *a() {\n    int b;\n\n    return b;\n}\nint *b();\n")

    def test_special_members_and_deleted_functions_need_no_comment(self):
        self.reports("// A.\nclass A : public B {\n  public:\n    A();\n    A(A const &other) noexcept;\n    A(A &&other);\n"
                     "    A &operator=(A const &);\n    ~A() override;\n    A *a(int) = delete;\n\n    A *bad(int);\n};\n")

    def test_a_constructor_and_an_assignment_from_other_types_are_reported(self):
        self.write("include/qrv/core/a.h", "// A.\nclass A {\n  public:\n    explicit A(int a);\n\n    A &operator=(B const &);\n};\n")
        self.fails("a.h:4: no comment in the block of A()", "check_comments.py", self.root)
        self.fails("a.h:6: no comment in the block of operator=()", "check_comments.py", self.root)

    def test_overrides_need_no_comment(self):
        self.reports("// A.\nclass A : public B {\n  public:\n    int *a() const override;\n    int *b() final;\n\n    virtual int *bad();\n};\n")

    def test_a_getter_needs_no_comment_unless_it_may_fail_or_return_null(self):
        self.reports("// A.\nclass A {\n  public:\n    int a() const noexcept { return a_; }\n    B const &b() const noexcept;\n\n"
                     "    int bad() const;\n\n    B *bad_pointer() const noexcept;\n\n    objref bad_handle() const noexcept;\n\n"
                     "    cRef<B> const &bad_reference() const noexcept;\n\n    int bad_state() const noexcept(false);\n};\n")

    def test_declarations_that_only_look_like_functions_are_ignored(self):
        self.reports("using cFunction = void (*)(int);\n\nextern int (*callback)(int);\n\nstatic_assert(sizeof(int) == 4);\n\n"
                     "constexpr int size = four(4);\n\n#define QRV_X(a) int *a();\n\nenum class E { a, b };\n\n"
                     "template <class T>\nconcept cX = requires(T t) { t.x(); };\n\nextern template class A<int(int)>;\n\n"
                     "template <class F> A(F, int) -> A<F>;\n\ninline int *A::next() { return nullptr; }\n")

    def test_functions_are_found_in_unusual_declarations(self):
        self.reports("template <class T, class U = std::map<T, int>> requires std::is_same_v<T, U> T *bad(T (*f)(U), U);\n\n"
                     "template <class T> void bad_body(T t) requires requires { t(); } {\n    return;\n}\n\n"
                     "template <class T> requires requires(T &t) { t(); } void bad_constrained(T &t);\n\n"
                     "[[nodiscard]] QRV_API char const *bad_default(char const *text = \"; {\", int n = {});\n\n"
                     "// A.\nclass A {\n  public:\n    A() : a_{1}, b_(2) {}\n\n    B *bad_next() { return b_; }\n\n    int a_{3};\n};\n")

    def test_functions_in_a_namespace_for_details_need_no_comment(self):
        self.reports("namespace qrv::detail {\n\nint *a();\n\n}\n\nnamespace qrv {\n\nint *bad();\n\n}\n")

    def test_private_headers_are_not_checked(self):
        self.write("core/a.h", "int *a();\n")
        self.passes("check_comments.py", self.root)


if __name__ == "__main__":
    unittest.main()
