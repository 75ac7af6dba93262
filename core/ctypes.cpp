// The registry of types: insertion, lookup, and values that name a type.

#include "qrv/core/ctypes.h"

#include "core/cregistry.h"
#include "core/ctext_hooks.h"
#include "diagnostics/cerr_names.h"
#include "diagnostics/cerrline.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypescope.h"

#include <vector>

void cat::throw_duplicate(std::string const &name) {
    throw whole_error(err_type_name_taken, cNamed::type(name));
}

namespace {

bool report_duplicate(std::string const &name) {
    cat::error_line(whole_error(err_duplicate_type, cNamed::type(name),
                                "'\n"
                                "          Each type object is identified by its name\n"
                                "          and must be created exactly once!!"));
    return false;
}

} // namespace

bool cTypeInsert::insert(typeref const &type, bool fatal) {
    if (!type) return false;
    if (!core.type_hash) core_bootstrap();
    if (!core.type_hash) return false; // the core is being torn down
    std::string const name = type->name();
    if (core.type_hash->find(name)) {
        if (fatal) cat::throw_duplicate(name);
        return report_duplicate(name);
    }
    return core.type_hash->mapitem(name, type);
}

cTypeInsert::cTypeInsert(cTypeObj &type) {
    cat::nil(); // starts the core, so that it is torn down after this object, if that is static
    typeref const held = typeref::share(&type);
    name_ = type.name();
    insert(held, true);
    type_ = held;
}

cTypeInsert::cTypeInsert(cTypeInsert const &other) noexcept = default;

cTypeInsert &cTypeInsert::operator=(cTypeInsert const &other) = default;

// Since the insertion the type may have been renamed and registered again under its new name.
cTypeInsert::~cTypeInsert() {
    if (!type_ || !core.type_hash) return;
    hashref const types = hashref::share(core.type_hash);
    std::vector<objref> keys;
    typeref hidden;
    if (!cat::TypeScope::forget_hidden(type_, name_, hidden)) keys.push_back(own_key(name_));
    for (cAttrNode const *node = types->first(); node; node = types->next(node))
        if (node->valref() == type_) keys.push_back(node->key());
    try {
        for (objref const &key : keys) types->delitem(key); // RE-ENTERS
    } catch (...) { // an exception of a handler must not leave a destructor
    }
}

namespace cat {

cTypeObj &find_type(std::string const &name) {
    core_bootstrap();
    if (!core.type_hash) return type_nil();
    if (cAttrNode const *const node = core.type_hash->find(name)) {
        auto *const known = dynamic_cast<cTypeObj *>(node->valref().get());
        return known && known->is_type() ? *known : type_nil();
    }
    typeref const type = core.make_type ? core.make_type(name) : nullptr; // RUNS USER CODE
    if (!type) return type_nil();
    // DELIBERATE: the whole requested string, with the module's name after a colon.
    // Pinned: a_type_gets_the_whole_requested_string_as_its_name
    if (type->name() != name) type->set_name(name);
    return cTypeInsert::insert(type, true) ? *type : type_nil();
}

objref type_of_key(objref const &value) {
    if (cObj::is_void(value)) return bad();
    if (value->is_type()) return value;
    if (&value->type() != core.string) return bad();
    cTypeObj &found = find_type(text_hooks.as_string(value));
    return &found == &type_nil() ? bad() : objref(objref::share(&found));
}

} // namespace cat
