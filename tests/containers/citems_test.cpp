// The entries of a container as a range.
#include "qrv/containers/citems.h"

#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"

#include <algorithm>
#include <concepts>
#include <list>
#include <random>

namespace {

class Items : public QrvTest {};
class ItemsEdge : public QrvTest {};

static_assert(std::forward_iterator<cat::Items::iterator>);
static_assert(std::ranges::forward_range<cat::Items>);
static_assert(std::ranges::common_range<cat::Items>);
static_assert(std::ranges::sized_range<cat::Items>);
static_assert(std::ranges::borrowed_range<cat::Items>);
static_assert(std::regular<cat::Items::iterator>);

// Keys and values: "a=1 b=2 ".
std::string walked(cat::Items const &items) {
    std::string text;
    for (auto const &[key, value] : items)
        text += cat::as_string(key) + "=" + cat::as_string(value) + " ";
    return text;
}

cRef<cMapObj> letters(int count) {
    auto map = make<cMapObj>();
    for (int i = 0; i < count; ++i)
        map->setattr(own_key(std::string(1, static_cast<char>('a' + i))), cat::of(i));
    return map;
}

// The keys met by a walk in which `act` is called at each entry.
template <class Act> std::string keys_with(objref const &map, Act const &act) {
    std::string keys;
    for (cat::Item const &item : cat::items(map)) {
        std::string const key = cat::as_string(item.key());
        keys += key;
        act(key);
    }
    return keys;
}

} // namespace

TEST_F(Items, items_are_keys_and_values_in_the_order_of_the_container) {
    EXPECT_EQ(walked(cat::items(letters(3))), "a=0 b=1 c=2 ");
    auto const vector = make<cVectorObj>();
    for (int i = 7; i < 10; ++i) vector->append(cat::of(i));
    EXPECT_EQ(walked(cat::items(vector)), "0=7 1=8 2=9 ");
    auto const set = make<cSetObj>();
    for (char const *text : {"x", "y", "x"}) set->append(cat::of(text));
    EXPECT_EQ(walked(cat::items(set)), "0=x 1=y ");
}

TEST_F(ItemsEdge, null_void_and_scalar_values_have_no_items) {
    for (objref const &ref : {objref(), cat::nil(), cat::bad(), cat::badfind(), cat::of(5),
                              cat::of("text"), objref(make<cMapObj>())}) {
        cat::Items const items = cat::items(ref);
        EXPECT_TRUE(items.empty());
        EXPECT_EQ(items.size(), 0u);
        EXPECT_TRUE(items.begin() == items.end());
    }
    EXPECT_EQ(messages(), "");
    cat::Item const none;
    EXPECT_TRUE(none.key() == nullptr);
    EXPECT_EQ(none.value(), cat::bad());
}

TEST_F(Items, are_a_forward_range) {
    cat::Items const items = cat::items(letters(5));
    EXPECT_EQ(std::ranges::distance(items), 5);
    EXPECT_EQ(items.size(), 5u);
    auto const first = items.begin();
    auto second = first;
    EXPECT_TRUE(second++ == first);
    EXPECT_TRUE(second == std::ranges::next(first));
    EXPECT_EQ(cat::as_string((*second).key()), "b"); // multi-pass
    auto const found = std::ranges::find_if(
        items, [](cat::Item const &item) { return cat::is_equal(item.value(), 3); });
    EXPECT_EQ(cat::as_string((*found).key()), "d");
}

TEST_F(Items, items_own_the_container) {
    cat::Items::iterator it;
    cat::Item item;
    {
        cat::Items items = cat::items(letters(2));
        it = items.begin();
        item = *it;
    }
    EXPECT_EQ(cat::as_string((*it).key()), "a");
    ++it;
    EXPECT_EQ(cat::as_string((*it).key()), "b");
    it = {};
    EXPECT_TRUE(item.key() == nullptr); // the entry was destroyed with its container
    EXPECT_EQ(item.value(), cat::bad());
}

TEST_F(Items, allocate_nothing) {
    auto const map = letters(20);
    auto const vector = make<cVectorObj>();
    for (int i = 0; i < 20; ++i) vector->append(cat::of(i));
    for (objref const &ref : {objref(map), objref(vector)}) {
        auto const before = cObjBase::ob_count();
        int sum = 0;
        for (cat::Item const &item : cat::items(ref)) {
            int number = 0;
            cat::int_of(item.value(), number);
            sum += number;
            EXPECT_EQ(cObjBase::ob_count(), before);
        }
        EXPECT_EQ(sum, 190);
    }
}

TEST_F(Items, survive_the_removal_of_the_current_entry) {
    auto const map = letters(5);
    EXPECT_EQ(keys_with(map, [&](std::string const &key) { map->datamap().delitem(key); }),
              "abcde");
    EXPECT_EQ(map->size(), 0);
}

TEST_F(Items, survive_the_removal_of_other_entries) {
    auto map = letters(6);
    auto &hash = map->datamap();
    EXPECT_EQ(keys_with(map,
                        [&](std::string const &key) {
                            if (key != "c") return;
                            for (char const *gone : {"a", "c", "d", "b"}) hash.delitem(gone);
                        }),
              "abcef");
    map = letters(6);
    EXPECT_EQ(keys_with(map,
                        [&](std::string const &key) {
                            if (key == "b") map->datamap().clear();
                        }),
              "ab");
}

TEST_F(Items, a_removed_entry_is_followed_by_its_former_successor) {
    auto const map = letters(3);
    auto &hash = map->datamap();
    // Not in order of creation: a x b c.
    hash.insert(own_key(std::string("x")), cat::of(1), hash.find("b"));
    std::string keys;
    for (cat::Item const &item : cat::items(map)) {
        keys += cat::as_string(item.key());
        if (keys != "a") continue;
        hash.delitem("x"); // b is the next entry now
        hash.delitem("a");
        EXPECT_TRUE(item.key() == nullptr);
        EXPECT_EQ(item.value(), cat::bad());
        hash.insert(own_key(std::string("y")), cat::of(1), hash.find("b")); // too late
        hash.insert(own_key(std::string("z")), cat::of(1), nullptr);
    }
    EXPECT_EQ(keys, "abcz");
}

TEST_F(Items, follow_the_values_of_a_vector) {
    auto const vector = make<cVectorObj>();
    for (int i = 0; i < 6; ++i) vector->append(cat::of(i));
    std::string seen;
    for (auto const &[key, value] : cat::items(vector)) {
        seen += cat::as_string(value) + " ";
        vector->erase(cat::as_index(key), 1);
    }
    EXPECT_EQ(seen, "0 1 2 3 4 5 ");
    EXPECT_EQ(vector->size(), 0);
}

TEST_F(ItemsEdge, a_value_removed_from_a_vector_has_no_key) {
    auto const vector = make<cVectorObj>();
    for (int i = 0; i < 3; ++i) vector->append(cat::of(i));
    auto at = cat::items(vector).begin();
    vector->erase(0, 1);
    EXPECT_TRUE((*at).key() == nullptr);
    EXPECT_EQ((*at).value(), cat::bad());
    EXPECT_EQ(cat::as_string((*++at).value()), "1");
}

// The model is a list of the values and the position of the next one. A walk ends for good when the
// current value has been removed and no value follows it.
TEST_F(Items, random_changes_of_a_vector_follow_the_model) {
    std::mt19937 random(7);
    auto const below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int round = 0; round < 300; ++round) {
        auto const vector = make<cVectorObj>();
        std::vector<int> model;
        int made = 0;
        for (int i = below(8); i >= 0; --i) {
            vector->append(cat::of(made));
            model.push_back(made++);
        }
        int next = 0, steps = 0;
        for (auto at = cat::items(vector).begin(); !(at == cat::items(vector).end()); ++at) {
            ASSERT_LT(next, static_cast<int>(model.size())) << round;
            int const now = model[static_cast<std::size_t>(next++)];
            ASSERT_EQ(cat::as_string((*at).value()), std::to_string(now)) << round;
            bool is_there = true, ended = false;
            for (int change = below(4); change > 0 && !ended; --change) {
                int const size = static_cast<int>(model.size());
                if (below(2) == 0 && size > 0) {
                    int const i = below(size);
                    is_there = is_there && model[static_cast<std::size_t>(i)] != now;
                    model.erase(model.begin() + i);
                    vector->erase(i, 1);
                    if (i < next) --next;
                    ended = !is_there && next == size - 1;
                } else if (++steps < 30) {
                    int const i = below(size + 1);
                    model.insert(model.begin() + i, made);
                    vector->insert(i, cat::of(made++));
                    if (i < next) ++next;
                }
            }
            if (ended) next = static_cast<int>(model.size());
        }
        ASSERT_EQ(next, static_cast<int>(model.size())) << round;
    }
}

TEST_F(Items, an_end_stays_an_end) {
    auto const map = letters(1);
    auto it = cat::items(map).begin();
    map->datamap().delitem("a");
    map->setattr(own_key(std::string("b")), cat::of(1));
    ++it;
    EXPECT_TRUE(it == cat::items(map).end());
    ++it;
    EXPECT_TRUE(it == cat::items(map).end());
}

TEST_F(Items, use_the_iterator_of_a_type) {
    typeref const type = make<cTypeObj>("walked");
    static objref inner;
    inner = letters(2);
    type->set_tmember("iterobj", make<cExeMember>(+[](objref) { return inner->iterobj(); }));
    {
        auto const object = make<cMapObj>(type.get(), false);
        EXPECT_EQ(walked(cat::items(object)), "a=0 b=1 ");
    }
    inner = nullptr;
}

// Compares with a walk over a std::list with the same changes, whose iterators stay valid.
TEST_F(Items, random_changes_during_walks_follow_the_model) {
    std::mt19937 random(4711);
    auto const pick = [&random](std::size_t count) { return random() % count; };
    for (int round = 0; round < 2000; ++round) {
        auto const map = make<cMapObj>();
        cAttrHash &hash = map->datamap();
        std::list<int> model;
        struct cWalk {
            cat::Items::iterator it;
            std::list<int>::iterator next; // the next entry
            bool on = true;                // the current entry exists
        };
        int last = 0;
        for (int i = 0; i < 6; ++i) {
            ++last;
            hash.insert(cat::of(last), cat::of(last), nullptr);
            model.push_back(last);
        }
        std::vector<cWalk> walks(3);
        std::vector<std::list<int>::iterator> at;
        for (cWalk &walk : walks) walk.it = cat::items(map).begin(), at.push_back(model.begin());
        for (int step = 0; step < 30; ++step) {
            std::size_t const w = pick(walks.size());
            switch (pick(3)) {
            case 0: { // a step
                if (walks[w].it == cat::Items::iterator()) break;
                ++walks[w].it;
                at[w] = walks[w].on ? std::next(at[w]) : walks[w].next;
                walks[w].on = true;
                break;
            }
            case 1: { // removes an entry
                if (model.empty()) break;
                auto const gone =
                    std::next(model.begin(), static_cast<std::ptrdiff_t>(pick(model.size())));
                for (std::size_t i = 0; i < walks.size(); ++i) {
                    if (walks[i].on && at[i] == gone) {
                        walks[i].on = false;
                        walks[i].next = std::next(gone);
                    } else if (!walks[i].on && walks[i].next == gone) {
                        walks[i].next = std::next(gone);
                    }
                }
                hash.delitem(cat::of(*gone));
                model.erase(gone);
                break;
            }
            default: { // inserts one before another
                if (model.empty()) break;
                auto const place =
                    std::next(model.begin(), static_cast<std::ptrdiff_t>(pick(model.size())));
                ++last;
                hash.insert(cat::of(last), cat::of(last), hash.find(*place));
                model.insert(place, last);
            }
            }
            for (std::size_t i = 0; i < walks.size(); ++i) {
                cat::Item const item = *walks[i].it;
                if (!walks[i].on)
                    ASSERT_TRUE(item.key() == nullptr);
                else if (at[i] == model.end())
                    ASSERT_TRUE(walks[i].it == cat::Items::iterator());
                else
                    ASSERT_EQ(cat::as_index(item.key()), *at[i]);
            }
        }
    }
}
