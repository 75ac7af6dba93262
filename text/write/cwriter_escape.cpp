// Names and quoting. One pass each: erasing and inserting in place would be quadratic.

#include "base/cchars.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <cstddef>

namespace {
// Length of the name at the start of the text.
size_t ident_length(std::string const &text) {
    if (text.empty() || !is_letter(text.front())) return 0;
    auto const end = std::find_if(text.begin(), text.end(),
                                  [](char c) { return !is_letter(c) && !is_digit(c); });
    return static_cast<size_t>(end - text.begin());
}
} // namespace

bool cat::is_ident(std::string const &text) {
    return !text.empty() && ident_length(text) == text.size();
}

bool cat::escape(std::string &text) {
    if (is_ident(text)) return true;
    if (text.find_first_of("\"\\'") == std::string::npos) return false;
    std::string result;
    result.reserve(text.size() + text.size() / 8 + 1);
    for (char const c : text) {
        if (c == '"' || c == '\\' || c == '\'') result += '\\';
        result += c;
    }
    text = std::move(result);
    return false;
}

int cat::unescape(std::string &text) {
    int removed = 0;
    size_t to = 0;
    for (size_t from = 0; from < text.size(); ++from) {
        if (text[from] == '\\') {
            ++removed;
            if (++from == text.size()) break;
        }
        text[to++] = text[from];
    }
    text.resize(to);
    return removed;
}
