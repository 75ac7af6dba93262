#include "qrv/containers/cmapobj.h"

#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/citerobj.h"
#include "qrv/core/cexe.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <type_traits>

using namespace trees;

namespace {

class MapObj : public QrvTest {};
class MapEdge : public QrvTest {};

specref spec_of(int flags, cTypeObj *type = nullptr) {
    return specref::adopt(new cAttspec(flags, type));
}
specref spec_with(objref const &value, int flags = 0) {
    return specref::adopt(new cAttspec(value, flags));
}

// A type whose objects are cMapObj, with methods of its own.
struct cOwnType {
    cTypeObj type{"own_map", nullptr};
    cOwnType() { type.inherit(cat::type_map()); }
};

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

TEST_F(MapEdge, appending_takes_the_key_behind_the_greatest_index) {
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

TEST_F(MapEdge, empty_children_go_by_passes_that_do_not_look_back) {
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

TEST_F(MapObj, a_copy_takes_content_and_flags_but_no_entry_type) {
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

TEST_F(MapObj, create_runs_where_it_is_asked_for) {
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
    EXPECT_EQ(m->datamap().getitem("b"), b) << "a key of both is assigned in place";
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

TEST_F(MapObj, valref_makes_a_missing_key_and_gives_the_stored_reference) {
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

TEST_F(MapObj, submap_goes_through_const_keys_and_specifications) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required, &cat::type_int()));
    m->setflags(of_const_keys);
    m->submap("a");
    m->submap("b");
    EXPECT_EQ(shape(m), "{a={}, b={}}");
}

TEST_F(MapObj, submap_of_a_nil_key_is_a_scratch_map_and_the_pointer_null) {
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

// --- setattr

TEST_F(MapObj, another_entry_type_is_refused_silently) {
    mapref const m = map({{"a", 1}});
    m->set_entrytype(&cat::type_int());
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("b"), of("text")));
    EXPECT_FALSE(m->setattr(of("b"), cat::nil()));
    EXPECT_TRUE(m->setattr(of("b"), of(2)));
    EXPECT_TRUE(m->setattr(of("a"), cat::badfind()));
    EXPECT_TRUE(m->setattr(of("c"), nullptr));
    EXPECT_EQ(errors.count(), 0u);
    EXPECT_EQ(shape(m), "{b=2}");
}

TEST_F(MapObj, the_entry_type_is_tested_before_the_cycle) {
    mapref const a = map();
    mapref const b = map({{"a", a}});
    a->set_entrytype(&cat::type_int());
    cErrorLog errors;
    EXPECT_FALSE(a->setattr(of("k"), b));
    EXPECT_EQ(errors.count(), 0u);
}

TEST_F(MapObj, the_cycle_is_tested_before_const_keys) {
    mapref const a = map();
    mapref const b = map({{"a", a}});
    a->setflags(of_const_keys);
    cErrorLog errors;
    EXPECT_FALSE(a->setattr(of("k"), b));
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_NE(errors.last_text().find("cycle"), std::string::npos);
}

// A handler that forgives lets the answer be true; nothing is stored all the same.
TEST_F(MapObj, a_forgiven_refusal_is_true_and_stores_nothing) {
    mapref const a = map();
    mapref const b = map({{"a", a}});
    cErrorLog errors;
    cat::errhandler().clear_mask(0x00020000U);
    EXPECT_TRUE(a->setattr(of("k"), b));
    a->setflags(of_const_keys);
    EXPECT_TRUE(a->setattr(of("k"), of(1)));
    EXPECT_EQ(a->size(), 0);
}

TEST_F(MapObj, a_kill_value_removes_even_under_const_keys) {
    mapref const m = map({{"a", 1}});
    m->setflags(of_const_keys);
    EXPECT_TRUE(m->setattr(of("a"), nullptr));
    EXPECT_EQ(m->size(), 0);
}

TEST_F(MapObj, a_nil_key_and_a_bad_value_are_refused) {
    mapref const m = map();
    EXPECT_FALSE(m->setattr(objref(), of(1)));
    EXPECT_FALSE(m->setattr(cat::nil(), of(1)));
    EXPECT_FALSE(m->setattr(of("a"), cat::bad()));
    EXPECT_EQ(m->size(), 0);
}

TEST_F(MapObj, a_fixed_reference_keeps_its_object) {
    mapref const m = map();
    objref const present = of(1);
    m->set_attspec("a", spec_with(of(9), asf_fixref));
    EXPECT_TRUE(m->setattr(of("a"), present)) << "nil stood there";
    EXPECT_TRUE(m->setattr(of("a"), present));
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("a"), of(1)));
    EXPECT_EQ(errors.text(), "0x40040000 FIXED REF attribute, key 'a' in object type 'map'\n");
    EXPECT_FALSE(m->setattr(of("a"), nullptr));
    EXPECT_EQ(m->datamap().getitem("a"), present);
}

TEST_F(MapObj, a_forgiven_fixed_reference_is_true_and_keeps_its_object) {
    mapref const m = map();
    objref const present = of(1);
    m->set_attspec("a", spec_with(of(9), asf_fixref));
    m->setattr(of("a"), present);
    cErrorLog errors;
    cat::errhandler().clear_mask(0x00040000U);
    EXPECT_TRUE(m->setattr(of("a"), of(2)));
    EXPECT_EQ(m->datamap().getitem("a"), present);
}

TEST_F(MapObj, nothing_stored_falls_back_to_the_shared_default) {
    objref const standard = of(9);
    mapref const m = map();
    m->set_attspec("a", spec_with(standard));
    for (objref const &nothing : {cat::nil(), objref(), cat::badfind()}) {
        ASSERT_TRUE(m->setattr(of("a"), of(1)));
        EXPECT_TRUE(m->setattr(of("a"), nothing));
        EXPECT_EQ(m->datamap().getitem("a"), standard);
    }
}

TEST_F(MapObj, nothing_stored_into_a_required_attribute_is_reported) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required));
    ASSERT_TRUE(m->setattr(of("a"), of(1)));
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("a"), cat::nil()));
    EXPECT_EQ(errors.text(),
              "0x40040000 REQUIRED attribute, key 'a' in object type 'map'  is missed\n");
    EXPECT_EQ(shape(m), "{a=1}");
}

TEST_F(MapObj, a_fixed_type_refuses_other_types) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_implied, &cat::type_int()));
    EXPECT_TRUE(m->setattr(of("a"), of(1)));
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("a"), of("x")));
    EXPECT_EQ(errors.text(), "0x40040000 FIXED TYPE attribute, key 'a' in object type 'map'\n");
    EXPECT_EQ(shape(m), "{a=1}");
    EXPECT_TRUE(m->setattr(of("a"), cat::nil()));
}

TEST_F(MapObj, other_keys_of_a_map_with_specifications_are_free) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required, &cat::type_int()));
    EXPECT_TRUE(m->setattr(of("b"), of("x")));
    EXPECT_EQ(m->getattr(of("c")), cat::badfind());
}

// The key's own `write` raises an error while the text is made.
bool raising_write(cObj &, objref &) {
    eros().clear();
    eros().set_code(0x40000007);
    eros() << "from write";
    raise_eros();
    return false;
}

TEST_F(MapObj, an_error_inside_the_text_of_the_key_does_not_spoil_the_report) {
    cTypeObj type("raising_key", nullptr);
    type.set_hash(cat::hash_int, [](objref const &a, objref const &b) { return a == b; });
    type.set_tmember("write", make<cExeMember>(raising_write));
    {
        objref const key = objref::adopt(new cObjD<int>(3, &type));
        mapref const m = map();
        m->set_attspec(key, spec_of(asf_required));
        cErrorLog errors;
        EXPECT_FALSE(m->setattr(key, nullptr));
        ASSERT_GE(errors.count(), 2u);
        EXPECT_EQ(errors.last_code(), 0x40040000u);
        EXPECT_EQ(errors.last_text().substr(0, 25), "REQUIRED attribute, key '");
        EXPECT_NE(errors.last_text().find("' in object type 'map'  is missed"), std::string::npos);
    }
}

// --- getattr

TEST_F(MapObj, an_absent_required_attribute_reads_bad_or_badfind_when_forgiven) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required));
    cErrorLog errors;
    EXPECT_EQ(m->getattr(of("a")), cat::bad());
    EXPECT_EQ(errors.text(),
              "0x40040000 REQUIRED attribute, key 'a' in object type 'map'  is missed\n");
    cat::errhandler().clear_mask(0x00040000U);
    EXPECT_EQ(m->getattr(of("a")), cat::badfind());
}

TEST_F(MapObj, an_absent_implied_attribute_reads_nil) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_implied));
    m->datamap().delitem("a");
    EXPECT_EQ(m->getattr(of("a")), cat::nil());
}

TEST_F(MapObj, an_absent_attribute_with_a_default_reads_the_shared_default) {
    objref const standard = of(9);
    mapref const m = map();
    m->set_attspec("a", spec_with(standard));
    EXPECT_EQ(m->getattr(of("a")), standard);
    m->setattr(of("a"), of(1));
    EXPECT_EQ(shape(m->getattr(of("a"))), "1");
}

TEST_F(MapObj, getattr_insert_makes_a_map_only_where_nothing_good_stands) {
    mapref const m = map({{"a", 1}, {"n", cat::nil()}});
    EXPECT_EQ(shape(cTomMap::getattr_insert(m, of("a"))), "1");
    EXPECT_EQ(cTomMap::getattr_insert(m, of("n")), cat::nil());
    objref const made = cTomMap::getattr_insert(m, of("b"));
    EXPECT_EQ(m->datamap().getitem("b"), made);
    EXPECT_TRUE(cObj::is_map(made));
    EXPECT_EQ(cTomMap::getattr_insert(m, objref()), cat::bad());
    EXPECT_EQ(cTomMap::getattr_insert(of(5), of("a")), cat::bad());
}

TEST_F(MapObj, iterobj_stands_at_the_first_node) {
    mapref const m = map({{"a", 1}, {"b", 2}});
    objref const it = m->iterobj();
    EXPECT_EQ(shape(it->getattr(of("value"))), "1");
    EXPECT_EQ(cTomMap::iterobj(of(5)), cat::bad());
}

// --- add

TEST_F(MapObj, adding_a_map_brings_missing_keys_and_shares_their_values) {
    objref const shared = of(5);
    mapref const m = map({{"a", 1}});
    mapref const n = map({{"a", 2}, {"b", shared}});
    EXPECT_TRUE(m->add(n));
    EXPECT_EQ(shape(m), "{a=1, b=5}");
    EXPECT_EQ(m->datamap().getitem("b"), shared);
    EXPECT_TRUE(m->add(m));
    EXPECT_EQ(shape(m), "{a=1, b=5}");
}

TEST_F(MapObj, adding_is_true_even_where_setattr_refused) {
    mapref const m = map();
    m->setflags(of_const_keys);
    cErrorLog errors;
    EXPECT_TRUE(m->add(map({{"a", 1}, {"b", 2}})));
    EXPECT_EQ(errors.count(), 2u);
    EXPECT_EQ(m->size(), 0);
}

TEST_F(MapObj, a_const_map_refuses_assign_and_add) {
    mapref const m = map();
    m->setflags(of_const);
    cErrorLog errors;
    EXPECT_FALSE(m->assign(*map({{"a", 1}})));
    EXPECT_FALSE(m->add(*map({{"a", 1}})));
    EXPECT_EQ(errors.text(), "0x41400000 Object is const. Method 'assign' called from type: map\n"
                             "0x41400000 Object is const. Method 'add' called from type: map\n");
}

TEST_F(MapObj, a_bad_value_is_not_appended) {
    mapref const m = map();
    EXPECT_FALSE(m->append(cat::bad()));
    EXPECT_FALSE(m->append(cat::badfind()));
    EXPECT_FALSE(m->append(nullptr));
    EXPECT_TRUE(m->append(cat::nil()));
    EXPECT_EQ(shape(m), "{0=nil}");
    objref bad = cat::bad();
    EXPECT_TRUE(cTomMap::m_append(*m, bad)) << "the method itself is always true";
    EXPECT_EQ(m->size(), 1);
}

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

// --- comparing

TEST_F(MapObj, maps_are_equal_with_equal_pairs_in_one_order) {
    mapref const a = map({{"a", 1}, {2, map({{"x", "y"}})}});
    mapref const b = map({{"a", 1}, {2, map({{"x", "y"}})}});
    EXPECT_TRUE(a->equal(*b));
    EXPECT_FALSE(a->equal(*map({{"a", 1}})));
    EXPECT_FALSE(a->equal(*map({{"a", 1}, {"2", map({{"x", "y"}})}})));
    EXPECT_FALSE(a->equal(*map({{"a", 1}, {2, map({{"x", "z"}})}})));
    EXPECT_FALSE(a->equal(*vector({1, 2})));
    EXPECT_TRUE(map()->equal(*map()));
}

TEST_F(MapObj, equal_methods_refuse_what_is_no_container) {
    mapref const a = map();
    objref five = of(5);
    objref null;
    EXPECT_FALSE(cTomMap::equal_sorted(*a, five));
    EXPECT_FALSE(cTomMap::equal_sorted(*a, null));
    EXPECT_FALSE(cTomMap::equal_unsorted(*a, five));
    EXPECT_FALSE(cTomMap::equal_unsorted(*five, five));
    EXPECT_FALSE(a->equal_unsorted(*five));
}

TEST_F(MapObj, unsorted_equality_asks_for_the_same_keys) {
    EXPECT_FALSE(map({{"a", 1}})->equal_unsorted(*map({{"b", 1}})));
    EXPECT_FALSE(map({{"a", 1}})->equal_unsorted(*map({{"a", 2}})));
    EXPECT_FALSE(map({{"a", 1}})->equal_unsorted(*map()));
    EXPECT_TRUE(map({{0, 1}, {1, 2}})->equal_unsorted(*vector({1, 2})));
}

TEST_F(MapObj, null_values_equal_only_each_other) {
    mapref const a = map({{"a", 1}});
    mapref const b = map({{"a", 1}});
    a->valref_("a") = nullptr;
    EXPECT_FALSE(a->equal(*b));
    EXPECT_FALSE(b->equal(*a));
    b->valref_("a") = nullptr;
    EXPECT_TRUE(a->equal(*b));
}

// `equal` of one value removes what the walk stands on.
constinit cMapObj *walked = nullptr;
bool removing_equal(cObj &, objref &) {
    walked->datamap().delitem("b");
    return true;
}

TEST_F(MapObj, a_size_that_changes_while_comparing_is_told_on_standard_output) {
    cTypeObj type("removing", nullptr);
    type.set_tmember("equal", make<cExeMember>(removing_equal));
    {
        mapref const a = map({{"a", objref::adopt(new cObjD<int>(1, &type))}, {"b", 2}});
        mapref const b = map({{"a", objref::adopt(new cObjD<int>(1, &type))}, {"b", 2}});
        walked = a.get();
        (void)messages();
        EXPECT_FALSE(a->equal(*b));
        EXPECT_EQ(messages().substr(0, 36), "cAttrHash::size klappt nicht:1 !=  2");
    }
}

mapref ladder(int levels) {
    mapref level = map({{"end", 1}});
    for (int i = 0; i < levels; ++i) level = map({{"l", level}, {"r", level}});
    return level;
}

TEST_F(MapObj, ladders_are_compared_and_walked_by_their_size) {
    mapref const a = ladder(64);
    mapref const b = ladder(64);
    EXPECT_TRUE(a->equal(*b));
    EXPECT_TRUE(a->equal_unsorted(*b));
    EXPECT_FALSE(a->is_owner_of(*b));
    EXPECT_FALSE(a->equal(*ladder(63)));
    setref const in_set = set({a});
    EXPECT_TRUE(in_set->equal(*set({b})));
    a->remove_emptychilds(true);
    EXPECT_TRUE(a->detach(true));
    EXPECT_TRUE(a->equal(*b));
}

TEST_F(MapObj, two_cycles_of_one_shape_are_equal) {
    mapref const a = map();
    mapref const b = map();
    a->datamap().mapitem("k", a);
    b->datamap().mapitem("k", b);
    EXPECT_TRUE(a->equal(*b));
    EXPECT_TRUE(a->equal_unsorted(*b));
    b->datamap().mapitem("x", of(1));
    EXPECT_FALSE(a->equal(*b));
    a->datamap().mapitem("x", of(2));
    EXPECT_FALSE(a->equal(*b));
    a->clear();
    b->clear();
}

// x holds itself through y, and differs from its counterpart only behind that: what was found
// equal on the assumption must not survive it.
TEST_F(MapObj, an_assumption_that_fails_takes_back_what_rested_on_it) {
    mapref const a1 = map(), a2 = map(), b1 = map(), b2 = map();
    a1->datamap().mapitem("deep", a2);
    a1->datamap().mapitem("n", of(1));
    a2->datamap().mapitem("up", a1);
    b1->datamap().mapitem("deep", b2);
    b1->datamap().mapitem("n", of(2));
    b2->datamap().mapitem("up", b1);
    setref const s = set({a1, a2});
    setref const t = set({b1, b2});
    EXPECT_FALSE(s->equal(*t));
    EXPECT_FALSE(a2->equal(*b2));
    a1->clear();
    b1->clear();
}

// --- cycles, depth

TEST_F(MapObj, walks_end_on_a_map_that_holds_itself) {
    mapref const m = map();
    m->datamap().mapitem("1", m);
    mapref const x = map();
    EXPECT_TRUE(x->setattr(of(1), m));
    EXPECT_FALSE(m->is_owner_of(*x));
    EXPECT_TRUE(m->is_owner_of(*m));
    m->remove_emptychilds(true);
    EXPECT_EQ(m->size(), 1);
    EXPECT_TRUE(m->detach(true));
    EXPECT_EQ(m->datamap().getitem("1"), m) << "its own copy is itself";
    EXPECT_EQ(m->findvalue(*m), m);
    m->clear();
}

mapref chain(int levels) {
    mapref level = map();
    for (int i = 0; i < levels; ++i) {
        mapref const outer = make<cMapObj>();
        outer->datamap().mapitem("k", level);
        level = outer;
    }
    return level;
}

TEST_F(MapObj, what_the_stack_does_not_hold_is_refused_with_an_error) {
    mapref const a = chain(60000);
    mapref const b = chain(60000);
    cErrorLog errors;
    EXPECT_FALSE(a->equal(*b));
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    errors.clear();
    EXPECT_FALSE(a->assign(*b));
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    errors.clear();
    EXPECT_FALSE(a->detach(true));
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    errors.clear();
    a->remove_emptychilds(true);
    EXPECT_EQ(errors.text(), "0x40000001 Nesting is too deep in object type: map\n");
    EXPECT_FALSE(a->is_owner_of(*b)) << "this walk needs no stack";
}

// --- owners

TEST_F(MapObj, an_owner_is_found_at_any_depth_by_identity) {
    objref const leaf = of(1);
    mapref const m = map({{"a", vector({map({{"b", set({leaf})}})})}});
    EXPECT_TRUE(m->is_owner_of(*leaf));
    EXPECT_FALSE(m->is_owner_of(*of(1)));
    EXPECT_FALSE(m->is_owner_of(*m));
    EXPECT_FALSE(leaf->is_owner_of(*m));
}

constinit cMapObj *iterated = nullptr;
objref iterobj_elsewhere(objref) { return iterated->iterobj(); }

TEST_F(MapObj, owners_are_found_through_an_iterator_of_ones_own) {
    objref const leaf = of(1);
    mapref const hidden = map({{"x", leaf}});
    iterated = hidden.get();
    objref const holder = of("text");
    ASSERT_TRUE(holder->set_omember("iterobj", make<cExeMember>(iterobj_elsewhere)));
    mapref const m = map({{"a", holder}});
    EXPECT_TRUE(m->is_owner_of(*leaf));
    EXPECT_TRUE(holder->is_owner_of(*leaf));
}

// --- private copies

TEST_F(MapObj, detach_clones_scalars_and_copies_containers) {
    objref const one = of(1);
    objref const inner = of(2);
    mapref const sub = map({{"x", inner}});
    mapref const m = map({{"a", one}, {"m", sub}, {"v", vector({3})}, {"s", set({4})}});
    EXPECT_TRUE(m->detach(false));
    EXPECT_EQ(shape(m), "{a=1, m={x=2}, v=[3], s=<4>}");
    EXPECT_NE(m->datamap().getitem("a"), one);
    EXPECT_NE(m->datamap().getitem("m"), sub);
    EXPECT_EQ(m->getattr(of("m"))->getattr(of("x")), inner) << "one level";
    EXPECT_TRUE(m->detach(true));
    EXPECT_NE(m->getattr(of("m"))->getattr(of("x")), inner);
    EXPECT_TRUE(map()->detach(true));
}

TEST_F(MapObj, detach_is_false_where_a_value_cannot_be_cloned) {
    mapref const m = map({{"a", cat::nil()}, {"b", 1}});
    objref const b = m->datamap().getitem("b");
    EXPECT_FALSE(m->detach(false));
    EXPECT_NE(m->datamap().getitem("b"), b) << "the others are cloned all the same";
    EXPECT_EQ(m->datamap().getitem("a"), cat::nil());
}

TEST_F(MapObj, detach_leaves_containers_of_other_types) {
    cOwnType own;
    own.type.setflags(tf_container);
    {
        mapref const derived = make<cMapObj>(&own.type, false);
        mapref const m = map({{"a", derived}});
        EXPECT_TRUE(m->detach(true));
        EXPECT_EQ(m->datamap().getitem("a"), derived);
    }
}

TEST_F(MapObj, a_deep_detach_copies_a_shared_part_once) {
    mapref const shared = map({{"x", 1}});
    mapref const m = map({{"a", shared}, {"b", shared}});
    EXPECT_TRUE(m->detach(true));
    EXPECT_NE(m->datamap().getitem("a"), shared);
    EXPECT_EQ(m->datamap().getitem("a"), m->datamap().getitem("b"));
    EXPECT_TRUE(m->detach(false));
    EXPECT_NE(m->datamap().getitem("a"), m->datamap().getitem("b"));
}

TEST_F(MapObj, copy_on_write_clones_only_what_is_shared) {
    objref one = of(1);
    cObj *const before = one.get();
    EXPECT_TRUE(cat::detach(one, false));
    EXPECT_EQ(one.get(), before);
    objref const second = one;
    EXPECT_TRUE(cat::detach(one, false));
    EXPECT_NE(one.get(), before);
    EXPECT_EQ(shape(one), "1");
    objref null;
    EXPECT_FALSE(cat::detach(null, true));
    objref nil = cat::nil();
    EXPECT_FALSE(cat::detach(nil, true));
}

TEST_F(MapObj, copy_on_write_of_a_container_is_deep_when_asked) {
    objref const inner = of(1);
    objref m = map({{"a", inner}});
    EXPECT_TRUE(cat::detach(m, false));
    EXPECT_EQ(m->getattr(of("a")), inner);
    EXPECT_TRUE(cat::detach(m, true));
    EXPECT_NE(m->getattr(of("a")), inner);
}

TEST_F(MapObj, the_constants_are_never_replaced) {
    cObj *const before = cat::btrue().get();
    EXPECT_FALSE(cat::detach(cat::btrue(), false));
    EXPECT_FALSE(cat::detach(cat::bfalse(), true));
    EXPECT_EQ(cat::btrue().get(), before);
    objref copy = cat::btrue();
    EXPECT_TRUE(cat::detach(copy, false));
    EXPECT_NE(copy, cat::btrue());
}

// --- empty children

TEST_F(MapObj, only_exact_maps_count_as_empty_children) {
    mapref const m = map({{"v", vector()}, {"s", set()}, {"m", map()}, {"n", cat::nil()}});
    m->remove_emptychilds(true);
    EXPECT_EQ(shape(m), "{v=[], s=<>, n=nil}");
}

TEST_F(MapObj, a_removal_starts_the_walk_again_and_with_it_the_recursion) {
    // b is emptied by the first walk; the removal of z makes a second one, which sees it.
    mapref const m = map({{"b", map({{"c", map()}})}, {"z", map()}});
    m->remove_emptychilds(true);
    EXPECT_EQ(shape(m), "{}");
}

// --- no maps

TEST_F(MapObj, methods_refuse_objects_that_are_no_maps) {
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
