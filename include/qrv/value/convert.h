#pragma once
// The C++ types that convert to values and back, besides numbers and strings:
//
//   std::vector, deque, list and other sequences        a vector
//   std::array, pair, tuple                             a vector of that size
//   std::set, unordered_set                             a set
//   std::map, unordered_map                             a map
//   std::optional                                       #nil, or its value
//   enumerations                                        an int, or with QRV_DESCRIBE_ENUM a string
//   structs                                             with QRV_DESCRIBE a map
//
//   struct Point {
//       double x = 0;
//       double y = 0;
//   };
//   QRV_DESCRIBE(Point, x, y)
//
//   std::vector<Point> const outline = device.at("outline").get<std::vector<Point>>();
//   device["outline"] = outline;
//
// For any other type, write two functions in its namespace:
//
//   void to_value(Colour const &from, qrv::value &to);
//   void from_value(qrv::value const &from, Colour &to); // throws qrv::type_error and so on
//
// Concepts recognise the containers by their members, so this header includes none of them.
// Conversions copy.   O(size)
// Errors name the path of the part that does not fit: "outline/3/x: expected double, but ...".

#include "qrv/value/items.h"
#include "qrv/value/reference.h"

#include <iterator>
#include <utility>

namespace qrv::detail {

// Empty containers.
QRV_API value empty_vector();
QRV_API value empty_set();
QRV_API value empty_map();
// type_error unless the value is a vector or a set (expect_list), one with `size` values
// (expect_size), or a container with keys, such as a map or an object of an attribute set
// (expect_map).
QRV_API void expect_list(value const &v, char const *expected);
QRV_API void expect_size(value const &v, std::size_t size);
QRV_API void expect_map(value const &v);

// --- the kinds of types; each type has at most one

template <class T>
concept has_to_value = requires(T const &t, value &v) {
    to_value(t, v);
};
template <class T>
concept has_from_value = requires(value const &v, T &t) {
    from_value(v, t);
};
template <class T>
concept described = has_to_value<T> || has_from_value<T>;

template <class T>
concept range_like = !text<T> && !own<T> && !described<T> && requires(T const &t) {
    typename T::value_type;
    t.begin();
    t.end();
};
template <class T>
concept map_like = range_like<T> && requires {
    typename T::key_type;
    typename T::mapped_type;
};
template <class T>
concept set_like = range_like<T> && !map_like<T> && requires {
    typename T::key_type;
};
template <class T>
concept tuple_like = !own<T> && !described<T> && requires {
    std::tuple_size<T>::value;
};
template <class T>
concept sequence_like = range_like<T> && !map_like<T> && !set_like<T> && !tuple_like<T>;
template <class T>
concept growing_sequence = sequence_like<T> && requires(T &t) {
    t.push_back(std::declval<typename T::value_type>());
};
template <class T>
concept enumeration = std::is_enum_v<T> && !described<T>;

template <class T> inline constexpr bool is_optional = false;
template <class T> inline constexpr bool is_optional<std::optional<T>> = true;

// --- containers

template <class T> void reserve(T &container, std::size_t size) {
    if constexpr (requires { container.reserve(size); }) container.reserve(size);
}

template <class T, class Take> void for_each_part(value const &list, Take const &take) {
    std::size_t position = 0;
    for (value const &x : list) {
        take(convert_at(path_of(position), [&] { return x.get<T>(); }));
        ++position;
    }
}

template <sequence_like T> struct converter<T> {
    using element = typename T::value_type;

    static value to(T const &from) requires std::constructible_from<value, element> {
        value result = empty_vector();
        for (auto const &x : from) result.push_back(value(static_cast<element const &>(x)));
        return result;
    }
    static T from(value const &from) requires growing_sequence<T> && gettable<element> {
        expect_list(from, "vector");
        T result;
        reserve(result, from.size());
        for_each_part<element>(from, [&](element &&x) { result.push_back(std::move(x)); });
        return result;
    }
};

template <set_like T> struct converter<T> {
    using element = typename T::value_type;

    static value to(T const &from) requires std::constructible_from<value, element> {
        value result = empty_set();
        for (element const &x : from) result.push_back(value(x));
        return result;
    }
    static T from(value const &from) requires gettable<element> {
        expect_list(from, "set");
        T result;
        for_each_part<element>(from, [&](element &&x) { result.insert(std::move(x)); });
        return result;
    }
};

template <map_like T> struct converter<T> {
    using key = typename T::key_type;
    using mapped = typename T::mapped_type;

    static value to(T const &from) requires std::constructible_from<value, key> &&
        std::constructible_from<value, mapped> {
        value result = empty_map();
        for (auto const &[k, x] : from) result.set(value(k), value(x));
        return result;
    }
    static T from(value const &from) requires gettable<key> && gettable<mapped> {
        expect_map(from);
        T result;
        for (item const &entry : from.items())
            convert_at(path_of(entry.key),
                       [&] { result.emplace(entry.key.get<key>(), entry.value.get<mapped>()); });
        return result;
    }
};

template <tuple_like T> struct converter<T> {
    static constexpr std::size_t size = std::tuple_size_v<T>;
    using places = std::make_index_sequence<size>;

    template <std::size_t... i> static constexpr bool all_to(std::index_sequence<i...>) {
        return (std::constructible_from<value, std::tuple_element_t<i, T>> && ...);
    }
    template <std::size_t... i> static constexpr bool all_from(std::index_sequence<i...>) {
        return (gettable<std::tuple_element_t<i, T>> && ...);
    }

    static value to(T const &from) requires(all_to(places())) {
        return [&]<std::size_t... i>(std::index_sequence<i...>) {
            value result = empty_vector();
            (result.push_back(value(get<i>(from))), ...);
            return result;
        }
        (places());
    }
    static T from(value const &from) requires(all_from(places())) {
        expect_size(from, size);
        return [&]<std::size_t... i>(std::index_sequence<i...>) {
            return T{part<std::tuple_element_t<i, T>>(from, i)...};
        }
        (places());
    }

  private:
    template <class Part> static Part part(value const &from, std::size_t position) {
        return convert_at(path_of(position), [&] { return from.at(position).get<Part>(); });
    }
};

template <class T>
requires is_optional<T>
struct converter<T> {
    using content = typename T::value_type;

    static value to(T const &from) requires std::constructible_from<value, content> {
        return from ? value(*from) : value();
    }
    static T from(value const &from) requires gettable<content> {
        if (from.is_nil()) return std::nullopt;
        return from.get<content>();
    }
};

template <enumeration T> struct converter<T> {
    using number = std::underlying_type_t<T>;
    using wide = std::conditional_t<std::is_signed_v<number>, long long, unsigned long long>;

    static value to(T from) { return value(static_cast<wide>(from)); }
    // range_error: the underlying type can't hold the number. The result need not be an enumerator.
    static T from(value const &from) {
        wide const found = from.get<wide>();
        if (static_cast<wide>(static_cast<number>(found)) != found)
            throw range_error({}, std::to_string(found) + " does not fit the enumeration");
        return static_cast<T>(static_cast<number>(found));
    }
};

// --- members of structs

template <class Member> void set_member(value &map, std::string_view name, Member const &member) {
    map[name] = value(member);
}
// path_error: there is no such key. If the member is a std::optional, it becomes empty instead.
template <class Member> void get_member(value const &map, std::string_view name, Member &member) {
    if constexpr (is_optional<Member>) {
        if (!map.contains(name)) {
            member.reset();
            return;
        }
    }
    value const found = map[name];
    convert_at(path_of(name), [&] { member = found.get<Member>(); });
}

// --- enumerators by name

struct enumerator {
    long long number;
    char const *name;
};
// The name as a string. range_error: no enumerator has the number.
QRV_API value name_of(long long number, enumerator const *all, std::size_t count);
// The number. type_error: `name` is not a string, or not one of the names.
QRV_API long long number_of(value const &name, enumerator const *all, std::size_t count);

} // namespace qrv::detail

// QRV_DETAIL_EACH(macro, context, a, b, c) expands to macro(context, a) macro(context, b)
// macro(context, c), for up to 256 names.
#define QRV_DETAIL_PARENS ()
#define QRV_DETAIL_EXPAND(...)                                                                     \
    QRV_DETAIL_X4(QRV_DETAIL_X4(QRV_DETAIL_X4(QRV_DETAIL_X4(__VA_ARGS__))))
#define QRV_DETAIL_X4(...) QRV_DETAIL_X3(QRV_DETAIL_X3(QRV_DETAIL_X3(QRV_DETAIL_X3(__VA_ARGS__))))
#define QRV_DETAIL_X3(...) QRV_DETAIL_X2(QRV_DETAIL_X2(QRV_DETAIL_X2(QRV_DETAIL_X2(__VA_ARGS__))))
#define QRV_DETAIL_X2(...) QRV_DETAIL_X1(QRV_DETAIL_X1(QRV_DETAIL_X1(QRV_DETAIL_X1(__VA_ARGS__))))
#define QRV_DETAIL_X1(...) __VA_ARGS__
#define QRV_DETAIL_EACH(macro, context, ...)                                                       \
    __VA_OPT__(QRV_DETAIL_EXPAND(QRV_DETAIL_STEP(macro, context, __VA_ARGS__)))
#define QRV_DETAIL_STEP(macro, context, name, ...)                                                 \
    macro(context, name) __VA_OPT__(QRV_DETAIL_AGAIN QRV_DETAIL_PARENS(macro, context, __VA_ARGS__))
#define QRV_DETAIL_AGAIN() QRV_DETAIL_STEP

#define QRV_DETAIL_SET_MEMBER(type, name) ::qrv::detail::set_member(to, #name, from.name);
#define QRV_DETAIL_GET_MEMBER(type, name) ::qrv::detail::get_member(from, #name, to.name);
#define QRV_DETAIL_ENUMERATOR(type, name) {static_cast<long long>(type::name), #name},

// Use it after the struct, in the same namespace, with public members in the order in which they
// are to be written. A map that is read may have more keys; a key may be missing if the member is a
// std::optional.
#define QRV_DESCRIBE(Type, ...)                                                                    \
    [[maybe_unused]] inline void to_value([[maybe_unused]] Type const &from, ::qrv::value &to) {   \
        to = ::qrv::detail::empty_map();                                                           \
        QRV_DETAIL_EACH(QRV_DETAIL_SET_MEMBER, Type, __VA_ARGS__)                                  \
    }                                                                                              \
    [[maybe_unused]] inline void from_value(::qrv::value const &from, [[maybe_unused]] Type &to) { \
        ::qrv::detail::expect_map(from);                                                           \
        QRV_DETAIL_EACH(QRV_DETAIL_GET_MEMBER, Type, __VA_ARGS__)                                  \
    }

// Use it after the enumeration, in the same namespace, with its enumerators. Each is written as its
// name.
#define QRV_DESCRIBE_ENUM(Type, ...)                                                               \
    [[maybe_unused]] inline ::std::pair<::qrv::detail::enumerator const *, ::std::size_t>          \
    qrv_enumerators(Type) {                                                                        \
        static constexpr ::qrv::detail::enumerator all[] = {                                       \
            QRV_DETAIL_EACH(QRV_DETAIL_ENUMERATOR, Type, __VA_ARGS__)};                            \
        return {all, ::std::size(all)};                                                            \
    }                                                                                              \
    [[maybe_unused]] inline void to_value(Type from, ::qrv::value &to) {                           \
        auto const [all, count] = qrv_enumerators(from);                                           \
        to = ::qrv::detail::name_of(static_cast<long long>(from), all, count);                     \
    }                                                                                              \
    [[maybe_unused]] inline void from_value(::qrv::value const &from, Type &to) {                  \
        auto const [all, count] = qrv_enumerators(to);                                             \
        to = static_cast<Type>(::qrv::detail::number_of(from, all, count));                        \
    }
