#pragma once
// The comments that a program sets on values of a document, and the text that has them.

#include "qrv/value/document.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qrv::detail {

// The comments of a tree as it was read. The program has set all others.
class comment_notes {
  public:
    explicit comment_notes(value const &root);

    // `root` and the values below it whose comments differ from the recorded ones, each once.
    // Borrowed.   O(size)
    std::vector<cObj const *> changed(value const &root) const;

  private:
    std::unordered_map<cObj const *, std::string> noted_;
    std::vector<value> keep_; // so that no other object gets the address of a recorded one
};

// Returns `text`, which reads as the tree below `root`, with the comments of the values `changed`.
// Reads the result with the registered types and compares all comments, so those of other values
// are unchanged. If that is not possible, returns an empty string and sets `failed` to the value
// whose comment can't be written.   O(size)
std::string with_comments(std::string text, value const &root,
                          std::vector<cObj const *> const &changed, options how, value &failed);

} // namespace qrv::detail
