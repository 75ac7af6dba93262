#pragma once
// A tree as it was before a change: the entries of each container, and their values. Also the tree
// of the donor, another text whose values the change may use. The snapshot shares the values, so no
// new object gets the address of one of them while it exists. A large tree has many entries, so an
// entry takes only 32 bytes, and those of its strings.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qrv::edit {

// The value as a container whose entries are edited one by one; null for scalars, types,
// specifications and objects that are not a cMapObj.
cMapObj const *container_in(objref const &value);

// Is it a vector or a set?
bool is_list(cObj const &container);

// The exact written form.
std::string exact_text(objref const &value);

// Is it one of the values with a #name?
bool is_constant(objref const &value);

struct WasEntry {
    std::uint32_t anid;
    std::uint32_t size; // of the text; 0 for a number or bool; `container` for a container
    std::uint64_t key;  // for Snapshot::key
    objref value;
    std::uint64_t content; // the bits of a number or bool, or the offset of the text

    bool is_container() const { return size == container; }
    static constexpr std::uint32_t container = 0xFFFFFFFFu;
};

class Snapshot {
  public:
    explicit Snapshot(objref const &root); // O(size)
    void add_donor(objref const &root);

    objref const &donor() const { return donor_; }
    // Was this a container of the donor?
    bool is_donated(cObj const *container) const { return donated_.contains(container); }

    using Containers = std::unordered_map<cObj const *, std::vector<WasEntry>>;

    Containers const &containers() const { return containers_; }
    // The entries that a container had, in order; null if it was not in the tree.
    std::vector<WasEntry> const *entries(cObj const *container) const;
    // The entry of a node; null if the node was not in the tree.
    WasEntry const *entry(std::uint32_t anid) const;
    WasEntry const &root() const { return root_; }
    // The key of an entry other than root(): its object, or a new one if it had none.
    objref key(WasEntry const &was) const;
    // The value that a node had; null if the node was not in the tree.
    objref const &value(std::uint32_t anid) const;
    // Does the value still have the content that it had in this entry? For a container: is it the
    // same one?
    bool is_still(WasEntry const &was, objref const &value) const;
    // Does the container still have the same nodes with the same values?
    bool is_still(std::vector<WasEntry> const &was, cMapObj const &container) const;

    // Does the tree differ from this one?   O(size)
    bool changed(objref const &root) const;

    // The nodes that were in a changed container, and the nodes on the path to it.
    //   O(size), times the depth of the changes
    std::unordered_set<std::uint32_t> in_changed() const;

  private:
    void add(objref const &root);
    std::uint64_t key_of(cAttrNode const &node);
    WasEntry entry_of(std::uint32_t anid, std::uint64_t key, objref const &value);

    // The bytes of strings, the written forms of values that are not numbers, and keys, each of
    // which ends with a NUL.
    std::string contents_;
    std::vector<objref> keys_; // keys with an object
    WasEntry root_;
    Containers containers_;
    std::vector<WasEntry const *> by_anid_;
    objref donor_;
    std::unordered_set<cObj const *> donated_;
};

} // namespace qrv::edit
