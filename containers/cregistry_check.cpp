// The checker of the registry. It changes nothing and reports no error; its header has the rules.

#include "containers/cregistry_check.h"
#include "containers/as_map.h"

#include "core/cregistry.h"
#include "core/ctext_hooks.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

namespace {

constexpr int max_chain = 100; // real chains have at most three types

bool is_registered(std::string const &name, cTypeObj const &type) {
    cAttrNode const *const node = core.type_hash->find(name);
    return node && node->valref().get() == &type;
}

bool is_built_in(char const *name, cTypeObj const &type) {
    return type.name() == name && is_registered(name, type);
}

bool chain_ends(cTypeObj const &type) {
    cTypeObj const *at = &type;
    for (int i = 0; i < max_chain && at != core.type; ++i) at = &at->type();
    return at == core.type && &at->type() == at;
}

// DELIBERATE: types that were created before members existed have these two without a member.
//   Pinned: the_first_types_have_methods_without_members
bool is_raw(cTypeObj const &type, int id) {
    bool const first = &type == core.niltype || &type == core.type || &type == core.exe;
    return first && (id == mid_newobj || id == mid_assign);
}

// The standard method whose table entry isn't its member's function; null if all agree.
char const *disagreeing_method(cTypeObj const &type) {
    for (int id = 0; id < mid_count; ++id) {
        std::string const &name = cTypeObj::name_of(id);
        objref const member = type.tmember(name);
        auto const *const exe = dynamic_cast<cExeMember const *>(member.get());
        cVoidFunction const function = type.method(static_cast<method_id>(id));
        if (exe ? exe->function() != function : function && !is_raw(type, id)) return name.c_str();
    }
    return nullptr;
}

std::string broken_type_rule(cTypeObj const &type) {
    if (!chain_ends(type)) return "G5";
    if (char const *const name = disagreeing_method(type)) return std::string("G6 method=") + name;
    if (!type.hash_hook() != !type.heq_hook()) return "G7";
    objref const specs = type.tmember(std::string("attspec"));
    if (&type.type() == core.attlist && !cat::as_map(specs)) return "G8";
    return {};
}

std::string broken_entry_rule(objref const &key, objref const &value) {
    auto const *const type = dynamic_cast<cTypeObj const *>(value.get());
    if (!type || !type->is_type()) return "G2";
    if (text_hooks.as_string(key) != type->name() && !is_registered(type->name(), *type))
        return "G3";
    return broken_type_rule(*type);
}

} // namespace

std::string cat::broken_registry_rule() {
    core_bootstrap();
    if (!core.type_hash) return {}; // the core is being torn down
    if (std::string const broken = core.type_hash->broken_rule(true); !broken.empty())
        return "G1 " + broken;
    if (&core.typemap->datamap() != core.type_hash) return "G1 typemap";
#define QRV_BUILTIN(field, accessor, text)                                                         \
    if (!is_built_in(text, *core.field)) return std::string("G4 key=") + (text);
    QRV_CORE_TYPES(QRV_BUILTIN)
#undef QRV_BUILTIN
    cAttrHash const &types = *core.type_hash;
    for (cAttrNode const *node = types.first(); node; node = types.next(node)) {
        std::string const broken = broken_entry_rule(node->key(), node->valref());
        if (!broken.empty()) return broken + " key=" + text_hooks.as_string(node->key());
    }
    return {};
}
