// Compares the number functions with the former ones on generated strings: the results are the
// same, bit for bit.

#include "base/cnumber.h"
#include "tests/base/former_number.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

template <class T> std::string bits(T number) {
    std::string shown(sizeof number, '\0');
    std::memcpy(shown.data(), &number, sizeof number);
    return testing::PrintToString(shown);
}

template <class T>
std::string outcome(bool (*parse)(std::string_view, T &) noexcept, std::string_view text) {
    T number = static_cast<T>(77);
    bool const good = parse(text, number);
    return (good ? "true " : "false ") + bits(number);
}

void compare(std::string const &text) {
    ASSERT_EQ(outcome<int>(cat::parse_int, text), outcome<int>(former::parse_int, text)) << text;
    ASSERT_EQ(outcome<int>(cat::parse_unsigned, text), outcome<int>(former::parse_unsigned, text))
        << text;
    ASSERT_EQ(outcome<float>(cat::parse_float, text), outcome<float>(former::parse_float, text))
        << text;
    ASSERT_EQ(outcome<double>(cat::parse_double, text), outcome<double>(former::parse_double, text))
        << text;
    ASSERT_EQ(outcome<float>(cat::scan_real, text), outcome<float>(former::scan_real, text))
        << text;
}

} // namespace

TEST(NumberFormer, agrees_on_every_short_string_of_number_characters) {
    std::string const alphabet = "019+-.eExXfu p";
    std::size_t const n = alphabet.size();
    for (std::size_t length = 0, count = 1; length <= 4; ++length, count *= n)
        for (std::size_t i = 0; i < count; ++i) {
            std::string text;
            for (std::size_t k = i, d = 0; d < length; ++d, k /= n) text += alphabet[k % n];
            compare(text);
            if (HasFatalFailure()) return;
        }
}

TEST(NumberFormer, agrees_near_the_limits_and_on_random_strings) {
    std::mt19937 random(11);
    std::vector<std::string> const parts = {"0",
                                            "00",
                                            "1",
                                            "9",
                                            "42",
                                            "2147483647",
                                            "2147483648",
                                            "4294967295",
                                            "4294967296",
                                            "+",
                                            "-",
                                            ".",
                                            "e",
                                            "E+",
                                            "e-",
                                            "f",
                                            "u",
                                            "0x",
                                            "0X",
                                            "ff",
                                            "inf",
                                            "nan",
                                            " ",
                                            "\t",
                                            "\n",
                                            "308",
                                            "38",
                                            "324",
                                            "45",
                                            "999",
                                            "1e",
                                            "p",
                                            "infinity",
                                            "8888888888",
                                            "9223372036854775807",
                                            "9223372036854775808",
                                            "123456789",
                                            "0.1",
                                            "1.5e300"};
    for (int i = 0; i < 300000; ++i) {
        std::string text;
        for (auto n = random() % 6; n > 0; --n) text += parts[random() % parts.size()];
        compare(text);
        if (HasFatalFailure()) return;
    }
}
