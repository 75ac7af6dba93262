#pragma once
// The characters that the scanner can see without asking the stream for more: the look-ahead and
// what lies ready behind it in the stream's get area, as one stretch of memory.
//
// Most tokens lie in it whole. A match that comes to its end is thrown away and made again from the
// stream (cStreamChars), character by character, so that the stream is asked for more exactly when
// the rules need more. In a text that is in memory the end of the window is the end of input.
//
// The look-ahead was copied when it was taken, so the stream may have been changed since. It is
// used in place only if the very same characters still lie in front of the get pointer.

#include "text/scan/cattrscanner_buffer.h"
#include "text/scan/cattrscanner_rules.h"
#include "text/scan/cmemory_stream.h"

#include <climits>
#include <cstring>

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
};

// White space that was passed over.
struct cWhite {
    std::size_t size = 0;
    unsigned lines = 0;
    std::size_t column = 0; // characters behind the last newline
};

class cWindow {
  public:
    // `plain`: the end of input is asked of nobody but the stream.
    cWindow(yy_buffer_state *buffer, bool plain);

    // Moves the window's beginning behind white space, unless a comment may begin there.
    cWhite pass_white();

    // For the rules.
    int at(std::size_t i);
    std::size_t skip_to(std::size_t i, unsigned set);
    std::string_view text(std::size_t size) const { return {base_, size}; }
    bool never_closed(char quote) const {
        return buffer_->offset + passed_ < buffer_->no_close[quote == '"' ? 0 : 1];
    }
    void set_no_close(char quote, std::size_t i) {
        if (!ran_out_) buffer_->no_close[quote == '"' ? 0 : 1] = buffer_->offset + passed_ + i;
    }

    bool ran_out() const { return ran_out_; } // the match is void
    void give_up() { ran_out_ = true; }
    bool met_end() const { return met_end_; } // the end of input was looked at
    bool lasting() const { return lasting_; } // views of the text stay valid

    // Takes what was looked at from the stream; ahead is then what is behind the white space.
    void take();
    // Goes behind the match.
    void consume(std::size_t size);

  private:
    yy_buffer_state *buffer_;
    std::streambuf *stream_ = nullptr;
    char const *base_ = nullptr;
    char const *end_ = nullptr;
    char const *get_ = nullptr;  // the get pointer
    char const *seen_ = nullptr; // behind what was looked at
    std::size_t passed_ = 0;
    bool whole_ = false;
    bool lasting_ = false;
    bool ran_out_ = false;
    bool met_end_ = false;
};

inline cWindow::cWindow(yy_buffer_state *buffer, bool plain) : buffer_(buffer) {
    if (!buffer || !buffer->in || !buffer->in->good()) return;
    std::streambuf &b = *buffer->in->rdbuf();
    cMemoryBuf const *const text = buffer->text_of(&b);
    char const *const get = cGetArea::begin(b);
    std::string_view const ahead = buffer->ahead;
    if (!ahead.empty()) {
        bool const in_place =
            text ? ahead.data() + ahead.size() == get
                 : ahead.size() <= yy_buffer_state::few &&
                       get - cGetArea::start(b) >= static_cast<std::ptrdiff_t>(ahead.size()) &&
                       std::memcmp(get - ahead.size(), ahead.data(), ahead.size()) == 0;
        if (!in_place) return;
    }
    stream_ = &b;
    base_ = get - ahead.size();
    get_ = seen_ = get;
    end_ = cGetArea::reach(b);
    lasting_ = text != nullptr;
    whole_ = plain && text && !text->broken() && end_ == cGetArea::end(b);
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
            break;
        }
    }
    if (*p == '/') return {};
    white.size = passed_ = static_cast<std::size_t>(p - base_);
    white.column = static_cast<std::size_t>(p - line);
    base_ = p;
    return white;
}

inline int cWindow::at(std::size_t i) {
    if (i >= static_cast<std::size_t>(end_ - base_)) {
        (whole_ ? met_end_ : ran_out_) = true;
        return -1;
    }
    seen_ = std::max(seen_, base_ + i + 1);
    return look_at(base_ + i);
}

inline std::size_t cWindow::skip_to(std::size_t i, unsigned set) {
    char const *p = base_ + i;
    while (p != end_ && !stops(look_at(p), set)) ++p;
    if (p == end_)
        (whole_ ? met_end_ : ran_out_) = true;
    else
        seen_ = std::max(seen_, p + 1);
    return static_cast<std::size_t>(p - base_);
}

inline void cWindow::take() {
    if (met_end_) seen_ = end_;
    cGetArea::skip(*stream_, static_cast<std::size_t>(seen_ - get_));
    buffer_->offset += passed_;
    if (lasting_) buffer_->view({base_, static_cast<std::size_t>(seen_ - base_)});
}

inline void cWindow::consume(std::size_t size) {
    buffer_->offset += size;
    std::string_view const rest(base_ + size, static_cast<std::size_t>(seen_ - base_) - size);
    lasting_ ? buffer_->view(rest) : buffer_->copy(rest);
}

} // namespace scan
