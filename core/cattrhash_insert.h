#pragma once
// Insertion for callers that fill a hash from text or from another hash: the key's hash is computed
// once, the node takes the key object itself, and no user code runs. The effect on the hash is that
// of mapitem with the same key and value.

#include "qrv/core/cattrhash.h"

struct cAttrInsert {
    struct cPlace {
        cAttrNode *node;
        bool is_new; // else the node was there before, and its value is as it was
    };

    // Needed by all others: no key of the hash has hooks of its own, and making a string or an int
    // runs no method of a program.
    static bool is_ready(cAttrHash const &hash) noexcept;

    // Values must be good and not executable.
    static cPlace text(cAttrHash &hash, std::string_view key, objref value);
    static cPlace number(cAttrHash &hash, int key, objref value);
    // The key is exactly a string or an int, and nobody else holds it.
    static cPlace adopt(cAttrHash &hash, objref key, objref value);
    // vect_append, directly where all keys are ints.
    static bool append(cAttrHash &hash, objref value);

    // core/cattrhash_copy.cpp: is the key exactly a string or an int; and does copy() have the
    // effect of mapitem for each node, that is, are all keys plain and all values good and not
    // executable?
    static bool has_plain_key(cAttrNode const &node) noexcept;
    static bool is_copyable(cAttrHash const &hash) noexcept; // O(n)
    // All nodes of a hash that is copyable into an empty one. Clones keys, shares values.
    static void copy(cAttrHash &to, cAttrHash const &from);

  private:
    template <class MakeKey> static cPlace insert(cAttrHash &hash, cAttrHash::cSearch const &search,
                                                  MakeKey make_key, objref &value);
};
