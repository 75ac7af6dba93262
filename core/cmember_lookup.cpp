#include "core/cmember_lookup.h"

#include "core/cbuiltin.h"
#include "core/cregistry.h"

namespace {

// Can a key object be created without running a method that a program has given to strings?
bool makes_keys_quietly() noexcept {
    return core.string && cat::is_builtin(*core.string, cat::method_bit(mid_create));
}

bool is_quiet(cAttrHash const *hash) noexcept { return !hash || !hash->has_foreign_keys(); }

cAttrNode const *find(cAttrHash const *hash, cat::cMemberName const &name) {
    return hash ? cAttrInsert::find(*hash, name) : nullptr;
}

// Like cObj::is_good, inlined.
bool is_good(cObj const *value) noexcept {
    return value && value != core.bad->get() && value != core.badfind->get();
}

objref const &value_or_badfind(cAttrNode const *node) {
    return node ? node->valref() : cat::badfind();
}

} // namespace

// Programs call the same few members of a type again and again, so each type caches the node that
// was found last. The cache holds the node, so it can test whether the node is still a member with
// the requested name.
struct cLastMember {
    static cAttrNode const *find(cTypeObj const &type, cat::cMemberName const &name) {
        cAttrNode const *&last = type.last_member_.node;
        if (last && cAttrInsert::is_found(*last, type.tmmap_, name)) return last;
        cAttrNode const *const node = cAttrInsert::find(type.tmmap_, name);
        if (!node) return nullptr;
        node->hold();
        if (last) last->unhold();
        return last = node;
    }
};

objref cat::member_named(cObj const &obj, cMemberName const &name) {
    cAttrHash const *const own = obj.ommap_ptr();
    cAttrHash const *const of_type = &obj.type().tmmap();
    if (!makes_keys_quietly() || !is_quiet(own) || !is_quiet(of_type) ||
        !is_quiet(core.global_hash)) {
        std::string const text(name.text);
        return obj.gmember(make_key(text));
    }
    if (cAttrNode const *const node = find(own, name); node && is_good(node->valref()))
        return node->valref();
    if (cAttrNode const *const node = cLastMember::find(obj.type(), name);
        node && is_good(node->valref()))
        return node->valref();
    return value_or_badfind(find(core.global_hash, name));
}

objref cat::global_member_named(cMemberName const &name) {
    if (cat::core_state() == cCoreState::none) core_bootstrap();
    if (!makes_keys_quietly() || !is_quiet(core.global_hash)) {
        std::string const text(name.text);
        return cat::gmember(make_key(text));
    }
    return value_or_badfind(find(core.global_hash, name));
}
