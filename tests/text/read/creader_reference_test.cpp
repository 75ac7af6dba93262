// Back references, and what merging and assigning in place may do with them.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"

using reader_test::Reading;

namespace {

class ReaderReference : public QrvTest {};

TEST_F(ReaderReference, every_enclosing_container_is_part_of_the_path) {
    Reading r("{ a = [1; {b = <2; [3]>}]; x = #cRef(a/1/b/1/0); y = #cRef(/a/1/b/0) }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.at("x"), r.at("a/1/b/1/0"));
    EXPECT_EQ(r.text_at("y"), "2");
}

TEST_F(ReaderReference, blanks_and_comments_in_a_path_are_ignored) {
    EXPECT_EQ(Reading("{ a = {b = 5}; c = #cRef( / a /**/ / b ) }").text_at("c"), "5");
}

TEST_F(ReaderReference, keys_in_a_path_are_as_written) {
    Reading r("{ 'a b' = 1; \"c/d\" = {'e\"' = 2}; -3 = 3; x = #cRef(\"a b\"); "
              "y = #cRef(/\"c/d\"/\"e\\\"\"); z = #cRef(-3) }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.text_at("x"), "1");
    EXPECT_EQ(r.text_at("y"), "2");
    EXPECT_EQ(r.text_at("z"), "3");
}

TEST_F(ReaderReference, both_forms_of_a_key_find_the_value) {
    Reading r("{ 0.1234567 = {a = 1}; p = #cRef(/0.123457/a); e = #cRef(/0.1234567/a) }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.at("p"), r.at("e"));
    Reading s("{ 'true' = 1; p = #cRef(/true); e = #cRef(/\"true\") }");
    EXPECT_EQ(s.log, "");
    EXPECT_EQ(s.at("p"), s.at("e"));
}

TEST_F(ReaderReference, a_plain_path_never_replaces_the_value_at_that_path) {
    Reading r("{ true = 1; 'true' = 2; b = #cRef(/true); s = #cRef(/\"true\") }");
    EXPECT_EQ(r.log, "0x40000001 Line 1: Key type 'bool' is not definedKey value: true\n");
    EXPECT_EQ(r.text_at("b"), "2");
    EXPECT_EQ(r.text_at("s"), "2");
    Reading d("{ 0.5 = 1; 0.50000001 = 2; a = #cRef(/0.500000); b = #cRef(/0.50000001) }");
    EXPECT_EQ(d.log, "");
    EXPECT_EQ(d.text_at("a"), "1");
    EXPECT_EQ(d.text_at("b"), "2");
    Reading reversed("{ 0.50000001 = 2; 0.5 = 1; a = #cRef(/0.500000); b = #cRef(/0.50000001) }");
    EXPECT_EQ(reversed.text_at("a"), "1");
    EXPECT_EQ(reversed.text_at("b"), "2");
}

TEST_F(ReaderReference, a_reference_to_a_failed_value_is_bad) {
    Reading r("{ a = nosuch(1); b = #cRef(/a); c = #badfind; d = #cRef(/c) }");
    EXPECT_EQ(r.log, "0x40000005 Line 1: ( /a ): Value with unknown type='nosuch\n"
                     "0x40000003 Line 1: ( /b ): Bad path of #cRef(/a)\n"
                     "0x40000003 Line 1: ( /d ): Bad path of #cRef(/c)\n");
}

TEST_F(ReaderReference, a_failed_reference_is_reported_as_written) {
    EXPECT_EQ(Reading("{ b = #cRef(x/y) }").log, "0x40000003 Line 1: ( /b ): Error in #cRef(x/y): "
                                                 "Referenced value is not defined before.\n");
    EXPECT_EQ(Reading("{ b = #cRef( / x / y ) }").log,
              "0x40000003 Line 1: ( /b ): Error in #cRef(/x/y): "
              "Referenced value is not defined before.\n");
}

TEST_F(ReaderReference, a_reference_without_its_opening_bracket_is_reported) {
    Reading r("{ a = #cRef x; b = [#cRef]; c = 3 }");
    EXPECT_EQ(r.log, "0x40000002 Line 1: ( /a ): After #cRef delimiter '(' is missed\n"
                     "0x40000002 Line 1: ( /b/0 ): After #cRef delimiter '(' is missed\n"
                     "0x40000001 Line 1: ( /b ): Failed to read container, type vector\n");
    EXPECT_EQ(r.text_at("c"), "3");
}

TEST_F(ReaderReference, a_reference_cut_off_by_the_end_of_input_is_resolved_as_far_as_it_was_read) {
    Reading r("{ a = 5; b = #cRef(/a");
    EXPECT_EQ(r.text_at("b"), "5");
    EXPECT_EQ(r.log, "0x40000001 Line 1: Map is not closed by '}'\n");
    Reading none("{ a = 5; b = #cRef(");
    EXPECT_EQ(none.log, "0x40000003 Line 1: ( /b ): Error in #cRef(): "
                        "Referenced value is not defined before.\n"
                        "0x40000001 Line 1: Map is not closed by '}'\n");
}

TEST_F(ReaderReference, unknown_constants_are_reported) {
    Reading r("{ a = #nosuch; b = 2 }");
    EXPECT_EQ(r.log, "0x40000004 Line 1: ( /a ): Unknown #-value (no defined const): #nosuch\n");
    EXPECT_EQ(r.text_at("b"), "2");
}

TEST_F(ReaderReference, a_reference_to_a_repeated_key_finds_the_object_that_is_in_the_tree) {
    Reading r("{ a = 1; a = 2; b = #cRef(/a); m = {x=1}; m = {y=2}; n = #cRef(/m) }");
    EXPECT_EQ(r.at("a"), r.at("b"));
    EXPECT_EQ(r.at("m"), r.at("n"));
}

// --- a repeated key whose value is refused ---

TEST_F(ReaderReference, a_refused_repeat_leaves_the_first_value_reachable) {
    Reading r("{ a = 1; a = #bad; b = #cRef(a); m = {x = 1}; m = #bad; n = #cRef(/m/x) }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(messages(), "Cannot insert key =a\nCannot insert key =m\n");
    EXPECT_EQ(r.at("b"), r.at("a"));
    EXPECT_EQ(r.text_at("b"), "1");
    EXPECT_EQ(r.text_at("n"), "1");
}

TEST_F(ReaderReference, a_reference_to_a_refused_value_is_bad_and_a_later_value_is_reachable) {
    Reading r("{ a = #bad; b = #cRef(a); a = 1; c = #cRef(a) }");
    EXPECT_EQ(r.log, "0x40000003 Line 1: ( /b ): Bad path of #cRef(a)\n");
    EXPECT_EQ(r.text_at("c"), "1");
}

TEST_F(ReaderReference, a_reference_to_a_repeated_key_with_an_error_is_bad) {
    Reading r("{ a = 1; a = nosuch(1); b = #cRef(a) }");
    EXPECT_EQ(r.log, "0x40000005 Line 1: ( /a ): Value with unknown type='nosuch\n"
                     "0x40000003 Line 1: ( /b ): Bad path of #cRef(a)\n");
    EXPECT_EQ(r.text_at("a"), "1");
}

TEST_F(ReaderReference, a_reference_to_a_removed_key_is_bad) {
    Reading r("{ a = 1; a = #badfind; b = #cRef(a) }");
    EXPECT_EQ(r.log, "0x40000003 Line 1: ( /b ): Bad path of #cRef(a)\n");
    EXPECT_EQ(dynamic_cast<cMapObj &>(*r.value).size(), 0);
}

TEST_F(ReaderReference, a_refused_assignment_in_place_leaves_the_first_value_reachable) {
    cErrorLog errors;
    Reading r("{ a = #true; a = #false; b = #cRef(a) }");
    EXPECT_EQ(errors.text(),
              "0x41400000 Object is const. Method 'assign' called from type: bool\n");
    EXPECT_EQ(r.at("b"), cat::btrue());
    cat::errhandler().throw_mask(0x40000000);
    Reading replaced("{ a = #true; a = #false; b = #cRef(a) }");
    EXPECT_EQ(replaced.at("a"), cat::bfalse()) << "an assignment that throws replaces the value";
    EXPECT_EQ(replaced.at("b"), cat::bfalse());
}

TEST_F(ReaderReference, an_executable_that_the_map_refuses_leaves_the_first_value_reachable) {
    cErrorLog errors;
    objref const exe = make<cExeMember>(cat::read_voiddata);
    cat::constmap().datamap().mapitem("rr_exe", exe);
    Reading r("{ newobj = 1; newobj = #rr_exe; b = #cRef(newobj); free = #rr_exe; c = #cRef(free); "
              "create = #rr_exe; d = #cRef(create) }");
    EXPECT_EQ(r.log, "0x40000003 Line 1: ( /d ): Bad path of #cRef(create)\n");
    EXPECT_EQ(errors.text(),
              "0x50000000 Standard method 'newobj'  has bad prototype in object type: map\n"
              "0x50000000 Standard method 'create'  has bad prototype in object type: map\n");
    EXPECT_EQ(r.at("b"), r.at("newobj"));
    EXPECT_EQ(r.text_at("b"), "1");
    EXPECT_EQ(r.at("c"), exe);
}

TEST_F(ReaderReference, a_refused_merge_leaves_the_first_value_reachable) {
    cErrorLog errors;
    cRef<cMapObj> const fixed = make<cMapObj>();
    fixed->datamap().mapitem("x", cat::of(1));
    fixed->setflags(of_const_keys);
    cat::constmap().datamap().mapitem("rr_fixed", fixed);
    Reading r("{ m = #rr_fixed; m = {z = 2}; n = #cRef(m) }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(
        errors.text(),
        "0x40020000 Setattr in object type 'map', key 'z':   Flag of const key set offended\n");
    EXPECT_EQ(r.at("n"), fixed);
    EXPECT_EQ(fixed->size(), 1);
    Reading cycle("{ m = {}; m = {x = #cRef(m)}; n = #cRef(m) }");
    EXPECT_EQ(cycle.log, "0x40020000 Line 1: Setattr in object type 'map', key 'x':  Trial to "
                         "establish cRef in cycle\n");
    EXPECT_EQ(cycle.at("n"), cycle.at("m"));
}

TEST_F(ReaderReference, a_value_refused_by_a_set_or_a_vector_is_bad) {
    Reading r("{ s = <1; #bad; 2; #cRef(/s/1); #cRef(/s/2)> }");
    EXPECT_EQ(r.log, "0x40000003 Line 1: ( /s/3 ): Bad path of #cRef(/s/1)\n");
    EXPECT_EQ(r.text_at("s"), "<1, 2, >");
    Reading v("{ v = [1; #bad; #cRef(/v/1)] }");
    EXPECT_EQ(v.log, "0x40000003 Line 1: ( /v/2 ): Bad path of #cRef(/v/1)\n"
                     "0x40000001 Line 1: ( /v ): Failed to read container, type vector\n");
}

TEST_F(ReaderReference, an_open_container_is_not_found) {
    Reading r("{ m = { x = #cRef(/m) } }");
    EXPECT_EQ(r.log, "0x40000003 Line 1: ( /m/x ): Error in #cRef(/m): "
                     "Referenced value is not defined before.\n");
}

TEST_F(ReaderReference, a_map_without_a_key_adds_no_key_to_paths) {
    Reading r("{ { x = 1 }; a = #cRef(/x); b = #cRef(/0) }");
    EXPECT_EQ(r.text_at("a"), "1");
    EXPECT_NE(r.log.find("Error in #cRef(/0)"), std::string::npos);
}

// --- no text creates a value that contains itself ---

TEST_F(ReaderReference, no_set_vector_or_map_contains_itself) {
    for (char const *const text :
         {"{s=<>; s=<#cRef(/s)>}", "{v=[]; v=[#cRef(/v)]}", "{m={}; m={x=#cRef(/m)}}"}) {
        Reading r(text);
        EXPECT_NE(r.log.find("0x40020000 Line 1: Setattr in object type '"), std::string::npos)
            << text << r.log;
        EXPECT_NE(r.log.find("':  Trial to establish cRef in cycle\n"), std::string::npos) << text;
        EXPECT_EQ(r.scan.errcount(), 1u);
        EXPECT_EQ(r.code, 0);
    }
    EXPECT_EQ(Reading("{m={}; m={x=#cRef(/m)}}").log,
              "0x40020000 Line 1: Setattr in object type 'map', key 'x':  Trial to establish "
              "cRef in cycle\n");
}

TEST_F(ReaderReference, no_container_contains_itself_two_levels_below) {
    for (char const *const text :
         {"{m={a={}}; m={a={x=#cRef(/m)}}; z=1}",
          "{m={a={}}; n={b=#cRef(/m)}; m={a=#cRef(/n)}; z=1}", "{v=[[]]; v=[[#cRef(/v)]]; z=1}",
          "{m={a=[]}; m={a=[{x=#cRef(/m)}]}; z=1}"}) {
        Reading r(text);
        EXPECT_EQ(r.text_at("z"), "1") << text;
        EXPECT_FALSE(r.value->is_owner_of(*r.value)) << text;
    }
}

// --- no text merges without end ---

class ReaderBudget : public QrvTest {
  protected:
    static size_t count(std::string const &text, std::string const &what) {
        size_t n = 0;
        for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
            ++n;
        return n;
    }
};

TEST_F(ReaderBudget, a_vector_is_not_doubled_without_end) {
    std::string text = "{ m = { v = [1; 2] };\n";
    for (int i = 0; i < 60; ++i) text += "m = { v = #cRef(/m/v) };\n";
    text += "z = 1 }";
    Reading r(text);
    EXPECT_GT(count(r.log, ": Too much merged, path : /m\n"), 10u);
    EXPECT_EQ(r.text_at("z"), "1");
    EXPECT_EQ(r.code, 0);
}

TEST_F(ReaderBudget, five_thousand_statements_of_each_kind_are_bounded) {
    std::string large = "a = {";
    for (int i = 0; i < 2000; ++i) large += "k" + std::to_string(i) + "=" + std::to_string(i) + ";";
    large += "};\n";
    for (std::string const &statement :
         {std::string("a = #cRef(/a);\n"), std::string("b = { x = #cRef(/a) };\n"),
          std::string("c = { v = #cRef(/c/v) };\n")}) {
        std::string text = "{ c = { v = [1; 2; 3] };\n" + large;
        for (int i = 0; i < 5000; ++i) text += statement;
        Reading r(text + "z = 1 }");
        EXPECT_GT(count(r.log, ": Too much merged, path : /"), 100u) << statement;
        EXPECT_EQ(r.text_at("z"), "1");
    }
}

TEST_F(ReaderBudget, ordinary_merges_stay_within_the_budget_of_their_text) {
    std::string text = "{";
    for (int i = 0; i < 40000; ++i) text += "m = { k" + std::to_string(i % 100) + " = 1; };";
    Reading r(text + "}");
    EXPECT_EQ(r.log, "");
}

TEST_F(ReaderBudget, fifty_thousand_keys_can_be_merged_with_nothing_a_hundred_thousand_times) {
    std::string text = "{ a = {";
    for (int i = 0; i < 50000; ++i) text += "k" + std::to_string(i) + "=1;";
    text += "};";
    for (int i = 0; i < 100000; ++i) text += "a={};";
    Reading r(text + "z = 1 }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.text_at("z"), "1");
}

TEST_F(ReaderBudget, values_shared_on_many_levels_can_be_compared_in_a_set) {
    std::string text = "{ ";
    for (char const *name : {"a", "b"}) {
        text += std::string(name) + "0 = [1];";
        for (int i = 1; i < 40; ++i) {
            std::string const below = std::string(name) + std::to_string(i - 1);
            text += std::string(name) + std::to_string(i) + " = [#cRef(/" + below + "); #cRef(/" +
                    below + ")];";
        }
    }
    Reading r(text + " s = <#cRef(/a39); #cRef(/b39)> }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(dynamic_cast<cMapObj &>(*r.at("s")).size(), 1);
}

} // namespace
