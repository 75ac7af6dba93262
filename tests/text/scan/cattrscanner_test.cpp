// The scanner as its users see it: tokens and their positions, tokens pushed back, going back,
// flags, sharing and the dump. Streams that can't seek or are broken are tested in
// cattrscanner_stream_test.cpp, the matching in cattrscanner_match_test.cpp.

#include "tests/support/fixture.h"
#include "tests/text/scan_support.h"

#include "qrv/core/ceros.h"
#include "qrv/diagnostics/ctrace.h"

#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

using test::Input;
using test::place;
using test::rest_of;
using test::running;
using test::Scan;
using test::shown;
using test::tokens_of;

// Edge cases.

TEST(ScannerEdge, a_sign_belongs_to_the_digits_directly_after_it) {
    EXPECT_EQ(tokens_of("-5"), "Int(-5)");
    EXPECT_EQ(tokens_of("- 5"), "45(-) Int(5)");
    EXPECT_EQ(tokens_of("-="), "45(-) 61(=)");
}

TEST(ScannerEdge, a_signed_number_needs_a_digit_after_its_point) {
    EXPECT_EQ(tokens_of("1."), "Double(1.)");
    EXPECT_EQ(tokens_of("+1."), "Int(+1) 46(.)");
    EXPECT_EQ(tokens_of("+1.5 .5 +.5"), "Double(+1.5) Double(.5) Double(+.5)");
    EXPECT_EQ(tokens_of("."), "46(.)");
}

TEST(ScannerEdge, a_float_ends_at_its_f_and_an_exponent_needs_digits) {
    EXPECT_EQ(tokens_of("1.5f2"), "Float(1.5f) Int(2)");
    EXPECT_EQ(tokens_of("1.5e"), "Double(1.5) Ident(e)");
}

TEST(ScannerEdge, leading_zeros_and_hex_are_integers_and_trues_is_an_identifier) {
    EXPECT_EQ(tokens_of("0123"), "Int(0123)");
    EXPECT_EQ(tokens_of("0X1f"), "Int(0X1f)");
    EXPECT_EQ(tokens_of("trues"), "Ident(trues)");
}

TEST(ScannerEdge, a_quote_without_its_partner_on_the_line_is_a_character) {
    EXPECT_EQ(tokens_of("\"ab\n\"c\""), "34(\") Ident(ab) String(\"c\")");
    EXPECT_EQ(tokens_of("'ab\n'c'"), "39(') Ident(ab) String('c')");
    EXPECT_EQ(tokens_of("\"ab"), "34(\") Ident(ab)");
    EXPECT_EQ(tokens_of("'ab\""), "39(') Ident(ab) 34(\")");
}

TEST(ScannerEdge, a_hash_before_a_digit_or_a_blank_is_a_character) {
    EXPECT_EQ(tokens_of("#1"), "35(#) Int(1)");
    EXPECT_EQ(tokens_of("# a"), "35(#) Ident(a)");
    EXPECT_EQ(tokens_of("#a1 #_"), "Const(#a1) Const(#_)");
}

TEST(ScannerEdge, a_backslash_before_a_newline_keeps_the_string_open) {
    EXPECT_EQ(tokens_of("\"a\\\nb\""), "String(\"a\\\nb\")");
    EXPECT_EQ(tokens_of("'a\\\nb'"), "String('a\\\nb')");
}

TEST(ScannerEdge, a_slash_that_opens_no_comment_is_a_character_even_after_white_space) {
    EXPECT_EQ(tokens_of("/a"), "47(/) Ident(a)");
    EXPECT_EQ(tokens_of(" \n/a"), "47(/) Ident(a)");
    EXPECT_EQ(tokens_of(" \n/a", true), "Space( \n) 47(/) Ident(a)");
}

TEST(ScannerEdge, the_newline_after_a_line_comment_belongs_to_the_next_white_space) {
    EXPECT_EQ(tokens_of("a // x\n  b", true), "Ident(a) Comment( // x) Space(\n  ) Ident(b)");
}

// Positions.

TEST(Scanner, gives_each_token_the_position_of_its_first_character) {
    Input i("ab  12\n  \"x\ty\"");
    EXPECT_EQ(i.next(), "Ident(ab)");
    EXPECT_EQ(place(i.scan.token()), "1:0:0");
    EXPECT_EQ(i.next(), "Int(12)");
    EXPECT_EQ(place(i.scan.token()), "1:4:4");
    EXPECT_EQ(i.next(), "String(\"x\ty\")");
    EXPECT_EQ(place(i.scan.token()), "2:2:8");
    EXPECT_EQ(running(i.scan), "2:7:13");
    EXPECT_EQ(i.next(), "Eof()");
    EXPECT_EQ(place(i.scan.token()), "2:7:13");
}

TEST(Scanner, scanner_position_skips_newlines) {
    Input i("\n\n a\n");
    i.next();
    EXPECT_EQ(place(i.scan.token()), "3:1:1");
    EXPECT_EQ(i.next(), "Eof()");
    EXPECT_EQ(running(i.scan), "4:0:2");
}

TEST(Scanner, counts_a_carriage_return_and_a_tab_as_one_column) {
    Input i("\r\t a");
    i.next();
    EXPECT_EQ(place(i.scan.token()), "1:3:3");
}

TEST(Scanner, moves_the_counters_through_strings_and_comments_of_several_lines) {
    Input i("'a\\\nbc' /* x\n\ny */ d");
    EXPECT_EQ(i.next(), "String('a\\\nbc')");
    EXPECT_EQ(running(i.scan), "2:3:6");
    EXPECT_EQ(i.next(), "Ident(d)");
    EXPECT_EQ(place(i.scan.token()), "4:5:16");
}

TEST(Scanner, begins_a_comment_token_at_the_white_space_before_it) {
    Input i("a \n /* c */b");
    i.scan.return_com(true);
    i.next();
    EXPECT_EQ(i.next(), "Comment( \n /* c */)");
    EXPECT_EQ(place(i.scan.token()), "1:1:1");
    EXPECT_EQ(i.next(), "Ident(b)");
    EXPECT_EQ(place(i.scan.token()), "2:8:10");
}

TEST(Scanner, starts_at_the_position_of_the_stream) {
    std::istringstream in("0123456 a");
    in.seekg(7);
    Scan scan(in);
    EXPECT_EQ(running(scan), "1:0:7");
    scan.gettoken();
    EXPECT_EQ(place(scan.token()), "1:1:8");
}

TEST(Scanner, starts_with_an_empty_current_token_at_its_starting_position) {
    std::istringstream in("abc");
    in.seekg(1);
    Scan scan(in);
    EXPECT_EQ(shown(scan.token()), "Eof()");
    EXPECT_EQ(place(scan.token()), "1:0:1");
}

// Comments.

TEST(Scanner, drops_an_open_block_comment_at_the_end_of_input) {
    for (bool on : {false, true}) {
        Input i("a /* b\n *");
        i.scan.return_com(on);
        EXPECT_EQ(i.next(), "Ident(a)");
        EXPECT_EQ(i.next(), "Eof()");
        EXPECT_EQ(place(i.scan.token()), "2:2:8");
        EXPECT_EQ(i.next(), "Eof()");
    }
}

TEST(Scanner, ends_a_block_comment_at_the_first_end_marker) {
    EXPECT_EQ(tokens_of("/**/a", true), "Comment(/**/) Ident(a)");
    EXPECT_EQ(tokens_of("/*/a*/b", true), "Comment(/*/a*/) Ident(b)");
    EXPECT_EQ(tokens_of("/***/a", true), "Comment(/***/) Ident(a)");
    EXPECT_EQ(tokens_of("/* /* */ */", true), "Comment(/* /* */) Space( ) 42(*) 47(/)");
}

TEST(Scanner, adds_white_space_after_a_comment_to_the_next_comment) {
    EXPECT_EQ(tokens_of("/*a*/ \n //b\n/*c*/", true),
              "Comment(/*a*/) Comment( \n //b) Comment(\n/*c*/)");
}

// Flags.

TEST(Scanner, returns_white_space_and_comments_only_on_request) {
    Input i(" a /*b*/ ");
    EXPECT_FALSE(i.scan.return_ws());
    EXPECT_FALSE(i.scan.return_com());
    EXPECT_EQ(rest_of(i.scan), "Ident(a)");
}

TEST(Scanner, has_separate_flags_for_white_space_and_comments) {
    Input ws("a /*b*/ c d");
    ws.scan.return_ws(true);
    EXPECT_TRUE(ws.scan.return_ws());
    EXPECT_EQ(rest_of(ws.scan), "Ident(a) Space( ) Ident(c) Space( ) Ident(d)");
    Input com("a /*b*/ c d");
    com.scan.return_com(true);
    EXPECT_TRUE(com.scan.return_com());
    EXPECT_EQ(rest_of(com.scan), "Ident(a) Comment( /*b*/) Ident(c) Ident(d)");
}

TEST(Scanner, restores_a_flag_at_the_end_of_its_guard) {
    Input i("");
    i.scan.return_com(true);
    {
        cSetTmp<bool> ws;
        cSetTmp<bool> com;
        i.scan.return_ws(true, &ws);
        i.scan.return_com(false, &com);
        EXPECT_TRUE(i.scan.return_ws());
        EXPECT_FALSE(i.scan.return_com());
        i.scan.return_all(true);
    }
    EXPECT_FALSE(i.scan.return_ws());
    EXPECT_TRUE(i.scan.return_com());
    i.scan.return_all(false);
    EXPECT_FALSE(i.scan.return_com());
}

TEST(SetTmp, sets_stores_and_restores) {
    int value = 1;
    {
        cSetTmp<int> tmp(value, 2);
        EXPECT_EQ(value, 2);
    }
    EXPECT_EQ(value, 1);
    { cSetTmp<int> nothing; }
    {
        cSetTmp<int> tmp;
        tmp.take(value);
        value = 3;
    }
    EXPECT_EQ(value, 1);
}

TEST(SetTmp, restores_before_it_stores_again) {
    int a = 1, b = 10;
    {
        cSetTmp<int> tmp(a, 2);
        tmp.take(a);
        a = 3;
        tmp.take(b);
        EXPECT_EQ(a, 1);
        b = 11;
    }
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 10);
}

// Tokens pushed back.

TEST(Scanner, returns_pushed_tokens_last_in_first_out) {
    Input i("a b c");
    cAttrLiteral a, b;
    EXPECT_EQ(i.scan.gettoken(a), tkIdent);
    EXPECT_EQ(i.scan.gettoken(b), tkIdent);
    i.scan.ungettoken(b);
    i.scan.ungettoken(a);
    EXPECT_EQ(rest_of(i.scan), "Ident(a) Ident(b) Ident(c)");
}

TEST(Scanner, does_not_change_the_counters_when_a_token_is_returned_again) {
    Input i("a\n bb c");
    i.next();
    cAttrLiteral const a = i.scan.token();
    i.next();
    EXPECT_EQ(running(i.scan), "2:3:4");
    i.scan.ungettoken(a);
    EXPECT_EQ(shown(i.scan.token()), "Ident(bb)");
    EXPECT_EQ(i.next(), "Ident(a)");
    EXPECT_EQ(place(i.scan.token()), "1:0:0");
    EXPECT_EQ(running(i.scan), "2:3:4");
    EXPECT_EQ(i.next(), "Ident(c)");
}

TEST(Scanner, can_push_the_current_token_back_repeatedly) {
    Input i("a b");
    i.next();
    i.scan.ungettoken();
    i.scan.ungettoken();
    EXPECT_EQ(rest_of(i.scan), "Ident(a) Ident(a) Ident(b)");
}

TEST(Scanner, can_push_back_tokens_that_were_not_in_the_input) {
    Input i("x");
    cAttrLiteral made;
    made.code = 59;
    made.text = ";";
    made.line = 7;
    i.scan.ungettoken(made);
    EXPECT_EQ(i.next(), "59(;)");
    EXPECT_EQ(place(i.scan.token()), "7:0:0");
    EXPECT_EQ(running(i.scan), "1:0:0");
}

TEST(Scanner, can_push_back_the_end_of_input) {
    Input i("");
    i.next();
    i.scan.ungettoken();
    EXPECT_EQ(i.next(), "Eof()");
    EXPECT_EQ(i.next(), "Eof()");
}

TEST(Scanner, copies_the_token_into_the_argument) {
    Input i("a");
    cAttrLiteral copy;
    EXPECT_EQ(i.scan.gettoken(copy), tkIdent);
    i.next();
    EXPECT_EQ(shown(copy), "Ident(a)");
    EXPECT_EQ(copy.outer_line, 1u);
    EXPECT_EQ(copy.outer_column, 0u);
}

// Going back.

TEST(Scanner, resets_to_the_start_of_the_current_token) {
    Input i("a bb cc");
    i.next();
    i.next();
    i.scan.ungettoken();
    i.scan.resettoken();
    EXPECT_EQ(i.scan.token().code, tkEof);
    EXPECT_EQ(running(i.scan), "1:2:2");
    EXPECT_EQ(rest_of(i.scan), "Ident(bb) Ident(cc)");
}

TEST(Scanner, resets_to_a_given_token_even_after_the_end) {
    Input i("a bb cc");
    i.next();
    cAttrLiteral bb;
    i.scan.gettoken(bb);
    EXPECT_EQ(rest_of(i.scan), "Ident(cc)");
    EXPECT_FALSE(i.in.good());
    i.scan.resettoken(bb);
    EXPECT_TRUE(i.in.good());
    EXPECT_EQ(i.next(), "Ident(bb)");
    EXPECT_EQ(place(i.scan.token()), "1:2:2");
}

TEST(Scanner, resets_to_any_position) {
    Input i("a bb cc");
    i.next();
    i.scan.reset(3, 9, 4);
    EXPECT_EQ(i.next(), "Ident(b)");
    EXPECT_EQ(place(i.scan.token()), "9:4:3");
}

TEST(Scanner, flush_returns_the_look_ahead_to_the_stream) {
    Input i("12;b");
    i.next();
    i.scan.ungettoken();
    EXPECT_EQ(i.in.tellg(), 3);
    i.scan.flush();
    EXPECT_EQ(i.in.tellg(), 2);
    EXPECT_EQ(running(i.scan), "1:2:2");
    EXPECT_EQ(i.in.get(), ';');
    EXPECT_EQ(i.next(), "Ident(b)");
}

// The position does not count newlines, so it is too small by their number.
TEST(Scanner, resettoken_goes_back_too_far_after_a_newline) {
    Input i("\n\nab cd");
    i.next();
    cAttrLiteral ab = i.scan.token();
    i.scan.resettoken();
    EXPECT_EQ(i.in.tellg(), 0);
    EXPECT_EQ(i.next(), "Ident(ab)");
    EXPECT_EQ(place(i.scan.token()), "5:0:0");
}

TEST(Scanner, quotes_known_to_be_open_are_forgotten_when_the_scanner_goes_back) {
    std::stringstream in("\"a ", std::ios::in | std::ios::out | std::ios::ate);
    Scan scan(in);
    EXPECT_EQ(rest_of(scan), "34(\") Ident(a)");
    in.clear();
    in << "\"";
    scan.reset(0, 1, 0);
    EXPECT_EQ(rest_of(scan), "String(\"a \")");
}

// Sharing.

TEST(Scanner, shares_one_lexer_among_all_scanners_on_a_stream) {
    std::istringstream in("a bb c"), other("x");
    Scan first(in);
    EXPECT_TRUE(first.alone());
    {
        Scan second(in);
        EXPECT_EQ(cAttrLexer::living(), 1u);
        EXPECT_FALSE(first.alone());
        first.gettoken();
        first.ungettoken();
        second.gettoken();
        EXPECT_EQ(shown(first.token()), "Ident(a)");
        EXPECT_EQ(&first.token(), &second.token());
        second.errincr();
        second.set_filename("f");
        second.return_ws(true);
        Scan third(other);
        EXPECT_EQ(cAttrLexer::living(), 2u);
        EXPECT_FALSE(third.alone());
        EXPECT_EQ(third.errcount(), 0u);
    }
    EXPECT_TRUE(first.alone());
    EXPECT_EQ(first.errcount(), 1u);
    EXPECT_EQ(first.filename(), "f");
    EXPECT_EQ(&first.sig_error(), &Scan(in).sig_error());
    EXPECT_EQ(rest_of(first), "Space( ) Ident(bb) Space( ) Ident(c)");
}

TEST(Scanner, ends_its_lexer_with_the_last_scanner) {
    std::istringstream in("a b c");
    EXPECT_EQ(cAttrLexer::find(in), nullptr);
    auto first = std::make_unique<Scan>(in);
    auto second = std::make_unique<Scan>(in);
    first->gettoken();
    cAttrLexer *const lexer = cAttrLexer::find(in);
    first.reset();
    EXPECT_EQ(cAttrLexer::find(in), lexer);
    EXPECT_EQ(rest_of(*second), "Ident(b) Ident(c)");
    second.reset();
    EXPECT_EQ(cAttrLexer::find(in), nullptr);
    EXPECT_EQ(cAttrLexer::living(), 0u);
}

TEST(Scanner, lexers_leave_the_list_in_any_order) {
    std::istringstream a("1"), b("2"), c("3");
    auto sa = std::make_unique<Scan>(a);
    auto sb = std::make_unique<Scan>(b);
    auto sc = std::make_unique<Scan>(c);
    sb.reset();
    EXPECT_EQ(cAttrLexer::find(b), nullptr);
    EXPECT_NE(cAttrLexer::find(c), nullptr);
    sa.reset();
    EXPECT_NE(cAttrLexer::find(c), nullptr);
    EXPECT_EQ(rest_of(*sc), "Int(3)");
}

TEST(Scanner, counts_errors_up_and_clears_them) {
    Input i("");
    EXPECT_EQ(i.scan.errcount(), 0u);
    i.scan.errincr();
    i.scan.errincr();
    EXPECT_EQ(i.scan.errcount(), 2u);
    i.scan.errclear();
    EXPECT_EQ(i.scan.errcount(), 0u);
}

TEST(Scanner, has_an_empty_file_name_by_default) {
    Input i("");
    EXPECT_EQ(i.scan.filename(), "");
    i.scan.set_filename("dir/file.attr");
    EXPECT_EQ(i.scan.filename(), "dir/file.attr");
    i.scan.set_filename(nullptr);
    EXPECT_EQ(i.scan.filename(), "");
    EXPECT_EQ(&i.scan.is(), &i.in);
}

TEST(Scanner, fires_errors_on_its_own_signal) {
    struct Slot {
        void take(cErr &e) { codes += std::to_string(e.code()) + ";"; }
        std::string codes;
    } target;
    Input i("");
    cSlot1<Slot, cErr &> slot(&target, &Slot::take);
    i.scan.sig_error().connect(slot);
    cErr e(7, "x");
    i.scan.sig_error()(e);
    EXPECT_EQ(target.codes, "7;");
}

TEST(Scanner, uses_the_standard_input_for_a_null_stream) {
    std::istream *none = nullptr;
    Scan scan(none);
    EXPECT_EQ(&scan.is(), &cat::std_in());
    std::istringstream in("a");
    EXPECT_EQ(rest_of(Scan(&in)), "Ident(a)");
}

TEST(Scanner, cannot_be_copied) {
    static_assert(!std::is_copy_constructible_v<cAttrScanner>);
    static_assert(!std::is_copy_assignable_v<cAttrScanner>);
    static_assert(!std::is_copy_constructible_v<cAttrLexer>);
    static_assert(!std::is_copy_constructible_v<cSetTmp<bool>>);
    static_assert(!std::is_copy_assignable_v<cSetTmp<bool>>);
    static_assert(std::is_copy_constructible_v<cAttrLiteral>);
    static_assert(std::is_nothrow_move_assignable_v<cAttrLiteral>);
}

TEST(Scanner, has_the_documented_token_codes) {
    EXPECT_EQ(tkEof, 0);
    EXPECT_EQ(tkInt, 257);
    EXPECT_EQ(tkUnsigned, 258);
    EXPECT_EQ(tkFloat, 259);
    EXPECT_EQ(tkDouble, 260);
    EXPECT_EQ(tkBool, 261);
    EXPECT_EQ(tkString, 262);
    EXPECT_EQ(tkConst, 263);
    EXPECT_EQ(tkIdent, 264);
    EXPECT_EQ(tkComment, 265);
    EXPECT_EQ(tkSpace, 266);
    EXPECT_EQ(tkBadIdent, 267);
    EXPECT_EQ(tkAddAssign, 270);
    EXPECT_EQ(tkShiftLeft, 271);
    EXPECT_EQ(tkAndAssign, 272);
    EXPECT_STREQ(cat::token_name(267), "tkBadIdent");
    EXPECT_EQ(cat::token_name(59), nullptr);
    EXPECT_EQ(cat::token_name(268), nullptr);
    EXPECT_EQ(cat::token_name(-1), nullptr);
}

// The position in the outer text.

TEST(Scanner, returns_the_outer_position_of_each_token_of_extracted_text) {
    Input i("ab+ 12 c");
    i.scan.outer_places({{0, 5, 10}, {2, 5, 20}, {4, 6, 0}});
    std::string places;
    while (i.next() != "Eof()") {
        places += std::to_string(i.scan.token().outer_line) + ":" +
                  std::to_string(i.scan.token().outer_column) + " ";
    }
    EXPECT_EQ(places, "5:10 5:20 6:0 6:3 ");
    EXPECT_EQ(place(i.scan.token()), "1:8:8");
}

TEST(Scanner, uses_its_own_position_if_no_outer_one_is_known) {
    Input i("a\n b c");
    i.scan.outer_places({{5, 9, 9}});
    i.next();
    i.next();
    EXPECT_EQ(i.scan.token().outer_line, 2u);
    EXPECT_EQ(i.scan.token().outer_column, 1u);
    i.next();
    EXPECT_EQ(i.scan.token().outer_line, 9u);
    EXPECT_EQ(i.scan.token().outer_column, 9u);
}

TEST(Scanner, counts_newlines_in_offsets_of_outer_positions) {
    Input i("a\n\nb");
    i.scan.outer_places({{0, 1, 0}, {3, 50, 60}});
    i.next();
    i.next();
    EXPECT_EQ(i.scan.token().outer_line, 50u);
    EXPECT_EQ(i.scan.token().outer_column, 60u);
}

// The dump.

TEST(Scanner, dumps_each_token_as_a_line) {
    Input i("a\n \"b\" ");
    cMessageLog messages;
    EXPECT_FALSE(i.scan.setdump(true));
    rest_of(i.scan);
    EXPECT_EQ(messages.take(), "TOKEN:264:0:1:0 'a'\nTOKEN:262:2:2:1 '\"b\"'\nTOKEN:0:6:2:5 ''\n");
    EXPECT_TRUE(i.scan.setdump(false));
    i.next();
    EXPECT_EQ(messages.take(), "");
}

TEST(Scanner, does_not_dump_pushed_back_tokens) {
    Input i("a b");
    i.next();
    i.scan.ungettoken();
    cMessageLog messages;
    i.scan.setdump(true);
    i.next();
    EXPECT_EQ(messages.take(), "");
    i.next();
    EXPECT_EQ(messages.take(), "TOKEN:264:2:1:2 'b'\n");
}

TEST(Scanner, has_its_own_trace_channel) {
    EXPECT_EQ(cat::trace_lex.ident(), "catlex");
    EXPECT_EQ(cat::trace_lex.flags(), 3);
}
