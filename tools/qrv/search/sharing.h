#pragma once
// All ways to a value in a tree. The tree is walked once, each part that several places share once,
// and what leads to each part is remembered; paths are then made backwards from the value. So a
// tree as deep as references make it, with more paths than could be counted, costs its size and
// that of the paths asked for.

#include "qrv/containers/cmapobj.h"

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// The entries of a container, or of an object of a declared type; null for other values.
cMapObj const *as_map(objref const &value);

class cSharing {
  public:
    // Finds the ways to these objects, by identity. Goes into containers, objects of declared
    // types, declarations and the defaults in them; not into what a choice value stands at.
    // O(size)
    cSharing(objref const &top, std::unordered_set<cObj const *> wanted);
    cSharing(cSharing const &) = delete;
    cSharing &operator=(cSharing const &) = delete;
    ~cSharing() = default;

    // The paths to one of them, such as /a/0, as many at most; none if it isn't in the tree.
    std::vector<std::string> paths(cObj const *object, size_t most) const;

  private:
    struct cWay {
        size_t parent;
        objref key;
    };
    struct cPart {
        objref object;          // held: its address is not used again
        std::vector<cWay> ways; // empty for the top
    };

    size_t number_of(objref const &object);
    void add(objref const &object, size_t parent, objref const &key);
    void add_ring(objref const &map, size_t parent);
    void add_parts_of(size_t parent);

    std::unordered_set<cObj const *> wanted_;
    std::unordered_map<cObj const *, size_t> numbers_;
    std::vector<cPart> parts_; // 0 is the top
};
