#include "modules/centrygroup.h"

#include "qrv/modules/cmodule.h"

cEntryGroup::~cEntryGroup() {
    while (first_) remove(*first_);
}

void cEntryGroup::add(cRepositoryEntry &entry) noexcept {
    entry.group_ = this;
    entry.group_prev_ = last_;
    (last_ ? last_->group_next_ : first_) = &entry;
    last_ = &entry;
}

void cEntryGroup::remove(cRepositoryEntry &entry) noexcept {
    cRepositoryEntry *const next = entry.group_next_, *const prev = entry.group_prev_;
    (prev ? prev->group_next_ : first_) = next;
    (next ? next->group_prev_ : last_) = prev;
    entry.group_ = nullptr;
    entry.group_next_ = entry.group_prev_ = nullptr;
}

void cEntryGroup::take(cEntryGroup &other) noexcept {
    while (cRepositoryEntry *const entry = other.first_) {
        other.remove(*entry);
        add(*entry);
    }
}

void cEntryGroup::invalidate() {
    for (cRepositoryEntry *entry = first_; entry;) {
        cRepositoryEntry *const next = entry->group_next_;
        entry->ptr_ = nullptr;
        entry->type_ = entry->derivedtype_ = nullptr;
        if (entry->type_name_ == typeid(cModule).name()) delete entry;
        entry = next;
    }
}
