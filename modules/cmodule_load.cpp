// Loading: checks the name, counts a known module, or searches a file and runs its set-up; the
// entries that the file creates meanwhile become the module's.
//
//   name --refused, in progress, or closing--> null
//        --known--> counted
//        --file--> static code, set-up --> module
//
// If the file turns out to be loaded already under another name, the load only counts, as the
// system does too: static code does not run twice, and one module represents the file.

#include "base/platform/cloader.h"
#include "modules/cmodule_state.h"
#include "qrv/text/read/cattrscan.h"

#include <algorithm>
#include <utility>

namespace {

constinit cLoad *current_load = nullptr;

constexpr char const *set_up_name = "quorvantaSetup";

cModule *fail(std::string const &why) {
    cModuleList::of_process().last_error = std::make_unique<std::string>(why);
    return nullptr;
}

cModule *succeed(cModule *module) {
    cModuleList::of_process().last_error.reset();
    return module;
}

// Why a module of that name must not be searched; empty if it may be.
std::string refusal(std::string const &name) {
    if (name.empty()) return "The name of a module is empty";
    if (auto const filter = cat::the_module_filter()) { // RUNS USER CODE
        if (!filter(name)) return "Module '" + name + "' is refused by the program";
    } else if (cat::is_reading()) {
        return "Module '" + name + "' is not loaded while text is being read";
    }
    std::string const base = cat::module_base_name(name);
    if (cLoad::in_progress(base)) return "Module '" + name + "' is just being loaded";
    if (cModuleList::of_process().is_closing(base))
        return "Module '" + name + "' is just being unloaded";
    return {};
}

std::string refusal_of_path(std::string const &path) {
    return cModuleList::of_process().is_closing_path(path) ? "just being unloaded" : "";
}

// Null for an entry of another type.
cModule *module_of(cRepositoryEntry &entry) {
    if (cRepoImpl::type(&entry) != typeid(cModule)) return nullptr;
    return static_cast<cModule *>(cRepoImpl::ptr(&entry));
}

template <class Test> cModule *find_module(Test const &test) {
    auto const known = cat::known_modules();
    auto const found = std::find_if(known.begin(), known.end(), test);
    return found == known.end() ? nullptr : *found;
}

} // namespace

cEntryGroup *cEntryGroup::current() noexcept {
    return current_load ? current_load->entries() : nullptr;
}

cLoad *cLoad::current() noexcept { return current_load; }

cLoad::cLoad(std::string const &base_name)
    : outer_(current_load), base_name_(base_name), entries_(std::make_unique<cEntryGroup>()) {
    current_load = this;
}

cLoad::~cLoad() { current_load = outer_; }

bool cLoad::in_progress(std::string const &base_name) noexcept {
    for (cLoad const *load = current_load; load; load = load->outer_)
        if (load->base_name_ == base_name) return true;
    return false;
}

std::string cModule::last_error() {
    if (cModuleList::ended() || !cModuleList::of_process().last_error) return {};
    return *cModuleList::of_process().last_error;
}

// DELIBERATE: a name that ends in a separator has the empty base name, as every built-in module
// has. Pinned: a_name_without_a_base_is_the_first_built_in_module
cModule *cModule::load(std::string const &name) {
    if (cModuleList::ended()) return nullptr;
    if (std::string const why = refusal(name); !why.empty()) return fail(why);
    std::string const base = cat::module_base_name(name);
    auto const named = [&base](cModule const *m) {
        return !m->resting_ && (m->basename_ == base || m->name_ == base);
    };
    if (cModule *const known = find_module(named)) return known->count_load();
    return cLoad(base).run(name);
}

cModule *cModule::count_load() {
    if (loadcnt_ > 0) ++loadcnt_;
    return succeed(this);
}

cModule *cLoad::run(std::string const &name) {
    std::string failures;
    cModuleList::of_process().forget_unmapped();
    library_ = cat::open_module(name, failures, refusal_of_path); // RUNS USER CODE
    if (!library_) return fail(failures);
    for (cLoad const *load = outer_; load; load = load->outer_)
        if (load->library_ == library_) {
            cat::close_library(library_);
            return fail("Module '" + name + "' is just being loaded");
        }
    auto const same_file = [this](cModule const *m) { return m->handle_ == library_; };
    if (cModule *const known = find_module(same_file)) {
        cat::close_library(library_);
        return finish(*known->count_load());
    }
    cModuleList::of_process().wake(library_, *entries_);
    set_up(name);
    cModule *const made = attach_made();
    return finish(made ? *made : make_module());
}

// The file may define the class of the set-up's exception, so it isn't closed.
void cLoad::set_up(std::string const &name) {
    auto const function = cat::function_in(library_, set_up_name);
    if (!function) return;
    try {
        function(); // RUNS USER CODE
    } catch (...) {
        rest();
        fail("Module '" + name + "' has thrown in its set-up");
        throw;
    }
}

// Deactivates the modules of the file, so that no later load returns them as loaded.
void cLoad::rest() {
    for (auto *entry = entries_->first(); entry; entry = cEntryGroup::next(*entry))
        if (cModule *const module = module_of(*entry)) module->resting_ = true;
    cModuleList::of_process().resting.push_back(
        {cat::library_path(library_), library_, base_name_, false,
         std::exchange(entries_, std::make_unique<cEntryGroup>())});
}

// Attaches the modules that the file itself created. Returns the first; null if it created no
// module.
cModule *cLoad::attach_made() const {
    cModule *first = nullptr;
    for (auto *entry = entries_->first(); entry; entry = cEntryGroup::next(*entry)) {
        cModule *const module = module_of(*entry);
        if (!module) continue;
        attach(*module);
        if (!first) first = module;
    }
    return first;
}

cModule &cLoad::make_module() const {
    auto module = make<cModule>(base_name_, "", false);
    attach(*module);
    cModuleList::of_process().modules.push_back(module);
    return *module;
}

void cLoad::attach(cModule &module) const noexcept {
    module.handle_ = library_;
    module.loadcnt_ = 1;
    module.resting_ = false;
}

cModule *cLoad::finish(cModule &module) {
    if (module.entries_) {
        module.entries_->take(*entries_);
    } else {
        entries_->module(&module);
        module.entries_ = std::move(entries_);
    }
    return succeed(&module);
}
