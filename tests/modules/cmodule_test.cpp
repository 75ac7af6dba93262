// Loading, counting and unloading of real modules, and the module objects.

#include "qrv/modules/cmodule.h"

#include "tests/modules/loading.h"

namespace {

class Module : public Loading {};

TEST_F(Module, a_file_is_loaded_set_up_and_unloaded) {
    put("plain");
    cModule *const module = cModule::load("plain");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(cModule::last_error(), "");
    EXPECT_EQ(events(), "plain is set up; ");
    EXPECT_EQ(module->name(), "plain");
    EXPECT_EQ(module->basename(), "plain");
    EXPECT_EQ(module->comment(), "");
    EXPECT_EQ(module->id(), 0u);
    EXPECT_NE(module->handle(), nullptr);
    EXPECT_EQ(module->usage(), 0);
    EXPECT_TRUE(module->canunload());
    EXPECT_EQ(number("plain thing"), 7);
    EXPECT_EQ(module_of("plain thing"), module);
    EXPECT_TRUE(is_mapped("./plain.so"));
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(events(), "plain goes; ");
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(Module, a_file_with_a_module_object_of_its_own) {
    put("own_module");
    cModule *const module = cModule::load("own_module");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "own_module is set up; ");
    EXPECT_EQ(module->name(), "a name of its own");
    EXPECT_EQ(module->comment(), "its own comment");
    EXPECT_EQ(module->basename(), "own_module");
    EXPECT_NE(module->handle(), nullptr);
    EXPECT_EQ(module_of("own thing"), module);
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(events(), "own_module goes; ");
    EXPECT_FALSE(is_mapped("./own_module.so"));
}

} // namespace
