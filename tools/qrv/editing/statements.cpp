#include "tools/qrv/editing/statements.h"

#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/ignored.h"
#include "tools/qrv/rules/mistakes.h"
#include "tools/qrv/rules/rules.h"

#include <locale>

namespace {

bool is_operator(int code) {
    return code == '=' || code == tkAddAssign || code == tkShiftLeft || code == tkAndAssign;
}

bool is_key(cAttrLiteral const &token) {
    objref key;
    return token.code >= tkInt && token.code <= tkIdent &&
           cat::read_stdtype(token.code, token.text.c_str(), key) && key &&
           key->type().is_keytype();
}

} // namespace

cStatements::cStatements(std::string const &text, cNamedValues &named, bool convert,
                         cMessages &messages)
    : messages_(messages), errors_before_(messages.count()),
      text_(report_unread(text) ? text : std::string(), named, convert, messages),
      in_(text_.text()), scan_(in_, false) {
    in_.imbue(std::locale::classic());
    if (messages.count() == errors_before_) report_ignored_values();
    readable_ = messages.count() == errors_before_;
}

cPlace cStatements::place_of(cAttrLiteral const &token) const {
    return text_.written_place(::place_of(token));
}

// Reports comments, which the scanner skips, and bytes at which it stops. True without any of them.
bool cStatements::report_unread(std::string const &text) {
    cTextScan const found = scan_of(text);
    for (cComment const &comment : found.comments) {
        messages_.error(comment.place, "this comment would be lost: " + shortened(comment.text));
        messages_.note(comment.place, "leave it out; a string that contains // or /* needs quotes");
    }
    if (found.open_comment) {
        messages_.error(*found.open_comment, "this comment is not closed");
        messages_.note(*found.open_comment, "a string that contains /* needs quotes");
    }
    for (cStray const &stray : found.strays) {
        messages_.error(stray.place, stray.text);
        messages_.note(stray.place, "put the string that contains it in quotes");
    }
    return messages_.count() == errors_before_;
}

void cStatements::report_ignored_values() {
    std::string const &text = text_.text();
    cat::ReadReport passed_over(static_cast<size_t>(messages_.limit()));
    report_ignored(cSource(text), place_after({}, text, text.size()), {}, passed_over);
    add_messages(passed_over);
}

bool cStatements::refuse(cAttrLiteral const &token, std::string const &text,
                         std::string const &advice) {
    messages_.error(place_of(token), text);
    messages_.note(place_of(token), advice);
    return readable_ = false;
}

bool cStatements::next(cStatement &statement) {
    for (bool good = false; readable_ && !good;) {
        statement = {};
        if (!read_path(statement) || !read_value(statement, good)) return false;
    }
    return readable_;
}

bool cStatements::read_key(cAttrLiteral const &token, cStatement &statement) {
    if (token.code == tkEof)
        return refuse(token, "the path has no last key", "remove the last '/', or add a key");
    if (!is_key(token))
        return refuse(token, quoted(token.text) + " is not a key",
                      "a key is a word, a number or a string in quotes");
    statement.path += token.text;
    return true;
}

// Reads a path and its operator. False on an error and at the end of the text.
bool cStatements::read_path(cStatement &statement) {
    cAttrLiteral token;
    do scan_.gettok(token);
    while (cat::is_separator(token.code));
    if (token.code == tkEof) return false;
    statement.place = place_of(token);
    if (token.code == '/' && scan_.gettok(token) == tkEof) return false;
    for (;;) {
        if (!read_key(token, statement)) return false;
        scan_.gettok(token);
        if (is_operator(token.code)) break;
        if (token.code == tkEof)
            return refuse(token, "operator and value are missing after the path",
                          "write " + shortened(statement.path) + " = and a value");
        if (token.code != '/')
            return refuse(token, quoted(token.text) + " cannot follow a key",
                          "one of / = &= += << is expected; a key of several words needs quotes");
        statement.path += '/';
        scan_.gettok(token);
    }
    statement.operation = token.code;
    statement.operator_text = token.text;
    return true;
}

void cStatements::add_messages(cat::ReadError const &error) {
    cPlace const place = text_.written_place(::place_of(error));
    messages_.error(place, with_short_path(error.text, error.path), error.code);
    if (error.kind == cat::ErrorKind::read_scalar || error.kind == cat::ErrorKind::read_key_scalar)
        messages_.note(place, "the number is too large; the largest int is 2147483647");
    else if (error.kind == cat::ErrorKind::read_bad_ident)
        messages_.note(place,
                       "a string needs quotes, and a number with an exponent needs a point: 1.0e3");
}

void cStatements::add_messages(cat::ReadReport const &report) {
    for (cat::ReadError const &error : report.entries()) add_messages(error);
    messages_.more(report.dropped());
}

// Reads a value. False if the text after it can't be read. Sets `good` if there is a value.
bool cStatements::read_value(cStatement &statement, bool &good) {
    cAttrLiteral token;
    scan_.gettok(token);
    statement.value_place = place_of(token);
    if (token.code == tkEof || cat::is_separator(token.code))
        return refuse(token, "the value is missing after " + statement.operator_text,
                      "an empty string is \"\", an empty map {}, a vector []");
    scan_.ungettoken(token);
    cat::ReadReport report(static_cast<size_t>(messages_.limit()));
    cRules rules(text_.text(), report, '/' + statement.path);
    int end = 0;
    int const result = scan_.scan_obj(statement.value, &end);
    rules.report_unexplained();
    add_messages(report);
    good = result == 0 && report.empty();
    if (result < 0)
        return refuse(token, quoted(token.text) + " is not a value",
                      "a string that is not a single word needs quotes");
    if (good && (end == '=' || end == '}' || end == ']' || end == '>'))
        return refuse(
            scan_.token(), quoted(scan_.token().text) + " cannot follow a value",
            "a ; separates statements, and a string that is not a single word needs quotes");
    return true;
}
