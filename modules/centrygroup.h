#pragma once
// The entries that were created during one load, as a ring in the order of creation.
//
//   load begins --> collecting, module() is null --> load ends --> belongs to the module
//                                        \--> load fails --> dissolved: the entries have no group
//
// An entry is in at most one group and leaves it when it is destroyed, so a group has no destroyed
// entries. A copy of an entry joins the group of its original. While a module's file is being
// unloaded, the entries that the module has left in the repository are in a group without a module.

#include "qrv/modules/crepository.h"

class cEntryGroup {
  public:
    cEntryGroup() = default;
    cEntryGroup(cEntryGroup const &) = delete;
    cEntryGroup &operator=(cEntryGroup const &) = delete;
    ~cEntryGroup(); // the entries then have no group

    // The group of the innermost load in progress; null outside of a load.
    static cEntryGroup *current() noexcept;

    cModule *module() const noexcept { return module_; }
    void module(cModule *module) noexcept { module_ = module; }

    void add(cRepositoryEntry &entry) noexcept;
    void remove(cRepositoryEntry &entry) noexcept;
    void take(cEntryGroup &other) noexcept; // moves all entries of `other` to this group

    // Iterates in the order of creation; null at the end.
    cRepositoryEntry *first() const noexcept { return first_; }
    static cRepositoryEntry *next(cRepositoryEntry const &entry) noexcept {
        return entry.group_next_;
    }

    // Call this after the file that contained the things of the entries was unloaded. Sets the
    // pointers of all entries to null. Destroys the entries of modules, so that these modules can
    // be loaded again.
    void invalidate();

  private:
    cModule *module_ = nullptr; // borrowed: it owns this group
    cRepositoryEntry *first_ = nullptr;
    cRepositoryEntry *last_ = nullptr;
};
