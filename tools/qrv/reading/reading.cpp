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

// One value, and the tokens behind it.
class cFileScan : public cAttrScan {
  public:
    explicit cFileScan(std::istream &is) : cAttrScan(is, false) { return_com(true); }

    int read(objref &value) {
        result_ = scan_obj(value, &delim_);
        return result_;
    }

    // The place where reading ended: a scalar takes the token behind it.
    cPlace end() const {
        return took_foreign() ? place_of(token()) : cPlace{lineno(), column() + 1};
    }
    // The offset, or 0 if it is not known, since comments may come before that token.
    size_t end_offset() const { return took_foreign() ? 0 : passed(); }

    std::optional<cPlace> behind() {
        cAttrLiteral next = token();
        if (!took_foreign()) next = following_token();
        if (!cat::is_separator(delim_) && cat::is_separator(next.code)) next = following_token();
        return cat::is_end(next) ? std::nullopt : std::optional(place_of(next));
    }

  private:
    // Was the token taken that ended the value, and is it no separator?
    bool took_foreign() const {
        return result_ == 0 && (delim_ == '}' || delim_ == ']' || delim_ == '>' || delim_ == '=' ||
                                delim_ <= tkEof);
    }

    // A byte that no value can hold ends a reading, and is a token all the same.
    cAttrLiteral following_token() {
        return_com(false); // for a cat::SourceMap only
        gettok();
        return cAttrLiteral(current());
    }

    int result_ = -1;
    int delim_ = 0;
};

// That many errors are enough to see which follow from which; more are only counted.
constexpr size_t errors_kept = 10000;

// A text as a stream. If progress is shown, the stream gets it piece by piece.
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
    // Reads the bytes where they are, if the C++ library has that; else they are copied.
    static std::unique_ptr<std::istream> in_place(std::string const &bytes) {
        auto stream = std::make_unique<std::istringstream>();
        auto const size = static_cast<std::streamsize>(bytes.size());
        stream->rdbuf()->pubsetbuf(const_cast<char *>(bytes.data()), size); // nothing is written
        if (stream->rdbuf()->in_avail() != size) stream->str(bytes);
        return stream;
    }

    cProgress progress_;
    std::optional<cPieces> pieces_;
    std::unique_ptr<std::istream> stream_;
};

// Bytes after the end are ignored. A comment that is not closed is reported wherever it began.
std::vector<cUnread> unread(cSurvey const &survey, cPlace end) {
    std::vector<cUnread> found;
    auto const add = [&](cPlace place, std::string const &text, bool to_the_end) {
        cat::ReadError error;
        error.line = place.line;
        error.column = place.column;
        error.text = text;
        error.kind = cat::ErrorKind::read_token;
        found.push_back({std::move(error), to_the_end});
    };
    for (cStray const &stray : survey.strays)
        if (stray.place < end) add(stray.place, stray.text, false);
    if (survey.open_comment) add(*survey.open_comment, "this comment is not closed", true);
    return found;
}

// By place, since a person reads the file from the top. What has no place comes last; mistakes at
// the same place stay in the order in which they were found.
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

void tell(std::vector<cMistake> const &mistakes, cPlace end, cMessages &messages) {
    for (cMistake const &mistake : mistakes) {
        cDiagnostic diagnostic = diagnostic_of(mistake.error, end);
        diagnostic.notes.insert(diagnostic.notes.end(), mistake.notes.begin(), mistake.notes.end());
        diagnostic.following = mistake.following.size();
        messages.add(std::move(diagnostic));
    }
}

// Each error as a mistake of its own.
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

// May something be there that was read without an error, and yet isn't in the value? A byte 0 in a
// string, a byte from 128 on between the brackets of a typed value, or an open comment. `end`: of
// what was read.
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
    rules.tell_unheard(end);
    rules.tell_unexplained();
    if (!found) reading.value = nullptr;
    std::vector<cUnread> bytes_unread;
    if (!found || !report.empty() || may_hide_errors(rules.tokens(), scan.end_offset()))
        bytes_unread = unread(survey(rules.tokens()), end);
    bool const whole = bytes_unread.empty() && all_closed(report);
    std::vector<cMistake> mistakes = mistakes_of(bytes, bytes_unread, report.entries());
    if (messages.shows_all())
        mistakes = one_by_one(mistakes);
    else if (whole)
        add_later_mistakes(rules.tokens(), mistakes);
    size_t const told = std::min(mistakes.size(), static_cast<size_t>(messages.limit()));
    size_t const beyond = mistakes.size() - told + report.dropped();
    mistakes.resize(told);
    sort(mistakes);
    if (!messages.shows_all()) {
        place_at_wrong_bracket(bytes, mistakes);
        add_hints(bytes, mistakes);
    }
    if (!mistakes.empty()) tell(mistakes, behind({}, bytes, bytes.size()), messages);
    messages.more(beyond);
    reading.empty = !found && report.empty();
    if (reading.empty && (mistakes.empty() || messages.shows_all()))
        messages.error(bytes.empty() ? "the file is empty" : "the file contains no value");
    reading.clean = found && messages.count() == before;
    if (reading.clean || (found && whole && reading.value->is_container()))
        reading.behind = scan.behind();
    return reading;
}

// A surplus bracket has often caused an error before it on its line.
void report_text_after(std::string const &bytes, cReading const &reading, cMessages &messages) {
    if (!reading.behind) return;
    cPlace const place = *reading.behind;
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
