// The setup function of a module: it may load other modules or its own, or throw. And objects,
// errors and signals that a module and the program exchange.

#include "qrv/modules/cmodule.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/modules/loading.h"
#include "tests/modules/shared/cross.h"

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

class ModuleSetUp : public Loading {};

// --- loads in loads ---

TEST_F(ModuleSetUp, a_load_during_static_initialisation_separates_the_entries) {
    put("nested_static");
    put("plain");
    cModule *const outer = cModule::load("nested_static");
    ASSERT_NE(outer, nullptr) << cModule::last_error();
    EXPECT_EQ(names(things()), "before;plain thing;after;");
    EXPECT_EQ(module_of("before"), outer);
    EXPECT_EQ(module_of("after"), outer);
    cModule *const inner = module_of("plain thing");
    EXPECT_EQ(inner->name(), "plain");
    EXPECT_TRUE(outer->unload());
    EXPECT_EQ(number("plain thing"), 7);
    EXPECT_TRUE(inner->unload());
}

TEST_F(ModuleSetUp, a_module_that_loads_itself_gets_null) {
    put("loads_itself");
    cModule *const module = cModule::load("loads_itself");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(cModule::last_error(), "");
    EXPECT_EQ(events(), "not in static code; Module 'loads_itself' is just being loaded; ");
    EXPECT_TRUE(module->unload()); // it was counted once
    EXPECT_FALSE(is_mapped("./loads_itself.so"));
}

TEST_F(ModuleSetUp, a_module_that_loads_itself_under_another_name_gets_null) {
    put("loads_alias");
    fs::create_symlink("loads_alias.so", "alias.so");
    cModule *const module = cModule::load("loads_alias");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "Module 'alias' is just being loaded; ");
    EXPECT_EQ(cModule::load("alias"), module);
    EXPECT_FALSE(module->unload());
    EXPECT_TRUE(module->unload());
    EXPECT_FALSE(is_mapped("./loads_alias.so"));
}

TEST_F(ModuleSetUp, two_modules_that_load_each_other_are_loaded_once) {
    put("mutual_a");
    put("mutual_b");
    cModule *const a = cModule::load("mutual_a");
    ASSERT_NE(a, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "a begins; b begins; b has no a; a has b; ");
    cModule *const b = module_of("thing b");
    EXPECT_EQ(b->name(), "mutual_b");
    EXPECT_EQ(module_of("thing a"), a);
    EXPECT_TRUE(a->unload());
    EXPECT_TRUE(b->unload());
    EXPECT_FALSE(is_mapped("./mutual_a.so"));
    EXPECT_FALSE(is_mapped("./mutual_b.so"));
}

// --- exceptions during setup ---

TEST_F(ModuleSetUp, an_exception_during_setup_propagates_and_ends_the_load) {
    put("throws");
    for (int i = 0; i < 2; ++i) {
        try {
            cModule::load("throws");
            ADD_FAILURE() << "nothing was thrown";
        } catch (std::exception const &error) { // the exception's type and code are in the file
            EXPECT_STREQ(error.what(), "set-up of throws");
        }
        EXPECT_EQ(cModule::last_error(), "Module 'throws' has thrown in its set-up");
    }
    EXPECT_TRUE(is_mapped("./throws.so"));
    cModule const outside("outside", "", false); // no load is running
    EXPECT_EQ(outside.basename(), "");
    EXPECT_EQ(cRepoImpl::module(cRepoImpl::find(modules(), "outside")), &cGetMainModule());
}

TEST_F(ModuleSetUp, a_file_whose_setup_threw_stays_in_memory_and_can_be_loaded_again) {
    static int runs = 0;
    std::string const name = "once" + std::to_string(++runs);
    put("throws_once", name + ".so");
    try {
        cModule::load(name);
        ADD_FAILURE() << "nothing was thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 0x40000007u);
        EXPECT_EQ(error.as_string(), "not the first time");
    }
    cModule *const module = cModule::load(name);
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "throws_once is set up; ");
    EXPECT_TRUE(module->unload());
    EXPECT_TRUE(is_mapped("./" + name + ".so"));
}

TEST_F(ModuleSetUp, a_module_object_whose_setup_threw_is_not_loaded) {
    put("throws_with_own");
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(cModule::load("throws_with_own"), cErr);
        EXPECT_EQ(cModule::last_error(), "Module 'throws_with_own' has thrown in its set-up");
        EXPECT_EQ(cModule::load("own of the thrower"), nullptr); // no file has this name
        EXPECT_EQ(number("thing of the thrower"), 11);
        EXPECT_EQ(module_of("thing of the thrower"), &cGetMainModule());
    }
    cModule *const module = cModule::load("throws_with_own");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "throws_with_own is set up; ");
    EXPECT_EQ(module->name(), "own of the thrower");
    EXPECT_NE(module->handle(), nullptr);
    EXPECT_EQ(module_of("thing of the thrower"), module);
    EXPECT_TRUE(module->unload());
    EXPECT_FALSE(module->unload());
    // The exception may be defined in the file, so the file is still loaded. The test destroys it
    // itself.
    void *const held = ::dlopen("./throws_with_own.so", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(held, nullptr);
    for (int i = 0; i < 3; ++i) ::dlclose(held);
    EXPECT_FALSE(is_mapped("./throws_with_own.so"));
}

TEST_F(ModuleSetUp, an_exception_during_an_inner_setup_does_not_affect_the_outer_load) {
    put("nested_throws");
    put("throws");
    cModule *const module = cModule::load("nested_throws");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(cModule::last_error(), "");
    EXPECT_EQ(events(), "set-up of throws; ");
    EXPECT_EQ(module->name(), "nested_throws");
    EXPECT_EQ(module_of("after"), module);
    EXPECT_TRUE(module->unload());
}

// --- across the border ---

TEST_F(ModuleSetUp, signals_errors_and_objects_cross_between_module_and_program) {
    put("cross");
    cModule *const module = cModule::load("cross");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    cRepositoryList *const list = cRepoImpl::get(typeid(Cross));
    auto *const cross = static_cast<Cross *>(cRepoImpl::ptr(cRepoImpl::find(list, "cross")));
    ASSERT_NE(cross, nullptr);

    static std::string heard;
    heard.clear();
    cFunctionSlot1<char const *, void (*)(char const *)> const slot(
        [](char const *text) { heard += text; });
    cross->signal.connect(slot);
    cross->fire();
    EXPECT_EQ(heard, "from the module");

    cSignal1<int &> const own;
    cross->listen(own);
    int number = 9;
    own(number);
    EXPECT_EQ(number, 10);
    try {
        own(number);
        ADD_FAILURE() << "nothing was thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 0x40000008u);
        EXPECT_EQ(error.as_string(), "too many");
    }
    try {
        cross->fail();
        ADD_FAILURE() << "nothing was thrown";
    } catch (cException const &error) {
        EXPECT_NE(dynamic_cast<cErr const *>(&error), nullptr);
    }
    objref const value = cross->value();
    EXPECT_EQ(cat::as_text(value), "2.50000");
    EXPECT_NE(dynamic_cast<cObjD<double> const *>(value.get()), nullptr);

    EXPECT_TRUE(module->unload()); // this destroys the module's slot and signal
    EXPECT_FALSE(own.isconnected());
    EXPECT_FALSE(slot.isconnected());
    own(number);
    EXPECT_EQ(number, 11);
}

} // namespace
