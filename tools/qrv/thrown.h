#pragma once
// What stopped the work, for messages.

#include <string>

// In a handler: the words of the exception that is handled.
std::string thrown();
