// Fuzzes the scanner with generated text. Properties that must hold for every input:
//   - with white space and comments as tokens, the concatenated texts of the tokens are the input,
//     except for a block comment that is not closed at the end of the input;
//   - each token's line, column and position are those of its first byte, counted here, and the
//     running counters are those of the byte after it;
//   - without white space and comments the other tokens are the same, also if the stream returns
//     its characters in pieces or one by one;
//   - a token that is pushed back is returned again; after going back to a token of the first line,
//     that token and all later ones are returned again;
//   - a token's text alone is scanned as the same token, if the input is short;
//   - the former scanner returns the same tokens and leaves the stream in the same state, also if
//     other operations happen between tokens, in memory and in pieces;
//   - only tokens from tkInt to tkIdent create an object; strings and identifiers always create a
//     string.
//
// The first byte selects the size of the pieces and the token to go back to.
#include "fuzz/fuzz_support.h"
#include "tests/text/scan_compare.h"
#include "tests/text/scan_support.h"

#include <cstddef>
#include <vector>

namespace {

using cTokens = std::vector<cAttrLiteral>;

bool is_filler(cAttrLiteral const &token) {
    return token.code == tkSpace || token.code == tkComment;
}

bool same(cAttrLiteral const &a, cAttrLiteral const &b) {
    return a.code == b.code && a.text == b.text && a.line == b.line && a.column == b.column &&
           a.position == b.position && a.outer_line == b.outer_line &&
           a.outer_column == b.outer_column;
}

std::string shown(cTokens const &tokens) {
    std::string all;
    for (cAttrLiteral const &token : tokens)
        all += test::place(token) + " " + test::shown(token) + "\n";
    return all;
}

void expect_same(char const *what, cTokens const &a, cTokens const &b) {
    bool equal = a.size() == b.size();
    for (std::size_t i = 0; equal && i < a.size(); ++i) equal = same(a[i], b[i]);
    if (!equal) fuzz::stop(what, shown(a), shown(b));
}

// A byte of 0 is a token with the code of the end, but unlike the end it has text.
bool next(test::Scan const &scan, cAttrLiteral &token) {
    return scan.gettoken(token) != tkEof || !token.text.empty();
}

// The position of the next byte, counted by the rules for positions.
struct cCount {
    void pass(std::string const &text) {
        for (char const c : text) {
            offset++;
            if (c == '\n')
                line++, column = 0;
            else
                column++, position++;
        }
    }
    std::size_t offset = 0;
    unsigned line = 1;
    unsigned column = 0;
    unsigned position = 0;
};

cTokens all_tokens(std::string const &text) {
    std::istringstream in(text);
    test::Scan scan(in);
    scan.return_all(true);
    cTokens tokens;
    cCount count;
    for (cAttrLiteral token; next(scan, token);) {
        if (text.compare(count.offset, token.text.size(), token.text) != 0 || token.text.empty())
            fuzz::stop("a token that is not in the text", text, shown({token}));
        if (token.line != count.line || token.column != count.column ||
            token.position != count.position || token.outer_line != count.line ||
            token.outer_column != count.column)
            fuzz::stop("a token at a wrong position", text, shown({token}));
        count.pass(token.text);
        if (scan.lineno() != count.line || scan.column() != count.column ||
            scan.position() != count.position)
            fuzz::stop("wrong counters after a token", text, shown({token}));
        tokens.push_back(token);
    }
    std::string const rest = text.substr(count.offset);
    std::size_t const begin = rest.find_first_not_of(" \t\r\n");
    bool const open_comment = begin != std::string::npos && rest.compare(begin, 2, "/*") == 0 &&
                              rest.find("*/", begin + 2) == std::string::npos;
    if (!rest.empty() && !open_comment) fuzz::stop("text that is not in a token", text, rest);
    return tokens;
}

// Positions count from the start, also in a stream that cannot report its position.
cTokens bare_tokens(std::istream &in, unsigned push_back_each) {
    test::Scan scan(in);
    unsigned const start = scan.position();
    cTokens tokens;
    for (cAttrLiteral token; next(scan, token); tokens.push_back(token)) {
        if (push_back_each == 0 || tokens.size() % push_back_each != 0) continue;
        cAttrLiteral again;
        scan.ungettoken();
        if (!next(scan, again) || !same(again, token))
            fuzz::stop("a different token after pushing back", shown({token}), shown({again}));
    }
    for (cAttrLiteral &token : tokens) token.position -= start;
    return tokens;
}

// Goes back to a token before the first line end; going back over a line end is known to be
// inexact.
void go_back(std::string const &text, cTokens const &bare, std::size_t to) {
    if (to >= bare.size() || bare[to].line != 1) return;
    std::istringstream in(text);
    test::Scan scan(in);
    cAttrLiteral token;
    while (next(scan, token)) continue;
    scan.resettoken(bare[to]);
    cTokens rest;
    while (next(scan, token)) rest.push_back(token);
    expect_same("different tokens after going back",
                cTokens(bare.begin() + static_cast<std::ptrdiff_t>(to), bare.end()), rest);
}

void check_alone(cAttrLiteral const &token) {
    std::istringstream in(token.text);
    test::Scan scan(in);
    scan.return_all(true);
    cAttrLiteral alone;
    if (!next(scan, alone) || alone.code != token.code || alone.text != token.text)
        fuzz::stop("a different token when scanned alone", shown({token}), shown({alone}));
}

void check_value(cAttrLiteral const &token) {
    objref value;
    bool const made = cat::read_stdtype(token.code, token.text.c_str(), value);
    if (made && (!value || token.code < tkInt || token.code > tkIdent))
        fuzz::stop("a value from a token that is not a value", shown({token}), "");
    bool const is_text = token.code == tkString || token.code == tkIdent;
    if (is_text && (!made || &value->type() != &cat::type_string()))
        fuzz::stop("not a string", shown({token}), "");
}

void beside_former(std::string const &text, unsigned choice) {
    auto const pieces = [choice](std::string const &t) {
        return test::piece_input(t, choice % 40);
    };
    std::vector<std::pair<test::cMakeInput, test::cMakeInput>> const pairs = {
        {test::string_input, test::string_input},
        {test::memory_input, test::string_input},
        {pieces, pieces}};
    for (auto const &[present, before] : pairs) {
        std::minstd_rand random(choice + 1);
        std::string const difference =
            test::compare_with_former(present(text), before(text), random, choice % 2 == 0);
        if (!difference.empty())
            fuzz::stop("a difference from the former scanner", text, difference);
    }
}

void scan_text(std::string const &text, unsigned choice) {
    beside_former(text, choice);
    cTokens const all = all_tokens(text);
    cTokens bare;
    for (cAttrLiteral const &token : all)
        if (!is_filler(token)) bare.push_back(token);
    std::istringstream whole(text);
    expect_same("different tokens without white space", bare, bare_tokens(whole, choice % 4));
    test::PieceBuf pieces(text, choice % 8);
    std::istream in(&pieces);
    expect_same("different tokens from pieces", bare, bare_tokens(in, 0));
    go_back(text, bare, choice / 8);
    for (cAttrLiteral const &token : bare) check_value(token);
    if (text.size() > 200) return;
    for (cAttrLiteral const &token : all) check_alone(token);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    if (size == 0) return 0;
    fuzz::cInput const input;
    scan_text(std::string(reinterpret_cast<char const *>(data) + 1, size - 1), *data);
    return 0;
}
