// Cursors.
#include "qrv/containers/citerobj.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <concepts>

namespace {

class CursorEdge : public QrvTest {};
class Cursor : public QrvTest {};

using test::key;

// {a: 1, b: 2, c: 3}
cRef<cMapObj> abc() {
    auto map = make<cMapObj>();
    int n = 0;
    for (char const *text : {"a", "b", "c"}) map->setattr(key(text), cat::of(++n));
    return map;
}

constexpr int lowest = -2147483647 - 1;

} // namespace

TEST_F(CursorEdge, the_first_position_of_an_empty_map_is_its_end) {
    auto const map = make<cMapObj>();
    EXPECT_TRUE(map->begin() == map->end());
    EXPECT_FALSE(map->begin().valid());
}

TEST_F(CursorEdge, a_default_cursor_has_no_hash) {
    cIterObj it;
    EXPECT_EQ(it.size(), 0);
    EXPECT_TRUE(it.empty());
    EXPECT_FALSE(it.setpos(0));
    EXPECT_FALSE(it.setpos(-1));
    EXPECT_FALSE(it.setkey("a"));
    EXPECT_TRUE(it.key() == nullptr);
    EXPECT_EQ(&it.value(), cat::bad().get());
    EXPECT_EQ(it.key_as_index(), lowest);
    EXPECT_EQ(it.key_as_string(), "");
    EXPECT_FALSE(cIterObj::valid(nullptr));
}

TEST_F(CursorEdge, a_step_from_the_last_entry_leads_to_the_end_and_another_to_the_first) {
    auto const map = abc();
    cIterObj it = map->begin();
    EXPECT_TRUE(it.setpos(-2));
    EXPECT_EQ(it.key_as_string(), "c");
    ++it;
    EXPECT_TRUE(it == map->end());
    ++it;
    EXPECT_EQ(it.key_as_string(), "a");
    --it;
    EXPECT_TRUE(it == map->end());
    --it;
    EXPECT_EQ(it.key_as_string(), "c");
}

TEST_F(CursorEdge, pos_is_minus_one_after_the_node_was_deleted) {
    auto const map = abc();
    cIterObj it = map->begin();
    map->datamap().delitem("a");
    EXPECT_EQ(it.pos(), -1);
    EXPECT_FALSE(it.update());
    EXPECT_EQ(it.pos(), -1);
    EXPECT_EQ(it.node(), nullptr);
}

TEST_F(CursorEdge, setpos_at_the_size_does_not_move) {
    auto const map = abc();
    cIterObj it = map->begin();
    EXPECT_TRUE(it.setpos(1));
    EXPECT_FALSE(it.setpos(3));
    EXPECT_EQ(it.key_as_string(), "b");
    EXPECT_TRUE(it.setpos(2));
    EXPECT_EQ(it.pos(), 2);
}

TEST_F(Cursor, a_walk_forward_or_back_visits_each_entry) {
    auto const map = abc();
    std::string visited;
    for (cIterObj it = map->begin(); it != map->end(); ++it)
        visited += it.key_as_string() + cat::as_string(it.valref()) + " ";
    for (cIterObj it = --map->end(); it; --it) visited += it.key_as_string();
    EXPECT_EQ(visited, "a1 b2 c3 cba");
    cIterObj it = map->begin();
    EXPECT_EQ((it++).key_as_string(), "a");
    EXPECT_EQ((it--).key_as_string(), "b");
    EXPECT_EQ(it.key_as_string(), "a");
}

TEST_F(Cursor, setpos_below_minus_two_moves_to_the_first_entry) {
    auto const map = abc();
    cIterObj it = map->end();
    EXPECT_TRUE(it.setpos(-3));
    EXPECT_EQ(it.key_as_string(), "a");
    cIterObj empty(cMapObj().datamap_ref());
    EXPECT_FALSE(empty.setpos(0));
    EXPECT_FALSE(empty.setpos(-2));
    EXPECT_TRUE(empty.setpos(-1));
}

TEST_F(Cursor, a_cursor_finds_a_key) {
    auto const map = abc();
    cIterObj it = map->begin();
    EXPECT_TRUE(it.setkey("c"));
    EXPECT_EQ(it.pos(), 2);
    EXPECT_FALSE(it.setkey("x"));
    EXPECT_EQ(it.pos(), 2);
    EXPECT_FALSE(it.setkey(objref()));
}

TEST_F(Cursor, the_hash_outlives_its_map) {
    auto map = abc();
    cIterObj it = map->begin();
    map = nullptr;
    EXPECT_EQ(it.size(), 3);
    EXPECT_EQ(it.key_as_string(), "a");
    EXPECT_TRUE(cat::is_equal(it.valref(), 1));
}

TEST_F(Cursor, the_value_of_a_deleted_node_is_bad_and_a_step_leads_to_the_end) {
    auto const map = abc();
    for (bool forward : {true, false}) {
        map->setattr(key("x"), cat::of(9));
        cIterObj it = map->begin();
        it.setkey("x");
        cIterObj const other = it;
        map->datamap().delitem("x");
        EXPECT_FALSE(it.valid());
        EXPECT_FALSE(it.valid_value());
        EXPECT_EQ(&it.value(), cat::bad().get());
        EXPECT_TRUE(it.valref() == cat::bad());
        EXPECT_TRUE(it.key() == nullptr);
        EXPECT_FALSE(other.valid());
        forward ? ++it : --it;
        EXPECT_TRUE(it == map->end());
    }
}

TEST_F(Cursor, a_cursor_stays_invalid_when_its_key_is_inserted_again) {
    auto const map = abc();
    cIterObj it = map->begin();
    map->datamap().delitem("a");
    map->setattr(key("a"), cat::of(9));
    EXPECT_FALSE(it.valid());
    EXPECT_FALSE(it.update());
}

TEST_F(Cursor, clearing_the_map_makes_all_positions_invalid) {
    auto const map = abc();
    cIterObj first = map->begin(), end = map->end();
    map->clear();
    EXPECT_FALSE(first.valid());
    EXPECT_FALSE(first.update());
    EXPECT_TRUE(end == map->end());
    EXPECT_FALSE(end.update());
    EXPECT_EQ(end.node(), nullptr);
}

TEST_F(Cursor, update_keeps_a_valid_position) {
    auto const map = abc();
    cIterObj it = map->begin();
    map->datamap().delitem("b");
    EXPECT_TRUE(it.update());
    EXPECT_EQ(it.pos(), 0);
}

TEST_F(Cursor, objects_without_iterator_return_equal_invalid_cursors) {
    objref const number = cat::of(1);
    EXPECT_TRUE(number->begin() == number->end());
    EXPECT_FALSE(number->begin().valid());
    EXPECT_EQ(number->begin().hash(), nullptr);
}

TEST_F(Cursor, a_cursor_is_copied_rewound_or_created_from_an_object) {
    auto const map = abc();
    cIterObj it = map->begin();
    it.setpos(2);
    EXPECT_EQ(cIterObj(it).pos(), 2);
    EXPECT_EQ(cIterObj(it, true).pos(), 0);
    EXPECT_EQ(cIterObj(map.get()).pos(), 0);
    EXPECT_FALSE(cIterObj(static_cast<cObj *>(nullptr)).valid());
    EXPECT_FALSE(cIterObj(hashref()).valid());
    cIterObj other;
    other = it;
    EXPECT_EQ(other.pos(), 2);
    other = static_cast<cObj const &>(cIterObj(it, true));
    EXPECT_EQ(other.pos(), 0);
    EXPECT_EQ(&other.type(), &cat::type_iterator());
}

TEST_F(Cursor, void_values_are_not_valid_values) {
    auto const map = abc();
    map->setattr(key("a"), cat::nil());
    EXPECT_TRUE(map->begin().valid());
    EXPECT_FALSE(map->begin().valid_value());
    map->begin().node()->valref_() = nullptr;
    EXPECT_FALSE(map->begin().valid_value());
    EXPECT_EQ(&map->begin().value(), cat::bad().get());
}

TEST_F(Cursor, an_iterator_object_has_the_attributes_key_value_and_pos) {
    auto const map = abc();
    objref const it = map->iterobj();
    EXPECT_EQ(cat::as_string(it->getattr(key("key"))), "a");
    EXPECT_TRUE(cat::is_equal(it->getattr(key("value")), 1));
    EXPECT_TRUE(cat::is_equal(it->getattr(key("pos")), 0));
    EXPECT_TRUE(it->getattr(key("other")) == cat::bad());
    EXPECT_TRUE(it->getattr(own_key(1)) == cat::bad());
    EXPECT_TRUE(cat::is_equal(it->call("size"), 3));
    EXPECT_TRUE(it->setattr(key("value"), cat::of(7)));
    EXPECT_TRUE(cat::is_equal(map->getattr(key("a")), 7));
    EXPECT_FALSE(it->setattr(key("key"), cat::of(7)));
    EXPECT_TRUE(it->setattr(key("value"), objref())); // removes the node
    EXPECT_EQ(map->size(), 2);
    EXPECT_FALSE(it->setattr(key("value"), cat::of(7)));
    EXPECT_TRUE(it->getattr(key("value")) == cat::bad());
}

TEST_F(Cursor, iterators_are_assigned_only_from_iterators) {
    auto const map = abc();
    objref const it = map->iterobj(), other = cat::type_iterator().newobj();
    EXPECT_FALSE(it->equal(*other));
    EXPECT_TRUE(other->assign(*it));
    EXPECT_TRUE(it->equal(*other));
    {
        cErrorLog errors;
        EXPECT_FALSE(other->assign(*cat::of(1)));
        EXPECT_EQ(errors.text(), "0x41000000 Method 'assign' called from other type: int\n");
    }
    cat::errhandler() = cErrHandler(0, 0x01000000u, 0xFFFFFFFFu);
    EXPECT_TRUE(other->assign(*cat::of(1)));
    EXPECT_TRUE(it->equal(*other));
}

namespace {

// The listing with addresses replaced.
std::string without_addresses(std::string text) {
    for (size_t at = text.find("ptr=0x"); at != std::string::npos; at = text.find("ptr=0x", at)) {
        size_t const end = text.find(' ', at);
        text.replace(at, end - at, "ptr=ADDRESS");
    }
    return text;
}

} // namespace

TEST_F(Cursor, dump_lists_entries_or_the_number_of_own_members) {
    auto const map = abc();
    map->setattr(key("b"), cat::of("x y"));
    cTomIterator::dump(*map);
    EXPECT_EQ(without_addresses(messages()), "cMapObj,  size =3\n"
                                             "a  ptr=ADDRESS  1\n"
                                             "b  ptr=ADDRESS  \"x y\"\n"
                                             "c  ptr=ADDRESS  3\n");
    cVectorObj v;
    v.append(cat::of(5));
    cTomIterator::dump(v);
    EXPECT_EQ(without_addresses(messages()), "cVectorObj,  size =1\n0  ptr=ADDRESS  5\n");
    objref const number = cat::of(1);
    cTomIterator::dump(*number);
    EXPECT_EQ(messages(), "cObj of type = int  has void iterator\n");
    number->set_omember("m", cat::of(1));
    cTomIterator::dump(*number);
    EXPECT_EQ(messages(), "cObj of type = int  ommap-size =1\n");
}

template <class A, class B>
concept cThreeWay = requires(A a, B b) {
    a <=> b;
};

TEST_F(Cursor, a_cursor_has_no_three_way_comparison) {
    static_assert(!cThreeWay<cIterObj &, cIterObj const &>);
    static_assert(!cThreeWay<cIterObj &, bool> && !cThreeWay<bool, cIterObj &>);
    static_assert(std::equality_comparable<cIterObj>);
    auto map = abc();
    EXPECT_TRUE(map->begin() == map->begin() && map->begin() != map->end());
}
