// The registry: built-in types, constants, maps, insertion, redefinition, modifiers.
#include "qrv/core/ctypes.h"

#include "core/cregistry.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cobjmodifier.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <gmock/gmock.h>

namespace {

class RegistryEdge : public QrvTest {};
class Registry : public QrvTest {};

using test::key;

std::string keys_of(cMapObj &map) {
    std::string all;
    for (cAttrNode const *node = map.datamap().first(); node; node = map.datamap().next(node))
        all += cat::as_string(node->key()) + " ";
    return all;
}

} // namespace

TEST_F(RegistryEdge, an_unknown_name_is_niltype_and_changes_nothing) {
    unsigned int const used = cat::typemap().datamap().used();
    EXPECT_EQ(&cat::find_type("nosuch"), &cat::type_nil());
    EXPECT_EQ(cat::typemap().datamap().used(), used);
}

TEST_F(RegistryEdge, a_second_type_of_a_name_prints_three_lines) {
    typeref const first = make<cTypeObj>("twice"), second = make<cTypeObj>("twice");
    EXPECT_TRUE(cTypeInsert::insert(first, false));
    EXPECT_FALSE(cTypeInsert::insert(second, false));
    EXPECT_EQ(messages(), "***Error: Bad creation of duplicate type 'twice'\n"
                          "          Each type object is identified by its name\n"
                          "          and must be created exactly once!!\n");
    EXPECT_EQ(&cat::find_type("twice"), first.get());
    cat::typemap().datamap().delitem("twice");
}

TEST_F(RegistryEdge, set_type_registers_a_new_type) {
    typeref const type = make<cTypeObj>("fresh");
    EXPECT_TRUE(cat::set_type(*type, false));
    EXPECT_EQ(&cat::find_type("fresh"), type.get());
    cat::typemap().datamap().delitem("fresh");
}

TEST_F(RegistryEdge, a_type_modifier_removes_a_new_member_again) {
    cTypeObj type("t");
    {
        cTypeModifier const modifier(type, "note", cat::of(1));
        EXPECT_TRUE(cat::is_equal(type.tmember("note"), 1));
    }
    EXPECT_TRUE(type.tmember("note") == cat::badfind());
}

TEST_F(RegistryEdge, required_is_void_but_not_nil) {
    objref const required = cat::constmap().datamap().getitem("REQUIRED");
    EXPECT_TRUE(required->is_void());
    EXPECT_FALSE(required->is_nil());
    EXPECT_EQ(cat::as_text(required), "#REQUIRED");
}

TEST_F(RegistryEdge, a_choice_type_over_one_of_its_name_replaces_the_choices) {
    cTypeObj type(&cat::typetype_choice(), "registry_choice", nullptr);
    type.set_tmember("choices", cat::of(1));
    cTypeInsert const insert(type);
    typeref const again = make<cTypeObj>(&cat::typetype_choice(), "registry_choice", nullptr);
    objref const choices = cat::of(2);
    again->set_tmember("choices", choices);
    EXPECT_TRUE(cat::set_type(*again, true));
    EXPECT_EQ(&cat::find_type("registry_choice"), &type);
    EXPECT_TRUE(type.tmember("choices") == choices);
    EXPECT_EQ(again->refs(), 1u) << "the registry does not hold it";
}

TEST_F(RegistryEdge, type_of_key_of_an_unknown_name_is_niltype) {
    EXPECT_TRUE(cat::type_of_key(cat::of("nosuch")) == cat::bad());
}

TEST_F(Registry, the_maps_hold_these_keys_in_this_order) {
    cat::type_signal(); // types created on first use follow, perhaps created by another test
    EXPECT_THAT(keys_of(cat::typemap()),
                testing::StartsWith("string niltype type exe bool int float double map set "
                                    "vector iterator choice attspec attlist cSignal "));
    EXPECT_EQ(keys_of(cat::constmap()), "nil bad badfind true false REQUIRED IMPLIED FIXED ");
    EXPECT_EQ(keys_of(cat::gmmap()),
              "type iterobj ommap getslice new wformat cpcommands flags flags_of entrytype "
              "set_const_flag set_const_keys set_entrytype ");
    EXPECT_EQ(keys_of(cat::dbase()), "typemap constmap gmmap ");
}

TEST_F(Registry, every_constant_is_the_accessors_object) {
    cAttrHash const &hash = cat::constmap().datamap();
    EXPECT_TRUE(hash.find("nil")->valref() == cat::nil());
    EXPECT_TRUE(hash.find("bad")->valref() == cat::bad());
    EXPECT_TRUE(hash.find("badfind")->valref() == cat::badfind());
    EXPECT_TRUE(hash.find("true")->valref() == cat::btrue());
    EXPECT_TRUE(hash.find("false")->valref() == cat::bfalse());
    EXPECT_EQ(cat::find_const(cat::bad())->key_as_string(), "bad");
    EXPECT_EQ(cat::find_const(cat::of(1)), nullptr);
}

TEST_F(Registry, built_in_types_by_name_flags_and_metatype) {
    for (char const *name : {"string", "bool", "int", "float", "double", "map", "set", "vector"}) {
        EXPECT_TRUE(cat::find_type(name).flags_of(tf_bare)) << name;
        EXPECT_EQ(&cat::find_type(name).type(), &cat::typetype());
    }
    for (char const *name : {"niltype", "type", "exe", "iterator", "choice", "attspec", "attlist"})
        EXPECT_FALSE(cat::find_type(name).flags_of(tf_bare)) << name;
    EXPECT_TRUE(cat::type_exe().flags_of(tf_exe));
    EXPECT_TRUE(cat::type_map().flags_of(tf_container));
    EXPECT_EQ(&cat::typetype().type(), &cat::typetype());
    EXPECT_EQ(&cat::nil()->type(), &cat::type_nil());
}

TEST_F(Registry, an_entry_that_is_not_a_type_is_not_found) {
    cat::typemap().datamap().mapitem("odd", cat::of(1));
    EXPECT_EQ(&cat::find_type("odd"), &cat::type_nil());
    EXPECT_TRUE(cat::call("new", cat::of("odd")) == cat::bad());
    cat::typemap().datamap().delitem("odd");
}

TEST_F(Registry, a_fatal_duplicate_throws) {
    typeref const type = make<cTypeObj>("int");
    try {
        cTypeInsert::insert(type, true);
        ADD_FAILURE() << "nothing was thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 1u);
        EXPECT_EQ(error.as_string(), "Fatal: duplicate name of cTypeObj: int");
    }
    EXPECT_FALSE(cTypeInsert::insert(typeref(), true));
    EXPECT_EQ(&cat::find_type("int"), &cat::type_int());
}

TEST_F(Registry, a_scoped_type_and_its_copies) {
    cTypeObj type("scoped");
    {
        cTypeInsert const insert(type);
        EXPECT_EQ(&cat::find_type("scoped"), &type);
        {
            cTypeInsert const copy(insert);
            EXPECT_EQ(type.refs(), 4u); // own, registry, both inserts
        }
        EXPECT_EQ(&cat::find_type("scoped"), &cat::type_nil());
    }
    EXPECT_EQ(type.refs(), 1u);
}

TEST_F(Registry, a_type_renamed_after_its_insertion_leaves_no_entry) {
    {
        cTypeObj type("registry_before", nullptr);
        cTypeInsert const insert(type);
        type.set_name("registry_after");
        EXPECT_EQ(&cat::find_type("registry_before"), &type);
    }
    EXPECT_EQ(&cat::find_type("registry_before"), &cat::type_nil());
    EXPECT_EQ(&cat::find_type("registry_after"), &cat::type_nil());
}

TEST_F(Registry, a_type_registered_under_several_names_is_removed_from_all) {
    cTypeObj other("registry_third", nullptr);
    cTypeInsert const keep(other);
    {
        cTypeObj type("registry_first", nullptr);
        cTypeInsert const insert(type);
        type.set_name("registry_second");
        EXPECT_TRUE(cTypeInsert::insert(typeref::share(&type), false));
        type.set_name("registry_third"); // the name of another type, whose entry stays
        EXPECT_EQ(type.refs(), 4u);      // own, insert, two entries
    }
    EXPECT_EQ(&cat::find_type("registry_first"), &cat::type_nil());
    EXPECT_EQ(&cat::find_type("registry_second"), &cat::type_nil());
    EXPECT_EQ(&cat::find_type("registry_third"), &other);
}

TEST_F(Registry, a_throwing_insert_leaves_nothing) {
    cTypeObj type("int");
    EXPECT_THROW(cTypeInsert const insert(type), cErr);
    EXPECT_EQ(type.refs(), 1u);
    EXPECT_EQ(&cat::find_type("int"), &cat::type_int());
}

TEST_F(Registry, set_type_over_another_metatype) {
    cTypeObj type("meta");
    cTypeInsert const insert(type);
    typeref const other = make<cTypeObj>(&cat::typetype_choice(), "meta", nullptr);
    EXPECT_FALSE(cat::set_type(*other, false));
    try {
        cat::set_type(*other, true);
        ADD_FAILURE() << "nothing was thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 1u);
        EXPECT_EQ(error.as_string(), "Fatal: duplicate name of cTypeObj: meta");
    }
    typeref const same = make<cTypeObj>("meta");
    EXPECT_TRUE(cat::set_type(*same, true));
    EXPECT_EQ(&cat::find_type("meta"), &type);
}

TEST_F(Registry, type_of_key_accepts_types_names_and_objects) {
    EXPECT_TRUE(cat::type_of_key(objref()) == cat::bad());
    EXPECT_TRUE(cat::type_of_key(cat::nil()) == cat::bad());
    EXPECT_TRUE(cat::type_of_key(cat::of(1)) == cat::bad());
    EXPECT_TRUE(cat::type_of_key(cat::of("int")) == &cat::type_int());
    objref const type = objref::share(&cat::type_map());
    EXPECT_TRUE(cat::type_of_key(type) == type);
    EXPECT_TRUE(cat::type_of_key(cat::of("niltype")) == cat::bad());
}

TEST_F(Registry, modifiers_and_their_copies_restore) {
    cTypeObj type("t");
    type.set_tmember("note", cat::of(1));
    {
        cTypeModifier const outer(type, "note", cat::of(2));
        {
            cTypeModifier const copy(outer);
            EXPECT_TRUE(cat::is_equal(type.tmember("note"), 2));
        }
        EXPECT_TRUE(cat::is_equal(type.tmember("note"), 1));
    }
    EXPECT_TRUE(cat::is_equal(type.tmember("note"), 1));
}

TEST_F(Registry, an_object_modifier_restores_through_setattr) {
    objref const map = make<cMapObj>();
    objref const before = cat::of(1);
    map->setattr(key("k"), before);
    {
        cAttr attr = (*map)["k"];
        cObjModifier const modifier(attr, cat::of(2));
        EXPECT_TRUE(cat::is_equal(map->getattr(key("k")), 2));
    }
    EXPECT_TRUE(map->getattr(key("k")) == before);
    {
        cAttr attr = (*map)["new"];
        cObjModifier const modifier(attr, cat::of(2));
    }
    EXPECT_TRUE(map->getattr(key("new")) == cat::badfind());
}

TEST_F(Registry, a_refused_member_does_not_throw_from_a_destructor) {
    cat::errhandler() = cErrHandler(0x90000000u, 0, 0xFFFFFFFFu);
    objref const map = make<cMapObj>();
    map->setattr(key("k"), cat::of(1));
    {
        cAttr attr = (*map)["k"];
        cObjModifier const modifier(attr, objref()); // removes
        map->setflags(of_const_keys);                // so the restore is refused,
        cat::errhandler().throw_mask(0x40000000u);   // and refusal throws
    }
    EXPECT_TRUE(map->getattr(key("k")) == cat::badfind());
    cTypeObj type("t");
    cat::errhandler() = cErrHandler(0, 0, 0xFFFFFFFFu);
    type.tmmap().mapitem("assign", cat::of("no executable"));
    {
        cTypeModifier const modifier(type, "assign", objref());
        cat::errhandler().throw_mask(0x50000000u);
    }
    EXPECT_EQ(type.method(mid_assign), nullptr);
}

TEST_F(Registry, without_factories_an_unknown_name_is_niltype) {
    auto *const make_type = std::exchange(core.make_type, nullptr);
    EXPECT_EQ(&cat::find_type("intf_of_nobody"), &cat::type_nil());
    EXPECT_EQ(&cat::find_type("int"), &cat::type_int());
    core.make_type = make_type;
}

TEST_F(Registry, without_signals_a_change_is_silent) {
    objref const obj = cat::of(1);
    int calls = 0;
    cFunctionSlot const slot([&calls] { ++calls; }, obj->force_changed_signal());
    auto *const fire_changed = std::exchange(core.fire_changed, nullptr);
    ASSERT_NE(fire_changed, nullptr);
    obj->changed();
    EXPECT_EQ(calls, 0);
    core.fire_changed = fire_changed;
    obj->changed();
    EXPECT_EQ(calls, 1);
}

TEST_F(Registry, the_core_is_ready) {
    EXPECT_EQ(cat::core_state(), cat::cCoreState::ready);
    EXPECT_TRUE(core.core_ready);
    core_bootstrap(); // no effect
    EXPECT_EQ(cat::typemap_ptr(), &cat::typemap());
    EXPECT_EQ(cat::type_hash_ptr(), &cat::typemap().datamap());
}
