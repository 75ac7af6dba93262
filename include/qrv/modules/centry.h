#pragma once
// Typed entries of the repository:
//
//     cEntry<cColourNames> const entry("web", &names, "names of the web's colours");
//     ...
//     cColourNames *const names = cat::find_entry<cColourNames>("web");
//
// The list of the class T is found by the string type_info::name(), so the program that enters and
// the program that searches must name the same class.

#include "qrv/modules/crepository.h"

#include <string>
#include <typeinfo>

// Enters a thing, which it borrows, in the repository. The entry is removed with this object.
template <class T> class cEntry {
  public:
    // If the name exists, nothing is entered, and a line on the standard error stream reports that.
    cEntry(std::string const &name, T *thing, std::string const &comment = {})
        : entry_(cRepoImpl::create(cRepoImpl::get(typeid(T)), name, thing, typeid(T),
                                   thing ? typeid(*thing) : typeid(T), comment)) {}
    cEntry(cEntry const &) = delete;
    cEntry &operator=(cEntry const &) = delete;
    ~cEntry() { cRepoImpl::release(entry_); }

    bool is_entered() const noexcept { return entry_ != nullptr; }

  private:
    cRepositoryEntry *entry_; // null: the name existed
};

namespace cat {

// The thing with that name in the list of T, borrowed, or null. For "key:module", if the key does
// not exist, loads the module if that is permitted; this RUNS USER CODE.   O(1)
template <class T> [[nodiscard]] T *find_entry(std::string const &name) {
    cRepositoryEntry *const entry = cRepoImpl::find(cRepoImpl::get(typeid(T)), name);
    return static_cast<T *>(cRepoImpl::ptr(entry));
}

} // namespace cat
