// The text that from-json writes piece by piece is byte for byte what the library's writer writes
// for the tree of the same JSON.
//
// QRV_DOCUMENTS is the number of generated documents; by default it is small.

#include "tests/json/tree.h"
#include "tests/support/paths.h"
#include "tests/support/sanitized.h"
#include "tests/support/strings.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>

namespace {

using cBig = cJsonRules::cBig;

using test::times;

// The text that the command writes; nothing if it reports an error.
std::optional<std::string> streamed(std::string bytes, cJsonRules const &rules) {
    cMessages messages("f", 100);
    cJsonFile const file(bytes, rules, messages);
    EXPECT_EQ(file.is_good(), messages.count() == 0);
    EXPECT_EQ(messages.text().find("not written"), std::string::npos);
    if (!file.is_good()) return std::nullopt;
    std::string text;
    EXPECT_TRUE(file.write([&](std::string_view piece) {
        text += piece;
        return true;
    }));
    EXPECT_EQ(text.size(), file.size());
    return text;
}

void expect_same(std::string const &json) {
    for (cJsonRules const rules :
         {cJsonRules{}, cJsonRules{cBig::nearest_double, false}, cJsonRules{cBig::string, true}})
        EXPECT_EQ(streamed(json, rules), json_test::text_of_tree(json, rules))
            << json.substr(0, 2000);
}

// JSON with every kind of value, also refused ones, and keys that occur twice.
class cGenerator {
  public:
    explicit cGenerator(unsigned seed) : random_(seed) {}

    std::string document() { return blanks() + value(below(7)) + blanks(); }

  private:
    size_t below(size_t limit) { return static_cast<size_t>(random_() % limit); }

    template <size_t size> std::string one(char const *const (&all)[size]) {
        return all[below(size)];
    }

    std::string blanks() { return one({"", "", "", " ", "\n", "\r\n\t"}); }

    std::string value(size_t depth) {
        size_t const kind = below(10);
        if (depth == 0 || kind < 3) return scalar();
        std::string text;
        for (size_t n = below(6); n > 0; --n) {
            if (!text.empty()) text += ",";
            text += blanks();
            if (kind >= 6) text += string() + blanks() + ":" + blanks();
            text += (kind == 3 ? scalar() : value(depth - 1)) + blanks();
        }
        return kind >= 6 ? "{" + text + "}" : "[" + text + blanks() + "]";
    }

    std::string scalar() {
        if (below(3) == 0) return string();
        return one({"0",       "-0",         "-0.0",       "7",
                    "-12",     "2147483647", "2147483648", "-2147483649",
                    "1.5",     "1e5",        "1E-7",       "0.30000000000000004",
                    "1e400",   "1e-400",     "5e-324",     "9007199254740992",
                    "1e22",    "123456",     "1234567.0",  "9007199254740993",
                    "1e308",   "1e23",       "-1e-5",      "18446744073709551616",
                    "true",    "false",      "null",       "18446744073709551617",
                    "0.00001", "100000.5",   "99999.95",   "0.1e1"});
    }

    std::string string() {
        static constexpr char const *const parts[] = {"a",         "b",
                                                      "Z_9",       " ",
                                                      "\\n",       "\\u000a",
                                                      "\\u000A",   "\\\\n",
                                                      "\\\\",      "\\\"",
                                                      "\\t",       "\\r",
                                                      "'",         "/",
                                                      "\\/",       "//",
                                                      "/*",        "*/",
                                                      "#",         "#nil",
                                                      "#cRef(/a)", "=",
                                                      ";",         "}",
                                                      "]",         "{",
                                                      "[",         "<<",
                                                      "true",      "false",
                                                      "12",        "-1.5",
                                                      "1e5f",      "\\u0001",
                                                      "\x7f",      "\xC3\xA9",
                                                      "\\u20AC",   "\\ud83d\\uDE00",
                                                      "\\u000b"};
        std::string all;
        for (size_t n = below(4); n > 0; --n) all += one(parts);
        return "\"" + all + "\"";
    }

    std::mt19937 random_;
};

unsigned documents() {
    char const *const count = std::getenv("QRV_DOCUMENTS");
    return count ? static_cast<unsigned>(std::atoi(count)) : test::sanitized ? 200 : 1000;
}

TEST(Streamed, generated_documents_are_written_as_the_text_of_their_trees) {
    for (unsigned seed = 1; seed <= documents(); ++seed) {
        SCOPED_TRACE(seed);
        expect_same(cGenerator(seed).document());
        if (HasFailure()) return;
    }
}

TEST(Streamed, mutated_documents_are_refused_or_written_as_the_text_of_their_trees) {
    std::mt19937 random(1);
    for (unsigned seed = 1; seed <= documents(); ++seed) {
        std::string json = cGenerator(seed).document();
        static constexpr char bytes[] = "{}[],:\"\\ \n0-.e\xC3tfn\x01";
        json.insert(random() % (json.size() + 1), 1, bytes[random() % (sizeof bytes - 1)]);
        expect_same(json);
        expect_same(json.substr(0, random() % json.size()));
        if (HasFailure()) return;
    }
}

TEST(Streamed, hostile_documents_are_written_as_the_text_of_their_trees) {
    for (
        std::string const &json : std::initializer_list<std::string>{
            "",
            " ",
            "[]",
            "{}",
            "[[]]",
            "[{}]",
            "{\"\":{}}",
            "[\"\"]",
            "\"\\n\"",
            times("[", 1000) + times("]", 1000),
            times("[", 1001) + times("]", 1001),
            times("{\"a\":", 1000) + "1" + times("}", 1000),
            times("[", 100000),
            times("[1,", 200) + "2" + times("]", 200),
            times("7", 308),
            "1" + times("0", 300),
            "[\"" + times("x", 100000) + "\"]",
            "[\"" + times("\\n\\\"", 20000) + "\"]",
            "[" + times("1,", 10000) + "{}]",
            "[" + times("1,", 10000) + "\"\\n\"]",
            "[" + times("[],", 10000) + "0]",
            "\"\xC3\"",
            "\"\xED\xA0\x80\"",
            "\"\\ud800\"",
            "\xEF\xBB\xBF[1]",
            "[\"a\\u0000\"]",
            R"({"a":{"b":1,"b":[{"c":1,"c":2}]},"x":0,"a":{"b":{"c":3},"d":4, "b" : "}]"},"y":[]})",
            R"({"a":1,"a":2,"a":3, "b":{}, "b":[[1]] , "a":{"b":1,"b":"\"a\":"}})",
            "{\"k\":" + times("{\"a\":1,\"a\":", 100) + "2" + times("}", 100) + "}",
            "{" + times("\"a\":1,", 5000) + "\"b\":0}"})
        expect_same(json);
}

TEST(Streamed, files_are_written_as_the_text_of_their_trees) {
    size_t count = 0;
    for (auto const &entry :
         std::filesystem::directory_iterator(test::source_file("tests/tool/data/json"))) {
        std::ifstream is(entry.path(), std::ios::binary);
        expect_same({std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()});
        ++count;
    }
    EXPECT_GE(count, 9u);
}

TEST(Streamed, writing_ends_at_the_first_refused_piece) {
    std::string json = "[" + times("[1,2,3],", 20000) + "0]";
    cMessages messages("f", 1);
    cJsonFile const file(json, {}, messages);
    int pieces = 0;
    EXPECT_FALSE(file.write([&](std::string_view) { return ++pieces < 3; }));
    EXPECT_EQ(pieces, 3);
}

// Another value than the one written, at every kind of token.
TEST(Streamed, a_fingerprint_detects_text_that_reads_as_another_value) {
    auto const of = [](std::string_view text) {
        cValuePrint print;
        print.add_text(text);
        return print;
    };
    EXPECT_EQ(of("{a= [1, 2.5, \"x\\\"\", true, #nil, ];\n}"),
              of("{ a=[1,2.5,'x\"',true,#nil,];}"));
    char const *const texts[] = {"[1,]",    "[1.0,]",  "[\"1\",]",    "[2,]",     "{a=1;}",
                                 "{b=1;}",  "[true,]", "[\"true\",]", "[false,]", "[0.0,]",
                                 "[-0.0,]", "[#nil,]", "[#void,]",    "[nil,]",   "[,1]",
                                 "[1]",     "[1u,]"};
    for (char const *const one : texts)
        for (char const *const other : texts)
            EXPECT_EQ(of(one) == of(other), one == other) << one << other;
}

} // namespace
