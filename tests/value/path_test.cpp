// Paths as text. They have the same keys as those of cObj::getattrp, but only slashes between them.

#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ccaughterrors.h"
#include "tests/value/value_support.h"

#include <array>
#include <map>
#include <random>

using namespace value_test;

namespace {

class Path : public Quiet {};

// The message of the error in the path, or "nothing".
std::string complaint(std::string const &path) {
    return thrown<qrv::path_error>([&] { read("{a= {b= 5}}").find(path); });
}

} // namespace

TEST_F(Path, has_keys_between_slashes) {
    qrv::value const tree = read("{a= {b= 5; list= [7, {c= 8}]; \"x y\"= 1; \"3\"= 2; _1= 4}}");
    EXPECT_EQ(tree.at("a/b"), 5);
    EXPECT_EQ(tree.at("/a/b"), 5);
    EXPECT_EQ(tree.at("a/list/0"), 7);
    EXPECT_EQ(tree.at("a/list/1/c"), 8);
    EXPECT_EQ(tree.at("a/\"x y\""), 1);
    EXPECT_EQ(tree.at("'a'/\"b\""), 5);
    EXPECT_EQ(tree.at("a/_1"), 4);
    EXPECT_EQ(read("{\"true\"= {\"false\"= 1}}").at("true/false"), 1);
    EXPECT_EQ(tree.at("a / b "), 5);
    EXPECT_EQ(tree.at("a/list/0x1/c"), 8);
    EXPECT_TRUE(tree.at("").is_shared_with(tree));
    EXPECT_TRUE(tree.at("/").is_shared_with(tree));
    EXPECT_EQ(tree.find("a/list/2"), std::nullopt);
    EXPECT_EQ(tree.find("a/list/-1"), std::nullopt);
}

TEST_F(Path, part_that_is_an_int_may_be_a_string_key) {
    qrv::value const tree = read("{\"8080\"= web; 80= plain; list= [a]}");
    EXPECT_EQ(tree.at("8080"), "web");
    EXPECT_EQ(tree.at("80"), "plain");
    EXPECT_EQ(tree.find("\"80\""), std::nullopt);
    EXPECT_EQ(tree.find("list/8080"), std::nullopt);
}

TEST_F(Path, part_may_be_a_key_of_another_type) {
    qrv::value const tree = read("{1.5= a; -3= c}");
    EXPECT_EQ(tree.at("1.5"), "a");
    EXPECT_EQ(tree.at("-3"), "c");
}

TEST_F(Path, with_invalid_syntax_is_an_error) {
    EXPECT_EQ(complaint("a/"), "a/: a key is missing at the end of the path");
    EXPECT_EQ(complaint("a/b c"), "a/b c: a slash is missing before 'c'; keys that are not "
                                  "identifiers go in quotes");
    EXPECT_EQ(complaint("content-type"),
              "content-type: a slash is missing before '-'; keys that are not identifiers go in "
              "quotes");
    for (char const *path : {"a/{", "=", "12abc", "#nosuch", "99999999999", "\xe4", "a/\"open",
                             "a/\xe4", "a/b/", "a/ /b"})
        EXPECT_NE(complaint(path), "nothing") << path;
}

// In the text format, // and /* begin comments, which would cut off the rest of the path.
TEST_F(Path, with_an_empty_part_or_a_comment_is_an_error) {
    for (std::string const path :
         {"a//b", "//", "//a", "a//", "a/b//c", "a // b", "x//a", "x/y//a"})
        EXPECT_EQ(complaint(path),
                  path + ": a key is missing between two slashes; the empty key is \"\"");
    for (std::string const path : {"a/*", "/*", "a/*b*//b", "a /* b */ / b", "x/*"})
        EXPECT_EQ(complaint(path), path + ": keys that are not identifiers go in quotes");
    qrv::value const tree = read("{\"\"= {\"//\"= 1}; a= {\"\"= 2; \"/*\"= 3}}");
    EXPECT_EQ(tree.at("\"\"/\"//\""), 1);
    EXPECT_EQ(tree.at("a/\"\""), 2);
    EXPECT_EQ(tree.at("a/'/*'"), 3);
}

TEST_F(Path, a_faulty_path_changes_nothing) {
    qrv::value v = read("{a= {b= 5}}");
    qrv::value const before = v.clone();
    for (char const *path : {"a//b", "a/*", "a/", "a/b/c d", "x//b", "x/y z", "x/"}) {
        EXPECT_THROW(v.set(path, 1), qrv::path_error) << path;
        EXPECT_THROW(v.erase(path), qrv::path_error) << path;
        EXPECT_THROW(v.get<int>(path), qrv::path_error) << path;
        EXPECT_THROW(v.get_or(path, 1), qrv::path_error) << path;
        EXPECT_THROW(v.find(path), qrv::path_error) << path;
        EXPECT_THROW(v.at(path), qrv::path_error) << path;
    }
    EXPECT_EQ(v, before);
}

TEST_F(Path, the_empty_path_is_the_value_itself) {
    for (char const *path : {"", "/", " "}) {
        qrv::value v = read("{a= 1}");
        qrv::value const same = v;
        EXPECT_TRUE(v.at(path).is_shared_with(v));
        EXPECT_TRUE(v.find(path)->is_shared_with(v));
        EXPECT_EQ((v.get<std::map<std::string, int>>(path)->at("a")), 1);
        EXPECT_EQ(thrown<qrv::path_error>([&] { v.erase(path); }),
                  "a value can't be removed from itself");
        EXPECT_EQ(thrown<qrv::path_error>([&] { v.at("a").set(path, 2); }),
                  "only a variable can be replaced: assign() changes the value itself");
        EXPECT_EQ(v, read("{a= 1}"));
        v["a"].set(path, 3);
        EXPECT_EQ(same, read("{a= 3}"));
        v.set(path, 5);
        EXPECT_EQ(v, 5);
        EXPECT_EQ(same, read("{a= 3}"));
        EXPECT_TRUE(qrv::value().find(path)->is_nil());
    }
}

TEST_F(Path, of_given_keys_quotes_them_as_needed) {
    EXPECT_EQ(qrv::path_of(), "");
    EXPECT_EQ(qrv::path_of("name"), "name");
    EXPECT_EQ(qrv::path_of("hosts", std::string("a/b"), 0, std::string_view("x y")),
              "hosts/\"a/b\"/0/\"x y\"");
    EXPECT_EQ(qrv::path_of(qrv::value("a b"), qrv::value(-3)), "\"a b\"/-3");
    EXPECT_EQ(thrown<std::out_of_range>([] { static_cast<void>(qrv::path_of(1LL << 40)); }),
              "1099511627776 does not fit in an int");
    EXPECT_EQ(thrown<qrv::type_error>(
                  [] { static_cast<void>(qrv::path_of("a", qrv::value(read("[1]")))); }),
              "expected a key, but it is a vector");
    EXPECT_THROW(static_cast<void>(qrv::path_of(qrv::value())), qrv::type_error);
    qrv::value v = qrv::map{};
    using namespace std::string_literals;
    std::vector<std::string> const keys{"",     "/",         "//",     "/*",    "a//b", "\"",
                                        "'",    "\\",        "a\"b\\", "#nil",  "5",    "-1",
                                        "true", "two words", "a\nb",   "tab\t", "\xe4", "\xc3\xa4",
                                        "1.5",  "a=b;",      "{",      "a\0b"s};
    for (std::string const &key : keys) {
        v[key] = key;
        EXPECT_EQ(v.at(qrv::path_of(key)), key) << key;
        EXPECT_EQ(v.paths_of(v[key]), std::vector<std::string>{qrv::path_of(key)});
    }
    qrv::value const zero = std::string("a\0b", 3);
    v.set(zero, 7);
    EXPECT_EQ(v.at(qrv::path_of(zero)), 7);
}

TEST_F(Path, the_path_of_a_number_has_all_its_digits) {
    qrv::value v = qrv::map{};
    qrv::value const key = 0.1234567890123;
    v.set(key, "x");
    EXPECT_EQ(qrv::path_of(key), "0.1234567890123");
    EXPECT_EQ(v.at(qrv::path_of(key)), "x");
}

namespace {

// Draws random paths. Their keys are in the tree or not, and are written in several ways.
class cPaths {
  public:
    explicit cPaths(unsigned seed) : random_(seed) {}

    std::string next() {
        std::string path = below(2) == 0 ? "" : "/";
        int const parts = 1 + below(4);
        for (int i = 0; i < parts; ++i) {
            if (i > 0) path += separators[static_cast<std::size_t>(below(8))];
            path += keys[static_cast<std::size_t>(below(static_cast<int>(keys.size())))];
        }
        return path;
    }

  private:
    int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }

    static constexpr std::array keys{"a",  "b",   "\"a\"", "'b'",   "0",         "1",    "2",
                                     "-1", "0x1", "00",    "1.5",   "x",         "\"\"", "\"x y\"",
                                     "_a", "1u",  "\"0\"", "truth", "\"a\\\"b\""};
    static constexpr std::array separators{"/", "/", "/", "/", "/", " / ", "/ ", " /"};
    std::mt19937 random_;
};

} // namespace

TEST_F(Path, finds_what_getattrp_finds) {
    qrv::value const tree =
        read("{a= {a= [{a= 1; 0= 2}, [3, {b= 4}], 1.5]; b= {0= {a= 5}; -1= 6; 1.5= {x= 7}}; "
             "\"\"= 8; \"x y\"= {_a= 9}; truth= 10}; b= [[1, 2, {a= {b= 11}}], {1= 12}]; "
             "\"a\\\"b\"= {a= 13}; 1= {2= 14}; 0= 15; _a= {a= {a= {a= 16}}}}");
    ASSERT_TRUE(tree.is_map());
    cPaths paths(5);
    int found = 0;
    for (int i = 0; i < 4000; ++i) {
        std::string const path = paths.next();
        cat::CaughtErrors const caught; // paths into scalars cause errors
        objref const theirs = tree.object()->getattrp(path);
        std::optional<qrv::value> const ours = tree.find(path);
        bool const missing = cObj::is_bad(theirs);
        ASSERT_EQ(ours.has_value(), !missing) << path;
        if (missing) continue;
        ASSERT_EQ(ours->object(), theirs) << path;
        ++found;
    }
    EXPECT_GT(found, 300);
    EXPECT_EQ(messages(), "");
}
