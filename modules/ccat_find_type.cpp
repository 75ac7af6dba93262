// Types by name: from the registry, or made by a factory that a repository entry of that name
// offers. So a file may name a type that nobody has made yet.

#include "qrv/core/cattrhash.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/ctypes.h"
#include "qrv/modules/crepository.h"

namespace {

// What the factory of that name makes; null if there is no factory, or it made nothing.
typeref make_type(std::string const &name) {
    cRepositoryList *const factories = cRepoImpl::get(typeid(cTypeCtor));
    cRepositoryEntry *const entry = cRepoImpl::find(factories, name);
    auto *const factory = static_cast<cTypeCtor *>(cRepoImpl::ptr(entry));
    return factory ? factory->make() : nullptr; // RUNS FOREIGN CODE
}

} // namespace

cTypeObj &cat::find_type(std::string const &name) {
    core_bootstrap();
    if (!type_hash_ptr()) return type_nil();
    if (cAttrNode const *const node = type_hash_ptr()->find(name)) {
        auto *const known = dynamic_cast<cTypeObj *>(node->valref().get());
        return known && known->is_type() ? *known : type_nil();
    }
    typeref const type = make_type(name);
    if (!type) return type_nil();
    // DELIBERATE: the whole requested text, a module's name behind a colon included.
    // Pinned: a_type_is_named_by_the_whole_requested_text
    if (type->name() != name) type->set_name(name);
    return cTypeInsert::insert(type, true) ? *type : type_nil();
}
