#pragma once
// The keys and values of a hash as they are: a copy, for steps that run user code.

#include "qrv/core/cattrhash.h"

#include <utility>
#include <vector>

using cPairs = std::vector<std::pair<objref, objref>>;

inline cPairs pairs_of(cAttrHash const &hash) {
    cPairs pairs;
    pairs.reserve(static_cast<std::size_t>(hash.used()));
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        pairs.emplace_back(node->key(), node->valref());
    return pairs;
}
