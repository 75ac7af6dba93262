#pragma once
// Which entry of the changed tree is which entry of the tree before. In maps an entry is known by
// its node; in vectors and sets, where values move from node to node, by its value. Where a whole
// container was replaced by another of its type, their entries belong together by key or by
// position, so that what is equal in both keeps its text. What an entry is in a donor counts only
// where it was not in the tree.
//
// Most edits change little. If nothing is shared, and no part of the text refers to another one,
// containers without a change are left out as a whole.

#include "edit/cdonation.h"
#include "edit/csnapshot.h"

#include <unordered_set>
#include <utility>

namespace qrv::edit {

class Matching {
  public:
    // Borrows the snapshot. `by_parts`: no part of the text depends on another one.   O(size)
    Matching(Snapshot const &before, objref const &root, bool by_parts);

    // Is the container, with all in it, in the tree as it was, and left out below?
    bool is_left_out(objref const &container) const;
    // What a node was; null for a new entry.
    WasEntry const *was(cAttrNode const &node) const;
    // Is it the same object, or one that replaced it?
    bool continues(objref const &now, objref const &was) const;
    // What a new container replaced; null for others.
    objref const *replaced_by(objref const &now) const;
    // In how many places of the tree the object is.
    unsigned places(objref const &value) const;
    // For a node that is new: the removed entry that held this very value, or the donor's entry
    // that it comes from, or null. Each is returned once. A constant such as #nil has many places,
    // so only a single removed entry with it counts.
    WasEntry const *take_gone(cAttrNode const &node);
    // The donor's entry with the value that a node has instead of another one; null for none.
    WasEntry const *donated(WasEntry const &was, cAttrNode const &node) const;

  private:
    using Was = std::vector<WasEntry>;
    using Nodes = std::vector<cAttrNode const *>;

    void walk(objref const &root);
    void find_changed();
    bool is_in_tree(cObj const *value) const;
    void match_alive(bool donated);
    void match(Was const &was, cMapObj const &now);
    void match_by_node(Was const &was, Nodes const &nodes);
    void match_by_value(Was const &was, Nodes const &nodes, bool is_set);
    void match_equal(Was const &was, Nodes const &nodes);
    void match_by_key(Was const &was, Nodes const &nodes);
    void match_by_place(Was const &was, Nodes const &nodes);
    void match_replaced(WasEntry const &was, cAttrNode const &node);
    void bind(WasEntry const &was, cAttrNode const &node);
    bool is_bound(WasEntry const &was) const { return bound_anids_.count(was.anid) > 0; }
    bool is_bound(cAttrNode const &node) const { return was_.count(&node) > 0; }
    bool alike(WasEntry const &was, objref const &now) const;

    Snapshot const &before_;
    Donation const donation_;
    std::vector<objref> alive_; // the containers, as they were met
    bool by_parts_;
    std::vector<cObj const *> values_;              // one for each place in the tree, sorted
    std::unordered_set<cObj const *> changed_;      // containers with a change in them, if by parts
    std::unordered_set<std::uint32_t> bound_anids_; // of before
    std::unordered_map<cAttrNode const *, WasEntry const *> was_;
    std::unordered_map<cObj const *, objref> instead_; // what a new container replaced
    std::unordered_set<cObj const *> replaced_;        // the values in it
    std::vector<std::pair<WasEntry const *, cAttrNode const *>> bound_; // in order
    std::unordered_map<cObj const *, std::vector<WasEntry const *>> gone_;
};

} // namespace qrv::edit
