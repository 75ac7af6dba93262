// Fault sweeps: text with every construct, truncated after every character, and with every error
// thrown. Afterwards no object is left and the next text is read correctly.

#include "containers/cmergebudget.h"
#include "qrv/core/ceros.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"
#include "tests/text/throwing_support.h"

using reader_test::cThrowing;
using reader_test::Reading;

namespace {

// Each kind of token, container, bracket and error.
std::string const rich = "// head\n"
                         "{ name = \"Line \\\"1\\\"\"; count = -3; // pieces\n"
                         "  hex = 0x1f; u = 7u; gain = 1.5e2; ratio = .25f; on = true;\n"
                         "  'my key' = [1; 2, {x = <a; b; a>}]; 1.5 = #nil;\n"
                         "  t = int(5 /* typed */); d = double{2}; s = string<a <b>>;\n"
                         "  ref = #cRef(/my key); again = #cRef(/count); c = #REQUIRED;\n"
                         "  count = 4; m = {a = 1}; m = {b = {c = 2}}; m = {b = #cRef(/m)};\n"
                         "  e1 = nosuch(1 {2}); e2 = #none; e3 = = 5; e4; 12ab = 1;;; [1] = 2;\n"
                         "  {anonymous = 1} int(x) = 2; v = [1; int(x)]; ) = 3;\n"
                         "  end = 99999999999; } tail";

class ReaderSweep : public QrvTest {
  protected:
    void expect_reads_as_always() {
        EXPECT_TRUE(text_state().idle());
        EXPECT_EQ(reader_test::read_back("{a=1; b=#cRef(/a)}"), "{a= 1; b= #cRef(/a); }");
    }
};

TEST_F(ReaderSweep, text_may_be_truncated_after_every_character) {
    for (size_t length = 0; length <= rich.size(); ++length) {
        {
            Reading r(rich.substr(0, length), false);
            r.scan.return_com(length % 2 == 0);
            while (r.next() != -1) continue;
        }
        text_state().forget_comments();
        ASSERT_TRUE(text_state().idle()) << length;
    }
    expect_reads_as_always();
    messages();
}

TEST_F(ReaderSweep, the_nth_error_may_throw) {
    int n = 1;
    for (bool more = true; more; ++n) {
        ASSERT_LT(n, 200);
        cThrowing throwing(n);
        Reading r(rich, false);
        throwing.watch(r.scan);
        try {
            while (r.next() != -1) continue;
        } catch (cErr const &) {
        }
        more = throwing.thrown();
        ASSERT_TRUE(text_state().idle()) << n;
        ASSERT_EQ(cat::cMergeBudget::current(), nullptr) << n;
    }
    EXPECT_GT(n, 15);
    expect_reads_as_always();
    messages();
}

TEST_F(ReaderSweep, every_error_may_throw) {
    cat::errhandler() = cErrHandler(0x40000000, 0, 0x40000000);
    Reading r(rich, false);
    for (int i = 0; i < 200; ++i) {
        try {
            if (r.next() == -1) break;
        } catch (cErr const &) {
            ASSERT_TRUE(text_state().idle());
        }
    }
    expect_reads_as_always();
    messages();
}

TEST_F(ReaderSweep, a_thrown_error_does_not_change_how_a_map_is_written) {
    std::string const text = "{\n  a= {\n      b= 1;\n  }; \n}";
    objref const map = Reading(text).value;
    cat::errhandler() = cErrHandler(0xC0000000, 0, 0);
    std::istringstream is("{ a = { b = [ nosuch(1) ] } }");
    objref value;
    EXPECT_THROW(cObj::readobj(is, value), cErr);
    EXPECT_EQ(reader_test::written(map), text);
}

TEST_F(ReaderSweep, a_bare_list_restores_the_depth) {
    for (std::string const text : {"a = 1; b = 2", "a = nosuch(1)", "a = ", "a =", "a", "[1]", "[",
                                   "a = 1; b = nosuch(2)", "#nil = 1", "{}", "nosuch(1)"})
        for (bool keep : {false, true}) {
            std::istringstream is(text);
            objref value;
            cat::scan_container(is, value, keep);
            ASSERT_TRUE(text_state().idle()) << text;
            std::string const map = "{\n  a= 1;\n}";
            ASSERT_EQ(reader_test::read_back(map), map) << text;
        }
}

} // namespace
