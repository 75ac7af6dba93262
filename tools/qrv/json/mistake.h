#pragma once
// Describes a mistake in the syntax of JSON text: what is expected, what is found, and a note about
// forms that people often write instead of JSON.

#include "tools/qrv/json/places.h"

#include <cstddef>
#include <string>
#include <string_view>

struct cJsonMistake {
    size_t offset;
    std::string text;
    std::string note = {};    // may be empty
    bool is_value = false;    // the value can't be stored
    bool is_unclosed = false; // a bracket is not closed
};

// `parser_text` is the parser's message after it has read `read` characters; `places` is at the
// last token that the parser accepted.
cJsonMistake mistake_of(std::string const &bytes, cJsonPlaces const &places, size_t read,
                        std::string_view parser_text);
