#pragma once
// Finds all paths to a value in a tree. Visits each part of the tree once, also a shared one, and
// records the entries that lead to it. Then builds paths from the value back to the root. So the
// time depends only on the size of the tree and of the requested paths, even if references create
// very many paths.

#include "qrv/containers/cmapobj.h"

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// The value as a map, if it is a container or an object of a declared type; null for other values.
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
        size_t parent; // a part, and the key in it
        objref key;
    };
    struct cPart {
        objref object;          // held, so that no other object gets its address
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
