// Comments that a program sets on values of a document, in the text that is saved.

#include "qrv/value/document.h"
#include "tests/text/file/save_support.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using namespace save_test;
using qrv::document, qrv::value;
using testing::HasSubstr;

std::string const text = "// head\n"
                         "{\n"
                         "  a   = 0x10; // one\n"
                         "  b   = 2;\n"
                         "  /* block */ c = 3;\n"
                         "  bus = { baud = 4800; parity = even; }; // map\n"
                         "  list = [\n"
                         "    1, // first\n"
                         "       // goes on\n"
                         "    2\n"
                         "  ];\n"
                         "\n"
                         "  // the same\n"
                         "  r = #cRef(/list); // ref\n"
                         "  on = true;\n"
                         "}\n"
                         "// end\n";

std::vector<std::string> lines_of(std::string const &in) {
    std::vector<std::string> lines;
    std::istringstream is(in);
    for (std::string line; std::getline(is, line);) lines.push_back(line);
    return lines;
}

// The lines that `change` replaces, and those that replace them.
template <class Change> std::string changed(Change const &change, std::string const &in = text) {
    auto saved = document::parse(in);
    change(saved);
    std::vector<std::string> before = lines_of(in), after = lines_of(saved.text());
    while (!before.empty() && !after.empty() && before.back() == after.back()) {
        before.pop_back();
        after.pop_back();
    }
    auto const [b, a] = std::ranges::mismatch(before, after);
    std::string result;
    for (auto at = b; at != before.end(); ++at) result += "-" + *at + "\n";
    for (auto at = a; at != after.end(); ++at) result += "+" + *at + "\n";
    return result;
}

class Comments : public SaveTest {
  protected:
    ~Comments() override { EXPECT_EQ(log_.take(), ""); } // nothing is printed

  private:
    cMessageLog log_;
};

} // namespace

TEST_F(Comments, a_changed_one_is_replaced) {
    EXPECT_EQ(changed([](value &v) { v["a"].set_comment("uno"); }),
              "-  a   = 0x10; // one\n+  a   = 0x10; // uno\n");
    EXPECT_EQ(changed([](value &v) { v["a"].set_comment("uno\n\ndos"); }),
              "-  a   = 0x10; // one\n+  a   = 0x10; // uno\n"
              "+              //\n+              // dos\n");
    EXPECT_EQ(changed([](value &v) { v["bus"].set_comment("changed"); }),
              "-  bus = { baud = 4800; parity = even; }; // map\n"
              "+  bus = { baud = 4800; parity = even; }; // changed\n");
}

TEST_F(Comments, a_block_stays_one) {
    EXPECT_EQ(changed([](value &v) { v["a"].set_comment("new"); }, "{\n  a= 1; /* old */\n}\n"),
              "-  a= 1; /* old */\n+  a= 1; /* new */\n");
}

// Reading gives them to the value before.
TEST_F(Comments, comments_of_the_next_entry_are_not_replaced) {
    std::string const hand = "{ // root\n"
                             "  // about a\n"
                             "  a= 1; // x\n"
                             "\n"
                             "  // about b, long and important\n"
                             "  b= [\n"
                             "    alpha,\n"
                             "    beta,\n"
                             "    gamma // of gamma\n"
                             "  ];\n"
                             "}\n";
    for (char const *const comment : {"new", ""})
        for (char const *const path : {"", "a", "b/1"}) {
            auto saved = document::parse(hand);
            saved.at(path).set_comment(comment);
            try {
                EXPECT_EQ(saved.text(), hand) << path; // nothing to remove
            } catch (qrv::error const &error) {
                EXPECT_THAT(error.what(), HasSubstr("this comment can't be set")) << path;
            }
        }
}

TEST_F(Comments, an_empty_one_is_removed) {
    EXPECT_EQ(changed([](value &v) { v["a"].set_comment(""); }),
              "-  a   = 0x10; // one\n+  a   = 0x10;\n");
    EXPECT_EQ(changed([](value &v) { v["bus"].set_comment(""); }),
              "-  bus = { baud = 4800; parity = even; }; // map\n"
              "+  bus = { baud = 4800; parity = even; };\n");
}

TEST_F(Comments, a_new_one_is_written_after_its_value) {
    EXPECT_EQ(changed([](value &v) { v["c"].set_comment("new"); }),
              "-  /* block */ c = 3;\n+  /* block */ c = 3; // new\n");
    EXPECT_EQ(changed([](value &v) { v["list"][1].set_comment("last"); }),
              "-    2\n+    2 // last\n");
    EXPECT_EQ(changed([](value &v) { v["on"].set_comment("constant"); }),
              "-  on = true;\n+  on = true; // constant\n");
    EXPECT_EQ(changed([](value &v) { v["bus"]["parity"].set_comment("p"); }),
              "-  bus = { baud = 4800; parity = even; }; // map\n"
              "+  bus = { baud = 4800; parity = even; /* p */ }; // map\n");
}

TEST_F(Comments, one_of_a_container_on_many_lines_is_written_after_its_bracket) {
    EXPECT_EQ(changed([](value &v) { v.set_comment("all"); }), "-{\n+{ // all\n");
}

TEST_F(Comments, values_and_comments_change_together) {
    EXPECT_EQ(changed([](value &v) {
                  v["c"] = 30;
                  v["c"].set_comment("new");
              }),
              "-  /* block */ c = 3;\n+  /* block */ c = 30; // new\n");
    EXPECT_EQ(changed([](value &v) {
                  v.rename("a", "aa");
                  v["aa"].set_comment("renamed");
              }),
              "-  a   = 0x10; // one\n+  aa  = 0x10; // renamed\n");
    EXPECT_EQ(changed([](value &v) {
                  v["z"]["y"]["x"] = 1;
                  v["z"]["y"].set_comment("new");
                  v["z"]["y"]["x"].set_comment("inside");
              }),
              "+  z = {\n+    y = { // new\n+      x = 1; // inside\n+    };\n+  };\n");
}

TEST_F(Comments, a_value_read_from_another_text_keeps_its_comment) {
    EXPECT_EQ(changed([](value &v) { v["k"] = qrv::parse("{ k= 1; // from there\n}")["k"]; }),
              "+  k = 1; // from there\n");
}

TEST_F(Comments, a_replaced_value_without_one_keeps_that_of_the_text) {
    EXPECT_EQ(changed([](value &v) { v["a"] = 17; }),
              "-  a   = 0x10; // one\n+  a   = 0x11; // one\n");
}

TEST_F(Comments, line_ends_are_those_of_the_text) {
    auto saved = document::parse("{\r\n  a= 1; // one\r\n}\r\n");
    saved["a"].set_comment("uno\ndos");
    EXPECT_EQ(saved.text(), "{\r\n  a= 1; // uno\r\n        // dos\r\n}\r\n");
}

TEST_F(Comments, comments_of_the_text_can_be_changed_even_if_they_were_not_read) {
    auto saved = document::parse(text, {.comments = false});
    saved["a"].set_comment("uno");
    EXPECT_THAT(saved.text(), HasSubstr("  a   = 0x10; // uno\n"));
    EXPECT_THAT(saved.text(), HasSubstr("// map\n"));
}

TEST_F(Comments, are_saved_again_and_again) {
    std::string const file = folder_.file("file");
    put(file, text);
    auto saved = document::load(file);
    saved["a"].set_comment("uno");
    saved.save();
    saved["c"].set_comment("tres");
    saved["a"].set_comment("");
    saved.save();
    EXPECT_EQ(document::load(file)["c"].comment(), "tres");
    EXPECT_EQ(document::load(file)["a"].comment(), "");
}

TEST_F(Comments, one_that_cannot_be_written_is_an_error_with_its_path) {
    auto saved = document::parse(text);
    saved["bus"]["baud"].set_comment("ends */ here");
    try {
        static_cast<void>(saved.text());
        FAIL() << "no error";
    } catch (qrv::error const &error) {
        EXPECT_THAT(error.what(), HasSubstr("bus/baud: this comment can't be set"));
    }
}
