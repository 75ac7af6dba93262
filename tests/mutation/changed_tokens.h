#pragma once
// Changes single tokens of text and compares the reports of the library and the tool. Each text is
// read in a forked copy of the test process, since declared types exist until their process ends.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace mutation_test {

struct cToken {
    size_t offset = 0;
    std::string text;
};

// Returns whether the text is one of these characters.
bool is_any(std::string const &text, std::string_view characters);

// The tokens of text, without blanks and comments.
std::vector<cToken> tokens_of(std::string const &text);

// The text with the token replaced. An empty `by` deletes the token.
std::string replaced(std::string const &text, cToken const &token, std::string const &by);

// The text without the opening bracket that this token is, its closing bracket, and all that is
// between them. The unchanged text if the token is not an opening bracket or is never closed.
std::string without_brackets(std::string const &text, std::vector<cToken> const &tokens,
                             size_t index);

// Returns whether the library reports anything while it reads the first value of the text.
bool is_reported(std::string const &text);

// The result of the tool's `check` on a file with this text.
struct cChecked {
    int status = -1;        // -1: the process was killed
    bool has_error = false; // it printed "error: "
};
cChecked checked(std::string const &text);

// Describes how `check` fails to report what the library reports; empty if it reports everything.
std::string missing_report(std::string const &text);

} // namespace mutation_test
