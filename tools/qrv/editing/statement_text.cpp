#include "tools/qrv/editing/statement_text.h"

#include "qrv/text/scan/cattrscanner.h"
#include "tools/qrv/rules/literals.h"
#include "tools/qrv/rules/tokens.h"

#include <algorithm>
#include <cstdlib>
#include <locale>
#include <optional>
#include <sstream>

namespace {

// A string as a file has it. Always one token.
std::string literal(std::string const &value) {
    std::string text = "\"";
    for (char const c : value) {
        if (c == '"' || c == '\\' || c == '\n') text += '\\';
        text += c;
    }
    return text + '"';
}

// The stored value of an integer of more than 31 bits, or of a number that is too small; empty if
// the number is stored unchanged.
std::string changed_number(cAttrLiteral const &token) {
    std::string const &text = token.text;
    if (token.code == tkInt || token.code == tkUnsigned) {
        std::optional<int> const stored = wrapped(text);
        return stored ? std::to_string(*stored) : "";
    }
    size_t const digits_end = std::min(text.find_first_of("eE"), text.size());
    bool const is_zero = text.find_first_of("123456789") >= digits_end;
    double const stored = token.code == tkFloat
                              ? static_cast<double>(std::strtof(text.c_str(), nullptr))
                              : std::strtod(text.c_str(), nullptr);
    return stored == 0 && !is_zero ? "0" : "";
}

void report_changed(cAttrLiteral const &token, cMessages &messages) {
    if (token.code == tkString) {
        size_t const at = needless_escape(token.text);
        if (at == token.text.npos) return;
        cPlace const place = place_after(place_of(token), token.text, at);
        messages.error(place, "the \\ before " + token.text.substr(at + 1, 1) + " would be lost");
        messages.note(place, "\\\\ is a \\; --convert allows it");
    } else if (token.code >= tkInt && token.code <= tkDouble) {
        std::string const stored = changed_number(token);
        if (stored.empty()) return;
        messages.error(place_of(token), token.text + " would be stored as " + stored);
        messages.note(place_of(token), "--convert stores the changed value");
    }
}

} // namespace

cStatementText::cStatementText(std::string const &written, cNamedValues &named, bool convert,
                               cMessages &messages) {
    std::istringstream in(written);
    in.imbue(std::locale::classic());
    cAttrScanner const tokens(in);
    tokens.return_all(true); // blanks too, so the texts of all tokens are the whole text
    cAttrLiteral token, before;
    auto const next = [&] {
        token = cAttrLiteral(tokens.next_token());
        return token.code != tkEof;
    };
    bool in_intf = false; // an intf preserves the form of a number, and all its bits
    cPlace end;           // the end of text_
    for (bool more = next(); more;) {
        cPlace const place = place_of(token);
        std::string text = token.text;
        if (token.code == '$') {
            more = next();
            std::string const name = more && token.code == tkIdent ? token.text : "";
            auto const found = named.values.find(name);
            if (found == named.values.end()) {
                messages.error(place, name.empty() ? "a name is missing after $"
                                                   : '$' + shortened(name) + " has no value");
                messages.note(place, name.empty()
                                         ? "a string that contains $ needs quotes"
                                         : "--arg " + shortened(name) + "=VALUE gives one");
                continue;
            }
            named.used.insert(name);
            text = literal(found->second);
            cPlace const begin = end;
            end = place_after(end, text, text.size());
            replaced_.push_back(
                {begin, end, place, place_after(place, '$' + name, name.size() + 1)});
            text_ += text;
            more = next();
            continue;
        }
        if (token.code == '(') in_intf = before.text == "intf";
        if (token.code == ')') in_intf = false;
        if (!convert && !in_intf) report_changed(token, messages);
        end = place_after(end, text, text.size());
        text_ += text;
        if (token.code != tkSpace) before = token;
        more = next();
    }
}

cPlace cStatementText::written_place(cPlace place) const {
    auto const next =
        std::upper_bound(replaced_.begin(), replaced_.end(), place,
                         [](cPlace at, cReplaced const &replaced) { return at < replaced.begin; });
    if (next == replaced_.begin()) return place;
    cReplaced const &replaced = *std::prev(next);
    if (place < replaced.end) return replaced.written_begin;
    if (place.line == replaced.end.line)
        return {replaced.written_end.line,
                replaced.written_end.column + (place.column - replaced.end.column)};
    return {place.line - (replaced.end.line - replaced.written_end.line), place.column};
}
