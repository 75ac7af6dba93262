// `find`: the matches of a pattern, and that `set` accepts every printed line.

#include "tests/tool/tool_run.h"

#include <sstream>

using tool_test::cRun;
using tool_test::times;
using tool_test::usage_error;

namespace {

class ToolFind : public tool_test::Tool {
  protected:
    cRun find(std::string const &bytes, std::vector<std::string> arguments) const {
        write("f", bytes);
        arguments.insert(arguments.begin(), {"find", "f"});
        return run(std::move(arguments));
    }
    // With this pattern the command succeeds and prints this.
    std::string found(std::string const &bytes, std::string const &pattern) const {
        cRun const run = find(bytes, {pattern});
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.status, run.out.empty() ? 1 : 0);
        return run.out;
    }
    // The value of the text, independent of layout and comments.
    std::string value_of(std::string const &bytes) const {
        write("v", bytes);
        cRun const run = this->run({"to-json", "--compact", "v"});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    }
    // Passes these statements to `set`, which must not change the value. Comments may be lost.
    void expect_taken(std::string const &bytes, std::string const &statements) const {
        write("f", bytes);
        cRun const set = run({"set", "--reformat", "f", statements});
        EXPECT_NE(set.status, 2) << statements << set.err;
        std::istringstream reported(set.err);
        for (std::string line; std::getline(reported, line);)
            EXPECT_NE(line.find("this comment would be lost: "), std::string::npos) << line;
        EXPECT_EQ(value_of(set.out), value_of(bytes)) << statements;
    }
    void expect_all_taken(std::string const &bytes) const {
        std::string const all = found(bytes, "*?");
        ASSERT_NE(all, "");
        expect_taken(bytes, all);
    }
    // Each line, or every n-th.
    void expect_each_taken(std::string const &bytes, size_t step = 1) const {
        std::string const all = found(bytes, "*?");
        ASSERT_NE(all, "");
        for (size_t at = 0, end = 0, line = 0; at < all.size(); at = end + 2, ++line) {
            end = all.find(";\n", at);
            if (line % step == 0) expect_taken(bytes, all.substr(at, end + 1 - at));
        }
    }
};

TEST_F(ToolFind, keys_and_strings_must_match_completely) {
    std::string const text =
        "{hum= 1; humid= 2; a= hum; b= ahum; c= 'hum '; d= {hum= x; e= [hum]}}";
    EXPECT_EQ(found(text, "hum"), "hum = 1;\na = hum;\nd/hum = x;\nd/e/0 = hum;\n");
    EXPECT_EQ(found(text, "?hum"), "b = ahum;\n");
    EXPECT_EQ(found(text, "{*hum,*hum*?}"),
              "hum = 1;\nhumid = 2;\na = hum;\nb = ahum;\nc = \"hum \";\nd/hum = x;\n"
              "d/e/0 = hum;\n");
    EXPECT_EQ(found(text, "hu"), "");
    EXPECT_EQ(found(text, "hum."), "");
}

TEST_F(ToolFind, an_entry_is_printed_once) { EXPECT_EQ(found("{a= a}", "a"), "a = a;\n"); }

TEST_F(ToolFind, first_uses_the_first_matching_alternative) {
    std::string const text = "{k= abcabc; l= abc; m= ab}";
    EXPECT_EQ(find(text, {"a*c"}), (cRun{0, "k = abcabc;\nl = abc;\n", ""}));
    EXPECT_EQ(find(text, {"--first", "a*c"}), (cRun{0, "l = abc;\n", ""}));
    EXPECT_EQ(find(text, {"{ab,abc}"}), (cRun{0, "l = abc;\nm = ab;\n", ""}));
    EXPECT_EQ(find(text, {"{ab,abc}", "--first"}), (cRun{0, "m = ab;\n", ""}));
}

TEST_F(ToolFind, strings_are_printed_as_in_the_file) {
    std::string const text = "{a= 0x10; b= 1.5; c= 1.5f; d= true; e= 'x \"y\"'; f= 'true'; g= -5}";
    EXPECT_EQ(found(text, "16"), "a = 16;\n");
    EXPECT_EQ(found(text, "1.50000"), "b = 1.50000;\n");
    EXPECT_EQ(found(text, "1.5*f"), "c = 1.50000f;\n");
    EXPECT_EQ(found(text, "true"), "d = true;\nf = \"true\";\n");
    EXPECT_EQ(found(text, "x \"y\""), "e = \"x \\\"y\\\"\";\n")
        << "a string matches by its characters, not by its text";
    EXPECT_EQ(found(text, "[\\-]5"), "g = -5;\n");
    EXPECT_EQ(find(text, {"--", "-5"}), (cRun{0, "g = -5;\n", ""}));
    EXPECT_EQ(found("{a= 0.1234567890123}", "0.12345*[0-9]"), "a = 0.1234567890123;\n");
}

TEST_F(ToolFind, bytes_from_128_on_can_be_matched) {
    EXPECT_EQ(found("{a= '\xC3\xA4'; '\xC3\xA4'= 1}", "\xC3?"),
              "a = \"\xC3\xA4\";\n\"\xC3\xA4\" = 1;\n");
    EXPECT_EQ(found("{a= '\xE4'; b= e}", "[\xE0-\xEF]"), "a = \"\xE4\";\n");
}

TEST_F(ToolFind, constants_are_printed_with_and_assign) {
    std::string const text = "{a= #true; b= #nil; c= [#false, x]; '#true'= 1}";
    EXPECT_EQ(found("{a= #true; b= #nil; c= #nil}", "#*?"),
              "a &= #true;\nb &= #nil;\nc &= #nil;\n");
    EXPECT_EQ(found("{a= [[#nil]]; b= [[x]]}", "[ab]"), "a &= [[#nil, ], ];\nb = [[x, ], ];\n");
    expect_each_taken("{a= #true; b= #nil; c= [#false, x]; d= {e= <#true, y>}}");
}

TEST_F(ToolFind, containers_are_found_by_their_key_on_one_line) {
    std::string const text = "{ // one\n  a= { // two\n    b= 1; // three\n    c= [\n      x, // "
                             "four\n      <y>,\n    ];\n  }; // five\n  d= {};\n}";
    EXPECT_EQ(found(text, "a"), "a = {b= 1; c= [x, <y, >, ]; };\n");
    EXPECT_EQ(found(text, "[cd]"), "a/c = [x, <y, >, ];\nd = {};\n");
    EXPECT_EQ(found("{a= [{b= [{\na= 1;\n}]}]}", "a"),
              "a = [{b= [{a= 1; }, ]; }, ];\na/0/b/0/a = 1;\n");
}

TEST_F(ToolFind, containers_that_do_not_fit_on_one_line_have_no_comments_either) {
    std::string const text =
        "{a= { // one\n  b= 'x\\\ny'; // two\n  c= 1; /* three */\n}; // four\n"
        "d= {M= choice({u= 0; v= 1; }); w= 2; // five\n}}";
    EXPECT_EQ(found(text, "a"), "a = {\n  b= \"x\\\ny\";\n  c= 1;\n};\n");
    EXPECT_EQ(found(text, "d").find("five"), std::string::npos);
    expect_all_taken(text);
}

TEST_F(ToolFind, indices_are_not_keys) {
    EXPECT_EQ(found("{a= [x, y]; s= <u, v>; 0= z}", "0"), "0 = z;\n");
    EXPECT_EQ(found("{a= [x, 1, 0]; s= <u, 0>}", "0"), "a/2 = 0;\ns/1 = 0;\n");
}

TEST_F(ToolFind, odd_keys_are_quoted_in_paths) {
    std::string const text = "{'two words'= {'a/b'= x; \"it's\"= x; 'q\"q'= x; 7= {-1= x}; 2.5= x; "
                             "'true'= x; ''= x; 'back\\\\slash'= x}}";
    EXPECT_EQ(found(text, "x"),
              "\"two words\"/\"a/b\" = x;\n\"two words\"/\"it\\'s\" = x;\n"
              "\"two words\"/\"q\\\"q\" = x;\n\"two words\"/7/-1 = x;\n"
              "\"two words\"/2.50000 = x;\n\"two words\"/\"true\" = x;\n\"two words\"/\"\" = x;\n"
              "\"two words\"/\"back\\\\slash\" = x;\n");
    EXPECT_EQ(found(text, "back\\\\slash"), "\"two words\"/\"back\\\\slash\" = x;\n");
    EXPECT_EQ(found(text, "?/?"), "\"two words\"/\"a/b\" = x;\n") << "keys match as plain text";
    expect_each_taken(text);
}

TEST_F(ToolFind, a_line_feed_in_a_string_is_preserved) {
    std::string const text = "{a= 'x\\\ny'; b= {c= 'z\\\n'; d= 1}; 'k\\\nl'= 2}";
    EXPECT_EQ(found(text, "x?y"), "a = \"x\\\ny\";\n");
    EXPECT_EQ(found(text, "x\ny"), "a = \"x\\\ny\";\n");
    EXPECT_EQ(found(text, "k?l"), "\"k\\\nl\" = 2;\n");
    expect_all_taken(text);
}

TEST_F(ToolFind, only_the_empty_pattern_matches_an_empty_string) {
    std::string const text = "{a= ''; ''= 1; b= x}";
    EXPECT_EQ(found(text, ""), "a = \"\";\n\"\" = 1;\n");
    EXPECT_EQ(found(text, "?"), "a = \"\";\n\"\" = 1;\nb = x;\n");
    EXPECT_EQ(found("{aa= ''}", "{}"), "");
    EXPECT_EQ(found("{aa= ''}", "{,b}"), "");
}

TEST_F(ToolFind, a_file_may_be_a_single_value) {
    EXPECT_EQ(found("hum", "h*m"), "hum;\n");
    EXPECT_EQ(found("hum", "x"), "");
    EXPECT_EQ(found("[hum]", "hum"), "0 = hum;\n");
    EXPECT_EQ(found("{}", "*?"), "");
    EXPECT_EQ(found("''", ""), "\"\";\n");
}

// --- shared values ---

TEST_F(ToolFind, a_shared_value_is_searched_at_its_first_path) {
    std::string const text = "{a= [x, y]; b= {c= #cRef(/a)}; d= #cRef(/a/0)}";
    EXPECT_EQ(found(text, "x"), "a/0 = x;\n");
    EXPECT_EQ(found(text, "[bcd]"), "b = {c= [x, y, ]; };\nb/c = [x, y, ];\nd = x;\n")
        << "keys are found on every level";
    expect_each_taken(text);
}

TEST_F(ToolFind, sharing_inside_a_match_is_preserved) {
    std::string const text = "{a= {b= [1]; c= #cRef(/a/b)}; d= {e= {f= #cRef(/a)}}}";
    EXPECT_EQ(found(text, "[ade]"), "a = {b= [1, ]; c= #cRef(/b); };\n"
                                    "d = {e= {f= {b= [1, ]; c= #cRef(/e/f/b); }; }; };\n"
                                    "d/e = {f= {b= [1, ]; c= #cRef(/f/b); }; };\n");
    expect_each_taken(text);
}

TEST_F(ToolFind, values_shared_many_times_take_little_time) {
    std::string text = "{m0= {n= hum}";
    for (int i = 1; i < 60; ++i) {
        std::string const before = "#cRef(/m" + std::to_string(i - 1) + ")";
        text += "; m" + std::to_string(i) + "= {l= " + before + "; r= " + before + "}";
    }
    text += "}";
    EXPECT_EQ(found(text, "hum"), "m0/n = hum;\n");
    cRun const all = find(text, {"[lr]"});
    EXPECT_EQ(all.status, 0) << all.err;
}

// --- declared types ---

TEST_F(ToolFind, objects_of_declared_types_have_keys) {
    std::string const text =
        "{Mode= choice({off= 0; eco= 1; }); Axis= attlist(name= attspec(type= string); limit= "
        "attspec(type= int; default= 10); mode= attspec(type= Mode; flag= #IMPLIED));\n"
        " x= Axis(name= eco; mode= Mode(eco)); y= [Axis(name= y; limit= 5)]}";
    EXPECT_EQ(found(text, "limit"), "x/limit = 10;\ny/0/limit = 5;\n")
        << "keys in the declaration are not found";
    EXPECT_EQ(found(text, "x"), "x = Axis(name= eco; limit= 10; mode= Mode(eco); );\n");
    EXPECT_EQ(found(text, "eco"), "x/name = eco;\n")
        << "the choice in the declaration is not found";
    EXPECT_EQ(found(text, "*(eco)"), "x/mode = Mode(eco);\n");
    EXPECT_EQ(found(text, "Axis"), "");
    expect_each_taken(text);
}

TEST_F(ToolFind, a_key_that_cannot_be_in_a_path_is_reported) {
    std::string const text = "{n= intf(0x10); m= {intf(0x1F)= {a= hum}; 2= hum; 2.5f= hum}}";
    cRun const run = find(text, {"hum"});
    EXPECT_EQ(run.out, "m/intf(0x1F)/a = hum;\nm/2 = hum;\nm/2.50000f = hum;\n");
    EXPECT_EQ(run.err, "f: warning: m/intf(0x1F)/a: set accepts no path with a key of type intf\n");
    EXPECT_EQ(run.status, 0);
    expect_taken(text, run.out.substr(run.out.find('\n') + 1));
    EXPECT_EQ(found(text, "n"), "n = intf(0x10);\n");
}

TEST_F(ToolFind, values_of_module_types_are_found) {
    std::string const text = "{sky= color(0 0 255); flag= palette(sun= '#ffff00')}";
    write("f", text);
    std::string const module = test::binary_file("bin/modules/colour");
    EXPECT_EQ(run({"--module", module, "find", "f", "color(*)"}),
              (cRun{0, "sky = color(0 0 255);\nflag/sun = color(255 255 0);\n", ""}));
    EXPECT_EQ(run({"find", "f", "sun", "--module", module}),
              (cRun{0, "flag/sun = color(255 255 0);\n", ""}));
    EXPECT_EQ(find(text, {"sun"}).status, 2) << "the module with the types is not loaded";
}

// --- input for set ---

TEST_F(ToolFind, set_accepts_all_lines_of_the_examples) {
    for (char const *const name : {"device", "settings", "testplan", "waterworks"}) {
        SCOPED_TRACE(name);
        expect_all_taken(
            tool_test::bytes_of(test::source_file("examples/" + std::string(name) + ".attr")));
    }
    size_t files = 0;
    for (auto const &entry : std::filesystem::directory_iterator(test::source_file("examples")))
        files += entry.path().extension() == ".attr";
    EXPECT_EQ(files, 4u) << "a new example is missing in the list above";
}

TEST_F(ToolFind, set_accepts_a_single_line_of_an_example) {
    expect_each_taken(tool_test::bytes_of(test::source_file("examples/settings.attr")), 4);
}

TEST_F(ToolFind, a_changed_line_sets_the_value) {
    std::string const line = found("{a= {b= [1, 2]}}", "2");
    EXPECT_EQ(line, "a/b/1 = 2;\n");
    EXPECT_EQ(run({"set", "f", "a/b/1 = 3;\n"}), (cRun{0, "{a= {b= [1, 3]}}", ""}));
}

// --- nothing found, and errors ---

TEST_F(ToolFind, no_match_gives_status_1_and_no_output) {
    EXPECT_EQ(find("{a=1}", {"x"}), (cRun{1, "", ""}));
    EXPECT_EQ(find("{}", {""}), (cRun{1, "", ""}));
}

TEST_F(ToolFind, a_star_at_the_end_is_reported) {
    std::string const text = "{hum= 1; humidity= 2}";
    auto const reported = [](std::string const &column, std::string const &advice) {
        return cRun{1, "",
                    "pattern:1:" + column +
                        ": error: this * never matches the last character of a string, so the "
                        "pattern matches no whole string\npattern:1:" +
                        column + ": note: write " + advice + "\n"};
    };
    EXPECT_EQ(find(text, {"hum*"}), reported("4", "'hum*?'"));
    EXPECT_EQ(find(text, {"*"}), reported("1", "'*?'"));
    EXPECT_EQ(find(text, {"[*]{*}\\*h**"}), reported("11", "'[*]{*}\\*h**?'"));
    EXPECT_EQ(find(text, {"--first", "hum*"}), reported("4", "'hum*?', and leave out --first"));
    EXPECT_EQ(found(text, "hum*?"), "humidity = 2;\n");
    EXPECT_EQ(found("{'h*'= 1}", "h\\*"), "\"h*\" = 1;\n");
    EXPECT_EQ(found("{'h*'= 1}", "h[*]"), "\"h*\" = 1;\n");
}

TEST_F(ToolFind, other_patterns_without_matches_are_reported) {
    auto const reported = [](std::string const &column, std::string const &what,
                             std::string const &c) {
        return cRun{1, "",
                    "pattern:1:" + column + ": error: this " + what +
                        ", so the pattern matches no whole string\npattern:1:" + column +
                        ": note: write \\" + c + " for the character " + c + " itself\n"};
    };
    EXPECT_EQ(find("{a=1}", {"a["}), reported("2", "[ is not closed", "["));
    EXPECT_EQ(find("{a=1}", {"a[b\\]"}), reported("2", "[ is not closed", "["));
    EXPECT_EQ(find("{a=1}", {"{a,{b}"}), reported("1", "{ is not closed", "{"));
    EXPECT_EQ(find("{a=1}", {"{a,b\\}"}), reported("1", "{ is not closed", "{"));
    EXPECT_EQ(find("{a=1}", {"{[}]"}), reported("1", "{ is not closed", "{"));
    EXPECT_EQ(find("{a=1}", {"a\\"}),
              reported("2", "\\ ends the match before the end of the string", "\\"));
    EXPECT_EQ(find("{a=1}", {"a\n["}).err.substr(0, 13), "pattern:2:1: ");
    EXPECT_EQ(found("{']}'= 1}", "]}"), "\"]}\" = 1;\n");
}

TEST_F(ToolFind, a_backslash_after_alternatives_may_match_the_end_of_the_string) {
    EXPECT_EQ(found("{ab= 1; x= abc}", "{x,ab}\\"), "ab = 1;\nx = abc;\n");
    EXPECT_EQ(found("{ab= 1}", "{{a}b}\\"), "ab = 1;\n");
    EXPECT_EQ(find("{'}'= 1}", {"}\\"}).err.substr(0, 17), "pattern:1:2: erro")
        << "the pattern has no alternatives";
    EXPECT_EQ(find("{ab= 1}", {"{ab}b\\"}).err.substr(0, 17), "pattern:1:6: erro");
    EXPECT_EQ(find("{ab= 1}", {"{{ab}\\"}).err.substr(0, 17), "pattern:1:6: erro");
}

TEST_F(ToolFind, a_file_with_errors_prints_nothing) {
    EXPECT_EQ(find("{a=1;b=foo(2)}", {"a"}),
              (cRun{2, "",
                    "f:1:8: error: Value with unknown type='foo [0x40000005]\n"
                    "f:1:8: note: 1 more error follows from it\n"}));
    EXPECT_EQ(find("", {"a"}), (cRun{2, "", "f: error: the file is empty\n"}));
    EXPECT_EQ(find("{a=1;b=foo(2)}", {"a*"}), find("{a=1;b=foo(2)}", {"a"}))
        << "errors of the file are reported before those of the pattern";
    EXPECT_EQ(run({"find", "nowhere", "a"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
    EXPECT_EQ(run({"find", "-", "a"}, {.input = "{a=1}"}), (cRun{0, "a = 1;\n", ""}));
}

TEST_F(ToolFind, an_unwritable_match_is_an_error) {
    std::string const text = "{P= attlist(x= attspec(type= int)); d= {y= P(x= 1); z= 2}; "
                             "P= attlist(w= attspec(type= int)); e= 5}";
    EXPECT_EQ(
        find(text, {"[de]"}),
        (cRun{2, "e = 5;\n", "f: error: d: Value cannot be written, path : /y [0x40000001]\n"}));
    EXPECT_EQ(found(text, "2"), "d/z = 2;\n");
}

TEST_F(ToolFind, usage_errors_are_reported) {
    EXPECT_EQ(run({"find"}), usage_error("find", "FILE is required"));
    EXPECT_EQ(run({"find", "f"}), usage_error("find", "PATTERN is required"));
    EXPECT_EQ(run({"find", "f", "a", "b"}), usage_error("find", "unexpected argument 'b'"));
}

// --- size ---

TEST_F(ToolFind, a_file_may_have_160000_keys) {
    std::string text = "{\n";
    for (int i = 0; i < 160000; ++i)
        text += "key_" + std::to_string(i) + "= " + std::to_string(i) + ";\n";
    EXPECT_EQ(found(text + "}", "*_15999[89]"), "key_159998 = 159998;\nkey_159999 = 159999;\n");
}

TEST_F(ToolFind, a_file_may_be_as_deep_as_can_be_read) {
    std::string const text = times("{n= ", 999) + "hum" + times(";}", 999);
    EXPECT_EQ(found(text, "h*m"), "n" + times("/n", 998) + " = hum;\n");
    EXPECT_EQ(found(text, "x*m"), "");
}

TEST_F(ToolFind, references_may_make_a_path_very_long) {
    std::string text = "{m0= {n= hum}";
    for (int i = 1; i < 3000; ++i)
        text += "; m" + std::to_string(i) + "= {n= #cRef(/m" + std::to_string(i - 1) + ")}";
    EXPECT_EQ(found(text + "; last= #cRef(/m0/n)}", "hum"), "m0/n = hum;\n");
    EXPECT_EQ(found(text + "}", "m2"), "m2 = {n= {n= {n= hum; }; }; };\n");
}

TEST_F(ToolFind, patterns_may_match_in_many_ways) {
    std::string const value = times("a", 60);
    EXPECT_EQ(found("{k= " + value + "}", times("*a", 40)), "k = " + value + ";\n");
    EXPECT_EQ(found("{k= " + value + "}", times("*a", 40) + "b"), "");
    EXPECT_EQ(found("{k= " + value + "}", times("{", 60000) + value + times("}", 60000)),
              "k = " + value + ";\n");
}

} // namespace
