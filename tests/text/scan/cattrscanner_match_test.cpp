// The matching engine: every rule, the characters taken from the stream, and hostile input.
// cattrscanner_reference_test.cpp compares it with a slow reference.

#include "tests/text/scan_support.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

using test::PieceBuf;
using test::rest_of;
using test::Scan;
using test::shown;
using test::tokens_of;

// Every rule.

TEST(ScannerRules, true_and_false_are_matched) {
    EXPECT_EQ(tokens_of("true false"), "Bool(true) Bool(false)");
    EXPECT_EQ(tokens_of("True truefalse true_ false1 tru"),
              "Ident(True) Ident(truefalse) Ident(true_) Ident(false1) Ident(tru)");
}

TEST(ScannerRules, hexadecimal_integers_have_no_sign) {
    EXPECT_EQ(tokens_of("0x1F 0XaB"), "Int(0x1F) Int(0XaB)");
    EXPECT_EQ(tokens_of("0x 0x1g +0x10 -0x1 00x1 1x1"),
              "BadIdent(0x) BadIdent(0x1g) BadIdent(+0x10) BadIdent(-0x1) BadIdent(00x1) "
              "BadIdent(1x1)");
    EXPECT_EQ(tokens_of("0x1_ 0x1u"), "BadIdent(0x1_) BadIdent(0x1u)");
    EXPECT_EQ(tokens_of("0x1.5"), "Int(0x1) Double(.5)");
}

TEST(ScannerRules, unsigned_integers_are_matched) {
    EXPECT_EQ(tokens_of("1u +12U -3u"), "Unsigned(1u) Unsigned(+12U) Unsigned(-3u)");
    EXPECT_EQ(tokens_of("12ux 1uu 1u2"), "BadIdent(12ux) BadIdent(1uu) BadIdent(1u2)");
}

TEST(ScannerRules, digits_followed_by_letters_are_bad_numbers) {
    EXPECT_EQ(tokens_of("12abc 1e5 1f 5_ -7x"),
              "BadIdent(12abc) BadIdent(1e5) BadIdent(1f) BadIdent(5_) BadIdent(-7x)");
}

TEST(ScannerRules, integers_are_matched) {
    EXPECT_EQ(tokens_of("0 +1 -23 4-5"), "Int(0) Int(+1) Int(-23) Int(4) Int(-5)");
}

TEST(ScannerRules, floats_and_doubles_are_matched) {
    EXPECT_EQ(tokens_of("1.f .5F -1.5e+2f 1.e3F"),
              "Float(1.f) Float(.5F) Float(-1.5e+2f) Float(1.e3F)");
    EXPECT_EQ(tokens_of("1.5 12. .5e-3 -0.1E7 1.e5"),
              "Double(1.5) Double(12.) Double(.5e-3) Double(-0.1E7) Double(1.e5)");
    EXPECT_EQ(tokens_of("1.5e+x"), "Double(1.5) Ident(e) 43(+) Ident(x)");
    EXPECT_EQ(tokens_of("1.5e-"), "Double(1.5) Ident(e) 45(-)");
    EXPECT_EQ(tokens_of("1.2.3"), "Double(1.2) Double(.3)");
    EXPECT_EQ(tokens_of("1..2"), "Double(1.) Double(.2)");
    EXPECT_EQ(tokens_of("-.e1"), "45(-) 46(.) Ident(e1)");
    EXPECT_EQ(tokens_of("-1.e1"), "Int(-1) 46(.) Ident(e1)");
}

TEST(ScannerRules, strings_are_matched) {
    EXPECT_EQ(tokens_of("\"\" ''"), "String(\"\") String('')");
    EXPECT_EQ(tokens_of("\"a'b\" 'a\"b'"), "String(\"a'b\") String('a\"b')");
    EXPECT_EQ(tokens_of("\"a\\\"b\" 'a\\'b'"), "String(\"a\\\"b\") String('a\\'b')");
    EXPECT_EQ(tokens_of("\"\\\\\"a"), "String(\"\\\\\") Ident(a)");
    EXPECT_EQ(tokens_of("\"a//b/*c\""), "String(\"a//b/*c\")");
    EXPECT_EQ(tokens_of("\"\\"), "34(\") 92(\\)");
    EXPECT_EQ(tokens_of("\"\\\\\\\n\\"), "34(\") 92(\\) 92(\\) 92(\\) 92(\\)");
}

TEST(ScannerRules, strings_may_contain_any_byte) {
    std::string const inside("\0\x01\x7f\x80\xe4\xff", 6);
    std::istringstream in("\"" + inside + "\"");
    Scan scan(in);
    EXPECT_EQ(scan.gettoken(), tkString);
    EXPECT_EQ(scan.token().text, "\"" + inside + "\"");
    EXPECT_EQ(scan.position(), 8u);
}

TEST(ScannerRules, constants_and_identifiers_are_matched) {
    EXPECT_EQ(tokens_of("#nil #cRef(a_1)"), "Const(#nil) Const(#cRef) 40(() Ident(a_1) 41())");
    EXPECT_EQ(tokens_of("##a"), "35(#) Const(#a)");
    EXPECT_EQ(tokens_of("_ _9 aB3-c"), "Ident(_) Ident(_9) Ident(aB3) 45(-) Ident(c)");
}

TEST(ScannerRules, pairs_of_characters_are_matched) {
    EXPECT_EQ(tokens_of("+= << &="), "AddAssign(+=) ShiftLeft(<<) AndAssign(&=)");
    EXPECT_EQ(tokens_of("<<<"), "ShiftLeft(<<) 60(<)");
    EXPECT_EQ(tokens_of("+=="), "AddAssign(+=) 61(=)");
    EXPECT_EQ(tokens_of("& = &&= <=+"), "38(&) 61(=) 38(&) AndAssign(&=) 60(<) 61(=) 43(+)");
    EXPECT_EQ(tokens_of("+=5 ++5"), "AddAssign(+=) Int(5) 43(+) Int(+5)");
}

TEST(ScannerRules, punctuation_is_matched) {
    EXPECT_EQ(tokens_of(";,=(){}[]<>/"),
              "59(;) 44(,) 61(=) 40(() 41()) 123({) 125(}) 91([) 93(]) 60(<) 62(>) 47(/)");
}

TEST(ScannerRules, bytes_from_128_on_are_negative_codes) {
    for (int byte = 128; byte < 256; ++byte) {
        std::istringstream in(std::string(1, static_cast<char>(byte)) + "a");
        Scan scan(in);
        EXPECT_EQ(scan.gettoken(), byte - 256);
        EXPECT_EQ(scan.token().text.size(), 1u);
        EXPECT_EQ(scan.gettoken(), tkIdent);
    }
    EXPECT_EQ(tokens_of("a\xe4"
                        "b 1\xe4"),
              "Ident(a) -28(\xe4) Ident(b) Int(1) -28(\xe4)");
}

TEST(ScannerRules, a_null_character_has_the_code_of_the_end_but_is_not_empty) {
    std::istringstream in(std::string("\0a", 2));
    Scan scan(in);
    EXPECT_EQ(scan.gettoken(), 0);
    EXPECT_EQ(scan.token().text.size(), 1u);
    EXPECT_EQ(scan.gettoken(), tkIdent);
}

TEST(ScannerRules, vertical_tab_and_form_feed_are_not_white_space) {
    EXPECT_EQ(tokens_of("\v\f", true), "11(\v) 12(\f)");
    EXPECT_EQ(tokens_of("\t\r\n ", true), "Space(\t\r\n )");
}

TEST(ScannerRules, line_comments_are_matched) {
    EXPECT_EQ(tokens_of("//", true), "Comment(//)");
    EXPECT_EQ(tokens_of(" \n// a /* b\r\nc", true), "Comment( \n// a /* b\r) Space(\n) Ident(c)");
    EXPECT_EQ(tokens_of("///*\n*/", true), "Comment(///*) Space(\n) 42(*) 47(/)");
}

// The characters taken from the stream.

namespace {

// The number of characters that the first token takes from a stream that delivers one at a time.
std::size_t taken_for_first(std::string const &text, int code) {
    PieceBuf buffer(text);
    std::istream in(&buffer);
    Scan scan(in);
    EXPECT_EQ(scan.gettoken(), code) << text;
    return buffer.taken();
}

} // namespace

TEST(ScannerPromise, a_token_that_is_complete_by_itself_takes_nothing_more) {
    for (char c : std::string(";,=(){}[]>*:!$%@|~^?\\"))
        EXPECT_EQ(taken_for_first(std::string(1, c) + "abc", c), 1u) << c;
    EXPECT_EQ(taken_for_first("\"ab\"\"c\"", tkString), 4u);
    EXPECT_EQ(taken_for_first("'a\\''b", tkString), 5u);
    EXPECT_EQ(taken_for_first("<<<<", tkShiftLeft), 2u);
    EXPECT_EQ(taken_for_first("+==", tkAddAssign), 2u);
    EXPECT_EQ(taken_for_first("&==", tkAndAssign), 2u);
    EXPECT_EQ(taken_for_first("1.5fff", tkFloat), 4u);
}

TEST(ScannerPromise, a_token_that_needs_one_character_of_look_ahead_takes_one) {
    EXPECT_EQ(taken_for_first("ab;;;", tkIdent), 3u);
    EXPECT_EQ(taken_for_first("#ab;;;", tkConst), 4u);
    EXPECT_EQ(taken_for_first("12;;;", tkInt), 3u);
    EXPECT_EQ(taken_for_first("0x1f;;;", tkInt), 5u);
    EXPECT_EQ(taken_for_first("1.25;;;", tkDouble), 5u);
    EXPECT_EQ(taken_for_first("1.5e7;;;", tkDouble), 6u);
    EXPECT_EQ(taken_for_first("<a", '<'), 2u);
    EXPECT_EQ(taken_for_first("&ab", '&'), 2u);
    EXPECT_EQ(taken_for_first("-aa", '-'), 2u);
    EXPECT_EQ(taken_for_first("+aa", '+'), 2u);
    EXPECT_EQ(taken_for_first(".aa", '.'), 2u);
    EXPECT_EQ(taken_for_first("/aa", '/'), 2u);
    EXPECT_EQ(taken_for_first("#11", '#'), 2u);
}

TEST(ScannerPromise, comments_and_white_space_take_only_their_characters) {
    PieceBuf buffer("// ab\n /*c*/ dd");
    std::istream in(&buffer);
    Scan scan(in);
    scan.return_all(true);
    EXPECT_EQ(scan.gettoken(), tkComment);
    EXPECT_EQ(buffer.taken(), 6u); // the newline is the look-ahead
    EXPECT_EQ(scan.gettoken(), tkComment);
    EXPECT_EQ(buffer.taken(), 12u);
    EXPECT_EQ(scan.gettoken(), tkSpace);
    EXPECT_EQ(buffer.taken(), 14u);
}

TEST(ScannerPromise, code_that_reads_the_stream_continues_directly_after_a_bracket) {
    std::istringstream in("{raw} b");
    Scan scan(in);
    EXPECT_EQ(scan.gettoken(), '{');
    std::string raw;
    std::getline(in, raw, '}');
    EXPECT_EQ(raw, "raw");
    EXPECT_EQ(rest_of(scan), "Ident(b)");
}

TEST(ScannerPromise, unused_look_ahead_stays_in_the_shared_buffer) {
    PieceBuf buffer("1.5e+x");
    std::istream in(&buffer);
    auto first = std::make_unique<Scan>(in);
    Scan second(in);
    EXPECT_EQ(first->gettoken(), tkDouble);
    EXPECT_EQ(buffer.taken(), 6u);
    first.reset();
    EXPECT_EQ(rest_of(second), "Ident(e) 43(+) Ident(x)");
}

TEST(ScannerPromise, a_tied_stream_is_flushed_before_more_input_is_read) {
    struct Flushed : std::stringbuf {
        int sync() override { return ++count, 0; }
        int count = 0;
    } out;
    std::ostream prompt(&out);
    PieceBuf buffer("ab");
    std::istream in(&buffer);
    in.tie(&prompt);
    Scan scan(in);
    scan.gettoken();
    EXPECT_GT(out.count, 0);
}

// Hostile input. With quadratic work the test program would exceed its time limit.

TEST(ScannerHostile, a_million_unclosed_escaped_quotes_take_linear_time) {
    std::string text;
    for (int i = 0; i < 500000; ++i) text += "\\\"";
    std::istringstream in(text);
    Scan scan(in);
    std::size_t count = 0;
    while (scan.gettoken() != tkEof) ++count;
    EXPECT_EQ(count, text.size());
}

TEST(ScannerHostile, both_kinds_of_open_quotes_may_be_mixed) {
    std::string text;
    for (int i = 0; i < 200000; ++i) text += "\\\"a\\'\\\n";
    PieceBuf buffer(text, 4096);
    std::istream in(&buffer);
    Scan scan(in);
    std::size_t count = 0;
    while (scan.gettoken() != tkEof) ++count;
    EXPECT_EQ(count, 200000u * 6);
    EXPECT_EQ(buffer.taken(), text.size());
    EXPECT_EQ(scan.lineno(), 200001u);
}

TEST(ScannerHostile, a_string_may_have_fifty_million_characters_on_one_line) {
    std::size_t const size = 50000000;
    std::istringstream closed("\"" + std::string(size, 'a') + "\";");
    Scan scan(closed);
    EXPECT_EQ(scan.gettoken(), tkString);
    EXPECT_EQ(scan.token().text.size(), size + 2);
    EXPECT_EQ(scan.gettoken(), ';');
    EXPECT_EQ(scan.token().column, size + 2);
    std::istringstream open("\"" + std::string(size, 'a'));
    Scan other(open);
    EXPECT_EQ(other.gettoken(), '"');
    EXPECT_EQ(other.gettoken(), tkIdent);
    EXPECT_EQ(other.token().text.size(), size);
}

TEST(ScannerHostile, one_character_may_be_repeated_many_times) {
    std::size_t const size = 1000000;
    for (std::string unit :
         {"\"",   "'", "\\", "/", "/*+", "*", " ", "\n",   "+",   "-",   "+1.",
          "1.5e", "#", "<",  "&", "1",   "a", ".", "\"\\", "'\n", "\n/", "\x80"}) {
        std::string text;
        while (text.size() < size) text += unit;
        std::istringstream in(text);
        Scan scan(in);
        scan.return_all(true);
        std::size_t length = 0;
        while (scan.gettoken() != tkEof) length += scan.token().text.size();
        // An unclosed comment at the end is dropped; everything else must be preserved.
        EXPECT_EQ(length, unit == "/*+" ? 0 : text.size()) << unit;
    }
}

TEST(ScannerHostile, binary_junk_is_preserved_in_tokens) {
    std::mt19937 random(99);
    std::string text;
    for (int i = 0; i < 2000000; ++i) {
        auto const r = random();
        text += r & 0x100 ? static_cast<char>(r) : "\"'\\/*\n 1.e+ax#<"[(r & 0xff) % 16];
    }
    text += "*/"; // closes a comment that may be open
    for (std::size_t piece : {0u, 1u, 7u, 8192u}) {
        PieceBuf buffer(text, piece);
        std::istream in(&buffer);
        Scan scan(in);
        scan.return_all(true);
        std::string back;
        while (scan.gettoken() != tkEof || !scan.token().text.empty()) back += scan.token().text;
        EXPECT_TRUE(back == text) << piece;
        EXPECT_EQ(buffer.taken(), text.size());
    }
}

// The engine without the scanner.

namespace {

struct Engine : attrFlexLexer {
    using attrFlexLexer::attrFlexLexer;
    using attrFlexLexer::LexerInput;
    using attrFlexLexer::LexerOutput;
    // The rule and the text of the next match.
    std::string next() {
        int const r = match();
        std::string text = std::to_string(r) + ":" + std::string(matched());
        consume();
        return text;
    }
};

} // namespace

TEST(ScannerEngine, returns_the_number_of_the_rule) {
    std::istringstream in("true false 0x1 1u 1a 1 1.f 1. '' #a a+=<<&=//\n/*");
    Engine engine(&in);
    std::string rules;
    for (std::string r; r != "21:"; r = engine.next()) {
        if (!r.empty() && r.substr(0, 2) != "19") rules += r + "|";
    }
    EXPECT_EQ(rules, "1:true|2:false|3:0x1|4:1u|5:1a|6:1|7:1.f|8:1.|9:''|10:#a|11:a|12:+=|13:<<|"
                     "14:&=|15://|16:\n/*|");
}

TEST(ScannerEngine, works_on_several_buffers_in_turn) {
    std::istringstream a("a1 a2"), b("b1 b2"), c("c1");
    Engine engine(&a);
    EXPECT_EQ(engine.next(), "11:a1");
    yy_buffer_state *const second = engine.yy_create_buffer(&b, 16384);
    yy_buffer_state *const third = engine.yy_create_buffer(&c, 0);
    engine.yy_delete_buffer(third);
    engine.yyrestart(&b);
    EXPECT_EQ(engine.next(), "11:b1");
    engine.switch_streams(&c, nullptr);
    EXPECT_EQ(engine.next(), "11:c1");
    engine.switch_streams(nullptr, nullptr);
    EXPECT_EQ(engine.next(), "21:");
    engine.yyrestart(nullptr);
    EXPECT_EQ(engine.next(), "21:");
    engine.yy_delete_buffer(second);
}

TEST(ScannerEngine, can_take_over_a_buffer_and_release_the_previous_one) {
    std::istringstream a("a1 a2"), b("b1 b2");
    Engine engine;
    EXPECT_EQ(engine.next(), "21:");
    engine.yyrestart(&a);
    yy_buffer_state *const second = engine.yy_create_buffer(&b, 0);
    Engine owner(&a);
    EXPECT_EQ(owner.next(), "11:a1");
    yy_buffer_state *const first = owner.yy_create_buffer(&a, 0);
    owner.switch_streams(&b, nullptr);
    EXPECT_EQ(owner.next(), "11:b1");
    owner.yyrestart(&a);
    engine.yy_delete_buffer(second);
    owner.yy_delete_buffer(first);
    EXPECT_EQ(owner.next(), "11:a2");
}

TEST(ScannerEngine, switches_between_buffers_and_deletes_its_own) {
    std::istringstream a("a1 a2"), b("b1 b2"), c("c1 c2"), d("d1");
    Engine engine(&a);
    EXPECT_EQ(engine.next(), "11:a1");
    yy_buffer_state *const second = engine.yy_create_buffer(&b, 0);
    yy_buffer_state *const third = engine.yy_create_buffer(&c, 0);
    engine.yy_switch_to_buffer(second); // deletes the buffer that the engine created for a
    EXPECT_EQ(engine.next(), "11:b1");
    engine.yy_switch_to_buffer(third); // the caller owns `second` again
    EXPECT_EQ(engine.next(), "11:c1");
    engine.yy_switch_to_buffer(second);
    engine.yy_switch_to_buffer(second);
    EXPECT_EQ(engine.next(), "19: ");
    EXPECT_EQ(engine.next(), "11:b2");
    engine.yy_switch_to_buffer(third);
    engine.yy_delete_buffer(second);
    EXPECT_EQ(engine.next(), "19: ");
    EXPECT_EQ(engine.next(), "11:c2");
    engine.switch_streams(&d, nullptr); // deletes `third`, and creates a new buffer
    EXPECT_EQ(engine.next(), "11:d1");
    engine.yy_switch_to_buffer(nullptr);
    EXPECT_EQ(engine.next(), "21:");
    engine.yyrestart(&a);
    engine.yy_switch_to_buffer(engine.yy_create_buffer(&b, 0)); // deleted with the engine
    EXPECT_EQ(engine.next(), "21:");
}

TEST(ScannerEngine, reads_one_character_at_a_time_and_reports_end_and_failure) {
    std::istringstream in("ab");
    Engine engine(&in);
    char got[4] = {};
    EXPECT_EQ(engine.LexerInput(got, 4), 1);
    EXPECT_EQ(got[0], 'a');
    EXPECT_EQ(engine.LexerInput(got, 0), 0);
    EXPECT_EQ(engine.LexerInput(got, 4), 1);
    EXPECT_EQ(engine.LexerInput(got, 4), 0);
    EXPECT_EQ(engine.LexerInput(got, 4), 0);
    in.clear(std::ios::failbit);
    EXPECT_EQ(engine.LexerInput(got, 4), 0);
    in.clear(std::ios::badbit);
    EXPECT_EQ(engine.LexerInput(got, 4), -1);
    in.clear(std::ios::badbit | std::ios::eofbit);
    EXPECT_EQ(engine.LexerInput(got, 4), 0);
}

TEST(ScannerEngine, writes_to_its_output) {
    std::ostringstream out, other;
    Engine engine(nullptr, &out);
    engine.LexerOutput("abc", 2);
    engine.switch_streams(nullptr, &other);
    engine.LexerOutput("xyz", 3);
    EXPECT_EQ(out.str() + "|" + other.str(), "ab|xyz");
}
