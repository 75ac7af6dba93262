#pragma once
// Spells a scalar for a file that a person wrote: like the literal that it replaces, as far as the
// value allows. A number keeps its sign, base, width, suffix and digits after the point; a string
// keeps its quotes, or their absence. The result always reads as the value.

#include "qrv/core/cobj.h"
#include "qrv/text/read/csourcemap.h"

#include <string>
#include <string_view>

namespace qrv::edit {

// The literal for a value. `like` is the previous literal or that of a neighbour, or empty. For
// values without a literal, returns their exact written form, or "" for values that cannot be
// written, such as infinity.
std::string spelt(objref const &value, std::string_view like);

// The word between the brackets, as in "Mode( off /* as shipped */ )"; empty if there isn't exactly
// one.
cat::Span word_in_brackets(std::string_view text);

bool is_hexadecimal(std::string_view literal); // of a number

// Is this a word that reads as a string without quotes?
bool is_word(std::string_view text);

} // namespace qrv::edit
