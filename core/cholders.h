#pragma once
// How many attributes have a container as their value. While that is known for all of them, one
// that is the value of none is not below any other, and storing into it needs no search for a
// cycle. A reference counter would not do: programs hold containers too, and the innermost owner of
// a value may be borrowed.
//
// Storing into a container that is a value itself does search what is stored. So filling a map
// that is in a tree with n large values takes as long as looking at each of them once, and storing
// one large value there n times takes n such looks; filling the map first and storing it then takes
// none. A search that found nothing cannot be remembered: containers may share a hash, and
// iterators move, so what is below a value changes without a store into it.
//
// A count that has reached `most` stays, and means many. What is known ends for good when
// - a program gets the reference that is stored in a node (cAttrNode::valref_), through which it
//   can store without being counted; and
// - there is a type, or an object, with an `iterobj` that is not the library's: a search calls it,
//   and a program may count on the call.

#include "core/cregistry.h"
#include "qrv/core/cattrhash.h"

struct cHolders {
    static void enter(cObj *value) noexcept {
        if (is_counted(value) && !is_most(*value)) value->class_ += cObj::one_holder;
    }
    static void leave(cObj *value) noexcept {
        if (is_counted(value) && !is_most(*value) && value->class_ >= cObj::one_holder)
            value->class_ -= cObj::one_holder;
    }
    // Becomes the value of a node without being counted.
    static void enter_unseen(cObj &value) noexcept {
        if (is_counted(&value)) value.class_ |= most;
    }

    static void forget() noexcept { cObj::holders_known_ = false; }
    static bool are_known() noexcept { return cObj::holders_known_; }
    // For tests, whose objects are all new.
    static void know(bool known) noexcept { cObj::holders_known_ = known; }

    // A type gets this `iterobj`. Those of the bootstrap are the library's, here and below.
    static void note_type_method(cVoidFunction iterobj) noexcept;
    // An executable becomes a member of this object, or an object gets these members.
    static void note_own_method(cObj const *father, objref const &key) noexcept;
    static void note_members(cAttrHash const &members) noexcept;

  private:
    static constexpr std::uint16_t most = 0xFE00; // all bits of the count

    static bool is_most(cObj const &value) noexcept { return value.class_ >= most; }
    static bool is_counted(cObj const *value) noexcept {
        return value && value->object_class() == cObjClass::map;
    }
};
