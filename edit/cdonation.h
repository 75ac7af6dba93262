#pragma once
// Which entries of a donor the entries of the changed tree come from. The two trees are walked side
// by side: by key in maps and typed values, by value from the end in vectors and sets, where values
// are appended. So constants and equal values are distinguished by their places.

#include "edit/csnapshot.h"

#include <set>
#include <utility>

namespace qrv::edit {

class Donation {
  public:
    // Borrows the snapshot.   O(1) without a donor, else O(entries of the donor) in most trees
    Donation(Snapshot const &before, objref const &root);

    // The donor's entry with the same key, or value, at the same place, or of this very node; or
    // null. If the node is in a shared container, it can be one of several: one that has its value
    // is preferred.
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
    std::unordered_map<std::uint32_t, WasEntry const *> own_; // of the donor's nodes
    std::set<std::pair<cObj const *, cObj const *>> met_;
    std::vector<std::pair<cObj const *, cObj const *>> todo_;
};

} // namespace qrv::edit
