// Modules as objects, and unloading them.
//
// Unloading destroys the module and all other objects and code in its file. So everything that is
// needed is copied first, and nothing in the file is accessed after the loader's call. The entries
// that its static destructors leave in the repository are in a group that outlives the call. The
// file may still stay in memory, if something else has opened it or needs it.

#include "qrv/modules/cmodule.h"

#include "base/platform/cloader.h"
#include "modules/cmodule_state.h"

#include <algorithm>
#include <utility>

namespace {

constinit bool list_ended = false;

cRepositoryList *module_entries() { return cRepoImpl::get(typeid(cModule)); }

// Exists while the system closes a file.
class cClosing {
  public:
    cClosing() noexcept { ++depth; }
    cClosing(cClosing const &) = delete;
    cClosing &operator=(cClosing const &) = delete;
    ~cClosing() { --depth; }
    static bool in_progress() noexcept { return depth > 0; }

  private:
    static constinit inline int depth = 0;
};

bool holds(std::vector<cModule *> const &modules, cModule const *module) {
    return std::find(modules.begin(), modules.end(), module) != modules.end();
}

} // namespace

cModuleList &cModuleList::of_process() noexcept { return cat::loaded_modules; }

bool cModuleList::ended() noexcept { return list_ended; }

cModuleList::~cModuleList() { list_ended = true; }

std::vector<cModule *> cat::known_modules() {
    std::vector<cModule *> known;
    cRepositoryList *const list = module_entries();
    for (auto *e = cRepoImpl::begin(list); e != cRepoImpl::end(list); e = cRepoImpl::next(e))
        if (void *const module = cRepoImpl::ptr(e)) known.push_back(static_cast<cModule *>(module));
    for (cModule *const module : cModuleList::of_process().modules)
        if (!holds(known, module)) known.push_back(module); // its name was taken
    return known;
}

cModule::cModule(std::string const &name, std::string const &comment, bool nocount)
    : name_(name), comment_(comment), usecnt_(nocount ? -1 : 0) {
    if (cLoad const *const load = cLoad::current()) basename_ = load->base_name();
    cRepoImpl::create(module_entries(), name, this, typeid(cModule), typeid(cModule), comment);
}

cModule::~cModule() { withdraw(); }

// Searches for the pointer, since another module may have been entered under its name first.
void cModule::withdraw() {
    cRepositoryList *const list = module_entries();
    for (auto *e = cRepoImpl::begin(list); e != cRepoImpl::end(list); e = cRepoImpl::next(e))
        if (cRepoImpl::ptr(e) == this) return cRepoImpl::release(e);
}

// A removed module is not known any more; its pointer is only compared.
bool cModule::unload(cModule *module) {
    if (!module || cModuleList::ended()) return false;
    auto modules = cat::known_modules();
    if (!holds(modules, module) || module->loadcnt_ <= 0) return false;
    std::erase_if(modules, [module](cModule const *m) { return m->handle_ != module->handle_; });
    for (cModule const *const same_file : modules)
        if (same_file->usecnt_ != 0) return false;
    if (module->loadcnt_ > 1) {
        --module->loadcnt_;
        return false;
    }
    for (cModule const *const same_file : modules) // loading the file counted as one load of each
        if (same_file->loadcnt_ > 1) return false;
    free_file(module->handle_, modules);
    return true;
}

// `modules` are all modules of the file. RUNS USER CODE
void cModule::free_file(void *library, std::vector<cModule *> const &modules) {
    auto left_behind = std::make_unique<cEntryGroup>();
    for (cModule *const module : modules) module->detach(*left_behind);
    cModuleList &list = cModuleList::of_process();
    list.resting.push_back({cat::library_path(library), library, modules.front()->basename_, true,
                            std::move(left_behind)});
    auto const stays = [&modules](cModule const *m) { return !holds(modules, m); };
    auto const from = std::stable_partition(list.modules.begin(), list.modules.end(), stays);
    for (auto made = from; made != list.modules.end(); ++made) (*made)->withdraw();
    list.modules.erase(from, list.modules.end()); // destroys these, unless something shares them
    {
        cClosing const closing;
        cat::close_library(library); // unloading a file may unload others
    }
    if (!cClosing::in_progress()) list.end_closing();
}

bool cModuleList::is_closing(std::string const &base_name) const {
    return std::any_of(resting.begin(), resting.end(), [&base_name](cRestingFile const &file) {
        return file.closing && file.base_name == base_name;
    });
}

bool cModuleList::is_closing_path(std::string const &path) const {
    return std::any_of(resting.begin(), resting.end(), [&path](cRestingFile const &file) {
        return file.closing && cat::is_same_file(file.path, path);
    });
}

void cModuleList::end_closing() {
    for (cRestingFile &file : resting) file.closing = false;
    forget_unmapped();
}

// Forgets the files that are not in memory any more; the other files keep their entries.
void cModuleList::forget_unmapped() {
    std::erase_if(resting, [](cRestingFile const &file) {
        bool const gone = !file.closing && !file.path.empty() && !cat::is_loaded(file.path);
        if (gone) file.left_behind->invalidate();
        return gone;
    });
}

void cModuleList::wake(void *library, cEntryGroup &entries) {
    std::erase_if(resting, [library, &entries](cRestingFile const &file) {
        bool const found = !file.closing && file.library == library;
        if (found) entries.take(*file.left_behind);
        return found;
    });
}

// Calls to the module while its file is being unloaded have no effect. If the file stays in memory,
// a module object in it stays too, inactive.
void cModule::detach(cEntryGroup &entries) noexcept {
    handle_ = nullptr;
    loadcnt_ = -1;
    resting_ = true;
    if (entries_) entries.take(*entries_);
}
