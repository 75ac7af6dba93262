#pragma once
// Where the sources and the built programs lie: for tests that read the examples or run the tool.

#include <string>

namespace test {
// A file of the sources, by its path from the root: source_file("examples/device.attr").
std::string source_file(std::string const &path);
// A file of the build, by its path from its folder: binary_file("bin/qrv").
std::string binary_file(std::string const &path);
} // namespace test
