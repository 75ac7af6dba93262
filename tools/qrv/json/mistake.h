#pragma once
// A mistake in the syntax of a JSON text, in words: what is expected, what is found, and a note for
// what people often write instead of JSON.

#include "tools/qrv/json/places.h"

#include <cstddef>
#include <string>
#include <string_view>

struct cJsonMistake {
    size_t offset;
    std::string text;
    std::string note = {};    // may be empty
    bool is_value = false;    // a value that can't be stored
    bool is_unclosed = false; // a bracket is not closed
};

// `parser_text` is what the parser reports after it has read so many characters; the places are at
// the last token that it accepted.
cJsonMistake mistake_of(std::string const &bytes, cJsonPlaces const &places, size_t read,
                        std::string_view parser_text);
