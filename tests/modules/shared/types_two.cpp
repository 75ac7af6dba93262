// A module that builds on the types of types_one and keeps this module in use.
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "tests/modules/shared/module.h"

#include <optional>

namespace {

std::optional<cModuleUse> use;
typeref kelvin;
std::optional<cTypeInsert> insert;

} // namespace

QRV_SET_UP {
    use.emplace(cModule::load("types_one"));
    kelvin = typeref::adopt(new cTypeObj("Kelvin"));
    kelvin->inherit(cat::find_type("Celsius"));
    insert.emplace(*kelvin);
    auto const scale = typeref::adopt(new cTypeObj(&cat::typetype_choice(), "Scale", nullptr));
    scale->setattr(own_key(std::string("kelvin")), cat::of(2));
    note(cat::set_type(*scale, false) ? "two declares" : "two is refused");
}
