#pragma once
// Modules: shared objects that a program loads by name, counts and unloads. What a module offers it
// enters into the repository (qrv/modules/crepository.h) while it is loaded, by its static objects
// or in its set-up, a function that it exports:
//
//     extern "C" QRV_API void quorvantaSetup() { ... }
//
// A module may do without. It may load further modules while it is loaded itself.
//
// How to build one: link it with the shared libqrv, as the program is, and give g++ the flag
// -fno-gnu-unique (clang knows no such flag and needs none); the CMake target qrv::module does
// both. Without the flag a module that holds a
// static variable of an inline function or of a template is never unmapped: unload() says true,
// but its static objects live on, and loading it again makes no new ones.
//
// Who loads code: cModule::load and what leads to it, that is cRepoImpl::find for "key:module",
// cRepoImpl::findorload and cat::find_type. While text is being read nothing is loaded, so no data
// file brings code into a program; qrv_set_module_filter (qrv/base/platform/cplatform.h) sets
// another rule. A module runs with all rights of the program.
//
// What must not happen: a static initialiser of a module that throws ends the process, as in any
// shared object; what may fail belongs into the set-up. A module whose types stand in the registry,
// or whose objects are still in use, must not go: give its cModule `nocount`, or hold a cModuleUse
// for as long as they live.

#include "qrv/base/cref.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class cEntryGroup;
class cLoad;

// A module is known by its entry in the repository of modules, made and taken out by the object
// itself; so a name that is taken stays with the first one. Calls through a pointer that may be
// null have a static form of the same name.
class QRV_API cModule : public cShared {
  public:
    // With `nocount` uses are not counted, and the module is never unloaded. Made while a module is
    // being loaded, as a static object of that module for example, it stands for that module.
    cModule(std::string const &name, std::string const &comment, bool nocount);
    cModule(cModule const &) = delete;
    cModule &operator=(cModule const &) = delete;
    ~cModule();

    // The module of that name: one that is there already, counted once more unless it was built in,
    // or one found in a file. Tried in this order: the name as given with ".so" and without, in
    // each of "" (a name without a slash: where the system looks for shared objects), "./" and
    // "modules/"; of an absolute name only itself, of one that ends with ".so" only with a second
    // ".so". Two names that end in the same base name, "sub/part" and "part", mean one module.
    // Borrowed; null on failure, for the empty name, for a name that the filter refuses, and for a
    // module that is just being loaded or unloaded. A path that leads to a pipe, a device or a
    // socket fails at once. What the set-up throws comes through; the file then stays in memory, as
    // what was thrown may be defined there, and the next load runs the set-up again.
    // RUNS FOREIGN CODE: the module's static code and its set-up.   O(modules)
    static cModule *load(std::string const &name);
    // Why the last load failed, each path that was tried on a line of its own with the system's
    // words; empty after a success.
    static std::string last_error();

    // Takes one load back. True when it was the last one and the file was given back to the system,
    // and then the module is gone as a rule. If the file stays in memory, because somebody else has
    // opened it, a module object in it stays too; load() wakes it and runs the set-up again. False,
    // and nothing is changed, while the module, or another one from the same file, is in use or not
    // counted, or while another one from the same file is counted by a load of its own; and for one
    // that was built in. The static form is false also for null and for a module that is gone
    // already. Entries of the module that are still in the repository stay there, but point to
    // nothing once the file is out of memory.
    // RUNS FOREIGN CODE: the module's static destructors.   O(modules)
    bool unload() { return unload(this); }
    static bool unload(cModule *module);

    // Could it be unloaded, as far as loads and uses go?
    bool canunload() const noexcept { return loadcnt_ >= 0 && usecnt_ == 0; }
    static bool canunload(cModule const *module) noexcept { return module && module->canunload(); }

    // One user more, one less; nothing if uses are not counted.
    // DELIBERATE: one less than none makes the module uncounted, so it stays.
    // Pinned: a_use_too_few_keeps_a_module_for_good
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

    // Its users; -1 if they are not counted, and for null.
    int usage() const noexcept { return usecnt_; }
    static int usage(cModule const *module) noexcept { return module ? module->usage() : -1; }

    std::string const &name() const noexcept { return name_; }
    std::string const &comment() const noexcept { return comment_; }
    // Of the file that it came from, without folder and ".so"; empty if it was not loaded.
    std::string const &basename() const noexcept { return basename_; }
    std::uint32_t id() const noexcept { return id_; }
    // The system's handle of the file; null if there is none, and for null.
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
    std::int32_t loadcnt_ = -1; // loads not yet taken back; -1: built in, never unloaded
    bool resting_ = false;      // its file is in memory, but was given back or never set up
    std::uint32_t id_ = 0;
    std::unique_ptr<cEntryGroup> entries_; // what was entered while it was loaded
};

// The program itself: "quorvanta". Never unloaded.
QRV_API cModule &cGetMainModule();

// One use of a module, for as long as this lives. Null is no module.
class QRV_API cModuleUse {
  public:
    explicit cModuleUse(cModule *module) noexcept : module_(module) { inc(); }
    explicit cModuleUse(cModule &module) noexcept : cModuleUse(&module) {}
    cModuleUse(cModuleUse const &) = delete;
    cModuleUse &operator=(cModuleUse const &) = delete;
    ~cModuleUse() { dec(); }

    void inc() noexcept { cModule::inc_use_cnt(module_); } // one use more
    void dec() noexcept { cModule::dec_use_cnt(module_); }

  private:
    cModule *module_; // borrowed; can't be unloaded meanwhile
};
