#pragma once
// Counts for each container the attributes that have it as their value. While these counts are
// valid, a container with the count 0 is not below any other one, and storing into it needs
// no search for a cycle. The reference count cannot replace this one: programs hold containers too,
// and the innermost owner of a value may be borrowed.
//
// Storing into a container that is itself a value does search the stored value. So filling a map
// that is part of a tree with n large values visits each of them once, and storing one large value
// there n times visits it n times. A program that fills the map first and then stores it avoids
// these searches. The result of a search cannot be cached: containers may share a hash, and
// iterators move, so the values below a container change without a store into it.
//
// A count that has reached `most` stays there and means "many". The counts become invalid for good
// when
// - a program gets the reference that is stored in a node (cAttrNode::valref_), since a store
//   through it is not counted; or
// - a type or an object gets an `iterobj` that is not the library's: a search calls it, and a
//   program may rely on the call.

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
    // Call when `value` becomes the value of a node without being counted.
    static void enter_unseen(cObj &value) noexcept {
        if (is_counted(&value)) value.class_ |= most;
    }

    static void forget() noexcept { cObj::holders_known_ = false; }
    static bool are_known() noexcept { return cObj::holders_known_; }
    // For tests, which begin with new objects only.
    static void know(bool known) noexcept { cObj::holders_known_ = known; }

    // Call when a type gets this `iterobj`. Functions that are set during the bootstrap count as
    // the library's, here and below.
    static void note_type_method(cVoidFunction iterobj) noexcept;
    // Call when an executable becomes a member of this object, or when an object gets these
    // members.
    static void note_own_method(cObj const *father, objref const &key) noexcept;
    static void note_members(cAttrHash const &members) noexcept;

  private:
    static constexpr std::uint16_t most = 0xFE00; // all bits of the count

    static bool is_most(cObj const &value) noexcept { return value.class_ >= most; }
    static bool is_counted(cObj const *value) noexcept {
        return value && value->object_class() == cObjClass::map;
    }
};
