#pragma once
// The parts of the new text, entry by entry in its order, and the bytes from which each is copied.
// A value that several places share is written at the first of them; the others refer to it.
//
// A container is written in one block of the text, or in several if its key is repeated.

#include "edit/centries.h"
#include "edit/cmatching.h"

#include <deque>
#include <string_view>

namespace qrv::edit {

struct Item {
    enum How : unsigned char {
        as_it_was, // the value's text at `source`
        literal,   // new text without parts
        block,     // a container: the brackets at `source`, with the children
        fresh,     // a container with new brackets
        absent,    // no text: the value is deeper than the reader accepts
        reference  // #cRef(the path of `target`)
    };

    Item *parent = nullptr;
    cAttrNode const *node = nullptr; // null for the outermost value
    objref value;
    size_t position = 0;    // in its container
    int depth = 0;          // the number of containers around it
    size_t old = none;      // its former entry
    bool moved = false;     // `old` is at another place of the text, or in the donor's text
    bool needs_key = false; // `old` has no key, and the reader would number it differently now
    size_t donated = none;  // the donor's entry whose value replaced the one at `old`
    size_t source = none;
    How how = literal;
    Item const *target = nullptr;
    std::vector<Item *> children; // of this block

    bool is_new() const { return old == none || moved; }
};

class Plan {
  public:
    // Borrows all of them; `root` is the changed tree.
    Plan(std::string_view text, Entries const &entries, Snapshot const &before, objref const &root);

    Item const &root() const { return items_.front(); }
    Snapshot const &before() const { return before_; }
    // The path of an item in the text, with a slash before each key.
    static std::string path(Item const &item);

  private:
    struct Slot {
        size_t old = none;
        cAttrNode const *node = nullptr;
        size_t position = 0;
        bool moved = false;
        size_t donated = none;
    };
    using Slots = std::vector<Slot>;

    Item &add(Item *parent, Slot const &slot, objref const &value);
    void settle(Item &item);
    void settle_here(Item &item);
    void settle_from_elsewhere(Item &item, objref const &was);
    bool has_its_text(Item const &item);
    bool has_lost_entries(size_t number) const;
    bool is_block_of(size_t number, objref const &container) const;
    bool is_merged(Item const &item, bool in_place) const;
    bool settle_shared(Item &item, bool in_place);
    void add_children(Item &item, std::vector<size_t> const &blocks);
    void number(Item &block) const;
    bool add_repeated(Item &item, Slot const &slot);
    bool is_unchanged(Item const &item) const;
    void add_fresh_children(Item &item);
    void arrange(cMapObj const &container, std::vector<size_t> const &blocks);
    WasEntry const *was_of(size_t number) const;
    Slots slots_of(cMapObj const &container, bool fresh);
    bool is_as_before(WasEntry const &was, cAttrNode const &node) const;
    std::vector<size_t> const &definitions(objref const &value);
    void search_definitions();
    bool writes(size_t number, objref const &value) const;
    size_t entry_of(WasEntry const &was, bool moved) const;
    bool is_left_out(size_t number) const;
    cAttrNode const *node_at(Item const &item, std::string const &key) const;
    bool reads_as(size_t reference, objref const &value) const;
    cAttrNode const *path_end(size_t reference) const;
    bool path_holds(size_t reference, objref const &value) const;

    std::string_view text_;
    Entries const &entries_;
    Snapshot const &before_;
    objref root_;
    Matching matching_;
    std::deque<Item> items_;
    std::unordered_map<cObj const *, Item *> written_;            // containers and shared values
    std::unordered_set<cAttrNode const *> passed_;                // nodes of the items so far
    std::unordered_map<cAttrNode const *, Item const *> in_sets_; // the first items of nodes
    std::unordered_map<size_t, Slots> arranged_;                  // by block
    std::unordered_map<cObj const *, std::vector<size_t>> definitions_; // of requested values
    std::vector<std::pair<cObj const *, size_t>> all_definitions_;      // sorted
    bool searched_ = false; // is all_definitions_ filled?
};

} // namespace qrv::edit
