#pragma once
// cat::TypeScope limits the lifetime of types that text declares, for programs that read many
// files.
//
//     for (std::string const &file : files) {
//         cat::TypeScope const types;
//         ...                         // read the file, use what it declares
//     }
//
// While scopes exist, every type that text declares belongs to the innermost one and leaves
// cat::typemap() when that scope ends. If a type outside the scope has the same name, the
// declaration creates a new type, which hides the outer one until the scope ends and does not
// change it. If the scope itself has declared the name before, the declaration works as without a
// scope: see cat::set_type. The built-in types, cat::type_string() and so on, cannot be hidden;
// declaring one of their names is an error, as without a scope.
//
// Types that do not come from text remain: those that a program or a module registers meanwhile,
// and those that a factory creates because text names them.
//
// Objects may outlive the scope. A type that has left the registry is destroyed with its last
// object, its last handle or the last declaration that refers to it. Until then it works as before;
// an object is written with its type's name and rules, even if that name then means another type.
// Types whose declarations refer to themselves or to each other exist longer: they are destroyed
// when the next scope begins or ends; while there are more than 16 of them, some scopes later.
//
// Scopes nest. They may end in any order: each removes its own types, and the types hidden by these
// become visible, or stay hidden by the type of another scope. A scope may begin and end while text
// is being read, and an exception that leaves it ends it, as for any guard.

#include "qrv/core/ctypeobj.h"

#include <string>
#include <vector>

class cTypeInsert;

namespace cat {

class QRV_API TypeScope {
  public:
    TypeScope(); // starts the object core. RUNS USER CODE
    TypeScope(TypeScope const &) = delete;
    TypeScope &operator=(TypeScope const &) = delete;
    // Linear in the number of declared types. RUNS USER CODE: releases what destroyed types own.
    // When memory is exhausted, types that refer to themselves are never destroyed, and a hidden
    // type whose name a program has removed from the registry meanwhile does not become visible.
    ~TypeScope();

    static TypeScope *current() noexcept; // borrowed: the innermost scope, or null

    // The scope's types, in the order of the declarations. Another scope can declare them again, so
    // that text that is read later can use them.
    std::vector<typeref> const &types() const noexcept { return types_; }

    // For the reader. Registers the type under its name until the end of this scope, and shares it;
    // `former` is the type's name before the declaration, empty for a new type. False, without any
    // change, if this scope has declared the name already or cannot hide it.
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
    std::vector<typeref> types_;  // types of the entries
    TypeScope *outer_;
};

} // namespace cat
