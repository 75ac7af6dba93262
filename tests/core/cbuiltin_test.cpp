// The tests for objects that use only methods of the library.
#include "core/cbuiltin.h"

#include "containers/as_map.h"
#include "core/cscalar.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

namespace {

using cat::is_builtin;
using cat::method_bits;

class Builtin : public QrvTest {};

bool is_written_by_the_library(cObj const &obj) { return is_builtin(obj, method_bits(mid_write)); }

class cOwnText : public cObjD<std::string> {
  public:
    using cObjD::cObjD;
};

} // namespace

TEST_F(Builtin, values_and_containers_are_builtin) {
    for (objref const &value :
         {cat::of("a"), cat::of(1), cat::of(1.5), cat::of(1.5f), cat::of(true),
          objref(make<cMapObj>()), objref(make<cVectorObj>()), objref(make<cSetObj>())})
        EXPECT_TRUE(is_written_by_the_library(*value)) << value->type().name();
}

TEST_F(Builtin, other_objects_are_not_builtin) {
    typeref const type = make<cTypeObj>("own");
    EXPECT_FALSE(is_written_by_the_library(*cat::nil()));
    EXPECT_FALSE(is_written_by_the_library(*type));
    EXPECT_FALSE(is_written_by_the_library(*objref::adopt(new cObjD<int>(1, type.get()))));
    EXPECT_FALSE(is_builtin(*type, method_bits(mid_create)));
}

TEST_F(Builtin, an_object_that_claims_another_type_is_not_builtin) {
    objref const text = cat::of("a");
    text->set_type(&cat::type_int());
    EXPECT_FALSE(is_written_by_the_library(*text));
    text->set_type(&cat::type_string());
    EXPECT_TRUE(is_written_by_the_library(*text));
}

TEST_F(Builtin, a_missing_method_does_not_count_as_the_librarys) {
    EXPECT_FALSE(is_builtin(cat::type_bool(), method_bits(mid_less)));
    // Not int, which is not wholly the library's after a test has replaced its methods.
    EXPECT_TRUE(is_builtin(cat::type_double(), method_bits(mid_less, mid_equal)));
}

TEST_F(Builtin, an_object_with_its_own_executable_is_not_builtin) {
    objref const number = cat::of(1);
    number->set_omember("unit", cat::of("m"));
    EXPECT_TRUE(is_written_by_the_library(*number));
    number->set_omember("write", number->type().tmember("write"));
    EXPECT_FALSE(is_written_by_the_library(*number));
}

TEST_F(Builtin, an_object_loses_its_derived_class_in_the_destructor) {
    EXPECT_EQ(make<cOwnText>("a")->object_class(), cObjClass::string);
    EXPECT_EQ(cat::of(1.5)->object_class(), cObjClass::double_number);
    EXPECT_EQ(make<cVectorObj>()->object_class(), cObjClass::map);
    objref map = make<cMapObj>();
    cObj *const address = map.get();
    bool is_map = true;
    map->setattr(cat::of("a"), on_destroy([&] { is_map = cat::as_map(address) != nullptr; }));
    map = nullptr;
    EXPECT_FALSE(is_map);
}

TEST_F(Builtin, the_own_members_of_a_value_that_is_destroyed_do_not_find_it) {
    objref text = cat::of("a");
    cObj *const address = text.get();
    bool has_value = true;
    text->set_omember("w", on_destroy([&] { has_value = cat::value_in<std::string>(address); }));
    text = nullptr;
    EXPECT_FALSE(has_value);
}
