// Members of types: how a write under a standard name reaches the method table, and how one type
// inherits the members of another.

#include "core/cbuiltin.h"
#include "core/cerr_object.h"
#include "core/cholders.h"
#include "core/cpairs.h"
#include "core/cregistry.h"
#include "core/ctext_hooks.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"

#include <ostream>
#include <utility>

objref cTypeObj::tmember(objref const &key) const { return tmmap_.getitem(key); }

objref cTypeObj::tmember(std::string const &key) const { return tmmap_.getitem(key); }

void cTypeObj::set_tmember(std::string const &key, objref value) {
    set_tmember(own_key(key), std::move(value));
}

void cTypeObj::set_method(method_id id, cVoidFunction function) noexcept {
    methods_[id] = function;
    if (id == mid_iterobj && function) cHolders::note_type_method(function);
    library_methods_ &= ~cat::method_bit(id);
}

void cTypeObj::set_library_methods(cObjClass value_class) noexcept {
    for (int id = 0; id < mid_count; ++id)
        if (methods_[id]) library_methods_ |= cat::method_bit(static_cast<method_id>(id));
    value_class_ = value_class;
}

// Destroys the old member last, when table and members agree: its destructor may change this type
// again or destroy it.
void cTypeObj::set_tmember(objref const &key, objref value) {
    objref const old = tmmap_.getitem(key);
    method_id id = mid_count;
    std::string const name = text_hooks.as_string(key);
    bool const standard = is_stdmethod(name, id); // 1
    if (is_kill(value)) {                         // 3
        if (standard) set_method(id, nullptr);
        tmmap_.delitem(key);
        return;
    }
    if (!standard) { // 6
        tmmap_.mapitem(key, value);
        return;
    }
    if (!value->is_exe()) return; // 2
    auto *const exe = dynamic_cast<cExeMember *>(value.get());
    if (!exe) { // 4
        std::string const text = text_hooks.as_text(key);
        begin_error(err_not_type_member) << cNamed::key(text) << "', must be cExeMember";
        raise_eros();
        return;
    }
    exe->set_name(name); // 5; a name that a subclass of cExeMember returns doesn't count
    if (!validate_exe(id, *exe, type().name().c_str())) return;
    if (tmmap_.mapitem(key, value)) set_method(id, exe->function());
} // RE-ENTERS: `old` is released

void cTypeObj::inherit(cTypeObj const &base) {
    if (&base == this) return;
    for (auto const &[key, value] : pairs_of(base.tmmap_)) // a copy, since storing runs user code
        set_tmember(key, value);
}
