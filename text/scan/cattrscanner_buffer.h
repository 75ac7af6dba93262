#pragma once
// The matching engine's state of one input. Private to the engine.
//
// Characters move only like this: stream --take()--> ahead --consume()--> used. Every character is
// read from the stream once. The look-ahead is a copy, so that the stream may change meanwhile;
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

    // A look-ahead of at most this size is usually also in the get area, before the get pointer.
    static constexpr std::size_t few = 8;

    void take(char const *first, std::size_t n); // copies characters after those ahead
    // Sets the look-ahead to at most `few` characters.
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
    std::basic_ios<char> *stream; // the same stream, as the base class with state and buffer
    std::string_view ahead;       // at most `few` characters in few_, or more in look_
    // For double and single quotes: strings that begin before this offset of the engine have no
    // closing quote. Only the backslashes directly before a quote or a newline decide whether it is
    // escaped, so a failed search holds for every later quote of its kind up to its end.
    std::size_t no_close[2] = {0, 0};
    std::streambuf *known = nullptr; // the stream's buffer at the last check
    bool in_memory = false;          // its characters stay at the same address

  private:
    void release();

    std::string look_;
    std::array<char, few> few_{};
};
