#pragma once
// qrv::value, a value of any kind: what application programs work with.
//
//   qrv::value device = qrv::load("device.attr");
//   int const baud = device.get_or("bus/baud", 0);
//   device["bus"]["gateway"]["name"] = "rack"; // creates the missing levels
//   for (auto const &[key, limit] : device.at("limits").items()) std::cout << key << limit << '\n';
//
// A value is one pointer to an object of the library (qrv/core/cobj.h), or null, which is #nil.
// Copying shares the object: what is changed in one copy changes in the other. Assigning to a
// variable makes it refer to another object, and the copies keep theirs; assign() changes the
// object itself, and so all copies; clone() makes a copy that shares nothing.
//
// Keys and paths: a string given to operator[], contains() or rename() is one key. A string given
// to get, get_or, at, find, set or erase is a path: keys between slashes, such as "axes/0/name". A
// part that reads as an int is a position in a vector or a set. In a map it is an int key; but if
// the map has the same string as a key, and not the int, it is that string. The same holds for an
// integer that is given as a key. Keys that are not identifiers are in quotes, as in the text
// format: "\"a/b\"/c". path_of() creates the path of any keys, with quotes where they are needed.
// Blanks between the parts are ignored, and the path may begin with a slash. No part may be empty,
// so "a//b" is a path_error. Only the paths "" and "/" have no part: they are the value itself.
//
// Failures are exceptions (qrv/value/errors.h). Nothing is printed, and the program's error
// handlers neither see them nor are changed. Exceptions of user code (hooks, slots, types of the
// program) leave the function; a change is complete before they do. Every function that allocates
// may throw std::bad_alloc.
//
// One thread at a time, as for the whole library: copying a value writes to its object, so two
// threads must not even read values that share one (qrv/qrvdefs.h).

#include "qrv/core/cobj.h"
#include "qrv/value/errors.h"
#include "qrv/value/kind.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace qrv {

class value;
class reference;  // qrv/value/reference.h: the result of operator[] of a variable
class item_range; // qrv/value/items.h: the results of items(), keys() and values()
class key_range;
class element_range;
class element_iterator;
class type;       // qrv/value/declare.h
class connection; // qrv/value/change.h

namespace detail {

// Converts a T to a value and back. For a type of the program, to_value and from_value are
// overloads in its namespace, or defined by QRV_DESCRIBE. Specialised for standard containers in
// qrv/value/convert.h.
template <class T> struct converter {
    static value to(T const &from) requires requires(value &v) { to_value(from, v); };
    static T from(value const &from) requires requires(T &t) { from_value(from, t); };
};

template <class T>
concept number = std::floating_point<T> || cIndex<T>;
template <class T>
concept scalar = number<T> || std::same_as<T, bool>;
template <class T>
concept text = std::convertible_to<T const &, std::string_view> &&
    !std::is_null_pointer_v<std::remove_cvref_t<T>>;
template <class T>
concept own = std::derived_from<T, value> || std::same_as<T, reference>;
template <class T>
concept convertible = !scalar<T> && !own<T> && !text<T> && !cCharacter<T> && !std::is_array_v<T> &&
                      std::is_object_v<T> && requires(T const &t) {
    converter<T>::to(t);
};
template <class T>
concept restorable = !std::is_array_v<T> && std::is_object_v<T> && requires(value const &v) {
    converter<T>::from(v);
};
// The types that get() can return: not std::string_view and pointers, since nothing would keep
// their targets alive.
template <class T>
concept gettable = std::same_as<T, std::remove_cvref_t<T>> &&
    (scalar<T> || std::same_as<T, std::string> || std::same_as<T, value> ||
     std::same_as<T, objref> || (!text<T> && restorable<T>));
// The types that == compares with a value without creating an object.
template <class T>
concept plain = scalar<T> || text<T> || std::is_null_pointer_v<T>;

// An integer, or a key that is a value, as an iteration returns it.
template <class T>
concept key_like = cIndex<T> || std::same_as<T, value> || std::same_as<T, reference>;
template <class T>
concept no_key =
    cCharacter<T> || std::floating_point<T> || std::same_as<T, bool> || std::is_null_pointer_v<T>;

// The type that get_or() returns for a default.
template <class T> using fallback =
    std::conditional_t<text<T>, std::string, std::conditional_t<own<T>, value, std::decay_t<T>>>;

enum class outcome : std::uint8_t { good, wrong_type, misfit };

// One key. Borrows a string, shares an object.
struct QRV_API step {
    enum class form : std::uint8_t { text, number, object };
    step() noexcept = default;
    explicit step(std::string_view word) noexcept : text(word) {}
    explicit step(int index) noexcept : is(form::number), number(index) {}
    explicit step(objref const &object); // a string or an int is one of the other forms

    form is = form::text;
    int number = 0;
    std::string_view text; // may refer to the string in `key`
    objref key;            // null, or the key as an object
};

// The key as a part of a path, after a slash unless it is the first.
QRV_API void append_key(std::string &path, step const &key);
QRV_API void append_checked(std::string &path, step const &key); // type_error: it is not a key

// A fast walk for most paths: identifiers and short numbers, through containers of the library, to
// a value that exists. Returns the object, borrowed; cat::nil() for #nil. Null for all other paths,
// which locate() follows.
QRV_API cObj *walk_plainly(cObj *root, std::string_view path);

// What is at a path: borrowed from the tree, or from `keep`.
struct spot {
    cObj *object = nullptr;
    objref keep; // an object that a type's method has returned
};

struct value_access; // for the other files of the layer

} // namespace detail

class QRV_API value {
  public:
    // #nil, which has no object to own. Never throws.
    value() noexcept = default;
    value(std::nullptr_t) noexcept {}
    // Share the object; the source of a move is #nil afterwards. The destructor runs user code if
    // the value was the last owner.
    value(value const &other) noexcept = default;
    value(value &&other) noexcept = default;
    // Only for variables: assigning to the result of at() or of an iteration would change nothing.
    value &operator=(value const &other) & = default;
    value &operator=(value &&other) & = default;
    ~value() = default;

    // A new object; a string is copied. A float stays a float; a long double becomes a double,
    // rounded. range_error: an int can't hold the integer, or a double the size of the long double.
    //   O(length)
    template <std::same_as<bool> T> value(T truth) : object_(make(truth)) {}
    template <cIndex T> value(T number) : object_(make(int_of(number))) {}
    value(float number);
    value(double number);
    value(long double number);
    value(std::string text);
    value(std::string_view text);
    value(char const *text);                   // null is #nil
    template <cCharacter T> value(T) = delete; // a number or a string? "a" is a string
    // The object itself, shared; null and cat::nil() are #nil. std::invalid_argument for cat::bad()
    // and cat::badfind(), which are not values.   O(1)
    value(objref object);
    template <class T>
    requires(std::convertible_to<T *, cObj *> && !std::same_as<T, cObj>)
        value(cRef<T> const &object)
        : value(objref(object)) {}
    // Calls the to_value of the type, which copies. Throws what to_value throws.   O(size)
    template <class T>
    requires detail::convertible<T> value(T const &source)
        : value(detail::converter<T>::to(source)) {}

    // --- what it is. It is of exactly one of the kinds nil, boolean and so on.   O(1), never throw

    qrv::kind kind() const noexcept;
    bool is_nil() const noexcept { return !object_; }
    bool is_bool() const noexcept { return kind() == kind::boolean; }
    bool is_int() const noexcept { return kind() == kind::integer; }
    bool is_float() const noexcept { return kind() == kind::float_number; }
    bool is_double() const noexcept { return kind() == kind::double_number; }
    bool is_number() const noexcept { return is_int() || is_float() || is_double(); }
    bool is_string() const noexcept { return kind() == kind::string; }
    bool is_map() const noexcept { return kind() == kind::map; }
    bool is_vector() const noexcept { return kind() == kind::vector; }
    bool is_set() const noexcept { return kind() == kind::set; }
    bool is_object() const noexcept { return kind() == kind::object; }
    // Does it have entries? True for a map, a vector, a set, and an attribute set of a declared
    // type.
    bool is_container() const noexcept;
    // The name of the object's type, such as "int" or "Axis"; "niltype" for #nil.
    std::string type_name() const;
    // The object, shared; cat::nil() for #nil, so never null.
    objref object() const;

    // --- reading. Only numbers are converted, and only without a loss. As an exception, a double
    // is rounded to a float, since the number 0.1 in text is a double:
    //     bool         from a bool
    //     integers     from an int, and from a float or double that is a whole number
    //     float        from a float or double, and from an int that a float holds exactly
    //     double       from a number; so does long double
    //     std::string  from a string
    //     value, objref, and each type with from_value
    // A number with a format, such as intf(0x1F), reads as its number. A choice reads as its key,
    // which is a string in most types; at("value") is the value of that key.

    // Strings are copied; a value or an objref shares.   O(1), O(size) for what is copied
    // type_error: it is not a T. range_error: the number does not fit, or becomes 0 as a float.
    template <detail::gettable T> T get() const { return fetch<T>(object_, {}); }
    // Returns an empty optional if get() would throw one of these.
    template <detail::gettable T> std::optional<T> get_if() const;
    // As get(), but for the value at a path; empty if there is no value. #nil is a value, too: a
    // std::optional, a value and an objref can hold it, most other T throw type_error. path_error:
    // the text of the path is faulty. type_error, range_error: as for get().
    template <detail::gettable T> std::optional<T> get(std::string_view path) const;
    // The same, but returns a default instead of an empty optional. If the default is a string
    // literal, the result is a std::string.
    template <class T>
    requires detail::gettable<detail::fallback<T>>
    auto get_or(std::string_view path, T const &fallback) const -> detail::fallback<T>;
    // The same for one entry, by its position or int key.
    template <detail::gettable T, cIndex Index> std::optional<T> get(Index index) const {
        std::optional<value> const found = find(index);
        return found ? std::optional<T>(found->template get<T>()) : std::nullopt;
    }
    template <cIndex Index, class T>
    requires detail::gettable<detail::fallback<T>>
    auto get_or(Index index, T const &fallback) const -> detail::fallback<T> {
        std::optional<value> const found = find(index);
        return found ? found->template get<detail::fallback<T>>() : detail::fallback<T>(fallback);
    }

    // The value at a path; it shares the object. path_error: there is no value, or the path is
    // faulty.
    value at(std::string_view path) const;
    template <detail::key_like T> value at(T const &key) const { return at_key(step_of(key)); }
    // The same, but empty if there is no value. path_error: the path is faulty.
    std::optional<value> find(std::string_view path) const;
    template <detail::key_like T> std::optional<value> find(T const &key) const {
        return find_key(step_of(key));
    }
    // The value at one key; path_error as for at(). For a variable it returns a reference, which
    // creates missing levels only when it is assigned to.
    value operator[](std::string_view key) const & { return at_key(detail::step(key)); }
    template <detail::key_like T> value operator[](T const &key) const & {
        return at_key(step_of(key));
    }
    reference operator[](std::string_view key) &;
    template <detail::key_like T> reference operator[](T const &key) &;
    reference operator[](std::string_view key) &&;
    template <detail::key_like T> reference operator[](T const &key) &&;
    // Is there an entry with this key? False for #nil and for scalars.
    bool contains(std::string_view key) const { return contains_key(detail::step(key)); }
    template <detail::key_like T> bool contains(T const &key) const {
        return contains_key(step_of(key));
    }
    // Deleted: these types are not keys, since it is unclear whether an int or a string is meant.
    template <detail::no_key T> void at(T) const = delete;
    template <detail::no_key T> void find(T) const = delete;
    template <detail::no_key T> void contains(T) const = delete;
    template <detail::no_key T> void operator[](T) const & = delete;
    // The number of entries; 0 for #nil. type_error for scalars.   O(1)
    std::size_t size() const;
    bool empty() const { return size() == 0; }

    // --- iterating. #nil has no entries; type_error for scalars. Ranges and iterators own the
    // container.   O(1), also each step; nothing is allocated

    item_range items() const;     // pairs of key and value
    key_range keys() const;       // ints in a vector or a set
    element_range values() const; // the same as the value itself, also of a map
    element_iterator begin() const;
    element_iterator end() const;

    // --- changing. A variable that is #nil becomes a map, or by push_back a vector. The result of
    // at() or of an iteration is not a variable: if it is #nil, changing it is a type_error. The
    // values are shared, not copied. The rules of declared types apply: a value that a type refuses
    // is a type_error with the library's text, and nothing is changed. An attribute of a choice
    // type accepts the key of a choice, and a double one accepts an int, as type::make() does.
    // error: anything else that the library refuses, such as a value that would contain itself, or
    // a new key in a container with const keys. All these functions run user code: destructors of
    // replaced values, and after the change the slots of `changed`.
    //
    // O(1) for each key of the path and for the write. In addition, if the container that is
    // changed is a value of another container, storing a container x searches x for a cycle, which
    // is O(size of x). To avoid this, build a tree from the inside out, or store containers while
    // they are empty and fill them afterwards. In a program that defines its own iterator type
    // (core/cholders.h), each store of a container does the search.

    // Missing levels become maps; a position one past the last appends to a vector. A path without
    // a key is the value itself: v.set("", x) is v = x, for which v must be a variable. path_error:
    // the path is faulty, it has a position that does not exist, or it has no key and the value is
    // not a variable. type_error: a level above the last is a scalar. error: a set has an equal
    // value at another position.
    void set(std::string_view path, value const &x) &;
    void set(std::string_view path, value const &x) &&;
    template <detail::key_like T> void set(T const &key, value const &x) & {
        set_key(step_of(key), x);
    }
    template <detail::key_like T> void set(T const &key, value const &x) && {
        lasting().set(key, x);
    }
    // Removes the entry at the path; the values after it in a vector move down: O(values after it).
    // False if there is no such entry. path_error: the path is faulty or has no key.
    bool erase(std::string_view path);
    template <detail::key_like T> bool erase(T const &key) { return erase_key(step_of(key)); }
    template <detail::no_key T> void set(T, value const &) = delete;
    template <detail::no_key T> void erase(T) = delete;
    // False if this is a set and has an equal value already. type_error: not a vector or a set.
    bool push_back(value const &x) &;
    bool push_back(value const &x) && { return lasting().push_back(x); }
    // Does this vector or set have an item equal to x? False for #nil. type_error: any other value.
    //   O(size)
    bool contains_item(value const &x) const;
    // Removes the first item equal to x; those after it move down. False: no item is equal.
    bool erase_item(value const &x);
    // Inserts x into a vector, before the value at that position; at size(), appends it.
    // path_error: there is no such position. type_error: not a vector.   O(values after it)
    void insert(std::size_t position, value const &x);
    // type_error: it is not a map, a vector or a set.   O(size)
    void clear();
    // Renames a key of a map; its value and its position stay. path_error: `key` is absent.
    // std::invalid_argument: there is an entry `new_key`. type_error: not a map.
    void rename(std::string_view key, std::string_view new_key);
    // Merges `other` into this container, as the command `qrv merge` does. If both have a container
    // at a key, these two are merged; any other entry of `other` replaces the entry here or is
    // added. The values of a vector are appended. Parts of `other` are shared. Entries that were
    // merged before an exception stay. type_error: one of the two is not a container.
    //   O(size of both)
    void merge(value const &other) &;
    void merge(value const &other) && { lasting().merge(other); }
    // Changes the object itself, and with it all copies of this value. The type stays: a number is
    // converted by the rules of get(), and a choice accepts one of its keys or another choice. The
    // entries of a map, a vector or a set are replaced by those of x, which are shared; but a
    // vector or set does not accept a map, whose keys would be lost. type_error: this value is
    // #nil, the type refuses x, or the choice does not have the key. range_error: the number does
    // not fit. After an error nothing is changed.   O(entries)
    void assign(value const &x);
    // A private copy of everything; a part that occurs twice in the value is one object in the
    // copy, too. error: the nesting is too deep for the stack.   O(size)
    value clone() const;

    // --- comments, layout, sharing.   O(1) and the length of the comment

    // The text of the value's comments, without the comment marks: in the file, these are the
    // comments after the value and before the next one, or after its opening bracket. Lines are
    // separated by line feeds. Empty if there is no comment. Throws only std::bad_alloc.
    std::string comment() const;
    // Each line of `text` is written after "//"; empty text removes the comment. type_error for
    // #nil, which has no object.
    void set_comment(std::string_view text);
    // Is the container written on one line? False for all other values.
    bool one_line() const;
    void one_line(bool on); // type_error: not a container
    // Are both the same object? Two #nil are not.
    bool is_shared_with(value const &other) const noexcept {
        return object_ && object_ == other.object_;
    }
    // The paths, for at(), of all entries below this value that share the object of `other`, in
    // order. Each container is visited once. error: the nesting is too deep for the stack.
    //   O(size)
    std::vector<std::string> paths_of(value const &other) const;

    // --- comparing. Borrows both; error: the nesting is too deep for the stack.   O(size)

    // Same type and same value: 1 and 1.0 differ, and so do maps with another order of keys. Runs
    // user code if objects of the program are compared.
    friend bool operator==(value const &a, value const &b) { return a.equals(b); }
    // The same, without creating an object. A choice equals the text of its key, too.
    template <class T>
    requires detail::plain<T>
    friend bool operator==(value const &a, T const &b) { return a.order_plain(b) == 0; }
    // Unordered: values of different types, and of types without an order, such as maps.
    friend std::partial_ordering operator<=>(value const &a, value const &b) { return a.order(b); }
    template <class T>
    requires detail::plain<T>
    friend std::partial_ordering operator<=>(value const &a, T const &b) {
        return a.order_plain(b);
    }
    // By the library's hash; equal values have the same. type_error for containers, which cannot be
    // keys.
    std::size_t hash() const;

    // --- declared types and changes: qrv/value/declare.h, qrv/value/change.h

    // Whether the value breaks no rule of the type: the same as broken_rules().empty().   O(size)
    bool conforms_to(type const &type) const;
    // The connection owns the callback, and does not keep the value alive. type_error for #nil.
    //   O(1)
    template <class F> [[nodiscard]] connection on_change(F callback) const;

    // The written form, as in a file; borrows the value. Sets the stream's failbit if a part has no
    // text, for instance because the nesting is too deep for the stack: qrv::dump() reports why.
    //   O(size)
    friend QRV_API std::ostream &operator<<(std::ostream &os, value const &v);

  private:
    friend struct detail::value_access;
    friend class reference;

    template <class T> static int int_of(T number) {
        if (!std::in_range<int>(number)) refuse_number(std::to_string(number), "an int");
        return static_cast<int>(number);
    }
    template <class T> static detail::step step_of(T const &key) {
        if constexpr (cIndex<T>)
            return detail::step(int_of(key));
        else
            return detail::step(key.object());
    }
    [[noreturn]] static void refuse_number(std::string const &number, char const *where);
    static objref make(bool truth);
    static objref make(int number);

    value &lasting(); // *this; type_error for #nil, since nothing would hold the new container
    value at_key(detail::step const &key) const;
    std::optional<value> find_key(detail::step const &key) const;
    bool contains_key(detail::step const &key) const;
    void set_key(detail::step const &key, value const &x);
    bool erase_key(detail::step const &key);
    reference place_of(detail::step const &key, bool variable);

    // The number, truth or text of an object, if it has one that the type holds exactly.
    static detail::outcome read(cObj const *object, bool &to) noexcept;
    static detail::outcome read(cObj const *object, int &to);
    static detail::outcome read(cObj const *object, long long &to);
    static detail::outcome read(cObj const *object, unsigned long long &to);
    static detail::outcome read(cObj const *object, float &to) noexcept;
    static detail::outcome read(cObj const *object, double &to) noexcept;
    static detail::outcome read(cObj const *object, std::string &to);
    template <class T> static detail::outcome read_as(cObj const *object, T &to);
    template <class T> static T fetch(cObj *object, std::string_view path);
    bool locate(std::string_view path, detail::spot &to) const;
    [[noreturn]] static void refuse_type(cObj *object, std::string_view path, char const *expected);
    [[noreturn]] static void refuse_range(cObj *object, std::string_view path, long long least,
                                          unsigned long long most);
    [[noreturn]] static void refuse_float(cObj *object, std::string_view path);

    bool equals(value const &other) const;
    std::partial_ordering order(value const &other) const;
    std::partial_ordering order(bool truth) const noexcept;
    std::partial_ordering order(long long number) const noexcept;
    std::partial_ordering order(float number) const noexcept;
    std::partial_ordering order(long double number) const noexcept; // with a double
    std::partial_ordering order(std::string_view text) const;
    template <class T> std::partial_ordering order_plain(T const &other) const;

    objref object_; // null for #nil
};

// Access without the rules above, for the files of this layer, which must not store cat::nil().
struct detail::value_access {
    static objref &object(value &v) noexcept { return v.object_; }
    static objref const &object(value const &v) noexcept { return v.object_; } // null for #nil
    static value share(objref object) noexcept {
        value result;
        result.object_ = std::move(object);
        return result;
    }
    template <class T> static step step_of(T const &key) {
        if constexpr (text<T>)
            return step(std::string_view(key));
        else
            return value::step_of(key);
    }
};

// The path of these keys, each in the next one's container: path_of("hosts", "a/b", 0) is
// hosts/"a/b"/0. A string is one key, in quotes where it needs them; so path_of(key) is one part of
// a longer path. Integers, and values as keys, as in operator[]. type_error: a value that is not a
// key, such as a container. range_error: an integer that is not an int.   O(length of the path)
template <class... Keys>
requires((detail::text<Keys> || detail::key_like<Keys>)&&...) [[nodiscard]] std::string
    path_of(Keys const &...keys) {
    std::string path;
    (detail::append_checked(path, detail::value_access::step_of(keys)), ...);
    return path;
}

namespace detail {

// The value of a stored reference: cat::nil() is #nil, and so is null.
inline value value_of(objref object) noexcept {
    return cObj::is_nil(object) ? value() : value_access::share(std::move(object));
}

template <class T> value converter<T>::to(T const &from) requires requires(value &v) {
    to_value(from, v);
}
{
    value result;
    to_value(from, result);
    return result;
}
template <class T> T converter<T>::from(value const &from) requires requires(T &t) {
    from_value(from, t);
}
{
    T result{};
    from_value(from, result);
    return result;
}

template <class T> constexpr char const *expected_name() {
    if constexpr (std::same_as<T, bool>) return "bool";
    if constexpr (std::same_as<T, float>) return "float";
    if constexpr (std::floating_point<T>) return "double";
    if constexpr (std::integral<T>) return "int";
    return "string";
}

// Calls `convert`. Adds the path of the converted value to the errors that it throws.
template <class Convert> auto convert_at(std::string_view path, Convert const &convert) {
    try {
        return convert();
    } catch (error &failure) {
        failure.within(path);
        throw;
    } catch (range_error &failure) {
        failure.within(path);
        throw;
    }
}

} // namespace detail

template <class T> detail::outcome value::read_as(cObj const *object, T &to) {
    if constexpr (std::same_as<T, long double>) {
        double number = 0;
        detail::outcome const result = read(object, number);
        to = number;
        return result;
    } else if constexpr (cOtherIndex<T>) {
        std::conditional_t<std::signed_integral<T>, long long, unsigned long long> number = 0;
        detail::outcome const result = read(object, number);
        if (result != detail::outcome::good) return result;
        to = static_cast<T>(number);
        return std::in_range<T>(number) ? result : detail::outcome::misfit;
    } else {
        return read(object, to);
    }
}

template <class T> T value::fetch(cObj *object, std::string_view path) {
    if constexpr (detail::scalar<T> || std::same_as<T, std::string>) {
        T result{};
        detail::outcome const outcome = read_as(object, result);
        if (outcome == detail::outcome::wrong_type) [[unlikely]]
            refuse_type(object, path, detail::expected_name<T>());
        if constexpr (cIndex<T>)
            if (outcome == detail::outcome::misfit) [[unlikely]]
                refuse_range(object, path, std::numeric_limits<T>::min(),
                             std::numeric_limits<T>::max());
        if constexpr (std::same_as<T, float>)
            if (outcome == detail::outcome::misfit) [[unlikely]]
                refuse_float(object, path);
        return result;
    } else {
        value const found = detail::value_of(objref::share(object));
        if constexpr (std::same_as<T, value>)
            return found;
        else if constexpr (std::same_as<T, objref>)
            return found.object();
        else
            return detail::convert_at(path, [&] { return detail::converter<T>::from(found); });
    }
}

template <detail::gettable T> std::optional<T> value::get_if() const {
    if constexpr (detail::scalar<T> || std::same_as<T, std::string>) {
        T result{};
        if (read_as(object_, result) != detail::outcome::good) return std::nullopt;
        return result;
    } else {
        try {
            return get<T>();
        } catch (error const &) {
        } catch (range_error const &) {
        }
        return std::nullopt;
    }
}

template <detail::gettable T> std::optional<T> value::get(std::string_view path) const {
    if (cObj *const found = detail::walk_plainly(object_, path)) return fetch<T>(found, path);
    detail::spot place;
    if (!locate(path, place)) return std::nullopt;
    return fetch<T>(place.object, path);
}

template <class T>
requires detail::gettable<detail::fallback<T>>
auto value::get_or(std::string_view path, T const &fallback) const -> detail::fallback<T> {
    if (std::optional<detail::fallback<T>> found = get<detail::fallback<T>>(path))
        return *std::move(found);
    if constexpr (detail::text<T>)
        return std::string(std::string_view(fallback));
    else
        return fallback;
}

template <class T> std::partial_ordering value::order_plain(T const &other) const {
    if constexpr (std::is_null_pointer_v<T>)
        return is_nil() ? std::partial_ordering::equivalent : std::partial_ordering::unordered;
    else if constexpr (detail::text<T>)
        return order(std::string_view(other));
    else if constexpr (std::same_as<T, bool> || std::same_as<T, float>)
        return order(other);
    else if constexpr (std::floating_point<T>)
        return order(static_cast<long double>(other));
    else if constexpr (std::in_range<long long>(std::numeric_limits<T>::max()))
        return order(static_cast<long long>(other));
    else // above all ints in any case
        return order(std::in_range<long long>(other) ? static_cast<long long>(other)
                                                     : std::numeric_limits<long long>::max());
}

} // namespace qrv

template <> struct std::hash<qrv::value> {
    std::size_t operator()(qrv::value const &v) const { return v.hash(); }
};
