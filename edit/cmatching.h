#pragma once
// Matches the entries of the changed tree with the entries of the tree before the change. Entries
// of maps are matched by node; those of vectors and sets, where values move from node to node, by
// value. If a whole container was replaced by another one of its type, their entries are matched by
// key or by position, so that equal entries keep their text. Entries of the donor are used only for
// entries that were not in the tree.
//
// Most edits change little. If nothing is shared, and no part of the text refers to another one,
// unchanged containers are skipped as a whole.

#include "edit/cdonation.h"
#include "edit/csnapshot.h"

#include <unordered_set>
#include <utility>

namespace qrv::edit {

class Matching {
  public:
    // Borrows the snapshot. `by_parts`: no part of the text depends on another one.   O(size)
    Matching(Snapshot const &before, objref const &root, bool by_parts);

    // Is the container unchanged with all that it holds, and therefore skipped?
    bool is_left_out(objref const &container) const;
    // The former entry of a node; null for a new entry.
    WasEntry const *was(cAttrNode const &node) const;
    // Is `now` the object `was`, or a container that replaced it?
    bool continues(objref const &now, objref const &was) const;
    // The container that a new container replaced; null for others.
    objref const *replaced_by(objref const &now) const;
    // The number of places of the object in the tree.
    unsigned places(objref const &value) const;
    // For a new node: the removed entry that held this value object, or the donor's entry from
    // which the node comes, or null. Returns each entry once. A constant such as #nil has many
    // places, so it counts only if a single removed entry held it.
    WasEntry const *take_removed(cAttrNode const &node);
    // If the donor's value replaced the node's value, the donor's entry; else null.
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
    std::vector<objref> alive_; // the containers of the changed tree, breadth first
    bool by_parts_;
    std::vector<cObj const *> values_;              // one for each place in the tree, sorted
    std::unordered_set<cObj const *> changed_;      // containers with a change inside, if by_parts_
    std::unordered_set<std::uint32_t> bound_anids_; // of matched former entries
    std::unordered_map<cAttrNode const *, WasEntry const *> was_;
    std::unordered_map<cObj const *, objref> instead_; // from a new container to the replaced one
    std::unordered_set<cObj const *> replaced_;        // the replaced containers
    std::vector<std::pair<WasEntry const *, cAttrNode const *>> bound_; // matches, in order
    std::unordered_map<cObj const *, std::vector<WasEntry const *>> removed_;
};

} // namespace qrv::edit
