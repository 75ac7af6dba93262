#pragma once
// The rules of the matching engine: a hand-written longest match of rules 1 to 16, 19 and 20, as a
// template over the two kinds of character sources.
//
// The first character selects a group of rules; within a group one walk finds the longest match. A
// character is examined only when it is needed, so after a token that is complete by itself, such
// as `{` or a string, no further character was read. If the attempt at a longer match fails
// (`1.5e+x`, an unclosed quote), the surplus stays in the look-ahead.

#include "base/platform/cchars.h"
#include "qrv/text/scan/cattrscanner.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace scan {

// Sets of characters that end a run: cs_no_digit, for example, ends a run of digits.
enum char_stop : unsigned {
    cs_no_word = 1, // neither letter nor digit
    cs_no_digit = 2,
    cs_no_space = 4,
    cs_newline = 8,
    cs_star = 16,
    cs_quote = 32, // ends a run inside a double-quoted string: quote, backslash, newline
    cs_tick = 64   // the same for single quotes
};

// The possible tokens by first character.
enum char_kind : unsigned {
    ck_single,
    ck_letter,
    ck_digit,
    ck_sign,  // or a point
    ck_space, // or a comment: white space or a slash
    ck_string,
    ck_hash,
    ck_less,
    ck_and
};
constexpr char_kind kind_of(char c) {
    if (is_letter(c)) return ck_letter;
    if (is_digit(c)) return ck_digit;
    if (c == '+' || c == '-' || c == '.') return ck_sign;
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

struct cClass {
    unsigned char stops;
    unsigned char kind;
};
constexpr std::array<cClass, 256> make_classes() {
    std::array<cClass, 256> classes{};
    for (unsigned i = 0; i < classes.size(); ++i) {
        char const c = static_cast<char>(static_cast<unsigned char>(i));
        classes[i] = {static_cast<unsigned char>(stops_at(c)),
                      static_cast<unsigned char>(kind_of(c))};
    }
    return classes;
}
inline constexpr std::array<cClass, 256> classes = make_classes();

#ifdef QRV_CHECKS
// Character counts of this process, for tests that measure work:
extern unsigned long long compared;
extern QRV_API unsigned long long lexed;  // became tokens; each lexer adds its own when destroyed
extern QRV_API unsigned long long parsed; // were read by outermost readings
#endif

// The only access to a character, as 0 to 255.
inline int look_at(char const *c) {
#ifdef QRV_CHECKS
    ++compared;
#endif
    return static_cast<unsigned char>(*c);
}
inline bool stops(int c, unsigned set) {
    return (classes[static_cast<std::size_t>(c)].stops & set) != 0;
}
inline bool is_digit_at(int c) { return c >= 0 && !stops(c, cs_no_digit); }

// `Chars` has
//   int at(size_t i)                       the character at distance i, or -1 after the end
//   int run(size_t &i, unsigned set)       moves i to the first member of the set from there on, or
//                                          to the end; returns that character or -1
//   std::string_view text(size_t size)     so many characters, all examined before
//   bool never_closed(int quote)           whether a string that begins here is known to have no
//                                          closing quote
//   void set_no_close(int quote, size_t i) records that for strings that begin in the next i
//                                          characters
// Inlined, so that the compiler can hold the state of `Chars` in registers.
template <class Chars> class cRules {
  public:
    using rule = attrFlexLexer::rule;
    explicit cRules(Chars &chars) : chars_(chars) {}

    [[gnu::always_inline]] rule match() {
        int const c = at(0);
        if (c < 0) return found(attrFlexLexer::r_end, 0);
        switch (classes[static_cast<std::size_t>(c)].kind) {
        case ck_letter:
            return match_word();
        case ck_digit:
        case ck_sign:
            return match_number(c);
        case ck_space:
            return match_space(c);
        case ck_string:
            return match_string(c);
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

    // Matches the rest of a block comment, from `from` up to and including its end. False if the
    // input ends first.
    [[gnu::always_inline]] bool match_comment(std::size_t from) {
        lines_ = true;
        for (std::size_t i = from;; ++i) {
            if (run(i, cs_star) < 0) return size_ = i, false;
            if (at(i + 1) == '/') return size_ = i + 2, true;
        }
    }

    std::size_t size() const { return size_; }
    bool lines() const { return lines_; } // whether the match may contain newlines

  private:
    int at(std::size_t i) { return chars_.at(i); }
    int run(std::size_t &i, unsigned set) { return chars_.run(i, set); }
    bool digit_at(std::size_t i) { return is_digit_at(at(i)); }
    rule found(rule r, std::size_t size) {
        size_ = size;
        return r;
    }

    [[gnu::always_inline]] rule match_word() {
        std::size_t end = 1;
        run(end, cs_no_word);
        std::string_view const word = chars_.text(end);
        if (end == 4 && word == "true") return found(attrFlexLexer::r_true, end);
        if (end == 5 && word == "false") return found(attrFlexLexer::r_false, end);
        return found(attrFlexLexer::r_ident, end);
    }

    [[gnu::always_inline]] rule match_const() {
        int const c = at(1);
        if (c < 0 || stops(c, cs_no_word) || is_digit_at(c)) return found(attrFlexLexer::r_char, 1);
        std::size_t end = 2;
        run(end, cs_no_word);
        return found(attrFlexLexer::r_const, end);
    }

    // A number, or a similar token. Without digits before its point, or with a sign, it needs a
    // digit after the point.
    [[gnu::always_inline]] rule match_number(int const first) {
        std::size_t const from = first == '+' || first == '-' ? 1 : 0;
        std::size_t end = from;
        int c = from ? at(1) : first;
        bool const digits = is_digit_at(c);
        if (digits) {
            ++end;
            c = run(end, cs_no_digit);
            if (c >= 0 && !stops(c, cs_no_word)) return match_suffix(from, end);
        }
        if (c == '.' && ((digits && from == 0) || digit_at(end + 1))) return match_fraction(end);
        if (digits) return found(attrFlexLexer::r_int, end);
        return first == '+' && c == '=' ? found(attrFlexLexer::r_add_assign, 2)
                                        : found(attrFlexLexer::r_char, 1);
    }

    // Letters directly follow the digits: the token is a hexadecimal or an unsigned number if all
    // characters fit, else a bad identifier.
    [[gnu::always_inline]] rule match_suffix(std::size_t from, std::size_t letter) {
        std::size_t end = letter + 1;
        run(end, cs_no_word);
        std::string_view const text = chars_.text(end);
        char const first = text[letter];
        if (end == letter + 1 && (first == 'u' || first == 'U'))
            return found(attrFlexLexer::r_unsigned, end);
        bool hex =
            from == 0 && letter == 1 && text[0] == '0' && (first == 'x' || first == 'X') && end > 2;
        for (char const c : text.substr(letter + 1)) hex = hex && is_hex_digit(c);
        return found(hex ? attrFlexLexer::r_hex : attrFlexLexer::r_bad_ident, end);
    }

    [[gnu::always_inline]] rule match_fraction(std::size_t point) {
        std::size_t end = point + 1;
        int c = run(end, cs_no_digit);
        if (c == 'e' || c == 'E') {
            int const sign = at(end + 1);
            std::size_t digits = end + (sign == '+' || sign == '-' ? 2 : 1);
            if (digit_at(digits)) {
                c = run(digits, cs_no_digit);
                end = digits;
            }
        }
        return c == 'f' || c == 'F' ? found(attrFlexLexer::r_float, end + 1)
                                    : found(attrFlexLexer::r_double, end);
    }

    [[gnu::always_inline]] rule match_string(int quote) {
        if (chars_.never_closed(quote)) return found(attrFlexLexer::r_char, 1);
        std::size_t i = 1;
        for (;; i += 2) {
            int const c = run(i, quote == '"' ? cs_quote : cs_tick);
            if (c == quote) return found(attrFlexLexer::r_string, i + 1);
            int const escaped = c == '\\' ? at(i + 1) : -1;
            if (escaped < 0) break;
            lines_ = lines_ || escaped == '\n';
        }
        lines_ = false;
        chars_.set_no_close(quote, i);
        return found(attrFlexLexer::r_char, 1);
    }

    [[gnu::always_inline]] rule match_space(int first) {
        std::size_t end = first == '/' ? 0 : 1;
        int const c = end > 0 ? run(end, cs_no_space) : first;
        int const next = c == '/' ? at(end + 1) : -1;
        lines_ = end > 0;
        if (next == '/') {
            end += 2;
            run(end, cs_newline);
            return found(attrFlexLexer::r_line_comment, end);
        }
        if (next == '*') return found(attrFlexLexer::r_block_comment, end + 2);
        return end > 0 ? found(attrFlexLexer::r_space, end) : found(attrFlexLexer::r_char, 1);
    }

    Chars &chars_;
    std::size_t size_ = 0;
    bool lines_ = false;
};

} // namespace scan
