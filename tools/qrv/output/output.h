#pragma once
// The two ways out: results on descriptor 1, messages on descriptor 2. A write that fails is
// reported once and remembered.

#include "tools/system.h"

#include <string>
#include <string_view>

// False if the write failed. That is reported, unless the reader of a pipe has closed it.
bool put_result(std::string_view bytes);
void put_error(std::string const &where, std::string const &text);
void put_lines(std::string_view lines); // as they are
