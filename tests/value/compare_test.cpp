// Comparing and hashing values.

#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/util/cintvalf.h"
#include "tests/value/value_support.h"

#include <compare>
#include <cstdint>
#include <limits>
#include <unordered_map>

using namespace value_test;

namespace {

class Compare : public Quiet {
  protected:
    static void SetUpTestSuite() { cat::type_intf(); } // an object that stays
};

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr auto unordered = std::partial_ordering::unordered;

} // namespace

TEST_F(Compare, same_type_and_same_value_is_equal) {
    EXPECT_EQ(qrv::value(5), qrv::value(5));
    EXPECT_NE(qrv::value(5), qrv::value(5.0));
    EXPECT_NE(qrv::value(5.0F), qrv::value(5.0));
    EXPECT_NE(qrv::value(5), qrv::value("5"));
    EXPECT_NE(qrv::value(1), qrv::value(true));
    EXPECT_EQ(qrv::value(), qrv::value());
    EXPECT_NE(qrv::value(), qrv::value(0));
    EXPECT_EQ(qrv::value("a"), qrv::value(std::string("a")));
    EXPECT_EQ(read("{a= [1, {b= 2}]}"), read("{a= [1, {b= 2}]}"));
    EXPECT_NE(read("{a= 1; b= 2}"), read("{b= 2; a= 1}"));
    EXPECT_EQ(read("<1, 2>"), read("<2, 1>"));
    EXPECT_NE(read("[1, 2]"), read("<1, 2>"));
    EXPECT_NE(read("{a= 1}"), read("{a= 1; b= 2}"));
}

TEST_F(Compare, plain_numbers_and_text_create_no_object) {
    auto const before = cObjBase::ob_lstid();
    qrv::value const v = 5;
    EXPECT_EQ(cObjBase::ob_lstid(), before + 1);
    EXPECT_TRUE(v == 5);
    EXPECT_TRUE(v != 6);
    EXPECT_TRUE(v < 6);
    EXPECT_TRUE(6 > v);
    EXPECT_TRUE(v == 5LL);
    EXPECT_TRUE(v == std::uint8_t{5});
    EXPECT_FALSE(v == 5 + (1LL << 32));
    EXPECT_FALSE(v == std::numeric_limits<std::uint64_t>::max());
    EXPECT_TRUE(v < std::numeric_limits<std::uint64_t>::max());
    EXPECT_TRUE(v > std::numeric_limits<std::int64_t>::min());
    EXPECT_FALSE(v == 5.0);
    EXPECT_FALSE(v == true);
    EXPECT_FALSE(v == "5");
    EXPECT_FALSE(v == nullptr);
    EXPECT_EQ(cObjBase::ob_lstid(), before + 1);
    EXPECT_TRUE(qrv::value(0.5) == 0.5);
    EXPECT_TRUE(qrv::value(0.5) == 0.5L);
    EXPECT_FALSE(qrv::value(0.5) == 0.5F);
    EXPECT_TRUE(qrv::value(0.5F) == 0.5F);
    EXPECT_TRUE(qrv::value("a") == "a");
    EXPECT_TRUE("a" == qrv::value("a"));
    EXPECT_TRUE(qrv::value("a") == std::string_view("a"));
    EXPECT_TRUE(qrv::value("b") > std::string("a"));
    EXPECT_TRUE(qrv::value() == nullptr);
    EXPECT_TRUE(qrv::value(false) == false);
}

TEST_F(Compare, scalars_of_one_type_are_ordered) {
    EXPECT_TRUE(qrv::value(1) < qrv::value(2));
    EXPECT_TRUE(qrv::value("B") < qrv::value("a"));
    EXPECT_TRUE(qrv::value("a\xc3") > qrv::value("a\x7f"));
    EXPECT_TRUE(qrv::value(false) < qrv::value(true));
    EXPECT_TRUE(qrv::value(-1.5) < qrv::value(0.0));
    EXPECT_EQ(qrv::value(2) <=> qrv::value(2), std::partial_ordering::equivalent);
    qrv::value const a = make<cIntValF>(1, cIntFormat::fmtHex);
    qrv::value const b = make<cIntValF>(2, cIntFormat::fmtHex);
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(b > a);
}

TEST_F(Compare, different_types_and_different_containers_are_unordered) {
    EXPECT_EQ(qrv::value(1) <=> qrv::value(1.0), unordered);
    EXPECT_EQ(qrv::value(1) <=> qrv::value("1"), unordered);
    EXPECT_EQ(qrv::value() <=> qrv::value(0), unordered);
    EXPECT_EQ(read("[1]") <=> read("[2]"), unordered);
    EXPECT_EQ(read("[1]") <=> read("[1]"), std::partial_ordering::equivalent);
    EXPECT_FALSE(read("{}") < read("[]"));
}

TEST_F(Compare, nan_is_unequal_to_itself_and_both_zeros_are_equal) {
    EXPECT_NE(qrv::value(not_a_number), qrv::value(not_a_number));
    EXPECT_FALSE(qrv::value(not_a_number) == not_a_number);
    EXPECT_EQ(qrv::value(not_a_number) <=> qrv::value(1.0), unordered);
    EXPECT_EQ(qrv::value(-0.0), qrv::value(0.0));
    EXPECT_TRUE(qrv::value(-0.0) == 0.0);
}

TEST_F(Compare, equal_values_have_one_hash) {
    std::hash<qrv::value> const hash;
    EXPECT_EQ(hash(5), hash(5));
    EXPECT_NE(hash(5), hash(6));
    EXPECT_EQ(hash(-0.0), hash(0.0));
    EXPECT_EQ(hash("a"), hash(std::string("a")));
    EXPECT_EQ(hash(nullptr), hash(qrv::value()));
    EXPECT_EQ(hash(make<cIntValF>(1, cIntFormat::fmtHex)),
              hash(make<cIntValF>(1, cIntFormat::fmtDec)));
    std::unordered_map<qrv::value, int> map;
    map["a"] = 1;
    map[5] = 2;
    EXPECT_EQ(map.at("a"), 1);
    EXPECT_EQ(thrown<qrv::type_error>([&] { hash(read("{}")); }),
              "expected what can be a key, but it is a map");
}
