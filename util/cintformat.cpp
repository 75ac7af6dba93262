// Numbers with a form, which the text determines. Text that begins with b or B is binary. All other
// text is parsed in two steps: find_form checks every character and determines the form;
// read_number reads the digits by the text's prefix, modulo 2^32.
//
// DELIBERATE: the second step looks at the text alone, so -010 counts as decimal but is read as
// octal, and -09 ends before the 9.   Pinned: a_zero_after_a_sign_makes_the_digits_octal

#include "qrv/util/cintformat.h"

#include "base/platform/cchars.h"
#include "qrv/text/file/cfile.h"

#include <charconv>
#include <cstdint>
#include <string_view>
#include <type_traits>

static_assert(sizeof(cIntFormat) == 16 && std::is_standard_layout_v<cIntFormat> &&
              !std::is_polymorphic_v<cIntFormat>);

namespace {
using Format = cIntFormat::Format;

constexpr size_t max_hex_digits = 8;

int from_bits(std::uint32_t bits) noexcept { return static_cast<int>(bits); }

bool is_octal(char c) noexcept { return c >= '0' && c <= '7'; }

// --- text to number ---

// Parses 1 to 32 bits; false for any other character or number of bits.
bool scan_bits(std::string_view text, std::uint32_t &bits, unsigned &count) noexcept {
    for (char const c : text) {
        if (is_white(c)) continue;
        if ((c != '0' && c != '1') || ++count > 32) return false;
        bits = bits << 1 | static_cast<std::uint32_t>(c - '0');
    }
    return count > 0;
}

Format binary_form(unsigned width) noexcept {
    if (width <= 8) return cIntFormat::fmtBin8;
    return width <= 16 ? cIntFormat::fmtBin16 : cIntFormat::fmtBin32;
}

// Small letters add 1, capitals subtract 1; false for a character that is not a digit.
bool weigh_hex(std::string_view digits, int &balance) noexcept {
    for (char const c : digits) {
        if (c >= 'a' && c <= 'f')
            ++balance;
        else if (c >= 'A' && c <= 'F')
            --balance;
        else if (!is_digit(c))
            return false;
    }
    return true;
}

bool find_hex_form(std::string_view digits, Format &format) noexcept {
    int balance = 0;
    if (digits.size() > max_hex_digits || !weigh_hex(digits, balance)) return false;
    if (balance > 0)
        format = cIntFormat::fmtHex;
    else if (balance < 0 || format != cIntFormat::fmtHex)
        format = cIntFormat::fmtHEX;
    return true;
}

template <class Test> bool all_are(std::string_view text, Test test) noexcept {
    for (char const c : text)
        if (!test(c)) return false;
    return true;
}

bool is_sign(char c) noexcept { return c == '+' || c == '-'; }

bool find_form(std::string_view text, Format &format) noexcept {
    if (text.size() > 1 && text[0] == '0') {
        if (text[1] == 'x') return find_hex_form(text.substr(2), format);
        if (!all_are(text.substr(1), is_octal)) return false;
        format = cIntFormat::fmtOct;
        return true;
    }
    if (is_sign(text[0])) text.remove_prefix(1);
    if (!all_are(text, is_digit)) return false;
    format = cIntFormat::fmtDec;
    return true;
}

std::uint32_t digit_value(char c) noexcept {
    return static_cast<std::uint32_t>(is_digit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
}

// Reads digits up to the first character that isn't a digit of the base; modulo 2^32.
std::uint32_t read_digits(std::string_view digits, std::uint32_t base) noexcept {
    std::uint32_t bits = 0;
    for (char const c : digits) {
        if (digit_value(c) >= base) break;
        bits = bits * base + digit_value(c);
    }
    return bits;
}

// Requires text that find_form accepted; false if it has no digit.
bool read_number(std::string_view text, int &number) noexcept {
    bool const negative = text[0] == '-';
    if (is_sign(text[0])) text.remove_prefix(1);
    std::uint32_t base = 10;
    if (text.substr(0, 2) == "0x") {
        text.remove_prefix(2);
        base = 16;
    } else if (text.substr(0, 1) == "0") {
        base = 8;
    }
    if (text.empty()) return false;
    std::uint32_t const bits = read_digits(text, base);
    number = from_bits(negative ? 0 - bits : bits);
    return true;
}

// --- number to text ---

std::string digits_of(std::string text, std::uint32_t bits, int base) {
    char buffer[16];
    auto const result = std::to_chars(buffer, buffer + sizeof buffer, bits, base);
    return text.append(buffer, result.ptr);
}

std::string upper(std::string text) {
    for (char &c : text)
        if (is_letter(c)) c = static_cast<char>(c & ~0x20);
    return text;
}

std::string bits_of(std::uint32_t bits, int width) {
    std::string text = "b";
    for (int i = width; i-- > 0;) {
        if (i % 4 == 3) text += ' ';
        text += (bits >> i & 1) ? '1' : '0';
    }
    return text;
}
} // namespace

bool cIntFormat::set_str(char const *text) {
    std::string form = text ? text : "";
    cat::wsp_normalize(form);
    if (form.empty()) return false;
    if (form[0] == 'b' || form[0] == 'B') {
        std::uint32_t bits = 0;
        unsigned count = 0;
        if (!scan_bits(std::string_view(form).substr(1), bits, count)) return false;
        format_ = binary_form(count);
        *value_ = from_bits(bits);
        return true;
    }
    return find_form(form, format_) && read_number(form, *value_);
}

std::string cIntFormat::str() const {
    auto const bits = static_cast<std::uint32_t>(*value_);
    switch (format_) {
    case fmtHex:
        return digits_of("0x", bits, 16);
    case fmtHEX:
        return "0x" + upper(digits_of("", bits, 16));
    case fmtOct:
        return digits_of("0", bits, 8);
    case fmtBin8:
        return bits_of(bits, 8);
    case fmtBin16:
        return bits_of(bits, 16);
    case fmtBin32:
        return bits_of(bits, 32);
    case fmtDec:
    default:
        return std::to_string(*value_);
    }
}
