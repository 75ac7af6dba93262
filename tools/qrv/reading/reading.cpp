#include "tools/qrv/reading/reading.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/progress.h"
#include "tools/qrv/reading/input.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/rules.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <tuple>
#include <vector>

namespace {

cPlace place_of(cAttrLiteral const &token) { return {token.line, token.column + 1}; }

bool is_separator(int code) { return code == ';' || code == ','; }

bool is_end(cAttrLiteral const &token) { return token.code == tkEof && token.text.empty(); }

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

    std::optional<cPlace> behind() {
        cAttrLiteral next = token();
        if (!took_foreign()) next = next_token();
        if (!is_separator(delim_) && is_separator(next.code)) next = next_token();
        return is_end(next) ? std::nullopt : std::optional(place_of(next));
    }

  private:
    // Was the token taken that ended the value, and is it no separator?
    bool took_foreign() const {
        return result_ == 0 && (delim_ == '}' || delim_ == ']' || delim_ == '>' || delim_ == '=' ||
                                delim_ <= tkEof);
    }

    cAttrLiteral next_token() {
        cAttrLiteral token;
        while (gettoken(token) == tkComment) continue;
        return token;
    }

    int result_ = -1;
    int delim_ = 0;
};

// A text as a stream. Where progress is shown it is given piece by piece.
class cText {
  public:
    cText(std::string const &name, std::string const &bytes) : progress_(name, bytes.size()) {
        if (!progress_.is_shown()) {
            stream_ = std::make_unique<std::istringstream>(bytes);
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
    cProgress progress_;
    std::optional<cPieces> pieces_;
    std::unique_ptr<std::istream> stream_;
};

// Bytes behind the end don't matter. A comment that isn't closed does, wherever it began.
std::vector<cat::ReadError> unread(cSurvey const &survey, cPlace end) {
    std::vector<cat::ReadError> found;
    auto const add = [&](cPlace place, std::string const &text) {
        found.emplace_back();
        found.back().line = place.line;
        found.back().column = place.column;
        found.back().text = text;
    };
    for (cStray const &stray : survey.strays)
        if (stray.place < end) add(stray.place, stray.text);
    if (survey.open_comment) add(*survey.open_comment, "this comment is not closed");
    return found;
}

// As a person goes through the file; what has no place comes last, and what has the same place
// stays in the order in which it was found. Which ones are told doesn't depend on it.
void sort(std::vector<cat::ReadError> &errors) {
    std::stable_sort(errors.begin(), errors.end(), [](auto const &a, auto const &b) {
        return std::tuple(a.line == 0, a.line, a.column) <
               std::tuple(b.line == 0, b.line, b.column);
    });
}

void tell(std::vector<cat::ReadError> const &errors, cPlace end, cMessages &messages) {
    for (cat::ReadError const &error : errors) {
        std::string const text = with_short_path(error.text, error.path);
        if (error.line == 0)
            messages.error(text, error.code);
        else
            messages.error({error.line, error.column}, text, error.code);
        cPlace const closed{error.end_line, error.end_column};
        if (error.end_line != 0)
            messages.note(closed, closed < end ? "it ends here" : "the text ends here");
    }
}

bool all_closed(cat::ReadReport const &report) {
    return report.dropped() == 0 &&
           std::all_of(report.entries().begin(), report.entries().end(),
                       [](cat::ReadError const &error) { return error.end_line == 0; });
}

// Roughly, so that other files pay nothing for it.
bool has_typed_values(std::string const &bytes) {
    for (char const *const part : {"(", "attspec", "attlist", "choice"})
        if (bytes.find(part) != std::string::npos) return true;
    return false;
}

// May something be there that was read without an error, and yet isn't in the value? A byte 0 in a
// string, an open comment behind the value, or a byte from 128 on between the brackets of a typed
// value, which are read on their own.
bool may_hide_errors(std::string const &bytes, bool typed_values) {
    if (bytes.find('\0') != std::string::npos) return true;
    size_t const comment = bytes.rfind("/*");
    if (comment != std::string::npos && bytes.find("*/", comment + 2) == std::string::npos)
        return true;
    return typed_values &&
           std::any_of(bytes.begin(), bytes.end(), [](char byte) { return (byte & 0x80) != 0; });
}

} // namespace

bool read_bytes(std::string const &name, std::string &bytes, cMessages &messages) {
    cInput input(name);
    for (std::string_view piece = input.next(); !piece.empty(); piece = input.next())
        bytes += piece;
    if (!input.error().empty()) messages.error(input.error());
    return input.error().empty();
}

cReading read_value(std::string const &bytes, cMessages &messages) {
    cReading reading;
    size_t const before = messages.count();
    cText text(messages.name(), bytes);
    cFileScan scan(text.stream());
    scan.set_filename(messages.name().c_str());
    cat::ReadReport report(static_cast<size_t>(messages.limit()));
    cRules rules(bytes, report);
    bool const found = scan.read(reading.value) == 0;
    cPlace const end = scan.end();
    bool const typed_values = has_typed_values(bytes);
    if (typed_values) rules.tell_unheard(end);
    rules.tell_unexplained();
    if (!found) reading.value = nullptr;
    std::vector<cat::ReadError> errors;
    if (!found || !report.empty() || may_hide_errors(bytes, typed_values))
        errors = unread(survey(bytes), end);
    bool const whole = errors.empty() && all_closed(report);
    errors.insert(errors.end(), report.entries().begin(), report.entries().end());
    size_t const told = std::min(errors.size(), report.limit());
    size_t const beyond = errors.size() - told + report.dropped();
    errors.resize(told);
    sort(errors);
    tell(errors, behind({}, bytes, bytes.size()), messages);
    messages.more(beyond);
    reading.empty = !found && report.empty();
    if (reading.empty)
        messages.error(bytes.empty() ? "the file is empty" : "the file contains no value");
    reading.clean = found && messages.count() == before;
    if (reading.clean || (found && whole && reading.value->is_container()))
        reading.behind = scan.behind();
    return reading;
}
