// A hand-written scanner of the most common tokens: single characters, words, and numbers and
// strings of the usual form. It is used for tokens that are completely in memory, unless the
// lexer has a special case or returns white space. All other tokens are left to scan(); nothing is
// changed then, except that white space may have been skipped.
//
// The functions here call others only at their ends, so that all values stay in registers. They
// need two fifths of the instructions that scan() would need for the same tokens, which reduces the
// cost of reading by 20 %.

#include "qrv/text/scan/cattrscanner.h"
#include "text/scan/cattrlexer_inline.h"
#include "text/scan/cattrscanner_run.h"
#include "text/scan/cattrscanner_window.h"

#include <array>
#include <cstring>

namespace {

bool is_bool(char const *p, std::ptrdiff_t size) {
    if (size == 4) return std::memcmp(p, "true", 4) == 0;
    return size == 5 && std::memcmp(p, "fals", 4) == 0 && p[4] == 'e';
}

constexpr std::array<char, 256> make_singles() {
    std::array<char, 256> singles{};
    for (unsigned i = 0; i < singles.size(); ++i)
        singles[i] = static_cast<char>(static_cast<unsigned char>(i));
    return singles;
}
// Each character as a string, for the texts of single-character tokens.
constexpr std::array<char, 256> singles = make_singles();

unsigned kind(int c) { return scan::classes[static_cast<std::size_t>(c)].kind; }

} // namespace

class cCommonTokens {
  public:
    static cToken const &next(cAttrLexer &lexer, yy_buffer_state &in);
    static cToken const &single(cAttrLexer &lexer, int c);

  private:
    static bool put_back(yy_buffer_state &in, std::streambuf &b);
    static cToken const &word(cAttrLexer &lexer, char const *p, char const *end);
    static cToken const &number(cAttrLexer &lexer, char const *p, char const *end);
    static cToken const &string(cAttrLexer &lexer, char const *p, char const *end);
    static cToken const &finish(cAttrLexer &lexer, char const *p, char const *end, char const *stop,
                                unsigned ahead, int code);
    static cToken const &keep_long_text(cAttrLexer &lexer);
};

// The character has been read from the stream and is no longer in the look-ahead.
[[gnu::always_inline]] inline cToken const &cCommonTokens::single(cAttrLexer &lexer, int c) {
    lexer.begin_token();
    ++lexer.offset_;
    lexer.token_.code = c < 128 ? c : c - 256;
    lexer.token_.text = {&singles[static_cast<std::size_t>(c)], 1};
    lexer.literal_filled_ = false;
    return lexer.token_;
}

// `ahead`: characters that were read after the token, at most one.
[[gnu::always_inline]] inline cToken const &cCommonTokens::finish(cAttrLexer &lexer, char const *p,
                                                                  char const *end, char const *stop,
                                                                  unsigned ahead, int code) {
    yy_buffer_state &in = *lexer.buffer();
    scan::cGetArea::go_to(*in.known, stop + ahead);
    in.look_ahead(stop, ahead);
    lexer.begin_token();
    auto const size = static_cast<std::size_t>(stop - p);
    lexer.offset_ += size;
    lexer.token_.code = code;
    lexer.literal_filled_ = false;
    lexer.token_.text = {p, size};
    if (in.in_memory) return lexer.token_;
    constexpr std::size_t most = cAttrLexer::short_text;
    if (size > most || end - p < static_cast<std::ptrdiff_t>(most)) return keep_long_text(lexer);
    unsigned const other = lexer.last_text_ ^ 1;
    lexer.last_text_ = other;
    char *const copy = lexer.short_texts_[other];
    std::memcpy(copy, p, most);
    lexer.token_.text = {copy, size};
    return lexer.token_;
}

[[gnu::noinline]] cToken const &cCommonTokens::keep_long_text(cAttrLexer &lexer) {
    lexer.token_.text = lexer.next_text().assign(lexer.token_.text);
    return lexer.token_;
}

[[gnu::noinline]] cToken const &cCommonTokens::word(cAttrLexer &lexer, char const *p,
                                                    char const *end) {
    char const *const stop = scan::run_end<scan::cs_no_word>(p + 1, end);
    if (stop == end) return lexer.next_of_any_kind();
    return finish(lexer, p, end, stop, 1, is_bool(p, stop - p) ? tkBool : tkIdent);
}

[[gnu::noinline]] cToken const &cCommonTokens::string(cAttrLexer &lexer, char const *p,
                                                      char const *end) {
    char const *const stop = *p == '"' ? scan::run_end<scan::cs_quote>(p + 1, end)
                                       : scan::run_end<scan::cs_tick>(p + 1, end);
    if (stop == end || *stop != *p) return lexer.next_of_any_kind();
    return finish(lexer, p, end, stop + 1, 0, tkString);
}

// `p` is at a sign or a digit.
[[gnu::noinline]] cToken const &cCommonTokens::number(cAttrLexer &lexer, char const *p,
                                                      char const *end) {
    auto const no_digit = [](char const *at) {
        return scan::stops(scan::look_at(at), scan::cs_no_digit);
    };
    bool const is_signed = *p == '+' || *p == '-';
    char const *stop = p + 1;
    if (is_signed && (stop == end || no_digit(stop))) return lexer.next_of_any_kind();
    stop = scan::run_end<scan::cs_no_digit>(stop, end);
    if (end - stop < 2) return lexer.next_of_any_kind();
    int code = tkInt;
    if (*stop == '.') {
        if (is_signed && no_digit(stop + 1)) return lexer.next_of_any_kind();
        stop = scan::run_end<scan::cs_no_digit>(stop + 1, end);
        if (stop == end) return lexer.next_of_any_kind();
        code = tkDouble;
    }
    if (!scan::stops(scan::look_at(stop), scan::cs_no_word)) return lexer.next_of_any_kind();
    return finish(lexer, p, end, stop, 1, code);
}

// Puts back a character of the look-ahead, if it is still before the get pointer.
inline bool cCommonTokens::put_back(yy_buffer_state &in, std::streambuf &b) {
    if (in.ahead.size() > 1) return false;
    char const *const place = scan::cGetArea::before(b, in.ahead);
    if (!place) return false;
    scan::cGetArea::go_to(b, place);
    in.ahead = {};
    return true;
}

// Skips white space even if the token after it is left to scan(), except before a comment, whose
// text includes that white space.
[[gnu::noinline]] cToken const &cCommonTokens::next(cAttrLexer &lexer, yy_buffer_state &in) {
    if (!in.stream || !in.stream->good()) return lexer.next_of_any_kind();
    std::streambuf &b = *in.stream->rdbuf();
    if (&b != in.known || (!in.ahead.empty() && !put_back(in, b))) return lexer.next_of_any_kind();
    char const *p = scan::cGetArea::begin(b);
    char const *const end = scan::cGetArea::end(b);
    if (p == end) return lexer.next_of_any_kind();

    int c = scan::look_at(p);
    if (!scan::stops(c, scan::cs_no_space)) {
        char const *line = nullptr; // after the last newline
        unsigned lines = 0;
        do {
            ++p;
            if (c == '\n') {
                ++lines;
                line = p;
                p = scan::pass_indent(p, end);
            }
            if (p == end) return lexer.next_of_any_kind();
            c = scan::look_at(p);
        } while (!scan::stops(c, scan::cs_no_space));
        if (c == '/') return lexer.next_of_any_kind();
        lexer.offset_ += static_cast<std::size_t>(p - scan::cGetArea::begin(b));
        scan::cGetArea::go_to(b, p);
        if (lines > 0) lexer.pass_lines(lines, static_cast<std::size_t>(p - line));
    }

    unsigned const k = kind(c);
    if (k == scan::ck_letter) return word(lexer, p, end);
    if (k == scan::ck_digit || (k == scan::ck_sign && c != '.')) return number(lexer, p, end);
    if (k == scan::ck_string) return string(lexer, p, end);
    if (k != scan::ck_single) return lexer.next_of_any_kind();
    scan::cGetArea::go_to(b, p + 1);
    return single(lexer, c);
}

// After a word or a number its terminator is in the look-ahead. If that is a token itself, such as
// `=` or `;`, the stream is not accessed at all.
cToken const &cAttrLexer::next() {
    yy_buffer_state *const in = buffer();
    if (special_ || return_ws_ || !in) return next_of_any_kind();
    if (in->ahead.size() == 1) {
        int const c = scan::look_at(in->ahead.data());
        if (kind(c) == scan::ck_single) {
            in->ahead = {};
            return cCommonTokens::single(*this, c);
        }
    }
    return cCommonTokens::next(*this, *in);
}
