#pragma once
// Shared by the tests of the scanner and of files: a scanner whose tokens a test can read, tokens
// as one string, and stream buffers that count.

#include "qrv/text/scan/cattrscanner.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

namespace test {

struct Scan : cAttrScanner {
    using cAttrScanner::cAttrScanner;
    using cAttrScanner::gettoken;
    using cAttrScanner::read_enclosed;
};

// "Int(-5)" or, for a single character, "45(-)".
inline std::string shown(cAttrLiteral const &token) {
    char const *name = cat::token_name(token.code);
    return (name ? std::string(name + 2) : std::to_string(token.code)) + "(" + token.text + ")";
}

// All tokens up to the end of input, with a blank between them.
inline std::string rest_of(Scan const &scan) {
    std::string all;
    cAttrLiteral token;
    while (scan.gettoken(token) != tkEof || !token.text.empty())
        all += (all.empty() ? "" : " ") + shown(token);
    return all;
}

inline std::string tokens_of(std::string const &text, bool with_space_and_comments = false) {
    std::istringstream in(text);
    Scan scan(in);
    scan.return_all(with_space_and_comments);
    return rest_of(scan);
}

// "line:column:position" of a token.
inline std::string place(cAttrLiteral const &t) {
    return std::to_string(t.line) + ":" + std::to_string(t.column) + ":" +
           std::to_string(t.position);
}

// The same for the running counters.
inline std::string running(Scan const &s) {
    return std::to_string(s.lineno()) + ":" + std::to_string(s.column()) + ":" +
           std::to_string(s.position());
}

struct Input {
    explicit Input(std::string const &text) : in(text), scan(in) {}
    // The next token as a string.
    std::string next() {
        scan.gettoken();
        return shown(scan.token());
    }
    std::istringstream in;
    Scan scan;
};

// Delivers its text in pieces of this size; with 0 it has no get area, so that every character is
// requested separately. Counts the characters delivered.
class PieceBuf : public std::streambuf {
  public:
    explicit PieceBuf(std::string text, std::size_t piece = 0)
        : text_(std::move(text)), piece_(piece) {}

    std::size_t taken() const { return given_ - static_cast<std::size_t>(egptr() - gptr()); }

  protected:
    int underflow() override {
        if (given_ == text_.size()) return traits_type::eof();
        if (piece_ == 0) return traits_type::to_int_type(text_[given_]);
        std::size_t const n = std::min(piece_, text_.size() - given_);
        char *const first = text_.data() + given_;
        setg(first, first, first + n);
        given_ += n;
        return traits_type::to_int_type(*first);
    }
    int uflow() override {
        if (piece_ != 0) return std::streambuf::uflow();
        return given_ == text_.size() ? traits_type::eof()
                                      : traits_type::to_int_type(text_[given_++]);
    }

  private:
    std::string text_;
    std::size_t piece_;
    std::size_t given_ = 0;
};

} // namespace test
