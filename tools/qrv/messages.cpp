#include "messages.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr size_t longest_text = 400;

// Does the byte go on with a character of several bytes?
bool goes_on(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

bool is_control(char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == 127; }

std::string coded(unsigned code) {
    if (code == 0) return "";
    char text[16];
    std::snprintf(text, sizeof text, " [0x%08x]", code);
    return text;
}

} // namespace

std::string without_controls(std::string const &text) {
    std::string shown;
    for (char c : text) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned>(c));
        shown += is_control(c) ? std::string(hex) : std::string(1, c);
    }
    return shown;
}

cPlace behind(cPlace place, std::string const &text, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (text[i] == '\n')
            ++place.line, place.column = 1;
        else
            ++place.column;
    }
    return place;
}

std::string shortened(std::string const &text, size_t longest) {
    if (text.size() <= longest) return text;
    size_t head = longest / 2 - 3, tail = text.size() - head;
    while (head > 0 && goes_on(text[head])) --head;
    while (tail < text.size() && goes_on(text[tail])) ++tail;
    return text.substr(0, head) + " ... " + text.substr(tail);
}

std::string with_short_path(std::string text, std::string const &path) {
    size_t const at = path.empty() ? text.npos : text.find(path);
    return at == text.npos ? text : text.replace(at, path.size(), shortened(path));
}

std::string cMessages::at(cPlace place) const {
    return name_ + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

void cMessages::add(std::string const &where, std::string const &text) {
    lines_ += without_controls(where + ": " + text) + "\n";
}

void cMessages::add_error(std::string const &where, std::string const &text, unsigned code) {
    if (beyond_ > 0 || count_ >= static_cast<size_t>(limit_)) return more(1);
    ++count_;
    add(where, "error: " + shortened(text, longest_text) + coded(code));
}

void cMessages::error(std::string const &text, unsigned code) { add_error(name_, text, code); }

void cMessages::error(cPlace place, std::string const &text, unsigned code) {
    add_error(at(place), text, code);
}

void cMessages::note(cPlace place, std::string const &text) {
    if (beyond_ == 0) add(at(place), "note: " + text);
}

void cMessages::take(std::string const &lines, size_t count) {
    size_t const told = std::min(count, static_cast<size_t>(limit_) - count_);
    if (told > 0 || count == 0) lines_ += lines;
    count_ += told;
    beyond_ += count - told;
}

std::string cMessages::text() const {
    if (beyond_ == 0) return lines_;
    return lines_ + without_controls(name_) + ": error: " + std::to_string(beyond_) + " more\n";
}
