// Containers against their content: keys whose hooks act, keys that no search finds, and values
// that let the container go, or empty it, while an operation is under way.

#include "qrv/containers/cattr.h"
#include "tests/containers/hash_support.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

using namespace trees;

namespace {

class Reentry : public QrvTest {};

// --- keys

// Each question adds a key and takes it away again.
void never_rests(cAttrHash &hash) {
    static int calls;
    if (++calls > 100000) throw std::runtime_error("asked for ever");
    auto const next = [&hash] { never_rests(hash); };
    hash.mapitem("passing", cat::nil());
    hash.delitem("passing");
    cHostileType::in_heq = next;
}

TEST_F(Reentry, a_hook_that_never_leaves_the_table_in_peace_is_not_asked_for_ever) {
    cHostileType const hostile;
    cAttrHash hash(nullptr);
    hash.mapitem(hostile.key(1), of(1));
    hash.mapitem("text", of(2));
    cHostileType::in_heq = [&hash] { never_rests(hash); };
    EXPECT_EQ(hash.find(hostile.key(2)), nullptr);
    EXPECT_TRUE(hash.delitem(hostile.key(2)));
    EXPECT_TRUE(hash.mapitem(hostile.key(2), of(3)));
    EXPECT_EQ(shape(hash.getitem("text")), "2");
    cHostileType::reset();
    EXPECT_EQ(shape(hash.getitem(hostile.key(2))), "3");
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Reentry, an_empty_child_under_a_key_that_no_search_finds_stays) {
    for (bool const recursive : {false, true}) {
        mapref const m = map({{"a", 1}});
        m->datamap().mapitem(cat::of(true), map()); // bool has no hash
        m->datamap().mapitem("b", map());
        m->datamap().mapitem("c", map({{"d", 1}}));
        m->remove_emptychilds(recursive);
        EXPECT_EQ(shape(m), "{a=1, true={}, c={d=1}}");
    }
}

TEST_F(Reentry, merging_survives_keys_that_take_others_out_of_the_target) {
    cHostileType const hostile;
    mapref const target = map({{"a", 1}});
    mapref const source = map();
    for (int i = 0; i < 6; ++i) {
        target->datamap().mapitem(hostile.key(i), of(i));
        source->datamap().mapitem(hostile.key(5 - i), of(10 + i));
    }
    auto const questions = [&] {
        cHostileType::reset();
        for (int i = 5; i >= 3; --i) (void)target->datamap().find(hostile.key(i));
        return cHostileType::heq_calls;
    }();
    cHostileType::reset();
    std::function<void()> wait = [&] {
        if (cHostileType::heq_calls < questions)
            cHostileType::in_heq = wait;
        else // the keys 5 and 4 are on the list by now
            target->datamap().clear();
    };
    cHostileType::in_heq = wait;
    EXPECT_TRUE(target->attrcopy(*source, "-s-"));
    EXPECT_EQ(target->datamap().broken_rule(true), "");
    EXPECT_EQ(shape(source->datamap().getitem(hostile.key(0))), "15");
}

} // namespace
