// A module that does all that a module may do to the registry and still be unloaded: the
// destructors of its static objects undo it. The type Scale stays, since it consists of the
// library's objects only.
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "tests/modules/shared/module.h"

namespace {

bool add_nothing(cObj &, objref &) { return true; }
bool from_celsius(cObj &, objref &) { return false; }

typeref make_celsius() {
    auto const type = typeref::adopt(new cTypeObj("Celsius"));
    type->inherit(cat::type_double());
    type->inherit_converters(cat::type_double());
    type->set_hash(cat::hash_double, cat::heq_double);
    type->set_tmember("add", make<cExeMember>(add_nothing));
    return type;
}

typeref const celsius = make_celsius();
cTypeInsert const insert(*celsius);
cTypeModifier const member(cat::type_double(), "unit", cat::of("degree"));
cTypeModifier const method(cat::type_iterator(), "add", make<cExeMember>(add_nothing));
cTypeModifier const replaced(cat::type_map(), "add", make<cExeMember>(add_nothing));

struct Converter {
    Converter() { cat::type_int().set_converter(*celsius, from_celsius); }
    Converter(Converter const &) = delete;
    Converter &operator=(Converter const &) = delete;
    ~Converter() { cat::type_int().set_converter(*celsius, nullptr); }
} const converter;

} // namespace

QRV_SET_UP {
    auto const scale = typeref::adopt(new cTypeObj(&cat::typetype_choice(), "Scale", nullptr));
    scale->setattr(own_key(std::string("celsius")), cat::of(1));
    note(cat::set_type(*scale, false) ? "one declares" : "one is refused");
}
