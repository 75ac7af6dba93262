// The scopes are a list, the innermost first. An entry describes what a scope has put into the
// registry. For each name, the registered type and the types that it hides form a chain:
//
//   registry: the entry of the innermost scope -> its `hidden`, the entry of a scope further out
//   -> ... -> the type from outside all scopes, or null
//
// Ending a scope removes its links from the chains, wherever they are.

#include "qrv/core/ctypescope.h"

#include "core/cattrhash_insert.h"
#include "core/cregistry.h"
#include "qrv/core/cobjd.h"

#include <algorithm>
#include <iterator>
#include <utility>

struct cat::TypeScope::cEntry {
    std::string name;
    cTypeObj *type; // borrowed from types_
    typeref hidden;
    std::string former; // the type's previous name, if it had one
};

namespace {

constinit cat::TypeScope *innermost = nullptr;

bool is_built_in(cTypeObj const &type) noexcept {
#define QRV_SAME(name, accessor, text)                                                             \
    if (&type == core.name) return true;
    QRV_CORE_TYPES(QRV_SAME)
#undef QRV_SAME
    return false;
}

// For destructors, which must not throw: if memory runs out, the work stays undone.
template <class Work> void attempt(Work const &work) noexcept {
    try {
        work();
    } catch (...) {
    }
}

bool is_registered(std::string const &name, cTypeObj const &type) {
    cAttrNode const *const node = core.type_hash->find(name);
    return node && node->valref() == &type;
}

} // namespace

cat::TypeScope *cat::TypeScope::current() noexcept { return innermost; }

cat::TypeScope::TypeScope() : outer_(nullptr) {
    core_bootstrap();
    std::vector<typeref> none;
    if (core.free_types) core.free_types(none); // RE-ENTERS
    outer_ = std::exchange(innermost, this);
}

cat::TypeScope::~TypeScope() {
    unlink();
    if (core.state == cCoreState::ready) {
        std::for_each(entries_.rbegin(), entries_.rend(), take_away);
        for (cEntry &entry : entries_) // text can rename a type of a program
            if (!entry.former.empty() && is_registered(entry.former, *entry.type))
                attempt([&] { entry.type->set_name(entry.former); });
    }
    entries_.clear();                                               // RE-ENTERS
    if (core.free_types) attempt([&] { core.free_types(types_); }); // RE-ENTERS
}

void cat::TypeScope::unlink() noexcept {
    TypeScope **link = &innermost;
    while (*link && *link != this) link = &(*link)->outer_;
    if (*link) *link = outer_;
}

bool cat::TypeScope::declared(cTypeObj const &type) const noexcept {
    return std::ranges::any_of(entries_, [&](cEntry const &e) { return e.type == &type; });
}

bool cat::TypeScope::may_hide(objref const &registered, cTypeObj const &type) const noexcept {
    auto const *const outer = dynamic_cast<cTypeObj const *>(registered.get());
    return outer && outer != &type && !is_built_in(*outer) && !declared(*outer);
}

bool cat::TypeScope::declare(cTypeObj &type, std::string const &former) {
    if (!core.type_hash) return false; // the core is being torn down
    cAttrNode *const node = core.type_hash->find(type.name());
    if (node && !may_hide(node->valref(), type)) return false;
    typeref const held = typeref::share(&type);
    typeref const hidden =
        node ? typeref::share(static_cast<cTypeObj *>(node->valref().get())) : typeref();
    types_.push_back(held);
    entries_.push_back({type.name(), &type, hidden, former});
    if (node)
        cAttrInsert::replace(*node, objref(held));
    else
        core.type_hash->mapitem(type.name(), held);
    return true;
}

// Runs no user code: types_ and `hidden` hold the types meanwhile. Removes or replaces existing
// entries, which needs no memory.
void cat::TypeScope::take_away(cEntry &entry) {
    cAttrNode *const node = core.type_hash->find(entry.name);
    if (node && node->valref() == entry.type) {
        if (entry.hidden)
            cAttrInsert::replace(*node, objref(entry.hidden));
        else
            core.type_hash->delitem(entry.name);
        return;
    }
    for (TypeScope *scope = innermost; scope; scope = scope->outer_)
        for (cEntry &above : scope->entries_)
            if (above.name == entry.name && above.hidden == entry.type) {
                above.hidden = entry.hidden;
                return;
            }
    if (!node && entry.hidden) attempt([&] { core.type_hash->mapitem(entry.name, entry.hidden); });
}

// Removes a type from the chain if a scope hides it under this name, and moves it to `held`. True
// if it was hidden.
bool cat::TypeScope::forget_hidden(typeref const &type, std::string const &name,
                                   typeref &held) noexcept {
    for (TypeScope *scope = innermost; scope; scope = scope->outer_)
        for (cEntry &entry : scope->entries_)
            if (entry.name == name && entry.hidden == type) {
                held.swap(entry.hidden);
                return true;
            }
    return false;
}
