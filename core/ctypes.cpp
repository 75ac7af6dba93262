// The registry of types: insertion, redefinition, and values that name a type.

#include "qrv/core/ctypes.h"

#include "core/cregistry.h"
#include "core/ctext_hooks.h"
#include "diagnostics/cerrline.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"

#include <vector>

namespace {

[[noreturn]] void throw_duplicate(std::string const &name) {
    throw cErr(1, "Fatal: duplicate name of cTypeObj: " + name);
}

bool report_duplicate(std::string const &name) {
    cat::error_line("***Error: Bad creation of duplicate type '" + name +
                    "'\n"
                    "          Each type object is identified by its name\n"
                    "          and must be created exactly once!!");
    return false;
}

} // namespace

bool cTypeInsert::insert(typeref const &type, bool fatal) {
    if (!type) return false;
    if (!core.type_hash) core_bootstrap();
    if (!core.type_hash) return false; // the core is going
    std::string const name = type->name();
    if (core.type_hash->find(name)) {
        if (fatal) throw_duplicate(name);
        return report_duplicate(name);
    }
    return core.type_hash->mapitem(name, type);
}

cTypeInsert::cTypeInsert(cTypeObj &type) {
    cat::nil(); // so that the core is torn down after this object, if it is a static one
    typeref const held = typeref::share(&type);
    name_ = type.name();
    insert(held, true);
    type_ = held;
}

cTypeInsert::cTypeInsert(cTypeInsert const &other) noexcept = default;

cTypeInsert &cTypeInsert::operator=(cTypeInsert const &other) = default;

// The type may have been renamed since, and registered again under its new name.
cTypeInsert::~cTypeInsert() {
    if (!type_ || !core.type_hash) return;
    hashref const types = hashref::share(core.type_hash);
    std::vector<objref> keys{own_key(name_)};
    for (cAttrNode const *node = types->first(); node; node = types->next(node))
        if (node->valref() == type_) keys.push_back(node->key());
    try {
        for (objref const &key : keys) types->delitem(key); // RE-ENTERS
    } catch (...) { // a handler's error must not leave a destructor
    }
}

namespace cat {

bool set_type(cTypeObj const &type, bool fatal) {
    cTypeObj &found = find_type(type.name());
    if (&found == &type_nil()) {
        cTypeInsert::insert(typeref::share(const_cast<cTypeObj *>(&type)), true);
        return true;
    }
    if (&found.type() == &type.type()) return found.update_from(type);
    if (fatal) throw_duplicate(type.name());
    return false;
}

objref type_of_key(objref const &value) {
    if (cObj::is_void(value)) return bad();
    if (value->is_type()) return value;
    if (&value->type() != core.string) return bad();
    cTypeObj &found = find_type(text_hooks.as_string(value));
    return &found == &type_nil() ? bad() : objref(objref::share(&found));
}

} // namespace cat
