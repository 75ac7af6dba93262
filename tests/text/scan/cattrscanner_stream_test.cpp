// The scanner on streams that are closed, at their end, or broken, or that can't seek.

#include "tests/text/scan_support.h"

#include "qrv/diagnostics/cconsole.h"

#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

using test::Input;
using test::place;
using test::rest_of;
using test::running;
using test::Scan;
using test::shown;

// Streams of other kinds.

TEST(ScannerStream, does_not_change_the_state_of_its_stream_on_construction) {
    std::istringstream in("ab");
    std::string word;
    in >> word;
    ASSERT_EQ(in.rdstate(), std::ios::eofbit);
    Scan scan(in);
    EXPECT_EQ(in.rdstate(), std::ios::eofbit);
    EXPECT_EQ(scan.position(), 2u);
    EXPECT_EQ(rest_of(scan), "");
}

TEST(ScannerStream, finds_the_end_of_input_repeatedly_on_a_closed_file) {
    std::ifstream in;
    Scan scan(in);
    EXPECT_EQ(scan.position(), 0xFFFFFFFFu);
    EXPECT_EQ(scan.gettoken(), tkEof);
    EXPECT_EQ(in.rdstate(), std::ios::eofbit | std::ios::failbit);
    EXPECT_EQ(scan.gettoken(), tkEof);
}

TEST(ScannerStream, finds_the_end_of_input_on_a_missing_file) {
    std::ifstream in("/nowhere/at/all");
    Scan scan(in);
    EXPECT_EQ(scan.position(), 0xFFFFFFFFu);
    EXPECT_EQ(scan.gettoken(), tkEof);
    EXPECT_EQ(in.rdstate(), std::ios::failbit);
}

TEST(ScannerStream, sets_eofbit_and_failbit_at_the_end) {
    Input i("a");
    i.next();
    i.next();
    EXPECT_EQ(i.in.rdstate(), std::ios::eofbit | std::ios::failbit);
}

TEST(ScannerStream, uses_its_look_ahead_before_the_streams_state) {
    Input i("a;b");
    i.next();
    i.in.setstate(std::ios::eofbit);
    EXPECT_EQ(i.next(), "59(;)");
    EXPECT_EQ(i.next(), "Eof()");
    i.in.clear();
    EXPECT_EQ(i.next(), "Ident(b)");
}

TEST(ScannerStream, starts_at_position_0_after_a_reset_on_a_file_opened_later) {
    std::ifstream in;
    Scan scan(in);
    in.open("/proc/self/cmdline", std::ios::binary);
    scan.reset(0, 1, 0);
    EXPECT_EQ(running(scan), "1:0:0");
    scan.gettoken();
    EXPECT_EQ(place(scan.token()), "1:0:0");
    std::string const first = shown(scan.token());
    scan.resettoken();
    scan.gettoken();
    EXPECT_EQ(shown(scan.token()), first);
}

// The position is still -1 then, so there is no position to seek to.
TEST(ScannerStream, stays_at_the_start_when_flushed_on_a_file_opened_later) {
    std::ifstream in;
    Scan scan(in);
    in.open("/proc/self/cmdline", std::ios::binary);
    int const first = in.peek();
    scan.flush();
    EXPECT_TRUE(in.good());
    EXPECT_EQ(in.peek(), first);
    EXPECT_EQ(scan.position(), 0xFFFFFFFFu);
}

namespace {

struct Pipe {
    explicit Pipe(std::string const &text) {
        if (pipe(ends) != 0) return;
        ok = write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
        close(ends[1]);
        in.open("/proc/self/fd/" + std::to_string(ends[0]), std::ios::binary);
    }
    Pipe(Pipe const &) = delete;
    Pipe &operator=(Pipe const &) = delete;
    ~Pipe() { close(ends[0]); }
    int ends[2] = {-1, -1};
    bool ok = false;
    std::ifstream in;
};

} // namespace

TEST(ScannerStream, reads_a_pipe_whose_position_starts_below_0) {
    Pipe pipe("ab 12;");
    ASSERT_TRUE(pipe.ok && pipe.in.is_open());
    Scan scan(pipe.in);
    scan.gettoken();
    EXPECT_EQ(place(scan.token()), "1:0:4294967295");
    scan.gettoken();
    EXPECT_EQ(place(scan.token()), "1:3:2");
    EXPECT_EQ(rest_of(scan), "59(;)");
}

TEST(ScannerStream, drops_the_look_ahead_and_stays_good_where_the_stream_cannot_seek) {
    Pipe pipe("ab 12;c");
    ASSERT_TRUE(pipe.ok && pipe.in.is_open());
    Scan scan(pipe.in);
    scan.gettoken();
    scan.ungettoken();
    scan.resettoken();
    EXPECT_TRUE(pipe.in.good());
    EXPECT_EQ(running(scan), "1:0:4294967295");
    EXPECT_EQ(rest_of(scan), "Int(12) 59(;) Ident(c)");
    scan.flush();
    EXPECT_TRUE(pipe.in.good());
}

// Failures that end the process. The message goes to the display.

TEST(ScannerDeathTest, a_broken_stream_ends_the_process_with_status_2) {
    auto const read_broken = [] {
        sig_idle();
        cConsoleDisplay display(2);
        std::istream in(nullptr);
        Scan(in).gettoken();
    };
    EXPECT_EXIT(read_broken(), testing::ExitedWithCode(2), "^input in flex scanner failed\n");
}

TEST(ScannerDeathTest, a_read_error_ends_the_process_with_status_2) {
    auto const read_folder = [] {
        sig_idle();
        cConsoleDisplay display(2);
        std::ifstream in("/");
        Scan(in).gettoken();
    };
    EXPECT_EXIT(read_folder(), testing::ExitedWithCode(2), "^input in flex scanner failed\n");
}

TEST(ScannerDeathTest, the_engine_alone_creates_no_tokens) {
    auto const run_bare = [] {
        sig_idle();
        cConsoleDisplay display(2);
        attrFlexLexer().yylex();
    };
    EXPECT_EXIT(run_bare(), testing::ExitedWithCode(2),
                "^yyFlexLexer::yylex invoked but %option yyclass used\n");
}
