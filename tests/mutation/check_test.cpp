// If the library reports anything about a file, `check` prints an error and fails. This test uses
// the examples and generated files, in which one token at a time is deleted or changed. The tool
// replaces many of the library's reports by better ones. If it dropped a report without a
// replacement, every command that writes would silently lose the value.

#include "tests/mutation/changed_tokens.h"
#include "tests/mutation/generated.h"
#include "tests/support/fixture.h"
#include "tests/support/paths.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace mutation_test;

class Mutation : public testing::Test {
  protected:
    static void SetUpTestSuite() { ASSERT_TRUE(test::listening()); }
    ~Mutation() override { EXPECT_GT(cases_, 0); }

    void expect_report(std::string const &what, std::string const &text) {
        ++cases_;
        std::string const why = missing_report(text);
        if (why.empty()) return;
        if (++silent_ <= 10) ADD_FAILURE() << why << ": " << what << "\n" << text;
    }

    // A token with another text: one of the file's tokens, or one that has a meaning in any file.
    std::string other(std::vector<cToken> const &tokens, cToken const &token) {
        static std::vector<std::string> const words{
            "(", ")",   "{",       "}",       "[",      "]",        "<",      ">",    "=",
            ";", ",",   "attspec", "attlist", "choice", "int",      "string", "intf", "map",
            "0", "1.5", "true",    "\"a\"",   "#nil",   "#IMPLIED", "#FIXED", "type", "x"};
        std::string by = token.text;
        while (by == token.text)
            by = chance_() % 2 == 0 ? words[chance_() % words.size()]
                                    : tokens[chance_() % tokens.size()].text;
        return by;
    }

    void check_deletions(std::string const &name, std::string const &text) {
        std::vector<cToken> const tokens = tokens_of(text);
        for (size_t i = 0; i < tokens.size(); ++i)
            expect_report(name + ": '" + tokens[i].text + "' deleted, token " + std::to_string(i),
                          replaced(text, tokens[i], ""));
    }
    void check_changes(std::string const &name, std::string const &text) {
        std::vector<cToken> const tokens = tokens_of(text);
        for (size_t i = 0; i < tokens.size(); ++i) {
            std::string const by = other(tokens, tokens[i]);
            expect_report(name + ": '" + tokens[i].text + "' changed to '" + by + "', token " +
                              std::to_string(i),
                          replaced(text, tokens[i], by));
        }
    }
    void check_without_brackets(std::string const &name, std::string const &text) {
        std::vector<cToken> const tokens = tokens_of(text);
        for (size_t i = 0; i < tokens.size(); ++i)
            if (std::string const less = without_brackets(text, tokens, i); less != text)
                expect_report(name + ": brackets deleted, token " + std::to_string(i), less);
    }

    // The paths of the large example, or of all others, sorted.
    static std::vector<std::string> examples(bool large) {
        std::vector<std::string> found;
        for (char const *const folder : {"examples", "examples/broken"})
            for (auto const &file : std::filesystem::directory_iterator(test::source_file(folder)))
                if (file.path().extension() == ".attr" &&
                    (file.path().stem() == "waterworks") == large)
                    found.push_back(file.path().string());
        std::sort(found.begin(), found.end());
        return found;
    }
    static std::string bytes_of(std::string const &path) {
        std::ifstream is(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()};
    }

    std::mt19937 chance_{20};
    int cases_ = 0, silent_ = 0;
};

// The large example takes most of the time. Its two tests run in different shards.
TEST_F(Mutation, check_misses_no_error_after_a_deletion_in_the_large_example) {
    for (std::string const &name : examples(true)) check_deletions(name, bytes_of(name));
}

TEST_F(Mutation, check_misses_no_error_after_a_change_in_the_large_example) {
    for (std::string const &name : examples(true)) check_changes(name, bytes_of(name));
}

TEST_F(Mutation, check_misses_no_error_after_a_change_in_the_other_examples) {
    ASSERT_GT(examples(false).size(), 10U);
    for (std::string const &name : examples(false)) {
        check_deletions(name, bytes_of(name));
        check_changes(name, bytes_of(name));
        check_without_brackets(name, bytes_of(name));
    }
}

TEST_F(Mutation, check_misses_no_error_after_a_change_in_generated_files) {
    for (int i = 0; i < 2000; ++i) {
        std::string const text = generated_file(chance_), name = "file " + std::to_string(i);
        ASSERT_FALSE(is_reported(text)) << name << "\n" << text;
        std::vector<cToken> const tokens = tokens_of(text);
        size_t const index = chance_() % tokens.size();
        cToken const &token = tokens[index];
        expect_report(name + ": deleted " + token.text, replaced(text, token, ""));
        std::string const by = other(tokens, token);
        expect_report(name + ": " + token.text + " changed to " + by, replaced(text, token, by));
        std::vector<size_t> brackets;
        for (size_t k = 1; k < tokens.size(); ++k) // bracket 0 encloses everything
            if (without_brackets(text, tokens, k) != text) brackets.push_back(k);
        if (brackets.empty()) continue;
        size_t const bracket = brackets[chance_() % brackets.size()];
        expect_report(name + ": brackets deleted, token " + std::to_string(bracket),
                      without_brackets(text, tokens, bracket));
    }
}

} // namespace
