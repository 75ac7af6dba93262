// Expressions that must not compile, since they would lose data, refer to a destroyed object, or
// change a copy that is then discarded.

#include "qrv/containers/cmapobj.h"
#include "tests/value/value_support.h"

#include <concepts>

namespace {

using qrv::reference;
using qrv::value;

struct cPlain {};
struct cAbstract {
    virtual ~cAbstract() = default;
    virtual void f() = 0;
};

template <class T>
concept makes_a_value = std::constructible_from<value, T>;
template <class T>
concept is_gettable = requires(value const &v) {
    v.get<T>();
};
template <class T>
concept is_gettable_at = requires(value const &v) {
    v.get<T>("a");
};
template <class T>
concept is_key = requires(value const &v, value &variable, T key) {
    v[key];
    variable[key];
    variable["a"][key];
    v.at(key);
    v.find(key);
    v.contains(key);
};
template <class T>
concept is_settable = requires(value &v, T key) {
    v.set(key, 1);
};
template <class T>
concept is_erasable = requires(value &v, T key) {
    v.erase(key);
};
template <class From>
concept is_assignable_to_a_reference = requires(reference &place, From from) {
    place = from;
};
template <class V>
concept changes = requires(V &v) {
    v.set("a", 1);
};
template <class V>
concept pushes = requires(V &v) {
    v.push_back(1);
};

} // namespace

// A character may be meant as a number or as a string; a pointer would become a bool.
static_assert(makes_a_value<int> && makes_a_value<signed char> && makes_a_value<char const *>);
static_assert(!makes_a_value<char> && !makes_a_value<wchar_t> && !makes_a_value<char8_t>);
static_assert(!makes_a_value<char16_t> && !makes_a_value<char32_t>);
static_assert(!makes_a_value<int *> && !makes_a_value<void *> && !makes_a_value<cObj *>);
static_assert(!makes_a_value<cPlain> && !makes_a_value<void (*)()>);
static_assert(!makes_a_value<int[3]> && !makes_a_value<int (&)[3]> && !makes_a_value<cPlain[2]>);
static_assert(!makes_a_value<void> && !makes_a_value<void()> && !makes_a_value<cAbstract &>);
static_assert(makes_a_value<char const (&)[4]>);
static_assert(makes_a_value<cRef<cMapObj>> && makes_a_value<objref>);

// A value does not convert implicitly to other types, and cannot be a condition.
static_assert(!std::convertible_to<value, int> && !std::convertible_to<value, std::string>);
static_assert(!std::convertible_to<value, bool> && !std::constructible_from<bool, value>);
static_assert(!std::convertible_to<value, objref>);
static_assert(!std::convertible_to<reference, int> && std::convertible_to<reference, value>);

// An assignment to a temporary would change nothing.
static_assert(std::assignable_from<value &, value> && std::assignable_from<value &, int>);
static_assert(!std::is_assignable_v<value, int> && !std::is_assignable_v<value, value>);

// get() returns no reference or pointer to an object that may be destroyed.
static_assert(is_gettable<std::string> && is_gettable<int> && is_gettable<value>);
static_assert(!is_gettable<std::string_view> && !is_gettable<char const *>);
static_assert(!is_gettable<int &> && !is_gettable<int const> && !is_gettable<char>);
static_assert(!is_gettable<cPlain> && !is_gettable<reference>);
static_assert(!is_gettable<char[4]> && !is_gettable<int[3]> && !is_gettable<int[]>);
static_assert(!is_gettable<void> && !is_gettable<void()> && !is_gettable<cAbstract>);
static_assert(is_gettable_at<int> && !is_gettable_at<std::string_view>);

// Keys are strings, ints and values.
static_assert(is_key<int> && is_key<std::size_t> && is_key<std::string> && is_key<value>);
static_assert(is_key<char const *> && is_key<std::string_view>);
static_assert(!is_key<char> && !is_key<double> && !is_key<bool> && !is_key<std::nullptr_t>);
static_assert(is_key<reference>);
static_assert(is_settable<int> && is_settable<std::string> && !is_settable<double>);
static_assert(!is_settable<char> && !is_settable<bool> && !is_settable<std::nullptr_t>);
static_assert(is_erasable<int> && !is_erasable<double> && !is_erasable<std::nullptr_t>);

// A reference can only be assigned to in the expression that creates it. A constant value cannot be
// changed.
static_assert(!is_assignable_to_a_reference<int> && !is_assignable_to_a_reference<value>);
static_assert(!is_assignable_to_a_reference<reference> &&
              !is_assignable_to_a_reference<reference &>);
static_assert(changes<value> && !changes<value const>);
static_assert(pushes<value> && !pushes<value const>);

TEST(ValueMisuse, is_refused_by_the_compiler) {
    value v;
    v["a"] = 1; // this looks like a misuse, but is allowed
    auto place = v["a"];
    EXPECT_EQ(place, 1);
}
