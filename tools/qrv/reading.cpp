#include "reading.h"

#include "output.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/cattrscan.h"
#include "qrv/text/creadreport.h"
#include "rules.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sstream>
#include <unistd.h>

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

void tell(cat::ReadReport const &report, cPlace end, cMessages &messages) {
    for (cat::ReadError const &error : report.entries()) {
        std::string const text = with_short_path(error.text, error.path);
        if (error.line == 0)
            messages.error(text, error.code);
        else
            messages.error({error.line, error.column}, text, error.code);
        cPlace const closed{error.end_line, error.end_column};
        if (error.end_line != 0)
            messages.note(closed, closed < end ? "it ends here" : "the text ends here");
    }
    messages.more(report.dropped());
}

// Bytes behind the end don't matter. A comment that isn't closed does, wherever it began.
void tell(cSurvey const &survey, cPlace end, cMessages &messages) {
    for (cStray const &stray : survey.strays)
        if (stray.place < end) messages.error(stray.place, stray.text);
    if (survey.open_comment) messages.error(*survey.open_comment, "this comment is not closed");
}

bool all_closed(cat::ReadReport const &report) {
    return report.dropped() == 0 &&
           std::all_of(report.entries().begin(), report.entries().end(),
                       [](cat::ReadError const &error) { return error.end_line == 0; });
}

// By their words, so that other files pay nothing for it.
bool declares_types(std::string const &bytes) {
    for (char const *const word : {"attspec", "attlist", "choice"})
        if (bytes.find(word) != std::string::npos) return true;
    return false;
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
    reading.survey = survey(bytes);
    size_t const before = messages.count();
    std::istringstream is(bytes);
    cFileScan scan(is);
    scan.set_filename(messages.name().c_str());
    cat::ReadReport report(static_cast<size_t>(messages.limit()));
    cRules rules(bytes, report);
    bool const found = scan.read(reading.value) == 0;
    if (declares_types(bytes)) rules.tell_unheard();
    if (!found) reading.value = nullptr;
    tell(reading.survey, scan.end(), messages);
    bool const whole = messages.count() == before && all_closed(report);
    tell(report, behind({}, bytes, bytes.size()), messages);
    reading.empty = !found && report.empty();
    if (reading.empty) messages.error("there is no value in it");
    reading.clean = found && messages.count() == before;
    if (reading.clean || (found && whole && reading.value->is_container()))
        reading.behind = scan.behind();
    return reading;
}
