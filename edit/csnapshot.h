#pragma once
// A tree as it was before a change: which entries each container had, and what stood in them; and
// the tree of a donor, another text whose values the change may use. Values are held, so no address
// is used again while the snapshot lives.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qrv::edit {

// The value as a container whose entries are edited one by one; null for others: scalars, types,
// and what a program's type writes by itself.
cMapObj const *container_in(objref const &value);

// The exact written form.
std::string exact_text(objref const &value);

// Is it one of the values with a #name?
bool is_constant(objref const &value);

struct WasEntry {
    std::uint32_t anid;
    objref key;
    objref value;
};

class Snapshot {
  public:
    explicit Snapshot(objref const &root); // O(size)
    void add_donor(objref const &root);

    objref const &donor() const { return donor_; }
    // Was it a container of the donor?
    bool is_donated(cObj const *container) const { return donated_.contains(container); }

    using Containers = std::unordered_map<cObj const *, std::vector<WasEntry>>;

    Containers const &containers() const { return containers_; }
    // The entries that a container had, in order; null if it was not in the tree.
    std::vector<WasEntry> const *entries(cObj const *container) const;
    // The value that a node had; null if the node was not in the tree.
    objref const &value(std::uint32_t anid) const;
    // What was written for an object that is no container.
    std::string text(objref const &value) const;

  private:
    void add(objref const &root);
    void add_leaf(objref const &value);

    Containers containers_;
    std::unordered_map<std::uint32_t, objref> values_;
    std::unordered_map<cObj const *, std::string> texts_;
    objref donor_;
    std::unordered_set<cObj const *> donated_;
};

} // namespace qrv::edit
