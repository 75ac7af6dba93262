#pragma once
// The paths of the sources and the built programs, for tests that read the examples or run the
// tool.

#include <string>

namespace test {
// A file of the sources, by its path relative to the root: source_file("examples/device.attr").
std::string source_file(std::string const &path);
// A file of the build, by its path relative to the build folder: binary_file("bin/qrv").
std::string binary_file(std::string const &path);
} // namespace test
