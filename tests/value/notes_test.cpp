// Comments, layout and paths of values.

#include "qrv/containers/cmapobj.h"
#include "tests/value/value_support.h"

using namespace value_test;

namespace {
class Notes : public Quiet {};
} // namespace

TEST_F(Notes, comment_is_written_with_its_value) {
    qrv::value v = read("{\na= 5;\nb= [1];\n}");
    v.set_comment("the whole");
    v.at("a").set_comment("baud rate");
    v.at("b").set_comment("first\n  second\n");
    EXPECT_EQ(text_of(v),
              "{ // the whole\n  a= 5; // baud rate\n  b= [1, ]; // first\n// second\n}");
    EXPECT_EQ(v.comment(), "the whole");
    EXPECT_EQ(v.at("a").comment(), "baud rate");
    EXPECT_EQ(v.at("b").comment(), "first\nsecond");
    v.at("a").set_comment("");
    EXPECT_EQ(v.at("a").comment(), "");
    EXPECT_EQ(v.at("a").object()->has_ommap(), false);
}

TEST_F(Notes, comment_is_without_its_marks) {
    qrv::value const v = 5;
    for (auto const &[raw, text] : {std::pair{" // one", "one"},
                                    {"\n /* one\n two */ // three", "one\ntwo\nthree"},
                                    {"  ", ""},
                                    {"/**/", ""},
                                    {"// a // b\n\n//\n// c", "a // b\n\nc"},
                                    {"/* open", "open"},
                                    {"/", ""}}) {
        v.object()->set_comment(raw, true);
        EXPECT_EQ(v.comment(), text) << raw;
    }
    EXPECT_EQ(qrv::value().comment(), "");
}

TEST_F(Notes, comment_of_nil_is_refused) {
    qrv::value nil;
    EXPECT_EQ(thrown<qrv::type_error>([&] { nil.set_comment("x"); }),
              "expected a value that can have a comment, but it is nil");
}

TEST_F(Notes, comment_that_was_read_can_be_set_unchanged) {
    qrv::value v = 5;
    v.set_comment("// marked");
    std::string const once = v.comment();
    v.set_comment(once);
    EXPECT_EQ(v.comment(), once);
}

TEST_F(Notes, one_line_reads_and_sets_the_layout_of_a_container) {
    qrv::value v = read("{a= {x= 1}; b= [1]}");
    EXPECT_TRUE(v.one_line());
    v.one_line(false);
    v.at("a").one_line(true);
    v.at("b").one_line(false);
    EXPECT_EQ(text_of(v), "{\n  a= {x= 1; };\n  b= [\n      1,\n  ]; \n}");
    EXPECT_FALSE(qrv::value(5).one_line());
    EXPECT_THROW(qrv::value(5).one_line(true), qrv::type_error);
}

TEST_F(Notes, paths_of_an_object_are_those_of_all_its_occurrences) {
    qrv::value part = read("{x= 1}");
    qrv::value v = read("{list= []; 3= {\"two words\"= 2}}");
    v["b c"] = part;
    v["list"].push_back(part);
    v["list"].push_back(5);
    EXPECT_EQ(v.paths_of(part), (std::vector<std::string>{"list/0", "\"b c\""}));
    EXPECT_EQ(v.paths_of(part.at("x")),
              std::vector<std::string>{"list/0/x"}); // `part` is searched once
    EXPECT_EQ(v.paths_of(v.at("3/\"two words\"")), std::vector<std::string>{"3/\"two words\""});
    EXPECT_TRUE(v.paths_of(5).empty());
    EXPECT_TRUE(v.paths_of(nullptr).empty());
    EXPECT_TRUE(qrv::value(5).paths_of(5).empty());
    for (std::string const &path : v.paths_of(part)) EXPECT_TRUE(v.at(path).is_shared_with(part));
}

TEST_F(Notes, paths_of_a_value_that_contains_itself_are_finite) {
    objref const map = make<cMapObj>();
    auto &hash = dynamic_cast<cMapObj &>(*map).datamap();
    hash.mapitem("self", map);
    EXPECT_EQ(qrv::value(map).paths_of(map), std::vector<std::string>{"self"});
    hash.clear();
}
