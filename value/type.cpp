// Types by name, and the objects that they create from values: value/making.h does the work.

#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ccaughterrors.h"
#include "qrv/value/declare.h"
#include "value/making.h"

#include <stdexcept>

namespace qrv {

namespace {

// Null if the type does not exist. "niltype" is the type of #nil, and also what the library returns
// for unknown names.
cTypeObj *type_named(std::string_view name) {
    cat::CaughtErrors const caught;
    cTypeObj &found = cat::find_type(std::string(name)); // RUNS USER CODE
    return &found == &cat::type_nil() && name != found.name() ? nullptr : &found;
}

std::string lines_of(std::vector<broken_rule> const &rules) {
    std::string text;
    for (broken_rule const &broken : rules) {
        if (!text.empty()) text += '\n';
        if (!broken.path.empty()) text += broken.path + ": ";
        text += broken.message;
    }
    return text;
}

} // namespace

type::type(cTypeObj *object) : object_(objref::share(object)) {
    if (!object) throw std::invalid_argument("a qrv::type needs a type object");
}

objref type::named(std::string_view name) {
    cTypeObj *const found = type_named(name);
    if (!found) throw error("there is no type '" + std::string(name) + "'");
    return objref::share(found);
}

std::optional<type> type::find(std::string_view name) {
    cTypeObj *const found = type_named(name);
    return found ? std::optional(type(found)) : std::nullopt;
}

cTypeObj &type::object() const noexcept { return static_cast<cTypeObj &>(*object_); }

std::string const &type::name() const noexcept { return object().name(); }

value type::make(value const &from) const {
    detail::making making;
    objref const made = making.make(from.object(), object());
    if (!made) throw rule_error(std::move(making).broken());
    return made;
}

std::vector<broken_rule> broken_rules(value const &of, type const &type) {
    detail::making making;
    making.make(of.object(), type.object());
    return std::move(making).broken();
}

rule_error::rule_error(std::vector<broken_rule> rules)
    : type_error(lines_of(rules), 0),
      rules_(std::make_shared<std::vector<broken_rule> const>(std::move(rules))) {}

rule_error::~rule_error() = default;

} // namespace qrv
