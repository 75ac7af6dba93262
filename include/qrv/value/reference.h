#pragma once
// qrv::reference, the result of operator[] of a variable: a handle for an entry, which need not
// exist.
//
//   device["bus"]["baud"] = 9600;              // assigning creates the levels that are missing
//   int const baud = device["bus"]["baud"].get<int>();
//   if (device["bus"].contains("gateway")) ... // reading creates nothing
//
// A reference shares the value to which operator[] was applied, and stores the keys. It looks them
// up at each use. It is meant for the expression that creates it: `auto r = device["bus"]` can be
// read, also later, but not assigned to, since a reader of the program would not see that this
// changes the device. A reference to an entry of a variable that is #nil stores the variable's
// address, so the variable must exist when it is assigned to.

#include "qrv/value/value.h"

namespace qrv {

namespace detail {

// A list of keys in one string: a few short keys need no allocation.
class QRV_API key_list {
  public:
    void add(step const &key); // type_error: neither a string nor an int
    std::string path() const;  // as text for value::at()

  private:
    friend class key_reader;
    std::string bytes_;
};

} // namespace detail

class QRV_API reference {
  public:
    reference(reference const &) = default;
    reference(reference &&) noexcept = default;
    ~reference() = default;

    // As value::set(): creates missing levels and replaces an existing value. If it throws, nothing
    // is changed. path_error: the outermost value is #nil and not a variable.
    void operator=(value x) &&;
    void operator=(reference const &other) &&; // assigns the value of that entry
    void operator=(value const &) & = delete;  // assign in the expression that makes the reference
    void operator=(reference const &) & = delete;

    // The value at these keys, shared. path_error: there is no value.   O(keys)
    operator value() const { return read(); }
    bool exists() const; // is there a value?   O(keys)

    // A reference to an entry one level below, which shares the value, too. Does not look up the
    // keys. range_error: an int can't hold the key.   O(length of the keys)
    reference operator[](std::string_view key) const { return below(detail::step(key)); }
    template <detail::key_like T> reference operator[](T const &key) const {
        return below(value::step_of(key));
    }
    template <detail::no_key T> void operator[](T) const = delete;

    // --- the same as the functions of the value at these keys. path_error: there is no value.

    qrv::kind kind() const { return read().kind(); }
    bool is_nil() const { return read().is_nil(); }
    bool is_bool() const { return read().is_bool(); }
    bool is_int() const { return read().is_int(); }
    bool is_float() const { return read().is_float(); }
    bool is_double() const { return read().is_double(); }
    bool is_number() const { return read().is_number(); }
    bool is_string() const { return read().is_string(); }
    bool is_map() const { return read().is_map(); }
    bool is_vector() const { return read().is_vector(); }
    bool is_set() const { return read().is_set(); }
    bool is_object() const { return read().is_object(); }
    bool is_container() const { return read().is_container(); }
    std::string type_name() const { return read().type_name(); }
    objref object() const { return read().object(); }
    template <detail::gettable T> T get() const {
        return use([](value const &v) { return v.get<T>(); });
    }
    std::size_t size() const {
        return use([](value const &v) { return v.size(); });
    }
    bool empty() const { return size() == 0; }
    value at(std::string_view path) const {
        return use([&](value const &v) { return v.at(path); });
    }
    template <detail::key_like T> value at(T const &key) const {
        return use([&](value const &v) { return v.at(key); });
    }
    template <detail::no_key T> void at(T) const = delete;
    std::size_t hash() const {
        return use([](value const &v) { return v.hash(); });
    }
    item_range items() const;
    key_range keys() const;
    element_range values() const;
    element_iterator begin() const;
    element_iterator end() const;
    // An entry that is #nil becomes a vector, or the container that merge() creates.
    bool push_back(value const &x) const;
    bool erase_item(value const &x) const {
        return use([&](value &v) { return v.erase_item(x); });
    }
    void insert(std::size_t position, value const &x) const {
        use([&](value &v) { v.insert(position, x); });
    }
    void clear() const {
        use([](value &v) { v.clear(); });
    }
    void rename(std::string_view key, std::string_view new_key) const {
        use([&](value &v) { v.rename(key, new_key); });
    }
    void merge(value const &other) const;
    void assign(value const &x) const {
        use([&](value &v) { v.assign(x); });
    }
    value clone() const { return read().clone(); }
    std::string comment() const { return read().comment(); }
    void set_comment(std::string_view text) const {
        use([&](value &v) { v.set_comment(text); });
    }
    bool one_line() const { return read().one_line(); }
    void one_line(bool on) const {
        use([&](value &v) { v.one_line(on); });
    }
    bool is_shared_with(value const &other) const { return read().is_shared_with(other); }
    std::vector<std::string> paths_of(value const &other) const { return read().paths_of(other); }
    bool conforms_to(type const &type) const { return read().conforms_to(type); }
    template <class F> [[nodiscard]] auto on_change(F callback) const {
        return use([&](value const &v) { return v.on_change(std::move(callback)); });
    }

    // As value::set() of the value at these keys; for a path without a key, assigns to this
    // reference.
    void set(std::string_view path, value const &x) const;
    template <detail::key_like T> void set(T const &key, value const &x) const {
        below(value::step_of(key)) = x;
    }
    template <detail::no_key T> void set(T, value const &) const = delete;

    // --- the same, but if there is no value at these keys, the functions act on #nil,
    // which has no entries.

    template <detail::gettable T> std::optional<T> get_if() const { return peek().get_if<T>(); }
    template <detail::gettable T> std::optional<T> get(std::string_view path) const {
        return named([&] { return peek().get<T>(path); });
    }
    template <detail::gettable T, cIndex Index> std::optional<T> get(Index index) const {
        return named([&] { return peek().get<T>(index); });
    }
    template <class Key, class T>
    requires detail::gettable<detail::fallback<T>>
    auto get_or(Key const &key, T const &fallback) const {
        return named([&] { return peek().get_or(key, fallback); });
    }
    std::optional<value> find(std::string_view path) const {
        return named([&] { return peek().find(path); });
    }
    template <detail::key_like T> std::optional<value> find(T const &key) const {
        return peek().find(key);
    }
    bool contains(std::string_view key) const { return peek().contains(key); }
    template <detail::key_like T> bool contains(T const &key) const { return peek().contains(key); }
    bool contains_item(value const &x) const {
        return named([&] { return peek().contains_item(x); });
    }
    bool erase(std::string_view path) const {
        return named([&] { return peek().erase(path); });
    }
    template <detail::key_like T> bool erase(T const &key) const {
        return named([&] { return peek().erase(key); });
    }
    template <detail::no_key T> void find(T) const = delete;
    template <detail::no_key T> void contains(T) const = delete;
    template <detail::no_key T> void erase(T) const = delete;

    template <class T>
    requires std::convertible_to<T const &, value>
    friend bool operator==(reference const &a, T const &b) { return a.read() == b; }
    template <class T>
    requires std::convertible_to<T const &, value>
    friend std::partial_ordering operator<=>(reference const &a, T const &b) {
        return a.read() <=> b;
    }
    friend QRV_API std::ostream &operator<<(std::ostream &os, reference const &place);

  private:
    friend class value;
    reference(value *variable, value root) noexcept : variable_(variable), root_(std::move(root)) {}

    reference below(detail::step const &key) const;
    bool locate(detail::spot &to) const;
    value read() const;
    value peek() const; // #nil if there is no value

    // Calls `call`. Adds the path of this reference to the errors that it throws.
    template <class Call> std::invoke_result_t<Call const &> named(Call const &call) const {
        try {
            return call();
        } catch (error &failure) {
            failure.within(keys_.path());
            throw;
        } catch (range_error &failure) {
            failure.within(keys_.path());
            throw;
        }
    }
    template <class Call> std::invoke_result_t<Call const &, value &> use(Call const &call) const {
        value place = read();
        return named([&] { return call(place); });
    }

    value *variable_; // borrowed; null unless it is a variable that was #nil
    value root_;
    detail::key_list keys_;
};

inline reference value::operator[](std::string_view key) & {
    return place_of(detail::step(key), true);
}
inline reference value::operator[](std::string_view key) && {
    return place_of(detail::step(key), false);
}
template <detail::key_like T> reference value::operator[](T const &key) & {
    return place_of(step_of(key), true);
}
template <detail::key_like T> reference value::operator[](T const &key) && {
    return place_of(step_of(key), false);
}

} // namespace qrv

template <> struct std::hash<qrv::reference> {
    std::size_t operator()(qrv::reference const &place) const { return place.hash(); }
};
