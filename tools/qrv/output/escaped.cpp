#include "tools/qrv/output/escaped.h"

#include <cstdio>

namespace {

struct cCodePoint {
    char32_t code;
    size_t size; // in bytes; 0 if the bytes are not UTF-8
};

// Reads the bytes after the first one of a character of `size` bytes. Overlong forms and surrogates
// are not UTF-8.
cCodePoint continued(std::string_view text, char32_t code, size_t size) {
    constexpr char32_t lowest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (text.size() < size) return {0, 0};
    for (size_t i = 1; i < size; ++i) {
        if (!continues_character(text[i])) return {0, 0};
        code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    bool const is_surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < lowest[size] || code > 0x10FFFF || is_surrogate ? cCodePoint{0, 0}
                                                                  : cCodePoint{code, size};
}

cCodePoint first_of(std::string_view text) {
    auto const byte = static_cast<unsigned char>(text[0]);
    if (byte < 0x80) return {byte, 1};
    if (byte >= 0xF0 && byte < 0xF8) return continued(text, byte & 0x07U, 4);
    if (byte >= 0xE0) return continued(text, byte & 0x0FU, byte < 0xF0 ? 3 : 0);
    return continued(text, byte & 0x1FU, byte >= 0xC0 ? 2 : 0);
}

bool is_shown(char32_t code) {
    bool const is_control = (code < ' ' && code != '\t') || (code >= 0x7F && code < 0xA0);
    bool const is_direction = (code >= 0x202A && code <= 0x202E) || // embeddings and overrides
                              (code >= 0x2066 && code <= 0x2069);   // isolates
    return !is_control && !is_direction;
}

std::string escape(char const *form, unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, form, number);
    return text;
}

} // namespace

std::string escaped(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        cCodePoint const next = first_of(text);
        size_t const size = next.size == 0 ? 1 : next.size;
        if (size == 1 && (next.size == 0 || !is_shown(next.code)))
            shown += escape("\\x%02x", static_cast<unsigned char>(text[0]));
        else if (!is_shown(next.code))
            shown += escape("\\u%04x", static_cast<unsigned>(next.code));
        else
            shown += text.substr(0, size);
        text.remove_prefix(size);
    }
    return shown;
}
