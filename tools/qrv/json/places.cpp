#include "tools/qrv/json/places.h"

#include "tools/qrv/json/reading.h"

#include <algorithm>

cJsonPlaces::cJsonPlaces(std::string const &bytes) : bytes_(bytes) {
    if (bytes_.starts_with(json_mark)) end_ = json_mark.size();
}

cJsonPlaces::cJsonPlaces(std::string const &bytes, size_t offset) : bytes_(bytes), end_(offset) {}

void cJsonPlaces::next() {
    start_ = start_after(end_, " \t\r\n,:");
    end_ = end_of(start_);
}

size_t cJsonPlaces::token_at(size_t offset) const {
    size_t start = start_after(end_, " \t\r\n");
    for (size_t end = end_of(start); end <= offset && end > start; end = end_of(start))
        start = start_after(end, " \t\r\n");
    return start;
}

size_t cJsonPlaces::start_after(size_t at, char const *passed) const {
    return std::min(bytes_.find_first_not_of(passed, at), bytes_.size());
}

// Stops at the first container, so that all calls together take O(size).
bool cJsonPlaces::array_has_lines() const {
    for (size_t start = end_, end = end_;; start = end) {
        start = start_after(start, " \t\r\n,");
        if (has(start, "[{")) return true;
        if (!has(start, "\"-0123456789tfn")) return false; // the end of the array, or a mistake
        end = end_of(start);
        if (bytes_[start] == '"' && string_has_lines(start, end)) return true;
    }
}

// Line ends are possible only as escapes.
bool cJsonPlaces::string_has_lines(size_t start, size_t end) const {
    std::string_view const string(&bytes_[start], end - start);
    for (size_t at = string.find('\\'); at != string.npos; at = string.find('\\', at + 2))
        if (std::string_view const escape = string.substr(at + 1);
            escape.starts_with('n') || escape.starts_with("u000a") || escape.starts_with("u000A"))
            return true;
    return false;
}

// Cuts tokens like the parser: "0" is one in "01", and "null" is one in "nullx".
size_t cJsonPlaces::end_of(size_t start) const {
    size_t end = start + 1;
    if (has(start, "\""))
        end = after_string(end);
    else if (has(start, "-0123456789"))
        end = after_number(start);
    else if (has(start, "tn"))
        end = start + std::string_view("true").size();
    else if (has(start, "f"))
        end = start + std::string_view("false").size();
    return std::min(end, bytes_.size());
}

size_t cJsonPlaces::after_string(size_t at) const {
    while (at < bytes_.size() && bytes_[at] != '"') at += bytes_[at] == '\\' ? 2 : 1;
    return at + 1;
}

size_t cJsonPlaces::after_number(size_t at) const {
    at += has(at, "-");
    at = has(at, "0") ? at + 1 : after_digits(at);
    if (has(at, ".")) at = after_digits(at + 1);
    if (has(at, "eE")) at = after_digits(at + 1 + has(at + 1, "+-"));
    return at;
}

size_t cJsonPlaces::after_digits(size_t at) const {
    return std::min(bytes_.find_first_not_of("0123456789", at), bytes_.size());
}

bool cJsonPlaces::has(size_t at, std::string_view characters) const {
    return at < bytes_.size() && characters.find(bytes_[at]) != std::string_view::npos;
}

cPlace cJsonPlaces::place(size_t offset) {
    if (offset < last_offset_) {
        last_offset_ = 0;
        last_place_ = {};
    }
    for (; last_offset_ < std::min(offset, bytes_.size()); ++last_offset_) {
        if (bytes_[last_offset_] == '\n')
            ++last_place_.line, last_place_.column = 1;
        else
            ++last_place_.column;
    }
    return last_place_;
}
