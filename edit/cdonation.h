#pragma once
// Finds the entries of the donor from which entries of the changed tree come. Walks both trees in
// parallel: by key in maps and typed values, by value from the end in vectors and sets, where
// values are appended. So constants and equal values are distinguished by their places.

#include "edit/csnapshot.h"

#include <set>
#include <utility>

namespace qrv::edit {

class Donation {
  public:
    // Borrows the snapshot.   O(1) without a donor, else O(entries of the donor) in most trees
    Donation(Snapshot const &before, objref const &root);

    // The donor's entry that has this node, or that has the same key or value at the same place; or
    // null. For a node in a shared container there can be several: then the function prefers one
    // with the node's value.
    WasEntry const *of(cAttrNode const &node) const;

  private:
    using Entries = std::vector<WasEntry>;

    void walk(cObj const *now, Entries const &entries);
    void walk_map(cMapObj const &now, Entries const &entries);
    void walk_list(cMapObj const &now, Entries const &entries);
    void pair(cAttrNode const &node, WasEntry const &entry);
    void visit(objref const &now, objref const &donated);

    Snapshot const &before_;
    std::unordered_map<cAttrNode const *, WasEntry const *> entries_;
    std::unordered_map<std::uint32_t, WasEntry const *> own_; // entries of the donor's nodes
    std::set<std::pair<cObj const *, cObj const *>> met_;
    std::vector<std::pair<cObj const *, cObj const *>> todo_;
};

} // namespace qrv::edit
