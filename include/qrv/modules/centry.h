#pragma once
// Typed entries of the repository:
//
//     cEntry<cColourNames> const entry("web", &names, "names of the web's colours");
//     ...
//     cColourNames *const names = cat::find_entry<cColourNames>("web");
//
// The list is that of the class T, by the text of its type_info::name(), so both sides must name
// the same class.

#include "qrv/modules/crepository.h"

#include <string>
#include <typeinfo>

// Enters a thing, which it borrows, for as long as it lives. The entry ends with it.
template <class T> class cEntry {
  public:
    // If the name is taken nothing is entered, and a line on the standard error stream says so.
    cEntry(std::string const &name, T *thing, std::string const &comment = {})
        : entry_(cRepoImpl::create(cRepoImpl::get(typeid(T)), name, thing, typeid(T),
                                   thing ? typeid(*thing) : typeid(T), comment)) {}
    cEntry(cEntry const &) = delete;
    cEntry &operator=(cEntry const &) = delete;
    ~cEntry() { cRepoImpl::release(entry_); }

    bool is_entered() const noexcept { return entry_ != nullptr; }

  private:
    cRepositoryEntry *entry_; // null: the name was taken
};

namespace cat {

// The thing that is entered under that name in the list of T, borrowed; null if there is none. Of
// "key:module" the module is loaded, if that may be, where the key is not there. RUNS USER CODE
// then.   O(1)
template <class T> [[nodiscard]] T *find_entry(std::string const &name) {
    cRepositoryEntry *const entry = cRepoImpl::find(cRepoImpl::get(typeid(T)), name);
    return static_cast<T *>(cRepoImpl::ptr(entry));
}

} // namespace cat
