// `merge` on handwritten files: which bytes are unchanged, and the layout of entries from the other
// file.

#include "tests/support/strings.h"
#include "tests/tool/tool_run.h"

#include <filesystem>

using tool_test::cRun;

namespace {

std::string const text = "// head\n"
                         "{\n"
                         "    // one\n"
                         "    a    = 0x0A;   // ten\n"
                         "\n"
                         "    // a section\n"
                         "\n"
                         "    kind = rs485;  /* wires */\n"
                         "    m    = { x = 1.50; y = 2 };  // map\n"
                         "    l    = [ 1, 2,  // two\n"
                         "             3 ];\n"
                         "}\n"
                         "// foot\n";

std::string with(std::string const &part, std::string const &other, std::string in = text) {
    return test::with(std::move(in), part, other);
}

std::string with_returns(std::string const &bytes) {
    std::string result;
    for (char const c : bytes) {
        if (c == '\n') result += '\r';
        result += c;
    }
    return result;
}

class ToolMergeText : public tool_test::Tool {
  protected:
    cRun merge(std::string const &target, std::string const &source,
               std::vector<std::string> more = {}) const {
        write("t", target);
        write("s", source);
        more.insert(more.begin(), {"merge", "t", "s"});
        return run(std::move(more));
    }
    std::string merged(std::string const &target, std::string const &source,
                       std::string const &letters = "-xx") const {
        cRun const run = merge(target, source, {"--commands=" + letters});
        EXPECT_EQ(run.status, 0) << letters;
        EXPECT_EQ(run.err, "") << letters;
        return run.out;
    }
};

TEST_F(ToolMergeText, equal_and_unmerged_values_change_no_byte) {
    for (std::string const letters : {"-xx", "-ax", "-sx", "---"})
        EXPECT_EQ(merged(text, "{}", letters), text) << letters;
    EXPECT_EQ(merged(text, "{a= 10; kind= 'rs485'; m= {x= 1.5}}", "-xx"), text);
    EXPECT_EQ(merged(text, "{a= 10; kind= 'rs485'; m= {y= 2.0; x= 1.5}}", "-a-"), text);
    EXPECT_EQ(merged(text, "{a= 11; new= 1}", "---"), text);
    EXPECT_EQ(merged(with_returns(text), "{}"), with_returns(text));
}

TEST_F(ToolMergeText, a_changed_value_preserves_its_comments_and_its_spelling) {
    EXPECT_EQ(merged(text, "{ // other\n a= 31; // new\n m= {x= 3.0; }}"),
              with("0x0A", "0x1F", with("1.50", "3.00")));
    EXPECT_EQ(merged(text, "{a= 31; // new\n}", "-s-"), with("0x0A", "0x1F"));
    EXPECT_EQ(merged(text, "{kind= 'two words'}"), with("rs485", "\"two words\""));
}

TEST_F(ToolMergeText, a_new_key_has_its_comments_and_the_layout_of_its_neighbours) {
    EXPECT_EQ(merged(text, "{\n// above\n  /* and more */\nnew=7 /* seven */;// after\n}"),
              with("3 ];\n", "3 ];\n"
                             "    // above\n"
                             "    /* and more */\n"
                             "    new  = 7 /* seven */;// after\n"));
    EXPECT_EQ(merged(text, "{m= {z= 3 /* three */}}"),
              with("y = 2 }", "y = 2; z = 3 /* three */ }"));
    EXPECT_EQ(merged(text, "{\n\t'odd key'\t= {\n\t\t// in it\n\t\tq= 0x1;\n\n\t\t// last\n\t}; "
                           "// odd\n}"),
              with("3 ];\n", "3 ];\n"
                             "    'odd key' = {\n"
                             "    \t// in it\n"
                             "    \tq= 0x1;\n"
                             "\n"
                             "    \t// last\n"
                             "    }; // odd\n"));
}

TEST_F(ToolMergeText, a_header_or_section_comment_of_the_source_is_not_copied) {
    EXPECT_EQ(merged("{\n  a= 1;\n}\n", "// head\n\n{\n  // section\n\n  b= 2;\n}\n// foot\n"),
              "{\n  a= 1;\n  b= 2;\n}\n");
}

TEST_F(ToolMergeText, line_ends_are_those_of_the_target) {
    EXPECT_EQ(merged(with_returns("{\n  a= 1;\n}\n"), "{\n  // b\n  b= {\n    c= 1;\n  };\n}"),
              with_returns("{\n  a= 1;\n  // b\n  b= {\n    c= 1;\n  };\n}\n"));
    EXPECT_EQ(merged("{\n  a= 1;\n}\n", with_returns("{\n  // b\n  b= {\n    c= 1;\n  };\n}")),
              "{\n  a= 1;\n  // b\n  b= {\n    c= 1;\n  };\n}\n");
}

TEST_F(ToolMergeText, a_map_stays_on_one_line_unless_a_comment_needs_lines) {
    EXPECT_EQ(merged("{a= 1}", "{\n  b= 2;\n  c= 3;\n}"), "{a= 1; b= 2; c= 3}");
    EXPECT_EQ(merged("{a= 1; m= {x= 1}; }", "{m= {\n  y= 2; // two\n  z= 3;\n}; b= 2}"),
              "{a= 1; m= {x= 1;\n    y= 2; // two\n    z= 3\n}; b= 2; }");
    EXPECT_EQ(merged("{}", "{b= 2; /* two */ c= 3}"), "{b= 2; /* two */ c= 3}");
    EXPECT_EQ(merged("{ }\n", "{\n  b= 2; // two\n}"), "{\n    b= 2; // two\n}\n");
    EXPECT_EQ(merged("{ /* none */ }", "{b= 2}"), "{ /* none */ b= 2 }");
}

TEST_F(ToolMergeText, removing_a_key_removes_its_comments) {
    EXPECT_EQ(merged(text, "{kind= can; m= {}; l= []}", "0xx"),
              with("    // one\n    a    = 0x0A;   // ten\n", "", with("rs485", "can")));
    EXPECT_EQ(merged(text, "{kind= 1}", "-0-"), with("    kind = rs485;  /* wires */\n", ""));
    EXPECT_EQ(merged("{ /* a */ a= 1; /* b */ b= 2; /* c */ c= 3 }", "{b= 1}", "-0-"),
              "{ /* a */ a= 1; /* b */ c= 3 }");
}

TEST_F(ToolMergeText, lists_and_sets_are_extended) {
    EXPECT_EQ(merged(text, "{l= [\n // four\n 4, // five\n]}"),
              with("3 ];", "3,\n             // four\n             4 // five\n             ];"));
    EXPECT_EQ(merged("[ 1, // one\n  2, ]", "[ 5, 6 ]", "-ax"), "[ 5, // one\n  6, ]");
    EXPECT_EQ(merged("< a, // one\n  b, >", "< b, c, a >", "-ax"), "< b, // one\n  c, a, >");
    EXPECT_EQ(merged("{s= < a, // one\n  b, >}", "{s= < b, a /* own */ >}", "-ax"),
              "{s= < b, a, // one\n  >}");
}

TEST_F(ToolMergeText, shared_values_remain_shared) {
    EXPECT_EQ(merged("{\n  a= 1;\n}\n", "{\n  p= {x= 1}; // p\n  q= #cRef(/p); // q\n}"),
              "{\n  a= 1;\n  p= {x= 1}; // p\n  q= #cRef(/p); // q\n}\n");
    EXPECT_EQ(merged("{\n  p= {y= 1};\n}\n", "{\n  p= {x= 1}; // p\n  q= #cRef(/p/x); // q\n}"),
              "{\n  p= {y= 1; x= 1};\n  q= #cRef(/p/x); // q\n}\n");
    EXPECT_EQ(merged("{\n  p= {x= 2};\n}\n", "{\n  p= {x= 1}; // p\n  q= #cRef(/p/x); // q\n}"),
              "{\n  p= {x= 1};\n  q= 1; // q\n}\n");
    EXPECT_EQ(merged("{\n  // a\n  a= {x= 1}; // a\n  b= #cRef(/a); // b\n  c= #cRef(/a/x);\n}\n",
                     "{a= 1}", "-0-"),
              "{\n  b= {x= 1}; // b\n  c= #cRef(/b/x);\n}\n");
}

TEST_F(ToolMergeText, a_repeated_key_of_the_source_is_written_once) {
    EXPECT_EQ(merged("{\n  a= 1;\n}\n", "{\n  b= 1; // one\n  b= 2; // two\n}"),
              "{\n  a= 1;\n  b= 2; // one // two\n}\n");
    EXPECT_EQ(merged("{\n  a= 1;\n}\n",
                     "{\n  // first\n  m= {x= 1};\n  // second\n  m= {\n    y= 2; // y\n  };\n}"),
              "{\n  a= 1;\n  // first\n  // second\n  m= {\n    x= 1;\n    y= 2; // y\n  };\n}\n");
}

TEST_F(ToolMergeText, a_repeated_key_of_the_target_is_merged) {
    std::string const twice = "{\n  m= {x= 1}; // first\n  a= 1;\n  m= {y= 2}; // second\n}\n";
    EXPECT_EQ(merged(twice, "{m= {x= 5; y= 6; z= 7 /* z */}}"),
              "{\n  m= {x= 5}; // first\n  a= 1;\n  m= {y= 6; z= 7 /* z */}; // second\n}\n");
    EXPECT_EQ(merged(twice, "{m= 1}", "-0-"), "{\n  a= 1;\n}\n");
}

TEST_F(ToolMergeText, types_are_written_before_their_values) {
    std::string const types = "  // a mode\n  Mode= choice({off= 0; on= 1}); // of ports\n"
                              "  P= attlist(n= attspec(type=int; default=3;); // count\n"
                              "    m= attspec(type=Mode; default=Mode(off)));\n";
    EXPECT_EQ(merged("{\n  a= 1;\n}\n", "{\n" + types + "  p= P( n = 4 /* four */ ); // p\n}\n"),
              "{\n  a= 1;\n" + types + "  p= P( n = 4 /* four */ ); // p\n}\n");
    EXPECT_EQ(merged("{\n" + types + "  p= P(n = 1); // p\n}\n",
                     "{\n" + types + "  p= P(m = Mode(on));\n  q= P(); // q\n}\n"),
              "{\n" + types + "  p= P(n = 3; m = Mode(on)); // p\n  q= P(); // q\n}\n");
}

TEST_F(ToolMergeText, constants_are_merged_with_their_comments) {
    EXPECT_EQ(
        merged("{\n  a= 1;\n}\n", "{\n  b= #true; // b\n  c= #true; // c\n  l= [#nil]; // l\n}"),
        "{\n  a= 1;\n  b= #true; // b\n  c= #true; // c\n  l= [#nil]; // l\n}\n");
    EXPECT_EQ(
        merged("{\n  b= 5;\n  c= 1; // own\n}\n", "{\n  b= #nil; // b\n  c= #nil; // c\n}", "-s-"),
        "{\n  b= #nil; // b\n  c= #nil; // own\n}\n");
}

TEST_F(ToolMergeText, a_value_that_replaces_one_without_a_comment_keeps_its_comment) {
    EXPECT_EQ(
        merged("{\n  a= 1;\n  m= {x= 1}; // m\n}\n",
               "{\n  // above\n  a= 2; // after\n  m= {\n    // in it\n    x= 2; // x\n  };\n}",
               "-s-"),
        "{\n  // above\n  a= 2; // after\n  m= {\n  // in it\n  x= 2 // x\n  }; // m\n}\n");
    EXPECT_EQ(merged("{a= 1; b= 2}", "{\n  a= 3; // three\n}", "-s-"), "{a= 3; // three\nb= 2}");
}

TEST_F(ToolMergeText, text_after_the_value_stays) {
    EXPECT_EQ(merged("{a= 1} rest // end\n", "{a= 2}"), "{a= 2} rest // end\n");
}

TEST_F(ToolMergeText, in_place_needs_no_force_and_repeating_it_changes_nothing) {
    std::string const wanted =
        with("0x0A", "0x0B", with("3 ];\n", "3 ];\n    new  = { q = 1; }; // new\n"));
    std::string const source = "{ a= 11; new= { q = 1; }; // new\n}";
    EXPECT_EQ(merge(text, source, {"-i", "--backup"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("t"), wanted);
    EXPECT_EQ(read("t~"), text);
    EXPECT_EQ(run({"merge", "-i", "t", "s"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("t"), wanted);
    EXPECT_EQ(run({"merge", "--diff", "t", "s"}), (cRun{0, "", ""}));
}

TEST_F(ToolMergeText, a_diff_is_printed) {
    EXPECT_EQ(merge("{\n  a= 1; // one\n}\n", "{\n  a= 2; b= 3; // three\n}", {"--diff"}),
              (cRun{1,
                    "--- t\n+++ t\n@@ -1,3 +1,4 @@\n {\n-  a= 1; // one\n+  a= 2; // one\n"
                    "+  b= 3; // three\n }\n",
                    ""}));
}

TEST_F(ToolMergeText, an_error_leaves_the_file_unchanged) {
    EXPECT_EQ(
        merge(text, "{\n  new= 1; // new\n  a= word;\n}", {"-i"}),
        (cRun{2, "", "s:3:6: error: at /a: it is an int and cannot store a string as it is\n"}));
    EXPECT_EQ(read("t"), text);
}

TEST_F(ToolMergeText, the_examples_and_handwritten_files_can_be_merged) {
    std::vector<std::string> files;
    for (std::string const folder : {"examples", "tests/tool/data/hand"})
        for (auto const &entry : std::filesystem::directory_iterator(test::source_file(folder)))
            if (entry.path().extension() == ".attr") files.push_back(entry.path().string());
    EXPECT_GT(files.size(), 5u);
    std::string const source =
        "{\n  // added\n  added_by_merge= {\n    q= 1; // q\n  }; // end\n}\n";
    for (std::string const &file : files) {
        std::string const target = tool_test::bytes_of(file);
        EXPECT_EQ(merged(target, "{}"), target) << file;
        std::string const result = merged(target, source);
        write("new", result);
        EXPECT_EQ(run({"get", "new", "added_by_merge"}).out, "{\n  q= 1; // q\n}\n") << file;
        cRun const diff = run({"merge", "t", "s", "--diff"});
        size_t removed = 0; // a delimiter is added to a last entry without one
        for (size_t at = diff.out.find("\n+++");
             (at = diff.out.find("\n-", at + 1)) != std::string::npos;)
            ++removed;
        EXPECT_LE(removed, 1u) << file << diff.out;
        EXPECT_EQ(merged(result, source), result) << file;
    }
}

// --- comments that do not belong to an entry ---

std::string const sections = "// header\n"
                             "{\n"
                             "  // about all\n"
                             "\n"
                             "  a = 1;\n"
                             "\n"
                             "  // --- timing ---\n"
                             "\n"
                             "  // how long\n"
                             "  wait = 5; // s\n"
                             "  retry = 3;\n"
                             "\n"
                             "  // --- known ---\n"
                             "\n"
                             "  b = {\n"
                             "    x = 1;\n"
                             "\n"
                             "    // inner\n"
                             "\n"
                             "    y = 2;\n"
                             "  };\n"
                             "  // trailing\n"
                             "}\n"
                             "// end\n";

TEST_F(ToolMergeText, a_section_comment_is_copied_with_the_new_entry_below_it) {
    EXPECT_EQ(merged("{\n\ta = 0;\n\tb = {\n\t\tx = 0;\n\t};\n}\n", sections),
              "{\n\ta = 1;\n\tb = {\n\t\tx = 1;\n\n\t\t// inner\n\n\t\ty = 2;\n\t};\n"
              "\n\t// --- timing ---\n\n\t// how long\n\twait = 5; // s\n\tretry = 3;\n}\n");
    EXPECT_EQ(
        merged("{\n  wait = 4;\n}\n", "{ a = 1;\n\n // --- timing ---\n\n wait = 5; b = 2; }"),
        "{\n  wait = 5;\n  a = 1;\n  b = 2;\n}\n");
}

TEST_F(ToolMergeText, header_and_footer_of_the_source_are_not_copied) {
    std::string const inside = sections.substr(sections.find("  a = 1"));
    std::string const body = inside.substr(0, inside.find("  // trailing"));
    EXPECT_EQ(merged("// mine\n{\n}\n", sections).substr(0, 12), "// mine\n{\n  ");
    EXPECT_EQ(merged("{\n  z = 0;\n}\n", sections), "{\n  z = 0;\n" + body + "}\n");
}

} // namespace
