// Calls by name. A call looks up the executable, compares the number of arguments, and chooses the
// entry by the flags s and p. It holds the executable during the call, since that may remove itself
// from the map that owns it.

#include "core/cerr_object.h"
#include "core/cmember_lookup.h"
#include "core/cregistry.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <initializer_list>
#include <ostream>

namespace {

using arguments = std::initializer_list<objref>; // none, one or two

objref of_bool(bool done) { return done ? cat::nil() : cat::bad(); }

// A wrong count is the one failure of a call that a handler can forgive.
objref counted(bool forgiven) { return forgiven ? cat::nil() : cat::bad(); }

objref call_function(cExeObj const &exe, arguments args) {
    objref const *const a = args.begin();
    switch (args.size()) {
    case 0:
        return exe.oexecute();
    case 1:
        return exe.oexecute(a[0]);
    case 2:
        return exe.oexecute(a[0], a[1]);
    default:
        return exe.oexecute(a[0], a[1], a[2]);
    }
}

objref call_procedure(cExeObj const &exe, cObj *obj, arguments rest) {
    if (!obj) return cat::bad();
    objref const held = objref::share(obj); // the procedure may remove its last owner
    if (rest.size() == 0) return of_bool(exe.pexecute(*obj));
    objref a = rest.begin()[0]; // copies: the procedure may change them
    if (rest.size() == 1) return of_bool(exe.pexecute(*obj, a));
    objref b = rest.begin()[1];
    return of_bool(exe.pexecute(*obj, a, b));
}

// A call without `self`: functions get all arguments, procedures the first one as their object.
objref call_plain(cExeObj const &exe, arguments args) {
    objref const *const a = args.begin();
    if (!exe.p() || args.size() == 0) return call_function(exe, args);
    return args.size() == 1 ? call_procedure(exe, a[0], {}) : call_procedure(exe, a[0], {a[1]});
}

objref call_member(cExeObj const &exe, cObj *self, arguments args) {
    objref const *const a = args.begin();
    if (exe.p()) return call_procedure(exe, self, args);
    objref const me = objref::share(self);
    switch (args.size()) {
    case 0:
        return call_function(exe, {me});
    case 1:
        return call_function(exe, {me, a[0]});
    default:
        return call_function(exe, {me, a[0], a[1]});
    }
}

bool fits(cExeObj const &exe, arguments args) {
    return exe.c() == args.size() + (exe.s() ? 1u : 0u);
}

objref call_found(objref const &found, cObj *obj, cat::cMemberName const &name, arguments args) {
    if (!cObj::is_good(found)) {
        begin_error(err_bad_call, *obj) << cNamed::name(name.text) << "'. Method does not exist!";
        raise_eros();
        return cat::bad();
    }
    cExeObj const *const exe = cat::as_exe(found);
    if (!exe || !found->is_exe()) {
        begin_error(err_bad_call, *obj)
            << cNamed::name(name.text)
            << "'.  This entry is of type: " << cNamed::found(found->type().name());
        raise_eros();
        return cat::bad();
    }
    if (!fits(*exe, args)) {
        begin_error(err_arg_count, *obj)
            << cNamed::name(name.text) << "' with bad arg count: " << args.size();
        return counted(raise_eros());
    }
    return exe->s() ? call_member(*exe, obj, args) : call_plain(*exe, args);
}

objref call_by_name(cObj *obj, cat::cMemberName const &name, arguments args) {
    return obj ? call_found(cat::member_named(*obj, name), obj, name, args) : cat::bad();
}

objref call_global(cat::cMemberName const &name, arguments args) {
    objref const found = cat::global_member_named(name);
    if (!cObj::is_good(found)) {
        begin_error(err_bad_global_call)
            << cNamed::name(name.text) << "'  Executable does not exist";
        raise_eros();
        return cat::bad();
    }
    cExeObj const *const exe = cat::as_exe(found);
    if (!exe || !found->is_exe()) {
        begin_error(err_bad_global_call)
            << cNamed::name(name.text) << "'  This entry is not executable, it's of type: "
            << cNamed::found(found->type().name());
        raise_eros();
        return cat::bad();
    }
    // DELIBERATE: an executable with `s` must be given one argument less than it is called with
    // here, and then reports its prototype. Pinned: a_global_member_function_reports_itself
    if (!fits(*exe, args)) {
        begin_error(err_global_arg_count)
            << cNamed::name(name.text) << "'  with bad arg count: " << args.size();
        return counted(raise_eros());
    }
    return call_plain(*exe, args);
}

} // namespace

objref cObj::call(std::string const &name) {
    return call_by_name(this, cat::cMemberName(name), {});
}

objref cObj::call(std::string const &name, objref const &a) {
    return call_by_name(this, cat::cMemberName(name), {a});
}

objref cObj::call(std::string const &name, objref const &a, objref const &b) {
    return call_by_name(this, cat::cMemberName(name), {a, b});
}

objref cObj::call(cObj *obj, std::string const &name) {
    return call_by_name(obj, cat::cMemberName(name), {});
}

objref cObj::call(cObj *obj, std::string const &name, objref const &a) {
    return call_by_name(obj, cat::cMemberName(name), {a});
}

objref cObj::call(cObj *obj, std::string const &name, objref const &a, objref const &b) {
    return call_by_name(obj, cat::cMemberName(name), {a, b});
}

namespace cat {

// The usual member is a procedure of the object and the argument; for it no result object is
// created.
bool call_succeeds(cObj &obj, cMemberName const &name, objref const &a) {
    objref argument = a; // the lookup may run user code
    objref const found = member_named(obj, name);
    cExeObj const *const exe = as_exe(found);
    bool const is_usual = exe && found->is_exe() && exe->s() && exe->p() && exe->c() == 2;
    if (!is_usual) return cObj::is_good(call_found(found, &obj, name, {argument}));
    objref const held = objref::share(&obj);
    return exe->pexecute(obj, argument);
}

objref call(std::string const &name) { return call_global(cat::cMemberName(name), {}); }

objref call(std::string const &name, objref const &a) {
    return call_global(cat::cMemberName(name), {a});
}

objref call(std::string const &name, objref const &a, objref const &b) {
    return call_global(cat::cMemberName(name), {a, b});
}

objref gmember(objref const &key) {
    if (cat::core_state() == cCoreState::none) core_bootstrap();
    return core.global_hash ? core.global_hash->getitem(key) : cat::badfind();
}

objref gmember(std::string const &key) { return global_member_named(cMemberName(key)); }

} // namespace cat
