#pragma once
// Modules: shared objects that a program loads by name, counts and unloads. While a module is
// loaded, it enters its contents into the repository (qrv/modules/crepository.h), by its static
// objects or in its set-up, a function with this name and type that it exports:
//
//     extern "C" QRV_API void quorvantaSetup() { ... }
//
// The set-up is optional. Loading a module may load further modules.
//
// How to build a module: link it with the shared libqrv, as the program is, and give g++ the flag
// -fno-gnu-unique (clang neither has nor needs this flag); the CMake target qrv::module does both.
// Without the flag a module with a static variable of an inline function or of a template is never
// unmapped: unload() returns true, but its static objects survive, and loading it again creates no
// new ones.
//
// Code is loaded only by cModule::load and its callers: cRepoImpl::find for "key:module",
// cRepoImpl::findorload and cat::find_type. Reading text loads nothing, so a data file cannot bring
// code into a program; qrv_set_module_filter (qrv/base/platform/cplatform.h) sets another rule. A
// module runs with all rights of the program.
//
// Do not let a static initialiser of a module throw: that ends the process, as in any shared
// object. Do all work that may fail in the set-up. Do not unload a module whose types are
// registered or whose objects are in use: give its cModule `nocount`, or hold a cModuleUse while
// they exist.

#include "qrv/base/cref.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class cEntryGroup;
class cLoad;

// A module is found by its entry in the repository of modules, which its cModule creates and
// removes; so a name that is taken stays with the first module. Static functions of the same names
// accept a null pointer.
class QRV_API cModule : public cShared {
  public:
    // With `nocount`, uses are not counted and the module is never unloaded. A cModule that is
    // created during a load, for example as a static object of the loaded module, represents that
    // module.
    cModule(std::string const &name, std::string const &comment, bool nocount);
    cModule(cModule const &) = delete;
    cModule &operator=(cModule const &) = delete;
    ~cModule();

    // Returns the module of that name, borrowed: one that is loaded already, whose count of loads
    // increases unless it was built in, or else one found in a file. The search tries the name with
    // ".so" and without it, in each of "" (for a name without a slash the system's folders), "./"
    // and "modules/". An absolute name is tried in no other folder, and a name that ends with ".so"
    // only with a second ".so". Two names with the same base name, "sub/part" and "part", mean one
    // module. Null on failure, for the empty name, for a name that the filter rejects, and for a
    // module that is being loaded or unloaded. A path to a pipe, a device or a socket fails at
    // once. An exception of the set-up leaves load(); the file then stays in memory, since it may
    // define the exception's class, and the next load runs the set-up again. RUNS USER CODE: the
    // module's static code and its set-up.   O(modules)
    static cModule *load(std::string const &name);
    // Why the last load failed: a line with the system's message for each path; empty after a
    // success.
    static std::string last_error();

    // Undoes one load. True if that was the last one: then the file is closed, which normally
    // removes the module. If the file stays in memory, because something else has opened it, a
    // module object in it stays too, and load() reactivates it and runs the set-up again. False,
    // without any change, if the module was built in; if it or another module of the file is in use
    // or has no count of uses; or if another module of the file was loaded more than once. The
    // static form is also false for null and for a removed module. The module's remaining entries
    // stay in the repository; their pointers become null when the file is unmapped. RUNS USER CODE:
    // the module's static destructors.   O(modules)
    bool unload() { return unload(this); }
    static bool unload(cModule *module);

    // Whether loads and uses permit unloading it.
    bool canunload() const noexcept { return loadcnt_ >= 0 && usecnt_ == 0; }
    static bool canunload(cModule const *module) noexcept { return module && module->canunload(); }

    // Add or remove one user; no effect if uses are not counted.
    // DELIBERATE: removing one from zero makes the module uncounted, so it stays.
    // Pinned: a_negative_use_count_prevents_unloading_forever
    void inc_use_cnt() noexcept {
        if (usecnt_ >= 0) ++usecnt_;
    }
    void dec_use_cnt() noexcept {
        if (usecnt_ >= 0) --usecnt_;
    }
    static void inc_use_cnt(cModule *module) noexcept {
        if (module) module->inc_use_cnt();
    }
    static void dec_use_cnt(cModule *module) noexcept {
        if (module) module->dec_use_cnt();
    }

    // The number of users; -1 if they are not counted, and for null.
    int usage() const noexcept { return usecnt_; }
    static int usage(cModule const *module) noexcept { return module ? module->usage() : -1; }

    std::string const &name() const noexcept { return name_; }
    std::string const &comment() const noexcept { return comment_; }
    // The base name of its file, without folder and ".so"; empty if it was not loaded from a file.
    std::string const &basename() const noexcept { return basename_; }
    // Always 0: a module is identified by its name.
    std::uint32_t id() const noexcept { return 0; }
    // The system's handle of the file; null if it has no file, and for null.
    void *handle() const noexcept { return handle_; }
    static void *handle(cModule const *module) noexcept {
        return module ? module->handle() : nullptr;
    }

  private:
    friend class cLoad;

    static void free_file(void *library, std::vector<cModule *> const &modules);
    cModule *count_load();
    void detach(cEntryGroup &entries) noexcept; // from its file
    void withdraw();                            // its own entry from the repository

    std::string name_;
    std::string comment_;
    std::string basename_;
    void *handle_ = nullptr;
    std::int32_t usecnt_;
    std::int32_t loadcnt_ = -1;            // loads minus unloads; -1: built in, never unloaded
    bool resting_ = false;                 // its file is in memory, but was closed or never set up
    std::unique_ptr<cEntryGroup> entries_; // entries that were created during its load
};

// The program itself: "quorvanta". It is never unloaded.
QRV_API cModule &cGetMainModule();

// Counts one use of a module as long as this object exists. Null means no module.
class QRV_API cModuleUse {
  public:
    // The module must exist until the destructor.
    explicit cModuleUse(cModule *module) noexcept : module_(module) { inc(); }
    explicit cModuleUse(cModule &module) noexcept : cModuleUse(&module) {}
    cModuleUse(cModuleUse const &) = delete;
    cModuleUse &operator=(cModuleUse const &) = delete;
    ~cModuleUse() { dec(); }

    void inc() noexcept { cModule::inc_use_cnt(module_); } // one more use
    void dec() noexcept { cModule::dec_use_cnt(module_); }

  private:
    cModule *module_; // borrowed; not unloaded while it is in use
};
