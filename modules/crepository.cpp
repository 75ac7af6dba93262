// The repository's functions, the set of lists, and the table of counted pointers.
//
// Both process-wide tables are created on first use, and their pointers are constant-initialised.
// The first use also registers their destruction at exit, so they outlive each static object whose
// constructor has used them.

#include "qrv/modules/crepository.h"

#include "diagnostics/cerrline.h"
#include "modules/centrygroup.h"
#include "modules/crepository_state.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/modules/cmodule.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <ostream>

namespace {

using cSharedTable = std::map<void *, cRef<cShared>>;

constexpr std::size_t longest_key = 255; // findorload() ignores the characters after these

constinit cSharedTable *shared_table = nullptr;
constinit bool shared_table_ends = false; // whether its destruction is registered
constinit cRepositories *repositories = nullptr;
constinit std::string const *unknown_text = nullptr; // never freed: references to it stay valid

void end_shared_table() {
    shared_table_ends = false;
    delete shared_table;
    shared_table = nullptr;
}

void put_error(std::string const &text) {
    if (!cat::offer_line(text)) cat::std_err() << text << '\n';
}

void end_repositories() {
    delete repositories;
    repositories = nullptr;
}

std::string const &unknown() {
    if (!unknown_text) unknown_text = new std::string("unknown");
    return *unknown_text;
}

} // namespace

void cat::start_shared_table() {
    if (shared_table) return;
    shared_table = new cSharedTable;
    if (shared_table_ends) return; // the table was created again
    shared_table_ends = true;
    std::atexit(end_shared_table);
}

bool cat::has_shared_table() { return shared_table != nullptr; }

void cat::start_repositories() {
    if (repositories) return;
    repositories = new cRepositories;
    std::atexit(end_repositories);
}

cRepositories &cGetRepositories() {
    cat::start_repositories();
    return *repositories;
}

cShared *cGetShared(void *pointer) {
    cat::start_shared_table();
    cRef<cShared> &record = (*shared_table)[pointer];
    if (!record) record = make<cShared>();
    return record;
}

// Removes the record from the table. It is destroyed when no handle shares it any more.
void cPutShared(void *pointer) {
    if (!shared_table) return;
    shared_table->erase(pointer);
    if (!shared_table->empty()) return;
    delete shared_table;
    shared_table = nullptr;
}

cRepositories::cRepositories(cRepositories const &other) : cRepositories() { copy(other); }

cRepositories &cRepositories::operator=(cRepositories const &other) {
    if (this != &other) {
        clear();
        copy(other);
    }
    return *this;
}

cRepositories::~cRepositories() { clear(); }

void cRepositories::clear() noexcept {
    auto const *const end = &lists_.head_;
    for (auto *entry = lists_.head_.next_; entry != end; entry = entry->next_)
        delete static_cast<cRepositoryList *>(entry->ptr_);
    lists_.clear();
}

void cRepositories::copy(cRepositories const &other) {
    auto const *const end = &other.lists_.head_;
    for (auto const *entry = other.lists_.head_.next_; entry != end; entry = entry->next_)
        force(entry->name_) = *static_cast<cRepositoryList const *>(entry->ptr_);
}

cRepositoryList *cRepositories::find(std::string_view type_name) const {
    cRepositoryEntry const *const entry = lists_.look_up(type_name);
    return entry ? static_cast<cRepositoryList *>(entry->ptr_) : nullptr;
}

cRepositoryList &cRepositories::force(std::string_view type_name) {
    if (cRepositoryList *const list = find(type_name)) return *list;
    auto fresh = std::make_unique<cRepositoryList>();
    cRepositoryEntry &entry = lists_.insert(type_name);
    entry.ptr_ = fresh.get();
    return *fresh.release();
}

cRepositoryList *cRepoImpl::get(std::type_info const &type) {
    return &cGetRepositories().force(type.name());
}

cRepositoryEntry *cRepoImpl::create(cRepositoryList *list, std::string const &name, void *ptr,
                                    std::type_info const &type, std::type_info const &derivedtype,
                                    std::string const &comment) {
    if (!list) return nullptr;
    if (cRepositoryEntry const *const old = list->look_up(name)) {
        put_error("error: repository entry already defined:" + name + ":type '" + type.name() +
                  "':comment '" + comment + "' old '" + old->comment_ + "'");
        return nullptr;
    }
    std::string comment_copy(comment), type_name(type.name()); // first, since these may throw
    cRepositoryEntry &entry = list->insert(name);
    entry.comment_.swap(comment_copy);
    entry.type_name_.swap(type_name);
    entry.ptr_ = ptr;
    entry.type_ = &type;
    entry.derivedtype_ = &derivedtype;
    if (cEntryGroup *const group = cEntryGroup::current()) group->add(entry);
    return &entry;
}

void cRepoImpl::release(cRepositoryEntry *entry) {
    if (!entry) return;
    cRepositoryList const *const list = cGetRepositories().find(entry->type_name_);
    if (list && list->look_up(entry->name_) == entry)
        delete entry;
    else
        put_error("error:inconsistent repository");
}

cRepositoryEntry *cRepoImpl::find(cRepositoryList *list, std::string const &name) {
    if (!list) return nullptr;
    std::size_t const colon = name.find(':');
    std::string_view const key = std::string_view(name).substr(0, colon);
    cRepositoryEntry *const entry = list->look_up(key);
    if (entry || colon == std::string::npos) return entry;
    return cModule::load(name.substr(colon + 1)) ? list->look_up(key) : nullptr;
}

cRepositoryEntry *cRepoImpl::findorload(cRepositoryList *list, std::string const &name,
                                        std::string const &module) {
    if (!list || name.empty()) return nullptr;
    std::size_t const colon = name.find(':');
    std::string const key = name.substr(0, std::min(colon, longest_key));
    std::string const after_colon = colon == std::string::npos ? "" : name.substr(colon + 1);
    if (cRepositoryEntry *const entry = list->look_up(key)) return entry;
    for (std::string const *from : {&module, &after_colon, &key}) {
        if (from->empty() || !cModule::load(*from)) continue;
        if (cRepositoryEntry *const entry = list->look_up(key)) return entry;
    }
    return nullptr;
}

std::string const &cRepoImpl::name(cRepositoryEntry const *entry) {
    return entry ? entry->name_ : unknown();
}

std::string const &cRepoImpl::comment(cRepositoryEntry const *entry) {
    return entry ? entry->comment_ : unknown();
}

void *&cRepoImpl::ptr(cRepositoryEntry *entry) {
    static constinit void *none = nullptr;
    if (entry) return entry->ptr_;
    none = nullptr;
    return none;
}

std::type_info const &cRepoImpl::type(cRepositoryEntry const *entry) {
    return entry && entry->type_ ? *entry->type_ : typeid(void);
}

std::type_info const &cRepoImpl::derivedtype(cRepositoryEntry const *entry) {
    return entry && entry->derivedtype_ ? *entry->derivedtype_ : typeid(void);
}

cModule *cRepoImpl::module(cRepositoryEntry const *entry) {
    cModule *const module = entry && entry->group_ ? entry->group_->module() : nullptr;
    return module ? module : &cGetMainModule();
}

cRepositoryEntry *cRepoImpl::begin(cRepositoryList *list) {
    return list ? list->head_.next_ : nullptr;
}

cRepositoryEntry *cRepoImpl::end(cRepositoryList *list) { return list ? &list->head_ : nullptr; }

cRepositoryEntry *cRepoImpl::next(cRepositoryEntry const *entry) {
    return entry ? entry->next_ : nullptr;
}

cRepositoryEntry *cRepoImpl::prev(cRepositoryEntry const *entry) {
    return entry ? entry->prev_ : nullptr;
}
