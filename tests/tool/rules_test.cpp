// `check` on objects of declared types: the violated rule, its position, and the position of its
// declaration.

#include "tests/tool/tool_run.h"

#include <algorithm>

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolRules : public tool_test::Tool {
  protected:
    // For entries after the declarations, which are from line 12 on.
    std::string reported(std::string const &entries) const {
        return check(declarations + entries + "}");
    }

    static inline std::string const declarations =
        "{\n"
        "  Mode= choice({auto= 1; manual= 2;});\n"
        "  Pixel= attlist(\n"
        "      x= attspec(type=int; flag=#REQUIRED);\n"
        "      y= attspec(type=int; flag=#REQUIRED);\n"
        "      color= attspec(default= red);\n"
        "      mode= attspec(type=Mode; flag=#IMPLIED);\n"
        "      size= attspec(type=int; default= 5);\n"
        "  );\n"
        "  Fixed= attlist(f= attspec(default=5; flag=#FIXED); v= attspec(type=int));\n"
        "  Outer= attlist(p= attspec(type= Pixel; flag= #REQUIRED));\n";
};

std::string const wrong_code = " [0x40000000]\n", failed_code = " [0x40000001]\n";

TEST_F(ToolRules, valid_objects_are_not_reported) {
    EXPECT_EQ(reported("a= Pixel(x= 1; y= 2); b= [Pixel(x= 1, y= 2, mode= Mode(auto))];"
                       "c= Outer(p= #cRef(/a)); d= Mode();"),
              "");
}

TEST_F(ToolRules, a_missing_key_is_reported_at_the_object) {
    EXPECT_EQ(
        reported("  a= Pixel(\n    x= 1);"),
        "f:12:6: error: required key 'y' of type Pixel is missing, path /a/y, declared at 5:7" +
            wrong_code);
    EXPECT_EQ(
        reported("  a= Pixel();"),
        "f:12:6: error: required key 'x' of type Pixel is missing, path /a/x, declared at 4:7" +
            wrong_code +
            "f:12:6: error: required key 'y' of type Pixel is missing, path /a/y, declared at "
            "5:7" +
            wrong_code);
}

TEST_F(ToolRules, each_violation_is_one_message_at_its_entry) {
    EXPECT_EQ(
        reported("  a= Pixel(\n"
                 "    x= 1.5;\n"
                 "    y= #nil;\n"
                 "    colr= green;\n"
                 "    size= big;\n"
                 "    \"mode\"= auto;\n"
                 "  );"),
        "f:13:5: error: key 'x' of type Pixel must be an int, not a double, path /a/x, declared at "
        "4:7" +
            wrong_code +
            "f:14:5: error: required key 'y' of type Pixel is nil, path /a/y, declared at 5:7" +
            wrong_code +
            "f:15:5: error: type Pixel has no key 'colr', path /a/colr, declared at 3:3; did you "
            "mean 'color'?" +
            wrong_code +
            "f:16:5: error: key 'size' of type Pixel must be an int, not a string, path /a/size, "
            "declared at 8:7" +
            wrong_code +
            "f:17:5: error: key 'mode' of type Pixel must be a Mode, not a string, path /a/mode, "
            "declared at 7:7" +
            wrong_code);
}

TEST_F(ToolRules, a_separator_before_a_value_is_skipped) {
    EXPECT_EQ(
        reported("a= Pixel(x= 1; y= 2; size= , word; ,);"),
        "f:12:22: error: key 'size' of type Pixel must be an int, not a string, path /a/size, "
        "declared at 8:7" +
            wrong_code);
    EXPECT_EQ(reported("a= Pixel(x= ;1; y= ,2; size= , 7);"), "");
    EXPECT_EQ(
        check("{T= ;attlist(x= ;attspec(type= ;int));\nt= T(x= a);}"),
        "f:2:6: error: key 'x' of type T must be an int, not a string, path /t/x, declared at "
        "1:14" +
            wrong_code);
}

TEST_F(ToolRules, a_missing_value_is_reported_once) {
    std::string const all = reported("a= Pixel(x= 1; y= );");
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 1) << all;
    EXPECT_NE(all.find("error: Pattern 'key =value' is missed in path: /a/y"), std::string::npos)
        << all;
}

TEST_F(ToolRules, the_last_value_of_a_repeated_key_counts) {
    EXPECT_EQ(reported("a= Pixel(x= one, y= 1, x= two);"),
              "f:12:24: error: key 'x' of type Pixel must be an int, not a string, path /a/x, "
              "declared at 4:7" +
                  wrong_code);
    EXPECT_EQ(run_on(declarations + "a= Pixel(x= one, y= 1, x= 2);}", {"check"}),
              (cRun{0, "",
                    "f:12:24: warning: key 'x' is repeated [duplicate-key]\n"
                    "f:12:10: note: it is first here\n"}));
}

TEST_F(ToolRules, a_fixed_key_makes_its_type_unreadable) {
    std::string const unreadable =
        "no object of type Fixed can be read, because its key 'f' is #FIXED: only the default "
        "itself is valid, and reading creates a copy, path /a/f, declared at 10:18" +
        wrong_code;
    EXPECT_EQ(reported("a= Fixed(v= 1);"), "f:12:4: error: " + unreadable);
    EXPECT_EQ(reported("a= Fixed(v= 1; f= 5);"), "f:12:4: error: " + unreadable);
    EXPECT_EQ(reported("a= Fixed(f= 6; v= 1);"),
              "f:12:10: error: key 'f' of type Fixed is fixed to 5, not 6; and no object of the "
              "type can be read: only the default itself is valid, and reading creates a copy, "
              "path /a/f, declared at 10:18" +
                  wrong_code);
}

TEST_F(ToolRules, one_of_several_fixed_keys_is_reported_as_unreadable) {
    std::string const declared = "{F= attlist(f= attspec(default=5; flag=#FIXED); g= "
                                 "attspec(default=6; flag=#FIXED));\n";
    EXPECT_EQ(check(declared + "a= F(f= 1; g= 1);}"),
              "f:2:6: error: key 'f' of type F is fixed to 5, not 1; and no object of the type can "
              "be read: only the default itself is valid, and reading creates a copy, path /a/f, "
              "declared at 1:13" +
                  wrong_code +
                  "f:2:12: error: key 'g' of type F is fixed to 6, not 1, path /a/g, declared at "
                  "1:49" +
                  wrong_code);
    EXPECT_EQ(
        check(declared + "a= F(g= 6);}"),
        "f:2:4: error: no object of type F can be read, because its key 'f' is #FIXED: only the "
        "default itself is valid, and reading creates a copy, path /a/f, declared at 1:13" +
            wrong_code);
}

TEST_F(ToolRules, consequences_of_an_error_inside_are_not_reported) {
    std::string const y =
        "f:12:28: error: key 'y' of type Pixel must be an int, not a string, path "
        "/a/p/y, declared at 5:7" +
        wrong_code;
    EXPECT_EQ(reported("a= Outer(p= Pixel(x= 1;    y= bad));"), y);
    EXPECT_EQ(reported("a= Pixel(x= foo(1); y= 1);"),
              "f:12:13: error: Value with unknown type='foo [0x40000005]\n");
    EXPECT_EQ(reported("a= Outer(p= #cRef(/nowhere));"),
              "f:12:13: error: Error in #cRef(/nowhere): Referenced value is not defined before. "
              "[0x40000003]\n");
    EXPECT_EQ(
        reported("a= [[Pixel(x= 1)], 2];"),
        "f:12:6: error: required key 'y' of type Pixel is missing, path /a/0/0/y, declared at "
        "5:7" +
            wrong_code);
}

TEST_F(ToolRules, a_reference_to_nil_is_nil) {
    EXPECT_EQ(reported("n= #nil; a= Pixel(x= #cRef(/n), y= 1);"),
              "f:12:19: error: required key 'x' of type Pixel is nil, path /a/x, declared at 4:7" +
                  wrong_code);
}

TEST_F(ToolRules, the_last_declaration_before_the_object_counts) {
    EXPECT_EQ(
        check("{R= attlist(a= attspec(type=int));\nr= R();\n"
              " R= attlist(b= attspec(type=int));\ns= R();}"),
        "f:2:4: error: required key 'a' of type R is missing, path /r/a, declared at 1:13" +
            wrong_code +
            "f:3:2: warning: key 'R' is repeated [duplicate-key]\n"
            "f:1:2: note: it is first here\n"
            "f:4:4: error: required key 'b' of type R is missing, path /s/b, declared at 3:13" +
            wrong_code);
}

TEST_F(ToolRules, a_similar_name_is_suggested_for_unknown_names) {
    EXPECT_EQ(reported("a= Pixl(x= 1);"),
              "f:12:4: error: Value with unknown type='Pixl; did you mean 'Pixel'? [0x40000005]\n"
              "f:12:4: error: Cannot insert key =a\n");
    EXPECT_EQ(reported("a= pixel(x= 1);").substr(0, 72),
              "f:12:4: error: Value with unknown type='pixel; did you mean 'Pixel'? [0x");
    EXPECT_EQ(reported("a= Elephant(x= 1);").substr(0, 60),
              "f:12:4: error: Value with unknown type='Elephant [0x40000005");
    EXPECT_EQ(reported("a= Mode(manuel);"), "f:12:4: error: 'manuel' is not a choice of type Mode, "
                                            "declared at 2:3; did you mean 'manual'?" +
                                                failed_code);
    EXPECT_EQ(reported("a= Mode(off);"),
              "f:12:4: error: 'off' is not a choice of type Mode, declared at 2:3" + failed_code);
    EXPECT_EQ(reported("a= Mode({x= 1});"),
              "f:12:4: error: this is not a choice of type Mode, declared at 2:3" + failed_code);
    EXPECT_EQ(
        reported("T= attlist(n= attspec(type= itn));"),
        "f:12:29: error: Wrong type-entry in attspec: unknown type 'itn'; did you mean 'int'?" +
            wrong_code);
}

TEST_F(ToolRules, an_error_in_a_declaration_is_reported_once_and_not_at_its_objects) {
    std::string const
        declared = "{T= attlist(n= attspec(type= itn), m= attspec(type= int));\n",
        wrong =
            "f:1:30: error: Wrong type-entry in attspec: unknown type 'itn'; did you mean 'int'?" +
            wrong_code;
    EXPECT_EQ(check(declared + "t= T(n= 1);}"), wrong);
    EXPECT_EQ(check(declared + "t= T(n= ?); u= [T(m= 1), [T()]]; v= {T(m= 1)= 1;}; w= <T()>;}"),
              wrong);
    EXPECT_EQ(run_on(declared + "t= T(n= 1);}", {"fmt"}), (cRun{2, "", wrong}));
    EXPECT_EQ(
        check("{u= T(m= 1);\n T= attlist(m= attspec(type= itn), n= attspec(type= int));}"),
        "f:1:5: error: Value with unknown type='T [0x40000005]\n"
        "f:1:5: error: Cannot insert key =u\n"
        "f:2:30: error: Wrong type-entry in attspec: unknown type 'itn'; did you mean 'int'?" +
            wrong_code);
}

TEST_F(ToolRules, errors_that_follow_from_a_declaration_through_another_are_dropped) {
    EXPECT_EQ(check("{M= choice();\n T= attlist(m= attspec(type= M; default= M(a)));\n"
                    " U= attlist(t= attspec(type= T));\n u= [U(t= T(m= M(a)))];}"),
              "f:1:5: error: a choice type needs choices: choice({a= 1; b= 2;})" + failed_code);
}

TEST_F(ToolRules, a_name_of_a_type_of_another_kind_is_refused) {
    std::string const taken = " error: Type name from input is registered with another type-type! ";
    EXPECT_EQ(reported("Mode= attlist(a= attspec(type= int)); \"Pixel\"= choice({a= 1;});"),
              "f:12:7:" + taken +
                  "'Mode' is a choice already, declared at 2:3: choose another name "
                  "[0x40000006]\n"
                  "f:12:48:" +
                  taken +
                  "'Pixel' is an attlist already, declared at 3:3: choose another name "
                  "[0x40000006]\n");
    EXPECT_EQ(check("{choice= choice({a= 1;}); int= attlist(a= attspec(type= int));}"),
              "f:1:10:" + taken +
                  "'choice' is a type already: choose another name [0x40000006]\n"
                  "f:1:32:" +
                  taken + "'int' is a type already: choose another name [0x40000006]\n");
    EXPECT_EQ(reported("Mode= attlist(a= attspec(type= int)); m= Mode(off);"),
              "f:12:7:" + taken +
                  "'Mode' is a choice already, declared at 2:3: choose another name [0x40000006]\n"
                  "f:12:42: error: 'off' is not a choice of type Mode, declared at 2:3" +
                  failed_code);
}

TEST_F(ToolRules, a_type_is_specified_by_its_name_only) {
    EXPECT_EQ(
        check("{T= attlist(x= attspec(type= int(5)));}"),
        "f:1:30: error: Wrong type-entry in attspec: write the name of the type without brackets" +
            wrong_code);
}

TEST_F(ToolRules, a_type_without_a_name_is_reported_as_unnamed) {
    EXPECT_EQ(check("{T= attlist(x= attspec(type= choice({a= 1})));\na= T(x= 1);}"),
              "f:2:6: error: key 'x' of type T must be an object of a type without a name, not an "
              "int, path /a/x, declared at 1:13" +
                  wrong_code);
}

TEST_F(ToolRules, names_with_a_capital_vowel_have_the_right_article) {
    EXPECT_EQ(check("{Axis= attlist();\nT= attlist(x= attspec(type= Axis));\na= T(x= 1);}"),
              "f:3:6: error: key 'x' of type T must be an Axis, not an int, path /a/x, declared at "
              "2:12" +
                  wrong_code);
}

TEST_F(ToolRules, declarations_without_effect_are_reported) {
    EXPECT_EQ(
        check("{a= attspec();}"),
        "f:1:5: error: an empty attspec cannot be read: attspec(flag= #IMPLIED) accepts any value" +
            failed_code);
    EXPECT_EQ(check("{C= choice();}"),
              "f:1:5: error: a choice type needs choices: choice({a= 1; b= 2;})" + failed_code);
    EXPECT_EQ(check("{C= choice(a= 1);\nc= C(a);}"),
              "f:1:5: error: write the choices as a map: choice({a= 1; b= 2;})\n"
              "f:2:4: error: type C has no choices: declare them as choice({a= 1; b= 2;}), "
              "declared at 1:2" +
                  failed_code);
    EXPECT_EQ(check("{E= attlist();\ne= E();}"), "");
    EXPECT_EQ(check("{E= attlist();\ne= E(;);}"),
              "f:2:4: error: type E has no keys: its objects are empty, such as E()" + failed_code);
}

TEST_F(ToolRules, a_file_with_broken_objects_is_not_rewritten) {
    cRun const run = run_on(declarations + "  a= Pixel(x= 1); }", {"fmt"});
    EXPECT_EQ(run, (cRun{2, "",
                         "f:12:6: error: required key 'y' of type Pixel is missing, path /a/y, "
                         "declared at 5:7" +
                             wrong_code}));
}

// --- an object of a type with a faulty declaration, which the reader drops ---

class ToolLostObject : public ToolRules {
  protected:
    ToolLostObject() { write("f", bytes_); }
    // Every command fails with this error and leaves the file unchanged.
    void refuses(std::vector<std::string> const &command, int status,
                 std::string const &file = "f") const {
        std::string errors =
            file +
            ":1:39: error: this declares no key 'z': a declaration is "
            "attspec(...)\n" +
            file + ":1:69: error: type T has no key 'z', path /b/z, declared at 1:2" + wrong_code;
        EXPECT_EQ(run(command), (cRun{status, "", errors})) << command[0];
        EXPECT_EQ(read("f"), bytes_) << command[0];
    }

    std::string const bytes_ =
        "{T= attlist(y= attspec(type=int;); z= attspec;); keep= 1; b= T(y=1; z=7);}";
};

TEST_F(ToolLostObject, is_reported_by_every_command_that_reads_the_file) {
    refuses({"check", "f"}, 1);
    refuses({"fmt", "f"}, 2);
    refuses({"fmt", "--check", "f"}, 2);
    refuses({"get", "f", "keep"}, 2);
    refuses({"find", "f", "keep"}, 2);
    refuses({"explain", "f", "keep"}, 2);
    refuses({"types", "f"}, 2);
    refuses({"to-json", "f"}, 2);
    refuses({"set", "f", "keep = 2"}, 2);
    write("other", "{keep= 2; }\n");
    refuses({"merge", "f", "other"}, 2);
    refuses({"merge", "other", "f"}, 2);
}

TEST_F(ToolLostObject, remains_in_its_file) {
    refuses({"fmt", "-i", "f"}, 2);
    refuses({"fmt", "-i", "--force", "f"}, 2);
    refuses({"set", "-i", "f", "keep = 2"}, 2);
    write("other", "{keep= 2; }\n");
    refuses({"merge", "-i", "f", "other"}, 2);
    refuses({"set", "-o", "new", "f", "keep = 2"}, 2);
    refuses({"to-json", "-o", "new", "f"}, 2);
    EXPECT_FALSE(std::filesystem::exists(path("new")));
}

TEST_F(ToolLostObject, is_reported_inside_containers_and_objects) {
    std::string const
        declared =
            "{T= attlist(y= attspec(type=int;); z= attspec;); U= attlist(t= attspec(type= T));\n",
        first = "f:1:39: error: this declares no key 'z': a declaration is "
                "attspec(...)\n";
    auto const lost = [](std::string const &place, std::string const &path) {
        return "f:" + place + ": error: type T has no key 'z', path " + path +
               "/z, declared at 1:2" + wrong_code;
    };
    EXPECT_EQ(check(declared + "v= [T(y=1; z=7), 2];}"), first + lost("2:12", "/v/0"));
    EXPECT_EQ(check(declared + "m= {t= T(y=1; z=7)};}"), first + lost("2:15", "/m/t"));
    EXPECT_EQ(check(declared + "s= <1, T(y=1; z=7)>;}"), first + lost("2:15", "/s/1"));
    EXPECT_EQ(check(declared + "u= U(t= T(y=1; z=7));}"), first + lost("2:16", "/u/t"));
}

TEST_F(ToolLostObject, is_reported_in_statements) {
    write("f", "{keep= 1; }\n");
    EXPECT_EQ(run({"set", "f", "T &= attlist(z= attspec); b &= T(z=7)"}),
              (cRun{2, "",
                    "statements:1:17: error: this declares no key 'z': a declaration is "
                    "attspec(...)\n"}));
}

// --- hostile files ---

TEST_F(ToolRules, three_thousand_invalid_objects_are_reported) {
    std::string text = "{R= attlist(n= attspec(type= int));\n";
    for (int i = 0; i < 3000; ++i) text += "r" + std::to_string(i) + "= R(n= x; nn= 5);\n";
    text += "}";
    std::string const all = check(text);
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 101);
    EXPECT_EQ(all.substr(all.rfind("f: ")), "f: error: 5900 more\n");
    EXPECT_EQ(run_on(text, {"check", "--all", "--max-errors", "1"}),
              (cRun{1, "",
                    "f:2:7: error: key 'n' of type R must be an int, not a string, path /r0/n, "
                    "declared at 1:13" +
                        wrong_code + "f: error: 5999 more\n"}));
}

TEST_F(ToolRules, one_object_may_have_thirty_thousand_unknown_keys) {
    std::string text = "{R= attlist(n= attspec(type= int)); r= R(n= 1;\n";
    for (int i = 0; i < 30000; ++i) text += "k" + std::to_string(i) + "= 1;\n";
    std::string const all = check(text + ")}");
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 101);
    EXPECT_EQ(all.substr(all.rfind("f: ")), "f: error: 29900 more\n");
}

// Each unknown name is compared with all known ones, but within a limit.
TEST_F(ToolRules, two_thousand_unknown_names_are_compared_quickly) {
    std::string types = "{", uses, choices;
    for (int i = 0; i < 2000; ++i) {
        std::string const n = std::to_string(i);
        types += "Type" + n + "= attlist(a= attspec(type= int));\n";
        uses += "u" + n + "= Tipe" + n + "(a= 1);\nc" + n + "= C(q" + n + ");\n";
        choices += "k" + n + "= 1;\n";
    }
    cRun const run = run_on(types + "C= choice({" + choices + "});" + uses + "}",
                            {"check", "--all", "--max-errors", "1000000"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 6000);
    EXPECT_NE(run.err.find("Tipe0; did you mean 'Type0'?"), std::string::npos);
}

TEST_F(ToolRules, objects_may_be_nested_as_deep_as_possible) {
    std::string const all =
        check("{R= attlist(a= attspec(type= R; flag= #REQUIRED));\nr= " + times("R(a= ", 5000) +
              "1" + times(")", 5000) + ";}");
    EXPECT_LE(std::count(all.begin(), all.end(), '\n'), 102);
    EXPECT_EQ(all.find("ended too early"), std::string::npos);
}

} // namespace
