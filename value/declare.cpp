// A declaration is a type object like the one that the reader creates. Specifications are added to
// it one by one. At the end it is registered by cat::declare_type, like a declaration in text.

#include "qrv/value/declare.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/write/cwriter.h"
#include "value/place.h"

#include <exception>
#include <stdexcept>

namespace qrv {

namespace {

typeref new_type(cTypeObj &metatype, std::string const &name) {
    if (!cat::is_ident(name)) throw declaration_error(name, "", "the name is not an identifier");
    typeref const made = typeref::adopt(new cTypeObj(&metatype, name.c_str(), nullptr));
    if (cat::TypeScope::current()) made->count_objects();
    return made;
}

// Returns the type object that has the name afterwards. RUNS USER CODE
type registered(typeref const &declared) {
    std::string const &name = declared->name();
    if (name == cat::type_nil().name() || !cat::declare_type(*declared, ""))
        throw declaration_error(name, "", "the name belongs to a type of another kind");
    return type(&cat::find_type(name));
}

} // namespace

class type_builder::declaration {
  public:
    explicit declaration(std::string_view name)
        : declared_(new_type(cat::typetype_attlist(), std::string(name))) {}

    [[noreturn]] void refuse(std::string_view key, std::string const &reason) const {
        throw declaration_error(declared_->name(), std::string(key), reason);
    }

    // Adds an attribute. If `of` is null, its value may have any type. The flags are those of
    // qrv/containers/cattspec.h.
    void add(std::string_view key, int flags, typeref const &of, value const &fallback = {}) {
        auto const spec = make<cAttspec>(static_cast<int>(asf_required), nullptr);
        if (of && of != declared_) spec->share_type(of);
        if (!fallback.is_nil()) spec->set_default(fallback.clone().object(), false);
        spec->set_flags(flags);
        objref const name = own_key(std::string(key));
        if (cObj::is_good(declared_->getattr(name))) refuse(key, "the key is declared already");
        declared_->setattr(name, spec);
        if (of && of == declared_) recursive_.push_back(spec);
    }

    // The name of the type that is being declared means that type.
    typeref type_of(std::string_view key, detail::type_or_name const &of) const {
        if (of.type()) return typeref::share(&of.type()->object());
        if (of.name() == declared_->name()) return declared_;
        return typeref::share(&existing(key, of).object());
    }

    type existing(std::string_view key, detail::type_or_name const &of) const {
        if (of.type()) return *of.type();
        if (auto const found = type::find(of.name())) return *found;
        refuse(key, "there is no type '" + of.name() + "'");
    }

    type finish() {
        try {
            type const result = registered(declared_); // RE-ENTERS: slots of `changed`
            name_recursive();
            return result;
        } catch (...) {
            name_recursive();
            throw;
        }
    }

  private:
    // Called after the registration: a type that was never registered would keep itself alive.
    void name_recursive() {
        for (specref const &spec : recursive_)
            spec->share_type(typeref::share(&cat::find_type(declared_->name())));
        recursive_.clear();
    }

    typeref declared_;
    std::vector<specref> recursive_;
};

type_builder::type_builder(std::string_view name)
    : declaration_(std::make_unique<declaration>(name)), exceptions_(std::uncaught_exceptions()) {}

type_builder::~type_builder() noexcept(false) {
    if (declaration_ && std::uncaught_exceptions() == exceptions_) static_cast<void>(type(*this));
}

type_builder::operator type() {
    if (auto const written = std::move(declaration_)) registered_ = written->finish();
    return registered_.value();
}

type_builder::declaration &type_builder::open() {
    if (declaration_) return *declaration_;
    throw std::logic_error("the type is registered already");
}

type_builder &type_builder::add(std::string_view key, int flags, detail::type_or_name const *of) {
    open().add(key, flags, of ? open().type_of(key, *of) : nullptr);
    return *this;
}

type_builder &type_builder::required(std::string_view key) { return add(key, asf_required); }

type_builder &type_builder::required(std::string_view key, detail::type_or_name const &of) {
    return add(key, asf_required, &of);
}

type_builder &type_builder::optional(std::string_view key) { return add(key, asf_implied); }

type_builder &type_builder::optional(std::string_view key, detail::type_or_name const &of) {
    return add(key, asf_implied, &of);
}

type_builder &type_builder::with_default(std::string_view key, value const &fallback) {
    return constant(key, fallback, 0);
}

type_builder &type_builder::fixed(std::string_view key, value const &constant_value) {
    return constant(key, constant_value, asf_fixref);
}

type_builder &type_builder::with_default(std::string_view key, value const &fallback,
                                         detail::type_or_name const &of) {
    type const wanted = open().existing(key, of);
    try {
        return constant(key, wanted.make(fallback), 0);
    } catch (rule_error const &refused) {
        open().refuse(key, std::string("the default is wrong: ") + refused.what());
    }
}

type_builder &type_builder::constant(std::string_view key, value const &always, int flags) {
    if (always.is_nil()) open().refuse(key, "the default is nil");
    typeref const of = typeref::share(&always.object()->type());
    open().add(key, flags, of, always);
    return *this;
}

type_builder &type_builder::choice(std::string_view key, detail::type_or_name const &of) {
    return required(key, choice_type(key, of));
}

type_builder &type_builder::choice(std::string_view key, detail::type_or_name const &of,
                                   value const &fallback) {
    return with_default(key, fallback, choice_type(key, of));
}

type type_builder::choice_type(std::string_view key, detail::type_or_name const &of) {
    type const choice = open().existing(key, of);
    if (detail::is_choice_type(choice.object())) return choice;
    open().refuse(key, "type '" + choice.name() + "' is not a choice");
}

type_builder declare(std::string_view name) { return type_builder(name); }

namespace {

type declare_choices(std::string const &name, objref const &choices) {
    typeref const declared = new_type(cat::typetype_choice(), name);
    declared->setattr(own_key(std::string("choices")), choices);
    return registered(declared); // RE-ENTERS: slots of `changed`
}

} // namespace

type declare_choice(std::string_view name, std::initializer_list<choice_key> choices) {
    auto const keys = make<cMapObj>();
    for (choice_key const &choice : choices) {
        objref const key = own_key(choice.key);
        if (keys->datamap().find(key))
            throw declaration_error(std::string(name), choice.key,
                                    "the choice is declared already");
        value const meaning = choice.meaning.value_or(value(keys->size()));
        keys->datamap().mapitem(key, meaning.object());
    }
    return declare_choices(std::string(name), keys);
}

type declare_choice(std::string_view name, value const &choices) {
    if (!choices.is_container())
        throw declaration_error(std::string(name), "", "the choices are not a container");
    return declare_choices(std::string(name), choices.clone().object());
}

declaration_error::declaration_error(std::string type, std::string key, std::string const &reason)
    : error("type '" + type + (key.empty() ? "'" : "', key '" + key + "'") + ": " + reason),
      type_(std::move(type)), key_(std::move(key)) {}

declaration_error::~declaration_error() = default;

} // namespace qrv
