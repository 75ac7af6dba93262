#pragma once
// Containers that a program creates:
//
//   qrv::map const plan{{"title", "Cold start"},
//                       {"range", qrv::map{{"low", -40.0}, {"high", 85.0}}},
//                       {"steps", qrv::vector{"cool down", "wait", "switch on"}}};
//
// They are values that initially are a container; each function for a qrv::value accepts them. They
// share their items. As in every class, braces around a single object of the same class copy it:
// qrv::vector{qrv::vector{1, 2}} is [1, 2]. To nest it, convert it to qrv::value:
// qrv::vector{qrv::value(qrv::vector{1, 2})}.

#include "qrv/value/convert.h"

#include <initializer_list>

namespace qrv {

class QRV_API map : public value {
  public:
    // Implicit, so that {key, value} creates an entry. A string is one key, never a path.
    struct entry {
        // Shares both, which may be null values. range_error as for a value of a number.   O(1)
        template <std::convertible_to<value> K, std::convertible_to<value> V> entry(K &&k, V &&v)
            : key(std::forward<K>(k)), item(std::forward<V>(v)) {}
        value key;
        value item;
    };

    // A new object without entries. Throws only std::bad_alloc.   O(1)
    map() : value(detail::empty_map()) {}
    // Shares the entries, in this order; a repeated key has its first position and its last value.
    // type_error: something that is not a key, such as a container.   O(entries)
    map(std::initializer_list<entry> entries) : map() {
        for (entry const &each : entries) set(each.key, each.item);
    }
    // Creates a map from any range of pairs. Shares or copies keys and values as the constructors
    // of qrv::value do. type_error: something that is not a key.   O(entries)
    template <class Range> [[nodiscard]] static map from(Range &&range) {
        map result;
        for (auto &&[key, item] : range) result.set(value(key), value(item));
        return result;
    }
};

namespace detail {

// The common base of qrv::vector and qrv::set.
template <class Self, value (*make_empty)()> class list : public value {
  public:
    list() : value(make_empty()) {}
    template <class... T>
    requires((std::convertible_to<T, value> && ...) && sizeof...(T) > 0 &&
             !(sizeof...(T) == 1 && (std::derived_from<std::remove_cvref_t<T>, Self> &&
                                     ...))) explicit list(T &&...items)
        : list() {
        (push_back(value(std::forward<T>(items))), ...);
    }
    // Creates a container from any range. A set omits items that are equal to an earlier one.
    template <class Range> [[nodiscard]] static Self from(Range &&range) {
        Self result;
        for (auto &&item : range) result.push_back(value(item));
        return result;
    }
};

} // namespace detail

class vector : public detail::list<vector, detail::empty_vector> {
    using list::list;
};

namespace detail {

// Not named set: inside a class of that name value::set() would be hidden.
class built_set : public list<built_set, empty_set> {
    using list::list;
};

} // namespace detail

// Items that are equal to an earlier one are omitted.
using set = detail::built_set;

} // namespace qrv
