#pragma once
// The characters that the scanner can access without reading from the stream: the look-ahead and
// the available characters after it in the stream's get area, as one contiguous piece of memory.
//
// Most tokens are completely inside it. A match that reaches its end is void and is repeated from
// the stream, character by character, so that the stream is read only if the rules need more
// characters. The look-ahead was copied when it was read, since the stream may change at any time.
// It is used in place only if the same characters are before the get pointer: then the window
// equals what the scanner would read, even if the stream was changed.

#include "text/scan/cattrscanner_buffer.h"
#include "text/scan/cattrscanner_rules.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace scan {

// The get area of a stream buffer: the characters that can be read without filling the buffer.
struct cGetArea : std::streambuf {
    static char const *start(std::streambuf const &b) { return (b.*&cGetArea::eback)(); }
    static char const *begin(std::streambuf const &b) { return (b.*&cGetArea::gptr)(); }
    static char const *end(std::streambuf const &b) { return (b.*&cGetArea::egptr)(); }
    static void go_to(std::streambuf &b, char const *place) {
        (b.*&cGetArea::setg)((b.*&cGetArea::eback)(), const_cast<char *>(place),
                             (b.*&cGetArea::egptr)());
    }
    // The position of `ahead` directly before the get pointer; null if it isn't there.
    static char const *before(std::streambuf const &b, std::string_view ahead) {
        char const *place = begin(b);
        if (ahead.empty()) return place;
        if (static_cast<std::ptrdiff_t>(ahead.size()) > place - start(b)) return nullptr;
        for (std::size_t i = ahead.size(); i > 0; --i)
            if (look_at(--place) != static_cast<unsigned char>(ahead[i - 1])) return nullptr;
        return place;
    }
};

// White space that was skipped.
struct cWhite {
    std::size_t size = 0;
    unsigned lines = 0;
    std::size_t column = 0; // characters after the last newline
};

// Everything is inline and no address is stored, so a window stays in registers.
class cWindow {
  public:
    // `offset` is the engine's, at the current position.
    cWindow(yy_buffer_state *buffer, std::size_t offset);

    // Moves the window's start past white space, unless a comment may begin there.
    cWhite pass_white();

    // For the rules.
    int at(std::size_t i) {
        if (i >= static_cast<std::size_t>(end_ - base_)) return void_ = true, -1;
        see(base_ + i);
        return look_at(base_ + i);
    }
    int run(std::size_t &i, unsigned set) {
        char const *p = base_ + i;
        int c = -1;
        for (; p != end_; ++p) {
            c = look_at(p);
            if (stops(c, set)) break;
        }
        i = static_cast<std::size_t>(p - base_);
        if (p == end_) return void_ = true, -1;
        see(p);
        return c;
    }
    std::string_view text(std::size_t size) const { return {base_, size}; }
    bool never_closed(int quote) const { return offset_ < buffer_->no_close[quote == '"' ? 0 : 1]; }
    void set_no_close(int quote, std::size_t i) {
        unclosed_ = quote;
        no_close_ = offset_ + i;
    }

    // Whether the match must be repeated from the stream: it reached the window's end, or more than
    // `few` characters after it were examined, and look_ahead() can't record so many.
    bool fails(std::size_t size) const {
        return void_ || seen_ - (base_ + size) > static_cast<std::ptrdiff_t>(yy_buffer_state::few);
    }
    // Moves past the match: reads the examined characters from the stream.
    void consume(std::size_t size) {
        if (unclosed_ != 0) buffer_->no_close[unclosed_ == '"' ? 0 : 1] = no_close_;
        cGetArea::go_to(*buffer_->known, seen_);
        buffer_->look_ahead(base_ + size, static_cast<std::size_t>(seen_ - base_) - size);
    }
    char const *begin() const { return base_; }
    char const *end() const { return end_; }

  private:
    void see(char const *p) { seen_ = p >= seen_ ? p + 1 : seen_; }

    yy_buffer_state *buffer_;
    std::size_t offset_;
    char const *base_ = nullptr;
    char const *end_ = nullptr;
    char const *seen_ = nullptr; // after the examined characters
    bool void_ = false;
    int unclosed_ = 0; // a quote of this kind has no closing quote before no_close_
    std::size_t no_close_ = 0;
};

inline cWindow::cWindow(yy_buffer_state *buffer, std::size_t offset)
    : buffer_(buffer), offset_(offset) {
    if (!buffer || !buffer->stream || !buffer->stream->good()) return;
    std::streambuf const *const b = buffer->stream->rdbuf();
    if (b != buffer->known || buffer->ahead.size() > yy_buffer_state::few) return;
    char const *const base = cGetArea::before(*b, buffer->ahead);
    if (!base) return;
    base_ = base;
    seen_ = cGetArea::begin(*b);
    end_ = cGetArea::end(*b);
}

// Skips the indent of a line, eight blanks at a time: saves 4 % of reading.
inline char const *pass_indent(char const *p, char const *end) {
    constexpr std::uint64_t blanks = 0x2020202020202020;
    while (end - p >= 8) {
        std::uint64_t others = 0;
        std::memcpy(&others, p, sizeof others);
        others ^= blanks;
        auto const zeros = static_cast<unsigned>(std::endian::native == std::endian::little
                                                     ? std::countr_zero(others)
                                                     : std::countl_zero(others));
        unsigned const n = zeros / 8;
        for (unsigned i = 0; i < n; ++i) look_at(p + i);
        p += n;
        if (n < 8) break;
    }
    return p;
}

inline cWhite cWindow::pass_white() {
    cWhite white;
    char const *p = base_;
    char const *line = base_;
    for (;;) {
        if (p == end_) return {};
        int const c = look_at(p);
        if (stops(c, cs_no_space)) {
            if (c == '/') return {};
            break;
        }
        ++p;
        if (c != '\n') continue;
        ++white.lines;
        line = p;
        p = pass_indent(p, end_);
    }
    white.size = static_cast<std::size_t>(p - base_);
    white.column = static_cast<std::size_t>(p - line);
    base_ = p;
    offset_ += white.size;
    return white;
}

// The position of the engine in its text, if that is in memory; null for any other stream, and
// while the look-ahead is long, as after an unclosed quote, since comparing it takes time for each
// token.
inline char const *memory_place(yy_buffer_state &buffer) {
    buffer.recognise();
    if (!buffer.in_memory || buffer.ahead.size() > yy_buffer_state::few) return nullptr;
    return cGetArea::before(*buffer.known, buffer.ahead);
}

} // namespace scan
