#pragma once
// cat::TypeScope bounds the life of types that text declares: for programs that read many files.
//
//     for (std::string const &file : files) {
//         cat::TypeScope const types;
//         ...                         // read the file, use what it declares
//     }
//
// While one lives, every type that text declares belongs to the innermost one and leaves
// cat::typemap() when that one ends. If the name is that of a type from outside the scope, the
// declaration creates a new type, which hides the outer one until the scope ends and changes
// nothing in it. A name that the scope itself has declared is declared again as without a scope:
// see cat::set_type. The built-in types, cat::type_string() and so on, can't be hidden; to declare
// one of their names is an error, as it is without a scope.
//
// What does not come from text stays: types that a program or a module registers meanwhile, and
// those that a factory creates because text names them.
//
// Objects may outlive the scope. A type that has left is destroyed with its last object, its last
// handle or the last declaration that refers to it, whichever is the latest. Until then it works as
// before; an object is written with the name and the rules of its own type, whatever that name
// means by then. Types that refer to themselves or to each other in their declarations wait longer:
// they are destroyed when the next scope begins or ends, or some scopes later while more than 16 of
// them live.
//
// Scopes nest. They may end in any order: each takes away its own types, and what these have hidden
// comes back, or stays hidden by the type of a scope that still lives. A scope may begin and end
// while text is being read, and an exception that leaves it ends it like any guard.

#include "qrv/core/ctypeobj.h"

#include <string>
#include <vector>

class cTypeInsert;

namespace cat {

class QRV_API TypeScope {
  public:
    TypeScope(); // starts the object core. RUNS USER CODE, as the end does
    TypeScope(TypeScope const &) = delete;
    TypeScope &operator=(TypeScope const &) = delete;
    // Linear in the declared types. RUNS USER CODE: releases what destroyed types hold. When memory
    // has run out, types that refer to themselves are never destroyed, and a hidden type whose name
    // a program has taken out of the registry meanwhile does not come back.
    ~TypeScope();

    static TypeScope *current() noexcept; // borrowed: the innermost living one, or null

    // What belongs to the scope, in the order of the declarations. Another scope can declare these
    // types again, so that text that is read later may use them.
    std::vector<typeref> const &types() const noexcept { return types_; }

    // For the reader. Registers the type under its name until the end of this scope, and shares it;
    // `former` is the name that it had before the declaration, empty for a new type. False, and
    // nothing is changed, if this scope has declared the name already or can't hide it.
    bool declare(cTypeObj &type, std::string const &former);

  private:
    friend class ::cTypeInsert;
    struct cEntry;

    bool declared(cTypeObj const &type) const noexcept;
    bool may_hide(objref const &registered, cTypeObj const &type) const noexcept;
    void unlink() noexcept;
    static void take_away(cEntry &entry);
    static bool forget_hidden(typeref const &type, std::string const &name, typeref &held) noexcept;

    std::vector<cEntry> entries_; // in the order of the declarations
    std::vector<typeref> types_;  // of the entries
    TypeScope *outer_;
};

} // namespace cat
