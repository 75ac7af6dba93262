// Declared types and their objects: creation, rules, validation, assignment, redefinition.
#include "qrv/containers/cattrset.h"

#include "containers/cmergebudget.h"
#include "qrv/base/csignal.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"
#include "tests/support/types.h"

namespace {

using test::key;

specref required(cTypeObj *type = nullptr) {
    return specref::adopt(new cAttspec(asf_required, type));
}
specref implied() { return specref::adopt(new cAttspec(asf_implied, nullptr)); }
specref with_default(objref const &value, int flags = asf_fixtype) {
    return specref::adopt(new cAttspec(value, flags));
}

class AttrSet : public QrvTest {
  protected:
    // A type with these specifications. Objects borrow their type, so it lives as long as the test.
    typeref declare(std::vector<std::pair<char const *, specref>> const &specs) {
        auto const type = typeref::adopt(new cTypeObj(&cat::typetype_attlist(), "Rec", nullptr));
        for (auto const &[name, spec] : specs) type->setattr(key(name), spec);
        declared_.push_back(type);
        return type;
    }
    static cRef<cMapObj> object(typeref const &type) {
        objref const made = type->newobj();
        return cRef<cMapObj>::share(dynamic_cast<cMapObj *>(made.get()));
    }
    std::string raised() {
        std::string const text = errors_.text();
        errors_.clear();
        return text;
    }

    cTypesBack types_;
    std::vector<typeref> declared_;
    cErrorLog errors_;
};

class AttrSetEdge : public AttrSet {};

// Counts the emissions of a signal.
struct cCount {
    explicit cCount(cSignal &signal) : slot(this, &cCount::count) { signal.connect(slot); }
    void count() { ++n; }
    int n = 0;
    cSlot<cCount> slot;
};

} // namespace

TEST_F(AttrSetEdge, an_object_has_a_private_copy_of_the_default_and_no_other_keys) {
    objref const value = cat::of(5);
    typeref const type = declare({{"k", with_default(value)}});
    cRef<cMapObj> const obj = object(type);
    ASSERT_TRUE(obj);
    EXPECT_EQ(cat::as_text(obj->datamap().getitem("k")), "5");
    EXPECT_TRUE(obj->datamap().getitem("k") != value);
    EXPECT_FALSE(obj->setattr(key("z"), cat::of(1)));
    EXPECT_EQ(
        raised(),
        "0x40020000 Setattr in object type 'Rec', key 'z':   Flag of const key set offended\n");
    EXPECT_EQ(obj->size(), 1);
}

TEST_F(AttrSetEdge, nil_restores_the_shared_default) {
    objref const value = cat::of(5);
    cRef<cMapObj> const obj = object(declare({{"k", with_default(value)}}));
    EXPECT_TRUE(obj->setattr(key("k"), cat::of(6)));
    EXPECT_EQ(cat::as_text(obj->getattr(key("k"))), "6");
    EXPECT_TRUE(obj->setattr(key("k"), cat::nil()));
    EXPECT_TRUE(obj->datamap().getitem("k") == value);
}

TEST_F(AttrSet, keys_are_in_the_order_of_the_declaration) {
    cRef<cMapObj> const obj =
        object(declare({{"b", implied()}, {"a", required()}, {"c", implied()}}));
    std::string order;
    for (cIterObj it = obj->begin(); it.valid(); ++it) order += it.key_as_string() + ' ';
    EXPECT_EQ(order, "b a c ");
    EXPECT_EQ(obj->flags(), int{asf_all} | int{of_const_keys});
    EXPECT_TRUE(obj->datamap().getitem("a") == cat::nil());
}

TEST_F(AttrSet, the_rules_apply_to_each_write) {
    cRef<cMapObj> const obj = object(declare(
        {{"r", required(&cat::type_int())}, {"f", with_default(cat::of("x"), asf_fixref)}}));
    EXPECT_TRUE(obj->getattr(key("r")) == cat::bad());
    EXPECT_EQ(raised(), "0x40040000 REQUIRED attribute, key 'r' in object type 'Rec'  is missed\n");
    EXPECT_FALSE(obj->setattr(key("r"), cat::of(1.5)));
    EXPECT_EQ(errors_.last_code(), 0x40040000U);
    raised();
    EXPECT_TRUE(obj->setattr(key("r"), cat::of(1)));
    EXPECT_FALSE(obj->setattr(key("r"), objref()));
    EXPECT_EQ(errors_.last_code(), 0x40040000U);
    raised();
    EXPECT_FALSE(obj->setattr(key("f"), cat::of("y")));
    EXPECT_EQ(errors_.last_code(), 0x40040000U);
    EXPECT_EQ(cat::as_text(obj->getattr(key("f"))), "x");
}

TEST_F(AttrSet, a_container_as_default_is_copied_deeply) {
    objref const inner = make<cVectorObj>();
    inner->append(cat::of(1));
    objref const value = make<cMapObj>();
    value->setattr(key("list"), inner);
    typeref const type = declare({{"m", with_default(value)}});
    cRef<cMapObj> const first = object(type);
    (*first)["m"]["list"]->append(cat::of(2));
    EXPECT_EQ(cat::as_text(first->getattrp("m/list")), "[1, 2, ]");
    EXPECT_EQ(cat::as_text(object(type)->getattrp("m/list")), "[1, ]");
    EXPECT_EQ(cat::as_text(inner), "[1, ]");
}

TEST_F(AttrSet, a_member_that_is_not_a_specification_is_skipped_and_fails_validation) {
    typeref const type = declare({{"a", implied()}});
    type->setattr(key("n"), cat::of(5));
    cRef<cMapObj> const obj = object(type);
    EXPECT_EQ(obj->size(), 1);
    EXPECT_TRUE(cTomAttrset::validate(*obj));
    obj->datamap().mapitem("n", cat::of(5));
    EXPECT_FALSE(cTomAttrset::validate(*obj));
}

TEST_F(AttrSet, validate_tests_each_rule) {
    typeref const type =
        declare({{"r", required()}, {"t", required(&cat::type_int())}, {"i", implied()}});
    cRef<cMapObj> const obj = object(type);
    EXPECT_FALSE(cTomAttrset::validate(*obj)); // r is void
    obj->datamap().mapitem("r", cat::of("x"));
    EXPECT_FALSE(cTomAttrset::validate(*obj)); // t is void
    obj->datamap().mapitem("t", cat::of(1.5));
    EXPECT_FALSE(cTomAttrset::validate(*obj)); // t is not an int
    obj->datamap().mapitem("t", cat::of(1));
    EXPECT_TRUE(cTomAttrset::validate(*obj));
    obj->datamap().mapitem("undeclared", cat::of(1));
    EXPECT_FALSE(cTomAttrset::validate(*obj));
    objref const number = cat::of(1);
    EXPECT_FALSE(cTomAttrset::validate(*number));
    EXPECT_EQ(raised(), "");
}

TEST_F(AttrSet, an_implied_attribute_with_a_type_may_be_nil_but_not_another_void_value) {
    auto const spec = specref::adopt(new cAttspec(asf_implied, &cat::type_int()));
    cRef<cMapObj> const obj = object(declare({{"i", spec}}));
    EXPECT_TRUE(cTomAttrset::validate(*obj));
    obj->datamap().mapitem("i", make<cObj>(true));
    EXPECT_FALSE(cTomAttrset::validate(*obj));
}

TEST_F(AttrSet, a_new_object_with_a_fixed_attribute_is_not_valid) {
    objref const value = cat::of(5);
    typeref const type = declare({{"f", with_default(value, asf_fixref | asf_fixtype)}});
    cRef<cMapObj> const obj = object(type);
    EXPECT_FALSE(cTomAttrset::validate(*obj)); // an equal object isn't the same object
    obj->datamap().mapitem("f", value);
    EXPECT_TRUE(cTomAttrset::validate(*obj));
}

TEST_F(AttrSet, assign_copies_in_place_and_skips_void_values) {
    typeref const type = declare({{"a", implied()}, {"b", implied()}, {"c", implied()}});
    cRef<cMapObj> const source = object(type);
    cRef<cMapObj> const target = object(type);
    objref const old = cat::of(1);
    target->setattr(key("a"), old);
    target->setattr(key("b"), cat::of(2));
    objref const fresh = cat::of("new");
    source->setattr(key("a"), cat::of(10));
    source->setattr(key("c"), fresh);
    EXPECT_TRUE(target->assign(*source));
    EXPECT_TRUE(target->datamap().getitem("a") == old);
    EXPECT_EQ(cat::as_text(old), "10");
    EXPECT_EQ(cat::as_text(target->getattr(key("b"))), "2");
    EXPECT_EQ(cat::as_text(target->getattr(key("c"))), "new");
    EXPECT_EQ(raised(), "");
}

TEST_F(AttrSet, assign_from_another_type_converts) {
    cRef<cMapObj> const target = object(declare({{"a", implied()}}));
    objref const map = make<cMapObj>();
    EXPECT_FALSE(target->assign(map));
    EXPECT_EQ(raised(), "0x41000000 Method 'assign' called from other type: map\n");
    cat::errhandler().clear_mask(0x01000000);
    EXPECT_TRUE(target->assign(map)); // forgiven: an empty map breaks no rule
    EXPECT_TRUE(target->assign(cat::of(1)));
    EXPECT_EQ(raised(), "0x01000000 Method 'assign' called from other type: map\n"
                        "0x01000000 Method 'assign' called from other type: int\n"
                        "0x01000000 VALIDATE ERROR in method 'assign'\n");
}

TEST_F(AttrSet, assign_from_an_invalid_object_copies_nothing) {
    typeref const type = declare({{"a", implied()}, {"r", required()}});
    cRef<cMapObj> const source = object(type);
    cRef<cMapObj> const target = object(type);
    source->setattr(key("a"), cat::of(1));
    EXPECT_FALSE(target->assign(*source));
    EXPECT_EQ(raised(), "0x41000000 VALIDATE ERROR in method 'assign'\n");
    EXPECT_TRUE(target->datamap().getitem("a") == cat::nil());
}

TEST_F(AttrSet, an_attribute_that_fails_is_reported_and_the_others_are_copied) {
    typeref const type = declare({{"a", implied()}, {"b", implied()}});
    cRef<cMapObj> const source = object(type);
    cRef<cMapObj> const target = object(type);
    source->setattr(key("a"), cat::of("text"));
    source->setattr(key("b"), cat::of(2));
    target->setattr(key("a"), make<cMapObj>()); // can't be assigned a string
    EXPECT_FALSE(target->assign(*source));
    EXPECT_EQ(errors_.entries().back(),
              (cErrorLog::cEntry{0x41000000, "ERROR in method 'assign'"}));
    EXPECT_EQ(cat::as_text(target->getattr(key("b"))), "2");
}

TEST_F(AttrSet, a_clone_is_an_object_of_the_type) {
    typeref const type = declare({{"a", implied()}});
    cRef<cMapObj> const obj = object(type);
    obj->setattr(key("a"), cat::of(1));
    objref const copy = obj->clone();
    ASSERT_TRUE(cObj::is_good(copy));
    EXPECT_EQ(&copy->type(), type.get());
    EXPECT_EQ(cat::as_text(copy->getattr(key("a"))), "1");
}

TEST_F(AttrSet, the_type_is_a_container_of_its_specifications) {
    specref const spec = implied();
    typeref const type = declare({{"a", spec}});
    EXPECT_TRUE(type->getattr(key("a")) == spec);
    EXPECT_TRUE(type->getattr(key("b")) == cat::badfind());
    std::string keys;
    for (cIterObj it = type->begin(); it.valid(); ++it) keys += it.key_as_string();
    EXPECT_EQ(keys, "a");
    EXPECT_TRUE(type->is_type());
    EXPECT_EQ(cat::as_string(type->gmember("wformat")), "wc");
}

TEST_F(AttrSet, a_change_of_the_type_fires_changed_and_does_not_affect_existing_objects) {
    typeref const type = declare({{"a", implied()}});
    cCount const count(type->force_changed_signal());
    cRef<cMapObj> const before = object(type);
    EXPECT_TRUE(type->setattr(key("b"), required()));
    EXPECT_EQ(count.n, 1);
    EXPECT_FALSE(type->setattr(objref(), required()));
    EXPECT_EQ(count.n, 1);
    EXPECT_EQ(before->size(), 1);
    EXPECT_EQ(object(type)->size(), 2);
}

TEST_F(AttrSet, assign_to_the_type_replaces_all_specifications) {
    typeref const type = declare({{"a", implied()}, {"b", implied()}});
    cCount const count(type->force_changed_signal());
    objref const map = make<cMapObj>();
    specref const spec = required();
    map->setattr(key("c"), spec);
    map->setattr(key("n"), cat::of(1));
    EXPECT_TRUE(type->assign(map));
    EXPECT_EQ(count.n, 1);
    EXPECT_EQ(object(type)->size(), 1);
    EXPECT_TRUE(type->getattr(key("c")) == spec);
    EXPECT_TRUE(type->assign(type->tmember("attspec"))); // its own specifications
    EXPECT_TRUE(type->getattr(key("c")) == spec);
    EXPECT_TRUE(type->assign(type));
    EXPECT_TRUE(type->getattr(key("c")) == spec);
    EXPECT_EQ(raised(), "");
}

TEST_F(AttrSet, a_second_create_of_a_type_changes_nothing) {
    typeref const type = declare({{"a", implied()}});
    type->create();
    EXPECT_EQ(object(type)->size(), 1);
}

TEST_F(AttrSet, newobj_of_another_metatype_is_bad) {
    EXPECT_TRUE(cTomAttrset::newobj(objref::share(&cat::type_map())) == cat::bad());
    EXPECT_TRUE(cTomAttrset::newobj(objref()) == cat::bad());
    cTypeObj heir("Heir");
    heir.inherit(*declare({{"a", implied()}}));
    EXPECT_TRUE(heir.newobj() == cat::bad());
}

TEST_F(AttrSet, a_type_without_its_specifications_creates_empty_objects) {
    typeref const type = declare({{"a", implied()}});
    type->set_tmember("attspec", cat::of(1));
    EXPECT_EQ(object(type)->size(), 0);
    EXPECT_FALSE(type->setattr(key("a"), implied()));
    EXPECT_TRUE(type->getattr(key("a")) == cat::bad());
    EXPECT_TRUE(cObj::is_bad(type->iterobj()));
    EXPECT_FALSE(type->assign(make<cMapObj>()));
}

TEST_F(AttrSet, a_second_declaration_of_a_name_changes_the_first) {
    typeref const first = declare({{"a", implied()}});
    ASSERT_TRUE(cat::set_type(*first, false));
    cCount const count(first->force_changed_signal());
    specref const spec = with_default(cat::of(7));
    typeref const second = declare({{"b", spec}});
    EXPECT_TRUE(cat::set_type(*second, false));
    EXPECT_EQ(&cat::find_type("Rec"), first.get());
    EXPECT_TRUE(first->getattr(key("b")) == spec);
    EXPECT_TRUE(first->getattr(key("a")) == cat::badfind());
    EXPECT_EQ(count.n, 1);
    EXPECT_TRUE(cat::set_type(*first, false)); // redefines the type by the same type
    EXPECT_EQ(count.n, 1);
    EXPECT_EQ(raised(), ""); // specifications are shared, never assigned
}

TEST_F(AttrSet, another_metatype_does_not_redefine) {
    typeref const first = declare({{"a", implied()}});
    ASSERT_TRUE(cat::set_type(*first, false));
    cTypeObj const plain("Rec");
    EXPECT_FALSE(cat::set_type(plain, false));
    EXPECT_EQ(object(first)->size(), 1);
}

TEST_F(AttrSet, an_attribute_may_be_called_like_a_member) {
    cRef<cMapObj> const obj =
        object(declare({{"changed", required()}, {"//", implied()}, {"assign", implied()}}));
    EXPECT_EQ(obj->size(), 3);
    EXPECT_TRUE(obj->setattr(key("changed"), cat::of(1)));
    EXPECT_EQ(obj->changed_signal(), nullptr);
    obj->changed();
    EXPECT_TRUE(obj->setattr(key("assign"), cat::of(1)));
    EXPECT_TRUE(cTomAttrset::validate(*obj));
    EXPECT_EQ(raised(), "");
}

TEST_F(AttrSet, defaults_beyond_the_budget_of_a_read_are_not_copied) {
    objref const list = make<cVectorObj>();
    for (int i = 0; i < 10; ++i) list->append(cat::of(i));
    typeref const type = declare({{"a", with_default(list)}, {"b", with_default(cat::of(1))}});
    cat::cMergeBudget budget(30);
    EXPECT_EQ(cat::as_text(object(type)->datamap().getitem("b")), "1");
    EXPECT_EQ(budget.spent(), 22u); // two attributes, ten values looked at and ten copied
    cRef<cMapObj> const second = object(type);
    EXPECT_TRUE(budget.exhausted());
    EXPECT_TRUE(second->datamap().getitem("a") == cat::nil());
    EXPECT_TRUE(second->datamap().getitem("b") == cat::nil());
    EXPECT_TRUE(second->getattr(key("a")) == list); // getattr returns the shared default
}

TEST_F(AttrSet, while_reading_an_object_cannot_be_assigned_its_owner) {
    typeref const type = declare({{"a", implied()}});
    cRef<cMapObj> const target = object(type);
    cRef<cMapObj> const source = object(type);
    objref const holder = make<cMapObj>();
    target->setattr(key("a"), cat::of(1));
    holder->setattr(key("t"), target);
    source->setattr(key("a"), holder);
    cat::cMergeBudget const budget(1000);
    EXPECT_TRUE(target->assign(*source));
    EXPECT_EQ(cat::as_text(target->getattr(key("a"))), "1");
}

TEST_F(AttrSet, a_type_may_have_its_own_object_as_default) {
    typeref const type = declare({{"a", implied()}, {"b", implied()}});
    cRef<cMapObj> const first = object(type);
    first->setattr(key("a"), cat::of(1));
    type->setattr(key("a"), with_default(first, 0));
    type->setattr(key("b"), with_default(cat::of(2)));
    cRef<cMapObj> const second = object(type);
    EXPECT_EQ(raised(), "");
    auto const copy =
        cRef<cMapObj>::share(dynamic_cast<cMapObj *>(second->datamap().getitem("a").get()));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, first);
    EXPECT_EQ(cat::as_text(copy->datamap().getitem("a")), "1");
    EXPECT_TRUE(copy->datamap().getitem("b") == cat::nil());
    EXPECT_EQ(cat::as_text(second->datamap().getitem("b")), "2");
    EXPECT_EQ(cat::as_text(copy->getattr(key("b"))), "2"); // getattr returns the shared default
}

TEST_F(AttrSet, types_may_have_objects_of_each_other_as_default) {
    typeref const a = declare({{"x", implied()}});
    typeref const b = declare({{"x", implied()}});
    objref const of_a = object(a);
    objref const of_b = object(b);
    a->setattr(key("x"), with_default(of_b));
    b->setattr(key("x"), with_default(of_a));
    cRef<cMapObj> const made = object(a);
    EXPECT_TRUE(&made->datamap().getitem("x")->type() == b.get());
    EXPECT_TRUE(made->datamap().getitem("x") != of_b);
    EXPECT_EQ(raised(), "");
}

TEST_F(AttrSet, a_chain_of_types_linked_by_defaults_may_have_any_length) {
    typeref type = declare({{"a", with_default(cat::of(1))}});
    for (int i = 0; i < 20000; ++i)
        type = declare({{"a", with_default(make<cMapObj>(type.get(), false), 0)}});
    cRef<cMapObj> const made = object(type);
    EXPECT_TRUE(cObj::is_good(made->datamap().getitem("a")));
    EXPECT_EQ(raised(), "");
}

TEST_F(AttrSet, while_reading_a_type_cannot_be_assigned_its_owner) {
    typeref const type = declare({{"a", implied()}});
    objref const specs = make<cMapObj>();
    specs->setattr(key("a"), with_default(type));
    {
        cat::cMergeBudget const budget(1000);
        EXPECT_TRUE(type->assign(*specs));
    }
    EXPECT_EQ(cat::as_text(type->getattr(key("a"))), "attspec()");
}

TEST_F(AttrSet, an_object_equals_its_clone_until_one_of_them_changes) {
    typeref const type = declare({{"n", with_default(cat::of(5))}, {"t", implied()}});
    cRef<cMapObj> const obj = object(type);
    EXPECT_TRUE(obj->setattr(key("t"), cat::of("text")));
    objref const copy = obj->clone();
    ASSERT_TRUE(cObj::is_good(copy));
    EXPECT_TRUE(obj->equal(*copy));
    EXPECT_TRUE(copy->equal(*obj));
    EXPECT_TRUE(obj->equal(*obj));
    EXPECT_TRUE(copy->setattr(key("n"), cat::of(6)));
    EXPECT_FALSE(obj->equal(*copy));
    EXPECT_TRUE(copy->setattr(key("n"), cat::of(5)));
    EXPECT_TRUE(obj->equal(*copy));
    EXPECT_EQ(raised(), "");
}

TEST_F(AttrSet, objects_of_two_declarations_are_unequal_and_no_map_equals_one) {
    cRef<cMapObj> const a = object(declare({{"n", with_default(cat::of(5))}}));
    cRef<cMapObj> const b = object(declare({{"n", with_default(cat::of(5))}}));
    auto const map = make<cMapObj>();
    map->setattr(key("n"), cat::of(5));
    EXPECT_FALSE(a->equal(*b));
    EXPECT_FALSE(a->equal(*map));
    EXPECT_FALSE(map->equal(*a));
    EXPECT_TRUE(map->equal_unsorted(*a)); // compares only the values
    EXPECT_TRUE(a->equal_unsorted(*map));
}

TEST_F(AttrSet, objects_that_hold_each_other_are_compared) {
    typeref const type = declare({{"next", implied()}});
    cRef<cMapObj> const a = object(type);
    cRef<cMapObj> const b = object(type);
    a->datamap().mapitem("next", b);
    b->datamap().mapitem("next", a);
    EXPECT_TRUE(a->equal(*b));
    a->clear();
}

TEST_F(AttrSet, an_object_that_only_claims_a_declared_type_equals_nothing) {
    typeref const type = declare({{"t", implied()}});
    objref const claim = cat::of(1);
    claim->set_type(type);
    EXPECT_FALSE(object(type)->equal(*claim));
    EXPECT_FALSE(claim->equal(*object(type)));
    EXPECT_FALSE(claim->equal(*claim));
}
