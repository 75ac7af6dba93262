// Functions that the conversions of C++ types use: empty containers, tests that throw, and names of
// enumerators.
#include "qrv/value/convert.h"

#include "value/place.h"

#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"

#include <algorithm>

namespace qrv::detail {

value empty_vector() { return value_access::share(make<cVectorObj>()); }

value empty_set() { return value_access::share(make<cSetObj>()); }

value empty_map() { return value_access::share(make<cMapObj>()); }

void expect_list(value const &v, char const *expected) {
    if (!v.is_vector() && !v.is_set()) throw type_error({}, expected, description(v));
}

void expect_map(value const &v) {
    if (!v.is_container() || v.is_vector() || v.is_set())
        throw type_error({}, "map", description(v));
}

void expect_size(value const &v, std::size_t size) {
    std::string const expected = "vector of " + std::to_string(size);
    expect_list(v, expected.c_str());
    if (v.size() != size)
        throw type_error({}, expected, description(v) + " of " + std::to_string(v.size()));
}

value name_of(long long number, enumerator const *all, std::size_t count) {
    enumerator const *const found = std::find_if(
        all, all + count, [&](enumerator const &each) { return each.number == number; });
    if (found == all + count)
        throw range_error({}, std::to_string(number) + " is not one of the enumerators");
    return value(found->name);
}

long long number_of(value const &name, enumerator const *all, std::size_t count) {
    enumerator const *const found =
        std::find_if(all, all + count, [&](enumerator const &each) { return name == each.name; });
    if (found != all + count) return found->number;
    std::string expected = "one of";
    for (std::size_t i = 0; i < count; ++i) {
        expected += i == 0 ? " " : i + 1 == count ? " or " : ", ";
        expected += all[i].name;
    }
    throw type_error({}, expected, description(name));
}

} // namespace qrv::detail
