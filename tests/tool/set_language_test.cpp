// `set` accepts the assignment lists that the library executes without an error, and has the same
// result, except where the library would silently ignore, truncate or omit something.

#include "qrv/core/cobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"

#include <random>

using tool_test::cRun;

namespace {

class ToolSetLanguage : public tool_test::Tool {
  protected:
    // The library's result for the file "f"; empty if it fails or reports an error.
    std::string by_library(std::string const &bytes, std::string const &statements) const {
        cErrorLog const errors;
        cat::ReadReport const report;
        objref value;
        EXPECT_EQ(cObj::readobj(bytes.c_str(), value), 0);
        bool const done = value->setattrp(statements, true);
        if (!done || !report.empty() || errors.count() != 0) return "";
        cat::ExactText const exact;
        return cat::as_text(value) + "\n";
    }

    // Both have the same result, or the tool reports a reason that only it has.
    bool agree(std::string const &statements) const {
        cRun const tool = run({"set", "--reformat", "f", "--", statements});
        std::string const library = by_library(read("f"), statements);
        if (tool.status == 0) {
            EXPECT_EQ(tool.out, library) << statements;
            EXPECT_EQ(tool.err, "") << statements;
            return true;
        }
        EXPECT_EQ(tool.status, 2) << statements << tool.err;
        EXPECT_NE(tool.err, "") << statements;
        EXPECT_EQ(tool.out, "") << statements;
        if (library.empty()) return false;
        bool own_reason = false;
        for (char const *reason :
             {"this comment", "is missing after", "is not a value", "cannot follow a value",
              "outside of strings", "would be stored", "would be cut", "which cannot be assigned",
              "as it is", "+= adds the values", "keys would be lost", "cannot be written",
              "too large", "it holds"})
            own_reason = own_reason || tool.err.find(reason) != std::string::npos;
        EXPECT_TRUE(own_reason) << statements << "\n" << tool.err << library;
        return false;
    }
};

std::string const file = "{i= 1; d= 2.5; s= x; m= {a= 1; b= {c= 2; }; }; v= [1, [2, 3], {k= 4; }]; "
                         "e= <1, x>; n= #nil; r= #cRef(/m/b)}";

TEST_F(ToolSetLanguage, tool_and_library_accept_the_same_statements) {
    write("f", file);
    for (char const *statements : {"",
                                   ";",
                                   "i = 2",
                                   "/i = 2",
                                   ";;i=2,,s=y;",
                                   "i=-5",
                                   "i=+5",
                                   "i = 0x10",
                                   "d=1.0e5",
                                   "m/a=2",
                                   "m / b / c = 5",
                                   "/m/b/c=5;",
                                   "'m'/\"a\" = 3",
                                   "v/0 = 2",
                                   "v/1/1 = 4",
                                   "v/2/k = 5",
                                   "new = {}",
                                   "new/x/y = 1",
                                   "new &= [1,[2],{a=1}]",
                                   "m += {z=1}",
                                   "m/b += {c=7;d=8}",
                                   "m2 += {z=1}",
                                   "v << 5",
                                   "v << [1]; v/3/0 = 2",
                                   "v += [1,2]",
                                   "e << 2",
                                   "e += <1, 7>",
                                   "s += yz",
                                   "i += 4",
                                   "d += 4",
                                   "i &= x",
                                   "n &= 1",
                                   "m &= #nil",
                                   "r/c = 9",
                                   "m/b/c = 9; r/c = 10",
                                   "r &= 1",
                                   "v/3 = x",
                                   "m = {a=1}",
                                   "v = []",
                                   "v = [1]",
                                   "e = <5>",
                                   "/",
                                   "x = true",
                                   "x = #true",
                                   "x=1.5f",
                                   "x = 5u",
                                   "a=int(5)",
                                   "a=map{x=1}",
                                   "a = \"\"",
                                   "1 = 2",
                                   "-1 = 2",
                                   "1.5 = 2",
                                   "a={b=1;c=[]}\n;d=1",
                                   "a\n=\n1\n",
                                   "a=<>;a<<1;a<<2",
                                   "a=1;a+=1;a=5",
                                   "a&=1;a&=x;a&=[]",
                                   "a = 1;;;b = 2,"})
        EXPECT_TRUE(agree(statements)) << statements;
}

TEST_F(ToolSetLanguage, tool_and_library_refuse_the_same_statements) {
    write("f", file);
    for (char const *statements : {"=",         "= 1",        "a",
                                   "a b",       "a b = 1",    "a/",
                                   "a/ = 1",    "/ = 1",      "a/ /b = 1",
                                   "a == 1",    "a = foo(1)", "a = [1",
                                   "a = {b}",   "a = 1 2",    "a = x y",
                                   "i = x",     "s = 5",      "n = 1",
                                   "i/x = 1",   "v/9 = 1",    "v/x = 1",
                                   "w << 1",    "w += 1",     "w += [1]",
                                   "i << 1",    "s += 5",     "e << 1",
                                   "[1] = 2",   "{} = 1",     "#nil = 1",
                                   "#foo = 1",  "a = #foo",   "a = #cRef(/i)",
                                   "true = 1",  "1x = 2",     "a = 1x",
                                   "a = 'open", "a + 1",      "a += ",
                                   "a - = 1",   "i = 1; b",   "a = 99999999999",
                                   "a(1) = 2",  "a = ]",      "a : 1",
                                   "a = (1)",   "a && 1",     "a < 1"})
        EXPECT_FALSE(agree(statements)) << statements;
}

TEST_F(ToolSetLanguage, tool_and_library_agree_on_random_statements) {
    write("f", file);
    char const *const pieces[] = {
        "i",   "m", "v",     "e",     "new", "s",  "0",  "1",    "a",    "b/c", "'two w'", "/",
        "/",   "=", "=",     "=",     "=",   "&=", "+=", "<<",   ";",    ";",   ",",       "5",
        "2.5", "x", "{a=1}", "[1;2]", "<x>", "{",  "]",  "true", "#nil", "\n",  "int(3)"};
    std::mt19937 random(20240101);
    auto const pick = [&](size_t count) { return random() % count; };
    int const tries = test::sanitized ? 100 : 400;
    int accepted = 0;
    for (int i = 0; i < tries; ++i) {
        std::string statements;
        for (size_t count = 1 + pick(3); count > 0; --count) {
            bool const wild = pick(4) == 0;
            if (wild)
                for (size_t n = pick(7); n > 0; --n)
                    statements += std::string(pieces[pick(std::size(pieces))]) + " ";
            else
                statements += std::string(pieces[pick(11)]) + " " + pieces[13 + pick(7)] + " " +
                              pieces[23 + pick(6)];
            statements += pick(8) == 0 ? " " : ";";
        }
        accepted += agree(statements) ? 1 : 0;
    }
    EXPECT_GT(accepted, tries / 10) << "too few of the random statements are valid";
    EXPECT_LT(accepted, tries - tries / 10) << "too few of the random statements are invalid";
}

} // namespace
