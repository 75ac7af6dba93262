#pragma once
// The output of the tool: results on descriptor 1, messages on descriptor 2. The first write that
// fails is reported, and its failure is remembered.

#include "tools/system.h"

#include <string>
#include <string_view>

// False if the write failed. Reports that, unless the reader of a pipe has closed it.
bool put_result(std::string_view bytes);
void put_error(std::string const &where, std::string const &text);
void put_lines(std::string_view lines); // to descriptor 2, unchanged
