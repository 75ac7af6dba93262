// `fmt` leaves its own output unchanged, and loses no comment.

#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <random>

using tool_test::cRun;

namespace {

// Text as people might write it: any layout, comments and line ends anywhere, all kinds of values.
class cRandomText {
  public:
    explicit cRandomText(unsigned long seed, bool sharing = true)
        : random_(seed), sharing_(sharing) {}

    std::string text() {
        out_.clear();
        keys_ = comments_ = 0;
        gap();
        container(4);
        gap();
        return out_;
    }

  private:
    size_t below(size_t limit) { return static_cast<size_t>(random_() % limit); }
    template <size_t N> void one_of(char const *const (&texts)[N]) { out_ += texts[below(N)]; }

    void gap() {
        static char const *const gaps[] = {"",
                                           "",
                                           " ",
                                           " ",
                                           "\n",
                                           "\t",
                                           "\r\n",
                                           " // x\n",
                                           "\n\n// y z\n",
                                           "/* x */",
                                           " /* two\n lines */ ",
                                           "//\n",
                                           "/**/"};
        std::string gap = gaps[below(std::size(gaps))];
        size_t const comment = gap.find('/');
        if (comment != std::string::npos && below(4) > 0)
            gap.insert(comment + 2, std::to_string(++comments_) + ' ');
        out_ += gap;
    }

    void scalar() {
        static char const *const scalars[] = {"1",
                                              "-7",
                                              "0x1F",
                                              "12u",
                                              "1.5",
                                              "-.25f",
                                              "3.14159265358979",
                                              "1.e-7",
                                              "true",
                                              "false",
                                              "#true",
                                              "#nil",
                                              "word",
                                              "'it\\'s'",
                                              "\"\"",
                                              "'true'",
                                              "'a\\\nb'",
                                              "\"C:\\\\x\"",
                                              "int(5)",
                                              "double( 2.5 /* in */ )",
                                              "'\xC3\xA9'",
                                              "16777217.0f",
                                              "123456.",
                                              "-123456.5",
                                              "0.1"};
        one_of(scalars);
    }

    void key() {
        static char const *const forms[] = {"k", "'key ", "", "-", "1."};
        size_t const form = below(5);
        out_ += forms[form] + std::to_string(++keys_) + (form == 1 ? "'" : "");
    }

    void value(int depth) {
        if (depth > 0 && below(3) == 0)
            container(depth);
        else if (sharing_ && !named_.empty() && below(12) == 0)
            out_ += "#cRef(/" + named_[below(named_.size())] + ")";
        else
            scalar();
    }

    void container(int depth) {
        static char const *const brackets[] = {"{}", "[]", "<>"};
        bool const top = depth == 4;
        if (top) named_.clear();
        char const *const bracket = brackets[top ? 0 : below(3)];
        if (bracket[0] == '<' && out_.ends_with('<')) out_ += ' '; // "<<" is one token
        out_ += bracket[0];
        for (size_t n = below(8); n > 0; --n) entry(bracket[0], depth, top);
        gap();
        out_ += bracket[1];
    }

    void entry(char bracket, int depth, bool top) {
        gap();
        if (bracket == '{') {
            size_t const start = out_.size();
            key();
            std::string const name = out_.substr(start);
            gap();
            out_ += "=";
            gap();
            value(depth - 1);
            if (top && name[0] == 'k') named_.push_back(name);
        } else {
            value(depth - 1);
        }
        gap();
        out_ += below(2) ? ";" : ",";
    }

    std::mt19937_64 random_;
    bool sharing_;
    std::string out_;
    std::vector<std::string> named_; // keys of the outermost map whose value is complete
    int keys_ = 0;
    int comments_ = 0;
};

class ToolIdempotent : public tool_test::Tool {
  protected:
    // Formats once, with --force; the result is formatted.
    void settles(std::vector<std::string> const &names) const {
        std::vector<std::string> first{"fmt", "-i", "--force", "--max-errors", "1000"};
        std::vector<std::string> second{"fmt", "--check"};
        first.insert(first.end(), names.begin(), names.end());
        second.insert(second.end(), names.begin(), names.end());
        cRun const forced = run(first);
        EXPECT_EQ(forced.status, 0);
        EXPECT_EQ(forced.out, "");
        EXPECT_EQ(run(second), (cRun{0, "", ""}));
    }
    // The comments without white space, which changes when a comment is moved.
    std::vector<std::string> comments_in(std::string const &bytes) const {
        std::string const tokens = run_on(bytes, {"tokens", "--all"}).out;
        std::vector<std::string> found;
        for (size_t at = 0; (at = tokens.find("TOKEN:265:", at)) != std::string::npos;) {
            size_t const begin = tokens.find('\'', at);
            at = std::min(tokens.find("'\nTOKEN:", begin), tokens.size());
            found.emplace_back();
            for (char const c : tokens.substr(begin, at - begin))
                if (!std::isspace(static_cast<unsigned char>(c))) found.back() += c;
        }
        return found;
    }
};

TEST_F(ToolIdempotent, the_output_for_examples_is_formatted) {
    for (std::string const name : {"device.attr", "testplan.attr", "settings.attr"})
        write_example(name);
    settles({"device.attr", "testplan.attr", "settings.attr"});
}

TEST_F(ToolIdempotent, the_output_for_random_files_is_formatted) {
    std::vector<std::string> names;
    for (unsigned long seed = 1; seed <= 100; ++seed) {
        names.push_back("seed-" + std::to_string(seed));
        write(names.back(), cRandomText(seed).text());
    }
    settles(names);
}

TEST_F(ToolIdempotent, the_output_for_handwritten_files_is_formatted) {
    for (std::string const name : {"router.attr", "test_plan.attr", "shop.attr"})
        write(name, tool_test::bytes_of(test::source_file("tests/tool/data/hand/" + name)));
    settles({"router.attr", "test_plan.attr", "shop.attr"});
}

TEST_F(ToolIdempotent, every_comment_of_a_random_file_is_written_once_and_in_order) {
    for (unsigned long seed = 201; seed <= (test::sanitized ? 220 : 300); ++seed) {
        std::string const text = cRandomText(seed, false).text();
        cRun const run = fmt(text);
        std::vector<std::string> before = comments_in(text), after = comments_in(run.out);
        if (text.find('<') != std::string::npos) { // equal values in a set become one
            std::sort(before.begin(), before.end());
            std::sort(after.begin(), after.end());
        }
        EXPECT_EQ(before, after) << "seed " << seed << "\n" << text << "\n--- gives\n" << run.out;
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.status, 0);
    }
}

} // namespace
