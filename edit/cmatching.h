#pragma once
// Which entry of the changed tree is which entry of the tree before. In maps an entry is known by
// its node; in vectors and sets, where values move from node to node, by its value. Where a whole
// container was replaced by another of its type, their entries belong together by key or by
// position, so that what is equal in both keeps its text. What an entry is in a donor counts only
// where it was not in the tree.

#include "edit/cdonation.h"
#include "edit/csnapshot.h"

#include <unordered_set>
#include <utility>

namespace qrv::edit {

class Matching {
  public:
    // Borrows the snapshot.   O(size)
    Matching(Snapshot const &before, objref const &root);

    // The node that the entry with that anid has now; null if the entry was removed.
    cAttrNode const *now(std::uint32_t anid) const;
    // What a node was; null for a new entry.
    WasEntry const *was(cAttrNode const &node) const;
    // Is it the same object, or one that replaced it?
    bool continues(objref const &now, objref const &was) const;
    // What a new container replaced; null for others.
    objref const *replaced_by(objref const &now) const;
    // In how many places of the tree the object is.
    unsigned places(objref const &value) const;
    // For a node that is new: the removed entry that held this very value, or the donor's entry
    // that it comes from, or null. Each is returned once.
    WasEntry const *take_gone(cAttrNode const &node);
    // The donor's entry with the value that a node has instead of another one; null for none.
    WasEntry const *donated(WasEntry const &was, cAttrNode const &node) const;

  private:
    using Was = std::vector<WasEntry>;
    using Nodes = std::vector<cAttrNode const *>;

    void walk(objref const &root);
    void match_alive(bool donated);
    void match(Was const &was, cMapObj const &now);
    void match_by_node(Was const &was, Nodes const &nodes);
    void match_by_value(Was const &was, Nodes const &nodes, bool is_set);
    void match_equal(Was const &was, Nodes const &nodes);
    void match_by_key(Was const &was, Nodes const &nodes);
    void match_by_place(Was const &was, Nodes const &nodes);
    void match_replaced(WasEntry const &was, cAttrNode const &node);
    void bind(WasEntry const &was, cAttrNode const &node);
    bool is_bound(WasEntry const &was) const { return nodes_.count(was.anid) > 0; }
    bool is_bound(cAttrNode const &node) const { return was_.count(&node) > 0; }
    bool alike(objref const &was, objref const &now) const;

    Snapshot const &before_;
    Donation const donation_;
    std::vector<objref> alive_; // the containers, as they were met
    std::unordered_map<cObj const *, unsigned> places_;
    std::unordered_map<std::uint32_t, cAttrNode const *> nodes_; // by the anid before
    std::unordered_map<cAttrNode const *, WasEntry const *> was_;
    std::unordered_map<cObj const *, objref> instead_; // what a new container replaced
    std::unordered_set<cObj const *> replaced_;        // the values in it
    std::vector<std::pair<WasEntry const *, cAttrNode const *>> bound_; // in order
    std::unordered_map<cObj const *, std::vector<WasEntry const *>> gone_;
};

} // namespace qrv::edit
