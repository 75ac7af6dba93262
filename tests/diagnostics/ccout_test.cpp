// Message output: the buffers, the global route, the message file, the streams.

#include "qrv/diagnostics/ccout.h"

#include "diagnostics/ccout_state.h"
#include "messages.h"
#include "qrv/cvers.h"
#include "qrv/platform/cplatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>

namespace {

using Pieces = std::vector<std::string>;

// A file name in the tests' own folder, gone afterwards.
class cTempFile {
  public:
    explicit cTempFile(std::string const &name) : path_(testing::TempDir() + "qrv_ccout_" + name) {
        std::filesystem::remove(path_);
    }
    cTempFile(cTempFile const &) = delete;
    cTempFile &operator=(cTempFile const &) = delete;
    ~cTempFile() { std::filesystem::remove(path_); }

    char const *name() const { return path_.c_str(); }
    std::string text() const { return file_text(path_); }

  private:
    std::string path_;
};

// Runs a function for each piece of a signal.
class cOnText {
  public:
    cOnText(cSignal1<char const *> const &signal, std::function<void(char const *)> function)
        : function_(std::move(function)), slot_(this, &cOnText::call, signal) {}
    cOnText(cOnText const &) = delete;
    cOnText &operator=(cOnText const &) = delete;
    ~cOnText() = default;

  private:
    void call(char const *text) { function_(text); }

    std::function<void(char const *)> function_;
    cSlot1<cOnText, char const *> slot_;
};

Pieces *debug_calls = nullptr;

// Takes the debug output while it lives.
class cDebugCalls {
  public:
    cDebugCalls() {
        debug_calls = &calls;
        qrv_set_debug_output([](char const *text) { debug_calls->emplace_back(text); });
    }
    cDebugCalls(cDebugCalls const &) = delete;
    cDebugCalls &operator=(cDebugCalls const &) = delete;
    ~cDebugCalls() { qrv_set_debug_output(nullptr); }

    Pieces calls;
};

// The start line at the head of a text, as "[start]".
std::string without_start_line(std::string const &text) {
    constexpr std::string_view form = "Start  dddd:dd:dd dd:dd\n";
    if (text.size() < form.size()) return text;
    for (std::size_t i = 0; i < form.size(); ++i) {
        bool const digit = text[i] >= '0' && text[i] <= '9';
        if (form[i] == 'd' ? !digit : text[i] != form[i]) return text;
    }
    return "[start]" + text.substr(form.size());
}

class Output : public testing::Test {
  protected:
    ~Output() override { cprintfclose(); }
    cPieces messages;
};
using OutputEdge = Output;

// The body runs in a fresh process, where the first idle moment is still to come, and must say
// true.
template <class Body> void in_fresh_process(Body const &body) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(body() ? 0 : 1), testing::ExitedWithCode(0), "");
}
class OutputFreshEdge : public testing::Test {};

// ---- the first idle moment ----

TEST_F(OutputFreshEdge, text_before_the_first_idle_arrives_in_one_piece) {
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

TEST_F(OutputFreshEdge, a_slot_that_connects_after_the_first_idle_gets_none_of_it) {
    in_fresh_process([] {
        cat::std_err() << "early";
        sig_idle();
        cPieces const pieces(cOutSigStreambuf.sig());
        cat::std_err() << "late";
        return pieces.text() == "late";
    });
}

TEST_F(OutputFreshEdge, a_second_idle_does_nothing_here) {
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

TEST_F(OutputFreshEdge, debugout_sees_only_what_comes_after_the_kept_text) {
    in_fresh_process([] {
        cDebugCalls debug;
        cat::std_err() << "early";
        sig_idle();
        cat::std_err() << "late";
        return debug.calls == Pieces{"late"};
    });
}

TEST_F(OutputFreshEdge, text_still_in_the_put_area_comes_after_the_kept_text) {
    in_fresh_process([] {
        cat::std_out() << "unfinished";
        cPieces const pieces(cOutSigStreambuf.sig());
        sig_idle();
        cat::std_out() << std::flush;
        return pieces.pieces() == Pieces{QRV_VERSION_TEXT "\n", "unfinished"};
    });
}

TEST_F(OutputFreshEdge, a_slot_that_throws_at_the_first_idle_costs_debugout_nothing) {
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

TEST_F(Output, a_long_text_is_cut_at_1023) {
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

TEST_F(Output, overflow_tells_its_character_and_0_for_the_end) {
    cOpenBuffer buffer;
    cPieces const pieces(buffer.sig());
    buffer.sputn("ab", 2);
    EXPECT_EQ(buffer.overflow('c'), 'c');
    EXPECT_EQ(buffer.overflow(EOF), 0);
    EXPECT_EQ(buffer.overflow(0), 0);
    EXPECT_EQ(buffer.overflow(0xE4), 0xE4);
    EXPECT_EQ(pieces.pieces(), (Pieces{"abc", "", "", "\xE4"}));
}

TEST_F(Output, underflow_has_nothing) {
    cOpenBuffer buffer;
    EXPECT_EQ(buffer.underflow(), -1);
}

TEST_F(Output, sync_has_four_answers) {
    cOpenBuffer buffer;
    cPieces const pieces(buffer.sig());
    EXPECT_EQ(buffer.sync(), 0); // empty
    buffer.sputc('a');
    EXPECT_EQ(buffer.sync(), 0);
    EXPECT_EQ(pieces.pieces(), Pieces{"a"});
    char unread[1] = {'x'};
    buffer.give_get_area(unread, unread + 1);
    buffer.sputc('b');
    EXPECT_EQ(buffer.sync(), -1);
    buffer.take_put_area();
    EXPECT_EQ(buffer.sync(), 0); // looked at first
    EXPECT_EQ(pieces.pieces(), Pieces{"a"});
}

TEST_F(Output, a_slot_that_prints_gets_its_text_out_once) {
    bool first = true;
    cOnText const printer(cOutSigStreambuf.sig(), [&first](char const *) {
        if (std::exchange(first, false)) cat::std_out() << "[nested]" << std::flush;
    });
    cat::std_out() << "outer" << std::flush;
    EXPECT_EQ(messages.pieces(), (Pieces{"outer", "[nested]"}));
}

TEST_F(Output, a_slot_that_throws_mutes_nothing) {
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

TEST_F(Output, a_direct_emission_passes_an_exception_on) {
    cOnText const thrower(cOutSigStreambuf.sig(),
                          [](char const *) { throw std::runtime_error("no display"); });
    EXPECT_THROW(cMsgDispOut("a"), std::runtime_error);
    EXPECT_THROW(cprintf("b"), std::runtime_error);
    EXPECT_EQ(messages.text(), "ab");
}

TEST_F(Output, every_new_buffer_leads_the_standard_streams_back) {
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

TEST_F(OutputEdge, cprintf_after_unfinished_output_delivers_that_first) {
    cat::std_err().unsetf(std::ios::unitbuf);
    cat::std_err() << "unfinished, ";
    cat::std_out() << "this too, ";
    cat::std_err().setf(std::ios::unitbuf);
    EXPECT_EQ(messages.pieces(), Pieces{});
    EXPECT_EQ(cprintf("%s %i", "then", 7), 6);
    EXPECT_EQ(messages.pieces(), (Pieces{"unfinished, this too, ", "then 7"}));
}

TEST_F(Output, cprintf_tells_the_length_up_to_2047) {
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

TEST_F(Output, cvprintf_takes_a_list) {
    EXPECT_EQ(by_list("%i-%s", 12, "x"), 4);
    EXPECT_EQ(messages.text(), "12-x");
}

TEST_F(Output, a_slot_may_print_what_it_was_given) {
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
    EXPECT_EQ(without_start_line(first.text()), "[start]to the first\n"); // closed, so complete
    cprintf("to the second\n");
    cprintfclose();
    cprintfclose();
    EXPECT_EQ(without_start_line(second.text()), "[start]to the second\n");
    EXPECT_EQ(without_start_line(first.text()), "[start]to the first\n");
    EXPECT_THAT(messages.text(), testing::EndsWith("to the second\n"));
}

TEST_F(Output, a_message_file_that_cannot_be_opened_is_told_without_a_line_end) {
    EXPECT_EQ(cprintfopen("/nowhere/at/all"), nullptr);
    EXPECT_EQ(messages.pieces(), Pieces{"Fehler beim \xC3\x96"
                                        "ffnen des Message-Files '/nowhere/at/all'"});
    EXPECT_EQ(cprintfopen("/tmp"), nullptr);
    EXPECT_EQ(cprintfopen(nullptr), nullptr);
}

TEST_F(Output, the_message_file_takes_each_percent_pair_once_more) {
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

TEST_F(Output, the_message_file_takes_nothing_from_the_standard_streams) {
    cTempFile const file("streams");
    ASSERT_NE(cprintfopen(file.name()), nullptr);
    cat::std_err() << "not in the file";
    cprintfclose();
    EXPECT_EQ(without_start_line(file.text()), "[start]");
}

TEST_F(Output, no_text_is_no_message) {
    cMsgDispOut(nullptr);
    EXPECT_EQ(messages.pieces(), Pieces{});
}

// ---- debugout ----

TEST_F(OutputEdge, debugout_calls_overlap) {
    cDebugCalls debug;
    std::string text;
    for (int i = 0; text.size() < 2500; ++i) text += std::to_string(i) + ' ';
    text.resize(2500);
    debugout(text.c_str());
    EXPECT_EQ(debug.calls, (Pieces{text, text.substr(1023), text.substr(2046)}));
}

TEST_F(Output, debugout_passes_up_to_1023_characters_once) {
    cDebugCalls debug;
    debugout("");
    debugout(std::string(1023, 'x').c_str());
    EXPECT_EQ(debug.calls, (Pieces{"", std::string(1023, 'x')}));
    debug.calls.clear();
    debugout(std::string(1024, 'x').c_str());
    EXPECT_EQ(debug.calls, (Pieces{std::string(1024, 'x'), "x"}));
}

TEST_F(Output, the_global_route_reaches_debug_output) {
    cDebugCalls debug;
    cat::std_err() << "text";
    EXPECT_EQ(debug.calls, Pieces{"text"});
}

// ---- message streams ----

TEST_F(OutputEdge, a_line_of_a_display_stream_waits_for_the_flush) {
    cOstream os(true, nullptr);
    os << "a line " << 1 << '\n';
    EXPECT_EQ(messages.pieces(), Pieces{});
    os.flush();
    EXPECT_EQ(messages.pieces(), Pieces{"a line 1\n"});
}

TEST_F(OutputEdge, what_waits_in_a_connected_stream_goes_first) {
    cOstream a(false, nullptr);
    cOstream b(true, nullptr);
    a.connect(b);
    b << "from b, ";
    a << "from a" << std::flush;
    EXPECT_EQ(messages.pieces(), (Pieces{"from b, ", "from a"}));
}

TEST_F(Output, a_chain_of_streams_passes_on_to_the_file_at_its_end) {
    cTempFile const file("chain");
    {
        cOstream a(false, nullptr);
        cOstream b(false, nullptr);
        cOstream c(false, file.name());
        a.connect(b);
        b.connect(c);
        a << "text" << std::flush;
    }
    EXPECT_EQ(without_start_line(file.text()), "[start]text");
    EXPECT_EQ(messages.pieces(), Pieces{});
}

TEST_F(Output, a_connected_stream_may_die_first) {
    cOstream a(true, nullptr);
    {
        cOstream b(true, nullptr);
        a.connect(b);
    }
    a << "text" << std::flush;
    EXPECT_EQ(messages.pieces(), Pieces{"text"});
}

TEST_F(Output, a_stream_without_display_and_file_is_silent) {
    cDebugCalls debug;
    cOstream os(false, nullptr);
    os << "text" << std::flush;
    EXPECT_EQ(messages.pieces(), Pieces{});
    EXPECT_EQ(debug.calls, Pieces{});
}

TEST_F(Output, a_stream_with_a_file_alone_is_seen_by_the_debugger) {
    cDebugCalls debug;
    cTempFile const file("own");
    {
        cOstream os(false, file.name());
        os << "50%%" << std::flush;
    }
    EXPECT_EQ(without_start_line(file.text()), "[start]50%");
    ASSERT_EQ(debug.calls.size(), 2U);
    EXPECT_EQ(without_start_line(debug.calls[0]), "[start]");
    EXPECT_EQ(debug.calls[1], "50%%");
    EXPECT_EQ(messages.pieces(), Pieces{});
}

TEST_F(Output, a_stream_with_display_and_file_writes_to_both) {
    cTempFile const file("both");
    {
        cOstream os(true, file.name());
        os << "text"; // the destructor flushes
    }
    EXPECT_EQ(without_start_line(file.text()), "[start]text");
    ASSERT_EQ(messages.pieces().size(), 2U);
    EXPECT_EQ(messages.pieces()[1], "text");
}

TEST_F(Output, set_dispout_switches_the_display) {
    cOstream os(false, nullptr);
    os.set_dispout(true);
    os << "seen" << std::flush;
    os.set_dispout(false);
    os << "not seen" << std::flush;
    EXPECT_EQ(messages.text(), "seen");
}

TEST_F(Output, a_stream_file_that_cannot_be_opened_is_told_with_a_line_end) {
    cOstream os(true, "/nowhere/at/all");
    EXPECT_EQ(messages.pieces(), Pieces{"Fehler beim \xC3\x96"
                                        "ffnen des Message-Files '/nowhere/at/all'\n"});
    os << "goes on" << std::flush;
    EXPECT_EQ(messages.pieces().back(), "goes on");
}

TEST_F(Output, opening_a_second_stream_file_closes_the_first) {
    cTempFile const first("os_first");
    cTempFile const second("os_second");
    cOstream os(false, first.name());
    os << "a" << std::flush;
    os.fileopen(second.name());
    os << "b" << std::flush;
    os.fileclose();
    os << "c" << std::flush;
    EXPECT_EQ(without_start_line(first.text()), "[start]a");
    EXPECT_EQ(without_start_line(second.text()), "[start]b");
}

TEST_F(Output, the_printf_of_a_stream_flushes_it_first) {
    cOstream os(true, nullptr);
    os << "first, ";
    EXPECT_EQ(os.cprintf("then %s", "this"), 9);
    EXPECT_EQ(os.cprintf("%s", std::string(2048, 'x').c_str()), -1);
    EXPECT_EQ(messages.pieces(), (Pieces{"first, ", "then this", std::string(2047, 'x')}));
}

TEST_F(Output, the_buffer_of_a_stream_tells_its_pieces) {
    cOstream os(false, nullptr);
    cPieces const pieces(os.buf()->sig());
    os << "text" << std::flush;
    EXPECT_EQ(os.buf(), os.rdbuf());
    EXPECT_EQ(pieces.pieces(), Pieces{"text"});
}

TEST_F(Output, a_stream_that_throws_on_bad_states_dies_quietly) {
    cOstream os(false, nullptr);
    os.exceptions(std::ios::badbit);
    cOstringstream text;
    text.exceptions(std::ios::badbit);
    os << "a";
    text << "b";
    EXPECT_EQ(text.str(), "b");
}

TEST_F(Output, streams_are_not_copied) {
    static_assert(!std::is_copy_constructible_v<cOstream> && !std::is_copy_assignable_v<cOstream>);
    static_assert(!std::is_copy_constructible_v<cOstringstream>);
    static_assert(!std::is_copy_assignable_v<cOstringstream>);
    static_assert(!std::is_copy_constructible_v<cOutStreambuf>);
    static_assert(!std::is_copy_constructible_v<cTheOutStreambuf>);
}

// ---- string streams ----

TEST_F(Output, a_string_stream_writes_into_the_string_it_was_given) {
    std::string target = "before ";
    cOstringstream os(target);
    os << "and " << 7;
    EXPECT_EQ(target, "before ");
    EXPECT_EQ(os.str(), "before and 7");
    EXPECT_EQ(target, "before and 7");
    os << "lost to the buffer? ";
    os.str("new");
    EXPECT_EQ(target, "new");
}

TEST_F(Output, clearing_a_string_stream_leaves_what_waits_in_the_buffer) {
    cOstringstream os;
    os << "flushed" << std::flush << "waiting";
    os.clear();
    EXPECT_EQ(os.str(), "waiting");
}

TEST_F(Output, a_string_stream_dies_without_a_flush) {
    std::string target;
    {
        cOstringstream os(target);
        os << "waiting";
    }
    EXPECT_EQ(target, "");
}

// Digits in groups and a decimal comma.
class cHostile : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(Output, numbers_do_not_follow_the_global_locale) {
    std::locale const before = std::locale::global(std::locale(std::locale(), new cHostile));
    cOstringstream text;
    cOstream os(true, nullptr);
    std::locale::global(before);
    text << 1234567 << ' ' << 1.5;
    os << 1234567 << ' ' << 1.5 << std::flush;
    EXPECT_EQ(text.str(), "1234567 1.5");
    EXPECT_EQ(messages.text(), "1234567 1.5");
}

// ---- line ends for a display ----

std::string converted(char const *text, bool *hadbell = nullptr) {
    std::unique_ptr<char[]> const result(cConvertNl(text, hadbell));
    return result.get();
}

TEST_F(OutputEdge, line_feeds_become_pairs_and_bells_are_dropped_and_told) {
    bool bell = false;
    EXPECT_EQ(converted("a\nb\a\n\n", &bell), "a\r\nb\r\n\r\n");
    EXPECT_TRUE(bell);
    EXPECT_EQ(converted("a\r\n", &bell), "a\r\r\n");
    EXPECT_FALSE(bell);
}

TEST_F(Output, the_conversion_takes_any_text) {
    bool bell = true;
    EXPECT_EQ(converted("", &bell), "");
    EXPECT_FALSE(bell);
    EXPECT_EQ(converted("\a\a"), "");
    EXPECT_EQ(converted("\n"), "\r\n");
    EXPECT_EQ(converted(nullptr), "");
    EXPECT_EQ(converted("\xE4\t"), "\xE4\t");
}

} // namespace
