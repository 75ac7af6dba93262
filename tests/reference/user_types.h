#pragma once
// Types of a program: every call of their methods and hooks is a line of the transcript, and some
// of these calls do what a program may do at such a moment: read and write other values, look at
// the stream, change containers, raise errors, throw.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"

#include <string>
#include <vector>

namespace reference {

// A value, or a key, with a text and perhaps another value.
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

// A map whose end is logged.
class cBag : public cMapObj {
  public:
    explicit cBag(cTypeObj *type);
    cBag(cBag const &) = delete;
    cBag &operator=(cBag const &) = delete;
    ~cBag() override;

    unsigned const serial;
};

// The types, registered as long as the process lives.
void make_user_types();
extern std::vector<char const *> const user_type_names;
cTypeObj &user_type(std::string const &name);

// A new value of a user type, as `newobj` of the type makes it, without a line.
objref new_user_value(std::string const &name, std::string const &text);
// A signal "changed" with a slot that logs.
void watch_changes(cObj &value);
// An own method that logs and does what the type's method does, or fails.
void give_own_method(cObj &value);

// What user code does besides logging.
void act();

// Methods of library types are replaced, as long as it lives, by such that log and call them.
class cReplaced {
  public:
    explicit cReplaced(unsigned count);
    cReplaced(cReplaced const &) = delete;
    cReplaced &operator=(cReplaced const &) = delete;
    ~cReplaced();
};

} // namespace reference
