// Message streams: output to the display, to files, to other message streams, and into strings.

#include "qrv/diagnostics/ccout.h"

#include "messages.h"

#include <locale>
#include <memory>

namespace {

// ---- message streams ----

TEST_F(OutputEdge, a_line_in_a_display_stream_is_buffered_until_the_flush) {
    cOstream os(true, nullptr);
    os << "a line " << 1 << '\n';
    EXPECT_EQ(messages.pieces(), Pieces{});
    os.flush();
    EXPECT_EQ(messages.pieces(), Pieces{"a line 1\n"});
}

TEST_F(OutputEdge, buffered_text_of_a_connected_stream_is_written_first) {
    cOstream a(false, nullptr);
    cOstream b(true, nullptr);
    a.connect(b);
    b << "from b, ";
    a << "from a" << std::flush;
    EXPECT_EQ(messages.pieces(), (Pieces{"from b, ", "from a"}));
}

TEST_F(Output, a_chain_of_streams_forwards_to_the_file_at_its_end) {
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

TEST_F(Output, a_connected_stream_may_be_destroyed_first) {
    cOstream a(true, nullptr);
    {
        cOstream b(true, nullptr);
        a.connect(b);
    }
    a << "text" << std::flush;
    EXPECT_EQ(messages.pieces(), Pieces{"text"});
}

TEST_F(Output, a_stream_without_display_or_file_writes_nothing) {
    cDebugCalls debug;
    cOstream os(false, nullptr);
    os << "text" << std::flush;
    EXPECT_EQ(messages.pieces(), Pieces{});
    EXPECT_EQ(debug.calls, Pieces{});
}

TEST_F(Output, a_stream_with_only_a_file_also_writes_debug_output) {
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

TEST_F(Output, set_dispout_switches_the_display_on_and_off) {
    cOstream os(false, nullptr);
    os.set_dispout(true);
    os << "seen" << std::flush;
    os.set_dispout(false);
    os << "not seen" << std::flush;
    EXPECT_EQ(messages.text(), "seen");
}

TEST_F(Output, a_stream_file_that_cannot_be_opened_is_reported_with_a_line_end) {
    cOstream os(true, "/nowhere/at/all");
    EXPECT_EQ(messages.pieces(), Pieces{"Fehler beim \xC3\x96"
                                        "ffnen des Message-Files '/nowhere/at/all'\n"});
    os << "still works" << std::flush;
    EXPECT_EQ(messages.pieces().back(), "still works");
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

// ---- a listener destroys the stream that prints ----

// A stream that a slot destroys as soon as text is displayed.
class cDestroyed {
  public:
    explicit cDestroyed(char const *path = nullptr)
        : os(std::make_unique<cOstream>(true, path)),
          slot_(cOutSigStreambuf.sig(), [this](char const *) { os.reset(); }) {}
    cDestroyed(cDestroyed const &) = delete;
    cDestroyed &operator=(cDestroyed const &) = delete;
    ~cDestroyed() = default;

    std::unique_ptr<cOstream> os;

  private:
    cOnText slot_;
};

TEST_F(Output, a_stream_destroyed_while_it_displays_text_does_not_write_it_to_its_file) {
    cTempFile const file("destroyed");
    auto os = std::make_unique<cOstream>(true, file.name());
    cOnText const slot(cOutSigStreambuf.sig(), [&os](char const *) { os.reset(); });
    EXPECT_EQ(os->cprintf("text"), 4);
    EXPECT_EQ(os, nullptr);
    EXPECT_EQ(messages.pieces().back(), "text");
    EXPECT_EQ(without_start_line(file.text()), "[start]");
}

TEST_F(Output, a_stream_destroyed_by_debug_output_does_not_write_the_text_to_its_file) {
    cTempFile const file("destroyed");
    static std::unique_ptr<cOstream> os;
    os = std::make_unique<cOstream>(false, file.name());
    qrv_set_debug_output([](char const *) { os.reset(); });
    EXPECT_EQ(os->cprintf("text"), 4);
    qrv_set_debug_output(nullptr);
    EXPECT_EQ(os, nullptr);
    EXPECT_EQ(without_start_line(file.text()), "[start]");
}

TEST_F(Output, a_stream_destroyed_while_it_flushes_for_its_printf_prints_no_more) {
    cDestroyed destroyed;
    *destroyed.os << "first, ";
    EXPECT_EQ(destroyed.os->cprintf("second"), 6);
    EXPECT_EQ(destroyed.os, nullptr);
    EXPECT_EQ(messages.pieces(), Pieces{"first, "});
}

TEST_F(Output, a_stream_destroyed_while_another_writes_to_it_prints_no_more) {
    cDestroyed destroyed;
    cOstream feeder(false, nullptr);
    feeder.connect(*destroyed.os);
    *destroyed.os << "first, ";
    EXPECT_EQ(feeder.cprintf("second"), 6);
    EXPECT_EQ(destroyed.os, nullptr);
    EXPECT_EQ(messages.pieces(), Pieces{"first, "});
}

TEST_F(Output, a_stream_whose_flush_fails_is_bad_and_continues_printing) {
    struct : std::streambuf {
        int sync() override { return -1; }
    } broken;
    cOstream os(true, nullptr);
    os.rdbuf(&broken);
    EXPECT_EQ(os.cprintf("text"), 4);
    EXPECT_TRUE(os.bad());
    EXPECT_EQ(messages.pieces(), Pieces{"text"});
}

TEST_F(Output, the_buffer_of_a_stream_emits_its_pieces) {
    cOstream os(false, nullptr);
    cPieces const pieces(os.buf()->sig());
    os << "text" << std::flush;
    EXPECT_EQ(os.buf(), os.rdbuf());
    EXPECT_EQ(pieces.pieces(), Pieces{"text"});
}

TEST_F(Output, the_destructor_of_a_stream_that_throws_on_bad_states_does_not_throw) {
    cOstream os(false, nullptr);
    os.exceptions(std::ios::badbit);
    cOstringstream text;
    text.exceptions(std::ios::badbit);
    os << "a";
    text << "b";
    EXPECT_EQ(text.str(), "b");
}

TEST_F(Output, streams_cannot_be_copied) {
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
    os << "replaced ";
    os.str("new");
    EXPECT_EQ(target, "new");
}

TEST_F(Output, clearing_a_string_stream_keeps_the_buffered_text) {
    cOstringstream os;
    os << "flushed" << std::flush << "waiting";
    os.clear();
    EXPECT_EQ(os.str(), "waiting");
}

TEST_F(Output, a_string_stream_is_destroyed_without_a_flush) {
    std::string target;
    {
        cOstringstream os(target);
        os << "waiting";
    }
    EXPECT_EQ(target, "");
}

// Groups digits, and writes a decimal comma.
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

} // namespace
