#include "tools/qrv/reading/reading.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/file/creadtext.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/progress.h"
#include "tools/qrv/reading/input.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/brackets.h"
#include "tools/qrv/rules/hints.h"
#include "tools/qrv/rules/later.h"
#include "tools/qrv/rules/mistakes.h"
#include "tools/qrv/rules/rules.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <tuple>
#include <vector>

namespace {

// Reads one value, and the tokens after it.
class cFileScan : public cAttrScan {
  public:
    explicit cFileScan(std::istream &is) : cAttrScan(is, false) { return_com(true); }

    int read(objref &value) {
        result_ = scan_obj(value, &delim_);
        return result_;
    }

    // The position at which reading ended: the start of the token after the value if the reader has
    // read that token, else the next character.
    cPlace end() const {
        return took_next_token() ? place_of(token()) : cPlace{lineno(), column() + 1};
    }
    // The offset of the end, or 0 if unknown: comments may precede the token after the value.
    size_t end_offset() const { return took_next_token() ? 0 : passed(); }

    std::optional<cPlace> after() {
        cAttrLiteral next = token();
        if (!took_next_token()) next = following_token();
        if (!cat::is_separator(delim_) && cat::is_separator(next.code)) next = following_token();
        return cat::is_end(next) ? std::nullopt : std::optional(place_of(next));
    }

  private:
    // Has the reader read a token after the value that is not a separator?
    bool took_next_token() const {
        return result_ == 0 && (delim_ == '}' || delim_ == ']' || delim_ == '>' || delim_ == '=' ||
                                delim_ <= tkEof);
    }

    // A byte that no value can hold ends a reading, but is a token too.
    cAttrLiteral following_token() {
        return_com(false); // comments are only needed for a cat::SourceMap
        gettok();
        return cAttrLiteral(current());
    }

    int result_ = -1;
    int delim_ = 0;
};

// This many errors are enough to see which follow from which; further ones are only counted.
constexpr size_t errors_kept = 10000;

// Text as a stream. If progress is shown, the stream gets the text piece by piece.
class cText {
  public:
    cText(std::string const &name, std::string const &bytes) : progress_(name, bytes.size()) {
        if (!progress_.is_shown()) {
            stream_ = in_place(bytes);
            return;
        }
        pieces_.emplace([this, rest = std::string_view(bytes)]() mutable {
            constexpr size_t piece_size = 1 << 20;
            std::string_view const piece = rest.substr(0, piece_size);
            rest.remove_prefix(piece.size());
            progress_.add(piece.size());
            return piece;
        });
        stream_ = std::make_unique<std::istream>(&*pieces_);
    }
    cText(cText const &) = delete;
    cText &operator=(cText const &) = delete;
    ~cText() = default;

    std::istream &stream() { return *stream_; }

  private:
    // Reads the bytes without copying them, if the C++ library can; else copies them.
    static std::unique_ptr<std::istream> in_place(std::string const &bytes) {
        auto stream = std::make_unique<std::istringstream>();
        auto const size = static_cast<std::streamsize>(bytes.size());
        stream->rdbuf()->pubsetbuf(const_cast<char *>(bytes.data()), size); // never written to
        if (stream->rdbuf()->in_avail() != size) stream->str(bytes);
        return stream;
    }

    cProgress progress_;
    std::optional<cPieces> pieces_;
    std::unique_ptr<std::istream> stream_;
};

// Ignores bytes after the end, but not an unclosed comment, which is always reported.
std::vector<cUnread> unread(cTextScan const &scan, cPlace end) {
    std::vector<cUnread> found;
    auto const add = [&](cPlace place, std::string const &text, bool to_the_end) {
        cat::ReadError error;
        error.line = place.line;
        error.column = place.column;
        error.text = text;
        error.kind = cat::ErrorKind::read_token;
        found.push_back({std::move(error), to_the_end});
    };
    for (cStray const &stray : scan.strays)
        if (stray.place < end) add(stray.place, stray.text, false);
    if (scan.open_comment) add(*scan.open_comment, "this comment is not closed", true);
    return found;
}

// Sorts by position, since a person reads the file from the top. Mistakes without a position come
// last; mistakes at the same position stay in the order in which they were found.
void sort(std::vector<cMistake> &mistakes) {
    auto const order = [](cMistake const &mistake) {
        cat::ReadError const &error = mistake.error;
        return std::tuple(error.line == 0, error.line, error.column);
    };
    std::stable_sort(mistakes.begin(), mistakes.end(),
                     [&](auto const &a, auto const &b) { return order(a) < order(b); });
}

cDiagnostic diagnostic_of(cat::ReadError const &error, cPlace end) {
    cDiagnostic diagnostic{.code = error.code,
                           .place = {error.line, error.line == 0 ? 0 : error.column},
                           .text = with_short_path(error.text, error.path)};
    cPlace const closed{error.end_line, error.end_column};
    if (is_unclosed(error))
        diagnostic.notes.push_back({closed, closed < end ? "it ends here" : "the text ends here"});
    return diagnostic;
}

void add_messages(std::vector<cMistake> const &mistakes, cPlace end, cMessages &messages) {
    for (cMistake const &mistake : mistakes) {
        cDiagnostic diagnostic = diagnostic_of(mistake.error, end);
        diagnostic.notes.insert(diagnostic.notes.end(), mistake.notes.begin(), mistake.notes.end());
        diagnostic.following = mistake.following.size();
        messages.add(std::move(diagnostic));
    }
}

// Each error as a separate mistake.
std::vector<cMistake> one_by_one(std::vector<cMistake> const &mistakes) {
    std::vector<cMistake> found;
    for (cMistake const &mistake : mistakes) {
        found.push_back({mistake.error, {}});
        for (cat::ReadError const &error : mistake.following) found.push_back({error, {}});
    }
    return found;
}

bool all_closed(cat::ReadReport const &report) {
    return report.dropped() == 0 &&
           std::none_of(report.entries().begin(), report.entries().end(), is_unclosed);
}

// Can the text have parts that were read without an error but are not in the value? These are a
// byte 0 in a string, a byte from 128 on between the brackets of a typed value, and an unclosed
// comment. `end` is the end of the text that was read.
bool may_hide_errors(cTextTokens const &tokens, size_t end) {
    std::string const &bytes = tokens.bytes();
    if (bytes.find('\0') != std::string::npos) return true;
    std::string_view const rest = std::string_view(bytes).substr(std::min(end, bytes.size()));
    size_t const comment = rest.rfind("/*");
    if (comment != rest.npos && rest.find("*/", comment + 2) == rest.npos) return true;
    return std::any_of(tokens.typed().begin(), tokens.typed().end(),
                       [](cTextToken const &token) { return token.code <= tkEof; });
}

} // namespace

bool read_bytes(std::string const &name, std::string &bytes, cMessages &messages) {
    cWorkOn const about(name);
    cInput input(name);
    bytes.reserve(input.size());
    for (std::string_view piece = input.next(); !piece.empty(); piece = input.next())
        bytes += piece;
    if (!input.error().empty()) messages.error(input.error());
    return input.error().empty();
}

std::string cut_mark(std::string &bytes) {
    size_t const size = bytes.size() - cat::without_mark(bytes).size();
    std::string const mark = bytes.substr(0, size);
    bytes.erase(0, size);
    return mark;
}

cReading read_value(std::string const &bytes, cMessages &messages) {
    cReading reading;
    size_t const before = messages.count();
    cText text(messages.name(), bytes);
    cFileScan scan(text.stream());
    scan.set_filename(messages.name().c_str());
    cat::ReadReport report(std::max(static_cast<size_t>(messages.limit()), errors_kept));
    cRules rules(bytes, report);
    bool const found = scan.read(reading.value) == 0;
    cPlace const end = scan.end();
    rules.report_ignored(end);
    rules.report_unexplained();
    if (!found) reading.value = nullptr;
    std::vector<cUnread> bytes_unread;
    if (!found || !report.empty() || may_hide_errors(rules.tokens(), scan.end_offset()))
        bytes_unread = unread(scan_of(rules.tokens()), end);
    bool const whole = bytes_unread.empty() && all_closed(report);
    std::vector<cMistake> mistakes = mistakes_of(bytes, bytes_unread, report.entries());
    if (messages.shows_all())
        mistakes = one_by_one(mistakes);
    else if (whole)
        add_later_mistakes(rules.tokens(), mistakes);
    size_t const shown = std::min(mistakes.size(), static_cast<size_t>(messages.limit()));
    size_t const beyond = mistakes.size() - shown + report.dropped();
    mistakes.resize(shown);
    sort(mistakes);
    if (!messages.shows_all()) {
        place_at_wrong_bracket(bytes, mistakes);
        add_hints(bytes, mistakes);
    }
    if (!mistakes.empty()) add_messages(mistakes, place_after({}, bytes, bytes.size()), messages);
    messages.more(beyond);
    reading.empty = !found && report.empty();
    if (reading.empty && (mistakes.empty() || messages.shows_all()))
        messages.error(bytes.empty() ? "the file is empty" : "the file contains no value");
    reading.clean = found && messages.count() == before;
    if (reading.clean || (found && whole && reading.value->is_container()))
        reading.after = scan.after();
    return reading;
}

// A surplus bracket often has caused an earlier error on its line.
void report_text_after(std::string const &bytes, cReading const &reading, cMessages &messages) {
    if (!reading.after) return;
    cPlace const place = *reading.after;
    if (messages.shows_all()) return messages.error(place, text_after_first_value);
    cDiagnostic found = text_after_value(bytes, place);
    std::vector<cDiagnostic> const &before = messages.findings().diagnostics;
    bool const follows =
        found.place != place && !before.empty() && before.back().place.line == found.place.line;
    if (follows)
        messages.following();
    else
        messages.add(std::move(found));
}
