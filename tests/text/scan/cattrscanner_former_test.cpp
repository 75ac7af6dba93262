// Compares the scanner with the former one, which copied every character: the same tokens,
// positions and stream after every action, on streams of all kinds and in pieces of every size.

#include "tests/text/scan_compare.h"

#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using test::cInput;

namespace {

std::string const &one_of(std::vector<std::string> const &parts, std::mt19937 &random) {
    return parts[random() % parts.size()];
}

// Any text, with a preference for sequences that are nearly tokens.
std::string odd_text(std::mt19937 &random) {
    static std::vector<std::string> const parts = {"true",
                                                   "false",
                                                   "truth",
                                                   "0x",
                                                   "0xFf",
                                                   "1",
                                                   "23",
                                                   ".",
                                                   "1.5",
                                                   "e",
                                                   "E+",
                                                   "1.5e",
                                                   "f",
                                                   "u",
                                                   "ab",
                                                   "_",
                                                   "#",
                                                   "#c",
                                                   "\"",
                                                   "'",
                                                   "\\",
                                                   "\n",
                                                   " ",
                                                   "\t",
                                                   "\r",
                                                   "/",
                                                   "//",
                                                   "/*",
                                                   "*/",
                                                   "*",
                                                   "+",
                                                   "-",
                                                   "=",
                                                   "+=",
                                                   "<",
                                                   "<<",
                                                   "&",
                                                   "&=",
                                                   ";",
                                                   "{",
                                                   "\x80",
                                                   "\xff",
                                                   "x",
                                                   "X",
                                                   "0",
                                                   "F",
                                                   "U",
                                                   "12u",
                                                   "-7f",
                                                   "\\\"",
                                                   "\\\n",
                                                   "\"a b\"",
                                                   "'c'",
                                                   "        ",
                                                   "            \n",
                                                   "a_long_word_of_letters_1"};
    std::string text;
    for (auto n = random() % 40; n > 0; --n) text += one_of(parts, random);
    return text;
}

// The kind of text that is usually read.
std::string usual_text(std::mt19937 &random) {
    static std::vector<std::string> const values = {"12;",
                                                    "-7;",
                                                    "1.25;",
                                                    "-0.5e+3;",
                                                    "true;",
                                                    "a_word;",
                                                    "\"some longer text in quotes\";",
                                                    "\"\";",
                                                    "[1, 2, 3, ];",
                                                    "<1; 2; >;",
                                                    "#nil;",
                                                    "2.5f;",
                                                    "7u;",
                                                    "T(a=1; b=\"x)\";);",
                                                    "{ }; // why\n",
                                                    "/* a\n comment */ 5;"};
    std::string text = "{\n";
    for (auto n = random() % 20; n > 0; --n) {
        text += std::string(2 * (random() % 12), ' ') + "key" + std::to_string(random() % 5000);
        text += (random() % 4 ? "= " : "=") + one_of(values, random) + (random() % 4 ? "\n" : "");
    }
    return text + "}\n";
}

// The text with a few bytes changed, as a typing error would.
std::string mistyped(std::string text, std::mt19937 &random) {
    for (auto n = random() % 3; n > 0 && !text.empty(); --n)
        text[random() % text.size()] = static_cast<char>(random() % 256);
    return text;
}

void expect_same(test::cMakeInput const &present, test::cMakeInput const &former, int rounds,
                 unsigned seed) {
    std::mt19937 random(seed);
    for (int i = 0; i < rounds; ++i) {
        std::string const text =
            mistyped(i % 2 == 0 ? odd_text(random) : usual_text(random), random);
        std::string const difference =
            test::compare_with_former(present(text), former(text), random, i % 4 < 2);
        ASSERT_EQ(difference, "") << "round " << i << " in: " << testing::PrintToString(text);
    }
}

} // namespace

TEST(ScannerFormer, agrees_on_a_string_stream) {
    expect_same(test::string_input, test::string_input, 6000, 1);
}

TEST(ScannerFormer, agrees_on_a_string_in_memory) {
    expect_same(test::memory_input, test::string_input, 6000, 2);
}

TEST(ScannerFormer, agrees_on_pieces_of_every_size) {
    for (std::size_t piece = 0; piece <= 40; ++piece) {
        auto const in_pieces = [piece](std::string const &t) {
            return test::piece_input(t, piece);
        };
        expect_same(in_pieces, in_pieces, 300, 100 + static_cast<unsigned>(piece));
        if (HasFatalFailure()) return;
    }
}

TEST(ScannerFormer, agrees_on_a_file) {
    std::string const name = testing::TempDir() + "qrv_former_scan.attr";
    auto const file_of = [&name](std::string const &text) {
        std::ofstream(name, std::ios::binary) << text;
        return cInput{nullptr, std::make_unique<std::ifstream>(name, std::ios::binary)};
    };
    expect_same(file_of, file_of, 400, 3);
    std::remove(name.c_str());
}

// The new text has the same length, so it is at the same address as the old one. Both scanners must
// preserve the characters that they have taken from the stream, and read all others from the new
// text.
TEST(ScannerFormer, agrees_when_the_text_is_replaced_between_tokens) {
    std::mt19937 random(4);
    for (int i = 0; i < 4000; ++i) {
        std::string const first = usual_text(random);
        std::string second = odd_text(random);
        second.resize(first.size(), '1');
        std::istringstream now_in(first), then_in(first);
        test::Scan now(now_in);
        former::cScanner then(then_in);
        auto const step = [&](auto const &act) {
            act(now_in);
            act(then_in);
        };
        for (unsigned n = 0; n < 60; ++n) {
            if (random() % 8 == 0) {
                auto const place = static_cast<int>(random() % first.size());
                step([&](std::istringstream &in) {
                    in.clear();
                    in.str(n % 2 == 0 ? second : first);
                    in.seekg(place);
                });
            }
            now.next_token();
            then.gettoken();
            ASSERT_EQ(test::state_of(now, now.current()) + test::state_of(now_in),
                      test::state_of(then, then.token()) + test::state_of(then_in))
                << "round " << i << " token " << n;
        }
    }
}
