// Modules that register types, redefine them, derive from them, add converters and members, and are
// loaded and unloaded: the rules of the registry hold after each step.

#include "containers/cregistry_check.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "tests/modules/loading.h"

namespace {

class ModuleTypes : public Loading {
  protected:
    ModuleTypes() {
        put("types_one");
        put("types_two");
    }
    ~ModuleTypes() override {
        cat::type_hash_ptr()->delitem("Scale");
    } // the type outlives its modules

    static std::string scale() {
        objref const choices = cat::find_type("Scale").tmember(std::string("choices"));
        return cat::as_text(choices);
    }
    static bool is_known(char const *name) { return &cat::find_type(name) != &cat::type_nil(); }
    static bool are_members_there() {
        bool const unit = cObj::is_good(cat::type_double().tmember(std::string("unit")));
        EXPECT_EQ(cat::type_iterator().method(mid_add) != nullptr, unit);
        return unit;
    }
};

} // namespace

TEST_F(ModuleTypes, one_module_may_be_loaded_repeatedly) {
    cVoidFunction const add = cat::type_map().method(mid_add);
    for (int i = 0; i < 3; ++i) {
        cModule *const one = cModule::load("types_one");
        ASSERT_NE(one, nullptr) << cModule::last_error();
        EXPECT_EQ(events(), "one declares; ");
        EXPECT_EQ(cat::broken_registry_rule(), "");
        cTypeObj &celsius = cat::find_type("Celsius");
        EXPECT_EQ(celsius.method(mid_write), cat::type_double().method(mid_write));
        EXPECT_NE(cat::type_int().converter(celsius), nullptr);
        EXPECT_NE(cat::type_map().method(mid_add), add);
        EXPECT_TRUE(are_members_there());
        EXPECT_EQ(scale(), "{\n  celsius= 1;\n}");
        EXPECT_TRUE(one->unload());
        EXPECT_EQ(cat::broken_registry_rule(), "");
        EXPECT_FALSE(is_mapped("./types_one.so"));
        EXPECT_FALSE(is_known("Celsius"));
        EXPECT_FALSE(are_members_there());
        EXPECT_EQ(cat::type_map().method(mid_add), add);
        EXPECT_EQ(scale(), "{\n  celsius= 1;\n}"); // it consists of the library's objects only
    }
}

TEST_F(ModuleTypes, a_module_may_build_on_the_types_of_another) {
    for (int i = 0; i < 2; ++i) {
        cModule *const two = cModule::load("types_two");
        ASSERT_NE(two, nullptr) << cModule::last_error();
        EXPECT_EQ(events(), "one declares; two declares; ");
        EXPECT_EQ(cat::broken_registry_rule(), "");
        EXPECT_EQ(scale(), "{\n  kelvin= 2;\n}");
        cModule *const one = cModule::load("types_one"); // increases the count
        EXPECT_FALSE(one->unload()) << "the module is in use";
        EXPECT_EQ(cat::broken_registry_rule(), "");
        EXPECT_TRUE(is_known("Celsius") && is_known("Kelvin"));
        EXPECT_TRUE(two->unload());
        EXPECT_EQ(cat::broken_registry_rule(), "");
        EXPECT_TRUE(is_known("Celsius"));
        EXPECT_FALSE(is_known("Kelvin"));
        EXPECT_FALSE(one->unload()); // the other module has loaded it, too
        EXPECT_TRUE(one->unload());
        EXPECT_EQ(cat::broken_registry_rule(), "");
        EXPECT_FALSE(is_known("Celsius"));
        EXPECT_EQ(scale(), "{\n  kelvin= 2;\n}");
    }
}
