#pragma once
// Finds all paths to a value in a tree. Walks the tree once, and each shared part once, and records
// what leads to each part; then builds paths backwards from the value. So the time depends only on
// the size of the tree and of the requested paths, even if references create countless paths.

#include "qrv/containers/cmapobj.h"

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// The entries of a container, or of an object of a declared type; null for other values.
cMapObj const *as_map(objref const &value);

class cSharing {
  public:
    // Searches for these objects, by identity. Visits containers, objects of declared types,
    // declarations and the defaults in them, but not the choices of a choice value.   O(size)
    cSharing(objref const &top, std::unordered_set<cObj const *> wanted);
    cSharing(cSharing const &) = delete;
    cSharing &operator=(cSharing const &) = delete;
    ~cSharing() = default;

    // At most `most` paths to one of them, such as /a/0; empty if it isn't in the tree.
    std::vector<std::string> paths(cObj const *object, size_t most) const;

  private:
    struct cWay {
        size_t parent;
        objref key;
    };
    struct cPart {
        objref object;          // held, so that its address is not used again
        std::vector<cWay> ways; // empty for the root
    };

    size_t number_of(objref const &object);
    void add(objref const &object, size_t parent, objref const &key);
    void add_ring(objref const &map, size_t parent);
    void add_parts_of(size_t parent);

    std::unordered_set<cObj const *> wanted_;
    std::unordered_map<cObj const *, size_t> numbers_;
    std::vector<cPart> parts_; // 0 is the root
};
