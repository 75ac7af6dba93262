// The checker of the registry: it must report each rule when the test breaks it, and accept the
// repaired registry.
#include "containers/cregistry_check.h"

#include "core/cregistry.h"
#include "qrv/containers/cattrset.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"

namespace {

class RegistryCheck : public QrvTest {
  protected:
    static typeref known(char const *name, cTypeObj *metatype = nullptr) {
        auto type =
            typeref::adopt(metatype ? new cTypeObj(metatype, name, nullptr) : new cTypeObj(name));
        cTypeInsert::insert(type, true);
        return type;
    }
    cTypesBack types_;
};

std::string rule() { return cat::broken_registry_rule(); }

objref nothing(objref) { return cat::nil(); }

} // namespace

TEST_F(RegistryCheck, a_used_registry_passes) {
    EXPECT_EQ(rule(), "");
    known("Plain")->inherit(cat::type_double());
    typeref const record = known("Record", &cat::typetype_attlist());
    known("Letter", &cat::typetype_choice())->setattr(own_key(1), cat::of(2));
    cat::set_type(*typeref::adopt(new cTypeObj(&cat::typetype_attlist(), "Record", nullptr)),
                  false);
    EXPECT_EQ(rule(), "");
    record->set_name("Other"); // like a back reference under another key
    cTypeInsert::insert(record, true);
    EXPECT_EQ(rule(), "");
}

TEST_F(RegistryCheck, the_registry_must_share_its_hash_with_the_map) { // G1
    cMapObj *const map = std::exchange(core.typemap, new cMapObj);
    EXPECT_EQ(rule(), "G1 typemap");
    (void)cRef<cMapObj>::adopt(std::exchange(core.typemap, map));
    EXPECT_EQ(rule(), "");
}

TEST_F(RegistryCheck, a_value_that_is_not_a_type_is_found) { // G2
    core.type_hash->mapitem("five", cat::of(5));
    EXPECT_EQ(rule(), "G2 key=five");
}

TEST_F(RegistryCheck, a_key_that_is_not_the_name_is_found) { // G3
    typeref const type = known("Mine");
    type->set_name("Yours");
    EXPECT_EQ(rule(), "G3 key=Mine");
    type->set_name("int");
    EXPECT_EQ(rule(), "G3 key=Mine");
    type->set_name("Mine");
    EXPECT_EQ(rule(), "");
}

TEST_F(RegistryCheck, a_missing_or_renamed_built_in_type_is_found) { // G4
    cat::type_map().set_name("Map");
    EXPECT_EQ(rule(), "G4 key=map");
    cat::type_map().set_name("map");
    EXPECT_EQ(rule(), "");
}

TEST_F(RegistryCheck, an_endless_chain_of_types_is_found) { // G5
    typeref const type = known("Loop");
    type->set_type(type.get());
    EXPECT_EQ(rule(), "G5 key=Loop");
    type->set_type(&cat::typetype());
    EXPECT_EQ(rule(), "");
}

TEST_F(RegistryCheck, a_member_that_is_not_in_the_table_is_found) { // G6
    typeref const type = known("Mine");
    type->tmmap().mapitem("newobj", make<cExeMember>(nothing)); // bypasses set_tmember
    EXPECT_EQ(rule(), "G6 method=newobj key=Mine");
    type->set_tmember("newobj", make<cExeMember>(nothing));
    EXPECT_EQ(rule(), "");
    type->tmmap().delitem("newobj");
    EXPECT_EQ(rule(), "G6 method=newobj key=Mine");
    type->set_tmember("newobj", nullptr);
    EXPECT_EQ(rule(), "");
}

TEST_F(RegistryCheck, a_single_key_hook_is_found) { // G7
    known("Half")->set_hash(cat::hash_int, nullptr);
    EXPECT_EQ(rule(), "G7 key=Half");
    core.type_hash->delitem("Half");
    known("Half")->set_hash(nullptr, cat::heq_int);
    EXPECT_EQ(rule(), "G7 key=Half");
}

TEST_F(RegistryCheck, a_record_without_specifications_is_found) { // G8
    typeref const type = known("Record", &cat::typetype_attlist());
    objref const specs = type->tmember(std::string("attspec"));
    type->set_tmember("attspec", cat::of(1));
    EXPECT_EQ(rule(), "G8 key=Record");
    type->set_tmember("attspec", specs);
    EXPECT_EQ(rule(), "");
}

TEST_F(RegistryCheck, the_first_types_have_methods_without_members) {
    for (cTypeObj const *type : {&cat::type_nil(), &cat::typetype(), &cat::type_exe()}) {
        EXPECT_NE(type->method(mid_newobj), nullptr);
        EXPECT_NE(type->method(mid_assign), nullptr);
        EXPECT_TRUE(type->tmember(std::string("newobj")) == cat::badfind());
    }
}
