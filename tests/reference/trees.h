#pragma once
// Random values: trees with shared parts, cycles, constants, comments, layouts, own members, and
// values of the program's types.

#include "qrv/containers/cmapobj.h"
#include "tests/reference/random.h"

#include <string>
#include <vector>

namespace reference {

class cTrees {
  public:
    explicit cTrees(cRandom &random);
    cTrees(cTrees const &) = delete;
    cTrees &operator=(cTrees const &) = delete;
    ~cTrees(); // breaks the cycles

    // A container, or occasionally any other value.
    objref tree();
    // Values created so far are not shared with later ones.
    void forget() { made_.clear(); }

    objref scalar();
    objref key();

  private:
    objref value(int depth);
    objref container(int depth);
    objref from_text();
    objref user_value();
    void decorate(objref const &value);
    void put(cMapObj &container, objref const &value);

    cRandom &random_;
    bool user_;   // create values of the program's types
    bool cycles_; // let containers contain themselves
    std::vector<objref> made_;
    std::vector<hashref> in_cycles_;
};

} // namespace reference
