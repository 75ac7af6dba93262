#pragma once
// Texts with one token spoilt, and what library and tool say of them. Each reading happens in a
// forked copy of the test process, since a type that a text declares lives as long as its process.

#include <string>
#include <vector>

namespace mutation_test {

struct cToken {
    size_t offset = 0;
    std::string text;
};

// The tokens of a text, without blanks and comments.
std::vector<cToken> tokens_of(std::string const &text);

// The text with the token replaced; by nothing, it is deleted.
std::string replaced(std::string const &text, cToken const &token, std::string const &by);

// The text without a bracket that opens, without all up to the one that closes it, and without
// that; the text as it is where that token opens no bracket or none closes it.
std::string without_brackets(std::string const &text, std::vector<cToken> const &tokens,
                             size_t index);

// Does the library report anything while it reads the first value of the text?
bool is_reported(std::string const &text);

// What the tool's `check` does with the text as a file.
struct cChecked {
    int status = -1;        // -1: the process died
    bool has_error = false; // a printed line says "error: "
};
cChecked checked(std::string const &text);

// Empty, or why a text that the library reports something about isn't refused by `check`.
std::string silence(std::string const &text);

} // namespace mutation_test
