// Wildcards: the rules of each element, and a comparison with a simple recursive implementation of
// the rules.

#include "qrv/util/cmatch.h"

#include "tests/support/fixture.h"
#include "tests/support/strings.h"

#include <climits>
#include <random>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

using test::times;

int longest(std::string const &text, std::string const &pattern) {
    return cMatch(text.c_str(), pattern.c_str(), false);
}
int first(std::string const &text, std::string const &pattern) {
    return cMatch(text.c_str(), pattern.c_str(), true);
}
// The longest match, which must be the first one, too.
int both(std::string const &text, std::string const &pattern) {
    int const result = longest(text, pattern);
    EXPECT_EQ(first(text, pattern), result) << text << " " << pattern;
    return result;
}

class Match : public QrvTest {};
class MatchEdge : public QrvTest {};

} // namespace

TEST_F(MatchEdge, a_star_matches_the_longest_or_the_first) {
    EXPECT_EQ(cMatch("abcabc", "a*c", false), 6);
    EXPECT_EQ(cMatch("abcabc", "a*c", true), 3);
}

TEST_F(MatchEdge, alternatives_match_the_longest_or_the_first) {
    EXPECT_EQ(cMatch("abcd", "{ab,abc}", false), 3);
    EXPECT_EQ(cMatch("abcd", "{ab,abc}", true), 2);
}

TEST_F(MatchEdge, the_whole_pattern_must_match_and_a_final_star_omits_the_last_character) {
    EXPECT_EQ(cMatch("abc", "abcd", false), 0);
    EXPECT_EQ(cMatch("abc", "ab*", false), 0);
    EXPECT_EQ(cMatch("abcd", "ab*", false), 3);
}

TEST_F(MatchEdge, a_question_mark_does_not_match_the_end_of_the_text) {
    EXPECT_EQ(cMatch("ab", "ab?", false), 0);
}

TEST_F(MatchEdge, sets_may_be_reversed_or_negated) {
    EXPECT_EQ(cMatch("zbc", "[z-a]bc", false), 3);
    EXPECT_EQ(cMatch("xbc", "[!a-c]bc", false), 3);
}

TEST_F(MatchEdge, a_backslash_makes_a_star_literal) {
    EXPECT_EQ(cMatch("a*c", "a\\*c", false), 3);
    EXPECT_EQ(cMatch("abc", "a\\*c", false), 0);
}

// --- pointers, empty texts, plain characters ---

TEST_F(Match, null_does_not_match) {
    EXPECT_EQ(cMatch(nullptr, nullptr, false), 0);
    EXPECT_EQ(cMatch(nullptr, "a", true), 0);
    EXPECT_EQ(cMatch("a", nullptr, false), 0);
}

TEST_F(Match, an_empty_text_or_pattern_does_not_match) {
    EXPECT_EQ(both("", ""), 0);
    EXPECT_EQ(both("abc", ""), 0);
    for (char const *const pattern :
         {"a", "?", "??", "*", "*?", "[a]", "[!a]", "{}", "{a,?}", "\\"})
        EXPECT_EQ(both("", pattern), 0) << pattern;
}

TEST_F(Match, plain_characters_match_the_start_of_the_text) {
    EXPECT_EQ(both("abcd", "abc"), 3);
    EXPECT_EQ(both("abc", "abc"), 3);
    EXPECT_EQ(both("abc", "abd"), 0);
    EXPECT_EQ(both("ab", "abc"), 0);
    EXPECT_EQ(both("],}!-b", "],}!-"), 5) << "outside of sets and alternatives they are literal";
    EXPECT_EQ(both("\xE4\xFF", "\xE4\xFF"), 2);
    EXPECT_EQ(both("A", "a"), 0);
}

TEST_F(Match, a_question_mark_matches_any_character) {
    EXPECT_EQ(both("abc", "a?c"), 3);
    EXPECT_EQ(both("a\xE4", "??"), 2);
    EXPECT_EQ(both("a", "??"), 0);
}

TEST_F(Match, a_question_mark_may_match_the_end_of_the_text_after_alternatives) {
    EXPECT_EQ(both("ab", "{ab}?"), 2);
    EXPECT_EQ(both("ab", "{ab}??"), 0);
    EXPECT_EQ(both("ab", "{ab}{?}"), 2);
    EXPECT_EQ(both("ab", "{ab}{?}?"), 2) << "the last ? also matches the end of the text";
    EXPECT_EQ(both("ab", "{ab}{}"), 2);
    EXPECT_EQ(both("ab", "{ab}\\"), 2);
    EXPECT_EQ(both("ab", "{ab}*"), 0);
    EXPECT_EQ(both("ab", "{ab}[!a]"), 0);
    EXPECT_EQ(both("ab", "{ab}b"), 0);
    EXPECT_EQ(both("ab", "ab{}"), 0) << "the text must not end between elements";
}

TEST_F(Match, a_backslash_makes_the_next_character_literal) {
    EXPECT_EQ(both("?[{\\a", "\\?\\[\\{\\\\\\a"), 5);
    EXPECT_EQ(both("abc", "ab\\"), 2) << "a final backslash ends the pattern";
    EXPECT_EQ(both("ab", "ab\\"), 0) << "the text ends before the backslash";
    EXPECT_EQ(both("abc", "\\"), 0);
    EXPECT_EQ(longest("abc", "a*\\"), 2);
    EXPECT_EQ(first("abc", "a*\\"), 2);
}

// --- sets ---

TEST_F(Match, sets_match_one_character) {
    EXPECT_EQ(both("b", "[abc]"), 1);
    EXPECT_EQ(both("d", "[abc]"), 0);
    EXPECT_EQ(both("d", "[!abc]"), 1);
    EXPECT_EQ(both("b", "[!abc]"), 0);
    EXPECT_EQ(both("!", "[a!]"), 1) << "only the first ! negates";
    EXPECT_EQ(both("!", "[!!]"), 0);
    EXPECT_EQ(both("!", "[\\!a]"), 1);
    EXPECT_EQ(both("?", "[?*{,}]"), 1);
    EXPECT_EQ(both("a", "[?*{,}]"), 0);
    EXPECT_EQ(both("a", "a[!b]"), 0) << "a set does not match the end of the text";
}

TEST_F(Match, a_set_ends_at_the_next_bracket) {
    EXPECT_EQ(both("a", "[]"), 0);
    EXPECT_EQ(both("a]", "[]a]"), 0);
    EXPECT_EQ(both("a", "[!]"), 1);
    EXPECT_EQ(both("[b", "[[]b"), 2);
    EXPECT_EQ(both("]", "[\\]]"), 1);
    EXPECT_EQ(both("]", "[!\\]]"), 0);
}

TEST_F(Match, ranges_match_the_characters_between_their_ends) {
    for (char const *const set : {"[b-d]", "[d-b]", "[\\b-\\d]", "[xb-d]", "[b-dx]"}) {
        EXPECT_EQ(both("a", set), 0) << set;
        for (char const *const text : {"b", "c", "d"}) EXPECT_EQ(both(text, set), 1) << set;
        EXPECT_EQ(both("e", set), 0) << set;
        EXPECT_EQ(both("-", set), 0) << set;
    }
    EXPECT_EQ(both("\\", "[[-\\]]"), 1) << "the range ends at the literal ]";
    EXPECT_EQ(both("]", "[[-\\]]"), 1);
}

TEST_F(Match, a_minus_at_either_end_of_a_set_is_literal) {
    for (char const *const set : {"[a-]", "[-a]", "[a\\-z]", "[!b-z]", "[a-a-]"})
        EXPECT_EQ(both("-", set), 1) << set;
    EXPECT_EQ(both("b", "[a\\-z]"), 0);
    EXPECT_EQ(both("-", "[a-c-e]"), 1) << "after a range";
    EXPECT_EQ(both("d", "[a-c-e]"), 0);
    EXPECT_EQ(both(".", "[--/]"), 1) << "a range may begin with -";
}

TEST_F(Match, ranges_compare_signed_characters) {
    EXPECT_EQ(both("\xE4", "[\x80-a]"), 1);
    EXPECT_EQ(both("\xFF", "[a-\xFF]"), 1);
    EXPECT_EQ(both("\xE4", "[a-\xFF]"), 0);
    EXPECT_EQ(both("b", "[a-\xFF]"), 0);
    EXPECT_EQ(both("\x7F", "[a-\x80]"), 0);
    EXPECT_EQ(both("\xE4", "[\xE3-\xE5]"), 1);
    EXPECT_EQ(both("\xE4", "[!\xE4]"), 0);
}

TEST_F(Match, unclosed_sets_and_alternatives_fail) {
    for (char const *const pattern : {"a[", "a[b", "a[b-", "a[b\\", "a[b\\]", "a{", "a{b", "a{b,",
                                      "a{b\\}", "a{[b}", "a{{b}", "*[", "*{b", "{b}[", "{ab,[b}"})
        EXPECT_EQ(both("abc", pattern), 0) << pattern;
}

// --- stars ---

TEST_F(Match, a_star_at_the_end_matches_something_but_not_the_last_character) {
    EXPECT_EQ(longest("abc", "a*"), 2);
    EXPECT_EQ(first("abcd", "a*"), 2);
    EXPECT_EQ(longest("abcd", "a*"), 3);
    EXPECT_EQ(both("a", "a*"), 0);
    EXPECT_EQ(both("ab", "a*"), 0);
    EXPECT_EQ(both("a", "*"), 0);
    EXPECT_EQ(both("ab", "*"), 1);
}

TEST_F(Match, a_star_before_other_elements_may_match_nothing) {
    EXPECT_EQ(both("ab", "a*b"), 2);
    EXPECT_EQ(both("ab", "*ab"), 2);
    EXPECT_EQ(both("a", "*?"), 1);
    EXPECT_EQ(longest("abc", "*?"), 3);
    EXPECT_EQ(first("abc", "*?"), 1);
    EXPECT_EQ(both("abc", "*d"), 0);
}

TEST_F(Match, a_star_ignores_empty_matches_of_the_rest) {
    EXPECT_EQ(longest("abc", "*{}"), 2) << "empty matches do not count";
    EXPECT_EQ(first("abc", "*{}"), 1);
    EXPECT_EQ(both("ab", "a*{}"), 0);
}

TEST_F(Match, several_stars_in_a_row_act_as_one) {
    EXPECT_EQ(longest("abcabc", "a***c"), 6);
    EXPECT_EQ(first("abcabc", "a***c"), 3);
    EXPECT_EQ(longest("abcd", "ab**"), 3);
    EXPECT_EQ(both("abc", "ab**"), 0);
}

TEST_F(Match, several_stars_may_be_in_one_pattern) {
    EXPECT_EQ(longest("abcbc", "*b*c"), 5);
    EXPECT_EQ(first("abcbc", "*b*c"), 3);
    EXPECT_EQ(longest("a.b.c", "*.*.?"), 5);
    EXPECT_EQ(both("a.b", "*.*.*"), 0);
}

// --- alternatives ---

TEST_F(Match, alternatives_are_matched_separately) {
    EXPECT_EQ(longest("abcd", "{ab,abc}d"), 4);
    EXPECT_EQ(first("abcd", "{ab,abc}d"), 4)
        << "the first alternative after which the rest matches";
    EXPECT_EQ(longest("abab", "{a*b}b"), 0)
        << "the alternative matches all of the text, and b has none left";
    EXPECT_EQ(first("abb", "{a*b}b"), 3);
    EXPECT_EQ(longest("xab", "x{a,a?}"), 3);
    EXPECT_EQ(longest("abc", "{a,ab}{c,bc}"), 3);
}

TEST_F(Match, alternatives_may_be_empty) {
    EXPECT_EQ(both("b", "{}b"), 1);
    EXPECT_EQ(both("b", "{,a}b"), 1);
    EXPECT_EQ(both("ab", "{,a}b"), 2);
    EXPECT_EQ(both("b", "{a,}b"), 1);
    EXPECT_EQ(longest("ab", "{,a}"), 1);
    EXPECT_EQ(first("ab", "{,a}"), 0) << "the first alternative matches, with length 0";
    EXPECT_EQ(both("ab", "{,,}ab"), 2);
}

TEST_F(Match, the_first_alternative_that_works_ends_the_search) {
    EXPECT_EQ(first("abc", "{x,ab,abc}"), 2);
    EXPECT_EQ(first("abc", "{abc,ab}"), 3);
    EXPECT_EQ(longest("abc", "{abc,ab}"), 3);
    EXPECT_EQ(first("abcc", "{a,ab}{bc,c}"), 3);
}

TEST_F(Match, alternatives_may_be_nested) {
    EXPECT_EQ(longest("abd", "{a{b,c}d,ab}"), 3);
    EXPECT_EQ(longest("acd", "{a{b,c}d,ab}"), 3);
    EXPECT_EQ(longest("abx", "{a{b,c}d,ab}"), 2);
    EXPECT_EQ(both("b", "{{{a,b}}}"), 1);
    EXPECT_EQ(both("abc", "{{{a}b}c}"), 3);
    EXPECT_EQ(longest("abcx", "{a,{a{b,bc}}}x"), 4) << "the inner alternatives match bc";
    EXPECT_EQ(longest("abx", "{a{b,bx}}x"), 0) << "the inner alternatives match bx";
}

TEST_F(Match, sets_and_backslashes_quote_delimiters_in_alternatives) {
    EXPECT_EQ(both(",", "{[,}]}"), 1);
    EXPECT_EQ(both("}", "{[,}]}"), 1);
    EXPECT_EQ(both("a,b", "{a\\,b}"), 3);
    EXPECT_EQ(both("a}", "{a\\}}"), 2);
    EXPECT_EQ(both("{", "{\\{}"), 1);
    EXPECT_EQ(both("a]", "{a]}"), 2);
    EXPECT_EQ(both("]", "{[\\],]}"), 1);
}

TEST_F(Match, alternatives_may_contain_stars) {
    EXPECT_EQ(longest("humidity", "{*hum,*hum*?}"), 8);
    EXPECT_EQ(longest("hum", "{*hum,*hum*?}"), 3);
    EXPECT_EQ(longest("abcabc", "*{b,c}"), 6);
    EXPECT_EQ(first("abcabc", "*{b,c}"), 2);
}

// --- comparison with a simple recursion ---

namespace {

// Implements the same rules by simple recursion: it copies the rest of the pattern for each
// attempt. It shares no code with the tested function.
class cPlain {
  public:
    explicit cPlain(bool first) : first_(first) {}

    int result(std::string const &text, std::string const &pattern) const {
        return pattern.empty() ? 0 : std::max(0, match(text, pattern));
    }

  private:
    // The length of the match, or -1.
    int match(std::string const &text, std::string const &pattern) const {
        size_t n = 0, i = 0;
        while (i < pattern.size()) {
            char const c = pattern[i++];
            if (c == '*') return star(text, n, pattern.substr(i));
            if (c == '{') return braces(text, n, pattern.substr(i));
            if (c == '\\' && i == pattern.size()) return static_cast<int>(n);
            if (c == '?') {
                if (n < text.size()) ++n;
            } else if (c == '[') {
                size_t length = 0;
                if (n == text.size() || !set(text[n], pattern.substr(i), length)) return -1;
                i += length;
                ++n;
            } else {
                char const wanted = c == '\\' ? pattern[i++] : c;
                if (n == text.size() || text[n] != wanted) return -1;
                ++n;
            }
            if (n == text.size()) return i == pattern.size() ? static_cast<int>(n) : -1;
        }
        return static_cast<int>(n);
    }

    int star(std::string const &text, size_t n, std::string rest) const {
        while (!rest.empty() && rest[0] == '*') rest.erase(0, 1);
        int best = 0;
        for (size_t skipped = 0; n + skipped < text.size(); ++skipped) {
            int const more = match(text.substr(n + skipped), rest);
            int const length = more < 0 ? 0 : static_cast<int>(skipped) + more;
            if (length > best) best = length;
            if (best > 0 && first_) break;
        }
        return best > 0 ? static_cast<int>(n) + best : -1;
    }

    int braces(std::string const &text, size_t n, std::string const &rest) const {
        std::vector<std::string> alternatives(1);
        int depth = 1;
        bool in_set = false;
        size_t i = 0;
        for (; i < rest.size(); ++i) {
            char const c = rest[i];
            if (c == '\\') {
                alternatives.back() += c;
                if (++i == rest.size()) break;
                alternatives.back() += rest[i];
                continue;
            }
            if (in_set)
                in_set = c != ']';
            else if (c == '[')
                in_set = true;
            else if (c == '{')
                ++depth;
            else if (c == '}' && --depth == 0)
                break;
            else if (c == ',' && depth == 1) {
                alternatives.emplace_back();
                continue;
            }
            alternatives.back() += c;
        }
        if (depth != 0) return -1;
        int best = -1;
        for (std::string const &alternative : alternatives) {
            int const part = match(text.substr(n), alternative);
            if (part < 0) continue;
            int const more = match(text.substr(n + static_cast<size_t>(part)), rest.substr(i + 1));
            if (more >= 0 && part + more > best) best = part + more;
            if (best >= 0 && first_) break;
        }
        return best < 0 ? -1 : static_cast<int>(n) + best;
    }

    // Returns whether `c` is in the set at the beginning of `rest`, after its `[`. Sets `length` to
    // the length of the set including its `]`.
    static bool set(char c, std::string const &rest, size_t &length) {
        struct cMember {
            int code;
            bool literal;
        };
        std::vector<cMember> members;
        size_t i = 0;
        for (; i < rest.size() && rest[i] != ']'; ++i) {
            bool const literal = rest[i] == '\\';
            if (literal && ++i == rest.size()) return false;
            members.push_back({static_cast<signed char>(rest[i]), literal});
        }
        if (i >= rest.size()) return false;
        length = i + 1;
        bool const negated = !members.empty() && members[0].code == '!' && !members[0].literal;
        if (negated) members.erase(members.begin());
        int const code = static_cast<signed char>(c);
        bool found = false;
        for (size_t m = 0; m < members.size(); ++m) {
            int low = members[m].code, high = low;
            if (m + 2 < members.size() && members[m + 1].code == '-' && !members[m + 1].literal) {
                high = members[m + 2].code;
                m += 2;
            }
            if (low > high) std::swap(low, high);
            found = found || (low <= code && code <= high);
        }
        return found != negated;
    }

    bool first_;
};

class cDice {
  public:
    size_t below(size_t limit) { return engine_() % limit; }
    char one_of(std::string const &characters) { return characters[below(characters.size())]; }
    std::string some_of(std::string const &characters, size_t most) {
        std::string text(below(most + 1), ' ');
        for (char &c : text) c = one_of(characters);
        return text;
    }
    // A pattern of random elements, most of them closed, with nested alternatives.
    std::string pattern(size_t most, size_t depth) {
        std::string text;
        for (size_t count = below(most + 1); count > 0; --count) {
            size_t const kind = below(10);
            if (kind < 4)
                text += one_of("aabc");
            else if (kind == 4)
                text += one_of("?\xE4\\],");
            else if (kind == 5)
                text += '?';
            else if (kind == 6)
                text += '*';
            else if (kind == 7)
                text += '[' + some_of("abc-!\\\xE4", 4) + ']';
            else if (depth > 0)
                text += group(depth - 1);
        }
        return text;
    }

  private:
    std::string group(size_t depth) {
        std::string text = "{" + pattern(2, depth);
        while (below(2)) text += ',' + pattern(2, depth);
        return text + '}';
    }

    std::mt19937 engine_{20};
};

// Returns whether both implementations agree, and counts the matches.
bool agree(std::string const &text, std::string const &pattern, size_t &matches) {
    for (bool const by_first : {false, true}) {
        int const expected = cPlain(by_first).result(text, pattern);
        matches += expected > 0;
        int const result = cMatch(text.c_str(), pattern.c_str(), by_first);
        EXPECT_EQ(result, expected) << "'" << text << "' '" << pattern << "' " << by_first;
        if (result != expected) return false;
    }
    return true;
}

} // namespace

TEST_F(Match, a_simple_recursion_agrees_on_random_characters) {
    cDice dice;
    size_t matches = 0;
    for (int i = 0; i < 500000; ++i) {
        std::string const text = dice.some_of("abc*?[]!-{},\\\xE4", 8);
        if (!agree(text, dice.some_of("abc*?[]!-{},\\\xE4", 10), matches)) return;
    }
    EXPECT_GT(matches, 15000u);
}

TEST_F(Match, a_simple_recursion_agrees_on_random_elements) {
    cDice dice;
    size_t matches = 0;
    for (int i = 0; i < 500000; ++i) {
        std::string const text = dice.some_of("aaabbc-\xE4", 8);
        if (!agree(text, dice.pattern(5, 2), matches)) return;
    }
    EXPECT_GT(matches, 100000u);
}

// --- size ---

TEST_F(Match, forty_stars_match_sixty_characters_quickly) {
    std::string const text = times("a", 60);
    EXPECT_EQ(both(text, times("*a", 40) + "b"), 0);
    EXPECT_EQ(longest(text, times("*a", 40)), 60);
    EXPECT_EQ(first(text, times("*a", 40)), 40);
    EXPECT_EQ(both(text, times("{a,aa,*a}", 40) + "b"), 0);
}

TEST_F(Match, alternatives_may_have_any_length) {
    for (size_t const length : {511u, 512u, 513u, 5000u}) {
        std::string const text = times("ab", length).substr(0, length);
        EXPECT_EQ(both(text, "{x," + text + "}"), static_cast<int>(length));
        EXPECT_EQ(both(text + "!", "{" + text + "x," + text + "}!"), static_cast<int>(length + 1));
    }
}

TEST_F(Match, a_hundred_thousand_braces_may_be_nested) {
    size_t const depth = 100000;
    std::string const open = times("{", depth), close = times("}", depth);
    std::string const text = times("ab", 500000);
    EXPECT_EQ(both(text, open + "ab" + close), 2);
    EXPECT_EQ(both("ab", open + "ab" + times("}?", depth)), 2)
        << "each ? matches the end of the text";
    EXPECT_EQ(both("ab", times("{x,", depth) + "ab" + close), 2);
    EXPECT_EQ(both("ab", open + "ab" + times(",x}", depth)), 2);
    EXPECT_EQ(both("aba", times("{}", depth) + "ab"), 2);
    EXPECT_EQ(both(text, open), 0);
    EXPECT_EQ(both(text, "*" + open), 0);
    EXPECT_EQ(both(text, open + "ab" + close.substr(1)), 0);
    EXPECT_EQ(both(text, times("[", depth)), 0);
    EXPECT_EQ(both(text, times("{[", depth)), 0);
}

TEST_F(Match, the_text_may_be_long) {
    std::string const text = times("x", 1000000) + "a" + times("y", 1000) + "b";
    EXPECT_EQ(longest(text, "*a*b*"), 0) << "a final star needs a character and omits the last one";
    EXPECT_EQ(longest(text + "..", "*a*b*"), 1001003);
    EXPECT_EQ(first(text + "...", "*a*b*"), 1001003);
    EXPECT_EQ(both(text, "*a*b"), 1001002);
    EXPECT_EQ(both(text, "*a*c"), 0);
    EXPECT_EQ(both(text, text), 1001002);
    EXPECT_EQ(both(text, "{y,x}x"), 2);
}

// Repeats one megabyte up to a string whose length exceeds the range of int.
TEST_F(Match, the_text_may_be_longer_than_int_can_count) {
    size_t const part = 1 << 20, count = 2049;
    int const memory = ::memfd_create("match", 0);
    ASSERT_GE(memory, 0);
    std::string const bytes = times("a", part);
    ASSERT_EQ(::write(memory, bytes.data(), part), static_cast<ssize_t>(part));
    void *const whole =
        ::mmap(nullptr, part * count, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(whole, MAP_FAILED);
    auto *const text = static_cast<char *>(whole);
    for (size_t i = 0; i + 1 < count; ++i) // the last part ends with a null character
        ASSERT_EQ(::mmap(text + i * part, part, PROT_READ, MAP_PRIVATE | MAP_FIXED, memory, 0),
                  text + i * part);
    EXPECT_EQ(cMatch(text, "aaa", false), 3);
    EXPECT_EQ(cMatch(text, "{a,aa}", false), 2);
    EXPECT_EQ(cMatch(text, "a*a", false), 0);
    EXPECT_EQ(cMatch(text + (count - 2) * part, "a*a", false), static_cast<int>(part));
    ::munmap(whole, part * count);
    ::close(memory);
}
