#pragma once
// How a scalar is spelt in a file that a person wrote: like the literal whose place it takes, as
// far as the value allows. A number keeps its sign, base, width, suffix and digits after the point;
// a string keeps its quotes, or their absence. What comes out always reads back as the value.

#include "qrv/core/cobj.h"
#include "qrv/text/read/csourcemap.h"

#include <string>
#include <string_view>

namespace qrv::edit {

// The literal for a value; `like` is the literal that was there, or that of a neighbour; empty for
// none. Values that are no literal have their exact written form, which is empty where there is
// none: infinity, for one.
std::string spelt(objref const &value, std::string_view like);

// The word between the brackets of "Mode( off /* as shipped */ )"; empty if there is more or less.
cat::Span word_in_brackets(std::string_view text);

bool is_hexadecimal(std::string_view literal); // of a number

// Is this text a word that reads as a string without quotes?
bool is_word(std::string_view text);

} // namespace qrv::edit
