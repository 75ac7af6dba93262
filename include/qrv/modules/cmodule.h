#pragma once
// Modules: shared objects that a program loads by name, counts and unloads. While a module is
// loaded, it enters its contents into the repository (qrv/modules/crepository.h), by its static
// objects or in its set-up, a function that it exports:
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

// A module is known by its entry in the repository of modules, which the object itself creates and
// removes; so if a name is taken, it stays with the first module. Calls through a pointer that may
// be null have a static form of the same name.
class QRV_API cModule : public cShared {
  public:
    // With `nocount` uses are not counted, and the module is never unloaded. A cModule that is
    // created during a load, for example as a static object of the loaded module, represents that
    // module.
    cModule(std::string const &name, std::string const &comment, bool nocount);
    cModule(cModule const &) = delete;
    cModule &operator=(cModule const &) = delete;
    ~cModule();

    // Returns the module of that name: an existing one, counted once more unless it was built in,
    // or one found in a file. The search tries the name with ".so" and without, in each of "" (the
    // system's folders for a name without a slash), "./" and "modules/". It tries an absolute name
    // in no other folder, and a name that ends with ".so" only with a second ".so". Two names with
    // the same base name, "sub/part" and "part", mean one module. Borrowed. Null on failure, for
    // the empty name, for a name that the filter rejects, and for a module that is being loaded or
    // unloaded. A path to a pipe, a device or a socket fails at once. An exception of the set-up
    // leaves load(); the file then stays in memory, since it may define the exception's class, and
    // the next load runs the set-up again. RUNS USER CODE: the module's static code and its
    // set-up.   O(modules)
    static cModule *load(std::string const &name);
    // Why the last load failed: a line with the system's message for each path; empty after a
    // success.
    static std::string last_error();

    // Undoes one load. True if it was the last one and the file was returned to the system;
    // normally that removes the module. If the file stays in memory, because something else has
    // opened it, a module object in it stays too, and load() reactivates it and runs the set-up
    // again. False, without any change, for a module that was built in; while the module, or
    // another one from the same file, is in use or not counted; and while another one from the same
    // file is counted by a separate load. The static form is also false for null and for a removed
    // module. The module's remaining entries stay in the repository, but point to nothing once the
    // file is unmapped. RUNS USER CODE: the module's static destructors.   O(modules)
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
    std::uint32_t id() const noexcept { return id_; }
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
    std::int32_t loadcnt_ = -1; // loads minus unloads; -1: built in, never unloaded
    bool resting_ = false;      // its file is in memory, but was closed or never set up
    std::uint32_t id_ = 0;
    std::unique_ptr<cEntryGroup> entries_; // entries that were created during its load
};

// The program itself: "quorvanta". It is never unloaded.
QRV_API cModule &cGetMainModule();

// One use of a module while this exists. Null means no module.
class QRV_API cModuleUse {
  public:
    // Counts a use of the module, which must exist until the destructor ends that use.
    explicit cModuleUse(cModule *module) noexcept : module_(module) { inc(); }
    explicit cModuleUse(cModule &module) noexcept : cModuleUse(&module) {}
    cModuleUse(cModuleUse const &) = delete;
    cModuleUse &operator=(cModuleUse const &) = delete;
    ~cModuleUse() { dec(); }

    void inc() noexcept { cModule::inc_use_cnt(module_); } // one more use
    void dec() noexcept { cModule::dec_use_cnt(module_); }

  private:
    cModule *module_; // borrowed; cannot be unloaded meanwhile
};
