// The table of cAttrHash: search, insertion, removal, growth.
//
// Probing: by cProbeSlots. matches() compares keys of exactly int and string by the cached hash,
// without a call, and calls the stored key's hook for all others. A hook may change the table: then
// `changes_` differs, and the search starts again. After `most_searches` such searches hooks are
// not called any more.
//
// Rebuilding (invisible, since the ring has the order):
//   too many live nodes              the next size
//   too few slots never used         the same size: without tombstones, searches for absent keys
//                                    end early
//   a very long probe                the same size, once: keys of text and floating types, which a
//                                    file can choose so that they collide, get a seeded hash
// Growing never computes the hash of a key again.

#include "base/seeded_hash.h"
#include "core/cattrhash_detail.h"
#include "core/cregistry.h"
#include "core/cscalar.h"
#include "core/cset_index.h"
#include "core/ctable_growth.h"
#include "qrv/core/cattrcursor.h"
#include "qrv/core/cobjd.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace {

// An ordinary hook changes the table at most once or twice. After this many searches only keys that
// are compared without a hook are found.
constexpr int most_searches = 64;

constexpr std::uint32_t primes[] = {11,     23,     47,     97,      197,     397,     797,
                                    1597,   3203,   6421,   12853,   25717,   51437,   102811,
                                    205619, 411233, 822433, 1644817, 3289613, 6579211, 13158023};
static_assert(std::ranges::binary_search(primes, first_size));

bool is_prime(std::uint64_t number) noexcept {
    for (std::uint64_t d = 3; d * d <= number; d += 2)
        if (number % d == 0) return false;
    return number % 2 != 0;
}

template <class T> bool holds(objref const &key) noexcept {
    return cat::value_in<T>(key) != nullptr;
}

__extension__ using cWide = unsigned __int128;

// For number % divisor with any number of 32 bits: the reciprocal of the divisor.
constexpr std::uint64_t reciprocal_of(std::uint32_t divisor) noexcept {
    return ~std::uint64_t{0} / divisor + 1;
}
constexpr std::uint32_t remainder(std::uint32_t number, std::uint64_t reciprocal,
                                  std::uint32_t divisor) noexcept {
    return static_cast<std::uint32_t>(cWide{reciprocal * number} * divisor >> 64);
}

// The words of a table, followed by the reciprocals of the two divisors of a probe.
std::unique_ptr<cSlotWord[]> new_table(std::uint32_t size) {
    auto words = std::make_unique<cSlotWord[]>(std::size_t{size} + 2); // zeroed
    words[size] = reciprocal_of(size);
    words[size + 1] = reciprocal_of(size - 2);
    return words;
}

cProbeSlots slots_of(std::uint32_t hash, cSlotWord const *words, std::uint32_t size) noexcept {
    return {remainder(hash, words[size], size), remainder(hash, words[size + 1], size - 2), size};
}

} // namespace

std::span<std::uint32_t const> hash_primes() noexcept { return primes; }

unsigned int hash_new_size(unsigned int size) noexcept {
    auto const *prime = std::upper_bound(std::begin(primes), std::end(primes), size);
    return prime == std::end(primes) ? 0 : *prime;
}

std::uint32_t hash_grown_size(std::uint32_t size, std::span<std::uint32_t const> sizes) {
    auto const prime = std::upper_bound(sizes.begin(), sizes.end(), size + 1);
    if (prime != sizes.end()) return *prime;
    std::uint64_t next = 2 * std::uint64_t{size} + 1;
    while (!is_prime(next)) next += 2;
    if (next > 0xFFFFFFFFu) throw std::length_error("cAttrHash: too many slots");
    return static_cast<std::uint32_t>(next);
}

constinit std::uint64_t hash_probes = 0;
std::uint64_t cAttrHash::probe_count() noexcept { return hash_probes; }

namespace {

// Is one of the bytes of a word 0?
template <class Word> bool has_nul(char const *bytes) noexcept {
    constexpr Word each = static_cast<Word>(~Word{0}) / 0xFF; // 0x01...01
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return ((word - each) & ~word & (each << 7)) != 0;
}
// The same for a string of one to two words.
template <class Word> bool has_nul(std::string_view text) noexcept {
    return has_nul<Word>(text.data()) || has_nul<Word>(text.data() + text.size() - sizeof(Word));
}

// Inlined: for the few bytes of most keys a call would cost more than the work.
[[gnu::always_inline]] inline std::size_t length_to_nul(std::string_view text) noexcept {
    std::size_t const size = text.size();
    if (size >= 8 && size <= 16 && !has_nul<std::uint64_t>(text)) return size;
    if (size >= 4 && size < 8 && !has_nul<std::uint32_t>(text)) return size;
    return std::min(text.find('\0'), size);
}

} // namespace

// Like cat::hash_string: a NUL ends the text.
std::uint32_t text_hash(std::string_view text, bool seeded) {
    return seeded ? seeded_hash_bytes(text.data(), text.size())
                  : cat::hash_bytes(text.data(), length_to_nul(text));
}

// A type keeps the hooks that it gets first, and these types get theirs before any program runs.
cKeyKind cAttrHash::kind_of(objref const &key) {
    cTypeObj const *const type = &key->type();
    switch (key->object_class()) {
    case cObjClass::string:
        return type == core.string && holds<std::string>(key) ? cKeyKind::string_key
                                                              : cKeyKind::other;
    case cObjClass::integer:
        return type == core.integer && holds<int>(key) ? cKeyKind::int_key : cKeyKind::other;
    case cObjClass::float_number:
        return type == core.float_number && holds<float>(key) ? cKeyKind::float_key
                                                              : cKeyKind::other;
    case cObjClass::double_number:
        return type == core.double_number && holds<double>(key) ? cKeyKind::double_key
                                                                : cKeyKind::other;
    default:
        return cKeyKind::other;
    }
}

std::uint32_t cAttrHash::seeded_hash(cKeyKind kind, objref const &key) {
    switch (kind) {
    case cKeyKind::string_key:
        return text_hash(text_of(key), true);
    case cKeyKind::float_key:
        return seeded_hash_bytes(&value_of<float>(key), sizeof(float));
    case cKeyKind::double_key:
        return seeded_hash_bytes(&value_of<double>(key), sizeof(double));
    default:
        return key->type().hashfun(key);
    }
}

std::uint32_t cAttrHash::seeded_hash(cAttrNode const &node) {
    return node.kind_ == cKeyKind::string_key ? text_hash(node.key_text(), true)
                                              : seeded_hash(node.kind_, node.key());
}

// The hash of a node that is new in this table.
std::uint32_t cAttrHash::hash_of(cAttrNode const &node) const {
    if (!fits_index(node.kind_)) return search_for(node.key()).hash;
    return node.kind_ == cKeyKind::int_key ? node.hash_ : text_hash(node.key_text(), seeded_);
}

cAttrHash::cSearch cAttrHash::search_for(objref const &key) const {
    cKeyKind const kind = kind_of(key);
    switch (kind) {
    case cKeyKind::string_key:
        return {text_hash(text_of(key), seeded_), kind, &key, text_of(key)};
    case cKeyKind::int_key:
        return {static_cast<std::uint32_t>(value_of<int>(key)), kind, &key, {}};
    default:
        return {seeded_ ? seeded_hash(kind, key) : key->type().hashfun(key), kind, &key, {}};
    }
}

cAttrHash::cSearch cAttrHash::search_for(std::string_view key) const {
    return {text_hash(key, seeded_), cKeyKind::string_key, nullptr, key};
}

cAttrHash::cSearch cAttrHash::search_for(int key) const {
    return {static_cast<std::uint32_t>(key), cKeyKind::int_key, nullptr, {}};
}

bool cAttrHash::matches(cAttrNode const &node, cSearch const &search) {
    switch (node.kind_) {
    case cKeyKind::int_key: // the hash is the number
        return search.kind == cKeyKind::int_key && node.hash_ == search.hash;
    case cKeyKind::string_key:
        return search.kind == cKeyKind::string_key && node.hash_ == search.hash &&
               same_text(node.key_text(), search.text);
    default:
        if (!search.key) return false;
        objref const stored = node.key();                  // the hook may remove the node
        return stored->type().hasheq(stored, *search.key); // RUNS USER CODE
    }
}

cAttrHash::cFound cAttrHash::probe(cSearch const &search) const {
    if (form_ != cHashForm::table) return probe_index(search);
    constexpr std::uint32_t none = 0xFFFFFFFFu;
    std::uint32_t free = none;
    cSlotWord const tag = tag_of(search.kind, search.hash);
    cProbeSlots at = slots_of(search.hash, words_.get(), size_);
    for (std::uint32_t steps = 1; steps <= size_; ++steps, at.next()) {
        ++hash_probes;
        std::uint32_t const slot = at.slot();
        cSlotWord const word = words_[slot];
        if (word == slot_unused) return {nullptr, free == none ? slot : free, steps, false};
        if (is_other_key(word, tag)) continue;
        if (cAttrNode *const node = node_of(word)) {
            std::uint32_t const before = changes_;
            bool const found = matches(*node, search);
            if (changes_ != before) return {nullptr, 0, steps, true};
            if (found) return {node, 0, steps, false};
        } else if (free == none) {
            free = slot;
        }
    }
    return {nullptr, free, size_, false};
}

cAttrNode *cAttrHash::locate(objref const &key) const {
    cKeyKind const kind = others_ ? cKeyKind::other : kind_of(key);
    if (kind == cKeyKind::string_key) return probe(search_for(text_of(key))).node; // calls no hook
    if (kind == cKeyKind::int_key) return probe(search_for(value_of<int>(key))).node;
    objref const held = key; // may be the key of a node that a hook removes
    for (int searches = 1;; ++searches) {
        cSearch search = search_for(held);
        if (searches > most_searches) search.key = nullptr;
        cFound const found = probe(search);
        if (!found.stale) return found.node;
    }
}

cAttrNode *cAttrHash::find(objref const &key) const { return key ? locate(key) : nullptr; }

cAttrNode *cAttrHash::find(std::string const &key) const {
    if (others_) return locate(make_key(key)); // the hooks of the other keys expect an object
    return probe(search_for(key)).node;
}

cAttrNode *cAttrHash::find(std::string_view key) const {
    if (others_) return find(std::string(key));
    return probe(search_for(key)).node;
}

cAttrNode *cAttrHash::find(int key) const {
    if (form_ == cHashForm::row) {
        ++hash_probes;
        auto const at = static_cast<std::uint32_t>(key);
        return at < used_ ? node_of(words_[at]) : nullptr;
    }
    if (others_) return locate(make_key(key));
    return probe(search_for(key)).node;
}

// The node of a key that isn't nil; creates it with the value nil if it is absent.
cAttrNode *cAttrHash::force_node(objref const &key) {
    std::unique_ptr<cAttrNode> made;
    for (int searches = 1;; ++searches) {
        cSearch search = search_for(key);
        if (searches > most_searches) search.key = nullptr;
        cFound const found = probe(search);
        if (found.stale) continue;
        if (found.node && !made) return found.node;
        if (found.node) {
            made.reset(); // RE-ENTERS: cloning the key has inserted it, so this clone isn't needed
            continue;
        }
        std::uint32_t const before = changes_;
        if (!made) made.reset(cAttrNode::with_key(key)); // RUNS USER CODE: clones the key
        if (changes_ != before) continue;
        link_node(*made, found, search);
        return made.release();
    }
}

// From here to the end nothing runs user code.
void cAttrHash::link_node(cAttrNode &node, cFound place, cSearch const &search) {
    node.hash_ = search.hash;
    // A clone may have another type than its source; then the source's kind is wrong for it.
    bool const same = search.own_key || node.lazy_ || kind_of(node.key_) == search.kind;
    node.kind_ = same ? search.kind : cKeyKind::other;
    bool const was_seeded = seeded_;
    if (form_ != cHashForm::table && !make_room(node, place.steps)) {
        if (seeded_ != was_seeded && node.kind_ != cKeyKind::other) node.hash_ = hash_of(node);
        place = probe({node.hash_, search.kind, nullptr, search.text});
    }
    node.table_ = this;
    count_in(node);
    node.link_before(anchor_);
    ++used_;
    ++changes_;
    if (form_ == cHashForm::table) {
        if (words_[place.free] == slot_unused) --unused_;
        words_[place.free] = word_of(node);
        node.slot_ = place.free;
        grow_table(node, used_, place.steps);
    } else {
        add_to_index(node, place);
    }
    if (set_index_) [[unlikely]]
        set_index_->enter(node);
    check();
}

// Called after `last` was put into the table, by a search that took `steps` steps.
void cAttrHash::grow_table(cAttrNode const &last, std::uint32_t live, std::uint32_t steps) {
    bool const seedable = last.kind_ != cKeyKind::int_key && last.kind_ != cKeyKind::other;
    bool const seed = steps > long_probe && seedable && !seeded_;
    if (is_too_full(live, size_))
        rebuild(hash_grown_size(size_, primes), seed);
    else if (seed || is_worn(unused_, size_))
        rebuild(size_, seed);
}

void cAttrHash::unlink_node(cAttrNode &node) noexcept {
    if (set_index_) [[unlikely]]
        set_index_->leave(node);
    if (form_ != cHashForm::table) try_table(first_size);
    count_out(node);
    node.unlink();
    if (form_ == cHashForm::table) words_[node.slot_] = slot_deleted;
    node.table_ = nullptr;
    node.mapped_ = false;
    --used_;
    ++changes_;
    ++disturbed_;
    if (used_ == 0) {
        greatest_ = -1;
        greatest_known_ = is_vector_ = true;
        moved_ = false;
        set_index_ = nullptr;
    }
    check();
}

// Deletes a node of this hash; its memory stays while it is held. May destroy the hash.
void cAttrHash::remove(cAttrNode *node) {
    if (form_ != cHashForm::table) try_table(first_size); // needs the node's key
    if (set_index_) [[unlikely]]
        set_index_->leave(*node);
    if (node->refs() > 1) cAttrCursor::leaves(*node);
    cAttrNode::cTakenKey const key = node->take_key();
    objref value = node->take_value();
    unlink_node(*node);
    node->dead_ = true;
    node->unhold();
    value = nullptr; // RE-ENTERS: the table is in order, and this function does not use it any more
} //                    RE-ENTERS: the key is released

void cAttrHash::remove_all() {
    while (cAttrNode *const node = first()) remove(node);
}

void cAttrHash::move_before(cAttrNode &node, cAttrNode &place) noexcept {
    if (&node == &place || node.next() == &place) return;
    node.unlink();
    node.link_before(place);
    is_vector_ = false;
    moved_ = true;
    ++disturbed_;
}

// Updates what is known about the keys, so that vector operations needn't walk. The greatest index
// and `is_vector_` are about nodes whose key is exactly an int; their hash is that int.
void cAttrHash::count_in(cAttrNode const &node) noexcept {
    if (node.kind_ != cKeyKind::int_key) {
        ++no_ints_;
        if (node.kind_ == cKeyKind::other) ++others_;
        is_vector_ = false;
        return;
    }
    int const index = static_cast<int>(node.hash_);
    if (index > greatest_) greatest_ = index;
    is_vector_ = is_vector_ && node.hash_ == used_;
}

void cAttrHash::count_out(cAttrNode const &node) noexcept {
    bool const is_last = node.next() == &anchor_;
    if (node.kind_ != cKeyKind::int_key) {
        --no_ints_;
        if (node.kind_ == cKeyKind::other) --others_;
    } else if (greatest_ >= 0 && static_cast<int>(node.hash_) == greatest_) {
        if (is_vector_ && is_last)
            --greatest_;
        else
            greatest_known_ = false;
    }
    is_vector_ = is_vector_ && is_last;
}

void cAttrHash::rebuild(std::uint32_t size, bool seed) {
    auto words = new_table(size);
    if (seed) seed_keys();
    words.swap(words_);
    capacity_ = unused_ = size;
    std::uint32_t const old_size = std::exchange(size_, size);
    for (std::uint32_t i = 0; i < old_size; ++i)
        if (cAttrNode *const node = node_of(words[i])) put(*node);
    ++changes_;
}

// Puts a node into the first free word of its sequence. Returns the number of words visited.
std::uint32_t cAttrHash::put(cAttrNode &node) noexcept {
    std::uint32_t steps = 1;
    cProbeSlots at = slots_of(node.hash_, words_.get(), size_);
    for (; words_[at.slot()] != slot_unused; at.next()) ++steps;
    node.slot_ = at.slot();
    words_[node.slot_] = word_of(node);
    --unused_;
    return steps;
}

// Replaces the index by the table that the same insertions, one by one, would have produced. The
// calls of key hooks depend on which slots are used, tombstones included. So a hash has a table
// from the first removal on.
void cAttrHash::make_table(std::uint32_t size) {
    std::uint32_t const old_size = size_;
    has_values_ = false;
    try {
        replay_insertions(size);
    } catch (...) {
        form_ = cHashForm::few; // needs no memory, and can hold any number of nodes
        words_.reset();
        size_ = old_size;
        throw;
    }
}

// Never fails, since a removal calls it: without memory for the table, nodes are found by a walk.
void cAttrHash::try_table(std::uint32_t size) noexcept {
    try {
        make_table(size);
    } catch (std::bad_alloc const &) {
    }
}

void cAttrHash::replay_insertions(std::uint32_t size) {
    std::vector<cAttrNode *> nodes = cat::nodes_of(*this);
    if (moved_) std::sort(nodes.begin(), nodes.end(), anidord);
    if (seeded_)
        for (cAttrNode *node : nodes)
            if (node->kind_ == cKeyKind::string_key)
                node->hash_ = text_hash(node->key_text(), false);
    seeded_ = false;
    form_ = cHashForm::table;
    size_ = capacity_ = unused_ = size;
    words_ = new_table(size_);
    std::uint32_t live = 0;
    for (cAttrNode *node : nodes) grow_table(*node, ++live, put(*node));
    ++changes_;
}

void cAttrHash::seed_keys() noexcept {
    seeded_ = true;
    for (cAttrNode *node = first(); node; node = next(node))
        if (node->kind_ != cKeyKind::int_key && node->kind_ != cKeyKind::other)
            node->hash_ = seeded_hash(*node);
}
