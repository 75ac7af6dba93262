#pragma once
// What the matching engine keeps about one input. Private to the engine.
//
// Characters move only like this: stream --take()--> ahead --consume()--> used. Every character is
// taken from the stream once. The look-ahead is a copy, so that the stream may change under it;
// used characters are removed from `look_` in bulk, so that each is moved a bounded number of times
// on average.

#include "text/scan/cmemory_stream.h"

#include <array>
#include <cstddef>
#include <istream>
#include <string>
#include <string_view>

struct yy_buffer_state {
    explicit yy_buffer_state(std::istream *from) { change_stream(from); }
    yy_buffer_state(yy_buffer_state const &) = delete;
    yy_buffer_state &operator=(yy_buffer_state const &) = delete;

    // As much look-ahead as is expected to lie in front of the stream's get pointer too.
    static constexpr std::size_t few = 8;

    void take(char const *first, std::size_t n); // copies characters after those ahead
    // Up to `few` characters are ahead, and nothing else.
    void look_ahead(char const *first, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) few_[i] = first[i];
        ahead = {few_.data(), n};
    }
    void consume(std::size_t n);
    void drop();
    void reserve(std::size_t n) { look_.reserve(n); }
    void recognise();

    void change_stream(std::istream *to) {
        in = to;
        stream = to;
    }

    std::istream *in;             // borrowed
    std::basic_ios<char> *stream; // the same, as what has the state and the buffer
    std::string_view ahead;       // at most `few` characters in few_, or more in look_
    // No string opened before this offset of the engine is closed, for double and single quotes.
    // Whether a quote or a newline is escaped depends only on the backslashes directly before it,
    // so a search that failed speaks for every later quote of its kind up to the place where it
    // stopped.
    std::size_t no_close[2] = {0, 0};
    std::streambuf *known = nullptr; // the stream's buffer when it was looked at
    bool in_memory = false;          // its characters stay where they are

  private:
    void release();

    std::string look_;
    std::array<char, few> few_{};
};
