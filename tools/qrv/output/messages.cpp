#include "tools/qrv/output/messages.h"

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

bool cMessages::has_room(cTally const &tally) const {
    return tally.beyond == 0 && tally.told < static_cast<size_t>(limit_);
}

bool cMessages::may_tell(cTally &tally) const {
    bool const told = has_room(tally);
    ++(told ? tally.told : tally.beyond);
    return told;
}

void cMessages::add_error(std::string const &where, std::string const &text, unsigned code) {
    if (may_tell(errors_)) add(where, "error: " + shortened(text, longest_text) + coded(code));
}

void cMessages::add_warning(std::string const &where, std::string const &text) {
    if (may_tell(warnings_)) add(where, warning_ + ": " + shortened(text, longest_text));
}

void cMessages::error(std::string const &text, unsigned code) { add_error(name_, text, code); }

void cMessages::error(cPlace place, std::string const &text, unsigned code) {
    add_error(at(place), text, code);
}

void cMessages::warning(std::string const &text) { add_warning(name_, text); }

void cMessages::warning(cPlace place, std::string const &text) { add_warning(at(place), text); }

void cMessages::note(cPlace place, std::string const &text) {
    if (errors_.beyond == 0) add(at(place), "note: " + text);
}

void cMessages::take(std::string const &lines, size_t count) {
    size_t const told = std::min(count, static_cast<size_t>(limit_) - errors_.told);
    if (told > 0 || count == 0) lines_ += lines;
    errors_.told += told;
    errors_.beyond += count - told;
}

std::string cMessages::text() const {
    auto const more = [this](std::string const &kind, cTally const &tally) {
        if (tally.beyond == 0) return std::string();
        return without_controls(name_) + ": " + kind + ": " + std::to_string(tally.beyond) +
               " more\n";
    };
    return lines_ + more(warning_, warnings_) + more("error", errors_);
}
