#pragma once
// cat::items(ref) is a range over the entries of a container:
//
//     for (auto const &[key, value] : cat::items(map)) ...
//     for (cat::Item const item : cat::items(vector)) use(item.value());
//
// Ranges, iterators and items own what they need, so a loop over a temporary is valid, and
// iterators may outlive the range. The loop may change the container: it visits each remaining
// entry once, also entries that are added after the current one. A removed entry has a null key and
// the value cat::bad(); the next step leads to the entry that followed it when it was removed.
//
// Iterating allocates nothing. Each begin() starts at the first entry.

#include "qrv/core/cattrcursor.h"
#include "qrv/core/ctypes.h"

#include <cstddef>
#include <iterator>
#include <ranges>
#include <tuple>
#include <type_traits>
#include <utility>

namespace cat {

// One entry. Holds the node, not the container. A structured binding copies key and value.
class QRV_API Item {
  public:
    Item() noexcept = default;                                    // no entry
    explicit Item(cAttrNode const *node) noexcept : node_(node) { // null: no entry
        if (node_) node_->hold();
    }
    Item(Item const &other) noexcept : Item(other.node_) {}
    Item &operator=(Item const &other) noexcept {
        Item const keep(other);
        std::swap(node_, const_cast<Item &>(keep).node_);
        return *this;
    }
    ~Item() {
        if (node_) node_->unhold();
    }

    // The container's key object; null without an entry.
    objref const &key() const { return cAttrNode::key(node_); }
    objref const &value() const noexcept { // never null
        return node_ && node_->valref() ? node_->valref() : cat::bad();
    }
    cAttrNode const *node() const noexcept { return node_; } // borrowed; null without an entry

    template <std::size_t Index> friend objref get(Item const &item) {
        static_assert(Index < 2, "an item has a key and a value");
        if constexpr (Index == 0)
            return item.key();
        else
            return item.value();
    }

  private:
    cAttrNode const *node_ = nullptr;
};

// All functions take constant time.
class QRV_API Items {
  public:
    class iterator {
      public:
        using iterator_concept = std::forward_iterator_tag;
        using iterator_category = std::input_iterator_tag; // `*` returns no reference
        using value_type = Item;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Item;

        iterator() noexcept = default; // an end iterator
        // Shares the hash; null counts as an empty one. At the end, `*` returns an item without an
        // entry.
        explicit iterator(hashref hash) noexcept : cursor_(std::move(hash)) {}

        Item operator*() const noexcept { return Item(cursor_.node()); }
        // Has no effect at the end.
        iterator &operator++() noexcept {
            ++cursor_;
            return *this;
        }
        iterator operator++(int) noexcept {
            iterator before(*this);
            ++cursor_;
            return before;
        }
        bool operator==(iterator const &other) const noexcept = default;

      private:
        cAttrCursor cursor_;
    };

    Items() noexcept = default;                                       // empty
    explicit Items(hashref hash) noexcept : hash_(std::move(hash)) {} // shares; null is empty

    iterator begin() const noexcept { return iterator(hash_); }
    iterator end() const noexcept { return {}; }
    bool empty() const noexcept { return cAttrHash::empty(hash_); }
    std::size_t size() const noexcept { return hash_ ? hash_->used() : 0; }

  private:
    hashref hash_;
};

// The entries that the object's iterator visits; empty for null, cat::bad(), cat::nil() and types
// without an iterator. RUNS USER CODE if a program has defined the type's iterator.
[[nodiscard]] QRV_API Items items(objref const &ref);

} // namespace cat

template <> struct std::tuple_size<cat::Item> : std::integral_constant<std::size_t, 2> {};
template <std::size_t Index> struct std::tuple_element<Index, cat::Item> { using type = objref; };
#ifndef QRV_DOXYGEN // Doxygen does not find the declaration in the standard library
template <> inline constexpr bool std::ranges::enable_borrowed_range<cat::Items> = true;
#endif

static_assert(std::forward_iterator<cat::Items::iterator>);
static_assert(std::ranges::forward_range<cat::Items>);
