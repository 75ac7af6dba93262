// A change of the tree, and the text that follows from it.

#include "qrv/edit/cedit.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/strings.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

// Text with its tree and source map, as an editor has them.
class Text {
  public:
    explicit Text(std::string text) : text_(std::move(text)), in_(text_) {
        if (cObj::readobj(in_, root_) != 0) root_ = objref();
    }

    cObj &root() { return *root_; }
    std::string apply(std::function<void(cObj &)> const &change) {
        return qrv::edit::apply(text_, map_, root_, [&] { change(*root_); });
    }
    std::string written() const {
        cat::ExactText const exact;
        return cat::as_text(root_);
    }

  private:
    std::string text_;
    std::istringstream in_;
    cat::SourceMap map_;
    objref root_;
};

std::string tree_of(std::string const &text) {
    objref value;
    if (cObj::readobj(text.c_str(), value) != 0) return "unreadable";
    cat::ExactText const exact;
    return cat::as_text(value);
}

class Edit : public QrvTest {
  protected:
    static void SetUpTestSuite() { cat::find_type("intf"); } // made when it is first named

    // The text after a change, which must read as the changed tree.
    static std::string after(std::string const &text, std::function<void(cObj &)> const &change) {
        Text edited(text);
        std::string const result = edited.apply(change);
        EXPECT_EQ(tree_of(result), edited.written()) << result;
        return result;
    }
    static std::string set(std::string const &text, std::string const &statements) {
        return after(
            text, [&](cObj &root) { EXPECT_TRUE(root.setattrp(statements, true)) << statements; });
    }
    static std::string remove(std::string const &text, std::string const &path) {
        return after(text, [&](cObj &root) {
            EXPECT_TRUE(root.setattrp(path + " &=", objref(), false)) << path;
        });
    }
};

std::string const bus = R"(// The bus.

{
    // How it is wired
    kind   = rs485;        // two wires
    baud   = 9600;         // was 4800

    /* timing */
    retry  = { count = 3; wait = 0.250 };   // seconds
    list   = [ 1, 2,   // two
               0x03 ];
}
// the end
)";

using test::with;

TEST_F(Edit, a_change_that_changes_nothing_leaves_every_byte) {
    EXPECT_EQ(set(bus, "baud = 9600"), bus);
    EXPECT_EQ(set(bus, "baud &= 9600"), bus);
    EXPECT_EQ(set(bus, "retry &= {count=3; wait=.25}"), bus);
}

TEST_F(Edit, a_scalar_changes_its_own_bytes) {
    EXPECT_EQ(set(bus, "baud = 19200"), with(bus, "9600;", "19200;"));
    EXPECT_EQ(set(bus, "baud &= 19200"), with(bus, "9600;", "19200;"));
    EXPECT_EQ(set(bus, "kind = can"), with(bus, "rs485", "can"));
    EXPECT_EQ(set(bus, "kind = 'two words'"), with(bus, "rs485", "\"two words\""));
    EXPECT_EQ(set(bus, "retry/wait = .5"), with(bus, "0.250", "0.500"));
    EXPECT_EQ(set(bus, "list/2 = 255"), with(bus, "0x03", "0xff"));
    EXPECT_EQ(set(bus, "kind &= #nil"), with(bus, "rs485", "#nil"));
    EXPECT_EQ(after("5 // five\n", [](cObj &root) { root.assign(cat::of(6)); }), "6 // five\n");
}

TEST_F(Edit, the_outermost_value_may_be_a_scalar) {
    EXPECT_EQ(after("// one\n\"a longer text than fits in place\" // two\n",
                    [](cObj &root) { root.assign(cat::of("another")); }),
              "// one\n\"another\" // two\n");
    EXPECT_EQ(after("0x10;", [](cObj &) {}), "0x10;");
}

TEST_F(Edit, a_scalar_becomes_a_container_and_back) {
    EXPECT_EQ(set(bus, "kind &= {a=1; b=[2]}"), with(bus, "rs485", "{ a = 1; b = [2] }"));
    EXPECT_EQ(set(bus, "list &= 7"), with(bus, "[ 1, 2,   // two\n               0x03 ]", "7"));
}

TEST_F(Edit, a_new_key_is_laid_out_like_the_one_before_it) {
    EXPECT_EQ(set(bus, "parity = even"), with(bus, "0x03 ];\n", "0x03 ];\n    parity = even;\n"));
    EXPECT_EQ(set(bus, "x = 1"), with(bus, "0x03 ];\n", "0x03 ];\n    x      = 1;\n"));
    EXPECT_EQ(set(bus, "retry/max = 9"), with(bus, "0.250 }", "0.250; max = 9 }"));
    EXPECT_EQ(set(bus, "list << 4"), with(bus, "0x03 ]", "0x03, 4 ]"));
    EXPECT_EQ(set("{}", "a = 1"), "{a = 1}");
    EXPECT_EQ(set("{ }", "a = 1; b = 2"), "{a = 1; b = 2}");
    EXPECT_EQ(set("{\n  // nothing\n}\n", "a = 1; b = 2"),
              "{\n  // nothing\n    a = 1;\n    b = 2;\n}\n");
    EXPECT_EQ(set("{a= {x= 1;};}", "a/y = 2"), "{a= {x= 1; y= 2;};}");
    EXPECT_EQ(set("{\n\ta=1;\n}", "b = 2"), "{\n\ta=1;\n\tb=2;\n}");
    EXPECT_EQ(set("{\r\n  a = 1; // one\r\n}\r\n", "b = 2"),
              "{\r\n  a = 1; // one\r\n  b = 2;\r\n}\r\n");
}

TEST_F(Edit, a_new_number_gets_no_sign_zeros_or_suffix_of_another_one) {
    EXPECT_EQ(set("{ a = 12u; }", "b = 3"), "{ a = 12u; b = 3; }");
    EXPECT_EQ(set("{ a = +12; }", "b = 3"), "{ a = +12; b = 3; }");
    EXPECT_EQ(set("{ a = 0042; }", "b = 3"), "{ a = 0042; b = 3; }");
    EXPECT_EQ(set("{ a = +1.50; }", "b = 3."), "{ a = +1.50; b = 3.0; }");
    EXPECT_EQ(set("{ a = [ 007, +2 ] }", "a << 3"), "{ a = [ 007, +2, 3 ] }");
}

TEST_F(Edit, a_new_number_follows_a_style_that_all_others_have) {
    EXPECT_EQ(set("[0x01, 0x0A]", "2 = 31"), "[0x01, 0x0A, 0x1F]");
    EXPECT_EQ(set("[0x01, 10]", "2 = 31"), "[0x01, 10, 31]");
    EXPECT_EQ(set("{ a = 0x1F; }", "b = 10"), "{ a = 0x1F; b = 10; }");
    EXPECT_EQ(set("{ a = 0x00; b = 0x1F; }", "c = 10"), "{ a = 0x00; b = 0x1F; c = 0x0A; }");
    EXPECT_EQ(set("{ a = 2.50000; }", "b = 2.5"), "{ a = 2.50000; b = 2.5; }");
    EXPECT_EQ(set("{ a = 2.50; b = 7.00; }", "c = 3."), "{ a = 2.50; b = 7.00; c = 3.00; }");
    EXPECT_EQ(set("{ a = 1; }", "b = 2.5; c = 0.1f"), "{ a = 1; b = 2.5; c = 0.1f; }");
    EXPECT_EQ(set("{ a = 1; }", "a &= 2.5"), "{ a = 2.5; }");
    EXPECT_EQ(set("{ a = 007; }", "a = 8"), "{ a = 008; }");
}

TEST_F(Edit, a_new_value_on_one_line_has_the_blanks_that_most_others_have) {
    EXPECT_EQ(set("{l=[1,2,3, 4];}", "l << 5"), "{l=[1,2,3, 4,5];}");
    EXPECT_EQ(set("{l=[1,2, 3];}", "l << 5"), "{l=[1,2, 3, 5];}");
    EXPECT_EQ(set("{a=1;b=2;}", "c = 5"), "{a=1;b=2;c=5;}");
    EXPECT_EQ(set("{a=1;}", "c = 5"), "{a=1; c=5;}");
    EXPECT_EQ(set("{ l = [1,  2,  3]; }", "l << 5"), "{ l = [1,  2,  3,  5]; }");
}

TEST_F(Edit, new_sets_in_sets_have_one_blank_before_each) {
    EXPECT_EQ(set("{a=1;}", "b = < < <1>>, <2>, 3, <4>>"), "{a=1; b=< < <1>>, <2>, 3, <4>>;}");
}

TEST_F(Edit, a_new_container_on_one_line_is_padded_like_the_one_next_to_it) {
    EXPECT_EQ(set("[ { a=1 }, { a=2 } ]", "2 = {a=3}"), "[ { a=1 }, { a=2 }, { a = 3 } ]");
    EXPECT_EQ(set("[ {a=1} ]", "1 = {a=3}"), "[ {a=1}, {a = 3} ]");
    EXPECT_EQ(set("{ l = [ 1 ]; }", "m = [2]; n = {}"), "{ l = [ 1 ]; m = [ 2 ]; n = {}; }");
}

TEST_F(Edit, a_new_key_is_hexadecimal_where_all_others_are) {
    EXPECT_EQ(set("{ 0x10 = 1; 0x1F = 0x00; }", "32 = 255"),
              "{ 0x10 = 1; 0x1F = 0x00; 0x20 = 255; }");
    EXPECT_EQ(set("{ 0x10 = 1; 17 = 2; }", "18 = 3"), "{ 0x10 = 1; 17 = 2; 18 = 3; }");
}

TEST_F(Edit, removed_entries_at_the_end_of_a_line_leave_no_blanks) {
    EXPECT_EQ(set("{ n = { a = 1; b = 2; c = 3 }; }", "n &= {a=7}"), "{ n = { a = 7 }; }");
    EXPECT_EQ(set("{ n = [1, 2, 3, 4]; }", "n &= [1]"), "{ n = [1]; }");
}

TEST_F(Edit, a_line_whose_entries_are_all_removed_is_removed) {
    auto const without_a_and_b = [](std::string const &text) {
        return after(text, [](cObj &root) {
            EXPECT_TRUE(root.setattrp("a &=", objref(), false));
            EXPECT_TRUE(root.setattrp("b &=", objref(), false));
        });
    };
    EXPECT_EQ(without_a_and_b("{\n  a = 1; b = 2; // two\n  c = 3;\n}"), "{\n  c = 3;\n}");
    EXPECT_EQ(without_a_and_b("{\n  c = 3;\n  /* one */ a = 1; b = 2\n}"), "{\n  c = 3;\n}");
    EXPECT_EQ(without_a_and_b("{\n  a = 1; b = 2; c = 3;\n}"), "{\n  c = 3;\n}");
    EXPECT_EQ(without_a_and_b("{ // all\r\n\ta = 1; b = 2;\r\n\t// end\r\n}"),
              "{ // all\r\n\t// end\r\n}");
}

TEST_F(Edit, a_new_value_of_a_declared_type_is_split_into_lines_like_its_neighbour) {
    cat::TypeScope const scope;
    std::string const declared = "{\n  A = attlist(n= attspec(type= string));\n";
    EXPECT_EQ(set(declared + "  l = [A(n= a)];\n}", "l << A(n= b)"),
              declared + "  l = [A(n= a), A(n = b)];\n}");
    EXPECT_EQ(set(declared + "  x = A(n= a);\n}", "y = A(n= b)"),
              declared + "  x = A(n= a);\n  y = A(n = b);\n}");
    EXPECT_EQ(set(declared + "  x = A(\n    n= a);\n}", "y = A(n= b)"),
              declared + "  x = A(\n    n= a);\n  y = A(\n    n = b;\n  );\n}");
    EXPECT_EQ(set(declared + "}", "x = A(n= b)"), declared + "  x = A(\n    n = b;\n  );\n}");
}

TEST_F(Edit, new_maps_of_several_levels_have_a_line_for_each_entry) {
    EXPECT_EQ(set("{\n  a = 1;\n}\n", "b/c/d = 2"),
              "{\n  a = 1;\n  b = {\n    c = {\n      d = 2;\n    };\n  };\n}\n");
}

TEST_F(Edit, a_removed_key_loses_its_own_comments) {
    EXPECT_EQ(remove(bus, "baud"), with(bus, "    baud   = 9600;         // was 4800\n", ""));
    EXPECT_EQ(remove(bus, "kind"),
              with(bus, "    // How it is wired\n    kind   = rs485;        // two wires\n", ""));
    EXPECT_EQ(remove(bus, "retry/count"), with(bus, "count = 3; ", ""));
    EXPECT_EQ(remove(bus, "retry/wait"), with(bus, "; wait = 0.250", ""));
    EXPECT_EQ(remove("{ a = 1 }", "a"), "{ }");
    EXPECT_EQ(remove("{a=1}", "a"), "{}");
    EXPECT_EQ(remove("{\n  a = 1;\n}\n", "a"), "{\n}\n");
}

TEST_F(Edit, values_of_a_vector_move_up) {
    EXPECT_EQ(remove("[ 1, 2, 3 ]", "0"), "[ 2, 3 ]");
    EXPECT_EQ(remove("[ 1, 2, 3 ]", "1"), "[ 1, 3 ]");
    EXPECT_EQ(remove("[ 1, 2, 3 ]", "2"), "[ 1, 2 ]");
    EXPECT_EQ(remove("[ 1, 2, 3, ]", "2"), "[ 1, 2, ]");
    EXPECT_EQ(remove("[\n  // one\n  1,\n  // two\n  2, // 2\n]", "0"),
              "[\n  // two\n  2, // 2\n]");
    EXPECT_EQ(set("{l=[1, [2]]}", "l &= [1]"), "{l=[1]}");
    // The delimiter of another line stays.
    EXPECT_EQ(remove("[\n  1, // one\n  2 // two\n]", "1"), "[\n  1, // one\n]");
    EXPECT_EQ(remove("[ 1, 2,\n  3 ]", "2"), "[ 1, 2,\n  ]");
}

// Two delimiters in a row are read, three are not.
TEST_F(Edit, an_empty_item_is_removed_with_the_entry_before_it) {
    EXPECT_EQ(remove("{ a = 1,, b = 2;; c = 3; }", "a"), "{ b = 2;; c = 3; }");
    EXPECT_EQ(remove("{ a = 1,, b = 2;; c = 3; }", "b"), "{ a = 1,, c = 3; }");
    EXPECT_EQ(remove("[1,,2,,]", "1"), "[1,,]");
    EXPECT_EQ(set("{l=[1,,2 ]}", "l/0 &= 3; l << 4"), "{l=[3,,2, 4 ]}");
}

TEST_F(Edit, an_inserted_value_is_written_at_its_position_in_the_tree) {
    auto const insert = [](std::string const &text, int place) {
        return after(text, [&](cObj &root) {
            static_cast<cMapObj &>(root).datamap().vect_insert(place, cat::of(9));
        });
    };
    EXPECT_EQ(insert("[ 1, 2 ]", 0), "[ 9, 1, 2 ]");
    EXPECT_EQ(insert("[ 1, 2 ]", 1), "[ 1, 9, 2 ]");
    EXPECT_EQ(insert("[ 1, 2 ]", 2), "[ 1, 2, 9 ]");
    EXPECT_EQ(insert("[\n  1, // one\n  2\n]", 1), "[\n  1, // one\n  9,\n  2\n]");
    EXPECT_EQ(insert("[\n  1, // one\n  2\n]", 2), "[\n  1, // one\n  2,\n  9\n]");
}

// --- sharing ---

TEST_F(Edit, a_path_follows_its_value) {
    EXPECT_EQ(remove("{ l = [ 1, {a=2} ]; b = #cRef(/l/1); }", "l/0"),
              "{ l = [ {a=2} ]; b = #cRef(/l/0); }");
    EXPECT_EQ(set("{ a = {x=1}; b = #cRef( /a ); c = 1; }", "c = 2"),
              "{ a = {x=1}; b = #cRef( /a ); c = 2; }");
}

TEST_F(Edit, the_text_of_a_removed_value_moves_to_the_first_reference) {
    EXPECT_EQ(
        remove("{\n  a = { x = 1; /* one */ };\n  b = #cRef(/a);\n  c = #cRef(/a/x);\n}\n", "a"),
        "{\n  b = { x = 1; /* one */ };\n  c = #cRef(/b/x);\n}\n");
    EXPECT_EQ(remove("{ a = 5; b = #cRef(/a); c = #cRef(/a); }", "a"), "{ b = 5; c = #cRef(/b); }");
}

TEST_F(Edit, the_text_of_a_replaced_value_moves_to_the_first_reference) {
    EXPECT_EQ(set("{\n  a = { x = 1 };\n  b = #cRef(/a);\n}\n", "a &= 7"),
              "{\n  a = 7;\n  b = { x = 1 };\n}\n");
}

TEST_F(Edit, a_value_at_a_reference_changes_where_it_is_written) {
    EXPECT_EQ(set("{ a = {x=1}; b = #cRef(/a); }", "b/x = 2"), "{ a = {x=2}; b = #cRef(/a); }");
    EXPECT_EQ(set("{ a = {x=1}; b = #cRef(/a); }", "b/y = 2"),
              "{ a = {x=1; y=2}; b = #cRef(/a); }");
    EXPECT_EQ(set("{ a = {x=1}; b = #cRef(/a); }", "b &= 2"), "{ a = {x=1}; b = 2; }");
}

TEST_F(Edit, the_lines_of_a_string_keep_their_indents) {
    EXPECT_EQ(
        remove(
            "{\n  a = {\n    x = 'it\\'s\\\n    b';\n  };\n  c = {\n    d = #cRef(/a);\n  };\n}\n",
            "a"),
        "{\n  c = {\n    d = {\n      x = 'it\\'s\\\n    b';\n    };\n  };\n}\n");
}

// An "=" that is aligned with those of other keys stays aligned.
TEST_F(Edit, a_renamed_key_keeps_the_column) {
    auto const renamed = [](std::string const &text, char const *from, char const *to) {
        return after(text, [&](cObj &root) {
            static_cast<cMapObj &>(root).datamap().rename(cat::of(std::string(from)),
                                                          cat::of(std::string(to)));
        });
    };
    EXPECT_EQ(renamed(bus, "baud", "b"), with(bus, "baud   =", "b      ="));
    EXPECT_EQ(renamed(bus, "retry", "retries"), with(bus, "retry  =", "retries ="));
    EXPECT_EQ(renamed("{\n  aa  = 1;\n  bbb = 2;\n\n  other = 3;\n}", "aa", "c"),
              "{\n  c   = 1;\n  bbb = 2;\n\n  other = 3;\n}");
    EXPECT_EQ(renamed("{ aa  = 1; b = 2; }", "aa", "c"), "{ c  = 1; b = 2; }");
    EXPECT_EQ(renamed("{\n  aa=1;\n  bb=2;\n}", "aa", "c"), "{\n  c=1;\n  bb=2;\n}");
}

TEST_F(Edit, moved_lines_get_the_indent_of_their_new_level) {
    EXPECT_EQ(remove("{\n  a = {\n    // first\n    x = 'a\\\n    b';\n  };\n  c = {\n    d = "
                     "#cRef(/a);\n  };\n}\n",
                     "a"),
              "{\n  c = {\n    d = {\n      // first\n      x = 'a\\\n    b';\n    };\n  };\n}\n");
}

// --- repeated keys ---

TEST_F(Edit, a_repeated_key_is_edited_at_the_entry_that_set_its_value) {
    EXPECT_EQ(set("{ a = 1; a = 2; }", "a = 3"), "{ a = 1; a = 3; }");
    EXPECT_EQ(remove("{ a = 1; b = 0; a = 2; }", "a"), "{ b = 0; }");
    EXPECT_EQ(set("{ a = { }; a = 0x1F; }", "a &= {q=1}"), "{ a = { }; a = { q = 1 }; }");
    EXPECT_EQ(set("{ a = [7]; a = [8, 9]; }", "a &= [1]"), "{ a = [7]; a = [1]; }");
    EXPECT_EQ(set("{ a = {x=1}; b = 0; a = {y=2}; }", "a/x = 3"),
              "{ a = {x=3}; b = 0; a = {y=2}; }");
    EXPECT_EQ(set("{ a = {x=1}; b = 0; a = {y=2}; }", "a/z = 3"),
              "{ a = {x=1}; b = 0; a = {y=2; z=3}; }");
}

// --- maps without keys ---

// The reader numbers maps without keys, so those after a removed one need a key.
TEST_F(Edit, a_map_without_a_key_gets_one_when_its_number_would_change) {
    EXPECT_EQ(remove("{ {a=1}; {b=2}; c= 3; }", "0"), "{ 1= {b=2}; c= 3; }");
    EXPECT_EQ(remove("{ {a=1}; {b=2}; {c=3}; }", "1"), "{ {a=1}; 2 = {c=3}; }");
    EXPECT_EQ(remove("{ {a=1}; {b=2}; }", "1"), "{ {a=1}; }");
    EXPECT_EQ(set("{\n  {a=1};\n  // two\n  {b=2};\n  c= 3;\n}", "0 &= 5"),
              "{\n  0= 5;\n  // two\n  1= {b=2};\n  c= 3;\n}");
    EXPECT_EQ(set("{ {a=1}; {b=2}; }", "1/b = 3"), "{ {a=1}; {b=3}; }");
    EXPECT_EQ(after("{ {a=1}; {b=2}; c= 3; }",
                    [](cObj &root) {
                        static_cast<cMapObj &>(root).datamap().rename(cat::of(0),
                                                                      cat::of(std::string("zero")));
                    }),
              "{ zero= {a=1}; 1= {b=2}; c= 3; }");
}

// --- other containers ---

TEST_F(Edit, values_are_added_to_sets_and_removed) {
    EXPECT_EQ(set("{ s = <a, b>; }", "s << c"), "{ s = <a, b, c>; }");
    EXPECT_EQ(remove("{ s = <a, b, a>; }", "s/0"), "{ s = <b>; }");
}

TEST_F(Edit, a_repeated_value_of_a_set_is_removed_when_the_first_one_changes) {
    EXPECT_EQ(set("{ s = < {}, 5, {} >; b = 1; }", "s/0/x = 1"), "{ s = < {x = 1}, 5 >; b = 1; }");
    EXPECT_EQ(set("{ s = < {}, 5, {} >; b = 1; }", "b = 2"), "{ s = < {}, 5, {} >; b = 2; }");
}

TEST_F(Edit, a_repeated_container_of_a_set_is_changed_at_its_first_place) {
    EXPECT_EQ(set("{ s = < {a=1}, {a=1}, 5 >; }", "s/0/a = 7"), "{ s = < {a=7}, 5 >; }");
    EXPECT_EQ(set("{ s = < a >; s = < a, 5 >; }", "s/0 = b"), "{ s = < b >; s = < 5 >; }");
}

TEST_F(Edit, a_repeated_value_of_a_set_is_replaced_once) {
    EXPECT_EQ(after("< a, b, a >",
                    [](cObj &root) {
                        cAttrHash &values = static_cast<cMapObj &>(root).datamap();
                        values.vect_insert(0, cat::of("p"));
                        values.vect_erase(1);
                    }),
              "< p, b >");
}

TEST_F(Edit, a_literal_in_the_brackets_of_its_type_changes_alone) {
    EXPECT_EQ(set("{ r = double( 1.50 /* r */ ); }", "r = 2.25"),
              "{ r = double( 2.25 /* r */ ); }");
    EXPECT_EQ(set("{ r = int(3); }", "r &= 'text'"), "{ r = text; }");
    EXPECT_EQ(set("{ r = double(1.5); }", "r &= 0.125"), "{ r = double(0.125); }");
}

// --- line comments among entries on one line ---

TEST_F(Edit, a_line_comment_that_moves_keeps_its_line) {
    auto const first_comes_last = [](cObj &root) {
        cAttrHash &list = static_cast<cMapObj &>(root).datamap();
        objref const value = list.first()->valref();
        list.vect_erase(0);
        list.vect_insert(static_cast<int>(list.used()), value);
    };
    EXPECT_EQ(after("[ 1, // one\n  2, 3 ]", first_comes_last), "[\n  2, 3,\n  1 // one\n  ]");
    EXPECT_EQ(after("[1, 2 // two\n]", first_comes_last), "[2, // two\n1\n]");
}

TEST_F(Edit, two_slashes_in_a_string_are_not_a_comment) {
    EXPECT_EQ(set("{ a = 1; }", "b = 'http://x'"), "{ a = 1; b = \"http://x\"; }");
}

TEST_F(Edit, a_comment_between_value_and_delimiter_moves_with_the_entry) {
    EXPECT_EQ(after("{ a = 1; b = 2 /* two */; }",
                    [](cObj &root) {
                        cAttrHash &map = static_cast<cMapObj &>(root).datamap();
                        cAttrNode *const last = map.next(map.first());
                        map.insert(objref(last->key()), last->valref(), map.first());
                    }),
              "{ b = 2 /* two */; a = 1; }");
}

// --- values of declared types ---

std::string const typed = R"({
  P = attlist(n = attspec(type = int; default = 3); l = attspec(type = vector; default = []));
  p = P(n = 4); // four
  q = P();
  r = #cRef(/p/n); // a copy
}
)";

class EditTyped : public Edit {
  protected:
    static std::string tree_in_a_scope(std::string const &text) {
        cat::TypeScope const scope;
        return tree_of(text);
    }
    static std::string set_typed(std::string const &statements) {
        std::string result, wanted;
        {
            cat::TypeScope const scope;
            Text edited(typed);
            result = edited.apply(
                [&](cObj &root) { EXPECT_TRUE(root.setattrp(statements, true)) << statements; });
            wanted = edited.written();
        }
        EXPECT_EQ(tree_in_a_scope(result), wanted) << result;
        return result;
    }
};

TEST_F(EditTyped, an_omitted_attribute_is_written_when_it_is_set) {
    EXPECT_EQ(set_typed("q/n = 5"), with(typed, "P()", "P(n = 5)"));
    EXPECT_EQ(set_typed("p/l << 1"), with(typed, "P(n = 4)", "P(n = 4; l = [1])"));
}

TEST_F(EditTyped, a_choice_changes_between_its_brackets) {
    std::string const text = "{ M = choice({off=0; on=1}); m = M( off /* as shipped */ ); }";
    cat::TypeScope const scope;
    Text edited(text);
    std::string const result =
        edited.apply([](cObj &root) { EXPECT_TRUE(root.setattrp("m = M(on)", true)); });
    EXPECT_EQ(result, with(text, "( off", "( on"));
}

TEST_F(EditTyped, a_reference_that_reads_as_a_copy_becomes_a_value_when_its_target_changes) {
    EXPECT_EQ(set_typed("q/n = 4"), with(typed, "P()", "P(n = 4)"));
    EXPECT_EQ(set_typed("p/n = 5"), with(with(typed, "n = 4", "n = 5"), "#cRef(/p/n)", "4"));
    EXPECT_EQ(set_typed("p &= 7"), with(with(typed, "P(n = 4)", "7"), "#cRef(/p/n)", "4"));
}

// --- formatted numbers ---

TEST_F(Edit, formatted_numbers_keep_their_form) {
    EXPECT_EQ(set("{ port = intf(0x1f); }", "port = 32"), "{ port = intf(0x20); }");
    EXPECT_EQ(set("{ a = intf(0x00A1F3); }", "a = 171"), "{ a = intf(0x0000AB); }");
    EXPECT_EQ(set("{ a = intf(0x0f); }", "a = 0x1234"), "{ a = intf(0x1234); }");
    EXPECT_EQ(set("{ a = intf(b0010); }", "a = 5"), "{ a = intf(b0101); }");
    EXPECT_EQ(set("{ a = intf(b0010); }", "a = 31"), "{ a = intf(b00011111); }");
    EXPECT_EQ(set("{ a = intf(007); }", "a = 8"), "{ a = intf(010); }");
    EXPECT_EQ(set("{ a = intf(12); }", "a = -3"), "{ a = intf(-3); }");
    EXPECT_EQ(set("{ a = intf( 0x0A /* ten */ ); }", "a = 11"), "{ a = intf( 0x0B /* ten */ ); }");
    EXPECT_EQ(set("{ a = intf( /* ) */ 0x0A); }", "a = 0"), "{ a = intf( /* ) */ 0x00); }");
    EXPECT_EQ(set("{ a = intf( /* two */ 2); }", "a &= 7"), "{ a = 7; }");
}

// --- changed() ---

TEST_F(Edit, knows_whether_anything_has_changed) {
    std::string const text = "{ a = 1; b = { c = x; l = [ 2, 3 ]; }; }";
    cat::SourceMap const map;
    std::istringstream in(text);
    objref root;
    ASSERT_EQ(cObj::readobj(in, root), 0);
    qrv::edit::Edit const edit(text, map, root);
    EXPECT_FALSE(edit.changed());
    objref const b = root->getattrp("b"), c = b->getattrp("c");
    c->assign(cat::of(std::string("y"))); // changes the object in place
    EXPECT_TRUE(edit.changed());
    c->assign(cat::of(std::string("x")));
    EXPECT_FALSE(edit.changed());
    EXPECT_TRUE(root->setattrp("b/new = 1", true));
    EXPECT_TRUE(edit.changed());
    EXPECT_TRUE(b->setattr(cat::of(std::string("new")), objref()));
    EXPECT_FALSE(edit.changed());
    EXPECT_TRUE(static_cast<cMapObj &>(*b->getattrp("l")).datamap().vect_insert(0, cat::of(1)));
    EXPECT_TRUE(edit.changed());
}

// --- cost ---

// Quadratic work would take minutes here.
TEST_F(Edit, many_entries_on_one_line_and_many_references_cost_linear_work) {
    std::string line = "{ base = {x=1}; ";
    for (int i = 0; i < 20000; ++i) line += "k" + std::to_string(i) + " = #cRef(/base); ";
    Text edited(line + "}");
    std::string const result = edited.apply([](cObj &root) {
        static_cast<cMapObj &>(root).datamap().rename(cat::of(std::string("base")),
                                                      cat::of(std::string("b")));
    });
    EXPECT_EQ(result.size(), line.size() + 1 - 3 * 20001);
}

} // namespace
