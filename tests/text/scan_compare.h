#pragma once
// Runs the present scanner and its former version with the same text and the same actions, each on
// a separate stream. After each action, it compares the token, its positions, the running counters,
// and the state of the streams.

#include "tests/text/former_scanner.h"
#include "tests/text/scan_support.h"
#include "text/scan/cmemory_stream.h"

#include <functional>
#include <memory>
#include <random>
#include <sstream>
#include <string>

namespace test {

// A stream and its buffer.
struct cInput {
    std::unique_ptr<std::streambuf> buffer;
    std::unique_ptr<std::istream> stream;
};
using cMakeInput = std::function<cInput(std::string const &text)>;

inline cInput string_input(std::string const &text) {
    return {nullptr, std::make_unique<std::istringstream>(text)};
}
// The text must outlive this object.
inline cInput memory_input(std::string const &text) {
    return {nullptr, std::make_unique<cMemoryStream>(text)};
}
inline cInput piece_input(std::string const &text, std::size_t piece) {
    cInput input{std::make_unique<PieceBuf>(text, piece), nullptr};
    input.stream = std::make_unique<std::istream>(input.buffer.get());
    return input;
}

// The state that another reader of the stream would see.
inline std::string state_of(std::istream &in) {
    auto const place = in.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in);
    return std::to_string(in.rdstate()) + " at " +
           std::to_string(static_cast<std::streamoff>(place)) + " gcount " +
           std::to_string(in.gcount()) + " ready " + std::to_string(in.rdbuf()->in_avail());
}

template <class Scanner, class Token>
std::string state_of(Scanner const &scan, Token const &token) {
    std::string state = std::to_string(token.code) + "'" + std::string(token.text) + "'";
    for (unsigned const n : {token.line, token.column, token.position, token.outer_line,
                             token.outer_column, scan.lineno(), scan.column(), scan.position()})
        state += " " + std::to_string(n);
    return state;
}

// Both scanners, side by side.
class cBeside {
  public:
    cBeside(cInput present, cInput former)
        : present_(std::move(present)), former_(std::move(former)), now_(*present_.stream),
          then_(*former_.stream) {}

    // Performs the action with the number `choice`; all numbers from 17 on read a token. Returns
    // the difference after the action, or "".
    std::string act(unsigned choice, unsigned number) {
        switch (choice) {
        case 0:
            now_.ungettoken();
            then_.ungettoken();
            return difference("ungettoken()");
        case 1:
            now_.ungettoken(then_.token());
            then_.ungettoken(then_.token());
            return difference("ungettoken(token)");
        case 2:
            now_.resettoken();
            then_.resettoken();
            return difference("resettoken()");
        case 3:
            now_.flush();
            then_.flush();
            return difference("flush()");
        case 4:
        case 5:
            now_.return_ws(number % 2 != 0);
            then_.return_ws(number % 2 != 0);
            return difference("return_ws");
        case 6:
        case 7:
            now_.return_com(number % 2 != 0);
            then_.return_com(number % 2 != 0);
            return difference("return_com");
        case 8:
            return on_both("get", [](std::istream &in) { in.get(); });
        case 9:
            return on_both("ignore", [=](std::istream &in) { in.ignore(number % 8); });
        case 10:
            return on_both("unget", [](std::istream &in) { in.unget(); });
        case 11:
            return on_both("putback",
                           [=](std::istream &in) { in.putback(static_cast<char>(number)); });
        case 12:
            return on_both("seek", [=](std::istream &in) {
                in.clear();
                in.seekg(static_cast<int>(number % 32) - 16, std::ios::cur);
            });
        case 13:
            return on_both("clear", [](std::istream &in) { in.clear(); });
        case 14:
            return on_both("eofbit", [](std::istream &in) { in.setstate(std::ios::eofbit); });
        case 15:
            literal_ = &now_.token();
            return difference("token()");
        case 16:
            now_.outer_places({{number % 7, 9, 90}, {number % 7 + 5, 20, 200}});
            then_.outer_places({{number % 7, 9, 90}, {number % 7 + 5, 20, 200}});
            return difference("outer_places");
        default:
            break;
        }
        then_.gettoken();
        if (number % 3 == 0)
            now_.gettoken();
        else
            now_.next_token();
        return difference("gettoken");
    }

    // Returns whether the former scanner has reached the end of its input.
    bool at_end() const { return then_.token().code == tkEof && then_.token().text.empty(); }

  private:
    template <class Act> std::string on_both(char const *what, Act const &act) {
        for (std::istream *const in : {present_.stream.get(), former_.stream.get()}) {
            act(*in);
            if (in->bad()) in->clear(); // otherwise the scanner would end the process
        }
        return difference(what);
    }

    std::string difference(char const *act) {
        std::string const then = state_of(then_, then_.token()) + " | " + state_of(*former_.stream);
        std::string const now = state_of(now_, now_.current()) + " | " + state_of(*present_.stream);
        if (now != then) return std::string(act) + "\n  is  " + now + "\n  was " + then;
        if (literal_ && state_of(now_, *literal_) != state_of(then_, then_.token()))
            return std::string(act) + ": token() is not the current one";
        return {};
    }

    cInput present_;
    cInput former_;
    Scan now_;
    former::cScanner then_;
    cAttrLiteral const *literal_ = nullptr; // token(), once it was called
};

// Reads text, with random actions if `acts`. Returns the first difference, or "".
template <class Random>
std::string compare_with_former(cInput present, cInput former, Random &random, bool acts) {
    cBeside beside(std::move(present), std::move(former));
    for (int ends = 0, i = 0; ends < 3 && i < 2000; ++i) {
        auto const choice = static_cast<unsigned>(random());
        std::string const difference = beside.act(acts ? choice % 64 : 63, choice / 64);
        if (!difference.empty()) return "act " + std::to_string(i) + ": " + difference;
        if (beside.at_end()) ++ends;
    }
    return {};
}

} // namespace test
