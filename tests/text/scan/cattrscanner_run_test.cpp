// The search for the end of a run, which checks sixteen characters at a time, compared with the
// table of character classes.

#include "text/scan/cattrscanner_run.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The first character of the set, found by the table only.
template <unsigned set> std::size_t first_of(std::string const &text) {
    std::size_t from = 0;
    while (from < text.size() && !scan::stops(static_cast<unsigned char>(text[from]), set)) ++from;
    return from;
}

// Every character at every position of a string whose other characters are not in the set.
template <unsigned set> void expect_as_the_table(char other) {
    ASSERT_FALSE(scan::stops(static_cast<unsigned char>(other), set));
    for (std::size_t size = 0; size < 40; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            for (int c = 0; c < 256; ++c) {
                std::string text(size, other);
                text[place] = static_cast<char>(static_cast<unsigned char>(c));
                char const *const end = text.data() + size;
                ASSERT_EQ(scan::run_end<set>(text.data(), end) - text.data(),
                          static_cast<std::ptrdiff_t>(first_of<set>(text)))
                    << "character " << c << " at " << place << " of " << size;
            }
        }
    }
}

} // namespace

TEST(ScannerRun, ends_at_the_first_character_of_the_set) {
    expect_as_the_table<scan::cs_no_word>('a');
    expect_as_the_table<scan::cs_no_digit>('0');
    expect_as_the_table<scan::cs_quote>('x');
    expect_as_the_table<scan::cs_tick>('x');
}

TEST(ScannerRun, ends_at_the_first_of_several_characters) {
    std::string const text = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789=;";
    EXPECT_EQ(*scan::run_end<scan::cs_no_word>(text.data(), text.data() + text.size()), '=');
}
