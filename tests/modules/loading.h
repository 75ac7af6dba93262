#pragma once
// The fixture of tests that load modules. Each test has an empty working folder, into which it
// copies modules under any names, and a log into which modules write their events. At its end, the
// repository must have no entries of modules.

#include "qrv/base/platform/cplatform.h"
#include "tests/modules/shared/module.h"
#include "tests/support/fixture.h"
#include "tests/support/paths.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <string>

class Loading : public testing::Test {
  public:
    Loading(Loading const &) = delete;
    Loading &operator=(Loading const &) = delete;

  protected:
    Loading() {
        namespace fs = std::filesystem;
        folder_ = fs::temp_directory_path() / ("qrv_loading_" + std::to_string(::getpid()));
        fs::remove_all(folder_);
        fs::create_directories(folder_);
        fs::current_path(folder_);
        log_entry_ = cRepoImpl::create(cRepoImpl::get(typeid(EventLog)), "log", &log_,
                                       typeid(EventLog), typeid(EventLog), "");
    }
    ~Loading() override {
        qrv_set_module_filter(nullptr);
        EXPECT_EQ(names(modules()), names_before_) << "modules were not released";
        EXPECT_EQ(names(things()), "") << "things were not released";
        cRepoImpl::release(log_entry_);
        std::filesystem::current_path(cwd_);
        std::filesystem::remove_all(folder_);
        EXPECT_EQ(messages_.take(), "");
        EXPECT_EQ(cObjBase::ob_count(), census_);
    }

    static cRepositoryList *modules() { return cRepoImpl::get(typeid(cModule)); }

    // The names in a list, in order.
    static std::string names(cRepositoryList *list) {
        std::string all;
        for (auto *e = cRepoImpl::begin(list); e != cRepoImpl::end(list); e = cRepoImpl::next(e))
            all += cRepoImpl::name(e) + ";";
        return all;
    }
    static cRepositoryEntry *thing(char const *name) { return cRepoImpl::find(things(), name); }
    static cModule *module_of(char const *name) { return cRepoImpl::module(thing(name)); }
    static int number(char const *name) {
        auto *const found = static_cast<Thing *>(cRepoImpl::ptr(thing(name)));
        return found ? found->number : -1;
    }

    // Copies a built module to a path in the working folder.
    static void put(std::string const &module, std::string const &path) {
        namespace fs = std::filesystem;
        fs::path const to(path);
        if (to.has_parent_path()) fs::create_directories(to.parent_path());
        fs::copy_file(test::binary_file("tests/modules_to_load/" + module + ".so"), to,
                      fs::copy_options::overwrite_existing);
    }
    static void put(std::string const &module) { put(module, module + ".so"); }

    static bool is_mapped(std::string const &path) {
        void *const library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
        if (library) ::dlclose(library);
        return library != nullptr;
    }

    // The modules' events since the last call.
    std::string events() { return std::exchange(log_.text, std::string()); }
    std::string messages() { return messages_.take(); }

  private:
    std::filesystem::path const cwd_ = std::filesystem::current_path();
    std::filesystem::path folder_;
    EventLog log_;
    cRepositoryEntry *log_entry_;
    cMessageLog messages_;
    std::string const names_before_ = names(modules());
    std::uint32_t const census_ = cObjBase::ob_count();
};
