// Compares the stream on a string in memory with std::istringstream: every reader sees the same.

#include "text/scan/cmemory_stream.h"

#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <sstream>

namespace {

std::string state_of(std::istream &in) {
    auto const place = in.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in);
    return std::to_string(in.rdstate()) + " at " +
           std::to_string(static_cast<std::streamoff>(place)) + " of which " +
           std::to_string(in.gcount()) + " ready " + std::to_string(in.rdbuf()->in_avail());
}

void act(std::istream &in, unsigned choice, int number) {
    constexpr std::ios::openmode modes[] = {std::ios::in, std::ios::out,
                                            std::ios::in | std::ios::out, std::ios::openmode{}};
    constexpr std::ios::seekdir from[] = {std::ios::beg, std::ios::cur, std::ios::end};
    auto const which = modes[static_cast<unsigned>(number) / 8 % 4];
    char room[8] = {};
    std::string line;
    switch (choice % 12) {
    case 0:
        in.get();
        break;
    case 1:
        in.read(room, number % 8);
        break;
    case 2:
        std::getline(in, line);
        break;
    case 3:
        in.unget();
        break;
    case 4:
        in.putback(static_cast<char>(number));
        break;
    case 5:
        in.seekg(number % 32 - 8);
        break;
    case 6:
        in.seekg(number % 32 - 16, from[static_cast<unsigned>(number) % 3]);
        break;
    case 7:
        in.rdbuf()->pubseekoff(number % 32 - 16, from[static_cast<unsigned>(number) % 3], which);
        break;
    case 8:
        in.rdbuf()->pubseekpos(number % 32 - 8, which);
        break;
    case 9:
        in >> line;
        break;
    case 10:
        in.tellg();
        break;
    default:
        in.clear();
    }
}

} // namespace

TEST(MemoryStream, is_like_a_string_stream_for_every_reader) {
    std::mt19937 random(7);
    for (std::string const text : {"", "a", "some words\nand lines\n\n", "12 13 14"}) {
        cMemoryStream memory(text);
        std::istringstream string(text);
        string.imbue(std::locale::classic());
        for (int i = 0; i < 5000; ++i) {
            auto const choice = static_cast<unsigned>(random());
            int const number = static_cast<int>(random() % 1024);
            act(memory, choice, number);
            act(string, choice, number);
            ASSERT_EQ(state_of(memory), state_of(string)) << "act " << choice % 12 << " " << number;
        }
    }
}

TEST(MemoryStream, has_the_classic_locale_and_delivers_its_whole_text) {
    std::string const text("a\0b", 3);
    cMemoryStream in(text);
    EXPECT_EQ(in.getloc(), std::locale::classic());
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), text);
}

TEST(MemoryStream, stays_failed_at_the_end_of_invalid_text) {
    std::string const text = "ab";
    cMemoryStream in(text, true);
    EXPECT_EQ(in.get(), 'a');
    EXPECT_EQ(in.get(), 'b');
    in.get();
    EXPECT_TRUE(in.bad());
    EXPECT_FALSE(in.eof());
}
