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
    // The key is exactly a string or an int, and nobody else holds it. Both stay the caller's if
    // the key was there before.
    static cPlace adopt(cAttrHash &hash, objref &&key, objref &&value);
    // vect_append, directly where all keys are ints.
    static bool append(cAttrHash &hash, objref value);

  private:
    template <class MakeKey> static cPlace insert(cAttrHash &hash, cAttrHash::cSearch const &search,
                                                  MakeKey make_key, objref &value);
};
