#include "tools/qrv/search/at_path.h"

#include "qrv/core/ctypeobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/raised.h"

#include <locale>
#include <sstream>

namespace {

// Reads the keys of a path. Returns why the text is not a path, or "" if it is.
std::string read_keys(std::string const &path, std::vector<objref> &keys) {
    std::istringstream is(path);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    scan.return_com(true);
    cAttrLiteral token;
    cat::ReadReport const ignored;
    if (scan.gettok(token) == '/') scan.gettok(token);
    for (;;) {
        objref key;
        std::string const text = quoted(token.text);
        if (cat::is_end(token)) return "ends with a /: remove it, or add a key";
        if (!cat::read_stdtype(token.code, token.text.c_str(), key) || !key ||
            !key->type().is_keytype())
            return "has " + text +
                   " where a key is expected; a key is a word, a number or a string in quotes";
        keys.push_back(key);
        scan.gettok(token);
        if (cat::is_end(token)) return "";
        if (token.code != '/')
            return "has " + quoted(token.text) + " after the key " + text +
                   "; a key of several words needs quotes";
        scan.gettok(token);
    }
}

bool is_blank(std::string const &text) { return text.find_first_not_of(" \t\r\n") == text.npos; }

} // namespace

bool is_outermost(std::string const &path) {
    size_t const slash = path.find('/');
    return slash != path.npos && is_blank(path.substr(0, slash)) &&
           is_blank(path.substr(slash + 1));
}

std::vector<objref> keys_of(std::string const &path, cMessages &messages) {
    std::vector<objref> keys;
    if (!is_whole_path(path, messages)) return keys;
    if (is_blank(path)) {
        messages.error("the path is empty; / is the outermost value");
    } else if (is_outermost(path)) {
        messages.error("path '" + path + "' is the outermost value; a key is expected");
    } else if (std::string const why = read_keys(path, keys); !why.empty()) {
        messages.error("path '" + shortened(path) + "' " + why);
        keys.clear();
    }
    return keys;
}

bool find_at(objref const &top, std::string const &path, objref &value, cMessages &messages) {
    if (is_outermost(path)) {
        value = top;
        return true;
    }
    if (!is_whole_path(path, messages)) return false;
    std::vector<cErr> errors;
    cRaisedErrors const raised([&](cErr const &error) {
        bool const is_in_a_scalar = error.kind() == cat::ErrorKind::missing_method;
        if (!is_in_a_scalar) errors.push_back(error);
    });
    cat::ReadReport report;
    value = top->getattrp(path);
    if (!cObj::is_good(value)) value = nullptr;
    bool const good = errors.empty() && report.empty();
    if (good || keys_of(path, messages).empty()) return good;
    for (cErr const &error : errors) messages.error(error.as_string(), error.code());
    for (cat::ReadError const &error : report.entries())
        messages.error(with_short_path(error.text, path), error.code);
    return false;
}

bool is_whole_path(std::string const &path, cMessages &messages) {
    char quote = 0; // the open quote
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

void report_absent(std::string const &path, cMessages &messages) {
    messages.error("nothing at path '" + shortened(path) + "'");
}
