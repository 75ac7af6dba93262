#pragma once
// The edits that the sweep makes in a file, each with its expected effect on the text and on the
// tree.

#include "tests/sweep/judge.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace sweep_test {

enum cKind : unsigned char { changed, deleted, inserted, appended };
constexpr std::array<char const *, 4> kind_names{"changed", "deleted", "inserted", "appended"};

struct cEdit {
    cKind kind;
    std::vector<std::string> command; // with "@" in place of the file
    cLines lines = {};                // the lines that may change
    size_t meant = 0;                 // the most lines that may change
    std::vector<cBytes> own = {};     // their comments are removed
    bool moves_comments =
        false; // the comments from a deleted entry to the first reference to it may move
    std::string refusal = {}; // pattern of the tool's message if the value does not allow the edit
    std::string tree = {};    // after the edit
};

// Calls `visit` for each edit of text: each scalar changed, each entry deleted, a new one before
// and after it, and one appended to each container. Only every n-th edit is prepared and visited.
void for_edits(std::string const &text, size_t every,
               std::function<void(cEdit const &)> const &visit);

// All values of the first value in text with their paths, a line each; "unreadable" for an error.
std::string tree_of(std::string const &text);

} // namespace sweep_test
