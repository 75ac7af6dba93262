// The state that reader and writer share: levels, paths, the table of paths, comments.

#include "qrv/core/cexe.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "text/state/ctext_state.h"

namespace {

class TextState : public QrvTest {};

TEST_F(TextState, levels_change_depth_and_indent) {
    cTextState &state = text_state();
    EXPECT_EQ(state.depth(), -1);
    {
        cWriteLevel const one;
        EXPECT_EQ(state.depth(), 0);
        EXPECT_EQ(state.indent(), 2);
        {
            cWriteLevel const two;
            EXPECT_EQ(state.depth(), 1);
            EXPECT_EQ(state.indent(), 6);
            {
                cWriteLevel const three;
                EXPECT_EQ(state.indent(), 10);
            }
            EXPECT_EQ(state.indent(), 6);
        }
        EXPECT_EQ(state.indent(), 2);
    }
    EXPECT_EQ(state.depth(), -1);
    EXPECT_EQ(state.indent(), 0);
    EXPECT_TRUE(state.idle());
}

TEST_F(TextState, steps_lengthen_and_shorten_the_path) {
    cWriteLevel const level;
    cPathStep const a(cat::of("a b"));
    EXPECT_EQ(text_state().path(), "/\"a b\"");
    {
        cPathStep const b(cat::of(7));
        EXPECT_EQ(text_state().path(), "/\"a b\"/7");
        EXPECT_EQ(text_state().path_keys(), 2u);
    }
    EXPECT_EQ(text_state().path(), "/\"a b\"");
}

TEST_F(TextState, a_lazy_step_creates_its_text_on_request) {
    objref const key = cat::of("a b");
    cPathStep const a(key, cPathStep::on_demand);
    EXPECT_EQ(key->refs(), 2u) << "the step holds the key until it has created its text";
    EXPECT_EQ(text_state().path_keys(), 1u);
    {
        cPathStep const b(cat::of(7), cPathStep::on_demand);
        EXPECT_EQ(text_state().path(), "/\"a b\"/7");
        EXPECT_EQ(key->refs(), 1u);
    }
    EXPECT_EQ(text_state().path(), "/\"a b\"");
}

TEST_F(TextState, settling_creates_the_text_of_all_steps) {
    objref const key = cat::of("a");
    cPathStep const a(key, cPathStep::on_demand);
    text_state().settle();
    *key = *cat::of("changed");
    EXPECT_EQ(text_state().path(), "/a");
}

TEST_F(TextState, a_lazy_step_uses_exact_text_only_if_it_was_active_when_the_step_began) {
    cPathStep const a(cat::of("true"), cPathStep::on_demand);
    cat::ExactText const exact;
    cPathStep const b(cat::of("false"), cPathStep::on_demand);
    EXPECT_EQ(text_state().path(), "/true/\"false\"");
}

// A `write` method of a key type that requests the path.
bool write_the_path(cObj &, objref &) {
    text_state().path();
    return false;
}

TEST_F(TextState, a_key_that_is_written_by_user_code_has_its_text_at_once) {
    cTypeObj type("path_key");
    type.inherit(cat::type_int());
    type.set_tmember("write", make<cExeMember>(write_the_path));
    objref const key = objref::adopt(new cObjD<int>(1, &type));
    objref const first = cat::of("a");
    cPathStep const a(first, cPathStep::on_demand);
    cPathStep const b(key, cPathStep::on_demand);
    EXPECT_EQ(first->refs(), 1u);
    EXPECT_EQ(key->refs(), 1u);
}

TEST_F(TextState, values_are_found_by_path_until_the_outermost_level_ends) {
    objref const value = cat::of(5);
    {
        cWriteLevel const level;
        {
            cPathStep const a(cat::of("a"));
            cPathStep const b(cat::of(0));
            text_state().enter_value(value);
        }
        EXPECT_EQ(text_state().value_at("/a/0"), value);
        EXPECT_EQ(text_state().value_at("/a"), nullptr);
        EXPECT_EQ(text_state().value_at("/a/0/"), nullptr);
        EXPECT_EQ(text_state().value_at("a/0"), nullptr);
        EXPECT_EQ(text_state().value_at(""), nullptr);
        { cWriteLevel const inner; }
        EXPECT_EQ(text_state().value_at("/a/0"), value);
    }
    EXPECT_EQ(text_state().value_at("/a/0"), nullptr);
    EXPECT_EQ(value->refs(), 1u);
}

TEST_F(TextState, an_exception_leaves_the_state_idle) {
    try {
        cWriteLevel const one;
        cPathStep const a(cat::of("a"));
        cWriteLevel const two;
        cReadingKey const key(true);
        cNesting const nesting;
        cTypedNesting const typed;
        text_state().enter_value(cat::of(1));
        throw 1;
    } catch (int) {
    }
    EXPECT_TRUE(text_state().idle());
}

TEST_F(TextState, a_step_outlives_the_clearing_of_the_table) {
    cPathStep const a(cat::of("a"));
    {
        cWriteLevel const level;
        cPathStep const b(cat::of("b"));
        text_state().enter_value(cat::of(1));
    }
    cWriteLevel const level;
    cPathStep const c(cat::of("c"));
    objref const value = cat::of(2);
    text_state().enter_value(value);
    EXPECT_EQ(text_state().value_at("/a/c"), value);
    EXPECT_EQ(text_state().value_at("/a/b"), nullptr);
}

TEST_F(TextState, a_written_path_is_found_only_for_an_object_with_the_same_address_and_id) {
    cWriteLevel const level;
    cPathStep const a(cat::of("a"));
    objref const value = cat::of(1);
    std::string path;
    EXPECT_FALSE(text_state().written_path(value, path));
    text_state().enter_written(value);
    EXPECT_TRUE(text_state().written_path(value, path));
    EXPECT_EQ(path, "/a");
    value->obid(value->obid() + 1000000);
    EXPECT_FALSE(text_state().written_path(value, path))
        << "another id means another object at the same address";
}

TEST_F(TextState, a_trie_distinguishes_paths_as_strings) {
    cPathTrie trie;
    auto const ab = trie.descend(trie.descend(cPathTrie::root, "a"), "b");
    EXPECT_EQ(trie.descend(cPathTrie::root, "a/b"), ab);
    EXPECT_EQ(trie.path(ab), "/a/b");
    EXPECT_EQ(trie.find("/a/b"), ab);
    EXPECT_EQ(trie.find("/a/b/"), cPathTrie::none);
    auto const empty = trie.descend(cPathTrie::root, "");
    EXPECT_EQ(trie.path(empty), "/");
    EXPECT_EQ(trie.find("/"), empty);
    EXPECT_EQ(trie.find("//"), cPathTrie::none);
    for (int i = 0; i < 10000; ++i) trie.descend(ab, std::to_string(i));
    for (int i = 0; i < 10000; ++i) {
        std::string const path = "/a/b/" + std::to_string(i);
        ASSERT_EQ(trie.path(trie.find(path)), path);
    }
    trie.clear();
    EXPECT_TRUE(trie.empty());
    EXPECT_EQ(trie.find("/a"), cPathTrie::none);
}

TEST_F(TextState, a_value_entered_below_a_long_path_is_found) {
    cWriteLevel const level;
    std::vector<std::unique_ptr<cPathStep>> steps;
    for (int i = 0; i < 200; ++i) steps.push_back(std::make_unique<cPathStep>(cat::of("key")));
    objref const value = cat::of(1);
    for (int i = 0; i < 100000; ++i) {
        cPathStep const step(cat::of(i));
        text_state().enter_value(value);
    }
    EXPECT_EQ(text_state().value_at(text_state().path() + "/99999"), value);
    while (!steps.empty()) steps.pop_back();
}

TEST_F(TextState, shown_paths_are_shortened_only_on_request) {
    cPathStep const a(cat::of(std::string(1200, 'a')));
    EXPECT_EQ(text_state().shown_path(false).size(), 1201u);
    EXPECT_EQ(text_state().shown_path(true).size(), 1000u);
    cPathStep const b(cat::of("b"));
    EXPECT_EQ(text_state().shown_path(true).substr(998), "/b");
}

TEST_F(TextState, comments_are_joined_without_one_hiding_another) {
    cTextState &state = text_state();
    state.collect_comment(" // a");
    state.collect_comment(" /* b */");
    state.collect_comment("// c");
    state.collect_comment("\n// d");
    state.collect_comment("\r\n// e");
    EXPECT_EQ(state.com_collected(), " // a\n /* b */// c\n// d\r\n// e");
    state.forget_comments();
    state.collect_comment("/* f */");
    EXPECT_EQ(state.com_collected(), "/* f */");
    state.forget_comments();
}

} // namespace
