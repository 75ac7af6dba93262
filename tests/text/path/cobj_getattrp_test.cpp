// Reading by a path.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tests/support/fixture.h"

#include <string>

namespace {

class GetPath : public QrvTest {
  protected:
    GetPath() {
        EXPECT_EQ(
            cObj::readobj("{ a = { b = 5; 0 = [10; [20; 21]]; \"x y\" = 1}; v = [7; 8] }", tree_),
            0);
    }
    // The int at the path, or "bad", "badfind", "nil".
    std::string at(std::string const &path) {
        objref const value = tree_->getattrp(path);
        if (value == cat::badfind()) return "badfind";
        if (cObj::is_nil(value)) return "nil";
        if (cObj::is_bad(value)) return "bad";
        auto const *number = dynamic_cast<cObjD<int> const *>(value.get());
        return number ? std::to_string(number->val()) : "type " + value->type().name();
    }
    objref tree_;
};

class GetPathEdge : public GetPath {};

std::string bad_entry(std::string const &path, std::string const &entry) {
    return "ERROR in call of getattrp, path '" + path + "', bad entry: " + entry + "\n";
}

} // namespace

TEST_F(GetPathEdge, an_empty_path_is_a_bad_entry) {
    EXPECT_EQ(at(""), "bad");
    EXPECT_EQ(messages(), bad_entry("", ""));
}

TEST_F(GetPathEdge, a_leading_slash_changes_nothing) {
    EXPECT_EQ(tree_->getattrp("/a").get(), tree_->getattrp("a").get());
    EXPECT_EQ(at("/a/b"), "5");
    EXPECT_EQ(messages(), "");
}

TEST_F(GetPathEdge, an_integer_key_indexes_a_vector) {
    EXPECT_EQ(at("v/0"), "7");
    EXPECT_EQ(at("v/1"), "8");
    EXPECT_EQ(at("v/2"), "badfind");
    EXPECT_EQ(at("a/0/1/0"), "20");
}

TEST_F(GetPathEdge, a_missing_level_is_not_found_and_not_reported) {
    EXPECT_EQ(at("nothing/b"), "badfind");
    EXPECT_EQ(at("nothing/b/c/d"), "badfind");
    EXPECT_EQ(at("a/nothing/c"), "badfind");
    EXPECT_EQ(messages(), "");
}

TEST_F(GetPathEdge, the_last_key_is_read_by_getattr_which_uses_specifications) {
    objref const holder = make<cMapObj>();
    auto &map = dynamic_cast<cMapObj &>(*holder);
    map.set_attspec("n", specref::adopt(new cAttspec(make<cObjD<int>>(42), 0)));
    tree_->setattr(own_key("typed"), holder);
    EXPECT_EQ(at("typed/n"), "42");
    map.datamap().mapitem("n", objref());
    EXPECT_EQ(map.datamap().getitem("n"), cat::badfind());
    EXPECT_EQ(at("typed/n"), "42");
    EXPECT_EQ(tree_->getattrp("typed/n").get(), map.getattr(own_key("n")).get());
    EXPECT_EQ(map.getattrp("n").get(), map.getattr(own_key("n")).get());
    EXPECT_EQ(messages(), "");
}

TEST_F(GetPath, a_final_slash_is_a_bad_entry_without_text) {
    EXPECT_EQ(at("a/"), "bad");
    EXPECT_EQ(messages(), bad_entry("a/", ""));
    EXPECT_EQ(at("nothing/"), "badfind");
    EXPECT_EQ(messages(), "");
}

TEST_F(GetPath, two_separate_final_slashes_have_their_own_message) {
    EXPECT_EQ(at("v/ /"), "bad");
    EXPECT_EQ(messages(), "ERROR in call of getattrp, path 'v/ /'  Wrong final / \n");
    EXPECT_EQ(at("a/ /b"), "bad");
    EXPECT_EQ(messages(), bad_entry("a/ /b", "/"));
}

TEST_F(GetPath, two_slashes_together_begin_a_comment) {
    EXPECT_EQ(tree_->getattrp("a//").get(), tree_->getattrp("a").get());
    EXPECT_EQ(at("a/b // the rest / is / comment"), "5");
    EXPECT_EQ(at("a/*x*//b"), "5");
    EXPECT_EQ(messages(), "");
}

TEST_F(GetPath, any_token_separates_keys) {
    EXPECT_EQ(at("a v b"), "5");
    EXPECT_EQ(at("a b"), "bad"); // nothing follows the separator
    EXPECT_EQ(messages(), bad_entry("a b", ""));
    EXPECT_EQ(at("a ; b"), "5");
    EXPECT_EQ(at("a = b"), "5");
    EXPECT_EQ(at("a . 0 , 1 : 1"), "21");
}

TEST_F(GetPath, keys_follow_the_rules_of_files) {
    EXPECT_EQ(at("\"a\"/'b'"), "5");
    EXPECT_EQ(at("a/\"x y\""), "1");
    EXPECT_EQ(at("a/0x0/00"), "10");
    EXPECT_EQ(messages(), "");
}

TEST_F(GetPath, a_token_that_is_not_a_key_is_a_bad_entry) {
    for (std::string const entry :
         {"=", ";", "{", "12abc", "\xe4", "true", "#nosuch", "99999999999"}) {
        EXPECT_EQ(at(entry), "bad") << entry;
        EXPECT_EQ(messages(), bad_entry(entry, entry == "\xe4" ? "" : entry));
        EXPECT_EQ(at("a/" + entry), "bad") << entry;
        EXPECT_EQ(messages(), bad_entry("a/" + entry, entry == "\xe4" ? "" : entry));
    }
}

TEST_F(GetPath, an_object_without_attributes_finds_nothing) {
    EXPECT_EQ(cat::nil()->getattrp("a"), cat::badfind());
    EXPECT_EQ(messages(), "");
    cErrorLog errors;
    EXPECT_EQ(at("a/b/c"), "bad");
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(GetPath, messages_go_to_an_active_report) {
    cat::ReadReport report;
    EXPECT_EQ(at("a/ /"), "bad");
    ASSERT_EQ(report.count(), 1u);
    EXPECT_EQ(report.entries()[0].text, "ERROR in call of getattrp, path 'a/ /'  Wrong final / ");
    EXPECT_EQ(messages(), "");
}

TEST_F(GetPath, a_wrong_path_prints_a_line_without_an_error_code) {
    cErrorLog errors;
    EXPECT_EQ(at("a/ /"), "bad");
    EXPECT_EQ(at("a/{"), "bad");
    EXPECT_EQ(errors.count(), 0u);
    EXPECT_EQ(messages(),
              "ERROR in call of getattrp, path 'a/ /'  Wrong final / \n" + bad_entry("a/{", "{"));
}

TEST_F(GetPath, path_and_keys_are_written_to_the_trace_channel) {
    cSetTracing("catlex");
    EXPECT_EQ(at("a/b"), "5");
    cSetTracing("");
    EXPECT_EQ(messages(), "a/b\na\nb\n");
}

TEST_F(GetPath, a_path_of_a_hundred_thousand_keys_is_followed_once) {
    std::string path = "a";
    for (int i = 0; i < 100000; ++i) path += "/a";
    EXPECT_EQ(at(path), "badfind");
    objref self;
    ASSERT_EQ(cObj::readobj("{}", self), 0);
    dynamic_cast<cMapObj &>(*self).datamap().mapitem("a", self);
    EXPECT_EQ(self->getattrp(path).get(), self.get());
    dynamic_cast<cMapObj &>(*self).clear();
}
