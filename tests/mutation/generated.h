#pragma once
// Files with declarations and objects of what they declare, made up by chance and without a fault.

#include <random>
#include <string>

namespace mutation_test {
std::string generated_file(std::mt19937 &chance);
}
