#pragma once
// The rules of the matching engine: the longest match of rules 1 to 16, 19 and 20, found by hand.
// They are written once for characters of either kind of source.
//
// The first character decides the group of rules; within a group one walk finds the longest match.
// Each character is looked at when it is needed and not before, so after a token that is complete
// by itself, such as `{` or a string, no more was looked at. Where a longer match is tried in vain
// (`1.5e+x`, a quote that is never closed) the surplus stays in the look-ahead.

#include "base/cchars.h"
#include "qrv/text/scan/cattrscanner.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace scan {

// What a run of characters stops at: some are complements of what the run consists of.
enum char_stop : unsigned {
    cs_no_word = 1, // neither letter nor digit
    cs_no_digit = 2,
    cs_no_space = 4,
    cs_newline = 8,
    cs_star = 16,
    cs_quote = 32, // ends a run inside a double-quoted string: quote, backslash, newline
    cs_tick = 64   // the same for single quotes
};

// What a token that begins with the character can be.
enum char_kind : unsigned {
    ck_single,
    ck_letter,
    ck_number, // or += or a sign or a point by itself
    ck_space,  // or a comment; a slash too
    ck_string,
    ck_hash,
    ck_less,
    ck_and
};
constexpr unsigned kind_shift = 8;

constexpr unsigned kind_of(char c) {
    if (is_letter(c)) return ck_letter;
    if (is_digit(c) || c == '+' || c == '-' || c == '.') return ck_number;
    if (is_white(c) || c == '/') return ck_space;
    switch (c) {
    case '"':
    case '\'':
        return ck_string;
    case '#':
        return ck_hash;
    case '<':
        return ck_less;
    case '&':
        return ck_and;
    default:
        return ck_single;
    }
}

constexpr unsigned stops_at(char c) {
    unsigned stops = 0;
    if (!is_letter(c) && !is_digit(c)) stops |= cs_no_word;
    if (!is_digit(c)) stops |= cs_no_digit;
    if (!is_white(c)) stops |= cs_no_space;
    if (c == '\n') stops |= cs_newline;
    if (c == '*') stops |= cs_star;
    if (c == '"' || c == '\\' || c == '\n') stops |= cs_quote;
    if (c == '\'' || c == '\\' || c == '\n') stops |= cs_tick;
    return stops;
}

constexpr std::array<unsigned short, 256> make_classes() {
    std::array<unsigned short, 256> classes{};
    for (unsigned i = 0; i < classes.size(); ++i) {
        char const c = static_cast<char>(static_cast<unsigned char>(i));
        classes[i] = static_cast<unsigned short>(stops_at(c) | kind_of(c) << kind_shift);
    }
    return classes;
}
inline constexpr std::array<unsigned short, 256> classes = make_classes();

#ifdef QRV_CHECKS
// How many characters were compared, for the tests that count work.
extern unsigned long long compared;
#endif

// The one place where a character is looked at, from 0 to 255.
inline int look_at(char const *c) {
#ifdef QRV_CHECKS
    ++compared;
#endif
    return static_cast<unsigned char>(*c);
}
inline bool stops(int c, unsigned set) { return (classes[static_cast<std::size_t>(c)] & set) != 0; }
inline bool is_digit_at(int c) { return c >= 0 && !stops(c, cs_no_digit); }

// `Chars` has
//   int at(size_t i)                       the character i places on, or -1 behind the end
//   size_t skip_to(size_t i, unsigned set) the first place from i on that holds a member of the
//                                          set, or the end
//   std::string_view text(size_t size)     so many characters, all looked at before
//   bool never_closed(char quote)          is a string known to have no end that begins here?
//   void set_no_close(char quote, size_t i) none that begins before i characters on has one
template <class Chars> class cRules {
  public:
    using rule = attrFlexLexer::rule;
    explicit cRules(Chars &chars) : chars_(chars) {}

    rule match();
    // Inside a block comment, from `from` on: matches up to and with its end, or to the end of
    // input, and then returns false.
    bool match_comment(std::size_t from);

    std::size_t size() const { return size_; }
    // Does the match hold newlines? Of white space and comments it isn't known.
    bool lines() const { return lines_; }

  private:
    int at(std::size_t i) { return chars_.at(i); }
    bool digit_at(std::size_t i) { return is_digit_at(at(i)); }
    rule found(rule r, std::size_t size) {
        size_ = size;
        return r;
    }
    rule match_word();
    rule match_const();
    rule match_number(int sign);
    rule match_suffix(std::size_t from, std::size_t letter);
    rule match_fraction(std::size_t point);
    rule match_string(char quote);
    rule match_space();

    Chars &chars_;
    std::size_t size_ = 0;
    bool lines_ = false;
};

template <class Chars> [[gnu::always_inline]] inline attrFlexLexer::rule cRules<Chars>::match() {
    int const c = at(0);
    if (c < 0) return found(attrFlexLexer::r_end, 0);
    switch (classes[static_cast<std::size_t>(c)] >> kind_shift) {
    case ck_letter:
        return match_word();
    case ck_number:
        return match_number(c);
    case ck_space:
        return match_space();
    case ck_string:
        return match_string(static_cast<char>(c));
    case ck_hash:
        return match_const();
    case ck_less:
        return at(1) == '<' ? found(attrFlexLexer::r_shift_left, 2)
                            : found(attrFlexLexer::r_char, 1);
    case ck_and:
        return at(1) == '=' ? found(attrFlexLexer::r_and_assign, 2)
                            : found(attrFlexLexer::r_char, 1);
    default:
        return found(attrFlexLexer::r_char, 1);
    }
}

template <class Chars>
[[gnu::always_inline]] inline attrFlexLexer::rule cRules<Chars>::match_word() {
    size_ = chars_.skip_to(1, cs_no_word);
    if (size_ != 4 && size_ != 5) return attrFlexLexer::r_ident;
    std::string_view const word = chars_.text(size_);
    if (word == "true") return attrFlexLexer::r_true;
    return word == "false" ? attrFlexLexer::r_false : attrFlexLexer::r_ident;
}

template <class Chars>
[[gnu::always_inline]] inline attrFlexLexer::rule cRules<Chars>::match_const() {
    int const c = at(1);
    if (c < 0 || stops(c, cs_no_word) || is_digit_at(c)) return found(attrFlexLexer::r_char, 1);
    return found(attrFlexLexer::r_const, chars_.skip_to(2, cs_no_word));
}

// A number, or what begins like one. Without digits before its point, or with a sign, it needs a
// digit behind the point.
template <class Chars>
[[gnu::always_inline]] inline attrFlexLexer::rule cRules<Chars>::match_number(int const first) {
    std::size_t const from = first == '+' || first == '-' ? 1 : 0;
    std::size_t end = from;
    int c = from ? at(1) : first;
    bool const digits = is_digit_at(c);
    if (digits) {
        end = chars_.skip_to(from + 1, cs_no_digit);
        c = at(end);
        if (c >= 0 && !stops(c, cs_no_word)) return match_suffix(from, end);
    }
    if (c == '.' && ((digits && from == 0) || digit_at(end + 1))) return match_fraction(end);
    if (digits) return found(attrFlexLexer::r_int, end);
    return first == '+' && c == '=' ? found(attrFlexLexer::r_add_assign, 2)
                                    : found(attrFlexLexer::r_char, 1);
}

// Letters run on behind the digits: a hexadecimal or an unsigned number if all of it fits, else
// bad.
template <class Chars> [[gnu::always_inline]] inline attrFlexLexer::rule
cRules<Chars>::match_suffix(std::size_t from, std::size_t letter) {
    size_ = chars_.skip_to(letter, cs_no_word);
    std::string_view const text = chars_.text(size_);
    char const first = text[letter];
    if (text.size() == letter + 1 && (first == 'u' || first == 'U'))
        return attrFlexLexer::r_unsigned;
    bool const prefix =
        from == 0 && letter == 1 && text[0] == '0' && (first == 'x' || first == 'X');
    auto const is_hex = [](char c) {
        return is_digit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    };
    bool const hex = prefix && text.size() > 2 && std::all_of(text.begin() + 2, text.end(), is_hex);
    return hex ? attrFlexLexer::r_hex : attrFlexLexer::r_bad_ident;
}

template <class Chars>
[[gnu::always_inline]] inline attrFlexLexer::rule cRules<Chars>::match_fraction(std::size_t point) {
    std::size_t end = chars_.skip_to(point + 1, cs_no_digit);
    int c = at(end);
    if (c == 'e' || c == 'E') {
        int const sign = at(end + 1);
        std::size_t const digits = end + (sign == '+' || sign == '-' ? 2 : 1);
        if (digit_at(digits)) end = chars_.skip_to(digits, cs_no_digit);
        c = at(end);
    }
    return c == 'f' || c == 'F' ? found(attrFlexLexer::r_float, end + 1)
                                : found(attrFlexLexer::r_double, end);
}

template <class Chars>
[[gnu::always_inline]] inline attrFlexLexer::rule cRules<Chars>::match_string(char quote) {
    if (chars_.never_closed(quote)) return found(attrFlexLexer::r_char, 1);
    for (std::size_t i = 1;; i += 2) {
        i = chars_.skip_to(i, quote == '"' ? cs_quote : cs_tick);
        int const c = at(i);
        if (c == quote) return found(attrFlexLexer::r_string, i + 1);
        if (c == '\\') {
            int const escaped = at(i + 1);
            lines_ = lines_ || escaped == '\n';
            if (escaped >= 0) continue;
        }
        lines_ = false;
        chars_.set_no_close(quote, i);
        return found(attrFlexLexer::r_char, 1);
    }
}

template <class Chars>
[[gnu::always_inline]] inline attrFlexLexer::rule cRules<Chars>::match_space() {
    std::size_t const end = chars_.skip_to(0, cs_no_space);
    if (at(end) == '/') {
        int const c = at(end + 1);
        lines_ = true;
        if (c == '/')
            return found(attrFlexLexer::r_line_comment, chars_.skip_to(end + 2, cs_newline));
        if (c == '*') return found(attrFlexLexer::r_block_comment, end + 2);
    }
    lines_ = end > 0;
    return end ? found(attrFlexLexer::r_space, end) : found(attrFlexLexer::r_char, 1);
}

template <class Chars>
[[gnu::always_inline]] inline bool cRules<Chars>::match_comment(std::size_t from) {
    for (std::size_t i = from;; ++i) {
        i = chars_.skip_to(i, cs_star);
        if (at(i) < 0) return size_ = i, false;
        if (at(i + 1) == '/') return size_ = i + 2, true;
    }
}

} // namespace scan
