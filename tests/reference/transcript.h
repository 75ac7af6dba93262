#pragma once
// What one piece of work shows, as lines of text: results, errors, messages, calls of user code,
// the structure of values. Nothing in it depends on addresses or on absolute numbers of objects.

#include "qrv/core/cobj.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace reference {

// The transcript of the current seed. Beyond a limit lines are dropped.
std::string &transcript();
void say(std::string const &line);

// Printable on one line: line ends, other control characters and bytes from 128 on as \xx. The id
// and the count of owners in the text of a value without text are left out.
std::string shown(std::string const &text);

// A value in a few words, found without any call of a method.
std::string label(cObj const *value);
inline std::string label(objref const &value) { return label(value.get()); }

// The structure of values. Objects are numbered in the order in which they are first met, so that a
// shared value shows the number that it has already. All walks by one object share the numbers.
class cWalk {
  public:
    void value(std::string const &title, objref const &value);
    void hash(std::string const &title, cAttrHash const &hash);
    // The order of creation of the values, keys and nodes that were met, as ranks.
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
