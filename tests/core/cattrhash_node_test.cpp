// Nodes of the attribute hash, and the orders of nodes.
#include "qrv/core/cattrhash.h"

#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <climits>
#include <cmath>
#include <memory>
#include <sstream>

namespace {

class NodeTest : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    void fill(std::initializer_list<char const *> keys) {
        int value = 0;
        for (char const *key : keys) hash.mapitem(key, cat::of(++value));
    }
};
class NodeEdge : public NodeTest {};
class Node : public NodeTest {};

} // namespace

TEST_F(NodeEdge, a_key_that_is_inserted_again_is_a_new_node_in_the_first_tombstone) {
    fill({"a", "k", "b"});
    cAttrNode const *const old = hash.find("k");
    std::uint32_t const anid = old->anid(), h = cAttrHashProbe::hash_of(old);
    ASSERT_EQ(h, static_cast<std::uint32_t>('k'));
    cSlotWord *const slot = cAttrHashProbe::slot(old);
    EXPECT_EQ(slot, &cAttrHashProbe::word(hash, h % 97));
    hash.delitem("k");
    EXPECT_EQ(*slot, 1u);
    EXPECT_EQ(hash.used(), 2u);
    hash.mapitem("k", cat::of(9));
    EXPECT_EQ(cAttrHashProbe::slot(hash.find("k")), slot);
    EXPECT_EQ(hash.last(), hash.find("k"));
    EXPECT_GT(hash.last()->anid(), anid);
    EXPECT_EQ(hash.used(), 3u);
}

TEST_F(Node, a_colliding_key_steps_by_its_hash_mod_size_minus_2_plus_1) {
    for (int key : {3, 100, 197 * 97 + 3}) hash.mapitem(cat::of(key), cat::nil()); // 3 mod 97
    auto const place = [&](int key) {
        return cAttrHashProbe::slot(hash.find(key)) - &cAttrHashProbe::word(hash, 0);
    };
    EXPECT_EQ(place(3), 3);
    EXPECT_EQ(place(100), 3 + 100 % 95 + 1);
    EXPECT_EQ(place(197 * 97 + 3), (3 + (197 * 97 + 3) % 95 + 1) % 97);
}

TEST_F(Node, a_detached_link_points_to_itself) {
    cAttrNode const node(cat::of("a"));
    EXPECT_TRUE(node.is_detached());
    EXPECT_EQ(node.next(), &node);
    EXPECT_EQ(node.prev(), &node);
    EXPECT_EQ(node.valref(), cat::nil());
    EXPECT_EQ(node.map(), nullptr);
    EXPECT_EQ(cAttrHashProbe::hash_of(&node), 0xFFFFFFFFu);
    EXPECT_EQ(hash.next(&node), nullptr);
    EXPECT_EQ(hash.prev(&node), nullptr);
}

TEST_F(Node, the_accessors_of_a_node_return_its_parts) {
    hash.mapitem(cat::of(7), cat::of("v"));
    cAttrNode *const node = hash.first();
    EXPECT_EQ(node->key_as_string(), "7");
    EXPECT_EQ(node->key_as_index(), 7);
    EXPECT_EQ(&node->value(), node->valref().get());
    EXPECT_EQ(&**node, node->valref().get());
    EXPECT_EQ(&(*node)->type(), &cat::type_string());
    node->valref_() = objref();
    EXPECT_EQ(&node->value(), cat::bad().get());
    cAttrNode const text(cat::of("a"));
    EXPECT_EQ(text.key_as_index(), INT_MIN);
    EXPECT_EQ(text.key_as_string(), "a");
}

TEST_F(Node, the_accessors_of_a_null_node_return_defaults) {
    cAttrNode *const none = nullptr;
    EXPECT_EQ(cAttrNode::key(none), nullptr);
    EXPECT_EQ(cAttrNode::key_as_string(none), "");
    EXPECT_EQ(cAttrNode::key_as_index(none), INT_MIN);
    EXPECT_EQ(cAttrNode::valref(none), cat::bad());
    EXPECT_EQ(&cAttrNode::value(none), cat::bad().get());
    EXPECT_EQ(cAttrNode::anid(none), 0u);
    EXPECT_EQ(cAttrNode::map(none), nullptr);
    EXPECT_FALSE(cAttrNode::detach(none));
    EXPECT_EQ(&cAttrNode::assign(none, cat::of(1)), &nil_attr());
    cAttrNode const *const no_source = nullptr;
    EXPECT_EQ(&cAttrNode::assign(none, no_source), &nil_attr());
    hash.mapitem("a", cat::of(1));
    EXPECT_EQ(&cAttrNode::assign(hash.first(), no_source), hash.first());
    EXPECT_EQ(hash.getitem("a"), cat::bad());
}

TEST_F(Node, a_node_is_written_with_key_and_value) {
    hash.mapitem("a b", cat::of(5));
    std::ostringstream os;
    EXPECT_TRUE(hash.first()->write(os));
    EXPECT_TRUE(cAttrNode::write(nullptr, os));
    EXPECT_EQ(os.str(), "a b=5; =#bad; ");
    os.setstate(std::ios::failbit);
    EXPECT_FALSE(hash.first()->write(os));
}

TEST_F(Node, nil_attr_is_one_node_that_never_changes) {
    cAttrNode &node = nil_attr();
    EXPECT_EQ(&nil_attr(), &node);
    EXPECT_EQ(node.key_as_string(), "nil_attr");
    EXPECT_EQ(node.valref(), cat::nil());
    EXPECT_EQ(node.map(), nullptr);
    EXPECT_EQ(&(node = cat::of(1)), &node);
    EXPECT_EQ(&(node = objref()), &node);
    EXPECT_EQ(node.valref(), cat::nil());
}

TEST_F(Node, serial_numbers_grow_and_a_copy_gets_a_new_one) {
    cAttrNode const a(cat::of("a"), cat::of(1)), b(cat::of("b"));
    EXPECT_EQ(b.anid(), a.anid() + 1);
    hash.mapitem("a", cat::of(1));
    hash.flags(3);
    cAttrNode *const copy = cAttrHashProbe::copy(*hash.first());
    EXPECT_GT(copy->anid(), hash.first()->anid());
    EXPECT_EQ(copy->flags(), 3);
    EXPECT_EQ(copy->map(), nullptr);
    EXPECT_EQ(copy->valref(), hash.getitem("a"));
    EXPECT_NE(copy->key(), hash.first()->key());
    EXPECT_TRUE(copy->is_detached());
    delete copy;
}

TEST_F(Node, assigning_to_a_node_shares_the_value) {
    hash.mapitem("a", cat::of(1));
    hash.mapitem("b", cat::of(2));
    cAttrNode &a = *hash.find("a");
    objref const value = cat::of(3);
    EXPECT_EQ(&(a = value), &a);
    EXPECT_EQ(a.valref(), value);
    EXPECT_EQ(&(a = *hash.find("b")), &a);
    EXPECT_EQ(a.valref(), hash.find("b")->valref());
    EXPECT_EQ(&(a = value.get()), &a);
    EXPECT_EQ(value->refs(), 2u);
    EXPECT_EQ(ring(hash), "a=3 b=2 ");
}

TEST_F(Node, assigning_a_kill_value_removes_the_node) {
    fill({"a", "b", "c"});
    EXPECT_EQ(&(*hash.find("a") = objref()), &nil_attr());
    EXPECT_EQ(&(*hash.find("b") = cat::badfind()), &nil_attr());
    cObj const *const none = nullptr;
    EXPECT_EQ(&(*hash.find("c") = none), &nil_attr());
    EXPECT_TRUE(hash.empty());
    cAttrNode free_node(cat::of("a"), cat::of(1));
    EXPECT_EQ(&(free_node = objref()), &free_node);
    EXPECT_EQ(val<int>(free_node.valref()), 1);
}

TEST_F(Node, a_locked_type_refuses_another_type) {
    hash.mapitem("k e", cat::of(1));
    hash.flags(2);
    cAttrNode &node = *hash.first();
    cErrorLog errors;
    EXPECT_EQ(&(node = cat::of("text")), &node);
    EXPECT_EQ(errors.text(), "0x40400000 cAttrNode, key: \"k e\"  value type: int  Flags do not "
                             "allow operator=\n");
    EXPECT_EQ(&(node = cat::nil()), &node);
    EXPECT_EQ(errors.count(), 2u);
    EXPECT_EQ(val<int>(node.valref()), 1);
    node = cat::of(2);
    EXPECT_EQ(val<int>(node.valref()), 2);
    objref const same = node.valref();
    node = same;
    EXPECT_EQ(errors.count(), 2u);
    hash.mapitem("k e", cat::of("text")); // mapitem ignores the flags
    EXPECT_EQ(ring(hash), "k e=text ");
    node = objref(); // a removal ignores them, too
    EXPECT_TRUE(hash.empty());
}

TEST_F(Node, a_locked_type_allows_replacing_nil_and_flag_1_locks_nothing) {
    hash.mapitem("a", cat::nil());
    hash.flags(2);
    *hash.first() = cat::of(1);
    EXPECT_EQ(ring(hash), "a=1 ");
    hash.flags(1);
    *hash.first() = cat::of("text");
    EXPECT_EQ(ring(hash), "a=text ");
}

TEST_F(Node, a_held_node_is_empty_and_dead_after_its_deletion) {
    hash.mapitem("a", cat::of(1));
    cAttrNode *const node = hash.first();
    node->hold();
    EXPECT_FALSE(node->is_dead());
    hash.delitem("a");
    EXPECT_TRUE(node->is_dead());
    EXPECT_EQ(node->key(), nullptr);
    EXPECT_EQ(node->valref(), nullptr);
    EXPECT_EQ(node->map(), nullptr);
    EXPECT_TRUE(node->is_detached());
    EXPECT_EQ(hash.next(node), nullptr);
    EXPECT_EQ(&node->value(), cat::bad().get());
    EXPECT_EQ(&(*node = cat::of(1)), &nil_attr());
    EXPECT_EQ(node->valref(), nullptr);
    hash.mapitem("a", cat::of(2));
    EXPECT_NE(hash.first(), node); // the memory is still in use
    node->unhold();
}

TEST_F(Node, a_node_that_is_deleted_directly_leaves_its_table) {
    fill({"a", "b"});
    delete hash.find("a");
    EXPECT_EQ(ring(hash), "b=2 ");
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Node, the_anchor_is_not_a_node) {
    fill({"a"});
    EXPECT_EQ(hash.node_at(hash.anchor()), nullptr);
    EXPECT_EQ(hash.anchor()->next(), hash.first());
    EXPECT_EQ(hash.node_at(hash.anchor()->next()), hash.first());
    EXPECT_EQ(hash.node_at(hash.first()->cAttrNode::cLink::next()), nullptr);
    EXPECT_EQ(hash.node_at(nullptr), nullptr);
}

// --- orders

TEST_F(Node, keys_are_ordered_by_less_and_types_by_name) {
    cAttrNode const a(cat::of("a")), b(cat::of("b")), one(cat::of(1));
    EXPECT_TRUE(keyord(a, b));
    EXPECT_FALSE(keyord(b, a));
    EXPECT_TRUE(keyord(one, a));      // "int" before "string"
    EXPECT_TRUE(keyord(nullptr, &a)); // "niltype" before "string"
    EXPECT_FALSE(keyord(nullptr, &one));
}

TEST_F(Node, value_order_puts_maps_before_vectors_before_the_rest) {
    auto const node_of = [](char const *key, objref const &value) {
        return std::make_unique<cAttrNode>(cat::of(key), value);
    };
    objref const set = cat::type_set().newobj();
    auto const map_a = node_of("a", cat::type_map().newobj());
    auto const map_b = node_of("b", cat::type_map().newobj());
    auto const vector_a = node_of("a", cat::type_vector().newobj());
    auto const vector_b = node_of("b", cat::type_vector().newobj());
    auto const set_a = node_of("a", set);
    auto const one = node_of("z", cat::of(1)), two = node_of("y", cat::of(2));
    EXPECT_TRUE(valord(*one, *two));
    EXPECT_FALSE(valord(*two, *one));
    EXPECT_TRUE(valord(*map_a, *map_b));
    EXPECT_FALSE(valord(*map_b, *map_a));
    EXPECT_TRUE(valord(*map_b, *vector_a));
    EXPECT_FALSE(valord(*vector_a, *map_b));
    EXPECT_TRUE(valord(*vector_a, *vector_b));
    EXPECT_FALSE(valord(*vector_b, *vector_a));
    EXPECT_TRUE(valord(*vector_b, *set_a));
    EXPECT_TRUE(valord(*map_b, *one));
    EXPECT_TRUE(valord(*vector_b, *one));
    EXPECT_FALSE(valord(*set_a, *one));
    EXPECT_FALSE(valord(*one, *set_a));
    EXPECT_FALSE(valord(*one, *map_a));
}

TEST_F(Node, nodes_can_be_ordered_by_creation) {
    objref const first = cat::of(1), second = cat::of(2);
    cAttrNode const a(cat::of("a"), second), b(cat::of("b"), first);
    EXPECT_TRUE(obidord(b, a));
    EXPECT_FALSE(obidord(a, b));
    EXPECT_TRUE(obidord(nullptr, &a)); // bad is older than all objects of programs
    EXPECT_FALSE(obidord(&a, nullptr));
    EXPECT_TRUE(anidord(a, b));
    EXPECT_FALSE(anidord(b, a));
    EXPECT_TRUE(anidord(nullptr, &a));
    EXPECT_FALSE(anidord(&a, nullptr));
    EXPECT_FALSE(anidord(nullptr, nullptr));
}

TEST_F(Node, sorting_by_serial_number_restores_the_order_of_creation) {
    fill({"c", "a", "b"});
    hash.insert(cat::of("d"), cat::of(4), hash.first());
    std::vector<cAttrNode *> nodes = cat::nodes_of(hash);
    EXPECT_EQ(nodes.front()->key_as_string(), "d");
    cat::sort_nodes(nodes, anidord);
    std::string order;
    for (cAttrNode const *node : nodes) order += node->key_as_string();
    EXPECT_EQ(order, "cabd");
    cat::sort_nodes(nodes, keyord);
    order.clear();
    for (cAttrNode const *node : nodes) order += node->key_as_string();
    EXPECT_EQ(order, "abcd");
}

TEST_F(Node, sorting_is_stable_and_stays_in_range_with_senseless_orders) {
    for (int i = 0; i < 100; ++i) hash.mapitem(cat::of(i), cat::of(i % 3));
    std::vector<cAttrNode *> nodes = cat::nodes_of(hash);
    cat::sort_nodes(nodes, [](cAttrNode const *a, cAttrNode const *b) {
        return val<int>(a->valref()) < val<int>(b->valref());
    });
    for (size_t i = 1; i < nodes.size(); ++i) {
        int const a = val<int>(nodes[i - 1]->valref()), b = val<int>(nodes[i]->valref());
        EXPECT_TRUE(a < b || (a == b && nodes[i - 1]->key_as_index() < nodes[i]->key_as_index()));
    }
    cat::sort_nodes(nodes, [](cAttrNode const *, cAttrNode const *) { return true; });
    cAttrHash numbers(nullptr);
    for (int i = 0; i < 50; ++i)
        numbers.mapitem(cat::of(i), cat::of(i % 2 ? std::nan("") : static_cast<double>(-i)));
    nodes = cat::nodes_of(numbers);
    cat::sort_nodes(nodes, valord);
    cat::sort_nodes(nodes, obidord);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(nodes[static_cast<size_t>(i)]->key_as_index(), i);
    nodes.clear();
    cat::sort_nodes(nodes, keyord);
    EXPECT_TRUE(nodes.empty());
}
