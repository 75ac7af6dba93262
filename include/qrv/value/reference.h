#pragma once
// qrv::reference, what operator[] of a variable gives: the place of an entry, which may not exist.
//
//   device["bus"]["baud"] = 9600;              // assigning creates the levels that are missing
//   int const baud = device["bus"]["baud"].get<int>();
//   if (device["bus"].contains("gateway")) ... // reading creates nothing
//
// It holds the value that it was taken from and the keys, and looks them up at each use. It is
// meant for the expression in which it is made: `auto r = device["bus"]` reads, also later, but
// can't be assigned to, since nobody would see that this changes the device. Taken from a variable
// that is #nil it has the variable's address; assigning then needs the variable.

#include "qrv/value/value.h"

namespace qrv {

namespace detail {

// Keys one after the other, in one string: few short ones need no memory of their own.
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

    // As value::set(): creates missing levels, replaces what is there. Nothing is changed where
    // that throws. path_error: a value that is #nil and no variable can't get entries.
    void operator=(value x) &&;
    void operator=(reference const &other) &&; // the value that is there
    void operator=(value const &) & = delete;  // assign in the expression that makes the reference
    void operator=(reference const &) & = delete;

    // The value, shared. path_error: nothing is there. And is something there?   O(keys)
    operator value() const { return read(); }
    bool exists() const;

    // A place further down, which shares the value too. Looks nothing up. range_error: an int can't
    // hold the key.   O(length of the keys)
    reference operator[](std::string_view key) const { return below(detail::step(key)); }
    template <detail::key_like T> reference operator[](T const &key) const {
        return below(value::step_of(key));
    }
    template <detail::no_key T> void operator[](T) const = delete;

    // --- as those of the value, after a look-up of the keys. path_error: nothing is there.

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
        value const place = read();
        return detail::convert_at(keys_.path(), [&] { return place.get<T>(); });
    }
    std::size_t size() const { return read().size(); }
    bool empty() const { return read().empty(); }
    value at(std::string_view path) const { return read().at(path); }
    template <detail::key_like T> value at(T const &key) const { return read().at(key); }
    item_range items() const;
    key_range keys() const;
    element_range values() const;
    element_iterator begin() const;
    element_iterator end() const;
    // An entry that is #nil becomes a vector, or the container that merge() creates.
    bool push_back(value const &x) const;
    void insert(std::size_t position, value const &x) const { read().insert(position, x); }
    void clear() const { read().clear(); }
    void rename(std::string_view key, std::string_view new_key) const {
        read().rename(key, new_key);
    }
    void merge(value const &other) const;
    void assign(value const &x) const { read().assign(x); }
    value clone() const { return read().clone(); }
    std::string comment() const { return read().comment(); }
    void set_comment(std::string_view text) const { read().set_comment(text); }
    bool one_line() const { return read().one_line(); }
    void one_line(bool on) const { read().one_line(on); }
    bool is_shared_with(value const &other) const { return read().is_shared_with(other); }
    std::vector<std::string> paths_of(value const &other) const { return read().paths_of(other); }
    bool conforms_to(type const &type) const { return read().conforms_to(type); }
    template <class F> [[nodiscard]] auto on_change(F callback) const {
        return read().on_change(std::move(callback));
    }

    // --- as those of the value, too. These see an empty container where nothing is there.

    template <detail::gettable T> std::optional<T> get_if() const { return peek().get_if<T>(); }
    template <detail::gettable T> std::optional<T> get(std::string_view path) const {
        return peek().get<T>(path);
    }
    template <class T>
    requires detail::gettable<detail::fallback<T>>
    auto get_or(std::string_view path, T const &fallback) const {
        return peek().get_or(path, fallback);
    }
    std::optional<value> find(std::string_view path) const { return peek().find(path); }
    template <detail::key_like T> std::optional<value> find(T const &key) const {
        return peek().find(key);
    }
    bool contains(std::string_view key) const { return peek().contains(key); }
    template <detail::key_like T> bool contains(T const &key) const { return peek().contains(key); }
    bool erase(std::string_view path) const { return peek().erase(path); }
    template <detail::key_like T> bool erase(T const &key) const { return peek().erase(key); }

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
    value peek() const; // #nil where nothing is there

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
