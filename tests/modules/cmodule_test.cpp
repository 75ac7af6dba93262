// Loading, counting and unloading real modules, and the module objects.

#include "qrv/modules/cmodule.h"

#include "tests/modules/loading.h"

#include <type_traits>

namespace {

namespace fs = std::filesystem;

class Module : public Loading {};
class ModuleEdge : public Loading {};

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
    EXPECT_EQ(cModule::handle(module), module->handle());
    EXPECT_EQ(module->usage(), 0);
    EXPECT_TRUE(module->canunload());
    EXPECT_EQ(number("plain thing"), 7);
    EXPECT_EQ(module_of("plain thing"), module);
    EXPECT_TRUE(is_mapped("./plain.so"));
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(events(), "plain ends; ");
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(Module, can_be_loaded_again_after_unloading) {
    put("plain");
    put("own_module");
    for (int i = 0; i < 3; ++i)
        for (char const *name : {"plain", "own_module"}) {
            cModule *const module = cModule::load(name);
            ASSERT_NE(module, nullptr) << cModule::last_error();
            EXPECT_EQ(events(), std::string(name) + " is set up; ");
            EXPECT_TRUE(module->unload());
            EXPECT_EQ(events(), std::string(name) + " ends; ");
            EXPECT_FALSE(is_mapped("./" + std::string(name) + ".so"));
        }
}

TEST_F(Module, a_module_is_entered_under_its_name) {
    put("plain");
    cModule *const module = cModule::load("plain");
    cRepositoryEntry *const entry = cRepoImpl::find(modules(), "plain");
    EXPECT_EQ(cRepoImpl::ptr(entry), module);
    EXPECT_EQ(cRepoImpl::module(entry), module);
    EXPECT_TRUE(cRepoImpl::type(entry) == typeid(cModule));
    EXPECT_TRUE(cRepoImpl::derivedtype(entry) == typeid(cModule));
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(cRepoImpl::find(modules(), "plain"), nullptr);
}

TEST_F(Module, a_file_without_a_setup_function_is_loaded) {
    put("bare");
    cModule *const module = cModule::load("bare");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module_of("bare thing"), module);
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(events(), "bare ends; ");
}

TEST_F(Module, the_setup_function_of_a_dependency_is_not_called) {
    put("needs_plain");
    cModule *const module = cModule::load("needs_plain");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "");
    EXPECT_EQ(number("needing thing"), 5);
    EXPECT_EQ(thing("plain thing"), nullptr);
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(events(), "plain ends; ");
}

TEST_F(Module, the_first_of_two_module_objects_of_a_file_is_the_result) {
    put("two_modules");
    cModule *const first = cModule::load("two_modules");
    ASSERT_NE(first, nullptr) << cModule::last_error();
    EXPECT_EQ(first->name(), "the first");
    auto *const second =
        static_cast<cModule *>(cRepoImpl::ptr(cRepoImpl::find(modules(), "the second")));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->basename(), "two_modules");
    EXPECT_EQ(second->handle(), first->handle());
    EXPECT_EQ(cRepoImpl::module(cRepoImpl::find(modules(), "the second")), first);
    {
        cModuleUse const use(second); // keeps the file in memory when either module is unloaded
        EXPECT_FALSE(first->unload());
        EXPECT_FALSE(second->unload());
    }
    EXPECT_TRUE(second->unload());
    EXPECT_FALSE(is_mapped("./two_modules.so"));
}

TEST_F(Module, a_file_is_not_freed_while_another_module_of_it_is_counted) {
    put("two_modules");
    cModule *const first = cModule::load("two_modules");
    ASSERT_NE(first, nullptr) << cModule::last_error();
    cModule *const second = cModule::load("the second");
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(first->unload()); // refused, and nothing changes
    EXPECT_TRUE(is_mapped("./two_modules.so"));
    EXPECT_NE(first->handle(), nullptr);
    EXPECT_FALSE(second->unload()); // only the count changes
    EXPECT_TRUE(first->unload());
    EXPECT_FALSE(is_mapped("./two_modules.so"));
}

TEST_F(Module, two_counted_modules_of_one_file_are_both_unloaded) {
    put("two_modules");
    cModule *const first = cModule::load("two_modules");
    ASSERT_NE(first, nullptr) << cModule::last_error();
    cModule *const second = cModule::load("the second");
    EXPECT_EQ(cModule::load("the first"), first);
    EXPECT_FALSE(first->unload()); // only the count changes, although the second is counted
    EXPECT_FALSE(second->unload());
    EXPECT_TRUE(first->unload());
    EXPECT_FALSE(is_mapped("./two_modules.so"));
}

TEST_F(Module, entries_released_during_the_load_are_forgotten) {
    put("releases");
    cModule *const module = cModule::load("releases");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module->name(), "releases");
    EXPECT_EQ(names(things()), "stays;");
    EXPECT_EQ(module_of("stays"), module);
    EXPECT_TRUE(module->unload());
}

TEST_F(Module, entries_that_outlive_their_module_have_no_owner_and_a_null_pointer) {
    put("leaves");
    cModule *const module = cModule::load("leaves");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module->name(), "left module");
    EXPECT_EQ(number("left"), 10);
    cRepositoryEntry *const left = thing("left");
    cRepositoryEntry *const own = thing("own");
    EXPECT_EQ(cRepoImpl::module(left), module);
    EXPECT_TRUE(module->unload());
    EXPECT_FALSE(is_mapped("./leaves.so"));
    EXPECT_EQ(events(), "left module; leaves ends; ");

    EXPECT_EQ(thing("left"), left);
    EXPECT_EQ(cRepoImpl::module(left), &cGetMainModule());
    EXPECT_EQ(cRepoImpl::ptr(left), nullptr);
    EXPECT_EQ(cRepoImpl::comment(left), "a comment");
    EXPECT_TRUE(cRepoImpl::derivedtype(left) == typeid(void));
    EXPECT_TRUE(cRepoImpl::type(own) == typeid(void));
    EXPECT_EQ(cRepoImpl::find(modules(), "left module"),
              nullptr); // so the module can be loaded again
    EXPECT_EQ(module->handle(), nullptr);
    EXPECT_FALSE(module->canunload());
    EXPECT_FALSE(module->unload());
    cRepoImpl::release(left);
    cRepoImpl::release(own);
    delete module; // the file left it on the heap
}

TEST_F(Module, a_copy_of_an_entry_follows_its_module) {
    put("plain");
    cRepositoryList copy;
    cModule *const module = cModule::load("plain");
    copy = *things();
    cRepositoryEntry *const entry = cRepoImpl::begin(&copy);
    EXPECT_EQ(cRepoImpl::module(entry), module);
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(copy.count(), 1u);
    EXPECT_EQ(cRepoImpl::module(entry), &cGetMainModule());
    EXPECT_EQ(cRepoImpl::ptr(entry), nullptr);
}

TEST_F(Module, a_file_that_stays_in_memory_keeps_its_entries) {
    put("own_module");
    void *const held = ::dlopen("./own_module.so", RTLD_NOW); // static code runs here
    ASSERT_NE(held, nullptr) << ::dlerror();
    EXPECT_EQ(module_of("own thing"), &cGetMainModule());
    cModule *const own =
        static_cast<cModule *>(cRepoImpl::ptr(cRepoImpl::find(modules(), "a name of its own")));
    EXPECT_EQ(own->basename(), "");
    cModule *const module = cModule::load(
        "own_module"); // nothing was entered this time, so a new module object is created
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_NE(module, own);
    EXPECT_EQ(events(), "own_module is set up; wrong base name; ");
    EXPECT_TRUE(module->unload());
    EXPECT_TRUE(is_mapped("./own_module.so"));
    EXPECT_EQ(number("own thing"), 8);
    ::dlclose(held);
    EXPECT_EQ(events(), "own_module ends; ");
}

TEST_F(Module, a_module_object_in_a_file_that_stays_is_loaded_again_with_its_handle) {
    put("own_module");
    cModule *const module = cModule::load("own_module");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    void *const handle = module->handle();
    void *const held = ::dlopen("./own_module.so", RTLD_NOW);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(module->unload());
        EXPECT_EQ(events(), "own_module is set up; ");
        EXPECT_EQ(number("own thing"), 8);
        EXPECT_EQ(module_of("own thing"), &cGetMainModule());
        EXPECT_EQ(module->handle(), nullptr);
        EXPECT_FALSE(module->canunload());
        EXPECT_FALSE(module->unload());
        EXPECT_EQ(cModule::load("a name of its own"), nullptr); // no file has this name
        EXPECT_EQ(cModule::load("own_module"), module);
        EXPECT_EQ(module->handle(), handle);
        EXPECT_EQ(module_of("own thing"), module);
        EXPECT_TRUE(module->canunload());
        EXPECT_EQ(cModule::load("a name of its own"), module); // only the count changes
        EXPECT_FALSE(module->unload());
    }
    EXPECT_TRUE(module->unload());
    ::dlclose(held);
    EXPECT_FALSE(is_mapped("./own_module.so"));
    EXPECT_EQ(events(), "own_module is set up; own_module ends; ");
    cModule *const fresh = cModule::load("own_module"); // static code runs again
    ASSERT_NE(fresh, nullptr) << cModule::last_error();
    EXPECT_EQ(number("own thing"), 8);
    EXPECT_TRUE(fresh->unload());
    EXPECT_FALSE(is_mapped("./own_module.so"));
}

TEST_F(Module, a_file_that_is_unmapped_later_leaves_entries_with_null_pointers) {
    put("leaves");
    cModule *const module = cModule::load("leaves");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    void *const held = ::dlopen("./leaves.so", RTLD_NOW);
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(number("left"), 10);
    ::dlclose(held);
    EXPECT_FALSE(is_mapped("./leaves.so"));
    EXPECT_EQ(cModule::load("nowhere"), nullptr); // each load checks the entries
    EXPECT_EQ(cRepoImpl::ptr(thing("left")), nullptr);
    EXPECT_EQ(cRepoImpl::find(modules(), "left module"), nullptr);
    for (char const *name : {"left", "own"}) cRepoImpl::release(thing(name));
    delete module;
}

TEST_F(Module, a_file_that_another_file_needs_stays_and_can_be_loaded_again) {
    put("needs_plain");
    std::string const path =
        test::binary_file("tests/modules_to_load/plain"); // the file that it depends on
    cModule *const plain = cModule::load(path);
    ASSERT_NE(plain, nullptr) << cModule::last_error();
    cModule *const needs = cModule::load("needs_plain");
    ASSERT_NE(needs, nullptr) << cModule::last_error();
    EXPECT_TRUE(plain->unload());
    EXPECT_EQ(number("plain thing"), 7);
    cModule *const again = cModule::load(path);
    ASSERT_NE(again, nullptr) << cModule::last_error();
    EXPECT_NE(again->handle(), nullptr);
    EXPECT_EQ(module_of("plain thing"), again);
    EXPECT_TRUE(again->unload());
    EXPECT_TRUE(needs->unload());
    EXPECT_FALSE(is_mapped(path + ".so"));
    EXPECT_EQ(events(), "plain is set up; plain is set up; plain ends; ");
}

TEST_F(Module, two_names_of_one_file_are_one_module) {
    put("plain");
    fs::create_symlink("plain.so", "alias.so");
    cModule *const module = cModule::load("plain");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(cModule::load("alias"), module);
    EXPECT_EQ(events(), "plain is set up; ");
    EXPECT_FALSE(module->unload());
    EXPECT_TRUE(module->unload());
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(Module, a_shared_module_outlives_its_file) {
    put("plain");
    auto const shared = cRef<cModule>::share(cModule::load("plain"));
    EXPECT_TRUE(shared->unload());
    EXPECT_FALSE(is_mapped("./plain.so"));
    EXPECT_EQ(shared->name(), "plain");
    EXPECT_EQ(shared->handle(), nullptr);
    EXPECT_FALSE(shared->canunload());
    EXPECT_FALSE(shared->unload());
    cModule *const again = cModule::load("plain");
    EXPECT_NE(again, shared.get());
    EXPECT_TRUE(again->unload());
}

TEST_F(Module, a_shared_module_is_not_found_again_even_if_its_file_stays) {
    put("plain");
    auto const shared = cRef<cModule>::share(cModule::load("plain"));
    void *const held = ::dlopen("./plain.so", RTLD_NOW);
    EXPECT_TRUE(shared->unload());
    EXPECT_TRUE(is_mapped("./plain.so"));
    EXPECT_EQ(cRepoImpl::find(modules(), "plain"), nullptr);
    EXPECT_EQ(module_of("plain thing"), &cGetMainModule());
    cModule *const again = cModule::load("plain");
    EXPECT_NE(again, shared.get());
    EXPECT_TRUE(again->unload());
    ::dlclose(held);
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(Module, unload_returns_false_for_a_destroyed_module) {
    put("plain");
    cModule *const module = cModule::load("plain");
    EXPECT_TRUE(cModule::unload(module));
    EXPECT_FALSE(cModule::unload(module));
    EXPECT_FALSE(cModule::unload(nullptr));
}

TEST_F(Module, a_module_may_unload_another_during_its_own_unloading) {
    put("unloads_other");
    put("leaves");
    cModule *const module = cModule::load("unloads_other");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    cModule *const other = module_of("left");
    EXPECT_EQ(other->basename(), "leaves");
    EXPECT_TRUE(module->unload());
    // The system delays the inner unloading until the outer one is complete, and the log shows the
    // inner file's events then.
    EXPECT_EQ(events(), "left module; other unloaded; itself not unloaded; leaves ends; ");
    EXPECT_FALSE(is_mapped("./leaves.so"));
    EXPECT_FALSE(is_mapped("./unloads_other.so"));
    for (char const *name : {"left", "own"}) {
        EXPECT_EQ(cRepoImpl::ptr(thing(name)), nullptr);
        EXPECT_EQ(module_of(name), &cGetMainModule());
        cRepoImpl::release(thing(name));
    }
    delete other;
}

TEST_F(Module, a_module_that_loads_itself_during_its_unloading_gets_an_error) {
    put("loads_itself_last");
    put("plain");
    fs::create_symlink("loads_itself_last.so", "alias.so");
    fs::create_directory("sub");
    fs::create_symlink("../loads_itself_last.so", "sub/loads_itself_last.so");
    for (int i = 0; i < 2; ++i) {
        cModule *const module = cModule::load("loads_itself_last");
        ASSERT_NE(module, nullptr) << cModule::last_error();
        EXPECT_EQ(module->name(), "own of the last");
        EXPECT_TRUE(module->unload());
        std::string const reported = events();
        EXPECT_TRUE(reported.starts_with(
            "Module 'loads_itself_last' is just being unloaded; Module 'sub/loads_itself_last' is "
            "just being unloaded; ./alias.so: just being unloaded\n"))
            << reported;
        EXPECT_TRUE(reported.ends_with("; plain is set up; plain is loaded; its own name is not; "))
            << reported;
        EXPECT_FALSE(is_mapped("./loads_itself_last.so"));
        EXPECT_TRUE(module_of("plain thing")->unload());
        EXPECT_EQ(events(), "plain ends; ");
    }
}

TEST_F(Module,
       a_file_without_a_module_object_that_loads_itself_during_its_unloading_gets_an_error) {
    put("loads_itself_bare");
    for (int i = 0; i < 2; ++i) {
        cModule *const module = cModule::load("loads_itself_bare");
        ASSERT_NE(module, nullptr) << cModule::last_error();
        EXPECT_TRUE(module->unload());
        EXPECT_EQ(events(), "Module 'loads_itself_bare' is just being unloaded; ");
        EXPECT_FALSE(is_mapped("./loads_itself_bare.so"));
    }
}

// --- objects ---

TEST_F(Module, a_module_object_of_the_program_is_built_in) {
    cModule module("mine", "a comment", false);
    EXPECT_EQ(module.name(), "mine");
    EXPECT_EQ(module.comment(), "a comment");
    EXPECT_EQ(module.basename(), "");
    EXPECT_EQ(module.handle(), nullptr);
    EXPECT_EQ(module.id(), 0u);
    EXPECT_EQ(module.usage(), 0);
    cRepositoryEntry *const entry = cRepoImpl::find(modules(), "mine");
    EXPECT_EQ(cRepoImpl::ptr(entry), &module);
    EXPECT_EQ(cRepoImpl::comment(entry), "a comment");
    EXPECT_EQ(cModule::load("mine"), &module); // returned without being counted
    EXPECT_EQ(cModule::load("folder/mine.SO"), &module);
    EXPECT_FALSE(module.unload());
}

TEST_F(Module, the_main_module_always_exists) {
    cModule &main = cGetMainModule();
    EXPECT_EQ(main.name(), "quorvanta");
    EXPECT_EQ(main.comment(), "quorvanta main module");
    EXPECT_EQ(main.basename(), "");
    EXPECT_EQ(main.usage(), 0);
    EXPECT_EQ(main.handle(), nullptr);
    EXPECT_EQ(cRepoImpl::ptr(cRepoImpl::find(modules(), "quorvanta")), &main);
    EXPECT_EQ(cModule::load("quorvanta"), &main);
}

TEST_F(Module, a_used_name_stays_with_the_first_module) {
    cModule const first("mine", "first", false);
    {
        cModule const second("mine", "second", false);
        EXPECT_EQ(messages(), "error: repository entry already defined:mine:type '" +
                                  std::string(typeid(cModule).name()) +
                                  "':comment 'second' old 'first'\n");
    }
    EXPECT_EQ(cRepoImpl::ptr(cRepoImpl::find(modules(), "mine")), &first);
    EXPECT_EQ(messages(), "");
}

TEST_F(Module, its_name_may_contain_a_colon) {
    {
        cModule const module("a:plain", "", false);
        put("plain");
    } // does not search for the part after the colon
    EXPECT_EQ(events(), "");
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(Module, an_entry_without_a_module_is_skipped) {
    cRepositoryEntry *const hollow =
        cRepoImpl::create(modules(), "plain", nullptr, typeid(cModule), typeid(cModule), "hollow");
    put("plain");
    cModule *const module = cModule::load("plain");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_NE(messages().find("already defined:plain:"), std::string::npos);
    EXPECT_EQ(cModule::load("plain"), module); // known, although it could not be entered
    EXPECT_FALSE(module->unload());
    EXPECT_TRUE(module->unload());
    EXPECT_FALSE(is_mapped("./plain.so"));
    EXPECT_EQ(cRepoImpl::find(modules(), "plain"), hollow);
    cRepoImpl::release(hollow);
}

TEST_F(Module, uses_are_counted_in_every_order) {
    cModule module("mine", "", false);
    {
        cModuleUse first(module);
        EXPECT_EQ(module.usage(), 1);
        {
            cModuleUse second(&module);
            EXPECT_EQ(module.usage(), 2);
            first.inc();
            second.inc();
            EXPECT_EQ(module.usage(), 4);
            second.dec();
        }
        EXPECT_EQ(module.usage(), 2);
        first.dec();
        EXPECT_EQ(module.usage(), 1);
    }
    EXPECT_EQ(module.usage(), 0);
    auto first = std::make_unique<cModuleUse>(module);
    auto second = std::make_unique<cModuleUse>(module);
    first.reset();
    EXPECT_EQ(module.usage(), 1);
    second.reset();
    EXPECT_EQ(module.usage(), 0);
}

TEST_F(Module, a_use_of_null_counts_nothing) {
    cModuleUse use(nullptr);
    use.inc();
    use.dec();
    cModule::inc_use_cnt(nullptr);
    cModule::dec_use_cnt(nullptr);
    EXPECT_FALSE(cModule::canunload(nullptr));
    EXPECT_EQ(cModule::handle(nullptr), nullptr);
}

TEST_F(Module, a_negative_use_count_prevents_unloading_forever) {
    cModule module("mine", "", false);
    module.dec_use_cnt();
    EXPECT_EQ(module.usage(), -1);
    module.inc_use_cnt();
    EXPECT_EQ(module.usage(), -1);
}

TEST_F(Module, modules_and_uses_cannot_be_copied) {
    static_assert(!std::is_copy_constructible_v<cModule>);
    static_assert(!std::is_copy_assignable_v<cModule>);
    static_assert(!std::is_copy_constructible_v<cModuleUse>);
    static_assert(!std::is_copy_assignable_v<cModuleUse>);
    static_assert(!std::is_convertible_v<cModule *, cModuleUse>);
}

// --- edge cases ---

TEST_F(ModuleEdge, loading_the_empty_name_returns_null_and_changes_nothing) {
    auto const lists = cGetRepositories().count();
    qrv_set_module_filter(
        [](std::string const &) -> bool { throw 1; }); // not even the filter is called
    EXPECT_EQ(cModule::load(""), nullptr);
    EXPECT_EQ(cModule::last_error(), "The name of a module is empty");
    EXPECT_EQ(cGetRepositories().count(), lists);
    EXPECT_EQ(messages(), "");
}

TEST_F(ModuleEdge, the_second_unload_frees_a_module_loaded_twice) {
    put("plain");
    cModule *const module = cModule::load("plain");
    EXPECT_EQ(cModule::load("plain"), module);
    EXPECT_EQ(events(), "plain is set up; ");
    EXPECT_FALSE(module->unload());
    EXPECT_TRUE(is_mapped("./plain.so"));
    EXPECT_TRUE(module->unload());
    EXPECT_FALSE(is_mapped("./plain.so"));
    EXPECT_EQ(events(), "plain ends; ");
}

TEST_F(ModuleEdge, the_main_module_cannot_be_unloaded) {
    EXPECT_FALSE(cGetMainModule().unload());
    EXPECT_FALSE(cModule::unload(&cGetMainModule()));
}

TEST_F(ModuleEdge, a_module_in_use_is_not_unloaded_and_keeps_its_count) {
    put("plain");
    cModule *const module = cModule::load("plain");
    EXPECT_EQ(cModule::load("plain"), module);
    {
        cModuleUse const use(module);
        EXPECT_FALSE(module->canunload());
        for (int i = 0; i < 3; ++i) EXPECT_FALSE(module->unload());
    }
    EXPECT_EQ(messages(), "");
    EXPECT_TRUE(module->canunload());
    EXPECT_FALSE(module->unload()); // both loads still count
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleEdge, canunload_is_false_for_a_module_that_was_not_loaded) {
    cModule const module("mine", "", false);
    EXPECT_EQ(module.usage(), 0);
    EXPECT_FALSE(module.canunload());
    EXPECT_FALSE(cModule::canunload(&module));
    EXPECT_FALSE(cGetMainModule().canunload());
}

TEST_F(ModuleEdge, load_returns_the_module_object_of_the_file) {
    put("own_module");
    cModule *const module = cModule::load("own_module");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "own_module is set up; ");
    EXPECT_EQ(cRepoImpl::ptr(cRepoImpl::find(modules(), "a name of its own")), module);
    EXPECT_EQ(cRepoImpl::find(modules(), "own_module"), nullptr);
    EXPECT_EQ(module->comment(), "its own comment");
    EXPECT_EQ(module->basename(), "own_module");
    EXPECT_NE(module->handle(), nullptr);
    EXPECT_EQ(module_of("own thing"), module);
    EXPECT_EQ(cModule::load("a name of its own"), module);
    EXPECT_FALSE(module->unload());
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(events(), "own_module ends; ");
    EXPECT_FALSE(is_mapped("./own_module.so"));
}

TEST_F(ModuleEdge, a_name_with_a_folder_finds_the_module_loaded_by_its_bare_name) {
    put("plain");
    cModule *const module = cModule::load("plain");
    for (char const *name : {"sub/part", "sub/plain", "/plain", "x:plain", "\\a\\plain", "plain.so",
                             "sub/plain.So", "a:b/plain.SO"}) {
        cModule *const found = cModule::load(name);
        EXPECT_EQ(found, std::string(name) == "sub/part" ? nullptr : module) << name;
        if (found) {
            EXPECT_FALSE(found->unload()) << name;
        }
    }
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleEdge, a_module_that_loads_another_during_its_setup_keeps_its_entries_separate) {
    put("nested");
    put("plain");
    cModule *const outer = cModule::load("nested");
    ASSERT_NE(outer, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "plain is set up; nested has loaded plain; ");
    EXPECT_EQ(outer->name(), "nested");
    EXPECT_EQ(outer->basename(), "nested");
    EXPECT_EQ(module_of("before"), outer);
    EXPECT_EQ(module_of("after"), outer);
    cModule *const inner = module_of("plain thing");
    EXPECT_EQ(inner->name(), "plain");
    EXPECT_EQ(inner->basename(), "plain");
    EXPECT_NE(inner->handle(), outer->handle());
    EXPECT_TRUE(inner->unload());
    EXPECT_EQ(names(things()), "before;after;");
    EXPECT_TRUE(outer->unload());
    EXPECT_EQ(events(), "plain ends; nested ends; ");
}

TEST_F(ModuleEdge, uses_of_a_module_without_count_are_not_counted) {
    cModule module("mine", "", true);
    EXPECT_EQ(module.usage(), -1);
    {
        cModuleUse use(module);
        use.inc();
        EXPECT_EQ(module.usage(), -1);
    }
    EXPECT_EQ(module.usage(), -1);
    EXPECT_FALSE(module.canunload());
}

TEST_F(ModuleEdge, the_usage_of_null_is_minus_one) { EXPECT_EQ(cModule::usage(nullptr), -1); }

} // namespace
