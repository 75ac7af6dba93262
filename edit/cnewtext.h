#pragma once
// Assembles the new text: bytes of the old one, and new parts between them, laid out like their
// neighbours.

#include "edit/ccomments.h"
#include "edit/clayout.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace qrv::edit {

class NewText {
  public:
    NewText(Page const &page, Entries const &entries, Plan const &plan)
        : page_(page), entries_(entries), plan_(plan), comments_(page, entries),
          layouts_(page, entries) {}

    std::string all();

  private:
    // From an entry to the one whose literal it follows in style; null for none.
    using Samples = std::unordered_map<Item const *, Item const *>;
    class BlockWriter;

    // These append to `out`: returning a string would copy it once for each level of the tree.
    void add_value(std::string &out, Item const &item, Layout const &layout);
    void add_value_here(std::string &out, Item const &item);
    void add_fresh(std::string &out, Item const &item, Layout const &layout);
    void add_block(std::string &out, Item const &item);
    void add_inner(std::string &out, Item const &item, cat::SourceEntry const &frame);
    void add_new_entry(std::string &out, Item const &item, Layout const &layout, bool delimiter);

    std::optional<std::string> literal_inside(Item const &item) const;
    static std::optional<std::string> word_inside(Item const &item, std::string_view old);
    std::string literal(Item const &item, Layout const &layout);
    std::string padding_like(Item const &item) const;
    bool typed_on_lines(Item const &item, Layout const &layout);
    std::string changed_inner(Item const &item, cat::SourceEntry const &frame);
    std::string key(Item const &item, Layout const &layout);
    std::string renamed(Item const &item, cat::SourceEntry const &entry);
    bool has_other_key(Item const &item) const;
    bool needs_lines(Item const &item, bool alone) const;
    bool keeps_separator(Item const &item, Layout const &layout) const;

    std::string like(Item const &item);
    std::string sample_for(Item const &item);
    Samples samples_in(Item const &parent) const;

    Page const &page_;
    Entries const &entries_;
    Plan const &plan_;
    Comments const comments_;
    Layouts layouts_;
    std::unordered_map<Item const *, Samples> samples_; // by the parent
    std::map<std::pair<Item const *, cTypeObj const *>, bool> typed_on_lines_;
};

} // namespace qrv::edit
