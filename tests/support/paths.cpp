// The two folders come from the build; see paths.h.
#include "tests/support/paths.h"

namespace test {
std::string source_file(std::string const &path) { return std::string(QRV_SOURCE_DIR "/") + path; }

std::string binary_file(std::string const &path) { return std::string(QRV_BINARY_DIR "/") + path; }
} // namespace test
