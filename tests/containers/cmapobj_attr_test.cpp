// Maps: setattr, getattr, add and append.

#include "qrv/containers/cattr.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "tests/containers/map_support.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

using namespace trees;

namespace {

class MapAttr : public QrvTest {};

// --- setattr

TEST_F(MapAttr, another_entry_type_is_refused_silently) {
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

TEST_F(MapAttr, the_entry_type_is_tested_before_the_cycle) {
    mapref const a = map();
    mapref const b = map({{"a", a}});
    a->set_entrytype(&cat::type_int());
    cErrorLog errors;
    EXPECT_FALSE(a->setattr(of("k"), b));
    EXPECT_EQ(errors.count(), 0u);
}

TEST_F(MapAttr, the_cycle_is_tested_before_const_keys) {
    mapref const a = map();
    mapref const b = map({{"a", a}});
    a->setflags(of_const_keys);
    cErrorLog errors;
    EXPECT_FALSE(a->setattr(of("k"), b));
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_NE(errors.last_text().find("cycle"), std::string::npos);
}

// If a handler forgives, the result is true, but nothing is stored.
TEST_F(MapAttr, a_forgiven_refusal_is_true_and_stores_nothing) {
    mapref const a = map();
    mapref const b = map({{"a", a}});
    cErrorLog errors;
    cat::errhandler().clear_mask(0x00020000U);
    EXPECT_TRUE(a->setattr(of("k"), b));
    a->setflags(of_const_keys);
    EXPECT_TRUE(a->setattr(of("k"), of(1)));
    EXPECT_EQ(a->size(), 0);
}

TEST_F(MapAttr, a_kill_value_removes_even_under_const_keys) {
    mapref const m = map({{"a", 1}});
    m->setflags(of_const_keys);
    EXPECT_TRUE(m->setattr(of("a"), nullptr));
    EXPECT_EQ(m->size(), 0);
}

TEST_F(MapAttr, a_nil_key_and_a_bad_value_are_refused) {
    mapref const m = map();
    EXPECT_FALSE(m->setattr(objref(), of(1)));
    EXPECT_FALSE(m->setattr(cat::nil(), of(1)));
    EXPECT_FALSE(m->setattr(of("a"), cat::bad()));
    EXPECT_EQ(m->size(), 0);
}

TEST_F(MapAttr, a_fixed_reference_keeps_its_object) {
    mapref const m = map();
    objref const present = of(1);
    m->set_attspec("a", spec_with(of(9), asf_fixref));
    EXPECT_TRUE(m->setattr(of("a"), present)) << "the attribute was nil";
    EXPECT_TRUE(m->setattr(of("a"), present));
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("a"), of(1)));
    EXPECT_EQ(errors.text(), "0x40040000 FIXED REF attribute, key 'a' in object type 'map'\n");
    EXPECT_FALSE(m->setattr(of("a"), nullptr));
    EXPECT_EQ(m->datamap().getitem("a"), present);
}

TEST_F(MapAttr, a_forgiven_fixed_reference_is_true_and_keeps_its_object) {
    mapref const m = map();
    objref const present = of(1);
    m->set_attspec("a", spec_with(of(9), asf_fixref));
    m->setattr(of("a"), present);
    cErrorLog errors;
    cat::errhandler().clear_mask(0x00040000U);
    EXPECT_TRUE(m->setattr(of("a"), of(2)));
    EXPECT_EQ(m->datamap().getitem("a"), present);
}

TEST_F(MapAttr, nothing_stored_falls_back_to_the_shared_default) {
    objref const standard = of(9);
    mapref const m = map();
    m->set_attspec("a", spec_with(standard));
    for (objref const &nothing : {cat::nil(), objref(), cat::badfind()}) {
        ASSERT_TRUE(m->setattr(of("a"), of(1)));
        EXPECT_TRUE(m->setattr(of("a"), nothing));
        EXPECT_EQ(m->datamap().getitem("a"), standard);
    }
}

TEST_F(MapAttr, nothing_stored_into_a_required_attribute_is_reported) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required));
    ASSERT_TRUE(m->setattr(of("a"), of(1)));
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("a"), cat::nil()));
    EXPECT_EQ(errors.text(),
              "0x40040000 REQUIRED attribute, key 'a' in object type 'map'  is missed\n");
    EXPECT_EQ(shape(m), "{a=1}");
}

TEST_F(MapAttr, a_fixed_type_refuses_other_types) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_implied, &cat::type_int()));
    EXPECT_TRUE(m->setattr(of("a"), of(1)));
    cErrorLog errors;
    EXPECT_FALSE(m->setattr(of("a"), of("x")));
    EXPECT_EQ(errors.text(), "0x40040000 FIXED TYPE attribute, key 'a' in object type 'map'\n");
    EXPECT_EQ(shape(m), "{a=1}");
    EXPECT_TRUE(m->setattr(of("a"), cat::nil()));
}

TEST_F(MapAttr, other_keys_of_a_map_with_specifications_are_free) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required, &cat::type_int()));
    EXPECT_TRUE(m->setattr(of("b"), of("x")));
    EXPECT_EQ(m->getattr(of("c")), cat::badfind());
}

// The key's own `write` raises an error while the message is written.
bool raising_write(cObj &, objref &) {
    eros().clear();
    eros().set_code(0x40000007);
    eros() << "from write";
    raise_eros();
    return false;
}

TEST_F(MapAttr, an_error_while_writing_the_key_does_not_damage_the_report) {
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

TEST_F(MapAttr, an_absent_required_attribute_reads_bad_or_badfind_when_forgiven) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_required));
    cErrorLog errors;
    EXPECT_EQ(m->getattr(of("a")), cat::bad());
    EXPECT_EQ(errors.text(),
              "0x40040000 REQUIRED attribute, key 'a' in object type 'map'  is missed\n");
    cat::errhandler().clear_mask(0x00040000U);
    EXPECT_EQ(m->getattr(of("a")), cat::badfind());
}

TEST_F(MapAttr, an_absent_implied_attribute_reads_nil) {
    mapref const m = map();
    m->set_attspec("a", spec_of(asf_implied));
    m->datamap().delitem("a");
    EXPECT_EQ(m->getattr(of("a")), cat::nil());
}

TEST_F(MapAttr, an_absent_attribute_with_a_default_reads_the_shared_default) {
    objref const standard = of(9);
    mapref const m = map();
    m->set_attspec("a", spec_with(standard));
    EXPECT_EQ(m->getattr(of("a")), standard);
    m->setattr(of("a"), of(1));
    EXPECT_EQ(shape(m->getattr(of("a"))), "1");
}

TEST_F(MapAttr, getattr_insert_creates_a_map_only_if_there_is_no_good_value) {
    mapref const m = map({{"a", 1}, {"n", cat::nil()}});
    EXPECT_EQ(shape(cTomMap::getattr_insert(m, of("a"))), "1");
    EXPECT_EQ(cTomMap::getattr_insert(m, of("n")), cat::nil());
    objref const made = cTomMap::getattr_insert(m, of("b"));
    EXPECT_EQ(m->datamap().getitem("b"), made);
    EXPECT_TRUE(cObj::is_map(made));
    EXPECT_EQ(cTomMap::getattr_insert(m, objref()), cat::bad());
    EXPECT_EQ(cTomMap::getattr_insert(of(5), of("a")), cat::bad());
}

TEST_F(MapAttr, iterobj_begins_at_the_first_node) {
    mapref const m = map({{"a", 1}, {"b", 2}});
    objref const it = m->iterobj();
    EXPECT_EQ(shape(it->getattr(of("value"))), "1");
    EXPECT_EQ(cTomMap::iterobj(of(5)), cat::bad());
}

// --- add

TEST_F(MapAttr, adding_a_map_adds_missing_keys_and_shares_their_values) {
    objref const shared = of(5);
    mapref const m = map({{"a", 1}});
    mapref const n = map({{"a", 2}, {"b", shared}});
    EXPECT_TRUE(m->add(n));
    EXPECT_EQ(shape(m), "{a=1, b=5}");
    EXPECT_EQ(m->datamap().getitem("b"), shared);
    EXPECT_TRUE(m->add(m));
    EXPECT_EQ(shape(m), "{a=1, b=5}");
}

TEST_F(MapAttr, adding_is_true_even_if_setattr_refuses) {
    mapref const m = map();
    m->setflags(of_const_keys);
    cErrorLog errors;
    EXPECT_TRUE(m->add(map({{"a", 1}, {"b", 2}})));
    EXPECT_EQ(errors.count(), 2u);
    EXPECT_EQ(m->size(), 0);
}

TEST_F(MapAttr, a_const_map_refuses_assign_and_add) {
    mapref const m = map();
    m->setflags(of_const);
    cErrorLog errors;
    EXPECT_FALSE(m->assign(*map({{"a", 1}})));
    EXPECT_FALSE(m->add(*map({{"a", 1}})));
    EXPECT_EQ(errors.text(), "0x41400000 Object is const. Method 'assign' called from type: map\n"
                             "0x41400000 Object is const. Method 'add' called from type: map\n");
}

TEST_F(MapAttr, a_bad_value_is_not_appended) {
    mapref const m = map();
    EXPECT_FALSE(m->append(cat::bad()));
    EXPECT_FALSE(m->append(cat::badfind()));
    EXPECT_FALSE(m->append(nullptr));
    EXPECT_TRUE(m->append(cat::nil()));
    EXPECT_EQ(shape(m), "{0=nil}");
    objref bad = cat::bad();
    EXPECT_TRUE(cTomMap::m_append(*m, bad)) << "the method itself always returns true";
    EXPECT_EQ(m->size(), 1);
}

} // namespace
