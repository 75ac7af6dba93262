#pragma once
// Puts the new text together: bytes of the old one, and between them what is new, laid out like its
// neighbours.

#include "edit/cpage.h"
#include "edit/cplan.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

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
    bool known = false; // does the separator come from an entry?
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
    // The entry whose literal gives another one its style; null for none.
    using Samples = std::unordered_map<Item const *, Item const *>;
    class BlockWriter;

    std::string value(Item const &item, Layout const &layout);
    std::string value_here(Item const &item);
    std::optional<std::string> literal_inside(Item const &item) const;
    static std::optional<std::string> word_inside(Item const &item, std::string_view old);
    std::string literal(Item const &item, Layout const &layout);
    std::string fresh(Item const &item, Layout const &layout);
    bool typed_on_lines(Item const &item, Layout const &layout);
    std::string block(Item const &item);
    std::string inner(Item const &item, cat::SourceEntry const &frame);
    std::string changed_inner(Item const &item, cat::SourceEntry const &frame);
    std::string key(Item const &item, Layout const &layout);
    std::string renamed(Item const &item, cat::SourceEntry const &entry);
    bool in_column(Part const &part, size_t column) const;
    std::string new_entry(Item const &item, Layout const &layout, bool delimiter);
    std::string before_delimiter(Item const &item) const;
    std::vector<size_t> lenders(Item const &item) const;
    bool needs_lines(Item const &item, bool alone) const;
    bool keeps_separator(Item const &item, Layout const &layout) const;
    std::string comments_at_separator(Item const &item, Layout const &layout) const;
    std::string comments_at(size_t number, cat::SourceComment::Where where,
                            std::string const &indent) const;
    std::string brought(size_t number, std::string text) const;
    std::string comments_of(Item const &item, cat::SourceComment::Where where,
                            std::string const &indent) const;

    Parts parts_of(Item const &item) const;
    Layout const &layout_of(Item const &item);
    Layout new_layout_of(Item const &item);
    std::string like(Item const &item);
    static Samples samples_in(Item const &parent);

    Page const &page_;
    Entries const &entries_;
    Plan const &plan_;
    std::unordered_map<Item const *, Layout> layouts_;
    std::unordered_map<Item const *, Samples> samples_; // by the parent
    std::map<std::pair<Item const *, cTypeObj const *>, bool> typed_on_lines_;
};

} // namespace qrv::edit
