#pragma once
// The comments that a program sets on values of a document, and the text that has them.

#include "qrv/value/document.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qrv::detail {

// The comments of a tree as it was read. Comments of other values were set by the program.
class comment_notes {
  public:
    explicit comment_notes(value const &root);

    // The values below `root`, and itself, whose comments are not those that were noted, each once.
    // Borrowed.   O(size)
    std::vector<cObj const *> changed(value const &root) const;

  private:
    std::unordered_map<cObj const *, std::string> noted_;
    std::vector<value> keep_; // so that no other object gets the address of one that was noted
};

// `text`, which reads as the tree below `root`, with the comments that these values have. Reads it
// with the types that are registered. Empty if it can't have them: what is read is compared, so all
// other comments are those of `text`.   O(size)
std::string with_comments(std::string text, value const &root,
                          std::vector<cObj const *> const &changed, options how, value &failed);

} // namespace qrv::detail
