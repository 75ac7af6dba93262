#pragma once
// Containers made by a program:
//
//   qrv::map const plan{{"title", "Cold start"},
//                       {"range", qrv::map{{"low", -40.0}, {"high", 85.0}}},
//                       {"steps", qrv::vector{"cool down", "wait", "switch on"}}};
//
// They are values that begin as a container; everything that takes a qrv::value takes them. What is
// put in is shared. A container alone in the braces of the same class is a copy of that value, not
// nested, as for every class: qrv::vector{qrv::vector{1, 2}} is [1, 2]. To nest it, give it the
// type qrv::value: qrv::vector{qrv::value(qrv::vector{1, 2})}.

#include "qrv/value/convert.h"

#include <initializer_list>

namespace qrv {

class QRV_API map : public value {
  public:
    // Implicit, so that {key, value} makes one. A string is one key, never a path.
    struct entry {
        // Shares both, which may be null values. range_error as for a value of a number.   O(1)
        template <std::convertible_to<value> K, std::convertible_to<value> V> entry(K &&k, V &&v)
            : key(std::forward<K>(k)), item(std::forward<V>(v)) {}
        value key;
        value item;
    };

    // A new object without entries. Never throws but for memory.   O(1)
    map() : value(detail::empty_map()) {}
    // Contains these entries, in this order. A repeated key keeps its first place and gets its last
    // value. type_error: something that is not a key, such as a container.   O(entries)
    map(std::initializer_list<entry> entries) : map() {
        for (entry const &each : entries) set(each.key, each.item);
    }
    // A map from any range of pairs. Values are shared or copied as by the conversion of their type
    // to qrv::value.
    // type_error: something that is not a key.   O(entries)
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
    // A container of the items of any range. A set omits repeated items.
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

// Items that are equal to an earlier one are left out.
using set = detail::built_set;

} // namespace qrv
