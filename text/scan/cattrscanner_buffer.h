#pragma once
// What the matching engine keeps about one input. Private to the engine.
//
// Characters move only like this: stream --more(), skip_to()--> look[..size) --consume()--> gone.
// `next` is the current place; what lies before it in `look` is used and removed in bulk, so that
// every character is moved a bounded number of times on average.

#include <cstddef>
#include <istream>
#include <string>

struct yy_buffer_state {
    explicit yy_buffer_state(std::istream *stream) : in(stream) {}
    yy_buffer_state(yy_buffer_state const &) = delete;
    yy_buffer_state &operator=(yy_buffer_state const &) = delete;

    std::size_t ahead() const { return look.size() - next; }
    std::size_t offset() const { return removed + next; } // of the current place, never goes back
    void consume(std::size_t n);
    void drop();

    std::istream *in; // borrowed
    std::string look;
    std::size_t next = 0;
    std::size_t removed = 0;
    // No string opened before this offset is closed, for double and single quotes. Whether a quote
    // or a newline is escaped depends only on the backslashes directly before it, so a search that
    // failed speaks for every later quote of its kind up to the place where it stopped. That place
    // was taken from the stream, so it never lies behind a look-ahead that was dropped.
    std::size_t no_close[2] = {0, 0};
};
