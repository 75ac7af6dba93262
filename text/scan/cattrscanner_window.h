#pragma once
// The characters that the scanner can see without asking the stream for more: the look-ahead and
// what lies ready behind it in the stream's get area, as one stretch of memory.
//
// Most tokens lie in it whole. A match that comes to its end is void, and is made again from the
// stream, character by character, so that the stream is asked for more exactly when the rules need
// more.
// The look-ahead was copied when it was taken, since the stream may change at any time. It is used
// in place only if the very same characters lie in front of the get pointer: then the window holds
// what the scanner would see, whatever was done to the stream.

#include "text/scan/cattrscanner_buffer.h"
#include "text/scan/cattrscanner_rules.h"

#include <climits>

namespace scan {

// The get area of a stream buffer: what may be read without asking the buffer to fill it.
struct cGetArea : std::streambuf {
    static char const *start(std::streambuf const &b) { return (b.*&cGetArea::eback)(); }
    static char const *begin(std::streambuf const &b) { return (b.*&cGetArea::gptr)(); }
    static char const *end(std::streambuf const &b) { return (b.*&cGetArea::egptr)(); }
    static void skip(std::streambuf &b, std::size_t n) {
        (b.*&cGetArea::gbump)(static_cast<int>(n));
    }
    // So much of it can be skipped at once.
    static char const *reach(std::streambuf const &b) {
        char const *const first = begin(b);
        return end(b) - first > INT_MAX ? first + INT_MAX : end(b);
    }
    // Where `ahead` lies in front of the get pointer; null if it doesn't.
    static char const *before(std::streambuf const &b, std::string_view ahead) {
        std::ptrdiff_t n = static_cast<std::ptrdiff_t>(ahead.size());
        if (n > begin(b) - start(b)) return nullptr;
        char const *const first = begin(b) - n;
        while (n-- > 0)
            if (first[n] != ahead[static_cast<std::size_t>(n)]) return nullptr;
        return first;
    }
};

// White space that was passed over.
struct cWhite {
    std::size_t size = 0;
    unsigned lines = 0;
    std::size_t column = 0; // characters behind the last newline
};

// Everything is inline and nothing keeps its address: a window lives in registers.
class cWindow {
  public:
    // `offset` of the engine, at the current place.
    cWindow(yy_buffer_state *buffer, std::size_t offset);

    // Moves the window's beginning behind white space, unless a comment may begin there.
    cWhite pass_white();

    // For the rules.
    int at(std::size_t i) {
        if (i >= static_cast<std::size_t>(end_ - base_)) return void_ = true, -1;
        see(base_ + i);
        return look_at(base_ + i);
    }
    std::size_t skip_to(std::size_t i, unsigned set) {
        char const *p = base_ + i;
        while (p != end_ && !stops(look_at(p), set)) ++p;
        if (p == end_)
            void_ = true;
        else
            see(p);
        return static_cast<std::size_t>(p - base_);
    }
    std::string_view text(std::size_t size) const { return {base_, size}; }
    bool never_closed(char quote) const {
        return offset_ < buffer_->no_close[quote == '"' ? 0 : 1];
    }
    void set_no_close(char quote, std::size_t i) {
        if (!void_) buffer_->no_close[quote == '"' ? 0 : 1] = offset_ + i;
    }

    // Is more needed, to find the match or to note what is ahead behind it?
    bool fails(std::size_t size) const {
        return void_ || seen_ - (base_ + size) > static_cast<std::ptrdiff_t>(yy_buffer_state::few);
    }
    // Goes behind the match: takes from the stream what was looked at.
    void consume(std::size_t size) {
        cGetArea::skip(*buffer_->known, static_cast<std::size_t>(seen_ - get_));
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
    char const *get_ = nullptr;  // the get pointer
    char const *seen_ = nullptr; // behind what was looked at
    bool void_ = false;
};

inline cWindow::cWindow(yy_buffer_state *buffer, std::size_t offset)
    : buffer_(buffer), offset_(offset) {
    if (!buffer || !buffer->in || !buffer->in->good()) return;
    std::streambuf const *const b = buffer->in->rdbuf();
    if (b != buffer->known) return;
    char const *const base = cGetArea::before(*b, buffer->ahead);
    if (!base) return;
    base_ = base;
    get_ = seen_ = cGetArea::begin(*b);
    end_ = cGetArea::reach(*b);
}

inline cWhite cWindow::pass_white() {
    cWhite white;
    char const *p = base_;
    char const *line = base_;
    for (;; ++p) {
        if (p == end_) return {};
        int const c = look_at(p);
        if (c == ' ') continue;
        if (c == '\n') {
            ++white.lines;
            line = p + 1;
        } else if (stops(c, cs_no_space)) {
            if (c == '/') return {};
            break;
        }
    }
    white.size = static_cast<std::size_t>(p - base_);
    white.column = static_cast<std::size_t>(p - line);
    base_ = p;
    offset_ += white.size;
    return white;
}

// Where the engine is in a text in memory; else null.
inline char const *memory_place(yy_buffer_state &buffer) {
    std::streambuf const *const b = buffer.in->rdbuf();
    if (!b || b != buffer.known || !buffer.in_memory) return nullptr;
    return cGetArea::before(*b, buffer.ahead);
}

} // namespace scan
