// Messages about invalid paths, and about paths at which nothing can be stored.

#include "tests/tool/tool_run.h"

using tool_test::cRun;

namespace {

class Paths : public tool_test::Tool {
  protected:
    Paths() {
        write("f", "{\n"
                   "  T= attlist(b= attspec(type=int; default=1));\n"
                   "  t= T();\n"
                   "  a= 1;\n"
                   "  v= [1, 2];\n"
                   "}\n");
    }
    // The messages of a command that changes nothing.
    std::string errors(std::vector<std::string> arguments) const {
        cRun const run = this->run(std::move(arguments));
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        return run.err;
    }
    // The same for all commands that accept a path.
    std::string not_a_path(std::string const &path) const {
        std::string const said = errors({"get", "f", path});
        EXPECT_EQ(errors({"where", "f", path}), said);
        EXPECT_EQ(errors({"del", "f", path}), said);
        EXPECT_EQ(errors({"mv", "f", "a", path}), said);
        return said;
    }
    std::string set(std::string const &statement) const { return errors({"set", "f", statement}); }
};

TEST_F(Paths, invalid_paths_are_reported) {
    EXPECT_EQ(not_a_path(""), "f: error: the path is empty; / is the outermost value\n");
    EXPECT_EQ(not_a_path("a/"), "f: error: path 'a/' ends with a /: remove it, or add a key\n");
    EXPECT_EQ(not_a_path("a b"), "f: error: path 'a b' has 'b' after the key 'a'; a key of several "
                                 "words needs quotes\n");
    EXPECT_EQ(not_a_path("v/="), "f: error: path 'v/=' has '=' where a key is expected; a key is a "
                                 "word, a number or a string in quotes\n");
}

TEST_F(Paths, a_slash_means_the_outermost_value) {
    write("g", "// head\n[1]\n");
    EXPECT_EQ(run({"at", "g", "2:1"}), (cRun{0, "path      /\ntype      vector\n", ""}));
    EXPECT_EQ(run({"get", "g", "/"}), (cRun{0, "[1, ]\n", ""}));
    EXPECT_EQ(run({"where", "g", "/"}), (cRun{0, "2:1\n", ""}));
    EXPECT_EQ(errors({"del", "g", "/"}),
              "g: error: path '/' is the outermost value; a key is expected\n");
}

TEST_F(Paths, nothing_can_be_stored_in_a_scalar) {
    std::string const said = "statements:1:1: error: a/b: a is an int, which has no entries\n"
                             "statements:1:1: note: a &= {} makes it a map\n";
    EXPECT_EQ(set("a/b = 1"), said);
    EXPECT_EQ(set("a/b &= 1"), said);
    EXPECT_EQ(set("a/b << 1"), said);
}

TEST_F(Paths, positions_in_a_vector_must_exist) {
    EXPECT_EQ(set("v/5 = 1"), "statements:1:1: error: v/5: v has 2 values, counted from 0\n"
                              "statements:1:1: note: v << VALUE appends one\n");
    EXPECT_EQ(set("v/x/y = 1"),
              "statements:1:1: error: v/x/y: v is a vector, whose values have no keys\n"
              "statements:1:1: note: v << VALUE appends one\n");
}

TEST_F(Paths, requirements_of_a_declared_type_are_reported) {
    EXPECT_EQ(set("t/c = 1"), "statements:1:1: error: t/c: the type T declares no key c\n");
    EXPECT_EQ(set("t/b &= x"),
              "statements:1:1: error: t/b: the type T demands a value of the type int\n");
    EXPECT_EQ(set("t/b = x"),
              "statements:1:7: error: t/b: it is an int and cannot store a string as it is\n"
              "statements:1:7: note: the type T demands a value of the type int\n");
    EXPECT_EQ(set("t/b = 1.5"),
              "statements:1:7: error: t/b: 1.50000 would be stored as 1\n"
              "statements:1:7: note: the type T demands a value of the type int; --convert stores "
              "the changed value\n");
}

TEST_F(Paths, adding_to_an_absent_value_is_refused) {
    EXPECT_EQ(set("c << 1"), "statements:1:1: error: c: nothing is there for <<\n"
                             "statements:1:1: note: create a value first, with = or &=\n");
}

} // namespace
