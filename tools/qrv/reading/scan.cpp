#include "tools/qrv/reading/scan.h"

#include "qrv/text/file/cfile.h"
#include "qrv/text/scan/cattrscanner.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

// Tokens as the scanner gives them.
class cTokens : public cAttrScanner {
  public:
    explicit cTokens(std::istream &is) : cAttrScanner(is) {}
    bool next(cAttrLiteral &token) const { // false at the end
        gettoken(token);
        return token.code != tkEof || !token.text.empty(); // a byte 0 has the code of the end
    }
};

bool is_white(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string byte_text(char byte) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%02x", static_cast<unsigned char>(byte));
    return std::string("byte ") + text;
}

// Goes over all tokens, so that every byte but those of an open comment is in one.
class cSurveyor {
  public:
    explicit cSurveyor(std::string const &bytes) : bytes_(bytes) {}
    cSurvey survey() {
        scan([] { return false; });
        size_t const comment = bytes_.find("/*", offset_); // one that is open gives no token
        if (comment != std::string::npos)
            found_.open_comment = behind(end_, bytes_.substr(offset_), comment - offset_);
        return std::move(found_);
    }
    std::string head() {
        scan([this] { return started_; });
        return std::move(head_);
    }

  private:
    template <class Done> void scan(Done const &done) {
        std::istringstream is(bytes_);
        cTokens tokens(is);
        tokens.return_all(true);
        cAttrLiteral token;
        while (!done() && tokens.next(token)) {
            take(token);
            offset_ += token.text.size();
            end_ = behind({token.line, token.column + 1}, token.text, token.text.size());
        }
    }

    void take(cAttrLiteral const &token) {
        cPlace const place{token.line, token.column + 1};
        if (token.code == tkComment) return add_comment(token.text, place);
        if (token.code == tkSpace) return;
        if (!started_) end_head();
        started_ = true;
        follow_reference(token);
        if (token.code <= tkEof)
            add_stray(token.text, place);
        else if (token.code == tkString && token.text.find('\0') != std::string::npos)
            found_.strays.push_back({behind(place, token.text, token.text.find('\0')),
                                     byte_text('\0') + " in a string"});
    }

    // #cRef, then whatever stands up to the bracket, and perhaps one separator.
    void follow_reference(cAttrLiteral const &token) {
        bool const separator = token.code == ';' || token.code == ',';
        if (token.code == tkConst && token.text == "#cRef")
            reference_ = cReference::open;
        else if (reference_ == cReference::open && token.code == ')')
            reference_ = cReference::closed;
        else if (reference_ == cReference::closed && !separator)
            reference_ = cReference::none;
    }

    void add_comment(std::string const &text, cPlace place) {
        size_t white = 0;
        while (white < text.size() && is_white(text[white])) ++white;
        cComment comment{text.substr(white), behind(place, text, white), offset_ + white,
                         reference_ == cReference::closed};
        cat::rmchar(comment.text, '\r');
        found_.comments.push_back(std::move(comment));
        if (!started_) head_end_ = offset_ + text.size();
    }

    void add_stray(std::string const &text, cPlace place) {
        if (offset_ != stray_end_)
            found_.strays.push_back(
                {place, byte_text(text[0]) + " outside of strings and comments"});
        stray_end_ = offset_ + text.size();
    }

    // Line ends of two characters become one; other carriage returns keep their place.
    void end_head() {
        if (found_.comments.empty()) return;
        size_t const start = found_.comments.front().offset;
        for (size_t i = start; i < head_end_; ++i)
            if (bytes_[i] != '\r' || bytes_[i + 1] != '\n') head_ += bytes_[i];
        size_t line_ends = 0;
        for (size_t i = head_end_; i < offset_; ++i) line_ends += bytes_[i] == '\n';
        head_ += line_ends == 0 ? " " : line_ends == 1 ? "\n" : "\n\n";
    }

    std::string const &bytes_;
    cSurvey found_;
    size_t offset_ = 0; // behind the last token
    cPlace end_;        // the same as a place
    std::string head_;
    size_t head_end_ = 0;
    size_t stray_end_ = std::string::npos;
    bool started_ = false; // a token of the value was there
    enum class cReference { none, open, closed } reference_ = cReference::none;
};

} // namespace

cSurvey survey(std::string const &bytes) { return cSurveyor(bytes).survey(); }

std::string head_of(std::string const &bytes) { return cSurveyor(bytes).head(); }

std::string numbered(std::string const &bytes, std::vector<cComment> const &comments,
                     size_t first) {
    std::string text;
    size_t done = 0;
    for (size_t i = 0; i < comments.size(); ++i) {
        size_t const next = comments[i].offset + 2; // behind "//"
        text.append(bytes, done, next - done);
        text += std::to_string(first + i) + ":";
        done = next;
    }
    return text.append(bytes, done);
}

std::map<size_t, size_t> numbers_in(std::string const &bytes) {
    std::map<size_t, size_t> numbers;
    for (cComment const &comment : survey(bytes).comments) {
        char const *const start = comment.text.c_str() + 2;
        char *end = nullptr;
        size_t const number = std::strtoul(start, &end, 10);
        if (end != start && *end == ':') ++numbers[number];
    }
    return numbers;
}

bool dump(std::istream &is, bool all, std::function<bool(std::string const &)> const &put) {
    constexpr size_t enough = 65536; // for one call
    cTokens tokens(is);
    tokens.return_all(all);
    std::string lines;
    cAttrLiteral token;
    for (bool more = true; more;) {
        more = tokens.next(token);
        lines += "TOKEN:" + std::to_string(token.code) + ":" + std::to_string(token.position) +
                 ":" + std::to_string(token.line) + ":" + std::to_string(token.column) + " '" +
                 token.text + "'\n";
        if (more && lines.size() < enough) continue;
        if (!put(lines)) return false;
        lines.clear();
    }
    return true;
}
