// Tokens of generated text: codes, strings, positions, counters and the position of the stream
// after each, with tokens put back and with the stream read and moved in between.

#include "qrv/text/scan/cattrscanner.h"

#include "tests/reference/sources.h"
#include "tests/reference/texts.h"
#include "tests/reference/transcript.h"
#include "tests/reference/world.h"

#include <optional>
#include <vector>

namespace reference {

namespace {

class cTokens : public cAttrScanner {
  public:
    using cAttrScanner::cAttrScanner;
    using cAttrScanner::gettoken;
};

std::string shown_token(cAttrLiteral const &token) {
    return std::to_string(token.code) + " '" + shown(token.text) + "' " +
           std::to_string(token.line) + ":" + std::to_string(token.column) + " @" +
           std::to_string(token.position) + " outer " + std::to_string(token.outer_line) + ":" +
           std::to_string(token.outer_column);
}

std::string shown_stream(std::istream &is) {
    auto const state = is.rdstate();
    std::string text = " stream " + std::to_string(static_cast<long>(is.tellg())) + " state " +
                       std::to_string(static_cast<int>(state));
    is.clear(state);
    return text;
}

std::string counters(cAttrScanner const &scanner) {
    return " at " + std::to_string(scanner.position()) + " " + std::to_string(scanner.lineno()) +
           ":" + std::to_string(scanner.column());
}

std::vector<cAttrPlace> some_places() {
    std::vector<cAttrPlace> places;
    size_t offset = 0;
    for (unsigned n = world().input.below(5); n; --n) {
        places.push_back({offset, 1 + world().input.below(50), world().input.below(50)});
        offset += world().input.below(20);
    }
    return places;
}

class cScanning {
  public:
    explicit cScanning(std::istream &is) : is_(is), scanner_(is) {}

    void run() {
        if (world().input.one_in(4)) scanner_.return_all(true);
        if (world().input.one_in(30)) scanner_.setdump(true);
        if (world().input.one_in(5)) scanner_.outer_places(some_places());
        bool const steady = world().input.one_in(2);
        for (unsigned i = 0, ends = 0; i < 300 && ends < 3; ++i) {
            while (!steady && world().input.one_in(4)) disturb();
            cAttrLiteral token;
            int const code = world().input.one_in(3) && second_ ? second_->gettoken(token)
                                                                : scanner_.gettoken(token);
            say(std::to_string(code) + " = " + shown_token(token) + counters(scanner_) +
                shown_stream(is_));
            if (code == 0) ++ends;
            if (world().input.one_in(6)) kept_ = token;
        }
    }

  private:
    void disturb() {
        switch (world().input.below(14)) {
        case 0:
        case 1:
            scanner_.ungettoken();
            return say("put back");
        case 2:
            scanner_.ungettoken(kept_);
            return say("put back " + shown_token(kept_));
        case 3:
            scanner_.resettoken();
            return say("back to the token" + counters(scanner_) + shown_stream(is_));
        case 4:
            scanner_.resettoken(kept_);
            return say("back to " + shown_token(kept_) + shown_stream(is_));
        case 5: {
            unsigned const position = world().input.below(40);
            scanner_.reset(position, 1 + world().input.below(5), world().input.below(9));
            return say("back to " + std::to_string(position) + shown_stream(is_));
        }
        case 6:
            scanner_.flush();
            return say("flush" + counters(scanner_) + shown_stream(is_));
        case 7:
            scanner_.return_ws(world().input.one_in(2));
            return;
        case 8:
            scanner_.return_com(world().input.one_in(2));
            return;
        case 9:
            say("character " + std::to_string(is_.get()) + shown_stream(is_));
            return;
        case 10:
            if (world().input.one_in(2))
                second_.reset();
            else
                second_.emplace(is_);
            return;
        case 11: {
            cSetTmp<bool> keep;
            scanner_.return_ws(true, &keep);
            say("with space " + std::to_string(scanner_.gettoken()) + " " +
                shown_token(scanner_.token()));
            return;
        }
        case 12: {
            cSetTmp<bool> keep;
            scanner_.return_com(true, &keep);
            say("with comments " + std::to_string(scanner_.gettoken()) + " " +
                shown_token(scanner_.token()));
            return;
        }
        default:
            say("last " + shown_token(scanner_.token()) + (scanner_.alone() ? " alone" : "") +
                " lexers " + std::to_string(cAttrLexer::living()));
            return;
        }
    }

    std::istream &is_;
    cTokens scanner_;
    std::optional<cTokens> second_;
    cAttrLiteral kept_;
};

// The scanner with its own input, which counts the requested characters.
class cEngine : public attrFlexLexer {
  public:
    explicit cEngine(std::string text) : text_(std::move(text)) {}

    void run() {
        for (int i = 0; i < 300; ++i) {
            size_t const before = at_;
            rule const found = match();
            say("rule " + std::to_string(found) + " '" + shown(std::string(matched())) + "' took " +
                std::to_string(at_ - before));
            consume();
            if (found == r_end) break;
            if (found == r_block_comment) {
                bool const closed = match_comment();
                say("comment '" + shown(std::string(matched())) + "' " + (closed ? "" : "open"));
                consume();
            }
        }
    }

  protected:
    int LexerInput(char *to, int room) override {
        if (at_ >= text_.size() || room <= 0) return 0;
        *to = text_[at_++];
        return 1;
    }

  private:
    std::string text_;
    size_t at_ = 0;
};

} // namespace

void scan_mode() {
    cRandom &random = world().input;
    cTexts texts(random);
    std::string text = texts.text();
    if (random.one_in(2)) text = texts.mutated(text);
    say("text " + shown(text));
    if (random.one_in(8)) return cEngine(text).run();
    cSource source(text, random.below(4));
    cScanning(*source).run();
    say("lexers " + std::to_string(cAttrLexer::living()) + shown_stream(*source));
}

} // namespace reference
