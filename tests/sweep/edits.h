#pragma once
// The edits that the sweep makes of a file, each with what it must do to the text and to the tree.

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
    std::vector<std::string> command; // with "@" for the file
    cLines lines = {};                // that may change
    size_t meant = 0;                 // how many of them at most
    std::vector<cBytes> own = {};     // their comments are removed
    bool moves_comments = false;      // from a deleted entry to the first reference to it
    std::string refusal = {}; // pattern of what the tool may say if the value does not allow it
    std::string tree = {};    // after the edit
};

// Calls `visit` for each edit of a text: each scalar changed, each entry deleted, a new one before
// and after it, and one appended to each container. Only every n-th edit is prepared and visited.
void for_edits(std::string const &text, size_t every,
               std::function<void(cEdit const &)> const &visit);

// All values of the first value in a text with their paths, a line each; "unreadable" for an error.
std::string tree_of(std::string const &text);

} // namespace sweep_test
