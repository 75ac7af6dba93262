#pragma once
// A transcript lists the visible results of one piece of work, line by line: results, errors,
// messages, calls of user code, the structure of values. It does not depend on addresses or ids of
// objects.

#include "qrv/core/cobj.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace reference {

// The transcript of the current seed. Lines beyond a limit are dropped.
std::string &transcript();
void say(std::string const &line);

// The string with line ends, backslashes and unprintable bytes escaped, so that it fits on one
// line. The numbers in "id=12, refs=3" are removed, since they may differ.
std::string shown(std::string const &text);

// A short description of a value. Calls no method.
std::string label(cObj const *value);
inline std::string label(objref const &value) { return label(value.get()); }

// Writes the structure of values. Objects are numbered in the order of their first visit, and a
// repeated object is shown by its number. All visits of one cWalk share the numbers.
class cWalk {
  public:
    void value(std::string const &title, objref const &value);
    void hash(std::string const &title, cAttrHash const &hash);
    // Writes the order in which the visited values, keys and nodes were created.
    void ranks() const;

  private:
    void put(std::string const &indent, std::string const &title, cObj const *value);
    void entries(std::string const &indent, cAttrHash const &hash);
    void details(std::string const &indent, cObj const &value);

    std::map<cObj const *, unsigned> numbers_;
    std::map<cAttrHash const *, unsigned> hashes_;
    std::vector<std::uint32_t> values_, keys_, nodes_;
    unsigned depth_ = 0;
};

} // namespace reference
