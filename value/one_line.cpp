#include "value/one_line.h"

#include <algorithm>

namespace qrv::detail {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\n'; }
bool is_open(char c) { return c == '(' || c == '[' || c == '{' || c == '<'; }

// The length of the string, comment or run of blanks that the text begins with; else 0.
std::size_t string_in(std::string_view text) {
    if (text[0] != '"') return 0;
    std::size_t end = 1;
    while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
    return std::min(end + 1, text.size());
}

std::size_t comment_in(std::string_view text) {
    if (text.starts_with("//")) return std::min(text.find('\n'), text.size());
    if (!text.starts_with("/*")) return 0;
    std::size_t const end = text.find("*/", 2);
    return end == text.npos ? text.size() : end + 2;
}

std::size_t blanks_in(std::string_view text) {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_blank) -
                                    text.begin());
}

} // namespace

// Removes all blanks after an opening bracket, except between two "<", which would be another
// token.
std::string on_one_line(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    bool apart = false; // were there blanks or comments?
    while (!text.empty()) {
        std::size_t size = std::max(blanks_in(text), comment_in(text));
        if (size > 0) {
            apart = true;
        } else {
            size = std::max<std::size_t>(string_in(text), 1);
            bool const tight =
                line.empty() || (is_open(line.back()) && !(line.back() == '<' && text[0] == '<'));
            if (apart && !tight) line += ' ';
            line.append(text.substr(0, size));
            apart = false;
        }
        text.remove_prefix(size);
    }
    return line;
}

} // namespace qrv::detail
