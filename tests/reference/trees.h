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
    ~cTrees(); // opens the cycles

    // A container, or now and then any value.
    objref tree();
    // Nothing that was made is shared with what will be made.
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
    bool user_;   // values of the program's types occur
    bool cycles_; // containers hold themselves
    std::vector<objref> made_;
    std::vector<hashref> in_cycles_;
};

} // namespace reference
