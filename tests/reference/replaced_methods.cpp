// Methods of library types that log before they call the original.

#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/scan/cattrscanner.h"
#include "tests/reference/transcript.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <array>
#include <memory>
#include <vector>

namespace reference {

namespace {
struct cMethod {
    cTypeObj &(*type)();
    method_id id;
    cExeMember *(*exe)();
    cVoidFunction original;
};

template <size_t n> cMethod &replaced();

template <size_t n> bool log_and_call(cObj &obj, objref &arg) {
    cMethod const &method = replaced<n>();
    say(method.type().name() + "." + cTypeObj::name_of(method.id) + " " + label(&obj) + " with " +
        label(arg));
    cSetTmp<int> const key(world().writing_keys, world().writing_keys + 1);
    act();
    return reinterpret_cast<cProcedure2>(method.original)(obj, arg);
}
template <size_t n> bool log_and_set(cObj &obj, objref &key, objref &value) {
    cMethod const &method = replaced<n>();
    say(method.type().name() + ".setattr " + label(&obj) + " " + label(key) + " = " + label(value));
    act();
    return reinterpret_cast<cProcedure3>(method.original)(obj, key, value);
}
template <size_t n> objref log_and_new(objref type) {
    cMethod const &method = replaced<n>();
    say(method.type().name() + ".newobj");
    act();
    return reinterpret_cast<cFunction1>(method.original)(type);
}
template <size_t n> bool log_and_create(cObj &obj) {
    cMethod const &method = replaced<n>();
    say(method.type().name() + ".create");
    act();
    return reinterpret_cast<cProcedure1>(method.original)(obj);
}
template <size_t n> cExeMember *procedure1() {
    return new cExeMember(cProcedure1(log_and_create<n>));
}
template <size_t n> cExeMember *procedure2() {
    return new cExeMember(cProcedure2(log_and_call<n>));
}
template <size_t n> cExeMember *procedure3() { return new cExeMember(cProcedure3(log_and_set<n>)); }
template <size_t n> cExeMember *function1() { return new cExeMember(cFunction1(log_and_new<n>)); }

// `create` of scalars is not included: how often reading calls it is not fixed.
std::array<cMethod, 22> methods{{{cat::type_int, mid_assign, procedure2<0>, nullptr},
                                 {cat::type_int, mid_write, procedure2<1>, nullptr},
                                 {cat::type_int, mid_newobj, function1<2>, nullptr},
                                 {cat::type_int, mid_equal, procedure2<3>, nullptr},
                                 {cat::type_string, mid_assign, procedure2<4>, nullptr},
                                 {cat::type_string, mid_write, procedure2<5>, nullptr},
                                 {cat::type_string, mid_newobj, function1<6>, nullptr},
                                 {cat::type_string, mid_equal, procedure2<7>, nullptr},
                                 {cat::type_map, mid_assign, procedure2<8>, nullptr},
                                 {cat::type_map, mid_write, procedure2<9>, nullptr},
                                 {cat::type_map, mid_newobj, function1<10>, nullptr},
                                 {cat::type_map, mid_read, procedure2<11>, nullptr},
                                 {cat::type_map, mid_setattr, procedure3<12>, nullptr},
                                 {cat::type_vector, mid_setattr, procedure3<13>, nullptr},
                                 {cat::type_vector, mid_assign, procedure2<14>, nullptr},
                                 {cat::type_double, mid_assign, procedure2<15>, nullptr},
                                 {cat::type_double, mid_write, procedure2<16>, nullptr},
                                 {cat::type_set, mid_newobj, function1<17>, nullptr},
                                 {cat::type_bool, mid_write, procedure2<18>, nullptr},
                                 {cat::type_int, mid_less, procedure2<19>, nullptr},
                                 {cat::type_map, mid_create, procedure1<20>, nullptr},
                                 {cat::type_vector, mid_create, procedure1<21>, nullptr}}};

template <size_t n> cMethod &replaced() { return methods[n]; }

std::vector<std::unique_ptr<cTypeModifier>> modifiers;
} // namespace

cReplaced::cReplaced(unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        cMethod &method = methods[world().input.below(methods.size())];
        if (method.original || !method.type().method(method.id)) continue;
        method.original = method.type().method(method.id);
        say("replaces " + method.type().name() + "." + cTypeObj::name_of(method.id));
        modifiers.push_back(std::make_unique<cTypeModifier>(
            method.type(), cTypeObj::name_of(method.id), objref::adopt(method.exe())));
    }
}

cReplaced::~cReplaced() {
    while (!modifiers.empty()) modifiers.pop_back();
    for (cMethod &method : methods) method.original = nullptr;
}

} // namespace reference
