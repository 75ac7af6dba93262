// The values read from text: values, containers, keys, typed values, declared types.

#include "qrv/containers/cvectorobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"

using reader_test::Reading;

namespace {

class ReaderEdge : public QrvTest {};
class Reader : public QrvTest {};

TEST_F(ReaderEdge, empty_input_returns_minus_1_and_leaves_the_result) {
    for (char const *text : {"", "  \n ", "// only\n/* comments */"}) {
        Reading r(text, false);
        objref const before = r.value = cat::of(5);
        EXPECT_EQ(r.next(), -1);
        EXPECT_EQ(r.delim, 0);
        EXPECT_EQ(r.value, before);
        EXPECT_EQ(r.log, "");
    }
}

TEST_F(ReaderEdge, the_last_separator_may_be_missing) {
    for (char const *text : {"{ a = 1 }", "{ a = 1; }", "{ a = 1, }", "{ a = 1;; }"}) {
        Reading r(text);
        EXPECT_EQ(r.text(), "{a= 1; }") << text;
        EXPECT_EQ(r.code, 0);
        EXPECT_EQ(r.scan.errcount(), 0u) << text;
        EXPECT_EQ(r.log, "");
    }
}

TEST_F(ReaderEdge, a_third_separator_in_a_row_is_unnecessary) {
    Reading r("{ a = 1;;; }");
    EXPECT_EQ(r.text(), "{a= 1; }");
    EXPECT_EQ(r.log, "0x40000007 Line 1: Unnecessary separator: ;\n");
    EXPECT_EQ(r.scan.errcount(), 1u);
}

TEST_F(ReaderEdge, a_missing_value_is_reported_and_its_key_stores_no_value) {
    Reading r("{ a = }");
    EXPECT_EQ(r.log, "0x40000001 Line 1: Pattern 'key =value' is missed in path: /a\n");
    EXPECT_EQ(r.text(), "{\n}");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(messages(), "Line 1: Pattern 'key =value' is missed in path: /a\n"
                          "Cannot insert key =a\n");
}

TEST_F(ReaderEdge, a_key_without_a_value_is_an_error) {
    Reading r("{ a }");
    EXPECT_EQ(r.log, "0x40000001 Line 1: Pattern 'key =' is missed \n");
    EXPECT_EQ(r.text(), "{\n}");
    EXPECT_EQ(messages(), "Line 1: Pattern 'key =' is missed \nCannot insert key =0\n");
}

TEST_F(ReaderEdge, a_second_equals_sign_is_misplaced) {
    Reading r("{ a = 1 = 2 }");
    EXPECT_EQ(r.log, "0x40000001 Line 1: Wrong placed '=', path : /a\n"
                     "0x40000001 Line 1: Pattern 'key =' is missed \n");
    EXPECT_EQ(r.text_at("a"), "1");
}

TEST_F(ReaderEdge, items_without_a_delimiter_are_two_items_and_an_error) {
    Reading r("[1 2]");
    EXPECT_EQ(r.log, "0x40000002 Line 1: ( /0 ): Missing delimiter after value: 1\n");
    EXPECT_EQ(r.text(), "[1, 2, ]");
}

TEST_F(ReaderEdge, a_vector_closed_by_another_bracket_is_reported) {
    Reading r("[1; 2>");
    EXPECT_EQ(r.log, "0x40000001 Line 1: Vector is not closed by ']'\n");
    EXPECT_EQ(r.text(), "[1, 2, ]");
    EXPECT_EQ(r.code, 0);
}

TEST_F(ReaderEdge, repeated_keys_merge_maps_and_overwrite_values) {
    EXPECT_EQ(reader_test::read_back("{ a = {x=1;}; a = {y=2;}; }"), "{a= {x= 1; y= 2; }; }");
    EXPECT_EQ(reader_test::read_back("{ a = 1; a = 2; }"), "{a= 2; }");
    EXPECT_EQ(reader_test::read_back("{ a = 1; a = two; }"), "{a= two; }");
    EXPECT_EQ(reader_test::read_back("{ a = {x=1}; a = 5; }"), "{a= 5; }");
    EXPECT_EQ(reader_test::read_back("{ a = <1;2>; a = <2;3>; }"), "{a= <1, 2, 3, >; }");
    EXPECT_EQ(reader_test::read_back("{ a = [1;2;3]; a = [4]; }"), "{a= [4, ]; }");
}

TEST_F(ReaderEdge, a_number_that_runs_into_letters_is_a_string) {
    Reading r("{ 12abc = 1 }");
    EXPECT_EQ(r.log, "0x40000002 Line 1: Bad input: 12abc  String is assumed.\n");
    EXPECT_EQ(r.text(), "{\"12abc\"= 1; }");
}

TEST_F(ReaderEdge, a_set_keeps_the_first_of_equal_values) {
    EXPECT_EQ(reader_test::read_back("<1; 1; 2>"), "<1, 2, >");
    EXPECT_EQ(
        reader_test::read_back("<a; 1; 'a'; true; 1.5; true; 1.5; {x=1}; {x=1}; [1]; [1]; []>"),
        "<a, 1, true, 1.50000, {x= 1; }, [1, ], [], >");
}

TEST_F(ReaderEdge, a_reference_is_the_identical_object) {
    Reading r("{ a = {b = 5}; c = #cRef(a/b); d = #cRef(/a/b) }");
    EXPECT_EQ(r.log, "");
    objref const b = r.at("a/b");
    EXPECT_EQ(r.at("c"), b);
    EXPECT_EQ(r.at("d"), b);
    EXPECT_TRUE(b->assign(*cat::of(6)));
    EXPECT_EQ(r.text_at("c"), "6");
}

TEST_F(ReaderEdge, a_reference_to_a_later_value_fails) {
    Reading r("{ a = #cRef(/b); b = 1 }");
    EXPECT_EQ(r.log, "0x40000003 Line 1: ( /a ): Error in #cRef(/b): "
                     "Referenced value is not defined before.\n");
    EXPECT_EQ(r.text(), "{\n  b= 1;\n}") << "a failed container keeps no layout";
}

TEST_F(ReaderEdge, maps_without_keys_get_int_keys) {
    EXPECT_EQ(reader_test::read_back("{ {x=1;} {y=2;} }"), "{0= {x= 1; }; 1= {y= 2; }; }");
}

TEST_F(ReaderEdge, a_value_of_unknown_type_is_skipped_completely) {
    Reading r("{ a = nosuch(1 (2; \")\") [ } ); b = 2 }");
    EXPECT_EQ(r.log, "0x40000005 Line 1: ( /a ): Value with unknown type='nosuch\n");
    EXPECT_EQ(r.text(), "{\n  b= 2;\n}");
    EXPECT_EQ(reader_test::read_back("{ a = nosuch{x={y=1}}; b = 2 }"), "{\n  b= 2;\n}");
    EXPECT_EQ(reader_test::read_back("{ a = nosuch[1;[2]] b = 2 }"), "{\n  b= 2;\n}");
    EXPECT_EQ(reader_test::read_back("{ a = nosuch<1;<2>> b = 2 }"), "{\n  b= 2;\n}");
}

// --- values ---

TEST_F(Reader, reads_one_value_of_each_kind) {
    for (auto const &[text, expected] : std::vector<std::pair<char const *, char const *>>{
             {"5", "5"},
             {"-5u", "-5"},
             {"0x10", "16"},
             {"1.5", "1.50000"},
             {"1.5f", "1.50000f"},
             {"true", "true"},
             {"'a b'", "\"a b\""},
             {"name", "name"},
             {"#nil", "#nil"},
             {"#true", "#true"},
             {"#REQUIRED", "#REQUIRED"},
             {"{}", "{}"},
             {"[]", "[]"},
             {"<>", "<>"},
             {"{a={b=[<1>]}}", "{a= {b= [<1, >, ]; }; }"},
             {"int(5)", "5"},
             {"double(5)", "5.00000"},
             {"string(abc)", "abc"},
             {"bool(true)", "true"}}) {
        Reading r(text);
        EXPECT_EQ(r.code, 0) << text;
        EXPECT_EQ(r.text(), expected) << text;
        EXPECT_EQ(r.log, "") << text;
    }
}

TEST_F(Reader, delim_returns_the_token_that_ended_the_value) {
    for (auto const &[text, delim] :
         std::vector<std::pair<char const *, int>>{{"5", 0},
                                                   {"5;", ';'},
                                                   {"5,", ','},
                                                   {"5=", '='},
                                                   {"5}", '}'},
                                                   {"5]", ']'},
                                                   {"5>", '>'},
                                                   {"5 6", tkInt},
                                                   {"a;", ';'},
                                                   {"a b", tkIdent},
                                                   {"#nil;", tkConst},
                                                   {"{};", '{'},
                                                   {"[];", '['},
                                                   {"<>;", '<'},
                                                   {"int(5);", ')'},
                                                   {"string{a};", ')'},
                                                   {"string[a];", ')'},
                                                   {"string<a>;", ')'},
                                                   {"nosuch{a};", ')'},
                                                   {"nosuch(a", 0},
                                                   {"int(5", 0},
                                                   {"}", '}'},
                                                   {"]", ']'},
                                                   {">", '>'},
                                                   {"#cRef(a", 0},
                                                   {"#cRef(a)", ')'},
                                                   {"#cRef];", ']'},
                                                   {"#cRef x y, z", ','}}) {
        Reading r(text);
        EXPECT_EQ(r.delim, delim) << text;
    }
}

TEST_F(Reader, reading_continues_after_each_value) {
    Reading r("1; two, 'three' {four=4} 5.");
    std::string all = r.text();
    while (r.next() == 0) all += "|" + r.text();
    EXPECT_EQ(all, "1|two|three|{four= 4; }|5.00000");
    EXPECT_EQ(r.log, "0x40000002 Line 1: : Missing delimiter after value: three\n");
}

TEST_F(Reader, blanks_and_comments_may_be_between_any_two_tokens) {
    EXPECT_EQ(reader_test::read_back("/**/{/**/a/**/=/**/int/**/(/**/5/**/)/**/;// x\n}"),
              "{\n  a= 5;\n}");
}

TEST_F(Reader, a_comment_in_a_typed_value_joins_the_text_around_it) {
    EXPECT_EQ(reader_test::read_back("int(1/**/2)"), "12");
    EXPECT_EQ(reader_test::read_back("string(a /**/)"), "a");
}

TEST_F(Reader, the_first_separator_before_a_value_is_not_reported) {
    Reading r("{ a = ; b = 1 }"); // so b is the value of a
    EXPECT_EQ(r.log, "0x40000001 Line 1: Wrong placed '=', path : /a\n"
                     "0x40000001 Line 1: Pattern 'key =' is missed \n");
    EXPECT_EQ(r.text_at("a"), "b");
}

TEST_F(Reader, a_reported_token_starts_the_row_of_separators_again) {
    EXPECT_EQ(Reading(";;= ; 5").log, "0x40000007 Line 1: Unnecessary separator: ;\n"
                                      "0x40000001 Line 1: Wrong placed '=', path : \n");
    EXPECT_EQ(Reading("; ) ; 5").log, "0x40000002 Line 1: Unexpected token ')\n");
}

TEST_F(Reader, unexpected_tokens_are_reported_one_by_one) {
    Reading r(") + << += &= / ? 5");
    EXPECT_EQ(r.text(), "5");
    EXPECT_EQ(r.log, "0x40000002 Line 1: Unexpected token ')\n"
                     "0x40000002 Line 1: Unexpected token '+\n"
                     "0x40000002 Line 1: Unexpected token '<<\n"
                     "0x40000002 Line 1: Unexpected token '+=\n"
                     "0x40000002 Line 1: Unexpected token '&=\n"
                     "0x40000002 Line 1: Unexpected token '/\n"
                     "0x40000002 Line 1: Unexpected token '?\n");
}

TEST_F(Reader, a_byte_from_128_ends_the_innermost_container) {
    Reading r("{ a = [1; 2; \xE4 3]; b = 4 }");
    EXPECT_EQ(r.log.substr(0, 48), "0x40000001 Line 1: Vector is not closed by ']'\n"
                                   "0");
    Reading alone("\xE4 5");
    EXPECT_EQ(alone.code, -1);
    EXPECT_EQ(alone.delim, 0);
    EXPECT_EQ(alone.next(), -1) << "the scan remembers the end of input";
    EXPECT_EQ(reader_test::read_back("'\xC3\xA4' // \xE4"), "\"\xC3\xA4\"");
}

TEST_F(Reader, keys_of_each_kind_are_read) {
    Reading r("{ a=1; 'b c'=2; 5=3; -5=4; 1.5=5; 1.5f=6; int(7)=7; string(k)=8 }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.text(), "{a= 1; \"b c\"= 2; 5= 3; -5= 4; 1.50000= 5; 1.50000f= 6; 7= 7; k= 8; }");
}

TEST_F(Reader, a_reference_can_be_a_key) {
    EXPECT_EQ(reader_test::read_back("{ a = k; #cRef(/a) = 2 }"), "{a= k; k= 2; }");
}

TEST_F(Reader, keys_of_types_without_hooks_are_refused) {
    Reading r("{ [1] = 2; b = 3 }");
    EXPECT_EQ(r.log.substr(0, 53), "0x40000001 Line 1: Key type 'vector' is not defined\n"
                                   "0");
    EXPECT_EQ(r.text_at("b"), "3");
    Reading c("{ #nil = 2 }");
    EXPECT_EQ(c.log.substr(0, 68),
              "0x40000001 Line 1: Key type 'niltype' is not definedKey value: #nil\n");
}

TEST_F(Reader, an_error_in_the_key_stores_the_value_under_the_running_index) {
    Reading r("{ nosuch(1) = 5; b = 6 }");
    EXPECT_EQ(r.log, "0x40000005 Line 1: Key with unknown type='nosuch\n");
    EXPECT_EQ(r.text(), "{0= 5; b= 6; }");
}

TEST_F(Reader, a_failed_value_is_not_stored_and_reading_continues) {
    Reading r("{ a = nosuch(1); b = 2 }");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.text(), "{\n  b= 2;\n}");
    EXPECT_EQ(messages(), "Line 1: ( /a ): Value with unknown type='nosuch\n"
                          "Cannot insert key =a\n");
}

TEST_F(Reader, badfind_as_a_value_removes_the_key) {
    EXPECT_EQ(reader_test::read_back("{ a = 1; a = #badfind; b = 2 }"), "{b= 2; }");
}

TEST_F(Reader, a_vector_with_a_failed_item_fails_as_a_whole) {
    Reading r("{ v = [1; nosuch(2)]; b = 2 }");
    EXPECT_EQ(r.log, "0x40000005 Line 1: ( /v/1 ): Value with unknown type='nosuch\n"
                     "0x40000001 Line 1: ( /v ): Failed to read container, type vector\n");
    EXPECT_EQ(r.text(), "{\n  b= 2;\n}");
}

TEST_F(Reader, a_repeated_key_assigns_in_place_and_keeps_the_object) {
    Reading r("{ a = 1; b = #cRef(/a); a = 2; }");
    EXPECT_EQ(r.text(), "{a= 2; b= #cRef(/a); }");
    EXPECT_EQ(r.at("a"), r.at("b"));
    Reading c("{ a = #true; a = #false }"); // a constant cannot be assigned to
    EXPECT_EQ(c.at("a"), cat::btrue());
    EXPECT_NE(messages().find("Object is const. Method 'assign' called from type: bool"),
              std::string::npos);
}

TEST_F(Reader, positions_in_vectors_and_sets_count_entries) {
    Reading r("{ s = <5; 5; 7>; a = #cRef(/s/1); b = #cRef(/s/2) }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.text_at("a"), "5") << "the set contains the first of equal values";
    EXPECT_EQ(r.at("a"), r.at("s/0"));
    EXPECT_EQ(r.at("b"), r.at("s/1"));
}

TEST_F(Reader, a_layout_that_differs_from_the_types_is_stored) {
    EXPECT_EQ(reader_test::read_back("{a=1}"), "{a= 1; }");
    EXPECT_EQ(reader_test::read_back("{a=1\n}"), "{\n  a= 1;\n}");
    EXPECT_EQ(reader_test::read_back("[1]"), "[1, ]");
    EXPECT_EQ(reader_test::read_back("[1\n]"), "[\n  1,\n]");
    EXPECT_EQ(Reading("{\n}").value->omember("wformat"), cat::badfind());
    EXPECT_EQ(cat::as_string(Reading("{}").value->omember("wformat")), "sc");
    EXPECT_EQ(Reading("[]").value->omember("wformat"), cat::badfind());
    EXPECT_EQ(cat::as_string(Reading("<\n>").value->omember("wformat")), "wc");
}

TEST_F(Reader, read_hash_returns_the_number_of_lines_of_a_container) {
    struct {
        char const *text;
        int expected;
        std::string left;
    } const cases[] = {{"", -1, ""},    {"  // nothing\n", -1, ""}, {"}", 1, ""},
                       {"a=1}", 1, ""}, {"a=1\n}", 2, ""},          {"\n\n}", 3, ""},
                       {"a=1", 1, ""},  {"a=nosuch(1)}", 0, ""}};
    for (auto const &c : cases) {
        cMapObj map;
        std::istringstream is(c.text);
        EXPECT_EQ(map.datamap().read_hash(is, nullptr), c.expected) << c.text;
    }
}

// --- typed values ---

TEST_F(Reader, typed_values_may_have_any_bracket) {
    for (char const *text : {"int(5)", "int[5]", "int{5}", "int<5>", "int ( 5 )"})
        EXPECT_EQ(reader_test::read_back(text), "5") << text;
}

TEST_F(Reader, a_typed_value_is_converted_or_its_failure_reported) {
    Reading r("{ a = int(1.5); b = int([1]); c = int(x); d = int(); e = double(2) }");
    EXPECT_EQ(r.text_at("a"), "1");
    EXPECT_EQ(r.text_at("e"), "2.00000");
    EXPECT_NE(r.log.find("Convert failed in read of type: int"), std::string::npos);
    EXPECT_NE(r.log.find("0x40000001 Line 1: ( /b ): Failed to read value, type int\n"),
              std::string::npos);
    EXPECT_NE(r.log.find("0x40000001 Line 1: ( /d ): Failed to read value, type int\n"),
              std::string::npos);
}

TEST_F(Reader, errors_in_a_typed_value_count_only_in_their_own_text) {
    Reading r("int(?5)");
    EXPECT_EQ(r.text(), "5");
    EXPECT_EQ(r.scan.errcount(), 0u);
    EXPECT_EQ(r.log, "0x40000002 Line 1: Unexpected token '?\n");
}

TEST_F(Reader, a_failed_typed_value_as_a_key_is_reported) {
    Reading r("{ int(x y) = 1 }");
    EXPECT_NE(r.log.find("0x40000001 Line 1: Failed to read key, type: int\n"), std::string::npos)
        << r.log;
}

TEST_F(Reader, an_unclosed_typed_value_is_read_to_the_end_of_input) {
    Reading r("{ a = int(5 ");
    EXPECT_EQ(r.log, "0x40000001 Line 1: Closing symbol is missed in type int, path: /a\n"
                     "0x40000001 Line 1: Map is not closed by '}'\n");
    EXPECT_EQ(r.text_at("a"), "5");
}

TEST_F(Reader, niltype_is_a_type_name) {
    EXPECT_EQ(Reading("niltype()").log.find("unknown type"), std::string::npos);
}

// --- limits of one text to another ---

TEST_F(Reader, references_do_not_reach_beyond_the_outermost_container) {
    Reading r("{a=1}; #cRef(/a)");
    EXPECT_EQ(r.next(), 3);
    EXPECT_EQ(r.log, "0x40000003 Line 1: : Error in #cRef(/a): "
                     "Referenced value is not defined before.\n");
    EXPECT_TRUE(text_state().idle());
}

TEST_F(Reader, readobj_reads_from_streams_and_strings) {
    std::istringstream is("{a=1}; 5");
    objref value;
    int delim = 0;
    EXPECT_EQ(cObj::readobj(is, value, &delim), 0);
    EXPECT_EQ(delim, '{');
    EXPECT_EQ(cObj::readobj(is, value), 0);
    EXPECT_EQ(reader_test::written(value), "5");
    EXPECT_EQ(cObj::readobj("7 8", value, &delim), 0);
    EXPECT_EQ(reader_test::written(value), "7");
    EXPECT_EQ(messages(), ": Missing delimiter after value: 7\n")
        << "text on one line has no position";
    EXPECT_EQ(cObj::readobj("7\n8", value, &delim), 0);
    EXPECT_EQ(messages(), "Line 2: : Missing delimiter after value: 7\n");
    EXPECT_EQ(cObj::readobj(static_cast<char const *>(nullptr), value), -1);
    EXPECT_EQ(reader_test::written(value), "7");
}

} // namespace
