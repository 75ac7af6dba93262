#pragma once
// Puts the new text together: bytes of the old one, and between them what is new, laid out like its
// neighbours.

#include "edit/cpage.h"
#include "edit/cplan.h"

#include <optional>
#include <string>

namespace qrv::edit {

// How the entries of a container are laid out.
struct Layout {
    std::string indent;            // of a line with an entry
    std::string unit = "    ";     // what a level adds to it
    std::string separator = " = "; // between key and value
    size_t width = 0;              // from the start of a key to its "=", where these are aligned
    char delimiter = ';';
    bool lines = false; // is each entry on lines of its own?
    bool ended = true;  // has the last entry a delimiter?
};

class NewText {
  public:
    NewText(Page const &page, Entries const &entries, Plan const &plan)
        : page_(page), entries_(entries), plan_(plan) {}

    std::string all();

  private:
    struct Part { // an entry in the text, of the block at hand
        cat::SourceEntry entry;
        Extent extent;
    };
    using Parts = std::vector<Part>;
    class BlockWriter;

    std::string value(Item const &item, Layout const &layout);
    std::string value_here(Item const &item);
    std::optional<std::string> literal_inside(Item const &item) const;
    std::string literal(Item const &item, Layout const &layout);
    std::string fresh(Item const &item, Layout const &layout);
    std::string block(Item const &item);
    std::string inner(Item const &item, cat::SourceEntry const &frame);
    std::string changed_inner(Item const &item, cat::SourceEntry const &frame);
    std::string key(Item const &item, Layout const &layout);
    std::string new_entry(Item const &item, Layout const &layout, bool delimiter);
    std::string comments_of(Item const &item, cat::SourceComment::Where where,
                            std::string const &indent);

    Parts parts_of(Item const &item) const;
    Layout layout_of(Item const &item) const;
    Layout layout_of(Item const &item, Parts const &parts) const;
    std::string like(Item const &item) const;

    Page const &page_;
    Entries const &entries_;
    Plan const &plan_;
};

} // namespace qrv::edit
