#pragma once
// The layout of the entries of a container, so that new ones look like their neighbours.

#include "edit/cpage.h"
#include "edit/cplan.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace qrv::edit {

struct Layout {
    std::string indent;            // of a line with an entry
    std::string unit = "    ";     // the additional indent of each level
    std::string separator = " = "; // between key and value
    size_t width = 0;              // from the start of a key to its "="; 0: not aligned
    std::string key;               // an existing hexadecimal key: the style of new ones
    std::string gap = " ";         // between entries on one line
    char delimiter = ';';
    bool multiline = false; // does any entry begin a line?
    bool ended = true;      // has the last entry a delimiter?
    bool known = false;     // was the separator found in an entry?
};

// An entry in the text.
struct Part {
    cat::SourceEntry entry;
    Extent extent;
};
using Parts = std::vector<Part>;

class Layouts {
  public:
    Layouts(Page const &page, Entries const &entries) : page_(page), entries_(entries) {}

    // The layout of the entries in an item that is a container.
    Layout const &of(Item const &item);
    // The entries of a block that have a node.
    Parts parts_of(Item const &item) const;
    // Does the part begin a line, and is its "=" `column` bytes after the start of its key?
    bool in_column(Part const &part, size_t column) const;

  private:
    Layout new_layout_of(Item const &item);
    std::string gap_of(Parts const &parts) const;
    std::string hexadecimal_key(Parts const &parts) const;

    Page const &page_;
    Entries const &entries_;
    std::unordered_map<Item const *, Layout> layouts_;
};

} // namespace qrv::edit
