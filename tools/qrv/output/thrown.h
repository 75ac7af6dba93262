#pragma once
// Exceptions in messages.

#include <string>

// The text of the exception that is being handled. Call it inside a catch block only.
std::string thrown();
