#include "tools/qrv/reading/reading.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/rules.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sstream>
#include <tuple>
#include <unistd.h>
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
    // The offset, or 0 if it is not known, since comments may come before that token.
    size_t end_offset() const { return took_foreign() ? 0 : passed(); }

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

    // A byte that no value can hold ends a reading, and is a token all the same.
    cAttrLiteral next_token() {
        return_com(false); // for a cat::SourceMap only
        gettok();
        return cAttrLiteral(current());
    }

    int result_ = -1;
    int delim_ = 0;
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

void tell(std::vector<cat::ReadError> const &errors, std::string const &bytes,
          cMessages &messages) {
    cPlace const end = errors.empty() ? cPlace() : behind({}, bytes, bytes.size());
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

// May something be there that was read without an error, and yet isn't in the value? A byte 0 in a
// string, a byte from 128 on between the brackets of a typed value, or an open comment. `end`: of
// what was read.
bool may_hide_errors(cTextTokens const &tokens, size_t end) {
    std::string const &bytes = tokens.bytes();
    if (bytes.find('\0') != std::string::npos) return true;
    size_t const comment = bytes.rfind("/*");
    if (comment != std::string::npos && comment >= end &&
        bytes.find("*/", comment + 2) == std::string::npos)
        return true;
    return std::any_of(tokens.typed().begin(), tokens.typed().end(),
                       [](cTextToken const &token) { return token.code <= tkEof; });
}

} // namespace

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
    size_t const before = messages.count();
    std::istringstream is(bytes);
    cFileScan scan(is);
    scan.set_filename(messages.name().c_str());
    cat::ReadReport report(static_cast<size_t>(messages.limit()));
    cRules rules(bytes, report);
    bool const found = scan.read(reading.value) == 0;
    cPlace const end = scan.end();
    rules.tell_unheard(end);
    rules.tell_unexplained();
    if (!found) reading.value = nullptr;
    std::vector<cat::ReadError> errors;
    if (!found || !report.empty() || may_hide_errors(rules.tokens(), scan.end_offset()))
        errors = unread(survey(rules.tokens()), end);
    bool const whole = errors.empty() && all_closed(report);
    errors.insert(errors.end(), report.entries().begin(), report.entries().end());
    size_t const told = std::min(errors.size(), report.limit());
    size_t const beyond = errors.size() - told + report.dropped();
    errors.resize(told);
    sort(errors);
    tell(errors, bytes, messages);
    messages.more(beyond);
    reading.empty = !found && report.empty();
    if (reading.empty) messages.error("the file contains no value");
    reading.clean = found && messages.count() == before;
    if (reading.clean || (found && whole && reading.value->is_container()))
        reading.behind = scan.behind();
    return reading;
}
