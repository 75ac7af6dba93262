#pragma once
// What the matching engine keeps about one input. Private to the engine.
//
// Characters move only like this: stream --take()--> ahead --consume()--> used. Every character is
// taken from the stream once. What is ahead of the current place is a view: into the text itself
// if that is in memory (cMemoryBuf), else into `few_` or `look_`, so that the stream may change
// under it. Used characters are removed from `look_` in bulk, so that each is moved a bounded
// number of times on average.

#include <algorithm>
#include <array>
#include <cstddef>
#include <istream>
#include <string>
#include <string_view>

class cMemoryBuf;

struct yy_buffer_state {
    explicit yy_buffer_state(std::istream *stream) : in(stream) {}
    yy_buffer_state(yy_buffer_state const &) = delete;
    yy_buffer_state &operator=(yy_buffer_state const &) = delete;

    // More look-ahead than this is not looked for in front of a stream's get pointer.
    static constexpr std::size_t few = 8;

    // Copies characters behind those ahead.
    void take(char const *first, std::size_t n);
    // Changes what is ahead, to a part of the text in memory or to a copy.
    void view(std::string_view rest) {
        if (in_look_) release();
        ahead = rest;
    }
    void copy(std::string_view rest) {
        if (in_look_) release();
        if (rest.size() > few) return take_all(rest);
        std::copy(rest.begin(), rest.end(), few_.begin());
        ahead = {few_.data(), rest.size()};
    }
    void consume(std::size_t n);
    void drop() { consume(ahead.size()); }
    void reserve(std::size_t n) { look_.reserve(n); }
    // The buffer if its characters are in memory, else null.
    cMemoryBuf const *text_of(std::streambuf *b) {
        if (b != known_) recognise(b);
        return text_;
    }

    std::istream *in; // borrowed
    std::string_view ahead;
    std::size_t offset = 0; // of the current place, never goes back
    // No string opened before this offset is closed, for double and single quotes. Whether a quote
    // or a newline is escaped depends only on the backslashes directly before it, so a search that
    // failed speaks for every later quote of its kind up to the place where it stopped. That place
    // was taken from the stream, so it never lies behind a look-ahead that was dropped.
    std::size_t no_close[2] = {0, 0};

  private:
    void recognise(std::streambuf *b);
    void take_all(std::string_view rest);
    void release();

    std::string look_;
    std::array<char, few> few_{};
    bool in_look_ = false; // `ahead` is a view of the end of look_
    std::streambuf *known_ = nullptr;
    cMemoryBuf const *text_ = nullptr; // known_ as what it is
};
