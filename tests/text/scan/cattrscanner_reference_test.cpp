// Compares the scanner with a slow reference that tries every rule on every prefix and counts
// single characters.

#include "tests/text/scan_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string_view>
#include <vector>

using test::PieceBuf;
using test::Scan;
using test::shown;

namespace {

using sv = std::string_view;

bool ref_digit(char c) { return c >= '0' && c <= '9'; }
bool ref_letter(char c) {
    return std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_").find(c) !=
           std::string::npos;
}
bool ref_word(char c) { return ref_digit(c) || ref_letter(c); }
bool ref_white(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool ref_hex(char c) { return sv("0123456789abcdefABCDEF").find(c) != sv::npos; }
template <class Test> bool all(sv s, Test test) { return std::all_of(s.begin(), s.end(), test); }
bool digits(sv s) { return !s.empty() && all(s, ref_digit); }
bool is_sign(char c) { return c == '+' || c == '-'; }
sv unsigned_part(sv s) { return !s.empty() && is_sign(s[0]) ? s.substr(1) : s; }

bool identifier(sv s) { return !s.empty() && ref_letter(s[0]) && all(s, ref_word); }

bool mantissa(sv s) {
    auto const point = s.find('.');
    if (point == sv::npos) return false;
    sv const before = s.substr(0, point), after = s.substr(point + 1);
    if (digits(before) && all(after, ref_digit)) return true;
    return all(unsigned_part(before), ref_digit) && digits(after);
}
bool exponent(sv s) {
    return s.size() > 1 && (s[0] == 'e' || s[0] == 'E') && digits(unsigned_part(s.substr(1)));
}
bool number(sv s) {
    for (std::size_t k = 0; k < s.size(); ++k) {
        if (mantissa(s.substr(0, k)) && exponent(s.substr(k))) return true;
    }
    return mantissa(s);
}
bool bad_identifier(sv s) {
    s = unsigned_part(s);
    std::size_t const n = std::min(s.size(), s.find_first_not_of("0123456789"));
    return n > 0 && identifier(s.substr(n));
}
bool string(sv s) {
    if (s.size() < 2 || (s[0] != '"' && s[0] != '\'')) return false;
    std::size_t i = 1;
    while (i < s.size() && s[i] != s[0] && s[i] != '\n') i += s[i] == '\\' ? 2 : 1;
    return i + 1 == s.size() && s[i] == s[0];
}
sv without_white(sv s) {
    while (!s.empty() && ref_white(s[0])) s.remove_prefix(1);
    return s;
}

// Returns whether rule `r` matches all of `s`.
bool fits(int r, sv s) {
    switch (r) {
    case 1:
        return s == "true";
    case 2:
        return s == "false";
    case 3:
        return s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X') &&
               all(s.substr(2), ref_hex);
    case 4:
        return s.size() > 1 && (s.back() == 'u' || s.back() == 'U') &&
               digits(unsigned_part(s.substr(0, s.size() - 1)));
    case 5:
        return bad_identifier(s);
    case 6:
        return digits(unsigned_part(s));
    case 7:
        return !s.empty() && (s.back() == 'f' || s.back() == 'F') &&
               number(s.substr(0, s.size() - 1));
    case 8:
        return number(s);
    case 9:
        return string(s);
    case 10:
        return !s.empty() && s[0] == '#' && identifier(s.substr(1));
    case 11:
        return identifier(s);
    case 12:
        return s == "+=";
    case 13:
        return s == "<<";
    case 14:
        return s == "&=";
    case 15:
        return without_white(s).substr(0, 2) == "//" && without_white(s).find('\n') == sv::npos;
    case 16:
        return without_white(s) == "/*";
    case 19:
        return !s.empty() && all(s, ref_white);
    case 20:
        return s.size() == 1;
    default:
        return false;
    }
}

struct Reference {
    explicit Reference(sv text, bool with_space, bool with_comments)
        : rest(text), space(with_space), comments(with_comments) {}

    cAttrLiteral next() {
        for (;;) {
            begin();
            if (rest.empty()) return token.code = tkEof, token;
            int const r = longest();
            bool const ended = take(r);
            if (r == 19 ? space : r == 15 || r == 16 ? comments && ended : true) return token;
        }
    }

  private:
    void begin() {
        token.text.clear();
        token.line = token.outer_line = line;
        token.column = token.outer_column = column;
        token.position = position;
    }
    int longest() {
        for (size = rest.size();; --size) {
            for (int r = 1; r <= 20; ++r) {
                if (fits(r, rest.substr(0, size))) return r;
            }
        }
    }
    void pass(std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
            token.text += rest[0];
            if (rest[0] == '\n') {
                ++line;
                column = 0;
            } else {
                ++column;
                ++position;
            }
            rest.remove_prefix(1);
        }
    }
    bool take(int r) {
        static int const codes[] = {0,   261, 261, 257, 258, 267, 257, 259, 260, 262, 263,
                                    264, 270, 271, 272, 265, 265, 0,   0,   266, 0};
        token.code = codes[r];
        if (r == 20) token.code = static_cast<signed char>(rest[0]);
        pass(size);
        if (r != 16) return true;
        while (!rest.empty()) {
            if (rest.substr(0, 2) == "*/") return pass(2), true;
            pass(1);
        }
        return false;
    }

    sv rest;
    bool space, comments;
    std::size_t size = 0;
    unsigned line = 1, column = 0, position = 0;
    cAttrLiteral token;
};

std::string whole(cAttrLiteral const &t) {
    return shown(t) + "@" + std::to_string(t.line) + ":" + std::to_string(t.column) + ":" +
           std::to_string(t.position) + "\n";
}

// Compares all tokens of a string, read in pieces of this size.
void compare(std::string const &text, std::size_t piece, bool space, bool comments) {
    PieceBuf buffer(text, piece);
    std::istream in(&buffer);
    Scan scan(in);
    scan.reset(0, 1, 0); // such a buffer can't report its offset
    scan.return_ws(space);
    scan.return_com(comments);
    Reference reference(text, space, comments);
    std::string expected, got;
    cAttrLiteral token;
    do {
        token = reference.next();
        expected += whole(token);
        scan.gettoken();
        got += whole(scan.token());
    } while (token.code != tkEof || !token.text.empty());
    ASSERT_EQ(got, expected) << "in: " << testing::PrintToString(text) << " piece " << piece;
}

} // namespace

TEST(ScannerReference, agrees_on_every_string_of_four_characters) {
    std::string const alphabet = "01.efux+=<\"\\\n /*";
    std::size_t const n = alphabet.size();
    for (std::size_t i = 0; i < n * n * n * n; ++i) {
        std::string text;
        for (std::size_t k = i, d = 0; d < 4; ++d, k /= n) text += alphabet[k % n];
        compare(text, i % 3, i % 2 == 0, i % 5 < 2);
        if (HasFatalFailure()) return;
    }
}

TEST(ScannerReference, agrees_on_random_strings_in_pieces_of_any_size) {
    std::mt19937 random(12345);
    std::vector<std::string> const parts = {
        "true", "false", "0x", "1", "23", ".",  "e",  "E+",   "f",   "u", "ab",
        "_",    "#",     "\"", "'", "\\", "\n", " ",  "\t",   "\r",  "/", "//",
        "/*",   "*/",    "*",  "+", "-",  "=",  "<",  "&",    ";",   "{", "\x80",
        "\xff", "x",     "X",  "0", "F",  "U",  "\"", "\\\"", "\\\n"};
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (auto n = random() % 12; n; --n) text += parts[random() % parts.size()];
        compare(text, random() % 5, random() % 2 == 0, random() % 2 == 0);
        if (HasFatalFailure()) return;
    }
}
