// Message output: the buffers, also the global one, and the message file.

#include "qrv/diagnostics/ccout.h"

#include "messages.h"
#include "qrv/cvers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace {

// Runs the body in a fresh process before its first idle moment. The body must return true.
template <class Body> void in_fresh_process(Body const &body) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(body() ? 0 : 1), testing::ExitedWithCode(0), "");
}
class OutputFresh : public testing::Test {};
using OutputFreshEdge = OutputFresh;

// ---- the first idle moment ----

TEST_F(OutputFreshEdge, output_before_the_first_idle_moment_arrives_in_one_piece) {
    in_fresh_process([] {
        cat::std_out() << "one, " << std::flush;
        cat::std_err() << "two, ";
        cMsgDispOut("three");
        cPieces const pieces(cOutSigStreambuf.sig());
        if (!pieces.pieces().empty()) return false;
        sig_idle();
        return pieces.pieces() == Pieces{QRV_VERSION_TEXT "\none, two, three"};
    });
}

TEST_F(OutputFreshEdge, a_slot_connected_after_the_first_idle_moment_receives_no_earlier_output) {
    in_fresh_process([] {
        cat::std_err() << "early";
        sig_idle();
        cPieces const pieces(cOutSigStreambuf.sig());
        cat::std_err() << "late";
        return pieces.text() == "late";
    });
}

TEST_F(OutputFreshEdge, a_second_idle_moment_emits_nothing) {
    in_fresh_process([] {
        cPieces const pieces(cOutSigStreambuf.sig());
        sig_idle();
        cDebugCalls debug;
        sig_idle();
        cMsgDispOut("once");
        return pieces.pieces() == Pieces{QRV_VERSION_TEXT "\n", "once"} &&
               debug.calls == Pieces{"once"};
    });
}

TEST_F(OutputFresh, debugout_receives_only_output_after_the_stored_text) {
    in_fresh_process([] {
        cDebugCalls debug;
        cat::std_err() << "early";
        sig_idle();
        cat::std_err() << "late";
        return debug.calls == Pieces{"late"};
    });
}

TEST_F(OutputFresh, text_still_in_the_put_area_comes_after_the_stored_text) {
    in_fresh_process([] {
        cat::std_out() << "unfinished";
        cPieces const pieces(cOutSigStreambuf.sig());
        sig_idle();
        cat::std_out() << std::flush;
        return pieces.pieces() == Pieces{QRV_VERSION_TEXT "\n", "unfinished"};
    });
}

TEST_F(OutputFresh, a_slot_that_throws_at_the_first_idle_moment_does_not_affect_debugout) {
    in_fresh_process([] {
        cDebugCalls debug;
        bool thrown = false;
        {
            cOnText const thrower(cOutSigStreambuf.sig(),
                                  [](char const *) { throw std::runtime_error("no display"); });
            try {
                sig_idle();
            } catch (std::runtime_error const &) {
                thrown = true;
            }
        }
        cMsgDispOut("late");
        return thrown && debug.calls == Pieces{"late"};
    });
}

// ---- the buffer ----

TEST_F(OutputEdge, the_1023rd_character_sends_a_piece_of_1023) {
    cOutStreambuf buffer;
    cPieces const pieces(buffer.sig());
    std::ostream os(&buffer);
    os << std::string(1022, 'x');
    EXPECT_EQ(pieces.pieces(), Pieces{});
    os << 'y';
    EXPECT_EQ(pieces.pieces(), Pieces{std::string(1022, 'x') + 'y'});
    EXPECT_FALSE(buffer.has_text());
}

TEST_F(Output, a_long_string_is_split_at_1023_characters) {
    cOutStreambuf buffer;
    cPieces const pieces(buffer.sig());
    std::ostream os(&buffer);
    os << std::string(3000, 'x') << std::flush;
    ASSERT_EQ(pieces.pieces().size(), 3U);
    EXPECT_EQ(pieces.pieces()[0].size(), 1023U);
    EXPECT_EQ(pieces.pieces()[1].size(), 1023U);
    EXPECT_EQ(pieces.pieces()[2].size(), 954U);
}

// Makes the protected operations callable.
class cOpenBuffer : public cOutStreambuf {
  public:
    using cOutStreambuf::overflow;
    using cOutStreambuf::sync;
    using cOutStreambuf::underflow;
    void give_get_area(char *begin, char *end) { setg(begin, begin, end); }
    void take_put_area() { setp(nullptr, nullptr); }
};

TEST_F(Output, overflow_returns_its_character_and_0_for_the_end) {
    cOpenBuffer buffer;
    cPieces const pieces(buffer.sig());
    buffer.sputn("ab", 2);
    EXPECT_EQ(buffer.overflow('c'), 'c');
    EXPECT_EQ(buffer.overflow(EOF), 0);
    EXPECT_EQ(buffer.overflow(0), 0);
    EXPECT_EQ(buffer.overflow(0xE4), 0xE4);
    EXPECT_EQ(pieces.pieces(), (Pieces{"abc", "", "", "\xE4"}));
}

TEST_F(Output, line_ends_flush_if_set) {
    cOutStreambuf buffer;
    cPieces const pieces(buffer.sig());
    std::ostream os(&buffer);
    os << "before, ";
    buffer.flush_at_line_ends(true); // flushes
    os << "one\ntwo\nthr";
    EXPECT_TRUE(buffer.has_text());
    os << "ee" << std::flush << std::string(1500, 'x');
    os.put('\xFF').put('\n');
    EXPECT_FALSE(buffer.has_text());
    EXPECT_EQ(pieces.pieces(), (Pieces{"before, ", "one\n", "two\n", "three",
                                       std::string(1023, 'x'), std::string(477, 'x') + "\xFF\n"}));
    buffer.flush_at_line_ends(false);
    os << "four\nfive" << std::flush;
    EXPECT_EQ(pieces.pieces().back(), "four\nfive");
}

TEST_F(Output, underflow_always_returns_the_end) {
    cOpenBuffer buffer;
    EXPECT_EQ(buffer.underflow(), -1);
}

TEST_F(Output, sync_fails_only_with_a_put_area_and_unread_input) {
    cOpenBuffer buffer;
    cPieces const pieces(buffer.sig());
    EXPECT_EQ(buffer.sync(), 0); // nothing is buffered
    buffer.sputc('a');
    EXPECT_EQ(buffer.sync(), 0);
    EXPECT_EQ(pieces.pieces(), Pieces{"a"});
    char unread[1] = {'x'};
    buffer.give_get_area(unread, unread + 1);
    buffer.sputc('b');
    EXPECT_EQ(buffer.sync(), -1);
    buffer.take_put_area();
    EXPECT_EQ(buffer.sync(), 0); // a missing put area is checked first
    EXPECT_EQ(pieces.pieces(), Pieces{"a"});
}

TEST_F(Output, output_printed_by_a_slot_appears_once) {
    bool first = true;
    cOnText const printer(cOutSigStreambuf.sig(), [&first](char const *) {
        if (std::exchange(first, false)) cat::std_out() << "[nested]" << std::flush;
    });
    cat::std_out() << "outer" << std::flush;
    EXPECT_EQ(messages.pieces(), (Pieces{"outer", "[nested]"}));
}

TEST_F(Output, a_slot_that_throws_loses_no_output) {
    {
        cOnText const thrower(cOutSigStreambuf.sig(),
                              [](char const *) { throw std::runtime_error("no display"); });
        cat::std_err() << "one ";
        cat::std_out() << "two " << std::flush;
        EXPECT_TRUE(cat::std_out().good());
        EXPECT_TRUE(cat::std_err().good());
    }
    cat::std_out() << "three" << std::flush;
    EXPECT_EQ(messages.text(), "one two three");
}

TEST_F(Output, a_direct_emission_propagates_an_exception) {
    cOnText const thrower(cOutSigStreambuf.sig(),
                          [](char const *) { throw std::runtime_error("no display"); });
    EXPECT_THROW(cMsgDispOut("a"), std::runtime_error);
    EXPECT_THROW(cprintf("b"), std::runtime_error);
    EXPECT_EQ(messages.text(), "ab");
}

TEST_F(Output, every_new_buffer_redirects_the_standard_streams_again) {
    std::ostringstream captured;
    std::streambuf *const before = cat::std_out().rdbuf(captured.rdbuf());
    EXPECT_EQ(before, &cOutSigStreambuf);
    cat::std_out() << "captured";
    cOutStreambuf const buffer;
    cat::std_out() << "routed" << std::flush;
    EXPECT_EQ(captured.str(), "captured");
    EXPECT_EQ(messages.text(), "routed");
    EXPECT_EQ(cat::std_err().rdbuf(), &cOutSigStreambuf);
    EXPECT_EQ(cat::message_buffer(), &cOutSigStreambuf);
}

// ---- cprintf and the message file ----

TEST_F(OutputEdge, cprintf_delivers_unfinished_output_first) {
    cat::std_err().unsetf(std::ios::unitbuf);
    cat::std_err() << "unfinished, ";
    cat::std_out() << "this too, ";
    cat::std_err().setf(std::ios::unitbuf);
    EXPECT_EQ(messages.pieces(), Pieces{});
    EXPECT_EQ(cprintf("%s %i", "then", 7), 6);
    EXPECT_EQ(messages.pieces(), (Pieces{"unfinished, this too, ", "then 7"}));
}

TEST_F(Output, cprintf_returns_the_length_up_to_2047) {
    EXPECT_EQ(cprintf("%s", std::string(2047, 'x').c_str()), 2047);
    EXPECT_EQ(cprintf("%s", std::string(2048, 'x').c_str()), -1);
    EXPECT_EQ(cprintf("%s", std::string(5000, 'x').c_str()), -1);
    ASSERT_EQ(messages.pieces().size(), 3U);
    for (auto const &piece : messages.pieces()) EXPECT_EQ(piece, std::string(2047, 'x'));
    EXPECT_EQ(cprintf("%s", ""), 0);
}

int by_list(char const *format, ...) {
    va_list args;
    va_start(args, format);
    int const result = cvprintf(format, args);
    va_end(args);
    return result;
}

TEST_F(Output, cvprintf_accepts_an_argument_list) {
    EXPECT_EQ(by_list("%i-%s", 12, "x"), 4);
    EXPECT_EQ(messages.text(), "12-x");
}

TEST_F(Output, a_slot_may_print_its_argument) {
    bool first = true;
    cOnText const printer(cOutSigStreambuf.sig(), [&first](char const *text) {
        if (std::exchange(first, false)) cprintf("<%s>", text);
    });
    cPieces const later(cOutSigStreambuf.sig());
    cprintf("text");
    EXPECT_EQ(later.pieces(), (Pieces{"<text>", "text"}));
}

TEST_F(OutputEdge, opening_the_message_file_twice_closes_the_first) {
    cTempFile const first("first");
    cTempFile const second("second");
    EXPECT_NE(cprintfopen(first.name()), nullptr);
    cprintf("to the first\n");
    EXPECT_NE(cprintfopen(second.name()), nullptr);
    EXPECT_EQ(without_start_line(first.text()),
              "[start]to the first\n"); // the file is closed, so it is complete
    cprintf("to the second\n");
    cprintfclose();
    cprintfclose();
    EXPECT_EQ(without_start_line(second.text()), "[start]to the second\n");
    EXPECT_EQ(without_start_line(first.text()), "[start]to the first\n");
    EXPECT_THAT(messages.text(), testing::EndsWith("to the second\n"));
}

TEST_F(Output, a_message_file_that_cannot_be_opened_is_reported_without_a_line_end) {
    EXPECT_EQ(cprintfopen("/nowhere/at/all"), nullptr);
    EXPECT_EQ(messages.pieces(), Pieces{"Fehler beim \xC3\x96"
                                        "ffnen des Message-Files '/nowhere/at/all'"});
    EXPECT_EQ(cprintfopen("/tmp"), nullptr);
    EXPECT_EQ(cprintfopen(nullptr), nullptr);
}

TEST_F(Output, the_message_file_formats_each_percent_pair_again) {
    cTempFile const file("percent");
    ASSERT_NE(cprintfopen(file.name()), nullptr);
    cprintf("50%%%%");
    cprintf("%s", "%n%s %d%%");
    cprintfclose();
    EXPECT_EQ(without_start_line(file.text()), "[start]50%%n%s %d%");
    ASSERT_EQ(messages.pieces().size(), 3U);
    EXPECT_EQ(messages.pieces()[1], "50%%");
    EXPECT_EQ(messages.pieces()[2], "%n%s %d%%");
}

TEST_F(Output, the_message_file_ignores_the_standard_streams) {
    cTempFile const file("streams");
    ASSERT_NE(cprintfopen(file.name()), nullptr);
    cat::std_err() << "not in the file";
    cprintfclose();
    EXPECT_EQ(without_start_line(file.text()), "[start]");
}

TEST_F(Output, a_null_string_is_not_a_message) {
    cMsgDispOut(nullptr);
    EXPECT_EQ(messages.pieces(), Pieces{});
}

// ---- debugout ----

TEST_F(OutputEdge, debugout_may_be_called_during_debugout) {
    cDebugCalls debug;
    std::string text;
    for (int i = 0; text.size() < 2500; ++i) text += std::to_string(i) + ' ';
    text.resize(2500);
    debugout(text.c_str());
    EXPECT_EQ(debug.calls, (Pieces{text, text.substr(1023), text.substr(2046)}));
}

TEST_F(Output, debugout_emits_up_to_1023_characters_once) {
    cDebugCalls debug;
    debugout("");
    debugout(std::string(1023, 'x').c_str());
    EXPECT_EQ(debug.calls, (Pieces{"", std::string(1023, 'x')}));
    debug.calls.clear();
    debugout(std::string(1024, 'x').c_str());
    EXPECT_EQ(debug.calls, (Pieces{std::string(1024, 'x'), "x"}));
}

TEST_F(Output, the_global_buffer_also_sends_to_debug_output) {
    cDebugCalls debug;
    cat::std_err() << "text";
    EXPECT_EQ(debug.calls, Pieces{"text"});
}

// ---- line ends for a display ----

std::string converted(char const *text, bool *hadbell = nullptr) {
    std::unique_ptr<char[]> const result(cConvertNl(text, hadbell));
    return result.get();
}

TEST_F(OutputEdge, line_feeds_become_pairs_and_bells_are_dropped_and_reported) {
    bool bell = false;
    EXPECT_EQ(converted("a\nb\a\n\n", &bell), "a\r\nb\r\n\r\n");
    EXPECT_TRUE(bell);
    EXPECT_EQ(converted("a\r\n", &bell), "a\r\r\n");
    EXPECT_FALSE(bell);
}

TEST_F(Output, the_conversion_accepts_any_string) {
    bool bell = true;
    EXPECT_EQ(converted("", &bell), "");
    EXPECT_FALSE(bell);
    EXPECT_EQ(converted("\a\a"), "");
    EXPECT_EQ(converted("\n"), "\r\n");
    EXPECT_EQ(converted(nullptr), "");
    EXPECT_EQ(converted("\xE4\t"), "\xE4\t");
}

} // namespace
