#include "core/cset_index.h"

#include "base/seeded_hash.h"
#include "core/cregistry.h"
#include "core/cscalar.h"

#include <algorithm>
#include <typeinfo>

namespace {

constexpr std::uint32_t most_walked = 8; // a hash with at most this many entries needs no index
constexpr std::size_t first_capacity = 32;
constexpr std::size_t longest_probe = 64; // an entry that would need a longer one is loose

// The existing indexes. Index number n is at position n - 1, which is null and in `free` if it was
// destroyed.
struct cLiving {
    std::vector<cSetIndex *> indexes;
    std::vector<std::size_t> free;
};

cLiving &living() {
    static auto *const all = new cLiving; // never destroyed: static objects of clients may use it
    return *all;
}

std::size_t place_for(cSetIndex &index) {
    auto &[indexes, free] = living();
    if (free.empty()) {
        indexes.push_back(nullptr);
        free.reserve(indexes.capacity()); // so that destroying an index needs no memory
        free.push_back(indexes.size() - 1);
    }
    std::size_t const place = free.back();
    free.pop_back();
    indexes[place] = &index;
    return place;
}

std::uint16_t number_of(std::size_t place) {
    return static_cast<std::uint16_t>(std::min<std::size_t>(place + 1, cSetIndex::several));
}

// Is it of a class whose objects can be equal to a plain value?
bool is_of_plain_class(cObj const *value) noexcept {
    if (!value) return false;
    cObjClass const kind = value->object_class();
    return kind == cObjClass::string || kind == cObjClass::integer || kind == cObjClass::boolean;
}

template <class T> bool is_own(cObj const &value, cTypeObj const *type) noexcept {
    return &value.type() == type && typeid(value) == typeid(cObjD<T>);
}

// Does the object store its value itself, and are its class and type the library's own?
bool is_own_plain(cObj const &value) noexcept {
    switch (value.object_class()) {
    case cObjClass::string:
        return is_own<std::string>(value, core.string);
    case cObjClass::integer:
        return is_own<int>(value, core.integer);
    case cObjClass::boolean:
        return is_own<bool>(value, core.boolean);
    default:
        return false;
    }
}

template <class T> bool same(cObj const &a, cObj const &b) noexcept {
    return *cat::value_in<T>(&a) == *cat::value_in<T>(&b);
}

// Compares two plain values.
bool same_value(cObj const &a, cObj const &b) noexcept {
    if (a.object_class() != b.object_class()) return false;
    switch (a.object_class()) {
    case cObjClass::string:
        return same<std::string>(a, b);
    case cObjClass::integer:
        return same<int>(a, b);
    default:
        return same<bool>(a, b);
    }
}

} // namespace

bool cSetIndex::holds(cAttrHash &hash, objref const &value) {
    bool const is_small = !hash.set_index_ && hash.used() <= most_walked;
    if (!is_small && cat::is_plain(*value)) {
        if (!hash.set_index_) hash.set_index_ = std::make_unique<cSetIndex>(hash);
        cSetIndex &index = *hash.set_index_;
        try {
            if (!index.failed_) return index.holds_plain(*value);
        } catch (std::bad_alloc const &) {
            index.give_up();
        }
    }
    return hash.findvalue(value) != nullptr;
}

cSetIndex::cSetIndex(cAttrHash const &hash)
    : place_(place_for(*this)), id_(number_of(place_)), factor_(seeded_factor("set index")) {
    for (cAttrNode *node = hash.first(); node; node = hash.next(node)) enter(*node);
}

cSetIndex::~cSetIndex() {
    living().indexes[place_] = nullptr;
    living().free.push_back(place_);
}

bool cSetIndex::holds_plain(cObj const &value) {
    if (!loose_.empty()) settle_loose();
    auto const equals = [&](cAttrNode const *node) {
        return node->valref() && value.equal(node->value());
    };
    if (std::ranges::any_of(loose_, equals)) return true;
    if (table_.empty()) return false;
    std::uint32_t const hash = hash_of(value);
    std::size_t const mask = table_.size() - 1;
    for (std::size_t at = hash & mask; table_[at].node; at = (at + 1) & mask)
        if (table_[at].hash == hash && same_value(value, table_[at].node->value())) return true;
    return false;
}

// Returns entries to the table that were loosened for a change that is complete.
void cSetIndex::settle_loose() {
    while (2 * (count_ + loose_.size()) > table_.size()) grow(); // before the loose are walked
    for (auto place = loose_.begin(); place != loose_.end();) {
        cAttrNode &node = **place;
        bool const is_outside = !node.given_out_ && !is_of_plain_class(node.valref());
        place = is_outside || put(node) ? loose_.erase(place) : std::next(place);
    }
}

void cSetIndex::enter(cAttrNode &node) noexcept {
    if (failed_ || (!node.given_out_ && !is_of_plain_class(node.valref()))) return;
    try {
        put_or_loosen(node);
    } catch (std::bad_alloc const &) {
        give_up();
    }
}

void cSetIndex::put_or_loosen(cAttrNode &node) {
    if (!put(node)) loose_.insert(&node);
}

// Puts an entry into the table; false if it must be loose.
bool cSetIndex::put(cAttrNode &node) {
    cObj const *const value = node.valref();
    if (node.given_out_ || !value || value->index_ == given_out || !is_own_plain(*value))
        return false;
    if (2 * (count_ + 1) > table_.size()) grow();
    if (!place({&node, hash_of(*value)})) return false;
    mark(*value);
    return true;
}

bool cSetIndex::place(cEntry entry) noexcept {
    std::size_t const mask = table_.size() - 1;
    std::size_t at = entry.hash & mask;
    for (std::size_t steps = 0; steps < longest_probe; ++steps, at = (at + 1) & mask) {
        if (table_[at].node) continue;
        table_[at] = entry;
        ++count_;
        return true;
    }
    return false;
}

void cSetIndex::grow() {
    std::vector<cEntry> old(std::max(first_capacity, 2 * table_.size()));
    old.swap(table_);
    count_ = 0;
    for (cEntry const &entry : old)
        if (entry.node && !place(entry)) loose_.insert(entry.node);
}

void cSetIndex::leave(cAttrNode &node) noexcept {
    if (!take_out(node)) loose_.erase(&node);
}

void cSetIndex::loosen(cAttrNode &node) noexcept {
    if (failed_) return;
    take_out(node);
    try {
        loose_.insert(&node);
    } catch (std::bad_alloc const &) {
        give_up();
    }
}

bool cSetIndex::take_out(cAttrNode const &node) noexcept {
    cObj const *const value = node.valref();
    if (table_.empty() || !value || !is_own_plain(*value)) return false;
    std::size_t const mask = table_.size() - 1;
    for (std::size_t at = hash_of(*value) & mask; table_[at].node; at = (at + 1) & mask) {
        if (table_[at].node != &node) continue;
        remove_at(at);
        return true;
    }
    return false;
}

// Moves the following entries up, so that a probe for them meets no gap.
void cSetIndex::remove_at(std::size_t at) noexcept {
    std::size_t const mask = table_.size() - 1;
    for (std::size_t next = (at + 1) & mask; table_[next].node; next = (next + 1) & mask) {
        std::size_t const home = table_[next].hash & mask;
        if (((next - home) & mask) < ((next - at) & mask)) continue;
        table_[at] = table_[next];
        at = next;
    }
    table_[at] = {};
    --count_;
}

void cSetIndex::loosen(cObj const &value) noexcept {
    auto const &indexes = living().indexes;
    if (value.index_ == several) {
        for (cSetIndex *const index : indexes)
            if (index) index->loosen_value(value);
        return;
    }
    if (cSetIndex *const index = indexes[value.index_ - 1U]) index->loosen_value(value);
    value.index_ = 0;
}

// Several entries may hold the object.
void cSetIndex::loosen_value(cObj const &value) noexcept {
    if (table_.empty() || failed_ || !is_own_plain(value)) return;
    std::size_t const mask = table_.size() - 1;
    std::size_t at = hash_of(value) & mask;
    while (cAttrNode *const node = table_[at].node) {
        if (node->valref() == &value)
            loosen(*node); // moves another entry to this place
        else
            at = (at + 1) & mask;
        if (failed_) return;
    }
}

void cSetIndex::give_up() noexcept {
    failed_ = true;
    table_ = {};
    count_ = 0;
    loose_.clear();
}

void cSetIndex::mark(cObj const &value) const noexcept {
    value.index_ = value.index_ == 0 || value.index_ == id_ ? id_ : several;
}

std::uint32_t cSetIndex::hash_of(cObj const &value) const {
    std::uint64_t bits = 0;
    switch (value.object_class()) {
    case cObjClass::string: {
        std::string const &text = *cat::value_in<std::string>(&value);
        return seeded_hash_bytes(text.data(), text.size());
    }
    case cObjClass::integer:
        bits = static_cast<std::uint32_t>(*cat::value_in<int>(&value));
        break;
    default:
        bits = *cat::value_in<bool>(&value) ? std::uint64_t{1} << 32 : std::uint64_t{1} << 33;
        break;
    }
    return spread(bits, factor_);
}

// Multiplying once keeps the distances of ints such as 1, 2, 3..., and with some factors all of
// them are near each other in the table.
std::uint32_t cSetIndex::spread(std::uint64_t bits, std::uint64_t factor) noexcept {
    std::uint64_t const once = bits * factor;
    return static_cast<std::uint32_t>((once ^ once >> 32) * factor >> 32);
}

bool cSetIndex::is_whole(cAttrHash const &hash) const {
    if (failed_) return true;
    std::size_t in_table = 0, loose = 0;
    for (cAttrNode *node = hash.first(); node; node = hash.next(node)) {
        cObj const *const value = node->valref();
        if (loose_.contains(node)) {
            ++loose;
            continue;
        }
        if (!node->given_out_ && !is_of_plain_class(value)) continue;
        if (!value || !is_own_plain(*value) || node->given_out_ || table_.empty()) return false;
        if (value->index_ != id_ && value->index_ != several) return false;
        std::uint32_t const expected = hash_of(*value);
        std::size_t const mask = table_.size() - 1;
        std::size_t at = expected & mask;
        while (table_[at].node && table_[at].node != node) at = (at + 1) & mask;
        if (!table_[at].node || table_[at].hash != expected) return false;
        ++in_table;
    }
    return in_table == count_ && loose == loose_.size();
}
