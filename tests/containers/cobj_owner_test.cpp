// A store that would close a cycle is refused, and there is no search if there can't be a cycle.

#include "core/cholders.h"
#include "qrv/core/cexe.h"
#include "tests/containers/map_support.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

using namespace trees;

namespace {

class OwnerTest : public QrvTest {
  protected:
    OwnerTest() { cHolders::know(true); }
    ~OwnerTest() override { cHolders::know(known_before_); }

  private:
    bool const known_before_ = cHolders::are_known();
};

constexpr int levels = 100000;

bool is_refused(cObj &holder, objref const &value) {
    cErrorLog errors;
    bool const stored = holder.setattr(of("k"), value);
    EXPECT_EQ(errors.count(), stored ? 0u : 1u);
    return !stored;
}

int calls = 0;
objref counted_iterobj(objref obj) {
    ++calls;
    return cTomMap::iterobj(obj);
}

} // namespace

TEST_F(OwnerTest, an_inner_map_that_only_its_attribute_owns_refuses_its_owner) {
    mapref const m = map({{"x", map()}});
    cMapObj *const inner = m->submap_ptr("x");
    EXPECT_EQ(inner->refs(), 1u);
    EXPECT_TRUE(is_refused(*inner, m));
    EXPECT_EQ(shape(m), "{x={}}");
}

TEST_F(OwnerTest, a_container_on_the_stack_is_refused_below_itself) {
    cMapObj outer;
    cMapObj inner;
    EXPECT_FALSE(is_refused(outer, objref::share(&inner)));
    EXPECT_TRUE(is_refused(inner, objref::share(&outer)));
    outer.clear();
    EXPECT_FALSE(inner.may_be_a_value());
    EXPECT_FALSE(is_refused(inner, objref::share(&outer)));
    inner.clear();
}

TEST_F(OwnerTest, an_object_is_a_value_as_long_as_an_attribute_has_it) {
    mapref const inner = map();
    EXPECT_FALSE(inner->may_be_a_value());
    mapref const outer = map({{"a", inner}, {"b", inner}});
    EXPECT_TRUE(inner->may_be_a_value());
    outer->datamap().delitem("a");
    EXPECT_TRUE(inner->may_be_a_value());
    outer->setattr(of("b"), of(1));
    EXPECT_FALSE(inner->may_be_a_value());
    outer->datamap().insert(of("c"), inner, nullptr);
    outer->datamap().rename(of("c"), of("d"));
    EXPECT_TRUE(inner->may_be_a_value());
    outer->clear();
    EXPECT_FALSE(inner->may_be_a_value());
    inner->set_omember("member", outer);
    EXPECT_TRUE(outer->may_be_a_value());
    inner->ommap(hashref());
    EXPECT_FALSE(outer->may_be_a_value());
}

TEST_F(OwnerTest, a_value_with_an_outside_reference_is_searched_for) {
    mapref const inner = map();
    mapref const outer = map({{"a", 1}});
    outer->valref_("a") = inner;
    EXPECT_TRUE(inner->may_be_a_value());
    EXPECT_TRUE(is_refused(*inner, outer));
}

TEST_F(OwnerTest, the_iterobj_of_a_type_is_called) {
    cOwnType own;
    own.type.set_tmember("iterobj", make<cExeMember>(counted_iterobj));
    EXPECT_FALSE(cHolders::are_known());
    mapref const target = map();
    calls = 0;
    EXPECT_TRUE(target->setattr(of("k"), make<cMapObj>(&own.type, false)));
    EXPECT_EQ(calls, 1);
    target->clear();
}

TEST_F(OwnerTest, the_iterobj_of_an_object_is_called) {
    mapref const value = map();
    value->set_omember("iterobj", make<cExeMember>(counted_iterobj));
    EXPECT_FALSE(cHolders::are_known());
    mapref const target = map();
    calls = 0;
    EXPECT_TRUE(target->setattr(of("k"), value));
    EXPECT_EQ(calls, 1);
}

TEST_F(OwnerTest, the_types_of_the_library_leave_the_counts_valid) {
    cOwnType own;
    cTypeObj attlist(&cat::typetype_attlist(), nullptr, nullptr);
    EXPECT_TRUE(cHolders::are_known());
}

// Each test would take minutes if every store walked over the stored value.
TEST_F(OwnerTest, nesting_from_the_innermost_level_is_linear) {
    objref tree = map();
    for (int i = 0; i < levels; ++i) {
        mapref const outer = map();
        EXPECT_TRUE(outer->setattr(of("k"), tree));
        tree = outer;
    }
    EXPECT_FALSE(tree->may_be_a_value());
}

TEST_F(OwnerTest, nesting_from_the_outermost_level_is_linear) {
    mapref const tree = map();
    cMapObj *at = tree;
    for (int i = 0; i < levels; ++i) {
        mapref const inner = map();
        EXPECT_TRUE(at->setattr(of("k"), inner));
        at = inner;
    }
}

TEST_F(OwnerTest, storing_a_large_value_under_many_keys_is_linear) {
    vectorref const large = ints(levels);
    mapref const target = map();
    for (int i = 0; i < levels; ++i) EXPECT_TRUE(target->setattr(of(i), large));
}

namespace {

// The search without the counts.
bool is_below(objref const &value, cObj const &other, std::set<cObj const *> &seen) {
    if (!value || !value->is_map() || !seen.insert(value).second) return false;
    cAttrHash const &hash = static_cast<cMapObj const &>(*value).datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        if (node->valref() == &other || is_below(node->valref(), other, seen)) return true;
    return false;
}

class cGenerated {
  public:
    explicit cGenerated(unsigned seed) : random_(seed) {
        for (int i = 0; i < 8; ++i) maps_.push_back(make<cMapObj>());
    }
    ~cGenerated() {
        for (mapref const &map : maps_) map->clear();
    }
    cGenerated(cGenerated const &) = delete;
    cGenerated &operator=(cGenerated const &) = delete;

    void step() {
        cMapObj &map = *any();
        objref const key = of(static_cast<int>(random_() % 3));
        switch (random_() % 8) {
        case 0:
            map.datamap().delitem(key);
            break;
        case 1:
            map.datamap().rename(key, of(static_cast<int>(random_() % 3)));
            break;
        case 2:
            map.datamap().setitem(key, of(1));
            break;
        case 3:
            if (random_() % 8 == 0) map.clear();
            break;
        case 4:
            if (cAttrNode *const node = map.datamap().find(key)) *node = cat::nil();
            break;
        default:
            store(map, key, any());
        }
    }

  private:
    mapref const &any() { return maps_[random_() % maps_.size()]; }

    static void store(cMapObj &map, objref const &key, objref const &value) {
        std::set<cObj const *> seen;
        bool const refused = is_below(value, map, seen);
        cErrorLog errors;
        ASSERT_EQ(map.setattr(key, value), !refused);
        ASSERT_EQ(errors.count(), refused ? 1u : 0u);
    }

    std::mt19937 random_;
    std::vector<mapref> maps_;
};

} // namespace

TEST_F(OwnerTest, exactly_the_values_that_a_walk_finds_are_refused) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        cGenerated work(seed);
        for (int i = 0; i < 100 && !testing::Test::HasFatalFailure(); ++i) work.step();
    }
}
