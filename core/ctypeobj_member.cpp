// Members of types: how a write under a standard name reaches the method table, and how one type
// takes over the members of another.

#include "core/cregistry.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/diagnostics/cerr.h"

#include <ostream>

objref cTypeObj::tmember(objref const &key) const { return tmmap_.getitem(key); }

objref cTypeObj::tmember(std::string const &key) const { return tmmap_.getitem(key); }

void cTypeObj::set_tmember(std::string const &key, objref value) {
    set_tmember(own_key(key), std::move(value));
}

void cTypeObj::set_tmember(objref const &key, objref value) {
    method_id id = mid_count;
    bool const standard = is_stdmethod(cat::as_string(key), id); // 1
    if (is_kill(value)) {                                        // 3
        if (standard) methods_[id] = nullptr;
        tmmap_.delitem(key);
        return;
    }
    if (!standard) { // 6
        tmmap_.mapitem(key, value);
        return;
    }
    if (!value->is_exe()) return; // 2
    auto const *const exe = dynamic_cast<cExeMember const *>(value.get());
    if (!exe) { // 4
        std::string const text = cat::as_text(key);
        cErrStream &err = eros();
        err.clear();
        err.set_code(0x50000000);
        err << "Executable, key '" << text << "', must be cExeMember";
        raise_eros();
        return;
    }
    if (tmmap_.mapitem(key, value)) methods_[id] = exe->function(); // 5
}

void cTypeObj::inherit(cTypeObj const &base) {
    if (&base == this) return;
    for (cAttrNode const *node = base.tmmap_.first(); node; node = base.tmmap_.next(node))
        set_tmember(node->key(), node->valref());
}

bool cTypeObj::update_from(cTypeObj const &other) { return &type() == &other.type(); }
