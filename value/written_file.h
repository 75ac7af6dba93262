#pragma once
// Files as bytes, with failures as exceptions.

#include "qrv/value/errors.h"

#include <optional>
#include <string>
#include <string_view>

namespace qrv::detail {

// All bytes of a file. error: it can't be read, or another reason.
std::string bytes_of(std::string const &path);

// Gives the file that content, whole or not at all, under the lock of its folder. `expected` is
// what it must hold right before; if it holds `bytes` already, nothing is written. save_conflict:
// it holds something else, or is not there. error: it can't be written.
void replace_file(std::string const &path, std::string_view bytes,
                  std::optional<std::string_view> expected = {});

} // namespace qrv::detail
