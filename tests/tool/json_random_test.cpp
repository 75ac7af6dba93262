// Random documents: converting JSON to a file and back gives the same document, including the order
// of keys; and a file for which to-json reports no loss is converted back to the same value.

#include "tests/tool/tool_run.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>

using tool_test::cRun;

namespace {

using cOrderedJson = nlohmann::ordered_json;

class cRandomJson {
  public:
    explicit cRandomJson(unsigned long seed) : random_(seed) {}

    cOrderedJson document() { return value(4); }

  private:
    size_t below(size_t limit) { return static_cast<size_t>(random_() % limit); }

    cOrderedJson value(int depth) {
        size_t const kind = below(depth > 0 ? 9 : 6);
        switch (kind) {
        case 0:
            return nullptr;
        case 1:
            return below(2) == 0;
        case 2:
            return whole();
        case 3:
            return number();
        case 4:
        case 5:
            return text();
        default:
            return kind == 6 ? array(depth) : object(depth);
        }
    }

    cOrderedJson array(int depth) {
        cOrderedJson all = cOrderedJson::array();
        for (size_t n = below(6); n > 0; --n) all.push_back(value(depth - 1));
        return all;
    }

    cOrderedJson object(int depth) {
        cOrderedJson all = cOrderedJson::object();
        for (size_t n = below(6); n > 0; --n) {
            std::string const key = text();
            all[key] = value(depth - 1);
        }
        return all;
    }

    // Numbers near the limits of int, and of the integers that a double represents exactly.
    std::int64_t whole() {
        std::int64_t const near[] = {0, std::numeric_limits<int>::max(),
                                     std::numeric_limits<int>::min(), 1LL << 53, -(1LL << 53)};
        std::int64_t const number = near[below(5)] + static_cast<int>(below(5)) - 2;
        return std::abs(number) <= 1LL << 53 ? number : 0;
    }

    // Random bits, and short numbers. Whole numbers that do not fit into an int remain whole
    // numbers.
    double number() {
        std::uint64_t const bits = random_();
        double any = 0;
        std::memcpy(&any, &bits, sizeof any);
        if (below(2) == 0) any = static_cast<double>(below(2000)) / 8 - 100;
        bool const becomes_whole = std::trunc(any) == any && std::abs(any) > 2147483647;
        return std::isfinite(any) && !becomes_whole ? any : 0.5;
    }

    std::string text() {
        static char const *const parts[] = {"a",         "Z_9",
                                            " ",         "\n",
                                            "\r",        "\t",
                                            "\"",        "\\",
                                            "'",         "/",
                                            "//",        "/*",
                                            "*/",        "#",
                                            "=",         ";",
                                            "}",         "true",
                                            "12",        "-1.5",
                                            "1e5f",      "\x7f",
                                            "\x01",      "\xC3\xA9",
                                            "\b\f",      "\xE2\x82\xAC",
                                            "{",         "[",
                                            "<<",        "false",
                                            "#cRef(/a)", "\xF0\x9F\x98\x80"};
        std::string all;
        for (size_t n = below(4); n > 0; --n) all += parts[below(std::size(parts))];
        return all;
    }

    std::mt19937_64 random_;
};

class ToolJsonRandom : public tool_test::Tool {};

TEST_F(ToolJsonRandom, converting_documents_back_gives_equal_documents) {
    for (unsigned long seed = 1; seed <= 16; ++seed) {
        SCOPED_TRACE(seed);
        cOrderedJson all = cOrderedJson::array();
        cRandomJson random(seed);
        for (int i = 0; i < 40; ++i) all.push_back(random.document());
        cRun const there = run({"from-json"}, {.input = all.dump(seed % 2 == 0 ? 1 : -1)});
        ASSERT_EQ(there.status, 0) << there.err;
        EXPECT_EQ(run({"fmt", "-"}, {.input = there.out}), (cRun{0, there.out, ""}));
        cRun const back = run({"to-json", "--strict"}, {.input = there.out});
        ASSERT_EQ(back.status, 0) << back.err;
        EXPECT_EQ(cOrderedJson::parse(back.out).dump(), all.dump());
        cRun const again = run({"from-json"}, {.input = back.out});
        EXPECT_EQ(again, there);
    }
}

TEST_F(ToolJsonRandom, escaped_documents_are_converted_to_the_same_file) {
    for (unsigned long seed = 101; seed <= 110; ++seed) {
        cOrderedJson const document = cRandomJson(seed).document();
        cRun const plain = run({"from-json"}, {.input = document.dump()});
        cRun const escaped = run({"from-json"}, {.input = document.dump(-1, ' ', true)});
        EXPECT_EQ(plain.status, 0) << plain.err;
        EXPECT_EQ(plain, escaped);
    }
}

} // namespace
