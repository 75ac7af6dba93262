// `fmt` and `get` on files that declare types: attribute sets, choices, and their objects.

#include "tests/tool/tool_run.h"

#include <algorithm>

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolFmtDeclared : public tool_test::Tool {
  protected:
    // `fmt` changes any layout to this text, which it leaves as it is.
    void becomes(std::string const &bytes, std::string const &layout) const {
        EXPECT_EQ(fmt(bytes), (cRun{0, layout, ""}));
        EXPECT_EQ(run_on(layout, {"fmt", "--check"}), (cRun{0, "", ""}));
    }
};

std::string const changed = "f: error: the new text would not read as the same value: digits, bits "
                            "or strings would differ\n";
std::string const unreadable =
    "f: error: the new text would not read as the same value: it cannot be read\n";
std::string const refused =
    "f: error: not written: the new text would change when it is read and written again\n";

std::string const all_kinds =
    "{ Mode= choice({a=1; b=2;}); m= Mode(a); n= Mode(); S= choice([x,y]); s= S(1); t= #cRef(/m);\n"
    "R= attlist(m= attspec(type=Mode; flag=#REQUIRED); d= attspec(default= Mode(b)); v= "
    "attspec(default= [1,2]); i= attspec(flag=#IMPLIED));\n"
    "F= attlist(f= attspec(default= 5; flag= #FIXED));\n"
    "q= [\nR(m=Mode(a); d=Mode(a);), R(m= #cRef(/m), i= {x=1})]; T= choice({u= {x=1}; w= R(m= "
    "Mode(a))}); tt= T(w); z= #cRef(/T/w); L= choice(<p; q>); }";

TEST_F(ToolFmtDeclared, one_file_may_contain_all_kinds_of_declarations) {
    becomes(all_kinds, "{\n"
                       "  Mode= choice({a= 1; b= 2; });\n"
                       "  m= Mode(a);\n"
                       "  n= Mode();\n"
                       "  S= choice([x, y, ]);\n"
                       "  s= S(1);\n"
                       "  t= #cRef(/m);\n"
                       "  R= attlist(\n"
                       "      m= attspec(type=Mode; flag=#REQUIRED;);\n"
                       "      d= attspec(default=Mode(b); );\n"
                       "      v= attspec(default=[1, 2, ]; );\n"
                       "      i= attspec(flag=#IMPLIED;);\n"
                       "  );\n"
                       "  F= attlist(\n"
                       "      f= attspec(default=5; flag=#FIXED;);\n"
                       "  );\n"
                       "  q= [\n"
                       "      R(\n"
                       "          m= Mode(a);\n"
                       "          d= Mode(a);\n"
                       "          v= [1, 2, ];\n"
                       "          i= #nil;\n"
                       "      ),\n"
                       "      R(\n"
                       "          m= Mode(a);\n"
                       "          d= Mode(b);\n"
                       "          v= [1, 2, ];\n"
                       "          i= {\n"
                       "              x= 1;\n"
                       "          };\n"
                       "      ),\n"
                       "  ];\n"
                       "  T= choice({\n"
                       "      u= {x= 1; };\n"
                       "      w= R(\n"
                       "          m= Mode(a);\n"
                       "          d= Mode(b);\n"
                       "          v= [1, 2, ];\n"
                       "          i= #nil;\n"
                       "      );\n"
                       "  });\n"
                       "  tt= T(w);\n"
                       "  z= #cRef(/T/w);\n"
                       "  L= choice(<p, q, >);\n"
                       "}\n");
}

TEST_F(ToolFmtDeclared, a_value_may_be_alone) {
    becomes("attlist(x=attspec(type=int))",
            "attlist(\n  x= attspec(type=int; flag=#REQUIRED;);\n)\n");
    becomes("choice({a=1})", "choice({a= 1; })\n");
    becomes("attspec(default=[1;2])", "attspec(default=[1, 2, ]; )\n");
}

TEST_F(ToolFmtDeclared, preserves_comments_even_inside_typed_values) {
    std::string const text = "// shapes\n"
                             "{ // all of them\n"
                             "  P= attlist(\n"
                             "      x= attspec(type=int; flag=#REQUIRED;); // inside\n"
                             "  ); // a point\n"
                             "  p= P(\n"
                             "      x= 3; // wide\n"
                             "  ); // the first\n"
                             "  M= choice({a= 1; /* in */ }); // a mode\n"
                             "  m= M(/* which */ a); // now\n"
                             "}\n";
    EXPECT_EQ(fmt(text), (cRun{0, text, ""}));
}

// The object would move to the position of the earlier value, which is above the declaration.
TEST_F(ToolFmtDeclared, an_object_above_the_declaration_of_its_type_is_refused) {
    EXPECT_EQ(fmt("{ q= 0; P= attlist(x= attspec(type= int)); q= P(x= 1); }"),
              (cRun{2, "", unreadable + refused}));
    EXPECT_EQ(fmt("{ q= 0; M= choice({a= 1}); q= M(a); }"), (cRun{2, "", unreadable + refused}));
}

TEST_F(ToolFmtDeclared, an_object_of_an_older_declaration_is_reported_and_its_file_is_unchanged) {
    std::string const older =
        "{ P= attlist(x= attspec(type= int)); p= P(x= 1); P= attlist(y= attspec(type= int)); }";
    std::string const error = "f: error: Value cannot be written, path : /p [0x40000001]\n";
    EXPECT_EQ(fmt(older),
              (cRun{1, "{\n  P= attlist(\n      y= attspec(type=int; flag=#REQUIRED;);\n  );\n}\n",
                    error}));
    EXPECT_EQ(
        run_on(older, {"fmt", "-i"}),
        (cRun{2, "",
              error +
                  "f:1:6: error: this value would be lost [duplicate-key]\n"
                  "f:1:50: note: its key is repeated here\n"
                  "f: error: not written: data would be lost; --force writes the file anyway\n"}));
    EXPECT_EQ(read("f"), older);
}

TEST_F(ToolFmtDeclared, an_object_without_attributes_is_formatted) {
    becomes("{ E= attlist(); e= E(); }", "{\n  E= attlist(\n  );\n  e= E(\n  );\n}\n");
}

// The writer copies a shared default, and refers to the values in it.
TEST_F(ToolFmtDeclared, lost_sharing_is_reported_as_such) {
    std::string const reported = "f: error: the new text would not read as the same value: shared "
                                 "values would become copies\n";
    std::string const text = "{v= [1]; d= attspec(default= #cRef(/v)); }";
    EXPECT_EQ(fmt(text),
              (cRun{1, "{v= [1, ]; d= attspec(default=[#cRef(/v/0), ]; ); }\n", reported}));
    EXPECT_EQ(run_on(text, {"fmt", "--canonical"}),
              (cRun{1, "{v= [1, ]; d= attspec(default=[#cRef(/v/0), ]); }", reported}));
    EXPECT_EQ(
        run_on(text, {"fmt", "-i"}),
        (cRun{2, "",
              reported +
                  "f: error: not written: data would be lost; --force writes the file anyway\n"}));
}

TEST_F(ToolFmtDeclared, a_type_that_set_stores_gets_a_name) {
    write("f", "{a= 1; }\n");
    EXPECT_EQ(run({"set", "--reformat", "f", "x = attlist(k= attspec(type= int))"}),
              (tool_test::cRun{0,
                               "{\n  a= 1;\n  x= attlist(\n      k= attspec(type=int; "
                               "flag=#REQUIRED;);\n  );\n}\n",
                               ""}));
}

TEST_F(ToolFmtDeclared, a_repeated_declaration_is_written_once) {
    becomes("{ P= attlist(x= attspec(type= int)); P= attlist(y= attspec(type= int)); p= P(y= 1); }",
            "{\n  P= attlist(\n      y= attspec(type=int; flag=#REQUIRED;);\n  );\n  p= P(\n      "
            "y= 1;\n  );\n}\n");
}

TEST_F(ToolFmtDeclared, in_place_writes_a_formatted_file) {
    EXPECT_EQ(run_on(all_kinds, {"fmt", "-i"}), (cRun{0, "", ""}));
    std::string const once = read("f");
    EXPECT_EQ(run({"fmt", "-i", "f"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f"), once);
    EXPECT_EQ(run({"check", "f"}), (cRun{0, "", ""}));
}

TEST_F(ToolFmtDeclared, plain_text_that_changes_a_specification_is_reported) {
    EXPECT_EQ(run_on("{\nP= attlist(x= attspec(default= 5)); }", {"fmt", "--canonical"}),
              (cRun{0, "{\n  P= attlist(\n      x= attspec(default=5);\n  );\n}", ""}));
    EXPECT_EQ(
        run_on("{\nP= attlist(x= attspec(type= int; flag= #IMPLIED)); }", {"fmt", "--canonical"}),
        (cRun{1, "{\n  P= attlist(\n      x= attspec(type=int; );\n  );\n}", changed}));
    EXPECT_EQ(run_on("{ P= attlist(x= attspec(default= 5; flag= #FIXED)); }",
                     {"fmt", "-i", "--force", "--canonical"}),
              (cRun{2, "", changed + refused}));
}

TEST_F(ToolFmtDeclared, a_file_may_have_two_thousand_types_with_an_object_each) {
    std::string text = "{\n";
    for (int i = 0; i < 2000; ++i) {
        std::string const n = std::to_string(i);
        text += "  T" + n + "= attlist(\n      x= attspec(default=" + n + "; );\n  );\n  o" + n +
                "= T" + n + "(\n      x= 1;\n  );\n";
    }
    EXPECT_EQ(run_on(text + "}\n", {"fmt", "--check"}), (cRun{0, "", ""}));
}

// The text is not nested, but the value is a long chain.
TEST_F(ToolFmtDeclared, values_nested_deeper_than_text_can_be_compared) {
    std::string text = "{ m0= {};";
    for (int i = 1; i < 20000; ++i) text += " m" + std::to_string(i) + "= {};";
    for (int i = 1; i < 20000; ++i)
        text += " m" + std::to_string(i - 1) + "= {n= #cRef(/m" + std::to_string(i) + ");};";
    cRun const run = fmt(text + "}");
    EXPECT_EQ(run.err.find("ended too early"), std::string::npos) << run.err.substr(0, 300);
    EXPECT_NE(run.status, 0);
    EXPECT_EQ(run.out.substr(0, 2), run.status == 1 ? "{\n" : "");
}

// --- get ---

class ToolGetDeclared : public tool_test::Tool {
  protected:
    std::string got(std::string const &path) const {
        cRun const run = run_on_path(path);
        EXPECT_EQ(run.status, 0) << path << ": " << run.err;
        return run.out;
    }
    cRun run_on_path(std::string const &path) const {
        write("f", all_kinds);
        return run({"get", "f", path});
    }
};

TEST_F(ToolGetDeclared, get_prints_attributes_of_objects) {
    EXPECT_EQ(got("q/0/m"), "Mode(a)\n");
    EXPECT_EQ(got("q/1/v/1"), "2\n");
    EXPECT_EQ(got("q/0/i"), "#nil\n");
    EXPECT_EQ(run_on_path("q/0/other"), (cRun{1, "", "f: error: nothing at path 'q/0/other'\n"}));
}

TEST_F(ToolGetDeclared, get_prints_declarations_of_a_type) {
    EXPECT_EQ(got("R/m"), "attspec(type=Mode; flag=#REQUIRED;)\n");
    EXPECT_EQ(got("R/v/default"), "[1, 2, ]\n");
    EXPECT_EQ(got("R/v/default/0"), "1\n");
    EXPECT_EQ(got("R/m/flag"), "#REQUIRED\n");
    EXPECT_EQ(got("R/m/type"), "choice({a= 1; b= 2; })\n");
    EXPECT_EQ(got("R/m/default"), "#nil\n");
    EXPECT_EQ(got("F/f/flag"), "#FIXED\n");
    EXPECT_EQ(run_on_path("R/m/colour"), (cRun{1, "", "f: error: nothing at path 'R/m/colour'\n"}));
    EXPECT_EQ(run_on_path("R/none/type"),
              (cRun{1, "", "f: error: nothing at path 'R/none/type'\n"}));
}

TEST_F(ToolGetDeclared, get_prints_choices_and_their_values) {
    EXPECT_EQ(got("m"), "Mode(a)\n");
    EXPECT_EQ(got("m/key"), "a\n");
    EXPECT_EQ(got("m/value"), "1\n");
    EXPECT_EQ(got("m/pos"), "0\n");
    EXPECT_EQ(got("n"), "Mode()\n");
    EXPECT_EQ(got("n/pos"), "-1\n");
    EXPECT_EQ(got("Mode/b"), "2\n");
    EXPECT_EQ(got("Mode/choices"), "{a= 1; b= 2; }\n");
    EXPECT_EQ(got("tt/value/m/key"), "a\n");
    EXPECT_EQ(run_on_path("n/key"), (cRun{1, "", "f: error: nothing at path 'n/key'\n"}));
}

} // namespace
