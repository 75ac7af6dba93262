// Values of choice types during all changes of the choices, with and without the signal.
#include "qrv/containers/cchoiceval.h"

#include "qrv/containers/csignalobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/text/write/cwriter.h"
#include "tests/containers/choice_support.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <memory>
#include <new>

using namespace choice_test;

namespace {

class ChoiceChangeEdge : public QrvTest {};
class ChoiceChange : public QrvTest {
  protected:
    ~ChoiceChange() override {
        EXPECT_EQ(cConnection::lock_count(), 0);
        EXPECT_EQ(cConnection::queue_length(), 0u);
    }
};

// Each new container has the address of the one before.
class cSameAddress : public cMapObj {
  public:
    cSameAddress() = default;
    cSameAddress(cSameAddress const &) = delete;
    cSameAddress &operator=(cSameAddress const &) = delete;
    ~cSameAddress() override = default;
    static void *operator new(std::size_t) { return place_; }
    static void operator delete(void *) {}

  private:
    alignas(cMapObj) static inline std::byte place_[sizeof(cMapObj)];
};

mapref same_address(std::initializer_list<char const *> keys) {
    mapref const map = make<cSameAddress>();
    for (char const *key : keys) map->setattr(text(key), cat::of(key));
    return map;
}

void set_choices(typeref const &type, objref const &choices) {
    ASSERT_TRUE(type->setattr(text("choices"), choices));
}

} // namespace

TEST_F(ChoiceChangeEdge, new_choices_with_the_key_keep_it) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    mapref const fresh = map_of({"b", "c"});
    set_choices(type, fresh);
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->hash(), &fresh->datamap());
    EXPECT_EQ(value->pos(), 0);
}

TEST_F(ChoiceChangeEdge, new_choices_without_the_key_select_the_first) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    set_choices(type, map_of({"x", "y"}));
    EXPECT_EQ(place(value), "x");
}

TEST_F(ChoiceChangeEdge, an_undefined_value_remains_undefined) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_of(type);
    value->set_undefined();
    mapref const fresh = map_of({"b", "c"});
    set_choices(type, fresh);
    EXPECT_TRUE(value->is_undefined());
    EXPECT_EQ(value->key(), nullptr);
    EXPECT_EQ(value->hash(), &fresh->datamap());
    set_choices(type, map_of({"d"}));
    EXPECT_TRUE(value->is_undefined());
}

TEST_F(ChoiceChangeEdge, removing_the_current_choice_makes_the_value_invalid) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    EXPECT_TRUE(type->setattr(text("b"), cat::badfind()));
    EXPECT_EQ(place(value), "lost");
    EXPECT_TRUE(value->is_undefined());
    EXPECT_FALSE(value->update());
}

// --- the container is replaced

TEST_F(ChoiceChange, choices_replaced_without_the_signal_are_found_at_the_next_update) {
    typeref const type = choice_type({"a", "b"});
    objref const old = type->tmember("choices");
    valueref const value = value_at(type, "b");
    mapref const fresh = map_of({"x", "b"});
    type->set_tmember("choices", fresh);
    EXPECT_EQ(value->choices(), nullptr) << "the type has other choices now";
    EXPECT_EQ(value->hash(), &static_cast<cMapObj &>(*old).datamap());
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 1);
    EXPECT_TRUE(value->update());
    EXPECT_EQ(value->choices(), fresh);
    EXPECT_EQ(value->hash(), &fresh->datamap());
}

TEST_F(ChoiceChange, the_old_container_is_destroyed_before_the_signal) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    type->set_tmember("choices", cat::badfind());
    EXPECT_EQ(place(value), "b") << "the value shares the hash";
    EXPECT_EQ(value->choices(), nullptr);
    EXPECT_TRUE(cat::is_equal(value->valref(), 2));
    type->changed();
    EXPECT_EQ(place(value), "lost");
    EXPECT_EQ(value->hash(), nullptr);
    EXPECT_EQ(value->choices(), nullptr);
    set_choices(type, map_of({"a", "b"}));
    EXPECT_EQ(place(value), "lost") << "the value does not remember its former key";
    EXPECT_EQ(value->size(), 2);
}

TEST_F(ChoiceChange, new_choices_at_the_old_address_are_noticed) {
    typeref const type = choice_type("Letter", same_address({"a", "b"}));
    cObj const *const address = type->tmember("choices").get();
    valueref const value = value_at(type, "b");
    EXPECT_TRUE(value->choices() == address);
    type->set_tmember("choices", cat::badfind());
    type->set_tmember("choices", same_address({"x", "b"}));
    ASSERT_TRUE(type->tmember("choices") == address);
    EXPECT_EQ(value->choices(), nullptr) << "the new map is another object at the same address";
    type->changed();
    EXPECT_EQ(value->choices(), type->tmember("choices"));
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 1);
    type->set_tmember("choices", cat::badfind());
    type->set_tmember("choices", same_address({"y"}));
    ASSERT_TRUE(type->tmember("choices") == address);
    EXPECT_TRUE(value->update());
    EXPECT_EQ(place(value), "y");
}

TEST_F(ChoiceChange, choices_may_be_containers_of_other_kinds) {
    typeref const type = choice_type({"a"});
    valueref const value = value_of(type);
    auto const list = make<cVectorObj>();
    list->append(cat::of("x"));
    set_choices(type, list);
    EXPECT_EQ(place(value), "0");
    set_choices(type, cat::of(5));
    EXPECT_EQ(place(value), "lost");
    EXPECT_EQ(value->hash(), nullptr);
    EXPECT_TRUE(cat::is_equal(value->choices(), 5));
    set_choices(type, cat::nil());
    EXPECT_EQ(value->choices(), nullptr);
    set_choices(type, list);
    EXPECT_TRUE(value->is_undefined());
    *value = 0;
    EXPECT_EQ(place(value), "0");
}

TEST_F(ChoiceChange, choices_may_alternate_between_two_containers) {
    mapref const one = map_of({"a", "b"}), two = map_of({"b", "a"});
    typeref const type = choice_type("Letter", one);
    valueref const value = value_at(type, "a");
    for (int i = 0; i < 3; ++i) {
        set_choices(type, two);
        EXPECT_EQ(place(value) + std::to_string(value->pos()), "a1");
        set_choices(type, one);
        EXPECT_EQ(place(value) + std::to_string(value->pos()), "a0");
    }
    type->set_tmember("choices", two);
    type->set_tmember("choices", one);
    EXPECT_EQ(value->choices(), one) << "the first choices are back before the value is used";
    EXPECT_TRUE(value->update());
}

// --- the container itself changes

TEST_F(ChoiceChange, an_entry_may_be_removed_without_the_signal) {
    typeref const type = choice_type({"a", "b", "c"});
    valueref const value = value_at(type, "b"), other = value_at(type, "c");
    auto &map = static_cast<cMapObj &>(*type->tmember("choices"));
    map.datamap().delitem("b");
    EXPECT_EQ(place(value), "undefined");
    EXPECT_TRUE(value->is_undefined());
    EXPECT_EQ(value->pos(), -1);
    EXPECT_EQ(cat::as_text(value), "Letter()");
    EXPECT_EQ(other->pos(), 1);
    map.setattr(text("b"), cat::of(9));
    EXPECT_TRUE(value->is_undefined()) << "a new entry with the same key is another entry";
    type->changed();
    EXPECT_EQ(place(value), "lost");
    EXPECT_EQ(place(other), "c");
    *value = "b";
    EXPECT_TRUE(cat::is_equal(value->valref(), 9));
}

TEST_F(ChoiceChange, the_choices_may_be_emptied) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    static_cast<cMapObj &>(*type->tmember("choices")).clear();
    EXPECT_TRUE(value->is_undefined());
    EXPECT_TRUE(value->empty());
    type->changed();
    EXPECT_EQ(place(value), "lost");
    set_choices(type, make<cMapObj>());
    EXPECT_EQ(place(value), "lost");
    EXPECT_TRUE(type->setattr(text("b"), cat::of(1)));
    EXPECT_EQ(place(value), "lost");
    EXPECT_TRUE(value->setpos(0));
    EXPECT_EQ(place(value), "b");
}

TEST_F(ChoiceChange, entries_added_and_moved_keep_the_choice) {
    typeref const type = choice_type({"b"});
    valueref const value = value_of(type);
    for (int i = 0; i < 300; ++i) type->setattr(own_key(i), cat::of(i));
    auto &hash = static_cast<cMapObj &>(*type->tmember("choices")).datamap();
    hash.insert(text("first"), cat::of(0), hash.first());
    type->changed();
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 1);
}

TEST_F(ChoiceChange, renaming_a_choice_makes_its_values_invalid) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "a");
    static_cast<cMapObj &>(*type->tmember("choices")).datamap().rename(text("a"), text("z"));
    type->changed();
    EXPECT_EQ(place(value), "lost");
    EXPECT_EQ(value->setkey("z"), true);
    EXPECT_EQ(value->pos(), 0);
}

TEST_F(ChoiceChange, choices_shared_with_an_attribute) {
    mapref const device = make<cMapObj>(), modes = map_of({"a", "b"});
    device->setattr(text("modes"), modes);
    typeref const type = choice_type("Mode", modes);
    valueref const value = value_at(type, "b");
    (*device)["modes"]["c"] = cat::of(3);
    *value = "c";
    EXPECT_EQ(place(value), "c");
    (*device)["modes"]["c"] = cat::badfind();
    EXPECT_TRUE(value->is_undefined());
    (*device)["modes"] = cat::badfind();
    *value = "a";
    EXPECT_EQ(place(value), "a") << "the type still shares the map";
    type->changed();
    EXPECT_EQ(place(value), "a");
}

TEST_F(ChoiceChange, a_value_in_a_map_follows) {
    typeref const type = choice_type({"a", "b"});
    mapref const device = make<cMapObj>();
    device->setattr(text("mode"), value_at(type, "b"));
    set_choices(type, map_of({"x", "b"}));
    EXPECT_TRUE(cat::is_equal((*device)["mode"]["pos"], 1));
    objref const copy = device->clone();
    EXPECT_EQ(cat::as_text((*copy)["mode"]), "Letter(b)");
}

TEST_F(ChoiceChange, a_value_that_does_not_follow_stays_until_an_update) {
    typeref const type = choice_type({"a", "b"});
    cChoiceVal value(type.get());
    value = "b";
    set_choices(type, map_of({"x", "b"}));
    EXPECT_EQ(value.pos(), 1);
    EXPECT_EQ(value.choices(), nullptr);
    value = "a";
    EXPECT_EQ(place(value), "a") << "the value uses the choices of its last update";
    EXPECT_TRUE(value.update());
    EXPECT_EQ(place(value), "x");
}

// --- destruction

TEST_F(ChoiceChange, the_value_is_destroyed_first_and_the_type_works) {
    typeref const type = choice_type({"a"});
    for (int i = 0; i < 3; ++i) value_of(type)->update();
    type->changed();
    EXPECT_EQ(type->changed_signal()->begin(), type->changed_signal()->end());
    EXPECT_EQ(type.get()->refs(), 1u);
}

TEST_F(ChoiceChange, the_type_is_released_while_values_exist) {
    typeref type = choice_type({"a", "b"});
    valueref one = value_at(type, "b"), two = value_at(type, "a");
    cTypeObj *const borrowed = type.get();
    type = nullptr;
    borrowed->setattr(text("choices"), map_of({"x", "b"}));
    EXPECT_EQ(place(one) + place(two), "bx");
    one = nullptr;
    EXPECT_EQ(place(two), "x");
    two = nullptr;
}

TEST_F(ChoiceChange, values_may_be_destroyed_in_the_emission_before_during_and_after_their_turn) {
    for (int turn = 0; turn < 3; ++turn) {
        typeref const type = choice_type({"a", "b"});
        valueref values[3];
        std::unique_ptr<cAction> killer;
        for (int i = 0; i < 3; ++i) {
            if (i == turn)
                killer = std::make_unique<cAction>(
                    [&] { values[0] = values[1] = values[2] = nullptr; }, type->changed_signal());
            values[i] = value_of(type);
        }
        set_choices(type, map_of({"x"}));
        EXPECT_FALSE(values[0] || values[1] || values[2]);
        type->changed();
    }
}

TEST_F(ChoiceChange, the_type_may_be_destroyed_in_the_emission) {
    typeref type = choice_type({"a"});
    valueref value = value_of(type);
    cAction const killer(
        [&] {
            value = nullptr;
            type = nullptr;
        },
        type->changed_signal());
    type->setattr(text("b"), cat::of(1));
    EXPECT_EQ(type, nullptr);
}

TEST_F(ChoiceChange, a_value_may_be_destroyed_while_it_reads_the_new_choices) {
    typeref const type = choice_type({"a", "b"});
    valueref value = value_of(type), other = value_at(type, "b");
    auto const acting = make<cActingMap>(*map_of({"x", "b"}));
    acting->action = [&] { value = nullptr; };
    set_choices(type, acting);
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(other->pos(), 1);
}

TEST_F(ChoiceChange, the_choices_may_be_replaced_while_a_value_reads_them) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    auto const acting = make<cActingMap>(*map_of({"x", "b"}));
    mapref const last = map_of({"y", "z", "b"});
    acting->action = [&] { set_choices(type, last); };
    set_choices(type, acting);
    EXPECT_EQ(value->choices(), last);
    EXPECT_EQ(value->hash(), &last->datamap());
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 2);
}

TEST_F(ChoiceChange, the_choices_may_be_removed_while_a_value_reads_them) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    auto acting = make<cActingMap>(*map_of({"x", "b"}));
    acting->action = [&] { type->set_tmember("choices", cat::badfind()); };
    objref const choices = std::exchange(acting, nullptr);
    set_choices(type, choices);
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 1);
    EXPECT_EQ(value->choices(), nullptr);
    type->changed();
    EXPECT_EQ(place(value), "lost");
}

TEST_F(ChoiceChange, the_type_may_be_released_while_a_value_reads_its_choices) {
    typeref type = choice_type({"a", "b"});
    valueref value = value_at(type, "b");
    auto const acting = make<cActingMap>(*map_of({"x", "b"}));
    acting->action = [&] {
        value = nullptr;
        type = nullptr;
    };
    typeref const borrowed = typeref::share(type.get());
    borrowed->set_tmember("choices", acting);
    value->update();
    EXPECT_EQ(value, nullptr);
}

TEST_F(ChoiceChange, an_exception_of_the_choices_is_passed_on) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    auto const acting = make<cActingMap>(*map_of({"x", "b"}));
    acting->action = [] { throw 5; };
    EXPECT_THROW(type->setattr(text("choices"), acting), int);
    EXPECT_TRUE(type->tmember("choices") == acting);
    EXPECT_EQ(place(value), "b");
    acting->action = [] { throw 5; };
    EXPECT_THROW(cChoiceVal const fresh(type.get(), true), int);
    type->changed();
    EXPECT_EQ(place(value_of(type)), "x");
}

// set_tmember releases the last reference to the old choices: a destructor fires the type's signal.
TEST_F(ChoiceChange, the_old_choices_may_fire_the_signal_when_they_are_destroyed) {
    mapref map = map_of({"a", "b"});
    typeref const type = choice_type("Letter", map);
    cTypeObj *const borrowed = type.get();
    map->set_omember("will", make<cOnDestroy>([borrowed] { borrowed->changed(); }));
    map = nullptr;
    valueref const value = value_at(type, "b");
    set_choices(type, map_of({"x", "b"}));
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 1);
}

TEST_F(ChoiceChange, removing_updatefromtype_ends_the_following) {
    typeref const type = choice_type({"a", "b"});
    valueref const value = value_at(type, "b");
    value->set_omember("updatefromtype", nullptr);
    set_choices(type, map_of({"x"}));
    EXPECT_EQ(place(value), "b");
    EXPECT_TRUE(value->update());
    EXPECT_EQ(place(value), "x");
}
