#include "tools/qrv/output/excerpt.h"

#include "tools/qrv/output/characters.h"
#include "tools/qrv/output/escaped.h"
#include "tools/qrv/output/message_line.h"

#include <algorithm>
#include <unistd.h>

namespace {

constexpr size_t before_mark = 60, widest = 110; // bytes of a longer line

bool is_word(char c) {
    return is_letter_or_digit(c) || c == '_' || c == '.' ||
           (static_cast<unsigned char>(c) & 0x80) != 0;
}

// The end of the token that begins there: a string, a word or number, or one character.
size_t end_of_token(std::string const &bytes, size_t begin) {
    if (begin >= bytes.size()) return begin;
    size_t end = begin + 1;
    char const first = bytes[begin];
    if (first == '"' || first == '\'') {
        size_t const close = bytes.find(first, end);
        return close < bytes.find('\n', begin) ? close + 1 : end;
    }
    if (is_word(first) || first == '#' || first == '-')
        while (end < bytes.size() && is_word(bytes[end])) ++end;
    return end;
}

// Blanks as wide as the text.
std::string blanks_for(std::string const &text) {
    std::string blanks;
    for (char const c : text)
        if (!continues_character(c)) blanks += c == '\t' ? '\t' : ' ';
    return blanks;
}

} // namespace

void add_source(std::string const &bytes, cLines const &lines, cDiagnostic &diagnostic) {
    if (diagnostic.place.line == 0) return;
    if (diagnostic.begin == diagnostic.end) {
        diagnostic.begin = lines.offset(diagnostic.place);
        diagnostic.end = end_of_token(bytes, diagnostic.begin);
    }
    std::string_view const line = lines.line(diagnostic.place.line);
    size_t const mark = std::min<size_t>(diagnostic.place.column - 1, line.size());
    size_t begin = line.size() <= widest ? 0 : mark - std::min(mark, before_mark);
    while (begin > 0 && continues_character(line[begin])) --begin;
    size_t end = std::min(line.size(), begin + widest);
    while (end < line.size() && continues_character(line[end])) ++end;
    diagnostic.line = line.substr(begin, end - begin);
    diagnostic.mark = mark - begin;
}

std::string excerpt_of(cDiagnostic const &diagnostic) {
    static bool const wanted = ::isatty(STDERR_FILENO) == 1;
    if (!wanted || diagnostic.line.empty()) return "";
    std::string const shown = escaped(diagnostic.line);
    std::string number = std::to_string(diagnostic.place.line);
    number.insert(0, 6 - std::min<size_t>(number.size(), 6), ' ');
    size_t const size =
        std::min(diagnostic.end - diagnostic.begin, diagnostic.line.size() - diagnostic.mark);
    std::string const marked = blanks_for(escaped(diagnostic.line.substr(diagnostic.mark, size)));
    std::string mark = "^";
    if (marked.size() > 1) mark.append(marked.size() - 1, '~');
    return number + " | " + shown + "\n" + std::string(number.size(), ' ') + " | " +
           blanks_for(escaped(diagnostic.line.substr(0, diagnostic.mark))) +
           painted(mark, cRole::caret) + "\n";
}
