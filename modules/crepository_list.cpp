// The open-addressed table of a repository list, and the ring of its entries.
//
// A cell moves only like this:  0 --insert--> entry --~cRepositoryEntry--> 1 --insert--> entry
//
// Only a rebuild, which starts a new array, creates zeros again. A search stops at 0 and skips 1.
// It visits no cell twice, since the size is a prime and the step is smaller.
//
// Rules, checked by broken_rule():
//   R1  each entry e on the ring: e.next.prev is e, and the ring comes back to its head
//   R2  e.owner is this list, e.hash is the hash of its name, and *e.slot is e
//   R3  the ring has count entries; the table is not too full, and enough cells are unused
//   R4  (deep) the table holds count entries and unused zeros
//   R5  (deep) a search for an entry's name finds that entry, so names are unique
// Limit: an insertion beyond the greatest known size throws std::length_error.

#include "core/ctable_growth.h"
#include "modules/centrygroup.h"
#include "qrv/core/cattrhash.h" // hash_new_size
#include "qrv/core/ctypeobj.h"  // hash_bytes
#include "qrv/modules/crepository.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

constexpr std::uintptr_t cell_unused = 0;
constexpr std::uintptr_t cell_erased = 1;

std::uint32_t hash_of(std::string_view name) { return cat::hash_bytes(name.data(), name.size()); }

cRepositoryEntry *entry_of(std::uintptr_t word) {
    return word > cell_erased ? reinterpret_cast<cRepositoryEntry *>(word) : nullptr;
}

} // namespace

cRepositoryEntry::cRepositoryEntry(std::string_view name)
    : next_(this), prev_(this), name_(name), hash_(hash_of(name)) {}

cRepositoryEntry::~cRepositoryEntry() {
    if (group_) group_->remove(*this);
    if (owner_) owner_->remove(*this);
}

void cRepositoryEntry::copy_data(cRepositoryEntry const &other) {
    comment_ = other.comment_;
    type_name_ = other.type_name_;
    ptr_ = other.ptr_;
    type_ = other.type_;
    derivedtype_ = other.derivedtype_;
    if (other.group_) other.group_->add(*this); // it points to the same things
}

cRepositoryList::cRepositoryList() : size_(first_size), unused_(size_) {
    table_ = std::make_unique<std::uintptr_t[]>(size_);
}

cRepositoryList::cRepositoryList(cRepositoryList const &other) : cRepositoryList() {
    copy(other); // after the delegated constructor, so a failure here runs the destructor
}

cRepositoryList &cRepositoryList::operator=(cRepositoryList const &other) {
    if (this != &other) {
        clear();
        copy(other);
    }
    return *this;
}

cRepositoryList::~cRepositoryList() { clear(); }

void cRepositoryList::clear() noexcept {
    while (head_.next_ != &head_) delete head_.next_;
}

void cRepositoryList::copy(cRepositoryList const &other) {
    for (auto const *entry = other.head_.next_; entry != &other.head_; entry = entry->next_)
        insert(entry->name_).copy_data(*entry);
}

cRepositoryList::cPlace cRepositoryList::probe(std::string_view name, std::uint32_t hash) const {
    cProbeSlots at(hash, size_);
    std::uintptr_t *erased = nullptr;
    for (std::uint32_t n = 0; n < size_; ++n, at.next()) {
        std::uintptr_t &cell = table_[at.slot()];
        if (cell == cell_unused) return {nullptr, erased ? erased : &cell};
        if (cell == cell_erased) {
            if (!erased) erased = &cell;
            continue;
        }
        cRepositoryEntry *const entry = entry_of(cell);
        if (entry->hash_ == hash && entry->name_ == name) return {entry, &cell};
    }
    return {nullptr, erased};
}

cRepositoryEntry *cRepositoryList::look_up(std::string_view name) const {
    return probe(name, hash_of(name)).entry;
}

// All steps that may fail come before the entry is linked.
cRepositoryEntry &cRepositoryList::insert(std::string_view name) {
    make_room();
    auto *const entry = new cRepositoryEntry(name);
    put(*entry);
    entry->owner_ = this;
    entry->next_ = &head_;
    entry->prev_ = head_.prev_;
    head_.prev_->next_ = entry;
    head_.prev_ = entry;
    ++count_;
    check();
    return *entry;
}

// Puts the entry into the first free cell of its sequence; make_room() guarantees that there is
// one.
void cRepositoryList::put(cRepositoryEntry &entry) {
    entry.slot_ = probe(entry.name_, entry.hash_).cell;
    if (*entry.slot_ == cell_unused) --unused_;
    *entry.slot_ = reinterpret_cast<std::uintptr_t>(&entry);
}

void cRepositoryList::remove(cRepositoryEntry &entry) noexcept {
    entry.next_->prev_ = entry.prev_;
    entry.prev_->next_ = entry.next_;
    *entry.slot_ = cell_erased;
    --count_;
    check();
}

void cRepositoryList::make_room() {
    if (is_too_full(count_ + 1, size_)) {
        std::uint32_t const larger = hash_new_size(size_ + 1);
        if (larger == 0) throw std::length_error("cRepositoryList");
        rebuild(larger);
    } else if (is_worn(unused_ - 1, size_)) {
        rebuild(size_);
    }
}

// Fills a new array from the cached hashes. Invisible, since the ring has the order.
void cRepositoryList::rebuild(std::uint32_t size) {
    table_ = std::make_unique<std::uintptr_t[]>(size);
    size_ = unused_ = size;
    for (auto *entry = head_.next_; entry != &head_; entry = entry->next_) put(*entry);
}

std::string cRepositoryList::broken_rule(bool deep) const {
    std::uint32_t entries = 0;
    for (cRepositoryEntry const *entry = &head_;;) {
        if (entry->next_->prev_ != entry) return "R1 next and prev disagree";
        entry = entry->next_;
        if (entry == &head_) break; // reached: since next and prev agree, no entry is met twice
        if (entry->owner_ != this) return "R2 wrong owner " + entry->name_;
        if (entry->hash_ != hash_of(entry->name_)) return "R2 wrong hash " + entry->name_;
        if (!entry->slot_ || entry_of(*entry->slot_) != entry)
            return "R2 wrong cell " + entry->name_;
        ++entries;
    }
    if (entries != count_) return "R3 count";
    if (is_too_full(count_, size_)) return "R3 too full";
    if (is_worn(unused_, size_)) return "R3 too few unused";
    return deep ? broken_table() : std::string();
}

std::string cRepositoryList::broken_table() const {
    std::uint32_t entries = 0, unused = 0;
    for (std::uint32_t i = 0; i < size_; ++i) {
        entries += table_[i] > cell_erased;
        unused += table_[i] == cell_unused;
    }
    if (entries != count_) return "R4 entries in the table";
    if (unused != unused_) return "R4 unused cells";
    for (cRepositoryEntry const *entry = head_.next_; entry != &head_; entry = entry->next_)
        if (look_up(entry->name_) != entry) return "R5 not found " + entry->name_;
    return {};
}

// Checks a large list only at intervals, so that filling it stays fast in checking builds too.
void cRepositoryList::check() const {
#ifdef QRV_CHECKS
    if (count_ > 256 && count_ % 256 != 0) return;
    if (auto const rule = broken_rule(false); !rule.empty()) {
        std::fprintf(stderr, "qrv: broken rule of the repository: %s\n", rule.c_str());
        std::abort();
    }
#endif
}
