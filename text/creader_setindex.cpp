#include "text/creader_setindex.h"

// The index is a hash of its own, which brings the protection against colliding keys along.

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

namespace {
bool is_bool(objref const &value) { return &value->type() == &cat::type_bool(); }
bool bool_value(objref const &value) {
    auto const *const held = dynamic_cast<cObjDR<bool> const *>(value.get());
    return held && held->val();
}
} // namespace

cSetIndex::cSetIndex(cAttrHash &set) : set_(&set) {
    for (cAttrNode const *node = set.first(); node; node = set.next(node)) add(node->valref());
}

bool cSetIndex::indexed(objref const &value) {
    if (!value || value->flags_of(of_exe_member)) return false;
    cTypeObj const *const type = &value->type();
    return type == &cat::type_int() || type == &cat::type_string() || type == &cat::type_bool();
}

objref const *cSetIndex::bool_slot(objref const &value) const {
    return &bools_[bool_value(value) ? 1 : 0];
}

objref *cSetIndex::bool_slot(objref const &value) { return &bools_[bool_value(value) ? 1 : 0]; }

objref cSetIndex::find(objref const &value) const {
    if (!value) return nullptr;
    if (indexed(value)) {
        objref found;
        if (is_bool(value))
            found = *bool_slot(value);
        else if (cAttrNode const *const node = first_.find(value))
            found = node->valref();
        if (!found) return nullptr;
        if (value->equal(found)) return found;
    }
    cAttrNode const *const node = set_->findvalue(value);
    return node ? node->valref() : objref();
}

void cSetIndex::add(objref const &value) {
    if (!indexed(value)) return;
    if (!is_bool(value)) {
        if (!first_.find(value)) first_.mapitem(value, value);
    } else if (!*bool_slot(value)) {
        *bool_slot(value) = value;
    }
}
