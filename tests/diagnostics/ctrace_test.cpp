// Tracing: the rules, the channels that follow them, the streams that they share; and the timer.

#include "qrv/diagnostics/ctrace.h"

#include "messages.h"

#include <gtest/gtest.h>

#include <concepts>
#include <filesystem>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <thread>

namespace {

class Trace : public testing::Test {
  protected:
    Trace() : folder(testing::TempDir() + "qrv_trace/") {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        cSetTracing("");
    }
    ~Trace() override {
        cSetTracing("");
        std::filesystem::remove_all(folder);
    }

    // The names of the streams to which a channel writes.
    static std::string streams(cTracer const &tracer) {
        std::string names;
        for (auto const &stream : tracer.strlist()) names += stream->name() + ' ';
        return names;
    }
    std::string messages_text() {
        cOutSigStreambuf.pubsync();
        return messages.text();
    }

    std::string const folder;
    cPieces messages;
};
using TraceEdge = Trace;
class StopWatch : public testing::Test {};
using StopWatchEdge = StopWatch;

// ---- the grammar ----

TEST_F(TraceEdge, a_prefix_switches_both_channels_on_and_to_the_error_stream) {
    EXPECT_FALSE(cat::trace_io);
    EXPECT_FALSE(cat::trace_lex);
    cSetTracing("cat");
    EXPECT_TRUE(cat::trace_io);
    EXPECT_TRUE(cat::trace_lex);
    EXPECT_EQ(streams(cat::trace_io), "cerr ");
    cat::trace_lex << "a line" << std::endl;
    EXPECT_EQ(messages.text(), "a line\n");
    EXPECT_EQ(cat::trace_io.flags(), 3);
    EXPECT_EQ(cat::trace_lex.flags(), 3);
}

TEST_F(TraceEdge, a_longer_prefix_makes_an_exception_and_a_lone_sign_changes_nothing) {
    cSetTracing("+cat-catlex");
    EXPECT_TRUE(cat::trace_io);
    EXPECT_FALSE(cat::trace_lex);
    cSetTracing("-");
    EXPECT_TRUE(cat::trace_io);
    EXPECT_FALSE(cat::trace_lex);
    cSetTracing("+");
    EXPECT_TRUE(cat::trace_io);
    EXPECT_FALSE(cat::trace_lex);
}

TEST_F(TraceEdge, a_string_without_a_sign_drops_all_earlier_rules) {
    cSetTracing("catlex");
    cSetTracing("cat_io");
    EXPECT_TRUE(cat::trace_io);
    EXPECT_FALSE(cat::trace_lex);
    cSetTracing("+catlex");
    EXPECT_TRUE(cat::trace_io);
    EXPECT_TRUE(cat::trace_lex);
}

TEST_F(TraceEdge, two_channels_share_a_file_that_is_appended_to) {
    std::string const path = folder + "x.log";
    std::ofstream(path) << "before\n";
    cTracer a("chan.a");
    cTracer b("chan.b");
    cSetTracing("chan.a:" + path + " chan.b:" + path);
    EXPECT_EQ(a.strlist()[0], b.strlist()[0]);
    a << "a" << std::endl;
    b << "b" << std::endl;
    a << "a again" << std::endl;
    EXPECT_EQ(file_text(path), "before\na\nb\na again\n");
}

TEST_F(Trace, an_empty_or_blank_string_switches_all_tracing_off) {
    for (char const *end : {"", " ", " \t "}) {
        cSetTracing("cat");
        EXPECT_TRUE(cat::trace_io);
        cSetTracing(end);
        EXPECT_FALSE(cat::trace_io);
        EXPECT_EQ(streams(cat::trace_io), "");
    }
}

TEST_F(Trace, a_sign_after_blanks_adds_a_rule) {
    cSetTracing("catlex");
    cSetTracing(" \t +cat_io");
    EXPECT_TRUE(cat::trace_io);
    EXPECT_TRUE(cat::trace_lex);
}

TEST_F(Trace, a_token_sets_several_names_with_the_same_streams) {
    cTracer a("a");
    cTracer b("b");
    cTracer c("c");
    cSetTracing("+c +a+b-c:cout,cerr");
    EXPECT_EQ(streams(a), "cout cerr ");
    EXPECT_EQ(streams(b), "cout cerr ");
    EXPECT_EQ(streams(c), "");
}

TEST_F(Trace, the_last_of_several_signs_applies) {
    cTracer a("a");
    cSetTracing("-+--+a");
    EXPECT_TRUE(a);
    cSetTracing("-++-a");
    EXPECT_FALSE(a);
}

TEST_F(Trace, a_missing_or_empty_stream_means_the_error_stream) {
    cTracer a("a");
    cTracer b("b");
    cTracer c("c");
    cSetTracing("a: b:,cout c:cout,");
    EXPECT_EQ(streams(a), "cerr ");
    EXPECT_EQ(streams(b), "cerr cout ");
    EXPECT_EQ(streams(c), "cout cerr ");
    EXPECT_EQ(a.strlist()[0], b.strlist()[0]);
}

TEST_F(Trace, only_the_first_colon_is_a_separator) {
    cTracer a("a");
    std::string const path = folder + "x:y";
    cSetTracing("a:" + path);
    EXPECT_EQ(streams(a), path + " ");
}

TEST_F(Trace, a_token_with_streams_only_sets_nothing) {
    cTracer a("a");
    cSetTracing("a");
    cSetTracing("+ :" + folder + "x");
    EXPECT_EQ(streams(a), "cerr ");
    EXPECT_FALSE(std::filesystem::exists(folder + "x"));
}

TEST_F(Trace, tabs_separate_tokens_and_other_white_space_does_not) {
    cTracer a("a");
    cTracer b("b");
    cSetTracing("a\tb");
    EXPECT_TRUE(a && b);
    cSetTracing("a\nb");
    EXPECT_FALSE(a || b);
}

TEST_F(Trace, a_stream_list_may_have_any_length) {
    cTracer a("a");
    std::string list = "cerr";
    while (list.size() < 5000) list += ",cout,cerr";
    cSetTracing("a:" + list);
    EXPECT_EQ(a.strlist().size(), 1001U);
    EXPECT_EQ(a.strlist()[0], a.strlist()[1000]);
}

// ---- which rule decides ----

TEST_F(Trace, the_longest_prefix_applies_in_any_order) {
    cTracer a("alpha.beta");
    cSetTracing("alpha.b:cout alpha:cerr");
    EXPECT_EQ(streams(a), "cout ");
    cSetTracing("alpha:cerr alpha.b:cout");
    EXPECT_EQ(streams(a), "cout ");
    cSetTracing("alpha -alpha.beta");
    EXPECT_FALSE(a);
    cSetTracing("alpha -alpha.beta.gamma");
    EXPECT_TRUE(a);
}

TEST_F(Trace, a_rule_set_again_uses_only_the_new_streams) {
    cTracer a("a");
    cSetTracing("a:cout,cerr");
    cSetTracing("+a:cout");
    EXPECT_EQ(streams(a), "cout ");
    cSetTracing("-a");
    EXPECT_EQ(streams(a), "");
    cSetTracing("+a");
    EXPECT_EQ(streams(a), "cerr ");
}

TEST_F(Trace, a_rule_applies_to_channels_created_later) {
    cSetTracing("later:cout");
    cTracer const later("later.one", 5);
    EXPECT_TRUE(later);
    EXPECT_EQ(streams(later), "cout ");
    EXPECT_EQ(later.flags(), 5);
    EXPECT_EQ(later.indent(), 0);
    EXPECT_EQ(later.ident(), "later.one");
}

// ---- channels ----

TEST_F(Trace, a_copy_follows_later_rules_and_does_not_affect_its_original) {
    cSetTracing("one");
    cTracer one("one", 7);
    one.indent() = 2;
    cTracer copy(one);
    EXPECT_TRUE(copy);
    EXPECT_EQ(copy.flags(), 7);
    EXPECT_EQ(copy.indent(), 2);
    copy.ident() = "two";
    cSetTracing("two:cout");
    EXPECT_FALSE(one);
    EXPECT_EQ(streams(copy), "cout ");
    one = copy;
    EXPECT_EQ(streams(one), "cout ");
    EXPECT_EQ(one.ident(), "two");
}

TEST_F(Trace, a_copy_may_outlive_its_original) {
    auto one = std::make_optional<cTracer>("one");
    cTracer const copy(*one);
    one.reset();
    cSetTracing("one");
    EXPECT_TRUE(copy);
}

TEST_F(Trace, manual_enabling_lasts_until_rules_are_applied) {
    cSetTracing("one");
    cTracer one("one");
    one.enable(false);
    one << "not written" << std::endl;
    EXPECT_EQ(messages.text(), "");
    one.initenabled();
    one << "written" << std::endl;
    EXPECT_EQ(messages.text(), "written\n");
    one.enable(false);
    cSetTracing("+");
    EXPECT_TRUE(one);
    cSetTracing("");
    one.enable(true);
    one << "nowhere to" << std::endl;
    one.initenabled();
    EXPECT_FALSE(one);
    EXPECT_EQ(messages.text(), "written\n");
}

struct cCounted {
    int *count;
};
std::ostream &operator<<(std::ostream &os, cCounted const &value) {
    ++*value.count;
    return os;
}

int counted = 0;

TEST_F(Trace, a_disabled_channel_formats_nothing) {
    cTracer one("one");
    int count = 0;
    one << cCounted{&count};
    EXPECT_EQ(count, 0);
    cSetTracing("one:cout,cerr");
    one << cCounted{&count};
    EXPECT_EQ(count, 2);
}

TEST_F(Trace, values_and_manipulators_go_to_every_stream) {
    std::string const path = folder + "x.log";
    cTracer one("one");
    cSetTracing("one:" + path + ",cerr");
    std::string const text = "text";
    char array[] = "array";
    one << text << ' ' << array << ' ' << 12 << ' ' << 1.5 << ' ' << std::hex << 255 << ' '
        << std::setw(3) << 'x' << std::endl;
    EXPECT_EQ(messages.text(), "text array 12 1.5 ff   x\n");
    EXPECT_EQ(file_text(path), "text array 12 1.5 ff   x\n");
}

TEST_F(Trace, a_null_string_writes_nothing_and_loses_no_later_output) {
    cTracer one("one");
    cSetTracing("one");
    one << "a" << static_cast<char const *>(nullptr) << "b" << std::endl;
    EXPECT_EQ(messages.text(), "ab\n");
}

TEST_F(Trace, numbers_do_not_follow_the_global_locale) {
    struct cHostile : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::string const path = folder + "x.log";
    cTracer one("one");
    std::locale const before = std::locale::global(std::locale(std::locale(), new cHostile));
    cSetTracing("one:cerr," + path);
    std::locale::global(before);
    one << 1234567 << ' ' << 1.5 << std::endl;
    EXPECT_EQ(messages.text(), "1234567 1.5\n");
    EXPECT_EQ(file_text(path), "1234567 1.5\n");
}

TEST_F(Trace, rules_may_change_while_a_channel_writes) {
    struct cReset {
        void call(char const *) { cSetTracing(""); }
    } reset;
    cSlot1<cReset, char const *> const slot(&reset, &cReset::call, cOutSigStreambuf.sig());
    cTracer one("one");
    cSetTracing("one:cerr,cout");
    one << std::string(2000, 'x') << "not written";
    EXPECT_FALSE(one);
    EXPECT_EQ(messages_text(), std::string(2000, 'x'));
}

TEST_F(Trace, a_listener_may_destroy_the_channel_that_writes) {
    auto one = std::make_unique<cTracer>("one");
    auto *const owner = &one;
    cOnText const slot(cOutSigStreambuf.sig(), [owner](char const *) { owner->reset(); });
    cSetTracing("one:cerr,cout," + folder + "x.log");
    *one << std::string(2000, 'x');
    EXPECT_EQ(one, nullptr);
    EXPECT_EQ(messages_text(), std::string(2000, 'x')); // the later streams receive nothing
    EXPECT_EQ(file_text(folder + "x.log"), "");
}

TEST_F(Trace, a_listener_may_destroy_the_channel_while_it_writes_twice) {
    auto one = std::make_unique<cTracer>("one");
    auto *const owner = &one;
    int depth = 0;
    cOnText const slot(cOutSigStreambuf.sig(), [owner, &depth](char const *) {
        if (++depth == 1) **owner << std::string(1500, 'y');
        owner->reset();
    });
    cSetTracing("one:cerr,cout");
    *one << std::string(1500, 'x');
    EXPECT_EQ(one, nullptr);
}

// A channel converts to bool, so arithmetic with a channel would compile if its operators were not
// deleted.
template <class A, class B>
concept cArithmetic = requires(A a, B b) {
    a - b;
}
|| requires(A a, B b) { a + b; };
template <class A, class B>
concept cOrdered = requires(A a, B b) {
    a < b;
}
|| requires(A a, B b) { a > b; }
|| requires(A a, B b) { a <= b; }
|| requires(A a, B b) { a >= b; }
|| requires(A a, B b) { a <=> b; };
template <class A, class B>
concept cShifted = requires(A a, B b) {
    a << b;
};

TEST_F(Trace, a_channel_is_not_a_number) {
    static_assert(!cArithmetic<cTracer &, cTracer &> && !cOrdered<cTracer &, cTracer &>);
    static_assert(!cArithmetic<cTracer const &, int> && !cOrdered<cTracer const &, int>);
    static_assert(!cArithmetic<int, cTracer> && !cOrdered<bool, cTracer>);
    static_assert(!cArithmetic<char const *, cTracer &> && !cArithmetic<cTracer &, char *>);
    static_assert(!cShifted<std::ostream &, cTracer const &>);
    static_assert(!cShifted<std::ostringstream, cTracer> && !cShifted<cOstream &, cTracer &>);
    static_assert(std::convertible_to<cTracer const &, bool>);
    cTracer const one("one");
    EXPECT_TRUE(!one && (one == false) && !(one || false));
}

enum class cColour { red };
std::ostream &operator<<(std::ostream &os, cColour) { return os << "red"; }

TEST_F(Trace, everything_that_a_stream_writes_can_be_traced) {
    cTracer one("one");
    cSetTracing("one");
    std::string_view const view = "view";
    char const *const text = "text";
    unsigned char const byte = 'b';
    std::string const string = "string";
    void const *const none = nullptr;
    cTracer("one") << "t" << text << string << view << 'c' << byte << true << short{1} << 2U << 3L
                   << 4ULL << 5.5F << 6.5 << std::hex << 16 << std::setw(3) << 7
                   << std::setfill('.') << cColour::red << cCounted{&counted} << none << std::endl;
    one << std::boolalpha << (1 < 2) << std::flush << objref() << std::ends;
    static_assert(cShifted<cTracer &, char const *> && cShifted<cTracer &, std::string>);
    static_assert(cShifted<cTracer &, int> && cShifted<cTracer &, objref>);
    EXPECT_EQ(messages_text(), "ttextstringviewcb112345.56.510  7red0\n" + std::string("true"));
}

TEST_F(Trace, an_indent_lasts_until_the_end_of_its_scope) {
    cTracer one("one");
    {
        cTraceIndent const outer(one);
        cTraceIndent const inner(one);
        EXPECT_EQ(one.indent(), 2);
        inner.inc();
        EXPECT_EQ(one.indent(), 3);
        inner.dec();
        inner.dec();
        EXPECT_EQ(one.indent(), 1);
    }
    EXPECT_EQ(one.indent(), -1);
    static_assert(!std::is_copy_constructible_v<cTraceIndent>);
    static_assert(!std::is_copy_assignable_v<cTraceIndent>);
}

// ---- streams ----

TEST_F(Trace, a_file_that_cannot_be_opened_is_reported_once_and_replaced) {
    cTracer one("one");
    std::string const path = folder + "no/such/x.log";
    cSetTracing("one:" + path);
    EXPECT_EQ(messages.text(), "cTraceStream: open failed: " + path + "\n");
    EXPECT_EQ(streams(one), path + " ");
    one << "text" << std::endl;
    EXPECT_EQ(messages.text(), "cTraceStream: open failed: " + path + "\ntext\n");
    cSetTracing("+two:" + path); // uses this stream
    EXPECT_EQ(messages.text(), "cTraceStream: open failed: " + path + "\ntext\n");
}

TEST_F(Trace, a_folder_cannot_be_opened_as_a_stream) {
    cSetTracing("one:" + folder);
    EXPECT_EQ(messages.text(), "cTraceStream: open failed: " + folder + "\n");
}

TEST_F(Trace, a_file_closes_with_its_last_user) {
    std::string const path = folder + "x.log";
    cTracer one("one");
    cSetTracing("one:" + path);
    one << "not flushed";
    EXPECT_EQ(file_text(path), "");
    cTracer other(one);
    cSetTracing("-one");
    EXPECT_EQ(file_text(path), "not flushed");
}

TEST_F(Trace, copies_of_a_stream_share_what_they_write_to) {
    std::string const path = folder + "x.log";
    {
        auto first = std::make_optional<cTraceStream>(path);
        cTraceStream const copy(*first);
        EXPECT_EQ(copy.name(), path);
        EXPECT_EQ(copy.refs(), 1U);
        EXPECT_EQ(&copy.os(), &first->os());
        cTraceStream other("");
        EXPECT_EQ(other.name(), "cerr");
        other = copy;
        first.reset();
        copy.os() << "copy ";
        other.os() << "other";
    }
    EXPECT_EQ(file_text(path), "copy other");
}

TEST_F(Trace, open_finds_an_existing_stream_by_name) {
    cRef<cTraceStream> const first = cTraceStream::open("cout");
    EXPECT_EQ(cTraceStream::open("cout"), first);
    EXPECT_NE(cTraceStream::open(""), first);
    EXPECT_EQ(first->refs(), 1U);
}

// ---- the timer ----

// Waits until the counter has changed.
void let_time_pass(cStopWatch const &watch) {
    for (auto const begin = watch.clock(); watch.clock() == begin;) std::this_thread::yield();
}

TEST_F(StopWatchEdge, elapsed_increases_and_the_operator_reads_lap_times) {
    cStopWatch const watch;
    let_time_pass(watch);
    double const first = watch.Elapsed();
    let_time_pass(watch);
    double const second = watch.Elapsed();
    EXPECT_GT(first, 0);
    EXPECT_GT(second, first);
    double const lap = watch();
    EXPECT_GE(lap, second);
    EXPECT_LT(watch.Elapsed() - watch(), lap); // measured from the end of the lap
}

TEST_F(StopWatchEdge, writing_keeps_the_stream_format_and_prints_six_digits) {
    cStopWatch const watch;
    cOstringstream os;
    os.precision(3);
    os.setf(std::ios::hex | std::ios::scientific | std::ios::showpos | std::ios::unitbuf);
    auto const flags = os.flags();
    os << watch;
    EXPECT_EQ(os.precision(), 3);
    EXPECT_EQ(os.flags(), flags);
    std::string const text = os.str();
    ASSERT_GE(text.size(), 10U);
    EXPECT_EQ(text.substr(text.size() - 2), " s");
    EXPECT_EQ(text.find('.'), text.size() - 9);
    EXPECT_EQ(text.find_first_not_of("0123456789. s"), std::string::npos);
}

TEST_F(StopWatch, writing_begins_a_new_lap) {
    cStopWatch const watch;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    cOstringstream os;
    os << watch;
    EXPECT_GE(std::stod(os.str()), 0.019);
    cStopWatch const after;
    EXPECT_LE(watch.Elapsed() - after.Elapsed(), 0.019);
}

TEST_F(StopWatch, start_resets_the_timer) {
    cStopWatch watch;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    double const before = watch.Elapsed();
    watch.Start();
    cStopWatch const other;
    EXPECT_GE(before, 0.019);
    EXPECT_LE(watch.Elapsed() - other.Elapsed(), 0.019);
}

TEST_F(StopWatch, the_step_is_measured_when_needed) {
    cStopWatch const watch;
    cStopWatch::freq = 0.0;
    static_cast<void>(watch.Elapsed());
    EXPECT_GT(cStopWatch::freq, 0.0);
    cStopWatch::freq = 1.0; // seconds per step
    let_time_pass(watch);
    EXPECT_GE(watch.Elapsed(), 1.0);
    cStopWatch::queryfreq();
    EXPECT_LE(cStopWatch::freq, 1e-6);
}

} // namespace
