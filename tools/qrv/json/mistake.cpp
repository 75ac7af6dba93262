#include "tools/qrv/json/mistake.h"

#include "tools/qrv/output/characters.h"
#include "tools/qrv/output/escaped.h"
#include "tools/qrv/output/messages.h"

#include <algorithm>
#include <cstdio>

namespace {

using std::string_view;

constexpr size_t longest_found = 40; // characters of the text that was found

constexpr string_view end_of_text = "the end of the text", a_value = "a value";
constexpr char const *no_infinity = "JSON has no NaN and no infinity";

bool has(string_view text, string_view part) { return text.find(part) != text.npos; }

// The parser's context, and the tokens that are expected there.
constexpr struct {
    string_view context, expected;
} expectations[] = {
    {"; expected end of input", end_of_text},
    {"parsing object key", "a key in double quotes"},
    {"parsing object separator", "':' after the key"},
    {"parsing object", "',' or '}'"},
    {"parsing array", "',' or ']'"},
};

string_view expected_by(string_view parser_text) {
    for (auto const &[context, expected] : expectations)
        if (has(parser_text, context)) return expected;
    return a_value;
}

char const *digit_expected_by(string_view parser_text) {
    return has(parser_text, "after '-'")   ? "expected a digit after '-', found "
           : has(parser_text, "after '.'") ? "expected a digit after '.', found "
                                           : "expected a digit in the exponent, found ";
}

bool is_word(char c) { return is_letter_or_digit(c) || c == '_' || c == '$'; }

// The text from `at` on that a person sees as one word.
string_view piece_at(std::string const &bytes, size_t at, size_t token_end) {
    char const first = bytes[at];
    size_t end = at + 1;
    if (first == '"' || first == '-' || is_digit(first)) end = token_end;
    if (bytes.compare(at, 2, "//") == 0 || bytes.compare(at, 2, "/*") == 0) end = at + 2;
    if (is_word(first))
        while (end < bytes.size() && is_word(bytes[end])) ++end;
    if (static_cast<unsigned char>(first) >= 0x80)
        while (end < bytes.size() && continues_character(bytes[end])) ++end;
    return string_view(bytes).substr(at, std::max(end, at + 1) - at);
}

bool is_first_of_value(char c) { return is_word(c) || has("{[\"-", string_view(&c, 1)); }

std::string found_at(std::string const &bytes, size_t at, size_t token_end) {
    if (at >= bytes.size()) return std::string(end_of_text);
    if (bytes[at] == '\'') return "a single quote";
    string_view const piece = piece_at(bytes, at, token_end);
    std::string const shown = shortened(std::string(piece), longest_found);
    return piece[0] == '"' ? "the string " + shown : "'" + shown + "'";
}

// A note if the token is something that people often write but that is not JSON; else "".
std::string note_of(std::string const &bytes, cJsonPlaces const &places, size_t at,
                    string_view expected) {
    if (at >= bytes.size()) return "";
    string_view const rest = string_view(bytes).substr(at), piece = piece_at(bytes, at, at + 1);
    string_view const gap = string_view(bytes).substr(places.end(), at - places.end());
    string_view const before =
        string_view(bytes).substr(places.start(), places.end() - places.start());
    char const c = bytes[at];
    if (rest.starts_with("//") || rest.starts_with("/*") || c == '#') return "JSON has no comments";
    if (c == '\'') return "JSON has only double quotes";
    if ((c == ']' || c == '}') && has(gap, ","))
        return "JSON has no comma before a closing bracket";
    if (expected == end_of_text && has(gap, "\n") && is_first_of_value(c))
        return "a file has one value; with one on each line, convert each line by itself";
    if (gap.empty() && (before == "0" || before == "-0")) {
        if (is_digit(c)) return "JSON has no leading zeros";
        if (c == 'x' || c == 'X') return "JSON has decimal numbers only";
    }
    if (expected != a_value) return "";
    if (piece == "NaN" || piece == "nan" || piece.starts_with("Inf")) return no_infinity;
    if (piece == "True" || piece == "False" || piece == "None" || piece == "undefined")
        return "JSON has true, false and null";
    if (c == '+') return "JSON has no sign + before a number";
    if (c == '.') return "JSON has a digit before the point of a number";
    return "";
}

// The offset of the first half of a surrogate pair without its second half.
size_t half_before(std::string const &bytes, size_t at) {
    for (at = bytes.rfind("\\u", at); at != bytes.npos && at > 0; at = bytes.rfind("\\u", at - 1))
        if ((bytes[at + 2] | 0x20) == 'd' && has("89abAB", bytes.substr(at + 3, 1))) break;
    return at;
}

// The first byte of a sequence that is not UTF-8. The parser has stopped at its first invalid byte.
size_t wrong_byte(std::string const &bytes, size_t at) {
    size_t start = at - 1;
    while (continues_character(bytes[start])) --start;
    auto const lead = static_cast<unsigned char>(bytes[start]);
    size_t const size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return start + size > at ? start : at;
}

cJsonMistake escape_mistake(std::string const &bytes, size_t at, string_view parser_text) {
    size_t const escape = bytes.rfind('\\', at);
    if (has(parser_text, "must be followed by U+DC00")) {
        size_t const half = half_before(bytes, at);
        return {half, "the escape " + bytes.substr(half, 6) +
                          " is the first half of a character; the second, \\udc00 to \\udfff, is "
                          "expected after it"};
    }
    if (has(parser_text, "must follow U+D800"))
        return {escape, "the escape " + bytes.substr(escape, 6) +
                            " is the second half of a character; the first, \\ud800 to \\udbff, is "
                            "expected before it"};
    if (has(parser_text, "4 hex digits"))
        return {escape, "expected four hexadecimal digits after \\u"};
    return {escape, "unknown escape '" + bytes.substr(escape, at - escape) +
                        std::string(piece_at(bytes, at, at + 1)) +
                        "'; JSON has \\\" \\\\ \\/ \\b \\f \\n \\r \\t and \\u"};
}

cJsonMistake string_mistake(std::string const &bytes, cJsonPlaces const &places, size_t at,
                            string_view parser_text) {
    if (has(parser_text, "missing closing quote") || at >= bytes.size())
        return {places.token_at(bytes.size() - 1), "this string is not closed"};
    if (has(parser_text, "control character")) {
        size_t const name = parser_text.find("U+");
        size_t const escape = parser_text.rfind('\\');
        std::string const hint(parser_text.substr(escape, parser_text.find(';', escape) - escape));
        return {at, "found the control character " + std::string(parser_text.substr(name, 6)) +
                        " in a string; write it as " + hint};
    }
    if (has(parser_text, "UTF-8")) {
        size_t const wrong = wrong_byte(bytes, at);
        char byte[8];
        std::snprintf(byte, sizeof byte, "0x%02x", static_cast<unsigned char>(bytes[wrong]));
        return {wrong, "found the byte " + std::string(byte) + ", which is not UTF-8"};
    }
    return escape_mistake(bytes, at, parser_text);
}

// The name of another encoding, which a byte order mark shows, or zeros next to a first character
// of ASCII; else "".
std::string_view other_encoding(std::string const &bytes) {
    using namespace std::string_view_literals;
    string_view const begin = string_view(bytes).substr(0, 4);
    if (begin.starts_with("\xFF\xFE\0\0"sv) || begin.starts_with("\0\0\xFE\xFF"sv) ||
        begin.starts_with("\0\0\0"sv) || (begin.size() == 4 && begin.substr(1) == "\0\0\0"sv))
        return "UTF-32";
    bool const marked = begin.starts_with("\xFF\xFE") || begin.starts_with("\xFE\xFF");
    bool const zeros = begin.size() >= 2 && (begin[0] == '\0') != (begin[1] == '\0');
    return marked || zeros ? "UTF-16" : "";
}

} // namespace

cJsonMistake mistake_of(std::string const &bytes, cJsonPlaces const &places, size_t read,
                        std::string_view parser_text) {
    if (string_view const encoding = other_encoding(bytes); !encoding.empty())
        return {0, "the file is in " + std::string(encoding) + ": convert it to UTF-8"};
    if (bytes.empty()) return {0, "the file is empty"};
    bool const literal = has(parser_text, "invalid literal");
    size_t const last = std::min(read, literal ? bytes.size() : bytes.size() + 1) - 1;
    size_t const token = places.token_at(last);
    if (has(parser_text, "number overflow"))
        return {.offset = token,
                .text = "the number " +
                        shortened(std::string(piece_at(bytes, token, last + 1)), 60) +
                        " is larger than every double",
                .is_value = true};
    if (has(parser_text, "invalid string")) return string_mistake(bytes, places, last, parser_text);
    if (has(parser_text, "invalid BOM")) return {0, "the byte order mark is not the one of UTF-8"};
    if (has(parser_text, "invalid number"))
        return {last, digit_expected_by(parser_text) + found_at(bytes, last, last + 1),
                bytes.compare(last, 3, "Inf") == 0 ? no_infinity : ""};
    string_view const expected = expected_by(parser_text);
    bool const ends = token >= bytes.size();
    bool const other_bracket = expected.starts_with("','") && has("]}", bytes.substr(token, 1));
    return {.offset = token,
            .text = "expected " + std::string(expected) + ", found " +
                    found_at(bytes, token, places.end_of(token)),
            .note = note_of(bytes, places, token, expected),
            .is_unclosed = ends || other_bracket};
}
