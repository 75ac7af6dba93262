#pragma once
// Iterating over the entries of a value.
//
//   for (auto const &[key, item] : limits.items()) ...
//   for (qrv::value const &phase : phases) ...
//
// Ranges and iterators own the container that they walk, so a temporary may be iterated. The loop
// may change the container: entries may be added and removed anywhere, also the current one. Each
// entry that is left is visited once, and so is what is added after the current one. Nothing is
// allocated except the objects of keys that have none yet (`item.key`).

#include "qrv/core/cattrcursor.h"
#include "qrv/value/value.h"

#include <iterator>

namespace qrv {

// An entry: copies of both, which share the objects.
struct item {
    qrv::value key;
    qrv::value value;
};

namespace detail {

// The position of an iterator; it shares the entries of the container.
class QRV_API cursor {
  public:
    cursor() noexcept = default;             // at the end of nothing
    explicit cursor(value const &container); // type_error for scalars

    void step() noexcept { ++at_; }
    value key() const; // #nil of an entry that was removed, as the element is
    value element() const;
    bool operator==(cursor const &other) const noexcept = default;

  private:
    cAttrCursor at_;
};

// What -> of an iterator gives; the entry lives until the end of the expression.
template <class Entry> class entry_pointer {
  public:
    explicit entry_pointer(Entry entry) : entry_(std::move(entry)) {}
    Entry const *operator->() const noexcept { return &entry_; }

  private:
    Entry entry_;
};

// What both iterators have in common.
template <class Entry, class Derived> class entry_iterator {
  public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag; // entries are given by value
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

class item_iterator : public detail::entry_iterator<item, item_iterator> {
  public:
    item_iterator() noexcept = default;
    explicit item_iterator(value const &container) : entry_iterator(container) {}
    item operator*() const { return {cursor_.key(), cursor_.element()}; }
};

class element_iterator : public detail::entry_iterator<value, element_iterator> {
  public:
    element_iterator() noexcept = default;
    explicit element_iterator(value const &container) : entry_iterator(container) {}
    value operator*() const { return cursor_.element(); }
};

class item_range {
  public:
    explicit item_range(value container) : container_(std::move(container)) {}
    item_iterator begin() const { return item_iterator(container_); }
    item_iterator end() const noexcept { return {}; }
    bool empty() const { return container_.empty(); }
    std::size_t size() const { return container_.size(); }

  private:
    value container_;
};

inline item_range value::items() const { return item_range(*this); }
inline element_iterator value::begin() const { return element_iterator(*this); }
inline element_iterator value::end() const { return {}; }

} // namespace qrv
