#pragma once
// The shared state of a process's modules, and the loads in progress.

#include "modules/centrygroup.h"
#include "qrv/modules/cmodule.h"

#include <memory>
#include <string>
#include <vector>

// A file that was closed, or whose set-up has thrown, with its entries in the repository. While it
// stays in memory its module objects are inactive ("resting"): they are known, but a load opens the
// file again and reactivates them.
//
//   loaded --unload--> closing --out of memory--> forgotten
//                      closing --still in memory--> resting
//   being loaded --set-up throws--> resting --load--> loaded
struct cRestingFile {
    std::string path;
    void *library; // the handle of the file, which is only compared
    std::string base_name;
    bool closing;
    std::unique_ptr<cEntryGroup> left_behind;
};

// The modules that were created for a file, in the order of their loading: the only lasting
// references to them. It is constant-initialised and defined in start/startup.cpp, whose objects
// are destroyed in reverse order of definition. At the end of the process it releases the modules,
// and the files stay loaded.
class cModuleList {
  public:
    constexpr cModuleList() noexcept = default;
    cModuleList(cModuleList const &) = delete;
    cModuleList &operator=(cModuleList const &) = delete;
    ~cModuleList();

    static cModuleList &of_process() noexcept;
    static bool ended() noexcept; // the process ends: modules are not loaded or unloaded any more

    // Whether a file of that base name, or the file of that path, is being closed.
    bool is_closing(std::string const &base_name) const;
    bool is_closing_path(std::string const &path) const;
    void end_closing();
    void forget_unmapped();
    // Moves the earlier entries of the file with that handle to `entries`.
    void wake(void *library, cEntryGroup &entries);

    std::vector<cRef<cModule>> modules;
    std::vector<cRestingFile> resting;
    std::unique_ptr<std::string> last_error; // null: no error
};

namespace cat {
extern cModuleList loaded_modules; // what cModuleList::of_process() returns
// All modules, in the order in which they were entered into the repository.
std::vector<cModule *> known_modules();
} // namespace cat

// A load in progress while this exists. Loads nest, and each collects its own entries; the end of
// one, also by an exception, makes the outer load current again.
class cLoad {
  public:
    explicit cLoad(std::string const &base_name);
    cLoad(cLoad const &) = delete;
    cLoad &operator=(cLoad const &) = delete;
    ~cLoad(); // the entries that are still collected have no module

    static cLoad *current() noexcept; // the innermost; null outside any load
    static bool in_progress(std::string const &base_name) noexcept;

    std::string const &base_name() const noexcept { return base_name_; }
    cEntryGroup *entries() const noexcept { return entries_.get(); }

    cModule *run(std::string const &name); // null on failure

  private:
    void set_up(std::string const &name);
    cModule *attach_made() const;
    cModule &make_module() const;
    void attach(cModule &module) const noexcept;
    void rest(); // the file stays, without an active module
    cModule *finish(cModule &module);

    cLoad *const outer_;
    std::string const base_name_;
    void *library_ = nullptr;
    std::unique_ptr<cEntryGroup> entries_;
};
