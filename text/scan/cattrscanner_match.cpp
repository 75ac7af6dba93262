// The matching engine: finds the longest match of rules 1 to 16, 19 and 20 by hand.
//
// The first character decides the group of rules; within a group one walk finds the longest match.
// Characters are looked at through at(i), which takes one from the stream only when it is needed,
// so after a token that is complete by itself, such as `{` or a string, nothing more was taken.
// Where a longer match is tried in vain (`1.5e+x`, a quote that is never closed) the surplus stays
// in the look-ahead. Runs are copied straight out of the stream buffer's get area; only an empty
// get area is filled by the stream's own `get`, which also flushes a tied stream and sets the
// stream's state. So an ordinary character costs no virtual call.

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <istream>
#include <memory>
#include <ostream>
#include <utility>

#include "qrv/diagnostics/ccout.h"
#include "qrv/text/scan/cattrscanner.h"
#include "text/scan/cattrscanner_buffer.h"

namespace {

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
constexpr std::array<unsigned char, 256> sets = make_sets();

bool in_set(char c, unsigned set) { return (sets[static_cast<unsigned char>(c)] & set) != 0; }

// The get area of a stream buffer: what may be read without asking the buffer to fill it.
struct cGetArea : std::streambuf {
    static char const *begin(std::streambuf const &b) { return (b.*&cGetArea::gptr)(); }
    static char const *end(std::streambuf const &b) { return (b.*&cGetArea::egptr)(); }
    static void skip(std::streambuf &b, std::size_t n) {
        (b.*&cGetArea::gbump)(static_cast<int>(n));
    }
};

// The stream's buffer if characters lie ready in it, else null.
std::streambuf *ready(std::istream &in) {
    std::streambuf *b = in.rdbuf();
    return in.good() && cGetArea::begin(*b) != cGetArea::end(*b) ? b : nullptr;
}

// Moves ready characters into `look`, up to the first that is in `set`. False if there was none.
bool take_run(std::istream &in, std::string &look, unsigned set) {
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

} // namespace

// A used-up buffer with more room than this gives it back, so that one huge token is not paid for
// until the end of the input.
constexpr std::size_t room_kept = 1 << 16;
// Used characters are removed when there are this many and they are the greater part.
constexpr std::size_t used_kept = 1 << 12;

void yy_buffer_state::consume(std::size_t n) {
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

void yy_buffer_state::drop() { consume(ahead()); }

FlexLexer::~FlexLexer() = default;

attrFlexLexer::attrFlexLexer(std::istream *in, std::ostream *out)
    : buffer_(new yy_buffer_state(in)), out_(out) {}

attrFlexLexer::~attrFlexLexer() { delete buffer_; }

void attrFlexLexer::yy_switch_to_buffer(yy_buffer_state *buffer) {
    if (buffer == buffer_) return;
    if (made_) delete buffer_;
    buffer_ = buffer;
    made_ = false;
}

yy_buffer_state *attrFlexLexer::yy_create_buffer(std::istream *in, int size) {
    auto buffer = std::make_unique<yy_buffer_state>(in);
    if (size > 0) buffer->look.reserve(static_cast<std::size_t>(size));
    return buffer.release();
}

void attrFlexLexer::yy_delete_buffer(yy_buffer_state *buffer) {
    if (buffer == buffer_) buffer_ = nullptr;
    delete buffer;
}

void attrFlexLexer::yyrestart(std::istream *in) {
    if (!buffer_) {
        buffer_ = yy_create_buffer(in, 0);
        made_ = true;
    }
    buffer_->drop();
    buffer_->in = in;
}

int attrFlexLexer::yylex() {
    LexerError("yyFlexLexer::yylex invoked but %option yyclass used");
    return 0;
}

void attrFlexLexer::switch_streams(std::istream *in, std::ostream *out) {
    if (in) {
        yy_buffer_state *fresh = yy_create_buffer(in, 0);
        delete std::exchange(buffer_, fresh);
        made_ = true;
    }
    if (out) out_ = out;
}

// The end is known by the state of the stream alone: after it, nothing is asked for any more.
int attrFlexLexer::LexerInput(char *to, int room) {
    std::istream *in = input();
    if (!in || room < 1) return 0;
    if (in->good()) in->get(*to);
    if (in->eof()) return 0;
    if (in->bad()) return -1;
    return in->good() ? 1 : 0;
}

void attrFlexLexer::LexerOutput(char const *text, int size) {
    (out_ ? *out_ : cat::std_out()).write(text, size);
}

void attrFlexLexer::LexerError(char const *text) {
    cat::std_err() << text << std::endl;
    std::exit(2);
}

std::istream *attrFlexLexer::input() const { return buffer_ ? buffer_->in : nullptr; }

std::string_view attrFlexLexer::matched() const {
    if (!buffer_) return {};
    return {buffer_->look.data() + buffer_->next, size_};
}

void attrFlexLexer::consume() {
    if (buffer_) buffer_->consume(size_);
    size_ = 0;
}

void attrFlexLexer::drop_lookahead() {
    if (buffer_) buffer_->drop();
    size_ = 0;
}

// One more character of look-ahead; false at the end of input.
bool attrFlexLexer::more() {
    std::istream *in = input();
    if (!in) return false;
    char c;
    if (std::streambuf *b = ready(*in)) {
        c = std::char_traits<char>::to_char_type(b->sbumpc());
    } else {
        int const n = LexerInput(&c, 1);
        if (n < 0) LexerError("input in flex scanner failed");
        if (n <= 0) return false;
    }
    buffer_->look.push_back(c);
    return true;
}

// The character i places on, from 0 to 255, or -1 behind the end of input. Those before were seen.
int attrFlexLexer::at(std::size_t i) {
    if (!buffer_ || (i >= buffer_->ahead() && !more())) return -1;
    return static_cast<unsigned char>(buffer_->look[buffer_->next + i]);
}

// The first place from i on that holds a member of the set, or the end of input.
std::size_t attrFlexLexer::skip_to(std::size_t i, unsigned set) {
    for (;;) {
        std::string const &look = buffer_->look;
        char const *const first = look.data() + buffer_->next;
        while (i < buffer_->ahead()) {
            if (in_set(first[i], set)) return i;
            ++i;
        }
        if (take_run(*buffer_->in, buffer_->look, set)) {
            i = buffer_->ahead();
        } else if (!more()) {
            return i;
        }
    }
}

attrFlexLexer::rule attrFlexLexer::found(rule r, std::size_t size) {
    size_ = size;
    return r;
}

bool attrFlexLexer::digit_at(std::size_t i) { return is_digit(at(i)); }

attrFlexLexer::rule attrFlexLexer::match() {
    int const c = at(0);
    if (c < 0) return found(r_end, 0);
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
        return digit_at(1) ? match_fraction(0) : found(r_char, 1);
    case '#':
        return match_const();
    case '<':
        return at(1) == '<' ? found(r_shift_left, 2) : found(r_char, 1);
    case '&':
        return at(1) == '=' ? found(r_and_assign, 2) : found(r_char, 1);
    default:
        return found(r_char, 1);
    }
}

attrFlexLexer::rule attrFlexLexer::match_word() {
    size_ = skip_to(1, cs_no_word);
    if (matched() == "true") return r_true;
    return matched() == "false" ? r_false : r_ident;
}

attrFlexLexer::rule attrFlexLexer::match_const() {
    return is_letter(at(1)) ? found(r_const, skip_to(2, cs_no_word)) : found(r_char, 1);
}

attrFlexLexer::rule attrFlexLexer::match_sign(int sign) {
    int const c = at(1);
    if (is_digit(c)) return match_number(1);
    if (c == '.' && digit_at(2)) return match_fraction(1);
    return sign == '+' && c == '=' ? found(r_add_assign, 2) : found(r_char, 1);
}

// Digits stand at `from`, behind a sign if that isn't 0. A signed number needs a digit behind its
// point, one without sign does not.
attrFlexLexer::rule attrFlexLexer::match_number(std::size_t from) {
    std::size_t const end = skip_to(from, cs_no_digit);
    int const c = at(end);
    if (is_letter(c)) return match_suffix(from, end);
    if (c == '.' && (from == 0 || digit_at(end + 1))) return match_fraction(end);
    return found(r_int, end);
}

// Letters run on behind the digits: a hexadecimal or an unsigned number if all of it fits, else
// bad.
attrFlexLexer::rule attrFlexLexer::match_suffix(std::size_t from, std::size_t letter) {
    size_ = skip_to(letter, cs_no_word);
    std::string_view const text = matched();
    char const first = text[letter];
    if (text.size() == letter + 1 && (first == 'u' || first == 'U')) return r_unsigned;
    bool const prefix =
        from == 0 && letter == 1 && text[0] == '0' && (first == 'x' || first == 'X');
    bool const hex = prefix && text.size() > 2 && std::all_of(text.begin() + 2, text.end(), is_hex);
    return hex ? r_hex : r_bad_ident;
}

attrFlexLexer::rule attrFlexLexer::match_fraction(std::size_t point) {
    std::size_t end = skip_to(point + 1, cs_no_digit);
    int c = at(end);
    if (c == 'e' || c == 'E') {
        int const sign = at(end + 1);
        std::size_t const digits = end + (sign == '+' || sign == '-' ? 2 : 1);
        if (digit_at(digits)) end = skip_to(digits, cs_no_digit);
        c = at(end);
    }
    return c == 'f' || c == 'F' ? found(r_float, end + 1) : found(r_double, end);
}

attrFlexLexer::rule attrFlexLexer::match_string(char quote) {
    std::size_t &no_close = buffer_->no_close[quote == '"' ? 0 : 1];
    if (buffer_->offset() < no_close) return found(r_char, 1);
    for (std::size_t i = 1;; i += 2) {
        i = skip_to(i, quote == '"' ? cs_quote : cs_tick);
        int const c = at(i);
        if (c == quote) return found(r_string, i + 1);
        if (c == '\\' && at(i + 1) >= 0) continue;
        no_close = buffer_->offset() + i;
        return found(r_char, 1);
    }
}

attrFlexLexer::rule attrFlexLexer::match_space() {
    std::size_t const end = skip_to(0, cs_no_space);
    if (at(end) == '/') {
        int const c = at(end + 1);
        if (c == '/') return found(r_line_comment, skip_to(end + 2, cs_newline));
        if (c == '*') return found(r_block_comment, end + 2);
    }
    return end ? found(r_space, end) : found(r_char, 1);
}

bool attrFlexLexer::match_comment() {
    for (std::size_t i = 0;; ++i) {
        i = skip_to(i, cs_star);
        if (at(i) < 0) return size_ = i, false;
        if (at(i + 1) == '/') return size_ = i + 2, true;
    }
}
