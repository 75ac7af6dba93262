#pragma once
// The repository: a process-wide directory of named things, one list for each class of thing,
// shared by all modules of a process. A module enters its factories, types or instances by name,
// another finds them. And, much smaller, a table that gives any pointer a count from the outside.
//
// A list is found by the text of type_info::name(), so that two modules that see the same class
// meet in the same list. Lists are made when first asked for and stay when they are empty.
//
// Things and types are borrowed: a repository never touches what an entry points to. An entry that
// a module left behind points to nothing once the module's file is unloaded. Both tables are made
// on first use and go at the end of the process, after every static object that used them in its
// constructor.

#include "qrv/base/cref.h"
#include "qrv/modules/cmodule.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

class QRV_API cRepositoryList;
class QRV_API cRepositories;

// One named thing. Made by cRepoImpl::create only and owned by its list; its fields are told by
// cRepoImpl, which takes null too.
class QRV_API cRepositoryEntry {
  public:
    cRepositoryEntry(cRepositoryEntry const &) = delete;
    cRepositoryEntry &operator=(cRepositoryEntry const &) = delete;

  private:
    friend class cEntryGroup;
    friend class cRepoImpl;
    friend class cRepositories;
    friend class cRepositoryList;
    friend struct cRepositoryProbe; // tests of the rules

    cRepositoryEntry() noexcept : next_(this), prev_(this) {}
    explicit cRepositoryEntry(std::string_view name);
    ~cRepositoryEntry(); // leaves its list and its group

    void copy_data(cRepositoryEntry const &other);

    cRepositoryEntry *next_; // the ring of the list, in order of insertion
    cRepositoryEntry *prev_;
    std::string name_;
    std::uint32_t hash_ = 0xFFFFFFFFu;
    std::uintptr_t *slot_ = nullptr; // the cell of the table that holds this entry
    cRepositoryList *owner_ = nullptr;
    void *ptr_ = nullptr;
    std::type_info const *type_ = nullptr;
    std::type_info const *derivedtype_ = nullptr;
    std::string comment_;
    std::string type_name_;        // a copy: the type_info may be unmapped with its module
    cEntryGroup *group_ = nullptr; // the entries made during the same load; null: outside of any
    cRepositoryEntry *group_next_ = nullptr;
    cRepositoryEntry *group_prev_ = nullptr;
};

// All entries of one class of thing, by name. A copy is a list of its own with copies of all
// entries, in the same order; assignment destroys the former entries.
class QRV_API cRepositoryList {
  public:
    cRepositoryList();
    cRepositoryList(cRepositoryList const &other);
    cRepositoryList &operator=(cRepositoryList const &other);
    ~cRepositoryList();

    std::uint32_t count() const noexcept { return count_; }
    std::uint32_t size() const noexcept { return size_; } // cells

    // Empty, or the first rule that doesn't hold (the rules: modules/crepository_list.cpp).   O(n)
    std::string broken_rule(bool deep) const;

  private:
    friend class cRepoImpl;
    friend class cRepositories;
    friend class cRepositoryEntry;
    friend struct cRepositoryProbe;

    struct cPlace { // the entry, or else the cell that an insertion takes
        cRepositoryEntry *entry;
        std::uintptr_t *cell;
    };

    cPlace probe(std::string_view name, std::uint32_t hash) const;
    cRepositoryEntry *look_up(std::string_view name) const;
    cRepositoryEntry &insert(std::string_view name); // the name must be new
    void put(cRepositoryEntry &entry);
    void remove(cRepositoryEntry &entry) noexcept;
    void make_room();
    void rebuild(std::uint32_t size);
    void clear() noexcept;
    void copy(cRepositoryList const &other);
    std::string broken_table() const;
    void check() const;

    std::unique_ptr<std::uintptr_t[]> table_;
    std::uint32_t size_;
    std::uint32_t unused_; // cells that never held an entry
    std::uint32_t count_ = 0;
    cRepositoryEntry head_; // of the ring; stands for the end and is no entry
};

// The lists by type name. A copy holds copies of all lists.
class QRV_API cRepositories {
  public:
    cRepositories() = default;
    cRepositories(cRepositories const &other);
    cRepositories &operator=(cRepositories const &other);
    ~cRepositories();

    std::uint32_t count() const noexcept { return lists_.count(); } // lists

  private:
    friend class cRepoImpl;

    cRepositoryList *find(std::string_view type_name) const; // null if there is none
    cRepositoryList &force(std::string_view type_name);      // made if there is none
    void clear() noexcept;
    void copy(cRepositories const &other);

    cRepositoryList lists_; // each entry's ptr is an owned cRepositoryList
};

// What everything goes through. Every function takes null for a list or an entry.
class QRV_API cRepoImpl {
  public:
    cRepoImpl() = delete;

    // The list for a type, made if new; borrowed, and there until the process ends.   O(1)
    static cRepositoryList *get(std::type_info const &type);

    // Enters `ptr` (borrowed) under a name that may hold any characters. Null for a null list, and
    // for a name that is taken: nothing is changed then, and a line on the standard error stream
    // says so.
    static cRepositoryEntry *create(cRepositoryList *list, std::string const &name, void *ptr,
                                    std::type_info const &type, std::type_info const &derivedtype,
                                    std::string const &comment);
    // Destroys the entry, unless the list of its type holds no entry or another one under its name:
    // then "error:inconsistent repository" goes to the standard error stream.
    static void release(cRepositoryEntry *entry);
    // The entry of that name; null if there is none. Of "key:module" the key is looked up, and if
    // it is not there, once more when cModule::load could load the module.   O(1) RUNS FOREIGN
    // CODE: a module's, if there is a colon.
    static cRepositoryEntry *find(cRepositoryList *list, std::string const &name);
    // The same, with more modules to try. The key is what stands before the first colon, at most
    // 255 characters of it; it is looked up as things are, then after loading `module`, what stands
    // behind the colon, and a module of the key's own name, as far as these are not empty and can
    // be loaded. Null for an empty name. RUNS USER CODE: the modules'.
    static cRepositoryEntry *findorload(cRepositoryList *list, std::string const &name,
                                        std::string const &module);

    // The key, and the comment; "unknown" for a null entry.
    static std::string const &name(cRepositoryEntry const *entry);
    static std::string const &comment(cRepositoryEntry const *entry);
    // The pointer, to be read or written; for a null entry one that is null again at each call.
    static void *&ptr(cRepositoryEntry *entry);
    // The list's type and the thing's most derived one; void's for a null entry.
    static std::type_info const &type(cRepositoryEntry const *entry);
    static std::type_info const &derivedtype(cRepositoryEntry const *entry);
    // The module that was being loaded when the entry was made, once that was done; borrowed. The
    // main module for a null entry, for one made otherwise, and when the module has gone.
    static cModule *module(cRepositoryEntry const *entry);

    // The ring of a list, in order of insertion. The end mark is no entry, but may be stepped from
    // in both directions. Null for null. Walk: for (auto e = cRepoImpl::begin(l); e !=
    // cRepoImpl::end(l); e = cRepoImpl::next(e))
    static cRepositoryEntry *begin(cRepositoryList *list);
    static cRepositoryEntry *end(cRepositoryList *list);
    static cRepositoryEntry *next(cRepositoryEntry const *entry);
    static cRepositoryEntry *prev(cRepositoryEntry const *entry);
};

// The set of lists.
QRV_API cRepositories &cGetRepositories();

// The count of a pointer, made with 1 on first asking. That first count is the table's own: share
// the result, never adopt it. While the pointer is in the table, it is the same one each time.
// O(log n)
QRV_API cShared *cGetShared(void *pointer);
// Takes the pointer out of the table. Handles that still share its count stay good; the next
// cGetShared makes a new one.   O(log n)
QRV_API void cPutShared(void *pointer);
