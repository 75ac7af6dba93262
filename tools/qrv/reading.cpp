#include "reading.h"

#include "output.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/cattrscan.h"
#include "qrv/text/cfile.h"
#include "qrv/text/creadreport.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

namespace {

constexpr size_t longest_path = 120;

// Tokens as the scanner gives them, comments and blanks too.
class cTokens : public cAttrScan {
  public:
    explicit cTokens(std::istream &is) : cAttrScan(is, false) {}
    int next(cAttrLiteral &token) const { return gettoken(token); }
};

cPlace place_of(cAttrLiteral const &token) { return {token.line, token.column + 1}; }

bool is_white(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The place behind `count` characters that begin at a place.
cPlace behind(cPlace place, std::string const &text, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (text[i] == '\n')
            ++place.line, place.column = 1;
        else
            ++place.column;
    }
    return place;
}

size_t offset_of(std::string const &bytes, unsigned line, unsigned column) {
    size_t at = 0;
    for (unsigned n = 1; n < line && at != std::string::npos; ++n) {
        size_t const end = bytes.find('\n', at);
        at = end == std::string::npos ? bytes.size() : end + 1;
    }
    return std::min(at + column, bytes.size());
}

cComment comment_of(std::string const &text, cPlace start) {
    size_t white = 0;
    while (white < text.size() && is_white(text[white])) ++white;
    cComment comment{text.substr(white), behind(start, text, white)};
    cat::rmchar(comment.text, '\r');
    return comment;
}

// What is between the last token and the end: a comment that isn't closed gives no token.
void add_open_comment(std::string const &rest, cPlace start, std::vector<cComment> &comments) {
    cComment const last = comment_of(rest, start);
    if (last.text.starts_with("/*")) comments.push_back(last);
}

// Before the value: all comments, then the line ends that follow them, one or two.
std::string head_of(std::string const &bytes) {
    std::istringstream is(bytes);
    cTokens tokens(is);
    tokens.return_com(true);
    cAttrLiteral token;
    size_t end = 0;
    while (tokens.next(token) == tkComment)
        end = offset_of(bytes, tokens.lineno(), tokens.column());
    if (end == 0 || token.code == tkEof) return "";
    size_t const value = offset_of(bytes, token.line, token.column);
    std::string head = bytes.substr(0, end);
    cat::rmchar(head, '\r');
    head.erase(0, head.find('/'));
    size_t line_ends = 0;
    for (size_t i = end; i < value; ++i) line_ends += bytes[i] == '\n';
    return head + (line_ends > 1 ? "\n\n" : "\n");
}

std::string told(cat::ReadError const &error) {
    std::string text = error.text;
    if (error.path.size() > longest_path) {
        size_t const at = text.find(error.path);
        if (at != std::string::npos) text.replace(at, error.path.size(), shortened(error.path));
    }
    if (error.code == 0) return text;
    char code[16];
    std::snprintf(code, sizeof code, " [0x%08x]", error.code);
    return text + code;
}

bool is_unclosed(std::string const &text) {
    return text.find(" is not closed by '") != std::string::npos ||
           text.starts_with("Closing symbol is missed");
}

void tell(cat::ReadReport const &report, cPlace end, cMessages &messages) {
    for (cat::ReadError const &error : report.entries()) {
        cPlace const place{error.line, error.column};
        if (error.line == 0)
            messages.error(told(error));
        else
            messages.error(place, told(error));
        if (is_unclosed(error.text)) messages.note(end, "the text ends here");
    }
    messages.more(report.dropped());
}

} // namespace

std::string shortened(std::string const &text) {
    if (text.size() <= longest_path) return text;
    size_t const half = longest_path / 2 - 3;
    return text.substr(0, half) + " ... " + text.substr(text.size() - half);
}

void cMessages::add(std::string const &line) { lines_ += line + "\n"; }

void cMessages::error(std::string const &text) {
    last_shown_ = room();
    if (!last_shown_) return more(1);
    ++count_;
    add(name_ + ": error: " + text);
}

void cMessages::error(cPlace place, std::string const &text) {
    last_shown_ = room();
    if (!last_shown_) return more(1);
    ++count_;
    add(name_ + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) +
        ": error: " + text);
}

void cMessages::note(cPlace place, std::string const &text) {
    if (last_shown_)
        add(name_ + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) +
            ": note: " + text);
}

std::string cMessages::text() const {
    if (beyond_ == 0) return lines_;
    return lines_ + name_ + ": error: " + std::to_string(beyond_) + " more\n";
}

bool read_bytes(std::string const &name, std::string &bytes, cMessages &messages) {
    bool const standard = name == "-";
    int const descriptor = standard ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    int error = descriptor < 0 ? errno : 0;
    char buffer[65536];
    while (error == 0) {
        ssize_t const count = ::read(descriptor, buffer, sizeof buffer);
        if (count == 0) break;
        if (count > 0)
            bytes.append(buffer, static_cast<size_t>(count));
        else if (errno != EINTR)
            error = errno;
    }
    if (descriptor >= 0 && !standard) ::close(descriptor);
    if (error != 0) messages.error(reason("cannot read", error));
    return error == 0;
}

cReading read_value(std::string const &bytes, cMessages &messages) {
    cReading reading;
    reading.head = head_of(bytes);
    std::istringstream is(bytes);
    cTokens scan(is);
    scan.set_filename(messages.name().c_str());
    scan.return_com(true);
    cat::ReadReport report(static_cast<size_t>(1000000));
    int delim = 0;
    int const result = scan.scan_obj(reading.value, &delim);
    cAttrLiteral token = scan.token();
    bool const open_end = result == 0 && (delim == '}' || delim == ']' || delim == '>') &&
                          !reading.value->is_container();
    if (open_end || delim == '=') reading.behind.push_back(place_of(token));
    while (reading.behind.empty() && scan.next(token) != tkEof)
        if (token.code != tkComment) reading.behind.push_back(place_of(token));
    tell(report, behind({}, bytes, bytes.size()), messages);
    reading.clean = report.empty() && scan.errcount() == 0;
    if (result != 0) reading.value = nullptr;
    if (reading.clean && !reading.value) messages.error("there is no value in it");
    return reading;
}

std::vector<cComment> comments_of(std::string const &bytes) {
    std::vector<cComment> comments;
    std::istringstream is(bytes);
    cTokens tokens(is);
    tokens.return_com(true);
    cAttrLiteral token;
    unsigned line = 1, column = 0;
    for (int code = tokens.next(token); code != tkEof; code = tokens.next(token)) {
        if (code == tkComment) comments.push_back(comment_of(token.text, place_of(token)));
        line = tokens.lineno();
        column = tokens.column();
    }
    add_open_comment(bytes.substr(offset_of(bytes, line, column)), {line, column + 1}, comments);
    return comments;
}

std::string dump_of(std::string const &bytes, bool all) {
    std::istringstream is(bytes);
    cTokens tokens(is);
    tokens.return_all(all);
    std::string dump;
    cAttrLiteral token;
    do {
        tokens.next(token);
        dump += "TOKEN:" + std::to_string(token.code) + ":" + std::to_string(token.position) + ":" +
                std::to_string(token.line) + ":" + std::to_string(token.column) + " '" +
                token.text + "'\n";
    } while (token.code != tkEof);
    return dump;
}
