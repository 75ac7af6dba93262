#pragma once
// Types that a program declares, values of them, and the rules of a type that a value breaks:
//
//     qrv::declare_choice("Mode", {"off", "slow", "fast"});
//     qrv::declare("Axis")
//         .required<std::string>("name")
//         .with_default("limit", 10)
//         .choice("mode", "Mode");
//     qrv::value const x = qrv::type("Axis").make(qrv::map{{"name", "X"}, {"mode", "slow"}});
//
// declares the same as this text:
//
//     Mode= choice({off= 0; slow= 1; fast= 2; });
//     Axis= attlist(name= attspec(type= string; flag= #REQUIRED;);
//                   limit= attspec(type= int; default= 10;);
//                   mode= attspec(type= Mode; flag= #REQUIRED;););
//
// A new object of an attribute set such as Axis has all its keys, with nil or a private copy of the
// default. It cannot have other keys. Setting an attribute to a value that the type refuses throws
// qrv::type_error and changes nothing.
//
// A declaration registers the type in the innermost cat::TypeScope (qrv/core/ctypescope.h) until
// that scope ends; without a scope, until the process ends. A qrv::type and the objects of the type
// keep the type object alive longer.
//
// If a name is declared already, cat::set_type replaces the declaration: the type object stays the
// same, and its `changed` fires. Existing choices follow the new declaration; existing objects of
// an attribute set keep the rules with which they were created. Inside a scope, a name from outside
// is hidden instead.
//
// A wrong declaration throws qrv::declaration_error and neither registers nor changes anything.

#include "qrv/value/value.h"

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace qrv {

struct broken_rule;

// A type: shares the type object. Never empty. Two are equal if they share the same object.
class QRV_API type {
  public:
    // The type of that name; if it does not exist, a registered factory or module may create it.
    // error: there is no such type. May run user code.
    template <detail::text T> type(T const &name) : object_(named(name)) {}
    // For a type object of the layer below. std::invalid_argument for null.
    explicit type(cTypeObj *object);
    type(type const &) = default; // no move, which would leave an empty one
    type &operator=(type const &) = default;
    ~type() = default;

    // The type of that name, as above; empty if there is no such type. May run user code.
    static std::optional<type> find(std::string_view name);

    std::string const &name() const noexcept;
    cTypeObj &object() const noexcept; // borrowed; exists as long as this
    friend bool operator==(type const &, type const &) noexcept = default;

    // A value of this type:
    //   of the type already                     the value itself, shared
    //   a map, for an attribute set             a new object that shares these attributes; for a
    //                                           key that is missing or nil, the default
    //   a key, for a choice                     that choice
    //   an int or float, for a wider number     the same number
    // The attributes are converted in the same way, for instance a map for an attribute of an
    // attribute set. rule_error: the value breaks rules of this type; the error has all of them.
    // error: a method of the type refuses the value. Runs user code.
    value make(value const &from) const;

  private:
    static objref named(std::string_view name);

    objref object_;
};

// What a type requires.
enum class rule : unsigned char {
    declared, // it declares the key
    required, // the required key has a value, which is not nil
    type,     // the value is of the expected type
    fixed,    // the attribute is the declared value itself
    choice,   // the value is one of the keys of the choices
};

struct broken_rule {
    qrv::rule rule;
    std::string path;     // from the checked value to the one that breaks the rule: "axes/0/name"
    std::string type;     // the name of the type that has the rule
    std::string expected; // the name of a type, or the written form of a fixed value; else empty
    std::optional<value> actual; // what is there; empty if the key is absent
    std::string message;         // "required key 'name' of type 'Axis' is missing"; without path
};

// All rules that prevent type::make(). Also, for each object inside the value, the rules of the
// object's own type that it breaks, once for each position of the object. Empty if the value has
// the type and is valid, or if type::make() can create one from it. The result shares the parts
// that it names. error: the nesting is too deep for the stack. Runs user code.   O(size)
QRV_API std::vector<broken_rule> broken_rules(value const &of, type const &type);

// A value breaks rules of a type. what() has a line for each: "axes/0/name: " and the message.
class QRV_API rule_error : public type_error {
  public:
    explicit rule_error(std::vector<broken_rule> rules); // at least one
    rule_error(rule_error const &) = default;
    rule_error &operator=(rule_error const &) = default;
    ~rule_error() override;

    std::vector<broken_rule> const &rules() const noexcept { return *rules_; }

  private:
    std::shared_ptr<std::vector<broken_rule> const> rules_;
};

// A wrong declaration. what(): "type 'Axis', key 'mode': there is no type 'Mode'".
class QRV_API declaration_error : public error {
  public:
    declaration_error(std::string type, std::string key, std::string const &reason);
    declaration_error(declaration_error const &) = default;
    declaration_error &operator=(declaration_error const &) = default;
    ~declaration_error() override;

    // Borrowed.
    std::string const &type() const noexcept { return type_; }
    std::string const &key() const noexcept { return key_; } // empty: about the whole type

  private:
    std::string type_;
    std::string key_;
};

namespace detail {

// The type of an attribute: a type, or a name that is looked up when its key is declared.
class type_or_name {
  public:
    type_or_name(qrv::type const &type) : type_(type) {}
    template <text T> type_or_name(T const &name) : name_(std::string_view(name)) {}

    std::optional<qrv::type> const &type() const noexcept { return type_; }
    std::string const &name() const noexcept { return name_; } // if there is no type

  private:
    std::optional<qrv::type> type_;
    std::string name_;
};

template <class> constexpr bool has_no_type = false;

// The type that values made of a T have.
template <class T> constexpr char const *type_name_of() {
    if constexpr (std::same_as<T, bool>)
        return "bool";
    else if constexpr (cIndex<T>)
        return "int";
    else if constexpr (std::same_as<T, float>)
        return "float";
    else if constexpr (std::floating_point<T>)
        return "double";
    else if constexpr (text<T>)
        return "string";
    else if constexpr (requires { typename T::mapped_type; })
        return "map";
    else if constexpr (requires { typename T::key_type; })
        return "set";
    else if constexpr (!own<T> && requires(T const &t) { t.begin() == t.end(); })
        return "vector";
    else
        static_assert(has_no_type<T>, "give the name of the type instead: required(key, \"Axis\")");
}

} // namespace detail

// An unfinished declaration, the result of declare(). The conversion to qrv::type registers the
// type; without it, the destructor does so, unless an exception was thrown in between. So the
// destructor may throw, too: exceptions of the slots of `changed` if a type is declared again, and
// declaration_error if another type was registered under the name meanwhile.
//
// Each function declares one key; the order of the calls is the order of the keys.
// declaration_error: the key is declared already, or there is no type of that name. The name of the
// type that is being declared is valid, too. std::logic_error: the type is registered already. The
// builder clones the values, and shares the type.   O(1) each, O(size) for a value, O(keys) for the
// type
class QRV_API type_builder {
  public:
    type_builder(type_builder const &) = delete; // write qrv::type, not auto
    type_builder &operator=(type_builder const &) = delete;
    ~type_builder() noexcept(false);

    // Registers the type at the first call.
    operator type();

    // The attribute must have a value: of exactly the type `of`, or without `of` of any type.
    type_builder &required(std::string_view key);
    type_builder &required(std::string_view key, detail::type_or_name const &of);
    template <class T> type_builder &required(std::string_view key) {
        return required(key, detail::type_name_of<T>());
    }

    // The attribute may be nil, and initially is.
    type_builder &optional(std::string_view key);
    type_builder &optional(std::string_view key, detail::type_or_name const &of);
    template <class T> type_builder &optional(std::string_view key) {
        return optional(key, detail::type_name_of<T>());
    }

    // The attribute has a default, and the default's type. If there is an `of`, its make() converts
    // the default, so the default of a choice can be its key; declaration_error: the default breaks
    // rules of the type, or is nil. The type gets a clone of the default.
    type_builder &with_default(std::string_view key, value const &fallback);
    type_builder &with_default(std::string_view key, value const &fallback,
                               detail::type_or_name const &of);
    template <class T>
    type_builder &with_default(std::string_view key, std::type_identity_t<T> const &fallback) {
        return with_default(key, value(fallback), detail::type_name_of<T>());
    }

    // The attribute is always the same object, a clone of `constant`: #FIXED. Objects of such a
    // type can't be read from text, since reading creates another object; type::make() creates
    // them.
    type_builder &fixed(std::string_view key, value const &constant);

    // The attribute is required and of a choice type, or has one of the type's keys as its default.
    // declaration_error: `of` is not a choice type.
    type_builder &choice(std::string_view key, detail::type_or_name const &of);
    type_builder &choice(std::string_view key, detail::type_or_name const &of,
                         value const &fallback);

  private:
    friend QRV_API type_builder declare(std::string_view name);
    class declaration;

    explicit type_builder(std::string_view name);
    declaration &open();
    type_builder &add(std::string_view key, int flags, detail::type_or_name const *of = nullptr);
    type_builder &constant(std::string_view key, value const &always, int flags);
    type choice_type(std::string_view key, detail::type_or_name const &of);

    std::unique_ptr<declaration> declaration_; // null once registered
    std::optional<type> registered_;
    int exceptions_; // the number of active exceptions at the beginning
};

// Begins the declaration of an attribute set. declaration_error: the name is not an identifier, or
// belongs to a type of another kind, such as "int". Nothing is registered yet.   O(1)
QRV_API type_builder declare(std::string_view name);

// A key of a choice, which is copied, and its value, which is shared. The default of the value is
// the position of the key. Throws only std::bad_alloc.   O(1)
struct choice_key {
    template <detail::text T> choice_key(T const &choice) : key(std::string_view(choice)) {}
    template <detail::text T> choice_key(T const &choice, value means)
        : key(std::string_view(choice)), meaning(std::move(means)) {}

    std::string key;
    std::optional<value> meaning;
};

// Declares and registers a choice: {"off", "slow"}, or {{"off", 0}, {"slow", 50}}. The second
// function clones a container, whose keys are the choices. declaration_error: as for declare(), for
// a repeated key, and for a value that is not a container. If the type is declared again, runs user
// code: the slots of `changed`.
QRV_API type declare_choice(std::string_view name, std::initializer_list<choice_key> choices);
QRV_API type declare_choice(std::string_view name, value const &choices);

inline bool value::conforms_to(qrv::type const &type) const {
    return broken_rules(*this, type).empty();
}

} // namespace qrv
