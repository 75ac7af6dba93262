// Values of choice types, and the types as objects: constructors, assignments, methods.
#include "qrv/containers/cchoiceval.h"

#include "qrv/containers/csignalobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/text/write/cwriter.h"
#include "tests/containers/choice_support.h"
#include "tests/support/fixture.h"

#include <type_traits>

using namespace choice_test;

namespace {

class ChoiceEdge : public QrvTest {};
class Choice : public QrvTest {};
class ChoiceMethod : public QrvTest {};
class ChoiceType : public QrvTest {};

// The result of assign and the value's key afterwards, as "true b".
std::string assigned(cChoiceVal &value, objref const &source) {
    bool const result = value.assign(source);
    return (result ? "true " : "false ") + place(value);
}

} // namespace

TEST_F(ChoiceEdge, assigning_an_unknown_key_is_true_and_changes_nothing) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    EXPECT_EQ(assigned(*value, cat::of("x")), "true b");
    EXPECT_EQ(assigned(*value, cat::of(7)), "true b");
    value->set_undefined();
    EXPECT_EQ(assigned(*value, cat::of("x")), "true undefined");
}

TEST_F(ChoiceEdge, values_with_the_same_choice_are_equal_and_a_value_is_not_its_key) {
    typeref const type = choice_type({"a", "b"});
    valueref const one = value_at(type, "b"), two = value_at(type, "b");
    EXPECT_TRUE(one->equal(*two));
    EXPECT_TRUE(static_cast<cObj &>(*one) == static_cast<cObj &>(*two));
    two->setkey("a");
    EXPECT_FALSE(one->equal(*two));
    EXPECT_FALSE(one->equal(cat::of("b")));
    EXPECT_FALSE(cat::of("b")->equal(*one));
}

TEST_F(ChoiceEdge, an_empty_entry_in_text_is_undefined) {
    typeref const type = choice_type({"a", "b"});
    cTypeInsert const insert(*type);
    objref map;
    EXPECT_EQ(cObj::readobj("{ v= Letter(); w= Letter(b); }", map), 0);
    objref const v = (*map)["v"], w = (*map)["w"];
    EXPECT_EQ(place(dynamic_cast<cIterObj &>(*v)), "undefined");
    EXPECT_EQ(place(dynamic_cast<cIterObj &>(*w)), "b");
}

TEST_F(Choice, the_constructor_selects_the_first_choice) {
    typeref const type = choice_type({"a", "b"});
    cChoiceVal const value(type.get());
    EXPECT_EQ(place(value), "a");
    EXPECT_FALSE(value.is_undefined());
    EXPECT_EQ(&value.type(), type.get());
    EXPECT_TRUE(value.choices() == type->tmember("choices"));
    EXPECT_FALSE(value.has_ommap())
        << "a value follows its type only if the constructor's caller asks for it";
}

TEST_F(Choice, the_constructor_works_without_choices_or_type) {
    typeref const bare = choice_type("Bare", nullptr);
    cChoiceVal const no_choices(bare.get());
    EXPECT_EQ(place(no_choices), "lost");
    EXPECT_TRUE(no_choices.is_undefined());
    EXPECT_EQ(no_choices.choices(), nullptr);
    EXPECT_EQ(no_choices.hash(), nullptr);
    EXPECT_EQ(no_choices.size(), 0);
    cChoiceVal const no_type(static_cast<cTypeObj *>(nullptr));
    EXPECT_EQ(&no_type.type(), &cat::type_nil());
    EXPECT_TRUE(no_type.is_void());
    typeref const empty = choice_type("Empty", make<cMapObj>());
    cChoiceVal value(empty.get());
    EXPECT_EQ(place(value), "lost");
    EXPECT_FALSE(value.setpos(0));
    value.set_undefined();
    EXPECT_EQ(place(value), "undefined");
}

TEST_F(Choice, the_copy_constructor_copies_type_and_key) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    cChoiceVal const copy(*value);
    EXPECT_EQ(place(copy), "b");
    EXPECT_EQ(&copy.type(), type.get());
    EXPECT_FALSE(copy.has_ommap()) << "a copy does not follow the type";
    value->set_undefined();
    EXPECT_EQ(place(cChoiceVal(*value)), "lost");
}

TEST_F(Choice, a_copy_looks_up_the_key_in_the_present_choices) {
    typeref const type = choice_type({"a", "b"});
    cChoiceVal value(type.get());
    value = "b";
    type->set_tmember("choices", map_of({"x", "b"}));
    cChoiceVal const copy(value);
    EXPECT_EQ(place(copy), "b");
    EXPECT_EQ(copy.pos(), 1);
    EXPECT_TRUE(copy.hash() != value.hash());
    type->set_tmember("choices", map_of({"x", "y"}));
    EXPECT_EQ(place(cChoiceVal(value)), "lost");
}

TEST_F(Choice, the_constructor_accepts_the_name_of_the_type) {
    typeref const type = choice_type({"a", "b"});
    cTypeInsert const insert(*type);
    EXPECT_EQ(place(cChoiceVal("Letter", "b")), "b");
    EXPECT_EQ(place(cChoiceVal("Letter", nullptr)), "a");
    EXPECT_EQ(place(cChoiceVal("Letter", "x")), "lost");
    EXPECT_EQ(place(cChoiceVal("Letter", "")), "lost");
    cChoiceVal const unknown("no such type", "b");
    EXPECT_EQ(&unknown.type(), &cat::type_nil());
    EXPECT_EQ(place(unknown), "lost");
    EXPECT_EQ(place(cChoiceVal("map", nullptr)), "lost");
}

TEST_F(Choice, values_of_every_kind_can_be_assigned) {
    typeref const type = choice_type({"a", "b", "c"});
    cRef<cMapObj> const numbers = make<cMapObj>();
    for (int i : {5, 6}) numbers->setattr(own_key(i), cat::of(i));
    cChoiceVal value(type.get()), number(choice_type("Number", numbers).get());
    value = std::string("b");
    EXPECT_EQ(place(value), "b");
    value = "c";
    EXPECT_EQ(place(value), "c");
    value = static_cast<char const *>(nullptr);
    EXPECT_EQ(place(value), "c");
    value = 5;
    EXPECT_EQ(place(value), "c");
    number = 6;
    EXPECT_EQ(place(number), "6");
    number = "5";
    EXPECT_EQ(place(number), "6") << "a string does not select an int key";
    cChoiceVal const other(type.get());
    value = other;
    EXPECT_EQ(place(value), "a");
    objref const key = cat::of("b");
    value = *key;
    EXPECT_EQ(place(value), "b");
    cChoiceVal const &self = value;
    value = self;
    EXPECT_EQ(place(value), "b");
}

TEST_F(Choice, a_value_is_convertible_from_keys) {
    EXPECT_TRUE((std::is_constructible_v<cChoiceVal, cTypeObj *, bool>));
    EXPECT_TRUE((std::is_constructible_v<cChoiceVal, std::string const &, char const *>));
    EXPECT_FALSE((std::is_convertible_v<cTypeObj *, cChoiceVal>));
    EXPECT_TRUE((std::is_copy_constructible_v<cChoiceVal>));
    EXPECT_TRUE((std::is_base_of_v<cIterObj, cChoiceVal>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<cChoiceVal &>() = 1), cChoiceVal &>));
}

TEST_F(Choice, setkey_by_text_and_by_number) {
    auto const list = make<cVectorObj>();
    for (char const *of : {"x", "y"}) list->append(cat::of(of));
    typeref const type = choice_type("Listed", list);
    valueref const value = value_of(type);
    EXPECT_EQ(place(value), "0");
    EXPECT_TRUE(value->setkey(own_key(1)));
    EXPECT_EQ(cat::as_string(value->valref()), "y");
    EXPECT_EQ(value->key_as_index(), 1);
    EXPECT_FALSE(value->setkey("1"));
    EXPECT_FALSE(value->setkey(own_key(2)));
    EXPECT_FALSE(value->setkey(objref()));
    EXPECT_EQ(place(value), "1");
}

TEST_F(Choice, set_undefined_and_back) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_of(type);
    value->set_undefined();
    EXPECT_EQ(place(value), "undefined");
    EXPECT_TRUE(value->is_undefined());
    EXPECT_EQ(&value->value(), cat::bad().get());
    EXPECT_EQ(value->key(), nullptr);
    EXPECT_EQ(value->pos(), -1);
    value->setpos(1);
    EXPECT_FALSE(value->is_undefined());
    EXPECT_EQ(place(value), "b");
}

TEST_F(Choice, a_value_keeps_its_type_alive) {
    typeref type = choice_type({"a"});
    cTypeObj const *const address = type.get();
    valueref const value = value_of(type);
    type = nullptr;
    EXPECT_EQ(&value->type(), address);
    EXPECT_EQ(value->type().name(), "Letter");
    EXPECT_EQ(cat::as_text(value), "Letter(a)");
    EXPECT_TRUE(value->update());
    objref const copy = value->clone();
    EXPECT_TRUE(copy->equal(*value));
}

TEST_F(Choice, a_value_outlives_the_registration_of_its_type) {
    valueref value;
    {
        typeref const type = choice_type({"a", "b"});
        cTypeInsert const insert(*type);
        value = value_of(type);
    }
    EXPECT_EQ(&cat::find_type("Letter"), &cat::type_nil());
    *value = "b";
    EXPECT_EQ(place(value), "b");
}

// --- the methods of values, each row

TEST_F(ChoiceMethod, newobj_creates_a_value_that_follows) {
    typeref const type = choice_type({"a", "b"});
    objref const made = type->newobj();
    auto const *const value = dynamic_cast<cChoiceVal *>(made.get());
    ASSERT_TRUE(value);
    EXPECT_EQ(place(*value), "a");
    EXPECT_EQ(&made->omember("updatefromtype")->type(), &cat::type_slot1());
    EXPECT_TRUE(cTomChoiceVal::newobj(cat::of(1)) == cat::bad());
    EXPECT_TRUE(cTomChoiceVal::newobj(nullptr) == cat::bad());
}

TEST_F(ChoiceMethod, assign_uses_the_key_of_values_and_iterators) {
    typeref const type = choice_type({"a", "b", "c"});
    typeref const other_type = choice_type("Other", map_of({"c", "x"}));
    valueref const value = value_of(type);
    EXPECT_EQ(assigned(*value, value_at(type, "b")), "true b");
    EXPECT_EQ(assigned(*value, value_at(other_type, "c")), "true c");
    EXPECT_EQ(assigned(*value, value_at(other_type, "x")), "true c");
    EXPECT_TRUE(&value->type() == type.get() && value->hash() != value_of(other_type)->hash());
    mapref const map = map_of({"b", "z"});
    EXPECT_EQ(assigned(*value, map->iterobj()), "true b");
    valueref const undefined = value_of(type);
    undefined->set_undefined();
    EXPECT_EQ(assigned(*value, undefined), "true b")
        << "an undefined value has no key, so nothing changes";
    EXPECT_EQ(assigned(*value, cat::nil()), "true b");
    EXPECT_EQ(assigned(*value, objref()), "true b");
    EXPECT_EQ(assigned(*value, map), "true b") << "a map is not a key";
    objref none;
    EXPECT_TRUE(cTomChoiceVal::m_assign(*value, none));
    EXPECT_FALSE(cTomChoiceVal::m_assign(*cat::of(1), none));
}

TEST_F(ChoiceMethod, a_constant_value_refuses_changes) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_of(type);
    value->setflags(of_const);
    cErrorLog errors;
    EXPECT_EQ(assigned(*value, cat::of("b")), "false a");
    EXPECT_EQ(errors.text(),
              "0x41400000 Object is const. Method 'assign' called from type: string\n");
}

TEST_F(ChoiceMethod, getattr_of_each_key) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    EXPECT_EQ(cat::as_string(value->getattr(text("key"))), "b");
    EXPECT_TRUE(cat::is_equal(value->getattr(text("value")), 2));
    EXPECT_TRUE(cat::is_equal(value->getattr(text("pos")), 1));
    EXPECT_TRUE(value->getattr(text("choices")) == type->tmember("choices"));
    for (objref const &key : {text("other"), text(""), objref(cat::of(1)), objref()})
        EXPECT_TRUE(value->getattr(key) == cat::bad());
    value->set_undefined();
    EXPECT_EQ(value->getattr(text("key")), nullptr);
    EXPECT_TRUE(value->getattr(text("value")) == cat::bad());
    EXPECT_TRUE(cat::is_equal(value->getattr(text("pos")), -1));
    EXPECT_TRUE(cTomChoiceVal::getattr(cat::of(1), text("key")) == cat::bad());
}

TEST_F(ChoiceMethod, getattr_of_choices_without_any) {
    valueref const value = value_of(choice_type("Bare", nullptr));
    EXPECT_TRUE(value->getattr(text("choices")) == cat::badfind());
}

TEST_F(ChoiceMethod, setattr_of_value_changes_the_entry_of_the_type) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b"), other = value_at(type, "b");
    int fired = 0;
    cAction const count([&] { ++fired; }, type->changed_signal());
    EXPECT_TRUE(value->setattr(text("value"), cat::of("new")));
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(cat::as_string(other->valref()), "new");
    EXPECT_EQ(cat::as_string(type->getattr(text("b"))), "new");
    EXPECT_FALSE(value->setattr(text("key"), cat::of("a")));
    EXPECT_FALSE(value->setattr(text("pos"), cat::of(0)));
    EXPECT_FALSE(value->setattr(text("choices"), map_of({"x"})));
    EXPECT_FALSE(value->setattr(cat::of(1), cat::of(0)));
    EXPECT_FALSE(value->setattr(objref(), cat::of(0)));
    EXPECT_EQ(fired, 1);
    objref key = text("value"), one = cat::of(1);
    EXPECT_FALSE(cTomChoiceVal::setattr(*cat::of(1), key, one));
}

TEST_F(ChoiceMethod, setattr_of_an_undefined_or_lost_value_is_false) {
    typeref const type = choice_type({"a"});
    valueref const value = value_of(type);
    value->set_undefined();
    EXPECT_FALSE(value->setattr(text("value"), cat::of(9)));
    EXPECT_TRUE(cat::is_equal(type->getattr(text("a")), 1));
    typeref const bare = choice_type("Bare", nullptr);
    EXPECT_FALSE(value_of(bare)->setattr(text("value"), cat::of(9)));
    EXPECT_TRUE(bare->tmember("choices") == cat::badfind()) << "no map was created";
}

TEST_F(ChoiceMethod, a_kill_value_removes_the_choice_and_makes_its_values_invalid) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b"), other = value_at(type, "b");
    EXPECT_TRUE(value->setattr(text("value"), cat::badfind()));
    EXPECT_EQ(place(value), "lost");
    EXPECT_EQ(place(other), "lost");
    EXPECT_EQ(value->size(), 1);
}

TEST_F(ChoiceMethod, the_value_of_a_choice_called_choices_replaces_them_all) {
    typeref const type = choice_type({"a", "choices"});
    valueref const value = value_at(type, "choices");
    mapref const fresh = map_of({"x"});
    EXPECT_TRUE(value->setattr(text("value"), fresh));
    EXPECT_TRUE(type->tmember("choices") == fresh);
    EXPECT_EQ(place(value), "x");
}

TEST_F(ChoiceMethod, equal_by_position_only) {
    mapref const shared = map_of({"a", "b"});
    typeref const type = choice_type("One", shared), other_type = choice_type("Two", shared);
    valueref const value = value_at(type, "a");
    EXPECT_FALSE(value->equal(*value_at(other_type, "a"))) << "values of two types are unequal";
    valueref const one = value_of(type), two = value_of(type);
    one->set_undefined();
    EXPECT_FALSE(one->equal(*two));
    two->set_undefined();
    EXPECT_TRUE(one->equal(*two));
    type->changed();
    EXPECT_TRUE(one->equal(*two)) << "both have lost their choice";
    objref const method = type->tmember("equal"), number = cat::of(1);
    auto const &equal = dynamic_cast<cExeObj const &>(*method);
    objref same = two, other = value, key = cat::of("a"), none;
    EXPECT_TRUE(equal.pexecute(*one, same));
    EXPECT_FALSE(equal.pexecute(*one, other));
    EXPECT_FALSE(equal.pexecute(*one, key));
    EXPECT_FALSE(equal.pexecute(*one, none));
    EXPECT_FALSE(equal.pexecute(*number, same));
}

TEST_F(ChoiceMethod, a_clone_has_the_same_choice_and_follows) {
    typeref const type = choice_type({"a", "b"});
    objref const copy = value_at(type, "b")->clone();
    auto const *const value = dynamic_cast<cChoiceVal *>(copy.get());
    ASSERT_TRUE(value);
    EXPECT_EQ(place(*value), "b");
    type->setattr(text("choices"), map_of({"x", "b"}));
    EXPECT_EQ(value->pos(), 1);
    EXPECT_EQ(value->choices(), type->tmember("choices"));
}

// --- types as objects, each row

TEST_F(ChoiceType, newobj_of_the_metatype_creates_a_nameless_type) {
    objref const made = cat::typetype_choice().newobj();
    auto const *const type = dynamic_cast<cTypeObj *>(made.get());
    ASSERT_TRUE(type);
    EXPECT_EQ(&type->type(), &cat::typetype_choice());
    EXPECT_EQ(type->name(), "");
    EXPECT_TRUE(type->is_type());
    EXPECT_TRUE(type->tmember("choices") == cat::badfind());
}

TEST_F(ChoiceType, a_new_type_has_the_methods_of_its_values_and_the_signal) {
    typeref const type = choice_type({"a"});
    for (method_id id :
         {mid_newobj, mid_assign, mid_getattr, mid_setattr, mid_write, mid_read, mid_equal}) {
        EXPECT_TRUE(type->method(id)) << cTypeObj::name_of(id);
        EXPECT_TRUE(type->tmember(cTypeObj::name_of(id))->is_exe());
    }
    EXPECT_NE(type->method(mid_write), cat::type_nil().method(mid_write));
    EXPECT_TRUE(type->changed_signal());
    EXPECT_EQ(&type->omember("changed")->type(), &cat::type_signal());
    EXPECT_EQ(type->ommap().used(), 1u);
    EXPECT_EQ(type->method(mid_add), nullptr);
}

TEST_F(ChoiceType, create_does_not_change_a_type_in_use) {
    typeref const type = choice_type({"a"});
    type->set_tmember("assign", cat::badfind());
    type->create();
    EXPECT_EQ(type->method(mid_assign), nullptr);
    EXPECT_TRUE(cat::is_equal(type->tmember("choices")->getattr(text("a")), 1));
}

TEST_F(ChoiceType, setattr_of_choices_replaces_them_and_fires) {
    typeref const type = choice_type("Letter", nullptr);
    int fired = 0;
    cAction const count([&] { ++fired; }, type->changed_signal());
    mapref const map = map_of({"a"});
    EXPECT_TRUE(type->setattr(text("choices"), map));
    EXPECT_TRUE(type->tmember("choices") == map);
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(type->setattr(text("choices"), cat::of(5)));
    EXPECT_TRUE(cat::is_equal(type->tmember("choices"), 5));
    EXPECT_TRUE(type->setattr(text("choices"), cat::nil()));
    EXPECT_TRUE(type->tmember("choices") == cat::nil());
    EXPECT_TRUE(type->setattr(text("choices"), cat::badfind()));
    EXPECT_TRUE(type->tmember("choices") == cat::badfind());
    EXPECT_EQ(fired, 4);
    (*type)["choices"] = map;
    EXPECT_TRUE(type->tmember("choices") == map);
    EXPECT_EQ(fired, 5);
}

TEST_F(ChoiceType, setattr_of_another_key_creates_the_map_and_fires) {
    typeref const type = choice_type("Letter", nullptr);
    int fired = 0;
    cAction const count([&] { ++fired; }, type->changed_signal());
    EXPECT_TRUE(type->setattr(text("a"), cat::of(1)));
    EXPECT_TRUE(cObj::is_map(type->tmember("choices")));
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(type->setattr(own_key(2), cat::of(2)));
    EXPECT_TRUE(type->setattr(text("a"), cat::badfind()));
    EXPECT_EQ(cat::as_text(type->tmember("choices")), "{\n  2= 2;\n}");
    EXPECT_EQ(fired, 3);
    EXPECT_FALSE(type->setattr(objref(), cat::of(1)));
    EXPECT_FALSE(type->setattr(text("b"), cat::bad()));
    EXPECT_EQ(fired, 3) << "nothing has changed";
}

TEST_F(ChoiceType, setattr_that_the_choices_refuse_is_silent) {
    mapref const map = map_of({"a"});
    map->setflags(of_const_keys);
    typeref const type = choice_type("Letter", map);
    int fired = 0;
    cAction const count([&] { ++fired; }, type->changed_signal());
    cErrorLog errors;
    EXPECT_FALSE(type->setattr(text("b"), cat::of(1)));
    EXPECT_EQ(errors.text(), "0x40020000 Setattr in object type 'map', key 'b': "
                             "  Flag of const key set offended\n");
    EXPECT_TRUE(type->setattr(text("a"), cat::of(5)));
    EXPECT_EQ(fired, 1);
    errors.clear();
    type->set_tmember("choices", cat::of(5));
    EXPECT_FALSE(type->setattr(text("b"), cat::of(1)));
    EXPECT_EQ(errors.text(), "0x48000000 Call of missed standard method 'setattr' in type: int\n");
    EXPECT_EQ(fired, 1);
}

TEST_F(ChoiceType, getattr_of_choices_and_below) {
    typeref const type = choice_type({"a", "b"});
    EXPECT_TRUE(type->getattr(text("choices")) == type->tmember("choices"));
    EXPECT_TRUE(cat::is_equal(type->getattr(text("b")), 2));
    EXPECT_TRUE(type->getattr(text("x")) == cat::badfind());
    EXPECT_TRUE(cat::is_equal((*type)["a"], 1));
    typeref const bare = choice_type("Bare", nullptr);
    EXPECT_TRUE(bare->getattr(text("choices")) == cat::badfind());
    EXPECT_TRUE(bare->getattr(text("x")) == cat::badfind());
}

TEST_F(ChoiceType, iterobj_and_append_use_the_choices) {
    typeref const type = choice_type("Letter", make<cVectorObj>());
    EXPECT_TRUE(type->append(cat::of("x")));
    EXPECT_TRUE(type->append(cat::of("y")));
    std::string walked;
    for (cIterObj it = type->begin(); it.valid(); ++it)
        walked += it.key_as_string() + cat::as_string(it.valref()) + " ";
    EXPECT_EQ(walked, "0x 1y ");
    typeref const bare = choice_type("Bare", nullptr);
    EXPECT_FALSE(bare->begin().valid());
    EXPECT_TRUE(bare->iterobj() == cat::bad());
    cErrorLog errors;
    EXPECT_FALSE(bare->append(cat::of(1)));
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_EQ(errors.last_code(), 0x44000000u);
}

TEST_F(ChoiceType, methods_refuse_objects_that_are_not_types) {
    objref number = cat::of(1), key = text("choices"), value = cat::of(2);
    EXPECT_FALSE(cTomChoice::setattr(*number, key, value));
    EXPECT_TRUE(cTomChoice::getattr(number, key) == cat::bad());
    EXPECT_TRUE(cTomChoice::getattr(nullptr, key) == cat::bad());
}

TEST_F(ChoiceType, a_program_may_store_a_type_among_its_own_choices) {
    typeref const type = choice_type({"a"});
    EXPECT_TRUE(type->setattr(text("self"), type));
    EXPECT_TRUE(type->setattr(text("value"), value_of(type)));
    EXPECT_TRUE(type->is_owner_of(*type));
    static_cast<cMapObj &>(*type->tmember("choices")).clear(); // breaks the cycle
}

TEST_F(ChoiceType, defining_a_type_again_replaces_its_choices) {
    typeref const type = choice_type({"a", "b"});
    cTypeInsert const insert(*type);
    valueref const value = value_at(type, "b");
    mapref const fresh = map_of({"x", "b"});
    typeref const again = choice_type("Letter", fresh);
    EXPECT_TRUE(cat::set_type(*again, true));
    EXPECT_EQ(&cat::find_type("Letter"), type.get());
    EXPECT_TRUE(type->tmember("choices") == fresh);
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 1);
}

TEST_F(ChoiceType, defining_a_type_again_with_the_same_choices_changes_nothing) {
    typeref const type = choice_type({"a"});
    cTypeInsert const insert(*type);
    int fired = 0;
    cAction const count([&] { ++fired; }, type->changed_signal());
    typeref const again = choice_type("Letter", type->tmember("choices"));
    EXPECT_TRUE(cat::set_type(*again, true));
    EXPECT_TRUE(cat::set_type(*type, true));
    EXPECT_EQ(fired, 0);
    EXPECT_TRUE(type->update_from(*choice_type({"a"}))) << "an equal map changes nothing";
    EXPECT_TRUE(type->update_from(*choice_type("Letter", nullptr)));
    EXPECT_TRUE(cat::is_equal(type->getattr(text("a")), 1));
    EXPECT_EQ(fired, 0);
    EXPECT_FALSE(type->update_from(cat::type_map()));
}
