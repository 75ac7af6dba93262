#pragma once
// What the modules of a process have in common, and the loads in progress.

#include "modules/centrygroup.h"
#include "qrv/modules/cmodule.h"

#include <memory>
#include <string>
#include <vector>

// The modules that were made for a file, in the order of their loading: the only lasting references
// to them. Constant-initialised; it stands in core/startup.cpp, which tells when it goes. At the
// end of the process it drops them, and the files stay loaded.
class cModuleList {
  public:
    constexpr cModuleList() noexcept = default;
    cModuleList(cModuleList const &) = delete;
    cModuleList &operator=(cModuleList const &) = delete;
    ~cModuleList();

    static bool ended() noexcept; // the process ends: nothing is loaded or unloaded any more

    void forget_freed();

    // What a file left in the repository, until it is known whether it has really gone.
    struct cFreed {
        std::string path;
        std::unique_ptr<cEntryGroup> left_behind;
    };

    std::vector<cRef<cModule>> modules;
    std::vector<cFreed> freed;
    std::unique_ptr<std::string> last_error; // null: none
};

namespace cat {
extern cModuleList loaded_modules;
// All modules, in the order in which they were entered into the repository.
std::vector<cModule *> known_modules();
} // namespace cat

// A load in progress, for as long as it lives. Loads nest, and each collects its own entries; the
// end of one, by an exception too, makes the outer one the current again.
class cLoad {
  public:
    explicit cLoad(std::string const &base_name);
    cLoad(cLoad const &) = delete;
    cLoad &operator=(cLoad const &) = delete;
    ~cLoad(); // what is still collected stays without a module

    static cLoad *current() noexcept; // the innermost; null outside
    static bool in_progress(std::string const &base_name) noexcept;

    std::string const &base_name() const noexcept { return base_name_; }
    cEntryGroup *entries() const noexcept { return entries_.get(); }

    cModule *run(std::string const &name); // null on failure

  private:
    cModule *give_back(); // what was opened once too often
    void set_up(std::string const &name) const;
    cModule *made_module() const;
    cModule &make_module() const;
    void attach(cModule &module) const noexcept;
    cModule *finish(cModule &module);

    cLoad *const outer_;
    std::string const base_name_;
    void *library_ = nullptr;
    std::unique_ptr<cEntryGroup> entries_;
};
