"""check_api_docs.py reports each question that a comment in the headers of qrv::value leaves open, and no others."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent.parent / "scripts/check_api_docs.py"


def check(header):
    """(exit code, output) for a header with this text."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "header.h"
        file.write_text(header, encoding="utf-8")
        done = subprocess.run([sys.executable, SCRIPT, file], capture_output=True, text=True, check=False)
        return done.returncode, done.stdout.replace(str(file), "header.h") + done.stderr


def in_class(*lines):
    return "\n".join(["class value {", "  public:", *("    " + line for line in lines), "};", ""])


class ApiDocs(unittest.TestCase):
    def assert_open(self, questions, header, line=None):
        code, output = check(header)
        self.assertEqual(code, 1, output)
        self.assertIn(f"does not answer {questions}: ", output)
        self.assertEqual(output.count("\n"), 1, output)
        if line:
            self.assertIn(f"header.h:{line}: ", output)

    def assert_complete(self, header):
        self.assertEqual(check(header), (0, ""))

    def test_each_question_is_asked(self):
        self.assert_open("null", in_class("// Borrowed.", "char const *name() const noexcept;"), 4)
        self.assert_open("failure", in_class("// O(1)", "int size() const;"), 4)
        self.assert_open("cost", in_class("// Never throws.", "int size() const;"), 4)
        self.assert_open("ownership", in_class("// O(n) error: none", "void set(value const &x);"), 4)
        self.assert_open("failure, cost, ownership", in_class("void set(value const &x);"), 3)

    def test_an_answer_may_be_after_the_declaration(self):
        self.assert_complete(in_class("int size() const; // type_error.   O(1)"))
        self.assert_complete(in_class("int size() const; // type_error.", "                  // O(1)"))

    def test_a_comment_applies_to_its_paragraph(self):
        self.assert_complete(in_class("// Never throws.   O(1)", "int a();", "int b();"))
        self.assert_open("failure, cost", in_class("// Never throws.   O(1)", "int a();", "", "int b();"), 6)

    def test_a_section_applies_to_the_rest_of_its_class(self):
        self.assert_complete(in_class("// --- reading. Never throws.   O(1)", "", "int a();", "", "int b();"))
        self.assert_open("failure, cost",
                         in_class("// --- a. Never throws.   O(1)", "int a();", "", "// --- b", "int b();"), 7)
        self.assert_open("failure, cost", in_class("// --- a. Never throws.   O(1)", "int a();") + "int b();\n", 6)

    def test_the_comment_of_a_class_applies_to_all_members(self):
        self.assert_complete("// Never throws.   O(1)\nstruct item {\n    int a();\n\n    int b();\n};\n")

    def test_a_comment_that_refers_to_another_one_answers_all_questions(self):
        self.assert_complete(in_class("// As value::set().", "void set(value const &x);"))
        self.assert_complete(in_class("// The same for a key.", "void set(value const &x);"))

    def test_declarations_of_many_lines_are_read_whole(self):
        self.assert_open("null", in_class("// Borrows.   O(1), never throws", "void first(int a,",
                                          "           char const *b);"), 4)
        self.assert_open("cost", in_class("// Never throws.", "template <class T>",
                                          "requires(sizeof(T) > 1) T get(", "    int at) const", "{ return T(at); }"), 4)

    def test_bodies_of_functions_are_ignored(self):
        self.assert_complete(in_class("// Never throws.   O(1)", "int a() {", "    return {};", "}", "int b();"))

    def test_some_functions_need_no_comment(self):
        self.assertEqual(check(in_class("int a() noexcept;", "value(value const &) = default;", "~value();",
                                        "void b(value const &) = delete;"))[0], 0)
        shown = "int a() noexcept;\n"
        self.assert_complete(shown + "namespace detail {\nvoid set(value const &x);\n}\n")
        self.assert_complete(shown + "class item {\n    void set(value const &x);\n};\n")
        self.assert_complete(shown + "class bad : public error {\n  public:\n    bad(value const &x);\n};\n")
        self.assert_complete(shown + "inline void value::set(value const &x) {\n    a();\n}\n")
        self.assert_complete(shown + "enum class kind { a, b };\n#define SET(x) \\\n    set(x);\n")

    def test_functions_after_other_declarations_need_a_comment(self):
        for before in ("enum class kind {\n    a, // one\n    b,\n};\n", "namespace detail {\nint a();\n}\n",
                       "class item {\n    int a();\n};\n", "struct item {};\n"):
            self.assert_open("failure, cost", before + "int b();\n")

    def test_a_header_without_functions_is_an_error(self):
        self.assertEqual(check("// nothing\n"), (1, "check_api_docs: no functions found\n"))

    def test_the_headers_of_the_value_layer_are_complete(self):
        done = subprocess.run([sys.executable, SCRIPT], capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stdout), (0, ""))


if __name__ == "__main__":
    unittest.main()
