// A type is updated when a type of its name is declared again: a choice type gets the new choices,
// an attribute set's type the new specifications. Both then fire `changed`.
//
// While text is read, these steps are charged to the budget, comparisons included, and a
// declaration that holds its own type is skipped.

#include "qrv/containers/ctypeobj_update.h"

#include "containers/cmergebudget.h"
#include "core/cregistry.h"
#include "qrv/containers/cattrset.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/ctypescope.h"

namespace {

// The member with the declaration of this metatype's types; null for other metatypes.
char const *declaration_of(cTypeObj const &metatype) {
    if (&metatype == &cat::typetype_choice()) return "choices";
    if (&metatype == &cat::typetype_attlist()) return "attspec";
    return nullptr;
}

} // namespace

bool cTypeObj::update_from(cTypeObj const &other) {
    if (&type() != &other.type()) return false;
    char const *const member = declaration_of(type());
    if (!member || this == &other) return true;
    objref declared = other.tmember(member);
    objref const present = tmember(member);
    if (cObj::is_bad(declared) || present == declared) return true;
    objref const keep = objref::share(this);
    if (!cat::merge_allows(*this, own_key(std::string(member)), declared)) return true;
    if (cObj::is_good(present) && present->equal(declared)) return true; // RUNS USER CODE
    if (&type() == &cat::typetype_attlist())
        cTomAttlist::m_assign(*this, declared);
    else
        setattr(own_key(std::string(member)), declared);
    return true;
}

bool cat::set_type(cTypeObj const &type, bool fatal) {
    cTypeObj &found = find_type(type.name());
    if (&found == &type_nil()) {
        cTypeInsert::insert(typeref::share(const_cast<cTypeObj *>(&type)), true);
        return true;
    }
    if (&found.type() == &type.type()) return found.update_from(type);
    if (fatal) throw_duplicate(type.name());
    return false;
}

bool cat::declare_type(cTypeObj &type, std::string const &former) {
    TypeScope *const scope = TypeScope::current();
    return (scope && scope->declare(type, former)) || set_type(type, false);
}
