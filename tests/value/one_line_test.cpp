#include "value/one_line.h"

#include <gtest/gtest.h>

namespace {

using qrv::detail::on_one_line;

TEST(OneLine, entries_are_separated_by_one_blank) {
    EXPECT_EQ(on_one_line("{\n  a= 1;\n  b= {\n      c= [\n          1,\n          2,\n      ]; \n"
                          "  }; \n}"),
              "{a= 1; b= {c= [1, 2, ]; }; }");
    EXPECT_EQ(on_one_line("{\n}"), "{}");
    EXPECT_EQ(on_one_line("x= Axis(\n      n= 7;\n  );"), "x= Axis(n= 7; );");
}

TEST(OneLine, text_on_one_line_stays) {
    for (char const *const text :
         {"", "5", "{a= 1; b= \"two  words\"; }", "<1, 2, >", "#cRef(/a/b)"})
        EXPECT_EQ(on_one_line(text), text);
}

TEST(OneLine, comments_are_omitted) {
    EXPECT_EQ(on_one_line("{ // all\n  a= 1; // \"one\"\n  /* two\n lines */ b= 2;\n}"),
              "{a= 1; b= 2; }");
    EXPECT_EQ(on_one_line("1 // open"), "1");
    EXPECT_EQ(on_one_line("1 /* open"), "1");
}

TEST(OneLine, strings_stay_as_they_are) {
    EXPECT_EQ(on_one_line("[\n  \"a // b\",\n  \"/* \\\" \\\\\",\n  \"a\\\n  b\",\n]"),
              "[\"a // b\", \"/* \\\" \\\\\", \"a\\\n  b\", ]");
    EXPECT_EQ(on_one_line("\"open"), "\"open");
    EXPECT_EQ(on_one_line("\"open\\"), "\"open\\");
}

TEST(OneLine, two_angle_brackets_stay_apart) {
    EXPECT_EQ(on_one_line("<\n    <1, >,\n>"), "< <1, >, >");
}

} // namespace
