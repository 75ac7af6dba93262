// A hash without its table. While every key is exactly a string or an int, and nothing was ever
// removed, user code cannot see how nodes are found. Most hashes stay so all their life, and most
// are so small that a table of 97 slots would be their largest part.
//
//   few ----9th node----> row     all keys are 0, 1, 2...
//    |  \--------------> index    others; a row whose next key isn't the next int
//    `--- any of them --> table   a key of another type, or a removal (make_table)
//
// A search multiplies the hash by a constant. The upper bits of the product choose the first word,
// other bits the step; so an index can be filled up to 3/4. Keys that were chosen to collide are
// treated as in the table: after a very long probe, strings get a seeded hash and ints another
// constant.

#include "base/seeded_hash.h"
#include "core/cattrhash_detail.h"
#include "core/ctable_growth.h"

#include <bit>

namespace {

constexpr std::uint32_t first_index = 16;

constexpr std::uint32_t index_size(std::uint32_t nodes) { return std::bit_ceil(nodes + nodes / 2); }

constexpr std::uint64_t usual_factor = 0x9E3779B97F4A7C15u;

std::uint64_t index_factor() {
    static std::uint64_t const factor = seeded_factor("index");
    return factor;
}

struct cIndexSteps {
    cIndexSteps(std::uint32_t hash, std::uint32_t capacity, bool seeded) : mask(capacity - 1) {
        std::uint64_t const mixed = hash * (seeded ? index_factor() : usual_factor);
        at = static_cast<std::uint32_t>(mixed >> 32) >> std::countl_zero(mask);
        step = static_cast<std::uint32_t>(mixed >> 16) | 1;
    }
    void next() noexcept { at = (at + step) & mask; }

    std::uint32_t mask, at, step;
};

} // namespace

cAttrHash::cFound cAttrHash::probe_index(cSearch const &search) const {
    if (!fits_index(search.kind)) return {nullptr, 0, 0, false};
    auto const is_it = [&](cAttrNode const &node) {
        return node.hash_ == search.hash && node.kind_ == search.kind &&
               (search.kind == cKeyKind::int_key || same_text(node.key_text(), search.text));
    };
    if (form_ == cHashForm::few) {
        hash_probes += used_;
        for (cLink *link = anchor_.next(); link != &anchor_; link = link->next())
            if (auto *const node = static_cast<cAttrNode *>(link); is_it(*node))
                return {node, 0, 0, false};
        return {nullptr, 0, 0, false};
    }
    if (form_ == cHashForm::row) {
        ++hash_probes;
        bool const found = search.kind == cKeyKind::int_key && search.hash < used_;
        return {found ? node_of(words_[search.hash]) : nullptr, 0, 0, false};
    }
    cIndexSteps at(search.hash, capacity_, seeded_);
    cSlotWord const tag = tag_of(search.hash);
    for (std::uint32_t steps = 1;; ++steps, at.next()) {
        cSlotWord const word = words_[at.at];
        bool const is_free = word == slot_unused;
        if (!is_free && ((word ^ tag) > address_mask || !is_it(*node_of(word)))) continue;
        hash_probes += steps;
        return {is_free ? nullptr : node_of(word), at.at, steps, false};
    }
}

// Called before a node is linked, so that the hash stays valid if memory runs out. False if the
// result of the earlier search is no longer valid.
bool cAttrHash::make_room(cAttrNode const &node, std::uint32_t steps) {
    if (!fits_index(node.kind_)) return make_table(first_size), false;
    bool const is_next = is_vector_ && node.kind_ == cKeyKind::int_key && node.hash_ == used_;
    std::uint32_t const wanted = used_ + 1;
    if (form_ == cHashForm::few) {
        if (wanted <= most_few) return true;
        return is_next ? rebuild_row() : rebuild_index(std::max(first_index, index_size(wanted))),
               false;
    }
    if (form_ == cHashForm::row) {
        if (!is_next) return rebuild_index(index_size(wanted)), false;
        return wanted <= capacity_ || (rebuild_row(), false);
    }
    if (steps > long_probe && !seeded_) {
        seed_keys();
        return rebuild_index(capacity_), false;
    }
    return fits_words(wanted, capacity_) || (rebuild_index(2 * capacity_), false);
}

// Needs room for the node, which must be the last of the ring.
void cAttrHash::add_to_index(cAttrNode &node, cFound const &place) {
    if (is_too_full(used_, size_)) size_ = hash_grown_size(size_, hash_primes());
    if (form_ == cHashForm::few) return;
    if (form_ == cHashForm::row)
        add_to_row(node);
    else
        words_[place.free] = index_word_of(node);
}

// Called when all nodes were linked without an index.
void cAttrHash::make_index() {
    while (is_too_full(used_, size_)) size_ = hash_grown_size(size_, hash_primes());
    if (used_ <= most_few) return;
    if (is_vector_) return rebuild_row();
    rebuild_index(std::max(first_index, index_size(used_)));
}

void cAttrHash::rebuild_index(std::uint32_t capacity) {
    words_ = std::make_unique<cSlotWord[]>(capacity);
    has_values_ = false;
    form_ = cHashForm::index;
    capacity_ = capacity;
    for (cAttrNode *node = first(); node; node = next(node)) {
        cIndexSteps at(node->hash_, capacity_, seeded_);
        while (words_[at.at] != slot_unused) at.next();
        words_[at.at] = index_word_of(*node);
    }
}

bool cAttrHash::index_holds(cAttrNode const &node) const {
    if (form_ == cHashForm::few) return true;
    if (form_ == cHashForm::row) return node.hash_ < used_ && node_of(words_[node.hash_]) == &node;
    for (cIndexSteps at(node.hash_, capacity_, seeded_); words_[at.at] != slot_unused; at.next())
        if (node_of(words_[at.at]) == &node) return true;
    return false;
}
