#pragma once
// Iterating over the entries of a value.
//
//   for (auto const &[key, item] : limits.items()) ...
//   for (qrv::value const &phase : phases) ...
//   std::vector<qrv::value> const names(limits.keys().begin(), limits.keys().end());
//
// Ranges and iterators own their container, so a loop over a temporary is valid, and an iterator
// may outlive its range. Dereferencing returns an entry by value: std::views::transform with
// &item::key would refer to a destroyed entry, so use keys() or values() instead. The loop may
// change the container: it may add and remove any entries, also the current one. It visits each
// remaining entry once, also entries that are added after the current one. Nothing is allocated
// except objects for keys that have none yet (`item.key`).

#include "qrv/core/cattrcursor.h"
#include "qrv/value/value.h"

#include <iterator>

namespace qrv {

// An entry: a copy of the key and of the value, which share the objects.
struct item {
    qrv::value key;
    qrv::value value;
};

namespace detail {

// The position of an iterator; it shares the entries of the container.
class QRV_API cursor {
  public:
    cursor() noexcept = default;             // an end position
    explicit cursor(value const &container); // type_error for scalars

    void step() noexcept { ++at_; }
    value key() const; // #nil for an entry that was removed, like element()
    value element() const;
    bool operator==(cursor const &other) const noexcept = default;

  private:
    cAttrCursor at_;
};

// The result of an iterator's ->; the entry exists until the end of the expression.
template <class Entry> class entry_pointer {
  public:
    explicit entry_pointer(Entry entry) : entry_(std::move(entry)) {}
    Entry const *operator->() const noexcept { return &entry_; }

  private:
    Entry entry_;
};

// The common base of the iterators.
template <class Entry, class Derived> class entry_iterator {
  public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag; // `*` returns a value
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using reference = Entry;
    using pointer = entry_pointer<Entry>;

    pointer operator->() const { return pointer(*static_cast<Derived const &>(*this)); }
    Derived &operator++() noexcept {
        cursor_.step();
        return static_cast<Derived &>(*this);
    }
    Derived operator++(int) {
        Derived const before = static_cast<Derived const &>(*this);
        cursor_.step();
        return before;
    }
    friend bool operator==(Derived const &a, Derived const &b) noexcept {
        return a.cursor_ == b.cursor_;
    }

  protected:
    entry_iterator() noexcept = default;
    explicit entry_iterator(value const &container) : cursor_(container) {}

    cursor cursor_;
};

} // namespace detail

// Owns the container, and * returns a shared value. After the entry is removed, its key and value
// are #nil. type_error: the iterator is created for a scalar.   O(1), all functions
class item_iterator : public detail::entry_iterator<item, item_iterator> {
  public:
    item_iterator() noexcept = default;
    explicit item_iterator(value const &container) : entry_iterator(container) {}
    item operator*() const { return {cursor_.key(), cursor_.element()}; }
};

// Returns only the values; everything else is the same as for item_iterator.
class element_iterator : public detail::entry_iterator<value, element_iterator> {
  public:
    element_iterator() noexcept = default;
    explicit element_iterator(value const &container) : entry_iterator(container) {}
    value operator*() const { return cursor_.element(); }
};

// Returns only the keys; everything else is the same as for item_iterator.
class key_iterator : public detail::entry_iterator<value, key_iterator> {
  public:
    key_iterator() noexcept = default;
    explicit key_iterator(value const &container) : entry_iterator(container) {}
    value operator*() const { return cursor_.key(); }
};

namespace detail {

// The common base of the ranges.
template <class Iterator> class entry_range {
  public:
    explicit entry_range(value container) : container_(std::move(container)) {}
    Iterator begin() const { return Iterator(container_); }
    Iterator end() const noexcept { return {}; }
    bool empty() const { return container_.empty(); }
    std::size_t size() const { return container_.size(); }

  private:
    value container_;
};

} // namespace detail

class item_range : public detail::entry_range<item_iterator> {
    using entry_range::entry_range;
};
class key_range : public detail::entry_range<key_iterator> {
    using entry_range::entry_range;
};
class element_range : public detail::entry_range<element_iterator> {
    using entry_range::entry_range;
};

inline item_range value::items() const { return item_range(*this); }
inline key_range value::keys() const { return key_range(*this); }
inline element_range value::values() const { return element_range(*this); }
inline element_iterator value::begin() const { return element_iterator(*this); }
inline element_iterator value::end() const { return {}; }

} // namespace qrv

#ifndef QRV_DOXYGEN // Doxygen does not find the declaration in the standard library
template <class T>
requires(
    std::derived_from<T, qrv::value>) inline constexpr bool std::ranges::enable_borrowed_range<T> =
    true;
template <> inline constexpr bool std::ranges::enable_borrowed_range<qrv::item_range> = true;
template <> inline constexpr bool std::ranges::enable_borrowed_range<qrv::key_range> = true;
template <> inline constexpr bool std::ranges::enable_borrowed_range<qrv::element_range> = true;
#endif
