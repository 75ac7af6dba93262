// Objects from plain values and back: the types that cat::of accepts, the range of values, the
// results of number_of and text_of, and objects that have a scalar type without such a value.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintvalf.h"
#include "tests/support/fixture.h"
#include "util/cintf_type.h"

#include <cstdint>
#include <limits>
#include <sstream>
#include <vector>

namespace {

class Plain : public QrvTest {
  protected:
    // The type "intf" is created, registered and counted on first use.
    static void SetUpTestSuite() { cat::type_intf(); }
    static void TearDownTestSuite() { cat::drop_intf_type(); }
};
class Claim : public QrvTest {};

enum cPlainEnum : int { an_enumerator = 7 };

template <class T> constexpr bool becomes_object = requires(T t) { cat::of(t); };

static_assert(becomes_object<bool> && becomes_object<float> && becomes_object<double>);
static_assert(becomes_object<short> && becomes_object<unsigned short> && becomes_object<int>);
static_assert(becomes_object<unsigned int> && becomes_object<long> && becomes_object<long long>);
static_assert(becomes_object<unsigned long> && becomes_object<unsigned long long>);
static_assert(becomes_object<std::size_t> && becomes_object<std::ptrdiff_t>);
static_assert(becomes_object<signed char> && becomes_object<unsigned char>);
static_assert(becomes_object<char> && becomes_object<wchar_t> && becomes_object<char8_t>);
static_assert(becomes_object<char16_t> && becomes_object<char32_t>);
static_assert(becomes_object<long double> && becomes_object<cPlainEnum>);
static_assert(becomes_object<std::string> && becomes_object<std::string_view>);
static_assert(becomes_object<char const *> && becomes_object<char *>);
static_assert(becomes_object<std::nullptr_t> && becomes_object<std::vector<bool>::reference>);
static_assert(!becomes_object<cIterObj &> && !becomes_object<cIterObj const &>);
static_assert(!becomes_object<cChoiceVal &> && !becomes_object<cMapObj &>);
static_assert(!becomes_object<cTracer &> && !becomes_object<objref> && !becomes_object<cAttr>);
static_assert(!becomes_object<cObj *> && !becomes_object<void *> && !becomes_object<int const *>);
static_assert(!becomes_object<unsigned char const *> && !becomes_object<char8_t const *>);
static_assert(!becomes_object<void (*)()> && !becomes_object<int cIterObj::*>);
static_assert(!becomes_object<decltype([] {})> && !becomes_object<std::ostringstream &>);
static_assert(!becomes_object<std::optional<int>>);

// A cursor converts to bool in a condition, but not in a calculation.
template <class A, class B> constexpr bool adds = requires(A a, B b) { a + b; };
template <class A, class B> constexpr bool subtracts = requires(A a, B b) { a - b; };
template <class A, class B> constexpr bool less = requires(A a, B b) { a < b; };
template <class A, class B> constexpr bool greater = requires(A a, B b) { a > b; };
template <class A, class B> constexpr bool not_greater = requires(A a, B b) { a <= b; };
template <class A, class B> constexpr bool not_less = requires(A a, B b) { a >= b; };
template <class A, class B> constexpr bool calculates = adds<A, B> || subtracts<A, B> ||
                                                        less<A, B> || greater<A, B> ||
                                                        not_greater<A, B> || not_less<A, B>;
template <class S, class T> constexpr bool prints = requires(S &os, T const &t) { os << t; };

static_assert(!calculates<cIterObj, cIterObj> && !calculates<cChoiceVal &, cChoiceVal &>);
static_assert(!calculates<cIterObj, int> && !calculates<int, cIterObj>);
static_assert(!calculates<cIterObj, cChoiceVal &> && !calculates<bool, cIterObj>);
static_assert(!prints<std::ostream, cIterObj> && !prints<std::ostringstream, cChoiceVal>);
static_assert(std::is_convertible_v<cIterObj, bool>);
static_assert(requires(cIterObj a, cIterObj b) {
    a == b;
    a != b;
    ++a;
    a-- ? 1 : 2;
});

// Indices of any integral type.
template <class Owner, class N> constexpr bool is_indexed = requires(Owner owner, N n) {
    owner[n];
};
template <class N> constexpr bool indexes = is_indexed<cObj &, N> &&is_indexed<cAttr, N>;
template <class N> constexpr bool refused_as_index =
    !is_indexed<cObj &, N> && !is_indexed<cAttr, N>;
static_assert(indexes<int> && indexes<unsigned int> && indexes<long> && indexes<unsigned long>);
static_assert(indexes<short> && indexes<unsigned short> && indexes<long long>);
static_assert(indexes<unsigned long long> && indexes<signed char> && indexes<unsigned char>);
static_assert(indexes<objref> && indexes<std::string> && indexes<char const *>);
static_assert(refused_as_index<bool> && refused_as_index<char> && refused_as_index<wchar_t>);
static_assert(refused_as_index<char8_t> && refused_as_index<char16_t>);
static_assert(refused_as_index<char32_t> && refused_as_index<double> && refused_as_index<float>);

template <class T> std::string written(T value) {
    objref const obj = cat::of(value);
    return obj->type().name() + " " + cat::as_text(obj);
}

// The result as text, or "no" if the value doesn't fit.
template <class T> std::string fitted(T value) {
    try {
        return written(value);
    } catch (std::out_of_range const &) {
        return "no";
    }
}

constexpr int greatest = std::numeric_limits<int>::max();
constexpr int lowest = std::numeric_limits<int>::min();

} // namespace

TEST_F(Plain, numbers_of_every_type_become_objects) {
    EXPECT_EQ(written(static_cast<short>(-3)), "int -3");
    EXPECT_EQ(written(static_cast<unsigned char>(200)), "int 200");
    EXPECT_EQ(written(3u), "int 3");
    EXPECT_EQ(written(std::size_t{4}), "int 4");
    EXPECT_EQ(written(-5LL), "int -5");
    EXPECT_EQ(written('a'), "int 97");
    EXPECT_EQ(written(U'a'), "int 97");
    EXPECT_EQ(written(L'a'), "int 97");
    EXPECT_EQ(written(true), "bool true");
    EXPECT_EQ(written(std::vector<bool>(1)[0]), "bool false");
    EXPECT_EQ(written(1.5f), "float 1.50000f");
    EXPECT_EQ(written(2.5L), "double 2.50000");
    EXPECT_EQ(written(an_enumerator), "int 7");
}

TEST_F(Plain, character_strings_become_strings) {
    std::string_view const view = std::string_view("a text").substr(2, 2);
    EXPECT_EQ(written(view), "string te");
    EXPECT_EQ(cat::text_of(cat::of(std::string_view("a\0b", 3))), std::string("a\0b", 3));
    EXPECT_EQ(cat::text_of(cat::of(std::string_view())), "");
    char buffer[] = "buffer";
    EXPECT_EQ(written(static_cast<char *>(buffer)), "string buffer");
    EXPECT_EQ(cat::text_of(cat::of(buffer)), "buffer");
    EXPECT_EQ(cat::text_of(cat::of(nullptr)), "");
}

TEST_F(Plain, numbers_beyond_an_int_are_out_of_range) {
    EXPECT_EQ(fitted(std::int64_t{greatest}), "int 2147483647");
    EXPECT_EQ(fitted(std::int64_t{greatest} + 1), "no");
    EXPECT_EQ(fitted(std::int64_t{lowest}), "int -2147483648");
    EXPECT_EQ(fitted(std::int64_t{lowest} - 1), "no");
    EXPECT_EQ(fitted(static_cast<unsigned int>(greatest)), "int 2147483647");
    EXPECT_EQ(fitted(static_cast<unsigned int>(greatest) + 1), "no");
    EXPECT_EQ(fitted(std::numeric_limits<std::uint64_t>::max()), "no");
    EXPECT_EQ(fitted(static_cast<char32_t>(0x7FFFFFFF)), "int 2147483647");
    EXPECT_EQ(fitted(static_cast<char32_t>(0x80000000)), "no");
}

TEST_F(Plain, a_long_double_beyond_a_double_is_out_of_range) {
    long double const limit = std::numeric_limits<double>::max();
    EXPECT_EQ(cat::number_of(cat::of(limit)), std::numeric_limits<double>::max());
    EXPECT_EQ(fitted(limit * 2), "no");
    EXPECT_EQ(fitted(-limit * 2), "no");
    EXPECT_EQ(cat::number_of(cat::of(std::numeric_limits<long double>::infinity())),
              std::numeric_limits<double>::infinity());
}

TEST_F(Plain, a_number_out_of_range_has_a_message) {
    try {
        (void)cat::of(5000000000);
        FAIL();
    } catch (std::out_of_range const &error) {
        EXPECT_STREQ(error.what(), "a number does not fit in an int");
    }
}

TEST_F(Plain, indices_of_every_integral_type) {
    objref const vector = make<cVectorObj>();
    for (int i : {10, 11, 12}) vector->append(cat::of(i));
    EXPECT_TRUE(cat::is_equal((*vector)[1].getattr(), 11));
    EXPECT_TRUE(cat::is_equal((*vector)[1u].getattr(), 11));
    EXPECT_TRUE(cat::is_equal((*vector)[std::size_t{2}].getattr(), 12));
    EXPECT_TRUE(cat::is_equal((*vector)[0LL].getattr(), 10));
    EXPECT_TRUE(cat::is_equal((*vector)[static_cast<unsigned char>(2)].getattr(), 12));
    (*vector)[std::size_t{3}] = vector->clone();
    EXPECT_TRUE(cat::is_equal((*vector)[3][std::size_t{0}].getattr(), 10));
    EXPECT_EQ((*vector)[-1L].getattr(), cat::badfind());
}

TEST_F(Plain, an_index_beyond_an_int_is_out_of_range) {
    objref const map = make<cMapObj>();
    auto const index = [&](auto n) { return (*map)[n].key_as_string(); };
    EXPECT_EQ(index(std::int64_t{greatest}), "2147483647");
    EXPECT_THROW(index(std::int64_t{greatest} + 1), std::out_of_range);
    EXPECT_EQ(index(std::int64_t{lowest}), "-2147483648");
    EXPECT_THROW(index(std::int64_t{lowest} - 1), std::out_of_range);
    EXPECT_THROW(index(std::numeric_limits<std::size_t>::max()), std::out_of_range);
    cAttr const attr = (*map)["a"];
    EXPECT_THROW((void)attr[std::numeric_limits<unsigned int>::max()], std::out_of_range);
    EXPECT_EQ(map->begin().size(), 0); // nothing was created
}

TEST_F(Plain, number_of_is_empty_except_for_numbers) {
    int number = 3;
    EXPECT_EQ(cat::number_of(cat::of(-7)), -7.0);
    EXPECT_EQ(cat::number_of(cat::of(1.5f)), 1.5);
    EXPECT_EQ(cat::number_of(cat::of(2.5)), 2.5);
    EXPECT_EQ(cat::number_of(make<cIntValF>(255, cIntFormat::fmtHex)), 255.0);
    EXPECT_EQ(cat::number_of(make<cIntRefF>(number, cIntFormat::fmtBin8)), 3.0);
    EXPECT_EQ(cat::number_of(objref::adopt(new cObjDR<int>(number))), 3.0);
    for (objref const &other :
         {objref(), cat::of("7"), cat::of(true), cat::nil(), cat::bad(), cat::badfind(),
          objref(make<cMapObj>()), objref(make<cIterObj>()), objref(make<cObj>(false))})
        EXPECT_EQ(cat::number_of(other), std::nullopt) << cat::as_text(other);
}

TEST_F(Plain, text_of_is_empty_except_for_strings) {
    std::string const text = "true"; // written bare
    EXPECT_EQ(cat::text_of(cat::of("a b")), "a b");
    EXPECT_EQ(cat::text_of(cat::of("")), "");
    EXPECT_EQ(cat::text_of(make_key(text)), "true");
    for (objref const &other :
         {objref(), cat::of(7), cat::of(1.5f), cat::of(2.5), cat::of(true), cat::nil(), cat::bad(),
          objref(make<cIntValF>(1)), objref(make<cMapObj>()), objref(make<cObj>(false))})
        EXPECT_EQ(cat::text_of(other), std::nullopt) << cat::as_text(other);
}

namespace {

// Objects that claim a scalar type without holding such a value.
std::vector<objref> claims(cTypeObj &type) {
    std::vector<objref> claims{make<cMapObj>(), make<cIterObj>()};
    claims.push_back(&type == &cat::type_string() ? cat::of(1) : cat::of("a text"));
    claims.push_back(objref::adopt(new cObjDR<int>(&type))); // refers to nothing
    for (objref const &claim : claims) claim->set_type(&type);
    return claims;
}

objref valid_object(cTypeObj &type) {
    objref const made = type.newobj();
    made->set_type(&type);
    return made;
}

std::vector<cTypeObj *> scalar_types() {
    return {&cat::type_string(), &cat::type_bool(), &cat::type_int(), &cat::type_float(),
            &cat::type_double()};
}

} // namespace

TEST_F(Claim, the_methods_of_scalars_refuse_objects_that_only_claim_the_type) {
    for (cTypeObj *type : scalar_types())
        for (objref const &claim : claims(*type)) {
            objref const value = valid_object(*type);
            std::string const before = cat::as_text(value);
            EXPECT_FALSE(claim->assign(value));
            EXPECT_FALSE(value->assign(claim));
            EXPECT_FALSE(claim->assign(claim));
            EXPECT_FALSE(claim->equal(value));
            EXPECT_FALSE(value->equal(claim));
            EXPECT_EQ(claim->newref(), cat::bad());
            EXPECT_EQ(claim->clone(), cat::bad());
            for (char const *name : {"add", "less"}) {
                if (type == &cat::type_bool()) continue; // bool has neither
                EXPECT_EQ(claim->call(name, value), cat::bad()) << name;
                EXPECT_EQ(value->call(name, claim), cat::bad()) << name;
            }
            EXPECT_EQ(cat::as_text(value), before);
        }
}

TEST_F(Claim, objects_that_only_claim_a_scalar_type_are_not_converted) {
    for (cTypeObj *type : scalar_types())
        for (objref const &claim : claims(*type))
            for (cTypeObj *other : scalar_types()) {
                EXPECT_FALSE(valid_object(*other)->convert(claim)) << type->name();
                EXPECT_FALSE(claim->convert(valid_object(*other))) << type->name();
            }
}

TEST_F(Claim, plain_values_are_not_read_from_objects_that_only_claim_a_scalar_type) {
    for (cTypeObj *type : scalar_types())
        for (objref const &claim : claims(*type)) {
            int number = 7;
            bool flag = true;
            EXPECT_EQ(cat::as_index(claim), cat::no_index);
            EXPECT_FALSE(cat::is_equal(claim, ""));
            EXPECT_FALSE(cat::is_equal(claim, 0));
            EXPECT_FALSE(cat::int_of(claim, number));
            EXPECT_FALSE(cat::bool_of(claim, flag));
            EXPECT_EQ(cat::number_of(claim), std::nullopt);
            EXPECT_EQ(cat::text_of(claim), std::nullopt);
            EXPECT_EQ(number, 7);
        }
}

TEST_F(Claim, a_key_that_only_claims_its_type_is_found_only_by_itself) {
    for (cTypeObj *type : {&cat::type_string(), &cat::type_int()}) {
        auto const map = make<cMapObj>();
        for (int i = 0; i < 3; ++i) {
            map->datamap().mapitem(own_key(i), cat::of(i));
            map->datamap().mapitem(cat::of(std::to_string(i)), cat::of(i));
        }
        for (objref const &claim : claims(*type)) {
            EXPECT_EQ(map->getattr(claim), cat::badfind());
            EXPECT_TRUE(map->setattr(claim, cat::of(5)));
            EXPECT_TRUE(map->setattr(claim, cat::of(6)));
            EXPECT_TRUE(cat::is_equal(map->getattr(claim), 6));
            EXPECT_EQ(map->datamap().broken_rule(true), "");
        }
        EXPECT_EQ(map->size(), 10);
        EXPECT_TRUE(cat::is_equal(map->getattr(own_key(0)), 0));
    }
}

TEST_F(Claim, sets_can_hold_objects_that_only_claim_a_scalar_type) {
    for (cTypeObj *type : {&cat::type_string(), &cat::type_int(), &cat::type_bool()}) {
        auto const source = make<cVectorObj>();
        source->append(valid_object(*type));
        for (objref const &claim : claims(*type)) source->append(claim);
        source->append(valid_object(*type)); // equals the first
        auto const set = make<cSetObj>();
        EXPECT_TRUE(set->assign(*source));
        EXPECT_EQ(set->size(), 5) << type->name();
        EXPECT_FALSE(set->equal(*make<cSetObj>()));
        EXPECT_FALSE(set->equal(*set->clone())); // a claimed value equals nothing
    }
}
