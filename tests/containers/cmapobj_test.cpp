// Maps: construction, keys and values, and members.

#include "qrv/containers/cmapobj.h"

#include "qrv/core/cexe.h"
#include "tests/containers/map_support.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <type_traits>

using namespace trees;

namespace {

class MapObj : public QrvTest {};
class MapEdge : public QrvTest {};

// --- edges

TEST_F(MapEdge, nil_is_stored_and_badfind_or_null_removes) {
    mapref const m = map({{"a", 1}, {"b", 2}, {"c", 3}});
    EXPECT_TRUE(m->setattr(of("a"), cat::nil()));
    EXPECT_TRUE(m->setattr(of("b"), cat::badfind()));
    EXPECT_TRUE(m->setattr(of("c"), nullptr));
    EXPECT_EQ(shape(m), "{a=nil}");
    EXPECT_EQ(m->getattr(of("a")), cat::nil());
    EXPECT_EQ(m->getattr(of("b")), cat::badfind());
}

TEST_F(MapEdge, an_implied_attribute_becomes_nil_and_stays) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_implied));
    for (objref const &nothing : {cat::nil(), objref(), cat::badfind()}) {
        ASSERT_TRUE(m->setattr(of("a"), of(5)));
        EXPECT_TRUE(m->setattr(of("a"), nothing));
        EXPECT_EQ(shape(m), "{a=nil}");
    }
}

TEST_F(MapEdge, a_map_may_hold_itself_but_not_its_owner) {
    mapref const m = map();
    EXPECT_TRUE(m->setattr(of("k"), m));
    m->clear();
    mapref const a = map();
    mapref const b = map({{"a", a}});
    cErrorLog errors;
    EXPECT_FALSE(a->setattr(of("k"), b));
    EXPECT_EQ(errors.text(), "0x40020000 Setattr in object type 'map', key 'k':  Trial to "
                             "establish cRef in cycle\n");
    EXPECT_EQ(shape(b), "{a={}}");
}

TEST_F(MapEdge, const_keys_let_a_present_key_be_written_and_refuse_a_new_one) {
    mapref const m = map({{"a", 1}});
    m->setflags(of_const_keys);
    EXPECT_TRUE(m->setattr(of("a"), of(2)));
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("b"), of(3)));
    EXPECT_EQ(errors.text(), "0x40020000 Setattr in object type 'map', key 'b':   Flag of const "
                             "key set offended\n");
    EXPECT_EQ(shape(m), "{a=2}");
}

TEST_F(MapEdge, adding_a_scalar_does_nothing_and_is_true) {
    mapref const m = map({{"a", 1}});
    EXPECT_TRUE(m->add(of(5)));
    EXPECT_EQ(shape(m), "{a=1}");
}

TEST_F(MapEdge, appending_uses_the_key_after_the_greatest_index) {
    mapref const m = map();
    EXPECT_TRUE(m->append(of("x")));
    EXPECT_EQ(shape(m), "{0=x}");
    mapref const n = map({{0, "p"}, {"a", "q"}});
    EXPECT_TRUE(n->append(of("x")));
    EXPECT_EQ(shape(n), "{0=p, a=q, 1=x}");
    mapref const only_text = map({{"a", 1}});
    EXPECT_TRUE(only_text->append(of("x")));
    EXPECT_EQ(shape(only_text), "{a=1, 0=x}");
}

TEST_F(MapEdge, pairs_in_another_order_are_unequal_but_equal_unsorted) {
    mapref const a = map({{"a", 1}, {"b", 2}});
    mapref const b = map({{"b", 2}, {"a", 1}});
    EXPECT_FALSE(a->equal(*b));
    EXPECT_TRUE(a->equal_unsorted(*b));
}

TEST_F(MapEdge, empty_children_are_removed_in_passes) {
    mapref const m = map({{"a", map()}, {"b", map({{"c", map()}})}});
    m->remove_emptychilds(false);
    EXPECT_EQ(shape(m), "{b={c={}}}");
    mapref const n = map({{"a", map()}, {"b", map({{"c", map()}})}});
    n->remove_emptychilds(true);
    EXPECT_EQ(shape(n), "{b={}}");
    n->remove_emptychilds(true);
    EXPECT_EQ(shape(n), "{}");
}

TEST_F(MapEdge, submap_replaces_an_int) {
    mapref const m = map({{"a", 1}});
    cMapObj &sub = m->submap("a");
    EXPECT_EQ(shape(m), "{a={}}");
    EXPECT_EQ(m->datamap().getitem("a").get(), &sub);
    EXPECT_EQ(sub.datamap().father(), &sub);
}

TEST_F(MapEdge, clearing_a_shared_hash_empties_it_for_all) {
    mapref const m = map({{"a", 1}});
    mapref const n = make<cMapObj>(m->datamap_ref());
    m->clear();
    EXPECT_EQ(n->size(), 0);
}

// --- construction

static_assert(!std::is_convertible_v<hashref, cMapObj>);
static_assert(!std::is_convertible_v<cObj const &, cMapObj>);
static_assert(std::is_copy_constructible_v<cMapObj>);
static_assert(!std::is_constructible_v<cMapObj, int>);

TEST_F(MapObj, a_new_map_owns_a_new_hash) {
    mapref const m = map();
    EXPECT_EQ(&m->type(), &cat::type_map());
    EXPECT_EQ(m->datamap().father(), m.get());
    EXPECT_EQ(m->datamap().slots(), 97u);
    EXPECT_EQ(m->entrytype(), nullptr);
}

TEST_F(MapObj, a_given_hash_is_shared_and_keeps_its_father) {
    mapref const m = map({{"a", 1}});
    mapref const n = make<cMapObj>(m->datamap_ref());
    EXPECT_EQ(&n->datamap(), &m->datamap());
    EXPECT_EQ(n->datamap().father(), m.get());
    hashref const loose = make<cAttrHash>(nullptr);
    mapref const first = make<cMapObj>(loose);
    EXPECT_EQ(loose->father(), first.get());
    mapref const none = make<cMapObj>(hashref());
    EXPECT_EQ(none->datamap().father(), none.get());
}

TEST_F(MapObj, a_copy_has_the_content_and_flags_but_no_entry_type) {
    mapref const m = map({{"a", 1}});
    m->set_entrytype(&cat::type_int());
    m->setflags(of_const | 0x40);
    mapref const copy = make<cMapObj>(*m);
    EXPECT_EQ(shape(copy), "{a=1}");
    EXPECT_EQ(copy->flags(), of_const | 0x40);
    EXPECT_EQ(copy->entrytype(), nullptr);
    EXPECT_EQ(copy->datamap().getitem("a"), m->datamap().getitem("a"));
    cObj const &as_object = *m;
    mapref const second = make<cMapObj>(as_object);
    EXPECT_EQ(shape(second), "{a=1}");
    EXPECT_EQ(second->flags(), of_const | 0x40);
}

constinit int created = 0;
bool count_create(cObj &) {
    ++created;
    return true;
}

TEST_F(MapObj, create_runs_on_request) {
    cOwnType own;
    own.type.set_tmember("create", make<cExeMember>(count_create));
    created = 0;
    mapref const without = make<cMapObj>(&own.type, false);
    EXPECT_EQ(created, 0);
    mapref const with = make<cMapObj>(&own.type, true);
    EXPECT_EQ(created, 1);
    EXPECT_EQ(&with->type(), &own.type);
    mapref const nil_typed = make<cMapObj>(&cat::type_nil(), true);
    EXPECT_EQ(created, 1);
    EXPECT_TRUE(nil_typed->is_void());
}

TEST_F(MapObj, assignment_replaces_the_content) {
    mapref const m = map({{"a", 1}, {"b", 2}});
    mapref const n = map({{"b", 7}, {"c", 8}});
    objref const b = m->datamap().getitem("b");
    *m = *n;
    EXPECT_EQ(shape(m), "{b=7, c=8}");
    EXPECT_EQ(m->datamap().getitem("b"), b)
        << "the value of a key that both have is assigned in place";
    cObj const &object = *n;
    *m = object;
    EXPECT_EQ(shape(m), "{b=7, c=8}");
}

TEST_F(MapObj, a_hash_outlives_its_map) {
    mapref m = map({{"a", 1}});
    hashref const hash = m->datamap_ref();
    m = nullptr;
    EXPECT_EQ(hash->used(), 1u);
}

// --- access

TEST_F(MapObj, valref_creates_a_missing_key_and_returns_the_stored_reference) {
    mapref const m = map();
    EXPECT_EQ(m->valref_(of("a")), cat::nil());
    m->valref_("a") = of(7);
    EXPECT_EQ(shape(m), "{a=7}");
}

TEST_F(MapObj, valref_of_a_nil_key_is_scratch) {
    mapref const m = map();
    m->valref_(objref()) = cat::nil();
    EXPECT_FALSE(m->valref_(cat::nil()));
    EXPECT_EQ(m->size(), 0);
}

TEST_F(MapObj, values_are_found_by_equality_and_by_identity) {
    objref const one = of(1);
    mapref const m = map({{"a", 2}, {"b", one}, {"c", 1}});
    EXPECT_EQ(m->findvalue(*of(1)), one);
    EXPECT_EQ(m->findvalue(*of(9)), cat::badfind());
    EXPECT_EQ(m->findvalref(one), one);
    EXPECT_EQ(m->findvalref(one.get()), one);
    EXPECT_EQ(m->findvalref(of(1)), cat::badfind());
}

TEST_F(MapObj, submap_keeps_a_map_and_replaces_anything_else) {
    mapref const inner = map({{"x", 1}});
    mapref const m = map({{"a", inner}, {"v", vector()}});
    EXPECT_EQ(&m->submap("a"), inner.get());
    EXPECT_EQ(m->submap_ptr(of("v")), &m->submap(of("v")));
    m->submap("new").datamap().mapitem("y", of(2));
    EXPECT_EQ(shape(m), "{a={x=1}, v={}, new={y=2}}");
}

TEST_F(MapObj, submap_ignores_const_keys_and_specifications) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required, &cat::type_int()));
    m->setflags(of_const_keys);
    m->submap("a");
    m->submap("b");
    EXPECT_EQ(shape(m), "{a={}, b={}}");
}

TEST_F(MapObj, submap_of_a_nil_key_is_a_scratch_map_and_a_null_pointer) {
    mapref const m = map();
    std::uint32_t const before = cObjBase::ob_count();
    EXPECT_EQ(m->submap_ptr(objref()), nullptr);
    m->submap(cat::nil()).datamap().mapitem("x", cat::nil());
    EXPECT_EQ(m->submap(objref()).size(), 0);
    EXPECT_EQ(m->size(), 0);
    EXPECT_EQ(cObjBase::ob_count(), before);
}

TEST_F(MapObj, append_keys_adds_missing_keys_with_nil) {
    mapref const m = map({{"a", 1}});
    m->append_keys("a b", ' ');
    EXPECT_EQ(shape(m), "{a=1, b=nil}");
    m->append_keys("", ' ');
    m->append_keys("c,,d,", ',');
    EXPECT_EQ(shape(m), "{a=1, b=nil, c=nil, =nil, d=nil}");
    vectorref const v = vector();
    v->append_keys("a b", ' ');
    EXPECT_EQ(shape(v), "[]");
}

TEST_F(MapObj, append_keys_honours_const_keys) {
    mapref const m = map();
    m->setflags(of_const_keys);
    cErrorLog errors;
    m->append_keys("a,b", ',');
    EXPECT_EQ(errors.count(), 2u);
    EXPECT_EQ(m->size(), 0);
}

// --- members

TEST_F(MapObj, size_and_clear_are_methods) {
    mapref const m = map({{"a", 1}, {"b", 2}});
    EXPECT_EQ(shape(m->call("size")), "2");
    EXPECT_EQ(m->call("clear"), cat::nil());
    EXPECT_EQ(shape(m->call("size")), "0");
}

TEST_F(MapObj, the_type_holds_the_listed_members) {
    std::string keys;
    cAttrHash const &members = cat::type_map().tmmap();
    for (cAttrNode const *node = members.first(); node; node = members.next(node))
        keys += node->key_as_string() + " ";
    EXPECT_EQ(keys, "create write read equal iterobj newobj assign add setattr getattr append "
                    "size clear wformat cpcommands ");
    EXPECT_EQ(shape(cat::type_map().tmember("wformat")), "wc");
    EXPECT_EQ(shape(cat::type_map().tmember("cpcommands")), "0as");
    EXPECT_EQ(cat::type_map().flags_of(tf_container | tf_bare), tf_container | tf_bare);
    EXPECT_EQ(shape(cat::type_map().newobj()), "{}");
}

// --- objects that are not maps

TEST_F(MapObj, methods_refuse_objects_that_are_not_maps) {
    objref const five = of(5);
    objref key = of("k");
    objref value = of(1);
    EXPECT_FALSE(cTomMap::setattr(*five, key, value));
    EXPECT_EQ(cTomMap::getattr(five, key), cat::bad());
    EXPECT_TRUE(cTomMap::m_append(*five, value));
    objref other = map({{"a", 1}});
    EXPECT_TRUE(cTomMap::m_add(*five, other));
    EXPECT_FALSE(cTomMap::equal_sorted(*five, other));
}

} // namespace

TEST_F(MapObj, a_palette_equals_an_equal_palette) {
    cOwnType const own; // inherits from map, but is not a container
    auto const palette = [&](int red) {
        auto const made = make<cMapObj>(const_cast<cTypeObj *>(&own.type), true);
        made->datamap().mapitem("red", cat::of(red));
        return made;
    };
    auto const a = palette(1);
    EXPECT_FALSE(a->is_container());
    EXPECT_TRUE(a->equal(*palette(1)));
    EXPECT_TRUE(a->equal(*a));
    EXPECT_FALSE(a->equal(*palette(2)));
    EXPECT_TRUE(a->equal_unsorted(*palette(1)));
    EXPECT_FALSE(a->equal_unsorted(*palette(2)));
    objref arg = palette(1);
    EXPECT_TRUE(cTomMap::equal_sorted(*a, arg));
    EXPECT_TRUE(cTomMap::equal_unsorted(*a, arg));
    arg = palette(2);
    EXPECT_FALSE(cTomMap::equal_sorted(*a, arg));
}

TEST_F(MapObj, sequences_of_inherited_types_are_compared) {
    cTypeObj list("own_vector", nullptr);
    list.inherit(cat::type_vector());
    cTypeObj bag("own_set", nullptr);
    bag.inherit(cat::type_set());
    for (cTypeObj *type : {&list, &bag}) {
        auto const made = [&](int value) {
            auto const obj = make<cMapObj>(type, true);
            obj->datamap().vect_append(cat::of(value));
            return obj;
        };
        EXPECT_TRUE(made(1)->equal(*made(1))) << type->name();
        EXPECT_FALSE(made(1)->equal(*made(2))) << type->name();
    }
}
