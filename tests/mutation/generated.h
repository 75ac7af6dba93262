#pragma once
// Random valid files with declarations and objects of the declared types.

#include <random>
#include <string>

namespace mutation_test {
std::string generated_file(std::mt19937 &chance);
}
