// The test for cycles before text stores a value: it visits all that a value keeps alive, which is
// more than is_owner_of visits for a program.
#include "containers/cmergebudget.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cvectorobj.h"
#include "tests/containers/choice_support.h"
#include "tests/support/fixture.h"

using namespace choice_test;

namespace {

class MergeCycle : public QrvTest {
  protected:
    struct cCounting : cat::cMergeBudget {
        explicit cCounting(std::uint64_t units) : cMergeBudget(units) {}
        cCounting(cCounting const &) = delete;
        cCounting &operator=(cCounting const &) = delete;
        ~cCounting() override = default;
        void left_out(cObj &, objref const &, objref const &) override { ++count; }
        int count = 0;
    };

    // The result for text, "allowed" or "left out"; a program's is_owner_of is always false.
    static std::string store(objref const &value, cObj &holder, std::uint64_t units = 1000) {
        EXPECT_FALSE(value->is_owner_of(holder));
        cCounting budget(units);
        bool const allowed = cat::merge_allows(holder, text("key"), value);
        if (allowed) return budget.count ? "both" : "allowed";
        return budget.count ? "left out" : "used up";
    }

    mapref const map = map_of({"a", "b"});
    mapref const other = map_of({"x"});
};

} // namespace

TEST_F(MergeCycle, an_iterator_keeps_its_hash_alive) {
    objref const it = map->iterobj();
    EXPECT_EQ(store(it, *map), "left out");
    EXPECT_EQ(store(it, *other), "allowed");
    map->setattr(text("deep"), other);
    EXPECT_EQ(store(it, *other), "left out");
    auto const list = make<cVectorObj>();
    list->append(it);
    EXPECT_EQ(store(list, *map), "left out");
    EXPECT_EQ(store(make<cIterObj>(), *map), "allowed");
}

TEST_F(MergeCycle, a_choice_type_keeps_its_choices_alive) {
    typeref const type = choice_type("Letter", map);
    EXPECT_EQ(store(type, *map), "left out");
    EXPECT_EQ(store(type, *other), "allowed");
    EXPECT_EQ(store(choice_type("Bare", nullptr), *map), "allowed");
}

TEST_F(MergeCycle, a_choice_value_keeps_its_type_and_the_former_hash_alive) {
    typeref const type = choice_type("Letter", map);
    auto const value = make<cChoiceVal>(type.get());
    EXPECT_EQ(store(value, *map), "left out");
    EXPECT_EQ(store(value, *type), "left out");
    EXPECT_EQ(store(value, *other), "allowed");
    type->set_tmember("choices", other);
    EXPECT_EQ(store(value, *map), "left out");
    EXPECT_EQ(store(value, *other), "left out");
    value->update();
    EXPECT_EQ(store(value, *map), "allowed");
}

TEST_F(MergeCycle, a_specification_keeps_its_default_alive) {
    objref const spec = make<cAttspec>(objref(map), 0);
    EXPECT_EQ(store(spec, *map), "left out");
    EXPECT_EQ(store(spec, *other), "allowed");
    EXPECT_EQ(store(make<cAttspec>(0, nullptr), *map), "allowed");
    typeref const type = make<cTypeObj>("Record");
    type->set_tmember("attspec", spec);
    EXPECT_EQ(store(type, *map), "left out");
    auto const record = make<cMapObj>();
    record->set_attspec(text("x"), make<cAttspec>(objref(map), 0));
    EXPECT_EQ(store(record, *map), "left out");
}

TEST_F(MergeCycle, the_walk_is_charged) {
    typeref const type = choice_type("Letter", map);
    for (int i = 0; i < 100; ++i) map->setattr(own_key(i), cat::of(i));
    EXPECT_EQ(store(type, *other, 50), "used up");
    EXPECT_EQ(store(type, *other), "allowed");
}

TEST_F(MergeCycle, without_a_budget_everything_is_allowed) {
    objref const it = map->iterobj();
    EXPECT_TRUE(cat::merge_allows(*map, text("key"), it));
}
