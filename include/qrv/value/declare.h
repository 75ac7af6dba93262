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
// Objects of an attribute set such as Axis have all its keys from the start, with nil or a private
// copy of the default, and no others. Setting an attribute to a value that the type refuses throws
// qrv::type_error and changes nothing.
//
// Life: while a cat::TypeScope lives (qrv/core/ctypescope.h), the innermost one has the type, which
// leaves the names when that scope ends; without a scope the type stays until the process ends. A
// qrv::type and the objects of the type keep it alive beyond that.
//
// A name that is declared already gets the new declaration, by cat::set_type: the type object stays
// the same, its `changed` fires, choices go along, and objects of an attribute set keep the rules
// that they were created with. Inside a scope a name from outside is hidden instead.
//
// A wrong declaration throws qrv::declaration_error, and then nothing is registered or changed.

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
    // The type of that name. If it does not exist, a registered factory or a module can create it.
    // error: nothing has created it. May run user code.
    template <detail::text T> type(T const &name) : object_(named(name)) {}
    // Shares a type of the layer below. std::invalid_argument: it is null.
    explicit type(cTypeObj *object);
    type(type const &) = default; // no move, which would leave an empty one
    type &operator=(type const &) = default;
    ~type() = default;

    static std::optional<type> find(std::string_view name);

    std::string const &name() const noexcept;
    cTypeObj &object() const noexcept; // borrowed; lives as long as this
    friend bool operator==(type const &, type const &) noexcept = default;

    // A value of this type:
    //   of the type already                     the value itself, shared
    //   a map, for an attribute set             a new object with these attributes, which are
    //   shared;
    //                                           a key that is missing or nil keeps its default
    //   a key, for a choice                     that choice
    //   an int or float, for a wider number     the same number
    // The attributes are made in the same way: a map where an attribute set is declared, and so on.
    // rule_error: it breaks rules of this type, all of which the error has. error: a method of the
    // type refuses it. Runs user code.
    value make(value const &from) const;

  private:
    static objref named(std::string_view name);

    objref object_;
};

// What a type demands.
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

// Every rule that keeps type::make() from succeeding, and the rules of their
// types that objects inside the value break, once for each place where they are. Empty: the value
// is of the type and valid, or one can be made from it. The result shares the parts that it names.
// error: the nesting is too deep for the stack. Runs user code.   O(size of the tree)
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
    std::string const &key() const noexcept { return key_; } // empty: the type as a whole

  private:
    std::string type_;
    std::string key_;
};

namespace detail {

// The type of an attribute, by handle or by a name that is looked up with the key at hand.
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

// A declaration while it is being written, from declare(). It is registered when it becomes a
// qrv::type, or else by its end, after the last key: not, if an exception has been thrown in
// between. So the end may throw, too: what the slots of `changed` throw where a type is declared
// again, and declaration_error if another type has taken the name meanwhile.
//
// Each function declares one key, in this order, and throws declaration_error: the key is declared
// already, or there is no such type. The name of the type that is being declared is one, too. The
// builder shares the values until it registers the type.   O(1) each, O(keys) for the type
class QRV_API type_builder {
  public:
    type_builder(type_builder const &) = delete; // write qrv::type, not auto
    type_builder &operator=(type_builder const &) = delete;
    ~type_builder() noexcept(false);

    // Registers, once.
    operator type();

    // The attribute must have a value; of any type, or of exactly that type.
    type_builder &required(std::string_view key);
    type_builder &required(std::string_view key, detail::type_or_name const &of);
    template <class T> type_builder &required(std::string_view key) {
        return required(key, detail::type_name_of<T>());
    }

    // It may be nil, which it is at first.
    type_builder &optional(std::string_view key);
    type_builder &optional(std::string_view key, detail::type_or_name const &of);
    template <class T> type_builder &optional(std::string_view key) {
        return optional(key, detail::type_name_of<T>());
    }

    // It has a default, and the type of that. With a type the default is made by type::make(), so a
    // choice can be given by its key; declaration_error: it breaks rules of the type. The default
    // is shared until the registration and belongs to the type from then on; nil is not one.
    type_builder &with_default(std::string_view key, value const &fallback);
    type_builder &with_default(std::string_view key, value const &fallback,
                               detail::type_or_name const &of);
    template <class T>
    type_builder &with_default(std::string_view key, std::type_identity_t<T> const &fallback) {
        return with_default(key, value(fallback), detail::type_name_of<T>());
    }

    // The attribute is always this very object: #FIXED. Text can't hold objects of such a type,
    // since what is read is another object; type::make() makes them.
    type_builder &fixed(std::string_view key, value const &constant);

    // Required, of a choice type; or with one of its keys as the default. declaration_error: it is
    // another type.
    type_builder &choice(std::string_view key, detail::type_or_name const &of);
    type_builder &choice(std::string_view key, detail::type_or_name const &of,
                         value const &fallback);

  private:
    friend QRV_API type_builder declare(std::string_view name);
    class declaration;

    explicit type_builder(std::string_view name);
    declaration &open();
    type_builder &constant(std::string_view key, value const &always, int flags);
    type choice_type(std::string_view key, detail::type_or_name const &of);

    std::unique_ptr<declaration> declaration_; // null once registered
    std::optional<type> registered_;
    int exceptions_; // that were in flight at the beginning
};

// Begins the declaration of an attribute set. declaration_error: the name is not an identifier, or
// belongs to a type of another kind, such as "int". Nothing is registered yet.   O(1)
QRV_API type_builder declare(std::string_view name);

// A key of a choice, which is copied, and what it stands for, which is shared; without a value that
// is its position. Never throws but for memory.   O(1)
struct choice_key {
    template <detail::text T> choice_key(T const &choice) : key(std::string_view(choice)) {}
    template <detail::text T> choice_key(T const &choice, value means)
        : key(std::string_view(choice)), meaning(std::move(means)) {}

    std::string key;
    std::optional<value> meaning;
};

// Declares a choice, at once: {"off", "slow"}, or {{"off", 0}, {"slow", 50}}. The second form
// shares a container whose keys are the choices. declaration_error: as for declare(), a key twice,
// or not a container. Runs user code where the type is declared again: the slots of `changed`.
QRV_API type declare_choice(std::string_view name, std::initializer_list<choice_key> choices);
QRV_API type declare_choice(std::string_view name, value const &choices);

inline bool value::conforms_to(qrv::type const &type) const {
    return broken_rules(*this, type).empty();
}

} // namespace qrv
