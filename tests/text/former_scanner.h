#pragma once
// The library's scanner before tokens became views, as the reference for the present one: it copies
// every character into its own buffer and every token's text into a string. Unchanged except for
// its names and omitted parts that no comparison needs: sharing, errors, the dump.

#include "qrv/text/scan/cattrscanner.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace former {

struct cBuffer {
    explicit cBuffer(std::istream *stream) : in(stream) {}
    cBuffer(cBuffer const &) = delete;
    cBuffer &operator=(cBuffer const &) = delete;

    std::size_t ahead() const { return look.size() - next; }
    std::size_t offset() const {
        return removed + next;
    } // of the current position; never decreases
    void consume(std::size_t n);
    void drop();

    std::istream *in; // borrowed
    std::string look;
    std::size_t next = 0;
    std::size_t removed = 0;
    // For double and for single quotes: no string that begins before this offset is closed. Whether
    // a quote or a newline is escaped depends only on the backslashes directly before it, so a
    // failed search is valid for every later quote of its kind up to the position where it stopped.
    // All characters before that position were read, so drop() never leaves the current position
    // before this offset.
    std::size_t no_close[2] = {0, 0};
};

// Sets of characters. The scans look for the first member of a set, so some are complements.
enum char_set : unsigned char {
    cs_letter = 1,
    cs_no_word = 2, // neither letter nor digit
    cs_no_digit = 4,
    cs_no_space = 8,
    cs_newline = 16,
    cs_star = 32,
    cs_quote = 64, // ends a run inside a double-quoted string: quote, backslash, newline
    cs_tick = 128  // the same for single quotes
};

constexpr bool is_digit(int c) { return c >= '0' && c <= '9'; }
constexpr bool is_letter(int c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
constexpr bool is_space(int c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
constexpr bool is_hex(int c) {
    return is_digit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

constexpr std::array<unsigned char, 256> make_sets() {
    std::array<unsigned char, 256> sets{};
    for (int c = 0; c < 256; ++c) {
        unsigned set = 0;
        if (is_letter(c)) set |= cs_letter;
        if (!is_letter(c) && !is_digit(c)) set |= cs_no_word;
        if (!is_digit(c)) set |= cs_no_digit;
        if (!is_space(c)) set |= cs_no_space;
        if (c == '\n') set |= cs_newline;
        if (c == '*') set |= cs_star;
        if (c == '"' || c == '\\' || c == '\n') set |= cs_quote;
        if (c == '\'' || c == '\\' || c == '\n') set |= cs_tick;
        sets[static_cast<std::size_t>(c)] = static_cast<unsigned char>(set);
    }
    return sets;
}
inline constexpr std::array<unsigned char, 256> sets = make_sets();

inline bool in_set(char c, unsigned set) {
    return (sets[static_cast<unsigned char>(c)] & set) != 0;
}

// The get area of a stream buffer: the characters that can be read without refilling the buffer.
struct cGetArea : std::streambuf {
    static char const *begin(std::streambuf const &b) { return (b.*&cGetArea::gptr)(); }
    static char const *end(std::streambuf const &b) { return (b.*&cGetArea::egptr)(); }
    static void skip(std::streambuf &b, std::size_t n) {
        (b.*&cGetArea::gbump)(static_cast<int>(n));
    }
};

// The stream's buffer if it has characters ready, otherwise null.
inline std::streambuf *ready(std::istream &in) {
    std::streambuf *b = in.rdbuf();
    return in.good() && cGetArea::begin(*b) != cGetArea::end(*b) ? b : nullptr;
}

// Moves ready characters into `look`, up to the first that is in `set`. False if no character was
// ready.
inline bool take_run(std::istream &in, std::string &look, unsigned set) {
    std::streambuf *b = ready(in);
    if (!b) return false;
    char const *first = cGetArea::begin(*b);
    std::ptrdiff_t room = std::min<std::ptrdiff_t>(cGetArea::end(*b) - first, INT_MAX);
    char const *stop = std::find_if(first, first + room, [=](char c) { return in_set(c, set); });
    if (stop == first) return false;
    look.append(first, stop);
    cGetArea::skip(*b, static_cast<std::size_t>(stop - first));
    return true;
}

// A used-up buffer with more capacity than this is freed, so that one huge token does not occupy
// memory until the end of the input.
constexpr std::size_t room_kept = 1 << 16;
// Used characters are removed when there are more than this many and they are the greater part.
constexpr std::size_t used_kept = 1 << 12;

inline void cBuffer::consume(std::size_t n) {
    next += n;
    if (next == look.size()) {
        if (look.capacity() > room_kept) std::string().swap(look);
        look.clear();
    } else if (next > used_kept && next > look.size() / 2) {
        look.erase(0, next);
    } else {
        return;
    }
    removed += next;
    next = 0;
}

inline void cBuffer::drop() { consume(ahead()); }

class cEngine {
  public:
    using rule = attrFlexLexer::rule;
    explicit cEngine(std::istream *in) : buffer_(in) {}

  protected:
    int LexerInput(char *to, int room) {
        std::istream *in = input();
        if (!in || room < 1) return 0;
        if (in->good()) in->get(*to);
        if (in->eof()) return 0;
        if (in->bad()) return -1;
        return in->good() ? 1 : 0;
    }

    std::istream *input() const { return buffer_.in; }

    std::string_view matched() const { return {buffer_.look.data() + buffer_.next, size_}; }

    void consume() {
        buffer_.consume(size_);
        size_ = 0;
    }

    void drop_lookahead() {
        buffer_.drop();
        size_ = 0;
    }

    // One more character of look-ahead; false at the end of input.
    bool more() {
        std::istream *in = input();
        if (!in) return false;
        char c;
        if (std::streambuf *b = ready(*in)) {
            c = std::char_traits<char>::to_char_type(b->sbumpc());
        } else {
            int const n = LexerInput(&c, 1);
            if (n <= 0) return false;
        }
        buffer_.look.push_back(c);
        return true;
    }

    // The character at distance i as a number from 0 to 255, or -1 at the end of input. All before
    // it must have been read.
    int at(std::size_t i) {
        if (i >= buffer_.ahead() && !more()) return -1;
        return static_cast<unsigned char>(buffer_.look[buffer_.next + i]);
    }

    // The first position from i on with a member of the set, or the end of input.
    std::size_t skip_to(std::size_t i, unsigned set) {
        for (;;) {
            std::string const &look = buffer_.look;
            char const *const first = look.data() + buffer_.next;
            while (i < buffer_.ahead()) {
                if (in_set(first[i], set)) return i;
                ++i;
            }
            if (take_run(*buffer_.in, buffer_.look, set)) {
                i = buffer_.ahead();
            } else if (!more()) {
                return i;
            }
        }
    }

    rule found(rule r, std::size_t size) {
        size_ = size;
        return r;
    }

    bool digit_at(std::size_t i) { return is_digit(at(i)); }

    rule match() {
        int const c = at(0);
        if (c < 0) return found(attrFlexLexer::r_end, 0);
        if (is_letter(c)) return match_word();
        if (is_digit(c)) return match_number(0);
        switch (c) {
        case ' ':
        case '\t':
        case '\r':
        case '\n':
        case '/':
            return match_space();
        case '"':
        case '\'':
            return match_string(static_cast<char>(c));
        case '+':
        case '-':
            return match_sign(c);
        case '.':
            return digit_at(1) ? match_fraction(0) : found(attrFlexLexer::r_char, 1);
        case '#':
            return match_const();
        case '<':
            return at(1) == '<' ? found(attrFlexLexer::r_shift_left, 2)
                                : found(attrFlexLexer::r_char, 1);
        case '&':
            return at(1) == '=' ? found(attrFlexLexer::r_and_assign, 2)
                                : found(attrFlexLexer::r_char, 1);
        default:
            return found(attrFlexLexer::r_char, 1);
        }
    }

    rule match_word() {
        size_ = skip_to(1, cs_no_word);
        if (matched() == "true") return attrFlexLexer::r_true;
        return matched() == "false" ? attrFlexLexer::r_false : attrFlexLexer::r_ident;
    }

    rule match_const() {
        return is_letter(at(1)) ? found(attrFlexLexer::r_const, skip_to(2, cs_no_word))
                                : found(attrFlexLexer::r_char, 1);
    }

    rule match_sign(int sign) {
        int const c = at(1);
        if (is_digit(c)) return match_number(1);
        if (c == '.' && digit_at(2)) return match_fraction(1);
        return sign == '+' && c == '=' ? found(attrFlexLexer::r_add_assign, 2)
                                       : found(attrFlexLexer::r_char, 1);
    }

    // Digits begin at `from`, which is 1 after a sign and otherwise 0. A signed number needs a
    // digit after its point, an unsigned one does not.
    rule match_number(std::size_t from) {
        std::size_t const end = skip_to(from, cs_no_digit);
        int const c = at(end);
        if (is_letter(c)) return match_suffix(from, end);
        if (c == '.' && (from == 0 || digit_at(end + 1))) return match_fraction(end);
        return found(attrFlexLexer::r_int, end);
    }

    // Letters follow the digits: the token is a hexadecimal or an unsigned number if it matches
    // completely, otherwise bad.
    rule match_suffix(std::size_t from, std::size_t letter) {
        size_ = skip_to(letter, cs_no_word);
        std::string_view const text = matched();
        char const first = text[letter];
        if (text.size() == letter + 1 && (first == 'u' || first == 'U'))
            return attrFlexLexer::r_unsigned;
        bool const prefix =
            from == 0 && letter == 1 && text[0] == '0' && (first == 'x' || first == 'X');
        bool const hex =
            prefix && text.size() > 2 && std::all_of(text.begin() + 2, text.end(), is_hex);
        return hex ? attrFlexLexer::r_hex : attrFlexLexer::r_bad_ident;
    }

    rule match_fraction(std::size_t point) {
        std::size_t end = skip_to(point + 1, cs_no_digit);
        int c = at(end);
        if (c == 'e' || c == 'E') {
            int const sign = at(end + 1);
            std::size_t const digits = end + (sign == '+' || sign == '-' ? 2 : 1);
            if (digit_at(digits)) end = skip_to(digits, cs_no_digit);
            c = at(end);
        }
        return c == 'f' || c == 'F' ? found(attrFlexLexer::r_float, end + 1)
                                    : found(attrFlexLexer::r_double, end);
    }

    rule match_string(char quote) {
        std::size_t &no_close = buffer_.no_close[quote == '"' ? 0 : 1];
        if (buffer_.offset() < no_close) return found(attrFlexLexer::r_char, 1);
        for (std::size_t i = 1;; i += 2) {
            i = skip_to(i, quote == '"' ? cs_quote : cs_tick);
            int const c = at(i);
            if (c == quote) return found(attrFlexLexer::r_string, i + 1);
            if (c == '\\' && at(i + 1) >= 0) continue;
            no_close = buffer_.offset() + i;
            return found(attrFlexLexer::r_char, 1);
        }
    }

    rule match_space() {
        std::size_t const end = skip_to(0, cs_no_space);
        if (at(end) == '/') {
            int const c = at(end + 1);
            if (c == '/') return found(attrFlexLexer::r_line_comment, skip_to(end + 2, cs_newline));
            if (c == '*') return found(attrFlexLexer::r_block_comment, end + 2);
        }
        return end ? found(attrFlexLexer::r_space, end) : found(attrFlexLexer::r_char, 1);
    }

    bool match_comment() {
        for (std::size_t i = 0;; ++i) {
            i = skip_to(i, cs_star);
            if (at(i) < 0) return size_ = i, false;
            if (at(i + 1) == '/') return size_ = i + 2, true;
        }
    }

  private:
    cBuffer buffer_;
    std::size_t size_ = 0; // length of the match
};

class cScanner : cEngine {
  public:
    explicit cScanner(std::istream &in)
        : cEngine(&in), position_(stream_offset(in)), offset_(position_) {
        token_.position = position_;
    }

    int gettoken() {
        if (pushed_.empty()) return scan();
        token_ = std::move(pushed_.back());
        pushed_.pop_back();
        return token_.code;
    }
    cAttrLiteral const &token() const { return token_; }
    void ungettoken() { pushed_.push_back(token_); }
    void ungettoken(cAttrLiteral const &token) { pushed_.push_back(token); }
    void resettoken() { reset(token_.position, token_.line, token_.column); }
    void flush() { reset(position_, line_, column_); }
    void return_ws(bool on) { return_ws_ = on; }
    void return_com(bool on) { return_com_ = on; }
    void outer_places(std::vector<cAttrPlace> places) { places_ = std::move(places); }
    unsigned position() const { return position_; }
    unsigned lineno() const { return line_; }
    unsigned column() const { return column_; }

    void reset(unsigned position, unsigned line, unsigned column) {
        pushed_.clear();
        position_ = position;
        offset_ = position;
        line_ = line;
        column_ = column;
        token_.code = tkEof;
        drop_lookahead();
        std::istream &in = *input();
        in.clear();
        if (!in.rdbuf()) return;
        in.rdbuf()->pubseekpos(static_cast<std::int32_t>(position), std::ios::in);
    }

  private:
    static unsigned stream_offset(std::istream &in) {
        if (in.fail()) return static_cast<unsigned>(-1);
        return static_cast<unsigned>(
            static_cast<std::streamoff>(in.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in)));
    }

    // Codes of the rules that always return a token with a fixed code, by rule number.
    static constexpr std::array<int, 15> codes = {
        tkEof,    tkBool,   tkBool,  tkInt,   tkUnsigned,  tkBadIdent,  tkInt,      tkFloat,
        tkDouble, tkString, tkConst, tkIdent, tkAddAssign, tkShiftLeft, tkAndAssign};

    int scan() {
        for (;;) {
            rule const r = match();
            begin_token();
            switch (r) {
            case attrFlexLexer::r_end:
                return finish(tkEof);
            case attrFlexLexer::r_char:
                return finish(static_cast<signed char>(append(true)));
            case attrFlexLexer::r_space:
                append(return_ws_);
                if (return_ws_) return finish(tkSpace);
                break;
            case attrFlexLexer::r_line_comment:
                append(return_com_);
                if (return_com_) return finish(tkComment);
                break;
            case attrFlexLexer::r_block_comment:
                if (read_block_comment()) return finish(tkComment);
                break;
            default:
                append(true);
                return finish(codes[static_cast<std::size_t>(r)]);
            }
        }
    }

    // True if the comment is complete and requested. An unclosed comment at the end of the input is
    // dropped.
    bool read_block_comment() {
        append(return_com_);
        bool const closed = match_comment();
        append(return_com_);
        return closed && return_com_;
    }

    void begin_token() {
        token_.text.clear();
        token_.line = token_.outer_line = line_;
        token_.column = token_.outer_column = column_;
        token_.position = position_;
        if (!places_.empty()) set_outer_place();
    }

    void set_outer_place() {
        auto const is_before = [](std::size_t offset, cAttrPlace const &p) {
            return offset < p.offset;
        };
        auto next = std::upper_bound(places_.begin(), places_.end(), offset_, is_before);
        if (next == places_.begin()) return;
        cAttrPlace const &place = *--next;
        token_.outer_line = place.line;
        token_.outer_column = place.column + static_cast<unsigned>(offset_ - place.offset);
    }

    // Copies the match into the token's text, if requested, and advances the counters. Returns its
    // first character. The position counts every character but the newline.
    char append(bool keep_text) {
        std::string_view const text = matched();
        if (text.empty()) return 0;
        char const first = text.front();
        if (keep_text) token_.text.append(text);
        auto const size = static_cast<unsigned>(text.size());
        auto const newlines = static_cast<unsigned>(std::count(text.begin(), text.end(), '\n'));
        line_ += newlines;
        column_ =
            newlines ? static_cast<unsigned>(text.size() - 1 - text.rfind('\n')) : column_ + size;
        position_ += size - newlines;
        offset_ += text.size();
        consume();
        return first;
    }

    int finish(int code) {
        token_.code = code;
        return code;
    }

    cAttrLiteral token_;
    std::vector<cAttrLiteral> pushed_; // a stack
    bool return_ws_ = false;
    bool return_com_ = false;
    unsigned line_ = 1;
    unsigned column_ = 0;
    unsigned position_;
    std::size_t offset_; // bytes consumed, newlines included
    std::vector<cAttrPlace> places_;
};

} // namespace former
