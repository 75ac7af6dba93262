// `del`, `mv`, `ins`, `where` and `at`: single entries of a file that a person wrote.

#include "tests/support/strings.h"
#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::usage_error;

namespace {

std::string const text = "// head\n"
                         "{\n"
                         "  a = 1; // one\n"
                         "  b = { x = 1; y = 2; }; // map\n"
                         "  l = [ 10, 20, 30 ]; // list\n"
                         "  s = < p, q >; // set\n"
                         "  M = choice({off = 0; on = 1}); // mode\n"
                         "  m = M(on);\n"
                         "  P = attlist(n = attspec(type = int; default = 3));\n"
                         "  p = P(n = 4);\n"
                         "  q = P();\n"
                         "  r = #cRef(/b/y); // ref\n"
                         "}\n";

// The text with one part of it replaced.
std::string with(std::string const &part, std::string const &other, std::string in = text) {
    return test::with(std::move(in), part, other);
}

class EditCommands : public tool_test::Tool {
  protected:
    EditCommands() { write("f", text); }

    // The output of a command that reports no error.
    std::string out(std::vector<std::string> arguments) const {
        cRun const run = this->run(std::move(arguments));
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        return run.out;
    }
    // The errors of a command that writes nothing.
    std::string refused(std::vector<std::string> arguments) const {
        arguments.push_back("-i");
        cRun const run = this->run(std::move(arguments));
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(read("f"), text);
        return run.err;
    }
};

// --- del ---

TEST_F(EditCommands, del_removes_an_entry_with_its_comments) {
    EXPECT_EQ(out({"del", "f", "a"}), with("  a = 1; // one\n", ""));
    EXPECT_EQ(out({"del", "f", "/b/x"}), with(" x = 1;", ""));
}

TEST_F(EditCommands, del_counts_list_positions_from_0) {
    EXPECT_EQ(out({"del", "f", "l/1"}), with("10, 20", "10"));
    EXPECT_EQ(out({"del", "f", "s/0"}), with("p, q", "q"));
}

TEST_F(EditCommands, del_applies_its_paths_in_order) {
    EXPECT_EQ(out({"del", "f", "l/0", "l/0"}), with("10, 20, ", ""));
    EXPECT_EQ(refused({"del", "f", "a", "a"}), "f: error: nothing at path 'a'\n");
}

TEST_F(EditCommands, del_moves_a_value_to_its_first_reference) {
    EXPECT_EQ(out({"del", "f", "b/y"}), with("#cRef(/b/y)", "2", with(" y = 2;", "")));
}

TEST_F(EditCommands, deleting_all_entries_leaves_the_brackets) {
    EXPECT_EQ(out({"del", "f", "a", "b", "l", "s", "m", "p", "q", "r", "P", "M"}),
              "// head\n{\n}\n");
}

TEST_F(EditCommands, del_removes_the_blanks_of_emptied_lines) {
    write("f", "{\n  a = 1;  b = 2; c = 3; // c\n  l = [ 1, // one\n    2 ]; // list\n}\n");
    EXPECT_EQ(out({"del", "f", "b", "c", "l/0", "l/0"}), "{\n  a = 1;\n  l = []; // list\n}\n");
}

TEST_F(EditCommands, del_refuses_a_type_in_use) {
    EXPECT_EQ(refused({"del", "f", "M"}), "f: error: M: this type is still used\n");
    EXPECT_EQ(refused({"del", "f", "p", "P"}), "f: error: P: this type is still used\n");
    EXPECT_EQ(out({"del", "f", "m", "M"}),
              with("  M = choice({off = 0; on = 1}); // mode\n  m = M(on);\n", ""));
}

TEST_F(EditCommands, del_refuses_a_key_of_a_declared_type) {
    EXPECT_EQ(refused({"del", "f", "p/n"}), "f: error: p/n: the type P needs this key\n");
}

TEST_F(EditCommands, del_refuses_wrong_paths) {
    EXPECT_EQ(refused({"del", "f", "zz"}), "f: error: nothing at path 'zz'\n");
    EXPECT_EQ(refused({"del", "f", "a/b"}), "f: error: nothing at path 'a/b'\n");
    EXPECT_EQ(refused({"del", "f", "l/3"}), "f: error: nothing at path 'l/3'\n");
    EXPECT_EQ(refused({"del", "f", "l/-1"}), "f: error: nothing at path 'l/-1'\n");
    EXPECT_EQ(refused({"del", "f", "s/p"}), "f: error: nothing at path 's/p'\n");
    EXPECT_EQ(refused({"del", "f", "b/"}),
              "f: error: path 'b/' ends with a /: remove it, or add a key\n");
    EXPECT_EQ(refused({"del", "f", "/"}),
              "f: error: path '/' is the outermost value; a key is expected\n");
    EXPECT_EQ(
        refused({"del", "f", "a = 5"}),
        "f: error: path 'a = 5' has '=' after the key 'a'; a key of several words needs quotes\n");
}

TEST_F(EditCommands, a_file_without_entries_has_nothing_to_delete) {
    write("scalar", "5\n");
    EXPECT_EQ(run({"del", "scalar", "a"}), (cRun{2, "", "scalar: error: nothing at path 'a'\n"}));
    write("empty", "// nothing\n");
    EXPECT_EQ(run({"del", "empty", "a"}),
              (cRun{2, "", "empty: error: the file contains no value\n"}));
}

// --- mv ---

TEST_F(EditCommands, mv_renames_a_key_in_its_place) {
    EXPECT_EQ(out({"mv", "f", "a", "c"}), with("a = 1", "c = 1"));
    EXPECT_EQ(out({"mv", "f", "b", "c"}), with("/b/y", "/c/y", with("b = {", "c = {")));
}

TEST_F(EditCommands, mv_to_the_same_path_changes_nothing) {
    EXPECT_EQ(out({"mv", "f", "b", "/b"}), text);
    EXPECT_EQ(out({"mv", "f", "l/0", "l/0"}), text);
}

TEST_F(EditCommands, mv_appends_a_value_to_another_map) {
    EXPECT_EQ(out({"mv", "f", "b/x", "x"}),
              with("// ref\n", "// ref\n  x = 1;\n", with(" x = 1;", "")));
    EXPECT_EQ(out({"mv", "f", "l/1", "b/z"}), with("y = 2;", "y = 2; z = 20;", with("20, ", "")));
}

TEST_F(EditCommands, mv_moves_a_line_comment_with_the_end_of_its_line) {
    EXPECT_EQ(out({"mv", "f", "a", "b/n"}),
              with("y = 2; }", "y = 2;\n  n = 1; // one\n  }", with("  a = 1; // one\n", "")));
    EXPECT_EQ(out({"mv", "f", "a", "l/0"}),
              with("[ 10", "[ 1, // one\n  10", with("  a = 1; // one\n", "")));
}

TEST_F(EditCommands, mv_into_a_list_moves_the_comments_around_the_equals_sign) {
    auto const moved = [this](std::string const &file) {
        return run({"mv", "-", "a", "l/0"}, {.input = file}).out;
    };
    EXPECT_EQ(moved("{ a /* key */ = /* value */ 1 /* end */; l = [2]; }"),
              "{ l = [/* key */  /* value */ 1 /* end */, 2]; }");
    EXPECT_EQ(moved("{\n  a = // value\n    1;\n  l = [\n    2,\n  ];\n}"),
              "{\n  l = [\n    // value\n      1,\n    2,\n  ];\n}");
}

TEST_F(EditCommands, mv_moves_the_comments_of_all_occurrences_of_a_repeated_key) {
    auto const moved = [this](std::string const &file) {
        return run({"mv", "-", "m/a", "z"}, {.input = file}).out;
    };
    EXPECT_EQ(moved("{\n  m = { a = 1; /* one */ };\n  m = { a = 2; /* two */ b = 3; };\n}"),
              "{\n  m = { };\n  m = { b = 3; };\n  z = 2; /* one */ /* two */\n}");
    EXPECT_EQ(
        moved("{\n  m = {\n    a = 1; // one\n  };\n  m = {\n    a = 2; /* two\n two */\n  };\n}"),
        "{\n  m = {\n  };\n  m = {\n  };\n  z = 2; // one\n   /* two\n two */\n}");
}

TEST_F(EditCommands, mv_moves_the_comments_of_a_constant) {
    write("f", "{\n  a = #nil; // not yet\n  // flag\n  b = #true;\n  m = {\n  };\n}\n");
    EXPECT_EQ(out({"mv", "f", "a", "c"}),
              "{\n  c = #nil; // not yet\n  // flag\n  b = #true;\n  m = {\n  };\n}\n");
    EXPECT_EQ(out({"mv", "f", "b", "m/b"}),
              "{\n  a = #nil; // not yet\n  m = {\n    // flag\n    b = #true;\n  };\n}\n");
}

TEST_F(EditCommands, mv_changes_list_positions) {
    EXPECT_EQ(out({"mv", "f", "l/0", "l/2"}), with("10, 20, 30", "20, 30, 10"));
    EXPECT_EQ(out({"mv", "f", "l/2", "l/0"}), with("10, 20, 30", "30, 10, 20"));
    EXPECT_EQ(out({"mv", "f", "s/0", "s/1"}), with("p, q", "q, p"));
    EXPECT_EQ(out({"mv", "f", "s/0", "l/3"}), with("30", "30, p", with("p, q", "q")));
}

TEST_F(EditCommands, mv_refuses_values_that_cannot_be_stored) {
    EXPECT_EQ(refused({"mv", "f", "b", "b/z"}), "f: error: b/z: it is inside of what is moved\n");
    EXPECT_EQ(refused({"mv", "f", "a", "b/x"}),
              "f: error: b/x: there is a value already; delete it first\n");
    EXPECT_EQ(refused({"mv", "f", "a", "m/y"}),
              "f: error: m/y: there is no container to move it into\n");
    EXPECT_EQ(refused({"mv", "f", "a", "l/x"}), "f: error: l/x: the last key must be a position\n");
    EXPECT_EQ(refused({"mv", "f", "l/0", "l/3"}),
              "f: error: l/3: the position is not in the list, nor directly after it\n");
    EXPECT_EQ(refused({"mv", "f", "zz", "a"}), "f: error: nothing at path 'zz'\n");
    EXPECT_EQ(refused({"mv", "f", "a", "zz/y"}), "f: error: nothing at path 'zz/y'\n");
}

TEST_F(EditCommands, mv_keeps_the_names_of_declared_types) {
    EXPECT_EQ(refused({"mv", "f", "M", "N"}),
              "f: error: N: a declared type keeps its name, which is its key\n");
    EXPECT_EQ(out({"mv", "f", "M", "b/M"}),
              with("y = 2; }", "y = 2;\n  M = choice({off = 0; on = 1}); // mode\n  }",
                   with("  M = choice({off = 0; on = 1}); // mode\n", "")));
}

// --- ins ---

TEST_F(EditCommands, ins_before_an_entry_inserts_below_its_separating_comment) {
    std::string const sections = "{\n"
                                 "  a = 1;\n"
                                 "\n"
                                 "  // --- timing ---\n"
                                 "\n"
                                 "  b = 2;\n"
                                 "\n"
                                 "  // how often\n"
                                 "  c = 3;\n"
                                 "}\n";
    write("f", sections);
    EXPECT_EQ(out({"ins", "f", "b", "before", "x", "7"}),
              with("  b = 2;\n", "  x = 7;\n  b = 2;\n", sections));
    EXPECT_EQ(out({"ins", "f", "c", "before", "x", "7"}),
              with("  // how often\n", "  x = 7;\n  // how often\n", sections));
    EXPECT_EQ(out({"ins", "f", "a", "after", "x", "7"}),
              with("  a = 1;\n", "  a = 1;\n  x = 7;\n", sections));
    EXPECT_EQ(out({"ins", "f", "b", "after", "x", "7"}),
              with("  b = 2;\n", "  b = 2;\n  x = 7;\n", sections));
}

TEST_F(EditCommands, ins_formats_a_new_entry_like_its_neighbours) {
    EXPECT_EQ(out({"ins", "f", "a", "before", "z", "5"}), with("  a =", "  z = 5;\n  a ="));
    EXPECT_EQ(out({"ins", "f", "a", "after", "z", "\"two words\""}),
              with("// one\n", "// one\n  z = \"two words\";\n"));
    EXPECT_EQ(out({"ins", "f", "b/x", "after", "'a b'", "{c=1}"}),
              with("x = 1;", "x = 1; \"a b\" = {c = 1};"));
}

TEST_F(EditCommands, ins_into_lists_needs_no_key) {
    EXPECT_EQ(out({"ins", "f", "l/0", "before", "5"}), with("10,", "5, 10,"));
    EXPECT_EQ(out({"ins", "f", "l/2", "after", "{a=1}"}), with("30", "30, {a = 1}"));
    EXPECT_EQ(out({"ins", "f", "s/0", "after", "z"}), with("p,", "p, z,"));
    EXPECT_EQ(refused({"ins", "f", "l/0", "after", "k", "5"}),
              "f: error: l/0: values in a vector have no keys: leave KEY out\n");
    EXPECT_EQ(refused({"ins", "f", "s/0", "after", "q"}),
              "f: error: s/0: the set holds q already\n");
}

TEST_F(EditCommands, ins_accepts_values_in_square_brackets) {
    EXPECT_EQ(out({"ins", "f", "l/0", "before", "[]"}), with("10, 20", "[], 10, 20"));
    EXPECT_EQ(out({"ins", "f", "l/0", "after", "[1, 2]"}), with("10, 20", "10, [1, 2], 20"));
    EXPECT_EQ(out({"ins", "f", "b/x", "after", "z", "[[1,2],3]"}),
              with("x = 1;", "x = 1; z = [[1, 2], 3];"));
}

TEST_F(EditCommands, ins_refuses_wrong_positions_and_keys) {
    EXPECT_EQ(refused({"ins", "f", "a", "after", "5"}),
              "f: error: a: the key of the new entry is missing\n");
    EXPECT_EQ(refused({"ins", "f", "a", "after", "b", "1"}),
              "f: error: a: there is a key b already\n");
    EXPECT_EQ(refused({"ins", "f", "p/n", "after", "k", "1"}),
              "f: error: p/n: the type P sets the order of its keys\n");
    EXPECT_EQ(refused({"ins", "f", "zz", "after", "k", "1"}), "f: error: nothing at path 'zz'\n");
    EXPECT_EQ(run({"ins", "f", "a", "beside", "k", "1"}),
              usage_error("ins", "before|after: it must be before or after, not beside"));
}

TEST_F(EditCommands, ins_reports_errors_at_positions_in_the_entry) {
    EXPECT_EQ(refused({"ins", "f", "a", "after", "k", ""}),
              "entry:1:5: error: the value is missing after =\n"
              "entry:1:5: note: an empty string is \"\", an empty map {}, a vector []\n");
    EXPECT_EQ(refused({"ins", "f", "a", "after", "k/l", "1"}),
              "entry: error: KEY must be a single key\n");
    EXPECT_EQ(refused({"ins", "f", "a", "after", "k", "1; j = 2"}),
              "entry: error: one key and one value are needed\n");
}

// --- output of the result ---

TEST_F(EditCommands, the_result_replaces_the_file_only_on_request) {
    EXPECT_EQ(run({"del", "f", "a"}).status, 0);
    EXPECT_EQ(read("f"), text);
    std::string const changed = with("  a = 1; // one\n", "");
    EXPECT_EQ(run({"del", "f", "a", "-o", "g"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("g"), changed);
    EXPECT_EQ(run({"del", "f", "a", "-i", "--backup"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f"), changed);
    EXPECT_EQ(read("f~"), text);
}

TEST_F(EditCommands, standard_input_is_read_but_not_replaced) {
    EXPECT_EQ(run({"mv", "-", "a", "b"}, {.input = "{a=1}"}), (cRun{0, "{b=1}", ""}));
    EXPECT_EQ(run({"mv", "-i", "-", "a", "b"}, {.input = "{a=1}"}),
              (cRun{2, "", "-: error: not written: it is the standard input\n"}));
}

// --- where, at ---

TEST_F(EditCommands, where_prints_line_and_column_of_the_value) {
    EXPECT_EQ(out({"where", "f", "a"}), "3:7\n");
    EXPECT_EQ(out({"where", "f", "l/2"}), "5:17\n");
    EXPECT_EQ(out({"where", "f", "s/1"}), "6:12\n");
    EXPECT_EQ(out({"where", "f", "M"}), "7:7\n");
    EXPECT_EQ(out({"where", "f", "p/n"}), "10:13\n");
    EXPECT_EQ(run({"where", "f", "zz"}), (cRun{1, "", "f: error: nothing at path 'zz'\n"}));
    EXPECT_EQ(run({"where", "f", "q/n"}),
              (cRun{1, "",
                    "f: error: the value at path 'q/n' is a default, which is not written in the "
                    "file\n"}));
}

TEST_F(EditCommands, at_prints_path_and_type_of_the_innermost_entry) {
    EXPECT_EQ(out({"at", "f", "3:3"}), "path      /a\ntype      int\n");
    EXPECT_EQ(out({"at", "f", "4:5"}), "path      /b\ntype      map\n");
    EXPECT_EQ(out({"at", "f", "4:9"}), "path      /b/x\ntype      int\n");
    EXPECT_EQ(out({"at", "f", "6:10"}), "path      /s/0\ntype      string\n");
    EXPECT_EQ(out({"at", "f", "10:11"}), "path      /p/n\ntype      int\n");
    EXPECT_EQ(out({"at", "f", "3:12"}), "path      /\ntype      map\n"); // in a comment
}

TEST_F(EditCommands, at_refuses_positions_outside) {
    EXPECT_EQ(run({"at", "f", "1:1"}),
              (cRun{1, "", "f:1:1: error: no entry is at this position\n"}));
    EXPECT_EQ(run({"at", "f", "99:1"}),
              (cRun{1, "", "f:99:1: error: the file has no such position\n"}));
    EXPECT_EQ(run({"at", "f", "3:7:1"}),
              usage_error("at", "LINE:COLUMN: a position is LINE:COLUMN, both from 1, not 3:7:1"));
}

} // namespace
