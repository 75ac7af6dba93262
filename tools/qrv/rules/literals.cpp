#include "tools/qrv/rules/literals.h"

#include "tools/qrv/output/characters.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace {

bool is_sign(char c) { return c == '+' || c == '-'; }

bool is_hexadecimal(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && to_lower(text[1]) == 'x';
}

bool is_unsigned(std::string_view text) {
    return !is_hexadecimal(text) && !text.empty() && to_lower(text.back()) == 'u';
}

std::string_view digits_of(std::string_view number) {
    if (is_hexadecimal(number)) return number.substr(2);
    if (!number.empty() && is_sign(number[0])) number.remove_prefix(1);
    if (is_unsigned(number)) number.remove_suffix(1);
    return number;
}

struct cMeaning {
    std::string_view word, meant;
};

constexpr cMeaning meanings[] = {
    {"true", "true"},         {"yes", "true"},       {"on", "true"},      {"false", "false"},
    {"no", "false"},          {"off", "false"},      {"null", "#nil"},    {"nil", "#nil"},
    {"none", "#nil"},         {"undefined", "#nil"}, {"nan", "a number"}, {"inf", "a number"},
    {"infinity", "a number"},
};

} // namespace

bool is_integer(std::string_view text) {
    std::string_view const digits = digits_of(text);
    if (is_hexadecimal(text))
        return digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos;
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), is_digit);
}

std::optional<int> wrapped(std::string_view number) {
    if (!is_hexadecimal(number) && !is_unsigned(number)) return std::nullopt;
    std::string_view const digits = digits_of(number);
    std::int64_t value = 0;
    auto const read = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                      is_hexadecimal(number) ? 16 : 10);
    if (read.ec != std::errc() || value > 0xffffffffLL) return std::nullopt;
    if (number[0] == '-') value = -value;
    int const stored = static_cast<int>(value);
    return stored == value ? std::nullopt : std::optional(stored);
}

std::optional<std::string> without_leading_zeros(std::string_view number) {
    std::string_view const digits = digits_of(number);
    if (is_hexadecimal(number) || digits.size() < 2 || digits[0] != '0') return std::nullopt;
    size_t const first = std::min(digits.find_first_not_of('0'), digits.size() - 1);
    bool const is_negative = number[0] == '-' && digits[first] != '0';
    return std::string(is_negative ? "-" : "").append(digits.substr(first));
}

size_t needless_escape(std::string_view text) {
    constexpr std::string_view needed = "\\\"'\r\n";
    for (size_t at = text.find('\\'); at < text.size(); at = text.find('\\', at + 2))
        if (at + 1 < text.size() && needed.find(text[at + 1]) == needed.npos) return at;
    return text.npos;
}

std::string_view looks_like(std::string_view word) {
    constexpr std::string_view first_letters = "finotuyFINOTUY";
    if (word.empty() || first_letters.find(word[0]) == first_letters.npos) return {};
    if (word == "true" || word == "false") return {}; // these are constants already
    auto const is_word = [word](cMeaning const &meaning) {
        return std::equal(word.begin(), word.end(), meaning.word.begin(), meaning.word.end(),
                          [](char a, char b) { return to_lower(a) == b; });
    };
    auto const *const found = std::find_if(std::begin(meanings), std::end(meanings), is_word);
    return found == std::end(meanings) ? std::string_view() : found->meant;
}
