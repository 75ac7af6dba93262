#pragma once
// Types of a program: every call of their methods and hooks is a line of the transcript, and some
// calls do what a program may do at that moment: read and write other values, use the stream,
// change containers, raise errors, throw.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"

#include <string>
#include <vector>

namespace reference {

// A value, or a key, with a string and possibly another value.
class cProbe : public cObj {
  public:
    cProbe(cTypeObj *type, std::string text);
    cProbe(cProbe const &) = delete;
    cProbe &operator=(cProbe const &) = delete;
    ~cProbe() override;

    unsigned const serial;
    std::string text;
    objref held;
};

// A map whose destruction is logged.
class cBag : public cMapObj {
  public:
    explicit cBag(cTypeObj *type);
    cBag(cBag const &) = delete;
    cBag &operator=(cBag const &) = delete;
    ~cBag() override;

    unsigned const serial;
};

// The types, which are registered until the process ends.
void make_user_types();
extern std::vector<char const *> const user_type_names;
cTypeObj &user_type(std::string const &name);

// A new value of a user type, as `newobj` of the type creates it, but without a line in the
// transcript.
objref new_user_value(std::string const &name, std::string const &text);
// A signal "changed" with a slot that logs.
void watch_changes(cObj &value);
// An own method that logs and either does what the type's method does or fails.
void give_own_method(cObj &value);

// Now and then does what user code may do besides logging. May throw.
void act();
constexpr unsigned max_acts = 60; // for one seed

// Replaces methods of library types, until the end of the scope, by methods that log and call the
// original.
class cReplaced {
  public:
    explicit cReplaced(unsigned count);
    cReplaced(cReplaced const &) = delete;
    cReplaced &operator=(cReplaced const &) = delete;
    ~cReplaced();
};

} // namespace reference
