// Cursors compared with a model: entries are added and removed while cursors are stepped, copied
// and assigned, also to themselves and by assigning the maps that hold them. The methods of cursors
// are also called on objects that have the type of a cursor but are not cursors.
#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <algorithm>
#include <random>

namespace {

class CursorModel : public QrvTest {};
class CursorClaim : public QrvTest {};

using test::key;

// Returns its argument: assigning an object to itself without a compiler's warning.
cIterObj &self(cIterObj &it) { return it; }

// {a: 1, b: 2, c: 3} and a cursor at b.
struct cAtB {
    cRef<cMapObj> map = make<cMapObj>();
    cRef<cIterObj> it;
    cAtB() {
        int n = 0;
        for (char const *text : {"a", "b", "c"}) map->setattr(key(text), cat::of(++n));
        it = make<cIterObj>(map.get());
        it->setkey("b");
    }
};

// An object of the type "iterator" that is not a cursor.
objref claimed() {
    objref const claim = make<cMapObj>();
    claim->set_type(&cat::type_iterator());
    return claim;
}

} // namespace

TEST_F(CursorModel, a_cursor_at_a_deleted_node_is_assigned_to_itself) {
    cAtB at;
    at.map->datamap().delitem("b");
    *at.it = self(*at.it);
    EXPECT_FALSE(at.it->valid());
    *at.it = self(*at.it); // a second time
    EXPECT_TRUE(at.it->assign(at.it));
    EXPECT_FALSE(at.it->valid());
    EXPECT_EQ(at.it->valref(), cat::bad());
    EXPECT_TRUE(cObj::is_void(at.it->key()));
    ++*at.it; // from a deleted node to the end
    EXPECT_TRUE(*at.it == at.map->end());
}

TEST_F(CursorModel, a_cursor_at_an_existing_node_is_assigned_to_itself) {
    cAtB at;
    *at.it = self(*at.it);
    EXPECT_EQ(at.it->key_as_string(), "b");
    at.it->setpos(-1);
    *at.it = self(*at.it);
    EXPECT_TRUE(*at.it == at.map->end());
    cIterObj null;
    null = self(null);
    EXPECT_FALSE(null.valid());
}

TEST_F(CursorModel, two_maps_that_share_a_cursor_at_a_deleted_node_are_assigned) {
    cAtB at;
    auto const first = make<cMapObj>();
    auto const second = make<cMapObj>();
    for (cRef<cMapObj> const &map : {first, second}) map->setattr(key("it"), at.it);
    at.map->datamap().delitem("b");
    EXPECT_TRUE(first->assign(*second));
    EXPECT_TRUE(second->assign(*first));
    EXPECT_FALSE(at.it->valid());
    EXPECT_EQ(at.it->pos(), -1);
}

TEST_F(CursorModel, a_cursor_that_is_the_last_owner_of_its_hash_is_assigned_to_itself) {
    auto it = make<cIterObj>(make<cMapObj>().get());
    EXPECT_TRUE(it->empty());
    *it = self(*it);
    EXPECT_TRUE(it->empty());
    cAtB at;
    *it = *at.it;
    at.map = nullptr;
    at.it = nullptr;
    *it = self(*it);
    EXPECT_EQ(it->key_as_string(), "b");
}

namespace {

// The expected state of a cursor: a key, or that its node was deleted, or the end.
struct cModel {
    static constexpr int end = -1;
    static constexpr int deleted = -2;
    std::vector<int> keys; // in ring order
    std::vector<int> at;   // of each cursor

    int step(int place, int by) const {
        if (place == deleted) return end;
        auto const found = std::find(keys.begin(), keys.end(), place);
        auto const ring = static_cast<int>(keys.size()) + 1; // the end is a position, too
        int const next = (static_cast<int>(found - keys.begin()) + by + ring) % ring;
        return next == ring - 1 ? end : keys[static_cast<std::size_t>(next)];
    }
    void remove(int number) {
        keys.erase(std::remove(keys.begin(), keys.end(), number), keys.end());
        std::replace(at.begin(), at.end(), number, deleted);
    }
};

std::string shown(cIterObj const &it, cIterObj const &end) {
    if (it.valid()) return std::to_string(it.key_as_index());
    return it == end ? "end" : "deleted";
}

std::string shown(int place) {
    if (place == cModel::end) return "end";
    return place == cModel::deleted ? "deleted" : std::to_string(place);
}

} // namespace

TEST_F(CursorModel, random_steps_copies_and_assignments_while_entries_are_added_and_removed) {
    constexpr std::size_t cursors = 5;
    std::mt19937 random(10);
    auto const number = [&](std::size_t below) {
        return static_cast<std::size_t>(random() % below);
    };
    auto const map = make<cMapObj>();
    cIterObj const start = map->begin();
    std::vector<cIterObj> its(cursors, start);
    cModel model{{}, std::vector<int>(cursors, cModel::end)};
    auto const holder = make<cMapObj>();
    for (int i = 0; i < 20000; ++i) {
        std::size_t const a = number(cursors);
        std::size_t const b = number(cursors);
        int const k = static_cast<int>(number(8));
        switch (number(9)) {
        case 0:
        case 1:
            if (!map->datamap().find(k)) model.keys.push_back(k);
            map->setattr(own_key(k), cat::of(i));
            break;
        case 2:
            map->datamap().delitem(own_key(k));
            model.remove(k);
            break;
        case 3:
            its[a] = its[b];
            model.at[a] = model.at[b];
            break;
        case 4:
            its[a] = self(its[a]);
            break;
        case 5:
            ++its[a];
            model.at[a] = model.step(model.at[a], 1);
            break;
        case 6:
            --its[a];
            model.at[a] = model.step(model.at[a], -1);
            break;
        case 7:
            holder->setattr(key("it"), make<cIterObj>(its[a]));
            EXPECT_TRUE(its[b].assign(holder->getattr(key("it"))));
            model.at[b] = model.at[a];
            break;
        default:
            if (its[a].setkey(own_key(k))) model.at[a] = k;
        }
        for (std::size_t n = 0; n < cursors; ++n)
            ASSERT_EQ(shown(its[n], map->end()), shown(model.at[n])) << "step " << i;
    }
}

TEST_F(CursorClaim, the_methods_of_cursors_refuse_objects_that_only_claim_the_type) {
    objref const claim = claimed();
    cErrorLog errors;
    for (char const *text : {"key", "value", "pos"})
        EXPECT_EQ(claim->getattr(key(text)), cat::bad());
    EXPECT_FALSE(claim->setattr(key("value"), cat::of(1)));
    EXPECT_FALSE(claim->assign(make<cIterObj>()));
    EXPECT_FALSE(claim->assign(claimed()));
    EXPECT_FALSE(claim->assign(claim));
    EXPECT_FALSE(claim->equal(make<cIterObj>()));
    EXPECT_FALSE(claim->equal(claimed()));
    EXPECT_EQ(claim->call("size"), cat::bad());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(CursorClaim, a_cursor_copies_no_position_from_an_object_that_only_claims_the_type) {
    cAtB at;
    EXPECT_FALSE(at.it->assign(claimed()));
    EXPECT_FALSE(at.it->equal(claimed()));
    EXPECT_EQ(at.it->key_as_string(), "b");
}

TEST_F(CursorClaim, the_dump_of_a_claimed_container_has_the_header_of_any_object) {
    messages();
    for (cTypeObj *type : {&cat::type_map(), &cat::type_vector()}) {
        objref const claim = cat::of(1);
        claim->set_type(type);
        cTomIterator::dump(*claim);
        EXPECT_EQ(messages(), "cObj of type = " + type->name() + "  has void iterator\n");
    }
}
