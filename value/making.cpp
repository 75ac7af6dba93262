// The tests of the rules are those of qrv/edit/crules.h. A part that breaks rules itself is omitted
// from the test of its container, so each mistake is reported once. While a `making` exists, it
// catches the library's own errors.

#include "value/making.h"

#include "value/guard.h"
#include "value/place.h"

#include "qrv/base/platform/cstack.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/citems.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/edit/crules.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>

namespace qrv::detail {

namespace {

cRef<cAttspec> specification(cTypeObj &type, objref const &key) {
    objref const declared = type.getattr(key); // RUNS USER CODE
    return cRef<cAttspec>::share(dynamic_cast<cAttspec *>(declared.get()));
}

} // namespace

objref widened(objref const &from, cTypeObj const &type) {
    bool const is_int = &from->type() == &cat::type_int();
    bool const is_float = &from->type() == &cat::type_float();
    if (&type == &cat::type_double() && (is_int || is_float))
        return value(value(from).get<double>()).object();
    if (&type != &cat::type_float() || !is_int) return nullptr;
    std::optional<float> const number = value(from).get_if<float>();
    return number ? value(*number).object() : objref();
}

namespace {

bool is_makeable(objref const &from, cTypeObj const &type) {
    if (is_attribute_set_type(type)) return from->is_map() && !cat::stack_low();
    return is_choice_type(type) && from->type().is_keytype();
}

std::string quoted(std::string const &name) { return '\'' + name + '\''; }

// Containers may be large.
std::string text_or_type(objref const &value) {
    if (!value) return "nothing";
    if (value->object_class() == cObjClass::map) return "a " + value->type().name();
    return cat::as_text(value);
}

std::string message_of(edit::BrokenRule const &broken) {
    std::string const type = quoted(broken.type->name());
    std::string const key = broken.key ? quoted(cat::as_string(broken.key)) : "";
    switch (broken.rule) {
    case edit::Rule::declared:
        return "type " + type + " has no key " + key;
    case edit::Rule::required:
        return "required key " + key + " of type " + type +
               (broken.actual ? " is nil" : " is missing");
    case edit::Rule::type:
        break;
    case edit::Rule::fixed:
        return "key " + key + " of type " + type + " is fixed to " + text_or_type(broken.expected) +
               (broken.expected->equal(broken.actual) ? ", and this is a copy"
                                                      : ", not " + text_or_type(broken.actual));
    case edit::Rule::choice:
        return text_or_type(broken.actual) + " is not a choice of type " + type;
    }
    auto const &expected = static_cast<cTypeObj const &>(*broken.expected);
    std::string const actual =
        broken.actual ? "of type " + quoted(broken.actual->type().name()) : "nothing";
    if (!broken.key) return "a value of type " + type + " is expected, not one " + actual;
    return "key " + key + " of type " + type + " must be of type " + quoted(expected.name()) +
           ", not " + actual;
}

broken_rule as_data(edit::BrokenRule const &broken, std::string const &outer) {
    std::string const inside = broken.path.empty() ? "" : broken.path.substr(1);
    std::string const place = joined_path(outer, inside);
    bool const is_type = broken.rule == edit::Rule::type;
    return {static_cast<rule>(broken.rule),
            broken.key ? joined_path(place, cat::as_text(broken.key)) : place,
            broken.type->name(),
            is_type           ? static_cast<cTypeObj const &>(*broken.expected).name()
            : broken.expected ? cat::as_text(broken.expected)
                              : "",
            cObj::is_good(broken.actual) ? std::optional(value(broken.actual)) : std::nullopt,
            message_of(broken)};
}

} // namespace

static_assert(static_cast<int>(rule::declared) == static_cast<int>(edit::Rule::declared));
static_assert(static_cast<int>(rule::choice) == static_cast<int>(edit::Rule::choice));

std::string making::Step::text(Step const *step) {
    std::vector<objref> keys;
    for (; step; step = step->outer) keys.push_back(step->key);
    std::string path;
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        if (!path.empty()) path += '/';
        path += cat::as_text(*key); // RUNS USER CODE
    }
    return path;
}

objref making::make(objref const &from, cTypeObj &type) {
    objref const made = of(from, type, nullptr);
    if (!caught_.empty()) refuse(type);
    return made;
}

void making::refuse(cTypeObj const &type) const {
    if (!caught_.empty()) throw_caught(caught_);
    throw type_error("type " + quoted(type.name()) + " refuses the value", 0);
}

void making::add(std::vector<edit::BrokenRule> const &rules, Step const *step) {
    if (rules.empty()) return;
    std::string const path = Step::text(step);
    for (edit::BrokenRule const &broken : rules) broken_.push_back(as_data(broken, path));
}

objref making::of(objref const &from, cTypeObj &type, Step const *step) {
    if (&from->type() == &type) {
        auto const rules = edit::all_broken_rules(from, type); // RUNS USER CODE
        add(rules, step);
        return rules.empty() ? from : objref();
    }
    if (is_makeable(from, type))
        return is_choice_type(type) ? choice(from, type, step) : attribute_set(from, type, step);
    objref const number = widened(from, type);
    if (!number) add(edit::broken_rules(from, type), step);
    return number;
}

objref making::choice(objref const &from, cTypeObj &type, Step const *step) {
    auto const rules = edit::broken_rules(from, type);
    add(rules, step);
    if (!rules.empty()) return nullptr;
    objref const made = type.newobj(); // RUNS USER CODE
    if (cObj::is_bad(made) || !made->assign(from)) refuse(type);
    return made;
}

objref making::attribute_set(objref const &from, cTypeObj &type, Step const *outer) {
    std::size_t const before = broken_.size();
    cRef<cMapObj> const tested = ::make<cMapObj>();
    std::vector<objref> reported;
    for (auto const &[key, given] : cat::items(from)) {
        Step const step{outer, key};
        objref value = given;
        if (!attribute(value, type, step)) reported.push_back(key);
        tested->datamap().mapitem(key, value);
    }
    std::vector<edit::BrokenRule> rules = edit::broken_rules(tested, type);
    std::erase_if(rules, [&](edit::BrokenRule const &rule) {
        return std::ranges::any_of(reported,
                                   [&](objref const &key) { return key->equal(rule.key); });
    });
    std::size_t const inside = broken_.size();
    add(rules, outer);
    auto const at = [this](std::size_t n) {
        return broken_.begin() + static_cast<std::ptrdiff_t>(n);
    };
    std::rotate(at(before), at(inside), broken_.end()); // the rules of the attributes come last
    return broken_.size() == before ? filled(type, tested) : objref();
}

// Replaces the given value by the value of the attribute. If rules inside the given value are
// broken, replaces it by nil and returns false.
bool making::attribute(objref &value, cTypeObj &type, Step const &step) {
    std::size_t const before = broken_.size();
    cRef<cAttspec> const spec = specification(type, step.key);
    typeref const wanted = spec ? typeref::share(spec->get_type()) : typeref();
    if (!cObj::is_good(value)) {
        value = cat::nil();
    } else if (spec && spec->is_fixref() && spec->get_default()->equal(value)) {
        value = spec->get_default();
    } else if (!wanted || &value->type() == wanted.get()) {
        add(edit::all_broken_rules(value, value->type()), &step); // RUNS USER CODE
    } else if (is_makeable(value, *wanted)) {
        value = of(value, *wanted, &step);
    } else if (objref const number = widened(value, *wanted)) {
        value = number;
    }
    if (broken_.size() == before) return true;
    value = cat::nil();
    return false;
}

// A #FIXED attribute is the object in the declaration, but the new object has a copy of it.
objref making::filled(cTypeObj &type, objref const &attributes) const {
    objref const made = type.newobj(); // RUNS USER CODE
    auto *const map = dynamic_cast<cMapObj *>(made.get());
    if (!map) refuse(type);
    for (auto const &[key, spec] : cat::items(type.tmember("attspec"))) {
        auto const *const fixed = dynamic_cast<cAttspec const *>(spec.get());
        if (fixed && fixed->is_fixref()) map->datamap().mapitem(key, fixed->get_default());
    }
    for (auto const &[key, value] : cat::items(attributes)) {
        if (cObj::is_void(value) || map->datamap().getitem(key) == value) continue;
        if (!map->setattr(key, value)) refuse(type); // RUNS USER CODE
    }
    return made;
}

} // namespace qrv::detail
