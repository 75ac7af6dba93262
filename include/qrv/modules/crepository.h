#pragma once
// The repository: a process-wide directory of named things, with one list for each class of things,
// shared by all modules of a process. A module enters its factories, types or instances by name,
// and others find them. A second, small table stores a reference count for any pointer
// (cGetShared).
//
// A list is found by the string type_info::name(), so that two modules that know the same class use
// the same list. Lists are created at their first use and stay when they are empty.
//
// Things and types are borrowed: the repository never accesses what an entry points to. If a module
// does not remove an entry, its pointer becomes null when the module's file is unmapped. Both
// tables are created at their first use and destroyed at the end of the process, after every static
// object whose constructor used them.

#include "qrv/base/cref.h"
#include "qrv/modules/cmodule.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

class QRV_API cRepositoryList;
class QRV_API cRepositories;

// One named thing. Created only by cRepoImpl::create and owned by its list. The functions of
// cRepoImpl return its fields and also accept null.
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
    ~cRepositoryEntry(); // removes itself from its list and its group

    void copy_data(cRepositoryEntry const &other);

    cRepositoryEntry *next_; // the list's ring, in order of insertion
    cRepositoryEntry *prev_;
    std::string name_;
    std::uint32_t hash_ = 0xFFFFFFFFu;
    std::uintptr_t *slot_ = nullptr; // the cell of the table that holds this entry
    cRepositoryList *owner_ = nullptr;
    void *ptr_ = nullptr;
    std::type_info const *type_ = nullptr;
    std::type_info const *derivedtype_ = nullptr;
    std::string comment_;
    std::string type_name_; // a copy: the type_info may be unmapped with its module
    // The entries that were created during the same load; null for an entry that was not created
    // during a load.
    cEntryGroup *group_ = nullptr;
    cRepositoryEntry *group_next_ = nullptr;
    cRepositoryEntry *group_prev_ = nullptr;
};

// All entries of a class of things, by name. A copy is a separate list with copies of all entries,
// in the same order; assignment destroys the former entries.
class QRV_API cRepositoryList {
  public:
    cRepositoryList();
    cRepositoryList(cRepositoryList const &other);
    cRepositoryList &operator=(cRepositoryList const &other);
    ~cRepositoryList();

    std::uint32_t count() const noexcept { return count_; }
    std::uint32_t size() const noexcept { return size_; } // cells

    // Empty, or the first violated rule (rules: modules/crepository_list.cpp).   O(n)
    std::string broken_rule(bool deep) const;

  private:
    friend class cRepoImpl;
    friend class cRepositories;
    friend class cRepositoryEntry;
    friend struct cRepositoryProbe;

    struct cPlace { // the entry, or else the cell for an insertion
        cRepositoryEntry *entry;
        std::uintptr_t *cell;
    };

    cPlace probe(std::string_view name, std::uint32_t hash) const;
    cRepositoryEntry *look_up(std::string_view name) const;
    cRepositoryEntry &insert(std::string_view name); // the name must not exist
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
    cRepositoryEntry head_; // of the ring: the end, not an entry
};

// The lists by type name. A copy has copies of all lists.
class QRV_API cRepositories {
  public:
    cRepositories() = default;
    cRepositories(cRepositories const &other);
    cRepositories &operator=(cRepositories const &other);
    ~cRepositories();

    std::uint32_t count() const noexcept { return lists_.count(); } // lists

  private:
    friend class cRepoImpl;

    cRepositoryList *find(std::string_view type_name) const; // null if it does not exist
    cRepositoryList &force(std::string_view type_name);      // created if it does not exist
    void clear() noexcept;
    void copy(cRepositories const &other);

    cRepositoryList lists_; // each entry's ptr is an owned cRepositoryList
};

// The interface of the repository. Every function accepts null for a list or an entry.
class QRV_API cRepoImpl {
  public:
    cRepoImpl() = delete;

    // The list of a type, created at its first use; borrowed, exists until the process ends.   O(1)
    static cRepositoryList *get(std::type_info const &type);

    // Enters `ptr` (borrowed) under a name, which may contain any characters. Null for a null list.
    // Null also, without any change, if the name exists; a line on the standard error stream
    // reports that.
    static cRepositoryEntry *create(cRepositoryList *list, std::string const &name, void *ptr,
                                    std::type_info const &type, std::type_info const &derivedtype,
                                    std::string const &comment);
    // Destroys the entry. If the list of its type does not have it under its name, it only prints
    // "error:inconsistent repository" to the standard error stream.
    static void release(cRepositoryEntry *entry);
    // The entry of that name, borrowed, or null. For "key:module" it searches the key; if that does
    // not exist, it loads the module by cModule::load and searches again.   O(1)
    // RUNS USER CODE of the module if there is a colon
    static cRepositoryEntry *find(cRepositoryList *list, std::string const &name);
    // The same, with more modules to load. The key is the part before the first colon, at most 255
    // characters. It is searched first without loading, then after loading `module`, the part after
    // the colon, and a module with the name of the key; empty names and modules that cannot be
    // loaded are skipped. Null for an empty name. RUNS USER CODE of the modules
    static cRepositoryEntry *findorload(cRepositoryList *list, std::string const &name,
                                        std::string const &module);

    // Key and comment; "unknown" for a null entry.
    static std::string const &name(cRepositoryEntry const *entry);
    static std::string const &comment(cRepositoryEntry const *entry);
    // The pointer, for reading and writing; for a null entry a scratch pointer, which each such
    // call sets to null.
    static void *&ptr(cRepositoryEntry *entry);
    // The list's type, and the thing's most derived type; that of void for a null entry.
    static std::type_info const &type(cRepositoryEntry const *entry);
    static std::type_info const &derivedtype(cRepositoryEntry const *entry);
    // The module that was being loaded when the entry was created; borrowed. The main module for a
    // null entry, for an entry that was not created during a load, for an entry whose load is not
    // complete, and for an entry whose module was destroyed.
    static cModule *module(cRepositoryEntry const *entry);

    // The ring of a list, in order of insertion. The end position is not an entry, but next() and
    // prev() accept it. Null for null. To walk it:
    //     for (auto e = cRepoImpl::begin(l); e != cRepoImpl::end(l); e = cRepoImpl::next(e))
    static cRepositoryEntry *begin(cRepositoryList *list);
    static cRepositoryEntry *end(cRepositoryList *list);
    static cRepositoryEntry *next(cRepositoryEntry const *entry);
    static cRepositoryEntry *prev(cRepositoryEntry const *entry);
};

// The set of all lists, created at its first use.
QRV_API cRepositories &cGetRepositories();

// The count of a pointer, created at its first use. Its first count belongs to the table: share the
// result, never adopt it. It stays the same until the pointer is removed from the table.   O(log n)
QRV_API cShared *cGetShared(void *pointer);
// Removes the pointer from the table. Handles that share its count stay valid; the next cGetShared
// creates a new count.   O(log n)
QRV_API void cPutShared(void *pointer);
