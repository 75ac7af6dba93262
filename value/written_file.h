#pragma once
// Files as bytes, with failures as exceptions.

#include "qrv/value/errors.h"

#include <optional>
#include <string>
#include <string_view>

namespace qrv::detail {

// error: "path: not written: why"; an empty path adds nothing.
[[noreturn]] void refuse_to_write(std::string const &path, std::string const &why);

// All bytes of a file. error: it can't be read.
std::string bytes_of(std::string const &path);

// Replaces the content of the file, completely or not at all, while its folder is locked.
// `expected` is the content that the file must have before that; if it equals `bytes`, the file is
// not written. save_conflict: the file has other content, or does not exist. error: it can't be
// written.
void replace_file(std::string const &path, std::string_view bytes,
                  std::optional<std::string_view> expected = {});

} // namespace qrv::detail
