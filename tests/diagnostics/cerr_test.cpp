// Errors: the value, the stream that composes it, the handler, and the path between them.

#include "qrv/core/ceros.h"

#include "diagnostics/cerrline.h"
#include "messages.h"

#include <gtest/gtest.h>

#include <concepts>
#include <exception>
#include <functional>
#include <iomanip>
#include <locale>
#include <memory>
#include <stdexcept>

namespace {

// Restores the masks of the library's handler after each test, and clears the stream before and
// after it.
class Errors : public testing::Test {
  protected:
    Errors() : before_(cat::errhandler()) { eros().clear(); }
    ~Errors() override {
        cat::errhandler() = before_;
        eros().clear();
    }

    void masks(unsigned int throw_mask, unsigned int clear_mask, unsigned int silent_mask) {
        cat::errhandler() = cErrHandler(throw_mask, clear_mask, silent_mask);
    }
    static bool raise(unsigned int code, char const *text) {
        eros().clear();
        eros().set_code(code);
        eros() << text;
        return raise_eros();
    }

    cPieces messages;

  private:
    cErrHandler before_;
};
using ErrorEdge = Errors;
class ErrorValue : public testing::Test {};
using ErrorValueEdge = ErrorValue;

struct cGrouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// A slot on sig_error that runs a function.
class cWatch {
  public:
    explicit cWatch(std::function<void(cErr &)> function)
        : function_(std::move(function)), slot_(this, &cWatch::call, cat::sig_error()) {}
    cWatch(cWatch const &) = delete;
    cWatch &operator=(cWatch const &) = delete;
    ~cWatch() = default;

  private:
    void call(cErr &error) { function_(error); }

    std::function<void(cErr &)> function_;
    cSlot1<cWatch, cErr &> slot_;
};

// ---- values ----

TEST_F(ErrorValueEdge, isbad_begins_at_bit_30) {
    EXPECT_FALSE(cErr(0x3FFFFFFF, "").isbad());
    EXPECT_TRUE(cErr(0x40000000, "").isbad());
    EXPECT_TRUE(cErr(0x90000000, "").isbad());
    EXPECT_FALSE(cErr().isbad());
}

TEST_F(ErrorValueEdge, a_null_string_is_an_empty_string) {
    EXPECT_EQ(cErr(7, (char const *)nullptr).as_string(), "");
    EXPECT_EQ(cErr(7, 0).as_string(), "");
    EXPECT_EQ(cErr(7, nullptr).as_string(), "");
    EXPECT_EQ(cErr(7, nullptr).code(), 7U);
}

TEST_F(ErrorValueEdge, a_copy_of_a_stream_carries_its_pending_text) {
    cErrStream stream(0x90000000, "first");
    stream << ", pending " << 12;
    cErr const copy = stream;
    EXPECT_EQ(copy.as_string(), "first, pending 12");
    EXPECT_EQ(copy.code(), 0x90000000U);
    EXPECT_FALSE(copy.handled());
}

TEST_F(ErrorValue, an_assigned_stream_carries_its_pending_text) {
    cErrStream stream(5);
    stream << "pending";
    stream.set_handled(true);
    cErr copy(1, "old");
    copy = stream;
    EXPECT_EQ(copy.as_string(), "pending");
    EXPECT_EQ(copy.code(), 5U);
    EXPECT_TRUE(copy.handled());
}

TEST_F(ErrorValue, a_base_copy_of_a_stream_carries_its_pending_text) {
    cErrStream stream(5);
    stream << "pending";
    cException const copy = stream;
    EXPECT_EQ(copy.as_string(), "pending");
}

TEST_F(ErrorValue, an_error_assigned_to_a_stream_becomes_its_text) {
    cErrStream stream(5);
    stream << "old";
    static_cast<cErr &>(stream) = cErr(6, "new");
    stream << "er";
    EXPECT_EQ(stream.as_string(), "newer");
    EXPECT_EQ(stream.code(), 6U);
}

TEST_F(ErrorValue, self_assignment_changes_nothing) {
    cErr error(6, "text");
    cErr const &same = error;
    error = same;
    EXPECT_EQ(error.as_string(), "text");
}

TEST_F(ErrorValue, set_does_not_change_handled) {
    cErr error(1, "a");
    error.set_handled(true);
    error.set(2, "b");
    EXPECT_EQ(error.code(), 2U);
    EXPECT_EQ(error.as_string(), "b");
    EXPECT_TRUE(error.handled());
}

TEST_F(ErrorValue, clear_resets_everything) {
    cErr error(1, "a");
    error.set_handled(true);
    error.clear();
    EXPECT_EQ(error.code(), 0U);
    EXPECT_EQ(error.as_string(), "");
    EXPECT_FALSE(error.handled());
}

TEST_F(ErrorValue, the_text_of_an_exception_can_be_replaced) {
    cException error("a");
    EXPECT_EQ(error.as_string(), "a");
    error.set_string("b");
    EXPECT_EQ(error.as_string(), "b");
    EXPECT_EQ(cException().as_string(), "");
}

TEST_F(ErrorValue, an_error_is_a_standard_exception) {
    static_assert(std::derived_from<cException, std::exception>);
    EXPECT_STREQ(cException("a").what(), "a");
    EXPECT_STREQ(cException().what(), "");
    cErr error(6, "text");
    error.set(7, "another");
    std::exception const &base = error;
    EXPECT_STREQ(base.what(), "another");
    try {
        throw cErr(1, "thrown");
    } catch (std::exception const &caught) {
        EXPECT_STREQ(caught.what(), "thrown");
    }
}

TEST_F(ErrorValue, the_pending_text_of_a_stream_is_returned_by_what) {
    cErrStream stream(1, "first");
    stream << ", pending " << 12;
    std::exception const &base = stream;
    EXPECT_STREQ(base.what(), "first, pending 12");
    stream << "!";
    cException const copy = stream;
    EXPECT_STREQ(copy.what(), "first, pending 12!");
}

// ---- the stream ----

TEST_F(ErrorValue, a_stream_accepts_strings_longer_than_its_buffer) {
    cErrStream stream(1);
    std::string const text(5000, 'x');
    stream << text << "|" << text;
    EXPECT_EQ(stream.as_string(), text + "|" + text);
}

TEST_F(ErrorValue, set_string_on_a_stream_replaces_the_pending_text) {
    cErrStream stream(1);
    stream << "old";
    stream.set_string("new");
    EXPECT_EQ(stream.as_string(), "new");
    stream << "old";
    stream.set(2, "newer");
    EXPECT_EQ(stream.as_string(), "newer");
    EXPECT_EQ(stream.code(), 2U);
}

TEST_F(ErrorValue, inserting_a_null_string_does_not_lose_the_next_error) {
    cErrStream stream(1);
    stream << static_cast<char const *>(nullptr);
    EXPECT_TRUE(stream.bad());
    stream.clear();
    stream << "intact";
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.as_string(), "intact");
}

TEST_F(ErrorValue, clear_restores_the_number_format) {
    cErrStream stream(1);
    stream << std::hex << std::showbase << std::setprecision(2) << std::setfill('*') << std::setw(9)
           << std::boolalpha << std::uppercase;
    stream.imbue(std::locale(std::locale::classic(), new cGrouping));
    stream.clear();
    stream << 1234567 << ' ' << 1.23456 << ' ' << std::setw(3) << 7 << ' ' << true;
    EXPECT_EQ(stream.as_string(), "1234567 1.23456   7 1");
}

class cNoSync : public std::streambuf {
    int sync() override { return -1; }
};

TEST_F(ErrorValue, a_failed_flush_sets_the_bad_state_and_keeps_the_text) {
    cErrStream stream(1, "text");
    cNoSync broken;
    stream.rdbuf(&broken);
    EXPECT_EQ(stream.as_string(), "text");
    EXPECT_TRUE(stream.bad());
}

TEST_F(ErrorValue, errors_and_handlers_can_be_copied_but_streams_cannot) {
    static_assert(!std::is_copy_constructible_v<cErrStream> &&
                  !std::is_copy_assignable_v<cErrStream>);
    static_assert(std::is_copy_constructible_v<cErr> && std::is_copy_assignable_v<cErr>);
    static_assert(std::is_copy_constructible_v<cErrHandler> &&
                  std::is_copy_assignable_v<cErrHandler>);
    static_assert(std::has_virtual_destructor_v<cException>);
    static_assert(sizeof(decltype(cErr().code())) == 4);
}

// ---- from the stream to the handlers ----

TEST_F(ErrorEdge, an_error_is_printed_and_the_clear_mask_decides_whether_it_is_cleared) {
    unsigned int seen = 0;
    cWatch const watch([&seen](cErr &error) { seen = error.code(); });
    EXPECT_FALSE(raise(0x41800000, "no converter"));
    EXPECT_EQ(seen, 0x41800000U);
    EXPECT_EQ(messages.text(), "no converter\n");
    masks(0x90000000, 0x01000000, 0);
    EXPECT_TRUE(raise(0x41800000, "again"));
    EXPECT_EQ(seen, 0x01800000U);
    EXPECT_EQ(messages.text(), "no converter\nagain\n");
}

TEST_F(ErrorEdge, bit_28_is_printed_and_thrown) {
    try {
        raise(0x50000000, "bad prototype");
        FAIL() << "nothing thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 0x50000000U);
        EXPECT_EQ(error.as_string(), "bad prototype");
    }
    EXPECT_EQ(messages.text(), "bad prototype\n");
}

TEST_F(ErrorEdge, the_silent_mask_suppresses_output_but_not_the_exception) {
    masks(0x90000000, 0, 0x40000000);
    EXPECT_FALSE(raise(0x40000000, "quiet"));
    EXPECT_FALSE(raise(0x7FFFFFFF & ~0x10000000U, "quiet too"));
    EXPECT_THROW(raise(0x50000000, "thrown"), cErr);
    EXPECT_EQ(messages.text(), "");
    EXPECT_THROW(raise(0x80000000, "without bit 30"), cErr);
    EXPECT_EQ(messages.text(), "without bit 30\n");
}

TEST_F(ErrorEdge, a_slot_after_the_handler_sees_the_reduced_code) {
    masks(0, 0x40000000, 0);
    std::vector<unsigned int> seen;
    cWatch const watch([&seen](cErr &error) { seen.push_back(error.code()); });
    EXPECT_TRUE(raise(0x40020000, "a"));
    EXPECT_EQ(seen, std::vector<unsigned int>{0x00020000});
}

TEST_F(ErrorEdge, an_error_raised_in_a_slot_does_not_change_the_outer_error) {
    std::vector<std::string> seen;
    cWatch const nested([](cErr &error) {
        if (error.as_string() == "outer") raise(0x40000002, "inner");
    });
    cWatch const last([&seen](cErr &error) {
        seen.push_back(error.as_string() + " " + std::to_string(error.code() & 0xF));
    });
    EXPECT_FALSE(raise(0x40000001, "outer"));
    EXPECT_EQ(seen, (std::vector<std::string>{"inner 2", "outer 1"}));
    EXPECT_EQ(messages.text(), "outer\ninner\n");
    EXPECT_EQ(eros().as_string(), "inner");
}

TEST_F(ErrorEdge, clear_also_discards_text_not_yet_flushed) {
    eros() << "left over";
    eros().clear();
    EXPECT_EQ(eros().as_string(), "");
    eros() << "next";
    EXPECT_EQ(eros().as_string(), "next");
}

TEST_F(Errors, the_handler_starts_with_its_masks) {
    EXPECT_EQ(cat::errhandler().throw_mask(), 0x90000000U);
    EXPECT_EQ(cat::errhandler().clear_mask(), 0U);
    EXPECT_EQ(cat::errhandler().silent_mask(), 0U);
    EXPECT_EQ(cErrHandler().throw_mask(), 0x80000000U);
    EXPECT_EQ(cErrHandler().clear_mask(), 0U);
    EXPECT_EQ(cErrHandler().silent_mask(), 0U);
}

TEST_F(Errors, bit_31_is_thrown_and_caught_by_its_base) {
    try {
        raise(0x80000000, "text");
        FAIL() << "nothing thrown";
    } catch (cException const &error) {
        EXPECT_EQ(error.as_string(), "text");
    }
}

TEST_F(Errors, a_code_that_is_not_bad_is_printed_and_execution_continues) {
    EXPECT_TRUE(raise(0x2FFFFFFF, "harmless"));
    EXPECT_EQ(messages.text(), "harmless\n");
}

TEST_F(Errors, a_thrown_error_is_printed_and_not_cleared) {
    masks(0x40000000, 0x40000000, 0);
    try {
        raise(0x40000000, "both masks");
        FAIL() << "nothing thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 0x40000000U);
    }
    EXPECT_EQ(messages.text(), "both masks\n");
}

TEST_F(Errors, clearing_keeps_the_class_bits) {
    masks(0, 0x00800000, 0);
    cErr error(0xC1800007, "a");
    cat::errhandler()(error);
    EXPECT_EQ(error.code(), 0x01800007U);
}

TEST_F(Errors, an_operation_continues_if_a_slot_lowers_the_code) {
    cWatch const watch([](cErr &error) { error.set_code(0x3FFFFFFF); });
    EXPECT_TRUE(raise(0x40000000, "a"));
}

TEST_F(Errors, an_operation_stops_if_a_slot_raises_the_code) {
    masks(0, 0x40000000, 0);
    cWatch const watch([](cErr &error) { error.set_code(0x40000000); });
    EXPECT_FALSE(raise(0x40000000, "a"));
}

TEST_F(Errors, a_thrown_error_does_not_reach_later_slots) {
    int reached = 0;
    cWatch const watch([&reached](cErr &) { ++reached; });
    EXPECT_THROW(raise(0x80000000, "a"), cErr);
    EXPECT_EQ(reached, 0);
    EXPECT_FALSE(raise(0x40000000, "b"));
    EXPECT_EQ(reached, 1);
}

TEST_F(Errors, a_stream_sent_as_an_error_is_thrown_as_a_plain_error_with_its_text) {
    cErrStream stream(0x80000000);
    stream << "pending";
    try {
        cat::sig_error()(stream);
        FAIL() << "nothing thrown";
    } catch (cErr &error) {
        EXPECT_EQ(error.as_string(), "pending");
        EXPECT_EQ(dynamic_cast<cErrStream *>(&error), nullptr);
    }
}

TEST_F(Errors, a_copied_handler_has_the_masks_but_no_connections) {
    cErrHandler const copy(cat::errhandler());
    EXPECT_FALSE(copy.isconnected());
    EXPECT_EQ(copy.throw_mask(), 0x90000000U);
    cErrHandler other(1, 2, 3);
    other = cat::errhandler();
    EXPECT_FALSE(other.isconnected());
    EXPECT_EQ(other.throw_mask(), 0x90000000U);
    EXPECT_EQ(other.silent_mask(), 0U);
    EXPECT_TRUE(cat::errhandler().isconnected());
}

class cRecording : public cErrHandler {
  public:
    using cErrHandler::cErrHandler;
    void dohandler(cErr &error) override { texts.push_back(error.as_string()); }
    std::vector<std::string> texts;
};

TEST_F(Errors, a_derived_handler_replaces_dohandler) {
    cRecording handler;
    cat::sig_error().connect(handler);
    EXPECT_FALSE(raise(0x40000000, "a"));
    EXPECT_EQ(handler.texts, std::vector<std::string>{"a"});
    cRecording const copy(handler);
    EXPECT_FALSE(copy.isconnected());
    cErr error(0x90000000, "b");
    copy(error);
    EXPECT_EQ(copy.texts, (std::vector<std::string>{"a", "b"}));
}

TEST_F(Errors, the_format_of_cerr_does_not_change_the_error_line) {
    cat::std_err().width(30);
    EXPECT_FALSE(raise(0x40000000, "100%n %s"));
    cat::std_err().width(0);
    EXPECT_EQ(messages.text(), "100%n %s\n");
}

TEST_F(Errors, an_error_is_printed_even_if_cerr_is_in_a_bad_state) {
    for (auto const state : {std::ios::badbit, std::ios::failbit, std::ios::eofbit}) {
        cat::std_err().setstate(state);
        EXPECT_FALSE(raise(0x40000000, "heard"));
        cat::error_line("a line");
        EXPECT_EQ(cat::std_err().rdstate(), state);
        cat::std_err().clear();
    }
    EXPECT_EQ(messages.text(), "heard\na line\nheard\na line\nheard\na line\n");
}

TEST_F(Errors, an_error_is_printed_at_once_after_buffered_output_of_cout) {
    cat::std_out() << "first, ";
    EXPECT_FALSE(raise(0x40000000, std::string(3000, 'e').c_str()));
    EXPECT_EQ(messages.text(), "first, " + std::string(3000, 'e') + "\n");
}

TEST_F(Errors, a_listener_may_destroy_the_handler_that_prints) {
    for (unsigned int const clear_mask : {0x40000000U, 0U}) {
        auto handler = std::make_unique<cErrHandler>(0x80000000U, clear_mask, 0U);
        cSignal1<cErr &> const signal;
        signal.connect(*handler);
        cOnText const slot(cOutSigStreambuf.sig(), [&handler](char const *) { handler.reset(); });
        cErr error(0x40000007, "forgiven or not");
        signal(error);
        EXPECT_EQ(handler, nullptr);
        EXPECT_EQ(error.code(), clear_mask ? 0x00000007U : 0x40000007U);
    }
}

TEST_F(Errors, a_handler_that_a_listener_destroyed_still_throws) {
    auto handler = std::make_unique<cErrHandler>();
    cSignal1<cErr &> const signal;
    signal.connect(*handler);
    cOnText const slot(cOutSigStreambuf.sig(), [&handler](char const *) { handler.reset(); });
    cErr error(0x80000000, "thrown");
    EXPECT_THROW(signal(error), cErr);
    EXPECT_EQ(handler, nullptr);
}

TEST_F(Errors, a_throwing_message_slot_does_not_affect_the_handler) {
    struct cThrower {
        void call(char const *) { throw std::runtime_error("display is gone"); }
    } thrower;
    cSlot1<cThrower, char const *> const slot(&thrower, &cThrower::call, cOutSigStreambuf.sig());
    EXPECT_FALSE(raise(0x40000000, "first"));
    EXPECT_THROW(raise(0x80000000, "second"), cErr);
    EXPECT_EQ(messages.text(), "first\nsecond\n");
}

} // namespace
