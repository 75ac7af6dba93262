#pragma once
// Exceptions in messages.

#include <string>

// The text of the current exception. Call it only inside a catch block.
std::string thrown();
