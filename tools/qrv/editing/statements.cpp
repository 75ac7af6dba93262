#include "tools/qrv/editing/statements.h"

#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/ignored.h"
#include "tools/qrv/rules/rules.h"

#include <locale>

namespace {

bool is_separator(int code) { return code == ';' || code == ','; }

bool is_operator(int code) {
    return code == '=' || code == tkAddAssign || code == tkShiftLeft || code == tkAndAssign;
}

cPlace place_of(cAttrLiteral const &token) { return {token.line, token.column + 1}; }

std::string quoted(cAttrLiteral const &token) { return '\'' + shortened(token.text) + '\''; }

bool is_key(cAttrLiteral const &token) {
    objref key;
    return token.code >= tkInt && token.code <= tkIdent &&
           cat::read_stdtype(token.code, token.text.c_str(), key) && key &&
           key->type().is_keytype();
}

} // namespace

cStatements::cStatements(std::string const &text, cMessages &messages)
    : text_(text), in_(text), scan_(in_), messages_(messages) {
    in_.imbue(std::locale::classic());
    size_t const before = messages.count();
    tell_unread();
    readable_ = messages.count() == before;
}

// What the scanner would pass over, or stop at.
void cStatements::tell_unread() {
    cSurvey const found = survey(text_);
    for (cComment const &comment : found.comments) {
        messages_.error(comment.place, "this comment would be lost: " + shortened(comment.text));
        messages_.note(comment.place, "leave it out; a text with // or /* in it needs quotes");
    }
    if (found.open_comment) {
        messages_.error(*found.open_comment, "this comment is not closed");
        messages_.note(*found.open_comment, "a text with /* in it needs quotes");
    }
    for (cStray const &stray : found.strays) {
        messages_.error(stray.place, stray.text);
        messages_.note(stray.place, "put the text that it stands in into quotes");
    }
    cat::ReadReport passed_over(static_cast<size_t>(messages_.limit()));
    tell_unheard(cSource(text_), behind({}, text_, text_.size()), {}, passed_over);
    tell(passed_over);
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
        return refuse(token, "the path has no last key", "take away the last '/', or add a key");
    if (!is_key(token))
        return refuse(token, quoted(token) + " is no key",
                      "a key is a word, a number or a text in quotes");
    if (token.code == tkString && token.text.compare(1, 1, "#") == 0)
        return refuse(token, "a key that begins with # can't be written: " + shortened(token.text),
                      "choose another key");
    statement.path += token.text;
    return true;
}

// Up to the operator. False at the end of the text, too.
bool cStatements::read_path(cStatement &statement) {
    cAttrLiteral token;
    do scan_.gettok(token);
    while (is_separator(token.code));
    if (token.code == tkEof) return false;
    statement.place = place_of(token);
    if (token.code == '/' && scan_.gettok(token) == tkEof) return false;
    for (;;) {
        if (!read_key(token, statement)) return false;
        scan_.gettok(token);
        if (is_operator(token.code)) break;
        if (token.code == tkEof)
            return refuse(token, "operator and value are missing behind the path",
                          "write " + shortened(statement.path) + " = and a value");
        if (token.code != '/')
            return refuse(token, quoted(token) + " can't follow a key",
                          "one of / = &= += << is expected; a key of several words needs quotes");
        statement.path += '/';
        scan_.gettok(token);
    }
    statement.operation = token.code;
    statement.operator_text = token.text;
    return true;
}

void cStatements::tell(cat::ReadError const &error) {
    cPlace const place{error.line, error.column};
    messages_.error(place, with_short_path(error.text, error.path), error.code);
    if (error.text.find("Input of standard type: ") != std::string::npos)
        messages_.note(place, "the number is too large; an int ends at 2147483647");
    else if (error.text.compare(0, 10, "Bad input:") == 0)
        messages_.note(place, "text needs quotes, and a number with an exponent a point: 1.0e3");
}

void cStatements::tell(cat::ReadReport const &report) {
    for (cat::ReadError const &error : report.entries()) tell(error);
    messages_.more(report.dropped());
}

// False where nothing behind can be read. `good`: is there a value?
bool cStatements::read_value(cStatement &statement, bool &good) {
    cAttrLiteral token;
    scan_.gettok(token);
    statement.value_place = place_of(token);
    if (token.code == tkEof || is_separator(token.code))
        return refuse(token, "the value is missing behind " + statement.operator_text,
                      "an empty text is \"\", an empty map {}, a vector []");
    scan_.ungettoken(token);
    cat::ReadReport report(static_cast<size_t>(messages_.limit()));
    cRules rules(text_, report, '/' + statement.path);
    int end = 0;
    int const result = scan_.scan_obj(statement.value, &end);
    rules.tell_unexplained();
    tell(report);
    good = result == 0 && report.empty();
    if (result < 0)
        return refuse(token, quoted(token) + " is no value",
                      "a text needs quotes where it is not "
                      "a single word");
    if (good && (end == '=' || end == '}' || end == ']' || end == '>'))
        return refuse(scan_.token(), quoted(scan_.token()) + " can't follow a value",
                      "a ; parts statements, and a text that is not a single word needs quotes");
    return true;
}
