#pragma once
// The visible results of one piece of work, as lines of text: results, errors, messages, calls of
// user code, the structure of values. Nothing in it depends on addresses or on absolute numbers of
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

// The string printable on one line: line ends, other control characters and bytes from 128 on as
// \xx. The id and the count of owners in the text of a value without text are omitted.
std::string shown(std::string const &text);

// A short description of a value, created without any call of a method.
std::string label(cObj const *value);
inline std::string label(objref const &value) { return label(value.get()); }

// The structure of values. Objects are numbered in the order of the first visit, so that a shared
// value shows its earlier number. All visits by one object share the numbers.
class cWalk {
  public:
    void value(std::string const &title, objref const &value);
    void hash(std::string const &title, cAttrHash const &hash);
    // The order of creation of the visited values, keys and nodes, as ranks.
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
