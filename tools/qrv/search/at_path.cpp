#include "tools/qrv/search/at_path.h"

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/raised.h"

bool find_at(objref const &top, std::string const &path, objref &value, cMessages &messages) {
    if (!is_whole_path(path, messages)) return false;
    size_t const before = messages.count();
    cRaisedErrors const raised([&](cErr const &error) {
        bool const is_in_a_scalar = error.kind() == cat::ErrorKind::missing_method;
        if (!is_in_a_scalar) messages.error(error.as_string(), error.code());
    });
    cat::ReadReport report;
    value = top->getattrp(path);
    for (cat::ReadError const &error : report.entries())
        messages.error(with_short_path(error.text, path), error.code);
    if (!cObj::is_good(value)) value = nullptr;
    return messages.count() == before;
}

bool is_whole_path(std::string const &path, cMessages &messages) {
    char quote = 0; // that is open
    for (size_t i = 0; i < path.size(); ++i) {
        char const c = path[i], next = i + 1 < path.size() ? path[i + 1] : '\0';
        if (quote && c == '\\')
            ++i;
        else if (quote)
            quote = c == quote ? '\0' : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '/' && (next == '/' || next == '*')) {
            messages.error("path '" + shortened(path) + "' contains /" + next +
                           " outside of quotes, which begins a comment");
            return false;
        }
    }
    return true;
}

void tell_absent(std::string const &path, cMessages &messages) {
    messages.error("nothing at path '" + shortened(path) + "'");
}
