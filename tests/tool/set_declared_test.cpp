// Types given to `set` and `ins` as values: the key declares them, as in a file.

#include "tests/tool/tool_run.h"

namespace {

using tool_test::cRun;

class SetDeclared : public tool_test::Tool {
  protected:
    std::string set(std::string const &text, std::string const &statements) const {
        write("f", text);
        cRun const run = this->run({"set", "f", statements});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

TEST_F(SetDeclared, a_new_type_is_named_by_its_key) {
    EXPECT_EQ(set("{ a = 1; }", "N = choice({off=0; on=1})"),
              "{ a = 1; N = choice({off= 0; on= 1; }); }");
    EXPECT_EQ(set("{ a = 1; }", "a &= choice({off=0; on=1})"),
              "{ a = choice({off= 0; on= 1; }); }");
    EXPECT_EQ(set("{a=1;}", "x/N = choice({off=0; on=1}); y = N(on)"),
              "{a=1; x={\n    N=choice({off= 0; on= 1; });\n}; y=N(on);}");
}

TEST_F(SetDeclared, a_type_can_be_declared_again) {
    EXPECT_EQ(set("{ N = choice({x=0}); m = N(x); }", "N &= choice({x=0; on=1})"),
              "{ N = choice({x= 0; on= 1; }); m = N(x); }");
}

TEST_F(SetDeclared, ins_declares_a_type_before_its_values) {
    write("f", "{ a = 1; }\n");
    EXPECT_EQ(run({"ins", "f", "a", "before", "N", "choice({off=0})"}),
              (cRun{0, "{ N = choice({off= 0; }); a = 1; }\n", ""}));
}

} // namespace
