#include "tools/qrv/reading/scan.h"

#include "qrv/text/file/cfile.h"
#include "qrv/text/scan/cattrscanner.h"
#include "tools/qrv/output/characters.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace {

std::string byte_text(char byte) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%02x", static_cast<unsigned char>(byte));
    return std::string("byte ") + text;
}

// Walks over all tokens. Every byte except white space and an unclosed comment is in a token.
class cScanWalk {
  public:
    explicit cScanWalk(cTextTokens const &tokens) : tokens_(tokens), bytes_(tokens.bytes()) {}

    cTextScan run() {
        for (cTextToken const &token : tokens_.all()) take(token, std::string(tokens_.text(token)));
        size_t const comment = bytes_.find("/*", offset_); // an unclosed one, which is not a token
        if (comment != std::string::npos)
            found_.open_comment = place_after(end_, bytes_.substr(offset_), comment - offset_);
        return std::move(found_);
    }

  private:
    void take(cTextToken const &token, std::string const &text) {
        offset_ = token.offset;
        if (token.code == tkComment) {
            add_comment(text, token.place);
        } else if (token.code <= tkEof) {
            add_stray(text, token.place);
        } else if (token.code == tkString && text.find('\0') != std::string::npos) {
            found_.strays.push_back({place_after(token.place, text, text.find('\0')),
                                     byte_text('\0') + " in a string"});
        }
        offset_ += token.size;
        end_ = place_after(token.place, text, text.size());
    }

    void add_comment(std::string const &text, cPlace place) {
        size_t white = 0;
        while (white < text.size() && is_white(text[white])) ++white;
        cComment comment{text.substr(white), place_after(place, text, white)};
        cat::rmchar(comment.text, '\r');
        found_.comments.push_back(std::move(comment));
    }

    void add_stray(std::string const &text, cPlace place) {
        if (offset_ != stray_end_)
            found_.strays.push_back(
                {place, byte_text(text[0]) + " outside of strings and comments"});
        stray_end_ = offset_ + text.size();
    }

    cTextTokens const &tokens_;
    std::string const &bytes_;
    cTextScan found_;
    size_t offset_ = 0; // after the last token
    cPlace end_;        // this offset as a position
    size_t stray_end_ = std::string::npos;
};

} // namespace

cTextScan scan_of(cTextTokens const &tokens) { return cScanWalk(tokens).run(); }

cTextScan scan_of(std::string const &bytes) { return scan_of(cTextTokens(bytes)); }

// Line ends of two characters become one character; other carriage returns stay.
std::string head_of(std::string const &bytes, cat::SourceMap const &map) {
    constexpr char const *white = " \t\r\n";
    size_t begin = bytes.npos, end = 0, next = bytes.find_first_not_of(white);
    for (cat::SourceComment const &comment : map.comments()) {
        if (comment.span.begin != next) break;
        begin = std::min(begin, next);
        end = comment.span.end;
        if (bytes[next + 1] == '/')
            while (end < bytes.size() && bytes[end] == '\r') ++end;
        next = bytes.find_first_not_of(white, end);
    }
    if (end == 0 || next == bytes.npos) return "";
    std::string head;
    for (size_t i = begin; i < end; ++i)
        if (bytes[i] != '\r' || bytes[i + 1] != '\n') head += bytes[i];
    auto const line_ends = std::count(&bytes[end], &bytes[next], '\n');
    return head + (line_ends == 0 ? " " : line_ends == 1 ? "\n" : "\n\n");
}

// Does not copy long text, since the lexer already has it in memory.
bool dump(std::istream &is, bool all, std::function<bool(std::string_view)> const &put) {
    constexpr size_t enough = 65536; // bytes for one call of `put`
    cAttrScanner const tokens(is);
    tokens.return_all(all);
    std::string lines;
    for (bool more = true; more;) {
        cToken const &token = tokens.next_token();
        more = !cat::is_end(token);
        lines += "TOKEN:" + std::to_string(token.code) + ":" + std::to_string(token.position) +
                 ":" + std::to_string(token.line) + ":" + std::to_string(token.column) + " '";
        if (token.text.size() < enough) {
            lines += token.text;
        } else {
            if (!put(lines) || !put(token.text)) return false;
            lines.clear();
        }
        lines += "'\n";
        if (more && lines.size() < enough) continue;
        if (!put(lines)) return false;
        lines.clear();
    }
    return true;
}
