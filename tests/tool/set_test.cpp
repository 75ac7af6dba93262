// `set`: values at paths.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::times;
using tool_test::usage_error;

namespace {

class ToolSet : public tool_test::Tool {
  protected:
    cRun set(std::string const &bytes, std::string const &statements,
             std::vector<std::string> more = {}) const {
        write("f", bytes);
        more.insert(more.begin(), {"set", "f", statements});
        return run(std::move(more));
    }
    // Executes statements that must succeed, and returns the new text.
    std::string spliced(std::string const &bytes, std::string const &statements,
                        std::vector<std::string> more = {}) const {
        cRun const run = set(bytes, statements, std::move(more));
        EXPECT_EQ(run.status, 0) << statements;
        EXPECT_EQ(run.err, "") << statements;
        return run.out;
    }
    // The new text in standard layout. It must be the same with --reformat as when the spliced text
    // is reformatted.
    std::string changed(std::string const &bytes, std::string const &statements,
                        std::vector<std::string> more = {}) const {
        std::string const text = spliced(bytes, statements, more);
        more.push_back("--reformat");
        std::string const reformatted = spliced(bytes, statements, std::move(more));
        EXPECT_EQ(spliced(text, "", {"--reformat"}), reformatted) << statements;
        return reformatted;
    }
    // Executes statements that must be refused and leave the file unchanged. Returns the message.
    std::string refused(std::string const &bytes, std::string const &statements,
                        std::vector<std::string> more = {}) const {
        more.push_back("-i");
        cRun const run = set(bytes, statements, std::move(more));
        EXPECT_EQ(run.status, 2) << statements;
        EXPECT_EQ(run.out, "") << statements;
        EXPECT_EQ(read("f"), bytes) << statements;
        return run.err;
    }
};

std::string reported(std::string const &place, std::string const &text, std::string const &advice) {
    std::string const at = "statements:" + place;
    return at + ": error: " + text + "\n" + (advice.empty() ? "" : at + ": note: " + advice + "\n");
}

std::string const replace_or_convert =
    "&= replaces it and its type; --convert stores the changed value";
std::string const replaces = "&= replaces a value of any type";

// --- operators ---

TEST_F(ToolSet, assigns_to_existing_values) {
    EXPECT_EQ(changed("{a= 1; b= {c= x; }; v= [1, 2]}", "a = 5; b/c = \"two words\"; v/1 = 7"),
              "{a= 5; b= {c= \"two words\"; }; v= [1, 7, ]; }\n");
}

TEST_F(ToolSet, semicolons_and_commas_separate_statements_executed_in_order) {
    EXPECT_EQ(changed("{a= 1}", ";, a = 2, b = 3;; a = 4,"), "{a= 4; b= 3; }\n");
    EXPECT_EQ(changed("{a= 1}", "a = 2\n;\nb\n=\n3"), "{a= 2; b= 3; }\n");
}

TEST_F(ToolSet, an_empty_statement_changes_no_byte) {
    for (std::string const statements : {"", " ;, "}) {
        EXPECT_EQ(spliced("{a=1} // x", statements), "{a=1} // x");
        EXPECT_EQ(spliced("{a=1}", statements, {"--reformat"}), "{a= 1; }\n");
    }
}

TEST_F(ToolSet, creates_missing_levels) {
    EXPECT_EQ(changed("{}", "a/b/c = 1; a/d &= []; m += {x=1}"),
              "{\n  a= {\n      b= {\n          c= 1;\n      }; \n      d= [];\n  }; \n"
              "  m= {\n      x= 1;\n  }; \n}\n");
    EXPECT_EQ(changed("{a={}}", "a/b = 1; c = 2", {"--no-create"}), "{a= {b= 1; }; c= 2; }\n");
    EXPECT_EQ(refused("{}", "a/b = 1", {"--no-create"}),
              reported("1:1", "a/b: Call of setattrp with not existing path: /a [0x40000001]",
                       "without --no-create missing levels are created"));
}

TEST_F(ToolSet, can_replace_a_value_by_another_type) {
    EXPECT_EQ(changed("{a= 1; b= {c= 2; }; n= #nil}", "a &= [x]; b &= 2.5f; n &= 1; new &= {}"),
              "{a= [x, ]; b= 2.50000f; n= 1; new= {}; }\n");
}

TEST_F(ToolSet, adds_values) {
    EXPECT_EQ(changed("{i= 1; d= 1.5; f= 1.5f; s= ab; m= {x= 1; }; v= [1]; c= <1>}",
                      "i += 2; i += true; d += 1; f += 0.1; s += c; m += {x= 2; y= 3}; "
                      "v += [2, 3]; v += <4>; c += [1, 2]"),
              "{i= 4; d= 2.50000; f= 1.60000f; s= abc; m= {x= 1; y= 3; }; v= [1, 2, 3, 4, ]; "
              "c= <1, 2, >; }\n");
}

TEST_F(ToolSet, appends_values) {
    EXPECT_EQ(changed("{v= [1]; c= <1>; m= {x= 1; }}", "v << 1; v << [2]; c << 2; m << 5"),
              "{v= [1, 1, [2, ], ]; c= <1, 2, >; m= {x= 1; 0= 5; }; }\n");
    EXPECT_EQ(changed("{m= {1= x; }}", "m << 5"), "{m= {1= x; 2= 5; }; }\n");
}

TEST_F(ToolSet, paths_are_the_same_as_for_get) {
    EXPECT_EQ(changed("{v= [x, {'two words'= 7; 8= y; }]; -1= a; 1.5= b}",
                      "/v/0 = z; v / 1 / 'two words' = 8; \"v\"/1/8 = q; -1 = c; 1.5 = d"),
              "{v= [z, {\"two words\"= 8; 8= q; }, ]; -1= c; 1.50000= d; }\n");
}

// --- comments, layout, sharing ---

TEST_F(ToolSet, unchanged_values_keep_their_text) {
    for (std::string const name : {"device.attr", "testplan.attr", "waterworks.attr"}) {
        write_example(name);
        std::string const before = read(name);
        EXPECT_EQ(run({"set", name, "zz = 1"}).err, "");
        std::string const line = "  zz= 1;\n";
        std::string const after = run({"set", name, "zz = 1"}).out;
        size_t const at = after.rfind(line);
        ASSERT_NE(at, std::string::npos) << name;
        EXPECT_EQ(after.substr(0, at) + after.substr(at + line.size()), before) << name;
    }
}

TEST_F(ToolSet, replaced_values_preserve_their_comments) {
    std::string const text = "{ // top\n  a= 1; // one\n  b= [2, ]; // two\n}\n";
    EXPECT_EQ(changed(text, "a = 3; b &= 4"), "{ // top\n  a= 3; // one\n  b= 4; // two\n}\n");
    EXPECT_EQ(changed(text, "a &= 3.5; c = 1; b &= {}"),
              "{ // top\n  a= 3.50000; // one\n  b= {}; // two\n  c= 1;\n}\n");
}

TEST_F(ToolSet, comments_at_references_to_a_shared_value_are_preserved) {
    std::string const text = "{\n  a= [1, ]; // c\n  b= #cRef(/a); // c\n}\n";
    EXPECT_EQ(changed(text, "z = 1"), "{\n  a= [1, ]; // c\n  b= #cRef(/a); // c\n  z= 1;\n}\n");
    for (std::string const other :
         {"{\n  a= [1, ]; // c\n  b= #cRef(/a); // d\n}\n",
          "{ // c\n  a= [1, ]; // c\n  b= #cRef(/a); /* e */ // c\n}\n"}) {
        std::string const cut = other.substr(0, other.size() - 2);
        EXPECT_EQ(spliced(other, "z = 1"), cut + "  z= 1;\n}\n");
    }
}

TEST_F(ToolSet, only_the_comments_inside_a_replaced_value_are_removed) {
    std::string const text = "{ // top\n  a= {\n      b= 1; // one\n  }; \n  c= 2; // two\n}\n";
    EXPECT_EQ(spliced(text, "a &= 5"), "{ // top\n  a= 5; \n  c= 2; // two\n}\n");
    EXPECT_EQ(spliced(text, "c &= #nil"),
              "{ // top\n  a= {\n      b= 1; // one\n  }; \n  c= #nil; // two\n}\n");
    EXPECT_EQ(spliced(text, "a &= 5", {"-i"}), "");
    EXPECT_EQ(read("f"), "{ // top\n  a= 5; \n  c= 2; // two\n}\n");
}

TEST_F(ToolSet, a_file_is_unchanged_if_reformatting_would_lose_a_comment) {
    std::string const text = "{\n  a= {\n      b= 1; // one\n  }; \n  c= 2; // two\n}\n";
    std::string const lost = "f:3:13: error: this comment would be lost: // one\n";
    EXPECT_EQ(set(text, "a &= 5", {"--reformat"}),
              (cRun{1, "{\n  a= 5;\n  c= 2; // two\n}\n", lost}));
    EXPECT_EQ(refused(text, "a &= 5", {"--reformat"}),
              lost + "f: error: not written: data would be lost; --force writes the file anyway\n");
    EXPECT_EQ(set(text, "a &= 5", {"--reformat", "-i", "--force"}), (cRun{0, "", lost}));
    EXPECT_EQ(read("f"), "{\n  a= 5;\n  c= 2; // two\n}\n");
    EXPECT_EQ(set(text, "c &= #nil", {"--reformat"}).status, 1)
        << "a constant cannot have a comment";
}

TEST_F(ToolSet, assigning_changes_all_occurrences_of_a_shared_value_and_replacing_only_one) {
    std::string const text = "{a= {x= 1; }; b= #cRef(/a); c= [#cRef(/a)]}";
    EXPECT_EQ(changed(text, "b/x = 2"), "{a= {x= 2; }; b= #cRef(/a); c= [#cRef(/a), ]; }\n");
    EXPECT_EQ(changed(text, "a &= 5"), "{a= 5; b= {x= 1; }; c= [#cRef(/b), ]; }\n");
    EXPECT_EQ(changed(text, "c/0 = {x= 3}"), "{a= {x= 3; }; b= #cRef(/a); c= [#cRef(/a), ]; }\n");
    EXPECT_EQ(refused("{m= {a= 1; b= #cRef(/m/a); }}", "m = {a= 1; b= 2}"),
              reported("1:5", "m: at /a: 1 would be stored as 2", replace_or_convert));
}

TEST_F(ToolSet, values_may_be_shared_on_many_levels) {
    std::string text = "{x0= {v= 1; };";
    for (int i = 1; i <= 64; ++i) {
        std::string const below = "#cRef(/x" + std::to_string(i - 1) + ")";
        text += " x" + std::to_string(i) + "= {a= " + below + "; b= " + below + "; };";
    }
    text += " }";
    std::string const path = "x64" + times("/b", 64) + "/v";
    cRun const fmt = this->fmt(text);
    std::string expected = fmt.out;
    expected.replace(expected.find("v= 1"), 4, "v= 2");
    EXPECT_EQ(changed(text, path + " = 2"), expected);
}

TEST_F(ToolSet, types_of_the_file_are_known) {
    std::string const text = "{P= attlist(x= attspec(type=int;);); p= P(x=1)}";
    std::string const out = changed(text, "p/x = 2; q = P(x=3)");
    EXPECT_EQ(run({"get", "-", "p/x", "q/x"}, {.input = out}), (cRun{0, "2\n3\n", ""}));
    EXPECT_EQ(refused(text, "p/x = 1.5"),
              reported("1:7", "p/x: 1.50000 would be stored as 1",
                       "the type P demands a value of the type int; --convert stores the changed "
                       "value"));
    EXPECT_EQ(refused(text, "P = 5", {"--convert"}),
              reported("1:5", "P: it is an attlist and cannot store an int as it is", replaces));
    EXPECT_EQ(refused(text, "q = Q(x=3)"),
              reported("1:5", "Value with unknown type='Q [0x40000005]", ""));
}

TEST_F(ToolSet, errors_in_values_of_declared_types_are_reported_as_by_check) {
    std::string const text = "{M= choice({eco= 1;}); P= attlist(x= attspec(type= int); s= "
                             "attspec(default= a)); p= P(x=1)}";
    EXPECT_EQ(
        refused(text, "p = P(x= fast); a = 1; b/c = [P(s= b, t= 1)]"),
        reported("1:7", "key 'x' of type P must be an int, not a string, path /p/x [0x40000000]",
                 "") +
            reported("1:31", "required key 'x' of type P is missing, path /b/c/0/x [0x40000000]",
                     "") +
            reported("1:39", "type P has no key 't', path /b/c/0/t [0x40000000]", ""));
    EXPECT_EQ(
        refused(text, "m = M(ecco); q = PP(x= 1)"),
        reported("1:5", "'ecco' is not a choice of type M; did you mean 'eco'? [0x40000001]", "") +
            reported("1:18", "Value with unknown type='PP; did you mean 'P'? [0x40000005]", ""));
}

TEST_F(ToolSet, silently_ignored_values_are_refused) {
    std::string const text = "{M= choice({eco= 1;}); i= 1}";
    EXPECT_EQ(
        refused(text, "m = M(eco, off); i = int(5; 6)"),
        reported("1:12", "this is ignored: only the first value in the brackets of M is read", "") +
            reported("1:29", "this is ignored: only the first value in the brackets of int is read",
                     ""));
    EXPECT_EQ(refused(text, "P = attlist(x= attspec(typ= int; default= 5))"),
              reported("1:24", "attspec has no entry 'typ'; did you mean 'type'?", ""));
}

TEST_F(ToolSet, ten_thousand_statements_may_contain_typed_values) {
    EXPECT_EQ(changed("{i= 1}", times("i=int(5);", 10000) + "i = 7"), "{i= 7; }\n");
}

// --- values that would change or do not fit ---

TEST_F(ToolSet, numbers_that_fit_are_converted) {
    EXPECT_EQ(changed("{i= 1; d= 1.5; f= 1.5f; b= true}", "i = 2.0; d = 3; f = 0.1; b = 0"),
              "{i= 2; d= 3.00000; f= 0.100000f; b= false; }\n");
    EXPECT_EQ(changed("{i= 1; f= 1.5f}", "i = 2147483647.0; f = 16777216"),
              "{i= 2147483647; f= 16777216.0f; }\n");
}

TEST_F(ToolSet, numbers_that_would_change_are_refused) {
    std::string const text = "{i= 1; d= 1.5; f= 1.5f; b= true}";
    EXPECT_EQ(refused(text, "i = 1.9"),
              reported("1:5", "i: 1.90000 would be stored as 1", replace_or_convert));
    EXPECT_EQ(refused(text, "b = 5"),
              reported("1:5", "b: 5 would be stored as true", replace_or_convert));
    EXPECT_EQ(
        refused(text, "i = 2147483648.0"),
        reported("1:5", "i: 2147483648.0 would be stored as -2147483648", replace_or_convert));
    EXPECT_EQ(refused(text, "f = 0.123456789"),
              reported("1:5", "f: 0.123456789 would be stored as 0.12345679f", replace_or_convert));
    EXPECT_EQ(refused(text, "f = 16777217"),
              reported("1:5", "f: 16777217 would be stored as 16777216.0f", replace_or_convert));
    EXPECT_EQ(changed(text, "i = 1.9; b = 5; f = 0.123456789", {"--convert"}),
              "{i= 1; d= 1.50000; f= 0.12345679f; b= true; }\n");
}

TEST_F(ToolSet, numbers_inside_containers_that_would_change_are_refused) {
    std::string const text = "{m= {i= 1; v= [1, 2]; }}";
    EXPECT_EQ(refused(text, "m = {i= 1.5; v= [1, 2.5]}"),
              reported("1:5", "m: at /i: 1.50000 would be stored as 1", replace_or_convert) +
                  reported("1:5", "m: at /v/1: 2.50000 would be stored as 2", replace_or_convert));
    EXPECT_EQ(changed(text, "m = {i= 1.5; v= [1, 2.5]}", {"--convert"}),
              "{m= {i= 1; v= [1, 2, ]; }; }\n");
    EXPECT_EQ(changed(text, "m &= {i= 1.5}"), "{m= {i= 1.50000; }; }\n");
}

TEST_F(ToolSet, numbers_too_large_for_any_type_are_refused) {
    EXPECT_EQ(refused("{i= 1}", "i = 2147483648"),
              reported("1:5",
                       "Failed to read value:  Input of standard type: 2147483648 [0x40000001]",
                       "the number is too large; the largest int is 2147483647"));
    EXPECT_EQ(
        refused("{i= 1}", "i = 1e3"),
        reported("1:5", "Bad input: 1e3  String is assumed. [0x40000002]",
                 "a string needs quotes, and a number with an exponent needs a point: 1.0e3"));
}

TEST_F(ToolSet, sums_that_do_not_fit_are_refused) {
    std::string const text = "{i= 2147483647; f= 3.0e38f; d= 1.7e308}";
    EXPECT_EQ(refused(text, "i += 1"),
              reported("1:6", "i: the sum is too large for an int", "&= stores a double"));
    EXPECT_EQ(refused(text, "f += 3.0e38f"),
              reported("1:6", "f: the sum is too large for a float", "&= stores a double"));
    EXPECT_EQ(refused(text, "d += 1.7e308"),
              reported("1:6", "d: the sum is too large for a double", "&= stores a double"));
    EXPECT_EQ(refused(text, "i += -0.5"),
              reported("1:6", "i: -0.500000 would be cut before it is added to an int",
                       "--convert allows it"));
    EXPECT_EQ(changed(text, "i += -1.5", {"--convert"}).substr(0, 14), "{i= 2147483646");
}

TEST_F(ToolSet, values_of_another_type_are_refused) {
    std::string const text = "{i= 1; s= x; m= {}; v= []; c= <>}";
    EXPECT_EQ(refused(text, "i = x; s = 1; m = 5; v = 5"),
              reported("1:5", "i: it is an int and cannot store a string as it is", replaces) +
                  reported("1:12", "s: it is a string and cannot store an int as it is", replaces) +
                  reported("1:19", "m: it is a map and cannot store an int as it is", replaces) +
                  reported("1:26", "v: it is a vector and cannot store an int as it is", replaces));
    EXPECT_EQ(
        refused(text, "m = [1]; v = {a= 1}; c = [1]"),
        reported("1:5", "m: it is a map and cannot store a vector as it is", replace_or_convert) +
            reported("1:14", "v: it is a vector and cannot store a map as it is",
                     replace_or_convert) +
            reported("1:26", "c: it is a set and cannot store a vector as it is",
                     replace_or_convert));
}

TEST_F(ToolSet, advice_to_replace_is_omitted_where_replacing_would_fail) {
    EXPECT_EQ(refused("{c= <1, 2>}", "c/0 &= 2"),
              reported("1:8", "c/0: 2 would be stored as 1", "--convert stores the changed value"));
    EXPECT_EQ(refused("{i= 1}", "i = 2.5"),
              reported("1:5", "i: 2.50000 would be stored as 2", replace_or_convert));
    EXPECT_EQ(refused("{T= attlist(k= attspec(type= int)); }", "T/k/type &= double"),
              reported("1:13", "T/k/type: it is a type and cannot store a string as it is",
                       "T is a type, and its declaration can only be replaced as a whole"));
}

TEST_F(ToolSet, a_set_with_equal_values_is_not_reported_as_lost_digits) {
    EXPECT_EQ(
        refused("{c= <1, 2>}", "c/0 = 2", {"--reformat"}),
        "f: error: the new text would not read as the same value: types, objects of them or equal "
        "values in a set would differ\n"
        "f: error: not written: the new text would change when it is read and written again\n");
}

TEST_F(ToolSet, constants_cannot_be_assigned_to) {
    EXPECT_EQ(
        refused("{n= #nil; t= #true}", "n = 5; t = #false"),
        reported("1:1", "n: it holds #nil, which cannot be assigned", "&= replaces it: n &= 5") +
            reported("1:8", "t: it holds #true, which cannot be assigned",
                     "&= replaces it: t &= #false"));
    EXPECT_EQ(changed("{n= #nil; t= #true}", "n &= 5; t &= #false; x = #true"),
              "{n= 5; t= #false; x= #true; }\n");
    EXPECT_EQ(refused("{i= 1}", "i = #nil", {"--convert"}),
              reported("1:5", "i: it is an int and cannot store #nil as it is", replaces));
    EXPECT_EQ(refused("{n= #nil}", "n/a = 5").find("statements:1:1: error: n/a: "), 0u);
}

TEST_F(ToolSet, additions_without_effect_are_refused) {
    std::string const text = "{m= {}; v= []; c= <1>; i= 1}";
    std::string const one = "<< appends one value";
    EXPECT_EQ(refused(text, "m += 5; v += 5"),
              reported("1:6", "m: it is a map, and += adds the values of another container", one) +
                  reported("1:14", "v: it is a vector, and += adds the values of another container",
                           one));
    EXPECT_EQ(
        refused(text, "v += {a= 1}"),
        reported("1:6", "v: it is a vector; the keys would be lost", "add a vector: [ ... ]"));
    EXPECT_EQ(refused(text, "c << 1"), reported("1:1", "c: the set holds 1 already", ""));
    EXPECT_EQ(refused(text, "w << 1"),
              reported("1:1", "w: nothing is there for <<", "create a value first, with = or &="));
}

TEST_F(ToolSet, keys_that_begin_with_a_hash_sign_need_quotes) {
    std::string const json = R"({"a":1,"#b":{"#c":{"d":[{"#":2}]}}})";
    write("f", "{a= 1; }");
    EXPECT_EQ(run({"set", "-i", "f", "\"#b\"/\"#c\" = {d= [{'#'= 2}]}"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"to-json", "--compact", "f"}), (cRun{0, json + "\n", ""})) << read("f");
    EXPECT_EQ(run({"set", "-i", "f", "\"#b\"/\"#c\"/d/0/\"#\" = 3"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"get", "f", "\"#b\"/\"#c\"/d/0/\"#\""}), (cRun{0, "3\n", ""}));
}

// --- invalid statements ---

TEST_F(ToolSet, invalid_paths_are_refused) {
    std::string const key = "a key is a word, a number or a string in quotes";
    EXPECT_EQ(refused("{}", "= 1"), reported("1:1", "'=' is not a key", key));
    EXPECT_EQ(refused("{}", "a/ = 1"), reported("1:4", "'=' is not a key", key));
    EXPECT_EQ(refused("{}", "a/ /b = 1"), reported("1:4", "'/' is not a key", key));
    EXPECT_EQ(refused("{}", "2nd = 1"), reported("1:1", "'2nd' is not a key", key));
    EXPECT_EQ(refused("{}", "true = 1"), reported("1:1", "'true' is not a key", key));
    EXPECT_EQ(refused("{}", "a/"),
              reported("1:3", "the path has no last key", "remove the last '/', or add a key"));
    EXPECT_EQ(refused("{}", "a b = 1"),
              reported("1:3", "'b' cannot follow a key",
                       "one of / = &= += << is expected; a key of several words needs quotes"));
    EXPECT_EQ(
        refused("{}", "b = 1; a"),
        reported("1:9", "operator and value are missing after the path", "write a = and a value"));
}

TEST_F(ToolSet, missing_values_are_reported) {
    std::string const empty = "an empty string is \"\", an empty map {}, a vector []";
    EXPECT_EQ(refused("{}", "a ="), reported("1:4", "the value is missing after =", empty));
    EXPECT_EQ(refused("{}", "a += ; b = 1"),
              reported("1:6", "the value is missing after +=", empty));
    EXPECT_EQ(refused("{}", "a = }"), reported("1:5", "'}' is not a value",
                                               "a string that is not a single word needs quotes"));
}

TEST_F(ToolSet, text_after_a_value_is_reported) {
    std::string const parts =
        "a ; separates statements, and a string that is not a single word needs quotes";
    EXPECT_EQ(refused("{}", "a = 1 } b = 2"), reported("1:7", "'}' cannot follow a value", parts));
    EXPECT_EQ(refused("{}", "a = b = 2"), reported("1:7", "'=' cannot follow a value", parts));
    EXPECT_EQ(refused("{}", "a = two words"),
              reported("1:5", "Missing delimiter after: two [0x40000002]", "") +
                  reported("1:14", "operator and value are missing after the path",
                           "write words = and a value"));
}

TEST_F(ToolSet, comments_in_statements_are_refused) {
    std::string const quotes = "leave it out; a string that contains // or /* needs quotes";
    EXPECT_EQ(refused("{}", "a = http://host"),
              reported("1:10", "this comment would be lost: //host", quotes));
    EXPECT_EQ(refused("{}", "a = {b= 1 /* one */}"),
              reported("1:11", "this comment would be lost: /* one */", quotes));
    EXPECT_EQ(refused("{}", "a//b = 1"),
              reported("1:2", "this comment would be lost: //b = 1", quotes));
    EXPECT_EQ(refused("{}", "a = 1 /* open"), reported("1:7", "this comment is not closed",
                                                       "a string that contains /* needs quotes"));
    EXPECT_EQ(spliced("{a= x}", "a = 'http://host /* x'"), "{a= \"http://host /* x\"}");
}

TEST_F(ToolSet, bytes_outside_quotes_are_refused) {
    std::string const quotes = "put the string that contains it in quotes";
    EXPECT_EQ(refused("{}", "a = \xC3\xA4; b = 2"),
              reported("1:5", "byte 0xc3 outside of strings and comments", quotes));
    EXPECT_EQ(changed("{}", "'\xC3\xA4' = '\xC3\xBC'"), "{\"\xC3\xA4\"= \"\xC3\xBC\"; }\n");
}

TEST_F(ToolSet, every_failure_before_a_syntax_error_is_reported) {
    EXPECT_EQ(refused("{i= 1; n= #nil}", "i = 1.5;\n n = 2; c = foo(1);\n d d; i = 2.5"),
              reported("1:5", "i: 1.50000 would be stored as 1", replace_or_convert) +
                  reported("2:2", "n: it holds #nil, which cannot be assigned",
                           "&= replaces it: n &= 2") +
                  reported("2:13", "Value with unknown type='foo [0x40000005]", "") +
                  reported("3:4", "'d' cannot follow a key",
                           "one of / = &= += << is expected; a key of several words needs quotes"));
}

TEST_F(ToolSet, the_number_of_messages_is_limited) {
    EXPECT_EQ(refused("{i= 1}", "i = 1.5; i = 2.5; i = 3.5", {"--max-errors", "1"}),
              reported("1:5", "i: 1.50000 would be stored as 1", replace_or_convert) +
                  "statements: error: 2 more\n");
}

// --- output ---

TEST_F(ToolSet, the_input_may_be_the_standard_input) {
    EXPECT_EQ(run({"set", "-", "a = 2"}, {.input = "{a= 1}"}), (cRun{0, "{a= 2}", ""}));
    EXPECT_EQ(run({"set", "-i", "-", "a = 2"}, {.input = "{a= 1}"}),
              (cRun{2, "", "-: error: not written: it is the standard input\n"}));
}

TEST_F(ToolSet, the_file_can_be_replaced_through_a_symbolic_link) {
    std::filesystem::create_directory(path("there"));
    write("there/g", "{a=1} \n");
    std::filesystem::create_symlink("there/g", path("f"));
    EXPECT_EQ(run({"set", "-i", "f", "a = 2"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("there/g"), "{a=2} \n");
    EXPECT_TRUE(std::filesystem::is_symlink(path("f")));
}

TEST_F(ToolSet, the_output_may_be_another_file) {
    EXPECT_EQ(set("{a=1}", "a = 2", {"-o", "g"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("g"), "{a=2}");
    EXPECT_EQ(read("f"), "{a=1}");
    EXPECT_EQ(set("{a= 3; }\n", "", {"--output=g"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("g"), "{a= 3; }\n") << "the file is written although nothing changes";
    EXPECT_EQ(set("{a=1}", "a = 2", {"-o", "-"}), (cRun{0, "{a=2}", ""}));
    EXPECT_EQ(set("{a=1}", "a = 2.5", {"-o", "g"}).status, 2);
    EXPECT_EQ(set("{a=1} x", "a = 2", {"--reformat", "-o", "g"}).status, 2);
    EXPECT_EQ(read("g"), "{a= 3; }\n");
    EXPECT_EQ(
        set("{a=1}", "a = 2", {"-o", "nowhere/g"}),
        (cRun{
            2, "",
            "nowhere/g: error: cannot write: No such file or directory; the file is unchanged\n"}));
}

TEST_F(ToolSet, files_with_errors_are_refused) {
    EXPECT_EQ(set("{a=1 b=2}", "a = 3"),
              (cRun{2, "",
                    "f:1:4: error: Missing delimiter after value: 1 [0x40000002]\n"
                    "f:1:5: note: a ; is missing here\n"}));
    EXPECT_EQ(set("", "a = 3"), (cRun{2, "", "f: error: the file is empty\n"}));
    EXPECT_EQ(run({"set", "nowhere", "a = 3"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
}

TEST_F(ToolSet, broken_copies_of_a_real_file_are_never_written) {
    std::string const whole = tool_test::bytes_of(test::source_file("examples/device.attr"));
    size_t const value_end = whole.rfind('}');
    for (size_t i = 1; i < 40; ++i) {
        std::string const cut = whole.substr(0, value_end * i / 40);
        write("f", cut);
        cRun const run = this->run({"set", "-i", "f", "name = x"});
        EXPECT_EQ(run.status, 2) << i;
        EXPECT_EQ(read("f"), cut) << i;
    }
}

TEST_F(ToolSet, paths_may_be_deep) {
    std::string const path = "a" + times("/a", 300);
    std::string const out = changed("{}", path + " = 5");
    EXPECT_EQ(run({"get", "-", path}, {.input = out}), (cRun{0, "5\n", ""}));
    EXPECT_EQ(set("{}", "a" + times("/a", 3000) + " = 5").status, 2)
        << "the result would be too deep to be read";
}

TEST_F(ToolSet, many_statements_may_be_given) {
    std::string text = "{\n", statements, expected = "{\n";
    for (int i = 0; i < 5000; ++i) {
        std::string const key = "k" + std::to_string(i);
        text += "  " + key + "= 1;\n";
        statements += key + " = " + std::to_string(i) + ";";
        expected += "  " + key + "= " + std::to_string(i) + ";\n";
    }
    EXPECT_EQ(changed(text + "}\n", statements), expected + "}\n");
}

TEST_F(ToolSet, usage_errors_are_reported) {
    write("f", "{}");
    EXPECT_EQ(run({"set", "f"}),
              usage_error("set", "set requires STATEMENTS, --expression or --file"));
    EXPECT_EQ(run({"set", "f", "a = 1", "--force"}),
              usage_error("set", "--force requires --in-place or --output"));
    EXPECT_EQ(run({"set", "f", "a = 1", "-i", "-o", "g"}).status, 2);
    EXPECT_EQ(run({"set", "--reformat", "f", "--", "-1 = 5"}), (cRun{0, "{-1= 5; }\n", ""}));
}

} // namespace
