// `tokens`: the scanner's dump format.

#include "tests/tool/tool_run.h"

using tool_test::cRun;

namespace {

class ToolTokens : public tool_test::Tool {};

TEST_F(ToolTokens, tokens_of_every_kind_are_listed) {
    EXPECT_EQ(run_on("{a= -5;\n7u 1.5f .5 true 'x y' #nil 12ab += << &= }", {"tokens"}),
              (cRun{0,
                    "TOKEN:123:0:1:0 '{'\n"
                    "TOKEN:264:1:1:1 'a'\n"
                    "TOKEN:61:2:1:2 '='\n"
                    "TOKEN:257:4:1:4 '-5'\n"
                    "TOKEN:59:6:1:6 ';'\n"
                    "TOKEN:258:7:2:0 '7u'\n"
                    "TOKEN:259:10:2:3 '1.5f'\n"
                    "TOKEN:260:15:2:8 '.5'\n"
                    "TOKEN:261:18:2:11 'true'\n"
                    "TOKEN:262:23:2:16 ''x y''\n"
                    "TOKEN:263:29:2:22 '#nil'\n"
                    "TOKEN:267:34:2:27 '12ab'\n"
                    "TOKEN:270:39:2:32 '+='\n"
                    "TOKEN:271:42:2:35 '<<'\n"
                    "TOKEN:272:45:2:38 '&='\n"
                    "TOKEN:125:48:2:41 '}'\n"
                    "TOKEN:0:49:2:42 ''\n",
                    ""}));
}

TEST_F(ToolTokens, all_lists_comments_and_blanks) {
    std::string const text = "[ // x\n\n /* y\n */ 1]\n";
    EXPECT_EQ(run_on(text, {"tokens"}), (cRun{0,
                                              "TOKEN:91:0:1:0 '['\n"
                                              "TOKEN:257:15:4:4 '1'\n"
                                              "TOKEN:93:16:4:5 ']'\n"
                                              "TOKEN:0:17:5:0 ''\n",
                                              ""}));
    EXPECT_EQ(run_on(text, {"tokens", "--all"}), (cRun{0,
                                                       "TOKEN:91:0:1:0 '['\n"
                                                       "TOKEN:265:1:1:1 ' // x'\n"
                                                       "TOKEN:265:6:1:6 '\n\n /* y\n */'\n"
                                                       "TOKEN:266:14:4:3 ' '\n"
                                                       "TOKEN:257:15:4:4 '1'\n"
                                                       "TOKEN:93:16:4:5 ']'\n"
                                                       "TOKEN:266:17:4:6 '\n'\n"
                                                       "TOKEN:0:17:5:0 ''\n",
                                                       ""}));
}

TEST_F(ToolTokens, invalid_bytes_are_listed) {
    EXPECT_EQ(run_on("", {"tokens"}), (cRun{0, "TOKEN:0:0:1:0 ''\n", ""}));
    using namespace std::string_literals;
    EXPECT_EQ(run_on("\xef\0a"s, {"tokens"}), (cRun{0,
                                                    "TOKEN:-17:0:1:0 '\xef'\nTOKEN:0:1:1:1 '\0'\n"
                                                    "TOKEN:264:2:1:2 'a'\nTOKEN:0:3:1:3 ''\n"s,
                                                    ""}));
}

TEST_F(ToolTokens, the_input_may_be_the_standard_input) {
    EXPECT_EQ(run({"tokens", "-"}, {.input = "1"}),
              (cRun{0, "TOKEN:257:0:1:0 '1'\nTOKEN:0:1:1:1 ''\n", ""}));
}

TEST_F(ToolTokens, a_missing_file_is_reported) {
    EXPECT_EQ(run({"tokens", "f"}),
              (cRun{2, "", "f: error: cannot read: No such file or directory\n"}));
}

TEST_F(ToolTokens, long_strings_are_listed) {
    for (size_t const size : {65533U, 65534U, 65535U, 200000U}) {
        std::string const text = "\"" + tool_test::times("x", size) + "\"";
        EXPECT_EQ(run_on("[" + text + "]", {"tokens"}),
                  (cRun{0,
                        "TOKEN:91:0:1:0 '['\nTOKEN:262:1:1:1 '" + text + "'\nTOKEN:93:" +
                            std::to_string(size + 3) + ":1:" + std::to_string(size + 3) +
                            " ']'\nTOKEN:0:" + std::to_string(size + 4) +
                            ":1:" + std::to_string(size + 4) + " ''\n",
                        ""}));
    }
}

} // namespace
